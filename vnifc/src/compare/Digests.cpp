#include "Digests.h"

#include "../whole/ChildrenFirst.h"

#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcText.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

namespace vnifc::detail {

using namespace VN_SDAI;
using typed::AttributeKind;
using typed::AttributeRow;
using typed::fieldOf;

namespace {

// What stands for values that have no bits of their own; none of them is 0, which means that nothing is set.
constexpr std::uint64_t kNothing = 0;
constexpr std::uint64_t kDangling = 0x9E3779B97F4A7C15;
constexpr std::uint64_t kInteger = 0xD1B54A32D192ED03;
constexpr std::uint64_t kTruth = 0x8CB92BA72F3D8DD7;

std::uint64_t scramble(std::uint64_t value) noexcept {
    value ^= value >> 32;
    value *= 0xE9846AF9B1A615D;
    value ^= value >> 32;
    value *= 0xE9846AF9B1A615D;
    return value ^ (value >> 28);
}

std::uint64_t ofNumber(double value) noexcept {
    // -0 is 0.
    return std::isnan(value) ? kNothing : scramble(std::bit_cast<std::uint64_t>(value + 0.0) + 1);
}

std::uint64_t ofInteger(int value) noexcept {
    return value == Consts::VnIntUnset ? kNothing : scramble(kInteger + static_cast<std::uint64_t>(value));
}

std::uint64_t ofExchangeText(std::string_view text) {
    if (text == Consts::VnStringUnset)
        return kNothing;
    if (text.find('\\') == text.npos)
        return Digests::ofText(text);
    std::string buffer;
    return Digests::ofText(vnDecodeText(text, buffer));
}

std::uint64_t ofLiteral(const typed::EnumerationClass& type, std::uint32_t code) noexcept {
    const char* literal = type.toLiteral(static_cast<int>(code));
    return literal ? Digests::ofText(literal) : kNothing;
}

std::uint64_t ofNameInAnyCase(std::string_view name) {
    std::string lower(name);
    for (char& c : lower)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c;
    return Digests::ofText(lower);
}

} // namespace

std::uint64_t Digests::mix(std::uint64_t left, std::uint64_t right) noexcept {
    return scramble(std::rotl(left, 23) + 0x9E3779B97F4A7C15 + right);
}

std::uint64_t Digests::ofText(std::string_view text) noexcept {
    std::uint64_t result = text.size() + 1;
    while (text.size() >= sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), sizeof word);
        result = mix(result, word);
        text.remove_prefix(sizeof word);
    }
    std::uint64_t rest = 0;
    std::memcpy(&rest, text.data(), text.size());
    return mix(result, rest);
}

const Digests::Plan& Digests::planOf(const VnIfcEntityType& type) {
    if (&type == m_lastType)
        return *m_lastPlan;
    std::unique_ptr<Plan>& plan = m_plans[&type];
    if (!plan)
        plan = makePlan(m_state.classOf(type));
    m_lastType = &type;
    m_lastPlan = plan.get();
    return *plan;
}

std::unique_ptr<Digests::Plan> Digests::makePlan(const ClassInfo& info) const {
    auto plan = std::make_unique<Plan>();
    plan->keyword = ofText(info.rows.keyword);
    const bool isRooted = info.type.isKindOf(m_state.schema().entity("IfcRoot"));
    const auto isIgnored = [&](std::string_view name) {
        return std::ranges::any_of(m_rules.ignored, [&](const std::string& each) { return sameName(each, name); });
    };
    for (const AttributeInfo& attribute : info.attributes) {
        const std::string_view name = attribute.row->name;
        if (attribute.isDerived || isIgnored(name) || (m_rules.ignoreSets && name == "HasPropertySets"))
            continue;
        const bool isOfRoot = isRooted && (name == "GlobalId" || name == "OwnerHistory" || name == "Description");
        plan->fields.push_back({attribute.row, attribute.position, ofNameInAnyCase(name), isOfRoot});
    }
    return plan;
}

