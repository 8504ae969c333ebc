// Any bytes as a schema in EXPRESS, or as its declarations: they are read, resolved and emitted, or refused with the
// place of the fault.
#include <Emit.h>
#include <Resolve.h>
#include <express/Parser.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

using namespace expgen;

namespace {

constexpr std::string_view kFile = "s.exp";

void require(bool holds) {
    if (!holds)
        std::abort();
}

bool isWord(const Name& name) {
    const auto isPart = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
    };
    return !name.text.empty() && std::ranges::all_of(name.text, isPart);
}

/// Each type and select once, as the building order must have them.
BuildingOrder orderOf(const SchemaDecl& schema) {
    BuildingOrder order{"o.txt", {}};
    const auto add = [&](const auto& declarations) {
        for (const auto& each : declarations) {
            require(isWord(each.name));
            order.names.push_back(each.name);
        }
    };
    add(schema.definedTypes);
    add(schema.selects);
    return order;
}

void readSchema(std::string_view text) {
    const SchemaDecl schema = parseSchema(kFile, text);
    require(isWord(schema.name));
    const BuildingOrder order = orderOf(schema);
    static const Target target{
        readRelease("r.txt", "name S\nmodule VnS\npackage s\ntitle S\nversion kIfc4 kZero\nserves S\n"), "schemas/s"};
    static const SchemaDecl records = parseSchema("r.exp", "SCHEMA R; END_SCHEMA;");
    for (const Differences& differences : {Differences{}, Differences{records, order}}) {
        const Model model = resolve(schema, differences);
        require(model.entities.size() == schema.entities.size());
        require(model.entityOrder.size() == model.entities.size());
        require(emit(model, target) == emit(resolve(schema, differences), target));
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    if (!text.starts_with("SCHEMA"))
        text = "SCHEMA S;\n" + text + "\nEND_SCHEMA;\n";
    try {
        readSchema(text);
    } catch (const ExpressError& error) {
        const std::string_view message = error.what();
        require(message.starts_with("s.exp:") || message.starts_with("o.txt:"));
        require(message.find(": found ") != message.npos && message.find(", expected ") != message.npos);
    }
    return 0;
}
