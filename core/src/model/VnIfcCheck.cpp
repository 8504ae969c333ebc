#include "../exchange/SpfScan.h"
#include "ModelData.h"

#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcText.h>

#include <algorithm>
#include <optional>
#include <unordered_map>
#include <vector>

namespace VN_SDAI {

namespace {

/// The numbers that stand in texts that were kept as they came, ascending.
std::vector<std::uint64_t> numbersInTexts(const VnIfcModel& model) {
    std::vector<std::uint64_t> numbers;
    const auto collect = [&](std::string_view text) {
        const auto add = [&](const char*, const char*, std::uint64_t number) { numbers.push_back(number); };
        spf::forEachReference(VnSpfText(text).view(), add);
    };
    model.forEach([&](const VnIfcEntityBase& instance) {
        if (!instance.getInstanceType())
            collect(dynamic_cast<const VnIfcForeignInstance&>(instance).parameters());
    });
    for (const auto& [slot, kept] : model.data().kept) {
        if (slot->has(VnIfcInstanceSlot::kErased))
            continue;
        for (const KeptParameters::Parameter& parameter : kept.parameters)
            collect(parameter.text);
        collect(kept.surplus);
    }
    std::ranges::sort(numbers);
    return numbers;
}

} // namespace

/// Who was the first with the values of a UNIQUE rule, and what is looked up once.
struct VnIfcCheck::Seen {
    std::unordered_map<const void*, std::unordered_map<std::string, std::uint64_t>> byRule;
    std::optional<std::vector<std::uint64_t>> namedInText;
};

VnIfcCheck::VnIfcCheck(const VnIfcModel& model, VnIfcDiagnosticSink sink, bool inverses)
    : m_model(model), m_sink(std::move(sink)), m_inverses(inverses), m_seen(std::make_unique<Seen>()) {}

VnIfcCheck::~VnIfcCheck() = default;

void VnIfcCheck::run() {
    m_model.forEach([&](const VnIfcEntityBase& instance) { instance.check(*this); });
}

void VnIfcCheck::report(VnIfcDiagnostic::Severity severity, const char* code, const VnIfcEntityBase& instance,
                        std::string_view attribute, std::string found, std::string expected) {
    if (severity == VnIfcDiagnostic::kError)
        ++m_errors;
    if (severity == VnIfcDiagnostic::kWarning)
        ++m_warnings;
    if (!m_sink)
        return;
    VnIfcDiagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.code = code;
    diagnostic.instance = instance.objectId().number();
    if (const VnIfcEntityType* type = instance.getInstanceType())
        diagnostic.keyword = type->name();
    diagnostic.attribute = attribute;
    diagnostic.found = std::move(found);
    diagnostic.expected = std::move(expected);
    m_model.place(instance.objectId(), diagnostic.line, diagnostic.column);
    m_sink(diagnostic);
}

void VnIfcCheck::unique(const VnIfcEntityBase& instance, const void* rule, std::string_view attributes,
                        std::string values) {
    const std::uint64_t number = instance.objectId().number();
    const auto [first, isNew] = m_seen->byRule[rule].try_emplace(std::move(values), number);
    if (isNew)
        return;
    report(VnIfcDiagnostic::kError, "unique", instance, attributes, "the value of #" + std::to_string(first->second),
           "a value that no other instance has");
}

bool VnIfcCheck::isNamedInText(const VnIfcEntityBase& instance) {
    if (!m_seen->namedInText)
        m_seen->namedInText = numbersInTexts(m_model);
    return std::ranges::binary_search(*m_seen->namedInText, instance.objectId().number());
}

void VnIfcCheck::text(const VnIfcEntityBase& instance, std::string_view attribute, std::string_view value) {
    const bool isPlain =
        std::all_of(value.begin(), value.end(), [](char c) { return c >= ' ' && c <= '~' && c != '\\'; });
    if (isPlain)
        return;
    const VnIfcDecodedText decoded = vnDecodeText(value);
    if (decoded.faults.empty())
        return;
    const auto& fault = decoded.faults.front();
    report(VnIfcDiagnostic::kWarning, "text", instance, attribute,
           std::string(value.substr(fault.offset, fault.length)), "text that can be decoded");
}

} // namespace VN_SDAI
