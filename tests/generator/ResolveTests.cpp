#include "Support.h"

#include <gtest/gtest.h>

namespace expgen {
namespace {

using test::errorOf;
using test::resolveText;

struct BodyCase {
    const char* body; ///< begins in line 2
    const char* order;
    const char* error;
};

TEST(Resolve, NamesPlaceOfWhatDoesNotFit) {
    const BodyCase cases[] = {
        {"ENTITY A; x : Missing; END_ENTITY;", "",
         "s.exp:2:15: found \"Missing\", expected a type or entity of the schema"},
        {"ENTITY A;\nEND_ENTITY; ENTITY a; END_ENTITY;", "",
         "s.exp:3:20: found \"a\", expected a name that is not declared before"},
        {"TYPE A = B; END_TYPE; TYPE B = LIST OF A; END_TYPE;", "A\nB",
         "s.exp:2:40: found \"A\", expected a type that is not defined by itself"},
        {"TYPE A = SELECT (B); END_TYPE; TYPE B = SELECT (A); END_TYPE;", "A\nB",
         "s.exp:2:49: found \"A\", expected a select that does not contain itself"},
        {"TYPE A = SELECT (E, B); END_TYPE; TYPE B = SELECT (E); END_TYPE; ENTITY E; END_ENTITY;", "A\nB",
         "s.exp:2:52: found \"E\", expected a member that the select A does not have already"},
        {"TYPE A = SELECT (B, C); END_TYPE; TYPE B = SELECT (D); END_TYPE; TYPE C = SELECT (D); END_TYPE;\n"
         "TYPE D = EXTENSIBLE SELECT; END_TYPE;",
         "A\nB\nC\nD", "s.exp:2:83: found \"D\", expected a member that the select A does not have already"},
        {"ENTITY A SUBTYPE OF (B); END_ENTITY; ENTITY B SUBTYPE OF (A); END_ENTITY;", "",
         "s.exp:2:8: found \"A\", expected an entity that is not its own supertype"},
        {"ENTITY A SUBTYPE OF (B, C); END_ENTITY; ENTITY B; END_ENTITY; ENTITY C; END_ENTITY;", "",
         "s.exp:2:25: found \"C\", expected a single supertype: entity classes have one base"},
        {"TYPE T = REAL; END_TYPE; ENTITY A SUBTYPE OF (T); END_ENTITY;", "T",
         "s.exp:2:47: found \"T\", expected an entity of the schema"},
        {"ENTITY A; x : REAL; END_ENTITY; ENTITY B SUBTYPE OF (A); DERIVE SELF\\A.y : REAL := 1; END_ENTITY;", "",
         "s.exp:2:72: found \"y\", expected an inherited explicit attribute of A"},
        {"ENTITY A; x : REAL; END_ENTITY; ENTITY B SUBTYPE OF (A); SELF\\A.x : REAL; END_ENTITY;", "",
         "s.exp:2:63: found \"A\", expected an attribute of its own: only derived attributes redeclare"},
        {"ENTITY A; END_ENTITY; ENTITY B; INVERSE i : A FOR x; END_ENTITY;", "",
         "s.exp:2:51: found \"x\", expected an explicit attribute of A"},
        {"TYPE T = REAL; END_TYPE;", "", "s.exp:2:6: found \"T\", expected a type that o.txt names"},
        {"TYPE T = SELECT (E); END_TYPE; ENTITY E; END_ENTITY;", "E",
         "s.exp:2:6: found \"T\", expected a select that o.txt names"},
        {"TYPE T = REAL; END_TYPE;", "# order\nT\n\nU\n",
         "o.txt:4:1: found \"U\", expected a name of the schema, once"},
        {"TYPE T = REAL; END_TYPE;", "T\nt", "o.txt:2:1: found \"t\", expected a name of the schema, once"},
        {"TYPE T = ENUMERATION OF (a); END_TYPE;", "T",
         "o.txt:1:1: found \"T\", expected no enumeration: their order is that of their file"},
    };
    for (const BodyCase& c : cases)
        EXPECT_EQ(errorOf([&] { resolveText(c.body, c.order); }), c.error) << c.body;
}

TEST(Resolve, FollowsDefinedTypesToTheirValueButKeepsTheirNames) {
    const Model model = resolveText(R"(
TYPE Id = STRING(22) FIXED; END_TYPE;
TYPE Count = NUMBER; END_TYPE;
TYPE Small = count; END_TYPE;
TYPE Pair = LIST [2:2] OF Small; END_TYPE;
ENTITY A; a : small; b : SET OF PAIR; c : Pair; d : Id; e : STRING(22); END_ENTITY;)",
                                    "Small\r\nId\r\nCount\r\nPair\r\n");
    ASSERT_EQ(model.definedTypeOrder.size(), 3u);
    EXPECT_EQ(model.definedTypeOrder[0]->underlying, "count");
    EXPECT_EQ(model.definedTypeOrder[2]->underlying, "real");

