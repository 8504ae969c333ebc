#include <VnIfcTyped/Select.h>

#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcEntityType.h>
#include <entities/AttributeAccess.h>
#include <entities/CounterParts.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>
#include <vector>

// What the schema demands of an instance beyond what its C++ class can express.
namespace VN_SDAI::typed {

namespace {

constexpr auto kError = VnIfcDiagnostic::kError;

std::string nameOf(const VnDbObjectId& handle) { return '#' + std::to_string(handle.number()); }
std::string nameOf(const VnIfcEntityBase& instance) {
    return nameOf(instance.objectId()) + ' ' + instance.getInstanceType()->name().constStr();
}

template <class T>
bool hasEqual(std::vector<T> values, bool (*less)(const T&, const T&)) {
    std::sort(values.begin(), values.end(), less);
    return std::adjacent_find(values.begin(), values.end(), [&](const T& a, const T& b) { return !less(a, b); }) !=
           values.end();
}

template <class T>
bool hasEqualValues(const VnIfcAggr& aggregate) {
    const auto items = static_cast<const VnIfcAggrOf<T>&>(aggregate).items();
    return hasEqual<T>({items.begin(), items.end()}, [](const T& a, const T& b) { return a < b; });
}

bool hasEqualElements(const VnIfcAggr& aggregate) {
    switch (aggregate.elementKind()) {
    case VnTypeCodeKind::kEntity:
        return hasEqualValues<VnDbObjectId>(aggregate);
    case VnTypeCodeKind::kInteger:
        return hasEqualValues<int>(aggregate);
    case VnTypeCodeKind::kReal:
        return hasEqualValues<double>(aggregate);
    case VnTypeCodeKind::kString:
        return hasEqualValues<VnAnsiString>(aggregate);
    case VnTypeCodeKind::kSelect: {
        std::vector<const Select*> selects;
        for (const Select& each : SelectElements(aggregate))
            selects.push_back(&each);
        using Pointer = const Select*;
        return hasEqual<Pointer>(std::move(selects), [](const Pointer& a, const Pointer& b) { return *a < *b; });
    }
    case VnTypeCodeKind::kAggregation: {
        using Pointer = const VnIfcAggr*;
        std::vector<Pointer> lists(aggregate.count());
        std::iota(lists.begin(), lists.end(), static_cast<Pointer>(aggregate.imp().data()));
        return hasEqual<Pointer>(std::move(lists),
                                 [](const Pointer& a, const Pointer& b) { return a->compare(*b) < 0; });
    }
    default:
        return false;
    }
}

class InstanceCheck {
public:
    InstanceCheck(const Entity& instance, VnIfcCheck& check) noexcept : m_instance(instance), m_check(check) {}

    void run() {
        const EntityClass& type = m_instance.entityClass();
        if (type.isAbstract)
            m_check.report(kError, "abstract", m_instance, "", type.keyword, "a subtype of this abstract entity");
        for (unsigned i = 0; i < type.fields.size(); ++i)
            if (!m_instance.keepsText(i))
                attribute(*type.fields[i]); // the reader said already what is wrong there
        for (const EntityClass* each = &type; each; each = each->supertype) {
            for (const UniqueRule& rule : each->uniques)
                unique(rule);
            if (!m_check.checksInverses())
                continue;
            for (const InverseRow& row : each->inverses)
                inverse(row);
            for (const InverseLink& link : each->links)
                singleInverses(link);
        }
    }

private:
    void report(const AttributeRow& row, const char* code, std::string found, std::string expected) {
        m_check.report(kError, code, m_instance, row.name, std::move(found), std::move(expected));
    }