std::uint64_t Digests::digest(const VnIfcEntityBase& instance, bool withRoot) {
    const VnIfcEntityType* type = instance.getInstanceType();
    if (!type)
        return digestOfText(instance);
    const Plan& plan = planOf(*type);
    std::uint64_t result = plan.keyword;
    const bool keepsText = hasText(instance);
    for (const Field& each : plan.fields) {
        if (each.isOfRoot && !withRoot)
            continue;
        const std::uint64_t value = keepsText && instance.keepsText(each.position)
                                        ? referringText(instance.keptText(each.position))
                                        : field(instance, *each.row);
        if (value != kNothing)
            result += mix(each.name, value);
    }
    // What follows the last attribute.
    if (keepsText)
        for (const auto& [position, text] : instance.keptTexts())
            if (position >= m_state.classOf(instance)->attributes.size())
                result += mix(position, referringText(text));
    return scramble(result) | 1;
}

std::uint64_t Digests::digestOfText(const VnIfcEntityBase& instance) const {
    const auto& foreign = static_cast<const VnIfcForeignInstance&>(instance);
    return mix(ofText(foreign.keyword().view()), referringText(foreign.parameters().view())) | 1;
}

std::uint64_t Digests::referringText(std::string_view text) const {
    std::uint64_t result = 1;
    std::size_t done = 0;
    forEachTextReference(text, [&](std::size_t begin, std::size_t end, std::uint64_t number) {
        result = mix(result, ofText(text.substr(done, begin - done)));
        const std::uint32_t ordinal = m_roster.ordinalOf(number);
        result = mix(result, ordinal == Roster::kNone ? kDangling : target(ordinal));
        done = end;
    });
    return mix(result, ofText(text.substr(done)));
}

std::uint64_t Digests::reference(const VnDbObjectId& handle) const {
    if (handle.isNull())
        return kNothing;
    const std::uint32_t ordinal = m_roster.ordinalOf(handle);
    return ordinal == Roster::kNone ? kDangling : target(ordinal);
}

std::uint64_t Digests::field(const VnIfcEntityBase& instance, const AttributeRow& row) const {
    switch (row.kind) {
    case AttributeKind::kString:
    case AttributeKind::kBinary:
        return ofExchangeText(fieldOf<VnAnsiString>(instance, row));
    case AttributeKind::kGuid:
        return fieldOf<VnIfcGUID>(instance, row).isUnset() ? kNothing
                                                           : ofText(fieldOf<VnIfcGUID>(instance, row).view());
    case AttributeKind::kReal:
        return ofNumber(fieldOf<double>(instance, row));
    case AttributeKind::kInteger:
        return ofInteger(fieldOf<int>(instance, row));
    case AttributeKind::kBoolean: {
        const auto value = fieldOf<VnIfcBoolean>(instance, row);
        return value.isUnset() ? kNothing : kTruth + (value == VnIfcBoolean::True ? 1 : 0);
    }
    case AttributeKind::kLogical: {
        const auto value = fieldOf<VnIfcLogical>(instance, row);
        return value.isUnset()                  ? kNothing
               : value == VnIfcLogical::Unknown ? kTruth + 2
                                                : kTruth + (value == VnIfcLogical::True ? 1 : 0);
    }
    case AttributeKind::kReference:
        return reference(fieldOf<VnDbObjectId>(instance, row));
    case AttributeKind::kEnumeration:
        return ofLiteral(typed::enumerationClassOf(row), fieldOf<std::uint32_t>(instance, row));
    case AttributeKind::kSelect:
        return select(fieldOf<typed::Select>(instance, row));
    case AttributeKind::kAggregate:
        return aggregate(fieldOf<VnIfcAggr>(instance, row));
    case AttributeKind::kDerived:
        return kNothing;
    }
    return kNothing;
}

