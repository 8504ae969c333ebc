#pragma once
#include "../model/ModelData.h"

#include <VnIfcCore/VnSpfFilerBase.h>

#include <vector>

namespace VN_SDAI {

/// Writes single parameters into memory, and says where each begins.
class SpfFieldWriter final : public VnSpfFilerBase {
public:
    /// Writes the parameter list of an instance.
    void write(const VnIfcEntityBase& instance);
    /// The text of a position of the list written last; empty beyond its end.
    std::string_view parameter(unsigned position) const noexcept;
    unsigned count() const noexcept { return static_cast<unsigned>(m_starts.size()); }

protected:
    VnIfcInstanceSlot* slotOf(std::uint64_t) override { return nullptr; }
    void watchField(unsigned) override { m_starts.push_back(output().size()); }

private:
    std::vector<std::size_t> m_starts;
};

/// Writes instances as they stand in an exchange file, one after the other, into memory.
class SpfInstanceWriter final : public VnSpfFilerBase {
public:
    explicit SpfInstanceWriter(const VnIfcModel::Data& data) noexcept : m_data(data) {}

    /// Appends "#12=KEYWORD(...);" and a line end.
    void write(const VnIfcInstanceSlot* slot);
    /// Appends "KEYWORD(...)".
    void writeBody(const VnIfcInstanceSlot* slot);
    std::string_view text() const noexcept { return output(); }
    void clear() noexcept { clearOutput(); }

protected:
    VnIfcInstanceSlot* slotOf(std::uint64_t) override { return nullptr; }

private:
    void writeForeign(const VnIfcForeignInstance& instance);
    void writeWithKept(const VnIfcEntityBase& instance, const KeptParameters& kept);

    const VnIfcModel::Data& m_data;
    SpfFieldWriter m_fields;
};

} // namespace VN_SDAI
