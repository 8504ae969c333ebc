#include "JsonInstance.h"
#include "Messages.h"
#include "Selecting.h"
#include "WholeModel.h"

#include <VnIfcCore/VnIfcSchema.h>

#include <fmt/format.h>

#include <algorithm>

namespace vnifc::tool {

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

    /// Throws Failure when no instance of the entity can have the attribute.
    void checkName(const Model& model, const std::string& entity) const {
        if (model.hasAttribute(entity, m_name))
            return;
        const VN_SDAI::VnIfcEntityType* type = model.core().schema()->entity(entity);
        throw Failure(kWrongUse, fmt::format("{} has no attribute {}",
                                             type ? type->name().constStr() : "an instance without a class", m_name));
    }

    bool holdsFor(const Instance& instance) const {
        const std::optional<Attribute> attribute = instance.attribute(m_name);
        if (!attribute || attribute->isDerived())
            return false;
        try {
            return attribute->value() == instance.parse(m_name, m_value);
        } catch (const BadValue& error) {
            // What is no value of a select may well be one of the type that another instance's select holds.
            if (attribute->isSelect())
                return false;
            throw Failure(kWrongUse, error.what());
        }
    }

private:
    std::string m_name;
    std::string m_value;
};

} // namespace

std::string lineOf(const Instance& instance) {
    const std::string globalId = instance.globalId(), name = instance.name();
    return printable(fmt::format("#{} {}{}{}", instance.id(), instance.keyword(),
                                 globalId.empty() ? "" : ' ' + globalId, name.empty() ? "" : " '" + name + "'"));
}

ExitCode find(const ReadFlags& flags, const FindQuery& query, bool json) {
    const Model model = openModel(flags);
    const InstanceRange instances = model.instances(query.entity, query.exact);
    std::vector<Condition> conditions(query.conditions.begin(), query.conditions.end());
    for (const Condition& condition : conditions)
        condition.checkName(model, query.entity);
    Output output(writeToStandardOutput);
    JsonWriter writer(output);
    for (const Instance instance : instances) {
        const auto holds = [&](const Condition& condition) { return condition.holdsFor(instance); };
        if (!std::ranges::all_of(conditions, holds))
            continue;
        if (json) {
            writeInstance(writer, instance);
            writer.newLine();
        } else {
            output.put(lineOf(instance) + '\n');
        }
    }
    output.flush();
    return exitCodeOf(model);
}

} // namespace vnifc::tool
