#include "../exchange/SpfInstanceWriter.h"
#include "ModelData.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnSpfFilerBase.h>

#include <algorithm>
#include <stdexcept>
#include <string>

namespace VN_SDAI {

namespace {

constexpr std::size_t kBlock = 1000; // slots

} // namespace

VnIfcModel* VnIfcInstanceSlot::model() const noexcept { return SlotTable::modelOf(this); }

// ---- Data

VnIfcInstanceSlot* VnIfcModel::Data::danglingSlot(std::uint64_t number) {
    const std::lock_guard lock(danglingMutex);
    if (VnIfcInstanceSlot* slot = dangling.find(number))
        return slot;
    return dangling.insert(number);
}

VnIfcInstanceSlot* VnIfcModel::Data::slotForInstance(std::uint64_t number) { return slots.insert(number); }

std::uint64_t VnIfcModel::Data::nextNumber() noexcept {
    const std::uint64_t largest = std::max(slots.largest(), dangling.largest());
    if (largest != UINT64_MAX)
        return largest + 1;
    while (slots.find(firstFree) || dangling.find(firstFree))
        ++firstFree;
    return firstFree;
}

void VnIfcModel::Data::belongTo(VnIfcModel* owner) noexcept {
    model = owner;
    slots.belongTo(owner);
    dangling.belongTo(owner);
}

void VnIfcModel::Data::destroyInstances() noexcept {
    slots.forEachSlot([](const VnIfcInstanceSlot* slot) {
        VnIfcEntityBase* instance = slot->object();
        if (!instance)
            return;
        if (slot->has(VnIfcInstanceSlot::kInArena))
            instance->~VnIfcEntityBase();
        else
            delete instance;
    });
}

SlotRuns VnIfcModel::Data::runs(std::size_t block) {
    const std::lock_guard lock(orderMutex);
    return {slots.runs(), block};
}

// ---- Life

VnIfcModel::VnIfcModel(const VnIfcSchema* schema) : m_data(std::make_unique<Data>(this, schema)) {
    if (!schema)
        throw std::invalid_argument("a model needs a schema; is its module initialised?");
}

VnIfcModel::VnIfcModel(WithoutSchema) : m_data(std::make_unique<Data>(this, nullptr)) {}

VnIfcModel::~VnIfcModel() {
    if (m_data)
        m_data->destroyInstances();
}

VnIfcModel::VnIfcModel(VnIfcModel&& other) noexcept : m_mode(other.m_mode), m_data(std::move(other.m_data)) {
    if (m_data)
        m_data->belongTo(this);
}

VnIfcModel& VnIfcModel::operator=(VnIfcModel&& other) noexcept {
    if (this == &other)
        return *this;
    if (m_data)
        m_data->destroyInstances();
    m_mode = other.m_mode;
    m_data = std::move(other.m_data);
    if (m_data)
        m_data->belongTo(this);
    return *this;
}

void VnIfcModel::clear() {
    m_data->destroyInstances();
    m_data = std::make_unique<Data>(this, m_data->schema);
}

const VnIfcSchema* VnIfcModel::schema() const noexcept { return m_data->schema; }
VnIfcHeader& VnIfcModel::header() noexcept { return m_data->header; }
const VnIfcHeader& VnIfcModel::header() const noexcept { return m_data->header; }

// ---- Instances

namespace {

/// Keywords, places in the parameter list and types of a class are those of its own schema.
void refuseStranger(const VnIfcEntityBase* instance, const VnIfcSchema& schema) {
    if (!instance)
        throw std::invalid_argument("a model takes no null instance");
    if (dynamic_cast<const VnIfcForeignInstance*>(instance))
        return;
    const VnIfcEntityType* type = instance->getInstanceType();
    if (!type)
        throw std::invalid_argument("the schema of the instance's class is not initialised");
    if (type->schema() != &schema)
        throw std::invalid_argument(std::string("the class of ")
                                        .append(type->schema()->name().view())
                                        .append("::")
                                        .append(type->name().view())
                                        .append(" is none of the model's schema ")
                                        .append(schema.name().view()));
}

} // namespace

void VnIfcModel::adopt(VnIfcInstanceSlot* slot, VnIfcEntityBase* instance, bool inArena) const noexcept {
    instance->m_id = VnDbObjectId(slot);
    slot->store(reinterpret_cast<std::uintptr_t>(instance) |
                (inArena ? std::uintptr_t{VnIfcInstanceSlot::kInArena} : 0));
}

VnDbObjectId VnIfcModel::create(std::string_view entity) {
    const VnIfcEntityType* type = m_data->schema->entity(entity);
    if (!type || type->isAbstract())
        return {};
    return append(std::unique_ptr<VnIfcEntityBase>(type->create()));
}

VnDbObjectId VnIfcModel::append(std::unique_ptr<VnIfcEntityBase> instance) {
    refuseStranger(instance.get(), *m_data->schema);
    VnIfcInstanceSlot* slot = m_data->slotForInstance(m_data->nextNumber());
    adopt(slot, instance.release(), false);
    ++m_data->count;
    return VnDbObjectId(slot);
}

/// Takes a referrer, or with null all erased instances, out of the inverse attributes of targets.
void VnIfcModel::Data::forget(std::vector<VnDbObjectId> targets, const VnDbObjectId& referrer) {
    std::ranges::sort(targets, {}, &VnDbObjectId::slot);
    targets.erase(std::unique(targets.begin(), targets.end()), targets.end());
    std::vector<VnDbObjectId> free;
    for (const VnDbObjectId& target : targets)
        if (VnIfcEntityBase* instance = target.openObject(kForWrite); instance && instance->forgetReferrer(referrer))
            free.push_back(target);
    if (free.empty() || !hasRivals)
        return;
    // Somebody else may have a claim; the last one has it, as when all are set.
    model->forEach([&](VnIfcEntityBase& instance) {
        for (const VnDbObjectId& target : free)
            instance.enterCounterPart(target);
    });
}

bool VnIfcModel::erase(const VnDbObjectId& handle) {
    if (handle.isNull() || handle.model() != this || !handle.openObject())
        return false;
    std::vector<VnDbObjectId> targets;
    handle.openObject()->counterParts(targets);
    if (const auto former = m_data->formerCounterParts.extract(handle.slot()))
        targets.insert(targets.end(), former.mapped().begin(), former.mapped().end());
    handle.slot()->set(VnIfcInstanceSlot::kErased);
    --m_data->count;
    m_data->forget(std::move(targets), handle);
    return true;
}

std::size_t VnIfcModel::erase(std::span<const VnDbObjectId> handles) {
    std::vector<VnDbObjectId> targets;
    std::size_t erased = 0;
    for (const VnDbObjectId& handle : handles) {
        if (handle.isNull() || handle.model() != this || !handle.openObject())
            continue;
        handle.openObject()->counterParts(targets);
        if (const auto former = m_data->formerCounterParts.extract(handle.slot()))
            targets.insert(targets.end(), former.mapped().begin(), former.mapped().end());
        handle.slot()->set(VnIfcInstanceSlot::kErased);
        ++erased;
    }
    m_data->count -= erased;
    m_data->forget(std::move(targets), VnDbObjectId());
    return erased;
}

std::size_t VnIfcModel::count() const noexcept { return m_data->count; }

VnDbObjectId VnIfcModel::find(std::uint64_t number) const noexcept {
    VnIfcInstanceSlot* slot = m_data->slots.find(number);
    return slot && VnDbObjectId(slot).openObject() ? VnDbObjectId(slot) : VnDbObjectId();
}

VnDbObjectId VnIfcModel::findByGlobalId(const VnIfcGUID& globalId) const {
    const SlotRuns runs = m_data->runs(kBlock);
    VnDbObjectId found;
    for (std::size_t i = 0; i < runs.blocks() && found.isNull(); ++i)
        runs.forEach(i, [&](VnIfcInstanceSlot& slot) {
            const VnIfcGUID* own = found.isNull() ? slot.object()->globalId() : nullptr;
            if (own && *own == globalId)
                found = VnDbObjectId(&slot);
        });
    return found;
}

void VnIfcModel::forEach(const std::function<void(VnIfcEntityBase&)>& visit) const {
    const SlotRuns runs = m_data->runs(kBlock);
    const bool mayComeBetween = m_data->slots.largest() == UINT64_MAX;
    if (!mayComeBetween) {
        for (std::size_t i = 0; i < runs.blocks(); ++i)
            runs.forEach(i, [&](const VnIfcInstanceSlot& slot) { visit(*slot.object()); });
        return;
    }
    // What visitors create takes free numbers, among those that are still to come.
    std::vector<VnIfcInstanceSlot*> slots;
    for (std::size_t i = 0; i < runs.blocks(); ++i)
        runs.forEach(i, [&](VnIfcInstanceSlot& slot) { slots.push_back(&slot); });
    for (VnIfcInstanceSlot* slot : slots)
        if (VnIfcEntityBase* instance = VnDbObjectId(slot).openObject())
            visit(*instance);
}

void VnIfcModel::forEach(const VnIfcEntityType* type, bool withSubtypes,
                         const std::function<void(VnIfcEntityBase&)>& visit) const {
    forEach([&](VnIfcEntityBase& instance) {
        if (withSubtypes ? instance.isKindOf(type) : instance.isInstanceOf(type))
            visit(instance);
    });
}

std::vector<VnDbObjectId> VnIfcModel::instances() const {
    std::vector<VnDbObjectId> result;
    result.reserve(count());
    const SlotRuns runs = m_data->runs(kBlock);
    for (std::size_t i = 0; i < runs.blocks(); ++i)
        runs.forEach(i, [&](VnIfcInstanceSlot& slot) { result.emplace_back(&slot); });
    return result;
}

std::vector<VnDbObjectId> VnIfcModel::instancesOf(const VnIfcEntityType* type, bool withSubtypes) const {
    std::vector<VnDbObjectId> result;
    forEach(type, withSubtypes, [&](const VnIfcEntityBase& instance) { result.push_back(instance.objectId()); });
    return result;
}

std::string VnIfcModel::instanceText(const VnDbObjectId& handle) const {
    if (!handle.openObject())
        return {};
    SpfInstanceWriter writer(*m_data);
    writer.write(handle.slot());
    std::string_view text = writer.text();
    text.remove_suffix(text.ends_with('\n') ? 1 : 0);
    return std::string(text);
}

bool VnIfcModel::place(const VnDbObjectId& handle, std::uint64_t& line, std::uint64_t& column) const noexcept {
    const auto found = std::ranges::lower_bound(m_data->places, handle.number(), {}, &Data::Place::number);
    if (found == m_data->places.end() || found->number != handle.number())
        return false;
    line = found->line;
    column = found->column;
    return true;
}

// ---- VnIfcEntityBase

namespace {

const KeptParameters* keptOf(const VnDbObjectId& handle) noexcept {
    if (handle.isNull() || !handle.slot()->has(VnIfcInstanceSlot::kHasKept))
        return nullptr;
    const auto& kept = handle.model()->data().kept;
    const auto found = kept.find(handle.slot());
    return found == kept.end() ? nullptr : &found->second;
}

} // namespace

bool VnIfcEntityBase::keepsText(unsigned position) const noexcept { return !keptText(position).empty(); }

std::string_view VnIfcEntityBase::keptText(unsigned position) const noexcept {
    const KeptParameters* kept = keptOf(m_id);
    const KeptParameters::Parameter* parameter = kept ? kept->find(position) : nullptr;
    return parameter && !parameter->fits ? std::string_view(parameter->text) : std::string_view();
}

std::vector<std::pair<unsigned, std::string_view>> VnIfcEntityBase::keptTexts() const {
    std::vector<std::pair<unsigned, std::string_view>> texts;
    const KeptParameters* kept = keptOf(m_id);
    if (!kept)
        return texts;
    for (const KeptParameters::Parameter& parameter : kept->parameters)
        if (!parameter.fits)
            texts.emplace_back(parameter.position, parameter.text);
    std::ranges::sort(texts);
    if (!kept->surplus.empty()) {
        SpfFieldWriter writer;
        writer.write(*this);
        texts.emplace_back(writer.count(), kept->surplus);
    }
    return texts;
}

bool VnIfcEntityBase::isBeyondFile(unsigned position) const noexcept {
    if (m_id.isNull() || !m_id.slot()->has(VnIfcInstanceSlot::kHasKept))
        return false;
    const VnIfcModel::Data& data = owningModel()->data();
    const auto found = data.kept.find(m_id.slot());
    return data.isOfOtherRelease && found != data.kept.end() && found->second.absentFrom &&
           position >= *found->second.absentFrom;
}

void VnIfcEntityBase::rememberCounterParts() {
    VnIfcModel::Data& data = owningModel()->data();
    if (!data.inversesAreSet || data.formerCounterParts.contains(m_id.slot()))
        return;
    std::vector<VnDbObjectId> targets;
    counterParts(targets);
    if (!targets.empty())
        data.formerCounterParts.emplace(m_id.slot(), std::move(targets));
}

void VnIfcEntityBase::dropKept(unsigned position) noexcept {
    VnIfcModel::Data& data = owningModel()->data();
    const auto found = data.kept.find(m_id.slot());
    if (found == data.kept.end())
        return;
    found->second.drop(position);
    if (!found->second.isEmpty())
        return;
    data.kept.erase(found);
    m_id.slot()->reset(VnIfcInstanceSlot::kHasKept);
}

void VnIfcEntityBase::dropAllKept() noexcept {
    VnIfcModel::Data& data = owningModel()->data();
    const auto found = data.kept.find(m_id.slot());
    if (found == data.kept.end())
        return;
    found->second.parameters.clear();
    found->second.absentFrom.reset();
    if (!found->second.isEmpty())
        return; // what follows the parameters belongs to none of them
    data.kept.erase(found);
    m_id.slot()->reset(VnIfcInstanceSlot::kHasKept);
}

} // namespace VN_SDAI
