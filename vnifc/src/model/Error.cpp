#include <vnifc/Error.h>

namespace vnifc {

Error::~Error() = default;
FileError::~FileError() = default;
NotFound::~NotFound() = default;
BadValue::~BadValue() = default;
SelectorError::~SelectorError() = default;

SelectorError::SelectorError(std::size_t column, std::string found, std::string expected, bool namesNothing)
    : Error("selector, column " + std::to_string(column) + ": expected " + expected + ", found " + found),
      m_column(column), m_found(std::move(found)), m_expected(std::move(expected)), m_namesNothing(namesNothing) {}

} // namespace vnifc
