#include "Writing.h"

#include "ParameterReader.h"

#include <VnIfcCore/VnIfcArray.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcText.h>

#include <cmath>
#include <limits>

namespace vnifc::detail {

using namespace VN_SDAI;
using typed::AttributeKind;
using typed::fieldOf;

namespace {

std::string expectation(const AttributeInfo& attribute) {
    switch (attribute.row->kind) {
    case AttributeKind::kString:
        return "a text in UTF-8";
    case AttributeKind::kGuid:
        return "a text of at most 22 characters";
    case AttributeKind::kReal:
        return "a number";
    case AttributeKind::kInteger:
        return "an integer between -2147483648 and 2147483646";
    case AttributeKind::kBoolean:
        return "true or false";
    case AttributeKind::kLogical:
        return "true, false or unknown";
    case AttributeKind::kBinary:
        return "no value, since values of BINARY are kept as text and cannot be changed";
    case AttributeKind::kEnumeration: {
        std::string literals;
        for (const char* literal : typed::enumerationClassOf(*attribute.row).literals)
            literals.append(literals.empty() ? "one of " : ", ").append(literal);
        return literals;
    }
    default:
        return "a value of " + std::string(attribute.typeName);
    }
}

/// Brings one value into one attribute.
class Store {
public:
    Store(ModelState& state, VnIfcEntityBase& instance, const AttributeInfo& attribute, const Value& value)
        : m_state(state), m_instance(static_cast<typed::Entity&>(instance)), m_attribute(attribute), m_value(value) {}

    void run() {
        if (m_value.isNull())
            return typed::unsetField(m_instance, m_attribute.position);
        switch (m_attribute.row->kind) {
        case AttributeKind::kString:
            return put(exchangeText(m_value));
        case AttributeKind::kGuid:
            return put(guid());
        case AttributeKind::kReal:
            return put(real(m_value));
        case AttributeKind::kInteger:
            return put(integer(m_value));
        case AttributeKind::kBoolean:
            return put(VnIfcBoolean(taken(m_value.get<bool>())));
        case AttributeKind::kLogical:
            return put(logical(m_value));
        case AttributeKind::kReference:
            return put(reference(m_value, m_attribute.row->target ? *m_attribute.row->target : nullptr));
        case AttributeKind::kEnumeration:
            return enumeration();
        case AttributeKind::kSelect:
            return select();
        case AttributeKind::kAggregate:
            return aggregate();
        case AttributeKind::kBinary:
        case AttributeKind::kDerived:
            refuse();
        }
    }

private:
    [[noreturn]] void refuse(const std::string& reason = {}) const {
        throw BadValue(placeOf(m_instance, m_attribute) + ": " +
                       (reason.empty() ? "expected " + expectation(m_attribute) : reason) + ", found " +
                       m_value.toString(TextForm::kDescribed));
    }
    template <class T>
    T taken(std::optional<T> value) const {
        if (!value)
            refuse();
        return *std::move(value);
    }

    void put(const VnIfcVariant& value) {
        if (!typed::putField(m_instance, m_attribute.position, value))
            refuse();
    }

    VnAnsiString exchangeText(const Value& value) const {
        VnAnsiString text(vnEncodeText(taken(value.get<std::string>())));
        // The one byte that stands for no value.
        if (text.isUnset())
            refuse();
        return text;
    }
    VnIfcGUID guid() const {
        const VnAnsiString text = exchangeText(m_value);
        if (text.length() > VnIfcGUID::kLength)
            refuse();
        return VnIfcGUID(text.view());
    }
    double real(const Value& value) const {
        const double number = taken(value.get<double>());
        if (!std::isfinite(number))
            refuse();
        return number;
    }
    int integer(const Value& value) const {
        const int number = taken(value.get<int>());
        if (number == Consts::VnIntUnset)
            refuse();
        return number;
    }
    VnIfcLogical logical(const Value& value) const {
        switch (taken(value.get<Logical>())) {
        case Logical::kTrue:
            return VnIfcLogical::True;
        case Logical::kFalse:
            return VnIfcLogical::False;
        default:
            return VnIfcLogical::Unknown;
        }
    }
    /// `type` is what the instance has to be of; null where that is not known here.
    VnDbObjectId reference(const Value& value, const VnIfcEntityType* type) const {
        const Instance instance = taken(value.get<Instance>());
        const VnIfcEntityBase* target = instance.core().openObject();
        if (!target)
            refuse("there is no instance #" + std::to_string(instance.id()));
        if (instance.state() != &m_state)
            refuse("expected an instance of the same model");
        // What has no class may be of a subtype that the schema lacks.
        if (type && target->getInstanceType() && !target->isKindOf(type))
            refuse("expected an instance of " + std::string(type->entityClass()->name));
        return instance.core();
    }

