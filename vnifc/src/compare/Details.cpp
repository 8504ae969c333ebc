#include "Details.h"

#include <vnifc/Properties.h>

#include <algorithm>
#include <cmath>
#include <map>

namespace vnifc::detail {

namespace {

// Deeper things are told of as a whole.
constexpr unsigned kMaxDepth = 60;
constexpr std::size_t kMaxWords = 160;

/// In words that stay on a line of a terminal.
std::string shortened(std::string text) {
    if (text.size() <= kMaxWords)
        return text;
    std::size_t end = kMaxWords;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end) + "...";
}

std::string wordsOf(const Instance& instance) {
    if (!instance)
        return {};
    std::string text(instance.type());
    if (const std::string name = instance.name(); !name.empty())
        text += " '" + name + '\'';
    if (const std::string id = instance.globalId(); !id.empty())
        text += " " + id;
    return text;
}

/// A value without instance numbers, which differ between files.
std::string wordsOf(const Value& value) {
    if (const auto* instance = std::get_if<Instance>(&value.variant()))
        return wordsOf(*instance);
    if (const auto* list = std::get_if<Value::List>(&value.variant())) {
        std::string text = "(";
        for (const Value& element : *list) {
            if (text.size() > kMaxWords)
                break;
            text.append(text.size() > 1 ? ", " : "").append(wordsOf(element));
        }
        return text + ')';
    }
    if (const auto* typed = std::get_if<Typed>(&value.variant()))
        return wordsOf(typed->value());
    const std::string text = value.toString(TextForm::kPlain);
    return text.empty() && !value.isNull() ? "''" : text;
}

bool areClose(double left, double right, double tolerance) noexcept {
    return left == right || std::abs(left - right) <= tolerance * std::max({1.0, std::abs(left), std::abs(right)});
}

bool isNumber(const Value& value) noexcept {
    return value.kind() == Value::Kind::kReal || value.kind() == Value::Kind::kInteger;
}

/// Attributes that sets of properties have beyond these.
bool isOfRoot(std::string_view attribute) noexcept {
    return attribute == "GlobalId" || attribute == "OwnerHistory" || attribute == "Name" || attribute == "Description";
}

bool isSetType(std::string_view typeName) noexcept {
    return typeName.size() > 3 && sameName(typeName.substr(0, 3), "set");
}

} // namespace

void Details::compare(std::uint32_t before, std::uint32_t after, Difference& difference) {
    m_difference = &difference;
    m_known.clear();
    m_isCarrier = m_before.isCarrier(before) && m_after.isCarrier(after);
    const Instance oldOne = m_before.wrap(before);
    const Instance newOne = m_after.wrap(after);
    if (!sameName(oldOne.type(), newOne.type()))
        tell(DiffAspect::kClass, {}, std::string(oldOne.type()), std::string(newOne.type()));
    attributes(oldOne, newOne, {}, DiffAspect::kAttribute, 0);
    if (!m_isCarrier)
        facets(before, after);
}

void Details::tell(DiffAspect aspect, const std::string& path, std::string before, std::string after) {
    if (m_difference->details.size() >= m_options.maxDetails) {
        ++m_difference->moreDetails;
        return;
    }
    m_difference->details.push_back({aspect, path, shortened(std::move(before)), shortened(std::move(after))});
}

bool Details::isIgnored(std::string_view attribute) const {
    return std::ranges::any_of(m_options.ignored, [&](const std::string& each) { return sameName(each, attribute); });
}

