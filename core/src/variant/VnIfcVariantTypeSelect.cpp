#include "ExchangeText.h"
#include "Names.h"

#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <VnRx/VrString.h>

namespace VN_SDAI {

namespace {

/// The payload of pointer types: `owner` is set when the pointer was made by a conversion.
struct SelectPointer {
    void* select = nullptr;
    std::shared_ptr<VnIfcSelect> owner;
};

SelectPointer& pointerIn(void* payload) noexcept { return *static_cast<SelectPointer*>(payload); }

constexpr VnIfcVariantStorage kPointerStorage{[](const VnIfcVariantType&, void* payload, const void* value) {
                                                  auto* pointer = ::new (payload) SelectPointer;
                                                  if (value)
                                                      std::memcpy(&pointer->select, value, sizeof pointer->select);
                                              },
                                              vnIfcInsideStorage<SelectPointer>.copy,
                                              vnIfcInsideStorage<SelectPointer>.destroy};

VnIfcSelect* pointee(const void* pointer) noexcept {
    return pointer ? static_cast<VnIfcSelect*>(*static_cast<void* const*>(pointer)) : nullptr;
}

const VnIfcSelectVariantType* selectType(const VnIfcVariantType* type) noexcept {
    return type && type->isSelect() ? dynamic_cast<const VnIfcSelectVariantType*>(type) : nullptr;
}

} // namespace

// ---- VnIfcSelectVariantType

VnIfcSelectVariantType::~VnIfcSelectVariantType() = default;

bool VnIfcSelectVariantType::subEqualTo(const void* left, const void* right) const {
    const VnIfcSelect* first = selectAt(left);
    const VnIfcSelect* second = selectAt(right);
    return first == second || (first && second && *first == *second);
}

bool VnIfcSelectVariantType::subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                                            VnIfcVariant& result) const {
    return VnIfcSelect::_subToValueType(target, selectIn(source), result);
}

bool VnIfcSelectVariantType::subFromValueType(const VnIfcVariant& source, VnIfcVariant& result) const {
    VnIfcVariant fresh;
    if (!createVariant(fresh) || !selectIn(fresh))
        return false;
    VnIfcSelect& select = *selectIn(fresh);
    if (const auto* handle = source.get<VnDbObjectId>()) {
        select.setHandle(*handle);
        if (!select.isSet())
            return false;
    } else if (source.type()->typePath(source).isEmpty() || !VnIfcSelect::_subFromValueType(source, select)) {
        return false;
    }
    result = std::move(fresh);
    return true;
}

bool VnIfcSelectVariantType::subToString(VrString& text, const void* value, StringFormat format) const {
    return value && VnIfcSelect::_subToString(text, selectAt(value), format);
}

VnAnsiString VnIfcSelectVariantType::subTypePath(const VnIfcVariant& value) const {
    const VnIfcSelect* select = selectIn(value);
    return select ? select->underlyingTypeName() : VnAnsiString();
}

VnIfcSelect* VnIfcSelectVariantType::selectIn(const VnIfcVariant& value) const noexcept {
    return value.type() == this ? selectAt(value.payload()) : nullptr;
}

// ---- VnIfcSelectValueTypeBase

VnIfcSelectValueTypeBase::VnIfcSelectValueTypeBase(std::string_view schema, std::string_view name, std::uint32_t size)
    : VnIfcSelectVariantType(wideName(schema, "::", name).c_str(), size, nullptr, nullptr, &vnIfcHeapStorage) {}

VnIfcSelectValueTypeBase::~VnIfcSelectValueTypeBase() = default;

bool VnIfcSelectValueTypeBase::subToValueType(const VnIfcVariantType& target, const VnIfcVariant& source,
                                              VnIfcVariant& result) const {
    const auto* pointers = dynamic_cast<const VnIfcSelectPtrValueTypeBase*>(selectType(&target));
    const VnIfcSelect* select = selectIn(source);
    if (!pointers || !select || !pointers->accepts(*select))
        return VnIfcSelectVariantType::subToValueType(target, source, result);
    result = pointers->variantOf(std::shared_ptr<VnIfcSelect>(static_cast<VnIfcSelect*>(copy(select))));
    return true;
}

VnIfcSelect* VnIfcSelectValueTypeBase::selectAt(const void* value) const noexcept {
    return static_cast<VnIfcSelect*>(const_cast<void*>(value));
}

