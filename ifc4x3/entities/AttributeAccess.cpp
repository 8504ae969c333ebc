#include <entities/AttributeAccess.h>

#include <IFC4X3/Select.h>

#include <VnIfcCore/VnIfcException.h>
#include <VnIfcCore/VnIfcModel.h>
#include <entities/Members.h>

#include <string>

// Access by name. Testing and unsetting go by the same rows as reading and writing files.
namespace IFC4X3 {

using namespace VN_SDAI;

const AttributeRow* findExplicit(const EntityClass& type, const char* name) noexcept {
    for (const EntityClass* each = &type; each; each = each->supertype)
        for (const AttributeRow& row : each->attributes)
            if (_stricmp(row.name, name) == 0) return &row;
    return nullptr;
}

const AttributeRow* findAttribute(const EntityClass& type, const char* name) noexcept {
    for (const EntityClass* each = &type; each; each = each->supertype) {
        for (const AttributeRow& row : each->attributes)
            if (_stricmp(row.name, name) == 0) return &row;
        for (const InverseRow& row : each->inverses)
            if (_stricmp(row.attribute.name, name) == 0) return &row.attribute;
    }
    return nullptr;
}

unsigned positionOf(const EntityClass& type, const AttributeRow& row) noexcept {
    unsigned position = 0;
    while (position < type.fields.size() && type.fields[position] != &row) ++position;
    return position;
}

namespace {

std::string placeOf(const Entity& instance, const char* operation) {
    return std::string("IFC4X3::") + instance.entityClass().name + "::" + operation;
}

}  // namespace

void checkReadable(const Entity& instance, const char* operation) {
    const VnIfcModel* model = instance.owningModel();
    if (model && model->mode() == sdaiNoAccess)
        throw VnIfcException(VnIfcException::kAccessNotDefined, "SDAI-model access not defined", placeOf(instance, operation));
}

void checkWritable(const Entity& instance, const char* operation) {
    const VnIfcModel* model = instance.owningModel();
    if (model && model->mode() != sdaiReadWrite)
        throw VnIfcException(VnIfcException::kNotReadWrite, "SDAI-model access not read-write", placeOf(instance, operation));
}

bool isSet(const Entity& instance, const AttributeRow& row) noexcept {
    switch (row.kind) {
        case AttributeKind::kString:
        case AttributeKind::kBinary: return !member<VnAnsiString>(instance, row).isUnset();
        case AttributeKind::kGuid: return !member<VnIfcGUID>(instance, row).isUnset();
        case AttributeKind::kReal: return member<double>(instance, row) == member<double>(instance, row);
        case AttributeKind::kInteger: return member<int>(instance, row) != Consts::VnIntUnset;
        case AttributeKind::kBoolean: return !member<VnIfcBoolean>(instance, row).isUnset();
        case AttributeKind::kLogical: return !member<VnIfcLogical>(instance, row).isUnset();
        case AttributeKind::kReference: return !member<VnDbObjectId>(instance, row).isNull();
        case AttributeKind::kEnumeration:
            return member<std::uint32_t>(instance, row) != typeOf<EnumerationClass>(row).literals.size();
        case AttributeKind::kSelect: return member<VnIfcSelect>(instance, row).isSet();
        case AttributeKind::kAggregate: return member<VnIfcAggr>(instance, row).count() != 0;
        case AttributeKind::kDerived: return false;
    }
    return false;
}

void unset(Entity& instance, const AttributeRow& row) noexcept {
    switch (row.kind) {
        case AttributeKind::kString:
        case AttributeKind::kBinary: member<VnAnsiString>(instance, row) = VnUnsetText; break;
        case AttributeKind::kGuid: member<VnIfcGUID>(instance, row) = VnIfcGUID(); break;
        case AttributeKind::kReal: member<double>(instance, row) = Consts::VnRealUnset; break;
        case AttributeKind::kInteger: member<int>(instance, row) = Consts::VnIntUnset; break;
        case AttributeKind::kBoolean: member<VnIfcBoolean>(instance, row) = VnIfcBoolean::Unset; break;
        case AttributeKind::kLogical: member<VnIfcLogical>(instance, row) = VnIfcLogical::Unset; break;
        case AttributeKind::kReference: member<VnDbObjectId>(instance, row).setNull(); break;
        case AttributeKind::kEnumeration:
            member<std::uint32_t>(instance, row) = static_cast<std::uint32_t>(typeOf<EnumerationClass>(row).literals.size());
            break;
        case AttributeKind::kSelect: member<VnIfcSelect>(instance, row).nullify(); break;
        case AttributeKind::kAggregate: member<VnIfcAggr>(instance, row).clear(); break;
        case AttributeKind::kDerived: break;
    }
}

bool Entity::testAttr(const VnAnsiString& name) const {
    checkReadable(*this, "testAttr");
    const AttributeRow* row = findExplicit(entityClass(), name.constStr());
    return row && isSet(*this, *row);
}

void Entity::unsetAttr(const VnAnsiString& name) {
    checkWritable(*this, "unsetAttr");
    const AttributeRow* row = findExplicit(entityClass(), name.constStr());
    if (!row) return;
    unset(*this, *row);
    touched(positionOf(entityClass(), *row));
}

}  // namespace IFC4X3
