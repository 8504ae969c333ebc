#include "Values.h"

#include <algorithm>

namespace vnifc::test {

using namespace declared;

Values::Values(const Schema& release) : m_release(release) {
    for (const Entity& entity : release.entities())
        if (!entity.isAbstract)
            concrete.push_back(&entity);
}

std::string Values::valueOf(const Type& declared) {
    const Type type = m_release.resolved(declared);
    return type.layers.empty() ? single(type) : aggregateOf(type);
}

std::string Values::aggregateOf(const Type& declared, const std::string& only) {
    Type type = m_release.resolved(declared);
    const Layer layer = type.layers.front();
    type.layers.erase(type.layers.begin());
    const std::size_t low = std::stoul(layer.lower);
    const std::size_t high = layer.upper == "?" ? 2 : std::stoul(layer.upper);
    // Values of a set stand in ascending order: for those of selects that depends on the members.
    const bool isSetOfSelects = layer.kind == "set" && type.layers.empty() && selectOf(type);
    const std::size_t count = !only.empty() || isSetOfSelects ? 1 : std::max(low, std::min<std::size_t>(2, high));
    std::string list = "(";
    for (std::size_t i = 0; i < count; ++i) {
        m_wantsSecond = i % 2 == 1;
        (list += i > 0 ? "," : "") += only.empty() ? valueOf(type) : only;
    }
    m_wantsSecond = false;
    return list + ')';
}

std::vector<std::string> Values::membersOf(const Named& select) const {
    std::vector<std::string> members;
    for (const std::string& each : select.items) {
        const Named* inner = m_release.type(each);
        const bool isSelect = inner && inner->kind == Named::kSelect;
        const std::vector<std::string> leaves = isSelect ? membersOf(*inner) : std::vector<std::string>{each};
        members.insert(members.end(), leaves.begin(), leaves.end());
    }
    return members;
}

std::string Values::memberValueOf(const std::string& member) {
    if (m_release.entity(member))
        return referenceTo(member);
    Type type;
    type.name = member;
    return upper(member) + '(' + valueOf(type) + ')';
}

const Named* Values::named(const Type& declared, Named::Kind kind) const {
    const Named* named = m_release.type(m_release.resolved(declared).name);
    return named && named->kind == kind ? named : nullptr;
}

const Named* Values::selectOf(const Type& type) const { return named(type, Named::kSelect); }

const Named* Values::enumerationOf(const Type& type) const { return named(type, Named::kEnumeration); }

std::string Values::single(const Type& type) {
    if (m_release.entity(type.name))
        return referenceTo(type.name);
    if (const Named* enumeration = enumerationOf(type))
        return '.' + upper(enumeration->items[m_counter++ % enumeration->items.size()]) + '.';
    if (const Named* select = selectOf(type)) {
        const std::vector<std::string> members = membersOf(*select);
        return memberValueOf(members[m_counter++ % members.size()]);
    }
    return simple(type);
}

std::string Values::simple(const Type& type) {
    const std::string number = std::to_string(++m_counter);
    if (type.isFixed)
        return "'0YvctVUKr0kugbFTf5" + std::to_string(1000 + m_counter % 9000) + '\'';
    if (type.name == "INTEGER")
        return number;
    if (type.name == "REAL" || type.name == "NUMBER")
        return number + ".5";
    if (type.name == "BOOLEAN")
        return m_counter % 2 ? ".T." : ".F.";
    if (type.name == "LOGICAL")
        return m_counter % 2 ? ".U." : ".T.";
    if (type.name == "BINARY")
        return "\"0" + number + '"';
    return "'it''s " + number + '\'';
}

std::string Values::referenceTo(const std::string& entity) const {
    const auto found =
        std::ranges::find_if(concrete, [&](const Entity* each) { return m_release.isKindOf(*each, entity); });
    const auto number = static_cast<std::size_t>(found - concrete.begin()) + 1;
    return '#' + std::to_string(m_wantsSecond ? number + kSecond : number);
}

std::string line(std::size_t number, const Entity& entity, const std::vector<std::string>& parameters) {
    std::string result = '#' + std::to_string(number) + '=' + upper(entity.name) + '(';
    for (std::size_t i = 0; i < parameters.size(); ++i)
        (result += i > 0 ? "," : "") += parameters[i];
    return result + ");\n";
}

} // namespace vnifc::test
