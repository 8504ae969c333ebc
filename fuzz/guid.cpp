// Any bytes as the text of an identifier, and the first sixteen as its value.
#include <VnIfcCore/VnIfcGUID.h>

#include <cstdlib>

using namespace VN_SDAI;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const VnIfcGUID guid(text);
    require(guid.view() == text.substr(0, VnIfcGUID::kLength));
    require(guid.constStr()[guid.length()] == '\0');
    const auto bytes = guid.toBytes();
    require(bytes.has_value() == guid.isValid());
    require(!bytes || VnIfcGUID::fromBytes(*bytes) == guid);

    VnIfcGUID::Bytes value{};
    std::copy_n(data, std::min(size, value.size()), value.begin());
    const VnIfcGUID made = VnIfcGUID::fromBytes(value);
    require(made.isValid() && made.toBytes() == value);
    return 0;
}
