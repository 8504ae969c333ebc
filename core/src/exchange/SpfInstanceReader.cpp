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
    if (!finishReading(surplus, surplusEnd)) keepSurplus(surplus, surplusEnd, end);
    if (ranShort()) {
        m_current.absentFrom = m_position = parametersSeen();
        remark(SpfRemark::kTooFew, helper().next, helper().next);
    }
    if (!m_current.isEmpty()) keep(instance);
}

void SpfInstanceReader::keepSurplus(const char* begin, const char* close, const char* end) {
    if (begin < close) {
        const bool needsComma = *begin != ',' && parametersSeen() > 0;
        m_current.surplus = (needsComma ? "," : "") + spf::closed({begin, static_cast<std::size_t>(close - begin)});
        remark(SpfRemark::kTooMany, *begin == ',' ? begin + 1 : begin, close);
    }
    if (close == end) return remark(SpfRemark::kUnclosedList, end, end);
    const char* const behind = spf::skipBlanks(close + 1, end);
    if (behind < end) remark(SpfRemark::kBehindList, behind, end);
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
    const char* const close = open < end && *open == '(' ? spf::listEnd(open + 1, end) : end;
    const bool hasList = close < end && spf::skipBlanks(close + 1, end) == end;
    const std::string parameters =
        hasList ? std::string(open + 1, close) : spf::closed(text);
    remark(!hasList ? SpfRemark::kNoKeyword : keyword.empty() ? SpfRemark::kComplex : SpfRemark::kUnknownKeyword,
           text.data(), keyword.empty() ? end : text.data() + keyword.size());
    auto* object = new VnIfcForeignInstance(hasList ? VnAnsiString(keyword) : VnAnsiString(), parameters, hasList);
    m_data.place(m_slot, object, VnIfcArenaScope::current() != nullptr);
}

void SpfInstanceReader::onMisfit(unsigned position, VnSpfProblem problem, const char* begin, const char* end) {
    remark(SpfRemark::kProblem, begin, end);
    m_remarks.back().problem = problem;
    if (problem == VnSpfProblem::kMissingComma) return;
    m_current.parameters.push_back({position, spf::closed({begin, static_cast<std::size_t>(end - begin)}), {}});
}

void SpfInstanceReader::watchField(unsigned) {}

void SpfInstanceReader::notify(int, int) {
    const std::string_view text = parameterText();
    remark(SpfRemark::kBareList, text.data(), text.data() + text.size());
    m_current.parameters.push_back({m_position, spf::closed(text), {}});
}

}  // namespace VN_SDAI
