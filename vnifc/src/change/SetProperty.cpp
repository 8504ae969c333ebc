#include "../meaning/PropertyReader.h"
#include "../model/Writing.h"
#include "Relate.h"

#include <vnifc/Change.h>

#include <VnIfcCore/VnIfcGUID.h>

#include <algorithm>
#include <charconv>
#include <map>
#include <unordered_map>
#include <unordered_set>

namespace vnifc {

using detail::AttributeInfo;
using detail::Entity;
using detail::ModelState;
using detail::Name;
using VN_SDAI::VnIfcEntityBase;

namespace {

constexpr std::string_view kQuantitySet = "Qto_";

/// The classes of quantities by the measure that they hold.
constexpr struct {
    std::string_view measure;
    const char* entity;
    const char* attribute;
} kQuantities[] = {
    {"IfcLengthMeasure", "IfcQuantityLength", "LengthValue"}, {"IfcAreaMeasure", "IfcQuantityArea", "AreaValue"},
    {"IfcVolumeMeasure", "IfcQuantityVolume", "VolumeValue"}, {"IfcMassMeasure", "IfcQuantityWeight", "WeightValue"},
    {"IfcTimeMeasure", "IfcQuantityTime", "TimeValue"},       {"IfcCountMeasure", "IfcQuantityCount", "CountValue"}};

/// A text as a new property or quantity takes it: true, false and numbers are that, TYPE(...) is of that type, and
/// everything else is text.
Value valueOfText(ModelState& state, std::string_view text) {
    if (const std::size_t open = text.find('('); open != text.npos && text.ends_with(')'))
        if (const auto* type = state.schema().namedType(text.substr(0, open)))
            return typed(std::string(type->name().view()),
                         valueOfText(state, text.substr(open + 1, text.size() - open - 2)));
    if (text.size() > 1 && text.starts_with('\'') && text.ends_with('\''))
        return text.substr(1, text.size() - 2);
    for (const auto& [word, truth] : {std::pair("true", true), {".T.", true}, {"false", false}, {".F.", false}})
        if (detail::sameName(word, text))
            return truth;
    const char* const end = text.data() + text.size();
    std::int64_t integer = 0;
    if (const auto [stop, error] = std::from_chars(text.data(), end, integer); error == std::errc() && stop == end)
        return integer;
    double real = 0;
    const bool isNumber = !text.empty() && text.find_first_not_of("0123456789+-.eE") == text.npos;
    if (const auto [stop, error] = std::from_chars(text.data(), end, real);
        isNumber && error == std::errc() && stop == end)
        return real;
    return text;
}

/// What a property is to hold: a value, or a text that is taken as the property at hand wants it.
class Wanted {
public:
    explicit Wanted(const Value& value) : m_value(&value) {}
    explicit Wanted(std::string_view text) : m_text(text) {}

    bool isNull() const noexcept { return m_value ? m_value->isNull() : m_text == "$"; }
    Value in(const Instance& holder, std::string_view attribute) const {
        return m_value ? *m_value : holder.parse(attribute, m_text);
    }
    Value fresh(ModelState& state) const { return m_value ? *m_value : valueOfText(state, m_text); }

private:
    const Value* m_value = nullptr;
    std::string_view m_text;
};

/// True when a property that holds one would not change by the other, which may lack the type.
bool isSame(const Value& held, const Value& wanted) {
    return held == wanted || (wanted.kind() != Value::Kind::kTyped && held.untyped() == wanted);
}

/// Changes one property of many objects.
class PropertySetter {
public:
    PropertySetter(ModelState& state, std::string_view path, const Wanted& wanted) : m_state(state), m_wanted(wanted) {
        const std::size_t dot = path.find('.');
        if (dot == path.npos || dot == 0 || dot + 1 == path.size())
            throw BadValue("expected the names of a property set and a property, such as Pset_WallCommon.FireRating, "
                           "found " +
                           std::string(path));
        m_set = path.substr(0, dot);
        m_property = path.substr(dot + 1);
        m_state.needInverses();
    }

