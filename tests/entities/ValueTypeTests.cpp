// Enumerations and selects as values.
#include "exchange/Support.h"

#include <IFC4X3/AllEntities.h>
#include <IFC4X3/AllTypes.h>
#include <VnIfcCore/VnIfcSchema.h>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

// The code that follows those of all members and of none: an instance that is not classified yet.
static_assert(IfcAxis2Placement::kPending == 3 && IfcActorSelect::kPending == 4 && IfcBooleanOperand::kPending == 6);
static_assert(IfcSizeSelect::kPending == 7 && IfcObjectReferenceSelect::kPending == 10 &&
              IfcSimpleValue::kPending == 15);
static_assert(IfcResourceObjectSelect::kPending == 18 && IfcMeasureValue::kPending == 24);
static_assert(IfcDerivedMeasureValue::kPending == 72 && IfcValue::kPending == 109);
static_assert(IfcAppliedValueSelect::kPending == 111 && IfcMetricValueSelect::kPending == 114);
static_assert(IfcUnit::kIfcNamedUnit == 2 && IfcSimpleValue::kIfcReal == 10 && IfcValue::kIfcAbsorbedDoseMeasure == 0);
static_assert(IfcValue::kIfcBinary == 94 && IfcValue::kIfcBoolean == 95 && IfcValue::kIfcLogical == 102);
static_assert(kIfcAssemblyPlaceEnum_SITE == 0 && kIfcAssemblyPlaceEnum_UNSET == 3 && kIfcNullStyle_UNSET == 1);

TEST(Enumeration, LiteralsAndCodesConvertBothWays) {
    const typed::EnumerationClass& place = IfcAssemblyPlaceEnum::s_class;
    for (const char* text : {"site", "Site", "SITE"})
        EXPECT_EQ(place.fromLiteral(text), 0u);
    EXPECT_EQ(place.fromLiteral("factory"), 1u);
    for (const char* text : {".SITE.", "SIT", "SITES", "", " SITE", "UNSET"})
        EXPECT_EQ(place.fromLiteral(text), 3u) << text;
    EXPECT_STREQ(place.toLiteral(2), "NOTDEFINED");
    EXPECT_EQ(place.toLiteral(3), nullptr);
    EXPECT_STREQ(IfcLoadGroupTypeEnum(kIfcLoadGroupTypeEnum_LOAD_COMBINATION).literal(), "LOAD_COMBINATION");
    EXPECT_EQ(IfcAssemblyPlaceEnum().literal(), nullptr);
    EXPECT_TRUE(IfcAssemblyPlaceEnum::fromCode(7).isUnset() && IfcAssemblyPlaceEnum::fromCode(0xffffffff).isUnset());
    EXPECT_EQ(IfcAssemblyPlaceEnum::fromCode(1), kIfcAssemblyPlaceEnum_FACTORY);
    EXPECT_EQ(IfcDerivedUnitEnum::kLiteralCount, 53u);
    EXPECT_EQ(IfcNullStyle::s_class.fromLiteral("null"), 0u);
}

TEST(Select, ANewOneHasNoMemberAndNoValue) {
    const IfcUnit unit;
    EXPECT_EQ(unit._d(), 3);
    EXPECT_TRUE(unit.underlyingTypeName().isEmpty());
    EXPECT_EQ(unit.kind(), VnTypeCodeKind::kNone);
    ASSERT_TRUE(schema());
    ASSERT_TRUE(unit.type());
    EXPECT_EQ(unit.type()->name(), "IfcUnit");
    EXPECT_EQ(IfcUnit::sHandleIfcNamedUnit, "IfcNamedUnit");
    EXPECT_EQ(IfcPresentationStyleSelect::sIfcNullStyle, "IfcNullStyle");
}

TEST(Select, MembersAreChosenByNameInAnyCaseAndBeginWithoutAValue) {
    IfcUnit unit;
    EXPECT_TRUE(unit.underlyingTypeName("IFCNAMEDUNIT"));
    EXPECT_EQ(unit._d(), 2);
    EXPECT_EQ(unit.kind(), VnTypeCodeKind::kEntity);
    EXPECT_TRUE(unit.getHandle().isNull());
    EXPECT_FALSE(unit.underlyingTypeName("IfcWall"));
    EXPECT_EQ(unit._d(), 2) << "an unknown name changes nothing";
    EXPECT_EQ(unit.underlyingTypeByName("ifcmonetaryunit"), 1);
    EXPECT_EQ(unit.underlyingTypeByName("IfcMonetaryUnits"), 3);

    IfcValue value;
    value.setIfcReal(2.5);
    EXPECT_TRUE(value.underlyingTypeName("ifclabel"));
    EXPECT_EQ(value.underlyingTypeName(), "IfcLabel");
    double old = 1;
    EXPECT_FALSE(value.getDouble(old));
    EXPECT_EQ(old, 1) << "the value of the former member is gone";
}

