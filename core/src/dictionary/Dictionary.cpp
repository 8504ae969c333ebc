#include <VnIfcCore/Dictionary.h>

#include <bit>
#include <cstring>
#include <stdexcept>
#include <string>

namespace VN_SDAI {

namespace {

// The bit by which the two cases of an ASCII letter differ, masked out of eight bytes at a time. Other characters lose
// it too, which costs a rare collision and never an answer: names are compared after the hash.
constexpr std::uint64_t kCaseMask = 0xDFDFDFDFDFDFDFDF;

std::uint64_t mix(std::uint64_t hash, std::uint64_t word) noexcept {
    hash = (hash ^ (word & kCaseMask)) * 0x9E3779B97F4A7C15;
    return hash ^ (hash >> 32);
}

std::uint32_t hashNoCase(std::string_view name) noexcept {
    const char* text = name.data();
    std::size_t left = name.size();
    std::uint64_t hash = left;
    std::uint64_t word = 0;
    for (; left >= sizeof word; text += sizeof word, left -= sizeof word) {
        std::memcpy(&word, text, sizeof word);
        hash = mix(hash, word);
    }
    word = 0;
    for (std::size_t i = 0; i < left; ++i)
        word = word << 8 | static_cast<unsigned char>(text[i]);
    return static_cast<std::uint32_t>(mix(hash, word));
}

} // namespace

template <class Equal>
DictionaryInstance* Dictionary::lookUp(std::string_view name, Equal equal) const noexcept {
    if (m_slots.empty())
        return nullptr;
    const std::uint32_t hash = hashNoCase(name);
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t i = hash & mask; m_slots[i].position != 0; i = (i + 1) & mask) {
        if (m_slots[i].hash != hash)
            continue;
        const Entry& entry = m_entries[m_slots[i].position - 1];
        if (equal(entry.name))
            return entry.instance.get();
    }
    return nullptr;
}

DictionaryInstance* Dictionary::at(std::string_view name) const noexcept {
    return lookUp(name, [name](const VnAnsiString& key) { return key == name; });
}

DictionaryInstance* Dictionary::find(std::string_view name) const noexcept {
    return lookUp(name, [name](const VnAnsiString& key) { return key == name || key.compareNoCase(name) == 0; });
}

void Dictionary::putAt(std::string_view name, DictionaryInstance* instance) {
    std::unique_ptr<DictionaryInstance> owned(instance);
    if (!owned)
        throw std::invalid_argument("dictionary: no record for \"" + std::string(name) + '"');
    if (at(name))
        throw std::invalid_argument("dictionary: a second \"" + std::string(name) + '"');
    if (2 * (m_entries.size() + 1) > m_slots.size())
        rehash(std::bit_ceil(2 * (m_entries.size() + 1)));
    m_entries.push_back({VnAnsiString(name), std::move(owned)});
    enter(hashNoCase(name), static_cast<std::uint32_t>(m_entries.size()));
}

void Dictionary::reserve(std::size_t count) {
    m_entries.reserve(count);
    if (2 * count > m_slots.size())
        rehash(std::bit_ceil(2 * count));
}

// Keeps entries of equal hash in the order in which they were put in.
void Dictionary::enter(std::uint32_t hash, std::uint32_t position) noexcept {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t i = hash & mask;
    while (m_slots[i].position != 0)
        i = (i + 1) & mask;
    m_slots[i] = {hash, position};
}

void Dictionary::rehash(std::size_t slots) {
    m_slots.assign(slots, {});
    std::uint32_t position = 0;
    for (const Entry& entry : m_entries)
        enter(hashNoCase(entry.name), ++position);
}

} // namespace VN_SDAI