std::uint64_t Digests::aggregate(const VnIfcAggr& elements) const {
    const std::uint32_t count = elements.count();
    if (count == 0)
        return kNothing;
    const bool isOrdered = elements.isOrdered();
    std::uint64_t result = count;
    const auto add = [&](std::uint64_t element) {
        result = isOrdered ? mix(result, element) : result + scramble(element + 1);
    };
    const VnTypeCodeKind kind = elements.elementKind();
    const std::uint32_t size = elements.imp().elementSize();
    const auto* element = static_cast<const char*>(elements.imp().data());
    for (std::uint32_t i = 0; i < count; ++i, element += size) {
        switch (kind) {
        case VnTypeCodeKind::kEntity:
            add(reference(*reinterpret_cast<const VnDbObjectId*>(element)));
            break;
        case VnTypeCodeKind::kReal:
            add(ofNumber(*reinterpret_cast<const double*>(element)));
            break;
        case VnTypeCodeKind::kInteger:
            add(ofInteger(*reinterpret_cast<const int*>(element)));
            break;
        case VnTypeCodeKind::kString:
            add(ofExchangeText(*reinterpret_cast<const VnAnsiString*>(element)));
            break;
        case VnTypeCodeKind::kSelect:
            add(select(*reinterpret_cast<const typed::Select*>(element)));
            break;
        default:
            add(aggregate(*reinterpret_cast<const VnIfcAggr*>(element)));
        }
    }
    return scramble(result) | 1;
}

std::uint64_t Digests::select(const typed::Select& value) const {
    if (!value.hasValue())
        return kNothing;
    if (value.kind() == VnTypeCodeKind::kEntity)
        return reference(value.getHandle());
    VnIfcBoolean truth;
    VnIfcLogical logical;
    int number = 0;
    double real = 0;
    std::uint32_t code = 0;
    std::uint64_t held = 0;
    if (value.getDouble(real))
        held = ofNumber(real);
    else if (value.getInt32(number))
        held = ofInteger(number);
    else if (value.getBoolean(truth))
        held = kTruth + (truth == VnIfcBoolean::True ? 1 : 0);
    else if (value.getLogical(logical))
        held = kTruth + (logical == VnIfcLogical::Unknown ? 2 : logical == VnIfcLogical::True ? 1 : 0);
    else if (value.getEnum(code) && value.chosen() && value.chosen()->enumeration)
        held = ofLiteral(*value.chosen()->enumeration, code);
    else if (const VnIfcAggr* elements = value.getAggr())
        held = aggregate(*elements);
    else
        held = ofExchangeText(value.text());
    return mix(ofNameInAnyCase(value.underlyingTypeName().view()), held) | 1;
}

Digests::Digests(ModelState& state, const Roster& roster, Rules rules, const std::vector<bool>* wanted)
    : m_state(state), m_roster(roster), m_rules(std::move(rules)), m_identities(roster.size()),
      m_digests(roster.size()) {
    for (std::uint32_t i = 0; i < roster.size(); ++i)
        if (const VnIfcGUID* id = roster.instance(i).globalId(); id && !id->isUnset() && id->length() > 0)
            m_identities[i] = ofText(id->view());
    childrenFirst(
        roster.size(), [&](std::uint32_t i) { return !wanted || (*wanted)[i]; },
        [&](std::uint32_t i, const auto& visit) {
            forEachTarget(m_state, m_roster, m_roster.instance(i), [&](std::uint32_t child) {
                if (m_identities[child] == 0)
                    visit(child);
            });
        },
        [&](std::uint32_t i) { m_digests[i] = digest(m_roster.instance(i), true); });
}

std::uint64_t Digests::target(std::uint32_t ordinal) const {
    const std::uint64_t value = asTarget(ordinal);
    if (value != 0)
        return value;
    // One that is not finished closes a circle.
    const VnIfcEntityType* type = m_roster.instance(ordinal).getInstanceType();
    return type ? ofText(type->name().view()) : kDangling;
}

} // namespace vnifc::detail
