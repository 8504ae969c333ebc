#pragma once
#include <VnIfcCore/VnIfcModel.h>
#include <vnifc/Error.h>
#include <vnifc/Export.h>
#include <vnifc/Model.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vnifc {

namespace rules {
class Program;
}

/// A text of rules that cannot be used: it cannot be read, it is no EXPRESS, or it does not agree with the dictionary
/// of the release. The message says where, and names the first difference.
class VNIFC_LAYER_API RulesError : public Error {
public:
    using Error::Error;
    ~RulesError() override;
};

/// A value that rules have computed, taken out of the evaluation. Texts are UTF-8.
struct RuleValue {
    enum class Kind : std::uint8_t {
        kIndeterminate, ///< "?"
        kLogical,       ///< `integer` is 0 for FALSE, 1 for UNKNOWN, 2 for TRUE
        kInteger,
        kReal,
        kString,
        kBinary,      ///< `text` in the form of an exchange file
        kEnumeration, ///< `text` is the literal
        kInstance,    ///< of the model
        kConstructed, ///< an entity value that no model holds: `type`, explicit attributes in `names` and `items`
        kAggregate,   ///< `items`
    };

    Kind kind = Kind::kIndeterminate;
    std::int64_t integer = 0;
    double real = 0;
    std::string text;
    std::string type; ///< the named type that the value is of; empty when it is of none
    VN_SDAI::VnDbObjectId instance;
    std::vector<std::string> names;
    std::vector<RuleValue> items;

    bool exists() const noexcept { return kind != Kind::kIndeterminate; }
    /// As EXPRESS writes it: "?", "TRUE", "1.5", "'text'", "[#1, #2]".
    VNIFC_LAYER_API std::string toText() const;
};

enum class RuleKind : std::uint8_t {
    kEntity, ///< a domain rule of an entity
    kType,   ///< a domain rule of a defined type
    kUnique, ///< a uniqueness rule over derived or inverse attributes; VnIfcCheck looks at the others
    kGlobal, ///< a RULE
};

/// A rule of the schema.
struct RuleInfo {
    std::string name; ///< "IfcWall.CorrectPredefinedType", "IfcPositiveInteger.WR1", "IfcSingleProjectInstance"
    RuleKind kind = RuleKind::kEntity;
    std::string text;       ///< its expression, as it is written
    std::uint64_t line = 0; ///< in the text of the schema
    std::uint64_t column = 0;
    bool isCompiled = false; ///< false: something in it cannot be resolved
};

/// What became of one rule in a check.
struct RuleCount {
    std::uint64_t evaluated = 0;
    std::uint64_t violated = 0;
    std::uint64_t indeterminate = 0; ///< UNKNOWN or "?", which is no violation
    std::uint64_t notEvaluated = 0;  ///< a limit was reached
};

/// What one evaluation may take. What takes more has no result.
struct RuleLimits {
    std::uint64_t steps = 10'000'000;           ///< roughly tens of nanoseconds each
    std::size_t memory = std::size_t{64} << 20; ///< in bytes, at most 4 GB
};

struct RulesCheckOptions {
    std::vector<std::string> only;            ///< names of rules, in any case; empty: all
    std::vector<std::string> except;          ///< in any case
    unsigned threads = 0;                     ///< 0: as many as the machine has
    std::uint64_t steps = RuleLimits().steps; ///< of one evaluation
    std::size_t memory = RuleLimits().memory; ///< of one evaluation, in bytes
    VN_SDAI::VnIfcProgress progress;
};

/// What a check came to. The counts are those of Rules::rules(), in that order.
struct RulesCheckResult {
    std::vector<RuleCount> counts;
    std::uint64_t violations = 0;
    std::uint64_t notEvaluated = 0;
    bool isCancelled = false;
    std::vector<std::string> unknown; ///< names in the options that no rule has

    explicit operator bool() const noexcept { return violations == 0; }
};

