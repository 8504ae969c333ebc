#pragma once
#include <vnifc/Export.h>

#include <cstddef>
#include <stdexcept>
#include <string>

namespace vnifc {

/// What the functions of this library throw. The message is complete: where, what was found and what was expected.
class VNIFC_LAYER_API Error : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    ~Error() override;
};

/// A file that cannot be read or written, or a release that is not known or not installed.
class VNIFC_LAYER_API FileError : public Error {
public:
    using Error::Error;
    ~FileError() override;
};

/// An entity, instance, attribute or unit that does not exist.
class VNIFC_LAYER_API NotFound : public Error {
public:
    using Error::Error;
    ~NotFound() override;
};

/// A value that does not fit where it is to go, and an operation that cannot be done with what is there.
class VNIFC_LAYER_API BadValue : public Error {
public:
    using Error::Error;
    ~BadValue() override;
};

/// A faulty selector, or one that names a class or attribute that does not exist.
class VNIFC_LAYER_API SelectorError : public Error {
public:
    /// `column` counts bytes of the selector from 1.
    SelectorError(std::size_t column, std::string found, std::string expected, bool namesNothing = false);
    ~SelectorError() override;

    std::size_t column() const noexcept { return m_column; }
    const std::string& found() const noexcept { return m_found; }
    const std::string& expected() const noexcept { return m_expected; }
    /// True when the selector is well formed, and a class of that name does not exist.
    bool namesNothing() const noexcept { return m_namesNothing; }

private:
    std::size_t m_column;
    std::string m_found;
    std::string m_expected;
    bool m_namesNothing;
};

} // namespace vnifc
