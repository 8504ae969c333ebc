// What instances of a model hold, as values.
#include "Machine.h"

#include "Member.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcText.h>

#include <algorithm>

namespace vnifc::rules {

using express::AggregateKind;
using VN_SDAI::VnAnsiString;
using VN_SDAI::VnDbObjectId;
using VN_SDAI::VnIfcAggr;
using VN_SDAI::VnIfcBoolean;
using VN_SDAI::VnIfcLogical;
using VN_SDAI::VnTypeCodeKind;
using VN_SDAI::typed::Select;
using VN_SDAI::typed::SelectMember;
using RowKind = VN_SDAI::typed::AttributeKind;

namespace {

Value logicalOf(VnIfcBoolean value) noexcept {
    return value.isUnset() ? Value() : Value::of(value == VnIfcBoolean(VnIfcBoolean::True));
}

Value logicalOf(VnIfcLogical value) noexcept {
    if (value.isUnset())
        return Value();
    Value result = Value::of(value.code() == VnIfcLogical::True      ? kTrue
                             : value.code() == VnIfcLogical::Unknown ? kUnknown
                                                                     : kFalse);
    result.isLogical = true;
    return result;
}

Value integerOf(int value) noexcept {
    return value == VN_SDAI::Consts::VnIntUnset ? Value() : Value::of(std::int64_t{value});
}

} // namespace

Value Machine::valueOf(const Entity& instance) const noexcept {
    Value value = Value::of(&instance);
    value.type = m_schema.entityOf(instance);
    return value.type == kNoType ? Value() : value;
}

/// What was erased is no value any more. An instance that is not there, or is of no class of the schema, is a value
/// that nobody knows: rules must not take it for none.
Value Machine::instanceAt(const VnDbObjectId& handle) const {
    if (const Entity* const instance = entityAt(handle)) [[likely]]
        return valueOf(*instance);
    if (handle.isNull() || handle.isErased())
        return Value();
    const bool isThere = handle.openObject() != nullptr;
    throw NotEvaluated('#' + std::to_string(handle.number()) +
                       (isThere ? " is of no class of the schema" : " is not in the model") +
                       ", so that it is not known");
}

Value Machine::textOf(std::string_view exchangeText) {
    if (exchangeText.find('\\') == exchangeText.npos)
        return Value::of(exchangeText);
    spend(exchangeText.size() / 64);
    return text(VN_SDAI::vnDecodeText(exchangeText, m_buffer));
}

/// The binary digits of a value in the form of an exchange file (ISO 10303-21, 6.4.6): how many bits of the first
/// hexadecimal digit are not used, then the digits.
Value Machine::binaryOf(std::string_view exchangeText) {
    if (exchangeText.starts_with('"') && exchangeText.size() >= 2)
        exchangeText = exchangeText.substr(1, exchangeText.size() - 2);
    if (exchangeText.empty() || exchangeText[0] < '0' || exchangeText[0] > '3')
        return Value();
    constexpr unsigned kBitsPerDigit = 4;
    spend(exchangeText.size() / 16);
    char* const bits = m_arena.array<char>(kBitsPerDigit * exchangeText.size());
    std::size_t count = 0;
    for (const char digit : exchangeText.substr(1)) {
        const int value = digit >= '0' && digit <= '9'   ? digit - '0'
                          : digit >= 'A' && digit <= 'F' ? digit - 'A' + 10
                                                         : -1;
        if (value < 0)
            return Value();
        for (unsigned bit = kBitsPerDigit; bit-- > 0;)
            bits[count++] = (value >> bit & 1) != 0 ? '1' : '0';
    }
    const auto unused = static_cast<std::size_t>(exchangeText[0] - '0');
    if (unused > count)
        return Value();
    Value result = Value::of(std::string_view(bits + unused, count - unused));
    result.tag = Tag::kBinary;
    return result;
}

Value Machine::enumerationOf(TypeIndex type, std::uint32_t code) const noexcept {
    const std::vector<NameId>& literals = m_schema.named(type).literals;
    if (code >= literals.size())
        return Value();
    Value value;
    value.tag = Tag::kEnumeration;
    value.type = type;
    value.length = code;
    value.integer = literals[code];
    return value;
}

TypeIndex Machine::typeOfMember(const SelectMember& member) {
    if (const TypeIndex* const known = m_members.find(&member))
        return *known;
    const TypeIndex type = m_schema.find(member.name->view());
    m_members.add(&member, type);
    return type;
}

Value Machine::selected(const Select& select) {
    if (select.kind() == VnTypeCodeKind::kEntity)
        return instanceAt(select.getHandle());
    const SelectMember* const member = select.chosen();
    if (!member || !select.hasValue())
        return Value();
    const TypeIndex type = typeOfMember(*member);
    Value value;
    switch (select.kind()) {
    case VnTypeCodeKind::kString:
        value = textOf(select.text());
        break;
    case VnTypeCodeKind::kBinary:
        value = binaryOf(select.text());
        break;
    case VnTypeCodeKind::kInteger: {
        std::int32_t number = 0;
        if (select.getInt32(number))
            value = Value::of(std::int64_t{number});
        break;
    }
    case VnTypeCodeKind::kReal: {
        double number = 0;
        if (select.getDouble(number))
            value = Value::of(number);
        break;
    }
    case VnTypeCodeKind::kBoolean: {
        VnIfcBoolean held;
        if (select.getBoolean(held))
            value = logicalOf(held);
        break;
    }
    case VnTypeCodeKind::kLogical: {
        VnIfcLogical held;
        if (select.getLogical(held))
            value = logicalOf(held);
        break;
    }
    case VnTypeCodeKind::kEnumeration: {
        std::uint32_t code = 0;
        return select.getEnum(code) ? enumerationOf(type, code) : Value();
    }
    case VnTypeCodeKind::kAggregation:
        return modelAggregate(*select.getAggr(), m_schema.named(type).type, false);
    default:
        return Value();
    }
    if (value.exists())
        value.type = type;
    return value;
}

Value Machine::modelAggregate(const VnIfcAggr& aggregate, TypeId id, bool isBinary) {
    const Type& named = m_schema.type(id);
    const Type& type = m_schema.underlying(id);
    Aggregate* const result = m_arena.make<Aggregate>();
    result->source = Aggregate::Source::kModel;
    result->isBinary = isBinary;
    result->data = &aggregate;
    result->count = aggregate.count();
    result->type = named.kind == TypeKind::kDefined ? named.name : static_cast<TypeIndex>(kNoType);
    if (type.kind == TypeKind::kAggregate) {
        result->kind = type.aggregate;
        result->lower = type.lower;
        result->upper = type.upper;
        result->element = type.inner;
    }
    return Value::of(result);
}

/// An inverse attribute of at most one element, which is a single handle in its class.
Value Machine::singleElement(const VnDbObjectId& handle, TypeId type) {
    Aggregate* const result = makeAggregate(m_schema.type(type).aggregate, 0);
    result->source = Aggregate::Source::kHandles;
    result->data = &handle;
    result->count = handle.isNull() ? 0 : 1;
    result->upper = m_schema.type(type).upper;
    result->element = m_schema.type(type).inner;
    return Value::of(result);
}

Value Machine::element(const Aggregate& aggregate, std::uint32_t position) {
    if (aggregate.source == Aggregate::Source::kValues)
        return aggregate.values()[position];
    if (aggregate.source == Aggregate::Source::kHandles)
        return instanceAt(static_cast<const VnDbObjectId*>(aggregate.data)[position]);
    const auto& held = *static_cast<const VnIfcAggr*>(aggregate.data);
    const void* const data = held.imp().data();
    Value value;
    switch (held.elementKind()) {
    case VnTypeCodeKind::kEntity:
        return instanceAt(static_cast<const VnDbObjectId*>(data)[position]);
    case VnTypeCodeKind::kReal:
        value = Value::of(static_cast<const double*>(data)[position]);
        break;
    case VnTypeCodeKind::kInteger:
        value = integerOf(static_cast<const int*>(data)[position]);
        break;
    case VnTypeCodeKind::kString: {
        const VnAnsiString& text = static_cast<const VnAnsiString*>(data)[position];
        if (!text.isUnset())
            value = aggregate.isBinary ? binaryOf(text.view()) : textOf(text.view());
        break;
    }
    case VnTypeCodeKind::kAggregation:
        return modelAggregate(static_cast<const VnIfcAggr*>(data)[position], aggregate.element, aggregate.isBinary);
    case VnTypeCodeKind::kSelect:
        return selected(static_cast<const Select*>(data)[position]);
    default:
        return Value();
    }
    const Type& type = m_schema.type(aggregate.element);
    if (value.exists() && type.kind == TypeKind::kDefined)
        value.type = type.name;
    return value;
}

/// An attribute without a value. What the file held there, if it did not fit, is a value that nobody knows: rules must
/// not take it for none.
Value Machine::loadUnset(const Entity& instance, const Attribute& attribute) {
    const VnDbObjectId id = instance.objectId();
    if (id.isNull() || !id.slot()->has(VN_SDAI::VnIfcInstanceSlot::kHasKept))
        return Value();
    const auto fields = instance.entityClass().fields;
    const auto field = std::ranges::find(fields, attribute.row);
    if (field == fields.end())
        return Value();
    const auto position = static_cast<unsigned>(field - fields.begin());
    if (!instance.keepsText(position))
        return Value();
    if (attribute.row->kind == RowKind::kBinary)
        return binaryOf(instance.keptText(position));
    throw NotEvaluated("the value of " + std::string(attribute.row->name) + " does not fit, so that it is not known");
}

Value Machine::load(const Entity& instance, const Attribute& attribute) {
    const VN_SDAI::typed::AttributeRow& row = *attribute.row;
    Value value;
    switch (row.kind) {
    case RowKind::kString:
        if (const auto& text = member<VnAnsiString>(instance, row); !text.isUnset())
            value = textOf(text.view());
        break;
    case RowKind::kGuid:
        if (const auto& text = member<VN_SDAI::VnIfcGUID>(instance, row); !text.isUnset())
            value = textOf(text.view());
        break;
    case RowKind::kReal:
        value = Value::of(member<double>(instance, row));
        break;
    case RowKind::kInteger:
        value = integerOf(member<int>(instance, row));
        break;
    case RowKind::kBoolean:
        value = logicalOf(member<VnIfcBoolean>(instance, row));
        break;
    case RowKind::kLogical:
        value = logicalOf(member<VnIfcLogical>(instance, row));
        break;
    case RowKind::kReference:
        if (attribute.inverse && attribute.inverse->layer)
            return singleElement(member<VnDbObjectId>(instance, row), attribute.type);
        value = instanceAt(member<VnDbObjectId>(instance, row));
        return value.exists() || attribute.kind == AttributeKind::kInverse ? value : loadUnset(instance, attribute);
    case RowKind::kEnumeration:
        value = enumerationOf(m_schema.underlying(attribute.type).name, member<std::uint32_t>(instance, row));
        return value.exists() ? value : loadUnset(instance, attribute);
    case RowKind::kSelect:
        value = selected(member<Select>(instance, row));
        return value.exists() ? value : loadUnset(instance, attribute);
    case RowKind::kAggregate: {
        const auto& aggregate = member<VnIfcAggr>(instance, row);
        if (attribute.kind == AttributeKind::kExplicit) {
            loadUnset(instance, attribute); // some of the elements may be there
            if (aggregate.isNil() && row.mark == VN_SDAI::typed::kOptional)
                return value;
        }
        return modelAggregate(aggregate, attribute.type, row.isBinary);
    }
    case RowKind::kBinary:
    case RowKind::kDerived:
        break;
    }
    if (!value.exists())
        value = loadUnset(instance, attribute);
    if (value.exists() && attribute.valueType != kNoType)
        value.type = attribute.valueType;
    return value;
}

Value Machine::attributeOf(const Entity& instance, const Attribute& attribute) {
    if (attribute.kind != AttributeKind::kDerived) {
        m_steps = m_stepsPerRun;
        return load(instance, attribute);
    }
    return attribute.chunk == 0 ? Value() : run(attribute.chunk, valueOf(instance));
}

TypeIndex Machine::baseType(const Value& value) const noexcept {
    switch (value.tag) {
    case Tag::kLogical:
        return value.isLogical || value.integer == kUnknown ? kLogicalType : kBooleanType;
    case Tag::kInteger:
        return kIntegerType;
    case Tag::kReal:
        return kRealType;
    case Tag::kString:
        return kStringType;
    case Tag::kBinary:
        return kBinaryType;
    case Tag::kAggregate:
        return baseOf(value.aggregate->kind);
    default:
        return kNoType;
    }
}

/// Whether TYPEOF gives that type.
bool Machine::isOf(const Value& value, TypeIndex type) const noexcept {
    if (type == kNoType)
        return false;
    if (value.is(Tag::kConstructed)) {
        const Constructed& entity = *value.constructed;
        return std::any_of(entity.parts, entity.parts + entity.partCount,
                           [&](TypeIndex part) { return m_schema.isOf(part, type); });
    }
    const TypeIndex named = value.is(Tag::kAggregate) ? value.aggregate->type : value.type;
    if (named != kNoType && m_schema.isOf(named, type))
        return true;
    const TypeIndex base = baseType(value);
    return base != kNoType && m_schema.isOf(base, type);
}

} // namespace vnifc::rules
