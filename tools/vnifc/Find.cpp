#include "LoadedFile.h"
#include "Messages.h"
#include "TypedValue.h"
#include "Values.h"

#include <VnIfcCore/VnIfcGUID.h>

#include <fmt/format.h>

#include <algorithm>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

/// NAME=VALUE.
class Condition {
public:
    explicit Condition(const std::string& text) {
        const std::size_t equals = text.find('=');
        if (equals == text.npos)
            throw Failure(kWrongUse, fmt::format("expected NAME=VALUE, found {}", text));
        m_name = text.substr(0, equals);
        m_value = text.substr(equals + 1);
    }

    /// Throws Failure when no instance of the type can have the attribute.
    void checkName(const VnIfcEntityType* type) const {
        if (!type || !isKnownTo(*type))
            throw Failure(kWrongUse,
                          fmt::format("{} has no attribute {}",
                                      type ? type->name().constStr() : "an instance without a class", m_name));
    }

    bool holdsFor(const VnIfcEntityBase& instance) const {
        const Attribute* attribute = findAttribute(*instance.getInstanceType(), m_name);
        VnIfcVariant value;
        if (!attribute || attribute->isDerived || !instance.getAttr(*attribute->name, value))
            return false;
        try {
            return jsonOf(value) == jsonOf(TypedValue(instance, *attribute, m_value).value());
        } catch (const Failure&) {
            // What is no value of a select may well be one of the type that another instance's select holds.
            if (value.type()->isSelect())
                return false;
            throw;
        }
    }

private:
    bool isKnownTo(const VnIfcEntityType& type) const {
        return findAttribute(type, m_name) ||
               std::ranges::any_of(type.subtypes(), [this](const VnIfcEntityType* each) { return isKnownTo(*each); });
    }

    std::string m_name;
    std::string m_value;
};

void printLine(const VnIfcEntityBase& instance) {
    const std::string name = nameOf(instance);
    const VnIfcGUID* globalId = instance.globalId();
    fmt::print("#{} {}{}{}\n", instance.objectId().number(), printable(keywordOf(instance)),
               globalId && !globalId->isUnset() ? ' ' + printable(globalId->view()) : "",
               name.empty() ? "" : " '" + printable(name) + "'");
}

} // namespace

ExitCode find(const ReadFlags& flags, const FindQuery& query, bool json) {
    const LoadedFile file(flags);
    const EntityFilter filter(file.model(), query.entity, !query.exact);
    std::vector<Condition> conditions(query.conditions.begin(), query.conditions.end());
    for (const Condition& condition : conditions)
        condition.checkName(filter.type());
    Output output(writeToStandardOutput);
    JsonWriter writer(output);
    file.model().forEach([&](const VnIfcEntityBase& instance) {
        const auto holds = [&](const Condition& condition) { return condition.holdsFor(instance); };
        if (!filter.matches(instance) || !std::ranges::all_of(conditions, holds))
            return;
        if (!json)
            return printLine(instance);
        writeInstance(writer, instance);
        writer.newLine();
    });
    output.flush();
    return file.exitCode();
}

} // namespace vnifc::tool
