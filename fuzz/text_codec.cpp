// Any bytes as an exchange text to decode, and as a text to encode.
#include <VnIfcCore/VnIfcText.h>
#include <VnRx/VrString.h>

#include <cstdlib>

using namespace VN_SDAI;

namespace {

void require(bool holds) {
    if (!holds)
        std::abort();
}

void requireRoundTrip(std::string_view text) {
    const std::string exchange = vnEncodeText(text);
    const VnIfcDecodedText decoded = vnDecodeText(exchange);
    require(decoded.text == text);
    for (const auto& fault : decoded.faults)
        require(fault.kind == VnIfcDecodedText::FaultKind::kBytes);
    std::string buffer;
    require(vnEncodeText(text, buffer) == exchange);
}

void requireOrderedFaults(const VnIfcDecodedText& decoded, std::size_t size) {
    std::size_t behind = 0;
    for (const auto& fault : decoded.faults) {
        require(fault.offset >= behind && fault.length > 0);
        behind = fault.offset + fault.length;
    }
    require(behind <= size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view input(reinterpret_cast<const char*>(data), size);
    requireRoundTrip(input);

    std::string buffer;
    for (const VnIfcRawBytes rawBytes : {VnIfcRawBytes::kKeep, VnIfcRawBytes::kReplace}) {
        const VnIfcDecodedText decoded = vnDecodeText(input, rawBytes);
        requireOrderedFaults(decoded, size);
        requireRoundTrip(decoded.text);
        std::vector<VnIfcDecodedText::Fault> faults;
        require(vnDecodeText(input, buffer, rawBytes) == decoded.text);
        require(vnDecodeText(input, buffer, rawBytes, &faults) == decoded.text && faults == decoded.faults);
    }

    // What was replaced is valid, so Unicode's own forms give it back.
    const VrString valid(vnDecodeText(input, VnIfcRawBytes::kReplace).text);
    require(VrString::fromUtf16(valid.toUtf16()) == valid && VrString::fromUtf32(valid.toUtf32()) == valid);
    return 0;
}
