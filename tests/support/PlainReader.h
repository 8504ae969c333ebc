#pragma once
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A small reader of exchange files (ISO 10303-21) that shares nothing with the library, so that it can bear witness.
namespace plain {

struct Value {
    enum Kind { kNothing, kToken, kString, kNumber, kList, kTyped };

    Kind kind = kNothing;
    std::string text; ///< as it stands there; of a typed value its keyword
    double number = 0;
    std::vector<Value> values; ///< of a list or a typed value
};

struct Instance {
    std::string keyword; ///< upper case; empty for a complex instance
    std::vector<Value> parameters;
    std::string text; ///< of what is no keyword with a list
};

struct File {
    std::vector<std::pair<std::string, std::string>> header; ///< keywords and parameter lists as text
    std::map<std::uint64_t, Instance> instances;
    std::size_t doubles = 0; ///< instances whose number was there already
};

File read(std::string_view text);

} // namespace plain
