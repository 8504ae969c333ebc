// A program that links the modules of two releases and uses both at once.
#include <IFC2X3/IfcActor.h>
#include <IFC2X3/IfcBuildingElementProxy.h>
#include <IFC2X3/IfcMeasureWithUnit.h>
#include <IFC2X3/IfcOwnerHistory.h>
#include <IFC2X3/IfcPropertySingleValue.h>
#include <IFC2X3/IfcRelContainedInSpatialStructure.h>
#include <IFC2X3/IfcSIUnit.h>
#include <IFC2X3/IfcTask.h>
#include <IFC2X3/IfcWall.h>
#include <IFC2X3/Module.h>
#include <IFC4X3_ADD2/IfcMeasureWithUnit.h>
#include <IFC4X3_ADD2/IfcPropertySingleValue.h>
#include <IFC4X3_ADD2/IfcRelContainedInSpatialStructure.h>
#include <IFC4X3_ADD2/IfcSIUnit.h>
#include <IFC4X3_ADD2/IfcTask.h>
#include <IFC4X3_ADD2/IfcWall.h>
#include <IFC4X3_ADD2/Module.h>
#include <VnIfcCore/VnIfcFile.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <gtest/gtest.h>

using namespace VN_SDAI;
using typed::openAs;

namespace {

class TwoModules : public testing::Test {
protected:
    VnModule m_old{IFC2X3::vnIfc2x3Module()};
    VnModule m_new{IFC4X3_ADD2::vnIfc4x3Add2Module()};
};

TEST_F(TwoModules, HaveTheirOwnSchemasClassesAndTypes) {
    EXPECT_EQ(m_old.schema()->name(), "IFC2X3");
    EXPECT_EQ(m_new.schema()->name(), "IFC4X3_ADD2");
    EXPECT_EQ(IFC2X3::IfcWall::g_pEntityType, m_old.schema()->entity("IfcWall"));
    EXPECT_EQ(IFC4X3_ADD2::IfcWall::g_pEntityType, m_new.schema()->entity("IfcWall"));
    VnIfcModel old(m_old.schema()), fresh(m_new.schema());
    const IFC2X3::IfcWall* wall = old.create<IFC2X3::IfcWall>();
    EXPECT_EQ(openAs<IFC2X3::IfcWall>(wall->objectId()), wall);
    EXPECT_EQ(openAs<IFC4X3_ADD2::IfcWall>(wall->objectId()), nullptr);
    EXPECT_THROW(old.create<IFC4X3_ADD2::IfcWall>(), std::invalid_argument);
    EXPECT_THROW(fresh.create<IFC2X3::IfcWall>(), std::invalid_argument);
    EXPECT_EQ(old.count() + fresh.count(), 1u);

    // What a linked module gives and what a loaded one gives is the same module.
    EXPECT_EQ(VnModule::load("VnIfc2x3").schema(), m_old.schema());
    EXPECT_EQ(vnLoadModule(*vnFindRelease("IFC4X3_ADD2")).schema(), m_new.schema());
}

TEST_F(TwoModules, HaveOneDescriptorForAType) {
    VnIfcVariant old, fresh;
    EXPECT_TRUE(IFC2X3::IfcSIUnit().getAttr("UnitType", old));
    EXPECT_TRUE(IFC4X3_ADD2::IfcSIUnit().getAttr("UnitType", fresh));
    EXPECT_EQ(old.type(), &VnIfcVariantType::Desc<IFC2X3::IfcUnitEnum>::value());
    EXPECT_EQ(fresh.type(), &VnIfcVariantType::Desc<IFC4X3_ADD2::IfcUnitEnum>::value());
    EXPECT_NE(old.type(), fresh.type());

    // Types of the core are neither one's own.
    EXPECT_TRUE(IFC2X3::IfcWall().getAttr("GlobalId", old));
    EXPECT_TRUE(IFC4X3_ADD2::IfcWall().getAttr("GlobalId", fresh));
    EXPECT_EQ(old.type(), fresh.type());
}

TEST_F(TwoModules, CountTheirDescriptorsEachForItself) {
    VnIfcVariant value;
    const std::size_t before = IFC4X3_ADD2::livingDescriptors();
    IFC2X3::IfcSIUnit().getAttr("UnitType", value);
    IFC2X3::IfcSIUnit().getAttr("Prefix", value);
    EXPECT_GE(IFC2X3::livingDescriptors(), 2u);
    EXPECT_EQ(IFC4X3_ADD2::livingDescriptors(), before);
    value = VnIfcVariant();
    m_old = VnModule(IFC4X3_ADD2::vnIfc4x3Add2Module());
    EXPECT_EQ(IFC2X3::livingDescriptors(), 0u);
    EXPECT_EQ(IFC2X3::vnIfc2x3Module().schema(), nullptr);
    EXPECT_NE(m_new.schema(), nullptr);
}

const char* const kOld = R"(ISO-10303-21;
HEADER;
FILE_DESCRIPTION((''),'2;1');
FILE_NAME('','',(''),(''),'','','');
FILE_SCHEMA(('IFC2X3'));
ENDSEC;
DATA;
#1=IFCWALL('0YvctVUKr0kugbFTf53O9L',$,'Wall',$,'type',$,$,'tag');
#2=IFCBUILDINGSTOREY('0YvctVUKr0kugbFTf53O9M',$,'Storey',$,$,$,$,$,.ELEMENT.,3.);
#3=IFCRELCONTAINEDINSPATIALSTRUCTURE('0YvctVUKr0kugbFTf53O9N',$,$,$,(#1,#4),#2);
#4=IFCBUILDINGELEMENTPROXY('0YvctVUKr0kugbFTf53O9P',$,'Proxy',$,$,$,$,$,.ELEMENT.);
#5=IFCTASK('0YvctVUKr0kugbFTf53O9Q',$,'Task',$,$,'T1','(done, nearly)','by hand',.F.,7);
#6=IFCRELASSIGNSTOPROCESS('0YvctVUKr0kugbFTf53O9R',$,$,$,(#1,#8),$,#5,$);
#7=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);
#8=IFCELECTRICALELEMENT('0YvctVUKr0kugbFTf53O9S',$,'gone',$,$,$,$,$);
ENDSEC;
END-ISO-10303-21;
)";

