#include "../exchange/SpfScan.h"
#include "../exchange/WorkSharing.h"
#include "ModelData.h"

#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcText.h>

#include <algorithm>
#include <array>
#include <climits>
#include <mutex>
#include <utility>
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

/// Who was the first with values under UNIQUE rules, found by their hash: the values themselves are with the instances.
class FirstInstances {
public:
    /// The instance whose values under the rule are equal; null, and it is that instance from now on, when there is
    /// none.
    const VnIfcEntityBase* first(std::size_t hash, const void* rule, const VnIfcEntityBase& instance) {
        if (m_count * 2 >= m_cells.size())
            grow();
        for (std::size_t i = hash & (m_cells.size() - 1);; i = (i + 1) & (m_cells.size() - 1)) {
            Cell& cell = m_cells[i];
            if (!cell.instance) {
                cell = {hash, rule, &instance};
                ++m_count;
                return nullptr;
            }
            if (cell.hash == hash && cell.rule == rule && isEqual(rule, *cell.instance, instance))
                return cell.instance;
        }
    }

private:
    struct Cell {
        std::size_t hash;
        const void* rule;
        const VnIfcEntityBase* instance;
    };

    bool isEqual(const void* rule, const VnIfcEntityBase& a, const VnIfcEntityBase& b) {
        m_values[0].clear();
        m_values[1].clear();
        return a.uniqueValues(rule, m_values[0]) && b.uniqueValues(rule, m_values[1]) && m_values[0] == m_values[1];
    }
    void grow() {
        const std::vector<Cell> former = std::exchange(m_cells, {});
        m_cells.resize(std::max(kFewest, former.size() * 2));
        for (const Cell& cell : former) {
            std::size_t i = cell.hash & (m_cells.size() - 1);
            while (cell.instance && m_cells[i].instance)
                i = (i + 1) & (m_cells.size() - 1);
            if (cell.instance)
                m_cells[i] = cell;
        }
    }

    static constexpr std::size_t kFewest = 64;

    std::vector<Cell> m_cells; // a power of two of them
    std::size_t m_count = 0;
    std::array<std::string, 2> m_values;
};

/// So many parts share the values under UNIQUE rules, each of which one thread looks at.
constexpr std::size_t kSeenParts = 64;
// Blocks that are checked before what they found is told: so many that threads rarely wait for each other, so few that
// findings stay in the cache.
constexpr std::size_t kRoundPerThread = 16;
constexpr std::size_t kSlotsChecked = 250; // slots

} // namespace

/// What is looked up once, and who was the first with the values of a UNIQUE rule.
struct VnIfcCheck::Seen {
    static std::size_t partOf(std::size_t hash) noexcept {
        return hash >> (sizeof hash * CHAR_BIT - 8) & (kSeenParts - 1);
    }

    std::array<FirstInstances, kSeenParts> parts;
    std::once_flag areNamesKnown;
    std::vector<std::uint64_t> namedInText;
};

/// What one block of instances has: findings, and values on whose uniqueness is decided when those before are known.
struct VnIfcCheck::Part {
    struct Value {
        std::size_t hash;
        const void* rule;
        const VnIfcEntityBase* instance;
        std::size_t place; ///< findings before it
    };
    struct Conflict {
        std::size_t order; ///< of the value in the block
        const VnIfcEntityBase* first;
    };

    void clear() {
        findings.clear();
        values.clear();
        for (std::vector<std::uint32_t>& each : parts)
            each.clear();
        for (std::vector<Conflict>& each : conflicts)
            each.clear();
    }

    std::uint64_t errors = 0; // those under UNIQUE rules are not among them
    std::uint64_t warnings = 0;
    std::vector<VnIfcDiagnostic> findings;
    std::vector<Value> values;
    std::array<std::vector<std::uint32_t>, kSeenParts> parts; // which of the values belong to each
    std::array<std::vector<Conflict>, kSeenParts> conflicts;
};

