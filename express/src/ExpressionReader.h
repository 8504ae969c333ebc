#pragma once

#include "TokenReader.h"

namespace express {

/// Reads expressions (ISO 10303-11, clause 12).
class ExpressionReader : public TokenReader {
public:
    using TokenReader::TokenReader;

    /// The text is one expression.
    Expression readOnly();

protected:
    Expression parseExpression();
    Expression parseSimple();
    /// A name and what follows it: what may be assigned to.
    Expression parseReference();
    std::vector<Expression> parseParameters();

private:
    Expression parseTerm();
    Expression parseFactor();
    Expression parseUnary();
    Expression parsePrimary();
    Expression parseQualifiers(Expression operand);
    Expression parseIndex(Expression operand);
    Expression parseWord();
    Expression parseQuery();
    Expression parseInterval();
    Expression parseInitializer();
    Operator parseIntervalOperator();
    Expression makeOperation(Operator op, Position at, Expression left, Expression right) const;
    void adopt(Expression& parent, Expression operand) const;
};

} // namespace express