    std::size_t run(std::span<const Instance> objects) {
        std::map<Instance, std::vector<Instance>> ownersBySet;
        std::vector<Instance> without;
        std::unordered_set<Instance> known;
        for (const Instance& object : objects) {
            if (!known.insert(object).second)
                continue;
            if (VnIfcEntityBase* set = ownSet(object))
                ownersBySet[m_state.wrap(*set)].push_back(object);
            else
                without.push_back(object);
        }
        std::size_t changed = 0;
        for (const auto& [set, owners] : ownersBySet) {
            const Value before = valueIn(set);
            if (isSame(before, wantedIn(set)))
                continue;
            const Instance own = isSharedBeyond(set, owners) ? split(set, owners) : set;
            change(own);
            if (!(valueIn(own) == before))
                changed += owners.size();
        }
        if (!without.empty() && !m_wanted.isNull()) {
            addSet(without);
            changed += without.size();
        }
        return changed;
    }

private:
    bool isType(const Instance& object) const { return m_state.has(detail::opened(object), Name::HasPropertySets); }

    /// The set of that name that the object has itself.
    VnIfcEntityBase* ownSet(const Instance& object) {
        VnIfcEntityBase& opened = detail::opened(object);
        if (!isType(object) && !m_state.has(opened, Name::IsDefinedBy))
            throw BadValue('#' + std::to_string(object.id()) + ' ' + std::string(object.keyword()) +
                           " can have no property sets");
        VnIfcEntityBase* found = nullptr;
        detail::forEachSet(m_state, opened, [&](VnIfcEntityBase& owner, VnIfcEntityBase& set) {
            if (!found && &owner == &opened && detail::meansText(m_state.rawText(set, Name::Name), m_set))
                found = &set;
        });
        return found;
    }

    /// True when others than these objects have the set.
    bool isSharedBeyond(const Instance& set, const std::vector<Instance>& owners) const {
        const std::unordered_set<Instance> known(owners.begin(), owners.end());
        bool isShared = false;
        const auto look = [&](VnIfcEntityBase& owner) { isShared = isShared || !known.contains(m_state.wrap(owner)); };
        const VnIfcEntityBase& opened = detail::opened(set);
        for (const Name name : {Name::PropertyDefinitionOf, Name::DefinesOccurrence})
            m_state.forEachTarget(opened, name, [&](VnIfcEntityBase& relation) {
                m_state.forEachTarget(relation, Name::RelatedObjects, look);
            });
        m_state.forEachTarget(opened, Name::DefinesType, look);
        return isShared;
    }

    /// A copy of the set for these objects alone.
    Instance split(const Instance& set, const std::vector<Instance>& owners) {
        Instance copy = copyOf(set);
        copy.set("GlobalId", VN_SDAI::VnIfcGUID::create().view());
        std::vector<Instance> objects;
        for (const Instance& owner : owners) {
            if (!isType(owner)) {
                objects.push_back(owner);
                continue;
            }
            Instance type = owner;
            std::vector<Instance> sets = type["HasPropertySets"].as<std::vector<Instance>>();
            std::ranges::replace(sets, set, copy);
            type.set("HasPropertySets", sets);
        }
        if (objects.empty())
            return copy;
        std::vector<Instance> relations;
        for (const Name name : {Name::PropertyDefinitionOf, Name::DefinesOccurrence})
            m_state.forEachTarget(detail::opened(set), name,
                                  [&](VnIfcEntityBase& relation) { relations.push_back(m_state.wrap(relation)); });
        for (const Instance& relation : relations)
            detail::takeOut(m_state, relation, "RelatedObjects", objects);
        defineBy(objects, copy);
        return copy;
    }

    Instance copyOf(const Instance& source) {
        const VN_SDAI::VnDbObjectId handle = m_state.model().copy(source.core());
        VnIfcEntityBase& copy = *handle.openObject();
        copy.setInverseCounterParts();
        m_state.created(handle);
        return m_state.wrap(copy);
    }

