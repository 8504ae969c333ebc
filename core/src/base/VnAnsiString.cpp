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

} // namespace

const char* VnAnsiString::copyOf(std::string_view text) {
    if (text.empty())
        return VnEmptyText.text;
    char* copy = newText(text.size());
    std::memcpy(copy, text.data(), text.size());
    return copy;
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
