// What does not fit its attribute: unset in memory, and written back as it came until somebody changes it.
#include "Support.h"

#include <IFC4X3/IfcCartesianPoint.h>
#include <IFC4X3/IfcMaterialLayer.h>
#include <IFC4X3/IfcOwnerHistory.h>
#include <IFC4X3/IfcPerson.h>
#include <IFC4X3/IfcPropertySingleValue.h>
#include <IFC4X3/IfcRelAggregates.h>
#include <IFC4X3/IfcSIUnit.h>
#include <IFC4X3/IfcWall.h>
#include <VnIfcCore/VnIfcVariant.h>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;

TEST(Kept, ParametersComeBackAsTheyWere) {
    const struct {
        const char* instance;
        const char* codes;
        const char* written = nullptr; ///< as it came unless given
    } cases[] = {
        // wrong kinds
        {"IFCMATERIALLAYER(1,'x',.A.,#9,5.,(1),IFCLABEL('x'))",
         "wrong-kind wrong-kind wrong-kind wrong-kind wrong-kind "
         "wrong-kind wrong-kind"},
        {"IFCMATERIALLAYER($,IFCNONNEGATIVELENGTHMEASURE(300.),.SINGLE_SWING.,$,$,$,7.0)",
         "wrong-kind wrong-kind wrong-kind"},
        {"IFCMATERIALLAYER(*,*,*,*,*,*,*)",
         "wrong-kind wrong-kind wrong-kind wrong-kind wrong-kind wrong-kind wrong-kind"},
        {"IFCMATERIALLAYER(IFCMATERIAL('m'),1.5.2,.T,x'a',\"0F\",.X.,0x10)",
         "wrong-kind wrong-kind wrong-kind wrong-kind wrong-kind wrong-kind wrong-kind"},
        {"IFCFACEBOUND(.U.,.U.)", "wrong-kind wrong-kind"},
        {"IFCINDEXEDPOLYCURVE(#1,(IFCLINEINDEX(2))-IFCFOO.+,.F.)",
         "bare-list missing-comma wrong-kind too-many-parameters",
         "IFCINDEXEDPOLYCURVE(#1,(IFCLINEINDEX(2)),-IFCFOO.+,.F.)"},
        // numbers that no double and no integer holds, and values that mean unset
        {"IFCMATERIALLAYER($,1.E400,$,'\xFF',$,$,2147483647)", "out-of-range reserved-value reserved-value"},
        {"IFCMATERIALLAYER($,1.#INF,$,$,$,$,99999999999)", "wrong-kind out-of-range"},
        {"IFCPERSON(\"0FF\",'b',$,$,$,$,$,$)", "wrong-kind"},
        {"IFCMATERIALLAYER($,1.E,$,$,$,$,$)", "wrong-kind"},
        {"IFCCARTESIANPOINT((1.,1.5E+))", "wrong-kind"},
        {"IFCCARTESIANPOINT((1.,1.E999))", "out-of-range"},
        {"IFCDERIVEDUNIT((),.USERDEFINED.,'\xFF')", "reserved-value"},
        {"IFCPERSON('\xFF',$,$,('\xFF','b'),$,$,$,$)", "reserved-value reserved-value"},
        // enumerations
        {"IFCWALL('',$,$,$,$,$,$,$,.WAVY.)", "unknown-literal"},
        {"IFCWALL('',$,$,$,$,$,$,$,'SOLIDWALL')", "wrong-kind"},
        {"IFCWALL('',$,$,$,$,$,$,$,IFCWALLTYPEENUM(.SOLIDWALL.))", "wrong-kind"},
        {"IFCWALL('',$,$,$,$,$,$,$,..)", "wrong-kind"},
        // selects
        {"IFCPROPERTYSINGLEVALUE('',$,IFCLABEL($),$)", "wrong-kind"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCLABEL(),IFCCOMPLEXNUMBER($))", "wrong-kind unknown-select-type"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCCOMPLEXNUMBER($),$)", "wrong-kind"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCPOSITIVEFLOAT(1.),IFCLABEL('m'))", "unknown-select-type unknown-select-type"},
        {"IFCPROPERTYSINGLEVALUE('',$,0.5,.METRE.)", "wrong-kind wrong-kind"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCINTEGER(3000000000),$)", "out-of-range"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCINTEGER(1.5),$)", "wrong-kind"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCBINARY(\"0-F\"),$)", "wrong-kind"},
        {"IFCPIXELTEXTURE(.T.,.T.,$,$,$,1,1,3,(\"0FF,\"1\"))", "wrong-kind"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCBOOLEAN(.U.),$)", "wrong-kind"},
        {"IFCPROPERTYENUMERATEDVALUE('',$,(IFCLOGICAL(.U.),IFCBOOLEAN(.U.)),$)", "wrong-kind"},
        {"IFCTRIANGULATEDFACESET(#1,$,$,((1,2,4294967299)),$)", "out-of-range"},
        {"IFCTRIANGULATEDFACESET(#1,$,$,((1,2,2147483647)),$)", "reserved-value"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCREAL(1.,2.),$)", "wrong-kind"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCLABEL(IFCLABEL('x')),$)", "wrong-kind"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCLABEL('\xFF'),$)", "reserved-value"},
        {"IFCPROPERTYSINGLEVALUE('',$,IFCCOMPLEXNUMBER((1.,'x')),$)", "wrong-kind"},
        {"IFCPROPERTYENUMERATEDVALUE('',$,(IFCLABEL('a'),IFCFOO(1.)),$)", "unknown-select-type"},
        {"IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NOT_EXISTING_ENUM.)))", "unknown-literal"},
        {"IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE(.NULL.),IFCNULLSTYLE($)))", "unknown-literal"},
        {"IFCPRESENTATIONSTYLEASSIGNMENT((IFCNULLSTYLE()))", "unknown-literal"},
        // aggregates
        {"IFCCARTESIANPOINT((1.,'x',3.))", "wrong-kind"},
        {"IFCCARTESIANPOINT((x,2.,3.))", "wrong-kind"},
        {"IFCCARTESIANPOINT((1.,,3.))", "wrong-kind"},
        {"IFCCARTESIANPOINT((1. 2.))", "wrong-kind"},
        {"IFCCARTESIANPOINT(('a'))", "wrong-kind"},
        {"IFCCARTESIANPOINT('text')", "wrong-kind"},
        {"IFCCARTESIANPOINT(((1.,2.)))", "wrong-kind"},
        {"IFCPERSON($,$,$,'middle',$,$,#9,$)", "wrong-kind dangling-reference wrong-kind"},
        {"IFCCARTESIANPOINTLIST3D((1.,2.,3.),$)", "wrong-kind"},
        {"IFCCARTESIANPOINTLIST3D((('a'),(1.)),$)", "wrong-kind"},
        {"IFCPIXELTEXTURE(.T.,.T.,$,$,$,1,1,3,('0FF'))", "wrong-kind"},
        {"IFCPERSON($,$,$,(\"0FF\"),$,$,$,$)", "wrong-kind"},
        {"IFCCARTESIANPOINT(1.5)", "bare-list"},
        {"IFCRELAGGREGATES('',$,$,$,$,#9)", "dangling-reference bare-list"},
        {"IFCRELAGGREGATES('',$,$,$,$,(#1,#9,#1))", "equal-elements dangling-reference"},
        {"IFCRELDEFINESBYPROPERTIES('',$,$,$,(),IFCPROPERTYSETDEFINITIONSET((#1,#1)))", "equal-elements"},
        // derived positions, binary values
        {"IFCSIUNIT($,.LENGTHUNIT.,$,.METRE.)", "not-derived"},
        {"IFCSIUNIT(#9,.LENGTHUNIT.,$,.METRE.)", "not-derived"},
        {"IFCORIENTEDEDGE($,#9,$,.T.)", "not-derived not-derived"},
        {"IFCBLOBTEXTURE(.T.,.T.,$,$,$,'PNG',\"0AF\")", "binary"},
        {"IFCBLOBTEXTURE(.T.,.T.,$,$,$,'PNG',$)", "", "IFCBLOBTEXTURE(.T.,.T.,$,$,$,'PNG',\"\")"},
        // too few, too many, none
        {"IFCPERSON()", "too-few-parameters"},
        {"IFCPERSON('a',$)", "too-few-parameters"},
        {"IFCRELAGGREGATES('',$,$,$)", "too-few-parameters"},
        {"IFCBLOBTEXTURE(.T.)", "too-few-parameters"},
        {"IFCORIENTEDEDGE()", "too-few-parameters"},
        {"IFCPERSON($,$,$,$,$,$,$,$,$)", "too-many-parameters"},
        {"IFCPERSON($,$,$,$,$,$,$,$,'x',(1,2),#9,IFCFOO('a'))", "too-many-parameters dangling-reference"},
        {"IFCPERSON($,$,$,$,$,$,$,$,)", "too-many-parameters"},
        {"IFCPERSON($,$,$,$,$,$,$,$,,)", "too-many-parameters"},
        {"IFCPERSON(,$,,$,,$,$,)", "malformed malformed malformed malformed"},
        {"IFCREPRESENTATIONITEM()", ""},
        {"IFCREPRESENTATIONITEM(1,'a')", "too-many-parameters"},
        {"IFCGEOMETRICREPRESENTATIONSUBCONTEXT('a','b',*,*,*,*)", "too-few-parameters"},
        // commas that were forgotten
        {"IFCMATERIALLAYER($$,$,$$$,$)", "missing-comma missing-comma missing-comma",
         "IFCMATERIALLAYER($,$,$,$,$,$,$)"},
        {"IFCMATERIALLAYER(#9$,$'a''b'$,5)",
         "dangling-reference missing-comma missing-comma missing-comma wrong-kind too-few-parameters",
         "IFCMATERIALLAYER(#9,$,$,'a''b',$,5)"},
        {"IFCOWNERHISTORY($,$,$,.NOCHANGE.,253317$,$,$,1674672040)", "missing-comma too-many-parameters",
         "IFCOWNERHISTORY($,$,$,.NOCHANGE.,253317,$,$,$,1674672040)"},
        {"IFCRELAGGREGATES('',$,$,$,#1,$ 5)", "too-many-parameters", "IFCRELAGGREGATES('',$,$,$,#1,$,5)"},
        {"IFCFACEBOUND($,.T. 5)", "too-many-parameters", "IFCFACEBOUND($,.T.,5)"},
        // a GlobalId that the fixed text cannot hold
        {"IFCWALL('12345678901234567890123',$,$,$,$,$,$,$,$)", "out-of-range"},
        // instances without a class
        {"IFCRAILWAYPART('a',1.50,(#9,.X.),$,*,IFCLABEL( 'x' ))", "unknown-keyword dangling-reference"},
        {"!MYENTITY('a')", "unknown-keyword"},
        {"ifc_foo(/* ) */ 1,\n2)", "unknown-keyword"},
        {"(IFCLENGTHUNIT()IFCSIUNIT(.MILLI.,.METRE.))", "complex-instance"},
        {"()", "complex-instance"},
        {"IFCFOO", "no-keyword"},
        {"IFCFOOENDSEC", "no-keyword"},
        {"", "no-keyword"},
        {"'text'", "no-keyword"},
        {"&SCOPE #2=IFCWALL(); ENDSCOPE /#2/ IFCFOO(#2)", "scope no-keyword"},
        {"&SCOPE ENDSCOPE IFCFOO()", "scope no-keyword"},
        {"&SCOPE #2=&SCOPE #3=IFCWALL(';'); ENDSCOPE IFCFOO(); #4=&SCOPE ENDSCOPE IFCFOO(); ENDSCOPE IFCFOO()",
         "scope no-keyword"},
    };
    for (const auto& test : cases) {
        const std::string data = "#1=" + std::string(test.instance) + ";\n";
        Reading reading(fileOf(data));
        EXPECT_EQ(reading.codes(), test.codes) << data << reading.texts();
        const std::string expected = test.written ? "#1=" + std::string(test.written) + ";\n" : data;
        EXPECT_EQ(reading.data(), expected);
        EXPECT_EQ(rewritten(expected), expected) << "the second time";
    }
    const std::string withNul = "#1=IFCWALL('a" + std::string(1, '\0') + "b',$,$,$,$,$,$,$,$);\n";
    EXPECT_EQ(rewritten(withNul), withNul) << "a NUL would end the GlobalId in memory";
}

