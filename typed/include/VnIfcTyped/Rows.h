#pragma once
#include <cstddef>

namespace VN_SDAI::typed {

/// A constant array, as generated tables refer to it; holds no elements itself. Like std::span, but with one
/// constructor: a schema names thousands of arrays, and to choose among those of std::span costs the compiler a third
/// of the time that a module takes.
template <class T>
class Rows {
public:
    constexpr Rows() noexcept = default;
    /// The whole of an array, which must outlive the object.
    template <std::size_t N>
    constexpr Rows(const T (&rows)[N]) noexcept : m_first(rows), m_size(N) {}

    ///@{
    /// The array's elements; an index must be below size().
    constexpr const T* begin() const noexcept { return m_first; }
    constexpr const T* end() const noexcept { return m_first + m_size; }
    constexpr const T* data() const noexcept { return m_first; }
    constexpr std::size_t size() const noexcept { return m_size; }
    constexpr bool empty() const noexcept { return m_size == 0; }
    constexpr const T& operator[](std::size_t i) const noexcept { return m_first[i]; }
    ///@}

private:
    const T* m_first = nullptr;
    std::size_t m_size = 0;
};

} // namespace VN_SDAI::typed
