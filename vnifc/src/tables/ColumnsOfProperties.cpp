#include "../meaning/ProjectUnits.h"
#include "../meaning/PropertyReader.h"
#include "../model/Reading.h"

#include <vnifc/Columns.h>

#include <VnIfcCore/VnIfcText.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace vnifc {

using detail::Entity;
using detail::ModelState;
using detail::Name;
using VN_SDAI::VnIfcEntityBase;

namespace {

/// Keeps what a simple value says: words, number and type.
class SimpleValue final : public ValueVisitor {
public:
    void clear() {
        m_words = {};
        m_type.clear();
        m_number.reset();
        m_isNull = true;
        m_isPlain = true;
    }
    void boolean(bool value) override { set(value ? "true" : "false"); }
    void unknown() override { set("unknown"); }
    void integer(std::int64_t value) override { number(value); }
    void real(double value) override { number(value); }
    void text(std::string_view utf8) override { set(m_text = utf8); }
    void literal(std::string_view literal) override { set(m_text = literal); }
    void instance(const Instance&) override { m_isPlain = false; }
    std::size_t beginList(std::size_t) override {
        m_isPlain = false;
        return 0;
    }
    void beginTyped(std::string_view type) override {
        if (m_type.empty())
            m_type = type;
    }

    bool isNull() const noexcept { return m_isNull; }
    /// False when it takes more than this to say what there is.
    bool isPlain() const noexcept { return m_isPlain; }
    std::string_view words() const noexcept { return m_words; }
    std::string_view type() const noexcept { return m_type; }
    const std::optional<double>& number() const noexcept { return m_number; }

private:
    void set(std::string_view words) {
        m_words = words;
        m_isNull = false;
    }
    template <class T>
    void number(T value) {
        const auto [end, error] = std::to_chars(m_digits.data(), m_digits.data() + m_digits.size(), value);
        m_number = static_cast<double>(value);
        set({m_digits.data(), static_cast<std::size_t>(end - m_digits.data())});
    }

    std::string m_text, m_type;
    std::array<char, 32> m_digits;
    std::string_view m_words;
    std::optional<double> m_number;
    bool m_isNull = true;
    bool m_isPlain = true;
};

/// A unit as a table tells it; made once for each.
struct KnownUnit {
    std::int32_t sign = -1;
    std::optional<Unit> unit; ///< nothing for what has no way to SI
};

/// Which relations define which objects, found in one pass over the relations: a table needs no other inverse
/// attributes, and to set all of them takes longer than to make the table.
class DefiningRelations {
public:
    DefiningRelations(const Model& model, ModelState& state) : m_state(state), m_inverses{state} {
        if (state.hasInverses)
            return;
        for (const Instance relation : model.instances("IfcRelDefines")) {
            VnIfcEntityBase& object = *relation.core().openObject();
            state.forEachTarget(object, Name::RelatedObjects,
                                [&](VnIfcEntityBase& related) { m_relations.emplace_back(&related, &object); });
        }
        // Stable, since relations stand in inverse attributes by their numbers.
        std::ranges::stable_sort(m_relations, std::less<>(), &Pair::first);
    }

    template <class Visit>
    void operator()(const VnIfcEntityBase& object, Name name, Visit visit) const {
        if (m_state.hasInverses)
            return m_inverses(object, name, visit);
        // Those to types come with the others, which is for the visitor to tell apart, as in IFC2X3.
        if (name != Name::IsDefinedBy || !m_state.has(object, name))
            return;
        for (auto at = std::ranges::lower_bound(m_relations, &object, std::less<>(), &Pair::first);
             at != m_relations.end() && at->first == &object; ++at)
            visit(*at->second);
    }

private:
    using Pair = std::pair<const VnIfcEntityBase*, VnIfcEntityBase*>;

    ModelState& m_state;
    detail::InverseRelations m_inverses;
    std::vector<Pair> m_relations; ///< object and relation, by object
};

class PropertyTable {
public:
    PropertyTable(const Model& model, ModelState& state, const PropertyColumnsOptions& options)
        : m_model(model), m_state(state), m_options(options), m_reader(state), m_relations(model, state) {
        for (const auto& [name, kind] :
             std::initializer_list<std::pair<const char*, ColumnKind>>{{"object", ColumnKind::kId},
                                                                       {"entity", ColumnKind::kCategory},
                                                                       {"global_id", ColumnKind::kText},
                                                                       {"set", ColumnKind::kCategory},
                                                                       {"name", ColumnKind::kCategory},
                                                                       {"value", ColumnKind::kText},
                                                                       {"number", ColumnKind::kReal},
                                                                       {"type", ColumnKind::kCategory},
                                                                       {"unit", ColumnKind::kCategory},
                                                                       {"si_value", ColumnKind::kReal},
                                                                       {"from_type", ColumnKind::kBoolean}})
            m_table.columns.emplace_back(name, kind);
    }

