#include "../exchange/SpfInstanceReader.h"
#include "../exchange/SpfInstanceWriter.h"
#include "../exchange/SpfScan.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcSchema.h>

#include <string>
#include <unordered_map>

// Copies go through the exchange form: it is the one thing that every instance has, with a class or without, whatever
// schema it is of; and what was kept from a file comes along.
namespace VN_SDAI {

namespace {

class Copier {
public:
    Copier(VnIfcModel::Data& target, std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& copies)
        : m_target(target), m_reader(target), m_copies(copies) {
        for (const auto& [source, copy] : copies)
            m_counterparts.emplace(source.slot(), copy.slot());
    }

    VnDbObjectId copy(VnIfcInstanceSlot* source) {
        VnIfcInstanceSlot* result = counterpart(source);
        for (std::size_t i = 0; i < m_pending.size(); ++i)
            fill(m_pending[i].first, m_pending[i].second);
        return VnDbObjectId(result);
    }

    /// A copy that refers to what the source refers to.
    VnDbObjectId copyAlone(VnIfcInstanceSlot* source) {
        VnIfcInstanceSlot* result = newSlot(source);
        SpfInstanceWriter writer(source->model()->data());
        writer.writeBody(source);
        read(writer.text(), result);
        return VnDbObjectId(result);
    }

private:
    VnIfcInstanceSlot* newSlot(VnIfcInstanceSlot* source) {
        VnIfcInstanceSlot* slot = m_target.slotForInstance(m_target.nextNumber());
        m_copies.emplace_back(VnDbObjectId(source), VnDbObjectId(slot));
        return slot;
    }

    VnIfcInstanceSlot* counterpart(VnIfcInstanceSlot* source) {
        const auto [found, isNew] = m_counterparts.try_emplace(source, nullptr);
        if (isNew) {
            found->second = newSlot(source);
            m_pending.emplace_back(source, found->second);
        }
        return found->second;
    }

    void fill(VnIfcInstanceSlot* source, VnIfcInstanceSlot* copy) {
        VnIfcModel::Data& data = source->model()->data();
        SpfInstanceWriter writer(data);
        writer.writeBody(source);
        const std::string from = padded(writer.text());
        std::string text;
        const char* copied = from.data();
        spf::forEachReference({from.data(), from.size() - spf::kPadding},
                              [&](const char* first, const char* last, std::uint64_t number) {
                                  text.append(copied, first);
                                  VnIfcInstanceSlot* referred = data.slots.find(number);
                                  const bool exists = referred && VnDbObjectId(referred).openObject();
                                  text += exists ? '#' + std::to_string(counterpart(referred)->number) : "$";
                                  copied = last;
                              });
        text.append(copied, from.data() + from.size() - spf::kPadding);
        read(text, copy);
    }

    static std::string padded(std::string_view text) { return std::string(text).append(spf::kPadding, '\0'); }

    void read(std::string_view text, VnIfcInstanceSlot* slot) {
        m_reader.read({padded(text).data(), text.size()}, slot);
        m_reader.remarks().clear();
        for (auto& [keeper, kept] : m_reader.kept())
            m_target.kept.emplace(keeper, std::move(kept));
        m_reader.kept().clear();
        ++m_target.count;
    }

    VnIfcModel::Data& m_target;
    SpfInstanceReader m_reader;
    std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& m_copies;
    std::unordered_map<VnIfcInstanceSlot*, VnIfcInstanceSlot*> m_counterparts;
    std::vector<std::pair<VnIfcInstanceSlot*, VnIfcInstanceSlot*>> m_pending;
};

} // namespace

VnDbObjectId VnIfcModel::copy(const VnDbObjectId& source) {
    std::vector<std::pair<VnDbObjectId, VnDbObjectId>> copies;
    return copy(source, copies);
}

VnDbObjectId VnIfcModel::copy(const VnDbObjectId& source, std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& copies) {
    const VnIfcEntityBase* instance = source.openObject();
    if (!instance)
        return {};
    const VnIfcEntityType* type = instance->getInstanceType();
    if (type && !m_data->schema->entity(type->name()))
        return {};
    Copier copier(*m_data, copies);
    return source.model() == this ? copier.copyAlone(source.slot()) : copier.copy(source.slot());
}

} // namespace VN_SDAI
