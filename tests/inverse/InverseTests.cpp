// Inverse attributes hold what a search through all forward references finds, and nothing else.
#include <dictionary/SchemaFixture.h>

#include <IFC4X3/IfcMaterialLayer.h>
#include <IFC4X3/IfcMaterialLayerSet.h>
#include <IFC4X3/IfcOwnerHistory.h>
#include <IFC4X3/IfcProject.h>
#include <IFC4X3/IfcPropertySet.h>
#include <IFC4X3/IfcRelAggregates.h>
#include <IFC4X3/IfcRelDefinesByProperties.h>
#include <IFC4X3/IfcWall.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcVariantTypeAggregate.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>

#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

namespace IFC4X3 {

using namespace VN_SDAI;

namespace {

namespace fs = std::filesystem;

class Inverse : public SchemaTest {
protected:
    VnIfcModel model{schema};
};

// ---- Brute force
// attributes must hold, by the dictionary and by name alone: no inverse attribute is read.

/// Who refers to an instance, by inverse attribute of its.
using Referrers = std::map<std::pair<std::uint64_t, const VnIfcInverseAttributeDefinition*>, std::set<VnDbObjectId>>;

template <class T>
const T* pointee(const VnIfcVariant& value, VnIfcVariant& converted) {
    return value.convertTo(VnIfcVariantType::Desc<T*>::value(), converted) ? *converted.get<T*>() : nullptr;
}

/// The handles in a value; those in a select's set of values do not count.
std::vector<VnDbObjectId> handlesIn(const VnIfcVariant& value) {
    if (const auto* handle = value.get<VnDbObjectId>())
        return {*handle};
    VnIfcVariant converted;
    if (value.type()->isSelect())
        return {pointee<VnIfcSelect>(value, converted)->getHandle()};
    std::vector<VnDbObjectId> handles;
    if (const VnIfcAggr* elements = pointee<VnIfcAggr>(value, converted)) {
        for (VnIfcConstIterator each(*elements); !each.atEnd(); each.next())
            if (each.elementKind() == VnTypeCodeKind::kEntity)
                handles.push_back(each.currentAs<VnDbObjectId>());
            else if (each.elementKind() == VnTypeCodeKind::kSelect)
                handles.push_back(each.currentAs<VnIfcSelect>().getHandle());
    }
    return handles;
}

std::vector<const VnIfcInverseAttributeDefinition*> inversesOf(const VnIfcEntityBase& instance) {
    std::vector<const VnIfcInverseAttributeDefinition*> inverses;
    for (const VnIfcEntityType* type = instance.getInstanceType(); type; type = type->supertype())
        inverses.insert(inverses.end(), type->inverseAttributes().begin(), type->inverseAttributes().end());
    return inverses;
}

Referrers search(const VnIfcModel& model) {
    Referrers found;
    model.forEach([&](const VnIfcEntityBase& instance) {
        for (const VnIfcEntityType* type = instance.getInstanceType(); type; type = type->supertype())
            for (const VnIfcAttributeDefinition* attribute : type->explicitAttributes()) {
                VnIfcVariant value;
                EXPECT_TRUE(instance.getAttr(attribute->name(), value));
                for (const VnDbObjectId& handle : handlesIn(value))
                    if (const VnIfcEntityBase* target = handle.openObject())
                        for (const VnIfcInverseAttributeDefinition* inverse : inversesOf(*target))
                            if (inverse->invertedAttribute() == attribute &&
                                instance.isKindOf(dynamic_cast<const VnIfcEntityType*>(inverse->type())))
                                found[{handle.number(), inverse}].insert(instance.objectId());
            }
    });
    return found;
}

/// Compares all inverse attributes of the model with what brute force finds; answers how many hold something.
std::size_t compare(const VnIfcModel& model, const Referrers& expected) {
    std::size_t used = 0;
    model.forEach([&](const VnIfcEntityBase& instance) {
        for (const VnIfcInverseAttributeDefinition* inverse : inversesOf(instance)) {
            VnIfcVariant value;
            ASSERT_TRUE(instance.getAttr(inverse->name(), value));
            std::set<VnDbObjectId> referrers;
            if (const auto found = expected.find({instance.objectId().number(), inverse}); found != expected.end())
                referrers = found->second;
            // A single handle is what the last one left there.
            if (value.is<VnDbObjectId>())
                referrers = {referrers.empty() ? VnDbObjectId() : *referrers.rbegin()};
            const std::vector<VnDbObjectId> held = handlesIn(value);
            EXPECT_TRUE(std::ranges::equal(held, referrers))
                << '#' << instance.objectId().number() << '.' << inverse->name().view() << " holds " << held.size();
            used += !held.empty() && !held[0].isNull();
        }
    });
    return used;
}

/// Reads a file and answers how many inverse attributes hold something.
std::size_t compareFile(const fs::path& file) {
    VnIfcModel model(vnifcGetSchemaPointer());
    EXPECT_TRUE(model.readFile(file));
    const Referrers expected = search(model);
    EXPECT_EQ(compare(model, expected), expected.size());
    model.setInverseCounterParts();
    return compare(model, expected);
}

TEST_F(Inverse, OfTheExampleHouseAreWhatASearchFinds) {
#if defined(VNIFC_BUILD_HOUSE)
    const fs::path file = fs::temp_directory_path() / ("inverse_house" + std::to_string(::getpid()) + ".ifc");
    ASSERT_EQ(std::system((VNIFC_BUILD_HOUSE " " + file.string() + " > /dev/null").c_str()), 0);
    EXPECT_GT(compareFile(file), 100u);
    fs::remove(file);
#else
    GTEST_SKIP() << "the examples are not built";
#endif
}

TEST_F(Inverse, OfRealFilesAreWhatASearchFinds) {
    const char* place = std::getenv("VNIFC_CORPUS");
    const fs::path corpus = place ? fs::path(place) : fs::path(VNIFC_TEST_DATA "/../../../shared/corpus");
    if (!fs::exists(corpus))
        GTEST_SKIP() << "no files of other programs here";
    std::size_t files = 0;
    std::ifstream index(corpus / "INDEX.tsv");
    for (std::string line; std::getline(index, line);) {
        if (line.find("0 unknown, 0 other counts") == std::string::npos)
            continue;
        SCOPED_TRACE(line);
        EXPECT_GT(compareFile(corpus / line.substr(0, line.find('\t'))), 0u);
        ++files;
    }
    EXPECT_GT(files, 0u);
}

// ---- A model that uses all of them

/// Lets an instance refer to another one through an attribute, whatever holds the reference there.
bool refer(VnIfcEntityBase& from, const VnAnsiString& attribute, const VnDbObjectId& to) {
    return from.putAttr(attribute, to) || from.putAttr(attribute, VnIfcArray<VnDbObjectId>{to});
}

void addConcrete(const VnIfcEntityType& type, std::vector<const VnIfcEntityType*>& concrete) {
    if (!type.isAbstract())
        concrete.push_back(&type);
    for (const VnIfcEntityType* subtype : type.subtypes())
        addConcrete(*subtype, concrete);
}

/// Makes an instance of the entity that declares the inverse attribute, and two that refer to it.
void useInverse(VnIfcModel& model, const VnIfcEntityType& entity, const VnIfcInverseAttributeDefinition& inverse) {
    std::vector<const VnIfcEntityType*> targets, referrers;
    addConcrete(entity, targets);
    addConcrete(dynamic_cast<const VnIfcEntityType&>(*inverse.type()), referrers);
    for (const VnIfcEntityType* referrer : {referrers.front(), referrers.back()}) {
        VnIfcEntityBase& from = *model.create(referrer->name()).openObject();
        // Not every subtype of the entity need be a member of the select that holds the reference.
        EXPECT_TRUE(std::ranges::any_of(targets,
                                        [&](const VnIfcEntityType* target) {
                                            return refer(from, inverse.invertedAttribute()->name(),
                                                         model.create(target->name()));
                                        }))
            << entity.name().view() << '.' << inverse.name().view();
    }
}

TEST_F(Inverse, AllOfTheSchemaAreFedByWhatRefersToThem) {
    std::set<const VnIfcInverseAttributeDefinition*> declared, used;
    for (const Dictionary::Entry& entry : model.schema()->entities()) {
        const auto& entity = dynamic_cast<const VnIfcEntityType&>(*entry.instance);
        for (const VnIfcInverseAttributeDefinition* inverse : entity.inverseAttributes()) {
            declared.insert(inverse);
            useInverse(model, entity, *inverse);
        }
    }
    EXPECT_EQ(declared.size(), 163u);
    const Referrers expected = search(model);
    for (const auto& [place, referrers] : expected)
        used.insert(place.second);
    EXPECT_EQ(used, declared);

    EXPECT_EQ(compare(model, {}), 0u);
    for (int times = 0; times < 2; ++times) {
        model.setInverseCounterParts();
        EXPECT_EQ(compare(model, expected), expected.size());
    }
}

// ---- Single classes

TEST_F(Inverse, LastLayerSetTakesTheLayerOver) {
    auto* layer = model.create<IfcMaterialLayer>();
    auto* first = model.create<IfcMaterialLayerSet>();
    auto* second = model.create<IfcMaterialLayerSet>();
    first->setMaterialLayers({layer->objectId(), layer->objectId()});
    second->setMaterialLayers({layer->objectId()});
    for (IfcMaterialLayerSet* set : {first, first, second, first}) {
        set->setInverseCounterParts();
        EXPECT_EQ(layer->getInvToMaterialLayerSet(), set->objectId());
    }
    // Whose handle is not there takes nothing out.
    model.erase(second->objectId());
    EXPECT_EQ(layer->getInvToMaterialLayerSet(), first->objectId());
    model.erase(first->objectId());
    EXPECT_TRUE(layer->getInvToMaterialLayerSet().isNull());
}

TEST_F(Inverse, WhatCannotBeEnteredIsPassedOver) {
    auto* wall = model.create<IfcWall>();
    auto* history = model.create<IfcOwnerHistory>();
    auto* gone = model.create<IfcWall>();
    auto* relation = model.create<IfcRelAggregates>();
    relation->setRelatedObjects({history->objectId(), gone->objectId(), VnDbObjectId(), wall->objectId()});
    model.erase(gone->objectId());
    relation->setInverseCounterParts();
    EXPECT_EQ(wall->getInvDecomposes(), relation->objectId());
    EXPECT_TRUE(gone->getInvDecomposes().isNull());
    EXPECT_TRUE(wall->getInvIsDecomposedBy().isNil());

    relation->resetInverseCounterParts();
    EXPECT_EQ(wall->getInvDecomposes(), relation->objectId());
}

TEST_F(Inverse, HandlesInASelectsSetOfValuesDoNotCount) {
    ASSERT_TRUE(model.readText("ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4X3'));ENDSEC;DATA;\n"
                               "#1=IFCPROPERTYSET('1',$,'single',$,$);\n"
                               "#2=IFCPROPERTYSET('2',$,'in a set',$,$);\n"
                               "#3=IFCWALL('3',$,$,$,$,$,$,$,$);\n"
                               "#4=IFCRELDEFINESBYPROPERTIES('4',$,$,$,(#3),#1);\n"
                               "#5=IFCRELDEFINESBYPROPERTIES('5',$,$,$,(#3),IFCPROPERTYSETDEFINITIONSET((#1,#2)));\n"
                               "ENDSEC;END-ISO-10303-21;"));
    EXPECT_EQ(openAs<IfcPropertySet>(model.find(1))->getInvDefinesOccurrence().count(), 1u);
    EXPECT_TRUE(openAs<IfcPropertySet>(model.find(2))->getInvDefinesOccurrence().isNil());
    EXPECT_EQ(openAs<IfcWall>(model.find(3))->getInvIsDefinedBy().count(), 2u);
}

TEST_F(Inverse, ErasedInstanceLeavesAndDoesNotComeBack) {
    auto* project = model.create<IfcProject>();
    std::vector<IfcRelAggregates*> relations;
    for (int i = 0; i < 5; ++i) {
        relations.push_back(model.create<IfcRelAggregates>());
        relations.back()->setRelatingObject(project->objectId());
    }
    model.setInverseCounterParts();
    ASSERT_TRUE(model.erase(relations[2]->objectId()));
    for (int times = 0; times < 2; ++times) {
        EXPECT_EQ(compare(model, search(model)), 1u);
        EXPECT_EQ(project->getInvIsDecomposedBy().count(), 4u);
        EXPECT_FALSE(project->getInvIsDecomposedBy().contains(relations[2]->objectId()));
        model.setInverseCounterParts();
    }
    EXPECT_EQ(relations[2]->objectId().openObject(), nullptr);
}

// Were the cost of entering one handle that of looking through those before it, this would take hours.
TEST_F(Inverse, MillionRelationsOntoOneProjectTakeLinearTime) {
    constexpr std::uint32_t kRelations = 1'000'000;
    auto* project = model.create<IfcProject>();
    for (std::uint32_t i = 0; i < kRelations; ++i)
        model.create<IfcRelAggregates>()->setRelatingObject(project->objectId());
    const std::clock_t start = std::clock();
    model.setInverseCounterParts();
    model.setInverseCounterParts();
    const std::clock_t seconds = (std::clock() - start) / CLOCKS_PER_SEC;
    EXPECT_EQ(project->getInvIsDecomposedBy().count(), kRelations);
    EXPECT_LT(seconds, 60);

    // Whoever walks over the set may open and make instances meanwhile.
    std::uint64_t last = 0;
    for (const VnDbObjectId& relation : project->getInvIsDecomposedBy()) {
        ASSERT_LT(last, relation.number());
        last = relation.number();
        ASSERT_NE(relation.openObject(), nullptr);
        relation.close();
        if (last % 100'000 == 0)
            model.create<IfcWall>();
    }
}

} // namespace

} // namespace IFC4X3