// ---- VnIfcSelectPtrValueTypeBase

VnIfcSelectPtrValueTypeBase::VnIfcSelectPtrValueTypeBase(std::string_view schema, std::string_view name)
    : VnIfcSelectVariantType(wideName(schema, "::", name, "*").c_str(), sizeof(VnIfcSelect*), nullptr, nullptr,
                             &kPointerStorage) {}

VnIfcSelectPtrValueTypeBase::~VnIfcSelectPtrValueTypeBase() = default;

VnIfcSelect* VnIfcSelectPtrValueTypeBase::selectAt(const void* value) const noexcept { return pointee(value); }

VnIfcVariant VnIfcSelectPtrValueTypeBase::variantOf(const VnIfcSelect& select) const {
    const void* pointer = &select;
    return VnIfcVariant(*this, &pointer);
}

VnIfcVariant VnIfcSelectPtrValueTypeBase::variantOf(std::shared_ptr<VnIfcSelect> select) const {
    VnIfcVariant value(*this, nullptr);
    SelectPointer& pointer = pointerIn(value.payload());
    pointer.select = select.get();
    pointer.owner = std::move(select);
    return value;
}

bool VnIfcSelectPtrValueTypeBase::createVariant(VnIfcVariant& value) const {
    value = variantOf(createSelect());
    return true;
}

// ---- what selects do for the descriptors

bool VnIfcSelect::_subToString(VrString& text, const VnIfcSelect* select, StringFormat format) {
    if (!select)
        return false;
    if (format == StringFormat::kExchange) {
        ExchangeText exchange;
        exchange.wrPrimitive(*select);
        text.assign(exchange.output());
        return true;
    }
    VnIfcVariant held;
    if (select->toVariant(held))
        return held.toString(text, format);
    text.clear();
    return true;
}

bool VnIfcSelect::_subToValueType(const VnIfcVariantType& target, const VnIfcSelect* select, VnIfcVariant& result) {
    if (!select)
        return false;
    const VnIfcSelectVariantType* type = selectType(&target);
    if (type && type->accepts(*select)) {
        result = type->variantOf(*select);
        return true;
    }
    VnIfcVariant held;
    return select->toVariant(held) && held.type()->toValueType(target, held, result);
}

bool VnIfcSelect::_subFromValueType(const VnIfcVariant& source, VnIfcSelect& select) {
    const VnIfcSelectVariantType* type = selectType(source.type());
    const VnIfcSelect* other = type ? type->selectIn(source) : nullptr;
    if (!other)
        return false;
    if (other->kind() == VnTypeCodeKind::kEntity)
        return select.setHandle(other->getHandle());
    if (!select.underlyingTypeName(other->underlyingTypeName()) || select.m_kind != other->m_kind)
        return false;
    select.dropValue();
    select.copyValue(*other);
    return true;
}

bool VnIfcSelect::toVariant(VnIfcVariant& value) const {
    switch (m_kind) {
    case VnTypeCodeKind::kString:
    case VnTypeCodeKind::kBinary:
        value = m_value.string;
        return true;
    case VnTypeCodeKind::kReal:
        value = m_value.real;
        return true;
    case VnTypeCodeKind::kInteger:
        value = m_value.number == kNoInteger ? VnIfcVariant(Consts::VnIntUnset)
                                             : VnIfcVariant(static_cast<int>(m_value.number));
        return true;
    case VnTypeCodeKind::kBoolean:
        value = VnIfcBoolean(static_cast<VnIfcBoolean::Code>(m_value.number));
        return true;
    case VnTypeCodeKind::kLogical:
        value = VnIfcLogical(static_cast<VnIfcLogical::Code>(m_value.number));
        return true;
    case VnTypeCodeKind::kEntity:
        value = m_value.handle;
        return true;
    case VnTypeCodeKind::kAggregation:
        value = const_cast<VnIfcAggr*>(&m_value.aggregate);
        return true;
    case VnTypeCodeKind::kEnumeration:
        break;
    default:
        return false;
    }
    const VnIfcVariantType* type = chosenEnumeration();
    std::uint32_t code = 0;
    if (!type || !getEnum(code))
        return type && type->createVariant(value);
    value = VnIfcVariant(*type, &code);
    return true;
}

} // namespace VN_SDAI
