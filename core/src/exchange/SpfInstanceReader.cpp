#include "SpfInstanceReader.h"

#include "SpfScan.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcSchema.h>

namespace VN_SDAI {

void SpfInstanceReader::remark(SpfRemark::Kind kind, const char* begin, const char* end) {
    m_remarks.push_back({kind, VnSpfProblem::kNone, m_position, m_slot->number, m_type, begin, end});
}

VnIfcInstanceSlot* SpfInstanceReader::slotOf(std::uint64_t number) {
    const char* begin = helper().next;
    while (*begin != '#')
        --begin;
    return slotOf(begin, helper().next, number);
}

VnIfcInstanceSlot* SpfInstanceReader::slotOf(const char* begin, const char* end, std::uint64_t number) {
    if (VnIfcInstanceSlot* slot = m_data.slots.find(number))
        return slot;
    remark(SpfRemark::kDangling, begin, end);
    return m_data.danglingSlot(number);
}

/// What a text that is only kept refers to must not become another instance.
void SpfInstanceReader::keepReferences(const char* begin, const char* end) {
    const std::string_view text(begin, static_cast<std::size_t>(end - begin));
    spf::forEachReference(
        text, [this](const char* first, const char* last, std::uint64_t number) { slotOf(first, last, number); });
}

const VnIfcEntityType* SpfInstanceReader::typeOf(std::string_view keyword) {
    // A file has few keywords, and each many times.
    const std::size_t length = keyword.size();
    const auto at = [&](std::size_t i) { return static_cast<std::size_t>(static_cast<unsigned char>(keyword[i])); };
    const std::size_t hash =
        length < 6 ? 0 : (length * 7 + at(3) * 31 + at(length / 2) * 5 + at(length - 2) * 3 + at(length - 1)) % 256;
    const VnIfcEntityType*& cached = m_types[hash];
    if (cached && cached->name() == keyword)
        return cached;
    const VnIfcEntityType* type = m_data.schema->entity(keyword);
    if (type)
        cached = type;
    return type;
}

void SpfInstanceReader::read(std::string_view text, VnIfcInstanceSlot* slot) {
    m_slot = slot;
    m_type = nullptr;
    m_position = 0;
    const char* const end = text.data() + text.size();
    const char* p = text.data();
    while (spf::isNameCharacter(*p) || *p == '-' || *p == '!')
        ++p;
    const std::string_view keyword(text.data(), static_cast<std::size_t>(p - text.data()));
    const char* open = *p == '(' ? p : spf::skipBlanks(p, end);
    if (keyword.empty() || open >= end || *open != '(')
        return readForeign(text, keyword, open);
    m_type = typeOf(keyword);
    if (!m_type)
        return readForeign(text, keyword, open);
    VnIfcEntityBase* object = m_type->create();
    m_data.place(slot, object, VnIfcArenaScope::current() != nullptr);
    m_tookPending = false;
    readFields(*object, open + 1, end);
    // Most refer to instances that stand before them, and are near now.
    if (m_tookPending && !object->settleSelects())
        m_pending.push_back(object);
}

void SpfInstanceReader::readFields(VnIfcEntityBase& instance, const char* begin, const char* end) {
    const char* const close = readList(instance, begin, end);
    remarkEnd(close, end);
    if (close == end) {
        // A second time as it will be written, so that what is written holds the same values.
        const auto remarks = static_cast<std::ptrdiff_t>(m_remarks.size());
        m_current = {};
        const VnSpfText text(closedList(begin, end));
        readList(instance, text.begin(), text.end());
        m_remarks.erase(m_remarks.begin() + remarks, m_remarks.end());
    }
    if (!m_current.isEmpty())
        keep(instance);
}

/// Reads a list from after its opening parenthesis, and returns its closing one; `end` when there is none.
const char* SpfInstanceReader::readList(VnIfcEntityBase& instance, const char* begin, const char* end) {
    startReading(begin, end);
    instance._inFields(this);
    const char* surplus = nullptr;
    const char* close = helper().next;
    if (!finishReading(surplus, close) && surplus < close) {
        const bool needsComma = *surplus != ',' && parametersSeen() > 0;
        m_current.surplus = (needsComma ? "," : "") + std::string(surplus, close);
        remark(SpfRemark::kTooMany, *surplus == ',' ? surplus + 1 : surplus, close);
        keepReferences(surplus, close);
    }
    if (ranShort()) {
        m_current.absentFrom = m_position = parametersSeen();
        remark(SpfRemark::kTooFew, helper().next, helper().next);
    }
    return close;
}

void SpfInstanceReader::remarkEnd(const char* close, const char* end) {
    if (close == end)
        return remark(SpfRemark::kUnclosedList, end, end);
    const char* const behind = spf::skipBlanks(close + 1, end);
    if (behind < end)
        remark(SpfRemark::kBehindList, behind, end);
}

/// The rest of a list with what it takes to close it.
std::string SpfInstanceReader::closedList(const char* begin, const char* end) {
    return spf::closed({begin - 1, static_cast<std::size_t>(end - begin + 1)}).substr(1);
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
    const bool isInArena = VnIfcArenaScope::current() != nullptr;
    if (open >= end || *open != '(') {
        remark(SpfRemark::kNoKeyword, text.data(), end);
        // Some of the numbers may be those of instances inside.
        spf::forEachReference(text, [this](const char*, const char*, std::uint64_t number) {
            if (!m_data.slots.find(number))
                m_data.danglingSlot(number);
        });
        return m_data.place(m_slot, new VnIfcForeignInstance({}, spf::closed(text), false), isInArena);
    }
    const char* const close = spf::listEnd(open + 1, end);
    std::string parameters(open + 1, close);
    if (close == end) {
        parameters = closedList(open + 1, end);
        parameters.pop_back();
    }
    const bool isComplex = keyword.empty();
    remark(isComplex ? SpfRemark::kComplex : SpfRemark::kUnknownKeyword, text.data(),
           isComplex ? end : text.data() + keyword.size());
    keepReferences(open, close);
    remarkEnd(close, end);
    m_data.place(m_slot, new VnIfcForeignInstance(keyword, parameters), isInArena);
}

void SpfInstanceReader::onMisfit(unsigned position, VnSpfProblem problem, const char* begin, const char* end) {
    remark(SpfRemark::kProblem, begin, end);
    m_remarks.back().problem = problem;
    if (problem == VnSpfProblem::kMissingComma)
        return;
    if (m_current.find(position)) // something in it was taken in other words before the fault was seen
        m_current.drop(position);
    m_current.parameters.push_back({position, std::string(begin, end), {}});
}

void SpfInstanceReader::onMandatoryUnset(const char* at) {
    if (m_strict)
        remark(SpfRemark::kMandatory, at, at + 1);
}

void SpfInstanceReader::watchField(unsigned) {}

void SpfInstanceReader::onAccepted(VnSpfAccepted what) {
    if (m_current.find(m_position))
        return; // one set of several in a list
    const std::string_view text = valueText();
    if (what != VnSpfAccepted::kEmptyForm)
        remark(what == VnSpfAccepted::kBareElement ? SpfRemark::kBareList : SpfRemark::kEqualElements, text.data(),
               text.data() + text.size());
    m_current.parameters.push_back({m_position, std::string(text), {}, true});
}

} // namespace VN_SDAI
