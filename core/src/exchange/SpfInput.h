#pragma once
#include "../base/PageMemory.h"

#include <VnIfcCore/VnIfcModel.h>

#include <cstdio>
#include <filesystem>
#include <memory>
#include <string_view>

namespace VN_SDAI {

/// The bytes of an exchange file in memory of our own, so that nothing that happens to the file meanwhile can hurt;
/// followed by kVnSpfPadding NULs.
class SpfInput {
public:
    SpfInput() = default;
    SpfInput(const SpfInput&) = delete;
    SpfInput& operator=(const SpfInput&) = delete;

    /// Reads a file, pipe or device to its end; "-" is the standard input. A status other than 0 comes with a message.
    /// Large files are read by several threads; `threads` 0 leaves it to the machine.
    VN::ErrorStatus readFile(const std::filesystem::path& path, unsigned threads, std::string& message);
    void copyFrom(std::string_view text);

    const char* begin() const noexcept { return m_memory.data(); }
    const char* end() const noexcept { return begin() + m_size; }
    std::size_t size() const noexcept { return m_size; }

    /// Gives back the memory of what stands before `position`; nobody must look there any more.
    void release(const char* position) noexcept {
        m_released = m_memory.discard(m_released ? m_released : begin(), position);
    }
    /// Gives back all of it.
    void release() noexcept {
        m_memory = PageMemory();
        m_released = nullptr;
        m_size = 0;
    }

private:
    void readTogether(std::FILE* file, std::size_t size, unsigned threads);

    PageMemory m_memory;
    std::size_t m_size = 0;
    const char* m_released = nullptr;
};

} // namespace VN_SDAI
