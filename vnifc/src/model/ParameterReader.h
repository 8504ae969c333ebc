#pragma once
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnSpfFilerBase.h>

#include <string>
#include <string_view>

namespace vnifc::detail {

/// Reads a single parameter, by the rules for files, into an instance that stands in no model.
class ParameterReader final : public VN_SDAI::VnSpfFilerBase {
public:
    explicit ParameterReader(const VN_SDAI::VnIfcModel& model) noexcept : m_model(model) {}

    /// False when the text is not one value of the attribute at that position; problem() and missing() tell why.
    bool read(VN_SDAI::VnIfcEntityBase& instance, unsigned position, std::string_view text) {
        m_wanted = position;
        std::string list;
        for (unsigned i = 0; i < position; ++i)
            list += "$,";
        list.append(text).append(")");
        const std::size_t length = list.size();
        list.append(kLookAhead, '\0');
        startReading(list.data(), list.data() + length);
        instance._inFields(this);
        const char* rest = nullptr;
        const bool isWhole = finishReading(rest, rest) && parametersSeen() == position + 1;
        return isWhole && m_problem == VN_SDAI::VnSpfProblem::kNone && m_missing == 0;
    }
    VN_SDAI::VnSpfProblem problem() const noexcept { return m_problem; }
    /// The number of an instance that is referred to and not there; 0 when there is none.
    std::uint64_t missing() const noexcept { return m_missing; }

protected:
    VN_SDAI::VnIfcInstanceSlot* slotOf(std::uint64_t number) override {
        const VN_SDAI::VnDbObjectId handle = m_model.find(number);
        if (!handle.openObject())
            m_missing = number;
        return handle.slot();
    }
    void onMisfit(unsigned position, VN_SDAI::VnSpfProblem problem, const char*, const char*) override {
        if (position == m_wanted)
            m_problem = problem;
    }

private:
    // The reader looks at several characters at once, and so beyond the end.
    static constexpr std::size_t kLookAhead = 64;

    const VN_SDAI::VnIfcModel& m_model;
    unsigned m_wanted = 0;
    VN_SDAI::VnSpfProblem m_problem = VN_SDAI::VnSpfProblem::kNone;
    std::uint64_t m_missing = 0;
};

} // namespace vnifc::detail
