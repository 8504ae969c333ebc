#pragma once
#include <VnIfcCore/VnIfcModel.h>

#include <filesystem>
#include <memory>
#include <string_view>

namespace VN_SDAI {

/// The bytes of an exchange file in memory of our own, so that nothing that happens to the file meanwhile can hurt;
/// followed by spf::kPadding NULs.
class SpfInput {
public:
    SpfInput() = default;
    SpfInput(const SpfInput&) = delete;
    SpfInput& operator=(const SpfInput&) = delete;
    ~SpfInput();

    /// Reads a file, pipe or device to its end; "-" is the standard input. A status other than 0 comes with a message.
    VN::ErrorStatus readFile(const std::filesystem::path& path, std::string& message);
    void copyFrom(std::string_view text);

    const char* begin() const noexcept { return m_data; }
    const char* end() const noexcept { return m_data + m_size; }
    std::size_t size() const noexcept { return m_size; }

private:
    bool reserve(std::size_t capacity);
    void finish() noexcept;

    char* m_data = nullptr;
    std::size_t m_size = 0;
    std::size_t m_capacity = 0;
};

}  // namespace VN_SDAI
