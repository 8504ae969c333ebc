// Single values on their way from the file into memory and back.
#include "Support.h"

#include <IFC4X3/IfcCartesianPoint.h>
#include <IFC4X3/IfcFaceBound.h>
#include <IFC4X3/IfcIndexedPolyCurve.h>
#include <IFC4X3/IfcMaterialLayer.h>
#include <IFC4X3/IfcOwnerHistory.h>
#include <IFC4X3/IfcPerson.h>
#include <IFC4X3/IfcPropertySingleValue.h>
#include <IFC4X3/IfcRelAggregates.h>
#include <IFC4X3/IfcSIUnit.h>
#include <IFC4X3/IfcWall.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <random>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

namespace {

std::string layer(std::string_view thickness, std::string_view priority = "$") {
    return "#1=IFCMATERIALLAYER($," + std::string(thickness) + ",$,$,$,$," + std::string(priority) + ");\n";
}

std::string property(std::string_view name, std::string_view value) {
    return "#1=IFCPROPERTYSINGLEVALUE(" + std::string(name) + ",$," + std::string(value) + ",$);\n";
}

} // namespace

TEST(Values, RealsAreTheNearestDoubleOfTheirText) {
    const struct {
        std::string text;
        double value;
    } cases[] = {
        {"0.", 0},
        {"1.", 1},
        {"+2.5", 2.5},
        {".5", .5},
        {"007.50", 7.5},
        {"1209600", 1209600},
        {"1.E-05", 1e-5},
        {"1.e5", 1e5},
        {"5E-04", 5e-4},
        {"1.091393642127514E-011", 1.091393642127514e-11},
        {"0.1", 0.1},
        {"9007199254740993.", 9007199254740992.},
        {"18446744073709551617.", 18446744073709551616.}, // past 64 bits
        {"1844674407370955161.9", 1844674407370955161.9},
        {"1.E+0300", 1e300},
        {"1.E23", 1e23},
        {"8.98846567431158E307", 8.98846567431158e307},
        {"1.7976931348623157E308", 1.7976931348623157e308},
        {"4.9406564584124654E-324", 4.9406564584124654e-324},
        {"2.2250738585072011E-308", 2.2250738585072011e-308},
        {"0." + std::string(1000, '0') + "1E1001", 1},
        {"1" + std::string(1000, '0') + ".E-1000", 1},
        {"3" + std::string(30, '3') + ".", 3.333333333333333333333333333333e30},
    };
    for (const auto& test : cases) {
        Reading reading(fileOf(layer(test.text)));
        EXPECT_EQ(reading.as<IfcMaterialLayer>(1).getLayerThickness(), test.value) << test.text;
        EXPECT_EQ(reading.codes(), "") << test.text;
    }
    EXPECT_TRUE(std::signbit(Reading(fileOf(layer("-0."))).as<IfcMaterialLayer>(1).getLayerThickness()));
}

TEST(Values, RealsComeBackBitByBitInTheirShortestForm) {
    const struct {
        double value;
        const char* text;
    } cases[] = {{0, "0."},        {-0., "-0."},          {1, "1."},           {0.1, "0.1"},        {1e22, "1.E+22"},
                 {1e-7, "1.E-07"}, {1.5e300, "1.5E+300"}, {123456, "123456."}, {5e-324, "5.E-324"}, {-2.5, "-2.5"}};
    VnIfcModel model(schema());
    auto* own = model.create<IfcMaterialLayer>();
    for (const auto& test : cases) {
        own->setLayerThickness(test.value);
        EXPECT_NE(model.writeText().find("($," + std::string(test.text) + ",$"), std::string::npos) << test.text;
    }

    std::mt19937_64 random(1);
    auto* point = model.create<IfcCartesianPoint>();
    VnIfcArray<double> values;
    double power = 1e-3;
    while (values.length() < 30000) {
        const auto value = std::bit_cast<double>(random());
        if (std::isfinite(value))
            values.append(value);
        // Numbers of few digits, and their neighbours, which have many.
        power = power < 1e9 ? power * 10 : 1e-3;
        const double few = std::floor(std::ldexp(static_cast<double>(random()), -64) * power) / 1e3;
        values.append(-few);
        values.append(std::nextafter(few, 1e300));
    }
    point->setCoordinates(values);
    const std::string written = model.writeText();
    Reading reading(written);
    const auto& read = reading.as<IfcCartesianPoint>(2).getCoordinates();
    ASSERT_EQ(read.count(), values.length());
    for (std::uint32_t i = 0; i < read.count(); ++i)
        ASSERT_EQ(std::bit_cast<std::uint64_t>(read[i]), std::bit_cast<std::uint64_t>(values[i]));

    const char* text = written.data() + written.find("POINT((") + 7;
    for (std::uint32_t i = 0; i < values.length(); ++i) {
        char shortest[32];
        const char* const end = std::to_chars(shortest, shortest + sizeof shortest, values[i]).ptr;
        const std::string_view decimal(shortest, end);
        const std::size_t length = decimal.size() + (decimal.find('.') == decimal.npos);
        ASSERT_EQ(std::strcspn(text, ",)"), length) << values[i];
        text += length + 1;
    }
}

