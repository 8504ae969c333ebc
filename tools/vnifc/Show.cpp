#include "Instances.h"
#include "Inverse.h"
#include "LoadedFile.h"
#include "Messages.h"
#include "RuleText.h"
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

void printDerived(const VnIfcEntityBase& instance, const Rules& rules) {
    for (const std::string& name : rules.derivedAttributes(instance))
        fmt::print("{} (derived)  {}\n", name, printable(rules.derived(instance, name).toText()));
}

} // namespace

ExitCode show(const ReadFlags& flags, const ShowFlags& options) {
    // What is derived may well look at inverse attributes.
    const LoadedFile file(flags, {.inverses = options.inverses || options.derived});
    const VnIfcEntityBase& instance = instanceAt(file.model(), options.address);
    std::optional<Rules> rules;
    if (options.derived) {
        rules = rulesFor(file.model(), options.rules);
        if (!rules)
            throw Failure(kFileFailure, howToHaveRules(file.model()));
    }
    if (options.json) {
        Output output(writeToStandardOutput);
        JsonWriter writer(output);
        writeInstance(writer, instance,
                      {.describe = true, .inverses = options.inverses, .derived = rules ? &*rules : nullptr});
        writer.newLine();
        output.flush();
    } else {
        printWords(instance);
        if (options.inverses)
            printInverses(instance);
        if (rules)
            printDerived(instance, *rules);
    }
    return file.exitCode();
}

} // namespace vnifc::tool
