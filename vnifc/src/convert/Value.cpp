#include "Value.h"

#include <VnIfcCore/VnAscii.h>

#include <array>
#include <charconv>

namespace vnifc::conversion {

namespace {

/// Deeper than any type of a schema nests; a file may nest as deep as it likes.
constexpr unsigned kDeepest = 32;
constexpr std::size_t kShownLength = 80;

constexpr bool isBlank(char c) noexcept { return static_cast<unsigned char>(c) <= ' '; }
constexpr bool isDigit(char c) noexcept { return c >= '0' && c <= '9'; }
constexpr bool isWord(char c) noexcept {
    return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
}

class Parser {
public:
    explicit Parser(std::string_view text) noexcept : m_text(text) {}

    bool parse(Values& values) {
        skip();
        if (m_at == m_text.size())
            return true;
        return list(values, 0) && m_at == m_text.size();
    }

private:
    char peek() const noexcept { return m_at < m_text.size() ? m_text[m_at] : '\0'; }

    void skip() noexcept {
        while (m_at < m_text.size()) {
            if (m_text.substr(m_at, 2) == "/*") {
                const std::size_t end = m_text.find("*/", m_at + 2);
                m_at = end == m_text.npos ? m_text.size() : end + 2;
            } else if (isBlank(m_text[m_at])) {
                ++m_at;
            } else {
                return;
            }
        }
    }

    /// Values with commas between them, up to a parenthesis or the end.
    bool list(Values& values, unsigned depth) {
        while (true) {
            values.emplace_back();
            if (!value(values.back(), depth))
                return false;
            skip();
            if (peek() != ',')
                return true;
            ++m_at;
        }
    }

    bool value(Value& result, unsigned depth) {
        skip();
        const std::size_t begin = m_at;
        simple(result, depth);
        skip();
        const char next = peek();
        if (!m_failed && (next == ',' || next == ')' || next == '\0'))
            return true;
        return opaque(result, begin);
    }

    void simple(Value& result, unsigned depth) {
        m_failed = false;
        const char c = peek();
        if (c == '$' || c == '*') {
            ++m_at;
            result = c == '$' ? Value::unset() : Value::derived();
        } else if (c == '#') {
            reference(result);
        } else if (c == '\'') {
            quoted(result, Value::Kind::kString, '\'');
        } else if (c == '"') {
            quoted(result, Value::Kind::kBinary, '"');
        } else if (c == '(') {
            result.kind = Value::Kind::kList;
            nested(result, depth);
        } else if (c == '.' && m_at + 1 < m_text.size() && !isDigit(m_text[m_at + 1])) {
            literal(result);
        } else if (isDigit(c) || c == '+' || c == '-' || c == '.') {
            number(result);
        } else if (isWord(c)) {
            typed(result, depth);
        } else {
            m_failed = true;
        }
    }

    void reference(Value& result) {
        const std::size_t begin = ++m_at;
        while (isDigit(peek()))
            ++m_at;
        result.kind = Value::Kind::kReference;
        const auto end = std::from_chars(m_text.data() + begin, m_text.data() + m_at, result.number);
        m_failed = end.ec != std::errc();
    }

    void quoted(Value& result, Value::Kind kind, char quote) {
        const std::size_t begin = m_at;
        ++m_at;
        while (true) {
            m_at = m_text.find(quote, m_at);
            if (m_at == m_text.npos) {
                m_at = m_text.size();
                m_failed = true;
                return;
            }
            ++m_at;
            if (isQuoteOfDirective(begin))
                continue;
            if (peek() != quote)
                break;
            ++m_at;
        }
        result.kind = kind;
        result.text.assign(m_text.substr(begin, m_at - begin));
    }

    /// True for the apostrophe that \S\ takes as its character (ISO 10303-21, 6.4.3.1), just passed.
    bool isQuoteOfDirective(std::size_t begin) const noexcept {
        return m_at - begin > 4 && m_text.substr(m_at - 4, 3) == "\\S\\" && m_text.substr(m_at - 5, 1) != "\\" &&
               peek() != ',' && peek() != ')';
    }

    void literal(Value& result) {
        const std::size_t begin = ++m_at;
        while (isWord(peek()))
            ++m_at;
        result.kind = Value::Kind::kLiteral;
        result.text.assign(m_text.substr(begin, m_at - begin));
        m_failed = peek() != '.';
        ++m_at;
    }

