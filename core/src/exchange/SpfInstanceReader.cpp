#include "SpfInstanceReader.h"

#include "SpfScan.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcSchema.h>

namespace VN_SDAI {

void SpfInstanceReader::remark(SpfRemark::Kind kind, const char* begin, const char* end) {
    m_remarks.push_back({kind, VnSpfProblem::kNone, m_position, m_slot->number, m_type, begin, end});
}

VnIfcInstanceSlot* SpfInstanceReader::slotOf(std::uint64_t number) {
    if (VnIfcInstanceSlot* slot = m_data.slots.find(number)) return slot;
    const char* begin = helper().next;
    while (*begin != '#') --begin;
    remark(SpfRemark::kDangling, begin, helper().next);
    return m_data.danglingSlot(number);
}

const VnIfcEntityType* SpfInstanceReader::typeOf(std::string_view keyword) {
    // A file has few keywords, and each many times.
    const std::size_t length = keyword.size();
    const auto at = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(keyword[i])); };
    const std::size_t hash = length < 6 ? 0 : (length * 7 + at(3) * 31 + at(length / 2) * 5 + at(length - 2) * 3 + at(length - 1)) % 256;
    const VnIfcEntityType*& cached = m_types[hash];
    if (cached && cached->name() == keyword) return cached;
    const VnIfcEntityType* type = m_data.schema->entity(keyword);
    if (type) cached = type;
    return type;
}

void SpfInstanceReader::read(std::string_view text, VnIfcInstanceSlot* slot) {
    m_slot = slot;
    m_type = nullptr;
    m_position = 0;
    const char* const end = text.data() + text.size();
    const char* p = text.data();
    while (spf::isNameCharacter(*p) || *p == '-' || *p == '!') ++p;
    const std::string_view keyword(text.data(), static_cast<std::size_t>(p - text.data()));
    const char* open = *p == '(' ? p : spf::skipBlanks(p, end);
    if (keyword.empty() || open >= end || *open != '(') return readForeign(text, keyword, open);
    m_type = typeOf(keyword);
    if (!m_type) return readForeign(text, keyword, open);
    VnIfcEntityBase* object = m_type->create();
    m_data.place(slot, object, VnIfcArenaScope::current() != nullptr);
    readFields(*object, open + 1, end);
}

void SpfInstanceReader::readFields(VnIfcEntityBase& instance, const char* begin, const char* end) {
    startReading(begin, end);
    instance._inFields(this);
    const char* surplus = nullptr;
    const char* surplusEnd = nullptr;
    if (!finishReading(surplus, surplusEnd)) {
        const bool more = surplus < end && *surplus == ',';
        remark(more ? SpfRemark::kTooMany : SpfRemark::kUnclosedList, surplus, surplusEnd);
        if (more) m_current.surplus.assign(surplus + 1, surplusEnd);
    }
    if (ranShort()) {
        remark(SpfRemark::kTooFew, helper().next, helper().next);
        m_current.absentFrom = parametersSeen();
    }
    if (!m_current.isEmpty()) keep(instance);
}

void SpfInstanceReader::keep(VnIfcEntityBase& instance) {
    m_writer.write(instance);
    for (KeptParameters::Parameter& parameter : m_current.parameters)
        parameter.writtenAs = m_writer.parameter(parameter.position);
    m_slot->set(VnIfcInstanceSlot::kHasKept);
    m_kept.emplace_back(m_slot, std::move(m_current));
    m_current = {};
}

void SpfInstanceReader::readForeign(std::string_view text, std::string_view keyword, const char* open) {
    const char* const end = text.data() + text.size();
    const char* close = end;
    while (close > open && close[-1] != ')') --close;
    const bool hasList = open < end && *open == '(' && close > open + 1;
    const std::string_view parameters =
        hasList ? std::string_view(open + 1, static_cast<std::size_t>(close - open - 2))
                : text;
    remark(!hasList ? SpfRemark::kNoKeyword : keyword.empty() ? SpfRemark::kComplex : SpfRemark::kUnknownKeyword,
           text.data(), open);
    auto* object = new VnIfcForeignInstance(hasList ? VnAnsiString(keyword) : VnAnsiString(), parameters, hasList);
    m_data.place(m_slot, object, VnIfcArenaScope::current() != nullptr);
}

void SpfInstanceReader::onMisfit(unsigned position, VnSpfProblem problem, const char* begin, const char* end) {
    remark(SpfRemark::kProblem, begin, end);
    m_remarks.back().problem = problem;
    if (problem == VnSpfProblem::kMissingComma) return;
    m_current.parameters.push_back({position, std::string(begin, end), {}});
}

void SpfInstanceReader::watchField(unsigned) {}

void SpfInstanceReader::notify(int, int) { remark(SpfRemark::kBareList, helper().next, helper().next); }

}  // namespace VN_SDAI
