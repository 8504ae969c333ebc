// A model in careless hands: no schema, moved, read by many, guarded, new.
#include "Sanitized.h"
#include "exchange/Support.h"

#include <IFC4X3/IfcAxis2Placement3D.h>
#include <IFC4X3/IfcCartesianPoint.h>
#include <IFC4X3/IfcIndexedPolyCurve.h>
#include <IFC4X3/IfcLocalPlacement.h>
#include <IFC4X3/IfcPropertySingleValue.h>
#include <IFC4X3/IfcWall.h>
#include <VnIfcCore/VnIfcException.h>
#include <VnIfcCore/VnIfcProperty.h>
#include <VnIfcCore/VnIfcPropertyCollection.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <VnRx/VrString.h>

#include <atomic>
#include <ctime>
#include <thread>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

TEST(ModelUse, RefusesNullAndAbstractInstances) {
    EXPECT_THROW(VnIfcModel(nullptr), std::invalid_argument);
    VnIfcModel model(schema());
    EXPECT_THROW(model.append(nullptr), std::invalid_argument);
    EXPECT_TRUE(model.create("IfcRoot").isNull());
    EXPECT_EQ(model.count(), 0u);
    const std::unique_ptr<VnIfcEntityBase> made(IfcRoot::g_pEntityType->create());
    EXPECT_TRUE(made) << "the record makes instances of abstract entities, for the reader";
}

TEST(ModelUse, MovesWithItsInstances) {
    VnIfcModel model(schema());
    for (int i = 0; i < 5000; ++i)
        model.create<IfcWall>();
    IfcWall* wall = model.create<IfcWall>();
    const VnDbObjectId handle = wall->objectId();
    VnIfcModel moved = std::move(model);
    EXPECT_EQ(handle.model(), &moved);
    EXPECT_EQ(moved.find(1).model(), &moved);
    EXPECT_EQ(wall->owningModel(), &moved);
    EXPECT_EQ(moved.count(), 5001u);
    EXPECT_EQ(moved.create("IfcWall").model(), &moved);
    EXPECT_TRUE(moved.erase(handle));
    VnIfcModel target(schema());
    target.create<IfcWall>();
    moved.setMode(sdaiReadOnly);
    target = std::move(moved);
    EXPECT_EQ(target.mode(), sdaiReadOnly);
    EXPECT_EQ(handle.model(), &target);
    EXPECT_EQ(target.count(), 5001u);
    EXPECT_EQ(VnIfcModel(std::move(target)).mode(), sdaiReadOnly);
    Reading reading(fileOf("#1=IFCPERSONANDORGANIZATION(#7,#8,$);\n"));
    const VnIfcModel taken = std::move(reading.model);
    EXPECT_EQ(taken.find(1).model(), &taken);
    EXPECT_EQ(dataOf(taken.writeText()), "#1=IFCPERSONANDORGANIZATION(#7,#8,$);\n") << "dangling ones too";
}

TEST(ModelUse, TheAccessModeGuardsAccessByNameAlone) {
    VnIfcModel model(schema());
    auto* wall = model.create<IfcWall>();
    auto* single = model.create<IfcPropertySingleValue>();
    IfcValue value;
    value.setIfcLabel("text");
    single->setNominalValue(value);
    const VnIfcPropertyCollection columns = IfcWall::g_pEntityType->properties(true);
    const VnIfcProperty& name = *columns.find("Name");
    VnIfcVariant read;
    model.setMode(sdaiNoAccess);
    EXPECT_THROW(wall->getAttr("Name", read), VnIfcException);
    EXPECT_THROW(wall->putAttr("Name", "x"), VnIfcException);
    wall->setName("typed");
    EXPECT_EQ(name.putAttribute(wall, VnAnsiString("property")), VN::eOk);
    EXPECT_EQ(name.getAttribute(wall, read), VN::eOk);
    EXPECT_FALSE(model.create("IfcWall").isNull());
    EXPECT_TRUE(model.erase(wall->objectId()));

    // A C interface lets no exception out, and leaks nothing (which the address sanitizer sees).
    VnIfcProperty* property = nullptr;
    int code = 77;
    EXPECT_NO_THROW(EXPECT_FALSE(vnIfcBuildPropertyForSimple(single, property, code)));
    EXPECT_EQ(property, nullptr);
    EXPECT_EQ(code, 77);
    model.setMode(sdaiReadOnly);
    EXPECT_FALSE(vnIfcBuildPropertyForSimple(single, property, code));
    const std::unique_ptr<VnIfcProperty> owned(property);
    ASSERT_TRUE(owned);
    EXPECT_EQ(code, static_cast<int>(VnTypeCodeKind::kString));
}

