#pragma once
#include <VnIfcCore/VnIfcStorage.h>

#include <algorithm>
#include <compare>
#include <cstring>
#include <string>
#include <string_view>

namespace VN_SDAI {

/// What stands in front of a string's characters in memory.
struct VnStringHead {
    /// Of the characters, in bytes, without the NUL that follows them.
    std::uint32_t length;
    /// What the characters' memory came from; only a block on the heap is freed.
    VnStorage storage;
};

/// A text of static storage that a VnAnsiString can stand on without allocation. Declare it constexpr.
template <std::size_t N>
struct VnStaticText {
    /// Stands directly in front of the characters, where VnAnsiString looks for it.
    VnStringHead head{static_cast<std::uint32_t>(N - 1), VnStorage::kStatic};
    /// The characters and a NUL.
    char text[N]{};

    /// Copies a string literal; every character counts, also a NUL inside of it.
    constexpr VnStaticText(const char (&source)[N]) noexcept {
        for (std::size_t i = 0; i < N; ++i)
            text[i] = source[i];
    }
};

/// The empty text.
inline constexpr VnStaticText<1> VnEmptyText{""};
/// The text of an unset string attribute: the one byte 0xFF.
inline constexpr VnStaticText<2> VnUnsetText{"\xFF"};

/// 8-bit string, one pointer wide, for names and string values. Holds bytes as they stand in an exchange file
/// (ISO 10303-21); may contain any byte; always followed by a NUL. At most 2^32 - 1 bytes.
class VnAnsiString {
public:
    constexpr VnAnsiString() noexcept : m_text(VnEmptyText.text) {}
    /// Stands on a static text; the text must outlive the string.
    template <std::size_t N>
    constexpr VnAnsiString(const VnStaticText<N>& text) noexcept : m_text(text.text) {}
    /// Copies a NUL-terminated text; null gives the empty string.
    VnAnsiString(const char* text) : VnAnsiString(text ? std::string_view(text) : std::string_view()) {}
    ///@{
    /// Copies the bytes. std::length_error beyond 2^32 - 1 bytes; std::bad_alloc without memory.
    VnAnsiString(std::string_view text) : m_text(VnEmptyText.text) {
        if (!text.empty())
            m_text = copyOf(text);
    }
    VnAnsiString(const std::string& text) : VnAnsiString(std::string_view(text)) {}
    ///@}
    /// A copy has characters of its own, unless they are static.
    VnAnsiString(const VnAnsiString& other)
        : m_text(other.head().storage == VnStorage::kStatic ? other.m_text : copyOf(other)) {}
    /// Takes the characters, wherever they lie, and leaves the empty string.
    constexpr VnAnsiString(VnAnsiString&& other) noexcept : m_text(other.m_text) { other.m_text = VnEmptyText.text; }
    constexpr ~VnAnsiString() {
        if (!std::is_constant_evaluated())
            release();
    }

    ///@{
    /// Takes the text as the constructor of the same argument does. When that fails, the string stays as it was.
    VnAnsiString& operator=(const VnAnsiString& other) {
        if (this != &other)
            VnAnsiString(other).swap(*this);
        return *this;
    }
    VnAnsiString& operator=(VnAnsiString&& other) noexcept {
        VnAnsiString(std::move(other)).swap(*this);
        return *this;
    }
    VnAnsiString& operator=(std::string_view text) {
        VnAnsiString(text).swap(*this);
        return *this;
    }
    VnAnsiString& operator=(const std::string& text) { return *this = std::string_view(text); }
    VnAnsiString& operator=(const char* text) { return *this = VnAnsiString(text); }
    template <std::size_t N>
    VnAnsiString& operator=(const VnStaticText<N>& text) noexcept {
        return *this = VnAnsiString(text);
    }
    ///@}

    /// The characters, NUL-terminated; valid until the string is changed.
    const char* constStr() const noexcept { return m_text; }
    /// In bytes, without the NUL.
    std::uint32_t length() const noexcept { return head().length; }
    /// True for a text without bytes. The text of an unset attribute is not empty: see isUnset.
    bool isEmpty() const noexcept { return length() == 0; }
    /// Where the characters lie.
    VnStorage storage() const noexcept { return head().storage; }
    ///@{
    /// The bytes as they are held; valid until the string is changed or destroyed.
    std::string_view view() const noexcept { return {m_text, length()}; }
    operator std::string_view() const noexcept { return view(); }
    ///@}
    /// Makes the string empty, which is not unset.
    void clear() noexcept { VnAnsiString().swap(*this); }
    /// Exchanges the texts without copying.
    void swap(VnAnsiString& other) noexcept { std::swap(m_text, other.m_text); }

    /// Byte order; 0 when equal.
    int compare(std::string_view other) const noexcept { return view().compare(other); }
    /// As compare, without regard to ASCII case.
    VNIFC_API int compareNoCase(std::string_view other) const noexcept;
    /// True for the one-byte text 0xFF, which stands for an unset attribute.
    bool isUnset() const noexcept { return length() == 1 && m_text[0] == '\xFF'; }

    ///@{
    /// Compares bytes, as exchange text: two spellings of one Unicode text are different.
    friend bool operator==(const VnAnsiString& left, const VnAnsiString& right) noexcept {
        return left.m_text == right.m_text || left.view() == right.view();
    }
    friend bool operator==(const VnAnsiString& left, std::string_view right) noexcept { return left.view() == right; }
    friend bool operator==(const VnAnsiString& left, const char* right) noexcept { return left.view() == right; }
    friend bool operator==(const VnAnsiString& left, const std::string& right) noexcept { return left.view() == right; }
    friend auto operator<=>(const VnAnsiString& left, const VnAnsiString& right) noexcept {
        return left.view() <=> right.view();
    }
    ///@}

    /// Makes a string of `length` bytes and returns them for filling; the NUL is in place.
    VNIFC_API char* allocate(std::size_t length);

private:
    const VnStringHead& head() const noexcept { return reinterpret_cast<const VnStringHead*>(m_text)[-1]; }
    VNIFC_API static const char* copyOf(std::string_view text);
    void release() noexcept {
        if (head().storage == VnStorage::kHeap)
            ::operator delete(const_cast<VnStringHead*>(&head()));
    }

    const char* m_text;
};

static_assert(sizeof(VnAnsiString) == sizeof(void*));

} // namespace VN_SDAI
