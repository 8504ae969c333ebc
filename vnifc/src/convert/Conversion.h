#pragma once
#include "Layout.h"
#include "Tables.h"
#include "Value.h"

#include <VnIfcCore/VnIfcModel.h>
#include <vnifc/Convert.h>

#include <map>
#include <optional>
#include <set>
#include <unordered_map>
#include <unordered_set>

namespace vnifc::conversion {

/// An instance of the source, taken apart.
struct Record {
    std::uint64_t number = 0;
    const Layout* layout = nullptr; ///< null for instances without a class
    Values values;

    /// The value of an attribute; unset when there is none of that name.
    const Value& operator[](std::string_view attribute) const noexcept;
    bool has(std::string_view attribute) const noexcept { return layout && layout->find(attribute) != Layout::kNone; }
};

/// What instances of an entity become.
struct Mapping {
    enum class Way : std::uint8_t { kSame, kRenamed, kGeneralised, kInlined, kLost };

    Way way = Way::kLost;
    const EntityType* target = nullptr;
    const EntityCase* entityCase = nullptr; ///< the line that led there; null for supertypes
    const InlineCase* inlineCase = nullptr;
    std::string_view reason;
};

/// What becomes of one attribute.
struct Step {
    std::size_t target = Layout::kNone; ///< position there
    const AttributeCase* attributeCase = nullptr;
    bool isSafe = false;     ///< whatever the attribute holds fits as it is
    bool isConsumed = false; ///< other lines take care of it
};

/// What becomes of the instances of one entity.
struct Plan {
    Mapping mapping;
    const Layout* source = nullptr;
    const Layout* target = nullptr;
    std::vector<Step> steps;
    std::vector<const AttributeCase*> computed;
    std::vector<const FoldCase*> folds;                     ///< that instances of the entity give rise to
    std::vector<const VN_SDAI::typed::UniqueRule*> uniques; ///< of the target, which the source does not have
    bool isVerbatim = false;                                ///< the parameter list is right as it stands
};

/// A new instance in the making.
struct Draft {
    const Layout* layout = nullptr;
    Values values;

    Value* find(std::string_view attribute) noexcept;
};

/// One conversion of one model. First every instance is converted on its own, which needs to know only what the
/// instances that it refers to become. Whoever cannot be converted drops out, and those that refer to it are converted
/// once more, until nobody drops out any more. In the end the texts of all are put together and read by the target.
class Conversion {
public:
    Conversion(const VN_SDAI::VnIfcModel& source, VN_SDAI::VnIfcModel& target, const ConvertOptions& options);

    ConvertResult run();

    // For the functions that the tables name.

    /// The instance of that number in the source; without a class for a number that is none.
    Record record(std::uint64_t number);
    Record record(const Value& reference) {
        return reference.is(Value::Kind::kReference) ? record(reference.number) : Record();
    }
    /// Instances of the source of that entity and its subtypes.
    std::vector<std::uint64_t> instancesOf(std::string_view entity);
    /// Adds to the target what the text describes, "IFCCARTESIANPOINT((0.,0.))", instances in it too, and refers to
    /// it. Placeholders are those of DefaultCase. `shared`: one instance for equal texts.
    Value make(std::string_view text, bool shared = false);
    Release& source() noexcept { return m_source; }
    Release& target() noexcept { return m_target; }
    /// SI units in the source's unit of that kind, "TIMEUNIT".
    double unitFactor(std::string_view kind);
    /// Tells that something of the value at hand is gone.
    void tellPartLost(const Value& value, std::string_view reason);
    /// Tells that an attribute of the instance at hand is gone, if it has a value.
    void tellLost(std::string_view attribute, std::string_view reason);
    /// The entity that the instance becomes; null when it does not.
    const EntityType* typeInTarget(std::uint64_t number) const;

private:
    enum class State : std::uint8_t { kVerbatim, kWritten, kAbsorbed, kLost };

