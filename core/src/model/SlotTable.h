#pragma once
#include <VnIfcCore/VnDbObjectId.h>

#include <cstdint>
#include <memory>
#include <new>
#include <vector>

namespace VN_SDAI {

/// The slots of a model: made once, never moved, found by instance number. Dense numbers index a vector, others go
/// through a hash table, so that memory follows the number of instances and not their numbers.
class SlotTable {
public:
    explicit SlotTable(VnIfcModel* model) noexcept : m_model(model) {}

    /// Makes room for `count` slots with numbers up to `largest`.
    void reserve(std::size_t count, std::uint64_t largest);
    VnIfcInstanceSlot* find(std::uint64_t number) const noexcept {
        if (number < m_dense.size() && m_dense[number]) return m_dense[number];
        return m_hashed.empty() ? nullptr : findHashed(number);
    }
    /// Makes the slot of a number that has none yet.
    VnIfcInstanceSlot* insert(std::uint64_t number);
    /// All slots in ascending order of numbers.
    const std::vector<VnIfcInstanceSlot*>& ordered();
    std::uint64_t largest() const noexcept { return m_largest; }
    std::size_t size() const noexcept { return m_slots.size(); }
    void clear() noexcept;

    static VnIfcModel* modelOf(const VnIfcInstanceSlot* slot) noexcept;

private:
    static constexpr std::size_t kPageSize = 16 * 1024;
    /// A slot finds its model through the page that it lies in.
    struct PageHead {
        VnIfcModel* model;
        std::uint64_t padding;
    };
    struct BlockDeleter {
        void operator()(char* block) const noexcept { ::operator delete(block, std::align_val_t(kPageSize)); }
    };

    VnIfcInstanceSlot* newSlot();
    VnIfcInstanceSlot* findHashed(std::uint64_t number) const noexcept;
    void insertHashed(VnIfcInstanceSlot* slot);
    void rehash(std::size_t capacity);

    VnIfcModel* m_model;
    std::vector<std::unique_ptr<char, BlockDeleter>> m_blocks;
    VnIfcInstanceSlot* m_next = nullptr;
    VnIfcInstanceSlot* m_pageEnd = nullptr;
    char* m_nextPage = nullptr;
    char* m_blockEnd = nullptr;

    std::vector<VnIfcInstanceSlot*> m_slots;
    bool m_sorted = true;
    std::uint64_t m_largest = 0;
    std::vector<VnIfcInstanceSlot*> m_dense;
    std::vector<VnIfcInstanceSlot*> m_hashed;
    std::size_t m_hashedCount = 0;
};

}  // namespace VN_SDAI
