#include "../meaning/ProjectUnits.h"
#include "../model/Reading.h"
#include "../model/Writing.h"
#include "../whole/References.h"
#include "Parameters.h"
#include "UnitChanges.h"

#include <VnIfcCore/VnIfcIterator.h>
#include <VnIfcCore/VnIfcSelectType.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <unordered_map>
#include <unordered_set>

namespace vnifc {

using namespace VN_SDAI;
using namespace detail;
using typed::AttributeKind;
using typed::AttributeRow;
using typed::fieldOf;

namespace {

constexpr std::string_view kLength = "LENGTHUNIT";
constexpr std::string_view kAngle = "PLANEANGLEUNIT";
constexpr std::string_view kParameter = "IFCPARAMETERVALUE";

/// An attribute that is measured in a unit although its type does not say so.
struct Unsaid {
    std::string_view entity; ///< subtypes included
    std::string_view attribute;
    int power; ///< of a length; 0: it cannot be converted
};

// Of all releases; names that a release lacks do not matter.
constexpr Unsaid kUnsaid[] = {
    {"IfcGeometricRepresentationContext", "Precision", 1},
    {"IfcLightSourcePositional", "DistanceAttenuation", -1},
    {"IfcLightSourcePositional", "QuadricAttenuation", -2},
    {"IfcPolynomialCurve", "CoefficientsX", 0},
    {"IfcPolynomialCurve", "CoefficientsY", 0},
    {"IfcPolynomialCurve", "CoefficientsZ", 0},
    // Its origin is one of textures, which have no unit, and a point like any other all the same. Nought stays nought.
    {"IfcSurfaceTexture", "TextureTransform", 0},
};

/// The name of the type that an attribute or the elements of its aggregates have: "IFCLENGTHMEASURE".
std::string innermostName(const AttributeInfo& attribute) {
    const std::size_t space = attribute.typeName.rfind(' ');
    return upperCase(attribute.typeName.substr(space == std::string_view::npos ? 0 : space + 1));
}

bool canHoldNumbers(const AttributeInfo& attribute) {
    if (attribute.row->kind == AttributeKind::kSelect)
        return std::ranges::any_of(typed::selectClassOf(*attribute.row).members, [](const auto& member) {
            return member.kind == VnTypeCodeKind::kReal || member.kind == VnTypeCodeKind::kAggregation;
        });
    return attribute.row->kind == AttributeKind::kAggregate &&
           dynamic_cast<const VnIfcSelectType*>(innermost(attribute.type));
}

/// Walks through all values of a model that a change of units concerns.
class Converter {
public:
    Converter(const Model& model, const UnitChanges& changes)
        : m_model(model), m_state(*model.wrap({}).state()), m_changes(changes) {
        findOwnUnits();
    }

    /// Without `apply` everything is done but the changes themselves.
    std::uint64_t run(bool apply) {
        m_apply = apply;
        m_count = 0;
        for (const VnDbObjectId& handle : *m_state.population.all(m_state.model()))
            if (VnIfcEntityBase* instance = handle.openObject())
                convert(*instance);
        return m_count;
    }

private:
    struct Field {
        const AttributeInfo* attribute;
        std::optional<UnitChange> change; ///< of all numbers; nothing where each tells its own type, or for parameters
        bool isParameter = false;
    };
    struct Plan {
        const ClassInfo* info = nullptr;
        std::vector<Field> fields;
        bool isOperation = false; ///< IfcCoordinateOperation
        bool isOnSurface = false; ///< IfcPcurve
    };

    // ---- what is known beforehand

    const Plan& planOf(const ClassInfo& info) {
        if (m_last && m_last->info == &info)
            return *m_last;
        std::unique_ptr<Plan>& plan = m_plans[&info];
        if (!plan)
            plan = makePlan(info);
        m_last = plan.get();
        return *plan;
    }

    std::unique_ptr<Plan> makePlan(const ClassInfo& info) const {
        auto plan = std::make_unique<Plan>();
        plan->info = &info;
        plan->isOperation = info.is("IfcCoordinateOperation");
        plan->isOnSurface = info.is("IfcPcurve");
        // The value of such a one is in its very unit.
        if (info.is("IfcMeasureWithUnit"))
            return plan;
        for (const AttributeInfo& attribute : info.attributes) {
            if (attribute.isDerived)
                continue;
            const std::string type = innermostName(attribute);
            if (const Unsaid* unsaid = unsaidOf(info, attribute)) {
                if (const UnitChange* length = m_changes.find(kLength))
                    plan->fields.push_back({&attribute, unsaidChange(*length, *unsaid)});
            } else if (type == kParameter) {
                if (m_changes.find(kLength) || m_changes.find(kAngle))
                    plan->fields.push_back({&attribute, std::nullopt, true});
            } else if (const UnitChange* change = m_changes.find(type)) {
                plan->fields.push_back({&attribute, *change});
            } else if (canHoldNumbers(attribute)) {
                plan->fields.push_back({&attribute, std::nullopt});
            }
        }
        return plan;
    }