TEST(Values, IntegersFillTheirRangeAndNoMore) {
    const struct {
        const char* text;
        int value;
        const char* codes;
    } cases[] = {
        {"0", 0, ""},
        {"-2147483648", std::numeric_limits<int>::min(), ""},
        {"2147483646", 2147483646, ""},
        {"+7", 7, ""},
        {"00000000000000000000000000012", 12, ""},
        {"2147483647", Consts::VnIntUnset, "reserved-value"},
        {"2147483648", Consts::VnIntUnset, "out-of-range"},
        {"-2147483649", Consts::VnIntUnset, "out-of-range"},
        {"4294967297", Consts::VnIntUnset, "out-of-range"},
        {"18446744073709551617", Consts::VnIntUnset, "out-of-range"},
        {"1.", Consts::VnIntUnset, "wrong-kind"},
        {"1E5", Consts::VnIntUnset, "wrong-kind"},
    };
    for (const auto& test : cases) {
        Reading reading(fileOf(layer("$", test.text)));
        EXPECT_EQ(reading.as<IfcMaterialLayer>(1).getPriority(), test.value) << test.text;
        EXPECT_EQ(reading.codes(), test.codes) << test.text;
    }
}

TEST(Values, StringsKeepTheirBytesButForDoubledApostrophes) {
    const struct {
        std::string_view file;
        std::string_view memory;
    } cases[] = {
        {"''", ""},
        {"'a'", "a"},
        {"'it''s'", "it's"},
        {"''''", "'"},
        {"'\\S\\''", "\\S\\'"},
        {"'\\S\\''''", "\\S\\''"},
        {"'a\\S\\'b''c\\S\\'''d'", "a\\S\\'b'c\\S\\''d"},
        {"'\\\\'", "\\\\"},
        {"'\\\\S\\''x'", "\\\\S\\'x"},
        {"'\\X\\C4\\X2\\0410\\X0\\\\X2\\0420\\X0\\'", "\\X\\C4\\X2\\0410\\X0\\\\X2\\0420\\X0\\"},
        {"'\\X2\\0410\\X0\\S\\'", "\\X2\\0410\\X0\\S\\"},
        {"'lone\\'", "lone\\"},
        {"'two\r\nlines\n#7=IFCWALL();\n'", "two\r\nlines\n#7=IFCWALL();\n"},
        {"'caf\xC3\xA9 \xE9\x7F\x01'", "caf\xC3\xA9 \xE9\x7F\x01"},
        {"'; ) ( , $ * /* */ \" END-ISO-10303-21;'", "; ) ( , $ * /* */ \" END-ISO-10303-21;"},
    };
    for (const auto& test : cases) {
        const std::string data = property(test.file, "IFCLABEL(" + std::string(test.file) + ")");
        Reading reading(fileOf(data));
        const auto& own = reading.as<IfcPropertySingleValue>(1);
        EXPECT_EQ(own.getName().view(), test.memory) << test.file;
        EXPECT_EQ(own.getNominalValue().text(), test.memory) << test.file;
        EXPECT_EQ(reading.data(), data);
        EXPECT_EQ(reading.codes(), "") << test.file;
    }
    const std::string withNul = property(std::string_view("'a\0b'", 5), "$");
    EXPECT_EQ(rewritten(withNul), withNul);
}

TEST(Values, StringsThatAHostMakesCannotBreakTheFile) {
    // A directive that is cut off at the end would take the closing apostrophe with it.
    for (const std::string_view text : {"\\S\\", "a\\S\\", "\\\\S\\", "\\", "'", "\\'", "\\S\\\\S\\", "\\S",
                                        "\\X0\\S\\", "\\X\\S\\'x", "\xE9\\X\\S\\'x"}) {
        VnIfcModel model(schema());
        model.create<IfcPropertySingleValue>()->setName(text);
        const std::string written = model.writeText(); // once, because its time stamp is that of now
        Reading reading(written);
        EXPECT_EQ(reading.codes(), "") << text;
        EXPECT_EQ(reading.model.count(), 1u);
        EXPECT_EQ(reading.model.writeText(), written) << text;
    }
}