/// The rules of a schema (ISO 10303-11): what WHERE and UNIQUE clauses and RULEs demand of instances, and how derived
/// attributes are computed, from the EXPRESS text that the schema's publisher distributes. Constant once loaded, and
/// then safe to use from several threads. Evaluations only read the model, which nobody may change meanwhile.
class VNIFC_LAYER_API Rules {
public:
    /// Reads a text and compiles it for the release of that dictionary, which must outlive the rules. Throws
    /// RulesError. What is wrong within single rules does not stop it: see remarks().
    static Rules load(const std::filesystem::path& path, const VN_SDAI::VnIfcSchema& schema);
    /// As load, for a release by its name in any case, whose module the rules keep. Throws FileError, too, when the
    /// release is not known or not installed.
    static Rules load(const std::filesystem::path& path, std::string_view release);
    /// As load, from memory. `name` is how messages call the text.
    static Rules parse(std::string text, const VN_SDAI::VnIfcSchema& schema, std::string_view name = "rules");
    /// Where the rules of a release are found if nobody says: NAME.exp in the folder that the environment variable
    /// VNIFC_RULES names, or else in vnifc/rules in the user's data folder (XDG_DATA_HOME). Nothing when there is none.
    static std::optional<std::filesystem::path> find(std::string_view schemaName);

    Rules(Rules&&) noexcept;
    Rules& operator=(Rules&&) noexcept;
    ~Rules();

    /// All rules in the order of the text: types, entities, RULEs.
    const std::vector<RuleInfo>& rules() const noexcept;
    /// Whether there is a rule of that name, in any case.
    bool has(std::string_view rule) const noexcept;
    /// What is wrong in the text, severity info, with place: codes `rule-text`, for what does not stop anything, and
    /// `rule-not-evaluated`, with the rule's name, for what cannot be resolved.
    const std::vector<VN_SDAI::VnIfcDiagnostic>& remarks() const noexcept;

    /// Looks at all instances of a model of the schema, whose inverse attributes must be set. Violations are findings
    /// of severity error and code `rule`; what cannot be evaluated within the limits is a finding of severity info and
    /// code `rule-not-evaluated`. The sink is called by the calling thread, in ascending order of instances, RULEs
    /// last; the result does not depend on the number of threads. Remarks are not repeated. Throws
    /// std::invalid_argument when the model is of another schema.
    RulesCheckResult check(const VN_SDAI::VnIfcModel& model, const VN_SDAI::VnIfcDiagnosticSink& sink,
                           const RulesCheckOptions& options = {}) const;
    /// As check; sets the inverse attributes first, unless they are set.
    RulesCheckResult check(Model& model, const VN_SDAI::VnIfcDiagnosticSink& sink,
                           const RulesCheckOptions& options = {}) const;

    /// The names of the derived attributes of an entity, inherited ones first, redeclared ones too.
    std::vector<std::string> derivedAttributes(const VN_SDAI::VnIfcEntityBase& instance) const;
    /// As derivedAttributes; throws NotFound for what is no instance.
    std::vector<std::string> derivedAttributes(const Instance& instance) const;
    /// The value of a derived attribute, by its name in any case; indeterminate when the instance has none of that
    /// name, when the text gives it no value, and when a limit is reached.
    RuleValue derived(const VN_SDAI::VnIfcEntityBase& instance, std::string_view attribute,
                      const RuleLimits& limits = {}) const;
    /// As derived; sets the inverse attributes of the model first, unless they are set. Throws NotFound for what is no
    /// instance.
    RuleValue derived(const Instance& instance, std::string_view attribute, const RuleLimits& limits = {}) const;

    /// The value of an expression of the language, in which all that the text declares is known; SELF, and the names of
    /// its attributes, are those of the instance. Throws RulesError for what is no expression or has unknown names, and
    /// when a limit is reached.
    RuleValue evaluate(std::string_view expression, const VN_SDAI::VnIfcEntityBase& self,
                       const RuleLimits& limits = {}) const;
    /// As evaluate; sets the inverse attributes of the model first, unless they are set. Throws NotFound for what is no
    /// instance.
    RuleValue evaluate(std::string_view expression, const Instance& self, const RuleLimits& limits = {}) const;
    /// As evaluate, without SELF; USEDIN looks at the model.
    RuleValue evaluate(std::string_view expression, const VN_SDAI::VnIfcModel& model,
                       const RuleLimits& limits = {}) const;

private:
    explicit Rules(std::unique_ptr<const rules::Program> program) noexcept;

    std::shared_ptr<const VN_SDAI::VnIfcFile> m_release; ///< keeps the module; null when the caller does
    std::unique_ptr<const rules::Program> m_program;
};

} // namespace vnifc
