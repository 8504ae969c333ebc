// The descriptors of the schema's types: names, life, conversions.
#include <dictionary/SchemaFixture.h>

#include <IFC4X3/AllTypes.h>
#include <IFC4X3/IfcPerson.h>
#include <IFC4X3/IfcSIUnit.h>
#include <IFC4X3/IfcWall.h>
#include <IFC4X3/Module.h>
#include <VnIfcCore/VnIfcEntityType.h>
#include <VnIfcCore/VnIfcEnumDescription.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <VnRx/VrString.h>

#include <latch>
#include <thread>
#include <vector>

using namespace IFC4X3;
using namespace VN_SDAI;

namespace {

template <class T>
using Desc = VnIfcVariantType::Desc<T>;

std::string nameOf(const VnIfcVariantType& type) {
    const std::wstring name = type.name();
    return {name.begin(), name.end()};
}

std::string printed(const VnIfcVariant& value, StringFormat format) {
    VrString text;
    return value.toString(text, format) ? std::string(text.view()) : "?";
}

class Descriptors : public SchemaTest {
protected:
    Descriptors() : model(schema) {}

    VnIfcModel model;
};

/// Asks for the descriptor of every attribute of every entity.
void touchAll(const VnIfcSchema& schema) {
    for (std::size_t i = 0; i < schema.entityCount(); ++i) {
        const std::unique_ptr<VnIfcEntityBase> instance(schema.entityAt(i)->create());
        for (const VnIfcAttributeDefinition* attribute : schema.entityAt(i)->attributes()) {
            VnIfcVariant value;
            instance->getAttr(attribute->name(), value);
        }
    }
}

} // namespace

TEST_F(Descriptors, HaveTheNamesAndSizesOfTheirFamily) {
    const struct {
        const VnIfcVariantType& type;
        const char* name;
        std::uint32_t size;
        bool isSelect;
        bool isAggregate;
    } cases[] = {
        {Desc<IfcAssemblyPlaceEnum>::value(), "IFC4X3::IfcAssemblyPlaceEnum", 4, false, false},
        {Desc<IfcUnit>::value(), "IFC4X3::IfcUnit", 32, true, false},
        {Desc<IfcUnit*>::value(), "IFC4X3::IfcUnit*", 8, true, false},
        {Desc<VnIfcArray<IfcShell>>::value(), "SDAI_NAMESPACE_PFX VnIfcArray<IFC4X3::IfcShell>", 24, false, true},
        {Desc<VnIfcSetAggr<IfcUnit>*>::value(), "::VN_SDAI:: VnIfcSetAggr<IFC4X3::IfcUnit>*", 8, false, true},
        {Desc<VnIfcListAggr<IfcValue>*>::value(), "::VN_SDAI:: VnIfcListAggr<IFC4X3::IfcValue>*", 8, false, true},
    };
    for (const auto& each : cases) {
        EXPECT_EQ(nameOf(each.type), each.name);
        EXPECT_EQ(each.type.size(), each.size);
        EXPECT_EQ(each.type.isSelect(), each.isSelect);
        EXPECT_EQ(each.type.isAggregate(), each.isAggregate);
        EXPECT_EQ(each.type.reference(), nullptr);
        EXPECT_EQ(each.type.rxObjectValue(), nullptr);
        EXPECT_EQ(each.type.objectMemAllocator() != nullptr, each.size == 32);
    }
    // The module and this program must mean the same object.
    VnIfcVariant value;
    EXPECT_TRUE(IfcWall().getAttr("PredefinedType", value));
    EXPECT_EQ(value.type(), &Desc<IfcWallTypeEnum>::value());
}

TEST_F(Descriptors, OnlySelectsOfAggregatesHaveDescriptorsOfArrays) {
    static_assert(VnIfcDescribed<VnIfcArray<IfcTrimmingSelect>> && VnIfcDescribed<VnIfcSetAggr<IfcTrimmingSelect>*>);
    static_assert(!VnIfcDescribed<VnIfcListAggr<IfcTrimmingSelect>*> && !VnIfcDescribed<VnIfcSetAggr<IfcValue>*>);
    static_assert(VnIfcDescribed<IfcSimpleValue> && !VnIfcDescribed<VnIfcArray<IfcSimpleValue>>);
    static_assert(!VnIfcDescribed<VnIfcVariant> && !VnIfcDescribed<bool> && !VnIfcDescribed<IfcWall>);
}