    void defineBy(std::span<const Instance> objects, const Instance& set) {
        detail::createFor(m_state, "IfcRelDefinesByProperties", objects.front(),
                          {{"RelatedObjects", Value(objects)}, {"RelatingPropertyDefinition", set}});
    }

    void addSet(const std::vector<Instance>& objects) {
        const bool isQuantity = m_set.starts_with(kQuantitySet);
        const Instance property = newProperty(isQuantity);
        const Instance set =
            detail::createFor(m_state, isQuantity ? "IfcElementQuantity" : "IfcPropertySet", objects.front(),
                              {{"Name", m_set}, {isQuantity ? "Quantities" : "HasProperties", {property}}});
        std::vector<Instance> occurrences;
        for (const Instance& object : objects) {
            if (!isType(object)) {
                occurrences.push_back(object);
                continue;
            }
            Instance type = object;
            auto sets = type["HasPropertySets"].get<std::vector<Instance>>().value_or(std::vector<Instance>());
            sets.push_back(set);
            type.set("HasPropertySets", sets);
        }
        if (!occurrences.empty())
            defineBy(occurrences, set);
    }

    Instance newProperty(bool isQuantity) {
        const Value value = m_wanted.fresh(m_state);
        if (!isQuantity)
            return detail::createFor(m_state, "IfcPropertySingleValue", Instance(),
                                     {{"Name", m_property}, {"NominalValue", value}});
        const auto typed = value.get<Typed>();
        for (const auto& [measure, entity, attribute] : kQuantities)
            if (typed && detail::sameName(typed->type(), measure))
                return detail::createFor(m_state, entity, Instance(),
                                         {{"Name", m_property}, {attribute, value.untyped()}});
        throw BadValue(m_set + '.' + m_property +
                       ": expected a typed value of length, area, volume, mass, time or count, such as "
                       "IfcLengthMeasure, found " +
                       value.toString(TextForm::kDescribed));
    }

    // ---- in a set

    VnIfcEntityBase* memberOf(const Instance& set) const {
        VnIfcEntityBase* found = nullptr;
        detail::forEachMember(m_state, detail::opened(set), [&](VnIfcEntityBase& member) {
            if (!found && detail::meansText(m_state.rawText(member, Name::Name), m_property))
                found = &member;
        });
        return found;
    }

    Value valueIn(const Instance& set) {
        if (detail::hasPropertiesAsAttributes(m_state, detail::opened(set)))
            return set.has(m_property) ? set[m_property] : Value();
        VnIfcEntityBase* member = memberOf(set);
        return member ? detail::PropertyReader(m_state).propertyOf(*member).value() : Value();
    }

    Value wantedIn(const Instance& set) const {
        if (detail::hasPropertiesAsAttributes(m_state, detail::opened(set)))
            return m_wanted.in(set, m_property);
        VnIfcEntityBase* member = memberOf(set);
        return !member             ? m_wanted.isNull() ? Value() : m_wanted.fresh(m_state)
                           : m_wanted.isNull() ? Value()
                                   : m_wanted.in(m_state.wrap(*member), valueAttribute(m_state.wrap(*member)));
    }

    void change(Instance set) {
        if (detail::hasPropertiesAsAttributes(m_state, detail::opened(set)))
            return set.set(m_property, m_wanted.in(set, m_property));
        const char* members = set.has("Quantities") ? "Quantities" : "HasProperties";
        std::vector<Instance> all = set[members].get<std::vector<Instance>>().value_or(std::vector<Instance>());
        VnIfcEntityBase* member = memberOf(set);
        if (!member) {
            if (m_wanted.isNull())
                return;
            all.push_back(newProperty(set.has("Quantities")));
            return set.set(members, all);
        }
        Instance property = m_state.wrap(*member);
        if (isInSeveral(property)) {
            const Instance copy = copyOf(property);
            std::ranges::replace(all, property, copy);
            set.set(members, all);
            property = copy;
        }
        const std::string_view attribute = valueAttribute(property);
        const Value value = m_wanted.in(property, attribute);
        property.set(attribute, set.has("Quantities") ? value.untyped() : value);
    }

