#pragma once
#include "ModelView.h"

#include <VnIfcTyped/Select.h>

namespace vnifc::rules {

/// Evaluates chunks of a program. One for each thread; it reads the model only.
class Machine {
public:
    /// `view` may be null: then nothing uses an instance, and there are no populations. `steps` and `memory` bound one
    /// evaluation.
    Machine(const Program& program, ModelView* view, std::uint64_t steps, std::size_t memory);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /// The value of a chunk for SELF; it lives until the machine is told to forget. Throws NotEvaluated.
    Value run(std::uint32_t chunk, const Value& self);
    Arena::Mark mark() const noexcept { return m_arena.mark(); }
    void forget(Arena::Mark mark) noexcept { m_arena.release(mark); }

    Value valueOf(const Entity& instance) const noexcept;
    /// The value of an attribute of an instance of the model, derived ones included. Throws NotEvaluated.
    Value attributeOf(const Entity& instance, const Attribute& attribute);
    /// The element at a position from 0.
    Value element(const Aggregate& aggregate, std::uint32_t position);
    /// A value for the public.
    RuleValue toPublic(const Value& value, unsigned depth = 0);
    const Schema& schema() const noexcept { return m_schema; }

private:
    struct Frame {
        const Instruction* next; ///< of the caller
        Value* base;
        const Chunk* chunk;
        std::size_t link; ///< of the activation that the algorithm is declared in
        Arena::Mark mark;
    };

    // The machine itself, in Machine.cpp.
    Value execute(std::size_t depth);
    const Instruction* enter(const Chunk& chunk, Value*& top, const Instruction* next, std::size_t link);
    const Instruction* leave(Value*& top);
    bool attribute(const Value& of, NameId name, Value& result, const Chunk*& derived);
    bool queryBegin(Value* slot, const Value& source, bool onlyCounts);
    bool queryNext(Value* slot, Value& result, bool onlyCounts);
    void queryTest(Value* slot, Truth condition, bool onlyCounts);
    static bool repeatBegin(Value* slot, const Value& from, const Value& to, const Value& by);
    static bool repeatNext(Value* slot);
    std::size_t linkOf(std::uint8_t levels) const noexcept;
    Value* slotAt(std::uint8_t levels, std::int32_t slot) noexcept;
    void spend(std::uint64_t steps) {
        if (m_steps < steps)
            outOfSteps();
        m_steps -= steps;
    }
    [[noreturn]] static void outOfSteps();

    // Assignments, in Assignment.cpp.
    Value convert(Value value, TypeId type);
    Value convertAggregate(const Value& value, const Type& type);
    std::int32_t boundOf(std::int32_t bound, std::int32_t slot) const noexcept;
    void assign(const Path& path, const Value* indices, const Value& value);
    Value* target(const Path& path, const Value* indices, TypeId& type);
    Value* attributeSlot(Value& of, NameId name, TypeId& type);
    Value* elementSlot(Value& of, const Value& index, TypeId& type);
    Aggregate* ownAggregate(Value& place);
    void insert(const Path& path, const Value* operands);
    void remove(const Path& path, const Value* operands);
    static void share(Value& value) noexcept;

    // Reading the model, in Access.cpp.
    Value load(const Entity& instance, const Attribute& attribute);
    Value loadUnset(const Entity& instance, const Attribute& attribute);
    Value textOf(std::string_view exchangeText);
    Value binaryOf(std::string_view exchangeText);
    Value instanceAt(const VN_SDAI::VnDbObjectId& handle) const;
    Value enumerationOf(TypeIndex type, std::uint32_t code) const noexcept;
    Value selected(const VN_SDAI::typed::Select& select);
    Value modelAggregate(const VN_SDAI::VnIfcAggr& aggregate, TypeId type, bool isBinary);
    Value singleElement(const VN_SDAI::VnDbObjectId& handle, TypeId type);
    TypeIndex typeOfMember(const VN_SDAI::typed::SelectMember& member);
    bool isOf(const Value& value, TypeIndex type) const noexcept;
    TypeIndex baseType(const Value& value) const noexcept;

