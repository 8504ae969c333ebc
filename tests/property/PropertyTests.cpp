// Property objects: those of all attributes of all entities, and those that stand for whole properties and quantities.
#include <dictionary/SchemaFixture.h>

#include <IFC4X3/AttributeProperties.h>
#include <IFC4X3/IfcComplexProperty.h>
#include <IFC4X3/IfcMirroredProfileDef.h>
#include <IFC4X3/IfcOrientedEdge.h>
#include <IFC4X3/IfcPhysicalComplexQuantity.h>
#include <IFC4X3/IfcPropertyBoundedValue.h>
#include <IFC4X3/IfcPropertyListValue.h>
#include <IFC4X3/IfcPropertySet.h>
#include <IFC4X3/IfcPropertySingleValue.h>
#include <IFC4X3/IfcQuantityCount.h>
#include <IFC4X3/IfcQuantityLength.h>
#include <IFC4X3/IfcRelDefinesByProperties.h>
#include <IFC4X3/IfcSegmentIndexSelect.h>
#include <IFC4X3/IfcValue.h>
#include <IFC4X3/IfcWall.h>
#include <VnIfcCore/VnIfcComplexProperty.h>
#include <VnIfcCore/VnIfcException.h>
#include <VnIfcCore/VnIfcModel.h>
#include <VnIfcCore/VnIfcPropertyCollection.h>
#include <VnIfcCore/VnIfcQuantityClusterProperty.h>
#include <VnIfcCore/VnIfcVariantTypeAggregate.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>
#include <VnRx/VrString.h>

#include <memory>
#include <typeinfo>

namespace IFC4X3 {

using namespace VN_SDAI;

namespace {

using Handles = VnIfcArray<VnDbObjectId>;
using Names = std::vector<std::string>;

Names namesOf(const VnIfcPropertyCollection& properties) {
    Names names;
    for (const auto& property : properties)
        names.emplace_back(property->name().view());
    return names;
}

class Properties : public SchemaTest {
protected:
    template <class T>
    static T got(const VnIfcProperty* property, const VnIfcEntityBase* instance) {
        VnIfcVariant value;
        EXPECT_EQ(property->getAttribute(instance, value), VN::eOk);
        const T* payload = value.get<T>();
        EXPECT_NE(payload, nullptr);
        return payload ? *payload : T{};
    }
    static std::unique_ptr<VnIfcProperty> built(VnIfcEntityBase* instance) {
        VnIfcProperty* property = nullptr;
        int code = 0;
        vnIfcBuildPropertyForSimple(instance, property, code);
        return std::unique_ptr<VnIfcProperty>(property);
    }
    template <class T>
    static T valueOf(const VnIfcProperty& property) {
        VnIfcVariant value;
        EXPECT_EQ(property.getValue(value), VN::eOk);
        const T* payload = value.get<T>();
        EXPECT_NE(payload, nullptr);
        return payload ? *payload : T{};
    }

    VnIfcModel model{schema};
};

// ---- Attributes

/// Tries the property of every attribute.
class PropertyWalk : public Properties {
protected:
    PropertyWalk() {
        const VnDbObjectId wall = model.create("IfcWall");
        m_samples = {VnAnsiString("a text"),
                     VnIfcGUID("0123456789ABCDEFGHIJ_$"),
                     2.5,
                     7,
                     VnIfcBoolean(true),
                     VnIfcLogical(VnIfcLogical::Unknown),
                     wall,
                     VnIfcArray<double>{2.5},
                     VnIfcArray<int>{7},
                     VnIfcArray<VnAnsiString>{"a text"},
                     Handles{wall},
                     VnIfcArray<VnIfcArray<double>>{{2.5}},
                     VnIfcArray<VnIfcArray<int>>{{7, 8}},
                     VnIfcArray<Handles>{Handles{wall}}};
        for (const Dictionary::Entry& entry : schema->entities())
            m_members.push_back(model.append(
                std::unique_ptr<VnIfcEntityBase>(static_cast<const VnIfcEntityType&>(*entry.instance).create())));
        for (const Dictionary::Entry& entry : schema->namedTypes()) {
            addMember<IfcValue>(entry.name);
            addMember<IfcSegmentIndexSelect>(entry.name);
        }
    }