    void enumeration() {
        const std::string literal = taken(m_value.get<std::string>());
        const auto& type = typed::enumerationClassOf(*m_attribute.row);
        const std::uint32_t code = type.fromLiteral(literal);
        if (code >= type.literals.size())
            refuse();
        put(VnIfcVariant(literal.c_str()));
    }

    // ---- selects

    void select() {
        auto& select = fieldOf<typed::Select>(m_instance, *m_attribute.row);
        const typed::SelectClass& type = typed::selectClassOf(*m_attribute.row);
        if (m_value.kind() == Value::Kind::kInstance) {
            const VnDbObjectId handle = reference(m_value, nullptr);
            if (std::ranges::none_of(type.members, [&](const typed::SelectMember& member) {
                    return member.kind == VnTypeCodeKind::kEntity && handle.openObject()->isKindOf(*member.entity);
                }))
                refuse();
            return put(handle);
        }
        const typed::SelectMember& member = chosenMember(select, type);
        hold(select, member, m_value.untyped());
        m_instance.fieldChanged(m_attribute.position);
    }

    const typed::SelectMember& chosenMember(const typed::Select& select, const typed::SelectClass& type) const {
        if (const auto typedValue = m_value.get<Typed>()) {
            const auto index = static_cast<std::size_t>(type.indexOf(typedValue->type()));
            if (index >= type.members.size() || type.members[index].kind == VnTypeCodeKind::kEntity)
                refuse("expected a type of " + std::string(type.name));
            return type.members[index];
        }
        if (const typed::SelectMember* held = select.isSet() ? select.chosen() : nullptr; held && takes(*held, m_value))
            return *held;
        if (const typed::SelectMember* plain = plainMember(type))
            return *plain;
        const typed::SelectMember* only = nullptr;
        for (const typed::SelectMember& member : type.members) {
            if (!takes(member, m_value))
                continue;
            if (only)
                refuse("expected a typed value of " + std::string(type.name) + ", such as " +
                       std::string(only->name->view()) + " or " + std::string(member.name->view()));
            only = &member;
        }
        if (!only)
            refuse();
        return *only;
    }

    /// The member that a value without a type is of, if the select has it.
    const typed::SelectMember* plainMember(const typed::SelectClass& type) const {
        static constexpr std::pair<Value::Kind, const char*> kPlain[] = {
            {Value::Kind::kText, "IfcLabel"},      {Value::Kind::kText, "IfcText"},
            {Value::Kind::kBoolean, "IfcBoolean"}, {Value::Kind::kBoolean, "IfcLogical"},
            {Value::Kind::kLogical, "IfcLogical"}, {Value::Kind::kInteger, "IfcInteger"},
            {Value::Kind::kReal, "IfcReal"}};
        for (const auto& [kind, name] : kPlain) {
            const auto index = static_cast<std::size_t>(type.indexOf(name));
            if (kind == m_value.kind() && index < type.members.size())
                return &type.members[index];
        }
        return nullptr;
    }

    static bool takes(const typed::SelectMember& member, const Value& value) {
        switch (member.kind) {
        case VnTypeCodeKind::kString:
            return value.kind() == Value::Kind::kText;
        case VnTypeCodeKind::kReal:
            return value.kind() == Value::Kind::kReal || value.kind() == Value::Kind::kInteger;
        case VnTypeCodeKind::kInteger:
            return value.kind() == Value::Kind::kInteger;
        case VnTypeCodeKind::kBoolean:
            return value.kind() == Value::Kind::kBoolean;
        case VnTypeCodeKind::kLogical:
            return value.kind() == Value::Kind::kBoolean || value.kind() == Value::Kind::kLogical;
        case VnTypeCodeKind::kEnumeration:
            return value.kind() == Value::Kind::kLiteral &&
                   member.enumeration->fromLiteral(*value.get<std::string>()) < member.enumeration->literals.size();
        case VnTypeCodeKind::kAggregation:
            return value.kind() == Value::Kind::kList;
        default:
            return false;
        }
    }

    /// Converts first, so that what does not fit leaves the select as it was.
    void hold(typed::Select& select, const typed::SelectMember& member, const Value& value) {
        const VnAnsiString& name = *member.name;
        switch (member.kind) {
        case VnTypeCodeKind::kString: {
            VnAnsiString text = exchangeText(value);
            select.underlyingTypeName(name);
            static_cast<void>(select.setString(std::move(text)));
            return;
        }
        case VnTypeCodeKind::kReal: {
            const double number = real(value);
            select.underlyingTypeName(name);
            static_cast<void>(select.setDouble(number));
            return;
        }
        case VnTypeCodeKind::kInteger: {
            const int number = integer(value);
            select.underlyingTypeName(name);
            static_cast<void>(select.setInt32(number));
            return;
        }
        case VnTypeCodeKind::kBoolean: {
            const VnIfcBoolean truth(taken(value.get<bool>()));
            select.underlyingTypeName(name);
            static_cast<void>(select.setBoolean(truth));
            return;
        }
        case VnTypeCodeKind::kLogical: {
            const VnIfcLogical truth = logical(value);
            select.underlyingTypeName(name);
            static_cast<void>(select.setLogical(truth));
            return;
        }
        case VnTypeCodeKind::kEnumeration: {
            const std::uint32_t code = member.enumeration->fromLiteral(taken(value.get<std::string>()));
            if (code >= member.enumeration->literals.size())
                refuse("expected a literal of " + std::string(name.view()));
            select.underlyingTypeName(name);
            static_cast<void>(select.setEnum(code));
            return;
        }
        default:
            throughText(Value(Typed(std::string(name.view()), value)));
        }
    }

