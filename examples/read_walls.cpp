// Lists the walls of an IFC4X3_ADD2 file storey by storey, and the attributes that they carry.
// Usage: read_walls IN.ifc

#include <IFC4X3_ADD2/IfcBuildingStorey.h>
#include <IFC4X3_ADD2/IfcRelContainedInSpatialStructure.h>
#include <IFC4X3_ADD2/IfcWall.h>
#include <IFC4X3_ADD2/Module.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcText.h>

#include <iostream>

using namespace IFC4X3_ADD2;
using namespace VN_SDAI;

namespace {

std::string nameOf(const IfcRoot& root) {
    return root.getName().isUnset() ? "(no name)" : vnDecodeText(root.getName()).text;
}

/// The dictionary knows the attributes of whatever subtype of IfcWall it is.
void printWall(const IfcWall& wall) {
    const VnIfcEntityType& type = *wall.getInstanceType();
    std::cout << "  #" << wall.objectId().number() << ' ' << type.name().view() << ' ' << nameOf(wall) << " has";
    for (const VnIfcAttributeDefinition* attribute : type.allAttributes())
        if (wall.testAttr(attribute))
            std::cout << ' ' << attribute->name().view();
    std::cout << '\n';
}

void printStorey(const IfcBuildingStorey& storey) {
    std::cout << nameOf(storey);
    if (storey.testAttr("Elevation"))
        std::cout << " at " << storey.getElevation();
    std::cout << '\n';
    for (const VnDbObjectId& relation : storey.getInvContainsElements())
        for (const VnDbObjectId& element : openAs<IfcRelContainedInSpatialStructure>(relation)->getRelatedElements())
            if (const IfcWall* wall = openAs<IfcWall>(element))
                printWall(*wall);
}

bool printWalls(const VnIfcSchema* schema, const char* path) {
    VnIfcModel model(schema);
    VnIfcReadOptions options;
    options.diagnostics = [](const VnIfcDiagnostic& found) { std::cerr << found.text() << '\n'; };
    const VnIfcFileResult read = model.readFile(path, options);
    if (!read) {
        std::cerr << read.message << '\n';
        return false;
    }
    for (const VnDbObjectId& storey : model.instancesOf(IfcBuildingStorey::g_pEntityType))
        printStorey(*openAs<IfcBuildingStorey>(storey));
    return true;
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: read_walls IN.ifc\n";
        return 2;
    }
    const VnModule module(vnIfc4x3Add2Module());
    return printWalls(module.schema(), argv[1]) ? 0 : 1;
}