TEST(Values, LogicalsEnumerationsAndKeywordsAreReadInAnyCase) {
    Reading reading(fileOf("#1=IfcFaceBound(#1,.t.);\n#2=IFCMATERIALLAYER($,$,.U.,$,$,$,$);\n"
                           "#3=ifcwall('',$,$,$,$,$,$,$,.standard.);\n#4=IFCSIUNIT(*,.LENGTHUNIT.,$,.Metre.);\n"
                           "#5=IFCPROPERTYSINGLEVALUE($,$,IfcBoolean(.f.),$);\n"));
    EXPECT_EQ(reading.as<IfcFaceBound>(1).getOrientation(), VnIfcBoolean::True);
    EXPECT_EQ(reading.as<IfcMaterialLayer>(2).getIsVentilated(), VnIfcLogical::Unknown);
    EXPECT_EQ(reading.as<IfcWall>(3).getPredefinedType(), kIfcWallTypeEnum_STANDARD);
    EXPECT_EQ(reading.as<IfcSIUnit>(4).getName(), kIfcSIUnitName_METRE);
    EXPECT_TRUE(reading.as<IfcSIUnit>(4).getPrefix().isUnset());
    EXPECT_TRUE(reading.as<IfcPropertySingleValue>(5).getNominalValue().isIfcBoolean());
    EXPECT_EQ(reading.codes(), "");
    EXPECT_EQ(reading.data(), "#1=IFCFACEBOUND(#1,.T.);\n#2=IFCMATERIALLAYER($,$,.U.,$,$,$,$);\n"
                              "#3=IFCWALL('',$,$,$,$,$,$,$,.STANDARD.);\n#4=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
                              "#5=IFCPROPERTYSINGLEVALUE($,$,IFCBOOLEAN(.F.),$);\n");
}

TEST(Values, AggregatesAreReadAtEveryLevelAndInEveryElementKind) {
    const std::string_view data =
        "#1=IFCCARTESIANPOINT((1.,2.,3.));\n"
        "#2=IFCCARTESIANPOINTLIST3D(((0.,0.,0.),(),(1.,$,3.)),('a','b'));\n"
        "#3=IFCINDEXEDPOLYCURVE(#2,(IFCLINEINDEX((1,2)),IFCARCINDEX((2,3,1))),.F.);\n"
        "#4=IFCPROPERTYENUMERATEDVALUE('',$,(IFCLABEL('x'),IFCREAL(1.),IFCCOMPLEXNUMBER((1.,2.)),"
        "IFCCOMPOUNDPLANEANGLEMEASURE((1,2,3))),$);\n"
        "#5=IFCPIXELTEXTURE(.T.,.T.,$,$,$,1,1,3,(\"0000000FF\",\"\"));\n"
        "#6=IFCPERSON($,$,$,$,$,$,$,(#1,#2));\n"
        "#7=IFCRATIONALBSPLINESURFACEWITHKNOTS(1,1,((#1,#1),(#1,#1)),.UNSPECIFIED.,.F.,.F.,.U.,(2,2),(2,2),(0.,1.),"
        "(0.,1.),.UNSPECIFIED.,((1.,1.),(1.,1.)));\n";
    Reading reading(fileOf(data));
    EXPECT_EQ(reading.texts(), "");
    EXPECT_EQ(reading.data(), data);
    const auto& segments = reading.as<IfcIndexedPolyCurve>(3).getSegments();
    ASSERT_EQ(segments.count(), 2u);
    EXPECT_TRUE(segments[1].isIfcArcIndex());
    EXPECT_EQ(segments[1].getAggr()->count(), 3u);
}

TEST(Values, UnsetAndEmptyAggregatesAreNilAndComeBackAsTheyWere) {
    const std::string data = "#1=IFCPERSON($,$,$,(),$,$,(),$);\n#2=IFCCARTESIANPOINT($);\n#3=IFCPOLYLOOP(());\n"
                             "#4=IFCRELAGGREGATES('',$,$,$,$,());\n#5=IFCRELAGGREGATES('',$,$,$,$,$);\n";
    Reading reading(fileOf(data));
    EXPECT_EQ(reading.codes(), "");
    EXPECT_FALSE(reading.as<IfcPerson>(1).testAttr("MiddleNames"));
    EXPECT_EQ(dataOf(reading.model.writeText()), data);
    reading.as<IfcPerson>(1).unsetAttr("MiddleNames");
    reading.as<IfcCartesianPoint>(2).unsetAttr("Coordinates");
    reading.as<IfcRelAggregates>(5).unsetAttr("RelatedObjects");
    EXPECT_EQ(dataOf(reading.model.writeText()),
              "#1=IFCPERSON($,$,$,$,$,$,(),$);\n#2=IFCCARTESIANPOINT(());\n#3=IFCPOLYLOOP(());\n"
              "#4=IFCRELAGGREGATES('',$,$,$,$,());\n#5=IFCRELAGGREGATES('',$,$,$,$,());\n");
}

