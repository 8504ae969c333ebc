#include <VnIfcTyped/Entity.h>

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcException.h>
#include <VnIfcCore/VnIfcInverseList.h>
#include <VnIfcCore/VnIfcModel.h>
#include <entities/AttributeAccess.h>
#include <entities/CounterParts.h>
#include <model/ModelData.h>

#include <algorithm>
#include <iterator>
#include <vector>

namespace VN_SDAI::typed {

// ---- type tests

bool Entity::isInstanceOf(const VnIfcEntityType* type) const { return type && type == *entityClass().record; }

bool Entity::isInstanceOf(const char* name) const { return name && sameName(entityClass().name, name); }

bool Entity::isKindOf(const VnIfcEntityType* type) const {
    if (!type)
        return false;
    for (VnIfcEntityType** record : entityClass().chain)
        if (*record == type)
            return true;
    return false;
}

bool Entity::isKindOf(const char* name) const {
    if (!name)
        return false;
    for (const EntityClass* type = &entityClass(); type; type = type->supertype)
        if (sameName(type->name, name))
            return true;
    return false;
}

const VnIfcGUID* Entity::globalId() const noexcept {
    const auto fields = entityClass().fields;
    return !fields.empty() && fields[0]->kind == AttributeKind::kGuid ? &member<VnIfcGUID>(*this, *fields[0]) : nullptr;
}

bool Entity::settleSelects() {
    bool isSettled = true;
    const auto settle = [&](Select& select) {
        select.settle();
        isSettled &= !select.isPending();
    };
    for (const AttributeRow* row : entityClass().fields) {
        if (row->kind == AttributeKind::kSelect)
            settle(member<Select>(*this, *row));
        if (row->kind != AttributeKind::kAggregate)
            continue;
        const auto& aggregate = member<VnIfcAggr>(*this, *row);
        if (aggregate.elementKind() == VnTypeCodeKind::kSelect)
            for (const Select& each : SelectElements(aggregate))
                settle(const_cast<Select&>(each)); // elements are constant to hosts only
    }
    return isSettled;
}

// ---- inverse counterparts

namespace {

void enter(Entity& target, const AttributeRow& inverse, const VnDbObjectId& own) {
    if (inverse.kind == AttributeKind::kReference) {
        auto& held = member<VnDbObjectId>(target, inverse);
        if (!held.isNull() && held != own)
            target.owningModel()->data().hasRivals = true;
        held = own;
    } else
        member<VnIfcSetAggr<VnDbObjectId>>(target, inverse).add(own);
}

void leave(Entity& target, const AttributeRow& inverse, const VnDbObjectId& own) {
    if (inverse.kind != AttributeKind::kReference)
        member<VnIfcSetAggr<VnDbObjectId>>(target, inverse).remove(own);
    else if (member<VnDbObjectId>(target, inverse) == own)
        member<VnDbObjectId>(target, inverse).setNull();
}

/// Calls `act(target, row)` for each inverse member that mirrors an attribute of the class or its supertypes.
template <class Act>
void forEachCounterPart(const Entity& instance, const EntityClass& type, Act act) {
    if (type.supertype)
        forEachCounterPart(instance, *type.supertype, act);
    for (const InverseLink& link : type.links)
        forEachTarget(instance, *link.forward,
                      [&](const VnDbObjectId& target) { withInverse(target, link.targets, act); });
}

} // namespace

void Entity::setInverseCounterParts() {
    if (VnIfcModel* model = owningModel(); model && !model->data().inversesAreSet)
        model->data().inversesAreSet = true;
    forEachCounterPart(*this, entityClass(), [&](Entity& target, const InverseRow& inverse) {
        enter(target, inverse.attribute, objectId());
    });
}

bool Entity::listInverseCounterParts(VnIfcInverseList& list) const {
    forEachCounterPart(*this, entityClass(), [&](Entity& target, const InverseRow& inverse) {
        list.add(target.objectId(), target, &inverse.attribute, objectId());
    });
    return true;
}

void Entity::enterInverse(const void* inverse, const VnDbObjectId& referrer) {
    enter(*this, *static_cast<const AttributeRow*>(inverse), referrer);
}

void Entity::resetInverseCounterParts() {}

void Entity::enterCounterPart(const VnDbObjectId& target) {
    for (const EntityClass* type = &entityClass(); type; type = type->supertype)
        for (const InverseLink& link : type->links)
            forEachTarget(*this, *link.forward, [&](const VnDbObjectId& each) {
                if (each == target)
                    withInverse(each, link.targets, [&](Entity& instance, const InverseRow& inverse) {
                        enter(instance, inverse.attribute, objectId());
                    });
            });
}

void Entity::counterParts(std::vector<VnDbObjectId>& targets) const {
    for (const EntityClass* type = &entityClass(); type; type = type->supertype)
        for (const InverseLink& link : type->links)
            forEachTarget(*this, *link.forward, [&](const VnDbObjectId& target) {
                if (!target.isNull())
                    targets.push_back(target);
            });
}

void Entity::clearInverses() {
    for (const EntityClass* type = &entityClass(); type; type = type->supertype)
        for (const InverseRow& row : type->inverses)
            unset(*this, row.attribute);
}

bool Entity::forgetReferrer(const VnDbObjectId& referrer) {
    const auto isGone = [&](const VnDbObjectId& handle) {
        return referrer.isNull() ? handle.isErased() : handle == referrer;
    };
    bool isFree = false;
    for (const EntityClass* type = &entityClass(); type; type = type->supertype)
        for (const InverseRow& row : type->inverses) {
            if (row.attribute.kind == AttributeKind::kReference) {
                auto& held = member<VnDbObjectId>(*this, row.attribute);
                if (held.isNull() || !isGone(held))
                    continue;
                held.setNull();
                isFree = true;
                continue;
            }
            auto& set = member<VnIfcSetAggr<VnDbObjectId>>(*this, row.attribute);
            if (!referrer.isNull()) {
                static_cast<void>(set.remove(referrer));
                continue;
            }
            std::vector<VnDbObjectId> rest;
            std::ranges::remove_copy_if(set, std::back_inserter(rest), isGone);
            if (rest.size() < set.count())
                set.assign(std::move(rest));
        }
    return isFree;
}

void Entity::leaveInverseCounterParts() {
    forEachCounterPart(*this, entityClass(), [&](Entity& target, const InverseRow& inverse) {
        leave(target, inverse.attribute, objectId());
    });
}

} // namespace VN_SDAI::typed
