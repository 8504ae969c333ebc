#include <express/Parser.h>

#include <express/Lexer.h>
#include <express/Text.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <initializer_list>
#include <utility>

namespace express {
namespace {

template <class Value>
struct Keyword {
    std::string_view text;
    Value value;
};

constexpr std::array<Keyword<AggregateKind>, 4> kAggregates{{{"ARRAY", AggregateKind::kArray},
                                                             {"BAG", AggregateKind::kBag},
                                                             {"LIST", AggregateKind::kList},
                                                             {"SET", AggregateKind::kSet}}};
constexpr std::array<Keyword<SimpleType>, 7> kSimpleTypes{{{"BINARY", SimpleType::kBinary},
                                                           {"BOOLEAN", SimpleType::kBoolean},
                                                           {"INTEGER", SimpleType::kInteger},
                                                           {"LOGICAL", SimpleType::kLogical},
                                                           {"NUMBER", SimpleType::kNumber},
                                                           {"REAL", SimpleType::kReal},
                                                           {"STRING", SimpleType::kString}}};

// Words that end a list of attributes; a name there would swallow the next clause.
constexpr std::array<std::string_view, 5> kClauses{"DERIVE", "INVERSE", "UNIQUE", "WHERE", "END_ENTITY"};

class Parser {
public:
    Parser(std::string_view file, std::string_view source) : m_source(source), m_lexer(file, source) { take(); }

    SchemaDecl parse();

private:
    Token take() { return std::exchange(m_token, m_lexer.next()); }
    bool at(std::string_view word) const { return equalNoCase(m_token.text, word); }
    bool accept(std::string_view word);
    void expect(std::string_view word);
    [[noreturn]] void fail(std::string_view expected) const;
    Name takeName(std::string_view what);
    int takeInteger();
    std::vector<Name> takeNames(std::string_view what);
    template <class Table>
    auto acceptKeyword(const Table& table);

    void skipTo(std::initializer_list<std::string_view> words);
    void skipBlock(std::string_view opening);
    void skipParentheses();

    void parseDeclaration(SchemaDecl& schema);
    void parseType(SchemaDecl& schema);
    EntityDecl parseEntity();
    void parseSupertypes(EntityDecl& entity);
    void parseExplicits(EntityDecl& entity);
    void parseDerived(EntityDecl& entity);
    void parseUniques(EntityDecl& entity);
    void parseInverses(EntityDecl& entity);
    AttributeDecl parseAttributeName();
    TypeSpec parseTypeSpec();
    void parseWidth(TypeSpec& type);
    Layer parseLayer(AggregateKind kind);
    Bound parseBound(std::string_view end);
    bool atClause() const;

