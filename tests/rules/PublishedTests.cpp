// The texts of releases as their publisher distributes them, and exchange files that keep or break a rule of theirs.
// Neither is part of this project; without them the tests are skipped.
#include "Support.h"
#include "support/Corpus.h"
#include "support/Releases.h"

#include <VnIfcCore/VnIfcFile.h>

#include <cstdlib>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;

fs::path published() {
    const char* place = std::getenv("VNIFC_PUBLISHED_RULES");
    return place ? fs::path(place) : fs::path(VNIFC_SCHEMAS "/../../shared/rules");
}

/// The rules of a release, and a use of its module.
class Published {
public:
    explicit Published(std::string_view release)
        : m_file(VN_SDAI::vnCreateFile(release)), m_text(published() / (std::string(release) + ".exp")) {}

    bool isHere() const { return m_file && fs::exists(m_text); }
    const VN_SDAI::VnIfcSchema& schema() const { return *m_file.model().schema(); }
    Rules rules() const { return Rules::load(m_text, schema()); }

private:
    VN_SDAI::VnIfcFile m_file;
    fs::path m_text;
};

TEST(PublishedRules, AreCompiledToTheLast) {
    const struct {
        const char* release;
        std::size_t entities, types, globals;
        const char* remarks; ///< what is wrong in the text
    } cases[] = {
        {"IFC4", 652, 25, 2, "'IFC4.IFCSWEPTDISCSOLID' 'IFC4.IFCTRANFORMERTYPE' "},
        {"IFC4X3_ADD2", 752, 25, 2,
         "'IFC4X3_ADD2.IFCCURVESEGMENT2D' 'IFC4X3_ADD2.IFCSWEPTDISCSOLID' "
         "'IFC4X3_ADD2.IfcGeometricRepresentationItem' 'IFC4X3_ADD2.IfcMappedItem' "},
    };
    std::size_t looked = 0;
    for (const auto& each : cases) {
        const Published published(each.release);
        if (!published.isHere())
            continue;
        ++looked;
        const Rules rules = published.rules();
        std::size_t counts[4] = {};
        for (const RuleInfo& rule : rules.rules()) {
            EXPECT_TRUE(rule.isCompiled) << rule.name;
            ++counts[static_cast<std::size_t>(rule.kind)];
        }
        EXPECT_EQ(counts[static_cast<std::size_t>(RuleKind::kEntity)], each.entities);
        EXPECT_EQ(counts[static_cast<std::size_t>(RuleKind::kType)], each.types);
        EXPECT_EQ(counts[static_cast<std::size_t>(RuleKind::kGlobal)], each.globals);
        std::string remarks;
        for (const VN_SDAI::VnIfcDiagnostic& remark : rules.remarks())
            remarks += remark.found + ' ';
        EXPECT_EQ(remarks, each.remarks);
    }
    if (looked == 0)
        GTEST_SKIP() << "the published texts are not here";
}

TEST(PublishedRules, OfAnotherReleaseAreRefused) {
    const Published ifc4("IFC4"), ifc4x3("IFC4X3_ADD2");
    if (!ifc4.isHere() || !ifc4x3.isHere())
        GTEST_SKIP() << "the published texts are not here";
    EXPECT_THROW(Rules::load(published() / "IFC4.exp", ifc4x3.schema()), RulesError);
    EXPECT_THROW(Rules::load(published() / "IFC4X3_ADD2.exp", ifc4.schema()), RulesError);
}

/// Files whose names begin with "pass-" or "fail-".
TEST(PublishedRules, GiveTheResultsThatFilesAreNamedBy) {
    if (!fs::exists(published() / "examples"))
        GTEST_SKIP() << "the files are not here";
    for (const auto& entry : fs::directory_iterator(published() / "examples")) {
        const VN_SDAI::VnIfcFile file = VN_SDAI::vnOpenFile(entry.path());
        if (!file)
            continue; // of a release that is not built
        const Published published(file.release()->name);
        ASSERT_TRUE(published.isHere());
        const std::string findings = findingsOf(published.rules(), file.model());
        EXPECT_EQ(findings.empty(), entry.path().filename().string().starts_with("pass-")) << entry.path() << '\n'
                                                                                           << findings;
    }
}