TEST_F(Descriptors, ListEnumeratorsWithUnsetLast) {
    const IVnIfcVariantTypeEnumeration* names = Desc<IfcAssemblyPlaceEnum>::value().enumeration();
    ASSERT_TRUE(names);
    ASSERT_EQ(names->literalCount(), 4);
    EXPECT_EQ(*names->literalName(0), "IFC4X3::kIfcAssemblyPlaceEnum_SITE");
    EXPECT_EQ(*names->literalName(3), "IFC4X3::kIfcAssemblyPlaceEnum_UNSET");
    EXPECT_EQ(Desc<IfcNullStyle>::value().enumeration()->literalCount(), 2);
    EXPECT_EQ(Desc<IfcDerivedUnitEnum>::value().enumeration()->literalCount(), 54);
    EXPECT_EQ(Desc<IfcUnit>::value().enumeration(), nullptr);

    Desc<IfcAssemblyPlaceEnum>::release();
    const IVnIfcVariantTypeEnumeration* again = Desc<IfcAssemblyPlaceEnum>::value().enumeration();
    EXPECT_EQ(*again->literalName(2), "IFC4X3::kIfcAssemblyPlaceEnum_NOTDEFINED");
    EXPECT_EQ(again->literalCount(), 4);
}

TEST_F(Descriptors, EnumerationsConvertToTextAndCode) {
    const VnIfcVariant factory = IfcAssemblyPlaceEnum(kIfcAssemblyPlaceEnum_FACTORY);
    VnIfcVariant unset;
    ASSERT_TRUE(Desc<IfcAssemblyPlaceEnum>::value().createVariant(unset));
    const VnIfcVariant text("FACTORY"), noText(static_cast<const char*>(nullptr));
    const struct {
        const VnIfcVariantType& target;
        VnIfcVariant ofFactory;
        VnIfcVariant ofUnset;
    } cases[] = {
        {Desc<VnAnsiString>::value(), text, noText},
        {Desc<const char*>::value(), text, noText},
        {Desc<VnIfcEnumDescription>::value(), text, {}},
        {Desc<unsigned long>::value(), 1ul, 3ul},
        {Desc<int>::value(), 1, 3},
        {Desc<VrString>::value(), {}, {}},
        {Desc<double>::value(), {}, {}},
        {Desc<IfcWallTypeEnum>::value(), {}, {}},
    };
    for (const auto& each : cases) {
        for (const bool isUnset : {false, true}) {
            VnIfcVariant result;
            const VnIfcVariant& expected = isUnset ? each.ofUnset : each.ofFactory;
            EXPECT_EQ((isUnset ? unset : factory).convertTo(each.target, result), !expected.isNull());
            EXPECT_TRUE(result == expected) << nameOf(each.target);
        }
    }
    EXPECT_EQ(unset.get<IfcAssemblyPlaceEnum>()->code(), 3u);
    EXPECT_EQ(printed(factory, StringFormat::kExchange), "FACTORY");
    VrString printed("before");
    EXPECT_TRUE(unset.toString(printed));
    EXPECT_TRUE(printed.isEmpty());
    EXPECT_FALSE(factory.type()->subToString(printed, nullptr, StringFormat::kPlain));
    EXPECT_FALSE(factory == unset);
    EXPECT_TRUE(factory == VnIfcVariant(IfcAssemblyPlaceEnum(kIfcAssemblyPlaceEnum_FACTORY)));
}

