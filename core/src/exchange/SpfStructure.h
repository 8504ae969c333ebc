#pragma once
#include "SpfRecords.h"

#include <VnIfcCore/VnIfcHeader.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace VN_SDAI {

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

/// The records that each thread found.
using SpfAllRecords = std::vector<std::unique_ptr<SpfRecords>>;

/// How the search for instances is shared among threads.
struct SpfSharing {
    unsigned threads = 1;  ///< 0: as many as the machine has
    std::size_t piece = 0; ///< bytes of text that one looks through at a time; 0: what is best
};

/// The structure of an exchange file (ISO 10303-21, 5 and 7 to 11): header entries, and where each instance stands.
/// Whatever the text holds, every byte is looked at a bounded number of times, and a fault costs no more than the
/// instance that it is in.
struct SpfStructure {
    VnIfcHeader header;
    std::vector<SpfRecords::Block> blocks; ///< of instances, in the order of the text
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
    void add(SpfRecords& records, std::uint64_t number, const char* begin, const char* end);
    /// Adds instances that another structure of the same text holds.
    void take(SpfStructure&& other);
    /// Ends the use of a block.
    void release(std::size_t block) noexcept { SpfRecords::release(blocks[block]); }

    /// False when the text is no exchange file at all; `reason` says why. The result does not depend on the sharing.
    bool scan(const char* begin, const char* end, const SpfSharing& sharing, std::string& reason);
    /// False when these first bytes of a text, of 64 KiB at least, show already that it is none.
    static bool canBegin(const char* begin, const char* end);

private:
    static constexpr unsigned kOffsetBits = 44;
    static constexpr std::uint64_t kOffsetMask = (std::uint64_t{1} << kOffsetBits) - 1;
    static constexpr std::uint64_t kLargeLength = (std::uint64_t{1} << (64 - kOffsetBits)) - 1;

    std::vector<std::pair<std::uint64_t, std::uint64_t>> large;
    SpfAllRecords m_records; // blocks lie there
};

} // namespace VN_SDAI