    const auto& attributes = model.entities[0].explicits;
    const struct {
        Kind kind;
        const char* text;
    } expected[] = {{Kind::kReal, "SMALL"},
                    {Kind::kReal, "set [0:?] of list [2:2] of SMALL"},
                    {Kind::kReal, "list [2:2] of SMALL"},
                    {Kind::kGuid, "ID"},
                    {Kind::kString, "STRING"}};
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_EQ(attributes[i].type.kind, expected[i].kind) << attributes[i].name;
        EXPECT_EQ(attributeTypeText(attributes[i].type), expected[i].text) << attributes[i].name;
    }
    ASSERT_EQ(model.aggregations.size(), 3u);
    EXPECT_EQ(model.aggregations[0].name, "Pair");
    EXPECT_EQ(model.aggregations[1].name, "list [2:2] of Small");
    EXPECT_EQ(model.aggregations[2].element, "list [2:2] of Small");
}

// Values of derived attributes are not stored, so that no rule over them can be checked.
TEST(Resolve, LeavesOutUniqueRulesOverDerivedAttributes) {
    const Model model = resolveText(R"(
ENTITY A; x : REAL; y : STRING; UNIQUE ua : x, y; END_ENTITY;
ENTITY B SUBTYPE OF (A); z : STRING; DERIVE SELF\A.x : REAL := 1; w : REAL := 2;
UNIQUE one : x; two : w; three : Y, z; END_ENTITY;)");
    ASSERT_EQ(model.entities[0].uniques.size(), 1u);
    EXPECT_EQ(model.entities[0].uniques[0].attributes.size(), 2u);
    ASSERT_EQ(model.entities[1].uniques.size(), 1u);
    EXPECT_EQ(model.entities[1].uniques[0].label, "three");
    EXPECT_EQ(model.entities[1].uniques[0].attributes[0].owner, &model.entities[0]);
}

// A link belongs to the entity that declares the forward attribute, whatever subtype the inverse names.
TEST(Resolve, LinksForwardAttributesToTheirInverses) {
    const Model model = resolveText(R"(
ENTITY Target; INVERSE second : SET OF Sub FOR b; first : Base FOR a; END_ENTITY;
ENTITY Base; a : Target; END_ENTITY;
ENTITY Sub SUBTYPE OF (Base); b : Target; END_ENTITY;
ENTITY Other; INVERSE up : SET [0:1] OF Sub FOR A; END_ENTITY;)");
    const Entity& base = model.entities[1];
    ASSERT_EQ(base.links.size(), 1u);
    ASSERT_EQ(base.links[0].targets.size(), 2u);
    EXPECT_EQ(base.links[0].targets[0].entity, &model.entities[0]);
    EXPECT_EQ(base.links[0].targets[0].inverse, 1u);
    EXPECT_EQ(base.links[0].targets[1].entity, &model.entities[3]);
    EXPECT_EQ(model.entities[2].links.size(), 1u);
    EXPECT_FALSE(model.entities[0].inverses[0].isSingle());
    EXPECT_TRUE(model.entities[0].inverses[1].isSingle());
    EXPECT_TRUE(model.entities[3].inverses[0].isSingle());
}

} // namespace
} // namespace expgen
