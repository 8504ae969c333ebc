#pragma once
#include <VnIfcTyped/Entity.h>
#include <VnIfcTyped/Select.h>

namespace VN_SDAI::typed {

/// The member of an instance that a row describes; T must be the member's type or a base at its beginning.
template <class T>
T& member(Entity& instance, const AttributeRow& row) noexcept {
    return *reinterpret_cast<T*>(reinterpret_cast<char*>(&instance) + row.offset);
}
template <class T>
const T& member(const Entity& instance, const AttributeRow& row) noexcept {
    return *reinterpret_cast<const T*>(reinterpret_cast<const char*>(&instance) + row.offset);
}

/// The elements of an aggregate of selects, whatever their class: all are of one size. No std::span, whose checks
/// form an array of its elements, which an abstract class does not allow.
class SelectElements {
public:
    explicit SelectElements(const VnIfcAggr& aggregate) noexcept
        : m_first(static_cast<const Select*>(aggregate.imp().data())), m_count(aggregate.count()) {}

    const Select* begin() const noexcept { return m_first; }
    const Select* end() const noexcept { return m_first + m_count; }

private:
    const Select* m_first;
    std::size_t m_count;
};

/// What the row's kind points to: an EnumerationClass, AggregateOperations or SelectOperations.
template <class T>
const T& typeOf(const AttributeRow& row) noexcept {
    return *static_cast<const T*>(row.type);
}

} // namespace VN_SDAI::typed
