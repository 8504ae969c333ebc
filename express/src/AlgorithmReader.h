#pragma once

#include "ExpressionReader.h"

namespace express {

/// Reads types, and algorithms with their statements (ISO 10303-11, 9.5, 9.6 and clause 13).
class AlgorithmReader : public ExpressionReader {
public:
    AlgorithmReader(std::string_view file, std::string_view source, bool isWhole)
        : ExpressionReader(file, source), m_isWhole(isWhole) {}

protected:
    /// Otherwise expressions are skipped.
    bool isWhole() const { return m_isWhole; }

    TypeSpec parseTypeSpec(bool isParameter = false);
    /// Refuses a type that so many names cannot each have a copy of.
    void requireShort(const TypeSpec& type, std::size_t names);
    Layer parseLayer(AggregateKind kind);
    std::optional<AggregateKind> acceptAggregate();
    /// `end` is the word after the clause.
    std::vector<DomainRule> parseWhere(std::string_view end);
    std::vector<VariableDecl> parseConstants();
    AlgorithmDecl parseAlgorithm(AlgorithmKind kind);

private:
    void parseWidth(TypeSpec& type);
    Bound parseBound(std::string_view end);
    void parseGenericLabel();
    DomainRule parseDomainRule();

    void parseParameters(AlgorithmDecl& algorithm);
    void parseHead(AlgorithmDecl& algorithm);
    void parseLocalDeclaration(AlgorithmDecl& algorithm);
    void parseVariables(std::vector<VariableDecl>& variables, bool isConstant);
    std::vector<Statement> parseStatements(std::initializer_list<std::string_view> ends);
    Statement parseStatement();
    void parseAlias(Statement& statement);
    void parseCase(Statement& statement);
    void parseIf(Statement& statement);
    void parseRepeat(Statement& statement);
    void parseReturn(Statement& statement);
    void parseAssignmentOrCall(Statement& statement);

    bool m_isWhole;
};

} // namespace express
