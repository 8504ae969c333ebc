#pragma once
#include <memory>
#include <string>
#include <string_view>

namespace vnifc::detail {

/// A regular expression that takes time in proportion to the text, whatever the pattern.
class Regex {
public:
    /// Throws SelectorError with the column of the pattern when it is none; Error when this build has none.
    Regex(std::string_view pattern, std::size_t column);
    ~Regex();
    Regex(Regex&&) noexcept;
    Regex& operator=(Regex&&) noexcept;

    bool matchesWhole(std::string_view utf8) const;

private:
    struct Impl;
    std::unique_ptr<Impl> m_impl;
};

} // namespace vnifc::detail