TEST(Kept, ValuesAreUnsetInMemoryAndListsHoldWhatWasReadBeforeTheFault) {
    Reading reading(fileOf("#1=IFCMATERIALLAYER('x','x','x',5,$$,2147483647);\n#2=IFCCARTESIANPOINT((x,2.,'a',4.));\n"
                           "#3=IFCCARTESIANPOINT(7.5);\n#4=IFCWALL(5,$,$,$,$,$,$,$,.WAVY.);\n#5=IFCPERSON('p');\n"
                           "#6=IFCPROPERTYSINGLEVALUE('',$,IFCFOO(1.),IFCLABEL($));\n"));
    const auto& own = reading.as<IfcMaterialLayer>(1);
    EXPECT_TRUE(own.getMaterial().isNull());
    EXPECT_NE(own.getLayerThickness(), own.getLayerThickness());
    EXPECT_TRUE(own.getIsVentilated().isUnset() && own.getName().isUnset() && own.getCategory().isUnset());
    const auto& cut = reading.as<IfcCartesianPoint>(2).getCoordinates();
    ASSERT_EQ(cut.count(), 2u);
    EXPECT_EQ(cut[0], 0.) << "a first element that is no number reads as 0";
    EXPECT_EQ(cut[1], 2.);
    const auto& bare = reading.as<IfcCartesianPoint>(3).getCoordinates();
    ASSERT_EQ(bare.count(), 1u);
    EXPECT_EQ(bare[0], 7.5);
    EXPECT_TRUE(reading.as<IfcWall>(4).getGlobalId().isUnset());
    EXPECT_TRUE(reading.as<IfcWall>(4).getPredefinedType().isUnset());
    EXPECT_TRUE(reading.as<IfcPerson>(5).getFamilyName().isUnset());
    EXPECT_FALSE(reading.as<IfcPropertySingleValue>(6).getNominalValue().isSet());
}