    ColumnTable make() {
        const std::string entity = m_options.entity.empty() ? "IfcObjectDefinition" : m_options.entity;
        for (const Instance object : m_model.instances(entity))
            if (!object.isForeign())
                object_(*object.core().openObject());
        for (Column& column : m_table.columns)
            column.fit();
        m_table.rows = m_table.columns.front().size();
        return std::move(m_table);
    }

private:
    enum : std::size_t { kObject, kEntity, kGlobalId, kSet, kName, kValue, kNumber, kType, kUnit, kSi, kFromType };

    Column& at(std::size_t column) noexcept { return m_table.columns[column]; }

    void object_(VnIfcEntityBase& object) {
        m_object = &object;
        m_entityCode = -1;
        m_own.clear();
        m_seen.clear();
        detail::forEachSet(m_state, object, m_relations, [&](VnIfcEntityBase& owner, VnIfcEntityBase& set) {
            if (std::ranges::find(m_seen, &set) != m_seen.end())
                return;
            m_seen.push_back(&set);
            const std::string_view name = decoded(m_state.rawText(set, Name::Name), m_setName);
            if (!m_options.sets.empty() && std::ranges::find(m_options.sets, name) == m_options.sets.end())
                return;
            m_isOwn = &owner == &object;
            m_setCode = at(kSet).codeOf(name);
            set_(set);
        });
    }

    void set_(VnIfcEntityBase& set) {
        if (detail::hasPropertiesAsAttributes(m_state, set)) {
            for (const Property& property : m_reader.attributesIn(set))
                detailed(property, "");
            return;
        }
        detail::forEachMember(m_state, set, [&](VnIfcEntityBase& member) { member_(member); });
    }

    void member_(VnIfcEntityBase& member) {
        const bool isQuantity = m_state.is(member, Entity::IfcPhysicalQuantity);
        if (m_options.quantities && !isQuantity)
            return;
        const detail::AttributeInfo* value = simpleValueOf(member, isQuantity);
        if (!value)
            return detailed(detail::PropertyReader(m_state).propertyOf(member), "");
        m_simple.clear();
        visitField(m_state, member, *value->row, value->mayBeEmpty, m_simple);
        if (!m_simple.isPlain())
            return detailed(detail::PropertyReader(m_state).propertyOf(member), "");
        if (!begin(decoded(m_state.rawText(member, Name::Name), m_name)))
            return;
        m_simple.isNull() ? at(kValue).null() : at(kValue).text(m_simple.words());
        std::string_view type = m_simple.type();
        if (type.empty() && !m_simple.isNull())
            type = typeOfAttribute(*value);
        const VnIfcEntityBase* unit = m_simple.isNull() ? nullptr : m_state.target(member, Name::Unit);
        number(m_simple.number(), type, unit);
    }

    /// The one attribute with the value of a property with a single value, or of a quantity that gathers no others.
    const detail::AttributeInfo* simpleValueOf(const VnIfcEntityBase& member, bool isQuantity) {
        const detail::ClassInfo* info = m_state.classOf(member);
        auto [known, isNew] = m_values.try_emplace(info, nullptr);
        if (!isNew)
            return known->second;
        const bool isSimple = isQuantity ? !m_state.is(member, Entity::IfcPhysicalComplexQuantity)
                                         : m_state.is(member, Entity::IfcPropertySingleValue);
        if (isSimple && info)
            for (const detail::AttributeInfo& attribute : info->attributes)
                if (std::string_view(attribute.row->name).ends_with("Value"))
                    known->second = &attribute;
        return known->second;
    }

    std::string_view typeOfAttribute(const detail::AttributeInfo& attribute) {
        auto [known, isNew] = m_types.try_emplace(&attribute);
        if (isNew)
            known->second = detail::upperNameOf(attribute.type);
        return known->second;
    }

