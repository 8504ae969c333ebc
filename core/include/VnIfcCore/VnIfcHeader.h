#pragma once
#include <VnRx/VnPlatform.h>

#include <string>
#include <string_view>
#include <vector>

namespace VN_SDAI {

/// The header section of an exchange file (ISO 10303-21, 8): its entries in order, each with its parameter list as
/// text.
class VNIFC_API VnIfcHeader {
public:
    /// One entry of the header section.
    struct Entry {
        std::string keyword;    ///< "FILE_NAME"
        std::string parameters; ///< without the outer parentheses
    };

    ///@{
    /// All entries in the order of the file, owned by the header.
    std::vector<Entry>& entries() noexcept { return m_entries; }
    const std::vector<Entry>& entries() const noexcept { return m_entries; }
    ///@}
    /// The first entry of that keyword; null when there is none.
    const Entry* find(std::string_view keyword) const noexcept;
    /// The strings of the index-th parameter (from 0) of an entry, decoded as exchange text of one level: a single
    /// string, or each string of a list; empty for "$" and for what is not there.
    std::vector<std::string> strings(std::string_view keyword, std::size_t index) const;

    /// The names in FILE_SCHEMA.
    std::vector<std::string> schemas() const { return strings("FILE_SCHEMA", 0); }
    /// Replaces or adds an entry.
    void set(std::string_view keyword, std::string parameters);
    /// Now, as ISO 8601 in universal time: "2024-02-29T12:00:00Z".
    static std::string timeStamp();
    /// The three entries that the standard requires, for a new model: the version of this library is named as
    /// preprocessor. Names are UTF-8, the time stamp is ISO 8601. A model without any entries is written with those of
    /// its schema and of the moment.
    static VnIfcHeader standard(std::string_view schema, std::string_view fileName, std::string_view timeStamp);

private:
    std::vector<Entry> m_entries;
};

} // namespace VN_SDAI