TEST(Kept, TextGivesWayToTheFirstChangeOfItsAttributeAndToNoOther) {
    Reading reading(fileOf("#1=IFCMATERIALLAYER('m','t',5,6,7,8,'p',9);\n"));
    auto& own = reading.as<IfcMaterialLayer>(1);
    own.setLayerThickness(0.25);
    EXPECT_EQ(reading.data(), "#1=IFCMATERIALLAYER('m',0.25,5,6,7,8,'p',9);\n");
    own.setLayerThickness(Consts::VnRealUnset);
    EXPECT_EQ(reading.data(), "#1=IFCMATERIALLAYER('m',$,5,6,7,8,'p',9);\n") << "the old text must not come back";
    own.unsetAttr("Name");
    own.setIsVentilated(own.getIsVentilated());
    own.setPriority(Consts::VnIntUnset);
    EXPECT_EQ(reading.data(), "#1=IFCMATERIALLAYER('m',$,$,$,7,8,$,9);\n");
    own.unsetAttr("material");
    own.setDescription("d");
    EXPECT_TRUE(own.putAttr("Category", VnIfcVariant(VnAnsiString(""))));
    EXPECT_EQ(reading.data(), "#1=IFCMATERIALLAYER($,$,$,$,'d','',$,9);\n") << "the surplus stays";
}

