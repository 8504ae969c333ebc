#include "Values.h"

#include "Instances.h"

#include <VnIfcCore/VnIfcBoolean.h>
#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcIterator.h>
#include <VnIfcCore/VnIfcText.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <VnRx/VrString.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace vnifc::tool {

using namespace VN_SDAI;

namespace {

/// One walk through one value.
class Walk {
public:
    explicit Walk(ValueVisitor& visitor) noexcept : m_visitor(visitor) {}

    void variant(const VnIfcVariant& value) {
        if (const auto* text = value.get<const char*>())
            return exchangeText(*text ? *text : Consts::VnStringUnset);
        if (const auto* handle = value.get<VnDbObjectId>())
            return reference(*handle);
        if (const auto* number = value.get<double>())
            return real(*number);
        if (const auto* number = value.get<int>())
            return integer(*number);
        if (const auto* truth = value.get<VnIfcBoolean>())
            return boolean(*truth);
        if (const auto* truth = value.get<VnIfcLogical>())
            return logical(*truth);
        if (const auto* identifier = value.get<VnIfcGUID>())
            return exchangeText(identifier->view());
        if (const auto* text = value.get<VnAnsiString>())
            return exchangeText(*text);
        if (!value.isNull())
            return constructed(value);
        m_visitor.unset();
    }

    void list(const VnIfcAggr& elements) {
        std::uint32_t wanted = m_visitor.beginList(elements.count());
        for (VnIfcConstIterator each(elements); wanted > 0 && !each.atEnd(); each.next(), --wanted)
            element(each);
        m_visitor.endList();
    }

private:
    void constructed(const VnIfcVariant& value) {
        VnIfcVariant pointer;
        if (const auto* type = dynamic_cast<const VnIfcSelectVariantType*>(value.type())) {
            if (const VnIfcSelect* held = type->selectIn(value))
                return select(*held);
        } else if (value.type()->enumeration()) {
            VrString literal;
            value.toString(literal);
            return literal.isEmpty() ? m_visitor.unset() : m_visitor.literal(literal);
        } else if (value.convertTo(VnIfcVariantType::Desc<VnIfcAggr*>::value(), pointer)) {
            const VnIfcAggr* elements = *pointer.get<VnIfcAggr*>();
            if (elements && !elements->isNil())
                return list(*elements);
        }
        m_visitor.unset();
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
            return select(each.currentAs<VnIfcSelect>());
        default:
            return list(each.currentAs<VnIfcAggr>());
        }
    }

    void select(const VnIfcSelect& value) {
        if (!value.hasValue())
            return m_visitor.unset();
        if (value.kind() == VnTypeCodeKind::kEntity)
            return reference(value.getHandle());
        m_visitor.beginTyped(upperCase(value.underlyingTypeName()));
        VnIfcVariant held;
        value.toVariant(held);
        variant(held);
        m_visitor.endTyped();
    }

    void exchangeText(std::string_view text) {
        if (text == Consts::VnStringUnset)
            return m_visitor.unset();
        m_visitor.text(vnDecodeText(text, m_decoded));
    }
    void reference(const VnDbObjectId& handle) {
        return handle.isNull() ? m_visitor.unset() : m_visitor.reference(handle);
    }
    void real(double value) { return std::isnan(value) ? m_visitor.unset() : m_visitor.real(value); }
    void integer(int value) { return value == Consts::VnIntUnset ? m_visitor.unset() : m_visitor.integer(value); }
    void logical(VnIfcLogical value) { return value.isUnset() ? m_visitor.unset() : m_visitor.logical(value); }
    void boolean(VnIfcBoolean value) {
        return value.isUnset() ? m_visitor.unset() : m_visitor.logical(value == VnIfcBoolean::True);
    }

    ValueVisitor& m_visitor;
    std::string m_decoded;
};

/// Puts a value into words.
class WordedValues final : public ValueVisitor {
public:
    std::string take() { return std::move(m_words); }