    /// A set value of a type.
    VnIfcVariant sampleOf(const VnIfcVariantType& type) const {
        for (const VnIfcVariant& sample : m_samples)
            if (sample.type() == &type)
                return sample;
        const std::uint32_t firstLiteral = 0;
        if (type.enumeration())
            return {type, &firstLiteral};
        VnIfcVariant sample(type, nullptr);
        const auto* array = dynamic_cast<const VnIfcArrayVariantType*>(&type);
        for (const VnIfcVariant& member : m_members)
            if (array ? array->append(sample.payload(), member) : member.convertTo(type, sample))
                return sample;
        if (const auto* selects = dynamic_cast<const VnIfcSelectVariantType*>(&type))
            for (const Dictionary::Entry& entry : schema->namedTypes())
                if (selects->selectIn(sample)->underlyingTypeName(entry.name))
                    return sample;
        ADD_FAILURE() << "no value of this type";
        return sample;
    }

    void expectRefusals(const VnIfcProperty& property, VnIfcEntityBase& instance, const VnIfcVariant& held) {
        VnIfcVariant value("kept");
        EXPECT_EQ(property.getAttribute(nullptr, value), VN::eRefused);
        EXPECT_EQ(property.getAttribute(&m_stranger, value), VN::eRefused);
        EXPECT_TRUE(value == VnIfcVariant("kept"));
        EXPECT_EQ(property.putAttribute(nullptr, held), VN::eRefused);
        EXPECT_EQ(property.putAttribute(&m_stranger, held), VN::eRefused);
        // What attributes would convert if they were written by name.
        for (const VnIfcVariant& other : {VnIfcVariant(), VnIfcVariant("1"), VnIfcVariant(1UL)})
            EXPECT_EQ(property.putAttribute(&instance, other), VN::eRefused);
        EXPECT_EQ(property.getValue(value), VN::eRefused);
        EXPECT_EQ(property.putValue(held), VN::eRefused);
        VnIfcPropertyCollection parts;
        EXPECT_FALSE(property.subProperties(parts));
    }

    void tryExplicit(const VnIfcProperty& property, VnIfcEntityBase& instance) {
        const VnIfcVariant sample = sampleOf(*property.type());
        VnIfcVariant value;
        EXPECT_EQ(property.getAttribute(&instance, value), VN::eOk);
        EXPECT_EQ(value.type(), property.type());
        EXPECT_FALSE(instance.testAttr(property.name()));
        EXPECT_EQ(property.putAttribute(&instance, sample), VN::eOk);
        EXPECT_TRUE(instance.testAttr(property.name()));
        EXPECT_EQ(property.getAttribute(&instance, value), VN::eOk);
        EXPECT_TRUE(value == sample);
        expectRefusals(property, instance, sample);
        EXPECT_EQ(property.getAttribute(&instance, value), VN::eOk);
        EXPECT_TRUE(value == sample);
    }

    void tryReadOnly(const VnIfcProperty& property, VnIfcEntityBase& instance) {
        VnIfcVariant value, byName;
        EXPECT_EQ(property.getAttribute(&instance, value), VN::eOk);
        EXPECT_TRUE(instance.getAttr(property.name(), byName));
        EXPECT_EQ(value.type(), property.type());
        EXPECT_TRUE(value == byName);
        // A redeclared attribute is taken as by name.
        const bool isTaken = instance.putAttr(property.name(), value);
        EXPECT_EQ(property.putAttribute(&instance, value), isTaken ? VN::eOk : VN::eRefused);
        expectRefusals(property, instance, value);
    }