    void attribute(const AttributeRow& row) {
        if (row.kind == AttributeKind::kDerived || row.kind == AttributeKind::kBinary)
            return;
        const bool hasValue = row.kind == AttributeKind::kSelect ? member<VnIfcSelect>(m_instance, row).hasValue()
                                                                 : isSet(m_instance, row);
        if (!hasValue) {
            if (row.mark == kMandatory && !mayBeEmpty(row))
                report(row, "mandatory", "$", "a value, because the attribute is mandatory");
            return;
        }
        switch (row.kind) {
        case AttributeKind::kGuid:
            guid(row);
            break;
        case AttributeKind::kString:
            m_check.text(m_instance, row.name, member<VnAnsiString>(m_instance, row));
            break;
        case AttributeKind::kReal:
            real(row, member<double>(m_instance, row));
            break;
        case AttributeKind::kReference:
            reference(row, member<VnDbObjectId>(m_instance, row));
            break;
        case AttributeKind::kSelect:
            select(row, member<Select>(m_instance, row));
            break;
        case AttributeKind::kAggregate:
            aggregate(row, member<VnIfcAggr>(m_instance, row), row.typeText, 0);
            break;
        default:
            break;
        }
    }

    bool mayBeEmpty(const AttributeRow& row) const noexcept {
        return row.kind == AttributeKind::kAggregate && member<VnIfcAggr>(m_instance, row).lowerBound() == 0;
    }

    void guid(const AttributeRow& row) {
        const auto& value = member<VnIfcGUID>(m_instance, row);
        if (!value.isValid())
            report(row, "globalid", std::string(value.view()), "22 characters of 0-9 A-Z a-z _ $, the first 0 to 3");
    }

    void reference(const AttributeRow& row, const VnDbObjectId& handle) {
        if (handle.isNull())
            return;
        if (handle.model() != m_instance.owningModel())
            return report(row, "foreign-reference", "an instance of another model", "an instance of this model");
        const VnIfcEntityBase* target = handle.openObject();
        if (!target && handle.isErased())
            report(row, "dangling-reference", nameOf(handle), "an instance of the model");
        // What was never there, or has no class, was reported when the file was read.
        if (!target || !target->getInstanceType() || !row.target || target->isKindOf(*row.target))
            return;
        report(row, "wrong-type", nameOf(*target), (*row.target)->name().constStr());
    }

    void real(const AttributeRow& row, double value) {
        if (std::isinf(value))
            report(row, "not-finite", "an infinite number", "a number that a file can hold");
    }

    /// What holds for single elements of a list of numbers or instances.
    void elements(const AttributeRow& row, const VnIfcAggr& list) {
        if (list.elementKind() == VnTypeCodeKind::kEntity)
            for (const VnDbObjectId& handle : static_cast<const VnIfcAggrOf<VnDbObjectId>&>(list))
                reference(row, handle);
        if (list.elementKind() == VnTypeCodeKind::kReal)
            for (const double each : static_cast<const VnIfcAggrOf<double>&>(list))
                real(row, each);
    }

    void select(const AttributeRow& row, const Select& value) {
        if (value.kind() == VnTypeCodeKind::kString)
            return m_check.text(m_instance, row.name, value.text());
        if (const VnIfcAggr* list = value.getAggr())
            return elements(row, *list);
        double number = 0;
        if (value.kind() == VnTypeCodeKind::kReal && value.getDouble(number))
            return real(row, number);
        if (value.kind() != VnTypeCodeKind::kEntity)
            return;
        const VnDbObjectId handle = value.getHandle();
        const VnIfcEntityBase* target = handle.openObject();
        if (!target || !target->getInstanceType())
            return reference(row, handle);
        if (!value.underlyingTypeName().isEmpty())
            return;
        report(row, "select-type", nameOf(*target), std::string("a member of ") + value.selectClass().name);
    }

    /// `text` describes the type from this level on: "list [3:?] of IFCCARTESIANPOINT".
    void aggregate(const AttributeRow& row, const VnIfcAggr& value, std::string_view text, unsigned level) {
        bounds(row, value.count(), text);
        if ((row.unique >> level & 1) != 0 && hasEqualElements(value))
            report(row, "unique-elements", "equal elements", "elements that differ");
        switch (value.elementKind()) {
        case VnTypeCodeKind::kEntity:
        case VnTypeCodeKind::kReal:
            elements(row, value);
            break;
        case VnTypeCodeKind::kString:
            if (row.isBinary)
                break;
            for (const VnAnsiString& each : static_cast<const VnIfcAggrOf<VnAnsiString>&>(value))
                if (!each.isUnset())
                    m_check.text(m_instance, row.name, each);
            break;
        case VnTypeCodeKind::kSelect:
            for (const Select& each : SelectElements(value))
                select(row, each);
            break;
        case VnTypeCodeKind::kAggregation: {
            const std::string_view inner = text.substr(text.find(" of ") + 4);
            const auto* each = static_cast<const VnIfcAggr*>(value.imp().data());
            for (std::uint32_t i = 0; i < value.count(); ++i)
                aggregate(row, each[i], inner, level + 1);
            break;
        }
        default:
            break;
        }
    }