void Details::attributes(const Instance& before, const Instance& after, const std::string& prefix, DiffAspect aspect,
                         unsigned depth) {
    if (before.isForeign() || after.isForeign()) {
        if (before.foreignText() != after.foreignText())
            tell(aspect, prefix, std::string(before.foreignText()), std::string(after.foreignText()));
        return;
    }
    const auto path = [&](std::string_view name) {
        return prefix.empty() ? std::string(name) : prefix + '.' + std::string(name);
    };
    const bool isTop = depth == 0;
    const auto isCarried = [&](std::string_view name) {
        return isTop && (name == "HasPropertySets" ||
                         (m_isCarrier && (Facets::isEnd(name) || name == "HasProperties" || name == "Quantities")));
    };
    for (const Attribute each : before.attributes()) {
        const std::string name(each.name());
        if (!each.isDerived() && !isIgnored(name) && !isCarried(name))
            attribute(before, after, name.c_str(), path(name), aspect, depth);
    }
    for (const Attribute each : after.attributes()) {
        const std::string name(each.name());
        if (!each.isDerived() && !isIgnored(name) && !isCarried(name) && !before.has(name))
            attribute(before, after, name.c_str(), path(name), aspect, depth);
    }
}

void Details::attribute(const Instance& before, const Instance& after, const char* name, const std::string& path,
                        DiffAspect aspect, unsigned depth) {
    const auto find = [&](const Instance& instance) -> const AttributeInfo* {
        return instance.state()->classOf(*instance.core().openObject())->findExplicit(name);
    };
    const AttributeInfo* oldInfo = find(before);
    const AttributeInfo* newInfo = find(after);
    const std::optional<std::string> oldText = oldInfo ? before.keptText(name) : std::nullopt;
    const std::optional<std::string> newText = newInfo ? after.keptText(name) : std::nullopt;
    const auto words = [](const std::optional<std::string>& text, const Value& value) {
        return text ? *text : wordsOf(value);
    };
    const Value oldValue = oldInfo && !oldText ? before[name] : Value();
    const Value newValue = newInfo && !newText ? after[name] : Value();
    if (oldText || newText) {
        if (oldText != newText)
            tell(aspect, path, words(oldText, oldValue), words(newText, newValue));
        return;
    }
    const AttributeInfo* info = oldInfo ? oldInfo : newInfo;
    values(oldValue, newValue, path, aspect, info && isSetType(info->typeName), depth);
}

void Details::values(const Value& before, const Value& after, const std::string& path, DiffAspect aspect, bool isSet,
                     unsigned depth) {
    // No value and a list without elements are the same.
    const auto isEmpty = [](const Value& value) {
        const auto* list = std::get_if<Value::List>(&value.variant());
        return value.isNull() || (list && list->empty());
    };
    if (isEmpty(before) && isEmpty(after))
        return;
    if (isNumber(before) && isNumber(after)) {
        if (!areClose(*before.get<double>(), *after.get<double>(), m_options.tolerance))
            tell(aspect, path, wordsOf(before), wordsOf(after));
        return;
    }
    const auto* oldTyped = std::get_if<Typed>(&before.variant());
    const auto* newTyped = std::get_if<Typed>(&after.variant());
    if (oldTyped && newTyped) {
        if (!sameName(oldTyped->type(), newTyped->type()))
            return tell(aspect, path, before.toString(TextForm::kDescribed), after.toString(TextForm::kDescribed));
        return values(oldTyped->value(), newTyped->value(), path, aspect, isSet, depth);
    }
    const auto* oldOne = std::get_if<Instance>(&before.variant());
    const auto* newOne = std::get_if<Instance>(&after.variant());
    if (oldOne && newOne)
        return instances(*oldOne, *newOne, path, aspect, depth);
    const auto* oldList = std::get_if<Value::List>(&before.variant());
    const auto* newList = std::get_if<Value::List>(&after.variant());
    if (oldList && newList)
        return lists(*oldList, *newList, path, aspect, isSet, depth);
    if (!(before == after))
        tell(aspect, path, wordsOf(before), wordsOf(after));
}

std::uint64_t Details::keyOf(const Value& value, const Side& side) const {
    if (const auto* instance = std::get_if<Instance>(&value.variant())) {
        const std::uint32_t ordinal = side.roster.ordinalOf(instance->core());
        return ordinal == Roster::kNone ? 0 : side.digests.asTarget(ordinal);
    }
    return Digests::ofText(value.toString(TextForm::kExchange));
}

