#include "Conversion.h"

#include <VnIfcCore/VnIfcEntityBase.h>

#include <algorithm>

// One instance: its attributes by name, then what the tables say, then what the target demands.
namespace vnifc::conversion {

using namespace VN_SDAI;

namespace {

constexpr std::string_view kNoAttribute = "the release has no such attribute";
constexpr std::string_view kOccupied = "another attribute took the place";
constexpr std::string_view kDerived = "the release derives the attribute";
constexpr std::string_view kDemanded = "the release demands a value";
constexpr std::string_view kOwnFault = "its own release cannot take it either";
constexpr std::string_view kSurplus = "more parameters than its own release has";
constexpr std::string_view kNoWord = "no attribute is free to take the word";

/// The placeholder for an attribute of another instance.
constexpr std::string_view kValueOf = "@value.";

/// Attributes that take a word for which an enumeration has no literal, by preference.
constexpr std::string_view kWordAttributes[] = {"ObjectType", "ElementType", "ProcessType", "ResourceType"};

} // namespace

const Value& Record::operator[](std::string_view attribute) const noexcept {
    static const Value kNone;
    const std::size_t position = layout ? layout->find(attribute) : Layout::kNone;
    return position < values.size() ? values[position] : kNone;
}

Value* Draft::find(std::string_view attribute) noexcept {
    const std::size_t position = layout->find(attribute);
    return position == Layout::kNone || layout->fields[position].isDerived ? nullptr : &values[position];
}

void Conversion::tell(ConvertKind kind, std::string_view attribute, std::string before, std::string after,
                      std::string_view reason) {
    m_outcome->findings.push_back({kind, m_record->number,
                                   std::string(m_record->layout ? m_record->layout->name : std::string_view()),
                                   std::string(attribute), std::move(before), std::move(after), std::string(reason)});
}

/// Takes back what was told since there were so many findings.
void Conversion::forget(std::size_t findings) {
    m_outcome->findings.resize(findings);
    m_isPartLost = false;
}

/// `refusal` is why the instance cannot be what it was.
void Conversion::convertInstance(std::size_t i, std::string_view refusal) {
    const Instance& instance = m_instances[i];
    m_outcomes[i] = {};
    m_outcome = &m_outcomes[i];
    m_guids = 0;
    m_attribute = {};
    const Record record = this->record(instance.number);
    m_record = &record;
    if (!instance.plan)
        return convertForeign(instance);
    const Mapping& mapping = instance.plan->mapping;
    if (mapping.way == Mapping::Way::kInlined) {
        m_outcome->state = State::kAbsorbed;
        return tell(ConvertKind::kAbsorbed, {}, {}, {}, mapping.reason);
    }
    m_reasonLost = refusal.empty() ? mapping.reason : refusal;
    std::vector<Mapping> ways;
    if (mapping.target) {
        ways = retreats(*instance.plan);
        ways.insert(ways.begin(), mapping);
    }
    for (const Mapping& way : ways) {
        // What was refused once would be so again, for less and less is left.
        if (m_refused.contains({record.number, way.target}))
            continue;
        *m_outcome = {};
        if (convertTo(record, way.target == mapping.target ? *instance.plan : planTo(*instance.plan, way)))
            return;
        m_refused.emplace(record.number, way.target);
    }
    *m_outcome = {};
    m_outcome->state = State::kLost;
    m_gone.insert(instance.number);
    tell(ConvertKind::kLostInstance, m_attribute, {}, {}, m_reasonLost);
}

/// What instances can still be when the target demands what they do not have: what other lines of the table say;
/// objects and their types also whatever they descend from.
std::vector<Mapping> Conversion::retreats(const Plan& plan) const {
    constexpr std::string_view kReason = "the release demands more of such an instance than there is";
    std::vector<Mapping> result;
    const EntityType& tried = *plan.target->entity;
    for (const EntityCase& each : entityCases()) {
        const EntityType* other =
            vnEqualNoCase(each.entity, plan.source->name) ? m_target.concrete(each.other) : nullptr;
        if (other && other != &tried)
            result.push_back({Mapping::Way::kRenamed, other, &each, nullptr, each.reason});
    }
    if (!isNamed(tried, "IfcObject") && !isNamed(tried, "IfcTypeObject"))
        return result;
    for (const EntityType* super = tried.supertype(); super; super = super->supertype()) {
        const EntityType* other = super->isAbstract() ? standInFor(nameOf(*super)) : super;
        if (other && other != &tried)
            result.push_back({Mapping::Way::kGeneralised, other, nullptr, nullptr, kReason});
    }
    return result;
}

bool Conversion::convertTo(const Record& record, const Plan& plan) {
    m_words.clear();
    m_rest.clear();
    m_outcome->type = plan.target->entity;
    Draft draft{plan.target, Values(plan.target->fields.size())};
    for (std::size_t i = 0; i < draft.values.size(); ++i)
        if (plan.target->fields[i].isDerived)
            draft.values[i] = Value::derived();
    if (plan.mapping.way != Mapping::Way::kSame)
        tell(plan.mapping.way == Mapping::Way::kRenamed ? ConvertKind::kRenamedEntity : ConvertKind::kGeneralised, {},
             std::string(plan.source->name), std::string(plan.target->name), plan.mapping.reason);
    compute(record, plan, draft);
    carry(record, plan, draft);
    tellFolded(record, plan);
    takeFolds(record, draft);
    assign(plan, draft);
    keepWords(plan, draft);
    keepRest(record, draft);
    if (!fill(record, plan, draft))
        return false;
    for (const typed::UniqueRule* rule : plan.uniques)
        keepUnique(*rule, draft);
    m_outcome->text.assign(plan.target->keyword);
    m_outcome->text += '(';
    write(m_outcome->text, draft.values);
    for (std::size_t i = plan.source->fields.size(); i < record.values.size(); ++i) {
        m_outcome->text += ',';
        write(m_outcome->text, record.values[i]);
        tell(ConvertKind::kKeptText, {}, shown(record.values[i]), shown(record.values[i]), kSurplus);
    }
    m_outcome->text += ')';
    return true;
}

void Conversion::carry(const Record& record, const Plan& plan, Draft& draft) {
    const auto carryThose = [&](bool moved) {
        for (std::size_t i = 0; i < plan.steps.size(); ++i)
            if (record.values[i].isSet() && !plan.steps[i].isConsumed &&
                (plan.steps[i].attributeCase != nullptr) == moved)
                carryField(record, plan, i, draft);
    };
    carryThose(false); // whoever keeps its name goes first
    carryThose(true);
}

void Conversion::carryField(const Record& record, const Plan& plan, std::size_t position, Draft& draft) {
    const Field& from = plan.source->fields[position];
    const Step& step = plan.steps[position];
    m_attribute = from.name;
    if (from.isDerived)
        return;
    if (step.target == Layout::kNone)
        return m_rest.push_back({position, kNoAttribute});
    const Field& to = plan.target->fields[step.target];
    if (to.isDerived)
        return m_rest.push_back({position, kDerived});
    if (draft.values[step.target].isSet())
        return m_rest.push_back({position, kOccupied});
    m_targetAttribute = to.name;
    Value value = record.values[position];
    const std::size_t before = m_outcome->findings.size();
    bool isAsPlanned = step.isSafe;
    forEachReference(value, [&](std::uint64_t number) {
        isAsPlanned = isAsPlanned && !m_gone.contains(number) && !m_others.contains(number);
    });
    const bool isKept = isKeptText(record, position);
    if (isAsPlanned || fitField(record, plan, position, value)) {
        if (isKept)
            tell(ConvertKind::kKeptText, from.name, shown(record.values[position]), shown(value), kOwnFault);
        draft.values[step.target] = std::move(value);
        if (step.attributeCase)
            tell(ConvertKind::kMovedAttribute, from.name, shown(record.values[position]), std::string(to.name),
                 step.attributeCase->reason);
        return;
    }
    const std::string_view reason = m_reasonLost;
    forget(before);
    m_rest.push_back({position, reason});
}

/// True for a value that the source's own release could not take. Binary values are always kept as text.
bool Conversion::isKeptText(const Record& record, std::size_t position) const {
    const Field& field = record.layout->fields[position];
    return field.kind() != typed::AttributeKind::kBinary && !field.row->isBinary &&
           m_instances[find(record.number)].object->keepsText(static_cast<unsigned>(position));
}

bool Conversion::fitField(const Record& record, const Plan& plan, std::size_t position, Value& value) {
    const Field& from = plan.source->fields[position];
    const Field& to = plan.target->fields[plan.steps[position].target];
    const std::size_t before = m_outcome->findings.size();
    m_isPartLost = false;
    const bool fits = fit(value, from.type, to.type, to.enumeration());
    if (isKeptText(record, position) && (!fits || m_isPartLost)) {
        forget(before);
        value = record.values[position];
        return true;
    }
    if (!fits)
        return false;
    limit(*plan.target->entity, to.name, value);
    return value.isSet() && !(value.is(Value::Kind::kList) && value.items.empty() &&
                              record.values[position].items.size() != 0 && !allowsEmpty(to));
}

void Conversion::compute(const Record& record, const Plan& plan, Draft& draft) {
    std::set<std::string_view> isTaken;
    std::map<std::string_view, std::string_view> isLeft; // with the reason
    for (const AttributeCase* each : plan.computed) {
        const std::size_t position = plan.target->find(each->other);
        const std::string_view first = each->attribute.substr(0, each->attribute.find(','));
        const Value& before = record[first];
        m_attribute = first;
        m_targetAttribute = each->other;
        if (draft.values[position].isSet())
            continue;
        Value value = each->compute(*this, record, before);
        forEachReference(Value(value), [&](std::uint64_t number) {
            if (m_gone.contains(number))
                value = Value::unset();
        });
        const Type* type = plan.target->fields[position].type;
        if (value.isSet() && !value.is(Value::Kind::kList) && asAggregation(type))
            value = Value::list({std::move(value)});
        if (value.isSet()) {
            tellTaken(record, plan, *each);
            isTaken.insert(first);
        } else if (before.isSet()) {
            isLeft.emplace(first, each->reason);
        }
        draft.values[position] = std::move(value);
    }
    for (const auto& [attribute, reason] : isLeft) {
        m_attribute = attribute;
        if (!isTaken.contains(attribute))
            tellPartLost(record[attribute], reason);
    }
}

/// Tells of the attributes that went into a value, unless the function told of them itself.
void Conversion::tellTaken(const Record& record, const Plan& plan, const AttributeCase& line) {
    std::string_view names = line.attribute;
    while (!names.empty()) {
        const std::string_view name = names.substr(0, names.find(','));
        names.remove_prefix(std::min(name.size() + 1, names.size()));
        const std::size_t position = plan.source->find(name);
        const bool isTold = std::ranges::any_of(m_outcome->findings,
                                                [&](const ConvertFinding& each) { return each.attribute == name; });
        if (position != Layout::kNone && record.values[position].isSet() && !isTold)
            tell(ConvertKind::kMovedAttribute, name, shown(record.values[position]), std::string(line.other),
                 line.reason);
    }
}

/// Tells of what instances at the other end take over.
void Conversion::tellFolded(const Record& record, const Plan& plan) {
    for (const FoldCase* each : plan.folds)
        for (const std::string_view name : {each->owner, each->value}) {
            const std::size_t position = plan.source->find(name);
            if (position != Layout::kNone && plan.steps[position].isConsumed && record.values[position].isSet())
                tell(ConvertKind::kMovedAttribute, name, shown(record.values[position]), std::string(each->attribute),
                     each->reason);
        }
}

void Conversion::takeFolds(const Record& record, Draft& draft) {
    const auto found = m_folds.find(record.number);
    if (found == m_folds.end())
        return;
    for (const Fold& fold : found->second) {
        m_attribute = m_targetAttribute = fold.line->attribute;
        Value* place = draft.find(fold.line->attribute);
        Value value = fold.value;
        if (!place) {
            tellPartLost(value, kNoAttribute);
            continue;
        }
        const Field& to = draft.layout->fields[draft.layout->find(fold.line->attribute)];
        const Layout& from = *m_instances[find(fold.from)].plan->source;
        const std::size_t position = from.find(fold.line->value);
        if (!fit(value, position == Layout::kNone ? nullptr : from.fields[position].type, to.type, to.enumeration())) {
            tellPartLost(fold.value, m_reasonLost);
        } else if (!place->isSet()) {
            tell(ConvertKind::kChangedValue, m_attribute, "$", shown(value), fold.line->reason);
            *place = std::move(value);
        } else if (place->is(Value::Kind::kList) && value.is(Value::Kind::kList)) {
            tell(ConvertKind::kChangedValue, m_attribute, shown(*place), shown(value), fold.line->reason);
            place->items.insert(place->items.end(), value.items.begin(), value.items.end());
        } else {
            tellPartLost(value, kOccupied);
        }
    }
}

void Conversion::assign(const Plan& plan, Draft& draft) {
    std::string_view rest = plan.mapping.entityCase ? plan.mapping.entityCase->assignments : std::string_view();
    while (!rest.empty()) {
        const std::size_t end = std::min(rest.find(';'), rest.size());
        const std::string_view one = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        const std::size_t position = draft.layout->find(one.substr(0, one.find('=')));
        Values values;
        if (position == Layout::kNone || draft.values[position].isSet() ||
            !parseList(one.substr(one.find('=') + 1), values))
            continue;
        const Field& field = draft.layout->fields[position];
        m_attribute = m_targetAttribute = field.name;
        if (fit(values.front(), nullptr, field.type, field.enumeration()))
            draft.values[position] = values.front();
    }
}

/// Words without a literal go where the target lets users say their own.
void Conversion::keepWords(const Plan& plan, Draft& draft) {
    std::map<std::string, std::string> words;
    if (plan.mapping.way == Mapping::Way::kGeneralised)
        words["PredefinedType"] = plan.source->name;
    for (const auto& [attribute, word] : m_words)
        words[attribute] += (words[attribute].empty() ? "" : ".") + word;
    for (const auto& [attribute, word] : words) {
        Value* place = draft.find("UserDefined" + attribute);
        for (const std::string_view each : kWordAttributes)
            place = place && !place->isSet() ? place : draft.find(each);
        if (place && !place->isSet()) {
            *place = Value::string(word);
            continue;
        }
        // The word of a user says more than the name of a class, of which is told anyway.
        if (plan.mapping.way != Mapping::Way::kGeneralised || word != plan.source->name)
            tell(ConvertKind::kLostValue, attribute, '.' + word + '.', "", kNoWord);
    }
}

/// Gives a text that another instance has already the number of the instance, where the target demands different ones.
void Conversion::keepUnique(const typed::UniqueRule& rule, Draft& draft) {
    constexpr std::string_view kReason = "no two instances may have the same";
    std::string values;
    Value* last = nullptr;
    for (const typed::AttributeRow* row : rule.attributes) {
        Value* value = draft.find(row->name);
        if (!value || !value->isSet())
            return;
        write(values, *value);
        if (value->is(Value::Kind::kString)) {
            last = value;
            m_attribute = row->name;
        }
    }
    const std::uint64_t owner = m_uniques.try_emplace({&rule, values}, m_record->number).first->second;
    if (owner == m_record->number || !last)
        return;
    const Value other = Value::string(std::string(last->content()) + " #" + std::to_string(m_record->number));
    tell(ConvertKind::kChangedValue, m_attribute, shown(*last), shown(other), kReason);
    *last = other;
}

bool Conversion::fill(const Record& record, const Plan& plan, Draft& draft) {
    for (std::size_t i = 0; i < draft.values.size(); ++i) {
        const Field& field = draft.layout->fields[i];
        if (field.isOptional || field.isDerived || allowsEmpty(field) || draft.values[i].isSet())
            continue;
        const auto step = std::ranges::find(plan.steps, i, &Step::target);
        const std::size_t position = static_cast<std::size_t>(step - plan.steps.begin());
        const bool wasUnset = step != plan.steps.end() && !plan.source->fields[position].isOptional &&
                              !plan.source->fields[position].isDerived && !record.values[position].isSet();
        if (wasUnset)
            continue; // the fault of the file
        m_attribute = m_targetAttribute = field.name;
        Value value = defaultFor(record, field, draft);
        if (!value.isSet()) {
            m_reasonLost = kDemanded;
            return false;
        }
        tell(ConvertKind::kFilledValue, field.name, "$", shown(value), kDemanded);
        draft.values[i] = std::move(value);
    }
    return true;
}

Value Conversion::defaultFor(const Record& record, const Field& field, Draft& draft) {
    const auto listIfNeeded = [&](Value value) {
        const bool isBare = value.isSet() && !value.is(Value::Kind::kList) && asAggregation(field.type);
        return isBare ? Value::list({std::move(value)}) : value;
    };
    for (const DefaultCase& each : defaultCases()) {
        if (!vnEqualNoCase(each.attribute, field.name) || !isNamed(*draft.layout->entity, each.entity))
            continue;
        if (each.compute)
            return each.compute(*this, record, {});
        if (each.value.starts_with('=')) {
            const Value* other = draft.find(each.value.substr(1));
            return other ? listIfNeeded(*other) : Value();
        }
        if (!each.value.starts_with('?'))
            return listIfNeeded(make(each.value));
        const std::string_view text = each.value.substr(1);
        for (const std::uint64_t number : instancesOf(text.substr(0, text.find('('))))
            if (typeInTarget(number))
                return listIfNeeded(Value::reference(number));
        return listIfNeeded(make(text, true));
    }
    if (const typed::EnumerationClass* words = field.enumeration())
        if (words->fromLiteral("NOTDEFINED") < words->literals.size())
            return Value::literal("NOTDEFINED");
    return {};
}

Value Conversion::make(std::string_view text, bool shared) {
    if (shared)
        if (const auto found = m_shared.find(text); found != m_shared.end())
            return Value::reference(found->second);
    Values values;
    if (!parseList(text, values) || values.size() != 1)
        return {};
    Value made = build(values.front(), shared);
    if (shared && made.is(Value::Kind::kReference))
        m_shared.emplace(text, made.number);
    return made;
}

Value Conversion::valueOfPlaceholder(const Value& value) {
    if (value.text == "@guid")
        return newGuid(m_attribute);
    if (value.text == "@owner")
        return ownerHistory();
    if (value.text == "@self")
        return Value::reference(m_record->number);
    if (value.text == "@number")
        return Value::string('#' + std::to_string(m_record->number));
    if (value.text == "@value")
        return m_value;
    if (value.text.starts_with(kValueOf))
        return copiedAttribute(std::string_view(value.text).substr(kValueOf.size()));
    if (value.text == "@whole")
        return wholeOf(m_record->number);
    return value;
}

Value Conversion::build(const Value& value, bool shared) {
    if (value.is(Value::Kind::kOpaque))
        return valueOfPlaceholder(value);
    auto& created = shared ? m_sharedTexts : m_outcome->created;
    const std::size_t before = created.size();
    Value result = value;
    for (Value& each : result.items)
        each = build(each, shared);
    const EntityType* type = value.is(Value::Kind::kTyped) ? m_target.concrete(value.text) : nullptr;
    if (!type)
        return result;
    const Layout& layout = m_target.layout(*type);
    // Later releases append attributes.
    result.items.resize(std::max(result.items.size(), layout.fields.size()));
    for (std::size_t i = 0; i < layout.fields.size(); ++i)
        if (!layout.fields[i].isOptional && result.items[i].is(Value::Kind::kUnset)) {
            created.resize(before); // what it lacks is lost, so that there is no use in it
            return {};
        }
    const std::uint64_t number = m_nextNumber++;
    m_others[number] = type;
    std::string text(layout.keyword);
    text += '(';
    write(text, result.items);
    text += ')';
    created.emplace_back(number, std::move(text));
    return Value::reference(number);
}

/// Instances without a class keep their text; what they refer to and is gone must not dangle.
void Conversion::convertForeign(const Instance& instance) {
    m_outcome->text.assign(instance.line);
    tell(ConvertKind::kKeptText, {}, std::string(instance.keyword), std::string(instance.keyword), kOwnFault);
    Values values;
    if (m_gone.empty() || instance.keyword.empty() || !parseList(instance.parameters, values))
        return;
    Value all = Value::list(std::move(values));
    bool isChanged = false;
    const auto clear = [&](auto&& self, Value& value) -> void {
        if (value.is(Value::Kind::kReference) && m_gone.contains(value.number)) {
            tellPartLost(value, "what it refers to is lost");
            value = Value::unset();
            isChanged = true;
        }
        for (Value& each : value.items)
            self(self, each);
    };
    clear(clear, all);
    if (!isChanged)
        return;
    m_outcome->text.assign(instance.keyword);
    write(m_outcome->text, all);
}

} // namespace vnifc::conversion
