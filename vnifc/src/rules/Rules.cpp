#include <vnifc/Rules.h>

#include "Checking.h"

#include "../model/ModelState.h"

#include <express/Text.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace vnifc {

using rules::Machine;
using rules::Program;
using rules::TypeIndex;
using VN_SDAI::VnIfcEntityBase;

namespace {

/// The entity instance, or nothing for one that is of no class of the program's schema.
const rules::Entity* entityOf(const Program& program, const VnIfcEntityBase& instance) {
    if (!instance.getInstanceType())
        return nullptr;
    const auto& entity = static_cast<const rules::Entity&>(instance);
    return program.schema().entityOf(entity) == rules::kNoType ? nullptr : &entity;
}

std::string listed(const std::vector<RuleValue>& items) {
    std::string text;
    for (const RuleValue& each : items)
        text += (text.empty() ? "" : ", ") + each.toText();
    return text;
}

std::string realText(double value) {
    char buffer[40];
    std::string text(buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr);
    // A REAL has a point (7.5.3).
    if (text.find_first_of(".e") == text.npos)
        return text + ".0";
    if (const std::size_t exponent = text.find('e'); exponent != text.npos && text.find('.') == text.npos)
        text.insert(exponent, ".0");
    return text;
}

} // namespace

RulesError::~RulesError() = default;

std::string RuleValue::toText() const {
    switch (kind) {
    case Kind::kIndeterminate:
        return "?";
    case Kind::kLogical:
        return integer == 0 ? "FALSE" : integer == 1 ? "UNKNOWN" : "TRUE";
    case Kind::kInteger:
        return std::to_string(integer);
    case Kind::kReal:
        return realText(real);
    case Kind::kString: {
        std::string quoted = "'";
        for (const char c : text) {
            quoted += c;
            if (c == '\'')
                quoted += c;
        }
        return quoted + '\'';
    }
    case Kind::kBinary:
        return '%' + text;
    case Kind::kEnumeration:
        return text;
    case Kind::kInstance:
        return '#' + std::to_string(instance.number());
    case Kind::kConstructed:
        return type + '(' + listed(items) + ')';
    case Kind::kAggregate:
        return '[' + listed(items) + ']';
    }
    return {};
}

Rules::Rules(std::unique_ptr<const Program> program) noexcept : m_program(std::move(program)) {}
Rules::Rules(Rules&&) noexcept = default;
Rules& Rules::operator=(Rules&&) noexcept = default;
Rules::~Rules() = default;

Rules Rules::parse(std::string text, const VN_SDAI::VnIfcSchema& schema, std::string_view name) {
    return Rules(std::make_unique<const Program>(std::move(text), name, schema));
}

Rules Rules::load(const std::filesystem::path& path, const VN_SDAI::VnIfcSchema& schema) {
    std::error_code error;
    std::ifstream file(path, std::ios::binary);
    // A directory opens as well, and cannot be read.
    if (!file || std::filesystem::is_directory(path, error))
        throw RulesError(path.string() + ": cannot be read");
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (file.bad())
        throw RulesError(path.string() + ": cannot be read");
    return parse(std::move(text), schema, path.string());
}

Rules Rules::load(const std::filesystem::path& path, std::string_view release) {
    auto file = std::make_shared<const VN_SDAI::VnIfcFile>(VN_SDAI::vnCreateFile(release));
    if (!*file)
        throw FileError("rules of " + std::string(release) + ": " + file->result().message);
    Rules rules = load(path, *file->model().schema());
    rules.m_release = std::move(file);
    return rules;
}

std::optional<std::filesystem::path> Rules::find(std::string_view schemaName) {
    namespace fs = std::filesystem;
    std::vector<fs::path> folders;
    const auto variable = [](const char* name) {
        const char* const value = std::getenv(name);
        return value && *value ? fs::path(value) : fs::path();
    };
    if (const fs::path named = variable("VNIFC_RULES"); !named.empty())
        folders.push_back(named);
    if (const fs::path data = variable("XDG_DATA_HOME"); !data.empty())
        folders.push_back(data / "vnifc" / "rules");
    else if (const fs::path home = variable("HOME"); !home.empty())
        folders.push_back(home / ".local" / "share" / "vnifc" / "rules");
    for (const fs::path& folder : folders) {
        std::error_code error;
        fs::path file = folder / (std::string(schemaName) + ".exp");
        if (fs::is_regular_file(file, error))
            return file;
    }
    return std::nullopt;
}

const std::vector<RuleInfo>& Rules::rules() const noexcept { return m_program->infos; }

