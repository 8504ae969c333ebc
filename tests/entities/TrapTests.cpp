// What must not compile, and what is refused, where a hand slips.
#include "exchange/Support.h"

#include <IFC4X3/IfcCartesianPoint.h>
#include <IFC4X3/IfcFaceBound.h>
#include <IFC4X3/IfcPropertySingleValue.h>
#include <IFC4X3/IfcSimpleValue.h>
#include <IFC4X3/IfcStyledItem.h>
#include <IFC4X3/IfcUnit.h>
#include <IFC4X3/IfcValue.h>
#include <IFC4X3/IfcWall.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <VnIfcCore/VnIfcVariantTypeAggregate.h>

#include <array>
#include <cmath>
#include <unordered_set>
#include <vector>

// Names of a host's that the headers must leave alone.
constexpr int kUnset = -1;
static int _stricmp(const char* left, const char* right) { return left == right ? 0 : 1; }

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

// ---- what compiles

static_assert(kUnset == -1, "no constant of the library hides a host's, or a select's own");
static_assert(std::is_same_v<decltype(std::declval<IfcUnit>().underlyingTypeByName("")), IfcUnit::eIfcUnit>);
static_assert(std::is_same_v<decltype(std::declval<IfcValue>().underlyingTypeByName("")), IfcValue::eIfcValue>);

template <class To, class From>
concept Takes = requires(To& to, From from) {
    to = from;
};
static_assert(Takes<VnIfcBoolean, bool> && Takes<VnIfcBoolean, VnIfcBoolean::Code> && Takes<VnIfcLogical, bool>);
static_assert(!Takes<VnIfcBoolean, const char*> && !Takes<VnIfcLogical, const char*>);
static_assert(!Takes<VnIfcBoolean, double> && !Takes<VnIfcBoolean, int> && !Takes<VnIfcBoolean, void*>);
static_assert(!Takes<VnIfcBoolean, VnIfcLogical> && !Takes<VnIfcLogical, VnIfcBoolean>);
static_assert(!Takes<VnIfcLogical, VnIfcBoolean::Code> && !Takes<VnIfcBoolean, VnIfcLogical::Code>);
static_assert(Takes<IfcValue, IfcValue> && !Takes<IfcValue, IfcSimpleValue>);
static_assert(!Takes<typed::Select, const typed::Select&> && !Takes<VnIfcSelect, const VnIfcSelect&>);
static_assert(std::is_nothrow_move_constructible_v<VnIfcModel> && !std::is_copy_constructible_v<VnIfcModel>);
static_assert(std::three_way_comparable<VnDbObjectId>);

TEST(Traps, AHostsOwnNamesStayItsOwn) { EXPECT_EQ(_stricmp("a", "b"), 1); }

// ---- enumerations

TEST(Traps, CodesOutsideOfTheTableAreUnset) {
    for (const std::uint32_t code : {0x80000000u, 0xFFFFFFFFu, 1000u}) {
        const IfcWallTypeEnum type(static_cast<IfcWallTypeEnumCode>(code));
        EXPECT_EQ(type.literal(), nullptr) << code;
        EXPECT_TRUE(type.isUnset());
        VnIfcModel model(schema());
        auto* wall = model.create<IfcWall>();
        wall->setPredefinedType(type);
        EXPECT_FALSE(wall->testAttr("PredefinedType")) << code;
        EXPECT_NE(model.writeText().find("IFCWALL($,$,$,$,$,$,$,$,$)"), std::string::npos) << code;
    }
}

// ---- selects

TEST(Traps, ASelectWithoutAValueIsWrittenAsUnset) {
    VnIfcModel model(schema());
    const auto written = [&](auto choose) {
        auto* property = model.create<IfcPropertySingleValue>();
        IfcValue value;
        choose(value);
        property->setNominalValue(value);
        VnIfcFileResult result;
        const std::string text = dataOf(model.writeText({}, &result));
        EXPECT_EQ(result.warnings, value.hasValue() ? 0u : 1u) << "it is set, but not written";
        model.erase(property->objectId());
        return text.substr(text.find("($,$,") + 5, text.rfind(",$)") - text.find("($,$,") - 5);
    };
    const IfcWall unset;
    EXPECT_EQ(written([&](IfcValue& value) { value.setIfcLabel(unset.getName()); }), "$");
    EXPECT_EQ(written([](IfcValue& value) { value.setIfcReal(std::nan("")); }), "$");
    EXPECT_EQ(written([](IfcValue& value) { value.setIfcBoolean(VnIfcBoolean::Unset); }), "$");
    EXPECT_EQ(written([](IfcValue& value) { value.setIfcLogical(VnIfcLogical::Unset); }), "$");
    for (const char* name :
         {"IfcLabel", "IfcReal", "IfcInteger", "IfcBoolean", "IfcLogical", "IfcBinary", "IfcComplexNumber"})
        EXPECT_EQ(written([&](IfcValue& value) { ASSERT_TRUE(value.underlyingTypeName(name)); }), "$") << name;
    EXPECT_EQ(written([](IfcValue& value) { value.setIfcLabel(""); }), "IFCLABEL('')");
    EXPECT_EQ(written([](IfcValue& value) { value.setIfcComplexNumber({1.5, 2.0}); }), "IFCCOMPLEXNUMBER((1.5,2.))");
    EXPECT_EQ(rewritten("#1=IFCPROPERTYSINGLEVALUE('a',$,IFCCOMPLEXNUMBER(()),$);\n"),
              "#1=IFCPROPERTYSINGLEVALUE('a',$,IFCCOMPLEXNUMBER(()),$);\n");
}