TEST(Kept, AbsentParametersStayAbsentUntilTheyAreSet) {
    Reading reading(fileOf("#1=IFCPERSON('p',$);\n#2=IFCPERSON('q');\n"));
    auto& first = reading.as<IfcPerson>(1);
    first.setIdentification("i");
    EXPECT_EQ(reading.data(), "#1=IFCPERSON('i',$);\n#2=IFCPERSON('q');\n");
    first.setMiddleNames({VnAnsiString("m")});
    reading.as<IfcPerson>(2).unsetAttr("GivenName");
    EXPECT_EQ(reading.data(), "#1=IFCPERSON('i',$,$,('m'));\n#2=IFCPERSON('q',$,$);\n");
}

TEST(Kept, TextBesideAnAggregateASelectAndADerivedPosition) {
    Reading reading(fileOf("#1=IFCSIUNIT($,.LENGTHUNIT.,.HUGE.,.METRE.);\n#2=IFCCARTESIANPOINT((1.,'x'));\n"
                           "#3=IFCPROPERTYSINGLEVALUE('',$,IFCFOO(1.),$);\n#4=IFCCARTESIANPOINT(5.);\n"));
    reading.as<IfcSIUnit>(1).setPrefix(kIfcSIPrefix_MILLI);
    reading.as<IfcCartesianPoint>(2).setCoordinates({1.});
    IfcValue value;
    value.setIfcReal(2);
    reading.as<IfcPropertySingleValue>(3).setNominalValue(value);
    reading.as<IfcCartesianPoint>(4).setCoordinates({5.});
    EXPECT_EQ(reading.data(), "#1=IFCSIUNIT($,.LENGTHUNIT.,.MILLI.,.METRE.);\n#2=IFCCARTESIANPOINT((1.));\n"
                              "#3=IFCPROPERTYSINGLEVALUE('',$,IFCREAL(2.),$);\n#4=IFCCARTESIANPOINT((5.));\n");
}

