// The IFC4X3 dictionary as a host sees it.
#include "SchemaFixture.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcConsts.h>
#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcCore/VnIfcStringType.h>

#include <map>
#include <set>

using namespace VN_SDAI;

namespace {

constexpr int kOpen = Consts::VnIntUnset;

/// What a wrapper of the named or anonymous types wraps, if it is of class T; null otherwise.
template <class T>
const T* underlying(const DictionaryInstance* record) {
    const auto* type = dynamic_cast<const VnIfcDefinedType*>(record);
    return type ? dynamic_cast<const T*>(type->underlyingType()) : nullptr;
}

std::string boundText(const VnIfcIntegerBound& bound) {
    return bound.isUnbounded() ? "?" : std::to_string(bound.value());
}

std::string describe(const VnIfcAggregationType& type) {
    const char* kind = dynamic_cast<const VnIfcSetType*>(&type)    ? "set"
                       : dynamic_cast<const VnIfcListType*>(&type) ? "list"
                                                                   : "array";
    return std::string(kind) + " [" + boundText(type.lowerBound()) + ":" + boundText(type.upperBound()) + "]";
}

/// Own explicit and derived attributes as "Name TYPE", inverse ones as "Name [l:u] entity.Attribute".
std::vector<std::string> describe(const VnIfcEntityType& entity) {
    std::vector<std::string> lines;
    for (const VnIfcAttributeDefinition* attribute : entity.attributes()) {
        std::string line(attribute->name().view());
        if (const auto* inverse = dynamic_cast<const VnIfcInverseAttributeDefinition*>(attribute)) {
            const auto text = [](int bound) { return bound == kOpen ? "?" : std::to_string(bound); };
            line += " [" + text(inverse->minimum()) + ":" + text(inverse->maximum()) + "] " +
                    inverse->typeName().constStr() + "." + inverse->invertedName().constStr();
        } else {
            line += std::string(" ") + attribute->typeName().constStr();
        }
        lines.push_back(std::move(line));
    }
    return lines;
}

std::vector<std::string> texts(std::span<const VnAnsiString> strings) {
    std::vector<std::string> result;
    for (const VnAnsiString& string : strings)
        result.emplace_back(string.view());
    return result;
}

using Texts = std::vector<std::string>;
using Counts = std::map<std::string, int>;

} // namespace

TEST_F(SchemaTest, HasAllEntitiesAndAttributes) {
    Counts counts;
    Counts typeTexts;
    Counts cardinalities;
    for (const auto& [name, instance] : schema->entities()) {
        const auto& entity = dynamic_cast<const VnIfcEntityType&>(*instance);
        counts["entities"]++;
        counts["roots"] += entity.supertype() == nullptr;
        counts["abstract"] += entity.isAbstract();
        counts["without attributes"] += entity.attributes().empty();
        counts["without explicit attributes"] += entity.explicitAttributes().empty();
        counts["explicit"] += static_cast<int>(entity.explicitAttributes().size());
        for (const auto* attribute : entity.explicitAttributes()) {
            typeTexts[attribute->typeName().constStr()]++;
            counts["optional"] += attribute->isOptional();
        }
        for (const auto* attribute : entity.derivedAttributes()) {
            counts["derived"]++;
            counts["redeclaring"] += attribute->redeclaredAttribute() != nullptr;
        }
        for (const auto* attribute : entity.inverseAttributes()) {
            counts["inverse"]++;
            const auto text = [](int bound) { return bound == kOpen ? "?" : std::to_string(bound); };
            cardinalities[text(attribute->minimum()) + ":" + text(attribute->maximum())]++;
            EXPECT_TRUE(attribute->invertedAttribute()) << name.constStr() << "." << attribute->name().constStr();
        }
    }
    EXPECT_EQ(counts, (Counts{{"entities", 880},
                              {"roots", 59},
                              {"abstract", 880 - 746},
                              {"without attributes", 123},
                              {"without explicit attributes", 153},
                              {"explicit", 1625},
                              {"optional", 0},
                              {"derived", 62},
                              {"redeclaring", 8},
                              {"inverse", 163}}));
    EXPECT_EQ(cardinalities, (Counts{{"0:?", 107}, {"0:1", 39}, {"1:?", 7}, {"1:1", 5}, {"?:?", 5}}));
    EXPECT_EQ(typeTexts.size(), 568u);
    EXPECT_EQ(typeTexts["IFCLABEL"], 146);
    EXPECT_EQ(typeTexts["IFCDATETIME"], 32);
}