TEST(ModelUse, ANewModelIsWrittenWithAHeaderOfNow) {
    const VnIfcModel model(schema());
    const std::time_t before = std::time(nullptr);
    const Reading reading(model.writeText());
    const VnIfcHeader& header = reading.model.header();
    EXPECT_EQ(header.schemas(), std::vector<std::string>{"IFC4X3"});
    ASSERT_EQ(header.strings("FILE_NAME", 1).size(), 1u);
    std::tm fields{};
    const std::string told = header.strings("FILE_NAME", 1)[0];
    const char* const end = ::strptime(told.c_str(), "%Y-%m-%dT%H:%M:%S", &fields);
    ASSERT_TRUE(end && std::string_view(end) == "Z");
    const std::time_t stamp = ::timegm(&fields);
    EXPECT_TRUE(stamp >= before && stamp <= std::time(nullptr));
    ASSERT_EQ(header.strings("FILE_NAME", 4).size(), 1u);
    EXPECT_TRUE(header.strings("FILE_NAME", 4)[0].starts_with("vnifc ")) << "preprocessor version";
    EXPECT_EQ(header.strings("FILE_NAME", 5), std::vector<std::string>{"vnifc"}) << "originating system";
}

// Run under the thread sanitizer this finds whatever reading changes.
TEST(ModelUse, IsReadByManyThreadsAtOnce) {
    std::string data;
    constexpr int kMany = 400;
    for (int i = 0; i < kMany; ++i) {
        const auto number = [&](int which) { return '#' + std::to_string(6 * i + which); };
        data += number(1) + "=IFCLOCALPLACEMENT($," + number(2) + ");\n";
        data += number(2) + "=IFCAXIS2PLACEMENT3D(" + number(3) + ",$,$);\n";
        data += number(3) + "=IFCCARTESIANPOINT((1.,2.,3.));\n";
        data += number(4) + "=IFCWALL('0YvctVUKr0kugbFTf53O9L',$,42,$,$," + number(1) + ",$,$,.SOLIDWALL.);\n";
        data += number(5) + "=IFCPROPERTYSINGLEVALUE('a',$,IFCLABEL('x'),$);\n";
        data += number(6) + "=IFCINDEXEDPOLYCURVE($,(IFCLINEINDEX((1,2)),IFCARCINDEX((2,3,4))),$);\n";
    }
    Reading reading(fileOf(data), 4);
    const VnIfcModel& model = reading.model;
    std::atomic<std::size_t> seen = 0;
    const auto read = [&] {
        std::size_t count = 0;
        model.forEach([&](const VnIfcEntityBase& instance) {
            for (const VnIfcAttributeDefinition* attribute : instance.getInstanceType()->allAttributes()) {
                VnIfcVariant value;
                VrString text;
                if (!instance.getAttr(attribute->name(), value))
                    continue;
                value.toString(text, StringFormat::kExchange);
                value.toString(text);
                count += instance.testAttr(attribute->name());
                if (value.type()->isSelect())
                    count += !value.type()->typePath(value).isEmpty();
            }
            if (const auto* placement = dynamic_cast<const IfcLocalPlacement*>(&instance)) {
                const IfcAxis2Placement& select = placement->getRelativePlacement();
                count += select.isIfcAxis2Placement3D() && !select.isIfcAxis2Placement2D() &&
                         select._d() == IfcAxis2Placement::kIfcAxis2Placement3D &&
                         select.underlyingTypeName() == "IfcAxis2Placement3D";
            }
            if (const auto* wall = dynamic_cast<const IfcWall*>(&instance))
                count += wall->ObjectPlacement() != nullptr && wall->keepsText(2) &&
                         wall->getPredefinedType() == kIfcWallTypeEnum_SOLIDWALL;
        });
        count += model.instancesOf(IfcWall::g_pEntityType).size() + !model.find(1).isNull();
        VnIfcWriteOptions options;
        options.threads = 1;
        count += model.writeText(options).size();
        seen += count;
    };
    std::vector<std::jthread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back(read);
    threads.clear();
    const std::size_t by4 = seen.exchange(0);
    read();
    EXPECT_EQ(by4, 4 * seen);
}

TEST(ModelUse, SelectsKnowTheirMemberAsSoonAsAFileIsRead) {
    // Forward and backward references, a copy, and one that is no member.
    const char* const data = "#1=IFCLOCALPLACEMENT($,#2);\n#2=IFCAXIS2PLACEMENT3D(#3,$,$);\n"
                             "#3=IFCCARTESIANPOINT((1.,2.,3.));\n#4=IFCLOCALPLACEMENT($,#2);\n"
                             "#5=IFCLOCALPLACEMENT($,#3);\n#6=IFCLOCALPLACEMENT($,#99);\n";
    for (const unsigned threads : {1u, 4u}) {
        Reading reading(fileOf(data), threads);
        const auto code = [](const VnIfcEntityBase* instance) {
            return dynamic_cast<const IfcLocalPlacement&>(*instance).getRelativePlacement()._d();
        };
        for (const std::uint64_t number : {1u, 4u})
            EXPECT_EQ(code(reading.model.find(number).openObject()), IfcAxis2Placement::kIfcAxis2Placement3D);
        for (const std::uint64_t number : {5u, 6u}) {
            EXPECT_EQ(code(reading.model.find(number).openObject()), IfcAxis2Placement::kPending);
            EXPECT_FALSE(reading.as<IfcLocalPlacement>(number).getRelativePlacement().isIfcAxis2Placement3D());
        }
        VnIfcModel other(schema());
        EXPECT_EQ(code(other.copy(reading.model.find(1)).openObject()), IfcAxis2Placement::kIfcAxis2Placement3D);
        EXPECT_EQ(code(reading.model.copy(reading.model.find(1)).openObject()),
                  IfcAxis2Placement::kIfcAxis2Placement3D);
    }
}
