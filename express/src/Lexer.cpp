#include <express/Lexer.h>

#include <string>

namespace express {
namespace {

constexpr bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }
constexpr bool isDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr bool isWordPart(char c) { return isLetter(c) || isDigit(c) || c == '_'; }
constexpr std::string_view kSymbols = ".,;:*+-=%\\/<>[]{}|()?";
// Longer ones first, where one begins like another.
constexpr std::string_view kLongSymbols[] = {":<>:", ":=:", ":=", "<=", ">=", "<>", "<*", "**", "||"};

} // namespace

void Lexer::advance(std::size_t count) {
    for (; count > 0; --count, ++m_offset) {
        const bool newLine = m_source[m_offset] == '\n';
        m_at.line += newLine ? 1 : 0;
        m_at.column = newLine ? 1 : m_at.column + 1;
    }
}

template <class Predicate>
void Lexer::advanceWhile(Predicate predicate) {
    while (!atEnd() && predicate(peek()))
        advance();
}

void Lexer::skipEmbeddedRemark() {
    const Position start = m_at;
    std::size_t depth = 0; // embedded remarks nest, a counter instead of recursion bounds the stack
    do {
        if (atEnd())
            throw ExpressError(m_file, start, "a remark without end", "\"*)\"");
        const bool opens = at("(*");
        const bool closes = !opens && at("*)");
        depth = depth + (opens ? 1 : 0) - (closes ? 1 : 0);
        advance(opens || closes ? 2 : 1);
    } while (depth > 0);
}

void Lexer::skipRemarks() {
    while (true) {
        advanceWhile(isSpace);
        if (at("(*")) {
            skipEmbeddedRemark();
        } else if (at("--")) {
            advanceWhile([](char c) { return c != '\n'; });
        } else {
            return;
        }
    }
}

void Lexer::skipQuoted(char quote) {
    const Position start = m_at;
    do {
        advance();
        advanceWhile([quote](char c) { return c != quote && c != '\n'; });
        if (peek() != quote)
            throw ExpressError(m_file, start, "a string without end", "a closing quote on the same line");
        advance();
    } while (quote == '\'' && peek() == quote); // a doubled one stands for itself
}

TokenKind Lexer::scanNumber() {
    advanceWhile(isDigit);
    if (peek() != '.')
        return TokenKind::kInteger;
    advance();
    advanceWhile(isDigit);
    const bool isSigned = peek(1) == '+' || peek(1) == '-';
    if ((peek() == 'e' || peek() == 'E') && isDigit(peek(isSigned ? 2 : 1))) {
        advance(isSigned ? 2 : 1);
        advanceWhile(isDigit);
    }
    return TokenKind::kReal;
}

std::size_t Lexer::symbolLength() const {
    for (const std::string_view symbol : kLongSymbols) {
        if (at(symbol))
            return symbol.size();
    }
    return 1;
}

TokenKind Lexer::scan() {
    const char first = peek();
    if (isLetter(first)) {
        advanceWhile(isWordPart);
        return TokenKind::kWord;
    }
    if (isDigit(first))
        return scanNumber();
    if (first == '%' && isDigit(peek(1))) {
        advance();
        advanceWhile(isDigit);
        return TokenKind::kLiteral;
    }
    if (first == '\'' || first == '"') {
        skipQuoted(first);
        return TokenKind::kLiteral;
    }
    if (kSymbols.find(first) == std::string_view::npos) {
        throw ExpressError(m_file, m_at, "byte " + std::to_string(static_cast<unsigned char>(first)),
                           "an EXPRESS token");
    }
    advance(symbolLength());
    return TokenKind::kSymbol;
}

Token Lexer::next() {
    skipRemarks();
    Token token{TokenKind::kEnd, {}, m_at};
    if (atEnd())
        return token;
    const std::size_t start = m_offset;
    token.kind = scan();
    token.text = m_source.substr(start, m_offset - start);
    return token;
}

} // namespace express
