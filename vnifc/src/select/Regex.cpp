#include "Regex.h"

#include <vnifc/Error.h>
#include <vnifc/Selector.h>

#if defined(VNIFC_WITH_RE2)
#include <re2/re2.h>
#endif

namespace vnifc {

#if defined(VNIFC_WITH_RE2)

bool hasRegularExpressions() noexcept { return true; }

namespace detail {

struct Regex::Impl {
    explicit Impl(std::string_view pattern) : expression(re2::StringPiece(pattern.data(), pattern.size()), options()) {}

    static re2::RE2::Options options() {
        re2::RE2::Options options;
        options.set_log_errors(false);
        return options;
    }

    re2::RE2 expression;
};

Regex::Regex(std::string_view pattern, std::size_t column) : m_impl(std::make_unique<Impl>(pattern)) {
    if (!m_impl->expression.ok())
        throw SelectorError(column, '/' + std::string(pattern) + '/',
                            "a regular expression (" + m_impl->expression.error() + ")");
}

bool Regex::matchesWhole(std::string_view utf8) const {
    return re2::RE2::FullMatch(re2::StringPiece(utf8.data(), utf8.size()), m_impl->expression);
}

} // namespace detail

#else

bool hasRegularExpressions() noexcept { return false; }

namespace detail {

struct Regex::Impl {};

Regex::Regex(std::string_view pattern, std::size_t column) {
    throw SelectorError(column, '/' + std::string(pattern) + '/',
                        "no regular expression, since this build of vnifc is without them (VNIFC_WITH_RE2)");
}

bool Regex::matchesWhole(std::string_view) const { return false; }

} // namespace detail

#endif

namespace detail {

Regex::~Regex() = default;
Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;

} // namespace detail

} // namespace vnifc