TEST(Values, ASetIsWrittenInOrderAndDoublesOnlyUntilItIsSet) {
    const std::string walls = "#3=IFCWALL('',$,$,$,$,$,$,$,$);\n#9=IFCWALL('',$,$,$,$,$,$,$,$);\n";
    EXPECT_EQ(rewritten("#1=IFCRELAGGREGATES('',$,$,$,#3,(#9,#3));\n" + walls),
              "#1=IFCRELAGGREGATES('',$,$,$,#3,(#3,#9));\n" + walls);
    Reading doubles(fileOf("#1=IFCRELAGGREGATES('',$,$,$,#3,(#9,#3,#9));\n" + walls));
    auto& relation = doubles.as<IfcRelAggregates>(1);
    EXPECT_EQ(relation.getRelatedObjects().count(), 2u);
    EXPECT_EQ(doubles.diagnostics.at(0).attribute, "RelatedObjects");
    EXPECT_EQ(doubles.data(), "#1=IFCRELAGGREGATES('',$,$,$,#3,(#9,#3,#9));\n" + walls);
    Reading gone(fileOf("#1=IFCRELAGGREGATES('',$,$,$,#3,(#9,#3,#9));\n" + walls));
    gone.model.erase(gone.model.find(9));
    EXPECT_EQ(gone.data(), "#1=IFCRELAGGREGATES('',$,$,$,#3,(#3));\n" + walls.substr(0, walls.find('\n') + 1));
    relation.setRelatedObjects({doubles.model.find(9), doubles.model.find(3), doubles.model.find(9)});
    EXPECT_EQ(doubles.data(), "#1=IFCRELAGGREGATES('',$,$,$,#3,(#3,#9));\n" + walls);
}

TEST(Values, TokensMayHaveBlanksAndCommentsBetweenThem) {
    const std::vector<std::string_view> tokens = {"#1",
                                                  "=",
                                                  "IFCPROPERTYENUMERATEDVALUE",
                                                  "(",
                                                  "'a'",
                                                  ",",
                                                  "$",
                                                  ",",
                                                  "(",
                                                  "IFCREAL",
                                                  "(",
                                                  "1.5",
                                                  ")",
                                                  ",",
                                                  "IFCCOMPLEXNUMBER",
                                                  "(",
                                                  "(",
                                                  "1.",
                                                  ",",
                                                  "2.",
                                                  ")",
                                                  ")",
                                                  ")",
                                                  ",",
                                                  "#2",
                                                  ")",
                                                  ";",
                                                  "#2",
                                                  "=",
                                                  "IFCSIUNIT",
                                                  "(",
                                                  "*",
                                                  ",",
                                                  ".LENGTHUNIT.",
                                                  ",",
                                                  ".MILLI.",
                                                  ",",
                                                  ".METRE.",
                                                  ")",
                                                  ";",
                                                  "#3",
                                                  "=",
                                                  "IFCFOO",
                                                  "(",
                                                  "1",
                                                  ")",
                                                  ";"};
    std::string compact, spread;
    for (const std::string_view token : tokens) {
        compact += token;
        if (token == ";")
            compact += '\n';
        spread.append("/* , ) ' ; #9=X( /* */\r\n\t").append(token);
    }
    Reading reading(fileOf(spread));
    EXPECT_EQ(reading.codes(), "unknown-keyword");
    const std::string written = reading.data();
    EXPECT_EQ(written.substr(0, written.find("#3")), compact.substr(0, compact.find("#3")));
    EXPECT_EQ(rewritten(written), written);
}

TEST(Values, ASelectTakesTheMemberThatItsTypeNames) {
    Reading reading(fileOf(property("''", "IFCINTEGER(2147483647)")));
    const IfcValue& value = reading.as<IfcPropertySingleValue>(1).getNominalValue();
    int number = 0;
    EXPECT_TRUE(value.isIfcInteger() && value.getInt32(number));
    EXPECT_EQ(number, 2147483647) << "no value is reserved in a select";
    EXPECT_EQ(reading.codes(), "");
    for (const std::string_view text :
         {"IFCLENGTHMEASURE(1.5)", "IFCLOGICAL(.U.)", "IFCBOOLEAN(.T.)", "IFCBINARY(\"0F\")", "IFCDATE('2020-02-02')",
          "IFCCOMPLEXNUMBER((1.,-2.))", "IFCCOUNTMEASURE(-3.)", "IFCTIMESTAMP(1)", "IFCIDENTIFIER('')"}) {
        Reading each(fileOf(property("''", text)));
        EXPECT_EQ(each.codes(), "") << text;
        EXPECT_EQ(each.data(), property("''", text));
    }
}