TEST_F(Descriptors, SelectsConvertByTheirChosenMember) {
    const VnDbObjectId unit = model.create("IfcSIUnit"), wall = model.create("IfcWall");
    IfcUnit unset;
    IfcSimpleValue label;
    label.setIfcLabel("it's");
    IfcValue real;
    real.setIfcLengthMeasure(2.5);
    IfcPresentationStyleSelect style;
    style.setIfcNullStyle(kIfcNullStyle_NULL);
    IfcPresentationStyleSelect noStyle;
    EXPECT_TRUE(noStyle.underlyingTypeName("IfcNullStyle"));
    IfcValue angle;
    angle.setIfcCompoundPlaneAngleMeasure(VnIfcArray<int>{1, 2, 3});

    VnIfcVariant result;
    EXPECT_TRUE(VnIfcVariant(unit).convertTo(Desc<IfcUnit>::value(), result));
    EXPECT_TRUE(result.get<IfcUnit>()->isIfcNamedUnit());
    EXPECT_EQ(result.type()->typePath(result), "IfcNamedUnit");
    EXPECT_TRUE(VnIfcVariant(unit).convertTo(Desc<IfcUnit*>::value(), result));
    const VnIfcVariant shared(result);
    EXPECT_EQ((*shared.get<IfcUnit*>())->getHandle(), unit);
    EXPECT_EQ(*shared.get<IfcUnit*>(), *result.get<IfcUnit*>());
    for (const VnIfcVariant& refused : {VnIfcVariant(wall), VnIfcVariant(VnDbObjectId()), VnIfcVariant("IfcNamedUnit"),
                                        VnIfcVariant(IfcSimpleValue())})
        EXPECT_FALSE(refused.convertTo(Desc<IfcUnit>::value(), result)) << printed(refused, StringFormat::kExchange);
    EXPECT_TRUE(result == shared);
    unset.setHandle(unit);
    EXPECT_TRUE(VnIfcVariant(unset).convertTo(Desc<VnDbObjectId>::value(), result));
    EXPECT_EQ(*result.get<VnDbObjectId>(), unit);
    EXPECT_FALSE(VnIfcVariant(unset).convertTo(Desc<IfcValue>::value(), result));

    EXPECT_TRUE(VnIfcVariant(label).convertTo(Desc<IfcValue>::value(), result));
    EXPECT_TRUE(result.get<IfcValue>()->isIfcLabel());
    EXPECT_EQ(result.get<IfcValue>()->text(), "it's");
    EXPECT_TRUE(VnIfcVariant(&label).convertTo(Desc<VrString>::value(), result));
    EXPECT_FALSE(VnIfcVariant(real).convertTo(Desc<IfcSimpleValue>::value(), result));
    double number = 0;
    EXPECT_TRUE(VnIfcVariant(real).getAs(number));
    EXPECT_EQ(number, 2.5);
    EXPECT_FALSE(VnIfcVariant("text").convertTo(Desc<IfcValue>::value(), result));
    VnAnsiString literal;
    EXPECT_TRUE(VnIfcVariant(style).convertTo(Desc<const char*>::value(), result));
    EXPECT_STREQ(*result.get<const char*>(), "NULL");
    VnIfcArray<double> angles;
    EXPECT_TRUE(VnIfcVariant(&angle).getAs(angles));
    EXPECT_EQ(angles, (VnIfcArray<double>{1, 2, 3}));
    EXPECT_TRUE(VnIfcVariant(label).convertTo(Desc<VnIfcSelect*>::value(), result));
    EXPECT_EQ((*result.get<VnIfcSelect*>())->text(), "it's");

    EXPECT_EQ(printed(label, StringFormat::kPlain), "it's");
    EXPECT_EQ(printed(label, StringFormat::kExchange), "IFCLABEL('it''s')");
    EXPECT_EQ(printed(&real, StringFormat::kExchange), "IFCLENGTHMEASURE(2.5)");
    EXPECT_EQ(printed(style, StringFormat::kPlain), "NULL");
    EXPECT_EQ(printed(noStyle, StringFormat::kPlain), "");
    EXPECT_EQ(printed(angle, StringFormat::kPlain), "(1,2,3)");
    EXPECT_EQ(printed(unset, StringFormat::kPlain), "#1");
    EXPECT_EQ(printed(IfcUnit(), StringFormat::kExchange), "$");
    EXPECT_EQ(printed(static_cast<IfcUnit*>(nullptr), StringFormat::kPlain), "?");
}

TEST_F(Descriptors, SelectsAreHeldByValueAndComparedByContent) {
    IfcSimpleValue label;
    label.setIfcLabel(std::string_view("a label long enough for the heap"));
    const VnIfcVariant value(label), pointer(&label);
    label.setIfcText("changed");
    EXPECT_EQ(value.get<IfcSimpleValue>()->text(), "a label long enough for the heap");
    EXPECT_EQ((*pointer.get<IfcSimpleValue*>())->text(), "changed");
    VnIfcVariant copy(value);
    copy.get<IfcSimpleValue>()->setIfcInteger(1);
    EXPECT_TRUE(value.get<IfcSimpleValue>()->isIfcLabel());
    EXPECT_TRUE(VnIfcVariant(label) == VnIfcVariant(IfcSimpleValue(label)));
    EXPECT_FALSE(VnIfcVariant(label) == value);
    VnIfcVariant created;
    EXPECT_TRUE(Desc<IfcSimpleValue>::value().createVariant(created));
    EXPECT_EQ(created.get<IfcSimpleValue>()->_d(), IfcSimpleValue::kUnset);
    EXPECT_TRUE(Desc<IfcSimpleValue*>::value().createVariant(created));
    ASSERT_TRUE(*created.get<IfcSimpleValue*>());
    EXPECT_EQ((*created.get<IfcSimpleValue*>())->_d(), IfcSimpleValue::kUnset);
}

