#include "Conversion.h"

#include <VnIfcCore/VnIfcEntityBase.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcHeader.h>
#include <VnIfcCore/VnIfcRelease.h>

#include <algorithm>
#include <stdexcept>

// The whole: from the instances of the source to the text that the target reads.
namespace vnifc::conversion {

using namespace VN_SDAI;

namespace {

/// Instances between two looks at the progress.
constexpr std::size_t kBlock = 4096;
/// Numbers beyond are not counted on from.
constexpr std::uint64_t kLargestNumber = std::uint64_t{1} << 48;
/// How the work divides: writing the source, converting, reading the target.
constexpr double kWritten = 0.15;
constexpr double kConverted = 0.6;

std::uint64_t hashed(std::string_view text, std::uint64_t seed) noexcept {
    constexpr std::uint64_t kPrime = 0x100000001B3;
    std::uint64_t hash = 0xCBF29CE484222325 ^ seed;
    for (const char c : text)
        hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
    // The last characters must reach all bits.
    hash ^= hash >> 29;
    hash *= 0xBF58476D1CE4E5B9;
    return hash ^ (hash >> 32);
}

/// The name in FILE_SCHEMA for which the release's classes are taken: its own, unless a later text took that over.
std::string fileSchema(std::string_view release) {
    const std::string own(release);
    const VnIfcRelease* found = vnFindRelease(release);
    if (!found || vnChooseRelease(std::span(&own, 1)).release == found)
        return own;
    std::string_view last = release;
    for (const VnIfcServedName& name : found->serves)
        last = name.isPrefix ? last : name.text;
    return std::string(last);
}

} // namespace

Conversion::Conversion(const VnIfcModel& source, VnIfcModel& target, const ConvertOptions& options)
    : m_sourceModel(source), m_targetModel(target), m_options(options), m_source(*source.schema()),
      m_target(*target.schema()) {}

ConvertResult Conversion::run() {
    ConvertResult result;
    const auto fail = [&](VN::ErrorStatus status, std::string message) {
        m_targetModel.clear();
        result = {};
        result.status = status;
        result.message = std::move(message);
        return result;
    };
    if (m_targetModel.count() > 0)
        return {VN::eRefused, "the target model is not empty", 0, 0, 0, 0, 0, {}};
    if (!index())
        return fail(VN::eCancelled, "cancelled");
    collectFolds();
    for (std::size_t i = 0; i < m_instances.size(); ++i) {
        if (i % kBlock == 0 && !progress(kWritten + (kConverted - kWritten) * static_cast<double>(i) /
                                                        static_cast<double>(m_instances.size())))
            return fail(VN::eCancelled, "cancelled");
        const Instance& each = m_instances[i];
        m_outcomes[i].state = State::kVerbatim;
        const bool isVerbatim = each.plan && each.plan->isVerbatim && !m_folds.contains(each.number) &&
                                !m_sourceModel.find(each.number).slot()->has(VnIfcInstanceSlot::kHasKept);
        if (!isVerbatim)
            convertInstance(i);
    }
    do
        convertAgain();
    while (meetDemands());
    const std::string text = assemble(result);
    m_text = {};
    VnIfcReadOptions reading;
    reading.threads = m_options.threads;
    reading.progress = [&](double part) { return progress(kConverted + (1 - kConverted) * part); };
    const VnIfcFileResult read = m_targetModel.readText(text, reading);
    if (!read)
        return fail(read.status, read.message);
    summarise(result);
    return result;
}

/// Takes the source as text and finds the instances in it. False when the host cancelled.
bool Conversion::index() {
    VnIfcWriteOptions writing;
    writing.threads = m_options.threads;
    bool isCancelled = false;
    writing.progress = [&](double part) { return !(isCancelled = !progress(kWritten * part)); };
    m_text = m_sourceModel.writeText(writing);
    if (isCancelled)
        return false;
    const std::vector<VnDbObjectId> handles = m_sourceModel.instances();
    m_instances.reserve(handles.size());
    m_outcomes.resize(handles.size());
    const std::string_view text = m_text;
    constexpr std::string_view kData = "\nDATA;\n";
    std::size_t at = text.find(kData);
    at = at == text.npos ? text.size() : at + kData.size();
    for (std::size_t i = 0; i < handles.size(); ++i) {
        // Text that was kept may hold line ends, but not the number of the next instance at the beginning of a line.
        const std::string next =
            i + 1 < handles.size() ? ";\n#" + std::to_string(handles[i + 1].number()) + '=' : std::string(";\nENDSEC;");
        const std::size_t begin = std::min(text.find('=', at) + 1, text.size());
        const std::size_t end = std::min(text.find(next, begin), text.size());
        const VnIfcEntityBase* object = handles[i].openObject();
        Instance instance{handles[i].number(), {}, {}, text.substr(begin, end - begin), object, nullptr};
        const std::size_t open = instance.line.find('(');
        if (open != instance.line.npos && instance.line.ends_with(')')) {
            instance.keyword = instance.line.substr(0, open);
            instance.parameters = instance.line.substr(open + 1, instance.line.size() - open - 2);
        }
        if (const EntityType* type = object->getInstanceType())
            instance.plan = &planOf(*type);
        m_instances.push_back(instance);
        m_nextNumber = handles[i].number() + 1;
        at = end + 2;
    }
    // What is added must not become what a reference to nothing refers to.
    forEachReference(text, [&](std::uint64_t number) {
        if (number >= m_nextNumber && number < kLargestNumber)
            m_nextNumber = number + 1;
    });
    return true;
}

std::size_t Conversion::find(std::uint64_t number) const noexcept {
    const auto found = std::ranges::lower_bound(m_instances, number, {}, &Instance::number);
    return found != m_instances.end() && found->number == number ? static_cast<std::size_t>(found - m_instances.begin())
                                                                 : m_instances.size();
}

Record Conversion::record(std::uint64_t number) {
    Record result;
    result.number = number;
    const std::size_t i = find(number);
    if (i == m_instances.size())
        return result;
    const Instance& instance = m_instances[i];
    if (!instance.plan)
        return result;
    result.layout = instance.plan->source;
    if (!parseList(instance.parameters, result.values))
        result.values.clear();
    if (result.values.size() < result.layout->fields.size())
        result.values.resize(result.layout->fields.size());
    return result;
}

std::vector<std::uint64_t> Conversion::instancesOf(std::string_view entity) {
    std::vector<std::uint64_t> numbers;
    if (const EntityType* type = m_source.entity(entity))
        for (const VnDbObjectId& handle : m_sourceModel.instancesOf(type))
            numbers.push_back(handle.number());
    return numbers;
}

const EntityType* Conversion::typeInTarget(std::uint64_t number) const {
    if (m_gone.contains(number))
        return nullptr;
    if (const auto other = m_others.find(number); other != m_others.end())
        return other->second;
    const std::size_t i = find(number);
    return i < m_instances.size() && m_instances[i].plan ? m_instances[i].plan->mapping.target : nullptr;
}

double Conversion::unitFactor(std::string_view kind) {
    if (const auto known = m_unitFactors.find(kind); known != m_unitFactors.end())
        return known->second;
    double factor = 1;
    for (const std::uint64_t number : instancesOf("IfcConversionBasedUnit")) {
        const Record unit = record(number);
        if (unit["UnitType"].text != kind)
            continue;
        const Record measure = record(unit["ConversionFactor"]);
        const Value& value = measure["ValueComponent"];
        double found = 0;
        if ((value.items.size() == 1 ? value.items.front() : value).toReal(found) && found > 0)
            factor = found;
    }
    return m_unitFactors.emplace(kind, factor).first->second;
}

/// A GlobalId for something new, the same in each run.
Value Conversion::newGuid(std::string_view purpose) {
    const Value& own = (*m_record)["GlobalId"];
    std::string seed(own.isSet() ? own.text : '#' + std::to_string(m_record->number));
    seed.append("/").append(purpose).append("/").append(std::to_string(m_guids++));
    VnIfcGUID::Bytes bytes{};
    for (std::size_t half = 0; half < 2; ++half) {
        const std::uint64_t hash = hashed(seed, half);
        for (std::size_t i = 0; i < 8; ++i)
            bytes[half * 8 + i] = static_cast<std::uint8_t>(hash >> (8 * i));
    }
    return Value::string(VnIfcGUID::fromBytes(bytes).view());
}

/// The first owner history of the source, for what is added; without one, what the target demands.
Value Conversion::ownerHistory() {
    if (m_ownerHistory)
        return *m_ownerHistory;
    m_ownerHistory = Value::unset();
    const std::vector<std::uint64_t> numbers = instancesOf("IfcOwnerHistory");
    const Layout& root = m_target.layout(*m_target.entity("IfcRoot"));
    if (!numbers.empty())
        m_ownerHistory = Value::reference(numbers.front());
    else if (!root.fields[root.find("OwnerHistory")].isOptional)
        for (const DefaultCase& each : defaultCases())
            if (each.entity == "IfcRoot" && each.attribute == "OwnerHistory")
                m_ownerHistory = make(each.value.substr(1), true);
    return *m_ownerHistory;
}

void Conversion::collectFolds() {
    for (const Instance& each : m_instances) {
        if (!each.plan || each.plan->folds.empty())
            continue;
        const Record from = record(each.number);
        for (const FoldCase* line : each.plan->folds) {
            const Value value = line->value == "*" ? Value::reference(each.number) : from[line->value];
            if (!value.isSet())
                continue;
            forEachReference(from[line->owner], [&](std::uint64_t owner) {
                const std::size_t i = find(owner);
                // Where the source has the attribute as well, it needs no help.
                if (i < m_instances.size() && m_instances[i].plan &&
                    m_instances[i].plan->source->find(line->attribute) == Layout::kNone &&
                    !(m_target.entity(line->entity) &&
                      m_target.layout(*m_target.entity(line->entity)).find(line->owner) != Layout::kNone))
                    m_folds[owner].push_back({line, each.number, value});
            });
        }
    }
}

/// True when the instance refers to one that is gone, or is of another class than it was taken for.
bool Conversion::refersToGone(std::size_t i) const {
    bool refers = false;
    const Outcome& outcome = m_outcomes[i];
    const auto visit = [&](std::uint64_t number) { refers = refers || m_gone.contains(number); };
    if (outcome.state == State::kVerbatim)
        forEachReference(m_instances[i].parameters, visit);
    else if (outcome.state == State::kWritten)
        forEachReference(outcome.text, visit);
    for (const auto& [number, text] : outcome.created)
        forEachReference(text, visit);
    return refers;
}

/// Whoever refers to what has dropped out, or turned out to be of another class, is converted again.
void Conversion::convertAgain() {
    std::size_t known = 0;
    std::unordered_set<std::uint64_t> retyped;
    while (true) {
        for (std::size_t i = 0; i < m_instances.size(); ++i) {
            const Outcome& outcome = m_outcomes[i];
            const Plan* plan = m_instances[i].plan;
            if (outcome.state == State::kWritten && plan && outcome.type &&
                outcome.type != typeInTarget(m_instances[i].number)) {
                m_others[m_instances[i].number] = outcome.type;
                retyped.insert(m_instances[i].number);
            }
        }
        if (m_gone.size() == known && retyped.empty())
            return;
        known = m_gone.size();
        m_gone.insert(retyped.begin(), retyped.end()); // for the look at the texts only
        std::vector<std::size_t> again;
        for (std::size_t i = 0; i < m_instances.size(); ++i)
            if (refersToGone(i))
                again.push_back(i);
        for (const std::uint64_t number : retyped)
            m_gone.erase(number);
        retyped.clear();
        for (const std::size_t i : again)
            convertInstance(i);
    }
}

std::string Conversion::assemble(ConvertResult& result) const {
    std::string out = "ISO-10303-21;\nHEADER;\n";
    VnIfcHeader header = m_sourceModel.header();
    if (header.entries().empty())
        header = VnIfcHeader::standard(m_target.name(), "", "1970-01-01T00:00:00");
    header.set("FILE_SCHEMA", "('" + fileSchema(m_target.name()) + "')");
    for (const VnIfcHeader::Entry& entry : header.entries())
        out += entry.keyword + '(' + entry.parameters + ");\n";
    out += "ENDSEC;\nDATA;\n";
    out.reserve(m_text.size() + m_text.size() / 8);
    const auto line = [&](std::uint64_t number, std::string_view text) {
        out += '#';
        out += std::to_string(number);
        out += '=';
        out += text;
        out += ";\n";
    };
    for (std::size_t i = 0; i < m_instances.size(); ++i) {
        const Instance& instance = m_instances[i];
        if (m_outcomes[i].state == State::kWritten) {
            line(instance.number, m_outcomes[i].text);
        } else if (m_outcomes[i].state == State::kVerbatim) {
            out += '#';
            out += std::to_string(instance.number);
            out += '=';
            out += instance.plan->target->keyword;
            out += instance.line.substr(instance.keyword.size());
            out += ";\n";
        }
    }
    for (const auto& [number, text] : m_sharedTexts)
        line(number, text);
    result.added = m_sharedTexts.size();
    for (const Outcome& outcome : m_outcomes) {
        for (const auto& [number, text] : outcome.created)
            line(number, text);
        result.added += outcome.created.size();
    }
    return out + "ENDSEC;\nEND-ISO-10303-21;\n";
}

void Conversion::summarise(ConvertResult& result) const {
    for (std::size_t i = 0; i < m_instances.size(); ++i) {
        const Outcome& outcome = m_outcomes[i];
        const Plan* plan = m_instances[i].plan;
        bool isChanged = outcome.state == State::kAbsorbed;
        bool isReduced = false;
        for (const ConvertFinding& finding : outcome.findings) {
            ++result.findings[finding.kind];
            isReduced = isReduced || isLoss(finding.kind);
            isChanged = isChanged || finding.kind != ConvertKind::kKeptText;
            if (m_options.findings)
                m_options.findings(finding);
        }
        if (outcome.state == State::kVerbatim && plan->mapping.way == Mapping::Way::kRenamed) {
            const ConvertFinding finding{
                ConvertKind::kRenamedEntity,     m_instances[i].number,           std::string(plan->source->name),  {},
                std::string(plan->source->name), std::string(plan->target->name), std::string(plan->mapping.reason)};
            ++result.findings[finding.kind];
            isChanged = true;
            if (m_options.findings)
                m_options.findings(finding);
        }
        if (outcome.state == State::kLost)
            ++result.lost;
        else
            ++(isReduced ? result.reduced : isChanged ? result.changed : result.carried);
    }
}

} // namespace vnifc::conversion
