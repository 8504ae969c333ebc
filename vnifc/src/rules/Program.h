#pragma once
#include "Schema.h"

#include <vnifc/Rules.h>

#include <deque>

namespace vnifc::rules {

/// Instructions of a machine with a stack of values. "Pops" and "pushes" are about that stack; a slot is a variable of
/// the activation, or, with `levels` above 0, of one that the algorithm is declared in.
enum class Op : std::uint8_t {
    kConstant,      ///< pushes constant `b`
    kIndeterminate, ///< pushes "?"
    kLoad,          ///< pushes slot `b`, `levels` up; `a`: only to look at it, so that it may still change in place
    kStore,         ///< pops into slot `b`, `levels` up, made a value of type `a`
    kAttribute,     ///< pops an entity, pushes its attribute of name `b`
    kSelfAttribute, ///< pushes the attribute of name `b` of slot 0
    kGroup,         ///< pops an entity, pushes it if it is of entity `b`, "?" otherwise
    kIndex,         ///< pops index and value, pushes the element or character
    kIndexRange,    ///< pops two indices and a value
    kNegate,
    kPlus,
    kNot,
    kBinary,        ///< pops two operands, pushes the result of Operator `flag`
    kAndJump,       ///< makes the top a LOGICAL; jumps to `b` if it is FALSE, which stays as the result
    kOrJump,        ///< makes the top a LOGICAL; jumps to `b` if it is TRUE
    kInterval,      ///< pops high, item, low; `flag`: bit 0 "<=" in front, bit 1 "<=" after
    kAggregate,     ///< pops `b` elements, each a value and a count if `flag`
    kQueryBegin,    ///< pops the source into slot `a`; jumps to `b`, with "?" pushed, if it is none
    kQueryNext,     ///< the next element of query `a`; jumps to `b`, with the result pushed, after the last
    kQueryTest,     ///< pops the condition, takes or leaves the element of query `a`, jumps to `b`; `flag`: only counts
    kCall,          ///< calls chunk `b`, whose `a` parameters are on the stack, declared `levels` up; pushes its result
    kBuiltIn,       ///< pops `a` parameters, pushes the result of built-in function `b`
    kConstruct,     ///< pops `a` parameters, pushes a value of entity `b`
    kIsOf,          ///< pops a value, pushes whether it is of type `b`: 'S.T' IN TYPEOF(value)
    kCountOf,       ///< pops a value, pushes of how many of the types in list `b` it is
    kPopulation,    ///< pushes the SET of the model's instances of entity `b`
    kJump,          ///< to `b`
    kJumpIfNotTrue, ///< pops; to `b`
    kJumpIfTrue,    ///< pops; to `b`
    kRepeatBegin,   ///< pops by, to, from; slot `a` is the variable; jumps to `b` if there is nothing to repeat
    kRepeatNext,    ///< jumps to `b` unless the loop is over
    kAssign,        ///< pops a value and indices, assigns by path `b`
    kInsert,        ///< pops position, element and indices, inserts into the list that path `b` leads to
    kRemove,        ///< pops position and indices, removes
    kPop,
    kReturn, ///< pops the result
    kFail,   ///< ends the evaluation with message `b`
};

/// Levels of what is declared in no algorithm.
inline constexpr std::uint8_t kGlobal = 255;

struct Instruction {
    Op op = Op::kFail;
    std::uint8_t flag = 0;
    std::uint16_t a = 0;
    std::int32_t b = 0;
    // `levels` is where `flag` is not needed otherwise.
    std::uint8_t levels() const noexcept { return flag; }
};

static_assert(sizeof(Instruction) == 8);

/// Slots that a query takes, from the one that it is named by.
enum QuerySlot : std::uint16_t { kQuerySource, kQueryPosition, kQueryResult, kQueryElement, kQueryMark, kQuerySlots };
/// Slots that a REPEAT with an increment takes; the first is its variable.
enum RepeatSlot : std::uint16_t { kRepeatVariable, kRepeatBound, kRepeatStep, kRepeatSlots };

/// A piece of program that is activated as a whole: an expression of a rule, a derivation, an algorithm.
struct Chunk {
    std::string name;
    std::uint32_t entry = 0;
    std::uint16_t parameters = 0;
    std::uint16_t slots = 0; ///< parameters included
    TypeId result = 0;       ///< what the result is made
    std::vector<TypeId> parameterTypes;
    std::vector<std::uint8_t> isVariable; ///< by parameter: VAR, whose value the caller takes back
    bool isProcedure = false;
    bool isBroken = false; ///< something in it cannot be resolved; the remarks tell
};

/// How an assignment finds its target.
struct Path {
    struct Step {
        enum class Kind : std::uint8_t { kAttribute, kGroup, kIndex };
        Kind kind;
        std::uint16_t id; ///< name of the attribute, entity of the group
    };

