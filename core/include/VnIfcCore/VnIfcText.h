#pragma once
#include <VnRx/VnPlatform.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

// Strings of the exchange structure (ISO 10303-21, 6.4.3) and the text that they stand for.
//
// An exchange text here is a string value as it stands in memory: without the enclosing apostrophes, inner apostrophes
// single, everything else as in the file. The unset text (VnAnsiString::isUnset) is no text; ask for it first.
namespace VN_SDAI {

/// A text decoded to UTF-8, and what was wrong with its exchange text.
struct VnIfcDecodedText {
    /// What was wrong.
    enum class FaultKind : std::uint8_t {
        kDirective, ///< a backslash that begins no directive of a string
        kDigits,    ///< hexadecimal digits missing or of a wrong number, or no `\X0\` after them
        kCharacter, ///< a directive that names no character
        kBytes,     ///< bytes that are no UTF-8
    };
    /// `length` bytes of the exchange text from `offset` on.
    struct Fault {
        ///@{
        /// In bytes of the exchange text.
        std::size_t offset;
        std::size_t length;
        ///@}
        /// What was wrong there.
        FaultKind kind;

        /// True for the same fault at the same place.
        friend bool operator==(const Fault&, const Fault&) = default;
    };

    /// UTF-8, but for bytes that are none and are kept.
    std::string text;
    /// In the order of their offsets; they do not overlap.
    std::vector<Fault> faults;
};

/// What becomes of bytes that are no UTF-8.
enum class VnIfcRawBytes : std::uint8_t {
    kKeep,    ///< they stay as they are, so that encoding gives them back
    kReplace, ///< each broken character becomes U+FFFD, so that the text is valid UTF-8
};

/// Decodes the directives `\\`, `\S\`, `\P?\` (ISO 8859-1 to -9), `\X\`, `\X2\` (with surrogate pairs) and
/// `\X4\`, each taken whole from the left; hexadecimal digits of either case. A malformed directive stays in the text
/// as it stands, and so do `\N\` and `\F\`, which separate tokens and mean nothing in a string, `\T\`, and a `\X0\`
/// that closes nothing. Bytes of 0x80 and above are taken as UTF-8, control characters as they are. Never fails; linear
/// time.
VNIFC_API VnIfcDecodedText vnDecodeText(std::string_view exchangeText, VnIfcRawBytes rawBytes = VnIfcRawBytes::kKeep);

/// The same without a copy where there is nothing to decode: returns `exchangeText` itself or the contents of `buffer`,
/// which it overwrites and in which `exchangeText` must not stand. Appends to `faults` when given; without them the
/// common case costs one search for a backslash.
VNIFC_API std::string_view vnDecodeText(std::string_view exchangeText, std::string& buffer,
                                        VnIfcRawBytes rawBytes = VnIfcRawBytes::kKeep,
                                        std::vector<VnIfcDecodedText::Fault>* faults = nullptr);

/// The exchange text of a text in UTF-8: printable ASCII as it is but for the doubled backslash, other characters in
/// `\X2\` or, beyond U+FFFF, in `\X4\`, as many in one directive as follow each other. Bytes that are no UTF-8 stay as
/// they are. Whatever the bytes, decoding gives them back. Linear time.
VNIFC_API std::string vnEncodeText(std::string_view utf8);

/// The same without a copy where there is nothing to encode: returns `utf8` itself or the contents of `buffer`, which
/// it overwrites.
VNIFC_API std::string_view vnEncodeText(std::string_view utf8, std::string& buffer);

} // namespace VN_SDAI