    /// Tries the properties of the attributes that an entity declares; answers how many there are.
    std::size_t tryEntity(const VnIfcEntityType& entity) {
        const VnIfcPropertyCollection own = entity.properties(false);
        std::size_t index = 0;
        VnIfcEntityBase& instance = *model.append(std::unique_ptr<VnIfcEntityBase>(entity.create())).openObject();
        for (const VnIfcAttributeDefinition* attribute : entity.attributes()) {
            const auto* derived = dynamic_cast<const VnIfcDerivedAttributeDefinition*>(attribute);
            if (derived && !derived->redeclaredAttribute())
                continue;
            EXPECT_LT(index, own.size());
            const VnIfcProperty& property = own[index++];
            SCOPED_TRACE(std::string(entity.name().view()) + '.' + std::string(property.name().view()));
            EXPECT_EQ(property.name(), derived ? derived->redeclaredAttribute()->name() : attribute->name());
            EXPECT_EQ(property.kind(), 1);
            EXPECT_EQ(property.entity(), &entity);
            const bool isExplicit = attribute->attributeKind() == VnIfcAttributeDefinition::Kind::kExplicit;
            isExplicit ? tryExplicit(property, instance) : tryReadOnly(property, instance);
        }
        EXPECT_EQ(index, own.size());
        return index;
    }

private:
    template <class S>
    void addMember(const VnAnsiString& name) {
        if (S value; value.underlyingTypeName(name))
            m_members.push_back(value);
    }

