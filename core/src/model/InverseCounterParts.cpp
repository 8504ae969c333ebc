// Inverse attributes of a whole model, on several threads with the result of one.
#include "../exchange/WorkSharing.h"
#include "ModelData.h"

#include <VnIfcCore/VnIfcInverseList.h>

namespace VN_SDAI {

namespace {

// Blocks are so large that most references stay within one. A round is so many of them that threads rarely wait for
// each other, and so few that the lists stay small beside the model.
constexpr std::size_t kRound = 32;
constexpr std::size_t kPartsPerThread = 8;
constexpr std::size_t kBlock = 16000; // slots

/// Enters what instances of a block refer to within that block, and lists the rest, which is entered when all blocks of
/// a round are done, each target by one thread.
class InverseCounterParts {
public:
    InverseCounterParts(const SlotRuns& runs, unsigned threads)
        : m_runs(runs), m_threads(threads), m_parts(threads * kPartsPerThread),
          m_lists(std::min(kRound, runs.blocks()), VnIfcInverseList(m_parts)), m_others(m_lists.size()) {}

    void set() {
        for (std::size_t first = 0; first < m_runs.blocks(); first += m_lists.size())
            setRound(first, std::min(m_lists.size(), m_runs.blocks() - first));
    }

private:
    void setRound(std::size_t first, std::size_t count) {
        shareWork(count, m_threads, {}, [&](unsigned, std::size_t i) {
            const auto [smallest, largest] = m_runs.numbers(first + i);
            m_lists[i].restart(smallest, largest);
            m_others[i].clear();
            m_runs.forEach(first + i, [&](const VnIfcInstanceSlot& slot) {
                if (!slot.object()->listInverseCounterParts(m_lists[i]))
                    m_others[i].push_back(slot.object());
            });
            return true;
        });
        shareWork(m_parts, m_threads, {}, [&](unsigned, std::size_t part) {
            for (std::size_t i = 0; i < count; ++i)
                for (const VnIfcInverseList::Entry& entry : m_lists[i].part(part))
                    entry.target->enterInverse(entry.inverse, entry.referrer);
            return true;
        });
        for (std::size_t i = 0; i < count; ++i)
            for (VnIfcEntityBase* const instance : m_others[i])
                instance->setInverseCounterParts();
    }

    const SlotRuns& m_runs;
    unsigned m_threads;
    std::size_t m_parts;
    std::vector<VnIfcInverseList> m_lists; // of each block of a round
    std::vector<std::vector<VnIfcEntityBase*>> m_others;
};

} // namespace

void VnIfcModel::setInverseCounterParts(unsigned threads) {
    const SlotRuns runs = m_data->runs(kBlock);
    threads = threadsFor(threads, runs.blocks());
    if (m_data->inversesAreSet)
        shareWork(runs.blocks(), threads, {}, [&](unsigned, std::size_t i) {
            runs.forEach(i, [](const VnIfcInstanceSlot& slot) { slot.object()->clearInverses(); });
            return true;
        });
    m_data->inversesAreSet = true;
    m_data->hasRivals = false;
    m_data->formerCounterParts.clear();
    if (threads > 1)
        return InverseCounterParts(runs, threads).set();
    for (std::size_t i = 0; i < runs.blocks(); ++i)
        runs.forEach(i, [](const VnIfcInstanceSlot& slot) { slot.object()->setInverseCounterParts(); });
}

} // namespace VN_SDAI
