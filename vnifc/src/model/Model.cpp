#include "../model/SimilarEntity.h"
#include "Erasing.h"
#include "ModelState.h"
#include "Writing.h"

#include "../meaning/ProjectUnits.h"

#include <VnIfcCore/VnIfcGUID.h>

#include <charconv>

namespace vnifc {

using namespace VN_SDAI;
using detail::AttributeInfo;
using detail::ClassInfo;

namespace {

VnIfcOpenOptions coreOptions(const OpenOptions& options, std::vector<Finding>& kept) {
    VnIfcOpenOptions result;
    result.release = options.release;
    result.progress = options.progress;
    result.threads = options.threads;
    // Set when somebody asks for one.
    result.inverses = false;
    result.places = options.places;
    result.strict = options.strict;
    result.name = options.name;
    result.diagnostics = [&](const Finding& finding) {
        if (options.findings)
            options.findings(finding);
        if (kept.size() < options.keptFindings)
            kept.push_back(finding);
    };
    return result;
}

VnIfcFile checked(VnIfcFile file, const std::string& what) {
    if (!file)
        throw FileError(what + ": " + file.result().message);
    return file;
}

/// The number in "#12" or "12"; false for anything else, also for a GlobalId of digits only.
bool readNumber(std::string_view address, std::uint64_t& number) {
    if (address.size() == VnIfcGUID::kLength)
        return false;
    if (address.starts_with('#'))
        address.remove_prefix(1);
    const char* const end = address.data() + address.size();
    const auto [stop, error] = std::from_chars(address.data(), end, number);
    return error == std::errc() && stop == end;
}

} // namespace

Model open(const std::filesystem::path& path, const OpenOptions& options) {
    std::vector<Finding> kept;
    Model model(checked(vnOpenFile(path, coreOptions(options, kept)),
                        "cannot read " + (options.name.empty() ? path.string() : options.name)));
    model.m_state->findings = std::move(kept);
    return model;
}

Model openText(std::string_view text, const OpenOptions& options) {
    std::vector<Finding> kept;
    Model model(checked(vnOpenText(text, coreOptions(options, kept)),
                        "cannot read " + (options.name.empty() ? "the text" : options.name)));
    model.m_state->findings = std::move(kept);
    return model;
}

Model create(std::string_view release) {
    return Model(checked(vnCreateFile(release), "cannot create a model of " + std::string(release)));
}

Model::Model(VnIfcFile file)
    : m_state(std::make_unique<detail::ModelState>(checked(std::move(file), "no model"), std::vector<Finding>())) {}

Model::Model(Model&&) noexcept = default;
Model& Model::operator=(Model&&) noexcept = default;
Model::~Model() = default;

void Model::save(const std::filesystem::path& path, const SaveOptions& options) const {
    VnIfcWriteOptions core;
    core.progress = options.progress;
    core.threads = options.threads;
    const VnIfcFileResult result = m_state->model().writeFile(path, core);
    if (!result)
        throw FileError("cannot write " + path.string() + ": " + result.message);
}

std::string Model::text() const { return m_state->model().writeText(); }

std::string_view Model::release() const noexcept { return m_state->file.release()->name; }
std::span<const Finding> Model::findings() const noexcept { return m_state->findings; }
std::uint64_t Model::errors() const noexcept { return m_state->file.result().errors; }
std::uint64_t Model::warnings() const noexcept { return m_state->file.result().warnings; }

// ---- Change

Instance Model::create(std::string_view entity, std::initializer_list<std::pair<std::string_view, Value>> attributes) {
    const VnIfcEntityType* type = m_state->schema().entity(entity);
    if (!type)
        throw NotFound(std::string(release()) + " has no entity " + std::string(entity) +
                       detail::similarEntity(m_state->schema(), entity));
    if (type->isAbstract())
        throw BadValue(std::string(type->entityClass()->name) + " is abstract: expected one of its subtypes");
    const Instance instance(m_state->model().create(entity), m_state.get());
    Instance result = instance;
    m_state->created(instance.core());
    try {
        const ClassInfo& info = m_state->classOf(*type);
        if (info.row(detail::Name::GlobalId))
            result.set("GlobalId", VnIfcGUID::create().view());
        for (const auto& [name, value] : attributes)
            result.set(name, value);
    } catch (...) {
        m_state->model().erase(instance.core());
        throw;
    }
    return result;
}

Instance Model::copy(const Instance& source) {
    const std::vector<Instance> copies = copy(std::span(&source, 1));
    return copies.front();
}

std::vector<Instance> Model::copy(std::span<const Instance> sources) {
    std::vector<Instance> results;
    std::vector<std::pair<VnDbObjectId, VnDbObjectId>> copies;
    for (const Instance& source : sources) {
        detail::opened(source);
        const bool isOwn = source.state() == m_state.get();
        const VnDbObjectId handle =
            isOwn ? m_state->model().copy(source.core()) : m_state->model().copy(source.core(), copies);
        if (handle.isNull())
            throw NotFound(std::string(release()) + " has no entity " + std::string(source.type()));
        if (isOwn)
            copies.emplace_back(source.core(), handle);
        results.emplace_back(handle, m_state.get());
    }
    for (const auto& [source, copy] : copies) {
        VnIfcEntityBase* instance = copy.openObject();
        if (m_state->hasInverses && instance)
            instance->setInverseCounterParts();
    }
    m_state->population.drop();
    m_state->referrers.drop();
    m_state->projectUnits.reset();
    return results;
}

void Model::erase(const Instance& instance) {
    detail::opened(instance);
    if (instance.state() != m_state.get())
        throw BadValue("#" + std::to_string(instance.id()) + " is an instance of another model");
    detail::eraseAll(*m_state, {instance.core()});
}

// ---- Instances

std::size_t Model::size() const noexcept { return m_state->model().count(); }

Instance Model::find(std::uint64_t id) const noexcept {
    const VnDbObjectId handle = m_state->model().find(id);
    return handle.isNull() ? Instance() : wrap(handle);
}

Instance Model::find(std::string_view address) const {
    std::uint64_t number = 0;
    if (readNumber(address, number))
        return find(number);
    if (address.size() > VnIfcGUID::kLength || address.empty())
        return {};
    const VnDbObjectId handle = m_state->model().findByGlobalId(address);
    return handle.isNull() ? Instance() : wrap(handle);
}

Instance Model::operator[](std::uint64_t id) const {
    if (const Instance found = find(id))
        return found;
    throw NotFound("there is no instance #" + std::to_string(id));
}

Instance Model::at(std::string_view address) const {
    if (const Instance found = find(address))
        return found;
    throw NotFound("there is no instance " + std::string(address));
}

Instance Model::project() const {
    const VnIfcEntityType* wanted = m_state->type(detail::Entity::IfcProject);
    const InstanceRange projects(
        m_state->population.select(m_state->model(), [&](const VnIfcEntityType* type) { return type == wanted; }),
        m_state.get());
    return projects.empty() ? Instance() : projects.front();
}

InstanceRange Model::all() const { return {m_state->population.all(m_state->model()), m_state.get()}; }

bool Model::hasEntity(std::string_view entity) const noexcept { return m_state->schema().entity(entity); }

InstanceRange Model::instances(std::string_view entity, bool exact) const {
    const VnIfcModel& model = m_state->model();
    if (const VnIfcEntityType* wanted = m_state->schema().entity(entity))
        return {m_state->population.select(model,
                                           [&](const VnIfcEntityType* type) {
                                               return type && (exact ? type == wanted : type->isKindOf(wanted));
                                           }),
                m_state.get()};
    // Instances without a class go by their keyword.
    auto strangers = std::make_shared<std::vector<VnDbObjectId>>();
    const auto withoutClass = m_state->population.select(model, [](const VnIfcEntityType* type) { return !type; });
    for (const VnDbObjectId& handle : *withoutClass)
        if (const VnIfcEntityBase* instance = handle.openObject())
            if (instance->isInstanceOf(std::string(entity).c_str()))
                strangers->push_back(handle);
    if (strangers->empty())
        throw NotFound("neither " + std::string(release()) + " nor the file has an entity \"" + std::string(entity) +
                       '"' + detail::similarEntity(m_state->schema(), entity));
    return {std::move(strangers), m_state.get()};
}

bool Model::hasAttribute(std::string_view entity, std::string_view attribute) const {
    const VnIfcEntityType* type = m_state->schema().entity(entity);
    std::vector<const VnIfcEntityType*> pending(type ? 1 : 0, type);
    while (!pending.empty()) {
        const VnIfcEntityType* next = pending.back();
        pending.pop_back();
        if (m_state->classOf(*next).find(attribute))
            return true;
        pending.insert(pending.end(), next->subtypes().begin(), next->subtypes().end());
    }
    return false;
}

AttributeKey Model::key(std::string_view entity, std::string_view attribute) const {
    const VnIfcEntityType* type = m_state->schema().entity(entity);
    if (!type)
        throw NotFound(std::string(release()) + " has no entity " + std::string(entity) +
                       detail::similarEntity(m_state->schema(), entity));
    const ClassInfo& info = m_state->classOf(*type);
    AttributeKey key;
    key.m_row = info.find(attribute);
    if (!key.m_row)
        throw NotFound(std::string(info.rows.name) + " has no attribute " + std::string(attribute));
    key.m_type = type;
    key.m_offset = key.m_row->offset;
    const AttributeInfo* found = info.infoOf(*key.m_row);
    if (!found)
        return key; // inverse: read through values, which see to it that they are set
    key.m_position = found->position;
    // A subtype may derive what is stored here, and units are remembered.
    const bool isPlain = !found->isDerived && !info.carriesUnits;
    key.m_kind = isPlain ? key.m_row->kind : typed::AttributeKind::kDerived;
    return key;
}

VnIfcModel& Model::core() noexcept { return m_state->model(); }
const VnIfcModel& Model::core() const noexcept { return m_state->model(); }

void Model::needInverses() { m_state->needInverses(); }

void Model::changed() noexcept { m_state->dropAll(); }

} // namespace vnifc