    std::string nameInText(const Constructed& entity, NameId name) const;

    // Operators, in Operators.cpp.
    Value binary(express::Operator op, const Value& left, const Value& right);
    Value arithmetic(express::Operator op, const Value& left, const Value& right);
    Value negate(const Value& value) const noexcept;
    Truth compare(express::Operator op, const Value& left, const Value& right);
    /// Whether the values are equal; of entities, with `asInstances`, whether they are the same.
    Truth equal(const Value& left, const Value& right, bool asInstances);
    Truth equalAggregates(const Aggregate& left, const Aggregate& right, bool asInstances);
    Truth hasEach(const Aggregate& left, const Aggregate& right, bool asInstances, bool eachItsOwn);
    Truth equalEntities(const Value& left, const Value& right);
    Value valueOfAttribute(const Value& entity, const Attribute& attribute);
    TypeIndex leafOf(const Value& entity) const noexcept;
    Truth isIn(const Value& element, const Value& aggregate);
    Truth isSubset(const Value& part, const Value& whole);
    bool contains(const Aggregate& aggregate, const Value& element);
    Value interval(const Value& low, const Value& item, const Value& high, std::uint8_t flags);
    Value concatenate(const Value& left, const Value& right);
    Value join(const Value& left, const Value& right);
    Value indexed(const Value& of, const Value& index);
    Value range(const Value& of, const Value& first, const Value& last);

    // Aggregates, in Aggregates.cpp.
    Aggregate* makeAggregate(express::AggregateKind kind, std::uint32_t capacity);
    void append(Aggregate& aggregate, const Value& value);
    /// Adds an element, to a SET only if it does not hold it.
    void add(Aggregate& aggregate, const Value& value);
    Value initializer(const Value* elements, std::uint32_t count, bool isRepeated);
    Value aggregateOperation(express::Operator op, const Value& left, const Value& right);
    Value unite(const Value& left, const Value& right);
    Value intersect(const Aggregate& left, const Aggregate& right);
    Value subtract(const Aggregate& left, const Value& right);

    // Entities and built-in functions, in BuiltIns.cpp.
    Value construct(TypeIndex entity, const Value* parameters, std::uint16_t count);
    Value builtIn(BuiltIn function, const Value* parameters);
    Value size(BuiltIn function, const Value& of);
    Value numeric(BuiltIn function, const Value& of) const noexcept;
    Value typesOf(const Value& value);
    std::vector<TypeIndex> typesFoundIn(const Value& value) const;
    Value usedIn(const Value& instance, const Value& role);
    Value rolesOf(const Value& instance);
    Value format(const Value& number, const Value& form);
    Value number(std::string_view text);
    Value valueIn(const Value& aggregate, const Value& element);
    Value valueUnique(const Value& aggregate);
    Value text(std::string_view content) { return Value::of(m_arena.copy(content)); }

    const Program& m_program;
    const Schema& m_schema;
    ModelView* m_view;
    Arena m_arena;
    std::uint64_t m_stepsPerRun;
    std::uint64_t m_steps = 0;
    struct FreeStack {
        void operator()(Value* memory) const noexcept { ::operator delete(memory); }
    };
    std::unique_ptr<Value, FreeStack> m_stack; ///< not initialized beyond what was used
    Value* m_top;
    const Value* m_bounds = nullptr; ///< slots of the activation that declares what is being assigned to
    std::vector<Frame> m_frames;
    std::vector<std::pair<const void*, const void*>> m_compared; ///< entities that are being compared
    PointerMap<VN_SDAI::typed::SelectMember, TypeIndex> m_members;
    /// What TYPEOF gives; nobody changes it.
    struct TypeSet {
        Aggregate aggregate;
        std::vector<Value> values;
    };
    std::unordered_map<std::uint32_t, TypeSet> m_typeSets; ///< by named type and base type of the value
    std::string m_buffer;
};

} // namespace vnifc::rules
