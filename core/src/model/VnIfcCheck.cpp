#include "../exchange/SpfScan.h"
#include "../exchange/WorkSharing.h"
#include "ModelData.h"

#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcText.h>

#include <algorithm>
#include <array>
#include <mutex>
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

/// The values under UNIQUE rules are kept in so many parts, each of which one thread looks at.
constexpr std::size_t kSeenParts = 64;
// Blocks that are checked before what they found is told: so many that threads rarely wait for each other, so few that
// findings take little memory.
constexpr std::size_t kRound = 256;
constexpr std::size_t kBlock = 1000; // slots

} // namespace

/// Who was the first with the values of a UNIQUE rule, and what is looked up once.
struct VnIfcCheck::Seen {
    using Values = std::unordered_map<std::string, std::uint64_t>;

    /// The instance that has the values already; null, and `number` has them from now on, when there is none.
    const std::uint64_t* first(std::size_t part, const void* rule, std::string values, std::uint64_t number) {
        const auto [found, isNew] = byRule[part][rule].try_emplace(std::move(values), number);
        return isNew ? nullptr : &found->second;
    }

    std::array<std::unordered_map<const void*, Values>, kSeenParts> byRule;
    std::once_flag areNamesKnown;
    std::vector<std::uint64_t> namedInText;
};

/// What one block of instances has: findings, and values on whose uniqueness is decided when those before are known.
struct VnIfcCheck::Part {
    struct Value {
        const void* rule;
        const VnIfcEntityBase* instance;
        std::string values;
        std::size_t order; ///< among those of the block
        std::size_t place; ///< findings before it
    };
    struct Conflict {
        Value value;
        std::uint64_t first; ///< the instance that has the values
    };

    std::string_view attributesOf(const void* rule) const {
        return std::ranges::find(attributes, rule, &std::pair<const void*, std::string>::first)->second;
    }
    void clear() {
        findings.clear();
        for (std::vector<Value>& each : values)
            each.clear();
        for (std::vector<Conflict>& each : conflicts)
            each.clear();
        count = 0;
    }

    std::vector<VnIfcDiagnostic> findings;
    std::array<std::vector<Value>, kSeenParts> values;
    std::array<std::vector<Conflict>, kSeenParts> conflicts;
    std::size_t count = 0;                                       // of values
    std::vector<std::pair<const void*, std::string>> attributes; // of the rules that occurred
};

/// Checks blocks at once: each of them finds what it can, then the values of all are compared, in the order of the
/// blocks, and then everything is told in that order.
class VnIfcCheck::Run {
public:
    Run(VnIfcCheck& check, const SlotRuns& runs, unsigned threads)
        : m_check(check), m_runs(runs), m_threads(threads), m_parts(std::min(kRound, runs.blocks())) {}

    void run() {
        for (std::size_t first = 0; first < m_runs.blocks(); first += m_parts.size())
            checkRound(first, std::min(m_parts.size(), m_runs.blocks() - first));
    }

private:
    void checkRound(std::size_t first, std::size_t count) {
        shareWork(count, m_threads, {}, [&](unsigned, std::size_t i) {
            m_parts[i].clear();
            VnIfcCheck check(m_check, m_parts[i]);
            m_runs.forEach(first + i, [&](const VnIfcInstanceSlot& slot) { slot.object()->check(check); });
            return true;
        });
        shareWork(kSeenParts, m_threads, {}, [&](unsigned, std::size_t seen) {
            for (std::size_t i = 0; i < count; ++i)
                compare(m_parts[i], seen);
            return true;
        });
        for (std::size_t i = 0; i < count; ++i)
            tell(m_parts[i]);
    }

    void compare(Part& part, std::size_t seen) {
        for (Part::Value& value : part.values[seen]) {
            const std::uint64_t number = value.instance->objectId().number();
            const std::uint64_t* first = m_check.m_seen->first(seen, value.rule, std::move(value.values), number);
            if (first)
                part.conflicts[seen].push_back({std::move(value), *first});
        }
    }