TEST(Select, SettersChooseMemberAndKind) {
    IfcValue value;
    const struct {
        void (*set)(IfcValue&);
        bool (IfcValue::*is)() const noexcept;
        const char* name;
        VnTypeCodeKind kind;
        const char* written;
    } cases[] = {
        {[](IfcValue& v) { v.setIfcReal(2.5); }, &IfcValue::isIfcReal, "IfcReal", VnTypeCodeKind::kReal,
         "IFCREAL(2.5)"},
        {[](IfcValue& v) { v.setIfcInteger(-3); }, &IfcValue::isIfcInteger, "IfcInteger", VnTypeCodeKind::kInteger,
         "IFCINTEGER(-3)"},
        {[](IfcValue& v) { v.setIfcLabel("it's"); }, &IfcValue::isIfcLabel, "IfcLabel", VnTypeCodeKind::kString,
         "IFCLABEL('it''s')"},
        {[](IfcValue& v) { v.setIfcBoolean(true); }, &IfcValue::isIfcBoolean, "IfcBoolean", VnTypeCodeKind::kBoolean,
         "IFCBOOLEAN(.T.)"},
        {[](IfcValue& v) { v.setIfcLogical(VnIfcLogical::Unknown); }, &IfcValue::isIfcLogical, "IfcLogical",
         VnTypeCodeKind::kLogical, "IFCLOGICAL(.U.)"},
        {[](IfcValue& v) { v.setIfcBinary("0F"); }, &IfcValue::isIfcBinary, "IfcBinary", VnTypeCodeKind::kBinary,
         "IFCBINARY(\"0F\")"},
        {[](IfcValue& v) { v.setIfcTimeStamp(9); }, &IfcValue::isIfcTimeStamp, "IfcTimeStamp", VnTypeCodeKind::kInteger,
         "IFCTIMESTAMP(9)"},
        {[](IfcValue& v) { v.setIfcLengthMeasure(1); }, &IfcValue::isIfcLengthMeasure, "IfcLengthMeasure",
         VnTypeCodeKind::kReal, "IFCLENGTHMEASURE(1.)"},
        {[](IfcValue& v) {
             v.setIfcComplexNumber({1., 2.});
         },
         &IfcValue::isIfcComplexNumber, "IfcComplexNumber", VnTypeCodeKind::kAggregation, "IFCCOMPLEXNUMBER((1.,2.))"},
    };
    VnIfcModel model(schema());
    auto* property = model.create<IfcPropertySingleValue>();
    for (const auto& test : cases) {
        test.set(value);
        EXPECT_TRUE((value.*test.is)()) << test.name;
        EXPECT_EQ(value.underlyingTypeName(), test.name);
        EXPECT_EQ(value.kind(), test.kind) << test.name;
        IfcValue copy(value), assigned;
        assigned = value;
        EXPECT_TRUE(copy == value && assigned == value && copy._d() == value._d()) << test.name;
        property->setNominalValue(value);
        value.nullify();
        EXPECT_EQ(value._d(), IfcValue::kUnset);
        EXPECT_NE(model.writeText().find("#1=IFCPROPERTYSINGLEVALUE($,$," + std::string(test.written) + ",$)"),
                  std::string::npos)
            << test.name;
    }
}

TEST(Select, EnumerationsAndInstancesAsMembers) {
    VnIfcModel model(schema());
    auto* unit = model.create<IfcSIUnit>();
    auto* wall = model.create<IfcWall>();
    IfcUnit select;
    select.setIfcNamedUnit(unit);
    EXPECT_TRUE(select.isIfcNamedUnit()) << "of a subtype";
    EXPECT_EQ(select.getHandle(), unit->objectId());
    EXPECT_FALSE(select.setHandle(wall->objectId())) << "of no member";
    EXPECT_FALSE(select.isSet());
    select.setIfcNamedUnit(unit);
    select.setIfcNamedUnit(nullptr);
    EXPECT_TRUE(!select.isSet() && select._d() == 3);
    const auto outside = std::make_unique<IfcSIUnit>();
    select.setIfcNamedUnit(outside.get());
    EXPECT_FALSE(select.isSet()) << "an instance outside of a model has no handle";
    IfcValue value;
    EXPECT_FALSE(value.setHandle(unit->objectId())) << "no member is an entity";

    IfcPresentationStyleSelect style;
    style.setIfcNullStyle(kIfcNullStyle_NULL);
    EXPECT_TRUE(style.isIfcNullStyle() && style.kind() == VnTypeCodeKind::kEnumeration);
}

TEST(Select, AnInstanceFromAFileIsClassifiedWhenSomebodyAsks) {
    Reading reading(fileOf("#1=IFCACTOR('',$,$,$,$,#3);\n#2=IFCACTOR('',$,$,$,$,#1);\n#3=IFCPERSON($,$,$,$,$,$,$,$);\n"
                           "#4=IFCACTOR('',$,$,$,$,#3);\n"));
    const IfcActorSelect& person = reading.as<IfcActor>(1).getTheActor();
    EXPECT_EQ(reading.as<IfcActor>(4).getTheActor().underlyingTypeName(), "IfcPerson");
    EXPECT_TRUE(person.isIfcPerson());
    EXPECT_EQ(person._d(), 1);
    const IfcActorSelect& wrong = reading.as<IfcActor>(2).getTheActor();
    EXPECT_TRUE(wrong.underlyingTypeName().isEmpty()) << "an actor is no member";
    EXPECT_EQ(wrong.getHandle().number(), 1u);
    EXPECT_EQ(rewritten(reading.data()), reading.data());
}

TEST(Select, HaveATotalOrderSoThatSetsOfThemHoldEachOnce) {
    std::vector<IfcValue> values(7);
    values[1].setIfcReal(1);
    values[2].setIfcReal(Consts::VnRealUnset);
    values[3].setIfcLengthMeasure(1);
    values[4].setIfcLabel("a");
    values[5].setIfcText("a");
    values[6].setIfcComplexNumber({1., 2.});
    for (const IfcValue& left : values) {
        for (const IfcValue& right : values) {
            EXPECT_EQ(left == right, &left == &right);
            EXPECT_NE(left < right, &left == &right || right < left);
        }
    }
}
