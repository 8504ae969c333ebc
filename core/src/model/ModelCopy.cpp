#include "../exchange/SpfInstanceReader.h"
#include "../exchange/SpfInstanceWriter.h"
#include "../exchange/SpfScan.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcTyped/Entity.h>

#include <algorithm>
#include <optional>
#include <string>
#include <unordered_map>

// Copies go through the exchange form: it is the one thing that every instance has, with a class or without, whatever
// schema it is of; and what was kept from a file comes along.
namespace VN_SDAI {

namespace {

/// Puts the parameters of an entity into the places that the attributes of their names have in another schema.
class PlacesByName {
public:
    PlacesByName(const typed::EntityClass& from, const typed::EntityClass& to) {
        for (const typed::AttributeRow* field : to.fields) {
            const auto isSame = [&](const typed::AttributeRow* each) {
                return each->kind != typed::AttributeKind::kDerived && VnAnsiString(each->name) == field->name;
            };
            const auto found = std::ranges::find_if(from.fields, isSame);
            Place& place = m_places.emplace_back();
            place.isDerived = field->kind == typed::AttributeKind::kDerived;
            if (!place.isDerived && found != from.fields.end())
                place.source = static_cast<std::size_t>(found - from.fields.begin());
        }
    }

    /// Of "KEYWORD(...)".
    std::string place(std::string text) const {
        text.append(spf::kPadding, '\0');
        const char* const end = text.data() + text.size() - spf::kPadding;
        const char* p = text.data() + text.find('(') + 1;
        std::string result(text.data(), static_cast<std::size_t>(p - text.data()));
        std::vector<std::string_view> parameters;
        while (p < end) {
            const char* const next = spf::parameterEnd(p, end);
            parameters.emplace_back(p, static_cast<std::size_t>(next - p));
            p = next + 1;
        }
        for (const Place& place : m_places) {
            const bool isThere = place.source && *place.source < parameters.size();
            result.append(&place == m_places.data() ? "" : ",");
            result.append(place.isDerived ? "*" : isThere ? parameters[*place.source] : "$");
        }
        return result + ')';
    }

private:
    struct Place {
        std::optional<std::size_t> source; ///< in the other parameter list
        bool isDerived = false;
    };
    std::vector<Place> m_places;
};

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
        settle();
        return VnDbObjectId(result);
    }

    /// A copy that refers to what the source refers to.
    VnDbObjectId copyAlone(VnIfcInstanceSlot* source) {
        VnIfcInstanceSlot* result = newSlot(source);
        SpfInstanceWriter writer(source->model()->data());
        writer.writeBody(source);
        read(writer.text(), result);
        settle();
        return VnDbObjectId(result);
    }

private:
    void settle() {
        for (VnIfcEntityBase* instance : m_reader.pending())
            instance->settleSelects();
        m_reader.pending().clear();
    }

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
        const PlacesByName* places = placesOf(source->object()->getInstanceType());
        read(places ? places->place(text) : text, copy);
    }

    /// Null when the parameters stand in the same places, or the target has no such entity.
    const PlacesByName* placesOf(const VnIfcEntityType* from) {
        const VnIfcEntityType* to =
            from && from->schema() != m_target.schema ? m_target.schema->entity(from->name()) : nullptr;
        if (!to || !from->entityClass() || !to->entityClass())
            return nullptr;
        return &m_places.try_emplace(from, *from->entityClass(), *to->entityClass()).first->second;
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
    std::unordered_map<const VnIfcEntityType*, PlacesByName> m_places;
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