    void bounds(const AttributeRow& row, std::uint32_t count, std::string_view text) {
        const std::size_t open = text.find('['), colon = text.find(':'), close = text.find(']');
        std::uint32_t lower = 0, upper = 0;
        std::from_chars(text.data() + open + 1, text.data() + colon, lower);
        const bool isOpen = std::from_chars(text.data() + colon + 1, text.data() + close, upper).ec != std::errc();
        if (count >= lower && (isOpen || count <= upper))
            return;
        report(row, "bounds", std::to_string(count) + " elements", std::string(text.substr(0, close + 1)));
    }

    void unique(const UniqueRule& rule) {
        std::string values, names;
        for (const AttributeRow* row : rule.attributes) {
            if (!isSet(m_instance, *row))
                return; // unset values are never equal
            if (row->kind == AttributeKind::kGuid)
                values += member<VnIfcGUID>(m_instance, *row).view();
            else if (row->kind == AttributeKind::kString)
                values += member<VnAnsiString>(m_instance, *row).view();
            else if (row->kind == AttributeKind::kReference)
                values += nameOf(member<VnDbObjectId>(m_instance, *row));
            else
                return;
            values += '\0';
            names += names.empty() ? row->name : std::string(",") + row->name;
        }
        m_check.unique(m_instance, &rule, names, std::move(values));
    }

    static bool isSingle(const InverseRow& row) noexcept { return row.attribute.kind == AttributeKind::kReference; }

    void inverse(const InverseRow& row) {
        const std::uint32_t count = isSingle(row) ? !member<VnDbObjectId>(m_instance, row.attribute).isNull()
                                                  : member<VnIfcAggr>(m_instance, row.attribute).count();
        // An inverse attribute that is no aggregate is mandatory (ISO 10303-11, 9.2.1.3).
        const auto lower = static_cast<std::uint32_t>(row.lower != kUnset ? row.lower : isSingle(row));
        const bool tooMany = !isSingle(row) && row.upper != kUnbounded && count > static_cast<std::uint32_t>(row.upper);
        // What has no class, or stands in a text that does not fit, may well be who is missing.
        const bool tooFew = count < lower && !m_check.isNamedInText(m_instance);
        if (!tooFew && !tooMany)
            return;
        report(row.attribute, "inverse-bounds", std::to_string(count) + " instances",
               (tooFew ? "at least " + std::to_string(lower) : "at most " + std::to_string(row.upper)) +
                   " that refer to it by " + row.inverted);
    }

    /// An inverse member that holds one handle cannot tell of several referrers. The last one is there, so each of the
    /// others finds somebody else in its place.
    void singleInverses(const InverseLink& link) {
        const auto hasSingle = [](const InverseTarget& target) { return isSingle(*target.inverse); };
        if (std::none_of(link.targets.begin(), link.targets.end(), hasSingle))
            return;
        forEachTarget(m_instance, *link.forward, [&](const VnDbObjectId& handle) {
            withInverse(handle, link.targets, [&](const Entity& target, const InverseRow& row) {
                if (!isSingle(row))
                    return;
                const auto& held = member<VnDbObjectId>(target, row.attribute);
                if (held.isNull() || held == m_instance.objectId())
                    return;
                report(*link.forward, "inverse-bounds",
                       nameOf(target) + ", to which " + nameOf(held) + " refers as well",
                       std::string("an instance with at most 1 ") + row.attribute.name);
            });
        });
    }

    const Entity& m_instance;
    VnIfcCheck& m_check;
};

} // namespace

void Entity::check(VnIfcCheck& check) const { InstanceCheck(*this, check).run(); }

} // namespace VN_SDAI::typed