TEST(Traps, GettersAgreeThatThereIsNoValue) {
    // As files give them, where every integer is a value.
    Reading integers(fileOf("#1=IFCPROPERTYSINGLEVALUE('a',$,IFCINTEGER(2147483647),$);\n"));
    int largest = 0;
    EXPECT_TRUE(integers.as<IfcPropertySingleValue>(1).getNominalValue().getInt32(largest));
    EXPECT_EQ(largest, 2147483647);
    IfcValue value;
    VnAnsiString text("before");
    double real = 1;
    int integer = 1;
    VnIfcBoolean boolean = true;
    VnIfcLogical logical = true;
    for (const char* name : {"IfcLabel", "IfcReal", "IfcInteger", "IfcBoolean", "IfcLogical"}) {
        ASSERT_TRUE(value.underlyingTypeName(name));
        EXPECT_FALSE(value.getString(text) || value.getDouble(real) || value.getInt32(integer) ||
                     value.getBoolean(boolean) || value.getLogical(logical))
            << name;
    }
    EXPECT_TRUE(text == "before" && real == 1 && integer == 1 && boolean == VnIfcBoolean::True);
}

TEST(Traps, BaseSettersRefuseAKindThatIsNotChosen) {
    IfcValue value;
    EXPECT_NE(value.setString("text"), VN::eOk) << "nothing is chosen";
    EXPECT_FALSE(value.hasValue());
    value.setIfcLabel("text");
    EXPECT_NE(value.setInt32(5), VN::eOk);
    EXPECT_NE(value.setDouble(5), VN::eOk);
    EXPECT_NE(value.setBoolean(true), VN::eOk);
    EXPECT_NE(value.setBINARY("0A"), VN::eOk);
    EXPECT_TRUE(value.isIfcLabel() && value.text() == "text");
    EXPECT_EQ(value.setString("other"), VN::eOk);
    EXPECT_EQ(value.text(), "other");
}

TEST(Traps, AMovedFromSelectIsNull) {
    IfcValue value;
    value.setIfcLabel("text");
    const IfcValue taken = std::move(value);
    EXPECT_TRUE(taken.isIfcLabel());
    EXPECT_TRUE(!value.isSet() && value._d() == IfcValue::kUnset && value.underlyingTypeName().isEmpty());
    IfcValue assigned;
    assigned.setIfcReal(1);
    IfcValue other = taken;
    assigned = std::move(other);
    EXPECT_TRUE(assigned.isIfcLabel() && other._d() == IfcValue::kUnset);
}

// ---- aggregates

TEST(Traps, IteratorsKnowTheirElements) {
    VnIfcListAggr<double> reals;
    reals.assign(std::vector<double>{1.5, 2.5});
    const auto each = reals.createIterator();
    EXPECT_EQ(each->put(5), VN::eRefused);
    EXPECT_EQ(each->put(VnDbObjectId()), VN::eRefused);
    EXPECT_EQ(each->put(5.0), VN::eOk);
    EXPECT_EQ(each->currentAs<double>(), 5.0);
    EXPECT_ANY_THROW(each->currentAs<int>());
    EXPECT_ANY_THROW(each->currentAs<VnAnsiString>());
    each->next();
    each->next();
    EXPECT_ANY_THROW(each->currentAs<double>()) << "at the end";
}