void Details::lists(const Value::List& before, const Value::List& after, const std::string& path, DiffAspect aspect,
                    bool isSet, unsigned depth) {
    const auto element = [&](std::size_t index) { return path + '[' + std::to_string(index + 1) + ']'; };
    if (!isSet) {
        if (before.size() != after.size())
            return tell(aspect, path, std::to_string(before.size()) + " elements " + wordsOf(Value(before)),
                        std::to_string(after.size()) + " elements " + wordsOf(Value(after)));
        for (std::size_t i = 0; i < before.size(); ++i)
            values(before[i], after[i], element(i), aspect, false, depth);
        return;
    }
    // Of a set what is equal goes together, whatever its place, and then the rest in its order.
    std::multimap<std::uint64_t, std::size_t> keys;
    for (std::size_t i = 0; i < after.size(); ++i)
        keys.emplace(keyOf(after[i], m_after), i);
    std::vector<std::size_t> oldRest;
    std::vector<bool> isTaken(after.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        const auto found = keys.find(keyOf(before[i], m_before));
        if (found == keys.end()) {
            oldRest.push_back(i);
            continue;
        }
        isTaken[found->second] = true;
        keys.erase(found);
    }
    std::vector<std::size_t> newRest;
    for (std::size_t i = 0; i < after.size(); ++i)
        if (!isTaken[i])
            newRest.push_back(i);
    for (std::size_t i = 0; i < std::max(oldRest.size(), newRest.size()); ++i) {
        if (i < oldRest.size() && i < newRest.size())
            values(before[oldRest[i]], after[newRest[i]], element(oldRest[i]), aspect, false, depth);
        else if (i < oldRest.size())
            tell(aspect, element(oldRest[i]), wordsOf(before[oldRest[i]]), {});
        else
            tell(aspect, element(newRest[i]), {}, wordsOf(after[newRest[i]]));
    }
}

bool Details::isEqual(const Instance& before, const Instance& after) const {
    const std::uint32_t oldOne = m_before.roster.ordinalOf(before.core());
    const std::uint32_t newOne = m_after.roster.ordinalOf(after.core());
    if (oldOne == Roster::kNone || newOne == Roster::kNone)
        return oldOne == newOne;
    return m_before.digests.asTarget(oldOne) == m_after.digests.asTarget(newOne);
}

void Details::instances(const Instance& before, const Instance& after, const std::string& path, DiffAspect aspect,
                        unsigned depth) {
    if (isEqual(before, after))
        return;
    const bool isObject = !before || !after || !before.globalId().empty() || !after.globalId().empty();
    if (isObject || depth >= kMaxDepth || !sameName(before.type(), after.type()))
        return tell(aspect, path, wordsOf(before), wordsOf(after));
    if (m_known.emplace(before.id(), after.id()).second)
        attributes(before, after, path, aspect, depth + 1);
}

void Details::facets(std::uint32_t before, std::uint32_t after) {
    std::map<DiffAspect, std::pair<std::vector<std::uint32_t>, std::vector<std::uint32_t>>> byAspect;
    for (const Facets::Facet& facet : m_before.facets.of(before))
        byAspect[facet.aspect].first.push_back(facet.target);
    for (const Facets::Facet& facet : m_after.facets.of(after))
        byAspect[facet.aspect].second.push_back(facet.target);
    for (const auto& [aspect, both] : byAspect)
        aspect == DiffAspect::kProperty ? sets(both.first, both.second) : targets(aspect, both.first, both.second);
}

void Details::targets(DiffAspect aspect, std::vector<std::uint32_t> before, std::vector<std::uint32_t> after) {
    for (std::size_t i = 0; i < before.size();) {
        const auto same = std::ranges::find_if(after, [&](std::uint32_t each) {
            return m_after.digests.asTarget(each) == m_before.digests.asTarget(before[i]);
        });
        if (same == after.end()) {
            ++i;
            continue;
        }
        after.erase(same);
        before.erase(before.begin() + static_cast<std::ptrdiff_t>(i));
    }
    for (std::size_t i = 0; i < std::max(before.size(), after.size()); ++i) {
        const Instance oldOne = i < before.size() ? m_before.wrap(before[i]) : Instance();
        const Instance newOne = i < after.size() ? m_after.wrap(after[i]) : Instance();
        if (oldOne && newOne)
            instances(oldOne, newOne, {}, aspect, 0);
        else
            tell(aspect, {}, wordsOf(oldOne), wordsOf(newOne));
    }
}

