#pragma once
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace vnifc::rules {

/// Why an evaluation has no result: a limit was reached. No violation, and nothing that the text or the model does
/// wrong.
class NotEvaluated : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Memory of one evaluation: given back all at once, or back to a mark. Objects in it are never destroyed.
class Arena {
public:
    struct Mark {
        std::uint32_t block;
        std::uint32_t used;
    };

    /// `limit` in bytes; more than marks can tell is less than that.
    explicit Arena(std::size_t limit) noexcept
        : m_limit(std::min<std::size_t>(limit, std::numeric_limits<std::uint32_t>::max())) {}

    Mark mark() const noexcept { return {m_block, m_used}; }
    void release(Mark mark) noexcept {
        m_block = mark.block;
        m_used = mark.used;
    }
    /// Gives everything back; one block stays for the next evaluation.
    void clear() noexcept {
        m_block = 0;
        m_used = 0;
        if (m_blocks.size() > kKeptBlocks) {
            m_blocks.resize(kKeptBlocks);
            m_total = 0;
            for (const Block& block : m_blocks)
                m_total += block.size;
        }
    }

    void* allocate(std::size_t bytes) {
        bytes = (bytes + kAlignment - 1) & ~(kAlignment - 1);
        if (m_block < m_blocks.size() && bytes <= m_blocks[m_block].size - m_used) [[likely]] {
            void* const result = m_blocks[m_block].memory.get() + m_used;
            m_used += static_cast<std::uint32_t>(bytes);
            return result;
        }
        return allocateInNext(bytes);
    }
    template <class T>
    T* array(std::size_t count) {
        return static_cast<T*>(allocate(count * sizeof(T)));
    }
    template <class T>
    T* make() {
        return ::new (allocate(sizeof(T))) T();
    }
    std::string_view copy(std::string_view text) {
        char* const memory = array<char>(text.size());
        text.copy(memory, text.size());
        return {memory, text.size()};
    }

private:
    struct Block {
        std::unique_ptr<char[]> memory;
        std::uint32_t size;
    };
    static constexpr std::size_t kAlignment = 8;
    static constexpr std::size_t kBlockSize = 64 * 1024;
    static constexpr std::size_t kKeptBlocks = 4;

    void* allocateInNext(std::size_t bytes) {
        // Blocks past the present one are empty; one that is too small makes way.
        if (bytes > m_limit)
            throw NotEvaluated("more memory than an evaluation may take");
        const std::size_t next = m_blocks.empty() ? 0 : m_block + 1;
        if (next < m_blocks.size() && m_blocks[next].size < bytes) {
            m_total -= m_blocks[next].size;
            m_blocks.erase(m_blocks.begin() + static_cast<std::ptrdiff_t>(next));
        }
        if (next >= m_blocks.size() || m_blocks[next].size < bytes) {
            const std::size_t size = bytes > kBlockSize ? bytes : kBlockSize;
            if (m_total + size > m_limit)
                throw NotEvaluated("more memory than an evaluation may take");
            m_blocks.insert(m_blocks.begin() + static_cast<std::ptrdiff_t>(next),
                            Block{std::unique_ptr<char[]>(new char[size]), static_cast<std::uint32_t>(size)});
            m_total += size;
        }
        m_block = static_cast<std::uint32_t>(next);
        m_used = static_cast<std::uint32_t>(bytes);
        return m_blocks[next].memory.get();
    }

    std::size_t m_limit;
    std::size_t m_total = 0;
    std::vector<Block> m_blocks;
    std::uint32_t m_block = 0;
    std::uint32_t m_used = 0;
};

} // namespace vnifc::rules