TEST(Traps, WhatIsMovedOutOfAModelOutlivesIt) {
    VnIfcListAggr<double> reals;
    IfcValue value;
    IfcValue number;
    {
        Reading reading(fileOf("#1=IFCCARTESIANPOINT((1.,2.,3.));\n"
                               "#2=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('a text of some length'),$);\n"
                               "#3=IFCPROPERTYSINGLEVALUE('a',$,IFCCOMPLEXNUMBER((1.,2.)),$);\n"));
        VnIfcVariant live;
        ASSERT_TRUE(reading.as<IfcCartesianPoint>(1).getAttr("Coordinates", live));
        reals = std::move(*live.get<VnIfcListAggr<double>*>()[0]);
        ASSERT_TRUE(reading.as<IfcPropertySingleValue>(2).getAttr("NominalValue", live));
        value = std::move(*live.get<IfcValue*>()[0]);
        ASSERT_TRUE(reading.as<IfcPropertySingleValue>(3).getAttr("NominalValue", live));
        number = std::move(*live.get<IfcValue*>()[0]);
    }
    EXPECT_EQ(reals.count(), 3u);
    EXPECT_EQ(reals[2], 3.0);
    EXPECT_EQ(value.text(), "a text of some length");
    ASSERT_EQ(number.elements<double>().size(), 2u);
    EXPECT_EQ(number.elements<double>()[1], 2.0);
    EXPECT_TRUE(number.elements<int>().empty() && value.elements<double>().empty());
}

// ---- comfort

TEST(Traps, SettersTakeAnyContiguousRange) {
    IfcCartesianPoint point;
    const std::vector<double> vector{1, 2};
    point.setCoordinates(vector);
    EXPECT_EQ(point.getCoordinates().count(), 2u);
    point.setCoordinates(std::array{4.0, 5.0, 6.0});
    EXPECT_EQ(point.getCoordinates()[2], 6.0);
    point.setCoordinates(std::span(vector).first(1));
    EXPECT_EQ(point.getCoordinates().count(), 1u);
    point.setCoordinates({});
    EXPECT_EQ(point.getCoordinates().count(), 0u);
}

TEST(Traps, HandlesAreHashedAndCompared) {
    VnIfcModel model(schema());
    const VnDbObjectId first = model.create("IfcWall"), second = model.create("IfcWall");
    const std::unordered_set<VnDbObjectId> set{first, second, first};
    EXPECT_EQ(set.size(), 2u);
    EXPECT_TRUE(first < second && second > first && first <= first && first >= VnDbObjectId());
    EXPECT_EQ(first <=> second, std::strong_ordering::less);
}

TEST(Traps, WhatGetAttrGivesCanBePutBack) {
    VnIfcModel model(schema());
    auto* from = model.create<IfcWall>();
    from->setName("name");
    from->setPredefinedType(kIfcWallTypeEnum_PARTITIONING);
    auto* to = model.create<IfcWall>();
    auto* point = model.create<IfcCartesianPoint>();
    point->setCoordinates({1, 2});
    auto* copy = model.create<IfcCartesianPoint>();
    VnIfcVariant value;
    for (const char* name : {"Name", "PredefinedType"}) {
        ASSERT_TRUE(from->getAttr(name, value));
        EXPECT_TRUE(to->putAttr(name, vnStorable(value))) << name;
    }
    ASSERT_TRUE(from->getAttr("PredefinedType", value));
    ASSERT_TRUE(value.get<IfcWallTypeEnum>());
    EXPECT_EQ(*value.get<IfcWallTypeEnum>(), kIfcWallTypeEnum_PARTITIONING);
    ASSERT_TRUE(point->getAttr("Coordinates", value));
    EXPECT_TRUE(copy->putAttr("Coordinates", vnStorable(value)));
    EXPECT_EQ(to->getName(), "name");
    EXPECT_EQ(to->getPredefinedType(), kIfcWallTypeEnum_PARTITIONING);
    EXPECT_TRUE(copy->getCoordinates() == point->getCoordinates());
    EXPECT_TRUE(vnStorable(VnIfcVariant()).isNull());
}

TEST(Traps, VariantsAreMadeFromTheTypesOfTheLanguage) {
    EXPECT_TRUE(VnIfcVariant(true).is<VnIfcBoolean>());
    EXPECT_TRUE(VnIfcVariant(5u).is<unsigned long>());
    EXPECT_TRUE(VnIfcVariant(std::string("text")).is<VnAnsiString>());
    IfcFaceBound bound;
    EXPECT_TRUE(bound.putAttr("Orientation", true));
    EXPECT_EQ(bound.getOrientation(), VnIfcBoolean::True);
}

TEST(Traps, AQualifiedCallAnswersForTheInstancesOwnClass) {
    IfcWall wall;
    wall.setPredefinedType(kIfcWallTypeEnum_SOLIDWALL);
    VnIfcVariant value;
    EXPECT_TRUE(wall.IfcRoot::getAttr("PredefinedType", value));
    EXPECT_TRUE(wall.IfcRoot::testAttr("PredefinedType"));
}
