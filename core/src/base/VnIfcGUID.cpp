#include <VnIfcCore/VnIfcGUID.h>

#include <memory>
#include <random>

namespace VN_SDAI {

namespace {

constexpr char kAlphabet[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$";

constexpr std::array<std::int8_t, 256> makeDigits() {
    std::array<std::int8_t, 256> digits{};
    for (auto& digit : digits)
        digit = -1;
    for (int i = 0; i < 64; ++i)
        digits[static_cast<unsigned char>(kAlphabet[i])] = static_cast<std::int8_t>(i);
    return digits;
}

constexpr std::array<std::int8_t, 256> kDigits = makeDigits();

constexpr int digit(char c) noexcept { return kDigits[static_cast<unsigned char>(c)]; }

// The 128 bits are one number of 22 digits to the base 64: the first character stands for the first two bits of the
// first byte, two for the rest of it, and four for every three bytes after that.
void encode(char* to, int characters, std::uint32_t value) noexcept {
    for (int i = characters - 1; i >= 0; --i, value /= 64)
        to[i] = kAlphabet[value % 64];
}

std::uint32_t decode(const char* from, int characters) noexcept {
    std::uint32_t value = 0;
    for (int i = 0; i < characters; ++i)
        value = value * 64 + static_cast<std::uint32_t>(digit(from[i]));
    return value;
}

} // namespace

void VnIfcGUID::assign(std::string_view text) noexcept {
    m_length = static_cast<std::uint8_t>(std::min(text.size(), kLength));
    std::copy_n(text.data(), m_length, m_text);
    m_text[m_length] = '\0';
}

VnIfcGUID VnIfcGUID::fromBytes(const Bytes& bytes) noexcept {
    VnIfcGUID result;
    encode(result.m_text, 2, bytes[0]);
    for (std::size_t i = 0; i < 5; ++i) {
        const std::size_t at = 1 + 3 * i;
        encode(result.m_text + 2 + 4 * i, 4,
               std::uint32_t{bytes[at]} << 16 | std::uint32_t{bytes[at + 1]} << 8 | bytes[at + 2]);
    }
    result.m_length = kLength;
    result.m_text[kLength] = '\0';
    return result;
}

std::optional<VnIfcGUID::Bytes> VnIfcGUID::toBytes() const noexcept {
    if (!isValid())
        return std::nullopt;
    Bytes bytes;
    bytes[0] = static_cast<std::uint8_t>(decode(m_text, 2));
    for (std::size_t i = 0; i < 5; ++i) {
        const std::uint32_t value = decode(m_text + 2 + 4 * i, 4);
        bytes[1 + 3 * i] = static_cast<std::uint8_t>(value >> 16);
        bytes[2 + 3 * i] = static_cast<std::uint8_t>(value >> 8);
        bytes[3 + 3 * i] = static_cast<std::uint8_t>(value);
    }
    return bytes;
}

bool VnIfcGUID::isValid() const noexcept {
    if (m_length != kLength || digit(m_text[0]) < 0 || digit(m_text[0]) > 3)
        return false;
    return std::all_of(m_text, m_text + kLength, [](char c) { return digit(c) >= 0; });
}

VnIfcGUID VnIfcGUID::create() {
    // On the heap: a library that is loaded late finds little room for what is thread-local, and the generator's state
    // is large.
    thread_local const std::unique_ptr<std::mt19937_64> generator = [] {
        std::random_device device;
        std::seed_seq seed{device(), device(), device(), device(), device(), device(), device(), device()};
        return std::make_unique<std::mt19937_64>(seed);
    }();
    Bytes bytes;
    for (std::size_t i = 0; i < bytes.size(); i += 8) {
        const std::uint64_t value = (*generator)();
        std::memcpy(bytes.data() + i, &value, 8);
    }
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x40);
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);
    return fromBytes(bytes);
}

} // namespace VN_SDAI