TEST_F(SchemaTest, EntitiesComeSupertypesFirst) {
    const char* first[] = {"IFCROOT",
                           "IFCRELATIONSHIP",
                           "IFCRELCONNECTS",
                           "IFCRELSPACEBOUNDARY",
                           "IFCRELSPACEBOUNDARY1STLEVEL",
                           "IFCRELSPACEBOUNDARY2NDLEVEL",
                           "IFCOBJECTDEFINITION",
                           "IFCOBJECT",
                           "IFCPRODUCT"};
    std::size_t index = 0;
    for (const char* name : first)
        EXPECT_EQ(schema->entityAt(index++)->name(), name);
    std::set<const VnIfcEntityType*> seen{nullptr};
    for (index = 0; index < schema->entityCount(); ++index) {
        EXPECT_TRUE(seen.contains(schema->entityAt(index)->supertype())) << schema->entityAt(index)->name().constStr();
        seen.insert(schema->entityAt(index));
    }
}

TEST_F(SchemaTest, EntitiesDeclareTheirOwnAttributesInOrder) {
    struct Case {
        const char* name;
        const char* supertype;
        Texts attributes;
    };
    const Case cases[] = {
        {"IFCROOT",
         "",
         {"GlobalId IFCGLOBALLYUNIQUEID", "OwnerHistory IFCOWNERHISTORY", "Name IFCLABEL", "Description IFCTEXT"}},
        {"IFCRELATIONSHIP", "IFCROOT", {}},
        {"IFCOBJECTDEFINITION",
         "IFCROOT",
         {"HasAssignments [0:?] ifcrelassigns.RelatedObjects", "Nests [0:1] ifcrelnests.RelatedObjects",
          "IsNestedBy [0:?] ifcrelnests.RelatingObject", "HasContext [0:1] ifcreldeclares.RelatedDefinitions",
          "IsDecomposedBy [0:?] ifcrelaggregates.RelatingObject", "Decomposes [0:1] ifcrelaggregates.RelatedObjects",
          "HasAssociations [0:?] ifcrelassociates.RelatedObjects"}},
        {"IFCRELAGGREGATES",
         "IFCRELDECOMPOSES",
         {"RelatingObject IFCOBJECTDEFINITION", "RelatedObjects set [1:?] of IFCOBJECTDEFINITION"}},
        {"IFCCARTESIANPOINTLIST", "IFCGEOMETRICREPRESENTATIONITEM", {"Dim IFCDIMENSIONCOUNT"}},
        {"IFCALIGNMENT2DHORIZONTAL",
         "IFCGEOMETRICREPRESENTATIONITEM",
         {"StartDistAlong IFCLENGTHMEASURE", "Segments list [1:?] of IFCALIGNMENT2DHORIZONTALSEGMENT",
          "ToAlignmentCurve [1:?] ifcalignmentcurve.Horizontal"}},
        {"IFCALIGNMENT2DVERTICAL",
         "IFCGEOMETRICREPRESENTATIONITEM",
         {"Segments list [1:?] of IFCALIGNMENT2DVERTICALSEGMENT", "ToAlignmentCurve [1:1] ifcalignmentcurve.Vertical"}},
    };
    for (const Case& test : cases) {
        const VnIfcEntityType* entity = schema->entity(test.name);
        ASSERT_TRUE(entity) << test.name;
        EXPECT_EQ(entity->supertype() ? entity->supertype()->name() : VnAnsiString(), test.supertype) << test.name;
        EXPECT_EQ(describe(*entity), test.attributes) << test.name;
    }
    EXPECT_EQ(schema->entity("IFCDOCUMENTINFORMATION")->attributes().size(), 21u);
}