/// No file of others makes rules run over their limits; what is not evaluated is told of values that nobody knows.
TEST(PublishedRules, AreEvaluatedOnAllFilesOfOthers) {
    std::size_t looked = 0;
    for (const fs::path& path : readableCorpusFiles()) {
        const VN_SDAI::VnIfcFile file = VN_SDAI::vnOpenFile(path);
        if (!file || !fs::exists(published() / (std::string(file.release()->name) + ".exp")))
            continue;
        ++looked;
        const Rules rules = Published(file.release()->name).rules();
        rules.check(file.model(), [&](const VN_SDAI::VnIfcDiagnostic& each) {
            if (each.code == "rule-not-evaluated") {
                EXPECT_PRED_FORMAT2(testing::IsSubstring, "so that it is not known", each.found) << path << each.text();
            }
        });
    }
    if (looked == 0)
        GTEST_SKIP() << "the files or the texts are not here";
}

/// What the cases below refer to. It keeps all rules.
constexpr std::string_view kBase = R"(
#1001=IFCCARTESIANPOINT((0.,0.));
#1002=IFCCARTESIANPOINT((0.,0.,0.));
#1003=IFCDIRECTION((1.,0.));
#1004=IFCDIRECTION((0.,0.,1.));
#1005=IFCDIRECTION((1.,0.,0.));
#1006=IFCAXIS2PLACEMENT2D(#1001,$);
#1007=IFCAXIS2PLACEMENT3D(#1002,#1004,#1005);
#1008=IFCCIRCLE(#1006,1.);
#1009=IFCCIRCLE(#1007,1.);
#1010=IFCVECTOR(#1003,1.);
#1011=IFCVECTOR(#1005,1.);
#1012=IFCLINE(#1001,#1010);
#1014=IFCCIRCLEPROFILEDEF(.AREA.,$,#1006,1.);
#1015=IFCPLANE(#1007);
#1016=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);
#1018=IFCCARTESIANPOINT((1.,0.));
#1019=IFCCARTESIANPOINT((1.,1.));
#1020=IFCPOLYLINE((#1001,#1018,#1019));
#1021=IFCEXTRUDEDAREASOLID(#1014,#1007,#1004,1.);
#1022=IFCMATERIAL('m',$,$);
#1023=IFCVERTEXPOINT(#1001);
#1024=IFCVERTEXPOINT(#1018);
#1025=IFCEDGE(#1023,#1024);
#1026=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,$,#1007,$);
#1027=IFCHALFSPACESOLID(#1015,.F.);
#1028=IFCCOLOURRGB($,0.5,0.5,0.5);
)";

struct Case {
    const char* rule;
    const char* keeps;
    const char* breaks;
};

