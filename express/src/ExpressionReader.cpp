#include "ExpressionReader.h"

namespace express {
namespace {

constexpr Keyword<Operator> kRelations[] = {{"=", Operator::kEqual},   {"<>", Operator::kUnequal},
                                            {"<", Operator::kLess},    {"<=", Operator::kLessOrEqual},
                                            {">", Operator::kGreater}, {">=", Operator::kGreaterOrEqual},
                                            {":=:", Operator::kSame},  {":<>:", Operator::kNotSame},
                                            {"IN", Operator::kIn},     {"LIKE", Operator::kLike}};
constexpr Keyword<Operator> kAdditions[] = {
    {"+", Operator::kPlus}, {"-", Operator::kMinus}, {"OR", Operator::kOr}, {"XOR", Operator::kXor}};
constexpr Keyword<Operator> kMultiplications[] = {{"*", Operator::kMultiply},        {"/", Operator::kDivide},
                                                  {"DIV", Operator::kIntegerDivide}, {"MOD", Operator::kModulo},
                                                  {"AND", Operator::kAnd},           {"||", Operator::kConcatenate}};
constexpr Keyword<Operator> kUnaries[] = {{"+", Operator::kPlus}, {"-", Operator::kMinus}, {"NOT", Operator::kNot}};

// Words that can stand neither for a name nor for a value: an operand is missing there.
constexpr std::string_view kNoOperands[] = {
    "ALIAS",    "AND",        "BEGIN",      "BY",           "CASE",         "DIV",           "ELSE",
    "END",      "END_ALIAS",  "END_CASE",   "END_CONSTANT", "END_ENTITY",   "END_IF",        "END_LOCAL",
    "END_RULE", "END_REPEAT", "END_SCHEMA", "END_TYPE",     "END_FUNCTION", "END_PROCEDURE", "ESCAPE",
    "FOR",      "IF",         "IN",         "LIKE",         "LOCAL",        "MOD",           "OF",
    "OR",       "OTHERWISE",  "REPEAT",     "RETURN",       "SKIP",         "THEN",          "TO",
    "UNTIL",    "WHERE",      "WHILE",      "XOR"};

Expression leaf(ExpressionKind kind, const Token& token) {
    Expression result;
    result.kind = kind;
    result.at = token.at;
    result.text = token.text;
    return result;
}

} // namespace

Expression ExpressionReader::readOnly() {
    Expression result = parseExpression();
    if (!atEnd())
        fail("the end of the expression");
    return result;
}

void ExpressionReader::adopt(Expression& parent, Expression operand) const {
    if (operand.depth >= kMaxNesting)
        failNesting();
    parent.depth = std::max(parent.depth, static_cast<std::uint16_t>(operand.depth + 1));
    parent.operands.push_back(std::move(operand));
}

Expression ExpressionReader::makeOperation(Operator op, Position at, Expression left, Expression right) const {
    Expression result;
    result.kind = ExpressionKind::kOperation;
    result.op = op;
    result.at = at;
    adopt(result, std::move(left));
    adopt(result, std::move(right));
    return result;
}

Expression ExpressionReader::parseExpression() {
    const Level level(*this);
    Expression left = parseSimple();
    const Position at = token().at;
    if (const auto op = acceptKeyword(kRelations))
        return makeOperation(*op, at, std::move(left), parseSimple());
    return left;
}

Expression ExpressionReader::parseSimple() {
    Expression left = parseTerm();
    while (true) {
        const Position at = token().at;
        const auto op = acceptKeyword(kAdditions);
        if (!op)
            return left;
        left = makeOperation(*op, at, std::move(left), parseTerm());
    }
}

Expression ExpressionReader::parseTerm() {
    Expression left = parseFactor();
    while (true) {
        const Position at = token().at;
        const auto op = acceptKeyword(kMultiplications);
        if (!op)
            return left;
        left = makeOperation(*op, at, std::move(left), parseFactor());
    }
}

Expression ExpressionReader::parseFactor() {
    Expression left = parseUnary();
    const Position at = token().at;
    if (accept("**"))
        return makeOperation(Operator::kPower, at, std::move(left), parseUnary());
    return left;
}

Expression ExpressionReader::parseUnary() {
    const Position at = token().at;
    const auto op = acceptKeyword(kUnaries);
    if (!op)
        return parsePrimary();
    Expression result;
    result.kind = ExpressionKind::kUnary;
    result.op = *op;
    result.at = at;
    adopt(result, parsePrimary());
    return result;
}

Expression ExpressionReader::parsePrimary() {
    const Token& first = token();
    switch (first.kind) {
    case TokenKind::kInteger:
        return leaf(ExpressionKind::kInteger, take());
    case TokenKind::kReal:
        return leaf(ExpressionKind::kReal, take());
    case TokenKind::kLiteral: {
        const char quote = first.text.front();
        const ExpressionKind kind = quote == '\''  ? ExpressionKind::kString
                                    : quote == '"' ? ExpressionKind::kEncodedString
                                                   : ExpressionKind::kBinary;
        // A literal that is indexed is no EXPRESS, but there is only one thing that it can mean.
        return parseQualifiers(leaf(kind, take()));
    }
    case TokenKind::kWord:
        return parseWord();
    default:
        break;
    }
    if (at("?"))
        return leaf(ExpressionKind::kIndeterminate, take());
    if (accept("(")) {
        Expression inner = parseExpression();
        expect(")");
        return parseQualifiers(std::move(inner));
    }
    if (at("["))
        return parseQualifiers(parseInitializer());
    if (at("{"))
        return parseInterval();
    fail("an expression");
}

Expression ExpressionReader::parseWord() {
    if (at("QUERY"))
        return parseQuery();
    return parseReference();
}

Expression ExpressionReader::parseReference() {
    const auto isWord = [this](std::string_view word) { return at(word); };
    if (token().kind != TokenKind::kWord || std::ranges::any_of(kNoOperands, isWord))
        fail("an expression");
    Expression result = leaf(ExpressionKind::kName, take());
    if (at("(")) {
        result.kind = ExpressionKind::kCall;
        for (Expression& each : parseParameters())
            adopt(result, std::move(each));
    }
    return parseQualifiers(std::move(result));
}

std::vector<Expression> ExpressionReader::parseParameters() {
    std::vector<Expression> parameters;
    expect("(");
    if (accept(")"))
        return parameters;
    do {
        parameters.push_back(parseExpression());
    } while (accept(","));
    expect(")");
    return parameters;
}

Expression ExpressionReader::parseQualifiers(Expression operand) {
    while (true) {
        if (at("[")) {
            operand = parseIndex(std::move(operand));
            continue;
        }
        const bool isGroup = at("\\");
        if (!isGroup && !at("."))
            return operand;
        take();
        if (token().kind != TokenKind::kWord)
            fail(isGroup ? "an entity's name" : "an attribute's name");
        Expression result = leaf(isGroup ? ExpressionKind::kGroup : ExpressionKind::kAttribute, take());
        adopt(result, std::move(operand));
        operand = std::move(result);
    }
}

Expression ExpressionReader::parseIndex(Expression operand) {
    Expression result = leaf(ExpressionKind::kIndex, take());
    adopt(result, std::move(operand));
    const Level level(*this);
    adopt(result, parseSimple());
    if (accept(":"))
        adopt(result, parseSimple());
    expect("]");
    return result;
}

Expression ExpressionReader::parseQuery() {
    Expression result = leaf(ExpressionKind::kQuery, take());
    expect("(");
    if (token().kind != TokenKind::kWord)
        fail("a variable's name");
    result.text = take().text;
    expect("<*");
    adopt(result, parseSimple());
    expect("|");
    adopt(result, parseExpression());
    expect(")");
    return result;
}

Operator ExpressionReader::parseIntervalOperator() {
    if (accept("<"))
        return Operator::kLess;
    if (accept("<="))
        return Operator::kLessOrEqual;
    fail("\"<\" or \"<=\"");
}

Expression ExpressionReader::parseInterval() {
    const Level level(*this);
    Expression result = leaf(ExpressionKind::kInterval, take());
    adopt(result, parseSimple());
    result.op = parseIntervalOperator();
    adopt(result, parseSimple());
    result.second = parseIntervalOperator();
    adopt(result, parseSimple());
    expect("}");
    return result;
}

Expression ExpressionReader::parseInitializer() {
    Expression result = leaf(ExpressionKind::kAggregate, take());
    if (accept("]"))
        return result;
    do {
        Expression element = parseExpression();
        if (at(":")) {
            Expression repeated = leaf(ExpressionKind::kRepeated, take());
            adopt(repeated, std::move(element));
            adopt(repeated, parseExpression());
            element = std::move(repeated);
        }
        adopt(result, std::move(element));
    } while (accept(","));
    expect("]");
    return result;
}

Expression parseExpression(std::string_view file, std::string_view source) {
    return ExpressionReader(file, source).readOnly();
}

} // namespace express
