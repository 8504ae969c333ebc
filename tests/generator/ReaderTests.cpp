#include "Support.h"

#include "Express.h"

#include <gtest/gtest.h>

#include <string>

namespace expgen {
namespace {

using test::errorOf;
using test::parse;

std::string repeat(std::string_view text, int times) {
    std::string result;
    for (int i = 0; i < times; ++i)
        result += text;
    return result;
}

TEST(Reader, SkipsWhatIsNoDeclarationOfATypeOrEntity) {
    const SchemaDecl schema = parseSchema("full.exp", R"(
-- a tail remark with (* an opening that is none
(* nested (* remarks *) with a quote ' and END_SCHEMA; *)
schema Full '{ iso standard }';
USE FROM Other (a AS b, c);
REFERENCE FROM Third;
CONSTANT limit : INTEGER := 3; label : STRING := 'END_CONSTANT;'; END_CONSTANT;
FUNCTION outer(x : GENERIC:t) : LOGICAL;
  FUNCTION inner(y : REAL) : REAL; RETURN(y); END_FUNCTION;
  LOCAL n : INTEGER := 0; END_LOCAL;
  RETURN(SIZEOF(QUERY(t <* x | t :<>: SELF)) = 0);
END_FUNCTION;
PROCEDURE nothing; PROCEDURE inside; END_PROCEDURE; END_PROCEDURE;
RULE single FOR (A); WHERE WR1 : SIZEOF(A) <= 1; END_RULE;
SUBTYPE_CONSTRAINT sc FOR A; ABSTRACT SUPERTYPE; ONEOF(B, C); END_SUBTYPE_CONSTRAINT;
Type Colour = Enumeration Of (red,Green , BLUE); End_Type;
TYPE Later = EXTENSIBLE ENUMERATION; END_TYPE;
TYPE Any = EXTENSIBLE GENERIC_ENTITY SELECT (A, B); END_TYPE;
TYPE Label = STRING(2 + 20) FIXED;
WHERE
  WR1 : SELF <> 'END_TYPE; it''s text';
  WR2 : SELF <> "00000041";
END_TYPE;
ENTITY A; END_ENTITY;
END_SCHEMA; -- the end)");

    EXPECT_EQ(schema.name.text, "Full");
    ASSERT_EQ(schema.enumerations.size(), 2u);
    EXPECT_EQ(schema.enumerations[0].items[1].text, "Green");
    EXPECT_TRUE(schema.enumerations[1].items.empty());
    ASSERT_EQ(schema.selects.size(), 1u);
    EXPECT_EQ(schema.selects[0].items.size(), 2u);
    ASSERT_EQ(schema.definedTypes.size(), 1u);
    EXPECT_TRUE(schema.definedTypes[0].type.isFixed);
    ASSERT_EQ(schema.entities.size(), 1u);
    EXPECT_EQ(schema.entities[0].name.at.line, 24);
}

TEST(Reader, ReadsEveryClauseOfAnEntity) {
    const SchemaDecl schema = parse(R"(
ENTITY Edge
  ABSTRACT SUPERTYPE OF (ONEOF(OrientedEdge ANDOR (B, C), D))
  SUBTYPE OF (Item, Other);
  First, Second : OPTIONAL LIST [1:?] OF UNIQUE ARRAY [SIZEOF(x[1]) - 1 : n] OF OPTIONAL STRING(22) FIXED;
  SELF\Item.Name RENAMED Title : Label;
DERIVE
  SELF\Item.Size : BAG OF REAL(3) := foo(SELF, ';', [1, 2])[1];
  Dim : INTEGER := 3;
INVERSE
  Users : SET [1:7] OF User FOR Item.Used;
  Owner : User FOR Owned;
UNIQUE
  UR1 : First, Second;
WHERE
  WR1 : EXISTS(First) XOR EXISTS(Second);
END_ENTITY;
ENTITY Leaf ABSTRACT; END_ENTITY;
ENTITY Top SUPERTYPE OF (Leaf); END_ENTITY;)");

    ASSERT_EQ(schema.entities.size(), 3u);
    const EntityDecl& edge = schema.entities[0];
    EXPECT_TRUE(edge.isAbstract);
    ASSERT_EQ(edge.supertypes.size(), 2u);
    EXPECT_EQ(edge.supertypes[1].text, "Other");

    ASSERT_EQ(edge.explicits.size(), 3u);
    const AttributeDecl& second = edge.explicits[1];
    EXPECT_EQ(second.name.text, "Second");
    EXPECT_TRUE(second.isOptional);
    ASSERT_EQ(second.type.layers.size(), 2u);
    EXPECT_EQ(second.type.layers[0].lower.value, 1);
    EXPECT_EQ(second.type.layers[0].upper.text, "?");
    EXPECT_EQ(second.type.layers[1].lower.text, "SIZEOF(x[1]) - 1");
    EXPECT_FALSE(second.type.layers[1].upper.value);
    EXPECT_EQ(second.type.layers[1].upper.text, "n");
    EXPECT_EQ(second.type.width, 22);
    EXPECT_EQ(edge.explicits[2].name.text, "Title");
    EXPECT_EQ(edge.explicits[2].redeclaredName.text, "Name");
    EXPECT_FALSE(edge.explicits[2].isOptional);

    ASSERT_EQ(edge.derived.size(), 2u);
    EXPECT_EQ(edge.derived[0].redeclaredOwner.text, "Item");
    ASSERT_EQ(edge.derived[0].type.layers.size(), 1u);
    EXPECT_EQ(edge.derived[0].type.layers[0].lower.value, 0);

    ASSERT_EQ(edge.inverses.size(), 2u);
    EXPECT_EQ(edge.inverses[0].attribute.text, "Used");
    EXPECT_EQ(edge.inverses[0].layer->upper.value, 7);
    EXPECT_FALSE(edge.inverses[1].layer);

    EXPECT_TRUE(schema.entities[1].isAbstract);
    EXPECT_FALSE(schema.entities[2].isAbstract);
}

TEST(Reader, SurvivesNestingThatWouldExhaustAStack) {
    constexpr int kDepth = 300'000;
    const SchemaDecl schema = parse(
        "TYPE Deep = " + repeat("LIST OF ", kDepth) + "REAL; END_TYPE; ENTITY E SUPERTYPE OF " + repeat("(", kDepth) +
        "A" + repeat(")", kDepth) + "; END_ENTITY;" + repeat("(*", kDepth) + repeat("*)", kDepth));
    EXPECT_EQ(schema.definedTypes[0].type.layers.size(), static_cast<std::size_t>(kDepth));
    EXPECT_EQ(schema.entities.size(), 1u);
}

struct Case {
    const char* source;
    const char* error;
};

TEST(Reader, NamesPlaceFoundAndExpected) {
    const Case cases[] = {
        {"", "s.exp:1:1: found the end of the text, expected \"SCHEMA\""},
        {"SCHEMA S;\n  ENTITY A\nEND_ENTITY;", "s.exp:3:1: found \"END_ENTITY\", expected \";\""},
        {"SCHEMA S;\nENTITY A; x : ; END_ENTITY;", "s.exp:2:15: found \";\", expected a type"},
        {"SCHEMA S;\nENTITY A; x, END_ENTITY;", "s.exp:2:14: found \"END_ENTITY\", expected an attribute's name"},
        {"SCHEMA S;\nENTITY A; x : REAL;\nEND_SCHEMA;", "s.exp:3:11: found \";\", expected \":\""},
        {"SCHEMA S;\nTYPE T = LIST [1:99999999999] OF REAL; END_TYPE;",
         "s.exp:2:18: found \"99999999999\", expected an integer of 32 bits"},
        {"SCHEMA S;\nTYPE T = LIST [1;", "s.exp:2:17: found \";\", expected \":\""},
        {"SCHEMA S;\nTYPE T = LIST [:2] OF REAL;", "s.exp:2:16: found \":\", expected a bound"},
        {"SCHEMA S;\nTYPE T = ENUMERATION OF ();", "s.exp:2:26: found \")\", expected a literal"},
        {"SCHEMA S;\nTYPE T = REAL;\nWHERE x", "s.exp:3:8: found the end of the text, expected \"END_TYPE\""},
        {"SCHEMA S;\nFUNCTION f; FUNCTION g; END_FUNCTION;",
         "s.exp:2:38: found the end of the text, expected \"END_FUNCTION\""},
        {"SCHEMA S;\n  (* (* *)", "s.exp:2:3: found a remark without end, expected \"*)\""},
        {"SCHEMA S;\n\t'abc\n'", "s.exp:2:2: found a string without end, expected a closing quote on the same line"},
        {"SCHEMA S;\n'a\1b'", "s.exp:2:1: found \"'a?b'\", expected a declaration or \"END_SCHEMA\""},
        {"SCHEMA S;\n@", "s.exp:2:1: found byte 64, expected an EXPRESS token"},
        {"SCHEMA S;\n42", "s.exp:2:1: found \"42\", expected a declaration or \"END_SCHEMA\""},
        {"SCHEMA S; END_SCHEMA; SCHEMA T;", "s.exp:1:23: found \"SCHEMA\", expected the end of the text"},
    };
    for (const Case& c : cases)
        EXPECT_EQ(errorOf([&] { parseSchema("s.exp", c.source); }), c.error) << c.source;
}

// Cutting a text anywhere must end in an error, never in a loop or a read past the end.
TEST(Reader, RefusesEveryPrefixOfASchema) {
    const std::string text =
        "SCHEMA S; TYPE T = LIST [0:a(1)] OF STRING(3) FIXED; WHERE x : 'q'; END_TYPE; ENTITY A "
        "ABSTRACT SUPERTYPE OF (B) SUBTYPE OF (C); a, b : OPTIONAL T; DERIVE SELF\\C.d : REAL := 1; "
        "INVERSE e : SET [0:?] OF B FOR c.f; UNIQUE u : a; END_ENTITY; END_SCHEMA;";
    for (std::size_t length = 0; length < text.size(); ++length)
        EXPECT_NE(errorOf([&] { parseSchema("s.exp", std::string_view(text).substr(0, length)); }), "") << length;
    EXPECT_EQ(errorOf([&] { parseSchema("s.exp", text); }), "");
}

} // namespace
} // namespace expgen
