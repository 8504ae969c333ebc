#include "SpfInstanceWriter.h"

#include <VnIfcCore/VnIfcEntityType.h>

namespace VN_SDAI {

namespace {

bool isUnset(std::string_view text) noexcept { return text == "$" || text == "()" || text == "*" || text == "\"\""; }

} // namespace

void SpfFieldWriter::write(const VnIfcEntityBase& instance) {
    clearOutput();
    m_starts.clear();
    m_unwritable.clear();
    m_watched = true;
    instance._outFields(this);
}

std::string_view SpfFieldWriter::parameter(unsigned position) const noexcept {
    if (position >= m_starts.size())
        return {};
    const std::string_view all = output();
    const std::size_t end = position + 1 < m_starts.size() ? m_starts[position + 1] : all.size();
    // Each field but the first begins with the comma that separates it.
    const std::size_t begin = m_starts[position] + (position > 0 ? 1 : 0);
    return begin <= end ? all.substr(begin, end - begin) : std::string_view();
}

void SpfInstanceWriter::write(const VnIfcInstanceSlot* slot) {
    wrChar('#');
    writeNumber(slot->number);
    wrChar('=');
    writeBody(slot);
    VnSpfFilerBase::write(";\n");
}

void SpfInstanceWriter::writeBody(const VnIfcInstanceSlot* slot) {
    m_slot = slot;
    const VnIfcEntityBase* instance = slot->object();
    const VnIfcEntityType* type = instance->getInstanceType();
    if (!type)
        return writeForeign(*dynamic_cast<const VnIfcForeignInstance*>(instance));
    VnSpfFilerBase::write(type->name());
    wrChar('(');
    if (slot->has(VnIfcInstanceSlot::kHasKept))
        writeWithKept(*instance, m_data.kept.at(slot));
    else
        instance->_outFields(this);
    wrChar(')');
}

void SpfInstanceWriter::writeForeign(const VnIfcForeignInstance& instance) {
    VnSpfFilerBase::write(instance.keyword().view());
    if (instance.isList())
        wrChar('(');
    VnSpfFilerBase::write(instance.parameters().view());
    if (instance.isList())
        wrChar(')');
}

/// Puts the texts that were kept from the file in place of what the instance writes where nobody has changed it.
void SpfInstanceWriter::writeWithKept(const VnIfcEntityBase& instance, const KeptParameters& kept) {
    m_fields.write(instance);
    unsigned count = m_fields.count();
    while (kept.absentFrom && count > *kept.absentFrom && isUnset(m_fields.parameter(count - 1)))
        --count;
    for (unsigned position = 0; position < count; ++position) {
        if (position > 0)
            wrChar(',');
        const std::string_view written = m_fields.parameter(position);
        const KeptParameters::Parameter* parameter = kept.find(position);
        const bool isKept = parameter && parameter->writtenAs == written;
        VnSpfFilerBase::write(isKept ? std::string_view(parameter->text) : written);
        for (const auto& [where, why] : m_fields.unwritable())
            if (!isKept && where == position)
                m_remarks.push_back({m_slot, position, why});
    }
    VnSpfFilerBase::write(kept.surplus);
}

} // namespace VN_SDAI
