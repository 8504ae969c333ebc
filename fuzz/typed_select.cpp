// Any bytes as the value of a select: of single ones, of lists, with enumerations, aggregates and instances as members.
#include "Rewriting.h"

#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0)
        return 0;
    const std::string_view value(reinterpret_cast<const char*>(data) + 1, size - 1);
    constexpr std::string_view kBefore[] = {
        "IFCPROPERTYSINGLEVALUE('',$,",
        "IFCPROPERTYENUMERATEDVALUE('',$,(",
        "IFCPRESENTATIONSTYLEASSIGNMENT((",
        "IFCINDEXEDPOLYCURVE(#1,(",
        "IFCAPPLIEDVALUE('',$,",
        "IFCACTOR('',$,$,$,$,",
    };
    constexpr std::string_view kBehind[] = {",$)", "),$)", "))", "),.F.)", ",$,$,$,$,$,$,$)", ")"};
    const std::size_t which = data[0] % std::size(kBefore);
    std::string line = "#1=";
    line.append(kBefore[which]).append(value).append(kBehind[which]).append(";\n");
    fuzz::requireStableRewriting(fuzz::fileOf(line));
    return 0;
}
