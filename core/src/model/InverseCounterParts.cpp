// Inverse attributes of a whole model, on several threads with the result of one.
#include "../exchange/WorkSharing.h"
#include "ModelData.h"

#include <VnIfcCore/VnIfcInverseList.h>

namespace VN_SDAI {

namespace {

// Blocks whose entries are listed before they are entered: so many that threads rarely wait for each other, so few that
// the lists stay small beside the model.
constexpr std::size_t kRound = 256;
constexpr std::size_t kPartsPerThread = 8;
constexpr std::size_t kBlock = 1000; // slots

/// Lists what instances are to enter, block by block, and then enters it, target by target in the order of the lists.
/// Each target's attributes thus get the same entries in the same order as if one instance after another entered its
/// own.
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
            m_lists[i].clear();
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
