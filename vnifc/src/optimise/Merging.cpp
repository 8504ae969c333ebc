#include "Merging.h"

#include "../whole/ChildrenFirst.h"

#include <VnIfcCore/VnIfcGUID.h>

#include <algorithm>
#include <cmath>

namespace vnifc::detail {

using namespace VN_SDAI;
using typed::AttributeKind;
using typed::AttributeRow;
using typed::fieldOf;

namespace {

/// Elements of an aggregate for writing. They are rewritten in place: a new block for each would take memory that a
/// model gives back only when it goes. No std::span, since selects are of an abstract class.
template <class T>
class Elements {
public:
    explicit Elements(const VnIfcAggr& aggregate) noexcept
        : m_first(const_cast<T*>(static_cast<const T*>(aggregate.imp().data()))), m_count(aggregate.count()) {}

    T* begin() const noexcept { return m_first; }
    T* end() const noexcept { return m_first + m_count; }
    T& operator[](std::size_t index) const noexcept { return m_first[index]; }
    std::size_t size() const noexcept { return m_count; }

private:
    T* m_first;
    std::size_t m_count;
};

/// True for an inverse attribute with room for one instance.
bool holdsOne(const typed::InverseTarget& target) noexcept {
    return target.inverse->attribute.kind == AttributeKind::kReference || target.inverse->upper == 1;
}

} // namespace

Merging::Merging(ModelState& state, const Roster& roster, const Digests& digests, Annotations& annotations)
    : m_state(state), m_roster(roster), m_digests(digests), m_pinned(roster.size()), m_isSettled(roster.size()),
      m_standIns(roster.size()) {
    for (std::uint32_t i = 0; i < roster.size(); ++i)
        m_standIns[i] = i;
    pinAll(annotations);
    childrenFirst(
        roster.size(), [](std::uint32_t) { return true; },
        [&](std::uint32_t i, const auto& visit) {
            if (!m_pinned[i])
                forEachTarget(m_state, m_roster, m_roster.instance(i), visit);
        },
        [&](std::uint32_t i) { settle(i); });
    m_known.clear();
}

/// What has an identity: by a GlobalId, by its text, by what is said about it, by the schema.
void Merging::pinAll(Annotations& annotations) {
    for (std::uint32_t i = 0; i < m_roster.size(); ++i) {
        const VnIfcEntityBase& instance = m_roster.instance(i);
        if (m_digests.identity(i) != 0)
            m_pinned[i] = true;
        if (hasText(instance)) {
            m_pinned[i] = true;
            forEachText(instance, [&](std::string_view text) {
                forEachTextReference(text, [&](std::size_t, std::size_t, std::uint64_t number) {
                    if (const std::uint32_t named = m_roster.ordinalOf(number); named != Roster::kNone)
                        m_pinned[named] = true;
                });
            });
        }
        const ClassInfo* info = m_state.classOf(instance);
        if (!info)
            continue;
        for (const AttributeRow* row : annotations.rowsOf(*info))
            pinTargets(instance, *row);
        pinExclusive(instance, info->rows);
    }
}

void Merging::pinTargets(const VnIfcEntityBase& instance, const AttributeRow& row) {
    const auto pin = [&](const VnDbObjectId& handle) {
        if (const std::uint32_t about = m_roster.ordinalOf(handle); about != Roster::kNone)
            m_pinned[about] = true;
    };
    forEachHandle(instance, row, pin);
}

/// What an inverse attribute with room for one instance is about: two that become one would need room for two.
void Merging::pinExclusive(const VnIfcEntityBase& instance, const typed::EntityClass& type) {
    for (const typed::EntityClass* each = &type; each; each = each->supertype)
        for (const typed::InverseLink& link : each->links)
            if (std::ranges::any_of(link.targets, holdsOne))
                pinTargets(instance, *link.forward);
}

void Merging::settle(std::uint32_t i) {
    m_isSettled[i] = true;
    if (m_pinned[i])
        return;
    // What closes a circle has no stand-in yet, so that nothing equal to it can be found. The stand-ins are a part of
    // the key: what says the same and refers to what has to stay apart would share one otherwise, in any number.
    bool isInCircle = false;
    std::uint64_t targets = 0;
    forEachTarget(m_state, m_roster, m_roster.instance(i), [&](std::uint32_t child) {
        isInCircle = isInCircle || !(m_isSettled[child] || m_pinned[child]);
        targets += Digests::mix(1, m_standIns[child]);
    });
    if (!isInCircle)
        m_standIns[i] = m_known.findOrAdd(Digests::mix(m_digests.of(i), targets), i,
                                          [&](std::uint32_t other) { return isSame(other, i); });
}

bool Merging::isSame(const VnDbObjectId& left, const VnDbObjectId& right) const {
    return left == right || redirected(left) == redirected(right);
}

bool Merging::isSame(const typed::Select& left, const typed::Select& right) const {
    if (left.kind() == VnTypeCodeKind::kEntity && right.kind() == VnTypeCodeKind::kEntity)
        return isSame(left.getHandle(), right.getHandle());
    const VnIfcAggr* leftList = left.getAggr();
    const VnIfcAggr* rightList = right.getAggr();
    return leftList && rightList ? left._d() == right._d() && isSame(*leftList, *rightList) : left == right;
}

bool Merging::isSame(const VnIfcAggr& left, const VnIfcAggr& right) const {
    if (left.count() != right.count() || left.elementKind() != right.elementKind())
        return false;
    switch (left.elementKind()) {
    case VnTypeCodeKind::kEntity: {
        const Elements<VnDbObjectId> a(left);
        const Elements<VnDbObjectId> b(right);
        if (left.isOrdered())
            return std::ranges::equal(a, b, [&](const auto& x, const auto& y) { return isSame(x, y); });
        std::vector<VnDbObjectId> x;
        std::vector<VnDbObjectId> y;
        std::ranges::transform(a, std::back_inserter(x), [&](const auto& each) { return redirected(each); });
        std::ranges::transform(b, std::back_inserter(y), [&](const auto& each) { return redirected(each); });
        std::ranges::sort(x);
        std::ranges::sort(y);
        return x == y;
    }
    case VnTypeCodeKind::kSelect:
        return std::ranges::equal(Elements<typed::Select>(left), Elements<typed::Select>(right),
                                  [&](const auto& x, const auto& y) { return isSame(x, y); });
    case VnTypeCodeKind::kAggregation:
        return std::ranges::equal(Elements<VnIfcAggr>(left), Elements<VnIfcAggr>(right),
                                  [&](const auto& x, const auto& y) { return isSame(x, y); });
    default:
        return left.compare(right) == 0;
    }
}

/// A digest may be the same by chance.
bool Merging::isSame(std::uint32_t left, std::uint32_t right) const {
    const VnIfcEntityBase& a = m_roster.instance(left);
    const VnIfcEntityBase& b = m_roster.instance(right);
    if (a.getInstanceType() != b.getInstanceType())
        return false;
    const auto isSameField = [&](const AttributeInfo& info) {
        const AttributeRow& row = *info.row;
        switch (info.isDerived ? AttributeKind::kDerived : row.kind) {
        case AttributeKind::kString:
        case AttributeKind::kBinary:
            return fieldOf<VnAnsiString>(a, row) == fieldOf<VnAnsiString>(b, row);
        case AttributeKind::kGuid:
            return fieldOf<VnIfcGUID>(a, row) == fieldOf<VnIfcGUID>(b, row);
        case AttributeKind::kReal: {
            const double x = fieldOf<double>(a, row);
            const double y = fieldOf<double>(b, row);
            return x == y || (std::isnan(x) && std::isnan(y));
        }
        case AttributeKind::kInteger:
            return fieldOf<int>(a, row) == fieldOf<int>(b, row);
        case AttributeKind::kBoolean:
            return fieldOf<VnIfcBoolean>(a, row) == fieldOf<VnIfcBoolean>(b, row);
        case AttributeKind::kLogical:
            return fieldOf<VnIfcLogical>(a, row) == fieldOf<VnIfcLogical>(b, row);
        case AttributeKind::kEnumeration:
            return fieldOf<std::uint32_t>(a, row) == fieldOf<std::uint32_t>(b, row);
        case AttributeKind::kReference:
            return isSame(fieldOf<VnDbObjectId>(a, row), fieldOf<VnDbObjectId>(b, row));
        case AttributeKind::kSelect:
            return isSame(fieldOf<typed::Select>(a, row), fieldOf<typed::Select>(b, row));
        case AttributeKind::kAggregate:
            return isSame(fieldOf<VnIfcAggr>(a, row), fieldOf<VnIfcAggr>(b, row));
        case AttributeKind::kDerived:
            return true;
        }
        return false;
    };
    return std::ranges::all_of(m_state.classOf(a)->attributes, isSameField);
}

VnDbObjectId Merging::redirected(const VnDbObjectId& handle) const {
    const std::uint32_t ordinal = m_roster.ordinalOf(handle);
    return ordinal == Roster::kNone ? handle : m_roster.handle(m_standIns[ordinal]);
}

void Merging::redirect() {
    for (std::uint32_t i = 0; i < m_roster.size(); ++i) {
        VnIfcEntityBase& instance = m_roster.instance(i);
        const ClassInfo* info = m_state.classOf(instance);
        if (!info)
            continue;
        for (const AttributeRow* row : info->references) {
            if (row->kind == AttributeKind::kReference) {
                auto& handle = fieldOf<VnDbObjectId>(instance, *row);
                handle = redirected(handle);
            } else if (row->kind == AttributeKind::kSelect) {
                redirect(fieldOf<typed::Select>(instance, *row));
            } else {
                redirect(fieldOf<VnIfcAggr>(instance, *row), row->unique);
            }
        }
    }
}

void Merging::redirect(typed::Select& select) {
    if (select.kind() == VnTypeCodeKind::kEntity) {
        const VnDbObjectId handle = select.getHandle();
        if (const VnDbObjectId other = redirected(handle); !(other == handle))
            select.setHandle(other);
    } else if (const VnIfcAggr* elements = select.getAggr()) {
        redirect(*elements, ~0U);
    }
}

/// Bit 0 of `unique` says that the elements must differ, the next one that those of its elements must.
void Merging::redirect(const VnIfcAggr& elements, unsigned unique) {
    const bool isOrdered = elements.isOrdered();
    if (elements.elementKind() == VnTypeCodeKind::kAggregation) {
        for (const VnIfcAggr& inner : Elements<VnIfcAggr>(elements))
            redirect(inner, unique >> 1);
    } else if (elements.elementKind() == VnTypeCodeKind::kSelect) {
        // The order of a set of selects depends on what they hold.
        if (isOrdered ? (unique & 1) == 0 : elements.count() == 1)
            for (typed::Select& each : Elements<typed::Select>(elements))
                redirect(each);
    } else if (elements.elementKind() == VnTypeCodeKind::kEntity) {
        const Elements<VnDbObjectId> handles(elements);
        m_others.clear();
        for (const VnDbObjectId& each : handles)
            m_others.push_back(redirected(each));
        if (std::ranges::equal(m_others, handles))
            return;
        if (!isOrdered || (unique & 1) != 0) {
            m_sorted = m_others;
            std::ranges::sort(m_sorted);
            if (std::ranges::adjacent_find(m_sorted) != m_sorted.end())
                return;
            if (!isOrdered)
                m_others.swap(m_sorted);
        }
        std::ranges::copy(m_others, handles.begin());
    }
}

} // namespace vnifc::detail
