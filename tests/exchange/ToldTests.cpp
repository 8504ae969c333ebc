// What cannot be held or written as it is: said, and nothing else is lost by it.
#include "Support.h"

#include <IFC4X3/IfcCartesianPoint.h>
#include <IFC4X3/IfcCartesianPointList3D.h>
#include <IFC4X3/IfcIndexedPolyCurve.h>
#include <IFC4X3/IfcLocalPlacement.h>
#include <IFC4X3/IfcOrganization.h>
#include <IFC4X3/IfcPropertySingleValue.h>
#include <IFC4X3/IfcRelAggregates.h>
#include <IFC4X3/IfcSurfaceStyle.h>
#include <IFC4X3/IfcWall.h>
#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcText.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <cmath>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

namespace {

/// What writing a model says, as "code #instance.attribute" lines, and the data that it writes.
struct Written {
    explicit Written(const VnIfcModel& model, bool encodeText = false) {
        VnIfcWriteOptions options;
        options.encodeText = encodeText;
        options.diagnostics = [this](const VnIfcDiagnostic& found) {
            told += found.code + " #" + std::to_string(found.instance) + '.' + found.attribute + '\n';
        };
        const std::string text = model.writeText(options, &result);
        data = text.substr(text.find("DATA;\n") + 6);
        data.resize(data.rfind("ENDSEC"));
    }
    std::string told;
    std::string data;
    VnIfcFileResult result;
};

std::string codesOfCheck(const VnIfcModel& model) {
    std::string codes;
    VnIfcCheck check(model, [&](const VnIfcDiagnostic& found) {
        if (found.code != "mandatory")
            codes += found.code + ' ';
    });
    check.run();
    return codes;
}

} // namespace

TEST(Told, AHandleOfAnotherModelIsNoNumberOfThisOne) {
    VnIfcModel model(schema()), other(schema());
    const VnDbObjectId stranger = other.create("IfcWall");
    auto* relation = model.create<IfcRelAggregates>();
    EXPECT_FALSE(relation->putAttr("RelatingObject", stranger));
    EXPECT_FALSE(relation->putAttr("RelatedObjects", VnIfcArray<VnDbObjectId>{stranger}));
    EXPECT_FALSE(relation->putAttr("RelatedObjects", VnIfcArray<VnIfcVariant>{stranger}));
    EXPECT_FALSE(relation->testAttr("RelatingObject") || relation->testAttr("RelatedObjects"));
    EXPECT_TRUE(relation->putAttr("RelatingObject", VnDbObjectId())) << "no instance is of no model";
    relation->setRelatingObject(stranger);
    relation->setRelatedObjects({stranger});
    const Written written(model);
    EXPECT_EQ(written.data, "#1=IFCRELAGGREGATES($,$,$,$,$,($));\n");
    EXPECT_EQ(written.told, "foreign-reference #1.RelatingObject\nforeign-reference #1.RelatedObjects\n");
    EXPECT_EQ(written.result.errors, 2u);
    EXPECT_EQ(codesOfCheck(model), "foreign-reference foreign-reference ");
    auto* placement = model.create<IfcLocalPlacement>();
    EXPECT_FALSE(placement->putAttr("RelativePlacement", other.create("IfcAxis2Placement3D")));
    EXPECT_TRUE(placement->putAttr("RelativePlacement", model.create("IfcAxis2Placement3D")));
}

TEST(Told, InfiniteNumbersAreNotSilentlyUnset) {
    VnIfcModel model(schema());
    auto* point = model.create<IfcCartesianPoint>();
    point->setCoordinates({1.0, HUGE_VAL});
    auto* property = model.create<IfcPropertySingleValue>();
    IfcValue value;
    value.setIfcReal(-HUGE_VAL);
    property->setNominalValue(value);
    EXPECT_TRUE(property->testAttr("NominalValue"));
    const Written written(model);
    EXPECT_EQ(written.data, "#1=IFCCARTESIANPOINT((1.,$));\n#2=IFCPROPERTYSINGLEVALUE($,$,$,$);\n");
    EXPECT_EQ(written.told, "not-finite #1.Coordinates\nnot-finite #2.NominalValue\n");
    EXPECT_EQ(written.result.errors, 2u);
    EXPECT_NE(codesOfCheck(model).find("not-finite not-finite"), std::string::npos);
}

