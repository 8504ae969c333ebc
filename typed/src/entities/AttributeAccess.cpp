#include <entities/AttributeAccess.h>

#include <VnIfcTyped/Fields.h>

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcException.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <entities/Members.h>

#include <string>

// Access by name goes by the same rows as reading and writing files.
namespace VN_SDAI::typed {

bool sameName(const char* declared, const char* name) noexcept {
    for (;; ++declared, ++name) {
        const auto have = static_cast<unsigned char>(*declared), asked = static_cast<unsigned char>(*name);
        if (have != asked && ((have ^ asked) != 0x20 || (have | 0x20) < 'a' || (have | 0x20) > 'z'))
            return false;
        if (have == 0)
            return true;
    }
}

const AttributeRow* findExplicit(const EntityClass& type, const char* name) noexcept {
    for (const EntityClass* each = &type; each; each = each->supertype)
        for (const AttributeRow& row : each->attributes)
            if (sameName(row.name, name))
                return &row;
    return nullptr;
}

const AttributeRow* findAttribute(const EntityClass& type, const char* name) noexcept {
    for (const EntityClass* each = &type; each; each = each->supertype) {
        for (const AttributeRow& row : each->attributes)
            if (sameName(row.name, name))
                return &row;
        for (const InverseRow& row : each->inverses)
            if (sameName(row.attribute.name, name))
                return &row.attribute;
    }
    return nullptr;
}

unsigned positionOf(const EntityClass& type, const AttributeRow& row) noexcept {
    unsigned position = 0;
    while (position < type.fields.size() && type.fields[position] != &row)
        ++position;
    return position;
}

namespace {

std::string placeOf(const Entity& instance, const char* operation) {
    const EntityClass& type = instance.entityClass();
    return std::string((*type.record)->schema()->name().view()) + "::" + type.name + "::" + operation;
}

} // namespace

void checkReadable(const Entity& instance, const char* operation) {
    const VnIfcModel* model = instance.owningModel();
    if (model && model->mode() == sdaiNoAccess)
        throw VnIfcException(VnIfcException::kAccessNotDefined, "SDAI-model access not defined",
                             placeOf(instance, operation));
}

void checkWritable(const Entity& instance, const char* operation) {
    const VnIfcModel* model = instance.owningModel();
    if (model && model->mode() != sdaiReadWrite)
        throw VnIfcException(VnIfcException::kNotReadWrite, "SDAI-model access not read-write",
                             placeOf(instance, operation));
}

VnIfcVariant valueOf(const Entity& instance, const AttributeRow& row) {
    switch (row.kind) {
    case AttributeKind::kString:
    case AttributeKind::kBinary:
        return member<VnAnsiString>(instance, row).constStr();
    case AttributeKind::kGuid:
        return member<VnIfcGUID>(instance, row);
    case AttributeKind::kReal:
        return member<double>(instance, row);
    case AttributeKind::kInteger:
        return member<int>(instance, row);
    case AttributeKind::kBoolean:
        return member<VnIfcBoolean>(instance, row);
    case AttributeKind::kLogical:
        return member<VnIfcLogical>(instance, row);
    case AttributeKind::kReference:
        return member<VnDbObjectId>(instance, row);
    case AttributeKind::kEnumeration:
        return {typeOf<EnumerationClass>(row).descriptor->value(), &member<std::uint32_t>(instance, row)};
    case AttributeKind::kSelect: {
        const VnIfcSelect* live = &member<VnIfcSelect>(instance, row);
        return {typeOf<SelectOperations>(row).selectClass->descriptors.pointer->value(), &live};
    }
    case AttributeKind::kAggregate:
        return typeOf<AggregateOperations>(row).toVariant(member<VnIfcAggr>(instance, row));
    case AttributeKind::kDerived:
        break;
    }
    return {};
}

namespace {

bool assignReference(VnDbObjectId& handle, const VnIfcVariant& value, const VnIfcModel* home) {
    VnDbObjectId converted;
    if (!value.getAs(converted) || !isAtHome(converted, home))
        return false;
    handle = converted;
    return true;
}

} // namespace

Assigned assign(Entity& instance, const AttributeRow& row, const VnIfcVariant& value) {
    const VnIfcModel* home = instance.owningModel();
    bool stored = false;
    switch (row.kind) {
    case AttributeKind::kString:
    case AttributeKind::kBinary:
        stored = value.getAs(member<VnAnsiString>(instance, row));
        break;
    case AttributeKind::kGuid:
        stored = value.getAs(member<VnIfcGUID>(instance, row));
        break;
    case AttributeKind::kReal:
        stored = value.getAs(member<double>(instance, row));
        break;
    case AttributeKind::kInteger:
        stored = value.getAs(member<int>(instance, row));
        break;
    case AttributeKind::kBoolean:
        stored = value.getAs(member<VnIfcBoolean>(instance, row));
        break;
    case AttributeKind::kLogical:
        stored = value.getAs(member<VnIfcLogical>(instance, row));
        break;
    case AttributeKind::kReference:
        stored = assignReference(member<VnDbObjectId>(instance, row), value, home);
        break;
    case AttributeKind::kEnumeration:
        return assignEnumeration(member<std::uint32_t>(instance, row), typeOf<EnumerationClass>(row), value);
    case AttributeKind::kSelect:
        stored =
            assignSelect(member<VnIfcSelect>(instance, row), *typeOf<SelectOperations>(row).selectClass, value, home);
        break;
    case AttributeKind::kAggregate:
        stored = typeOf<AggregateOperations>(row).fromVariant(member<VnIfcAggr>(instance, row), value, home);
        break;
    case AttributeKind::kDerived:
        break;
    }
    return stored ? Assigned::kYes : Assigned::kNo;
}

bool isSet(const Entity& instance, const AttributeRow& row) noexcept {
    switch (row.kind) {
    case AttributeKind::kString:
    case AttributeKind::kBinary:
        return !member<VnAnsiString>(instance, row).isUnset();
    case AttributeKind::kGuid:
        return !member<VnIfcGUID>(instance, row).isUnset();
    case AttributeKind::kReal:
        return member<double>(instance, row) == member<double>(instance, row);
    case AttributeKind::kInteger:
        return member<int>(instance, row) != Consts::VnIntUnset;
    case AttributeKind::kBoolean:
        return !member<VnIfcBoolean>(instance, row).isUnset();
    case AttributeKind::kLogical:
        return !member<VnIfcLogical>(instance, row).isUnset();
    case AttributeKind::kReference:
        return !member<VnDbObjectId>(instance, row).isNull();
    case AttributeKind::kEnumeration:
        return member<std::uint32_t>(instance, row) < typeOf<EnumerationClass>(row).literals.size();
    case AttributeKind::kSelect:
        return member<VnIfcSelect>(instance, row).isSet();
    case AttributeKind::kAggregate:
        return member<VnIfcAggr>(instance, row).count() != 0;
    case AttributeKind::kDerived:
        return false;
    }
    return false;
}

void unset(Entity& instance, const AttributeRow& row) noexcept {
    switch (row.kind) {
    case AttributeKind::kString:
    case AttributeKind::kBinary:
        member<VnAnsiString>(instance, row) = VnUnsetText;
        break;
    case AttributeKind::kGuid:
        member<VnIfcGUID>(instance, row) = VnIfcGUID();
        break;
    case AttributeKind::kReal:
        member<double>(instance, row) = Consts::VnRealUnset;
        break;
    case AttributeKind::kInteger:
        member<int>(instance, row) = Consts::VnIntUnset;
        break;
    case AttributeKind::kBoolean:
        member<VnIfcBoolean>(instance, row) = VnIfcBoolean::Unset;
        break;
    case AttributeKind::kLogical:
        member<VnIfcLogical>(instance, row) = VnIfcLogical::Unset;
        break;
    case AttributeKind::kReference:
        member<VnDbObjectId>(instance, row).setNull();
        break;
    case AttributeKind::kEnumeration:
        member<std::uint32_t>(instance, row) =
            static_cast<std::uint32_t>(typeOf<EnumerationClass>(row).literals.size());
        break;
    case AttributeKind::kSelect:
        member<VnIfcSelect>(instance, row).nullify();
        break;
    case AttributeKind::kAggregate:
        member<VnIfcAggr>(instance, row).clear();
        break;
    case AttributeKind::kDerived:
        break;
    }
}

bool Entity::getAttr(const VnAnsiString& name, VnIfcVariant& value) const {
    checkReadable(*this, "getAttr");
    const AttributeRow* row = findAttribute(entityClass(), name.constStr());
    if (!row)
        return false;
    value = valueOf(*this, *row);
    return true;
}

bool Entity::putAttr(const VnAnsiString& name, const VnIfcVariant& value) {
    checkWritable(*this, "putAttr");
    const AttributeRow* row = findExplicit(entityClass(), name.constStr());
    if (!row || isBeyondFile(positionOf(entityClass(), *row)))
        return false;
    referenceChanges();
    const Assigned assigned = assign(*this, *row, value);
    if (assigned != Assigned::kNo)
        touched(positionOf(entityClass(), *row));
    return assigned == Assigned::kYes;
}

bool Entity::testAttr(const VnAnsiString& name) const {
    checkReadable(*this, "testAttr");
    const AttributeRow* row = findExplicit(entityClass(), name.constStr());
    return row && isSet(*this, *row);
}

void Entity::unsetAttr(const VnAnsiString& name) {
    checkWritable(*this, "unsetAttr");
    const AttributeRow* row = findExplicit(entityClass(), name.constStr());
    if (!row || isBeyondFile(positionOf(entityClass(), *row)))
        return;
    referenceChanges();
    unset(*this, *row);
    touched(positionOf(entityClass(), *row));
}

// ---- by row

bool putField(Entity& instance, unsigned position, const VnIfcVariant& value) {
    checkWritable(instance, "putField");
    const Assigned assigned = assign(instance, *instance.entityClass().fields[position], value);
    if (assigned != Assigned::kNo)
        instance.fieldChanged(position);
    return assigned == Assigned::kYes;
}

void unsetField(Entity& instance, unsigned position) {
    checkWritable(instance, "unsetField");
    unset(instance, *instance.entityClass().fields[position]);
    instance.fieldChanged(position);
}

bool testField(const Entity& instance, const AttributeRow& row) { return isSet(instance, row); }

const SelectClass& selectClassOf(const AttributeRow& row) noexcept {
    return *typeOf<SelectOperations>(row).selectClass;
}

const EnumerationClass& enumerationClassOf(const AttributeRow& row) noexcept { return typeOf<EnumerationClass>(row); }

} // namespace VN_SDAI::typed
