#pragma once

#include <stdexcept>
#include <string>
#include <string_view>

namespace express {

/// Place in a text; lines and columns count from 1, columns in bytes.
struct Position {
    int line = 1;
    int column = 1;
};

/// An input that cannot be read or resolved. The message has the form
/// "file:line:column: found X, expected Y".
class ExpressError : public std::runtime_error {
public:
    ExpressError(std::string_view file, Position at, std::string_view found, std::string_view expected)
        : std::runtime_error(std::string(file) + ":" + std::to_string(at.line) + ":" + std::to_string(at.column) +
                             ": found " + std::string(found) + ", expected " + std::string(expected)) {}
};

} // namespace express
