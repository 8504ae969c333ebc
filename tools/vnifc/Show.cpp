#include "Instances.h"
#include "Inverse.h"
#include "LoadedFile.h"
#include "Messages.h"
#include "Values.h"

#include <fmt/format.h>

#include <algorithm>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

void printWords(const VnIfcEntityBase& instance) {
    fmt::print("#{} {}\n", instance.objectId().number(), printable(keywordOf(instance)));
    const VnIfcEntityType* type = instance.getInstanceType();
    if (!type) {
        const auto& foreign = dynamic_cast<const VnIfcForeignInstance&>(instance);
        fmt::print("without a class, kept as text: {}\n", printable(foreign.parameters().view()));
        return;
    }
    std::size_t width = 0;
    for (const Attribute& attribute : attributesOf(*type))
        width = std::max<std::size_t>(width, attribute.name->length());
    const auto keptWords = [](std::string_view text) {
        return text.empty() ? std::string() : printable(fmt::format("  (the file has {}, kept as text)", text));
    };
    VnIfcVariant value;
    for (const Attribute& attribute : attributesOf(*type)) {
        const bool hasValue = !attribute.isDerived && instance.getAttr(*attribute.name, value);
        const std::string words = hasValue ? printable(wordsOf(value, attribute.mayBeEmpty)) : "* (derived)";
        fmt::print("{:<{}}  {}{}\n", attribute.name->constStr(), width, words,
                   keptWords(instance.keptText(attribute.position)));
    }
    const auto kept = instance.keptTexts();
    if (!kept.empty() && kept.back().first >= attributesOf(*type).size())
        fmt::print("kept as text after the last attribute: {}\n", printable(kept.back().second));
}

/// A line for each instance that refers to this one.
void printInverses(const VnIfcEntityBase& instance) {
    for (const auto& [name, targets] : inversesOf(instance)) {
        fmt::print("{} (inverse)\n", name->constStr());
        for (const VnIfcEntityBase* target : targets)
            fmt::print("  {}\n", printable(wordsOf(target->objectId())));
    }
}

} // namespace

ExitCode show(const ReadFlags& flags, const std::string& address, bool json, bool inverses) {
    const LoadedFile file(flags, {.inverses = inverses});
    const VnIfcEntityBase& instance = instanceAt(file.model(), address);
    if (json) {
        Output output(writeToStandardOutput);
        JsonWriter writer(output);
        writeInstance(writer, instance, {.describe = true, .inverses = inverses});
        writer.newLine();
        output.flush();
    } else {
        printWords(instance);
        if (inverses)
            printInverses(instance);
    }
    return file.exitCode();
}

} // namespace vnifc::tool