    std::uint16_t slot = 0;
    std::uint8_t levels = 0;
    std::vector<Step> steps;
    std::uint16_t indices = 0; ///< steps of kind kIndex
    TypeId variable = 0;       ///< type of the variable itself
};

/// The built-in functions (clause 15), in alphabetical order.
enum class BuiltIn : std::uint8_t {
    kAbs,
    kAcos,
    kAsin,
    kAtan,
    kBlength,
    kCos,
    kExists,
    kExp,
    kFormat,
    kHibound,
    kHiindex,
    kLength,
    kLobound,
    kLog,
    kLog10,
    kLog2,
    kLoindex,
    kNvl,
    kOdd,
    kRolesof,
    kSin,
    kSizeof,
    kSqrt,
    kTan,
    kTypeof,
    kUsedin,
    kValue,
    kValueIn,
    kValueUnique,
};

/// What is to be looked at.
struct Rule {
    TypeIndex owner = kNoType; ///< entity or type
    std::uint32_t chunk = 0;
    std::vector<NameId> unique; ///< attributes of a uniqueness rule
};

/// What has to be looked at in an instance.
struct Plan {
    std::vector<std::uint32_t> rules;    ///< of the entity and its supertypes
    std::vector<const Attribute*> typed; ///< explicit attributes whose values may be of a type with rules
    std::vector<std::uint32_t> unique;
};

/// A compiled text. Constant once made.
class Program {
public:
    Program(std::string text, std::string_view name, const VN_SDAI::VnIfcSchema& dictionary);

    const Schema& schema() const noexcept { return *m_schema; }

    std::string source; ///< which all texts below point into
    std::string name;
    std::vector<Instruction> code;
    std::vector<Value> constants;
    std::vector<Chunk> chunks;
    std::vector<Path> paths;
    std::vector<std::vector<TypeIndex>> typeLists;
    std::vector<std::string> messages;
    std::vector<Rule> rules;
    std::vector<RuleInfo> infos; ///< of the rules, for the public
    std::vector<VN_SDAI::VnIfcDiagnostic> remarks;
    std::vector<Plan> plans;                           ///< by entity; empty for other types
    std::vector<std::vector<std::uint32_t>> typeRules; ///< domain rules by named type, those of what it names first
    std::vector<std::uint8_t> mayHaveTypeRules;        ///< by named type: a value of it may have rules to keep
    std::vector<std::pair<TypeIndex, NameId>> roles;   ///< those that USEDIN asks for by constant texts
    /// An algorithm changes variables of the one that it is declared in, so that memory may be held from anywhere.
    bool storesOutside = false;
    bool needsAllRoles = false;    ///< USEDIN is asked for others, or ROLESOF is called
    std::deque<std::string> texts; ///< of string constants

private:
    friend class Compiler;
    std::shared_ptr<Schema> m_schema; ///< copies of a program share it
};

/// Adds the value of an expression as a chunk to a program, for Rules::evaluate. With `self` the names of that entity's
/// attributes are known. Throws RulesError.
std::uint32_t compileExpression(Program& program, std::string_view text, TypeIndex self);

} // namespace vnifc::rules
