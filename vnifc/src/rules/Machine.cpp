#include "Machine.h"

#include <algorithm>

namespace vnifc::rules {

namespace {

constexpr std::size_t kStackSize = 256 * 1024;
constexpr std::size_t kMaxDepth = 20'000;

} // namespace

Machine::Machine(const Program& program, ModelView* view, std::uint64_t steps, std::size_t memory)
    : m_program(program), m_schema(program.schema()), m_view(view), m_arena(memory), m_stepsPerRun(steps),
      m_stack(static_cast<Value*>(::operator new(kStackSize * sizeof(Value)))), m_top(m_stack.get()) {}

Machine::~Machine() = default;

void Machine::outOfSteps() { throw NotEvaluated("more steps than an evaluation may take"); }

Value Machine::run(std::uint32_t chunk, const Value& self) {
    m_steps = m_stepsPerRun;
    m_compared.clear();
    m_frames.clear();
    m_top = m_stack.get();
    const Chunk& called = m_program.chunks[chunk];
    if (called.parameters > 0)
        *m_top++ = self;
    return execute(chunk);
}

std::size_t Machine::linkOf(std::uint8_t levels) const noexcept {
    std::size_t link = m_frames.size() - 1;
    for (; levels > 0; --levels)
        link = m_frames[link].link;
    return link;
}

Value* Machine::slotAt(std::uint8_t levels, std::int32_t slot) noexcept { return m_frames[linkOf(levels)].base + slot; }

/// Activates a chunk, whose parameters are on the stack.
const Instruction* Machine::enter(const Chunk& chunk, Value*& top, const Instruction* next, std::size_t link) {
    constexpr std::size_t kMargin = 64;
    if (m_frames.size() >= kMaxDepth)
        throw NotEvaluated("calls that are nested deeper than an evaluation may");
    Value* const base = top - chunk.parameters;
    if (m_stack.get() + kStackSize - top < static_cast<std::ptrdiff_t>(chunk.slots + kMargin))
        throw NotEvaluated("more variables than an evaluation may have");
    spend(chunk.slots / 16);
    m_frames.push_back({next, base, &chunk, link, m_arena.mark()});
    for (Value* each = top; each < base + chunk.slots; ++each)
        *each = Value();
    top = base + chunk.slots;
    for (std::size_t i = 0; i < chunk.parameterTypes.size(); ++i) {
        share(base[i]);
        base[i] = convert(base[i], chunk.parameterTypes[i]);
    }
    return &m_program.code[chunk.entry];
}

const Instruction* Machine::leave(Value*& top) {
    const Frame frame = m_frames.back();
    Value result = top[-1];
    share(result);
    if (frame.chunk->result != 0)
        result = convert(result, frame.chunk->result);
    m_frames.pop_back();
    top = frame.base;
    if (frame.chunk->isProcedure) {
        Value* next = top;
        for (std::size_t i = 0; i < frame.chunk->isVariable.size(); ++i) {
            if (!frame.chunk->isVariable[i])
                continue;
            Value value = frame.base[i];
            share(value);
            *next++ = value;
        }
        top = next;
        return frame.next;
    }
    const bool isPlain = result.tag < Tag::kString || result.is(Tag::kEnumeration) || result.is(Tag::kInstance);
    if (isPlain && !m_program.storesOutside)
        m_arena.release(frame.mark);
    *top++ = result;
    return frame.next;
}

/// False when the attribute is derived, and `derived` is what computes it.
bool Machine::attribute(const Value& of, NameId name, Value& result, const Chunk*& derived) {
    result = Value();
    if (!of.isEntity())
        return true;
    const TypeIndex entity = leafOf(of);
    const Attribute* const found = m_schema.attribute(entity, name);
    if (found && found->kind == AttributeKind::kDerived) {
        if (found->chunk == 0)
            return true;
        derived = &m_program.chunks[found->chunk];
        return false;
    }
    if (of.is(Tag::kConstructed)) {
        if (const Value* const held = of.constructed->find(name))
            result = *held;
        share(result);
    } else if (found) {
        result = load(*of.instance, *found);
    }
    return true;
}

bool Machine::queryBegin(Value* slot, const Value& source, bool onlyCounts) {
    if (!source.is(Tag::kAggregate))
        return false;
    slot[kQuerySource] = source;
    slot[kQueryPosition] = Value::of(std::int64_t{0});
    if (onlyCounts) {
        slot[kQueryResult] = Value::of(std::int64_t{0});
        return true;
    }
    Aggregate* const result = makeAggregate(source.aggregate->kind, 0);
    result->type = source.aggregate->type;
    result->element = source.aggregate->element;
    result->isInitializer = source.aggregate->isInitializer;
    if (source.aggregate->isArray()) {
        result->lower = source.aggregate->lower;
        result->upper = source.aggregate->upper;
    }
    slot[kQueryResult] = Value::of(result);
    return true;
}

bool Machine::queryNext(Value* slot, Value& result, bool onlyCounts) {
    const Aggregate& source = *slot[kQuerySource].aggregate;
    const auto position = static_cast<std::uint32_t>(slot[kQueryPosition].integer++);
    if (position >= source.count) {
        // An ARRAY keeps its size, with nothing in place of what does not fulfil the condition (12.6.7).
        result =
            onlyCounts && source.isArray() ? Value::of(static_cast<std::int64_t>(source.count)) : slot[kQueryResult];
        return false;
    }
    const auto remember = [&] {
        const Arena::Mark mark = m_arena.mark();
        slot[kQueryMark].integer = static_cast<std::int64_t>(std::uint64_t{mark.block} << 32 | mark.used);
    };
    if (onlyCounts)
        remember();
    slot[kQueryElement] = element(source, position);
    share(slot[kQueryElement]);
    if (!onlyCounts)
        remember();
    return true;
}

void Machine::queryTest(Value* slot, Truth condition, bool onlyCounts) {
    if (!m_program.storesOutside) {
        const auto mark = static_cast<std::uint64_t>(slot[kQueryMark].integer);
        m_arena.release({static_cast<std::uint32_t>(mark >> 32), static_cast<std::uint32_t>(mark)});
    }
    if (onlyCounts) {
        slot[kQueryResult].integer += condition == kTrue ? 1 : 0;
        return;
    }
    if (condition == kTrue)
        append(*slot[kQueryResult].aggregate, slot[kQueryElement]);
    else if (slot[kQuerySource].aggregate->isArray())
        append(*slot[kQueryResult].aggregate, Value());
}

bool Machine::repeatBegin(Value* slot, const Value& from, const Value& to, const Value& by) {
    if (!from.isNumber() || !to.isNumber() || !by.isNumber())
        return false;
    slot[kRepeatVariable] = from;
    slot[kRepeatBound] = to;
    slot[kRepeatStep] = by;
    return by.number() >= 0 ? from.number() <= to.number() : from.number() >= to.number();
}

bool Machine::repeatNext(Value* slot) {
    const Value& by = slot[kRepeatStep];
    Value& variable = slot[kRepeatVariable];
    if (!variable.isNumber())
        return false;
    std::int64_t next = 0;
    if (variable.is(Tag::kInteger) && by.is(Tag::kInteger)) {
        if (__builtin_add_overflow(variable.integer, by.integer, &next))
            return false;
        variable = Value::of(next);
    } else {
        variable = Value::of(variable.number() + by.number());
    }
    const double bound = slot[kRepeatBound].number();
    return by.number() >= 0 ? variable.number() <= bound : variable.number() >= bound;
}

Value Machine::execute(std::size_t first) {
    Value* top = m_top;
    const Instruction* next = enter(m_program.chunks[first], top, nullptr, 0);
    Value* base = m_frames.back().base;
    const Instruction* const code = m_program.code.data();
    Value* const limit = m_stack.get() + kStackSize - 1;
    const auto push = [&](const Value& value) {
        if (top >= limit)
            throw NotEvaluated("more operands than an evaluation may have");
        *top++ = value;
    };
    const auto call = [&](const Chunk& chunk, std::size_t link) {
        next = enter(chunk, top, next, link);
        base = m_frames.back().base;
    };
    while (true) {
        if (m_steps-- == 0)
            outOfSteps();
        const Instruction it = *next++;
        switch (it.op) {
        case Op::kConstant:
            push(m_program.constants[static_cast<std::size_t>(it.b)]);
            break;
        case Op::kIndeterminate:
            push(Value());
            break;
        case Op::kLoad: {
            Value& slot = it.levels() == 0 ? base[it.b] : *slotAt(it.levels(), it.b);
            if (it.a == 0)
                share(slot);
            push(slot);
            break;
        }
        case Op::kStore: {
            Value value = *--top;
            share(value);
            Value* const slots = it.levels() == 0 ? base : slotAt(it.levels(), 0);
            m_bounds = slots;
            slots[it.b] = it.a == 0 ? value : convert(value, it.a);
            break;
        }
        case Op::kAttribute:
        case Op::kSelfAttribute: {
            const Value of = it.op == Op::kAttribute ? *--top : base[0];
            Value result;
            const Chunk* derived = nullptr;
            if (attribute(of, static_cast<NameId>(it.b), result, derived)) {
                push(result);
                break;
            }
            push(of);
            call(*derived, 0);
            break;
        }
        case Op::kGroup:
            if (!top[-1].isEntity() || !isOf(top[-1], static_cast<TypeIndex>(it.b)))
                top[-1] = Value();
            break;
        case Op::kIndex:
            --top;
            top[-1] = indexed(top[-1], top[0]);
            break;
        case Op::kIndexRange:
            top -= 2;
            top[-1] = range(top[-1], top[0], top[1]);
            break;
        case Op::kNegate:
            top[-1] = negate(top[-1]);
            break;
        case Op::kPlus:
            if (!top[-1].isNumber())
                top[-1] = Value();
            break;
        case Op::kNot:
            top[-1] = Value::of(static_cast<Truth>(kTrue - top[-1].truth()));
            break;
        case Op::kBinary:
            --top;
            top[-1] = binary(static_cast<express::Operator>(it.flag), top[-1], top[0]);
            break;
        case Op::kAndJump:
        case Op::kOrJump: {
            const Truth truth = top[-1].truth();
            top[-1] = Value::of(truth);
            if (truth == (it.op == Op::kAndJump ? kFalse : kTrue))
                next = code + it.b;
            break;
        }
        case Op::kInterval:
            top -= 2;
            top[-1] = interval(top[-1], top[0], top[1], it.flag);
            break;
        case Op::kAggregate: {
            const std::int32_t values = it.flag ? 2 * it.b : it.b;
            top -= values;
            const Value result = initializer(top, static_cast<std::uint32_t>(it.b), it.flag != 0);
            push(result);
            break;
        }
        case Op::kQueryBegin:
            --top;
            if (!queryBegin(base + it.a, *top, it.flag != 0)) {
                push(Value());
                next = code + it.b;
            }
            break;
        case Op::kQueryNext: {
            Value result;
            if (!queryNext(base + it.a, result, it.flag != 0)) {
                push(result);
                next = code + it.b;
            }
            break;
        }
        case Op::kQueryTest:
            --top;
            queryTest(base + it.a, top->truth(), it.flag != 0);
            next = code + it.b;
            break;
        case Op::kCall:
            call(m_program.chunks[static_cast<std::size_t>(it.b)], it.levels() == kGlobal ? 0 : linkOf(it.levels()));
            break;
        case Op::kBuiltIn: {
            top -= it.a;
            const Value result = builtIn(static_cast<BuiltIn>(it.b), top);
            push(result);
            break;
        }
        case Op::kConstruct: {
            top -= it.a;
            const Value result = construct(static_cast<TypeIndex>(it.b), top, it.a);
            push(result);
            break;
        }
        case Op::kIsOf:
            top[-1] =
                Value::of(top[-1].exists() ? isOf(top[-1], static_cast<TypeIndex>(it.b)) ? kTrue : kFalse : kUnknown);
            break;
        case Op::kCountOf: {
            const auto& types = m_program.typeLists[static_cast<std::size_t>(it.b)];
            const Value of = top[-1];
            const auto isThat = [&](TypeIndex type) { return isOf(of, type); };
            top[-1] =
                of.exists() ? Value::of(static_cast<std::int64_t>(std::ranges::count_if(types, isThat))) : Value();
            break;
        }
        case Op::kPopulation: {
            Aggregate* const all = makeAggregate(express::AggregateKind::kSet, 0);
            if (m_view) {
                const auto handles = m_view->population(static_cast<TypeIndex>(it.b));
                all->source = Aggregate::Source::kHandles;
                all->data = handles.data();
                all->count = static_cast<std::uint32_t>(handles.size());
            }
            push(Value::of(all));
            break;
        }
        case Op::kJump:
            next = code + it.b;
            break;
        case Op::kJumpIfNotTrue:
            if ((--top)->truth() != kTrue)
                next = code + it.b;
            break;
        case Op::kJumpIfTrue:
            if ((--top)->truth() == kTrue)
                next = code + it.b;
            break;
        case Op::kRepeatBegin:
            top -= 3;
            if (!repeatBegin(base + it.a, top[0], top[1], top[2]))
                next = code + it.b;
            break;
        case Op::kRepeatNext:
            if (repeatNext(base + it.a))
                next = code + it.b;
            break;
        case Op::kAssign: {
            const Path& path = m_program.paths[static_cast<std::size_t>(it.b)];
            top -= path.indices + 1;
            assign(path, top, top[path.indices]);
            break;
        }
        case Op::kInsert: {
            const Path& path = m_program.paths[static_cast<std::size_t>(it.b)];
            top -= path.indices + 2;
            insert(path, top);
            break;
        }
        case Op::kRemove: {
            const Path& path = m_program.paths[static_cast<std::size_t>(it.b)];
            top -= path.indices + 1;
            remove(path, top);
            break;
        }
        case Op::kPop:
            --top;
            break;
        case Op::kReturn:
            next = leave(top);
            if (m_frames.empty())
                return top[-1];
            base = m_frames.back().base;
            break;
        case Op::kFail:
            throw NotEvaluated(m_program.messages[static_cast<std::size_t>(it.b)]);
        }
    }
}

} // namespace vnifc::rules