constexpr Case kCases[] = {
    // types, wherever their values stand
    {"IfcBoxAlignment.WR1", "#1=IFCTEXTLITERALWITHEXTENT('a',#1006,.LEFT.,#2,'center');\n#2=IFCPLANAREXTENT(1.,1.);",
     "#1=IFCTEXTLITERALWITHEXTENT('a',#1006,.LEFT.,#2,'centre');\n#2=IFCPLANAREXTENT(1.,1.);"},
    {"IfcPositiveLengthMeasure.WR1", "#1=IFCCIRCLE(#1006,2.);", "#1=IFCCIRCLE(#1006,0.);"},
    {"IfcPositiveInteger.WR1",
     "#1=IFCINDEXEDPOLYCURVE(#2,(IFCLINEINDEX((1,2))),$);\n#2=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,1.)),$);",
     "#1=IFCINDEXEDPOLYCURVE(#2,(IFCLINEINDEX((0,2))),$);\n#2=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,1.)),$);"},
    {"IfcNormalisedRatioMeasure.WR1", "#1=IFCCOLOURRGB($,0.,1.,0.5);", "#1=IFCCOLOURRGB($,0.,1.5,0.5);"},
    {"IfcCompoundPlaneAngleMeasure.MinutesInRange",
     "#1=IFCSITE('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$,(10,59,0),$,$,$,$);",
     "#1=IFCSITE('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$,(10,60,0),$,$,$,$);"},
    {"IfcCompoundPlaneAngleMeasure.ConsistentSign",
     "#1=IFCSITE('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$,(-10,-30,0),$,$,$,$);",
     "#1=IFCSITE('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$,(-10,30,0),$,$,$,$);"},
    {"IfcDayInMonthNumber.ValidRange", "#1=IFCRECURRENCEPATTERN(.MONTHLY_BY_DAY_OF_MONTH.,(1,31),$,$,$,$,$,$);",
     "#1=IFCRECURRENCEPATTERN(.MONTHLY_BY_DAY_OF_MONTH.,(1,32),$,$,$,$,$,$);"},
    {"IfcFontWeight.WR1", "#1=IFCTEXTSTYLEFONTMODEL('a',('b'),$,$,'700',IFCLENGTHMEASURE(1.));",
     "#1=IFCTEXTSTYLEFONTMODEL('a',('b'),$,$,'750',IFCLENGTHMEASURE(1.));"},
    {"IfcPHMeasure.WR21", "#1=IFCPROPERTYSINGLEVALUE('a',$,IFCPHMEASURE(7.),$);",
     "#1=IFCPROPERTYSINGLEVALUE('a',$,IFCPHMEASURE(15.),$);"},
    {"IfcPositiveRatioMeasure.WR1", "#1=IFCPROPERTYLISTVALUE('a',$,(IFCPOSITIVERATIOMEASURE(1.)),$);",
     "#1=IFCPROPERTYLISTVALUE('a',$,(IFCPOSITIVERATIOMEASURE(0.)),$);"},
    {"IfcDimensionCount.WR1", "#1=IFCGEOMETRICREPRESENTATIONCONTEXT($,$,2,$,#1007,$);",
     "#1=IFCGEOMETRICREPRESENTATIONCONTEXT($,$,4,$,#1007,$);"},
    // own values
    {"IfcActorRole.WR1", "#1=IFCACTORROLE(.USERDEFINED.,'x',$);", "#1=IFCACTORROLE(.USERDEFINED.,$,$);"},
    {"IfcActuator.CorrectPredefinedType", "#1=IFCACTUATOR('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,'x',$,$,$,.USERDEFINED.);",
     "#1=IFCACTUATOR('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,.USERDEFINED.);"},
    {"IfcAddress.WR1", "#1=IFCPOSTALADDRESS(.USERDEFINED.,$,'x',$,('a'),$,$,$,$,$);",
     "#1=IFCPOSTALADDRESS(.USERDEFINED.,$,$,$,('a'),$,$,$,$,$);"},
    {"IfcApproval.HasIdentifierOrName", "#1=IFCAPPROVAL($,'x',$,$,$,$,$,$,$);", "#1=IFCAPPROVAL($,$,$,$,$,$,$,$,$);"},
    {"IfcAxis2Placement3D.AxisAndRefDirProvision", "#1=IFCAXIS2PLACEMENT3D(#1002,$,$);",
     "#1=IFCAXIS2PLACEMENT3D(#1002,#1004,$);"},
    {"IfcBlobTexture.SupportedRasterFormat", "#1=IFCBLOBTEXTURE(.T.,.T.,$,$,$,'PNG',\"0AB\");",
     "#1=IFCBLOBTEXTURE(.T.,.T.,$,$,$,'TIF',\"0AB\");"},
    {"IfcBlobTexture.RasterCodeByteStream", "#1=IFCBLOBTEXTURE(.T.,.T.,$,$,$,'PNG',\"0AB\");",
     "#1=IFCBLOBTEXTURE(.T.,.T.,$,$,$,'PNG',\"0ABC\");"},
    {"IfcBooleanClippingResult.OperatorType", "#1=IFCBOOLEANCLIPPINGRESULT(.DIFFERENCE.,#1021,#1027);",
     "#1=IFCBOOLEANCLIPPINGRESULT(.UNION.,#1021,#1027);"},
    {"IfcBooleanClippingResult.SecondOperandType", "#1=IFCBOOLEANCLIPPINGRESULT(.DIFFERENCE.,#1021,#1027);",
     "#1=IFCBOOLEANCLIPPINGRESULT(.DIFFERENCE.,#1021,#1021);"},
    {"IfcBuildingElementProxy.HasObjectName", "#1=IFCBUILDINGELEMENTPROXY('2O2Fr$t4X7Zf8NOew3FNr1',$,'x',$,$,$,$,$,$);",
     "#1=IFCBUILDINGELEMENTPROXY('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);"},
    {"IfcCartesianPoint.CP2Dor3D", "#1=IFCCARTESIANPOINT((1.,2.));", "#1=IFCCARTESIANPOINT((1.));"},
    {"IfcIShapeProfileDef.ValidWebThickness", "#1=IFCISHAPEPROFILEDEF(.AREA.,$,$,1.,2.,0.1,0.1,$,$,$);",
     "#1=IFCISHAPEPROFILEDEF(.AREA.,$,$,1.,2.,1.5,0.1,$,$,$);"},
    {"IfcIShapeProfileDef.ValidFilletRadius", "#1=IFCISHAPEPROFILEDEF(.AREA.,$,$,1.,2.,0.1,0.1,0.45,$,$);",
     "#1=IFCISHAPEPROFILEDEF(.AREA.,$,$,1.,2.,0.1,0.1,0.46,$,$);"},
    {"IfcLShapeProfileDef.ValidThickness", "#1=IFCLSHAPEPROFILEDEF(.AREA.,$,$,2.,$,1.,$,$,$);",
     "#1=IFCLSHAPEPROFILEDEF(.AREA.,$,$,2.,$,3.,$,$,$);"},
    {"IfcMaterialLayer.NormalizedPriority", "#1=IFCMATERIALLAYER($,1.,$,$,$,$,100);",
     "#1=IFCMATERIALLAYER($,1.,$,$,$,$,101);"},
    {"IfcOwnerHistory.CorrectChangeAction", "#1=IFCOWNERHISTORY($,$,$,.ADDED.,5,$,$,1);",
     "#1=IFCOWNERHISTORY($,$,$,.ADDED.,$,$,$,1);"},
    {"IfcPropertySet.ExistsName",
     "#1=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FNr1',$,'x',$,(#2));\n"
     "#2=IFCPROPERTYSINGLEVALUE('a',$,$,$);",
     "#1=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,(#2));\n#2=IFCPROPERTYSINGLEVALUE('a',$,$,$);"},
    {"IfcQuantityLength.WR22", "#1=IFCQUANTITYLENGTH('a',$,$,0.,$);", "#1=IFCQUANTITYLENGTH('a',$,$,-1.,$);"},
    {"IfcVector.MagGreaterOrEqualZero", "#1=IFCVECTOR(#1003,0.);", "#1=IFCVECTOR(#1003,-1.);"},
    {"IfcPerson.IdentifiablePerson", "#1=IFCPERSON('x',$,$,$,$,$,$,$);", "#1=IFCPERSON($,$,$,$,$,$,$,$);"},
    {"IfcTypeObject.NameRequired", "#1=IFCTYPEOBJECT('2O2Fr$t4X7Zf8NOew3FNr1',$,'x',$,$,$);",
     "#1=IFCTYPEOBJECT('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$);"},
    {"IfcTelecomAddress.MinimumDataProvided", "#1=IFCTELECOMADDRESS($,$,$,('1'),$,$,$,$,$);",
     "#1=IFCTELECOMADDRESS($,$,$,$,$,$,$,$,$);"},
    {"IfcOrientedEdge.EdgeElementNotOriented", "#1=IFCORIENTEDEDGE(*,*,#1025,.T.);",
     "#1=IFCORIENTEDEDGE(*,*,#2,.T.);\n#2=IFCORIENTEDEDGE(*,*,#1025,.T.);"},
    // derived attributes
    {"IfcArbitraryClosedProfileDef.WR1", "#1=IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$,#1008);",
     "#1=IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$,#1009);"},
    {"IfcArbitraryClosedProfileDef.WR2", "#1=IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$,#1008);",
     "#1=IFCARBITRARYCLOSEDPROFILEDEF(.AREA.,$,#1012);"},
    {"IfcAxis1Placement.LocationIs3D", "#1=IFCAXIS1PLACEMENT(#1002,$);", "#1=IFCAXIS1PLACEMENT(#1001,$);"},
    {"IfcAxis2Placement2D.RefDirIs2D", "#1=IFCAXIS2PLACEMENT2D(#1001,#1003);", "#1=IFCAXIS2PLACEMENT2D(#1001,#1005);"},
    {"IfcLine.SameDim", "#1=IFCLINE(#1002,#1011);", "#1=IFCLINE(#1001,#1011);"},
    {"IfcPolyline.SameDim", "#1=IFCPOLYLINE((#1001,#1018));", "#1=IFCPOLYLINE((#1001,#1002));"},
    {"IfcRevolvedAreaSolid.AxisStartInXY",
     "#1=IFCREVOLVEDAREASOLID(#1014,#1007,#2,1.);\n#2=IFCAXIS1PLACEMENT(#1002,#1005);",
     "#1=IFCREVOLVEDAREASOLID(#1014,#1007,#2,1.);\n#2=IFCAXIS1PLACEMENT(#3,#1005);\n#3=IFCCARTESIANPOINT((0.,0.,1.));"},
    {"IfcRevolvedAreaSolid.AxisDirectionInXY",
     "#1=IFCREVOLVEDAREASOLID(#1014,#1007,#2,1.);\n#2=IFCAXIS1PLACEMENT(#1002,#1005);",
     "#1=IFCREVOLVEDAREASOLID(#1014,#1007,#2,1.);\n#2=IFCAXIS1PLACEMENT(#1002,#1004);"},
    {"IfcCompositeCurve.CurveContinuous",
     "#1=IFCCOMPOSITECURVE((#2),.F.);\n#2=IFCCOMPOSITECURVESEGMENT(.DISCONTINUOUS.,.T.,#1020);",
     "#1=IFCCOMPOSITECURVE((#2,#2),.F.);\n#2=IFCCOMPOSITECURVESEGMENT(.DISCONTINUOUS.,.T.,#1020);"},
    {"IfcGeometricRepresentationContext.North2D", "#1=IFCGEOMETRICREPRESENTATIONCONTEXT($,$,3,$,#1007,#1003);",
     "#1=IFCGEOMETRICREPRESENTATIONCONTEXT($,$,3,$,#1007,#1005);"},
    // functions
    {"IfcAxis2Placement3D.AxisToRefDirPosition", "#1=IFCAXIS2PLACEMENT3D(#1002,#1005,#1004);",
     "#1=IFCAXIS2PLACEMENT3D(#1002,#1004,#1004);"},
    {"IfcExtrudedAreaSolid.ValidExtrusionDirection", "#1=IFCEXTRUDEDAREASOLID(#1014,#1007,#1004,1.);",
     "#1=IFCEXTRUDEDAREASOLID(#1014,#1007,#1005,1.);"},
    {"IfcLocalPlacement.WR21", "#1=IFCLOCALPLACEMENT(#2,#1007);\n#2=IFCLOCALPLACEMENT($,#1007);",
     "#1=IFCLOCALPLACEMENT(#2,#1007);\n#2=IFCLOCALPLACEMENT($,#1006);"},
    {"IfcNamedUnit.WR1", "#1=IFCSIUNIT(*,.MASSUNIT.,.KILO.,.GRAM.);", "#1=IFCSIUNIT(*,.LENGTHUNIT.,$,.GRAM.);"},
    {"IfcIndexedPolyCurve.Consecutive",
     "#1=IFCINDEXEDPOLYCURVE(#2,(IFCLINEINDEX((1,2)),IFCARCINDEX((2,3,1))),$);\n"
     "#2=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,1.),(2.,0.)),$);",
     "#1=IFCINDEXEDPOLYCURVE(#2,(IFCLINEINDEX((1,2)),IFCLINEINDEX((3,1))),$);\n"
     "#2=IFCCARTESIANPOINTLIST2D(((0.,0.),(1.,1.),(2.,0.)),$);"},
    {"IfcBSplineCurveWithKnots.ConsistentBSpline",
     "#1=IFCBSPLINECURVEWITHKNOTS(1,(#1001,#1018),.UNSPECIFIED.,.F.,.F.,(2,2),(0.,1.),.UNSPECIFIED.);",
     "#1=IFCBSPLINECURVEWITHKNOTS(1,(#1001,#1018),.UNSPECIFIED.,.F.,.F.,(2,2),(1.,0.),.UNSPECIFIED.);"},
    {"IfcUnitAssignment.WR01", "#1=IFCUNITASSIGNMENT((#1016));",
     "#1=IFCUNITASSIGNMENT((#1016,#2));\n#2=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);"},
    {"IfcPropertySet.UniquePropertyNames",
     "#1=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FNr1',$,'x',$,(#2,#3));\n#2=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n"
     "#3=IFCPROPERTYSINGLEVALUE('b',$,$,$);",
     "#1=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FNr1',$,'x',$,(#2,#3));\n#2=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n"
     "#3=IFCPROPERTYSINGLEVALUE('a',$,IFCREAL(1.),$);"},
    {"IfcShapeRepresentation.CorrectItemsForType", "#1=IFCSHAPEREPRESENTATION(#1026,'Body','SweptSolid',(#1021));",
     "#1=IFCSHAPEREPRESENTATION(#1026,'Body','SweptSolid',(#1008));"},
    {"IfcEdgeLoop.IsContinuous",
     "#1=IFCEDGELOOP((#2,#3));\n#2=IFCORIENTEDEDGE(*,*,#1025,.T.);\n#3=IFCORIENTEDEDGE(*,*,#1025,.F.);",
     "#1=IFCEDGELOOP((#2,#3));\n#2=IFCORIENTEDEDGE(*,*,#1025,.T.);\n#3=IFCORIENTEDEDGE(*,*,#1025,.T.);"},
    // TYPEOF and algebra
    {"IfcTrimmedCurve.NoTrimOfBoundedCurves",
     "#1=IFCTRIMMEDCURVE(#1008,(IFCPARAMETERVALUE(0.)),(IFCPARAMETERVALUE(1.)),.T.,.PARAMETER.);",
     "#1=IFCTRIMMEDCURVE(#1020,(IFCPARAMETERVALUE(0.)),(IFCPARAMETERVALUE(1.)),.T.,.PARAMETER.);"},
    {"IfcTrimmedCurve.Trim1ValuesConsistent",
     "#1=IFCTRIMMEDCURVE(#1008,(IFCPARAMETERVALUE(0.),#1018),(IFCPARAMETERVALUE(1.)),.T.,.PARAMETER.);",
     "#1=IFCTRIMMEDCURVE(#1008,(IFCPARAMETERVALUE(0.),IFCPARAMETERVALUE(2.)),(IFCPARAMETERVALUE(1.)),.T.,.PARAMETER.)"
     ";"},
    {"IfcQuantityLength.WR21", "#1=IFCQUANTITYLENGTH('a',$,#1016,1.,$);",
     "#1=IFCQUANTITYLENGTH('a',$,#2,1.,$);\n#2=IFCSIUNIT(*,.MASSUNIT.,$,.GRAM.);"},
    {"IfcSurfaceStyle.MaxOneShading", "#1=IFCSURFACESTYLE($,.BOTH.,(#2));\n#2=IFCSURFACESTYLESHADING(#1028,0.);",
     "#1=IFCSURFACESTYLE($,.BOTH.,(#2,#3));\n#2=IFCSURFACESTYLESHADING(#1028,0.);\n#3=IFCSURFACESTYLESHADING(#1028,1.)"
     ";"},
    {"IfcFace.HasOuterBound",
     "#1=IFCFACE((#3,#4));\n#2=IFCPOLYLOOP((#1001,#1018,#1019));\n#3=IFCFACEOUTERBOUND(#2,.T.);\n#4=IFCFACEBOUND(#2,.T."
     ");",
     "#1=IFCFACE((#3,#4));\n#2=IFCPOLYLOOP((#1001,#1018,#1019));\n#3=IFCFACEOUTERBOUND(#2,.T.);\n"
     "#4=IFCFACEOUTERBOUND(#2,.T.);"},
    {"IfcDerivedUnit.WR1", "#1=IFCDERIVEDUNIT((#2),.AREADENSITYUNIT.,$,$);\n#2=IFCDERIVEDUNITELEMENT(#1016,2);",
     "#1=IFCDERIVEDUNIT((#2),.AREADENSITYUNIT.,$,$);\n#2=IFCDERIVEDUNITELEMENT(#1016,1);"},
    {"IfcRelAggregates.NoSelfReference",
     "#1=IFCRELAGGREGATES('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,#2,(#3));\n#2=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,$,$,$,$,$"
     ");"
     "\n#3=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr3',$,$,$,$,$,$,$,$);",
     "#1=IFCRELAGGREGATES('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,#2,(#2));\n#2=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,$,$,$,$,$"
     ");"},
    // inverse attributes
    {"IfcActuator.CorrectTypeAssigned",
     "#1=IFCACTUATOR('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);\n"
     "#2=IFCRELDEFINESBYTYPE('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,(#1),#3);\n"
     "#3=IFCACTUATORTYPE('2O2Fr$t4X7Zf8NOew3FNr3',$,'a',$,$,$,$,$,$,.ELECTRICACTUATOR.);",
     "#1=IFCACTUATOR('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);\n"
     "#2=IFCRELDEFINESBYTYPE('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,(#1),#3);\n"
     "#3=IFCPUMPTYPE('2O2Fr$t4X7Zf8NOew3FNr3',$,'a',$,$,$,$,$,$,.CIRCULATOR.);"},
    {"IfcBuiltElement.MaxOneMaterialAssociation",
     "#1=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);\n"
     "#2=IFCRELASSOCIATESMATERIAL('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,(#1),#1022);",
     "#1=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);\n"
     "#2=IFCRELASSOCIATESMATERIAL('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,(#1),#1022);\n"
     "#3=IFCRELASSOCIATESMATERIAL('2O2Fr$t4X7Zf8NOew3FNr3',$,$,$,(#1),#1022);"},
    {"IfcObject.UniquePropertySetNames",
     "#1=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);\n#9=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n"
     "#2=IFCRELDEFINESBYPROPERTIES('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,(#1),#4);\n"
     "#3=IFCRELDEFINESBYPROPERTIES('2O2Fr$t4X7Zf8NOew3FNr3',$,$,$,(#1),#5);\n"
     "#4=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FNr4',$,'x',$,(#9));\n"
     "#5=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FNr5',$,'y',$,(#9));",
     "#1=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);\n#9=IFCPROPERTYSINGLEVALUE('a',$,$,$);\n"
     "#2=IFCRELDEFINESBYPROPERTIES('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,(#1),#4);\n"
     "#3=IFCRELDEFINESBYPROPERTIES('2O2Fr$t4X7Zf8NOew3FNr3',$,$,$,(#1),#5);\n"
     "#4=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FNr4',$,'x',$,(#9));\n"
     "#5=IFCPROPERTYSET('2O2Fr$t4X7Zf8NOew3FNr5',$,'x',$,(#9));"},
    {"IfcFeatureElement.NotContained", "#1=IFCOPENINGELEMENT('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);",
     "#1=IFCOPENINGELEMENT('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,$,$,$);\n"
     "#2=IFCRELCONTAINEDINSPATIALSTRUCTURE('2O2Fr$t4X7Zf8NOew3FNr2',$,$,$,(#1),#3);\n"
     "#3=IFCBUILDINGSTOREY('2O2Fr$t4X7Zf8NOew3FNr3',$,$,$,$,$,$,$,$,$);"},
    {"IfcGridAxis.WR2",
     "#1=IFCGRIDAXIS('A',#1012,.T.);\n#2=IFCGRIDAXIS('B',#1012,.T.);\n"
     "#3=IFCGRID('2O2Fr$t4X7Zf8NOew3FNr3',$,$,$,$,$,$,(#1),(#2),$,$);",
     "#1=IFCGRIDAXIS('A',#1012,.T.);\n#3=IFCGRID('2O2Fr$t4X7Zf8NOew3FNr3',$,$,$,$,$,$,(#1),(#1),$,$);"},
    {"IfcProduct.PlacementForShapeRepresentation",
     "#1=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,#5,#2,$,$);\n#2=IFCPRODUCTDEFINITIONSHAPE($,$,(#3));\n"
     "#3=IFCSHAPEREPRESENTATION(#1026,'Body','SweptSolid',(#1021));\n#5=IFCLOCALPLACEMENT($,#1007);",
     "#1=IFCWALL('2O2Fr$t4X7Zf8NOew3FNr1',$,$,$,$,$,#2,$,$);\n#2=IFCPRODUCTDEFINITIONSHAPE($,$,(#3));\n"
     "#3=IFCSHAPEREPRESENTATION(#1026,'Body','SweptSolid',(#1021));"},
    // RULEs
    {"IfcSingleProjectInstance", "#1=IFCPROJECT('2O2Fr$t4X7Zf8NOew3FNr1',$,'x',$,$,$,$,$,$);",
     "#1=IFCPROJECT('2O2Fr$t4X7Zf8NOew3FNr1',$,'x',$,$,$,$,$,$);\n"
     "#2=IFCPROJECT('2O2Fr$t4X7Zf8NOew3FNr2',$,'x',$,$,$,$,$,$);"},
    {"IfcRepresentationContextSameWCS",
     "#1=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Plan',3,$,#2,$);\n"
     "#2=IFCAXIS2PLACEMENT3D(#1002,$,$);",
     "#1=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Plan',3,$,#2,$);\n#2=IFCAXIS2PLACEMENT3D(#3,$,$);\n"
     "#3=IFCCARTESIANPOINT((0.,0.,5.));"},
};
static_assert(std::size(kCases) >= 60);