    /// What takes more than a number or text to say; parts of complex ones go by their own names.
    void detailed(const Property& property, const std::string& prefix) {
        const std::string name = prefix + property.name;
        if (property.kind == PropertyKind::kComplex) {
            for (const Property& part : property.parts)
                detailed(part, name + '.');
            return;
        }
        if (m_options.quantities && property.kind != PropertyKind::kQuantity)
            return;
        if (!begin(name))
            return;
        const Value value = property.value();
        value.isNull() ? at(kValue).null() : at(kValue).text(value.toString());
        const bool hasOne = property.values.size() == 1;
        const VnIfcEntityBase* unit = hasOne ? property.values.front().unit.core().openObject() : nullptr;
        number(hasOne ? value.get<double>() : std::nullopt, hasOne ? property.values.front().type : "", unit);
    }

    /// The first columns of a row; false when a property of the object itself prevails.
    bool begin(std::string_view name) {
        const std::int32_t code = at(kName).codeOf(name);
        const std::pair key(m_setCode, code);
        if (m_isOwn)
            m_own.push_back(key);
        else if (std::ranges::find(m_own, key) != m_own.end())
            return false;
        if (m_entityCode < 0)
            m_entityCode = at(kEntity).codeOf(m_object->getInstanceType()->entityClass()->name);
        at(kObject).id(m_object->objectId().number());
        at(kEntity).code(m_entityCode);
        const VN_SDAI::VnIfcGUID* globalId = m_object->globalId();
        globalId && !globalId->isUnset() ? at(kGlobalId).text(globalId->view()) : at(kGlobalId).null();
        at(kSet).code(m_setCode);
        at(kName).code(code);
        at(kFromType).boolean(!m_isOwn);
        return true;
    }

    void number(const std::optional<double>& number, std::string_view type, const VnIfcEntityBase* unit) {
        number ? at(kNumber).real(*number) : at(kNumber).null();
        type.empty() ? at(kType).null() : at(kType).text(type);
        const KnownUnit* known = nullptr;
        if (unit)
            known = &unitOf(*unit);
        else if (!type.empty())
            known = &projectUnitOf(type);
        known && known->sign >= 0 ? at(kUnit).code(known->sign) : at(kUnit).null();
        known && known->unit&& number ? at(kSi).real(known->unit->toSi(*number)) : at(kSi).null();
    }

    const KnownUnit& unitOf(const VnIfcEntityBase& unit) {
        auto [known, isNew] = m_units.try_emplace(&unit);
        if (isNew) {
            const Instance instance = m_state.wrap(unit);
            if (const std::string sign = signOf(instance); !sign.empty())
                known->second.sign = at(kUnit).codeOf(sign);
            try {
                known->second.unit = Unit(instance);
            } catch (const BadValue&) {
                known->second.unit.reset(); // money and the like have no way to SI
            }
        }
        return known->second;
    }

    const KnownUnit& projectUnitOf(std::string_view type) {
        if (const auto known = m_projectUnits.find(type); known != m_projectUnits.end())
            return *known->second;
        static const KnownUnit kNone;
        const VnIfcEntityBase* unit = m_state.units().find(type);
        return *m_projectUnits.emplace(std::string(type), unit ? &unitOf(*unit) : &kNone).first->second;
    }

    static std::string_view decoded(std::string_view exchangeText, std::string& buffer) {
        return VN_SDAI::vnDecodeText(exchangeText, buffer);
    }

    const Model& m_model;
    ModelState& m_state;
    const PropertyColumnsOptions& m_options;
    detail::PropertyReader m_reader;
    DefiningRelations m_relations;
    ColumnTable m_table;
    SimpleValue m_simple;
    std::string m_setName, m_name;

    // of the object and the set at hand
    VnIfcEntityBase* m_object = nullptr;
    std::int32_t m_entityCode = -1;
    std::int32_t m_setCode = -1;
    bool m_isOwn = true;
    std::vector<std::pair<std::int32_t, std::int32_t>> m_own;
    std::vector<const VnIfcEntityBase*> m_seen;

    std::unordered_map<const detail::ClassInfo*, const detail::AttributeInfo*> m_values;
    std::unordered_map<const detail::AttributeInfo*, std::string> m_types;
    std::unordered_map<const VnIfcEntityBase*, KnownUnit> m_units;
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
    };
    std::unordered_map<std::string, const KnownUnit*, Hash, std::equal_to<>> m_projectUnits;
};

} // namespace

ColumnTable propertyColumns(const Model& model, const PropertyColumnsOptions& options) {
    return PropertyTable(model, *model.wrap({}).state(), options).make();
}

} // namespace vnifc
