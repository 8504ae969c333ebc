#include "JsonInstance.h"
#include "Messages.h"
#include "RuleText.h"
#include "WholeModel.h"

#include <fmt/format.h>
#include <vnifc/References.h>

#include <algorithm>

namespace vnifc::tool {

namespace {

std::string keptWords(const std::optional<std::string>& text) {
    return text ? fmt::format("  (the file has {}, kept as text)", *text) : std::string();
}

void printWords(const Instance& instance) {
    fmt::print("#{} {}\n", instance.id(), printable(instance.keyword()));
    if (instance.isForeign()) {
        fmt::print("without a class, kept as text: {}\n", printable(instance.foreignText()));
        return;
    }
    std::size_t width = 0;
    for (const Attribute& attribute : instance.attributes())
        width = std::max(width, attribute.name().size());
    for (const Attribute& attribute : instance.attributes()) {
        const std::string words =
            attribute.isDerived() ? "* (derived)" : attribute.value().toString(TextForm::kDescribed);
        fmt::print("{:<{}}  {}\n", attribute.name(), width, printable(words + keptWords(attribute.keptText())));
    }
    for (const auto& [attribute, text] : instance.keptTexts())
        if (attribute.empty())
            fmt::print("kept as text after the last attribute: {}\n", printable(text));
}

std::string wordsOf(const Instance& instance) { return printable(Value(instance).toString(TextForm::kDescribed)); }

/// A line for each instance that refers to this one.
void printInverses(const Instance& instance) {
    for (const InverseAttribute& inverse : inverseAttributes(instance)) {
        fmt::print("{} (inverse)\n", inverse.name);
        for (const Instance& target : inverse.instances)
            fmt::print("  {}\n", wordsOf(target));
    }
}

/// "RelatedObjects[2]", as diff has it.
std::string placeOf(const Reference& reference) {
    std::string place(reference.attribute);
    for (const std::size_t index : reference.position)
        place += fmt::format("[{}]", index + 1);
    const std::string text = place.empty() ? "in what is kept as text" : place + ", kept as text";
    return reference.isInText ? text : place;
}

/// A line for each place where this instance is referred to.
void printReferrers(const Instance& instance) {
    const std::vector<Reference> references = referencesTo(instance);
    fmt::print("{}\n", references.empty() ? "nothing refers to it" : "referred to by");
    for (const Reference& reference : references)
        fmt::print("  {}  {}\n", wordsOf(reference.from), placeOf(reference));
}

/// A line for each derived attribute, with its value.
void printDerived(const Instance& instance, const Rules& rules) {
    for (const std::string& name : rules.derivedAttributes(instance))
        fmt::print("{} (derived)  {}\n", name, printable(rules.derived(instance, name).toText()));
}

/// Throws Failure when there is no text of the rules.
Rules rulesForDerived(const Model& model, const std::string& text) {
    std::optional<Rules> rules = rulesFor(model.core(), text);
    if (!rules)
        throw Failure(kFileFailure, howToHaveRules(model.core()));
    return std::move(*rules);
}

} // namespace

ExitCode show(const ReadFlags& flags, const std::string& address, const ShowOptions& options) {
    const Model model = openModel(flags);
    const Instance instance = model.at(address);
    const std::optional<Rules> rules =
        options.derived ? std::optional(rulesForDerived(model, options.rules)) : std::nullopt;
    if (options.json) {
        Output output(writeToStandardOutput);
        JsonWriter writer(output);
        writeInstance(writer, instance,
                      {.describe = true,
                       .inverses = options.inverses,
                       .referrers = options.referrers,
                       .derived = rules ? &*rules : nullptr});
        writer.newLine();
        output.flush();
        return exitCodeOf(model);
    }
    printWords(instance);
    if (options.inverses)
        printInverses(instance);
    if (options.referrers)
        printReferrers(instance);
    if (rules)
        printDerived(instance, *rules);
    return exitCodeOf(model);
}

} // namespace vnifc::tool
