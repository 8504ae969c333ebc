#include "../exchange/SpfDiagnostics.h"
#include "../exchange/SpfInstanceReader.h"
#include "../exchange/SpfInstanceWriter.h"
#include "../exchange/SpfScan.h"

#include <VnIfcCore/VnIfcCopy.h>
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
        for (std::size_t i = 0; i < from.fields.size(); ++i)
            if (std::ranges::find(m_places, std::optional(i), &Place::source) == m_places.end())
                m_leftOut.emplace_back(i, from.fields[i]->name);
    }

    /// Of "KEYWORD(...)". `leaveOut(name, text)` is called for each value that has no place.
    template <class LeaveOut>
    std::string place(std::string_view instance, LeaveOut leaveOut) const {
        const VnSpfText text(instance);
        const char* const end = text.end();
        const char* p = text.begin() + instance.find('(') + 1;
        std::string result(text.begin(), p);
        std::vector<std::string_view> parameters;
        while (p < end) {
            const char* const next = spf::parameterEnd(p, end);
            parameters.emplace_back(p, static_cast<std::size_t>(next - p));
            p = next + 1;
        }
        for (const auto& [source, name] : m_leftOut)
            if (source < parameters.size() && parameters[source] != "$" && parameters[source] != "*")
                leaveOut(name, parameters[source]);
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
    std::vector<std::pair<std::size_t, const char*>> m_leftOut; ///< place in the other list, and name
};

class Copier {
public:
    Copier(VnIfcModel::Data& target, std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& copies,
           const VnIfcDiagnosticSink& diagnostics)
        : m_target(target), m_reader(target, diagnostics != nullptr), m_copies(copies), m_diagnostics(diagnostics) {
        for (const auto& [source, copy] : copies)
            m_counterparts.emplace(source.slot(), copy.slot());
    }

    VnDbObjectId copy(VnIfcInstanceSlot* source) {
        VnIfcInstanceSlot* result = counterpart(source);
        for (std::size_t i = 0; i < m_pending.size(); ++i)
            fill(m_pending[i].first, m_pending[i].second);
        m_pending.clear();
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
        const VnSpfText from(std::string_view(writer.text()));
        std::string text;
        const char* copied = from.begin();
        spf::forEachReference(from.view(), [&](const char* first, const char* last, std::uint64_t number) {
            text.append(copied, first);
            VnIfcInstanceSlot* referred = data.slots.find(number);
            const bool exists = referred && VnDbObjectId(referred).openObject();
            text += exists ? '#' + std::to_string(counterpart(referred)->number) : "$";
            copied = last;
        });
        text.append(copied, from.end());
        const VnIfcEntityType* type = source->object()->getInstanceType();
        const PlacesByName* places = placesOf(type);
        if (!places)
            return read(text, copy);
        read(places->place(text,
                           [&](const char* name, std::string_view value) {
                               if (m_diagnostics)
                                   m_diagnostics(leftOut(*type, name, value, copy->number));
                           }),
             copy, true);
    }

    /// Null when the parameters stand in the same places, or the target has no such entity.
    const PlacesByName* placesOf(const VnIfcEntityType* from) {
        const VnIfcEntityType* to =
            from && from->schema() != m_target.schema ? m_target.schema->entity(from->name()) : nullptr;
        if (!to || !from->entityClass() || !to->entityClass())
            return nullptr;
        return &m_places.try_emplace(from, *from->entityClass(), *to->entityClass()).first->second;
    }

    static VnIfcDiagnostic leftOut(const VnIfcEntityType& type, const char* name, std::string_view value,
                                   std::uint64_t copy) {
        VnIfcDiagnostic diagnostic;
        diagnostic.severity = VnIfcDiagnostic::kWarning;
        diagnostic.code = "no-attribute";
        diagnostic.instance = copy;
        diagnostic.keyword = type.name();
        diagnostic.attribute = name;
        diagnostic.found = value;
        diagnostic.expected = "an attribute that the copy has; the value is left out";
        return diagnostic;
    }

    void tell(const VnSpfText& text) {
        VnIfcFileResult counted;
        VnIfcReadOptions options;
        options.diagnostics = [&](VnIfcDiagnostic diagnostic) {
            diagnostic.line = diagnostic.column = 0; // it stands in no file
            m_diagnostics(diagnostic);
        };
        SpfDiagnostics diagnostics("", text.begin(), text.end(), options, counted);
        std::ranges::stable_sort(m_reader.remarks(), {}, &SpfRemark::begin);
        for (const SpfRemark& remark : m_reader.remarks())
            diagnostics.report(remark);
    }

    void read(std::string_view text, VnIfcInstanceSlot* slot, bool isOfOtherSchema = false) {
        const VnSpfText copied(text);
        m_reader.read(copied.view(), slot);
        if (isOfOtherSchema && m_diagnostics)
            tell(copied);
        m_reader.remarks().clear();
        for (auto& [keeper, kept] : m_reader.kept())
            m_target.kept.emplace(keeper, std::move(kept));
        m_reader.kept().clear();
        ++m_target.count;
    }

    VnIfcModel::Data& m_target;
    SpfInstanceReader m_reader;
    std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& m_copies;
    const VnIfcDiagnosticSink& m_diagnostics;
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
    return copy(source, copies, {});
}

VnDbObjectId VnIfcModel::copy(const VnDbObjectId& source, std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& copies,
                              const VnIfcDiagnosticSink& diagnostics) {
    const VnIfcEntityBase* instance = source.openObject();
    if (!instance)
        return {};
    const VnIfcEntityType* type = instance->getInstanceType();
    if (type && !m_data->schema->entity(type->name()))
        return {};
    Copier copier(*m_data, copies, diagnostics);
    return source.model() == this ? copier.copyAlone(source.slot()) : copier.copy(source.slot());
}

bool vnCopyInstances(VnIfcModel& target, std::span<const VnDbObjectId> sources,
                     std::vector<std::pair<VnDbObjectId, VnDbObjectId>>& copies) {
    for (const VnDbObjectId& source : sources)
        if (!source.openObject() || source.model() == &target)
            return false;
    const VnIfcDiagnosticSink nobody;
    Copier copier(target.data(), copies, nobody);
    for (const VnDbObjectId& source : sources)
        copier.copy(source.slot());
    return true;
}

} // namespace VN_SDAI
