#include "Reading.h"

#include <VnIfcCore/VnIfcBoolean.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcIterator.h>
#include <VnIfcCore/VnIfcText.h>

#include <cmath>

namespace vnifc::detail {

using namespace VN_SDAI;
using typed::AttributeKind;
using typed::AttributeRow;
using typed::fieldOf;

namespace {

std::string upperCase(std::string_view name) {
    std::string upper(name);
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    return upper;
}

/// One walk through one value.
class Walk {
public:
    Walk(ModelState& state, ValueVisitor& visitor) noexcept : m_state(state), m_visitor(visitor) {}

    void field(const VnIfcEntityBase& instance, const AttributeRow& row, bool mayBeEmpty) {
        switch (row.kind) {
        case AttributeKind::kString:
        case AttributeKind::kBinary:
            return exchangeText(fieldOf<VnAnsiString>(instance, row));
        case AttributeKind::kGuid:
            return exchangeText(fieldOf<VnIfcGUID>(instance, row).view());
        case AttributeKind::kReal:
            return real(fieldOf<double>(instance, row));
        case AttributeKind::kInteger:
            return integer(fieldOf<int>(instance, row));
        case AttributeKind::kBoolean:
            return boolean(fieldOf<VnIfcBoolean>(instance, row));
        case AttributeKind::kLogical:
            return logical(fieldOf<VnIfcLogical>(instance, row));
        case AttributeKind::kReference:
            return reference(fieldOf<VnDbObjectId>(instance, row));
        case AttributeKind::kEnumeration:
            return enumeration(typed::enumerationClassOf(row), fieldOf<std::uint32_t>(instance, row));
        case AttributeKind::kSelect:
            return select(fieldOf<typed::Select>(instance, row));
        case AttributeKind::kAggregate:
            return aggregate(fieldOf<VnIfcAggr>(instance, row), mayBeEmpty);
        case AttributeKind::kDerived:
            return m_visitor.null();
        }
    }

private:
    void aggregate(const VnIfcAggr& elements, bool mayBeEmpty) {
        if (elements.count() == 0 && !mayBeEmpty)
            return m_visitor.null();
        list(elements);
    }

    void list(const VnIfcAggr& elements) {
        std::size_t wanted = m_visitor.beginList(elements.count());
        for (VnIfcConstIterator each(elements); wanted > 0 && !each.atEnd(); each.next(), --wanted)
            element(each);
        m_visitor.endList();
    }

    void element(const VnIfcConstIterator& each) {
        switch (each.elementKind()) {
        case VnTypeCodeKind::kEntity:
            return reference(each.currentAs<VnDbObjectId>());
        case VnTypeCodeKind::kReal:
            return real(each.currentAs<double>());
        case VnTypeCodeKind::kInteger:
            return integer(each.currentAs<int>());
        case VnTypeCodeKind::kString:
            return exchangeText(each.currentAs<VnAnsiString>());
        case VnTypeCodeKind::kSelect:
            return select(each.currentAs<typed::Select>());
        default:
            return list(each.currentAs<VnIfcAggr>());
        }
    }

    void select(const typed::Select& value) {
        if (!value.isSet())
            return m_visitor.null();
        if (value.kind() == VnTypeCodeKind::kEntity)
            return reference(value.getHandle());
        m_visitor.beginTyped(upperCase(value.underlyingTypeName()));
        held(value);
        m_visitor.endTyped();
    }

    void held(const typed::Select& value) {
        VnIfcBoolean truth;
        VnIfcLogical logicalValue;
        int number = 0;
        double realValue = 0;
        std::uint32_t code = 0;
        if (value.getDouble(realValue))
            return real(realValue);
        if (value.getInt32(number))
            return integer(number);
        if (value.getBoolean(truth))
            return boolean(truth);
        if (value.getLogical(logicalValue))
            return logical(logicalValue);
        if (value.getEnum(code) && value.chosen() && value.chosen()->enumeration)
            return enumeration(*value.chosen()->enumeration, code);
        if (const VnIfcAggr* elements = value.getAggr())
            return elements->isNil() ? m_visitor.null() : list(*elements);
        exchangeText(value.text());
    }

