#pragma once
#include <VnIfcCore/VnIfcHeader.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace VN_SDAI {

/// Where one instance stands in the text: from behind its "=" up to its semicolon.
struct SpfInstance {
    std::uint64_t number;
    const char* begin;
    const char* end;
};

/// Something that is wrong with the text, at a place in it.
struct SpfFinding {
    enum Kind : std::uint8_t {
        kNoMagic,
        kNoHeader,
        kHeaderEntry,
        kNoEnd,
        kGarbage,
        kNoNumber,
        kNoSemicolon,
        kBrokenString,
        kOpenComment,
        kScope,
        kSection,
        kSecondStructure,
    };

    Kind kind;
    const char* begin;  ///< what was found is [begin, end)
    const char* end;
    std::uint64_t number = 0;  ///< of the instance; 0 for none
};

/// The structure of an exchange file (ISO 10303-21, 5 and 7 to 11): header entries, and where each instance stands.
/// Whatever the text holds, every byte is looked at a bounded number of times, and a fault costs no more than the
/// instance that it is in.
struct SpfStructure {
    VnIfcHeader header;
    std::vector<SpfInstance> instances;
    std::vector<SpfFinding> findings;
    std::uint64_t largestNumber = 0;

    /// False when the text is no exchange file at all; `reason` says why.
    bool scan(const char* begin, const char* end, std::string& reason);
};

}  // namespace VN_SDAI
