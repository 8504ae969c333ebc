#pragma once
#include "support/Declarations.h"

namespace vnifc::test {

/// Makes parameters of every kind from declarations. There are two instances of each concrete entity to refer to: the
/// first has its place in `concrete`, from 1, the second stands kSecond behind.
class Values {
public:
    static constexpr std::size_t kSecond = 1000;

    explicit Values(const declared::Schema& release);

    std::string valueOf(const declared::Type& type);
    /// A list of a type's outermost layer; of this one value, unless it is empty.
    std::string aggregateOf(const declared::Type& type, const std::string& only = "");
    /// The types that a select takes in the end, each as often as the select and its members name it.
    std::vector<std::string> membersOf(const declared::Named& select) const;
    /// A value of a select that is of that type.
    std::string memberValueOf(const std::string& member);
    /// The select that a type is, after names and layers; null when it is none.
    const declared::Named* selectOf(const declared::Type& type) const;
    const declared::Named* enumerationOf(const declared::Type& type) const;

    std::vector<const declared::Entity*> concrete;

private:
    std::string single(const declared::Type& type);
    std::string simple(const declared::Type& type);
    std::string referenceTo(const std::string& entity) const;
    const declared::Named* named(const declared::Type& type, declared::Named::Kind kind) const;

    const declared::Schema& m_release;
    std::size_t m_counter = 0;
    bool m_wantsSecond = false;
};

/// "#number=KEYWORD(...);" and a line end.
std::string line(std::size_t number, const declared::Entity& entity, const std::vector<std::string>& parameters);

} // namespace vnifc::test