    static const Unsaid* unsaidOf(const ClassInfo& info, const AttributeInfo& attribute) {
        const auto found = std::ranges::find_if(
            kUnsaid, [&](const Unsaid& each) { return each.attribute == attribute.row->name && info.is(each.entity); });
        return found == std::end(kUnsaid) ? nullptr : found;
    }
    static UnitChange unsaidChange(const UnitChange& length, const Unsaid& unsaid) {
        if (unsaid.power != 0)
            return length.toThe(unsaid.power);
        UnitChange change;
        change.problem = "its numbers depend on the unit of length in a way that cannot be converted";
        return change;
    }

    /// Tables and time series have the units of values that are in other instances.
    void findOwnUnits() {
        for (const Instance& series : all("IfcTimeSeries"))
            if (series["Unit"])
                for (const Instance& value : series.references())
                    m_withOwnUnit.insert(value.core().slot());
        for (const Instance& table : all("IfcTable")) {
            if (!table.has("Columns"))
                continue;
            std::vector<bool> hasUnit;
            for (const Instance& column : table["Columns"].valueOr(std::vector<Instance>()))
                hasUnit.push_back(column && column["Unit"]);
            for (const Instance& row : table["Rows"].valueOr(std::vector<Instance>()))
                m_rows[row.core().slot()] = hasUnit;
        }
    }
    InstanceRange all(const char* entity) const {
        return m_model.hasEntity(entity) ? m_model.instances(entity) : InstanceRange();
    }

    bool hasOwnUnit(const VnIfcEntityBase& instance, const ClassInfo& info, const AttributeInfo& attribute) {
        const std::string_view name = attribute.row->name;
        const Name unit = name == "DefiningValues"  ? Name::DefiningUnit
                          : name == "DefinedValues" ? Name::DefinedUnit
                                                    : Name::Unit;
        if (m_state.target(instance, unit) || m_withOwnUnit.contains(instance.objectId().slot()))
            return true;
        if (!info.is("IfcPropertyEnumeratedValue"))
            return false;
        const Instance enumeration = m_state.wrap(instance)["EnumerationReference"].valueOr(Instance());
        return enumeration && enumeration["Unit"];
    }

    // ---- instances

    void convert(VnIfcEntityBase& instance) {
        const ClassInfo* info = m_state.classOf(instance);
        if (!info)
            throw BadValue(placeOf(instance) + " has no class in " + std::string(m_model.release()) +
                           ", so that its values cannot be brought to another unit");
        const Plan& plan = planOf(*info);
        if (plan.fields.empty() && !plan.isOnSurface)
            return;
        if (hasText(instance))
            checkText(instance, plan);
        if (plan.isOperation && convertOperation(m_state.wrap(instance)))
            return;
        if (plan.isOnSurface)
            checkSurface(m_state.wrap(instance));
        for (const Field& field : plan.fields)
            convert(instance, *info, field);
    }

    void convert(VnIfcEntityBase& instance, const ClassInfo& info, const Field& field) {
        if (!typed::testField(static_cast<const typed::Entity&>(instance), *field.attribute->row) ||
            hasOwnUnit(instance, info, *field.attribute))
            return;
        if (field.change)
            return convertAll(instance, *field.attribute, *field.change);
        if (field.isParameter) {
            if (const UnitChange* change = parameterChange(instance, *field.attribute))
                convertAll(instance, *field.attribute, *change);
            return;
        }
        convertTyped(instance, *field.attribute);
    }

    /// Every number of an attribute.
    void convertAll(VnIfcEntityBase& instance, const AttributeInfo& attribute, const UnitChange& change) {
        if (attribute.row->kind == AttributeKind::kReference &&
            isAtOrigin(m_state.wrap(instance)[attribute.row->name].valueOr(Instance())))
            return;
        if (!change.problem.empty())
            throw BadValue(placeOf(instance, attribute) + ": " + change.problem);
        const AttributeRow& row = *attribute.row;
        if (row.kind == AttributeKind::kReal) {
            ++m_count;
            if (!m_apply)
                return;
            auto& number = fieldOf<double>(instance, row);
            number = change.apply(number);
            static_cast<typed::Entity&>(instance).fieldChanged(attribute.position);
        } else if (row.kind == AttributeKind::kAggregate && isOfLists(fieldOf<VnIfcAggr>(instance, row))) {
            convertList(fieldOf<VnIfcAggr>(instance, row), change);
            if (m_apply)
                static_cast<typed::Entity&>(instance).fieldChanged(attribute.position);
        } else {
            put(instance, attribute, [&](std::string_view) { return &change; });
        }
    }