bool Rules::has(std::string_view rule) const noexcept {
    return std::ranges::any_of(rules(), [&](const RuleInfo& each) { return express::equalNoCase(each.name, rule); });
}

const std::vector<VN_SDAI::VnIfcDiagnostic>& Rules::remarks() const noexcept { return m_program->remarks; }

std::vector<std::string> Rules::derivedAttributes(const VnIfcEntityBase& instance) const {
    std::vector<std::string> names;
    const rules::Entity* const entity = entityOf(*m_program, instance);
    if (!entity)
        return names;
    const rules::Schema& schema = m_program->schema();
    const TypeIndex type = schema.entityOf(*entity);
    for (const rules::NameId name : schema.attributesOf(type)) {
        const rules::Attribute* const attribute = schema.attribute(type, name);
        if (attribute->kind == rules::AttributeKind::kDerived)
            names.push_back(attribute->declaration->name.text);
    }
    return names;
}

RuleValue Rules::derived(const VnIfcEntityBase& instance, std::string_view name, const RuleLimits& limits) const {
    const rules::Entity* const entity = entityOf(*m_program, instance);
    rules::NameId id = 0;
    if (!entity || !m_program->schema().findName(name, id))
        return {};
    const rules::Attribute* const attribute = m_program->schema().attribute(m_program->schema().entityOf(*entity), id);
    if (!attribute || attribute->kind != rules::AttributeKind::kDerived)
        return {};
    std::optional<rules::ModelView> view;
    if (const VN_SDAI::VnIfcModel* const model = instance.owningModel())
        view.emplace(*m_program, *model);
    Machine machine(*m_program, view ? &*view : nullptr, limits.steps, limits.memory);
    try {
        return machine.toPublic(machine.attributeOf(*entity, *attribute));
    } catch (const rules::NotEvaluated&) {
        return {};
    }
}

namespace {

RuleValue evaluated(const Program& program, std::string_view expression, TypeIndex type, const rules::Entity* self,
                    const VN_SDAI::VnIfcModel* model, const RuleLimits& limits) {
    Program extended = program;
    const std::uint32_t chunk = rules::compileExpression(extended, expression, type);
    std::optional<rules::ModelView> view;
    if (model)
        view.emplace(extended, *model);
    Machine machine(extended, view ? &*view : nullptr, limits.steps, limits.memory);
    try {
        return machine.toPublic(machine.run(chunk, self ? machine.valueOf(*self) : rules::Value()));
    } catch (const rules::NotEvaluated& reason) {
        throw RulesError(std::string("expression: not evaluated: ") + reason.what());
    }
}

} // namespace

RuleValue Rules::evaluate(std::string_view expression, const VnIfcEntityBase& self, const RuleLimits& limits) const {
    const rules::Entity* const entity = entityOf(*m_program, self);
    if (!entity)
        throw RulesError("expression: the instance is of no class of " +
                         std::string(m_program->schema().dictionary().name().view()));
    return evaluated(*m_program, expression, m_program->schema().entityOf(*entity), entity, self.owningModel(), limits);
}

RuleValue Rules::evaluate(std::string_view expression, const VN_SDAI::VnIfcModel& model,
                          const RuleLimits& limits) const {
    return evaluated(*m_program, expression, rules::kNoType, nullptr, &model, limits);
}

RulesCheckResult Rules::check(const VN_SDAI::VnIfcModel& model, const VN_SDAI::VnIfcDiagnosticSink& sink,
                              const RulesCheckOptions& options) const {
    if (model.schema() != &m_program->schema().dictionary())
        throw std::invalid_argument("vnifc::Rules::check: the model is of another schema");
    return rules::Checking(*m_program, model, sink, options).run();
}

RulesCheckResult Rules::check(Model& model, const VN_SDAI::VnIfcDiagnosticSink& sink,
                              const RulesCheckOptions& options) const {
    model.needInverses();
    return check(model.core(), sink, options);
}

std::vector<std::string> Rules::derivedAttributes(const Instance& instance) const {
    return derivedAttributes(detail::opened(instance));
}

RuleValue Rules::derived(const Instance& instance, std::string_view attribute, const RuleLimits& limits) const {
    const VnIfcEntityBase& object = detail::opened(instance);
    instance.state()->needInverses();
    return derived(object, attribute, limits);
}

RuleValue Rules::evaluate(std::string_view expression, const Instance& self, const RuleLimits& limits) const {
    const VnIfcEntityBase& object = detail::opened(self);
    self.state()->needInverses();
    return evaluate(expression, object, limits);
}

} // namespace vnifc
