#pragma once

#include "Express.h"
#include "Output.h"
#include "Resolve.h"

#include <string>
#include <string_view>

namespace expgen::test {

/// The declarations of a schema that consists of `body`; the file is called "s.exp" in errors.
inline SchemaDecl parse(std::string_view body) {
    return parseSchema("s.exp", "SCHEMA S;\n" + std::string(body) + "\nEND_SCHEMA;\n");
}

/// The model of a schema that consists of `body`, with `order` as the building order of its types and selects.
inline Model resolveText(std::string_view body, std::string_view order = "") {
    return resolve(parse(body), {parseSchema("r.exp", "SCHEMA R; END_SCHEMA;"), readBuildingOrder("o.txt", order)});
}

/// The model of the schema that this repository is about.
inline Model resolveProjectSchema() {
    const std::string directory = VNIFC_SCHEMAS "/ifc4x3/";
    return resolve(parseSchema("declarations.exp", readFile(directory + "declarations.exp")),
                   {parseSchema("e.exp", readFile(directory + "dictionary_enumerations.exp")),
                    readBuildingOrder("o.txt", readFile(directory + "building_order.txt"))});
}

/// What a function throws as text; empty when it throws nothing.
template <class Function>
std::string errorOf(Function function) {
    try {
        function();
    } catch (const ExpressError& error) {
        return error.what();
    }
    return "";
}

} // namespace expgen::test
