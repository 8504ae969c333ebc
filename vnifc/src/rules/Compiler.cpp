#include "Compiler.h"

#include <express/Parser.h>
#include <express/Text.h>

#include <algorithm>

namespace vnifc::rules {

using express::lower;

namespace {

/// Variables of an activation.
constexpr std::uint16_t kMaxSlots = 60'000;
/// Algorithms that are declared in each other: instructions tell levels in a byte.
constexpr std::uint8_t kMaxLevels = 100;

} // namespace

Program::Program(std::string text, std::string_view fileName, const VN_SDAI::VnIfcSchema& dictionary)
    : source(std::move(text)), name(fileName) {
    try {
        m_schema = std::make_shared<Schema>(express::parseSchema(name, source, express::Extent::kWhole), dictionary);
    } catch (const express::ExpressError& error) {
        throw RulesError(error.what());
    }
    Compiler(*this).compileSchema();
}

std::uint32_t compileExpression(Program& program, std::string_view text, TypeIndex self) {
    try {
        const express::Expression expression = express::parseExpression("expression", text);
        return Compiler(program).compileAlone(expression, self);
    } catch (const express::ExpressError& error) {
        throw RulesError(error.what());
    } catch (const Unresolved& problem) {
        throw RulesError("expression:" + std::to_string(problem.at.line) + ':' + std::to_string(problem.at.column) +
                         ": found " + problem.found + ", expected " + problem.expected);
    }
}

std::uint32_t Compiler::compileAlone(const express::Expression& value, TypeIndex self) {
    declareAlgorithms();
    const std::uint32_t index = addChunk("expression");
    Activation activation;
    activation.chunk = index;
    activation.self = self;
    activation.hasSelf = self != kNoType;
    activation.slots = 1;
    m_activation = &activation;
    chunk(index).parameters = 1;
    chunk(index).entry = static_cast<std::uint32_t>(here());
    expression(value);
    emit(Op::kReturn);
    chunk(index).slots = std::max(chunk(index).slots, activation.slots);
    m_activation = nullptr;
    return index;
}

void Compiler::compileSchema() {
    addChunk("none");
    declareDerived();
    declareAlgorithms();
    compileConstants();
    const auto& declarations = m_schema.declarations();
    for (const express::AlgorithmDecl& each : declarations.algorithms) {
        if (each.kind != express::AlgorithmKind::kRule)
            compileAlgorithm(m_functions[lower(each.name.text)], each, nullptr);
    }
    compileDerived();
    compileTypeRules();
    compileEntityRules();
    compileUniqueRules();
    compileGlobalRules();
    makePlans();
}

std::uint32_t Compiler::addChunk(std::string name) {
    m_program.chunks.emplace_back().name = std::move(name);
    return static_cast<std::uint32_t>(m_program.chunks.size() - 1);
}

void Compiler::declareDerived() {
    for (std::uint32_t i = 1; i < m_schema.attributes().size(); ++i) {
        Attribute& attribute = m_schema.attribute(i);
        if (attribute.kind != AttributeKind::kDerived || attribute.declaration->value.empty())
            continue;
        attribute.chunk = addChunk(m_schema.named(attribute.owner).name + '.' + attribute.declaration->name.text);
        chunk(attribute.chunk).parameters = 1;
        chunk(attribute.chunk).slots = 1;
        chunk(attribute.chunk).result = attribute.type;
    }
}

void Compiler::declareAlgorithms() {
    const auto& declarations = m_schema.declarations();
    // Chunks that are there already belong to the program that an expression is added to.
    std::unordered_map<std::string, std::uint32_t> known;
    for (std::uint32_t i = 0; i < m_program.chunks.size(); ++i)
        known.emplace(lower(m_program.chunks[i].name), i);
    const auto chunkNamed = [&](const std::string& key, const std::string& name, bool& isNew) {
        const auto found = known.find(key);
        isNew = found == known.end();
        return isNew ? addChunk(name) : found->second;
    };
    for (const express::VariableDecl& each : declarations.constants) {
        bool isNew = false;
        const std::uint32_t index = chunkNamed(lower(each.name.text), each.name.text, isNew);
        m_constants.emplace(lower(each.name.text), index);
        if (isNew)
            guarded(index, [&] { chunk(index).result = resolveType(each.type); });
    }
    for (const express::AlgorithmDecl& each : declarations.algorithms) {
        if (each.kind == express::AlgorithmKind::kRule)
            continue;
        bool isNew = false;
        const std::uint32_t index = chunkNamed(lower(each.name.text), each.name.text, isNew);
        m_functions.emplace(lower(each.name.text), index);
        if (isNew)
            guarded(index, [&] { declareParameters(index, each); });
    }
}

void Compiler::declareParameters(std::uint32_t index, const express::AlgorithmDecl& algorithm) {
    if (algorithm.parameters.size() > kMaxSlots)
        fail(algorithm.name.at, "more parameters than this library can take", "fewer");
    chunk(index).isProcedure = algorithm.kind == express::AlgorithmKind::kProcedure;
    chunk(index).parameters = static_cast<std::uint16_t>(algorithm.parameters.size());
    chunk(index).slots = chunk(index).parameters;
    for (const express::ParameterDecl& each : algorithm.parameters) {
        chunk(index).isVariable.push_back(each.isVariable ? 1 : 0);
        const TypeId type = resolveType(each.type);
        chunk(index).parameterTypes.push_back(type);
    }
    if (algorithm.kind == express::AlgorithmKind::kFunction) {
        const TypeId type = resolveType(algorithm.result);
        chunk(index).result = type;
    }
}

TypeId Compiler::resolveType(const express::TypeSpec& spec) {
    std::string problem;
    const TypeId type = m_schema.resolve(spec, problem);
    if (!problem.empty())
        fail(spec.name.at, '"' + spec.name.text + '"', "a type");
    return type;
}

void Compiler::remark(const char* code, const std::string& rule, express::Position at, std::string found,
                      std::string expected) {
    VN_SDAI::VnIfcDiagnostic remark;
    remark.severity = VN_SDAI::VnIfcDiagnostic::kInfo;
    remark.code = code;
    remark.file = m_program.name;
    remark.line = static_cast<std::uint64_t>(at.line);
    remark.column = static_cast<std::uint64_t>(at.column);
    remark.rule = rule;
    remark.found = std::move(found);
    remark.expected = std::move(expected);
    m_program.remarks.push_back(std::move(remark));
}

template <class Compile>
void Compiler::guarded(std::uint32_t index, Compile compile) {
    const std::size_t start = m_program.code.size();
    Activation* const outer = m_activation;
    try {
        compile();
    } catch (const Unresolved& problem) {
        m_activation = outer;
        m_program.code.resize(start);
        Chunk& broken = chunk(index);
        broken.isBroken = true;
        broken.entry = static_cast<std::uint32_t>(start);
        m_program.messages.push_back(broken.name + " cannot be resolved");
        emit(Op::kFail, static_cast<std::int32_t>(m_program.messages.size() - 1));
        remark("rule-not-evaluated", broken.name, problem.at, problem.found, problem.expected);
    }
}

void Compiler::compileValue(std::uint32_t index, const Expression& value, TypeIndex self, bool hasSelf) {
    m_ruleName = chunk(index).name;
    guarded(index, [&] {
        Activation activation;
        activation.chunk = index;
        activation.self = self;
        activation.hasSelf = hasSelf;
        activation.slots = chunk(index).parameters;
        m_activation = &activation;
        chunk(index).entry = static_cast<std::uint32_t>(here());
        expression(value);
        emit(Op::kReturn);
        m_activation = nullptr;
    });
}

void Compiler::compileConstants() {
    for (const express::VariableDecl& each : m_schema.declarations().constants) {
        const std::uint32_t index = m_constants[lower(each.name.text)];
        if (!chunk(index).isBroken && !each.value.empty())
            compileValue(index, each.value.front(), kNoType, false);
    }
}

void Compiler::compileDerived() {
    for (std::uint32_t i = 1; i < m_schema.attributes().size(); ++i) {
        const Attribute& attribute = m_schema.attributes()[i];
        if (attribute.kind == AttributeKind::kDerived && attribute.chunk != 0)
            compileValue(attribute.chunk, attribute.declaration->value.front(), attribute.owner, true);
    }
}

void Compiler::compileAlgorithm(std::uint32_t index, const express::AlgorithmDecl& algorithm, Activation* outer) {
    if (chunk(index).isBroken)
        return;
    m_ruleName = algorithm.name.text;
    guarded(index, [&] {
        Activation activation;
        activation.outer = outer;
        activation.depth = outer ? static_cast<std::uint8_t>(outer->depth + 1) : std::uint8_t{0};
        if (activation.depth > kMaxLevels)
            fail(algorithm.name.at, "more levels of algorithms than this library can take", "fewer");
        activation.chunk = index;
        for (std::size_t i = 0; i < algorithm.parameters.size(); ++i) {
            activation.variables.push_back({algorithm.parameters[i].name.text, static_cast<std::uint16_t>(i),
                                            chunk(index).parameterTypes[i], nullptr, kNoType});
        }
        activation.slots = static_cast<std::uint16_t>(algorithm.parameters.size());
        m_activation = &activation;
        compileAlgorithmBody(activation, algorithm);
        m_activation = outer;
    });
}

/// Declares what is declared within, then compiles it, and the body at last, so that the body's code is in one piece.
void Compiler::compileAlgorithmBody(Activation& activation, const express::AlgorithmDecl& algorithm) {
    // Locals of this algorithm are seen by those within: slots first, code later.
    const std::size_t firstLocal = activation.variables.size();
    for (const auto* variables : {&algorithm.constants, &algorithm.locals}) {
        for (const express::VariableDecl& each : *variables)
            activation.variables.push_back({each.name.text, addSlots(1), resolveType(each.type), nullptr, kNoType});
    }
    for (const express::AlgorithmDecl& each : algorithm.algorithms) {
        const std::uint32_t inner = addChunk(each.name.text);
        declareParameters(inner, each);
        activation.algorithms.push_back({each.name.text, inner});
    }
    for (std::size_t i = 0; i < algorithm.algorithms.size(); ++i)
        compileAlgorithm(activation.algorithms[i].chunk, algorithm.algorithms[i], &activation);
    chunk(activation.chunk).entry = static_cast<std::uint32_t>(here());
    std::size_t local = firstLocal;
    for (const auto* variables : {&algorithm.constants, &algorithm.locals}) {
        for (const express::VariableDecl& each : *variables) {
            const Variable variable = activation.variables[local++]; // a copy: expressions add variables
            const Type type = m_schema.type(variable.type);
            const auto bound = [&](const std::vector<Expression>& value) {
                const std::uint16_t slot = addSlots(1);
                expression(value.front());
                emit(Op::kStore, slot);
                return static_cast<std::int32_t>(slot);
            };
            if (type.kind == TypeKind::kAggregate && !each.type.layers.empty()) {
                const express::Layer& layer = each.type.layers.front();
                if (!layer.lower.value && !layer.lower.expression.empty())
                    m_schema.setBoundSlot(variable.type, true, bound(layer.lower.expression));
                if (!layer.upper.value && !layer.upper.expression.empty())
                    m_schema.setBoundSlot(variable.type, false, bound(layer.upper.expression));
            }
            if (each.value.empty())
                continue;
            expression(each.value.front());
            store({&variable, 0});
        }
    }
    statements(algorithm.body);
    if (algorithm.kind == express::AlgorithmKind::kRule) {
        for (std::size_t i = 0; i < algorithm.where.size(); ++i) {
            expression(algorithm.where[i].expression);
            if (i > 0)
                emit(Op::kBinary, 0, 0, static_cast<std::uint8_t>(express::Operator::kAnd));
        }
        emit(Op::kReturn);
        return;
    }
    emit(Op::kIndeterminate);
    emit(Op::kReturn);
}

void Compiler::addRule(RuleInfo info, Rule rule) {
    m_program.infos.push_back(std::move(info));
    m_program.rules.push_back(std::move(rule));
}

void Compiler::addDomainRules(TypeIndex owner, RuleKind kind, const std::vector<express::DomainRule>& where) {
    for (std::size_t i = 0; i < where.size(); ++i) {
        const express::DomainRule& each = where[i];
        RuleInfo info;
        info.name = m_schema.named(owner).name + '.' + (each.label.empty() ? std::to_string(i + 1) : each.label);
        info.kind = kind;
        info.text = each.text;
        info.line = static_cast<std::uint64_t>(each.at.line);
        info.column = static_cast<std::uint64_t>(each.at.column);
        Rule rule;
        rule.owner = owner;
        rule.chunk = addChunk(info.name);
        chunk(rule.chunk).parameters = 1;
        chunk(rule.chunk).slots = 1;
        compileValue(rule.chunk, each.expression, owner, true);
        info.isCompiled = !chunk(rule.chunk).isBroken;
        addRule(std::move(info), std::move(rule));
    }
}

void Compiler::compileTypeRules() {
    for (TypeIndex i = kFirstNamedType; i < m_schema.named().size(); ++i) {
        const Named& named = m_schema.named(i);
        if (named.defined)
            addDomainRules(i, RuleKind::kType, named.defined->where);
        else if (named.items)
            addDomainRules(i, RuleKind::kType, named.items->where);
    }
}

void Compiler::compileEntityRules() {
    for (TypeIndex i = kFirstNamedType; i < m_schema.named().size(); ++i) {
        if (m_schema.isEntity(i))
            addDomainRules(i, RuleKind::kEntity, m_schema.named(i).entity->where);
    }
}

/// VnIfcCheck compares the texts of explicit attributes.
bool Compiler::isCheckedElsewhere(TypeIndex entity, const std::vector<NameId>& attributes) const {
    return std::ranges::all_of(attributes, [&](NameId name) {
        const Attribute* const attribute = m_schema.attribute(entity, name);
        if (!attribute || attribute->kind != AttributeKind::kExplicit)
            return false;
        return attribute->row->kind == VN_SDAI::typed::AttributeKind::kString ||
               attribute->row->kind == VN_SDAI::typed::AttributeKind::kGuid;
    });
}

void Compiler::compileUniqueRules() {
    for (TypeIndex i = kFirstNamedType; i < m_schema.named().size(); ++i) {
        if (!m_schema.isEntity(i))
            continue;
        const Named& named = m_schema.named(i);
        for (std::size_t each = 0; each < named.entity->uniques.size(); ++each) {
            const express::UniqueDecl& unique = named.entity->uniques[each];
            RuleInfo info;
            info.name = named.name + '.' + (unique.label.empty() ? "U" + std::to_string(each + 1) : unique.label);
            info.kind = RuleKind::kUnique;
            info.isCompiled = true;
            Rule rule;
            rule.owner = i;
            for (const express::Name& name : unique.attributes) {
                info.line = static_cast<std::uint64_t>(name.at.line);
                info.column = static_cast<std::uint64_t>(name.at.column);
                info.text += (info.text.empty() ? "" : ", ") + name.text;
                NameId id = 0;
                if (m_schema.findName(name.text, id) && m_schema.attribute(i, id)) {
                    rule.unique.push_back(id);
                    continue;
                }
                info.isCompiled = false;
                remark("rule-not-evaluated", info.name, name.at, '"' + name.text + '"',
                       "an attribute of " + named.name);
            }
            if (!info.isCompiled || !isCheckedElsewhere(i, rule.unique))
                addRule(std::move(info), std::move(rule));
        }
    }
}

void Compiler::compileGlobalRules() {
    for (const express::AlgorithmDecl& each : m_schema.declarations().algorithms) {
        if (each.kind != express::AlgorithmKind::kRule || each.where.empty())
            continue;
        RuleInfo info;
        info.name = each.name.text;
        info.kind = RuleKind::kGlobal;
        info.line = static_cast<std::uint64_t>(each.name.at.line);
        info.column = static_cast<std::uint64_t>(each.name.at.column);
        for (const express::DomainRule& domain : each.where)
            info.text += (info.text.empty() ? "" : "; ") + std::string(domain.text);
        Rule rule;
        rule.chunk = addChunk(info.name);
        m_ruleName = info.name;
        guarded(rule.chunk, [&] {
            Activation activation;
            activation.chunk = rule.chunk;
            for (const express::Name& population : each.populations) {
                const TypeIndex entity = m_schema.find(population.text);
                if (entity == kNoType || !m_schema.isEntity(entity))
                    fail(population.at, '"' + population.text + '"', "an entity");
                activation.variables.push_back({population.text, 0, 0, nullptr, entity});
            }
            m_activation = &activation;
            compileAlgorithmBody(activation, each);
            m_activation = nullptr;
        });
        info.isCompiled = !chunk(rule.chunk).isBroken;
        addRule(std::move(info), std::move(rule));
    }
}

/// A value of a type may have rules to keep if the type has some, or what it is made of.
void Compiler::propagateTypeRules() {
    const std::size_t count = m_schema.named().size();
    m_program.typeRules.resize(count);
    m_program.mayHaveTypeRules.assign(count, 0);
    std::vector<std::vector<std::uint32_t>> own(count);
    for (std::uint32_t i = 0; i < m_program.rules.size(); ++i) {
        if (m_program.infos[i].kind == RuleKind::kType && m_program.infos[i].isCompiled)
            own[m_program.rules[i].owner].push_back(i);
    }
    for (TypeIndex i = kFirstNamedType; i < count; ++i) {
        // What a defined type names has its rules, too; no more steps than types, for texts that go in circles.
        TypeIndex each = i;
        for (std::size_t step = 0; each != kNoType && step < count; ++step) {
            m_program.typeRules[i].insert(m_program.typeRules[i].begin(), own[each].begin(), own[each].end());
            const Type& type = m_schema.type(m_schema.named(each).type);
            each = type.kind == TypeKind::kDefined ? m_schema.type(type.inner).name : static_cast<TypeIndex>(kNoType);
        }
        m_program.mayHaveTypeRules[i] = m_program.typeRules[i].empty() ? 0 : 1;
    }
    for (bool isChanged = true; isChanged;) {
        isChanged = false;
        for (TypeIndex i = kFirstNamedType; i < count; ++i) {
            if (m_program.mayHaveTypeRules[i])
                continue;
            const Named& named = m_schema.named(i);
            const bool inMembers = std::ranges::any_of(
                named.members, [&](TypeIndex member) { return m_program.mayHaveTypeRules[member] != 0; });
            const bool inElements = named.kind == TypeKind::kDefined && mayHaveRules(m_schema.type(named.type).inner);
            if (inMembers || inElements) {
                m_program.mayHaveTypeRules[i] = 1;
                isChanged = true;
            }
        }
    }
}

bool Compiler::mayHaveRules(TypeId id) const {
    const Type* type = &m_schema.type(id);
    while (type->kind == TypeKind::kAggregate)
        type = &m_schema.type(type->inner);
    return type->name != kNoType && m_program.mayHaveTypeRules[type->name] != 0;
}

void Compiler::makePlans() {
    propagateTypeRules();
    m_program.plans.resize(m_schema.named().size());
    for (TypeIndex i = kFirstNamedType; i < m_schema.named().size(); ++i) {
        if (m_schema.isEntity(i))
            m_program.plans[i] = planOf(i);
    }
}

Plan Compiler::planOf(TypeIndex entity) const {
    Plan plan;
    for (std::uint32_t i = 0; i < m_program.rules.size(); ++i) {
        const RuleInfo& info = m_program.infos[i];
        if (!info.isCompiled || m_program.rules[i].owner == kNoType || !m_schema.isOf(entity, m_program.rules[i].owner))
            continue;
        if (info.kind == RuleKind::kEntity)
            plan.rules.push_back(i);
        else if (info.kind == RuleKind::kUnique)
            plan.unique.push_back(i);
    }
    for (const NameId name : m_schema.attributesOf(entity)) {
        const Attribute* const attribute = m_schema.attribute(entity, name);
        if (attribute->kind == AttributeKind::kExplicit && mayHaveRules(attribute->type))
            plan.typed.push_back(attribute);
    }
    return plan;
}

std::size_t Compiler::emit(Op op, std::int32_t b, std::uint16_t a, std::uint8_t flag) {
    m_program.storesOutside |= op == Op::kStore && flag > 0;
    m_program.code.push_back({op, flag, a, b});
    return m_program.code.size() - 1;
}

void Compiler::store(const Found& found) {
    if (found.variable->type > std::numeric_limits<std::uint16_t>::max())
        fail({}, "more types than this library can take", "fewer");
    emit(Op::kStore, found.variable->slot, static_cast<std::uint16_t>(found.variable->type), found.levels);
}

std::uint16_t Compiler::addSlots(std::uint16_t count) {
    if (m_activation->slots > kMaxSlots - count)
        fail({}, "more variables than this library can take", "fewer");
    const std::uint16_t first = m_activation->slots;
    m_activation->slots = static_cast<std::uint16_t>(first + count);
    Chunk& current = chunk(m_activation->chunk);
    current.slots = std::max(current.slots, m_activation->slots);
    return first;
}

Compiler::Found Compiler::findVariable(std::string_view name) const {
    Found found;
    for (const Activation* each = m_activation; each; each = each->outer, ++found.levels) {
        for (std::size_t i = each->variables.size(); i-- > 0;) {
            if (express::equalNoCase(each->variables[i].name, name)) {
                found.variable = &each->variables[i];
                return found;
            }
        }
    }
    return found;
}

bool Compiler::findAlgorithm(std::string_view name, std::uint32_t& index, std::uint8_t& levels) const {
    levels = 0;
    for (const Activation* each = m_activation; each; each = each->outer, ++levels) {
        for (const LocalAlgorithm& local : each->algorithms) {
            if (express::equalNoCase(local.name, name)) {
                index = local.chunk;
                return true;
            }
        }
    }
    const auto found = m_functions.find(lower(name));
    if (found == m_functions.end())
        return false;
    index = found->second;
    levels = kGlobal;
    return true;
}

void Compiler::fail(const Expression& expression, std::string expected) {
    fail(expression.at, '"' + express::quotable(expression.text) + '"', std::move(expected));
}

void Compiler::fail(express::Position at, std::string found, std::string expected) {
    throw Unresolved{at, std::move(found), std::move(expected)};
}

} // namespace vnifc::rules
