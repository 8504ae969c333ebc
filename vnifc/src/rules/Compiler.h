#pragma once
#include "Program.h"

#include <deque>
#include <unordered_map>

namespace vnifc::rules {

/// What stops the compilation of one rule or algorithm: the text has something there that cannot be resolved.
struct Unresolved {
    express::Position at;
    std::string found;
    std::string expected;
};

/// Makes a program of the declarations of a schema: names become slots, rows and records once.
class Compiler {
public:
    explicit Compiler(Program& program) : m_program(program), m_schema(*program.m_schema) {}

    /// Everything that the schema declares.
    void compileSchema();
    /// A chunk for the value of an expression. Throws Unresolved.
    std::uint32_t compileAlone(const express::Expression& expression, TypeIndex self);

private:
    using Expression = express::Expression;
    using Statement = express::Statement;

    /// Something that has a name in an algorithm or expression.
    struct Variable {
        std::string_view name;
        std::uint16_t slot = 0;
        TypeId type = 0;
        const Expression* alias = nullptr; ///< of an ALIAS: what it stands for
        TypeIndex population = kNoType;    ///< of a RULE: the entity whose instances it is
    };
    struct LocalAlgorithm {
        std::string_view name;
        std::uint32_t chunk;
    };
    struct Loop {
        std::vector<std::size_t> escapes; ///< jumps that are still to be told where to go
        std::vector<std::size_t> skips;
    };
    /// What is being compiled: a chunk and what can be seen in it.
    struct Activation {
        Activation* outer = nullptr; ///< that the algorithm is declared in
        std::uint32_t chunk = 0;
        TypeIndex self = kNoType; ///< entity or type that SELF is of
        bool hasSelf = false;
        std::uint8_t depth = 0; ///< activations around it
        std::uint16_t slots = 0;
        std::vector<Variable> variables;
        std::vector<LocalAlgorithm> algorithms;
        std::vector<Loop> loops;
    };
    struct Found {
        const Variable* variable = nullptr;
        std::uint8_t levels = 0;
    };

    // Declarations, in Compiler.cpp.
    std::uint32_t addChunk(std::string name);
    Chunk& chunk(std::uint32_t index) { return m_program.chunks[index]; }
    void declareAlgorithms();
    void declareDerived();
    void declareParameters(std::uint32_t index, const express::AlgorithmDecl& algorithm);
    TypeId resolveType(const express::TypeSpec& spec);
    void compileAlgorithm(std::uint32_t index, const express::AlgorithmDecl& algorithm, Activation* outer);
    void compileAlgorithmBody(Activation& activation, const express::AlgorithmDecl& algorithm);
    void compileConstants();
    void compileDerived();
    void compileTypeRules();
    void compileEntityRules();
    void compileUniqueRules();
    void compileGlobalRules();
    void addDomainRules(TypeIndex owner, RuleKind kind, const std::vector<express::DomainRule>& where);
    void addRule(RuleInfo info, Rule rule);
    void makePlans();
    void propagateTypeRules();
    bool mayHaveRules(TypeId type) const;
    Plan planOf(TypeIndex entity) const;
    bool isCheckedElsewhere(TypeIndex entity, const std::vector<NameId>& attributes) const;
    /// Compiles an expression as a chunk of its own; what fails makes it broken.
    void compileValue(std::uint32_t index, const Expression& expression, TypeIndex self, bool hasSelf);
    /// Runs `compile`; what cannot be resolved makes the chunk one that fails, and a remark.
    template <class Compile>
    void guarded(std::uint32_t index, Compile compile);
    void remark(const char* code, const std::string& rule, express::Position at, std::string found,
                std::string expected);

    // Expressions, in Expressions.cpp. Each pushes one value and returns its declared type, 0 if that is not known.
    TypeId expression(const Expression& expression);
    TypeId name(const Expression& expression);
    TypeId knownConstant(const Expression& expression, bool& isKnown);
    TypeId literal(const Expression& expression, NameId name);
    TypeId self(const Expression& expression);
    TypeId load(const Found& found, bool toLook);
    TypeId call(const Expression& expression);
    TypeId callAlgorithm(const Expression& expression, std::uint32_t index, std::uint8_t levels);
    TypeId construct(const Expression& expression, TypeIndex entity);
    TypeId builtIn(const Expression& expression, BuiltIn function);
    bool countOf(const Expression& expression);
    TypeId attribute(const Expression& expression);
    bool isSelfGroup(const Expression& group) const;
    void checkAttribute(const Expression& expression, NameId name, TypeId of);
    TypeId typeOfAttribute(TypeId of, NameId name) const;
    TypeId group(const Expression& expression);
    TypeId index(const Expression& expression);
    TypeId unary(const Expression& expression);
    TypeId operation(const Expression& expression);
    bool isOf(const Expression& expression);
    TypeId interval(const Expression& expression);
    TypeId query(const Expression& expression, bool onlyCounts);
    TypeId aggregate(const Expression& expression);
    /// As expression, for whoever only looks at the value, so that a variable may go on changing in place.
    TypeId look(const Expression& expression);
    std::string stringOf(const Expression& expression) const;
    bool isTypeof(const Expression& expression) const;
    TypeIndex typeNamed(const Expression& text);
    bool roleNamed(const Expression& text, std::string& canonical);
    void pushText(std::string text);
    void pushConstant(const Value& value);
    void pushNumber(const Expression& expression);

    // Statements, in Statements.cpp.
    void statements(const std::vector<Statement>& body);
    void statement(const Statement& statement);
    void alias(const Statement& statement);
    void assign(const Expression& target, const Expression& value);
    void callProcedure(const Statement& statement);
    void insertOrRemove(const Statement& statement, bool isInsert);
    void choose(const Statement& statement);
    void branch(const Statement& statement);
    void repeat(const Statement& statement);
    void returnFrom(const Statement& statement);
    /// The path to what an expression designates; pushes the indices.
    Path path(const Expression& expression);
    std::int32_t addPath(Path path);
    /// A copy of a designation whose indices are variables, computed now.
    const Expression& fixed(const Expression& expression);

    // All.
    std::size_t emit(Op op, std::int32_t b = 0, std::uint16_t a = 0, std::uint8_t flag = 0);
    std::int32_t here() const noexcept { return static_cast<std::int32_t>(m_program.code.size()); }
    void patch(std::size_t instruction) { m_program.code[instruction].b = here(); }
    std::uint16_t addSlots(std::uint16_t count);
    /// Pops into a variable.
    void store(const Found& found);
    Found findVariable(std::string_view name) const;
    bool findAlgorithm(std::string_view name, std::uint32_t& index, std::uint8_t& levels) const;
    [[noreturn]] static void fail(const Expression& expression, std::string expected);
    [[noreturn]] static void fail(express::Position at, std::string found, std::string expected);

    Program& m_program;
    Schema& m_schema;
    Activation* m_activation = nullptr;
    std::string m_ruleName;                                     ///< for remarks
    std::unordered_map<std::string, std::uint32_t> m_functions; ///< of the schema, in lower case
    std::unordered_map<std::string, std::uint32_t> m_constants;
    std::deque<Expression> m_made; ///< by fixed()
    std::deque<std::string> m_names;
};

} // namespace vnifc::rules