    struct Instance {
        std::uint64_t number;
        std::string_view keyword;
        std::string_view parameters; ///< without the outer parentheses
        std::string_view line;       ///< all of it, for what has no class
        const VN_SDAI::VnIfcEntityBase* object;
        const Plan* plan;
    };
    struct Outcome {
        State state = State::kWritten;
        const EntityType* type = nullptr;
        std::string text;
        std::vector<std::pair<std::uint64_t, std::string>> created;
        std::vector<ConvertFinding> findings;
    };
    struct Fold {
        const FoldCase* line;
        std::uint64_t from;
        Value value;
    };

    // Conversion.cpp: the whole
    bool index();
    void collectFolds();
    void convertAll();
    void convertAgain();
    bool refersToGone(std::size_t i) const;
    std::string assemble(ConvertResult& result) const;
    void summarise(ConvertResult& result) const;
    std::size_t find(std::uint64_t number) const noexcept;
    bool progress(double part) const { return !m_options.progress || m_options.progress(part); }

    // Planning.cpp: what becomes of entities
    const Plan& planOf(const EntityType& entity);
    const Mapping& mappingOf(const EntityType& entity);
    Mapping newMapping(const EntityType& entity) const;
    const EntityType* standInFor(std::string_view name) const;
    void planSteps(Plan& plan);
    void planStep(const Plan& plan, const Field& field, Step& step) const;
    void planUniques(Plan& plan) const;
    bool isVerbatim(const Plan& plan);
    void planComputed(Plan& plan);
    void planFolds(Plan& plan);
    bool isSafe(const Field& from, const Field& to);
    bool isSafe(const Type* from, const Type* to);
    bool isClosed(const Type& from, const Type& to);

    // Instances.cpp: one instance
    void convertInstance(std::size_t i, std::string_view refusal = {});
    void convertForeign(const Instance& instance);
    bool convertTo(const Record& record, const Plan& plan);
    void carry(const Record& record, const Plan& plan, Draft& draft);
    void carryField(const Record& record, const Plan& plan, std::size_t position, Draft& draft);
    bool isKeptText(const Record& record, std::size_t position) const;
    bool fitField(const Record& record, const Plan& plan, std::size_t position, Value& value);
    void compute(const Record& record, const Plan& plan, Draft& draft);
    void tellTaken(const Record& record, const Plan& plan, const AttributeCase& line);
    void tellFolded(const Record& record, const Plan& plan);
    void takeFolds(const Record& record, Draft& draft);
    void assign(const Plan& plan, Draft& draft);
    void keepWords(const Plan& plan, Draft& draft);
    void keepUnique(const VN_SDAI::typed::UniqueRule& rule, Draft& draft);
    bool fill(const Record& record, const Plan& plan, Draft& draft);
    Value defaultFor(const Record& record, const Field& field, Draft& draft);
    Plan planTo(const Plan& plan, const Mapping& mapping);
    std::vector<Mapping> retreats(const Plan& plan) const;
    Value build(const Value& value, bool shared);
    Value valueOfPlaceholder(const Value& value);
    Value newGuid(std::string_view purpose);
    Value ownerHistory();
    void forget(std::size_t findings);

    // Inverses.cpp: how often instances are referred to
    struct Limit {
        const VN_SDAI::typed::InverseRow* inverse;
        const EntityType* owner;
    };
    const std::vector<Limit>& limitsOf(const EntityType& entity, std::string_view attribute);
    void limit(const EntityType& entity, std::string_view attribute, Value& value);
    Value copyFor(const Value& value, const EntityType& type);
    Value copiedAttribute(std::string_view attribute);
    Value wholeOf(std::uint64_t number);
    std::unordered_set<std::uint64_t> referredBy(const VN_SDAI::typed::InverseRow& inverse, bool inSource);
    bool meetDemands();
    bool meetDemand(const VN_SDAI::typed::InverseRow& inverse, std::vector<std::size_t> held);
    bool addReferrer(const VN_SDAI::typed::InverseRow& inverse, bool wasDemanded);

