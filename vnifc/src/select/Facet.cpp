#include "../meaning/ProjectUnits.h"
#include "../meaning/PropertyReader.h"
#include "../model/Reading.h"
#include "FacetImpl.h"
#include "Scanner.h"

#include <vnifc/Relations.h>

#include <VnIfcCore/VnIfcText.h>

#include <algorithm>

namespace vnifc {

using detail::AttributeInfo;
using detail::ClassInfo;
using detail::Entity;
using detail::ModelState;
using detail::Name;
using detail::Scanner;
using VN_SDAI::VnIfcEntityBase;

namespace {

constexpr std::pair<std::string_view, FacetKind> kKeywords[] = {{"id", FacetKind::kId},
                                                                {"class", FacetKind::kClass},
                                                                {"type", FacetKind::kType},
                                                                {"parent", FacetKind::kParent},
                                                                {"container", FacetKind::kContainer},
                                                                {"storey", FacetKind::kStorey},
                                                                {"building", FacetKind::kBuilding},
                                                                {"site", FacetKind::kSite},
                                                                {"location", FacetKind::kLocation},
                                                                {"material", FacetKind::kMaterial},
                                                                {"classification", FacetKind::kClassification},
                                                                {"group", FacetKind::kGroup},
                                                                {"layer", FacetKind::kLayer}};

/// A name of the schema, or a word in any script: what ends it is an operator, a dot or a separator.
bool isNameCharacter(char c) noexcept {
    return std::string_view(".,+=!<>*/\"'()[] \t\r\n").find(c) == std::string_view::npos;
}

NamePattern takeName(Scanner& scanner) {
    NamePattern name;
    const std::size_t column = scanner.column();
    if (scanner.peek() == '/') {
        name.text = scanner.enclosed('/', false);
        name.regex.emplace(name.text, column);
        return name;
    }
    if (scanner.peek() == '"') {
        name.text = scanner.enclosed('"', true);
        return name;
    }
    while (!scanner.atEnd() && isNameCharacter(scanner.peek())) {
        name.text += scanner.peek();
        scanner.skip(1);
    }
    if (name.text.empty())
        scanner.refuse("the name of an attribute or property set, or one of type, material, classification, location, "
                       "group and parent");
    return name;
}

/// The instances that an object is in, from its container up.
template <class Visit>
void forEachLocation(const Instance& object, Visit visit) {
    // A structure that runs in circles ends.
    constexpr unsigned kMaxDepth = 256;
    Instance each = container(object);
    for (unsigned depth = 0; each && depth < kMaxDepth; ++depth) {
        visit(each);
        each = container(each);
    }
}

} // namespace

bool NamePattern::matches(std::string_view exchangeText) const {
    if (!regex)
        return detail::meansText(exchangeText, text);
    std::string buffer;
    return regex->matchesWhole(VN_SDAI::vnDecodeText(exchangeText, buffer));
}

// ---- reading what somebody wrote

Facet Facet::takeFrom(std::string_view selector, std::size_t& position) {
    Scanner scanner(selector, position);
    auto impl = std::make_unique<Impl>();
    impl->column = scanner.column();
    const bool isPlain = scanner.peek() != '/' && scanner.peek() != '"';
    impl->set = takeName(scanner);
    if (scanner.take(".")) {
        impl->kind = FacetKind::kProperty;
        impl->property = takeName(scanner);
        // The name of a part of a complex property follows after another dot.
        while (!impl->property.regex && scanner.take("."))
            impl->property.text += '.' + takeName(scanner).text;
    } else {
        if (!isPlain)
            scanner.refuse("a dot and the name of a property");
        impl->attribute = impl->set.text;
        for (const auto& [keyword, kind] : kKeywords)
            if (detail::sameName(keyword, impl->attribute))
                impl->kind = kind;
    }
    impl->text = selector.substr(position, scanner.position() - position);
    position = scanner.position();
    return Facet(std::move(impl));
}

Facet::Facet(std::string_view text) {
    std::size_t position = text.find_first_not_of(" \t");
    position = position == text.npos ? text.size() : position;
    Facet taken = takeFrom(text, position);
    Scanner rest(text, position);
    rest.skipBlanks();
    if (!rest.atEnd())
        rest.refuse("the end");
    m_impl = std::move(taken.m_impl);
}

Facet::Facet(std::unique_ptr<Impl> impl) noexcept : m_impl(std::move(impl)) {}
Facet::~Facet() = default;
Facet::Facet(Facet&&) noexcept = default;
Facet& Facet::operator=(Facet&&) noexcept = default;

const std::string& Facet::text() const noexcept { return m_impl->text; }

void Facet::check(const Model& model) const {
    if (m_impl->kind != FacetKind::kAttribute)
        return;
    ModelState& state = *model.wrap({}).state();
    const VN_SDAI::VnIfcSchema& schema = state.schema();
    for (std::size_t i = 0; i < schema.entityCount(); ++i)
        if (state.classOf(*schema.entityAt(i)).find(m_impl->attribute))
            return;
    throw SelectorError(m_impl->column, m_impl->attribute, "an attribute of " + std::string(model.release()));
}

// ---- values

namespace {

/// The unit of a number that is no property's: what the instance says, or the project for the type.
Instance unitOf(ModelState& state, const VnIfcEntityBase& instance, const AttributeInfo& attribute,
                const Value& value) {
    const VnIfcEntityBase* unit = state.target(instance, Name::Unit);
    const auto typed = value.get<Typed>();
    if (!unit)
        unit = state.units().find(typed ? typed->type() : detail::upperNameOf(attribute.type));
    return unit ? state.wrap(*unit) : Instance();
}

} // namespace

template <class Visit>
void Facet::Impl::forEachProperty(const Instance& instance, Visit visit) const {
    ModelState& state = detail::stateOf(instance);
    VnIfcEntityBase& object = detail::opened(instance);
    detail::PropertyReader reader(state);
    std::vector<std::pair<std::string, std::string>> own;
    const auto add = [&](const VnIfcEntityBase& owner, const VnIfcEntityBase& setInstance, const std::string& name,
                         auto read) {
        std::pair<std::string, std::string> place(state.text(setInstance, Name::Name), name);
        // What the object says itself prevails over its type.
        if (std::ranges::find(own, place) != own.end())
            return;
        if (&owner == &object)
            own.push_back(std::move(place));
        visit(read());
    };
    detail::forEachSet(state, object, [&](VnIfcEntityBase& owner, VnIfcEntityBase& each) {
        if (!set.matches(state.rawText(each, Name::Name)))
            return;
        if (detail::hasPropertiesAsAttributes(state, each)) {
            for (Property& found : reader.attributesIn(each))
                if (property.matches(found.name))
                    add(owner, each, found.name, [&] { return std::move(found); });
            return;
        }
        bool isFound = false;
        detail::forEachMember(state, each, [&](VnIfcEntityBase& member) {
            if (!property.matches(state.rawText(member, Name::Name)))
                return;
            isFound = true;
            add(owner, each, state.text(member, Name::Name),
                [&] { return detail::PropertyReader(state).propertyOf(member); });
        });
        if (isFound || property.regex || property.text.find('.') == std::string::npos)
            return;
        if (auto part = detail::propertyIn(state, each, property.text))
            add(owner, each, property.text, [&] { return *std::move(part); });
    });
}

template <class Visit>
void Facet::Impl::forEach(const Instance& instance, bool needsUnits, Visit visit) const {
    const auto one = [&](const Instance& found) {
        if (found)
            visit(FacetValue{Value(found), {}});
    };
    const auto texts = [&](std::initializer_list<std::string_view> found) {
        for (const std::string_view each : found)
            if (!each.empty())
                visit(FacetValue{Value(each), {}});
    };
    switch (kind) {
    case FacetKind::kId:
        return visit(FacetValue{Value(instance.id()), {}});
    case FacetKind::kClass:
        return visit(FacetValue{Value(instance.type()), {}});
    case FacetKind::kType:
        return one(typeOf(instance));
    case FacetKind::kParent:
        return one(parent(instance));
    case FacetKind::kContainer:
        return one(container(instance));
    case FacetKind::kStorey:
        return one(storey(instance));
    case FacetKind::kBuilding:
        return one(building(instance));
    case FacetKind::kSite:
        return one(site(instance));
    case FacetKind::kLocation:
        return forEachLocation(instance, one);
    case FacetKind::kMaterial: {
        const Material found = material(instance);
        texts({found.kind == MaterialKind::kSingle ? std::string_view() : std::string_view(found.name)});
        for (const MaterialPart& part : found.parts)
            texts({part.name});
        return;
    }
    case FacetKind::kClassification:
        for (const Classification& each : classifications(instance))
            texts({each.identification, each.name, each.system});
        return;
    case FacetKind::kGroup:
        for (const Instance& each : groups(instance))
            one(each);
        return;
    case FacetKind::kLayer:
        for (const std::string& each : layers(instance))
            texts({each});
        return;
    case FacetKind::kAttribute: {
        const VnIfcEntityBase& object = detail::opened(instance);
        ModelState& state = detail::stateOf(instance);
        const ClassInfo* info = state.classOf(object);
        const AttributeInfo* found = info ? info->findExplicit(attribute) : nullptr;
        if (!found) {
            if (info && info->find(attribute))
                visit(FacetValue{instance[attribute], {}});
            return;
        }
        Value value = valueOf(state, object, *found->row, found);
        const Instance unit = needsUnits && value.get<double>() ? unitOf(state, object, *found, value) : Instance();
        return visit(FacetValue{std::move(value), unit});
    }
    case FacetKind::kProperty:
        return forEachProperty(instance, [&](const Property& found) {
            visit(FacetValue{found.value(), found.values.empty() ? Instance() : found.values.front().unit});
        });
    }
}

std::vector<FacetValue> facetValues(const Facet& facet, const Instance& instance, bool needsUnits) {
    std::vector<FacetValue> values;
    facet.impl().forEach(instance, needsUnits, [&](FacetValue value) {
        if (!value.value.isNull())
            values.push_back(std::move(value));
    });
    return values;
}

std::vector<Value> Facet::values(const Instance& instance) const {
    std::vector<Value> values;
    for (FacetValue& each : facetValues(*this, instance, false))
        values.push_back(std::move(each.value));
    return values;
}

Value Facet::value(const Instance& instance) const {
    std::vector<Value> all = values(instance);
    if (all.empty())
        return {};
    return all.size() == 1 ? std::move(all.front()) : Value(std::move(all));
}

std::string Facet::words(const Instance& instance) const {
    std::string words;
    for (const Value& value : values(instance)) {
        const auto found = value.get<Instance>();
        const std::string name = found && *found ? found->name() : std::string();
        words.append(words.empty() ? "" : ", ").append(name.empty() ? value.toString() : name);
    }
    return words;
}

std::optional<Quantity> Facet::quantity(const Instance& instance) const {
    const std::vector<FacetValue> all = facetValues(*this, instance, true);
    const std::optional<double> number = all.size() == 1 ? all.front().value.get<double>() : std::nullopt;
    if (!number || !all.front().unit)
        return std::nullopt;
    return Quantity{*number, Unit(all.front().unit)};
}

} // namespace vnifc
