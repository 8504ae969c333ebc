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

void enter(const VnDbObjectId& own, const VnDbObjectId& target, std::span<const InverseTarget> targets) {
    VnIfcEntityBase* instance = target.openObject(kForWrite, false);
    if (!instance) return;
    for (const InverseTarget& candidate : targets) {
        if (!instance->isKindOf(*candidate.entity)) continue;
        const AttributeRow& row = candidate.inverse->attribute;
        auto& entity = static_cast<Entity&>(*instance);
        if (row.kind == AttributeKind::kReference) member<VnDbObjectId>(entity, row) = own;
        else member<VnIfcSetAggr<VnDbObjectId>>(entity, row).add(own);
        break;
    }
    target.close();
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
                // Every select class adds the same to its base, so that their arrays have the same stride.
                const auto* select = static_cast<const char*>(aggregate.imp().data());
                for (std::uint32_t i = 0; i < aggregate.count(); ++i, select += aggregate.imp().elementSize())
                    visit(reinterpret_cast<const VnIfcSelect*>(select)->getHandle());
            }
            break;
        }
        default: break;
    }
}

void setCounterParts(const Entity& instance, const EntityClass& type, const VnDbObjectId& own) {
    if (type.supertype) setCounterParts(instance, *type.supertype, own);
    for (const InverseLink& link : type.links)
        forEachTarget(instance, *link.forward, [&](const VnDbObjectId& target) {
            if (!target.isNull()) enter(own, target, link.targets);
        });
}

}  // namespace

void Entity::setInverseCounterParts() { setCounterParts(*this, entityClass(), objectId()); }

void Entity::resetInverseCounterParts() {}

}  // namespace IFC4X3