    // Properties.cpp: attributes that become properties
    void keepRest(const Record& record, Draft& draft);
    std::string propertyOf(std::string_view name, const Value& value, const Type* from);
    std::string complexPropertyOf(std::string_view name, const Value& value);
    bool keepProperties(Draft& draft, std::string_view set, const std::string& properties);

    // Fitting.cpp: one value
    bool fit(Value& value, const Type* from, const Type* to, const VN_SDAI::typed::EnumerationClass* words = nullptr);
    bool fitAggregate(Value& value, const Type* from, const VN_SDAI::VnIfcAggregationType& to);
    void appendFitting(Values& items, Value&& element, const Type* from, const Type* to);
    bool fitReference(Value& value, const Type* from, const Type* to);
    bool fitSelect(Value& value, const Type* from, const Type* to);
    bool fitTyped(Value& value, const Type* to);
    bool fitLiteral(Value& value, const Type* from, const Type* to, const VN_SDAI::typed::EnumerationClass* words);
    bool fitSimple(Value& value, const Type* from, const Type* to);
    bool coerce(Value& value, std::string_view from, const Type* to);
    bool wrap(Value& value, const EntityType& type, const Type* to);
    bool expand(Value& value, const Type*& from);
    static const Value& first(const Value& value) noexcept;

    void tell(ConvertKind kind, std::string_view attribute, std::string before, std::string after,
              std::string_view reason);

    const VN_SDAI::VnIfcModel& m_sourceModel;
    VN_SDAI::VnIfcModel& m_targetModel;
    const ConvertOptions& m_options;
    Release m_source;
    Release m_target;

    std::string m_text; ///< the source in the form of a file; the instances point into it
    std::vector<Instance> m_instances;
    std::vector<Outcome> m_outcomes; ///< of the same positions
    std::unordered_set<std::uint64_t> m_gone;
    std::unordered_map<std::uint64_t, const EntityType*> m_others;   ///< types of what is not as planned, or new
    std::set<std::pair<std::uint64_t, const EntityType*>> m_refused; ///< what instances cannot be, found out so far
    std::unordered_map<std::uint64_t, std::vector<Fold>> m_folds;    ///< by the instance that gets the value
    std::unordered_map<const EntityType*, Plan> m_plans;
    std::unordered_map<const EntityType*, Mapping> m_mappings;
    std::map<std::pair<const Type*, const Type*>, bool> m_closed;
    std::map<std::pair<const EntityType*, std::string>, std::vector<Limit>> m_limits;
    std::map<std::pair<const VN_SDAI::typed::InverseRow*, std::uint64_t>, std::uint64_t> m_claims;
    std::map<std::pair<const VN_SDAI::typed::UniqueRule*, std::string>, std::uint64_t>
        m_uniques;                                              ///< who has the values
    std::map<std::string, std::uint64_t, std::less<>> m_shared; ///< instances made for all, by their text
    std::vector<std::pair<std::uint64_t, std::string>> m_sharedTexts;
    std::unordered_map<std::uint64_t, std::uint64_t> m_wholes; ///< what instances are part of
    bool m_hasWholes = false;
    std::uint64_t m_nextNumber = 1;
    std::map<std::string, double, std::less<>> m_unitFactors;
    std::optional<Value> m_ownerHistory;

    // The instance at hand
    Outcome* m_outcome = nullptr;
    const Record* m_record = nullptr;
    std::string_view m_attribute; ///< the attribute at hand
    std::string_view m_targetAttribute;
    Value m_value; ///< what the placeholder @value stands for
    std::string_view m_reasonLost;
    bool m_isPartLost = false;
    /// Instances that stand in each other, more than any release has; a file may have them refer in circles.
    static constexpr unsigned kDeepest = 8;
    unsigned m_depth = 0;
    unsigned m_guids = 0; ///< made for the instance at hand
    struct Rest {
        std::size_t position;
        std::string_view reason;
    };
    std::vector<std::pair<std::string, std::string>> m_words; ///< literals without counterpart, by target attribute
    std::vector<Rest> m_rest;                                 ///< values that have no place
};

} // namespace vnifc::conversion
