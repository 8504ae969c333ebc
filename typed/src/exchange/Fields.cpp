#include <VnIfcTyped/Select.h>

#include <VnIfcCore/VnSpfFilerBase.h>
#include <entities/Members.h>
#include <types/ValueOperations.h>

#include <algorithm>
#include <cstring>

// Reading and writing, attribute kind by attribute kind. The two switches mirror each other.
namespace VN_SDAI::typed {

namespace {

void readGuid(VnIfcGUID& value, VnSpfFilerBase& filer, bool optional, bool separated) {
    char text[VnIfcGUID::kLength];
    filer.rdLimitedString(text, sizeof text, optional, separated);
    const void* end = std::memchr(text, '\0', sizeof text);
    value.assign({text, end ? static_cast<std::size_t>(static_cast<const char*>(end) - text) : sizeof text});
}

void readEnumeration(std::uint32_t& value, const EnumerationClass& type, VnSpfFilerBase& filer, bool optional,
                     bool separated) {
    const std::string_view literal = filer.rdEnumeration(optional, separated);
    value = type.fromLiteral(literal);
    if (!literal.empty() && value == type.literals.size())
        filer.misfit(VnSpfProblem::kUnknownLiteral);
}

/// How an aggregate without elements is written; the first field of a list is never written as unset.
bool isUnsetWhenEmpty(const AttributeRow& row, bool separated) noexcept { return separated && row.mark == kOptional; }

void readAggregate(VnIfcAggr& value, const AttributeRow& row, VnSpfFilerBase& filer, bool separated) {
    value.clear();
    if (filer.openAggregate(separated, row.isBinary, row.mark == kOptional))
        filer.closeAggregate(typeOf<AggregateOperations>(row).read(value, filer));
    if (value.count() == 0)
        filer.compareEmptyForm(isUnsetWhenEmpty(row, separated));
}

void readField(Entity& instance, const AttributeRow& row, VnSpfFilerBase& filer, bool separated) {
    const bool optional = row.mark == kOptional;
    switch (row.kind) {
    case AttributeKind::kString:
        filer.rdVnAnsiString(member<VnAnsiString>(instance, row), optional, separated);
        break;
    case AttributeKind::kGuid:
        readGuid(member<VnIfcGUID>(instance, row), filer, optional, separated);
        break;
    case AttributeKind::kReal:
        filer.rdDouble(member<double>(instance, row), optional, separated);
        break;
    case AttributeKind::kInteger:
        filer.rdInt(member<int>(instance, row), optional, separated);
        break;
    case AttributeKind::kBoolean:
        filer.rdPrimitive(member<VnIfcBoolean>(instance, row), optional, separated);
        break;
    case AttributeKind::kLogical:
        filer.rdPrimitive(member<VnIfcLogical>(instance, row), optional, separated);
        break;
    case AttributeKind::kBinary:
        filer.rdBinary(separated, optional);
        break;
    case AttributeKind::kReference:
        filer.rdReference(member<VnDbObjectId>(instance, row), separated, optional);
        break;
    case AttributeKind::kEnumeration:
        readEnumeration(member<std::uint32_t>(instance, row), typeOf<EnumerationClass>(row), filer, optional,
                        separated);
        break;
    case AttributeKind::kSelect:
        filer.rdSelect(member<VnIfcSelect>(instance, row), optional, separated);
        break;
    case AttributeKind::kAggregate:
        readAggregate(member<VnIfcAggr>(instance, row), row, filer, separated);
        break;
    case AttributeKind::kDerived:
        filer.rdDerive(separated);
        break;
    }
}

/// True without elements, and when all of them are erased instances, which leave the lists that they were in.
bool writesNothing(const VnIfcAggr& value) {
    if (value.elementKind() == VnTypeCodeKind::kEntity)
        return std::ranges::all_of(static_cast<const VnIfcAggrOf<VnDbObjectId>&>(value), &VnDbObjectId::isErased);
    if (value.elementKind() != VnTypeCodeKind::kSelect)
        return value.count() == 0;
    return std::ranges::all_of(SelectElements(value), [](const Select& each) { return each.getHandle().isErased(); });
}

void writeAggregate(const VnIfcAggr& value, const AttributeRow& row, VnSpfFilerBase& filer, bool separated) {
    if (separated)
        filer.wrChar(',');
    if (isUnsetWhenEmpty(row, separated) && writesNothing(value))
        return filer.wrChar('$');
    typeOf<AggregateOperations>(row).write(value, filer, row.isBinary);
}

void writeBinary(VnSpfFilerBase& filer, bool separated) {
    if (separated)
        filer.wrChar(',');
    filer.wrChar('"');
    filer.wrChar('"');
}

void writeField(const Entity& instance, const AttributeRow& row, VnSpfFilerBase& filer, bool separated) {
    const bool optional = row.mark == kOptional;
    switch (row.kind) {
    case AttributeKind::kString:
        filer.wrVnAnsiString(member<VnAnsiString>(instance, row), optional, separated);
        break;
    case AttributeKind::kGuid:
        filer.wrLimitedString(member<VnIfcGUID>(instance, row).constStr(), VnIfcGUID::kLength, false, separated);
        break;
    case AttributeKind::kReal:
        filer.wrDouble(member<double>(instance, row), optional, separated);
        break;
    case AttributeKind::kInteger:
        filer.wrInt(member<int>(instance, row), optional, separated);
        break;
    case AttributeKind::kBoolean:
        filer.wrPrimitive(member<VnIfcBoolean>(instance, row), optional, separated);
        break;
    case AttributeKind::kLogical:
        filer.wrPrimitive(member<VnIfcLogical>(instance, row), optional, separated);
        break;
    case AttributeKind::kBinary:
        writeBinary(filer, separated);
        break;
    case AttributeKind::kReference:
        filer.wrReference(member<VnDbObjectId>(instance, row), separated);
        break;
    case AttributeKind::kEnumeration: {
        const auto code = static_cast<int>(member<std::uint32_t>(instance, row));
        const char* literal = typeOf<EnumerationClass>(row).toLiteral(code);
        filer.wrEnumeration(literal ? literal : "", optional, separated);
        break;
    }
    case AttributeKind::kSelect:
        filer.wrSelect(member<VnIfcSelect>(instance, row), optional, separated);
        break;
    case AttributeKind::kAggregate:
        writeAggregate(member<VnIfcAggr>(instance, row), row, filer, separated);
        break;
    case AttributeKind::kDerived:
        filer.wrDerive(separated);
        break;
    }
}

} // namespace

VN::ErrorStatus Entity::inFields(VnSpfFilerBase* filer) {
    allTouched();
    referenceChanges();
    unsigned position = 0;
    for (const AttributeRow* row : entityClass().fields) {
        filer->field(position);
        readField(*this, *row, *filer, position++ > 0);
    }
    return VN::eOk;
}

VN::ErrorStatus Entity::outFields(VnSpfFilerBase* filer) const {
    unsigned position = 0;
    for (const AttributeRow* row : entityClass().fields) {
        filer->field(position);
        writeField(*this, *row, *filer, position++ > 0);
    }
    return VN::eOk;
}

} // namespace VN_SDAI::typed
