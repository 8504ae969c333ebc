#pragma once
#include <vnifc/Model.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

// Tables in memory, column by column, laid out as the Arrow columnar format has it, so that they go to other programs
// without a copy.
namespace vnifc {

/// Bytes that grow. Large ones move without being copied.
class ColumnBuffer {
public:
    const void* data() const noexcept { return m_data.get(); }
    std::size_t size() const noexcept { return m_size; }
    void append(const void* bytes, std::size_t count) {
        if (m_capacity - m_size < count)
            grow(count);
        if (count > 0)
            std::memcpy(m_data.get() + m_size, bytes, count);
        m_size += count;
    }
    template <class T>
    void push(const T& value) {
        append(&value, sizeof value);
    }
    /// Sets or appends the bit at `index`, which is at most one past the last byte's.
    void setBit(std::size_t index, bool value) {
        if (index / 8 >= m_size)
            push(std::uint8_t{0});
        if (value)
            m_data.get()[index / 8] = static_cast<char>(m_data.get()[index / 8] | (1 << index % 8));
    }
    void fit() noexcept {
        if (char* smaller = m_size > 0 ? static_cast<char*>(std::realloc(m_data.get(), m_size)) : nullptr) {
            static_cast<void>(m_data.release());
            m_data.reset(smaller);
            m_capacity = m_size;
        }
    }

private:
    struct Free {
        void operator()(char* data) const noexcept { std::free(data); }
    };

    void grow(std::size_t count) {
        constexpr std::size_t kFirst = 64;
        const std::size_t wanted = m_size + count > m_capacity * 2 ? m_size + count : m_capacity * 2;
        const std::size_t capacity = wanted < kFirst ? kFirst : wanted;
        char* larger = static_cast<char*>(std::realloc(m_data.get(), capacity));
        if (!larger)
            throw std::bad_alloc();
        static_cast<void>(m_data.release());
        m_data.reset(larger);
        m_capacity = capacity;
    }

    std::unique_ptr<char, Free> m_data;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

enum class ColumnKind : std::uint8_t {
    kId,       ///< std::uint64_t: the number of an instance
    kInteger,  ///< std::int64_t
    kReal,     ///< double
    kBoolean,  ///< one bit each
    kText,     ///< UTF-8, always valid; `offsets` are std::int64_t
    kCategory, ///< texts of which there are few: std::int32_t, each an index into `child`, which is of kText
    kList,     ///< elements are in `child`; `offsets` are std::int64_t
};

/// One column. What has no value takes room in `values` all the same, but for text and lists.
class VNIFC_LAYER_API Column {
public:
    Column(std::string name, ColumnKind kind);

    const std::string& name() const noexcept { return m_name; }
    ColumnKind kind() const noexcept { return m_kind; }
    std::size_t size() const noexcept { return m_size; }
    std::size_t nulls() const noexcept { return m_nulls; }
    /// One bit each, from the lowest; 1 for a value. Of no meaning when there are no nulls.
    const ColumnBuffer& valid() const noexcept { return m_valid; }
    const ColumnBuffer& values() const noexcept { return m_values; }
    const ColumnBuffer& offsets() const noexcept { return m_offsets; }
    /// The elements of lists, the texts of categories; null for other kinds.
    const Column* child() const noexcept { return m_child.get(); }
    Column* child() noexcept { return m_child.get(); }
    /// Of lists: what the elements are; before the first is appended.
    void setChild(Column child) { m_child = std::make_unique<Column>(std::move(child)); }

    void null();
    void id(std::uint64_t value) { put(value); }
    void integer(std::int64_t value) { put(value); }
    void real(double value) { put(value); }
    void boolean(bool value);
    /// Of kText and kCategory. Bytes that are no UTF-8 become U+FFFD.
    void text(std::string_view utf8);
    /// Of kCategory: the index of a text, to be appended by code; cheaper for those that come again and again.
    std::int32_t codeOf(std::string_view utf8);
    void code(std::int32_t code) { put(code); }
    /// Of kList: ends the list of the elements that were appended to the child.
    void endList();
    /// Gives room back that was taken in advance.
    void fit() noexcept;

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const noexcept { return std::hash<std::string_view>()(text); }
    };

    template <class T>
    void put(T value) {
        m_values.push(value);
        count(true);
    }
    void count(bool isValid);

    std::string m_name;
    ColumnKind m_kind;
    std::size_t m_size = 0;
    std::size_t m_nulls = 0;
    ColumnBuffer m_valid, m_values, m_offsets;
    std::unique_ptr<Column> m_child;
    std::unordered_map<std::string, std::int32_t, Hash, std::equal_to<>> m_codes;
};

/// Columns of the same length.
struct ColumnTable {
    std::vector<Column> columns;
    std::size_t rows = 0;
};

/// A table of the instances of an entity and its subtypes: `id`, `entity`, and their attributes, or those `names` that
/// are given: attributes and facets (Facet.h). A reference has a second column, NAME_entity, with the target's entity;
/// a select that can hold values beside instances is text with a second column, NAME_type; literals are categories,
/// lists are lists. Throws NotFound for an unknown entity and SelectorError for an unknown name.
VNIFC_LAYER_API ColumnTable entityColumns(const Model& model, std::string_view entity,
                                          std::span<const std::string> names = {});

struct PropertyColumnsOptions {
    std::string entity = {};            ///< of objects of this entity alone
    std::vector<std::string> sets = {}; ///< in sets of these names alone; all when empty
    bool quantities = false;            ///< quantities alone
};

/// A table of the properties and quantities that prevail for each object (Properties.h), a row each: `object`,
/// `entity`, `global_id`, `set`, `name` (parts of complex ones with a dot), `value` in words, `number`, `type` of the
/// value in upper case, `unit`, `si_value`, `from_type`. What has no way to SI has no `si_value`.
VNIFC_LAYER_API ColumnTable propertyColumns(const Model& model, const PropertyColumnsOptions& options = {});

/// A table of the relationships, a row for each related object: `relation`, `entity`, `relating`, `relating_entity`,
/// `related`, `related_entity`. Only those of an entity when one is given. Throws Error when relations with several
/// instances at both ends come to more than ten million rows.
VNIFC_LAYER_API ColumnTable relationColumns(const Model& model, std::string_view entity = {});

/// A table of findings: `severity`, `code`, `line`, `column`, `instance`, `keyword`, `attribute`, `found`, `expected`,
/// `rule`.
VNIFC_LAYER_API ColumnTable findingColumns(std::span<const Finding> findings);

} // namespace vnifc
