// What statements become (ISO 10303-11, clause 13).
#include "Compiler.h"

#include <express/Text.h>

namespace vnifc::rules {

using express::equalNoCase;
using express::ExpressionKind;
using express::StatementKind;

void Compiler::statements(const std::vector<Statement>& body) {
    for (const Statement& each : body)
        statement(each);
}

void Compiler::statement(const Statement& each) {
    switch (each.kind) {
    case StatementKind::kNull:
        return;
    case StatementKind::kAlias:
        return alias(each);
    case StatementKind::kAssign:
        return assign(each.expressions[0], each.expressions[1]);
    case StatementKind::kCall:
        return callProcedure(each);
    case StatementKind::kCase:
        return choose(each);
    case StatementKind::kCaseAction:
    case StatementKind::kCompound:
        return statements(each.body);
    case StatementKind::kEscape:
    case StatementKind::kSkip: {
        if (m_activation->loops.empty())
            fail(each.at, each.kind == StatementKind::kSkip ? "SKIP" : "ESCAPE", "it within REPEAT");
        Loop& loop = m_activation->loops.back();
        (each.kind == StatementKind::kSkip ? loop.skips : loop.escapes).push_back(emit(Op::kJump));
        return;
    }
    case StatementKind::kIf:
        return branch(each);
    case StatementKind::kRepeat:
        return repeat(each);
    case StatementKind::kReturn:
        return returnFrom(each);
    }
}

const Compiler::Expression& Compiler::fixed(const Expression& each) {
    Expression& copy = m_made.emplace_back(each);
    if (copy.operands.empty())
        return copy;
    if (copy.kind != ExpressionKind::kAttribute && copy.kind != ExpressionKind::kGroup &&
        copy.kind != ExpressionKind::kIndex)
        fail(each, "a variable, its attributes and elements");
    copy.operands[0] = fixed(each.operands[0]);
    for (std::size_t i = 1; i < copy.operands.size(); ++i) {
        const std::uint16_t slot = addSlots(1);
        expression(each.operands[i]);
        emit(Op::kStore, slot);
        // No name of a text has a space in it.
        const std::string& name = m_names.emplace_back("index " + std::to_string(slot));
        m_activation->variables.push_back({name, slot, 0, nullptr, kNoType});
        Expression index;
        index.kind = ExpressionKind::kName;
        index.at = each.operands[i].at;
        index.text = name;
        copy.operands[i] = index;
    }
    return copy;
}

void Compiler::alias(const Statement& each) {
    const std::size_t known = m_activation->variables.size();
    const Expression& designation = fixed(each.expressions[0]);
    m_activation->variables.push_back({each.name, 0, 0, &designation, kNoType});
    statements(each.body);
    m_activation->variables.resize(known);
}

Path Compiler::path(const Expression& each) {
    if (each.kind == ExpressionKind::kName) {
        const Found found = findVariable(each.text);
        if (found.variable && found.variable->alias)
            return path(*found.variable->alias);
        if (!found.variable || found.variable->population != kNoType)
            fail(each, "a variable");
        Path base;
        base.slot = found.variable->slot;
        base.levels = found.levels;
        base.variable = found.variable->type;
        return base;
    }
    if (each.kind == ExpressionKind::kIndex && each.operands.size() == 2) {
        Path of = path(each.operands[0]);
        expression(each.operands[1]);
        of.steps.push_back({Path::Step::Kind::kIndex, 0});
        ++of.indices;
        return of;
    }
    if (each.kind == ExpressionKind::kAttribute) {
        Path of = path(each.operands[0]);
        NameId name = 0;
        if (!m_schema.findName(each.text, name) || !m_schema.isAttributeName(name))
            fail(each, "the name of an attribute");
        of.steps.push_back({Path::Step::Kind::kAttribute, name});
        return of;
    }
    if (each.kind == ExpressionKind::kGroup) {
        Path of = path(each.operands[0]);
        const TypeIndex entity = m_schema.find(each.text);
        if (entity == kNoType || !m_schema.isEntity(entity))
            fail(each, "the name of an entity");
        of.steps.push_back({Path::Step::Kind::kGroup, entity});
        return of;
    }
    fail(each, "a variable, its attributes and elements");
}

std::int32_t Compiler::addPath(Path added) {
    m_program.storesOutside |= added.levels > 0;
    m_program.paths.push_back(std::move(added));
    return static_cast<std::int32_t>(m_program.paths.size() - 1);
}

void Compiler::assign(const Expression& target, const Expression& value) {
    if (target.kind == ExpressionKind::kName) {
        const Found found = findVariable(target.text);
        if (found.variable && !found.variable->alias && found.variable->population == kNoType) {
            const Variable variable = *found.variable;
            expression(value);
            return store({&variable, found.levels});
        }
    }
    Path to = path(target);
    expression(value);
    emit(Op::kAssign, addPath(std::move(to)));
}

void Compiler::insertOrRemove(const Statement& each, bool isInsert) {
    const std::size_t count = isInsert ? 3 : 2;
    if (each.expressions.size() != count) {
        fail(each.at, std::to_string(each.expressions.size()) + " parameters",
             std::to_string(count) + " of " + std::string(each.name));
    }
    Path list = path(each.expressions[0]);
    for (std::size_t i = 1; i < count; ++i)
        expression(each.expressions[i]);
    emit(isInsert ? Op::kInsert : Op::kRemove, addPath(std::move(list)));
}

void Compiler::callProcedure(const Statement& each) {
    std::uint32_t index = 0;
    std::uint8_t levels = 0;
    if (!findAlgorithm(each.name, index, levels)) {
        if (equalNoCase(each.name, "INSERT") || equalNoCase(each.name, "REMOVE"))
            return insertOrRemove(each, equalNoCase(each.name, "INSERT"));
        fail(each.at, '"' + std::string(each.name) + '"', "a procedure");
    }
    const Chunk called = chunk(index);
    if (!called.isProcedure || each.expressions.size() != called.parameters) {
        fail(each.at,
             '"' + std::string(each.name) + "\" with " + std::to_string(each.expressions.size()) + " parameters",
             "a procedure with as many");
    }
    const std::size_t known = m_activation->variables.size();
    std::vector<const Expression*> changed;
    for (std::size_t i = 0; i < each.expressions.size(); ++i) {
        if (called.isVariable[i])
            changed.push_back(&fixed(each.expressions[i]));
    }
    std::size_t nextChanged = 0;
    for (std::size_t i = 0; i < each.expressions.size(); ++i)
        expression(called.isVariable[i] ? *changed[nextChanged++] : each.expressions[i]);
    emit(Op::kCall, static_cast<std::int32_t>(index), called.parameters, levels);
    // The values of VAR parameters are on the stack, the last one on top.
    const std::uint16_t results = addSlots(static_cast<std::uint16_t>(changed.size()));
    for (std::size_t i = changed.size(); i-- > 0;)
        emit(Op::kStore, results + static_cast<std::int32_t>(i));
    for (std::size_t i = 0; i < changed.size(); ++i) {
        Path to = path(*changed[i]);
        emit(Op::kLoad, results + static_cast<std::int32_t>(i));
        emit(Op::kAssign, addPath(std::move(to)));
    }
    m_activation->variables.resize(known);
}

void Compiler::choose(const Statement& each) {
    const std::uint16_t selector = addSlots(1);
    expression(each.expressions[0]);
    emit(Op::kStore, selector);
    std::vector<std::size_t> ends;
    for (const Statement& action : each.body) {
        std::vector<std::size_t> hits;
        for (const Expression& label : action.expressions) {
            emit(Op::kLoad, selector, 1);
            expression(label);
            emit(Op::kBinary, 0, 0, static_cast<std::uint8_t>(express::Operator::kEqual));
            hits.push_back(emit(Op::kJumpIfTrue));
        }
        const std::size_t miss = emit(Op::kJump);
        for (const std::size_t hit : hits)
            patch(hit);
        statement(action);
        ends.push_back(emit(Op::kJump));
        patch(miss);
    }
    statements(each.otherwise);
    for (const std::size_t end : ends)
        patch(end);
}

void Compiler::branch(const Statement& each) {
    look(each.expressions[0]);
    const std::size_t otherwise = emit(Op::kJumpIfNotTrue);
    statements(each.body);
    if (each.otherwise.empty())
        return patch(otherwise);
    const std::size_t end = emit(Op::kJump);
    patch(otherwise);
    statements(each.otherwise);
    patch(end);
}

void Compiler::repeat(const Statement& each) {
    const std::size_t known = m_activation->variables.size();
    const bool counts = !each.expressions.empty();
    std::uint16_t slot = 0;
    std::vector<std::size_t> ends;
    if (counts) {
        for (const Expression& part : each.expressions)
            expression(part);
        if (each.expressions.size() == 2)
            pushConstant(Value::of(std::int64_t{1}));
        slot = addSlots(kRepeatSlots);
        m_activation->variables.push_back({each.name, slot, 0, nullptr, kNoType});
        ends.push_back(emit(Op::kRepeatBegin, 0, slot));
    }
    const std::int32_t again = here();
    m_activation->loops.emplace_back();
    if (!each.whileCondition.empty()) {
        look(each.whileCondition.front());
        ends.push_back(emit(Op::kJumpIfNotTrue));
    }
    statements(each.body);
    for (const std::size_t skip : m_activation->loops.back().skips)
        patch(skip);
    if (!each.untilCondition.empty()) {
        look(each.untilCondition.front());
        ends.push_back(emit(Op::kJumpIfTrue));
    }
    counts ? emit(Op::kRepeatNext, again, slot) : emit(Op::kJump, again);
    for (const std::size_t end : ends)
        patch(end);
    for (const std::size_t escape : m_activation->loops.back().escapes)
        patch(escape);
    m_activation->loops.pop_back();
    m_activation->variables.resize(known);
}

void Compiler::returnFrom(const Statement& each) {
    if (each.expressions.empty())
        emit(Op::kIndeterminate);
    else
        expression(each.expressions[0]);
    emit(Op::kReturn);
}

} // namespace vnifc::rules
