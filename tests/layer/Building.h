#pragma once
#include "Support.h"

namespace vnifc::test {

/// A small building whose relations have the same meaning in every release.
inline Model buildingOf(const std::string& release) {
    const bool isOld = release == "IFC2X3";
    const std::string tag = isOld ? "" : ",$"; // PredefinedType
    const std::string item = isOld ? "$,'21.22','Wall',#71" : "$,'21.22','Wall',#71,$,$";
    const std::string system = isOld ? "'source','1',$,'Uniclass'" : "'source','1',$,'Uniclass',$,$,$";
    const std::string layer = isOld ? "#62,200.,$" : "#62,200.,$,$,$,$,$";
    const std::string material = isOld ? "'Brick'" : "'Brick',$,$";
    const std::string layerSet = isOld ? "(#61),'W200'" : "(#61),'W200',$";
    const std::string usage = isOld ? "#60,.AXIS2.,.POSITIVE.,0." : "#60,.AXIS2.,.POSITIVE.,0.,$";
    const std::string storey = "'0000000000000000000003',$,'First',$,$,#11,$,'1st floor',.ELEMENT.,3.";
    const std::string quantity = isOld ? "" : ",$";
    return openText(
        fileOf(release,
               "#1=IFCPROJECT('0000000000000000000001',$,'P',$,$,$,$,(#90),#50);\n"
               "#90=IFCGEOMETRICREPRESENTATIONCONTEXT($,'Model',3,1.E-5,#12,$);\n"
               "#2=IFCBUILDING('0000000000000000000002',$,'B',$,$,$,$,$,.ELEMENT.,$,$,$);\n"
               "#3=IFCBUILDINGSTOREY(" +
                   storey +
                   ");\n"
                   "#4=IFCWALL('0000000000000000000004',$,'W',$,$,#13,$,$" +
                   tag +
                   ");\n"
                   "#5=IFCOPENINGELEMENT('0000000000000000000005',$,'O',$,$,$,$,$" +
                   tag +
                   ");\n"
                   "#6=IFCDOOR('0000000000000000000006',$,'D',$,$,$,$,$,2100.,900." +
                   (isOld ? "" : ",$,$,$") +
                   ");\n"
                   "#7=IFCWALL('0000000000000000000007',$,'part',$,$,$,$,$" +
                   tag +
                   ");\n"
                   "#8=IFCWALLTYPE('0000000000000000000008',$,'WT',$,$,(#30),$,$,$,.STANDARD.);\n"
                   "#11=IFCLOCALPLACEMENT($,#12);\n"
                   "#12=IFCAXIS2PLACEMENT3D(#14,$,$);\n"
                   "#13=IFCLOCALPLACEMENT(#11,#15);\n"
                   "#14=IFCCARTESIANPOINT((0.,0.,3000.));\n"
                   "#15=IFCAXIS2PLACEMENT3D(#16,#17,#18);\n"
                   "#16=IFCCARTESIANPOINT((1000.,2000.));\n"
                   "#17=IFCDIRECTION((0.,0.,2.));\n"
                   "#18=IFCDIRECTION((0.,1.,1.));\n"
                   "#20=IFCRELAGGREGATES('0000000000000000000020',$,$,$,#1,(#2));\n"
                   "#21=IFCRELAGGREGATES('0000000000000000000021',$,$,$,#2,(#3));\n"
                   "#22=IFCRELCONTAINEDINSPATIALSTRUCTURE('0000000000000000000022',$,$,$,(#4),#3);\n"
                   "#23=IFCRELVOIDSELEMENT('0000000000000000000023',$,$,$,#4,#5);\n"
                   "#24=IFCRELFILLSELEMENT('0000000000000000000024',$,$,$,#5,#6);\n"
                   "#25=IFCRELAGGREGATES('0000000000000000000025',$,$,$,#4,(#7));\n"
                   "#26=IFCRELDEFINESBYTYPE('0000000000000000000026',$,$,$,(#4,#7),#8);\n"
                   "#30=IFCPROPERTYSET('0000000000000000000030',$,'Pset_WallCommon',$,(#31,#32));\n"
                   "#31=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('EI30'),$);\n"
                   "#32=IFCPROPERTYSINGLEVALUE('IsExternal',$,IFCBOOLEAN(.T.),$);\n"
                   "#40=IFCPROPERTYSET('0000000000000000000040',$,'Pset_WallCommon',$,(#41,#42,#43,#44,#45,#46));\n"
                   "#41=IFCPROPERTYSINGLEVALUE('FireRating',$,IFCLABEL('EI60'),$);\n"
                   "#42=IFCPROPERTYSINGLEVALUE('Width',$,IFCLENGTHMEASURE(200.),$);\n"
                   "#43=IFCPROPERTYSINGLEVALUE('Height.Max',$,IFCLENGTHMEASURE(8.),#54);\n"
                   "#44=IFCPROPERTYBOUNDEDVALUE('Range',$,IFCREAL(3.),IFCREAL(1.),$" +
                   (isOld ? "" : ",$") +
                   ");\n"
                   "#45=IFCPROPERTYLISTVALUE('List',$,(IFCINTEGER(1),IFCINTEGER(2)),$);\n"
                   "#46=IFCCOMPLEXPROPERTY('Complex',$,'c',(#47));\n"
                   "#47=IFCPROPERTYSINGLEVALUE('Stra\\X\\DFe',$,IFCINTEGER(7),$);\n"
                   "#48=IFCRELDEFINESBYPROPERTIES('0000000000000000000048',$,$,$,(#4),#40);\n"
                   "#49=IFCELEMENTQUANTITY('0000000000000000000049',$,'Qto_WallBaseQuantities',$,$,(#59));\n"
                   "#59=IFCQUANTITYVOLUME('NetVolume',$,$,2.5" +
                   quantity +
                   ");\n"
                   "#58=IFCRELDEFINESBYPROPERTIES('0000000000000000000058',$,$,$,(#4),#49);\n"
                   "#50=IFCUNITASSIGNMENT((#51,#52,#53));\n"
                   "#51=IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.);\n"
                   "#52=IFCSIUNIT(*,.VOLUMEUNIT.,$,.CUBIC_METRE.);\n"
                   "#53=IFCMONETARYUNIT(" +
                   (isOld ? ".EUR." : "'EUR'") +
                   ");\n"
                   "#54=IFCCONVERSIONBASEDUNIT(#55,.LENGTHUNIT.,'FOOT',#56);\n"
                   "#55=IFCDIMENSIONALEXPONENTS(1,0,0,0,0,0,0);\n"
                   "#56=IFCMEASUREWITHUNIT(IFCRATIOMEASURE(304.8),#51);\n"
                   "#60=IFCMATERIALLAYERSET(" +
                   layerSet +
                   ");\n"
                   "#61=IFCMATERIALLAYER(" +
                   layer +
                   ");\n"
                   "#62=IFCMATERIAL(" +
                   material +
                   ");\n"
                   "#63=IFCMATERIALLAYERSETUSAGE(" +
                   usage +
                   ");\n"
                   "#64=IFCRELASSOCIATESMATERIAL('0000000000000000000064',$,$,$,(#4),#63);\n"
                   "#65=IFCRELASSOCIATESMATERIAL('0000000000000000000065',$,$,$,(#8),#62);\n"
                   "#70=IFCCLASSIFICATIONREFERENCE(" +
                   item +
                   ");\n"
                   "#71=IFCCLASSIFICATION(" +
                   system +
                   ");\n"
                   "#72=IFCRELASSOCIATESCLASSIFICATION('0000000000000000000072',$,$,$,(#8),#70);\n"
                   "#80=IFCSYSTEM('0000000000000000000080',$,'S',$,$);\n"
                   "#81=IFCRELASSIGNSTOGROUP('0000000000000000000081',$,$,$,(#4,#6),$,#80);\n"),
        {.release = release});
}

} // namespace vnifc::test
