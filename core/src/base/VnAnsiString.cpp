#include <VnIfcCore/VnAnsiString.h>
#include <VnIfcCore/VnAscii.h>

#include <limits>
#include <stdexcept>

namespace VN_SDAI {

namespace {

constexpr unsigned char lower(char c) noexcept { return static_cast<unsigned char>(vnLower(c)); }

char* newText(std::size_t length) {
    if (length > std::numeric_limits<std::uint32_t>::max())
        throw std::length_error("VnAnsiString: text too long");
    VnStorage storage;
    void* memory = vnAllocate(sizeof(VnStringHead) + length + 1, storage);
    auto* head = new (memory) VnStringHead{static_cast<std::uint32_t>(length), storage};
    char* text = reinterpret_cast<char*>(head + 1);
    text[length] = '\0';
    return text;
}

// Names, labels and units repeat in a file, longer texts rarely do.
constexpr std::size_t kLongestShared = 64;

/// Of texts that are short: by their ends and their length.
std::uint32_t hashOf(std::string_view text) noexcept {
    std::uint64_t first = 0, last = 0;
    const std::size_t length = text.size();
    if (length >= 8) {
        std::memcpy(&first, text.data(), 8);
        std::memcpy(&last, text.data() + length - 8, 8);
    } else if (length >= 4) {
        std::memcpy(&first, text.data(), 4);
        std::memcpy(&last, text.data() + length - 4, 4);
    } else {
        for (const char c : text)
            first = first << 8 | static_cast<unsigned char>(c);
    }
    const std::uint64_t mixed = (first + length) * 0x9E3779B97F4A7C15ull ^ last * 0xC2B2AE3D27D4EB4Full;
    return static_cast<std::uint32_t>((mixed ^ mixed >> 29) * 0xBF58476D1CE4E5B9ull >> 32);
}

char* newCopy(std::string_view text) {
    char* copy = newText(text.size());
    std::memcpy(copy, text.data(), text.size());
    return copy;
}

} // namespace

const char* VnAnsiString::copyOf(std::string_view text) {
    if (text.empty())
        return VnEmptyText.text;
    VnIfcArena* const arena = VnIfcArenaScope::current();
    if (!arena || text.size() > kLongestShared)
        return newCopy(text);
    const char*& recent = arena->recentText(hashOf(text));
    const bool isSame = recent && reinterpret_cast<const VnStringHead*>(recent)[-1].length == text.size() &&
                        std::memcmp(recent, text.data(), text.size()) == 0;
    if (!isSame)
        recent = newCopy(text);
    return recent;
}

char* VnAnsiString::allocate(std::size_t length) {
    char* text = newText(length);
    release();
    m_text = text;
    return text;
}

int VnAnsiString::compareNoCase(std::string_view other) const noexcept {
    const std::string_view own = view();
    const std::size_t common = std::min(own.size(), other.size());
    for (std::size_t i = 0; i < common; ++i) {
        const int difference = int{lower(own[i])} - int{lower(other[i])};
        if (difference != 0)
            return difference;
    }
    return own.size() == other.size() ? 0 : own.size() < other.size() ? -1 : 1;
}

} // namespace VN_SDAI
