#pragma once
#include "../base/PageMemory.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

namespace VN_SDAI {

/// Where one instance stands in the text: from after its "=" up to its semicolon. Two words, because there are as many
/// as instances: the place of nearly every one fits into the second, others have it in SpfStructure::large.
struct SpfInstance {
    std::uint64_t number;
    std::uint64_t place; ///< offset of the text, and its length in the upper bits
};

/// The records of instances in the order in which one thread finds them, in blocks that others then work on. Their
/// memory is given back piece by piece.
class SpfRecords {
public:
    /// Large enough that taking a block costs nothing, small enough that threads end together.
    static constexpr std::size_t kBlock = 2048;

    class Page {
    public:
        explicit Page(std::size_t count) : m_records(PageAllocator<SpfInstance>().allocate(count)), m_count(count) {}
        Page(const Page&) = delete;
        Page& operator=(const Page&) = delete;
        ~Page() { release(); }

        SpfInstance* begin() const noexcept { return m_records; }
        SpfInstance* end() const noexcept { return m_records + m_count; }
        void release() noexcept {
            if (SpfInstance* const records = std::exchange(m_records, nullptr))
                PageAllocator<SpfInstance>().deallocate(records, m_count);
        }

        std::size_t blocksInUse = 0;

    private:
        SpfInstance* m_records;
        std::size_t m_count;
    };
    struct Block {
        SpfInstance* first;
        SpfInstance* last; ///< past the end
        Page* page;

        SpfInstance* begin() const noexcept { return first; }
        SpfInstance* end() const noexcept { return last; }
        std::size_t size() const noexcept { return static_cast<std::size_t>(last - first); }
    };

    /// For a text of that many bytes, so that records of small ones need little.
    explicit SpfRecords(std::size_t text) noexcept : m_pageSize(std::clamp<std::size_t>(text / 64, 64, kLargestPage)) {}

    void add(const SpfInstance& record) {
        if (m_next == m_end)
            beginBlock();
        *m_next++ = record;
    }
    void dropLast() noexcept { --m_next; }
    /// The blocks of all records that were added since this was asked last.
    std::vector<Block> takeBlocks() {
        if (!m_blocks.empty())
            m_blocks.back().last = m_next;
        m_end = m_next;
        return std::exchange(m_blocks, {});
    }
    /// Ends the use of a block; the last one of a page gives its memory back.
    static void release(const Block& block) noexcept {
        if (--block.page->blocksInUse == 0)
            block.page->release();
    }

private:
    static constexpr std::size_t kLargestPage = 4 * 1024 * 1024 / sizeof(SpfInstance);

    void beginBlock() {
        if (!m_blocks.empty())
            m_blocks.back().last = m_next;
        if (m_next == m_pageEnd) {
            const Page& page = m_pages.emplace_back(m_pageSize);
            m_next = page.begin();
            m_pageEnd = page.end();
            m_pageSize = std::min(2 * m_pageSize, kLargestPage);
        }
        m_end = std::min(m_pageEnd, m_next + kBlock);
        m_blocks.push_back({m_next, m_next, &m_pages.back()});
    }

    std::deque<Page> m_pages; // their addresses stay
    std::vector<Block> m_blocks;
    SpfInstance* m_next = nullptr;
    SpfInstance* m_end = nullptr; // of the block
    SpfInstance* m_pageEnd = nullptr;
    std::size_t m_pageSize; // in records
};

} // namespace VN_SDAI