    // ---- aggregates

    void aggregate() {
        // A single element stands for a list of one.
        const Value::List list = m_value.kind() == Value::Kind::kList || m_value.kind() == Value::Kind::kTyped
                                     ? taken(m_value.get<Value::List>())
                                     : Value::List{m_value};
        const auto& aggregate = fieldOf<VnIfcAggr>(m_instance, *m_attribute.row);
        if (list.empty())
            return putEmpty();
        switch (aggregate.elementKind()) {
        case VnTypeCodeKind::kEntity:
            return putArray<VnDbObjectId>(list, [&](const Value& element) {
                return reference(element, m_attribute.row->target ? *m_attribute.row->target : nullptr);
            });
        case VnTypeCodeKind::kReal:
            return putArray<double>(list, [&](const Value& element) { return real(element); });
        case VnTypeCodeKind::kInteger:
            return putArray<int>(list, [&](const Value& element) { return integer(element); });
        case VnTypeCodeKind::kString:
            if (m_attribute.row->isBinary)
                refuse("values of BINARY are kept as text and cannot be changed");
            return putArray<VnAnsiString>(list, [&](const Value& element) { return exchangeText(element); });
        case VnTypeCodeKind::kSelect:
            if (std::ranges::all_of(list, [](const Value& each) { return each.kind() == Value::Kind::kInstance; }))
                return putArray<VnDbObjectId>(list, [&](const Value& element) { return reference(element, nullptr); });
            break;
        default:
            break;
        }
        throughText(Value(list));
    }

    void putEmpty() {
        if (!m_attribute.mayBeEmpty)
            refuse("expected at least one element");
        typed::unsetField(m_instance, m_attribute.position);
        fieldOf<VnIfcAggr>(m_instance, *m_attribute.row).createEmpty();
    }

    template <class T, class Convert>
    void putArray(const Value::List& list, Convert convert) {
        VnIfcArray<T> array;
        array.reserve(list.size());
        for (const Value& element : list)
            array.append(convert(element));
        put(array);
    }

    /// For what is constructed of several kinds: the reader of files knows all of them.
    void throughText(const Value& value) {
        checkInstances(value);
        const std::unique_ptr<VnIfcEntityBase> holder(m_instance.getInstanceType()->create());
        ParameterReader reader(m_state.model());
        if (!reader.read(*holder, m_attribute.position, value.toString(TextForm::kExchange)))
            refuse();
        VnIfcVariant held, offered;
        holder->getAttr(m_attribute.row->name, held);
        offered = held;
        // An instance does not take aggregates in the form in which it gives them.
        if (held.type()->isAggregate())
            held.convertTo(VnIfcVariantType::Desc<VnIfcArray<VnIfcVariant>>::value(), offered);
        put(offered);
    }

    void checkInstances(const Value& value) const {
        if (const auto* typedValue = std::get_if<Typed>(&value.variant()))
            checkInstances(typedValue->value());
        if (const auto* list = std::get_if<Value::List>(&value.variant()))
            for (const Value& element : *list)
                checkInstances(element);
        if (value.kind() == Value::Kind::kInstance)
            reference(value, nullptr);
    }

    ModelState& m_state;
    typed::Entity& m_instance;
    const AttributeInfo& m_attribute;
    const Value& m_value;
};

bool canRefer(AttributeKind kind) noexcept {
    return kind == AttributeKind::kReference || kind == AttributeKind::kSelect || kind == AttributeKind::kAggregate;
}

} // namespace

void store(ModelState& state, VnIfcEntityBase& instance, const AttributeInfo& attribute, const Value& value) {
    if (attribute.isDerived)
        throw BadValue(placeOf(instance, attribute) + ": the value is derived and cannot be changed");
    const bool refers = canRefer(attribute.row->kind);
    const Unmirrored unmirrored(state, instance, refers && state.classOf(instance)->isMirrored(*attribute.row));
    Store(state, instance, attribute, value).run();
    if (refers)
        state.referencesChanged();
    state.changed(*state.classOf(instance));
}

} // namespace vnifc::detail