    static bool isAtOrigin(const Instance& transformation) {
        const Instance origin = transformation ? transformation["LocalOrigin"].valueOr(Instance()) : Instance();
        if (!origin || !origin.has("Coordinates"))
            return false;
        const auto coordinates = origin["Coordinates"].valueOr(std::vector<double>());
        return std::ranges::all_of(coordinates, [](double each) { return each == 0; });
    }

    /// The elements of a SET would have to be sorted anew.
    static bool isOfLists(const VnIfcAggr& aggregate) {
        if (!aggregate.isOrdered())
            return false;
        if (aggregate.elementKind() == VnTypeCodeKind::kReal)
            return true;
        if (aggregate.elementKind() != VnTypeCodeKind::kAggregation)
            return false;
        for (VnIfcConstIterator each(aggregate); !each.atEnd(); each.next())
            if (!isOfLists(each.currentAs<VnIfcAggr>()))
                return false;
        return true;
    }
    void convertList(VnIfcAggr& aggregate, const UnitChange& change) {
        for (VnIfcIterator each(aggregate); !each.atEnd(); each.next()) {
            if (each.elementKind() == VnTypeCodeKind::kAggregation) {
                // Part of the aggregate, which may be changed; its iterator puts whole lists only.
                convertList(const_cast<VnIfcAggr&>(each.currentAs<VnIfcAggr>()), change);
                continue;
            }
            ++m_count;
            const double number = each.currentAs<double>();
            if (m_apply && !std::isnan(number))
                static_cast<void>(each.put(change.apply(number)));
        }
    }

    /// The numbers of a select, or of an aggregate of these, each of which tells its own type.
    void convertTyped(VnIfcEntityBase& instance, const AttributeInfo& attribute) {
        const auto row = m_rows.find(instance.objectId().slot());
        put(
            instance, attribute,
            [&](std::string_view type) {
                return type == kParameter ? parameterChange(instance, attribute) : m_changes.find(type);
            },
            row == m_rows.end() ? nullptr : &row->second);
    }

    /// Puts the value with every number changed as `changeOf(type)` says; elements of the list that `kept` is true of
    /// stay.
    template <class ChangeOf>
    void put(VnIfcEntityBase& instance, const AttributeInfo& attribute, ChangeOf changeOf,
             const std::vector<bool>* kept = nullptr) {
        const std::uint64_t before = m_count;
        const std::string type = innermostName(attribute);
        const auto converted = [&](const auto& self, const Value& value, std::string_view named) -> Value {
            if (const auto* typedValue = std::get_if<Typed>(&value.variant()))
                return Typed(typedValue->type(), self(self, typedValue->value(), typedValue->type()));
            if (const auto* list = std::get_if<Value::List>(&value.variant())) {
                Value::List result;
                for (const Value& element : *list)
                    result.push_back(self(self, element, named));
                return Value(std::move(result));
            }
            const std::optional<double> number =
                value.kind() == Value::Kind::kReal ? value.get<double>() : std::nullopt;
            const UnitChange* change = number ? changeOf(named) : nullptr;
            if (!change)
                return value;
            if (!change->problem.empty())
                throw BadValue(placeOf(instance, attribute) + ": " + change->problem);
            ++m_count;
            return Value(change->apply(*number));
        };
        Value value = valueOf(m_state, instance, *attribute.row, &attribute);
        if (kept && value.kind() == Value::Kind::kList) {
            Value::List list = *value.get<Value::List>();
            for (std::size_t i = 0; i < list.size(); ++i)
                if (i >= kept->size() || !(*kept)[i])
                    list[i] = converted(converted, list[i], type);
            value = Value(std::move(list));
        } else {
            value = converted(converted, value, type);
        }
        if (m_apply && m_count != before)
            store(m_state, instance, attribute, value);
    }

    // ---- what needs to be looked at

    const UnitChange* parameterChange(const VnIfcEntityBase& instance, const AttributeInfo& attribute) {
        switch (parameterKind(m_state.wrap(instance), attribute.row->name)) {
        case ParameterKind::kPlain:
            return nullptr;
        case ParameterKind::kLength:
            return m_changes.find(kLength);
        case ParameterKind::kAngle:
            return m_changes.find(kAngle);
        case ParameterKind::kUnknown:
            break;
        }
        if (!m_changes.find(kLength) && !m_changes.find(kAngle))
            return nullptr;
        throw BadValue(placeOf(instance, attribute) + ": it cannot be told in which unit the parameter is");
    }

