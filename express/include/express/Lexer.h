#pragma once

#include "ExpressError.h"

#include <cstddef>
#include <string_view>

namespace express {

enum class TokenKind { kWord, kInteger, kReal, kLiteral, kSymbol, kEnd };

/// One token of EXPRESS text; `text` points into the source.
struct Token {
    TokenKind kind = TokenKind::kEnd;
    std::string_view text;
    Position at;
};

/// Splits EXPRESS text (ISO 10303-11, clause 7) into tokens and drops white space and remarks. Literals are strings in
/// their quotes, and binaries with their "%".
class Lexer {
public:
    /// Both texts must outlive the lexer and its tokens. `file` names the source in errors.
    Lexer(std::string_view file, std::string_view source) : m_file(file), m_source(source) {}

    /// The next token, or one of kind kEnd at the end. Throws ExpressError on what is no EXPRESS token.
    Token next();

    std::string_view file() const { return m_file; }

private:
    bool at(std::string_view text) const { return m_source.substr(m_offset).starts_with(text); }
    bool atEnd() const { return m_offset == m_source.size(); }
    char peek(std::size_t ahead = 0) const {
        return m_offset + ahead < m_source.size() ? m_source[m_offset + ahead] : '\0';
    }
    void advance(std::size_t count = 1);
    void skipRemarks();
    void skipEmbeddedRemark();
    void skipQuoted(char quote);
    TokenKind scan();
    TokenKind scanNumber();
    std::size_t symbolLength() const;
    template <class Predicate>
    void advanceWhile(Predicate predicate);

    std::string_view m_file;
    std::string_view m_source;
    std::size_t m_offset = 0;
    Position m_at;
};

} // namespace express