TEST(PublishedRules, AreKeptByOneModelAndBrokenByAnother) {
    const Published published("IFC4X3_ADD2");
    if (!published.isHere())
        GTEST_SKIP() << "the published text is not here";
    const Rules rules = published.rules();
    for (const Case& each : kCases) {
        RulesCheckOptions options;
        options.only = {each.rule};
        for (const bool breaks : {false, true}) {
            VN_SDAI::VnIfcModel model(&published.schema());
            std::string losses;
            VN_SDAI::VnIfcReadOptions reading;
            reading.diagnostics = [&](const VN_SDAI::VnIfcDiagnostic& found) {
                if (found.severity > VN_SDAI::VnIfcDiagnostic::kInfo)
                    losses += found.text() + '\n';
            };
            ASSERT_TRUE(model.readText(
                fileOf("IFC4X3_ADD2", std::string(breaks ? each.breaks : each.keeps) + std::string(kBase)), reading));
            EXPECT_EQ(losses, "") << each.rule;
            RulesCheckResult result;
            const std::string findings = findingsOf(rules, model, options, &result);
            EXPECT_TRUE(result.unknown.empty()) << each.rule;
            std::uint64_t evaluated = 0, indeterminate = 0;
            for (const RuleCount& count : result.counts) {
                evaluated += count.evaluated;
                indeterminate += count.indeterminate;
            }
            EXPECT_GT(evaluated, 0u) << each.rule;
            EXPECT_EQ(indeterminate, 0u) << each.rule;
            EXPECT_EQ(result.violations > 0, breaks) << each.rule << '\n' << findings;
        }
    }
}

} // namespace

} // namespace vnifc::test
