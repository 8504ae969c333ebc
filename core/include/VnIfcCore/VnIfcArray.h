#pragma once
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <memory>
#include <new>
#include <ranges>
#include <span>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <utility>

namespace VN_SDAI {

/// Carries the elements of a VnIfcArray to larger memory by copying their bytes: for numbers.
template <class T>
struct VnIfcArrayMemCopyReallocator {
    static_assert(std::is_trivially_copyable_v<T>);

    /// Copies `count` elements to raw memory that does not overlap theirs.
    static void relocate(T* to, const T* from, std::size_t count) noexcept {
        if (count != 0)
            std::memcpy(static_cast<void*>(to), from, count * sizeof(T));
    }
};

/// Carries the elements of a VnIfcArray to larger memory one by one: for handles, strings, selects and inner arrays.
/// When a copy fails, the elements stay where they were.
template <class T>
struct VnIfcArrayObjectCopyReallocator {
    /// Moves `count` elements to raw memory that does not overlap theirs, and destroys the old ones. Copies, which may
    /// throw, where moving may throw.
    static void relocate(T* to, T* from, std::size_t count) {
        if constexpr (std::is_nothrow_move_constructible_v<T>)
            std::uninitialized_move_n(from, count, to);
        else
            std::uninitialized_copy_n(from, count, to);
        std::destroy_n(from, count);
    }
};

/// The reallocator that an array of T uses by default.
template <class T>
using VnIfcArrayReallocatorOf =
    std::conditional_t<std::is_arithmetic_v<T>, VnIfcArrayMemCopyReallocator<T>, VnIfcArrayObjectCopyReallocator<T>>;

/// Growable array through which contents enter and leave an aggregate. Owns its elements, always on the heap. At most
/// 2^32 - 1 elements; more raise std::length_error. When an element cannot be copied, the array stays as it was.
template <class T, class Reallocator = VnIfcArrayReallocatorOf<T>>
class VnIfcArray {
public:
    /// The element type, as ranges name it.
    using value_type = T;
    /// The least number of elements by which an array grows.
    static constexpr std::uint32_t kDefaultGrowStep = 8;

    VnIfcArray() noexcept = default;
    /// An empty array that grows by at least `growStep` elements at a time.
    explicit VnIfcArray(std::uint32_t growStep) noexcept : m_growStep(std::max(growStep, 1u)) {}
    /// Copies the elements of a list in braces.
    VnIfcArray(std::initializer_list<T> elements) { appendAll({elements.begin(), elements.size()}); }
    /// From any contiguous range of elements: a vector, an array, a span; for an array of arrays, a range of such.
    template <class Range>
    requires(!std::is_same_v<std::remove_cvref_t<Range>, VnIfcArray> && std::ranges::contiguous_range<const Range> &&
             (std::is_same_v<std::ranges::range_value_t<const Range>, T> ||
              (std::ranges::contiguous_range<const T> && !std::is_convertible_v<const T&, std::string_view> &&
               std::is_constructible_v<T, const std::ranges::range_value_t<const Range>&>)))
        VnIfcArray(const Range& elements) {
        reserve(std::ranges::size(elements));
        for (const auto& element : elements)
            append(T(element));
    }
    /// Copies the elements; the grow step is the same.
    VnIfcArray(const VnIfcArray& other) : m_growStep(other.m_growStep) { appendAll(other); }
    /// Takes the elements and leaves an empty array.
    VnIfcArray(VnIfcArray&& other) noexcept { swap(other); }
    ~VnIfcArray() {
        clear();
        ::operator delete(m_elements);
    }

    ///@{
    /// Takes the elements as the constructor of the same argument does.
    VnIfcArray& operator=(const VnIfcArray& other) {
        if (this != &other)
            VnIfcArray(other).swap(*this);
        return *this;
    }
    VnIfcArray& operator=(VnIfcArray&& other) noexcept {
        VnIfcArray(std::move(other)).swap(*this);
        return *this;
    }
    ///@}

