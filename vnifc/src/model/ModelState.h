#pragma once
#include "ClassInfo.h"
#include "Population.h"
#include "Referrers.h"

#include <vnifc/Model.h>

#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcSelect.h>
#include <VnIfcTyped/Fields.h>

#include <memory>
#include <optional>
#include <unordered_map>

namespace vnifc::detail {

class ProjectUnits;

/// What stands behind a Model, and behind each instance of it: the core's model and what was derived from it.
struct ModelState {
    ModelState(VN_SDAI::VnIfcFile opened, std::vector<Finding> noticed);
    ~ModelState();
    ModelState(const ModelState&) = delete;
    ModelState& operator=(const ModelState&) = delete;

    VN_SDAI::VnIfcModel& model() noexcept { return file.model(); }
    const VN_SDAI::VnIfcSchema& schema() noexcept { return *file.model().schema(); }
    Instance wrap(const VN_SDAI::VnIfcEntityBase& instance) noexcept { return {instance.objectId(), this}; }

    /// Null for an instance without a class.
    const ClassInfo* classOf(const VN_SDAI::VnIfcEntityBase& instance) {
        const VN_SDAI::VnIfcEntityType* type = instance.getInstanceType();
        return type ? &classOf(*type) : nullptr;
    }
    const ClassInfo& classOf(const VN_SDAI::VnIfcEntityType& type) {
        Recent& recent = recents[(reinterpret_cast<std::uintptr_t>(&type) >> 6) % recents.size()];
        return recent.type == &type ? *recent.info : lookUp(type, recent);
    }
    /// The record of an entity; null when the release does not have it.
    const VN_SDAI::VnIfcEntityType* type(Entity entity) const noexcept {
        return types[static_cast<std::size_t>(entity)];
    }
    bool is(const VN_SDAI::VnIfcEntityBase& instance, Entity entity) const { return instance.isKindOf(type(entity)); }

    // ---- attributes by name
    const VN_SDAI::typed::AttributeRow* row(const VN_SDAI::VnIfcEntityBase& instance, Name name) {
        const ClassInfo* info = classOf(instance);
        return info ? info->row(name) : nullptr;
    }
    bool has(const VN_SDAI::VnIfcEntityBase& instance, Name name) { return row(instance, name) != nullptr; }
    Value value(const VN_SDAI::VnIfcEntityBase& instance, Name name);
    /// UTF-8; empty where there is no text.
    std::string text(const VN_SDAI::VnIfcEntityBase& instance, Name name);
    /// As it stands in memory: exchange text; empty where unset.
    std::string_view rawText(const VN_SDAI::VnIfcEntityBase& instance, Name name);
    std::optional<double> number(const VN_SDAI::VnIfcEntityBase& instance, Name name);
    /// The bare literal of an enumeration; empty where unset.
    std::string_view literal(const VN_SDAI::VnIfcEntityBase& instance, Name name);
    /// The one instance that an attribute refers to; null when there is none.
    VN_SDAI::VnIfcEntityBase* target(const VN_SDAI::VnIfcEntityBase& instance, Name name);
    /// Calls `visit(VnIfcEntityBase&)` for all instances that an explicit or inverse attribute refers to and that are
    /// there.
    template <class Visit>
    void forEachTarget(const VN_SDAI::VnIfcEntityBase& instance, Name name, Visit visit);
    std::vector<VN_SDAI::VnIfcEntityBase*> targets(const VN_SDAI::VnIfcEntityBase& instance, Name name);

    // ---- what is derived from the instances
    void needInverses();
    const ProjectUnits& units();
    /// To be called after a change of what an instance refers to.
    void referencesChanged() noexcept { referrers.drop(); }
    void changed(const ClassInfo& info) noexcept;
    void created(const VN_SDAI::VnDbObjectId& handle);
    void dropAll() noexcept;

    VN_SDAI::VnIfcFile file;
    std::vector<Finding> findings;
    Population population;
    Referrers referrers;
    bool hasInverses = false;
    std::unique_ptr<ProjectUnits> projectUnits;

private:
    struct Recent {
        const VN_SDAI::VnIfcEntityType* type = nullptr;
        const ClassInfo* info = nullptr;
    };
    const ClassInfo& lookUp(const VN_SDAI::VnIfcEntityType& type, Recent& recent);

    std::array<const VN_SDAI::VnIfcEntityType*, kEntityCount> types{};
    std::array<Recent, 256> recents{};
    std::unordered_map<const VN_SDAI::VnIfcEntityType*, std::unique_ptr<ClassInfo>> classes;
};

/// Calls `visit(const VnDbObjectId&)` for each handle in an aggregate, however deep.
template <class Visit>
void forEachHandleIn(const VN_SDAI::VnIfcAggr& aggregate, Visit& visit) {
    using namespace VN_SDAI;
    const std::uint32_t count = aggregate.count();
    const auto* element = static_cast<const char*>(aggregate.imp().data());
    switch (aggregate.elementKind()) {
    case VnTypeCodeKind::kEntity:
        for (const VnDbObjectId& handle : static_cast<const VnIfcAggrOf<VnDbObjectId>&>(aggregate))
            visit(handle);
        break;
    case VnTypeCodeKind::kSelect:
        for (std::uint32_t i = 0; i < count; ++i, element += aggregate.imp().elementSize()) {
            const auto& select = *reinterpret_cast<const VnIfcSelect*>(element);
            if (select.kind() == VnTypeCodeKind::kEntity)
                visit(select.getHandle());
            else if (const VnIfcAggr* inner = select.getAggr())
                forEachHandleIn(*inner, visit);
        }
        break;
    case VnTypeCodeKind::kAggregation:
        for (std::uint32_t i = 0; i < count; ++i, element += aggregate.imp().elementSize())
            forEachHandleIn(*reinterpret_cast<const VnIfcAggr*>(element), visit);
        break;
    default:
        break;
    }
}

/// Calls `visit(const VnDbObjectId&)` for each handle that an attribute holds; null ones included.
template <class Visit>
void forEachHandle(const VN_SDAI::VnIfcEntityBase& instance, const VN_SDAI::typed::AttributeRow& row, Visit& visit) {
    using namespace VN_SDAI;
    switch (row.kind) {
    case typed::AttributeKind::kReference:
        visit(typed::fieldOf<VnDbObjectId>(instance, row));
        break;
    case typed::AttributeKind::kSelect: {
        const auto& select = typed::fieldOf<VnIfcSelect>(instance, row);
        if (select.kind() == VnTypeCodeKind::kEntity)
            visit(select.getHandle());
        else if (const VnIfcAggr* aggregate = select.getAggr())
            forEachHandleIn(*aggregate, visit);
        break;
    }
    case typed::AttributeKind::kAggregate:
        forEachHandleIn(typed::fieldOf<VnIfcAggr>(instance, row), visit);
        break;
    default:
        break;
    }
}

template <class Visit>
void ModelState::forEachTarget(const VN_SDAI::VnIfcEntityBase& instance, Name name, Visit visit) {
    const VN_SDAI::typed::AttributeRow* found = row(instance, name);
    if (!found)
        return;
    const auto open = [&](const VN_SDAI::VnDbObjectId& handle) {
        if (VN_SDAI::VnIfcEntityBase* target = handle.openObject())
            visit(*target);
    };
    forEachHandle(instance, *found, open);
}

/// The instance of a handle given by a user. Throws NotFound when there is none.
VN_SDAI::VnIfcEntityBase& opened(const Instance& instance);
/// The model that it is in; throws as opened.
inline ModelState& stateOf(const Instance& instance) {
    opened(instance);
    return *instance.state();
}

} // namespace vnifc::detail
