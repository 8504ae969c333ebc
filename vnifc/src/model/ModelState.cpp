#include "ModelState.h"

#include "../meaning/ProjectUnits.h"
#include "Reading.h"

#include <VnIfcCore/VnIfcText.h>

namespace vnifc::detail {

using namespace VN_SDAI;
using typed::AttributeKind;
using typed::AttributeRow;
using typed::fieldOf;

ModelState::ModelState(VnIfcFile opened, std::vector<Finding> noticed)
    : file(std::move(opened)), findings(std::move(noticed)) {
    for (std::size_t i = 0; i < kEntityCount; ++i)
        types[i] = schema().entity(kEntityNames[i]);
}

ModelState::~ModelState() = default;

const ClassInfo& ModelState::lookUp(const VnIfcEntityType& type, Recent& recent) {
    std::unique_ptr<ClassInfo>& info = classes[&type];
    if (!info)
        info = std::make_unique<ClassInfo>(type);
    recent = {&type, info.get()};
    return *info;
}

Value ModelState::value(const VnIfcEntityBase& instance, Name name) {
    const ClassInfo* info = classOf(instance);
    const AttributeRow* found = info ? info->row(name) : nullptr;
    return found ? valueOf(*this, instance, *found, info->infoOf(*found)) : Value();
}

std::string_view ModelState::rawText(const VnIfcEntityBase& instance, Name name) {
    const AttributeRow* found = row(instance, name);
    if (!found || found->kind != AttributeKind::kString)
        return {};
    const auto& text = fieldOf<VnAnsiString>(instance, *found);
    return text.isUnset() ? std::string_view() : text.view();
}

std::string ModelState::text(const VnIfcEntityBase& instance, Name name) {
    const AttributeRow* found = row(instance, name);
    if (found && found->kind != AttributeKind::kString)
        return value(instance, name).toString();
    std::string buffer;
    return std::string(vnDecodeText(rawText(instance, name), buffer));
}

std::optional<double> ModelState::number(const VnIfcEntityBase& instance, Name name) {
    return value(instance, name).get<double>();
}

std::string_view ModelState::literal(const VnIfcEntityBase& instance, Name name) {
    const AttributeRow* found = row(instance, name);
    if (!found || found->kind != AttributeKind::kEnumeration)
        return {};
    const char* text =
        typed::enumerationClassOf(*found).toLiteral(static_cast<int>(fieldOf<std::uint32_t>(instance, *found)));
    return text ? text : std::string_view();
}

VnIfcEntityBase* ModelState::target(const VnIfcEntityBase& instance, Name name) {
    VnIfcEntityBase* found = nullptr;
    forEachTarget(instance, name, [&](VnIfcEntityBase& each) { found = found ? found : &each; });
    return found;
}

std::vector<VnIfcEntityBase*> ModelState::targets(const VnIfcEntityBase& instance, Name name) {
    std::vector<VnIfcEntityBase*> found;
    forEachTarget(instance, name, [&](VnIfcEntityBase& each) { found.push_back(&each); });
    return found;
}

void ModelState::needInverses() {
    if (hasInverses)
        return;
    model().setInverseCounterParts();
    hasInverses = true;
}

const ProjectUnits& ModelState::units() {
    if (!projectUnits)
        projectUnits = std::make_unique<ProjectUnits>(*this);
    return *projectUnits;
}

void ModelState::changed(const ClassInfo& info) noexcept {
    if (info.carriesUnits)
        projectUnits.reset();
}

void ModelState::created(const VnDbObjectId& handle) {
    population.append(handle);
    referencesChanged();
    const VnIfcEntityBase* instance = handle.openObject();
    if (const ClassInfo* info = classOf(*instance))
        changed(*info);
}

void ModelState::dropAll() noexcept {
    population.drop();
    referrers.drop();
    projectUnits.reset();
    hasInverses = false;
}

} // namespace vnifc::detail
