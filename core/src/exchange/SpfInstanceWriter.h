#pragma once
#include "../model/ModelData.h"

#include <VnIfcCore/VnSpfFilerBase.h>

#include <vector>

namespace VN_SDAI {

/// A value that could not be written as it is held.
struct SpfWriteRemark {
    const VnIfcInstanceSlot* slot;
    unsigned position;
    VnSpfUnwritable why;
};

/// Writes single parameters into memory, and says where each begins.
class SpfFieldWriter final : public VnSpfFilerBase {
public:
    SpfFieldWriter() = default;
    SpfFieldWriter(const VnIfcModel* home, bool encodesText) noexcept {
        m_home = home;
        m_encodesText = encodesText;
    }
    /// Writes the parameter list of an instance.
    void write(const VnIfcEntityBase& instance);
    /// The text of a position of the list written last; empty beyond its end.
    std::string_view parameter(unsigned position) const noexcept;
    unsigned count() const noexcept { return static_cast<unsigned>(m_starts.size()); }
    /// What could not be written as it is held: where, and why.
    const std::vector<std::pair<unsigned, VnSpfUnwritable>>& unwritable() const noexcept { return m_unwritable; }

protected:
    VnIfcInstanceSlot* slotOf(std::uint64_t) override { return nullptr; }
    void watchField(unsigned) override { m_starts.push_back(output().size()); }
    void onUnwritable(VnSpfUnwritable why) override { m_unwritable.emplace_back(m_position, why); }

private:
    std::vector<std::size_t> m_starts;
    std::vector<std::pair<unsigned, VnSpfUnwritable>> m_unwritable;
};

/// Writes instances as they stand in an exchange file, one after the other, into memory.
class SpfInstanceWriter final : public VnSpfFilerBase {
public:
    explicit SpfInstanceWriter(const VnIfcModel::Data& data, bool encodesText = false) noexcept
        : m_data(data), m_fields(data.model, encodesText) {
        m_home = data.model;
        m_encodesText = encodesText;
    }

    /// Appends "#12=KEYWORD(...);" and a line end.
    void write(const VnIfcInstanceSlot* slot);
    /// Appends "KEYWORD(...)".
    void writeBody(const VnIfcInstanceSlot* slot);
    std::string_view text() const noexcept { return output(); }
    void clear() noexcept { clearOutput(); }
    /// In the order of the instances written since they were cleared last.
    std::vector<SpfWriteRemark>& remarks() noexcept { return m_remarks; }

protected:
    VnIfcInstanceSlot* slotOf(std::uint64_t) override { return nullptr; }
    void onUnwritable(VnSpfUnwritable why) override { m_remarks.push_back({m_slot, m_position, why}); }

private:
    void writeForeign(const VnIfcForeignInstance& instance);
    void writeWithKept(const VnIfcEntityBase& instance, const KeptParameters& kept);

    const VnIfcModel::Data& m_data;
    const VnIfcInstanceSlot* m_slot = nullptr;
    std::vector<SpfWriteRemark> m_remarks;
    SpfFieldWriter m_fields;
};

} // namespace VN_SDAI
