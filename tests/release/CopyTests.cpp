// Copies between releases: written as the target's schema demands, and what that costs is told.
#include "support/Files.h"

#include <VnIfcCore/VnIfcFile.h>

#include <gtest/gtest.h>

using namespace VN_SDAI;
using vnifc::test::fileOf;

TEST(CopyBetweenReleases, IsPaddedAndTold) {
    const struct {
        const char* from;
        const char* data;
        const char* to;
        const char* copied;
        const char* told;
    } cases[] = {
        {"IFC4", "#1=IFCCARTESIANPOINTLIST3D(((1.,2.,3.)));\n", "IFC4X3_ADD2",
         "#1=IFCCARTESIANPOINTLIST3D(((1.,2.,3.)),$);\n", ""},
        {"IFC4X3_ADD2", "#1=IFCCARTESIANPOINTLIST3D(((1.,2.,3.)),('a'));\n", "IFC4",
         "#1=IFCCARTESIANPOINTLIST3D(((1.,2.,3.)));\n", "no-attribute TagList ('a')"},
        {"IFC4X3_ADD2", "#1=IFCCARTESIANPOINTLIST3D(((1.,2.,3.)),$);\n", "IFC4",
         "#1=IFCCARTESIANPOINTLIST3D(((1.,2.,3.)));\n", ""},
        {"IFC4", "#1=IFCOWNERHISTORY(#1,#1,$,$,$,$,$,5);\n", "IFC2X3", "#1=IFCOWNERHISTORY(#1,#1,$,$,$,$,$,5);\n",
         "mandatory ChangeAction $"},
    };
    for (const auto& each : cases) {
        const VnIfcFile source = vnOpenText(fileOf(each.from, each.data));
        VnIfcFile target = vnCreateFile(each.to);
        if (!source || !target)
            GTEST_SKIP() << each.from << " or " << each.to << " is not installed";
        std::string told;
        std::vector<std::pair<VnDbObjectId, VnDbObjectId>> copies;
        const VnDbObjectId copy =
            target.model().copy(source.model().find(1), copies, [&](const VnIfcDiagnostic& found) {
                told += found.code + ' ' + found.attribute + ' ' + found.found;
                EXPECT_EQ(found.instance, 1u);
                EXPECT_EQ(found.line, 0u);
            });
        EXPECT_EQ(copy.number(), 1u);
        const std::string text = target.model().writeText();
        EXPECT_NE(text.find(each.copied), std::string::npos) << text;
        EXPECT_EQ(told, each.told);
    }
}