    ///@{
    /// The number of elements.
    std::uint32_t length() const noexcept { return m_length; }
    std::size_t size() const noexcept { return m_length; }
    ///@}
    /// True when there are no elements.
    bool isEmpty() const noexcept { return m_length == 0; }
    /// How many elements there is memory for.
    std::uint32_t capacity() const noexcept { return m_capacity; }
    /// The least number of elements by which the array grows; a larger array doubles.
    std::uint32_t growStep() const noexcept { return m_growStep; }

    ///@{
    /// The element at an index below length(); no range check.
    T& operator[](std::size_t index) noexcept { return m_elements[index]; }
    const T& operator[](std::size_t index) const noexcept { return m_elements[index]; }
    ///@}
    ///@{
    /// As operator[], without a range check either.
    T& at(std::size_t index) noexcept { return m_elements[index]; }
    const T& at(std::size_t index) const noexcept { return m_elements[index]; }
    ///@}

    ///@{
    /// The elements, one after the other; null bounds for an array that never had any. Valid until the array grows, is
    /// moved from or destroyed.
    T* data() noexcept { return m_elements; }
    const T* data() const noexcept { return m_elements; }
    T* begin() noexcept { return m_elements; }
    T* end() noexcept { return m_elements + m_length; }
    const T* begin() const noexcept { return m_elements; }
    const T* end() const noexcept { return m_elements + m_length; }
    ///@}

    /// Adds an element at the end and returns it. References to elements become invalid.
    T& append(T element) {
        if (m_length == m_capacity)
            reserve(std::size_t{m_capacity} + std::max(m_growStep, m_capacity));
        T* added = ::new (static_cast<void*>(end())) T(std::move(element));
        ++m_length;
        return *added;
    }
    /// Adds elements, which must not be this array's own, at the end.
    void appendAll(std::span<const T> elements) {
        if (elements.empty())
            return;
        reserve(m_length + elements.size());
        std::uninitialized_copy(elements.begin(), elements.end(), end());
        m_length += static_cast<std::uint32_t>(elements.size());
    }
    /// Gives the array this length: drops elements from the end, or adds default ones (0 for numbers).
    void setLogicalLength(std::size_t length) {
        if (length < m_length) {
            std::destroy(begin() + length, end());
        } else {
            reserve(length);
            std::uninitialized_value_construct(end(), begin() + length);
        }
        m_length = static_cast<std::uint32_t>(length);
    }
    /// As setLogicalLength.
    void resize(std::size_t length) { setLogicalLength(length); }
    /// Makes room for `capacity` elements in all.
    void reserve(std::size_t capacity) {
        if (capacity <= m_capacity)
            return;
        if (capacity > std::numeric_limits<std::uint32_t>::max())
            throw std::length_error("VnIfcArray: too many elements");
        const auto release = [](T* memory) { ::operator delete(memory); };
        std::unique_ptr<T, decltype(release)> larger(static_cast<T*>(::operator new(capacity * sizeof(T))), release);
        Reallocator::relocate(larger.get(), m_elements, m_length);
        ::operator delete(std::exchange(m_elements, larger.release()));
        m_capacity = static_cast<std::uint32_t>(capacity);
    }
    /// Drops all elements; the memory is kept for new ones.
    void clear() noexcept {
        std::destroy(begin(), end());
        m_length = 0;
    }
    /// Exchanges contents and grow steps without copying.
    void swap(VnIfcArray& other) noexcept {
        std::swap(m_elements, other.m_elements);
        std::swap(m_length, other.m_length);
        std::swap(m_capacity, other.m_capacity);
        std::swap(m_growStep, other.m_growStep);
    }

    /// Equal elements in the same order; room and grow step do not count.
    friend bool operator==(const VnIfcArray& left, const VnIfcArray& right) {
        return std::equal(left.begin(), left.end(), right.begin(), right.end());
    }

private:
    T* m_elements = nullptr;
    std::uint32_t m_length = 0;
    std::uint32_t m_capacity = 0;
    std::uint32_t m_growStep = kDefaultGrowStep;
};

static_assert(sizeof(VnIfcArray<double>) == 24);

} // namespace VN_SDAI
