// Inverse attributes after changes: set anew, and left by what is erased, whatever happened before.
#include "exchange/Support.h"

#include <IFC4X3/IfcMaterialLayer.h>
#include <IFC4X3/IfcMaterialLayerSet.h>
#include <IFC4X3/IfcRelAggregates.h>
#include <IFC4X3/IfcRelAssociatesMaterial.h>
#include <IFC4X3/IfcWall.h>
#include <VnIfcCore/VnIfcVariant.h>

#include <chrono>
#include <functional>
#include <random>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

namespace {

struct Scene {
    Scene() {
        relation->setRelatingObject(whole->objectId());
        relation->setRelatedObjects({part->objectId()});
        model.setInverseCounterParts();
    }
    std::size_t count() const {
        return whole->getInvIsDecomposedBy().count() + !part->getInvDecomposes().isNull() +
               other->getInvIsDecomposedBy().count() + !other->getInvDecomposes().isNull();
    }
    VnIfcModel model{schema()};
    IfcWall* whole = model.create<IfcWall>();
    IfcWall* part = model.create<IfcWall>();
    IfcWall* other = model.create<IfcWall>();
    IfcRelAggregates* relation = model.create<IfcRelAggregates>();
};

} // namespace

TEST(InverseHistory, SettingAnewEmptiesFirst) {
    Scene scene;
    scene.relation->setRelatingObject(scene.other->objectId());
    scene.relation->setRelatedObjects({});
    scene.model.setInverseCounterParts();
    EXPECT_EQ(scene.whole->getInvIsDecomposedBy().count(), 0u);
    EXPECT_EQ(scene.part->getInvDecomposes().isNull(), true);
    EXPECT_EQ(scene.other->getInvIsDecomposedBy().count(), 1u);
}

TEST(InverseHistory, WhoLeavesTakesNobodyElseAlong) {
    Scene scene;
    auto* rival = scene.model.create<IfcRelAggregates>();
    rival->setRelatedObjects({scene.part->objectId()});
    scene.model.setInverseCounterParts();
    scene.relation->leaveInverseCounterParts();
    EXPECT_EQ(scene.whole->getInvIsDecomposedBy().count(), 0u);
    EXPECT_EQ(scene.part->getInvDecomposes(), rival->objectId()) << "the last one has it";
    rival->leaveInverseCounterParts();
    EXPECT_TRUE(scene.part->getInvDecomposes().isNull());
}

TEST(InverseHistory, ErasingLeavesAllThatWasEntered) {
    const std::pair<const char*, std::function<void(Scene&)>> histories[] = {
        {"none", [](Scene&) {}},
        {"setters",
         [](Scene& scene) {
             scene.relation->setRelatingObject(scene.other->objectId());
             scene.relation->setRelatedObjects({scene.other->objectId()});
         }},
        {"twice",
         [](Scene& scene) {
             scene.relation->setRelatingObject(scene.other->objectId());
             scene.relation->setRelatingObject({});
         }},
        {"by name",
         [](Scene& scene) {
             EXPECT_TRUE(scene.relation->putAttr("RelatingObject", scene.other->objectId()));
             scene.relation->unsetAttr("RelatedObjects");
         }},
        {"assignment", [](Scene& scene) { *scene.relation = IfcRelAggregates(); }},
        {"set anew", [](Scene& scene) {
             scene.relation->setRelatedObjects({scene.other->objectId()});
             scene.model.setInverseCounterParts();
             scene.relation->setRelatedObjects({});
         }}};
    for (const bool several : {false, true})
        for (const auto& [name, change] : histories) {
            Scene scene;
            change(scene);
            const VnDbObjectId handles[] = {scene.relation->objectId()};
            EXPECT_TRUE(several ? scene.model.erase(handles) == 1 : scene.model.erase(handles[0]));
            EXPECT_EQ(scene.count(), 0u) << name << several;
            EXPECT_FALSE(several ? scene.model.erase(handles) != 0 : scene.model.erase(handles[0])) << "twice";
        }
}

TEST(InverseHistory, TheLastOfTwoSetsErasedLeavesTheFirst) {
    VnIfcModel model(schema());
    auto* layer = model.create<IfcMaterialLayer>();
    auto* first = model.create<IfcMaterialLayerSet>();
    auto* last = model.create<IfcMaterialLayerSet>();
    for (IfcMaterialLayerSet* set : {first, last})
        set->setMaterialLayers({layer->objectId()});
    model.setInverseCounterParts();
    EXPECT_EQ(layer->getInvToMaterialLayerSet(), last->objectId());
    model.erase(last->objectId());
    EXPECT_EQ(layer->getInvToMaterialLayerSet(), first->objectId());
    model.erase(first->objectId());
    EXPECT_TRUE(layer->getInvToMaterialLayerSet().isNull());
}

TEST(InverseHistory, ErasingManyAtOnceIsLinear) {
    constexpr std::size_t kMany = 100000;
    VnIfcModel model(schema());
    auto* whole = model.create<IfcWall>();
    std::vector<VnDbObjectId> relations;
    for (std::size_t i = 0; i < kMany; ++i) {
        auto* relation = model.create<IfcRelAggregates>();
        relation->setRelatingObject(whole->objectId());
        relations.push_back(relation->objectId());
    }
    model.setInverseCounterParts();
    ASSERT_EQ(whole->getInvIsDecomposedBy().count(), kMany);
    std::ranges::shuffle(relations, std::mt19937(7));
    const VnDbObjectId survivor = relations.back();
    relations.pop_back();
    const auto seconds = [](auto work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    const double half = seconds([&] { EXPECT_EQ(model.erase(std::span(relations).first(kMany / 2)), kMany / 2); });
    const double rest =
        seconds([&] { EXPECT_EQ(model.erase(std::span(relations).subspan(kMany / 2)), kMany / 2 - 1); });
    EXPECT_LT(half + rest, 1.0);
    ASSERT_EQ(whole->getInvIsDecomposedBy().count(), 1u);
    EXPECT_EQ(*whole->getInvIsDecomposedBy().begin(), survivor);
    EXPECT_EQ(model.count(), 2u);
}
