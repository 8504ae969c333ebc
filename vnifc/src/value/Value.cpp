#include "../model/ClassInfo.h"

#include <vnifc/ValueVisitor.h>

#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcText.h>

#include <algorithm>
#include <charconv>
#include <ostream>

namespace vnifc {

Value::Value(const Value&) = default;
Value::Value(Value&&) noexcept = default;
Value& Value::operator=(const Value&) = default;
Value& Value::operator=(Value&&) noexcept = default;
Value::~Value() = default;

namespace {

/// In the shortest form that reads back the same.
std::string shortest(double value) {
    char buffer[32];
    return {buffer, std::to_chars(buffer, buffer + sizeof buffer, value).ptr};
}

/// With the point that an exchange file wants (ISO 10303-21, 6.4.2).
std::string exchangeReal(double value) {
    std::string text = shortest(value);
    const std::size_t exponent = text.find('e');
    if (text.find('.') == text.npos)
        text.insert(exponent == text.npos ? text.size() : exponent, 1, '.');
    std::ranges::replace(text, 'e', 'E');
    return text;
}

std::string quoted(std::string_view utf8) {
    std::string result = "'";
    for (const char c : VN_SDAI::vnEncodeText(utf8))
        result.append(c == '\'' ? 2 : 1, c);
    return result + '\'';
}

std::string described(const Instance& instance) {
    std::string words = '#' + std::to_string(instance.id());
    if (!instance)
        return words + " (not there)";
    // Messages and lists show entities in the form of a file.
    words.append(1, ' ').append(instance.keyword());
    const std::string name = instance.name();
    return name.empty() ? words : words + " '" + name + '\'';
}

/// Puts a value into words.
class Words final : public ValueVisitor {
public:
    explicit Words(TextForm form) noexcept : m_form(form) {}
    std::string take() { return std::move(m_words); }

    void null() override { add(isPlain() ? "" : "$"); }
    void boolean(bool value) override { add(isPlain() ? (value ? "true" : "false") : (value ? ".T." : ".F.")); }
    void unknown() override { add(isPlain() ? "unknown" : ".U."); }
    void integer(std::int64_t value) override { add(std::to_string(value)); }
    void real(double value) override { add(m_form == TextForm::kExchange ? exchangeReal(value) : shortest(value)); }
    void text(std::string_view utf8) override {
        if (isPlain())
            return add(utf8);
        add(m_form == TextForm::kExchange ? quoted(utf8) : '\'' + std::string(utf8) + '\'');
    }
    void literal(std::string_view literal) override {
        add(isPlain() ? std::string(literal) : '.' + std::string(literal) + '.');
    }
    void instance(const Instance& instance) override {
        add(m_form == TextForm::kDescribed ? described(instance) : '#' + std::to_string(instance.id()));
    }
    std::size_t beginList(std::size_t count) override {
        const std::size_t shown = m_form == TextForm::kDescribed ? std::min(count, kShown) : count;
        m_hidden.push_back(count - shown);
        // For people the outermost list needs no parentheses.
        if (!isPlain() || m_hidden.size() > 1)
            begin("(");
        return shown;
    }
    void endList() override {
        if (m_hidden.back() > 0)
            add("... " + std::to_string(m_hidden.back()) + " more");
        const bool isBare = isPlain() && m_hidden.size() == 1;
        m_hidden.pop_back();
        if (!isBare)
            end();
    }
    void beginTyped(std::string_view type) override {
        if (!isPlain())
            begin(std::string(type) + '(');
    }
    void endTyped() override {
        if (!isPlain())
            end();
    }

private:
    // A screenful of a list tells what is in it.
    static constexpr std::size_t kShown = 12;

    bool isPlain() const noexcept { return m_form == TextForm::kPlain; }
    void begin(std::string_view words) {
        add(words);
        m_follows = false;
    }
    void end() {
        m_words += ')';
        m_follows = true;
    }
    void add(std::string_view words) {
        if (m_follows)
            m_words += m_form == TextForm::kExchange ? "," : ", ";
        m_words += words;
        m_follows = true;
    }

    TextForm m_form;
    std::string m_words;
    bool m_follows = false;
    std::vector<std::size_t> m_hidden; ///< number of elements that are left out, list by list from the outermost
};

std::string upperCase(std::string_view name) {
    std::string upper(name);
    for (char& c : upper)
        c = c >= 'a' && c <= 'z' ? static_cast<char>(c - ('a' - 'A')) : c;
    return upper;
}

} // namespace

ValueVisitor::~ValueVisitor() = default;

Typed::Typed(std::string type, Value value)
    : m_type(std::move(type)), m_value(std::make_shared<const Value>(std::move(value))) {}

bool operator==(const Typed& left, const Typed& right) {
    return detail::sameName(left.type(), right.type()) && left.value() == right.value();
}

Value::Value(Logical value) noexcept {
    if (value == Logical::kUnknown)
        m_value = value;
    else
        m_value = value == Logical::kTrue;
}

const Value& Value::untyped() const noexcept {
    const Value* value = this;
    while (const Typed* typed = std::get_if<Typed>(&value->m_value))
        value = &typed->value();
    return *value;
}

void Value::tooLarge() { throw BadValue("expected an integer of 64 bits with a sign, found a larger one"); }

void Value::throwOtherKind() const {
    static constexpr const char* kKinds[] = {"null",   "a boolean", "a logical",   "an integer", "a real",
                                             "a text", "a literal", "an instance", "a list",     "a typed value"};
    throw BadValue(std::string("a value of another kind was expected, found ") +
                   kKinds[static_cast<std::size_t>(untyped().kind())] + ' ' + toString(TextForm::kDescribed));
}

std::string Value::toString(TextForm form) const {
    Words words(form);
    visitValue(*this, words);
    return words.take();
}

std::ostream& operator<<(std::ostream& stream, const Value& value) { return stream << value.toString(); }

void visitValue(const Value& value, ValueVisitor& visitor) {
    switch (value.kind()) {
    case Value::Kind::kNull:
        return visitor.null();
    case Value::Kind::kBoolean:
        return visitor.boolean(std::get<bool>(value.variant()));
    case Value::Kind::kLogical:
        return visitor.unknown();
    case Value::Kind::kInteger:
        return visitor.integer(std::get<std::int64_t>(value.variant()));
    case Value::Kind::kReal:
        return visitor.real(std::get<double>(value.variant()));
    case Value::Kind::kText:
        return visitor.text(std::get<std::string>(value.variant()));
    case Value::Kind::kLiteral:
        return visitor.literal(std::get<Literal>(value.variant()).text);
    case Value::Kind::kInstance:
        return visitor.instance(std::get<Instance>(value.variant()));
    case Value::Kind::kList: {
        const auto& list = std::get<Value::List>(value.variant());
        std::size_t wanted = visitor.beginList(list.size());
        for (auto each = list.begin(); wanted > 0 && each != list.end(); ++each, --wanted)
            visitValue(*each, visitor);
        return visitor.endList();
    }
    case Value::Kind::kTyped: {
        const auto& typed = std::get<Typed>(value.variant());
        visitor.beginTyped(upperCase(typed.type()));
        visitValue(typed.value(), visitor);
        return visitor.endTyped();
    }
    }
}

} // namespace vnifc
