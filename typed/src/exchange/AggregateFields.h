#pragma once
#include <VnIfcCore/VnIfcListAggr.h>
#include <VnIfcCore/VnIfcSelect.h>
#include <VnIfcCore/VnIfcSetAggr.h>
#include <VnIfcCore/VnSpfFilerBase.h>

#include <type_traits>
#include <vector>

namespace VN_SDAI::typed {

template <class T>
inline constexpr bool isList = std::is_base_of_v<VnIfcAggr, T>;

template <class T>
bool readElements(VnIfcAggr& aggregate, VnSpfFilerBase& filer);
template <class T>
void writeElements(const VnIfcAggr& aggregate, VnSpfFilerBase& filer, bool isBinary);

/// Holds the elements of one list while it is read, so that the list itself is allocated once and fits exactly. Short
/// lists of plain values take no memory from the heap for that.
template <class T>
class ElementBuffer {
public:
    T& add() {
        if constexpr (kInline > 0) {
            if (m_count < kInline)
                return m_first[m_count++] = T{};
            if (m_count == kInline && m_all.empty())
                m_all.assign(m_first, m_first + kInline);
        }
        ++m_count;
        return m_all.emplace_back();
    }
    void dropLast() {
        --m_count;
        if (!m_all.empty())
            m_all.pop_back();
    }
    std::span<T> elements() noexcept {
        return m_all.empty() && kInline > 0 ? std::span<T>(m_first, m_count) : std::span<T>(m_all);
    }

private:
    static constexpr std::size_t kInline = std::is_trivially_copyable_v<T> ? 32 : 0;

    T m_first[kInline > 0 ? kInline : 1];
    std::size_t m_count = 0;
    std::vector<T> m_all;
};

template <class T>
bool readElement(T& element, VnSpfFilerBase& filer, bool separated) {
    if constexpr (isList<T>) {
        if (separated && !filer.skipUntil(','))
            return false;
        if (!filer.helper().skipUntilRet('$'))
            return readElements<typename T::value_type>(element, filer);
        filer.onAccepted(VnSpfAccepted::kEmptyForm);
        return true;
    } else if constexpr (std::is_base_of_v<VnIfcSelect, T>) {
        return filer.rdPrimitive(static_cast<VnIfcSelect&>(element), separated);
    } else {
        return filer.rdPrimitive(element, separated);
    }
}

/// A value that stands where a list of one was meant: taken as such at the end of the list that it stands in.
template <class T>
bool readBareElement(VnIfcAggrOf<T>& aggregate, VnSpfFilerBase& filer) {
    T element{};
    if (filer.helper().peek() == '$' || !readElement(element, filer, false) || filer.helper().peek() != ')')
        return false;
    filer.onAccepted(VnSpfAccepted::kBareElement);
    aggregate.assignMoved(std::span<T>(&element, 1));
    return true;
}

/// Reads a parenthesised list; false when it has an element that is none of type T. What was read before it is stored
/// all the same. Bounds are not checked.
template <class T>
bool readElements(VnIfcAggr& aggregate, VnSpfFilerBase& filer) {
    auto& typed = static_cast<VnIfcAggrOf<T>&>(aggregate);
    VnSpfReadHelper& helper = filer.helper();
    if (!helper.skipUntilRet('('))
        return readBareElement(typed, filer);
    if (helper.skipUntilRet(')'))
        return true;
    ElementBuffer<T> buffer;
    bool good = readElement(buffer.add(), filer, false);
    if (!good) {
        buffer.elements().back() = T{};
        helper.ignoreParamter(false);
    }
    while (!helper.skipUntilRet(')')) {
        if (readElement(buffer.add(), filer, true))
            continue;
        buffer.dropLast();
        good = false;
        break;
    }
    const std::size_t count = buffer.elements().size();
    typed.assignMoved(buffer.elements());
    if (good && typed.count() < count)
        filer.onAccepted(VnSpfAccepted::kEqualElements);
    return good;
}

/// Erased instances leave the lists that they were in.
template <class T>
bool isErased(const T& element) noexcept {
    if constexpr (std::is_same_v<T, VnDbObjectId>)
        return element.isErased();
    else if constexpr (std::is_base_of_v<VnIfcSelect, T>)
        return element.getHandle().isErased();
    else
        return false;
}

template <class T>
void writeElements(const VnIfcAggr& aggregate, VnSpfFilerBase& filer, bool isBinary) {
    filer.wrChar('(');
    bool separated = false;
    for (const T& element : static_cast<const VnIfcAggrOf<T>&>(aggregate)) {
        if (isErased(element))
            continue;
        if (separated)
            filer.wrChar(',');
        separated = true;
        if constexpr (isList<T>)
            writeElements<typename T::value_type>(element, filer, isBinary);
        else if constexpr (std::is_same_v<T, VnAnsiString>)
            if (isBinary)
                filer.wrBinaryElement(element);
            else
                filer.wrPrimitive(element);
        else if constexpr (std::is_base_of_v<VnIfcSelect, T>)
            filer.wrPrimitive(static_cast<const VnIfcSelect&>(element));
        else
            filer.wrPrimitive(element);
    }
    filer.wrChar(')');
}

/// As readElements and writeElements, for the aggregates that are values of selects.
bool readSelectAggregate(VnIfcAggr& aggregate, VnSpfFilerBase& filer);
void writeSelectAggregate(const VnIfcAggr& aggregate, VnSpfFilerBase& filer);

} // namespace VN_SDAI::typed