    std::vector<VnIfcVariant> m_samples;
    std::vector<VnIfcVariant> m_members; ///< of selects
    VnIfcForeignInstance m_stranger{"IFCGARDENGNOME", ""};
};

TEST_F(PropertyWalk, EveryAttributeIsReadAndWritten) {
    std::size_t properties = 0, without = 0;
    for (const Dictionary::Entry& entry : schema->entities()) {
        const std::size_t own = tryEntity(dynamic_cast<const VnIfcEntityType&>(*entry.instance));
        properties += own;
        without += own == 0;
    }
    EXPECT_EQ(properties, 1796u);
    EXPECT_EQ(without, 129u);
}

TEST_F(Properties, InheritedOnesComeFirstAndRedeclaredOnesOnce) {
    EXPECT_EQ(namesOf(IfcWall::g_pEntityType->properties(false)), Names{"PredefinedType"});
    const Names wall = namesOf(IfcWall::g_pEntityType->properties(true));
    EXPECT_EQ(Names(wall.begin(), wall.begin() + 4), (Names{"GlobalId", "OwnerHistory", "Name", "Description"}));
    EXPECT_EQ(wall.back(), "PredefinedType");

    const VnIfcPropertyCollection edge = IfcOrientedEdge::g_pEntityType->properties(true);
    EXPECT_EQ(namesOf(edge),
              (Names{"LayerAssignment", "StyledByItem", "EdgeStart", "EdgeEnd", "EdgeElement", "Orientation"}));
    auto* instance = model.create<IfcOrientedEdge>();
    EXPECT_EQ(edge.find("edgestart")->putAttribute(instance, instance->objectId()), VN::eOk);
    EXPECT_EQ(instance->getEdgeStart(), instance->objectId());
    EXPECT_EQ(edge.find("edgestart")->putAttribute(instance, 1.5), VN::eRefused);
    EXPECT_EQ(edge.find("EDGEELEMENT")->putAttribute(instance, instance->objectId()), VN::eOk);
    EXPECT_EQ(edge.find("Name"), nullptr);
    EXPECT_THROW(VnIfcPropertyCollection().add(nullptr), std::invalid_argument);
}

TEST_F(Properties, ClassesHaveNames) {
    const VnIfcPropertyCollection root = IfcRoot::g_pEntityType->properties(false);
    EXPECT_NE(dynamic_cast<const IfcRootGlobalIdProperty*>(&root[0]), nullptr);
    EXPECT_EQ(dynamic_cast<const IfcRootGlobalIdProperty*>(&root[1]), nullptr);

    IfcMirroredProfileDefOperatorProperty made;
    made.init("Operator", &VnIfcVariantType::Desc<VnDbObjectId>::value(), IfcMirroredProfileDef::g_pEntityType);
    auto* profile = model.create<IfcMirroredProfileDef>();
    profile->setOperator(profile->objectId());
    EXPECT_EQ(got<VnDbObjectId>(&made, profile), profile->objectId());
}

TEST_F(Properties, TextIsDecodedOnRequest) {
    const VnIfcPropertyCollection wall = IfcWall::g_pEntityType->properties(true);
    auto* instance = model.create<IfcWall>();
    VrString text("kept");
    EXPECT_FALSE(wall.find("Name")->getText(nullptr, text));
    EXPECT_EQ(text, "kept");
    EXPECT_TRUE(wall.find("Name")->getText(instance, text));
    EXPECT_EQ(text, "");
    instance->setName("W\\X\\E4nde");
    EXPECT_EQ(got<VnAnsiString>(wall.find("Name"), instance), "W\\X\\E4nde");
    EXPECT_TRUE(wall.find("Name")->getText(instance, text));
    EXPECT_EQ(text, "W\u00E4nde");
}

// A text of the file that fits no attribute is written back only until the attribute gets a value.
TEST_F(Properties, WrittenAttributeReplacesWhatTheFileHad) {
    ASSERT_TRUE(model.readText("ISO-10303-21;HEADER;FILE_SCHEMA(('IFC4X3'));ENDSEC;DATA;\n"
                               "#1=IFCWALL('1',$,$,$,$,$,$,.BAKED.,.BRICKWALL.);\nENDSEC;END-ISO-10303-21;"));
    ASSERT_NE(model.writeText().find(".BRICKWALL."), std::string::npos);
    const VnIfcPropertyCollection wall = IfcWall::g_pEntityType->properties(true);
    const VnIfcVariant solid{IfcWallTypeEnum(kIfcWallTypeEnum_SOLIDWALL)};
    EXPECT_EQ(wall.find("PredefinedType")->putAttribute(model.find(1).openObject(), solid), VN::eOk);
    const std::string written = model.writeText();
    EXPECT_NE(written.find(".BAKED.,.SOLIDWALL.);"), std::string::npos) << written;
    EXPECT_EQ(wall.find("Tag")->putAttribute(model.find(1).openObject(), VnAnsiString(VnUnsetText)), VN::eOk);
    EXPECT_NE(model.writeText().find(",$,.SOLIDWALL.);"), std::string::npos) << "unset as before, but told so now";
}

// ---- Whole properties and quantities

TEST_F(Properties, BuilderKnowsSomeEntitiesExactly) {
    struct Case {
        const char* entity;
        bool answer;
        int code;         // -1: as it was
        const char* name; // null: nothing is made
        const std::type_info* type = &typeid(VnIfcSimpleProperty);
    };
    const std::type_info* complex = &typeid(VnIfcComplexProperty);
    const std::type_info* cluster = &typeid(VnIfcQuantityClusterProperty);
    const Case cases[] = {{"IfcPropertySingleValue", false, 0, "nominalvalue"},
                          {"IfcPropertyBoundedValue", true, -1, "upperboundvalue"},
                          {"IfcComplexProperty", true, 12, "hasQuantities", complex},
                          {"IfcPhysicalComplexQuantity", true, 12, "hasQuantities", complex},
                          {"IfcQuantityArea", true, 6, "areavalue", cluster},
                          {"IfcQuantityCount", true, 6, "countvalue", cluster},
                          {"IfcQuantityLength", true, 6, "lengthvalue", cluster},
                          {"IfcQuantityTime", true, 6, "timevalue", cluster},
                          {"IfcQuantityVolume", true, 6, "volumevalue", cluster},
                          {"IfcQuantityWeight", true, 6, "weightvalue", cluster},
                          {"IfcPropertyEnumeratedValue", false, -1, nullptr},
                          {"IfcPropertySet", false, -1, nullptr},
                          {"IfcWall", false, -1, nullptr}};
    for (const Case& each : cases) {
        SCOPED_TRACE(each.entity);
        VnIfcEntityBase* instance = model.create(each.entity).openObject();
        VnIfcProperty* made = nullptr;
        int code = -1;
        EXPECT_EQ(vnIfcBuildPropertyForSimple(instance, made, code), each.answer);
        const std::unique_ptr<VnIfcProperty> owned(made);
        EXPECT_EQ(code, each.code);
        ASSERT_EQ(made != nullptr, each.name != nullptr);
        if (!made)
            continue;
        EXPECT_EQ(made->name(), each.name);
        EXPECT_TRUE(typeid(*made) == *each.type);
        EXPECT_EQ(made->kind(), 2);
        EXPECT_EQ(dynamic_cast<VnIfcSimpleProperty*>(made)->object(), instance->objectId());
        if (each.code == 6) {
            EXPECT_EQ(made->putValue(2.5), VN::eOk);
            EXPECT_EQ(valueOf<double>(*made), 2.5);
            EXPECT_EQ(got<double>(made, instance), 2.5);
        }
    }
    VnIfcProperty* made = nullptr;
    int code = -1;
    EXPECT_FALSE(vnIfcBuildPropertyForSimple(nullptr, made, code));
    VnIfcForeignInstance foreign("IFCPROPERTYSINGLEVALUE", "");
    EXPECT_FALSE(vnIfcBuildPropertyForSimple(&foreign, made, code));
    EXPECT_EQ(made, nullptr);
}

TEST_F(Properties, MeasureStaysOfItsType) {
    auto* single = model.create<IfcPropertySingleValue>();
    const auto property = built(single);
    VnIfcVariant value;
    EXPECT_EQ(property->getValue(value), VN::eOk);
    EXPECT_TRUE(value.isNull());
    EXPECT_EQ(property->putValue(2.5), VN::eRefused); // a length or an area?

    IfcValue length;
    length.setIfcLengthMeasure(1.5);
    EXPECT_EQ(property->putValue(length), VN::eOk);
    EXPECT_EQ(valueOf<double>(*property), 1.5);
    VnIfcProperty* other = nullptr;
    int code = 0;
    vnIfcBuildPropertyForSimple(single, other, code);
    delete other;
    EXPECT_EQ(code, 6);

    EXPECT_EQ(property->putValue(2), VN::eOk);
    EXPECT_EQ(property->putValue("ten"), VN::eRefused);
    EXPECT_EQ(property->putValue(VnIfcVariant()), VN::eRefused);
    EXPECT_EQ(single->getNominalValue().underlyingTypeName(), "IfcLengthMeasure");
    EXPECT_EQ(valueOf<double>(*property), 2.0);

    IfcValue label;
    label.setIfcLabel("old");
    single->setNominalValue(label);
    EXPECT_EQ(property->putValue(VnAnsiString("new")), VN::eOk);
    EXPECT_EQ(single->getNominalValue().underlyingTypeName(), "IfcLabel");
    EXPECT_EQ(valueOf<VnAnsiString>(*property), "new");

    IfcValue binary;
    binary.setIfcBinary("0FF");
    single->setNominalValue(binary);
    EXPECT_EQ(valueOf<VnAnsiString>(*property), "0FF");
    EXPECT_EQ(property->putValue(VnAnsiString("01")), VN::eOk);
    EXPECT_NE(model.writeText().find("IFCBINARY(\"01\")"), std::string::npos);

    model.setMode(sdaiReadOnly);
    EXPECT_THROW(property->putValue(VnAnsiString("newer")), VnIfcException);
    model.setMode(sdaiReadWrite);
    model.erase(single->objectId());
    EXPECT_EQ(property->getValue(value), VN::eRefused);
    EXPECT_EQ(property->putValue(label), VN::eRefused);
}

TEST_F(Properties, SeveralValuesAreSubProperties) {
    auto* bounded = model.create<IfcPropertyBoundedValue>();
    IfcValue value;
    value.setIfcReal(3);
    bounded->setLowerBoundValue(value);
    VnIfcPropertyCollection parts;
    ASSERT_TRUE(built(bounded)->subProperties(parts));
    EXPECT_EQ(namesOf(parts), (Names{"upperboundvalue", "lowerboundvalue", "setpointvalue"}));
    EXPECT_EQ(valueOf<double>(*parts.find("LowerBoundValue")), 3.0);
    for (const auto& part : parts)
        EXPECT_EQ(part->entity(), IfcPropertyBoundedValue::g_pEntityType);
    EXPECT_EQ(parts.find("setpointvalue")->putValue(value), VN::eOk);
    EXPECT_TRUE(bounded->getSetPointValue() == value);
    VnIfcVariant none;
    EXPECT_EQ(built(bounded)->getValue(none), VN::eRefused);
}

TEST_F(Properties, ComplexOnesHoldWhatTheyGather) {
    auto* single = model.create<IfcPropertySingleValue>();
    auto* inner = model.create<IfcComplexProperty>();
    auto* outer = model.create<IfcComplexProperty>();
    auto* list = model.create<IfcPropertyListValue>();
    auto* count = model.create<IfcQuantityCount>();
    auto* quantities = model.create<IfcPhysicalComplexQuantity>();
    inner->setHasProperties({single->objectId()});
    outer->setHasProperties({single->objectId(), inner->objectId(), list->objectId()});
    quantities->setHasQuantities({count->objectId()});
    const auto namesIn = [](VnIfcEntityBase* instance) {
        VnIfcPropertyCollection parts;
        EXPECT_TRUE(built(instance)->subProperties(parts));
        return namesOf(parts);
    };
    EXPECT_EQ(namesIn(outer), (Names{"nominalvalue", "hasQuantities"}));
    EXPECT_EQ(namesIn(inner), Names{"nominalvalue"});
    EXPECT_EQ(namesIn(quantities), Names{"countvalue"});
}

// From an object to its properties and back, as a host does that knows names only.
TEST_F(Properties, HostReachesPropertySetsThroughPropertiesAlone) {
    auto* wall = model.create<IfcWall>();
    auto* set = model.create<IfcPropertySet>();
    auto* relation = model.create<IfcRelDefinesByProperties>();
    auto* fireRating = model.create<IfcPropertySingleValue>();
    IfcValue rating;
    rating.setIfcLabel("F 30");
    fireRating->setName("FireRating");
    fireRating->setNominalValue(rating);
    set->setHasProperties({fireRating->objectId()});
    relation->setRelatedObjects({wall->objectId()});
    IfcPropertySetDefinitionSelect definition;
    ASSERT_TRUE(definition.setHandle(set->objectId()));
    relation->setRelatingPropertyDefinition(definition);
    model.setInverseCounterParts();

    // What attribute `name` of an instance refers to first.
    const auto follow = [](const VnIfcEntityBase* from, const char* name) -> VnIfcEntityBase* {
        const VnIfcPropertyCollection properties = from->getInstanceType()->properties(true);
        VnIfcVariant value;
        EXPECT_EQ(properties.find(name)->getAttribute(from, value), VN::eOk);
        Handles handles;
        VnDbObjectId handle;
        if (!value.getAs(handle) && value.getAs(handles))
            handle = handles[0];
        return handle.openObject();
    };
    VnIfcEntityBase* found = follow(follow(follow(wall, "IsDefinedBy"), "RelatingPropertyDefinition"), "HasProperties");
    ASSERT_EQ(found, fireRating);
    const auto property = built(found);
    EXPECT_EQ(valueOf<VnAnsiString>(*property), "F 30");
    EXPECT_EQ(property->putValue(VnAnsiString("F 90")), VN::eOk);
    EXPECT_NE(model.writeText().find("'FireRating',$,IFCLABEL('F 90'),$"), std::string::npos);
}

} // namespace

} // namespace IFC4X3