TEST_F(SchemaTest, DerivedAttributesThatRedeclareBearTheNameOfTheDeclaringEntity) {
    std::map<std::string, std::string> redeclared;
    for (const auto& [name, instance] : schema->entities())
        for (const auto* attribute : static_cast<VnIfcEntityType&>(*instance).derivedAttributes())
            if (const VnIfcAttributeDefinition* target = attribute->redeclaredAttribute())
                redeclared[attribute->name().constStr()] =
                    std::string(target->parentEntity()->name().view()) + "." + target->name().constStr();
    const std::map<std::string, std::string> expected = {
        {"ifcderivedprofiledef_operator", "IFCDERIVEDPROFILEDEF.Operator"},
        {"ifcedge_edgestart", "IFCEDGE.EdgeStart"},
        {"ifcedge_edgeend", "IFCEDGE.EdgeEnd"},
        {"ifcnamedunit_dimensions", "IFCNAMEDUNIT.Dimensions"},
        {"ifcgeometricrepresentationcontext_worldcoordinatesystem",
         "IFCGEOMETRICREPRESENTATIONCONTEXT.WorldCoordinateSystem"},
        {"ifcgeometricrepresentationcontext_coordinatespacedimension",
         "IFCGEOMETRICREPRESENTATIONCONTEXT.CoordinateSpaceDimension"},
        {"ifcgeometricrepresentationcontext_truenorth", "IFCGEOMETRICREPRESENTATIONCONTEXT.TrueNorth"},
        {"ifcgeometricrepresentationcontext_precision", "IFCGEOMETRICREPRESENTATIONCONTEXT.Precision"}};
    EXPECT_EQ(redeclared, expected);
}

TEST_F(SchemaTest, EveryAttributeHasATypeButTheOneEnumerationWithoutRecord) {
    Texts untyped;
    for (const auto& [name, instance] : schema->entities())
        for (const VnIfcAttributeDefinition* attribute : static_cast<VnIfcEntityType&>(*instance).attributes())
            if (!attribute->type() || attribute->type()->kind() == VnTypeCodeKind::kNone)
                untyped.push_back(std::string(name.view()) + " " + attribute->typeName().constStr());
    EXPECT_EQ(untyped, (Texts{"IFCALIGNMENT2DCANTSEGTRANSITION IFCTRANSITIONCURVETYPE",
                              "IFCALIGNMENT2DVERSEGTRANSITION IFCTRANSITIONCURVETYPE",
                              "IFCTRANSITIONCURVESEGMENT2D IFCTRANSITIONCURVETYPE"}));
}

TEST_F(SchemaTest, TypesAreFoundUnderTheirExactNames) {
    struct Case {
        const Dictionary& dictionary;
        const char* name;
        bool found;
    };
    const Case cases[] = {
        {schema->namedTypes(), "ifcwalltypeenum", true},
        {schema->namedTypes(), "IfcWallTypeEnum", false},
        {schema->namedTypes(), "IfcLabel", true},
        {schema->namedTypes(), "IFCLABEL", false},
        {schema->namedTypes(), "IfcArcIndex", true},
        {schema->anonymousTypes(), "IfcArcIndex", false},
        {schema->anonymousTypes(), "string(22)fixed", true},
        {schema->namedTypes(), "string(22)fixed", false},
        {schema->anonymousTypes(), "binary(32)", true},
        {schema->namedTypes(), "binary(32)", false},
        {schema->entities(), "IFCROOT", true},
        {schema->entities(), "ifcroot", false},
        {schema->namedTypes(), "ifctransitioncurvetype", false},
    };
    for (const Case& test : cases)
        EXPECT_EQ(test.dictionary.at(test.name) != nullptr, test.found) << test.name;
    EXPECT_EQ(schema->entity("iFcRoOt"), schema->entities().at("IFCROOT"));
    EXPECT_EQ(schema->type("LIST [1:?] OF IFCACTORROLE"),
              dynamic_cast<VnIfcDefinedType*>(schema->anonymousTypes().at("list [1:?] of IfcActorRole")));
}

