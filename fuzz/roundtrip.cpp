// Any bytes as an exchange file, or as its DATA section: what is written must read and write the same again.
#include "Rewriting.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    fuzz::requireStableRewriting(text.starts_with("ISO-10303-21") ? std::string(text) : fuzz::fileOf(text));
    return 0;
}