TEST(Kept, BrokenTextIsClosedSoThatItEndsWhereItsInstanceEnds) {
    const struct {
        std::string_view data;
        std::string_view written;
        const char* codes;
    } cases[] = {
        {"#1=IFCPERSON('open,$,$);\n#2=IFCWALL();\n", "#1=IFCPERSON('open,$,$);');\n#2=IFCWALL();\n",
         "open-string wrong-kind too-few-parameters unclosed-list too-few-parameters"},
        {"#1=IFCPERSON('open\\S\\\n#2=IFCFOO('a');\n", "#1=IFCPERSON('open\\S\\'');\n#2=IFCFOO('a');\n",
         "open-string wrong-kind too-few-parameters unclosed-list unknown-keyword"},
        {"#1=IFCFOO('open,(1,2;\n#2=IFCPERSON('a',$,$,$,$,$,$,$);\n",
         "#1=IFCFOO('open,(1,2;');\n#2=IFCPERSON('a',$,$,$,$,$,$,$);\n", "unknown-keyword open-string unclosed-list"},
        {"#2=IFCFOO((1,(2;\n#3=IFCPERSON($,$,$,('a',$;\n", "#2=IFCFOO((1,(2)));\n#3=IFCPERSON($,$,$,('a',$));\n",
         "unknown-keyword unclosed-list wrong-kind too-few-parameters unclosed-list"},
        {"#5=IFCPERSON('last,$;\n", "#5=IFCPERSON('last,$;');\n",
         "open-string wrong-kind too-few-parameters unclosed-list"},
        {"#1=IFCFOO(1) /* ) */ 2;\n", "#1=IFCFOO(1);\n", "unknown-keyword behind-list"},
        {"#1=IFCPERSON($) $,$) /* ) */;\n", "#1=IFCPERSON($);\n", "too-few-parameters behind-list"},
        {"#1=IFCFOO(1)\n#2=IFCPERSON($)\n", "#1=IFCFOO(1);\n#2=IFCPERSON($);\n",
         "unknown-keyword no-semicolon too-few-parameters no-semicolon"},
        {"#1=\n#2= #3=IFCPERSON($,$,$,$,$,$,$,$);\n", "#1=;\n#2=;\n#3=IFCPERSON($,$,$,$,$,$,$,$);\n",
         "no-semicolon no-keyword no-semicolon no-keyword"},
        {"#1=IFCFOO(1,/* open );\n#2=IFCPERSON($,$,$,$,$,$,$,/* $);\n",
         "#1=IFCFOO(1,/* open )*/);\n#2=IFCPERSON($,$,$,$,$,$,$,);\n",
         "unknown-keyword open-comment unclosed-list too-few-parameters unclosed-list"},
        {"#1=&SCOPE #2=IFCPERSON($,$,$,$,$,$,$,$);\n", "#1=&SCOPE;\n#2=IFCPERSON($,$,$,$,$,$,$,$);\n",
         "scope no-keyword no-semicolon"},
    };
    for (const auto& test : cases) {
        Reading reading(fileOf(test.data));
        EXPECT_EQ(reading.codes(), test.codes) << test.data << reading.texts();
        EXPECT_EQ(reading.data(), test.written) << test.data;
        EXPECT_EQ(rewritten(reading.data()), reading.data()) << "the second time";
    }
}