TEST_F(SchemaTest, DefinedTypesReachTheirSimpleType) {
    struct Case {
        const char* name;
        const char* underlying;
        VnTypeCodeKind kind;
    };
    const Case cases[] = {
        {"IfcLabel", "string", VnTypeCodeKind::kString},
        {"IfcPositiveLengthMeasure", "ifclengthmeasure", VnTypeCodeKind::kReal},
        {"IfcGloballyUniqueId", "string", VnTypeCodeKind::kString},
        {"IfcTimeStamp", "integer", VnTypeCodeKind::kInteger},
        {"IfcBoxAlignment", "ifclabel", VnTypeCodeKind::kString},
        {"IfcLanguageId", "ifcidentifier", VnTypeCodeKind::kString},
        {"IfcCountMeasure", "real", VnTypeCodeKind::kReal},
        {"IfcBinary", "binary", VnTypeCodeKind::kBinary},
        {"IfcLogical", "logical", VnTypeCodeKind::kLogical},
        {"IfcBoolean", "boolean", VnTypeCodeKind::kBoolean},
    };
    for (const Case& test : cases) {
        const auto* type = dynamic_cast<const VnIfcDefinedType*>(schema->namedTypes().at(test.name));
        ASSERT_TRUE(type) << test.name;
        EXPECT_EQ(type->underlyingName(), test.underlying) << test.name;
        EXPECT_EQ(type->kind(), test.kind) << test.name;
        EXPECT_FALSE(type->typeCode()) << test.name;
    }
    const auto* guid = underlying<VnIfcStringType>(schema->anonymousTypes().at("string(22)fixed"));
    const auto* bits = underlying<VnIfcStringType>(schema->anonymousTypes().at("binary(32)"));
    ASSERT_TRUE(guid && bits);
    EXPECT_TRUE(guid->isFixed() && guid->width() == 22);
    EXPECT_TRUE(!bits->isFixed() && bits->width() == 32);
}

TEST_F(SchemaTest, NamedTypesComeInBuildingOrder) {
    struct Case {
        std::size_t position;
        const char* name;
    };
    const Case cases[] = {{0, "IfcModulusOfLinearSubgradeReactionMeasure"},
                          {124, "IfcPositiveRatioMeasure"},
                          {125, "ifcactionrequesttypeenum"},
                          {376, "ifcnullstyle"},
                          {377, "IfcHatchLineDistanceSelect"},
                          {442, "IfcTransportElementTypeSelect"},
                          {443, "IfcArcIndex"},
                          {447, "IfcCompoundPlaneAngleMeasure"}};
    ASSERT_EQ(schema->namedTypes().size(), 448u);
    for (const Case& test : cases)
        EXPECT_EQ(schema->namedTypes().entries()[test.position].name, test.name);
    ASSERT_EQ(schema->anonymousTypes().size(), 258u);
    EXPECT_EQ(schema->anonymousTypes().entries()[1].name, "binary(32)");
    for (std::size_t i = 3; i < 258; ++i)
        EXPECT_LT(schema->anonymousTypes().entries()[i - 1].name, schema->anonymousTypes().entries()[i].name);
}

TEST_F(SchemaTest, EnumerationsHoldTheirLiterals) {
    std::size_t records = 0;
    std::size_t literals = 0;
    std::size_t largest = 0;
    for (const auto& [name, instance] : schema->namedTypes()) {
        const auto* type = underlying<VnIfcEnumerationType>(instance.get());
        if (!type)
            continue;
        ++records;
        literals += type->literals().size();
        largest = std::max(largest, type->literals().size());
        EXPECT_EQ(type->typeCode()->kind(), VnTypeCodeKind::kEnumeration);
        Texts parameters;
        for (const VnAny& parameter : type->typeCode()->parameters())
            parameters.emplace_back(parameter.text().view());
        Texts expected = texts(type->literals());
        expected.insert(expected.begin(), std::string(name.view()));
        EXPECT_EQ(parameters, expected);
    }
    EXPECT_EQ(records, 252u);
    EXPECT_EQ(literals, 2193u);
    EXPECT_EQ(largest, 53u);
    const auto* requests = underlying<VnIfcEnumerationType>(schema->namedTypes().at("ifcactionrequesttypeenum"));
    ASSERT_TRUE(requests);
    EXPECT_EQ(texts(requests->literals()),
              (Texts{"EMAIL", "FAX", "PHONE", "POST", "VERBAL", "USERDEFINED", "NOTDEFINED"}));
}

