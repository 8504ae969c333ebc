#include <express/Parser.h>

#include "AlgorithmReader.h"

#include <utility>

namespace express {
namespace {

class Parser : public AlgorithmReader {
public:
    using AlgorithmReader::AlgorithmReader;

    SchemaDecl parse();

private:
    void parseDeclaration(SchemaDecl& schema);
    bool parseAlgorithms(SchemaDecl& schema);
    void parseType(SchemaDecl& schema);
    EntityDecl parseEntity();
    void parseSupertypes(EntityDecl& entity);
    void parseExplicits(EntityDecl& entity);
    void parseDerived(EntityDecl& entity);
    void parseUniques(EntityDecl& entity);
    void parseInverses(EntityDecl& entity);
    AttributeDecl parseAttributeName();
};

SchemaDecl Parser::parse() {
    SchemaDecl schema;
    schema.file = file();
    expect("SCHEMA");
    schema.name = takeName("the schema's name");
    skipTo({";"}); // a version string may follow the name
    take();
    while (!accept("END_SCHEMA"))
        parseDeclaration(schema);
    expect(";");
    if (!atEnd())
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
    if (at("SUBTYPE_CONSTRAINT"))
        return skipBlock("SUBTYPE_CONSTRAINT");
    if (!parseAlgorithms(schema))
        fail("a declaration or \"END_SCHEMA\"");
}

bool Parser::parseAlgorithms(SchemaDecl& schema) {
    static constexpr Keyword<AlgorithmKind> kKinds[] = {{"FUNCTION", AlgorithmKind::kFunction},
                                                        {"PROCEDURE", AlgorithmKind::kProcedure},
                                                        {"RULE", AlgorithmKind::kRule}};
    if (at("CONSTANT")) {
        if (!isWhole()) {
            skipBlock("CONSTANT");
            return true;
        }
        for (VariableDecl& each : parseConstants())
            schema.constants.push_back(std::move(each));
        return true;
    }
    for (const auto& [keyword, kind] : kKinds) {
        if (!at(keyword))
            continue;
        if (isWhole()) {
            schema.algorithms.push_back(parseAlgorithm(kind));
        } else {
            skipBlock(keyword);
        }
        return true;
    }
    return false;
}

void Parser::parseType(SchemaDecl& schema) {
    Name name = takeName("a type's name");
    std::vector<DomainRule>* where = nullptr;
    expect("=");
    const bool isExtensible = accept("EXTENSIBLE");
    accept("GENERIC_ENTITY");
    if (accept("ENUMERATION")) {
        const bool hasItems = !isExtensible || at("OF");
        if (hasItems)
            expect("OF");
        schema.enumerations.push_back({std::move(name), hasItems ? takeNames("a literal") : std::vector<Name>{}});
        where = &schema.enumerations.back().where;
    } else if (accept("SELECT")) {
        const bool hasItems = !isExtensible || at("(");
        schema.selects.push_back({std::move(name), hasItems ? takeNames("a type's name") : std::vector<Name>{}});
        where = &schema.selects.back().where;
    } else {
        schema.definedTypes.push_back({std::move(name), parseTypeSpec()});
        where = &schema.definedTypes.back().where;
    }
    expect(";");
    *where = parseWhere("END_TYPE");
    expect("END_TYPE");
    expect(";");
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
    entity.where = parseWhere("END_ENTITY");
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
        requireShort(type, entity.explicits.size() - first);
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
        if (isWhole()) {
            attribute.value.push_back(parseExpression());
        } else {
            skipTo({";"});
        }
        expect(";");
        entity.derived.push_back(std::move(attribute));
    }
}

void Parser::parseInverses(EntityDecl& entity) {
    while (!atClause()) {
        InverseDecl inverse;
        inverse.name = parseAttributeName().name;
        expect(":");
        if (const auto kind = acceptAggregate()) {
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

SchemaDecl parseSchema(std::string_view file, std::string_view source, Extent extent) {
    return Parser(file, source, extent == Extent::kWhole).parse();
}

} // namespace express