TEST(Kept, NumbersThatAreTakenOrDoNotFitGetOnesThatNobodyRefersTo) {
    // #8 stands nowhere, but is referred to: a second #1 under that number would become what #3 refers to.
    Reading reading(
        fileOf("#1=IFCWALL('first',$,$,$,$,$,$,$,$);\n#1=IFCWALL('second',$,$,$,$,$,$,$,$);\n"
               "#3=IFCRELAGGREGATES('',$,$,$,#1,(#8));\n#99999999999999999999=IFCFOO(#9);\n#0=IFCFOO(1);\n"));
    EXPECT_EQ(reading.codes(),
              "duplicate-id dangling-reference instance-number unknown-keyword dangling-reference instance-number "
              "unknown-keyword");
    EXPECT_EQ(reading.data(), "#1=IFCWALL('first',$,$,$,$,$,$,$,$);\n#3=IFCRELAGGREGATES('',$,$,$,#1,(#8));\n"
                              "#10=IFCWALL('second',$,$,$,$,$,$,$,$);\n#11=IFCFOO(#9);\n#12=IFCFOO(1);\n");
    EXPECT_FALSE(reading.as<IfcRelAggregates>(3).getRelatedObjects()[0].openObject());
    EXPECT_EQ(reading.as<IfcRelAggregates>(3).getRelatedObjects()[0].number(), 8u);
}

TEST(Kept, ANewInstanceTakesNoNumberThatIsReferredTo) {
    Reading reading(fileOf("#1=IFCFACEBOUND(#7,.T.);\n#18446744073709551615=IFCFACEBOUND(#2,.T.);\n"));
    EXPECT_EQ(reading.model.create("IfcWall").number(), 3u);
    EXPECT_EQ(reading.model.find(18446744073709551615u).number(), 18446744073709551615u);
    for (const char* kept : {"IFCFACEBOUND(#7,.T.)", "IFCFOO('#9',((#7)) /* #9 */)", "(A(#7)B())",
                             "IFCFACEBOUND($,.T.,#7)", "&SCOPE #7=IFCFOO(); ENDSCOPE IFCFOO()"}) {
        Reading small(fileOf("#1=" + std::string(kept) + ";\n"));
        EXPECT_NE(small.codes().find(*kept == '&' ? "scope" : "dangling-reference"), std::string::npos) << kept;
        EXPECT_EQ(small.model.create("IfcWall").number(), 8u) << kept;
    }
}

TEST(Kept, ForeignInstancesAreReachableWithKeywordAndText) {
    Reading reading(fileOf("#1=IfcFoo('a', 2);\n#2=(A(1)B());\n"));
    const auto* foreign = dynamic_cast<const VnIfcForeignInstance*>(reading.model.find(1).openObject());
    ASSERT_TRUE(foreign);
    EXPECT_EQ(foreign->keyword(), "IfcFoo");
    EXPECT_EQ(foreign->parameters(), "'a', 2");
    EXPECT_TRUE(foreign->isKindOf("IFCFOO") && !foreign->isKindOf("") && !foreign->getInstanceType());
    const auto* complex = dynamic_cast<const VnIfcForeignInstance*>(reading.model.find(2).openObject());
    ASSERT_TRUE(complex);
    EXPECT_EQ(complex->keyword(), "");
    EXPECT_EQ(complex->parameters(), "A(1)B()");
    EXPECT_EQ(reading.model.count(), 2u);
    EXPECT_TRUE(reading.model.erase(reading.model.find(1)));
    EXPECT_EQ(reading.data(), "#2=(A(1)B());\n");
}