    std::string_view m_source;
    Lexer m_lexer;
    Token m_token;
};

void Parser::fail(std::string_view expected) const {
    std::string found = "the end of the text";
    if (m_token.kind != TokenKind::kEnd) {
        found = '"' + std::string(m_token.text) + '"';
        // A string may hold any byte but those that end the line; a NUL would end the message.
        std::replace_if(
            found.begin(), found.end(), [](char c) { return c >= '\0' && c < ' '; }, '?');
    }
    throw ExpressError(m_lexer.file(), m_token.at, found, expected);
}

bool Parser::accept(std::string_view word) {
    if (!at(word))
        return false;
    take();
    return true;
}

void Parser::expect(std::string_view word) {
    if (!accept(word))
        fail("\"" + std::string(word) + "\"");
}

Name Parser::takeName(std::string_view what) {
    if (m_token.kind != TokenKind::kWord || atClause())
        fail(what);
    const Token token = take();
    return {std::string(token.text), token.at};
}

int Parser::takeInteger() {
    int value = 0;
    const char* const end = m_token.text.data() + m_token.text.size();
    if (m_token.kind != TokenKind::kInteger || std::from_chars(m_token.text.data(), end, value).ec != std::errc{})
        fail("an integer of 32 bits");
    take();
    return value;
}

std::vector<Name> Parser::takeNames(std::string_view what) {
    std::vector<Name> names;
    expect("(");
    do {
        names.push_back(takeName(what));
    } while (accept(","));
    expect(")");
    return names;
}

template <class Table>
auto Parser::acceptKeyword(const Table& table) {
    using Value = decltype(table[0].value);
    const auto found = std::find_if(table.begin(), table.end(), [this](const auto& row) { return at(row.text); });
    if (found == table.end())
        return std::optional<Value>{};
    take();
    return std::optional<Value>{found->value};
}

void Parser::skipTo(std::initializer_list<std::string_view> words) {
    const auto reached = [&] {
        return std::any_of(words.begin(), words.end(), [this](std::string_view word) { return at(word); });
    };
    while (!reached()) {
        if (m_token.kind == TokenKind::kEnd)
            fail("\"" + std::string(*words.begin()) + "\"");
        take();
    }
}

// Algorithms may declare algorithms of their own kind, so that openings and endings are counted.
void Parser::skipBlock(std::string_view opening) {
    const std::string ending = "END_" + std::string(opening);
    std::size_t depth = 0;
    do {
        skipTo({ending, opening});
        depth = at(opening) ? depth + 1 : depth - 1;
        take();
    } while (depth > 0);
    expect(";");
}

void Parser::skipParentheses() {
    std::size_t depth = 0;
    do {
        skipTo({")", "("});
        depth = at("(") ? depth + 1 : depth - 1;
        take();
    } while (depth > 0);
}

SchemaDecl Parser::parse() {
    SchemaDecl schema;
    schema.file = m_lexer.file();
    expect("SCHEMA");
    schema.name = takeName("the schema's name");
    skipTo({";"}); // a version string may follow the name
    take();
    while (!accept("END_SCHEMA"))
        parseDeclaration(schema);
    expect(";");
    if (m_token.kind != TokenKind::kEnd)
        fail("the end of the text");
    return schema;
}

void Parser::parseDeclaration(SchemaDecl& schema) {
    if (accept("TYPE"))
        return parseType(schema);
    if (accept("ENTITY")) {
        schema.entities.push_back(parseEntity());
        return;
    }
    if (at("USE") || at("REFERENCE")) {
        skipTo({";"});
        take();
        return;
    }
    for (const std::string_view block : {"CONSTANT", "FUNCTION", "PROCEDURE", "RULE", "SUBTYPE_CONSTRAINT"})
        if (at(block))
            return skipBlock(block);
    fail("a declaration or \"END_SCHEMA\"");
}

void Parser::parseType(SchemaDecl& schema) {
    Name name = takeName("a type's name");
    expect("=");
    const bool isExtensible = accept("EXTENSIBLE");
    accept("GENERIC_ENTITY");
    if (accept("ENUMERATION")) {
        const bool hasItems = !isExtensible || at("OF");
        if (hasItems)
            expect("OF");
        schema.enumerations.push_back({std::move(name), hasItems ? takeNames("a literal") : std::vector<Name>{}});
    } else if (accept("SELECT")) {
        const bool hasItems = !isExtensible || at("(");
        schema.selects.push_back({std::move(name), hasItems ? takeNames("a type's name") : std::vector<Name>{}});
    } else {
        schema.definedTypes.push_back({std::move(name), parseTypeSpec()});
    }
    expect(";");
    if (at("WHERE"))
        skipTo({"END_TYPE"});
    expect("END_TYPE");
    expect(";");
}

TypeSpec Parser::parseTypeSpec() {
    TypeSpec type;
    while (const auto kind = acceptKeyword(kAggregates)) {
        type.layers.push_back(parseLayer(*kind));
        expect("OF");
        accept("OPTIONAL");
        type.layers.back().isUnique = accept("UNIQUE");
    }
    type.name = {std::string(m_token.text), m_token.at};
    type.simple = acceptKeyword(kSimpleTypes);
    if (!type.simple) {
        type.name = takeName("a type");
        return type;
    }
    parseWidth(type);
    return type;
}

void Parser::parseWidth(TypeSpec& type) {
    if (at("(")) {
        take();
        if (m_token.kind == TokenKind::kInteger)
            type.width = takeInteger();
        skipTo({")"});
        take();
    }
    type.isFixed = accept("FIXED");
}

Layer Parser::parseLayer(AggregateKind kind) {
    Layer layer;
    layer.kind = kind;
    if (accept("[")) {
        layer.lower = parseBound(":");
        layer.upper = parseBound("]");
    }
    return layer;
}

Bound Parser::parseBound(std::string_view end) {
    const Token first = m_token;
    if (at(end))
        fail("a bound");
    if (m_token.kind == TokenKind::kInteger) {
        const int value = takeInteger();
        if (accept(end))
            return {std::string(first.text), value};
    }
    Token last = first;
    for (std::size_t depth = 0; depth > 0 || !at(end);) {
        if (m_token.kind == TokenKind::kEnd || at(";"))
            fail("\"" + std::string(end) + "\"");
        depth += at("(") || at("[") ? 1 : 0;
        depth -= depth > 0 && (at(")") || at("]")) ? 1 : 0;
        last = take();
    }
    take();
    const char* const lastByte = last.text.data() + last.text.size();
    return {std::string(first.text.data(), lastByte), std::nullopt};
}

EntityDecl Parser::parseEntity() {
    EntityDecl entity;
    entity.name = takeName("an entity's name");
    parseSupertypes(entity);
    parseExplicits(entity);
    if (accept("DERIVE"))
        parseDerived(entity);
    if (accept("INVERSE"))
        parseInverses(entity);
    if (accept("UNIQUE"))
        parseUniques(entity);
    if (at("WHERE"))
        skipTo({"END_ENTITY"});
    expect("END_ENTITY");
    expect(";");
    return entity;
}

void Parser::parseUniques(EntityDecl& entity) {
    while (!at("WHERE") && !at("END_ENTITY")) {
        UniqueDecl rule;
        AttributeDecl first = parseAttributeName();
        if (accept(":")) {
            rule.label = first.name.text;
            first = parseAttributeName();
        }
        const auto add = [&](const AttributeDecl& each) {
            rule.attributes.push_back(each.redeclaredOwner.text.empty() ? each.name : each.redeclaredName);
        };
        add(first);
        while (accept(","))
            add(parseAttributeName());
        expect(";");
        entity.uniques.push_back(std::move(rule));
    }
}

void Parser::parseSupertypes(EntityDecl& entity) {
    entity.isAbstract = accept("ABSTRACT");
    if (accept("SUPERTYPE") && (!entity.isAbstract || at("OF"))) {
        expect("OF");
        if (!at("("))
            fail("\"(\"");
        skipParentheses();
    }
    if (accept("SUBTYPE")) {
        expect("OF");
        entity.supertypes = takeNames("an entity's name");
    }
    expect(";");
}

bool Parser::atClause() const {
    return std::any_of(kClauses.begin(), kClauses.end(), [this](std::string_view word) { return at(word); });
}

AttributeDecl Parser::parseAttributeName() {
    AttributeDecl attribute;
    if (!accept("SELF")) {
        attribute.name = takeName("an attribute's name");
        return attribute;
    }
    expect("\\");
    attribute.redeclaredOwner = takeName("an entity's name");
    expect(".");
    attribute.redeclaredName = takeName("an attribute's name");
    attribute.name = accept("RENAMED") ? takeName("an attribute's name") : attribute.redeclaredName;
    return attribute;
}

void Parser::parseExplicits(EntityDecl& entity) {
    while (!atClause()) {
        const std::size_t first = entity.explicits.size();
        do {
            entity.explicits.push_back(parseAttributeName());
        } while (accept(","));
        expect(":");
        const bool isOptional = accept("OPTIONAL");
        const TypeSpec type = parseTypeSpec();
        expect(";");
        for (std::size_t i = first; i < entity.explicits.size(); ++i) {
            entity.explicits[i].isOptional = isOptional;
            entity.explicits[i].type = type;
        }
    }
}

void Parser::parseDerived(EntityDecl& entity) {
    while (!atClause()) {
        AttributeDecl attribute = parseAttributeName();
        expect(":");
        attribute.type = parseTypeSpec();
        expect(":=");
        skipTo({";"});
        take();
        entity.derived.push_back(std::move(attribute));
    }
}

void Parser::parseInverses(EntityDecl& entity) {
    while (!atClause()) {
        InverseDecl inverse;
        inverse.name = parseAttributeName().name;
        expect(":");
        if (const auto kind = acceptKeyword(kAggregates)) {
            inverse.layer = parseLayer(*kind);
            expect("OF");
        }
        inverse.entity = takeName("an entity's name");
        expect("FOR");
        inverse.attribute = takeName("an attribute's name");
        if (accept("."))
            inverse.attribute = takeName("an attribute's name");
        expect(";");
        entity.inverses.push_back(std::move(inverse));
    }
}

} // namespace

SchemaDecl parseSchema(std::string_view file, std::string_view source) { return Parser(file, source).parse(); }

} // namespace express