    /// True when another set, or another property, holds the property too.
    bool isInSeveral(const Instance& property) {
        const VnIfcEntityBase& opened = detail::opened(property);
        if (m_state.has(opened, Name::PartOfPset)) {
            std::size_t count = 0;
            for (const Name name : {Name::PartOfPset, Name::PartOfComplex})
                m_state.forEachTarget(opened, name, [&](VnIfcEntityBase&) { ++count; });
            return count > 1;
        }
        return uses()[property.core().slot()] > 1;
    }

    /// How many hold each property, where the release has no inverse attribute that says so; counted once.
    std::unordered_map<const VN_SDAI::VnIfcInstanceSlot*, unsigned>& uses() {
        if (!m_uses.empty())
            return m_uses;
        const auto count = [&](const VnIfcEntityBase& holder) {
            detail::forEachMember(m_state, holder,
                                  [&](VnIfcEntityBase& member) { ++m_uses[member.objectId().slot()]; });
        };
        const auto holders = m_state.population.select(m_state.model(), [&](const VN_SDAI::VnIfcEntityType* type) {
            const auto is = [&](Entity entity) { return m_state.type(entity) && type->isKindOf(m_state.type(entity)); };
            return type && (is(Entity::IfcPropertySetDefinition) || is(Entity::IfcComplexProperty) ||
                            is(Entity::IfcPhysicalComplexQuantity) || is(Entity::IfcMaterialProperties));
        });
        for (const VN_SDAI::VnDbObjectId& holder : *holders)
            if (const VnIfcEntityBase* instance = holder.openObject())
                count(*instance);
        return m_uses;
    }

    std::string_view valueAttribute(const Instance& property) const {
        static constexpr std::pair<const char*, const char*> kAttributes[] = {
            {"IfcPropertySingleValue", "NominalValue"},
            {"IfcPropertyEnumeratedValue", "EnumerationValues"},
            {"IfcPropertyListValue", "ListValues"},
            {"IfcPropertyReferenceValue", "PropertyReference"}};
        for (const auto& [entity, attribute] : kAttributes)
            if (property.is(entity))
                return attribute;
        for (const auto& [measure, entity, attribute] : kQuantities)
            if (property.is(entity))
                return attribute;
        throw BadValue(m_set + '.' + m_property + " is an " + std::string(property.type()) +
                       ", whose values are to be changed by its attributes");
    }

    ModelState& m_state;
    std::string m_set;
    std::string m_property;
    Wanted m_wanted;
    std::unordered_map<const VN_SDAI::VnIfcInstanceSlot*, unsigned> m_uses;
};

} // namespace

std::size_t setProperty(std::span<const Instance> objects, std::string_view path, const Value& value) {
    ModelState* state = detail::modelOf(objects);
    return state ? PropertySetter(*state, path, Wanted(value)).run(objects) : 0;
}

std::size_t setProperty(const Instance& object, std::string_view path, const Value& value) {
    return setProperty(std::span(&object, 1), path, value);
}

std::size_t setProperty(const InstanceRange& objects, std::string_view path, const Value& value) {
    return setProperty(objects.toVector(), path, value);
}

std::size_t setFromText(std::span<const Instance> instances, std::string_view name, std::string_view text) {
    ModelState* state = detail::modelOf(instances);
    if (!state)
        return 0;
    if (name.find('.') != name.npos)
        return PropertySetter(*state, name, Wanted(text)).run(instances);
    std::size_t changed = 0;
    for (Instance instance : instances) {
        const Value value = instance.parse(name, text);
        if (instance[name] == value)
            continue;
        instance.set(name, value);
        ++changed;
    }
    return changed;
}

} // namespace vnifc