    void number(Value& result) {
        const std::size_t begin = m_at;
        while (isDigit(peek()) || peek() == '.' || peek() == '+' || peek() == '-' || peek() == 'E' || peek() == 'e')
            ++m_at;
        result.kind = Value::Kind::kNumber;
        result.text.assign(m_text.substr(begin, m_at - begin));
        double ignored = 0;
        m_failed = !result.toReal(ignored);
    }

    void typed(Value& result, unsigned depth) {
        const std::size_t begin = m_at;
        while (isWord(peek()))
            ++m_at;
        result.kind = Value::Kind::kTyped;
        result.text.assign(m_text.substr(begin, m_at - begin));
        skip();
        if (peek() == '(')
            nested(result, depth);
        else
            m_failed = true;
    }

    void nested(Value& result, unsigned depth) {
        ++m_at;
        skip();
        if (depth == kDeepest) {
            m_failed = true;
        } else if (peek() == ')') {
            ++m_at;
        } else if (list(result.items, depth + 1) && peek() == ')') {
            ++m_at;
            m_failed = false;
        } else {
            m_failed = true;
        }
    }

    /// What is no value, up to the comma or parenthesis that ends it.
    bool opaque(Value& result, std::size_t begin) {
        std::size_t depth = 0;
        bool isString = false;
        for (m_at = begin; m_at < m_text.size(); ++m_at) {
            const char c = m_text[m_at];
            if (c == '\'')
                isString = !isString;
            if (isString)
                continue;
            if (depth == 0 && (c == ',' || c == ')'))
                break;
            depth += c == '(';
            depth -= c == ')';
        }
        result = {Value::Kind::kOpaque, std::string(m_text.substr(begin, m_at - begin)), 0, {}};
        return !isString;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    bool m_failed = false;
};

} // namespace

Value Value::real(double value) {
    std::array<char, 32> buffer{};
    const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value).ptr;
    std::string text(buffer.data(), end);
    // The mantissa has a point, the exponent a capital letter (ISO 10303-21, 6.4.2).
    std::size_t exponent = text.find('e');
    if (text.find('.') == text.npos)
        text.insert(exponent == text.npos ? text.size() : exponent, ".");
    exponent = text.find('e');
    if (exponent != text.npos)
        text[exponent] = 'E';
    return {Kind::kNumber, std::move(text), 0, {}};
}

Value Value::typed(std::string_view keyword, Value value) {
    Value result{Kind::kTyped, VN_SDAI::vnUpper(keyword), 0, {}};
    result.items.push_back(std::move(value));
    return result;
}

std::string_view Value::content() const noexcept {
    if (kind == Kind::kString && text.size() >= 2)
        return std::string_view(text).substr(1, text.size() - 2);
    return text;
}

bool Value::toReal(double& value) const noexcept {
    if (kind != Kind::kNumber || text.empty())
        return false;
    const char* begin = text.data() + (text[0] == '+');
    const char* const end = text.data() + text.size();
    double result = 0;
    const auto [stop, error] = std::from_chars(begin, end, result);
    if (error != std::errc() || stop != end)
        return false;
    value = result;
    return true;
}

void write(std::string& out, const Values& list) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        if (i > 0)
            out += ',';
        write(out, list[i]);
    }
}

void write(std::string& out, const Value& value) {
    switch (value.kind) {
    case Value::Kind::kUnset:
        out += '$';
        break;
    case Value::Kind::kDerived:
        out += '*';
        break;
    case Value::Kind::kReference:
        out += '#';
        out += std::to_string(value.number);
        break;
    case Value::Kind::kLiteral:
        out += '.';
        out += value.text;
        out += '.';
        break;
    case Value::Kind::kTyped:
    case Value::Kind::kList:
        out += value.text;
        out += '(';
        write(out, value.items);
        out += ')';
        break;
    default:
        out += value.text;
    }
}

std::string shown(const Value& value) {
    std::string text;
    write(text, value);
    if (text.size() <= kShownLength)
        return text;
    text.resize(kShownLength);
    return text + "...";
}

bool parseList(std::string_view text, Values& values) { return Parser(text).parse(values); }

std::string textOf(const Value& value) {
    std::string text;
    write(text, value);
    return text;
}

} // namespace vnifc::conversion
