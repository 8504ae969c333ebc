#pragma once
#include <VnIfcCore/DictionaryInstance.h>
#include <VnIfcCore/VnAnsiString.h>

#include <memory>
#include <span>
#include <vector>

namespace VN_SDAI {

/// Records by name, in the order in which they were put in. Owns its records. Reading is safe from several threads as
/// long as nothing is put in.
class VNIFC_API Dictionary {
public:
    /// A record under its name. The dictionary owns the record.
    struct Entry {
        /// As given to putAt.
        VnAnsiString name;
        /// Never null.
        std::unique_ptr<DictionaryInstance> instance;
    };

    /// Prepares for that many records altogether.
    void reserve(std::size_t count);
    /// Puts a record in and owns it from then on. Throws std::invalid_argument, and destroys the record, when it is
    /// null or the dictionary has that very name already.
    void putAt(std::string_view name, DictionaryInstance* instance);

    /// The record of exactly that name; null when there is none.
    DictionaryInstance* at(std::string_view name) const noexcept;
    /// The record of that name in any case (ASCII), the first one put in where several fit; null when there is none.
    DictionaryInstance* find(std::string_view name) const noexcept;

    /// The number of records.
    std::size_t size() const noexcept { return m_entries.size(); }
    ///@{
    /// The records in the order in which they were put in; valid until the next putAt.
    std::span<const Entry> entries() const noexcept { return m_entries; }
    auto begin() const noexcept { return m_entries.begin(); }
    auto end() const noexcept { return m_entries.end(); }
    ///@}

private:
    /// A place of the hash table; `position` is one above the entry's index, 0 in an empty place.
    struct Slot {
        std::uint32_t hash = 0;
        std::uint32_t position = 0;
    };

    template <class Equal>
    DictionaryInstance* lookUp(std::string_view name, Equal equal) const noexcept;
    void enter(std::uint32_t hash, std::uint32_t position) noexcept;
    void rehash(std::size_t slots);

    std::vector<Entry> m_entries;
    std::vector<Slot> m_slots;
};

} // namespace VN_SDAI
