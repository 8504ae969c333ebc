#pragma once

#include <express/Lexer.h>
#include <express/Syntax.h>
#include <express/Text.h>

#include <algorithm>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace express {

/// A word of the language and what it means.
template <class Value>
struct Keyword {
    std::string_view text;
    Value value;
};

/// Walks over the tokens of a text, one ahead: what all parts of the parser share.
class TokenReader {
public:
    TokenReader(std::string_view file, std::string_view source) : m_source(source), m_lexer(file, source) { take(); }

protected:
    /// Counts a level of nesting as long as it lives, and refuses one too many.
    class Level {
    public:
        explicit Level(TokenReader& reader) : m_reader(reader) {
            if (++m_reader.m_level > kMaxNesting)
                m_reader.failNesting();
        }
        ~Level() { --m_reader.m_level; }
        Level(const Level&) = delete;
        Level& operator=(const Level&) = delete;

    private:
        TokenReader& m_reader;
    };

    const Token& token() const { return m_token; }
    std::string_view file() const { return m_lexer.file(); }
    Token take() { return std::exchange(m_token, m_lexer.next()); }
    /// The token after the present one.
    Token peek() const { return Lexer(m_lexer).next(); }
    bool at(std::string_view word) const { return equalNoCase(m_token.text, word); }
    bool atEnd() const { return m_token.kind == TokenKind::kEnd; }
    bool accept(std::string_view word);
    void expect(std::string_view word);
    [[noreturn]] void fail(std::string_view expected) const;
    [[noreturn]] void failNesting() const;
    Name takeName(std::string_view what);
    int takeInteger();
    std::vector<Name> takeNames(std::string_view what);
    /// A word that ends a list of attributes.
    bool atClause() const;

    void skipTo(std::initializer_list<std::string_view> words);
    void skipBlock(std::string_view opening);
    void skipParentheses();

    template <class Table>
    auto acceptKeyword(const Table& table) {
        using Value = decltype(table[0].value);
        const auto found =
            std::find_if(std::begin(table), std::end(table), [this](const auto& row) { return at(row.text); });
        if (found == std::end(table))
            return std::optional<Value>{};
        take();
        return std::optional<Value>{found->value};
    }

private:
    std::string_view m_source;
    Lexer m_lexer;
    Token m_token;
    std::uint16_t m_level = 0;
};

} // namespace express
