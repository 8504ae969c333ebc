#pragma once
#include <IFC4X3/Module.h>
#include <VnIfcCore/VnIfcModel.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <string_view>

/// What the targets that read exchange files have in common.
namespace fuzz {

inline void require(bool holds) {
    if (!holds)
        std::abort();
}

inline const VN_SDAI::VnIfcSchema* schema() {
    static const bool ready = vnGetModuleLifeCycleApp()->initApp();
    return ready ? vnifcGetSchemaPointer() : nullptr;
}

/// A whole file around the text of a DATA section.
inline std::string fileOf(std::string_view data) {
    return std::string("ISO-10303-21;\nHEADER;\nFILE_SCHEMA(('IFC4X3'));\nENDSEC;\nDATA;\n")
        .append(data)
        .append("ENDSEC;\nEND-ISO-10303-21;\n");
}

/// The text that comes out when this one goes in, looked through in pieces of so many bytes; empty for what is no
/// exchange file.
inline std::string rewritten(std::string_view file, std::size_t piece = 0) {
    VN_SDAI::VnIfcModel model(schema());
    VN_SDAI::VnIfcReadOptions options;
    options.threads = 1;
    options.piece = piece;
    return model.readText(file, options) ? model.writeText() : std::string();
}

/// What follows the header, which has the time of writing where the file had none.
inline std::string_view withoutHeader(std::string_view file) {
    return file.substr(std::min(file.find("\nDATA;"), file.size()));
}

/// What was written once must be written the same ever after, and in whatever pieces it is read.
inline void requireStableRewriting(std::string_view file) {
    constexpr std::size_t kLargestPiece = 64;
    const std::string first = rewritten(file);
    require(withoutHeader(rewritten(file, 1 + file.size() % kLargestPiece)) == withoutHeader(first));
    require(first.empty() || rewritten(first) == first);
}

} // namespace fuzz
