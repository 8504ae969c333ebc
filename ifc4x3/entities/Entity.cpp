#include <IFC4X3/Entity.h>

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcException.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcSelect.h>
#include <entities/Members.h>

namespace IFC4X3 {

using namespace VN_SDAI;

// ---- type tests --------------------------------------------------------------------------------------------------------

bool Entity::isInstanceOf(const VnIfcEntityType* type) const { return type && type == *entityClass().record; }

bool Entity::isInstanceOf(const char* name) const { return name && _stricmp(entityClass().name, name) == 0; }

bool Entity::isKindOf(const VnIfcEntityType* type) const {
    if (!type) return false;
    for (VnIfcEntityType** record : entityClass().chain)
        if (*record == type) return true;
    return false;
}

bool Entity::isKindOf(const char* name) const {
    if (!name) return false;
    for (const EntityClass* type = &entityClass(); type; type = type->supertype)
        if (_stricmp(type->name, name) == 0) return true;
    return false;
}

const VnIfcGUID* Entity::globalId() const noexcept {
    const auto fields = entityClass().fields;
    return !fields.empty() && fields[0]->kind == AttributeKind::kGuid ? &member<VnIfcGUID>(*this, *fields[0]) : nullptr;
}

// ---- inverse counterparts ----------------------------------------------------------------------------------------------

namespace {

/// Calls `act(instance, row)` for the inverse member of a target in which the attribute is mirrored, if there is one.
template <class Act>
void withInverse(const VnDbObjectId& target, std::span<const InverseTarget> candidates, Act act) {
    VnIfcEntityBase* instance = target.openObject(kForWrite, false);
    if (!instance) return;
    for (const InverseTarget& candidate : candidates) {
        if (!instance->isKindOf(*candidate.entity)) continue;
        act(static_cast<Entity&>(*instance), candidate.inverse->attribute);
        break;
    }
    target.close();
}

void enter(Entity& target, const AttributeRow& inverse, const VnDbObjectId& own) {
    if (inverse.kind == AttributeKind::kReference) member<VnDbObjectId>(target, inverse) = own;
    else member<VnIfcSetAggr<VnDbObjectId>>(target, inverse).add(own);
}

void leave(Entity& target, const AttributeRow& inverse, const VnDbObjectId& own) {
    if (inverse.kind != AttributeKind::kReference) member<VnIfcSetAggr<VnDbObjectId>>(target, inverse).remove(own);
    else if (member<VnDbObjectId>(target, inverse) == own) member<VnDbObjectId>(target, inverse).setNull();
}

/// The forward attribute's targets, whatever holds them.
template <class Visit>
void forEachTarget(const Entity& instance, const AttributeRow& row, Visit visit) {
    switch (row.kind) {
        case AttributeKind::kReference: visit(member<VnDbObjectId>(instance, row)); break;
        case AttributeKind::kSelect: visit(member<VnIfcSelect>(instance, row).getHandle()); break;
        case AttributeKind::kAggregate: {
            const auto& aggregate = member<VnIfcAggr>(instance, row);
            if (aggregate.elementKind() == VnTypeCodeKind::kEntity) {
                for (const VnDbObjectId& handle : static_cast<const VnIfcAggrOf<VnDbObjectId>&>(aggregate)) visit(handle);
            } else if (aggregate.elementKind() == VnTypeCodeKind::kSelect) {
                // All select classes are of one size.
                const auto* select = static_cast<const char*>(aggregate.imp().data());
                for (std::uint32_t i = 0; i < aggregate.count(); ++i, select += aggregate.imp().elementSize())
                    visit(reinterpret_cast<const VnIfcSelect*>(select)->getHandle());
            }
            break;
        }
        default: break;
    }
}

/// Calls `act(target, row)` for each inverse member that mirrors an attribute of the class or its supertypes.
template <class Act>
void forEachCounterPart(const Entity& instance, const EntityClass& type, Act act) {
    if (type.supertype) forEachCounterPart(instance, *type.supertype, act);
    for (const InverseLink& link : type.links)
        forEachTarget(instance, *link.forward, [&](const VnDbObjectId& target) { withInverse(target, link.targets, act); });
}

}  // namespace

void Entity::setInverseCounterParts() {
    forEachCounterPart(*this, entityClass(),
                       [&](Entity& target, const AttributeRow& inverse) { enter(target, inverse, objectId()); });
}

void Entity::resetInverseCounterParts() {}

void Entity::leaveInverseCounterParts() {
    forEachCounterPart(*this, entityClass(),
                       [&](Entity& target, const AttributeRow& inverse) { leave(target, inverse, objectId()); });
}

}  // namespace IFC4X3