TEST_F(Descriptors, AggregatesOfSelectsConvert) {
    using Units = VnIfcArray<IfcUnit>;
    IfcUnit unit;
    ASSERT_TRUE(unit.setHandle(model.create("IfcSIUnit")));
    VnIfcSetAggr<IfcUnit> set;
    VnIfcVariant result(1);
    EXPECT_TRUE(VnIfcVariant(&set).convertTo(Desc<VnIfcArray<VnIfcVariant>>::value(), result));
    EXPECT_TRUE(result == VnIfcVariant(1)) << "a nil set has none to give";
    EXPECT_TRUE(VnIfcVariant(&set).convertTo(Desc<Units>::value(), result));
    EXPECT_EQ(result.get<Units>()->length(), 0u);
    set.add(unit);
    EXPECT_TRUE(VnIfcVariant(&set).convertTo(Desc<Units>::value(), result));
    ASSERT_EQ(result.get<Units>()->length(), 1u);
    EXPECT_TRUE((*result.get<Units>())[0].isIfcNamedUnit());
    EXPECT_FALSE(VnIfcVariant(&set).convertTo(Desc<VnIfcArray<VnDbObjectId>>::value(), result));
    VnIfcArray<VnDbObjectId> handles;
    EXPECT_TRUE(result.getAs(handles)) << "unlike the set's pointer, its array converts";
    EXPECT_EQ(handles.length(), 1u);

    IfcValue one, two;
    one.setIfcReal(1);
    two.setIfcLabel("2.5");
    VnIfcListAggr<IfcValue> list;
    list.assign(VnIfcArray<IfcValue>{one, two});
    VnIfcArray<double> numbers;
    VnIfcArray<VnAnsiString> texts;
    EXPECT_TRUE(VnIfcVariant(&list).getAs(numbers));
    EXPECT_EQ(numbers, (VnIfcArray<double>{1, 2.5}));
    EXPECT_TRUE(VnIfcVariant(&list).getAs(texts));
    EXPECT_EQ(texts, (VnIfcArray<VnAnsiString>{"1.", "2.5"}));
    EXPECT_FALSE(VnIfcVariant(&list).getAs(handles));
    EXPECT_EQ(handles.length(), 1u);
}

TEST(DescriptorLife, EndsWithTheSchemaAndBeginsAnewWithIt) {
    VnModuleLifeCycleApp* app = vnGetModuleLifeCycleApp();
    EXPECT_EQ(livingDescriptors(), 0u);
    std::size_t first = 0;
    for (int life = 0; life < 2; ++life) {
        app->initApp();
        touchAll(*vnifcGetSchemaPointer());
        Desc<IfcUnit>::value();
        Desc<VnIfcArray<IfcUnit>>::value();
        EXPECT_GT(livingDescriptors(), 242u);
        EXPECT_TRUE(life == 0 || livingDescriptors() == first);
        first = livingDescriptors();
        app->uninitApp();
        EXPECT_EQ(livingDescriptors(), 0u);
    }
}

TEST(DescriptorLife, ManyThreadsGetOneDescriptor) {
    constexpr int kThreads = 8, kRounds = 50;
    using Query = const VnIfcVariantType& (*)();
    const Query queries[] = {&Desc<IfcWallTypeEnum>::value, &Desc<IfcDerivedUnitEnum>::value,
                             &Desc<VnIfcArray<IfcUnit>>::value, &Desc<VnIfcSetAggr<IfcUnit>*>::value,
                             &Desc<VnIfcListAggr<IfcValue>*>::value};
    for (int round = 0; round < kRounds; ++round) {
        const VnIfcVariantType* seen[kThreads][std::size(queries)];
        std::latch start(kThreads);
        std::vector<std::thread> threads;
        for (auto& mine : seen) {
            threads.emplace_back([&] {
                start.arrive_and_wait();
                for (std::size_t i = 0; i < std::size(queries); ++i)
                    mine[i] = &queries[i]();
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        for (const auto& mine : seen)
            EXPECT_TRUE(std::equal(std::begin(mine), std::end(mine), seen[0]));
        EXPECT_EQ(livingDescriptors(), std::size(queries));
        EXPECT_EQ(seen[0][1]->enumeration()->literalCount(), 54);
        EXPECT_EQ(*seen[0][1]->enumeration()->literalName(53), "IFC4X3::kIfcDerivedUnitEnum_UNSET");
        EXPECT_EQ(nameOf(*seen[0][2]), "SDAI_NAMESPACE_PFX VnIfcArray<IFC4X3::IfcUnit>");
        vnGetModuleLifeCycleApp()->uninitApp();
    }
}