TEST(Told, BytesThatAreNoExchangeTextAreToldAndEncodedOnRequest) {
    const struct {
        const char* text;
        const char* asItIs;
        const char* encoded;
        bool isTold;
    } cases[] = {
        {"plain", "'plain'", "'plain'", false},
        {"it's", "'it''s'", "'it''s'", false},
        {R"(Stra\X\DFe)", R"('Stra\X\DFe')", R"('Stra\X\DFe')", false},
        {R"(\X2\00E4\X0\)", R"('\X2\00E4\X0\')", R"('\X2\00E4\X0\')", false},
        {R"(\S\'x)", R"('\S\'x')", R"('\S\'x')", false},
        {R"(a\\b)", R"('a\\b')", R"('a\\b')", false},
        {"Straße", "'Straße'", R"('Stra\X2\00DF\X0\e')", true},
        {R"(C:\temp)", R"('C:\temp')", R"('C:\\temp')", true},
        {"\t", "'\t'", R"('\X2\0009\X0\')", true},
    };
    for (const auto& each : cases) {
        VnIfcModel model(schema());
        model.create<IfcOrganization>()->setName(each.text);
        const Written written(model), encoded(model, true);
        EXPECT_EQ(written.data, std::string("#1=IFCORGANIZATION($,") + each.asItIs + ",$,$,$);\n");
        EXPECT_EQ(written.told, each.isTold ? "text #1.Name\n" : "") << each.text;
        EXPECT_EQ(written.result.warnings, each.isTold ? 1u : 0u);
        EXPECT_EQ(encoded.data, std::string("#1=IFCORGANIZATION($,") + each.encoded + ",$,$,$);\n");
        EXPECT_EQ(encoded.told, "") << each.text;
        Reading back(fileOf(encoded.data));
        EXPECT_EQ(vnDecodeText(back.as<IfcOrganization>(1).getName()).text, vnDecodeText(each.text).text);
    }
}

TEST(Told, NothingOfWhatIsWrittenAsItCame) {
    const std::string data = "#1=IFCPERSON($,$,$,('\xE4',5),$,$,$,$);\n";
    Reading reading(fileOf(data));
    const Written written(reading.model);
    EXPECT_EQ(written.data, data);
    EXPECT_EQ(written.told, "");
}

TEST(Told, MandatoryAttributesThatAreUnsetWhenReadingStrictly) {
    const std::string file = fileOf("#1=IFCWALL('0YvctVUKr0kugbFTf53O9L',$,$,$,$,$,$,$,$);\n"
                                    "#2=IFCRELAGGREGATES($,$,$,$,$,$);\n#3=IFCORGANIZATION($,$,$,$,$);\n");
    for (const bool strict : {false, true}) {
        VnIfcModel model(schema());
        std::string told;
        VnIfcReadOptions options;
        options.strict = strict;
        options.diagnostics = [&](const VnIfcDiagnostic& found) {
            told += found.code + " #" + std::to_string(found.instance) + '.' + found.attribute + ' ';
        };
        const VnIfcFileResult result = model.readText(file, options);
        EXPECT_EQ(result.errors, strict ? 4u : 0u);
        EXPECT_EQ(told, strict ? "mandatory #2.GlobalId mandatory #2.RelatingObject mandatory #2.RelatedObjects "
                                 "mandatory #3.Name "
                               : "");
    }
}

TEST(Told, ListsInListsTakeUnsetAndBareOnes) {
    const struct {
        const char* list;
        std::vector<std::size_t> counts;
        const char* codes;
    } cases[] = {
        {"((1.,2.,3.),$,(4.,5.,6.))", {3, 0, 3}, ""},       {"($,(4.,5.,6.))", {0, 3}, ""},
        {"((1.,2.,3.),4.)", {3, 1}, "bare-list"},           {"((1.,2.,3.),(),(4.,5.,6.))", {3, 0, 3}, ""},
        {"((1.,2.,3.),'x',(4.,5.,6.))", {3}, "wrong-kind"},
    };
    for (const auto& each : cases) {
        const std::string data = std::string("#1=IFCCARTESIANPOINTLIST3D(") + each.list + ",$);\n";
        Reading reading(fileOf(data));
        std::vector<std::size_t> counts;
        for (const auto& list : reading.as<IfcCartesianPointList3D>(1).getCoordList())
            counts.push_back(list.count());
        EXPECT_EQ(counts, each.counts) << each.list;
        EXPECT_EQ(reading.codes(), each.codes) << each.list;
        EXPECT_EQ(reading.data(), data);
    }
}

TEST(Told, ATypedListKeepsWhatComesBeforeAFaultyElement) {
    const std::string data = "#1=IFCPROPERTYSINGLEVALUE('a',$,IFCCOMPLEXNUMBER((1.,2.,'x',4.)),$);\n";
    Reading reading(fileOf(data));
    const IfcValue& value = reading.as<IfcPropertySingleValue>(1).getNominalValue();
    ASSERT_TRUE(value.isIfcComplexNumber());
    ASSERT_EQ(value.elements<double>().size(), 2u);
    EXPECT_EQ(value.elements<double>()[1], 2.0);
    EXPECT_EQ(reading.codes(), "wrong-kind");
    EXPECT_EQ(reading.data(), data) << "the text is kept";
    Reading first(fileOf("#1=IFCPROPERTYSINGLEVALUE('a',$,IFCCOMPLEXNUMBER('x'),$);\n"));
    EXPECT_FALSE(first.as<IfcPropertySingleValue>(1).getNominalValue().isSet());
}

