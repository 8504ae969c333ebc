#pragma once
#include <vnifc/Value.h>

#include <iterator>
#include <memory>
#include <ranges>
#include <span>
#include <vector>

// The ranges are views (std::ranges::view). They have no std::ranges::view_interface, which Clang before 16 does not
// take from libstdc++.
namespace vnifc {

/// Instances of a model, as they were when the range was made. Instances that are created later are not in it; those
/// that are erased meanwhile are passed over, so that a loop may create and erase. Cheap to copy; good as long as the
/// model.
class InstanceRange : public std::ranges::view_base {
    using Handles = std::vector<VN_SDAI::VnDbObjectId>;

public:
    class iterator {
    public:
        using value_type = Instance;
        using difference_type = std::ptrdiff_t;
        using reference = Instance;
        using iterator_category = std::input_iterator_tag;
        using iterator_concept = std::forward_iterator_tag;

        iterator() noexcept = default;
        Instance operator*() const noexcept { return {*m_at, m_state}; }
        iterator& operator++() noexcept {
            ++m_at;
            passErased();
            return *this;
        }
        iterator operator++(int) noexcept {
            iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const iterator& left, const iterator& right) noexcept { return left.m_at == right.m_at; }

    private:
        friend class InstanceRange;
        iterator(const VN_SDAI::VnDbObjectId* at, const VN_SDAI::VnDbObjectId* end, detail::ModelState* state) noexcept
            : m_at(at), m_end(end), m_state(state) {
            passErased();
        }
        void passErased() noexcept {
            while (m_at != m_end && !m_at->openObject())
                ++m_at;
        }

        const VN_SDAI::VnDbObjectId* m_at = nullptr;
        const VN_SDAI::VnDbObjectId* m_end = nullptr;
        detail::ModelState* m_state = nullptr;
    };

    InstanceRange() noexcept = default;
    InstanceRange(std::shared_ptr<const Handles> handles, detail::ModelState* state) noexcept
        : m_handles(*handles), m_held(std::move(handles)), m_state(state) {}
    /// Of handles that live as long as `held`.
    InstanceRange(std::shared_ptr<const void> held, std::span<const VN_SDAI::VnDbObjectId> handles,
                  detail::ModelState* state) noexcept
        : m_handles(handles), m_held(std::move(held)), m_state(state) {}

    iterator begin() const noexcept { return {m_handles.data(), end_(), m_state}; }
    iterator end() const noexcept { return {end_(), end_(), m_state}; }
    bool empty() const noexcept { return begin() == end(); }
    /// The first one; there must be one.
    Instance front() const noexcept { return *begin(); }
    /// Number of instances, without erased ones; linear time.
    std::size_t count() const noexcept { return static_cast<std::size_t>(std::ranges::distance(begin(), end())); }
    std::vector<Instance> toVector() const { return {begin(), end()}; }

private:
    const VN_SDAI::VnDbObjectId* end_() const noexcept { return m_handles.data() + m_handles.size(); }

    std::span<const VN_SDAI::VnDbObjectId> m_handles;
    std::shared_ptr<const void> m_held;
    detail::ModelState* m_state = nullptr;
};

namespace detail {
struct AttributeInfo;
}

/// An explicit attribute of an instance.
class VNIFC_LAYER_API Attribute {
public:
    /// As declared: "GlobalId".
    std::string_view name() const noexcept;
    /// Of its type as the dictionary has it: "IfcLabel", "set [1:?] of IfcRepresentationItem".
    std::string_view typeName() const noexcept;
    /// In the parameter list, from 0.
    unsigned position() const noexcept;
    bool isOptional() const noexcept;
    /// A subtype computes the value; it is not stored.
    bool isDerived() const noexcept;
    /// Its values are instances, or say of which type they are.
    bool isSelect() const noexcept;
    Value value() const;
    /// See Instance::keptText.
    std::optional<std::string> keptText() const;

private:
    friend class AttributeRange;
    friend class Instance;
    Attribute(const Instance& instance, const detail::AttributeInfo* info) noexcept
        : m_instance(instance), m_info(info) {}

    Instance m_instance;
    const detail::AttributeInfo* m_info;
};

/// The explicit attributes of an instance.
class VNIFC_LAYER_API AttributeRange : public std::ranges::view_base {
public:
    class VNIFC_LAYER_API iterator {
    public:
        using value_type = Attribute;
        using difference_type = std::ptrdiff_t;
        using reference = Attribute;
        using iterator_category = std::input_iterator_tag;
        using iterator_concept = std::forward_iterator_tag;

        iterator() noexcept = default;
        Attribute operator*() const noexcept { return {m_instance, m_at}; }
        iterator& operator++() noexcept;
        iterator operator++(int) noexcept {
            iterator before = *this;
            ++*this;
            return before;
        }
        friend bool operator==(const iterator& left, const iterator& right) noexcept { return left.m_at == right.m_at; }

    private:
        friend class AttributeRange;
        iterator(const Instance& instance, const detail::AttributeInfo* at) noexcept : m_instance(instance), m_at(at) {}

        Instance m_instance;
        const detail::AttributeInfo* m_at = nullptr;
    };

    AttributeRange(const Instance& instance, const detail::AttributeInfo* first,
                   const detail::AttributeInfo* last) noexcept
        : m_instance(instance), m_first(first), m_last(last) {}

    iterator begin() const noexcept { return {m_instance, m_first}; }
    iterator end() const noexcept { return {m_instance, m_last}; }
    bool empty() const noexcept { return m_first == m_last; }
    std::size_t size() const noexcept;

private:
    Instance m_instance;
    const detail::AttributeInfo* m_first;
    const detail::AttributeInfo* m_last;
};

} // namespace vnifc
