#include <VnIfcTyped/Select.h>

#include <VnIfcCore/VnIfcEntityBase.h>
#include <VnIfcCore/VnSpfFilerBase.h>
#include <exchange/AggregateFields.h>

#include <algorithm>
#include <vector>

namespace VN_SDAI::typed {

std::int32_t SelectClass::indexOf(std::string_view memberName) const noexcept {
    if (index.empty())
        return memberCount();
    const std::size_t mask = index.size() - 1;
    for (std::size_t place = hashOfMember(memberName) & mask; index[place] != 0; place = (place + 1) & mask) {
        const auto member = static_cast<std::size_t>(index[place] - 1);
        if (members[member].name->compareNoCase(memberName) == 0)
            return static_cast<std::int32_t>(member);
    }
    return memberCount();
}

const SelectMember* Select::memberAt(std::int32_t code) const noexcept {
    const auto members = selectClass().members;
    const auto index = static_cast<std::uint32_t>(code);
    return index < members.size() ? &members[index] : nullptr;
}

const SelectMember* Select::chosen() const noexcept { return memberAt(m_discriminator); }

const VnIfcNameType* Select::type() const noexcept { return *selectClass().type; }

std::int32_t Select::memberByName(const VnAnsiString& name) const { return selectClass().indexOf(name); }

bool Select::underlyingTypeName(const VnAnsiString& name) {
    const std::int32_t index = memberByName(name);
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
    const std::int32_t code = isPending() ? memberOf(getHandle()) : m_discriminator;
    const SelectMember* chosenMember = memberAt(code);
    return chosenMember ? *chosenMember->name : none;
}

std::int32_t Select::memberOf(const VnDbObjectId& handle) const noexcept {
    const SelectClass& type = selectClass();
    const VnIfcEntityBase* instance = nullptr;
    for (const SelectMember& member : type.members) {
        if (!member.entity)
            continue;
        if (!instance && !(instance = handle.openObject(kForRead, false)))
            break;
        if (instance->isKindOf(*member.entity))
            return static_cast<std::int32_t>(&member - type.members.data());
    }
    return type.memberCount();
}

bool Select::setHandleD(const VnDbObjectId& handle) {
    const std::int32_t member = memberOf(handle);
    if (member == selectClass().memberCount())
        return false;
    m_discriminator = member;
    return true;
}

void Select::setHandleOnLoad(const VnDbObjectId& handle) {
    VnIfcSelect::setHandleOnLoad(handle);
    m_discriminator = selectClass().memberCount() + 1;
}

void Select::refreshSelectHandle() {
    if (isPending())
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

std::uint32_t Select::chosenLiteralCount() const noexcept {
    const SelectMember* chosenMember = chosen();
    return chosenMember && chosenMember->enumeration
               ? static_cast<std::uint32_t>(chosenMember->enumeration->literals.size())
               : 0;
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
    const std::int32_t code = memberByName(typeName);
    if (code == selectClass().memberCount())
        return VN::eNotHandled;
    const SelectMember& typeMember = selectClass().members[static_cast<std::size_t>(code)];
    if (typeMember.kind == VnTypeCodeKind::kAggregation) {
        chooseType(code);
        if (!readSelectAggregate(*getAggr(), *filer))
            filer->misfit(VnSpfProblem::kWrongKind);
        else if (getAggr()->isNil())
            getAggr()->createEmpty(); // "()" is a value
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

} // namespace VN_SDAI::typed