/// Sets go together by their names, those of the same name in their order.
void Details::sets(const std::vector<std::uint32_t>& before, const std::vector<std::uint32_t>& after) {
    std::multimap<std::string, std::uint32_t> rest;
    for (const std::uint32_t each : after)
        rest.emplace(m_after.wrap(each).name(), each);
    for (const std::uint32_t each : before) {
        const Instance oldOne = m_before.wrap(each);
        const auto found = rest.find(oldOne.name());
        const Instance newOne = found == rest.end() ? Instance() : m_after.wrap(found->second);
        if (!newOne || m_before.contents[each] != m_after.contents[found->second])
            set(oldOne, newOne);
        if (newOne)
            rest.erase(found);
    }
    for (const auto& [name, each] : rest)
        set({}, m_after.wrap(each));
}

void Details::set(const Instance& before, const Instance& after) {
    std::map<std::string, std::pair<Instance, Instance>> properties;
    const auto collect = [&](const Instance& owner, bool isNew) {
        bool hasMembers = false;
        if (!owner || owner.isForeign())
            return hasMembers;
        for (const char* name : {"HasProperties", "Quantities"}) {
            if (!owner.has(name))
                continue;
            hasMembers = true;
            for (const Instance& member : owner[name].valueOr(std::vector<Instance>())) {
                if (!member)
                    continue;
                auto& both = properties[member.name()];
                (isNew ? both.second : both.first) = member;
            }
        }
        return hasMembers;
    };
    const bool hadMembers = collect(before, false);
    const bool hasMembers = collect(after, true);
    const std::string name = (before ? before : after).name();
    for (const auto& [property, both] : properties) {
        const auto& [oldOne, newOne] = both;
        const std::string path = name + '.' + property;
        const std::size_t told = m_difference->details.size();
        if (oldOne && newOne && isEqual(oldOne, newOne))
            continue;
        if (oldOne && newOne && sameName(oldOne.type(), newOne.type())) {
            if (m_known.emplace(oldOne.id(), newOne.id()).second)
                attributes(oldOne, newOne, path, DiffAspect::kProperty, 1);
            // The value is what the property is about.
            for (std::size_t i = told; i < m_difference->details.size(); ++i)
                for (const std::string_view plain : {".NominalValue", "Value"})
                    if (std::string& where = m_difference->details[i].path;
                        where == path + std::string(plain) ||
                        (plain == "Value" && where.ends_with(plain) && where.find('.', path.size() + 1) == where.npos &&
                         where.starts_with(path + '.') && oldOne.is("IfcPhysicalSimpleQuantity")))
                        where = path;
            continue;
        }
        const auto words = [&](const Instance& instance, const Side& side) {
            if (!instance)
                return std::string();
            const std::optional<Property> found =
                vnifc::property(side.wrap(side.roster.ordinalOf((&side == &m_before ? before : after).core())), path);
            return found && found->value() ? wordsOf(found->value()) : wordsOf(instance);
        };
        tell(DiffAspect::kProperty, path, words(oldOne, m_before), words(newOne, m_after));
    }
    if (hadMembers || hasMembers) {
        if (properties.empty() && (!before || !after))
            tell(DiffAspect::kProperty, name, before ? wordsOf(before) : "", after ? wordsOf(after) : "");
        return;
    }
    // Sets whose attributes are their properties.
    if (!before || !after || !sameName(before.type(), after.type()))
        return tell(DiffAspect::kProperty, name, wordsOf(before), wordsOf(after));
    for (const Attribute each : before.attributes())
        if (!each.isDerived() && !isOfRoot(each.name()))
            attribute(before, after, std::string(each.name()).c_str(), name + '.' + std::string(each.name()),
                      DiffAspect::kProperty, 1);
}

} // namespace vnifc::detail