    void tell(const Part& part) {
        std::vector<const Part::Conflict*> conflicts;
        for (const std::vector<Part::Conflict>& each : part.conflicts)
            for (const Part::Conflict& conflict : each)
                conflicts.push_back(&conflict);
        std::ranges::sort(conflicts, {}, [](const Part::Conflict* each) { return each->value.order; });
        auto conflict = conflicts.begin();
        for (std::size_t place = 0; place <= part.findings.size(); ++place) {
            for (; conflict != conflicts.end() && (*conflict)->value.place == place; ++conflict) {
                const Part::Value& value = (*conflict)->value;
                m_check.reportEqual(*value.instance, part.attributesOf(value.rule), (*conflict)->first);
            }
            if (place < part.findings.size())
                m_check.emit(part.findings[place]);
        }
    }

    VnIfcCheck& m_check;
    const SlotRuns& m_runs;
    unsigned m_threads;
    std::vector<Part> m_parts; // of the blocks of a round
};

VnIfcCheck::VnIfcCheck(const VnIfcModel& model, VnIfcDiagnosticSink sink, bool inverses)
    : m_model(model), m_sink(std::move(sink)), m_inverses(inverses), m_seen(std::make_shared<Seen>()) {}

VnIfcCheck::VnIfcCheck(const VnIfcCheck& whole, Part& part)
    : m_model(whole.m_model), m_inverses(whole.m_inverses), m_seen(whole.m_seen), m_part(&part) {}

VnIfcCheck::~VnIfcCheck() = default;

void VnIfcCheck::run(unsigned threads) {
    const SlotRuns runs = m_model.data().runs(kBlock);
    threads = threadsFor(threads, runs.blocks());
    if (threads > 1)
        return Run(*this, runs, threads).run();
    for (std::size_t i = 0; i < runs.blocks(); ++i)
        runs.forEach(i, [&](const VnIfcInstanceSlot& slot) { slot.object()->check(*this); });
}

void VnIfcCheck::report(VnIfcDiagnostic::Severity severity, const char* code, const VnIfcEntityBase& instance,
                        std::string_view attribute, std::string found, std::string expected) {
    VnIfcDiagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.code = code;
    diagnostic.instance = instance.objectId().number();
    if (const VnIfcEntityType* type = instance.getInstanceType())
        diagnostic.keyword = type->name();
    diagnostic.attribute = attribute;
    diagnostic.found = std::move(found);
    diagnostic.expected = std::move(expected);
    if (m_part)
        m_part->findings.push_back(std::move(diagnostic));
    else
        emit(std::move(diagnostic));
}

void VnIfcCheck::emit(VnIfcDiagnostic diagnostic) {
    if (diagnostic.severity == VnIfcDiagnostic::kError)
        ++m_errors;
    if (diagnostic.severity == VnIfcDiagnostic::kWarning)
        ++m_warnings;
    if (!m_sink)
        return;
    m_model.place(m_model.find(diagnostic.instance), diagnostic.line, diagnostic.column);
    m_sink(diagnostic);
}

void VnIfcCheck::unique(const VnIfcEntityBase& instance, const void* rule, std::string_view attributes,
                        std::string values) {
    const std::size_t seen = std::hash<std::string_view>()(values) % kSeenParts;
    if (m_part) {
        auto& known = m_part->attributes;
        if (std::ranges::find(known, rule, &std::pair<const void*, std::string>::first) == known.end())
            known.emplace_back(rule, attributes);
        m_part->values[seen].push_back({rule, &instance, std::move(values), m_part->count++, m_part->findings.size()});
        return;
    }
    const std::uint64_t number = instance.objectId().number();
    if (const std::uint64_t* first = m_seen->first(seen, rule, std::move(values), number))
        reportEqual(instance, attributes, *first);
}

void VnIfcCheck::reportEqual(const VnIfcEntityBase& instance, std::string_view attributes, std::uint64_t first) {
    report(VnIfcDiagnostic::kError, "unique", instance, attributes, "the value of #" + std::to_string(first),
           "a value that no other instance has");
}

bool VnIfcCheck::isNamedInText(const VnIfcEntityBase& instance) {
    std::call_once(m_seen->areNamesKnown, [&] { m_seen->namedInText = numbersInTexts(m_model); });
    return std::ranges::binary_search(m_seen->namedInText, instance.objectId().number());
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
