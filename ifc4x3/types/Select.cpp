#include <IFC4X3/Dictionary.h>
#include <IFC4X3/Select.h>

#include <VnIfcCore/VnIfcEntityBase.h>
#include <VnIfcCore/VnSpfFilerBase.h>
#include <exchange/AggregateFields.h>

#include <algorithm>
#include <vector>

namespace IFC4X3 {

using namespace VN_SDAI;

namespace {

/// Finds members by name for all selects at once: the reader asks for one with every typed value.
class MemberIndex {
public:
    static const MemberIndex& instance() {
        static const MemberIndex index;
        return index;
    }

    std::int32_t find(const SelectClass& type, std::string_view name) const noexcept {
        for (std::size_t i = hash(type, name) & m_mask; m_entries[i].type; i = (i + 1) & m_mask) {
            const Entry& entry = m_entries[i];
            if (entry.type == &type &&
                type.members[static_cast<std::size_t>(entry.index)].name->compareNoCase(name) == 0)
                return entry.index;
        }
        return type.memberCount();
    }

private:
    struct Entry {
        const SelectClass* type = nullptr;
        std::int32_t index = 0;
    };

    MemberIndex() : m_entries(kSize), m_mask(kSize - 1) {
        for (const SelectClass* type : dictionary::selectClasses)
            for (std::int32_t i = 0; i < type->memberCount(); ++i)
                insert(*type, i);
    }

    void insert(const SelectClass& type, std::int32_t index) {
        const std::string_view name = type.members[static_cast<std::size_t>(index)].name->view();
        if (find(type, name) != type.memberCount())
            return; // the first of equal names counts
        std::size_t i = hash(type, name) & m_mask;
        while (m_entries[i].type)
            i = (i + 1) & m_mask;
        m_entries[i] = {&type, index};
    }

    static std::size_t hash(const SelectClass& type, std::string_view name) noexcept {
        std::size_t value = reinterpret_cast<std::uintptr_t>(&type) >> 4;
        for (const char c : name)
            value = value * 31 + static_cast<unsigned char>(c | 0x20);
        return value ^ (value >> 15);
    }

