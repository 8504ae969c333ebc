#pragma once
#include "Side.h"

#include <set>

namespace vnifc::detail {

/// Finds out what of one object differs, value by value.
class Details {
public:
    Details(const Side& before, const Side& after, const DiffOptions& options) noexcept
        : m_before(before), m_after(after), m_options(options) {}

    /// Fills the details; none when all that differs lies within the tolerance.
    void compare(std::uint32_t before, std::uint32_t after, Difference& difference);

private:
    using Pair = std::pair<std::uint64_t, std::uint64_t>;

    void tell(DiffAspect aspect, const std::string& path, std::string before, std::string after);
    void attributes(const Instance& before, const Instance& after, const std::string& prefix, DiffAspect aspect,
                    unsigned depth);
    void attribute(const Instance& before, const Instance& after, const char* name, const std::string& path,
                   DiffAspect aspect, unsigned depth);
    void values(const Value& before, const Value& after, const std::string& path, DiffAspect aspect, bool isSet,
                unsigned depth);
    void lists(const Value::List& before, const Value::List& after, const std::string& path, DiffAspect aspect,
               bool isSet, unsigned depth);
    void instances(const Instance& before, const Instance& after, const std::string& path, DiffAspect aspect,
                   unsigned depth);
    void facets(std::uint32_t before, std::uint32_t after);
    void targets(DiffAspect aspect, std::vector<std::uint32_t> before, std::vector<std::uint32_t> after);
    void sets(const std::vector<std::uint32_t>& before, const std::vector<std::uint32_t>& after);
    void set(const Instance& before, const Instance& after);
    bool isIgnored(std::string_view attribute) const;
    bool isEqual(const Instance& before, const Instance& after) const;
    std::uint64_t keyOf(const Value& value, const Side& side) const;

    const Side& m_before;
    const Side& m_after;
    const DiffOptions& m_options;
    Difference* m_difference = nullptr;
    bool m_isCarrier = false;
    std::set<Pair> m_known; ///< pairs without a GlobalId that were compared for this object already
};

} // namespace vnifc::detail