TEST_F(TwoModules, CopyAModelOfOneIntoTheOther) {
    const VnIfcFile old = vnOpenText(kOld);
    ASSERT_EQ(old.model().schema(), m_old.schema());
    VnIfcModel fresh(m_new.schema());
    std::vector<std::pair<VnDbObjectId, VnDbObjectId>> copies;
    for (const VnDbObjectId& each : old.model().instances())
        if (std::ranges::none_of(copies, [&](const auto& copy) { return copy.first == each; }))
            fresh.copy(each, copies);
    EXPECT_EQ(fresh.count(), old.model().count());
    const auto copyOf = [&](std::uint64_t number) {
        for (const auto& [source, copy] : copies)
            if (source.number() == number)
                return copy;
        return VnDbObjectId();
    };
    const auto* wall = openAs<IFC4X3_ADD2::IfcWall>(copyOf(1));
    ASSERT_TRUE(wall);
    EXPECT_EQ(wall->getGlobalId(), "0YvctVUKr0kugbFTf53O9L");
    EXPECT_EQ(wall->getTag(), "tag");
    EXPECT_TRUE(wall->getPredefinedType().isUnset());
    const auto* storey = openAs<IFC4X3_ADD2::IfcRelContainedInSpatialStructure>(copyOf(3));
    ASSERT_TRUE(storey);
    EXPECT_EQ(storey->getRelatingStructure(), copyOf(2));
    EXPECT_EQ(storey->getRelatedElements().count(), 2u);

    // Attributes of the same name stand elsewhere.
    const auto* task = openAs<IFC4X3_ADD2::IfcTask>(copyOf(5));
    ASSERT_TRUE(task);
    EXPECT_EQ(task->getStatus(), "(done, nearly)");
    EXPECT_EQ(task->getWorkMethod(), "by hand");
    EXPECT_EQ(task->getPriority(), 7);
    EXPECT_FALSE(task->testAttr("Identification")) << "TaskId has another name";
    EXPECT_FALSE(task->testAttr("LongDescription"));

    const std::string written = fresh.writeText();
    const auto has = [&](std::string_view text) { return written.find(text) != written.npos; };
    EXPECT_TRUE(has("=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);")) << written;
    EXPECT_TRUE(has("=IFCBUILDINGELEMENTPROXY('0YvctVUKr0kugbFTf53O9P',$,'Proxy',$,$,$,$,$,$);")) << written;
    EXPECT_FALSE(copyOf(8).isNull());
    EXPECT_EQ(copyOf(8).openObject()->getInstanceType(), nullptr) << "no such entity any more";
    EXPECT_TRUE(old.model().writeText() == kOld) << "the source stays";
    EXPECT_TRUE(fresh.copy(old.model().find(8)).isNull());

    // And back: what both have comes back the same.
    VnIfcModel back(m_old.schema());
    const VnDbObjectId again = back.copy(copyOf(5));
    const auto* oldTask = openAs<IFC2X3::IfcTask>(again);
    ASSERT_TRUE(oldTask);
    EXPECT_EQ(oldTask->getStatus(), "(done, nearly)");
    EXPECT_EQ(oldTask->getPriority(), 7);
}

} // namespace