    // All selects of the schema together have under 900 members.
    static constexpr std::size_t kSize = 4096;
    std::vector<Entry> m_entries;
    std::size_t m_mask;
};

} // namespace

std::int32_t SelectClass::indexOf(std::string_view memberName) const noexcept {
    return MemberIndex::instance().find(*this, memberName);
}

const SelectMember* Select::chosen() const noexcept {
    const auto members = selectClass().members;
    return m_discriminator >= 0 && m_discriminator < static_cast<std::int32_t>(members.size())
               ? &members[static_cast<std::size_t>(m_discriminator)]
               : nullptr;
}

const VnIfcNameType* Select::type() const noexcept { return *selectClass().type; }

std::int32_t Select::underlyingTypeByName(const VnAnsiString& name) const { return selectClass().indexOf(name); }

bool Select::underlyingTypeName(const VnAnsiString& name) {
    const std::int32_t index = underlyingTypeByName(name);
    if (index == selectClass().memberCount())
        return false;
    const SelectMember& chosenMember = selectClass().members[static_cast<std::size_t>(index)];
    nullify();
    resetTo(chosenMember.kind, chosenMember.prototype);
    m_discriminator = index;
    return true;
}

const VnAnsiString& Select::underlyingTypeName() const {
    static const VnAnsiString none;
    if (m_discriminator == selectClass().memberCount() + 1)
        refreshSelectHandle();
    const SelectMember* chosenMember = chosen();
    return chosenMember ? *chosenMember->name : none;
}

bool Select::setHandleD(const VnDbObjectId& handle) {
    const auto members = selectClass().members;
    const auto isEntity = [](const SelectMember& each) { return each.entity != nullptr; };
    if (std::none_of(members.begin(), members.end(), isEntity))
        return false;
    const VnIfcEntityBase* instance = handle.openObject(kForRead, false);
    if (!instance)
        return false;
    bool found = false;
    for (std::size_t i = 0; i < members.size() && !found; ++i) {
        found = members[i].entity && instance->isKindOf(*members[i].entity);
        if (found)
            m_discriminator = static_cast<std::int32_t>(i);
    }
    handle.close();
    return found;
}

void Select::setHandleOnLoad(const VnDbObjectId& handle) {
    VnIfcSelect::setHandleOnLoad(handle);
    m_discriminator = selectClass().memberCount() + 1;
}

void Select::refreshSelectHandle() const {
    if (m_discriminator == selectClass().memberCount() + 1)
        VnIfcSelect::refreshSelectHandle();
}

void Select::unset() { m_discriminator = selectClass().memberCount(); }

bool Select::chooseForReading(std::string_view name) {
    const std::int32_t index = selectClass().indexOf(name);
    return index != selectClass().memberCount() && chooseType(index) == VN::eOk;
}

bool Select::chosenKind(VnTypeCodeKind& kind) const noexcept {
    const SelectMember* chosenMember = chosen();
    if (chosenMember)
        kind = chosenMember->kind;
    return chosenMember != nullptr;
}

const VnIfcVariantType* Select::chosenEnumeration() const {
    const SelectMember* chosenMember = chosen();
    return chosenMember && chosenMember->enumeration ? &chosenMember->enumeration->descriptor->value() : nullptr;
}

VN::ErrorStatus Select::chooseType(std::int32_t code) {
    if (code < 0 || code >= selectClass().memberCount())
        return VN::eNotHandled;
    const SelectMember& chosenMember = selectClass().members[static_cast<std::size_t>(code)];
    if (chosenMember.kind == VnTypeCodeKind::kEntity)
        return VN::eNotHandled;
    resetTo(chosenMember.kind, chosenMember.prototype);
    m_discriminator = code;
    return VN::eOk;
}

// ---- typed values in exchange files

VN::ErrorStatus Select::readTypedField(const VnAnsiString& typeName, VnSpfFilerBase* filer) {
    const std::int32_t code = underlyingTypeByName(typeName);
    if (code == selectClass().memberCount())
        return VN::eNotHandled;
    const SelectMember& typeMember = selectClass().members[static_cast<std::size_t>(code)];
    if (typeMember.kind == VnTypeCodeKind::kAggregation) {
        chooseType(code);
        if (!readSelectAggregate(*getAggr(), *filer))
            filer->misfit(VnSpfProblem::kWrongKind);
        return VN::eOk;
    }
    if (typeMember.kind != VnTypeCodeKind::kEnumeration)
        return VN::eNotHandled;
    const std::uint32_t literal = typeMember.enumeration->fromLiteral(filer->rdEnumerationToStr(false, false));
    if (literal == typeMember.enumeration->literals.size())
        return VN::eUnknownLiteral;
    chooseType(code);
    setEnum(literal);
    return VN::eOk;
}

VN::ErrorStatus Select::writeTypedField(VnSpfFilerBase* filer) const {
    const SelectMember* chosenMember = chosen();
    if (!chosenMember)
        return VN::eNotHandled;
    if (chosenMember->kind == VnTypeCodeKind::kAggregation && getAggr()) {
        writeSelectAggregate(*getAggr(), *filer);
        return VN::eOk;
    }
    if (chosenMember->kind != VnTypeCodeKind::kEnumeration)
        return VN::eNotHandled;
    std::uint32_t code = 0;
    if (!getEnum(code))
        return VN::eNoValue;
    const char* literal = chosenMember->enumeration->toLiteral(
        static_cast<int>(std::min<std::size_t>(code, chosenMember->enumeration->literals.size())));
    filer->wrEnumeration(literal ? literal : "", false, false);
    return VN::eOk;
}

// ---- typed setters

void Select::setInstance(const VnIfcEntityBase* instance) {
    if (instance && !instance->objectId().isNull())
        setHandle(instance->objectId());
    else
        nullify();
}

void Select::setText(std::int32_t code, VnAnsiString value) {
    if (chooseType(code) == VN::eOk)
        setString(std::move(value));
}

void Select::setBinary(std::int32_t code, VnAnsiString value) {
    if (chooseType(code) == VN::eOk)
        setBINARY(std::move(value));
}

void Select::setInteger(std::int32_t code, int value) {
    if (chooseType(code) == VN::eOk)
        setInt32(value);
}

void Select::setReal(std::int32_t code, double value) {
    if (chooseType(code) == VN::eOk)
        setDouble(value);
}

void Select::setBooleanValue(std::int32_t code, VnIfcBoolean value) {
    if (chooseType(code) == VN::eOk)
        setBoolean(value);
}

void Select::setLogicalValue(std::int32_t code, VnIfcLogical value) {
    if (chooseType(code) == VN::eOk)
        setLogical(value);
}

void Select::setEnumeration(std::int32_t code, std::uint32_t value) {
    if (chooseType(code) == VN::eOk)
        setEnum(value);
}

} // namespace IFC4X3
