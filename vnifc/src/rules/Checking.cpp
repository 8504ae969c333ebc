#include "Checking.h"

#include "Member.h"

#include <VnIfcCore/VnIfcEntityType.h>
#include <exchange/WorkSharing.h>
#include <express/Text.h>

#include <algorithm>
#include <memory>

namespace vnifc::rules {

namespace {

/// Instances that a thread takes at a time.
constexpr std::size_t kBlock = 1024;

bool isNamed(const std::vector<std::string>& names, const std::string& name) {
    return std::ranges::any_of(names, [&](const std::string& each) { return express::equalNoCase(each, name); });
}

} // namespace

Checking::Checking(const Program& program, const VN_SDAI::VnIfcModel& model, const VN_SDAI::VnIfcDiagnosticSink& sink,
                   const RulesCheckOptions& options)
    : m_program(program), m_model(model), m_sink(sink), m_options(options), m_view(program, model) {
    m_result.counts.resize(program.rules.size());
    choose();
}

void Checking::choose() {
    for (const auto* names : {&m_options.only, &m_options.except}) {
        for (const std::string& name : *names) {
            const auto hasName = [&](const RuleInfo& info) { return express::equalNoCase(info.name, name); };
            if (std::ranges::none_of(m_program.infos, hasName))
                m_result.unknown.push_back(name);
        }
    }
    for (const RuleInfo& info : m_program.infos) {
        const bool isChosen = (m_options.only.empty() || isNamed(m_options.only, info.name)) &&
                              !isNamed(m_options.except, info.name) && info.isCompiled;
        m_isChosen.push_back(isChosen ? 1 : 0);
    }
    const auto isLeftOut = [&](std::uint32_t rule) { return m_isChosen[rule] == 0; };
    m_typeRules = m_program.typeRules;
    bool hasTypeRules = false;
    for (auto& rules : m_typeRules) {
        std::erase_if(rules, isLeftOut);
        hasTypeRules |= !rules.empty();
    }
    m_plans = m_program.plans;
    for (Plan& plan : m_plans) {
        std::erase_if(plan.rules, isLeftOut);
        if (!hasTypeRules)
            plan.typed.clear();
    }
}

RulesCheckResult Checking::run() {
    checkInstances();
    if (m_result.isCancelled)
        return std::move(m_result);
    Worker worker(*this, m_view);
    for (std::uint32_t i = 0; i < m_program.rules.size(); ++i) {
        if (m_isChosen[i] && m_program.infos[i].kind == RuleKind::kUnique)
            checkUnique(worker, i);
    }
    checkGlobal(worker);
    add(worker.counts);
    return std::move(m_result);
}

void Checking::add(const std::vector<RuleCount>& counts) {
    for (std::size_t i = 0; i < counts.size(); ++i) {
        RuleCount& sum = m_result.counts[i];
        sum.evaluated += counts[i].evaluated;
        sum.violated += counts[i].violated;
        sum.indeterminate += counts[i].indeterminate;
        sum.notEvaluated += counts[i].notEvaluated;
        m_result.violations += counts[i].violated;
        m_result.notEvaluated += counts[i].notEvaluated;
    }
}

/// Findings are told when all are there, in the order of the instances, so that the result does not depend on threads.
void Checking::checkInstances() {
    const std::vector<VN_SDAI::VnDbObjectId> instances = m_model.instances();
    const std::size_t blocks = (instances.size() + kBlock - 1) / kBlock;
    std::vector<std::vector<Finding>> findings(blocks);
    const unsigned threads = VN_SDAI::threadsFor(m_options.threads, blocks);
    std::vector<std::unique_ptr<Worker>> workers(threads);
    const auto work = [&](unsigned number, std::size_t block) {
        if (!workers[number])
            workers[number] = std::make_unique<Worker>(*this, m_view);
        Worker& worker = *workers[number];
        worker.findings = &findings[block];
        const std::size_t end = std::min(instances.size(), (block + 1) * kBlock);
        for (std::size_t i = block * kBlock; i < end; ++i) {
            if (const Entity* const instance = entityAt(instances[i]))
                checkInstance(worker, *instance);
        }
        return true;
    };
    m_result.isCancelled = !VN_SDAI::shareWork(blocks, threads, m_options.progress, work);
    for (const auto& worker : workers) {
        if (worker)
            add(worker->counts);
    }
    for (const std::vector<Finding>& block : findings) {
        for (const Finding& each : block)
            tell(each);
    }
}

void Checking::checkInstance(Worker& worker, const Entity& instance) const {
    const TypeIndex type = m_program.schema().entityOf(instance);
    if (type == kNoType)
        return;
    const Plan& plan = m_plans[type];
    if (!plan.rules.empty()) {
        const Value self = worker.machine.valueOf(instance);
        for (const std::uint32_t rule : plan.rules)
            evaluate(worker, rule, self, instance.objectId(), nullptr);
    }
    for (const Attribute* attribute : plan.typed)
        checkTyped(worker, instance, *attribute);
}

void Checking::evaluate(Worker& worker, std::uint32_t rule, const Value& self, const VN_SDAI::VnDbObjectId& instance,
                        const Attribute* attribute) const {
    RuleCount& count = worker.counts[rule];
    const Arena::Mark mark = worker.machine.mark();
    try {
        const Truth truth = worker.machine.run(m_program.rules[rule].chunk, self).truth();
        ++count.evaluated;
        if (truth == kUnknown)
            ++count.indeterminate;
        if (truth == kFalse) {
            ++count.violated;
            worker.findings->push_back({instance, rule, attribute, {}});
        }
    } catch (const NotEvaluated& reason) {
        ++count.notEvaluated;
        worker.findings->push_back({instance, rule, attribute, reason.what()});
    }
    worker.machine.forget(mark);
}

bool Checking::mayHaveRules(TypeId id) const {
    const Schema& schema = m_program.schema();
    const Type* type = &schema.type(id);
    while (type->kind == TypeKind::kAggregate)
        type = &schema.type(type->inner);
    return type->name != kNoType && m_program.mayHaveTypeRules[type->name] != 0;
}

void Checking::checkTyped(Worker& worker, const Entity& instance, const Attribute& attribute) const {
    const Arena::Mark mark = worker.machine.mark();
    try {
        checkValue(worker, instance, attribute, worker.machine.attributeOf(instance, attribute), attribute.type);
    } catch (const NotEvaluated&) {
        // The value is not known; reading the file told so.
    }
    worker.machine.forget(mark);
}

/// The rules of the value's type, then those of its elements' types.
void Checking::checkValue(Worker& worker, const Entity& instance, const Attribute& attribute, const Value& value,
                          TypeId declared) const {
    if (!value.exists() || value.isEntity())
        return;
    const bool isAggregate = value.is(Tag::kAggregate);
    TypeIndex type = isAggregate ? value.aggregate->type : value.type;
    if (type == kNoType)
        type = m_program.schema().type(declared).name;
    for (const std::uint32_t rule : m_typeRules[type])
        evaluate(worker, rule, value, instance.objectId(), &attribute);
    if (!isAggregate || !mayHaveRules(value.aggregate->element))
        return;
    for (std::uint32_t i = 0; i < value.aggregate->count; ++i) {
        const Arena::Mark mark = worker.machine.mark();
        checkValue(worker, instance, attribute, worker.machine.element(*value.aggregate, i), value.aggregate->element);
        worker.machine.forget(mark);
    }
}

/// The values of a rule's attributes as a text that is the same for equal ones; false when one has no value.
bool Checking::keyOf(Worker& worker, const Entity& instance, const Rule& rule, std::string& key) const {
    const Schema& schema = m_program.schema();
    key.clear();
    for (const NameId name : rule.unique) {
        const Attribute* const attribute = schema.attribute(schema.entityOf(instance), name);
        const Value value = worker.machine.attributeOf(instance, *attribute);
        if (!value.exists())
            return false;
        const std::string text = worker.machine.toPublic(value).toText();
        key += std::to_string(text.size()) + ':' + text;
    }
    return true;
}

void Checking::checkUnique(Worker& worker, std::uint32_t index) {
    std::unordered_map<std::string, std::uint64_t> first;
    const Rule& rule = m_program.rules[index];
    RuleCount& count = worker.counts[index];
    std::string key;
    for (const VN_SDAI::VnDbObjectId& handle : m_view.population(rule.owner)) {
        const Entity* const instance = entityAt(handle);
        if (!instance)
            continue;
        const Arena::Mark mark = worker.machine.mark();
        try {
            const bool hasAll = keyOf(worker, *instance, rule, key);
            ++count.evaluated;
            if (!hasAll) {
                ++count.indeterminate;
            } else if (!first.emplace(key, handle.number()).second) {
                ++count.violated;
                tell({handle, index, nullptr, {}});
            }
        } catch (const NotEvaluated& reason) {
            ++count.notEvaluated;
            tell({handle, index, nullptr, reason.what()});
        }
        worker.machine.forget(mark);
    }
}

void Checking::checkGlobal(Worker& worker) {
    std::vector<Finding> findings;
    worker.findings = &findings;
    for (std::uint32_t i = 0; i < m_program.rules.size(); ++i) {
        if (m_isChosen[i] && m_program.infos[i].kind == RuleKind::kGlobal)
            evaluate(worker, i, Value(), VN_SDAI::VnDbObjectId(), nullptr);
    }
    for (const Finding& each : findings)
        tell(each);
}

void Checking::tell(const Finding& finding) {
    if (!m_sink)
        return;
    VN_SDAI::VnIfcDiagnostic told;
    const bool isViolation = finding.reason.empty();
    told.severity = isViolation ? VN_SDAI::VnIfcDiagnostic::kError : VN_SDAI::VnIfcDiagnostic::kInfo;
    told.code = isViolation ? "rule" : "rule-not-evaluated";
    told.rule = m_program.infos[finding.rule].name;
    told.found = finding.reason;
    if (finding.attribute)
        told.attribute = finding.attribute->declaration->name.text;
    if (const VN_SDAI::VnIfcEntityBase* const instance = finding.instance.openObject()) {
        told.instance = finding.instance.number();
        if (const VN_SDAI::VnIfcEntityType* const type = instance->getInstanceType())
            told.keyword = type->name();
        m_model.place(finding.instance, told.line, told.column);
    }
    m_sink(told);
}

} // namespace vnifc::rules
