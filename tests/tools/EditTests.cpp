#include "Process.h"

#include <gtest/gtest.h>

namespace vnifc::test {

namespace {

using testing::IsSubstring;

const char* const kInstances = "#1=IFCCARTESIANPOINT((0.,1.));\n"
                               "#2=IFCPROPERTYSINGLEVALUE('x',$,IFCLABEL('old'),$);\n"
                               "#3=IFCPROPERTYENUMERATEDVALUE('y',$,(IFCLABEL('a')),$);\n"
                               "#4=IFCTRIMMEDCURVE(#5,(#1),(IFCPARAMETERVALUE(1.)),.T.,.CARTESIAN.);\n"
                               "#5=IFCCIRCLE(#6,2.);\n"
                               "#6=IFCAXIS2PLACEMENT2D(#1,$);\n"
                               "#7=IFCTRIANGULATEDFACESET(#8,$,$,((1,2,3)),$);\n"
                               "#9=IFCWALL('3vB2YO$MX4xv5uCqZZG0aa',$,'W','d',$,$,$,$,.BRICK.);\n"
                               "#10=IFCSITE('3vB2YO$MX4xv5uCqZZG0ab',$,$,$,$,$,$,$,$,(1,2,3),$,$,$,$);\n"
                               "#11=IFCMATERIALLAYER($,0.2,.U.,$,$,$,5);\n"
                               "#12=IFCGARDENGNOME($);\n"
                               "#13=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n"
                               "#14=IFCBLOBTEXTURE(.T.,.T.,$,$,$,'PNG',\"0FF\");\n"
                               "#15=IFCREINFORCINGBAR('3vB2YO$MX4xv5uCqZZG0ac',$,$,$,$,$,$,$,$,12.,$,$,$,$);\n";

std::string lineOf(const std::string& file, const std::string& begin) {
    const std::size_t first = file.find(begin);
    return first == file.npos ? "" : file.substr(first, file.find('\n', first) - first);
}

TEST(Edit, ValuesAreTakenInEveryForm) {
    const std::string file = makeModel("edit.ifc", kInstances);
    const struct {
        const char* change;
        const char* line;
    } cases[] = {
        {"#1.Coordinates=(3,4.5)", "#1=IFCCARTESIANPOINT((3.,4.5));"},
        {"#1.coordinates=( 1.E3 , /* y */ -2. )", "#1=IFCCARTESIANPOINT((1000.,-2.));"},
        {"2.Name=It's \\ \xC3\xA4\xF0\x9F\x98\x80",
         "#2=IFCPROPERTYSINGLEVALUE('It''s \\\\ \\X2\\00E4\\X0\\\\X4\\0001F600\\X0\\',$,IFCLABEL('old'),$);"},
        {"#2.Name='a''b\\X\\E4'", "#2=IFCPROPERTYSINGLEVALUE('a''b\\X\\E4',$,IFCLABEL('old'),$);"},
        {"#2.Name=", "#2=IFCPROPERTYSINGLEVALUE('',$,IFCLABEL('old'),$);"},
        {"#2.Name='$'", "#2=IFCPROPERTYSINGLEVALUE('$',$,IFCLABEL('old'),$);"},
        {"#2.Name=a=b.c", "#2=IFCPROPERTYSINGLEVALUE('a=b.c',$,IFCLABEL('old'),$);"},
        {"#2.NominalValue=new (one)", "#2=IFCPROPERTYSINGLEVALUE('x',$,IFCLABEL('new (one)'),$);"},
        {"#2.NominalValue=ifcinteger(5)", "#2=IFCPROPERTYSINGLEVALUE('x',$,IFCINTEGER(5),$);"},
        {"#2.NominalValue=$", "#2=IFCPROPERTYSINGLEVALUE('x',$,$,$);"},
        {"#2.Unit=#13", "#2=IFCPROPERTYSINGLEVALUE('x',$,IFCLABEL('old'),#13);"},
        {"#3.EnumerationValues=(IFCLABEL('b'),IFCREAL(1))",
         "#3=IFCPROPERTYENUMERATEDVALUE('y',$,(IFCLABEL('b'),IFCREAL(1.)),$);"},
        {"#4.Trim1=(IFCPARAMETERVALUE(2.),#1)",
         "#4=IFCTRIMMEDCURVE(#5,(IFCPARAMETERVALUE(2.),#1),(IFCPARAMETERVALUE(1.)),.T.,.CARTESIAN.);"},
        {"#4.SenseAgreement=false", "#4=IFCTRIMMEDCURVE(#5,(#1),(IFCPARAMETERVALUE(1.)),.F.,.CARTESIAN.);"},
        {"#5.Radius=7", "#5=IFCCIRCLE(#6,7.);"},
        {"#7.Normals=((1.,2.,3.),(4,5,6))", "#7=IFCTRIANGULATEDFACESET(#8,((1.,2.,3.),(4.,5.,6.)),$,((1,2,3)),$);"},
        {"#9.PredefinedType=movable", "#9=IFCWALL('3vB2YO$MX4xv5uCqZZG0aa',$,'W','d',$,$,$,$,.MOVABLE.);"},
        {"#9.Tag=t", "#9=IFCWALL('3vB2YO$MX4xv5uCqZZG0aa',$,'W','d',$,$,$,'t',.BRICK.);"},
        {"3vB2YO$MX4xv5uCqZZG0aa.GlobalId=3vB2YO$MX4xv5uCqZZG0ad",
         "#9=IFCWALL('3vB2YO$MX4xv5uCqZZG0ad',$,'W','d',$,$,$,$,.BRICK.);"},
        {"#10.RefLatitude=()", "#10=IFCSITE('3vB2YO$MX4xv5uCqZZG0ab',$,$,$,$,$,$,$,$,$,$,$,$,$);"},
        {"#11.IsVentilated=T", "#11=IFCMATERIALLAYER($,0.2,.T.,$,$,$,5);"},
        {"#11.IsVentilated=True", "#11=IFCMATERIALLAYER($,0.2,.T.,$,$,$,5);"},
        {"#11.IsVentilated=FALSE", "#11=IFCMATERIALLAYER($,0.2,.F.,$,$,$,5);"},
        {"#11.IsVentilated=unknown", "#11=IFCMATERIALLAYER($,0.2,.U.,$,$,$,5);"},
        {"#11.Priority=-3", "#11=IFCMATERIALLAYER($,0.2,.U.,$,$,$,-3);"},
        {"#11.Material=#12", "#11=IFCMATERIALLAYER(#12,0.2,.U.,$,$,$,5);"},
    };
    for (const auto& [change, line] : cases) {
        const Outcome outcome = runTool({"edit", "--quiet", file, "-", "--set", change});
        EXPECT_EQ(outcome.exitCode, 0) << change << outcome.err;
        const std::string before(line, std::string_view(line).find('=') + 1);
        EXPECT_EQ(lineOf(outcome.out, before), line) << change;
        // Nothing else has changed.
        std::string restored = outcome.out;
        restored.replace(restored.find(line), std::string_view(line).size(), lineOf(contents(file), before));
        EXPECT_EQ(restored, contents(file)) << change;
    }
}

TEST(Edit, SeveralChangesAtOnceMayReplaceTheFile) {
    const std::string file = makeModel("self.ifc", kInstances);
    EXPECT_EQ(runTool({"edit", "--quiet", file, file, "--set", "#9.Name=A", "--unset", "#9.Description", "--set",
                       "#5.Radius=1"})
                  .exitCode,
              0);
    EXPECT_EQ(lineOf(contents(file), "#9="), "#9=IFCWALL('3vB2YO$MX4xv5uCqZZG0aa',$,'A',$,$,$,$,$,.BRICK.);");
    EXPECT_EQ(lineOf(contents(file), "#5="), "#5=IFCCIRCLE(#6,1.);");
}

TEST(Edit, FilesWithErrorsAreWrittenAndSaidToHaveThem) {
    const std::string file = makeModel("faulty.ifc", "#1=IFCCIRCLE($,1.);\n#2=IFCFOO(1\n#3=IFCPERSON('p',$);\n");
    const Outcome outcome = runTool({"edit", file, "-", "--set", "#1.Radius=2", "--set", "#3.FamilyName=x"});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_PRED_FORMAT2(IsSubstring, "#1=IFCCIRCLE($,2.);\n#2=IFCFOO(1);\n#3=IFCPERSON('p','x');\n", outcome.out);
    EXPECT_PRED_FORMAT2(IsSubstring, "[no-semicolon]", outcome.err);
    const std::string badId = makeModel("bad.ifc", "#1=IFCWALL('no',$,'W',$,$,$,$,$,$);\n");
    EXPECT_EQ(runTool({"edit", badId, "-", "--set", "#1.Name=x"}).err, "") << "nobody touched the identifier";
    // A malformed identifier is taken, and said.
    for (const bool quiet : {false, true}) {
        std::vector<std::string> arguments{"edit", makeModel("id.ifc", kInstances), "-", "--set", "#9.GlobalId=no"};
        if (quiet)
            arguments.emplace_back("--quiet");
        const Outcome id = runTool(arguments);
        EXPECT_EQ(id.exitCode, 0);
        EXPECT_PRED_FORMAT2(IsSubstring, "#9=IFCWALL('no',", id.out);
        EXPECT_EQ(id.err.find("#9 IFCWALL.GlobalId is no globally unique identifier: no") == id.err.npos, quiet);
    }
}

TEST(Edit, RefusesWhatDoesNotConvertAndWritesNothing) {
    const std::string file = makeModel("refuse.ifc", kInstances);
    const std::filesystem::path target = scratch() / "refused.ifc";
    const struct {
        const char* change;
        const char* message;
    } cases[] = {
        {"#1.Coordinates=(3,a)",
         "#1 IFCCARTESIANPOINT.Coordinates: expected a value of list [1:3] of IfcLengthMeasure, found (3,a)"},
        {"#1.Coordinates=(3,4", "#1 IFCCARTESIANPOINT.Coordinates: expected "},
        {"#1.Coordinates=(3,4))", "#1 IFCCARTESIANPOINT.Coordinates: expected one value of "},
        {"#2.Name='it's'", "expected one value of IfcIdentifier"},
        {"#2.NominalValue=IFCWALL(1)", "expected a type of IfcValue"},
        {"#2.Unit=#9", "IfcUnit cannot refer to #9 IFCWALL, found #9"},
        {"#3.EnumerationValues=(3)", "such as IFCLABEL('text') or #1, found (3)"},
        {"#4.Trim1=(#9)", "cannot refer to #9 IFCWALL"},
        {"#5.Radius=1,5", "#5 IFCCIRCLE.Radius: expected one value of IfcPositiveLengthMeasure, found 1,5"},
        {"#5.Radius=", "#5 IFCCIRCLE.Radius: expected "},
        {"#1.Coordinates=", "#1 IFCCARTESIANPOINT.Coordinates: expected "},
        {"#5.Radius=/*", "#5 IFCCIRCLE.Radius: expected "},
        {"#5.Radius=1.E999", "expected a value in the range of "},
        {"#6.Location=#9", "IFCPOINT cannot refer to #9 IFCWALL"},
        {"#6.Location=#77", "there is no instance #77"},
        {"#6.Location=1", "#6 IFCAXIS2PLACEMENT2D.Location: expected a value of IFCPOINT, found 1"},
        {"#9.PredefinedType=brick", "expected one of ELEMENTEDWALL, MOVABLE, "},
        {"#11.Priority=2147483647", "expected a value in the range of IfcInteger"},
        {"#11.IsVentilated=maybe", "expected a value of IfcLogical"},
        {"#12.Name=x", "IFCGARDENGNOME has no attribute \"Name\""},
        {"#13.Dimensions=#1", "#13 IFCSIUNIT.Dimensions is derived"},
        {"#14.RasterCode=\"1\"", "values of BINARY are kept as text and cannot be changed"},
        {"#9.Nonsense=1", "IFCWALL has no attribute \"Nonsense\""},
        {"#9.IsTypedBy=#1", "IFCWALL has no attribute \"IsTypedBy\""},
        {"#99.Name=x", "there is no instance #99"},
        {"#9.Name", "expected #ID.NAME=VALUE, found #9.Name"},
        {"#9=x", "IFCWALL has no attribute \"\""},
    };
    for (const auto& [change, message] : cases) {
        const Outcome outcome =
            runTool({"edit", "--quiet", file, target.string(), "--set", "#10.Name=ok", "--set", change});
        EXPECT_EQ(outcome.exitCode, 2) << change;
        EXPECT_PRED_FORMAT2(IsSubstring, message, outcome.err);
        EXPECT_TRUE(outcome.err.ends_with("vnifc: a change cannot be made; nothing was written\n")) << outcome.err;
    }
    // One attribute's text may hold what belongs to another one.
    const std::string unclear = makeModel("unclear.ifc", "#1=IFCOWNERHISTORY($,$,$,.NOCHANGE.,253317$,$,$,16);\n"
                                                         "#2=IFCPERSON('open,$,$);\n#3=IFCPERSON($,$,$,('a',$;\n"
                                                         "#4=IFCPERSON($,$,$,$,$,$,$,$,'x');\n#5=IFCPERSON($) $,$);\n");
    for (const char* change :
         {"#1.CreationDate=16", "#2.FamilyName=x", "#3.PrefixTitles=('x')", "#4.FamilyName=x", "#5.FamilyName=x"}) {
        const Outcome outcome = runTool({"edit", "--quiet", unclear, target.string(), "--set", change});
        EXPECT_EQ(outcome.exitCode, 2) << change;
        EXPECT_PRED_FORMAT2(IsSubstring, "parameter list is broken or too long", outcome.err);
    }
    const Outcome twice =
        runTool({"edit", "--quiet", file, target.string(), "--set", "#9.Name=a", "--unset", "9.NAME"});
    EXPECT_PRED_FORMAT2(IsSubstring, "#9 IFCWALL.Name is to be changed twice", twice.err);
    EXPECT_FALSE(std::filesystem::exists(target));
}

} // namespace

} // namespace vnifc::test