    void exchangeText(std::string_view text) {
        if (text == Consts::VnStringUnset)
            return m_visitor.null();
        m_visitor.text(vnDecodeText(text, m_decoded));
    }
    void reference(const VnDbObjectId& handle) {
        return handle.isNull() ? m_visitor.null() : m_visitor.instance({handle, &m_state});
    }
    void real(double value) { return std::isnan(value) ? m_visitor.null() : m_visitor.real(value); }
    void integer(int value) { return value == Consts::VnIntUnset ? m_visitor.null() : m_visitor.integer(value); }
    void boolean(VnIfcBoolean value) {
        return value.isUnset() ? m_visitor.null() : m_visitor.boolean(value == VnIfcBoolean::True);
    }
    void logical(VnIfcLogical value) {
        if (value.isUnset())
            return m_visitor.null();
        return value == VnIfcLogical::Unknown ? m_visitor.unknown() : m_visitor.boolean(value == VnIfcLogical::True);
    }
    void enumeration(const typed::EnumerationClass& type, std::uint32_t code) {
        const char* literal = type.toLiteral(static_cast<int>(code));
        return literal ? m_visitor.literal(literal) : m_visitor.null();
    }

    ModelState& m_state;
    ValueVisitor& m_visitor;
    std::string m_decoded;
};

/// Makes a value of what it is told.
class Builder final : public ValueVisitor {
public:
    Value take() { return std::move(m_values.back()); }

    void null() override { add({}); }
    void boolean(bool value) override { add(Value(value)); }
    void unknown() override { add(Value(Logical::kUnknown)); }
    void integer(std::int64_t value) override { add(Value(value)); }
    void real(double value) override { add(Value(value)); }
    void text(std::string_view utf8) override { add(Value(utf8)); }
    void literal(std::string_view literal) override { add(Value(Literal{std::string(literal)})); }
    void instance(const Instance& instance) override { add(Value(instance)); }
    std::size_t beginList(std::size_t count) override {
        m_lists.emplace_back().reserve(count);
        m_targets.push_back(true);
        return count;
    }
    void endList() override {
        Value::List list = std::move(m_lists.back());
        m_lists.pop_back();
        m_targets.pop_back();
        add(Value(std::move(list)));
    }
    void beginTyped(std::string_view type) override {
        m_types.emplace_back(type);
        m_targets.push_back(false);
    }
    void endTyped() override {
        m_targets.pop_back();
        Value held = std::move(m_values.back());
        m_values.pop_back();
        Typed typed(std::move(m_types.back()), std::move(held));
        m_types.pop_back();
        add(Value(std::move(typed)));
    }

private:
    void add(Value value) {
        if (!m_targets.empty() && m_targets.back())
            m_lists.back().push_back(std::move(value));
        else
            m_values.push_back(std::move(value));
    }

    std::vector<Value> m_values; ///< what stands in no list
    std::vector<Value::List> m_lists;
    std::vector<std::string> m_types;
    std::vector<bool> m_targets; ///< what is begun and not ended: a list, or a typed value
};

} // namespace

void visitField(ModelState& state, const VnIfcEntityBase& instance, const AttributeRow& row, bool mayBeEmpty,
                ValueVisitor& visitor) {
    Walk(state, visitor).field(instance, row, mayBeEmpty);
}

Value valueOf(ModelState& state, const VnIfcEntityBase& instance, const AttributeRow& row, const AttributeInfo* info) {
    if (info && info->isDerived)
        return {};
    // What needs no walk.
    switch (row.kind) {
    case AttributeKind::kReal: {
        const double value = fieldOf<double>(instance, row);
        return std::isnan(value) ? Value() : Value(value);
    }
    case AttributeKind::kReference: {
        const auto handle = fieldOf<VnDbObjectId>(instance, row);
        return handle.isNull() ? Value() : Value(Instance(handle, &state));
    }
    case AttributeKind::kString: {
        const auto& text = fieldOf<VnAnsiString>(instance, row);
        if (text.isUnset())
            return {};
        std::string decoded;
        return Value(vnDecodeText(text, decoded));
    }
    default: {
        Builder builder;
        visitField(state, instance, row, info ? info->mayBeEmpty : true, builder);
        return builder.take();
    }
    }
}

} // namespace vnifc::detail