/// Checks blocks at once: each of them finds what it can, then the values of all are compared, in the order of the
/// blocks, and then everything is told in that order.
class VnIfcCheck::Run {
public:
    Run(VnIfcCheck& check, const SlotRuns& runs, unsigned threads)
        : m_check(check), m_runs(runs), m_threads(threads),
          m_parts(std::min(threads * kRoundPerThread, runs.blocks())) {}

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
            m_parts[i].errors = check.errors();
            m_parts[i].warnings = check.warnings();
            return true;
        });
        shareWork(kSeenParts, m_threads, {}, [&](unsigned, std::size_t seen) {
            for (std::size_t i = 0; i < count; ++i)
                compare(m_parts[i], seen);
            return true;
        });
        if (m_check.m_takesFindings)
            shareWork(count, m_threads, {}, [&](unsigned, std::size_t i) {
                addConflicts(m_parts[i]);
                return true;
            });
        for (std::size_t i = 0; i < count; ++i)
            tell(m_parts[i]);
    }

    void compare(Part& part, std::size_t seen) {
        FirstInstances& known = m_check.m_seen->parts[seen];
        for (const std::uint32_t order : part.parts[seen]) {
            const Part::Value& value = part.values[order];
            if (const VnIfcEntityBase* first = known.first(value.hash, value.rule, *value.instance))
                part.conflicts[seen].push_back({order, first});
        }
    }

    void tell(Part& part) {
        for (VnIfcDiagnostic& finding : part.findings)
            m_check.emit(finding);
        m_check.m_errors += part.errors;
        m_check.m_warnings += part.warnings;
        for (const std::vector<Part::Conflict>& each : part.conflicts)
            m_check.m_errors += each.size();
    }

    /// Puts findings about equal values where they belong among the others.
    void addConflicts(Part& part) {
        std::vector<Part::Conflict> conflicts;
        for (const std::vector<Part::Conflict>& each : part.conflicts)
            conflicts.insert(conflicts.end(), each.begin(), each.end());
        if (conflicts.empty())
            return;
        std::ranges::sort(conflicts, {}, &Part::Conflict::order);
        std::vector<VnIfcDiagnostic> all;
        all.reserve(part.findings.size() + conflicts.size());
        std::size_t next = 0;
        for (const Part::Conflict& conflict : conflicts) {
            const Part::Value& value = part.values[conflict.order];
            while (next < value.place)
                all.push_back(std::move(part.findings[next++]));
            all.push_back(m_check.equalValues(*value.instance, value.rule, *conflict.first));
        }
        while (next < part.findings.size())
            all.push_back(std::move(part.findings[next++]));
        part.findings = std::move(all);
    }

    VnIfcCheck& m_check;
    const SlotRuns& m_runs;
    unsigned m_threads;
    std::vector<Part> m_parts; // of the blocks of a round
};

VnIfcCheck::VnIfcCheck(const VnIfcModel& model, VnIfcDiagnosticSink sink, bool inverses)
    : m_model(model), m_sink(std::move(sink)), m_takesFindings(m_sink), m_inverses(inverses),
      m_seen(std::make_shared<Seen>()) {}

VnIfcCheck::VnIfcCheck(const VnIfcCheck& whole, Part& part)
    : m_model(whole.m_model), m_takesFindings(whole.m_takesFindings), m_inverses(whole.m_inverses),
      m_seen(whole.m_seen), m_part(&part) {}

VnIfcCheck::~VnIfcCheck() = default;

void VnIfcCheck::run(unsigned threads) {
    const SlotRuns runs = m_model.data().runs(kSlotsChecked);
    threads = threadsFor(threads, runs.blocks());
    if (threads > 1)
        return Run(*this, runs, threads).run();
    for (std::size_t i = 0; i < runs.blocks(); ++i)
        runs.forEach(i, [&](const VnIfcInstanceSlot& slot) { slot.object()->check(*this); });
}

VnIfcDiagnostic VnIfcCheck::finding(VnIfcDiagnostic::Severity severity, const char* code,
                                    const VnIfcEntityBase& instance, std::string_view attribute, std::string found,
                                    std::string expected) const {
    VnIfcDiagnostic diagnostic;
    diagnostic.severity = severity;
    diagnostic.code = code;
    diagnostic.instance = instance.objectId().number();
    if (const VnIfcEntityType* type = instance.getInstanceType())
        diagnostic.keyword = type->name();
    diagnostic.attribute = attribute;
    diagnostic.found = std::move(found);
    diagnostic.expected = std::move(expected);
    return diagnostic;
}

VnIfcDiagnostic VnIfcCheck::equalValues(const VnIfcEntityBase& instance, const void* rule,
                                        const VnIfcEntityBase& first) const {
    return finding(VnIfcDiagnostic::kError, "unique", instance, instance.uniqueAttributes(rule),
                   "the value of #" + std::to_string(first.objectId().number()), "a value that no other instance has");
}

void VnIfcCheck::report(VnIfcDiagnostic::Severity severity, const char* code, const VnIfcEntityBase& instance,
                        std::string_view attribute, std::string found, std::string expected) {
    if (severity == VnIfcDiagnostic::kError)
        ++m_errors;
    if (severity == VnIfcDiagnostic::kWarning)
        ++m_warnings;
    if (!m_takesFindings)
        return;
    VnIfcDiagnostic diagnostic = finding(severity, code, instance, attribute, std::move(found), std::move(expected));
    if (m_part)
        m_part->findings.push_back(std::move(diagnostic));
    else
        emit(diagnostic);
}

void VnIfcCheck::emit(VnIfcDiagnostic& diagnostic) {
    m_model.place(m_model.find(diagnostic.instance), diagnostic.line, diagnostic.column);
    m_sink(diagnostic);
}

void VnIfcCheck::unique(const VnIfcEntityBase& instance, const void* rule) {
    m_values.clear();
    if (!instance.uniqueValues(rule, m_values))
        return;
    const std::size_t hash = std::hash<std::string_view>()(m_values);
    const std::size_t seen = Seen::partOf(hash);
    if (m_part) {
        m_part->parts[seen].push_back(static_cast<std::uint32_t>(m_part->values.size()));
        m_part->values.push_back({hash, rule, &instance, m_part->findings.size()});
        return;
    }
    const VnIfcEntityBase* const first = m_seen->parts[seen].first(hash, rule, instance);
    if (!first)
        return;
    ++m_errors;
    if (m_takesFindings) {
        VnIfcDiagnostic diagnostic = equalValues(instance, rule, *first);
        emit(diagnostic);
    }
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
