#include "Reading.h"
#include "Writing.h"

#include <VnIfcCore/VnIfcGUID.h>

#include <ostream>
#include <unordered_set>

namespace vnifc {

using namespace VN_SDAI;
using detail::AttributeInfo;
using detail::ClassInfo;
using typed::AttributeRow;

namespace {

const VnIfcForeignInstance& foreign(const VnIfcEntityBase& instance) {
    return dynamic_cast<const VnIfcForeignInstance&>(instance);
}

[[noreturn]] void throwNoAttribute(const VnIfcEntityBase& instance, std::string_view name) {
    const VnIfcEntityType* type = instance.getInstanceType();
    throw NotFound((type ? std::string(type->entityClass()->name) : "an instance without a class") +
                   " has no attribute " + std::string(name));
}

const AttributeInfo& explicitAttribute(detail::ModelState& state, const VnIfcEntityBase& instance,
                                       std::string_view name) {
    const ClassInfo* info = state.classOf(instance);
    if (const AttributeInfo* attribute = info ? info->findExplicit(name) : nullptr)
        return *attribute;
    if (info && info->find(name))
        throw BadValue(std::string(info->rows.name) + '.' + std::string(name) +
                       " is an inverse attribute and cannot be changed");
    throwNoAttribute(instance, name);
}

} // namespace

VnIfcEntityBase& detail::opened(const Instance& instance) {
    if (VnIfcEntityBase* object = instance.core().openObject())
        return *object;
    throw NotFound(instance.id() == 0 ? "no instance" : "there is no instance #" + std::to_string(instance.id()));
}

VnIfcEntityBase& Instance::opened() const { return detail::opened(*this); }

std::string_view Instance::type() const {
    const VnIfcEntityType* type = opened().getInstanceType();
    return type ? type->entityClass()->name : keyword();
}

std::string_view Instance::keyword() const {
    const VnIfcEntityBase& instance = opened();
    if (const VnIfcEntityType* type = instance.getInstanceType())
        return type->name();
    if (!foreign(instance).keyword().isEmpty())
        return foreign(instance).keyword();
    return foreign(instance).isList() ? "(complex)" : "(malformed)";
}

bool Instance::is(std::string_view entity) const {
    const VnIfcEntityType* type = m_state ? m_state->schema().entity(entity) : nullptr;
    return type ? opened().isKindOf(type) : isExactly(entity);
}

bool Instance::isExactly(std::string_view entity) const { return detail::sameName(keyword(), entity); }

bool Instance::isForeign() const { return !opened().getInstanceType(); }

std::string_view Instance::foreignText() const {
    const VnIfcEntityBase& instance = opened();
    return instance.getInstanceType() ? std::string_view() : foreign(instance).parameters().view();
}

Value Instance::operator[](std::string_view attribute) const {
    const VnIfcEntityBase& instance = opened();
    const ClassInfo* info = m_state->classOf(instance);
    if (!info)
        throwNoAttribute(instance, attribute);
    if (const AttributeInfo* found = info->findExplicit(attribute))
        return valueOf(*m_state, instance, *found->row, found);
    const AttributeRow* inverse = info->find(attribute);
    if (!inverse)
        throwNoAttribute(instance, attribute);
    m_state->needInverses();
    return valueOf(*m_state, instance, *inverse, nullptr);
}

Value Instance::operator[](const AttributeKey& key) const {
    const VnIfcEntityBase& instance = checked(key);
    const AttributeInfo* info = m_state->classOf(instance)->infoOf(*key.m_row);
    if (!info)
        m_state->needInverses();
    return valueOf(*m_state, instance, *key.m_row, info);
}

void Instance::throwUnfit(const AttributeKey& key) const {
    if (!key)
        throw NotFound("an attribute key without an attribute");
    throw BadValue('#' + std::to_string(id()) + ' ' + std::string(type()) + " is no " + std::string(key.entity()) +
                   ", for which " + std::string(key.name()) + " was looked up");
}

void Instance::set(std::string_view attribute, const Value& value) {
    VnIfcEntityBase& instance = opened();
    store(*m_state, instance, explicitAttribute(*m_state, instance, attribute), value);
}

void Instance::set(const AttributeKey& key, const Value& value) {
    checked(key);
    VnIfcEntityBase& instance = opened();
    const AttributeInfo* info = m_state->classOf(instance)->infoOf(*key.m_row);
    if (!info)
        throw BadValue(std::string(key.entity()) + '.' + std::string(key.name()) +
                       " is an inverse attribute and cannot be changed");
    store(*m_state, instance, *info, value);
}

void Instance::setChecked(const AttributeKey& key, double value) { set(key, Value(value)); }

void Instance::unset(std::string_view attribute) { set(attribute, Value()); }

Value Instance::parse(std::string_view attribute, std::string_view text) const {
    VnIfcEntityBase& instance = opened();
    return detail::parse(*m_state, instance, explicitAttribute(*m_state, instance, attribute), text);
}

bool Instance::has(std::string_view attribute) const {
    const ClassInfo* info = m_state ? m_state->classOf(opened()) : nullptr;
    return info && info->find(attribute);
}

std::optional<std::string> Instance::keptText(std::string_view attribute) const {
    const VnIfcEntityBase& instance = opened();
    const std::string_view text = instance.keptText(explicitAttribute(*m_state, instance, attribute).position);
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

AttributeRange Instance::attributes() const {
    const ClassInfo* info = m_state->classOf(opened());
    if (!info)
        return {*this, nullptr, nullptr};
    return {*this, info->attributes.data(), info->attributes.data() + info->attributes.size()};
}

InstanceRange Instance::references() const {
    auto handles = std::make_shared<std::vector<VnDbObjectId>>();
    const VnIfcEntityBase& instance = opened();
    const auto add = [&](const VnDbObjectId& handle) {
        if (!handle.isNull())
            handles->push_back(handle);
    };
    if (const ClassInfo* info = m_state->classOf(instance))
        for (const AttributeRow* row : info->references)
            detail::forEachHandle(instance, *row, add);
    // Each once, at its first place.
    std::unordered_set<const VnIfcInstanceSlot*> known;
    std::erase_if(*handles, [&](const VnDbObjectId& handle) { return !known.insert(handle.slot()).second; });
    return {std::move(handles), m_state};
}

InstanceRange Instance::referrers() const {
    opened();
    return m_state->referrers.of(*m_state, m_handle);
}

std::string Instance::globalId() const {
    const VnIfcGUID* globalId = opened().globalId();
    return globalId && !globalId->isUnset() ? std::string(globalId->view()) : std::string();
}

std::string Instance::name() const {
    VnIfcEntityBase& instance = opened();
    const bool hasName = m_state->has(instance, detail::Name::Name);
    return m_state->text(instance, hasName ? detail::Name::Name : detail::Name::LayerSetName);
}

std::string Instance::toString() const {
    opened();
    return m_handle.model()->instanceText(m_handle);
}

std::ostream& operator<<(std::ostream& stream, const Instance& instance) { return stream << instance.toString(); }

// ---- AttributeKey, attributes

std::string_view AttributeKey::entity() const noexcept { return m_type ? m_type->entityClass()->name : ""; }

std::string_view Attribute::name() const noexcept { return m_info->row->name; }
std::string_view Attribute::typeName() const noexcept { return m_info->typeName; }
unsigned Attribute::position() const noexcept { return m_info->position; }
bool Attribute::isOptional() const noexcept { return m_info->row->mark == typed::kOptional; }
bool Attribute::isDerived() const noexcept { return m_info->isDerived; }

Value Attribute::value() const {
    return valueOf(*m_instance.state(), detail::opened(m_instance), *m_info->row, m_info);
}

std::optional<std::string> Attribute::keptText() const {
    const std::string_view text = detail::opened(m_instance).keptText(m_info->position);
    return text.empty() ? std::nullopt : std::optional<std::string>(text);
}

AttributeRange::iterator& AttributeRange::iterator::operator++() noexcept {
    ++m_at;
    return *this;
}

std::size_t AttributeRange::size() const noexcept { return static_cast<std::size_t>(m_last - m_first); }

void visitValue(const Instance& instance, const Attribute& attribute, ValueVisitor& visitor) {
    detail::ModelState& state = detail::stateOf(instance);
    const VnIfcEntityBase& object = detail::opened(instance);
    const AttributeInfo& info = state.classOf(object)->attributes[attribute.position()];
    if (info.isDerived)
        return visitor.null();
    visitField(state, object, *info.row, info.mayBeEmpty, visitor);
}

} // namespace vnifc