TEST_F(SchemaTest, SelectsKnowTheirMembers) {
    std::size_t records = 0;
    std::size_t members = 0;
    for (const auto& [name, instance] : schema->namedTypes()) {
        const auto* type = underlying<VnIfcSelectType>(instance.get());
        if (!type)
            continue;
        ++records;
        members += type->memberNames().size();
        ASSERT_EQ(type->typeCode()->parameters().size(), 1u);
        EXPECT_EQ(type->typeCode()->parameters()[0].text(), name);
        for (std::size_t i = 0; i < type->members().size(); ++i)
            EXPECT_EQ(type->members()[i]->name().compareNoCase(type->memberNames()[i]), 0);
    }
    EXPECT_EQ(records, 66u);
    EXPECT_EQ(members, 287u);
    const auto* value = underlying<VnIfcSelectType>(schema->namedTypes().at("IfcValue"));
    ASSERT_TRUE(value);
    EXPECT_EQ(texts(value->memberNames()), (Texts{"IFCDERIVEDMEASUREVALUE", "IFCMEASUREVALUE", "IFCSIMPLEVALUE"}));
}

TEST_F(SchemaTest, AggregationsHaveTheBoundsOfTheirText) {
    Counts bounds;
    for (const Dictionary* dictionary : {&schema->namedTypes(), &schema->anonymousTypes()})
        for (const auto& [name, instance] : *dictionary)
            if (const auto* type = underlying<VnIfcAggregationType>(instance.get()))
                bounds[describe(*type)]++;
    EXPECT_EQ(bounds, (Counts{{"set [0:?]", 73},
                              {"set [1:?]", 53},
                              {"list [1:?]", 53},
                              {"set [0:1]", 31},
                              {"list [2:?]", 11},
                              {"list [3:3]", 7},
                              {"array [0:?]", 6},
                              {"list [2:2]", 5},
                              {"set [1:1]", 5},
                              {"list [3:?]", 3},
                              {"array [1:2]", 2},
                              {"list [3:4]", 2},
                              {"list [1:2]", 2},
                              {"list [2:3]", 2},
                              {"set [1:2]", 2},
                              {"list [0:?]", 1},
                              {"list [1:3]", 1},
                              {"set [1:5]", 1},
                              {"set [2:?]", 1}}));
    struct Case {
        const char* name;
        const char* element;
        VnTypeCodeKind elementKind;
    };
    const Case cases[] = {
        {"IfcArcIndex", "IfcPositiveInteger", VnTypeCodeKind::kInteger},
        {"IfcComplexNumber", "real", VnTypeCodeKind::kReal},
        {"IfcCompoundPlaneAngleMeasure", "integer", VnTypeCodeKind::kInteger},
        {"IfcPropertySetDefinitionSet", "IfcPropertySetDefinition", VnTypeCodeKind::kEntity},
        {"list [1:?] of IfcActorRole", "IfcActorRole", VnTypeCodeKind::kEntity},
        {"array [0:UUpper] of array [0:VUpper] of IfcCartesianPoint", "array [0:VUpper] of IfcCartesianPoint",
         VnTypeCodeKind::kAggregation},
    };
    for (const Case& test : cases) {
        const auto* type = dynamic_cast<const VnIfcDefinedType*>(schema->type(test.name));
        const auto* aggregation = underlying<VnIfcAggregationType>(type);
        ASSERT_TRUE(aggregation) << test.name;
        EXPECT_EQ(type->name(), test.name);
        EXPECT_EQ(aggregation->elementTypeName(), test.element);
        EXPECT_EQ(aggregation->elementType()->kind(), test.elementKind) << test.name;
        EXPECT_EQ(aggregation->typeCode()->kind(), VnTypeCodeKind::kAggregation);
        EXPECT_TRUE(aggregation->typeCode()->parameters().empty());
    }
}
