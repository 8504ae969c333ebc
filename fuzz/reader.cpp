// Any bytes as an exchange file, read by one thread, and by two that take it in small pieces, so that borders fall
// everywhere, and note where the instances stand.
#include "Rewriting.h"

using namespace VN_SDAI;

namespace {

constexpr std::size_t kLargestPiece = 100;

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    std::string diagnostics[2];
    std::string written[2];
    for (unsigned i = 0; i < 2; ++i) {
        VnIfcModel model(fuzz::schema());
        VnIfcReadOptions options;
        options.threads = i + 1;
        options.places = i == 1;
        options.piece = i == 1 ? 1 + size % kLargestPiece : 0;
        std::uint64_t line = 0;
        options.diagnostics = [&](const VnIfcDiagnostic& diagnostic) {
            fuzz::require(diagnostic.line >= line);
            line = diagnostic.line;
            diagnostics[i] += diagnostic.text() + '\n';
        };
        static_cast<void>(model.readText(text, options)); // whatever comes of it
        written[i] = fuzz::withoutHeader(model.writeText());
    }
    fuzz::require(written[0] == written[1] && diagnostics[0] == diagnostics[1]);
    return 0;
}