    void unset() override { add("$"); }
    void logical(VnIfcLogical value) override {
        add(value == VnIfcLogical::True ? ".T." : value == VnIfcLogical::False ? ".F." : ".U.");
    }
    void integer(int value) override { add(fmt::to_string(value)); }
    void real(double value) override { add(fmt::to_string(value)); }
    void text(std::string_view utf8) override { add(fmt::format("'{}'", utf8)); }
    void literal(std::string_view literal) override { add(fmt::format(".{}.", literal)); }
    void reference(const VnDbObjectId& handle) override {
        const VnIfcEntityBase* instance = handle.openObject();
        if (!instance)
            return add(fmt::format("#{} (not there)", handle.number()));
        const std::string name = nameOf(*instance);
        add(fmt::format("#{} {}{}", handle.number(), keywordOf(*instance), name.empty() ? "" : " '" + name + "'"));
    }
    std::uint32_t beginList(std::uint32_t count) override {
        add("(");
        m_follows = false;
        m_hidden.push_back(count - std::min(count, kShown));
        return std::min(count, kShown);
    }
    void endList() override {
        if (m_hidden.back() > 0)
            add(fmt::format("... {} more", m_hidden.back()));
        m_hidden.pop_back();
        m_words += ')';
        m_follows = true;
    }
    void beginTyped(std::string_view type) override {
        add(fmt::format("{}(", type));
        m_follows = false;
    }
    void endTyped() override { m_words += ')'; }

private:
    // A screenful of a list tells what is in it.
    static constexpr std::uint32_t kShown = 12;

    void add(std::string_view words) {
        if (m_follows)
            m_words += ", ";
        m_words += words;
        m_follows = true;
    }

    std::string m_words;
    bool m_follows = false;
    std::vector<std::uint32_t> m_hidden; ///< number of elements that are left out, list by list from the outermost
};

} // namespace

std::string upperCase(std::string_view name) {
    std::string upper(name);
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    return upper;
}

void visitValue(const VnIfcVariant& value, ValueVisitor& visitor, bool mayBeEmpty) {
    Walk walk(visitor);
    VnIfcVariant pointer;
    if (mayBeEmpty && value.convertTo(VnIfcVariantType::Desc<VnIfcAggr*>::value(), pointer))
        walk.list(**pointer.get<VnIfcAggr*>());
    else
        walk.variant(value);
}

void JsonValues::logical(VnIfcLogical value) {
    return value == VnIfcLogical::Unknown ? m_json.string("UNKNOWN") : m_json.boolean(value == VnIfcLogical::True);
}

void JsonValues::reference(const VnDbObjectId& handle) {
    m_json.beginObject();
    m_json.key("ref");
    m_json.number(handle.number());
    describe(m_json, handle);
    m_json.endObject();
}

std::uint32_t JsonValues::beginList(std::uint32_t count) {
    m_json.beginArray();
    return count;
}

void JsonValues::beginTyped(std::string_view type) {
    m_json.beginObject();
    m_json.key("type");
    m_json.string(type);
    m_json.key("value");
}

void DescribedJsonValues::describe(JsonWriter& json, const VnDbObjectId& handle) {
    const VnIfcEntityBase* instance = handle.openObject();
    json.key("type");
    instance ? json.string(keywordOf(*instance)) : json.null();
    const std::string name = instance ? nameOf(*instance) : std::string();
    json.key("name");
    name.empty() ? json.null() : json.string(name);
}

std::string wordsOf(const VnIfcVariant& value, bool mayBeEmpty) {
    WordedValues words;
    visitValue(value, words, mayBeEmpty);
    return words.take();
}

std::string jsonOf(const VnIfcVariant& value) {
    std::string text;
    Output output([&text](std::string_view part) { text += part; });
    JsonWriter json(output);
    JsonValues visitor(json);
    visitValue(value, visitor);
    output.flush();
    return text;
}

} // namespace vnifc::tool
