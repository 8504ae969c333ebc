#pragma once
#include "Machine.h"

#include <atomic>
#include <unordered_map>

namespace vnifc::rules {

/// One check of a model: what Rules::check does.
class Checking {
public:
    Checking(const Program& program, const VN_SDAI::VnIfcModel& model, const VN_SDAI::VnIfcDiagnosticSink& sink,
             const RulesCheckOptions& options);

    RulesCheckResult run();

private:
    /// What is to be told of an instance.
    struct Finding {
        VN_SDAI::VnDbObjectId instance;
        std::uint32_t rule;
        const Attribute* attribute; ///< whose value breaks a type's rule
        std::string reason;         ///< why it was not evaluated; empty for a violation
    };
    struct Worker {
        Worker(const Checking& check, ModelView& view)
            : machine(check.m_program, &view, check.m_options.steps, check.m_options.memory),
              counts(check.m_program.rules.size()) {}

        Machine machine;
        std::vector<RuleCount> counts;
        std::vector<Finding>* findings = nullptr;
    };

    void choose();
    void checkInstances();
    void checkInstance(Worker& worker, const Entity& instance) const;
    void checkTyped(Worker& worker, const Entity& instance, const Attribute& attribute) const;
    void checkValue(Worker& worker, const Entity& instance, const Attribute& attribute, const Value& value,
                    TypeId declared) const;
    bool mayHaveRules(TypeId type) const;
    /// The value of a rule for SELF, counted.
    void evaluate(Worker& worker, std::uint32_t rule, const Value& self, const VN_SDAI::VnDbObjectId& instance,
                  const Attribute* attribute) const;
    void checkUnique(Worker& worker, std::uint32_t rule);
    bool keyOf(Worker& worker, const Entity& instance, const Rule& rule, std::string& key) const;
    void checkGlobal(Worker& worker);
    void add(const std::vector<RuleCount>& counts);
    void tell(const Finding& finding);

    const Program& m_program;
    const VN_SDAI::VnIfcModel& m_model;
    const VN_SDAI::VnIfcDiagnosticSink& m_sink;
    const RulesCheckOptions& m_options;
    ModelView m_view;
    RulesCheckResult m_result;
    std::vector<std::uint8_t> m_isChosen; ///< by rule
    std::vector<Plan> m_plans;            ///< of the rules that are chosen
    std::vector<std::vector<std::uint32_t>> m_typeRules;
};

} // namespace vnifc::rules
