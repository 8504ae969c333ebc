#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace VN_SDAI {

/// What an instance's line in the file held that its attributes cannot hold, or hold in other words. It is written back
/// in place of what the instance itself would write, as long as the instance still writes what it wrote just after
/// loading.
struct KeptParameters {
    struct Parameter {
        unsigned position = 0;
        std::string text;      ///< as it stood in the file
        std::string writtenAs; ///< what the instance wrote in its place after loading
        bool fits = false;     ///< the attribute holds the value, in other words
    };

    std::vector<Parameter> parameters;  ///< ascending positions
    std::string surplus;                ///< what follows the class's parameters, with the comma before it
    std::optional<unsigned> absentFrom; ///< the list ended before this position

    bool isEmpty() const noexcept { return parameters.empty() && surplus.empty() && !absentFrom; }
    const Parameter* find(unsigned position) const noexcept {
        for (const Parameter& parameter : parameters)
            if (parameter.position == position)
                return &parameter;
        return nullptr;
    }
    void drop(unsigned position) {
        std::erase_if(parameters, [&](const Parameter& parameter) { return parameter.position == position; });
        if (absentFrom && position >= *absentFrom)
            absentFrom = position + 1;
    }
};

} // namespace VN_SDAI