TEST(Told, AnOptionalListWhoseElementsWereErasedIsUnset) {
    Reading reading(fileOf("#1=IFCACTORROLE(.ARCHITECT.,$,$);\n#2=IFCACTORROLE(.CLIENT.,$,$);\n"
                           "#3=IFCORGANIZATION($,'a',$,(#1,#2),$);\n"));
    reading.model.erase(reading.model.find(1));
    EXPECT_NE(reading.data().find("#3=IFCORGANIZATION($,'a',$,(#2),$)"), std::string::npos);
    reading.model.erase(reading.model.find(2));
    EXPECT_EQ(reading.data(), "#3=IFCORGANIZATION($,'a',$,$,$);\n");
}

TEST(Told, WhatIsErasedIsNamedNowhere) {
    // In a list of selects; and in a text, where it keeps the check from missing somebody.
    Reading selects(fileOf("#1=IFCSURFACESTYLERENDERING($,$,$,$,$,$,$,$,.FLAT.);\n"
                           "#2=IFCSURFACESTYLE($,.BOTH.,(#1,#3));\n#3=IFCSURFACESTYLELIGHTING($,$,$,$);\n"));
    selects.model.erase(selects.model.find(1));
    EXPECT_EQ(Written(selects.model).data.substr(0, 33), "#2=IFCSURFACESTYLE($,.BOTH.,(#3))");
    const std::string guid = "YvctVUKr0kugbFTf53O9L";
    Reading opening(fileOf("#1=IFCOPENINGELEMENT('0" + guid +
                           "',$,$,$,$,$,$,$,$);\n#2=IFCPERSON('p','q',(#1),$,$,$,$,$);\n"
                           "#3=IFCFOO(#1);\n#4=IFCPERSON('p','q',$,$,$,$,$,$,#1);\n"));
    for (const std::uint64_t number : {2u, 3u, 4u}) {
        EXPECT_EQ(codesOfCheck(opening.model), "") << number;
        opening.model.erase(opening.model.find(number));
    }
    EXPECT_EQ(codesOfCheck(opening.model), "inverse-bounds ");
}

TEST(Told, TheCheckCountsAndFindsBrokenTextsWhereverTheyStand) {
    Reading reading(fileOf("#1=IFCPROPERTYSINGLEVALUE('a\\',$,IFCLABEL('b\\'),$);\n"
                           "#2=IFCPROPERTYENUMERATEDVALUE('a',$,(IFCLABEL('c'),IFCLABEL('d\\')),$);\n"
                           "#3=IFCPERSON('p',$,$,('e\\',$,'f'),$,$,$,$);\n#4=IFCPERSON($,$,$,$,$,$,$,$);\n"
                           "#5=IFCPOLYLOOP($);\n"));
    std::string told;
    VnIfcCheck check(reading.model,
                     [&](const VnIfcDiagnostic& found) { told += found.attribute + ' ' + found.found + ' '; });
    check.run();
    EXPECT_EQ(told, "Name \\ NominalValue \\ EnumerationValues \\ MiddleNames \\ Polygon $ ");
    EXPECT_EQ(check.warnings(), 4u);
    EXPECT_EQ(check.errors(), 1u);
}

TEST(Told, KeptTextsAreReadableUntilTheirAttributeIsAssigned) {
    const std::string_view data = "#1=IFCWALL('0YvctVUKr0kugbFTf53O9L',$,42,.X.,$,$,$,$,.NONSENSE.,'more');\n";
    Reading reading(fileOf(data));
    auto& wall = reading.as<IfcWall>(1);
    EXPECT_EQ(wall.keptText(2), "42");
    EXPECT_EQ(wall.keptText(8), ".NONSENSE.");
    EXPECT_EQ(wall.keptText(4), "");
    using Kept = std::vector<std::pair<unsigned, std::string_view>>;
    EXPECT_EQ(wall.keptTexts(), (Kept{{2, "42"}, {3, ".X."}, {8, ".NONSENSE."}, {9, ",'more'"}}));
    EXPECT_EQ(reading.data(), data);
    Reading twice(
        fileOf("#1=IFCRELDEFINESBYPROPERTIES('',$,$,$,(#1,#1,5),IFCPROPERTYSETDEFINITIONSET((#1,#1,'x')));\n"));
    EXPECT_EQ(twice.model.find(1).openObject()->keptText(4), "(#1,#1,5)");
    EXPECT_EQ(twice.model.find(1).openObject()->keptText(5), "IFCPROPERTYSETDEFINITIONSET((#1,#1,'x'))");
    const IfcWall* same = &wall;
    wall = *same;
    EXPECT_EQ(reading.data(), data) << "assigned to itself";
    wall = IfcWall();
    EXPECT_EQ(reading.data(), "#1=IFCWALL($,$,$,$,$,$,$,$,$,'more');\n");
    EXPECT_EQ(wall.keptText(2), "");
    EXPECT_EQ(wall.keptTexts(), (Kept{{9, ",'more'"}}));
}
