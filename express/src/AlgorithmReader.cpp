#include "AlgorithmReader.h"

namespace express {
namespace {

constexpr Keyword<AggregateKind> kAggregates[] = {{"ARRAY", AggregateKind::kArray},
                                                  {"BAG", AggregateKind::kBag},
                                                  {"LIST", AggregateKind::kList},
                                                  {"SET", AggregateKind::kSet}};
constexpr Keyword<SimpleType> kSimpleTypes[] = {{"BINARY", SimpleType::kBinary},   {"BOOLEAN", SimpleType::kBoolean},
                                                {"INTEGER", SimpleType::kInteger}, {"LOGICAL", SimpleType::kLogical},
                                                {"NUMBER", SimpleType::kNumber},   {"REAL", SimpleType::kReal},
                                                {"STRING", SimpleType::kString}};

struct Algorithm {
    std::string_view keyword;
    std::string_view end;
};
/// By AlgorithmKind.
constexpr Algorithm kAlgorithms[] = {
    {"FUNCTION", "END_FUNCTION"}, {"PROCEDURE", "END_PROCEDURE"}, {"RULE", "END_RULE"}};

} // namespace

std::optional<AggregateKind> AlgorithmReader::acceptAggregate() { return acceptKeyword(kAggregates); }

TypeSpec AlgorithmReader::parseTypeSpec(bool isParameter) {
    TypeSpec type;
    while (true) {
        if (isWhole() && type.layers.size() >= kMaxNesting)
            failNesting();
        if (isParameter && accept("AGGREGATE")) {
            type.layers.push_back({AggregateKind::kBag, {"0", 0}, {}});
            type.layers.back().isGeneral = true;
            parseGenericLabel();
            expect("OF");
            continue;
        }
        const auto kind = acceptAggregate();
        if (!kind)
            break;
        type.layers.push_back(parseLayer(*kind));
        expect("OF");
        type.layers.back().isOptional = accept("OPTIONAL");
        type.layers.back().isUnique = accept("UNIQUE");
    }
    type.name = {std::string(token().text), token().at};
    if (isParameter && (accept("GENERIC") || accept("GENERIC_ENTITY"))) {
        type.isGeneric = true;
        parseGenericLabel();
        return type;
    }
    type.simple = acceptKeyword(kSimpleTypes);
    if (!type.simple) {
        type.name = takeName("a type");
        return type;
    }
    parseWidth(type);
    return type;
}

// Bounds may be long expressions; each of the names has a type of its own.
void AlgorithmReader::requireShort(const TypeSpec& type, std::size_t names) {
    constexpr std::size_t kMost = 1'000'000;
    std::size_t length = 0;
    for (const Layer& each : type.layers)
        length += 1 + each.lower.text.size() + each.upper.text.size();
    if (names > 1 && length > kMost / names)
        fail("fewer names of so long a type");
}

// Labels tie the types of actual parameters to each other; what is done with the values does not depend on them.
void AlgorithmReader::parseGenericLabel() {
    if (accept(":"))
        takeName("a type label");
}

void AlgorithmReader::parseWidth(TypeSpec& type) {
    if (at("(")) {
        take();
        if (token().kind == TokenKind::kInteger)
            type.width = takeInteger();
        skipTo({")"});
        take();
    }
    type.isFixed = accept("FIXED");
}

Layer AlgorithmReader::parseLayer(AggregateKind kind) {
    Layer layer;
    layer.kind = kind;
    if (accept("[")) {
        layer.lower = parseBound(":");
        layer.upper = parseBound("]");
    }
    return layer;
}

Bound AlgorithmReader::parseBound(std::string_view end) {
    const Token first = token();
    if (at(end))
        fail("a bound");
    if (first.kind == TokenKind::kInteger && peek().text == end) {
        const int value = takeInteger();
        take();
        return {std::string(first.text), value};
    }
    if (isWhole()) {
        std::vector<Expression> expression;
        expression.push_back(parseSimple());
        const std::string text(first.text.data(), token().text.data());
        expect(end);
        if (expression.front().kind == ExpressionKind::kIndeterminate)
            expression.clear();
        return {text, std::nullopt, std::move(expression)};
    }
    if (first.kind == TokenKind::kInteger)
        takeInteger();
    Token last = first;
    for (std::size_t depth = 0; depth > 0 || !at(end);) {
        if (atEnd() || at(";"))
            fail("\"" + std::string(end) + "\"");
        depth += at("(") || at("[") ? 1 : 0;
        depth -= depth > 0 && (at(")") || at("]")) ? 1 : 0;
        last = take();
    }
    take();
    const char* const lastByte = last.text.data() + last.text.size();
    return {std::string(first.text.data(), lastByte), std::nullopt};
}

std::vector<DomainRule> AlgorithmReader::parseWhere(std::string_view end) {
    std::vector<DomainRule> rules;
    if (!at("WHERE"))
        return rules;
    if (!isWhole()) {
        skipTo({end});
        return rules;
    }
    take();
    while (!at(end))
        rules.push_back(parseDomainRule());
    return rules;
}

DomainRule AlgorithmReader::parseDomainRule() {
    DomainRule rule;
    if (token().kind == TokenKind::kWord && peek().text == ":") {
        rule.label = take().text;
        take();
    }
    rule.at = token().at;
    const char* const begin = token().text.data();
    rule.expression = parseExpression();
    rule.text = {begin, token().text.data()};
    rule.text = rule.text.substr(0, rule.text.find_last_not_of(" \t\r\n") + 1);
    expect(";");
    return rule;
}

std::vector<VariableDecl> AlgorithmReader::parseConstants() {
    std::vector<VariableDecl> constants;
    expect("CONSTANT");
    while (!accept("END_CONSTANT"))
        parseVariables(constants, true);
    expect(";");
    return constants;
}

void AlgorithmReader::parseVariables(std::vector<VariableDecl>& variables, bool isConstant) {
    const std::size_t first = variables.size();
    const std::string_view leader = token().text;
    do {
        variables.push_back({takeName("a variable's name"), {}, {}});
    } while (!isConstant && accept(","));
    expect(":");
    const TypeSpec type = parseTypeSpec(true);
    std::vector<Expression> value;
    if (isConstant && !at(":="))
        fail("\":=\"");
    if (accept(":="))
        value.push_back(parseExpression());
    expect(";");
    requireShort(type, variables.size() - first);
    for (std::size_t i = first; i < variables.size(); ++i)
        variables[i].type = type;
    if (value.empty())
        return;
    // The others begin with what the first one has, so that a long list of names does not multiply the expression.
    for (std::size_t i = first + 1; i < variables.size(); ++i) {
        Expression& copy = variables[i].value.emplace_back();
        copy.kind = ExpressionKind::kName;
        copy.at = variables[i].name.at;
        copy.text = leader;
    }
    variables[first].value = std::move(value);
}

AlgorithmDecl AlgorithmReader::parseAlgorithm(AlgorithmKind kind) {
    const Level level(*this);
    const Algorithm& algorithm = kAlgorithms[static_cast<std::size_t>(kind)];
    AlgorithmDecl result;
    result.kind = kind;
    expect(algorithm.keyword);
    result.name = takeName("an algorithm's name");
    if (kind == AlgorithmKind::kRule) {
        expect("FOR");
        result.populations = takeNames("an entity's name");
    } else if (at("(")) {
        parseParameters(result);
    }
    if (kind == AlgorithmKind::kFunction) {
        expect(":");
        result.result = parseTypeSpec(true);
    }
    expect(";");
    parseHead(result);
    result.body = parseStatements({algorithm.end, "WHERE"});
    if (kind == AlgorithmKind::kRule)
        result.where = parseWhere(algorithm.end);
    expect(algorithm.end);
    expect(";");
    return result;
}

void AlgorithmReader::parseParameters(AlgorithmDecl& algorithm) {
    expect("(");
    do {
        const std::size_t first = algorithm.parameters.size();
        const bool isVariable = accept("VAR");
        do {
            algorithm.parameters.push_back({takeName("a parameter's name"), {}, isVariable});
        } while (accept(","));
        expect(":");
        const TypeSpec type = parseTypeSpec(true);
        requireShort(type, algorithm.parameters.size() - first);
        for (std::size_t i = first; i < algorithm.parameters.size(); ++i)
            algorithm.parameters[i].type = type;
    } while (accept(";"));
    expect(")");
}

void AlgorithmReader::parseHead(AlgorithmDecl& algorithm) {
    while (at("FUNCTION") || at("PROCEDURE") || at("TYPE") || at("ENTITY") || at("SUBTYPE_CONSTRAINT"))
        parseLocalDeclaration(algorithm);
    if (at("CONSTANT"))
        algorithm.constants = parseConstants();
    if (accept("LOCAL")) {
        while (!accept("END_LOCAL"))
            parseVariables(algorithm.locals, false);
        expect(";");
    }
}

void AlgorithmReader::parseLocalDeclaration(AlgorithmDecl& algorithm) {
    if (at("FUNCTION") || at("PROCEDURE")) {
        algorithm.algorithms.push_back(
            parseAlgorithm(at("FUNCTION") ? AlgorithmKind::kFunction : AlgorithmKind::kProcedure));
        return;
    }
    const std::string keyword(token().text);
    const Token name = peek();
    if (!at("SUBTYPE_CONSTRAINT"))
        algorithm.types.push_back({std::string(name.text), name.at});
    skipBlock(upper(keyword));
}

std::vector<Statement> AlgorithmReader::parseStatements(std::initializer_list<std::string_view> ends) {
    std::vector<Statement> statements;
    while (std::none_of(ends.begin(), ends.end(), [this](std::string_view word) { return at(word); })) {
        if (atEnd())
            fail("\"" + std::string(*ends.begin()) + "\"");
        statements.push_back(parseStatement());
    }
    return statements;
}

Statement AlgorithmReader::parseStatement() {
    const Level level(*this);
    Statement statement;
    statement.at = token().at;
    if (accept(";"))
        return statement;
    if (accept("ALIAS")) {
        parseAlias(statement);
    } else if (accept("BEGIN")) {
        statement.kind = StatementKind::kCompound;
        statement.body = parseStatements({"END"});
        take();
    } else if (accept("CASE")) {
        parseCase(statement);
    } else if (accept("ESCAPE")) {
        statement.kind = StatementKind::kEscape;
    } else if (accept("IF")) {
        parseIf(statement);
    } else if (accept("REPEAT")) {
        parseRepeat(statement);
    } else if (accept("RETURN")) {
        parseReturn(statement);
    } else if (accept("SKIP")) {
        statement.kind = StatementKind::kSkip;
    } else {
        parseAssignmentOrCall(statement);
    }
    expect(";");
    return statement;
}

void AlgorithmReader::parseAlias(Statement& statement) {
    statement.kind = StatementKind::kAlias;
    if (token().kind != TokenKind::kWord)
        fail("a variable's name");
    statement.name = take().text;
    expect("FOR");
    statement.expressions.push_back(parseReference());
    expect(";");
    statement.body = parseStatements({"END_ALIAS"});
    take();
}

void AlgorithmReader::parseCase(Statement& statement) {
    statement.kind = StatementKind::kCase;
    statement.expressions.push_back(parseExpression());
    expect("OF");
    while (!at("END_CASE") && !at("OTHERWISE")) {
        Statement action;
        action.kind = StatementKind::kCaseAction;
        action.at = token().at;
        do {
            action.expressions.push_back(parseExpression());
        } while (accept(","));
        expect(":");
        action.body.push_back(parseStatement());
        statement.body.push_back(std::move(action));
    }
    if (accept("OTHERWISE")) {
        expect(":");
        statement.otherwise.push_back(parseStatement());
    }
    expect("END_CASE");
}

void AlgorithmReader::parseIf(Statement& statement) {
    statement.kind = StatementKind::kIf;
    statement.expressions.push_back(parseExpression());
    expect("THEN");
    statement.body = parseStatements({"END_IF", "ELSE"});
    if (accept("ELSE"))
        statement.otherwise = parseStatements({"END_IF"});
    expect("END_IF");
}

void AlgorithmReader::parseRepeat(Statement& statement) {
    statement.kind = StatementKind::kRepeat;
    if (token().kind == TokenKind::kWord && peek().text == ":=") {
        statement.name = take().text;
        take();
        statement.expressions.push_back(parseExpression());
        expect("TO");
        statement.expressions.push_back(parseExpression());
        if (accept("BY"))
            statement.expressions.push_back(parseExpression());
    }
    if (accept("WHILE"))
        statement.whileCondition.push_back(parseExpression());
    if (accept("UNTIL"))
        statement.untilCondition.push_back(parseExpression());
    expect(";");
    statement.body = parseStatements({"END_REPEAT"});
    take();
}

void AlgorithmReader::parseReturn(Statement& statement) {
    statement.kind = StatementKind::kReturn;
    if (!at(";"))
        statement.expressions.push_back(parseExpression());
}

void AlgorithmReader::parseAssignmentOrCall(Statement& statement) {
    Expression target = parseReference();
    if (accept(":=")) {
        statement.kind = StatementKind::kAssign;
        statement.expressions.push_back(std::move(target));
        statement.expressions.push_back(parseExpression());
        return;
    }
    if (target.kind != ExpressionKind::kCall && target.kind != ExpressionKind::kName)
        fail("\":=\"");
    statement.kind = StatementKind::kCall;
    statement.name = target.text;
    statement.expressions = std::move(target.operands);
}

} // namespace express
