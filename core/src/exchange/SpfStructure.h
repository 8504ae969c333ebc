#pragma once
#include "../base/PageMemory.h"

#include <VnIfcCore/VnIfcHeader.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace VN_SDAI {

/// Where one instance stands in the text: from behind its "=" up to its semicolon. Two words, because there are as many
/// as instances: the place of nearly every one fits into the second, others have it in SpfStructure::large.
struct SpfInstance {
    std::uint64_t number;
    std::uint64_t place; ///< offset of the text, and its length in the upper bits
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
        kDataSection,
        kSection,
        kSecondStructure,
    };

    Kind kind;
    const char* begin; ///< what was found is [begin, end)
    const char* end;
    std::uint64_t number = 0; ///< of the instance; 0 for none
};

/// The structure of an exchange file (ISO 10303-21, 5 and 7 to 11): header entries, and where each instance stands.
/// Whatever the text holds, every byte is looked at a bounded number of times, and a fault costs no more than the
/// instance that it is in.
struct SpfStructure {
    VnIfcHeader header;
    std::vector<SpfInstance, PageAllocator<SpfInstance>> instances;
    std::vector<SpfFinding> findings;
    std::uint64_t largestNumber = 0;
    const char* text = nullptr;

    std::string_view textOf(const SpfInstance& instance) const noexcept {
        const std::uint64_t length = instance.place >> kOffsetBits;
        const std::uint64_t offset = instance.place & kOffsetMask;
        if (length != kLargeLength)
            return {text + offset, length};
        return {text + large[offset].first, large[offset].second};
    }
    void add(std::uint64_t number, const char* begin, const char* end);

    /// False when the text is no exchange file at all; `reason` says why.
    bool scan(const char* begin, const char* end, std::string& reason);
    /// False when these first bytes of a text, of 64 KiB at least, show already that it is none.
    static bool canBegin(const char* begin, const char* end);

private:
    static constexpr unsigned kOffsetBits = 44;
    static constexpr std::uint64_t kOffsetMask = (std::uint64_t{1} << kOffsetBits) - 1;
    static constexpr std::uint64_t kLargeLength = (std::uint64_t{1} << (64 - kOffsetBits)) - 1;

    std::vector<std::pair<std::uint64_t, std::uint64_t>> large;
};

} // namespace VN_SDAI
