#pragma once
#include "KeptParameters.h"
#include "SlotRuns.h"
#include "SlotTable.h"

#include <VnIfcCore/VnIfcModel.h>

#include <atomic>
#include <mutex>
#include <unordered_map>

namespace VN_SDAI {

/// What a model holds.
struct VnIfcModel::Data {
    Data(VnIfcModel* owner, const VnIfcSchema* schemaOfModel) : model(owner), schema(schemaOfModel), slots(owner) {}

    /// The slot of a number; makes one for a number that no instance has (a dangling reference). Safe from several
    /// threads as long as nobody inserts instances.
    VnIfcInstanceSlot* slotForReference(std::uint64_t number) {
        if (VnIfcInstanceSlot* slot = slots.find(number))
            return slot;
        return danglingSlot(number);
    }
    VnIfcInstanceSlot* danglingSlot(std::uint64_t number);
    /// The slot for a new instance of that number, which must be free.
    VnIfcInstanceSlot* slotForInstance(std::uint64_t number);
    /// Above all others as long as there is such a number.
    std::uint64_t nextNumber() noexcept;
    void place(VnIfcInstanceSlot* slot, VnIfcEntityBase* instance, bool inArena) noexcept {
        model->adopt(slot, instance, inArena);
    }
    void belongTo(VnIfcModel* owner) noexcept;
    void destroyInstances() noexcept;
    /// All slots in ascending order of numbers, in blocks of that size. Several threads may read a model at once.
    SlotRuns runs(std::size_t block);

    VnIfcModel* model;
    const VnIfcSchema* schema;
    VnIfcHeader header;
    bool isOfOtherRelease = false; ///< the file that was read is of a release or a draft other than the schema
    SlotTable slots;
    std::size_t count = 0;
    std::uint64_t firstFree = 1;
    std::vector<std::unique_ptr<VnIfcArena>> arenas;

    struct Place {
        std::uint64_t number;
        std::uint64_t line;
        std::uint64_t column;
    };
    std::vector<Place> places; // ascending numbers; empty when nobody asked for them

    std::atomic<bool> inversesAreSet = false; ///< inverse attributes were set once; setters do not touch them
    /// Two instances claim an inverse attribute that can hold one.
    std::atomic<bool> hasRivals = false;
    /// What instances were entered into that changed their references since.
    std::unordered_map<const VnIfcInstanceSlot*, std::vector<VnDbObjectId>> formerCounterParts;
    void forget(std::vector<VnDbObjectId> targets, const VnDbObjectId& referrer);

    std::mutex orderMutex;
    std::mutex danglingMutex;
    SlotTable dangling{model};
    std::unordered_map<const VnIfcInstanceSlot*, KeptParameters> kept;
};

} // namespace VN_SDAI