    void checkSurface(const Instance& curve) {
        if (!hasLengthsAsParameters(curve["BasisSurface"].valueOr(Instance())) &&
            (m_changes.find(kLength) || m_changes.find(kAngle)))
            throw BadValue(placeOf(*curve.core().openObject()) +
                           ": the coordinates of curves in the parameter space of a surface other than a plane cannot "
                           "be brought to another unit");
    }

    /// What is to be in the unit of a map stays so, and the scale follows. False when the operation has no unit of its
    /// own.
    bool convertOperation(Instance operation) {
        const Instance target = operation["TargetCRS"].valueOr(Instance());
        const Instance source = operation["SourceCRS"].valueOr(Instance());
        if (!target || !target.has("MapUnit") || !target["MapUnit"])
            return false;
        const UnitChange* length = m_changes.find(kLength);
        if (!length || !operation.has("Scale") || !source || !source.is("IfcRepresentationContext"))
            return true;
        if (!length->problem.empty())
            throw BadValue(placeOf(*operation.core().openObject()) + ": " + length->problem);
        ++m_count;
        if (m_apply)
            operation.set("Scale", length->toThe(-1).apply(operation["Scale"].valueOr(1.0)));
        return true;
    }

    void checkText(const VnIfcEntityBase& instance, const Plan& plan) const {
        for (const auto& [position, text] : instance.keptTexts())
            for (const Field& field : plan.fields)
                if (field.attribute->position == position && mayBeConcerned(field, text))
                    throw BadValue(placeOf(instance, *field.attribute) +
                                   ": what is kept as text cannot be brought to another unit, found " +
                                   std::string(text));
    }
    bool mayBeConcerned(const Field& field, std::string_view text) const {
        if (field.change || field.isParameter)
            return text.find_first_of("0123456789") != text.npos;
        for (std::size_t open = text.find('('); open != text.npos; open = text.find('(', open + 1)) {
            const std::size_t before = text.find_last_of("(, ", open == 0 ? 0 : open - 1);
            const std::size_t begin = before == text.npos ? 0 : before + 1;
            if (begin < open && m_changes.find(text.substr(begin, open - begin)))
                return true;
        }
        return false;
    }

    /// "#12 IFCWALL".
    static std::string placeOf(const VnIfcEntityBase& instance) {
        const Instance wrapped(instance.objectId(), nullptr);
        return '#' + std::to_string(wrapped.id()) + ' ' + std::string(wrapped.keyword());
    }
    static std::string placeOf(const VnIfcEntityBase& instance, const AttributeInfo& attribute) {
        return detail::placeOf(instance, attribute);
    }

    const Model& m_model;
    ModelState& m_state;
    const UnitChanges& m_changes;
    std::unordered_map<const ClassInfo*, std::unique_ptr<Plan>> m_plans;
    const Plan* m_last = nullptr; ///< neighbours are often of one entity
    std::unordered_set<const VnIfcInstanceSlot*> m_withOwnUnit;
    std::unordered_map<const VnIfcInstanceSlot*, std::vector<bool>> m_rows; ///< of tables: which columns have a unit
    bool m_apply = false;
    std::uint64_t m_count = 0;
};

Instance onlyProject(const Model& model) {
    const std::vector<Instance> projects = model.instances("IfcProject").toVector();
    if (projects.size() != 1)
        throw BadValue("expected one IfcProject, found " + std::to_string(projects.size()));
    return projects.front();
}

} // namespace

void detail::checkChanges(const Model& model, const UnitChanges& changes) {
    if (!changes.empty())
        Converter(model, changes).run(false);
}

std::uint64_t detail::applyChanges(Model& model, const UnitChanges& changes) {
    if (changes.empty())
        return 0;
    Converter converter(model, changes);
    converter.run(false);
    return converter.run(true);
}

std::uint64_t convertUnits(Model& model, const Model& like) {
    const Instance project = onlyProject(model), other = onlyProject(like);
    const UnitChanges changes(project, other);
    if (changes.empty())
        return 0;
    const std::uint64_t count = applyChanges(model, changes);
    Instance assignment = project["UnitsInContext"].valueOr(Instance());
    const std::map<std::string, Instance> wanted = unitsOf(other);
    std::vector<Instance> units;
    for (const Instance& unit : assignment ? assignment["Units"].valueOr(units) : units)
        units.push_back(changes.contains(unit) ? model.copy(wanted.at(kindOf(unit))) : unit);
    if (assignment && !units.empty())
        assignment.set("Units", Value(units));
    return count;
}

} // namespace vnifc
