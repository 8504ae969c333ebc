#pragma once
#include "SpfInstanceWriter.h"

#include <VnIfcCore/VnSpfFilerBase.h>

#include <array>
#include <vector>

namespace VN_SDAI {

/// What was noticed in one parameter or instance; turned into a diagnostic when all are known and in order.
struct SpfRemark {
    enum Kind : std::uint8_t {
        kProblem,
        kTooFew,
        kTooMany,
        kUnknownKeyword,
        kNoKeyword,
        kComplex,
        kDuplicate,
        kUnclosedList,
        kBehindList,
        kBareList,
        kEqualElements,
        kDangling,
        kMandatory,
    };

    Kind kind;
    VnSpfProblem problem = VnSpfProblem::kNone;
    unsigned position = 0;
    std::uint64_t number = 0;
    const VnIfcEntityType* type = nullptr;
    const char* begin = nullptr;
    const char* end = nullptr;
};

/// Makes instances of a range of a file's instances and reads their parameters. Several readers may work at once on
/// disjoint instances of one model; each has an arena, remarks and kept texts of its own.
class SpfInstanceReader final : public VnSpfFilerBase {
public:
    /// With `strict` it remarks on mandatory attributes that are unset.
    explicit SpfInstanceReader(VnIfcModel::Data& data, bool strict = false) noexcept : m_data(data), m_strict(strict) {}
    /// Lets references be looked up faster; no slot may be made any more.
    void slotsAreMade() noexcept { lookUpIn(m_data.slots.pages()); }

    /// Makes the instance of a slot from what stands after its "=". Within the scope of an arena the
    /// instance lives there.
    void read(std::string_view text, VnIfcInstanceSlot* slot);

    /// Instances whose selects are to be settled when all instances are there.
    std::vector<VnIfcEntityBase*>& pending() noexcept { return m_pending; }
    std::vector<SpfRemark>& remarks() noexcept { return m_remarks; }
    std::vector<std::pair<VnIfcInstanceSlot*, KeptParameters>>& kept() noexcept { return m_kept; }

protected:
    VnIfcInstanceSlot* slotOf(std::uint64_t number) override;
    void onMisfit(unsigned position, VnSpfProblem problem, const char* begin, const char* end) override;
    void watchField(unsigned position) override;
    void onAccepted(VnSpfAccepted what) override;
    void onMandatoryUnset(const char* at) override;

private:
    const VnIfcEntityType* typeOf(std::string_view keyword);
    VnIfcInstanceSlot* slotOf(const char* begin, const char* end, std::uint64_t number);
    void keepReferences(const char* begin, const char* end);
    void readForeign(std::string_view text, std::string_view keyword, const char* open);
    void readFields(VnIfcEntityBase& instance, const char* begin, const char* end);
    const char* readList(VnIfcEntityBase& instance, const char* begin, const char* end);
    void remarkEnd(const char* close, const char* end);
    static std::string closedList(const char* begin, const char* end);
    void keep(VnIfcEntityBase& instance);
    void remark(SpfRemark::Kind kind, const char* begin, const char* end);

    VnIfcModel::Data& m_data;
    bool m_strict;
    VnIfcInstanceSlot* m_slot = nullptr;
    const VnIfcEntityType* m_type = nullptr;
    KeptParameters m_current;
    SpfFieldWriter m_writer;
    std::array<const VnIfcEntityType*, 256> m_types{}; // those looked up last
    std::vector<VnIfcEntityBase*> m_pending;
    std::vector<SpfRemark> m_remarks;
    std::vector<std::pair<VnIfcInstanceSlot*, KeptParameters>> m_kept;
};

} // namespace VN_SDAI
