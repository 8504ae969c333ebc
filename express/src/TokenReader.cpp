#include "TokenReader.h"

#include <array>
#include <charconv>

namespace express {
namespace {

// A name there would swallow the next clause.
constexpr std::array<std::string_view, 5> kClauses{"DERIVE", "INVERSE", "UNIQUE", "WHERE", "END_ENTITY"};

} // namespace

void TokenReader::fail(std::string_view expected) const {
    std::string found = "the end of the text";
    if (!atEnd()) {
        found = '"' + quotable(m_token.text) + '"';
        // A string may hold any byte but those that end the line; a NUL would end the message.
        std::replace_if(
            found.begin(), found.end(), [](char c) { return c >= '\0' && c < ' '; }, '?');
    }
    throw ExpressError(m_lexer.file(), m_token.at, found, expected);
}

void TokenReader::failNesting() const {
    throw ExpressError(m_lexer.file(), m_token.at, "more levels of nesting", "at most " + std::to_string(kMaxNesting));
}

bool TokenReader::accept(std::string_view word) {
    if (!at(word))
        return false;
    take();
    return true;
}

void TokenReader::expect(std::string_view word) {
    if (!accept(word))
        fail("\"" + std::string(word) + "\"");
}

bool TokenReader::atClause() const {
    return std::any_of(kClauses.begin(), kClauses.end(), [this](std::string_view word) { return at(word); });
}

Name TokenReader::takeName(std::string_view what) {
    if (m_token.kind != TokenKind::kWord || atClause())
        fail(what);
    const Token token = take();
    return {std::string(token.text), token.at};
}

int TokenReader::takeInteger() {
    int value = 0;
    const char* const end = m_token.text.data() + m_token.text.size();
    if (m_token.kind != TokenKind::kInteger || std::from_chars(m_token.text.data(), end, value).ec != std::errc{})
        fail("an integer of 32 bits");
    take();
    return value;
}

std::vector<Name> TokenReader::takeNames(std::string_view what) {
    std::vector<Name> names;
    expect("(");
    do {
        names.push_back(takeName(what));
    } while (accept(","));
    expect(")");
    return names;
}

void TokenReader::skipTo(std::initializer_list<std::string_view> words) {
    const auto reached = [&] {
        return std::any_of(words.begin(), words.end(), [this](std::string_view word) { return at(word); });
    };
    while (!reached()) {
        if (atEnd())
            fail("\"" + std::string(*words.begin()) + "\"");
        take();
    }
}

// Algorithms may declare algorithms of their own kind, so that openings and endings are counted.
void TokenReader::skipBlock(std::string_view opening) {
    const std::string ending = "END_" + std::string(opening);
    std::size_t depth = 0;
    do {
        skipTo({ending, opening});
        depth = at(opening) ? depth + 1 : depth - 1;
        take();
    } while (depth > 0);
    expect(";");
}

void TokenReader::skipParentheses() {
    std::size_t depth = 0;
    do {
        skipTo({")", "("});
        depth = at("(") ? depth + 1 : depth - 1;
        take();
    } while (depth > 0);
}

} // namespace express
