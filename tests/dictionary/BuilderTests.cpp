// The core's dictionary and name resolution, on a schema of a few records.
#include <VnIfcCore/VnIfcSchemaBuilder.h>

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

using namespace VN_SDAI;

namespace {

VnIfcEntityType* rootRecord = nullptr;
VnIfcEntityType* relationRecord = nullptr;
VnIfcEntityType* linkRecord = nullptr;
VnIfcNameType* selectRecord = nullptr;

/// One record of each kind; `change` may spoil it before the names are resolved.
class MiniBuilder : public VnIfcSchemaBuilder {
public:
    explicit MiniBuilder(VnIfcSchema* schema) : VnIfcSchemaBuilder(schema, "MINI") {}

    std::function<void(MiniBuilder&)> change = [](MiniBuilder&) {};

    VnIfcDefinedType* defined(const char* name, const char* underlying) {
        auto* type = new VnIfcDefinedType(name, nullptr, true);
        m_namedTypes.putAt(name, type);
        m_underlyingTypes[type] = underlying;
        return type;
    }
    VnIfcDefinedType* select(const char* name, std::vector<VnAnsiString> members) {
        auto* select = new VnIfcSelectType(new VnTypeCode(VnTypeCodeKind::kSelect));
        auto* type = new VnIfcDefinedType(name, select, true);
        m_namedTypes.putAt(name, type);
        m_selectMembers[select] = std::move(members);
        return type;
    }
    void set(const char* name, const char* element) {
        auto* set = new VnIfcSetType(nullptr, new VnIfcIntegerBound(1), new VnIfcIntegerBound);
        m_anonymousTypes.putAt(name, new VnIfcDefinedType(name, set, true));
        m_elementTypes[set] = element;
    }
    VnIfcEntityType* entity(const char* name, VnIfcEntityType*& place, const VnIfcEntityType* supertype) {
        auto* entity = VnIfcEntityType::createEntityType(m_schema, name, true, nullptr, nullptr, place, supertype);
        m_entities.putAt(name, entity);
        return entity;
    }
    void explicitAttribute(VnIfcEntityType* entity, const char* name, const char* type) {
        auto* attribute = new VnIfcExplicitAttributeDefinition(name, nullptr, false);
        entity->appendAttribute(attribute);
        m_attributeTypes[attribute] = type;
    }
    void derivedAttribute(VnIfcEntityType* entity, const char* name, const char* type, const char* redeclared) {
        auto* attribute = new VnIfcDerivedAttributeDefinition(name, nullptr, nullptr);
        entity->appendAttribute(attribute);
        m_derivedAttributes[attribute] = {type, redeclared, *redeclared != '\0'};
    }
    void inverseAttribute(VnIfcEntityType* entity, const char* name, const char* other, const char* inverted) {
        auto* attribute = new VnIfcInverseAttributeDefinition(name, entity, nullptr, nullptr, 0, 1, false);
        entity->appendAttribute(attribute);
        m_inverseAttributes[attribute] = {other, inverted};
    }
    void allowMissing(const char* type) { m_typesWithoutRecord.emplace_back(type); }
    void nameStray(VnIfcDefinedType* type) { m_underlyingTypes[type] = "real"; }
    Dictionary& entityDictionary() { return m_entities; }

protected:
    void buildSchema() override {
        initSchemaVersion(IfcSchemaMajorVersion::kIfc4, IfcSchemaMinorVersion::kThree);
        defined("Length", "real");
        defined("PositiveLength", "length");
        select("Choice", {"POSITIVELENGTH", "ROOT", "CHOICE"})->showIn(selectRecord);
        set("set [1:?] of Root", "Root");
        VnIfcEntityType* root = entity("ROOT", rootRecord, nullptr);
        VnIfcEntityType* relation = entity("RELATION", relationRecord, root);
        explicitAttribute(root, "Size", "LENGTH");
        inverseAttribute(root, "IsRelated", "link", "members");
        explicitAttribute(relation, "Members", "set [1:?] of ROOT");
        VnIfcEntityType* link = entity("LINK", linkRecord, relation);
        derivedAttribute(link, "root_size", "LENGTH", "size");
        derivedAttribute(link, "Count", "integer", "");
        change(*this);
    }
};

std::string errorOf(const std::function<void(MiniBuilder&)>& change) {
    VnIfcSchema schema;
    MiniBuilder builder(&schema);
    builder.change = change;
    try {
        builder.build();
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

} // namespace

TEST(SchemaBuilder, ResolvesEveryKindOfNameAndKeepsItAsRegistered) {
    VnIfcSchema schema;
    MiniBuilder(&schema).build();

    const auto* positive = dynamic_cast<const VnIfcDefinedType*>(schema.namedType("PositiveLength"));
    ASSERT_TRUE(positive);
    EXPECT_EQ(positive->underlyingType(), schema.namedType("Length"));
    EXPECT_EQ(positive->underlyingName(), "length");
    EXPECT_EQ(positive->kind(), VnTypeCodeKind::kReal);

    const auto* choice = dynamic_cast<const VnIfcDefinedType*>(selectRecord);
    ASSERT_TRUE(choice);
    const auto& select = dynamic_cast<const VnIfcSelectType&>(*choice->underlyingType());
    EXPECT_EQ(select.memberNames()[1], "ROOT");
    EXPECT_EQ(std::vector(select.members().begin(), select.members().end()),
              (std::vector<const VnIfcNameType*>{positive, rootRecord, selectRecord}));

    const VnIfcAttributeDefinition* members = linkRecord->findAttribute("MEMBERS");
    ASSERT_TRUE(members);
    EXPECT_EQ(members->parentEntity(), relationRecord);
    EXPECT_EQ(members->typeName(), "set [1:?] of ROOT");
    EXPECT_EQ(members->type(), schema.anonymousTypes().at("set [1:?] of Root"));
    const auto& set =
        dynamic_cast<const VnIfcSetType&>(*dynamic_cast<const VnIfcDefinedType&>(*members->type()).underlyingType());
    EXPECT_EQ(set.elementType(), rootRecord);
    EXPECT_EQ(set.elementTypeName(), "Root");

    const VnIfcInverseAttributeDefinition* isRelated = rootRecord->inverseAttributes()[0];
    EXPECT_EQ(isRelated->type(), linkRecord);
    EXPECT_EQ(isRelated->typeName(), "link");
    EXPECT_EQ(isRelated->invertedAttribute(), members) << "declared by a supertype of the entity that is named";

    EXPECT_EQ(linkRecord->derivedAttributes()[0]->redeclaredAttribute(), rootRecord->explicitAttributes()[0]);
    EXPECT_EQ(linkRecord->derivedAttributes()[1]->redeclaredAttribute(), nullptr);
    EXPECT_EQ(linkRecord->derivedAttributes()[1]->type()->kind(), VnTypeCodeKind::kInteger);
}

TEST(SchemaBuilder, NamesWhatItCannotResolve) {
    struct Case {
        std::function<void(MiniBuilder&)> change;
        const char* expected; ///< part of the message; empty: no error
    };
    VnIfcDefinedType stray("Stray", nullptr, true);
    VnIfcEntityType* outsider = nullptr;
    const std::unique_ptr<VnIfcEntityType> outside(
        VnIfcEntityType::createEntityType(nullptr, "OUTSIDE", true, nullptr, nullptr, outsider, nullptr));
    const Case cases[] = {
        {[](MiniBuilder&) {}, ""},
        {[](MiniBuilder& b) { b.defined("Mass", "weight"); }, "\"weight\" (underlying type of Mass)"},
        {[](MiniBuilder& b) {
             b.select("Other", {"LENGTH", "MASS"});
         },
         "\"MASS\" (member of Other)"},
        {[](MiniBuilder& b) { b.select("Other", {"REAL"}); }, "\"REAL\" (member of Other)"},
        {[](MiniBuilder& b) { b.set("set [1:?] of Mass", "Mass"); }, "\"Mass\" (element type of set [1:?] of Mass)"},
        {[](MiniBuilder& b) { b.explicitAttribute(rootRecord, "Mass", "MASS"); }, "\"MASS\" (type of ROOT.Mass)"},
        {[](MiniBuilder& b) { b.derivedAttribute(rootRecord, "Mass", "MASS", ""); }, "\"MASS\" (type of ROOT.Mass)"},
        {[](MiniBuilder& b) { b.derivedAttribute(rootRecord, "root_size", "LENGTH", "Size"); },
         "\"Size\" (redeclared attribute of ROOT.root_size)"},
        {[](MiniBuilder& b) { b.inverseAttribute(rootRecord, "Of", "chain", "Members"); },
         "\"chain\" (entity of ROOT.Of)"},
        {[](MiniBuilder& b) { b.inverseAttribute(rootRecord, "Of", "link", "Parts"); },
         "\"Parts\" (inverted attribute of ROOT.Of)"},
        {[&](MiniBuilder& b) { b.entity("CHILD", relationRecord, outsider); }, "\"OUTSIDE\" (supertype of CHILD)"},
        {[&](MiniBuilder& b) { b.nameStray(&stray); }, "1 registered names"},
        {[](MiniBuilder& b) { b.entityDictionary().putAt("NOENTITY", new VnIfcIntegerBound); },
         "wrong class of record \"NOENTITY\""},
        {[](MiniBuilder& b) { b.defined("Length", "real"); }, "a second \"Length\""},
        {[](MiniBuilder& b) {
             b.allowMissing("Mass");
             b.explicitAttribute(rootRecord, "Mass", "MASS");
         },
         ""},
    };
    for (const Case& test : cases) {
        const std::string error = errorOf(test.change);
        if (*test.expected == '\0') {
            EXPECT_EQ(error, "");
        } else
            EXPECT_NE(error.find(test.expected), std::string::npos) << test.expected << " is not in: " << error;
    }
}

TEST(SchemaBuilder, RefusesASchemaThatIsBuiltOrMissing) {
    VnIfcSchema schema;
    MiniBuilder builder(&schema);
    builder.build();
    EXPECT_THROW(builder.build(), std::logic_error);
    EXPECT_EQ(schema.entityCount(), 3u);
    EXPECT_THROW(MiniBuilder(nullptr), std::invalid_argument);
}

TEST(SchemaBuilder, StaticPointersShowTheRecordOfTheYoungestLivingSchema) {
    auto older = std::make_unique<VnIfcSchema>();
    MiniBuilder(older.get()).build();
    auto younger = std::make_unique<VnIfcSchema>();
    MiniBuilder(younger.get()).build();
    older.reset();
    EXPECT_EQ(rootRecord, younger->entity("root"));
    EXPECT_EQ(selectRecord, younger->namedType("choice"));
    younger.reset();
    EXPECT_EQ(rootRecord, nullptr);
    EXPECT_EQ(selectRecord, nullptr);
}

TEST(EntityType, KnowsItsPlaceInTheTree) {
    VnIfcSchema schema;
    MiniBuilder(&schema).build();
    EXPECT_TRUE(linkRecord->isKindOf(rootRecord));
    EXPECT_TRUE(linkRecord->isKindOf(linkRecord));
    EXPECT_FALSE(linkRecord->isSubtypeOf(linkRecord));
    EXPECT_TRUE(linkRecord->isSubtypeOf(rootRecord));
    EXPECT_FALSE(rootRecord->isKindOf(linkRecord));
    EXPECT_FALSE(rootRecord->isKindOf(nullptr));
    EXPECT_EQ(rootRecord->subtypes().size(), 1u) << "direct subtypes only";
    EXPECT_EQ(rootRecord->subtypes()[0], relationRecord);

    std::vector<std::string> names;
    for (const VnIfcAttributeDefinition* attribute : linkRecord->allAttributes())
        names.emplace_back(attribute->name().view());
    EXPECT_EQ(names, (std::vector<std::string>{"Size", "IsRelated", "Members", "root_size", "Count"}));
    EXPECT_EQ(linkRecord->findAttribute("Parts"), nullptr);
    EXPECT_THROW(linkRecord->appendAttribute(nullptr), std::invalid_argument);
}

TEST(Dictionary, KeepsOrderAndTellsNamesApart) {
    Dictionary dictionary;
    EXPECT_EQ(dictionary.at("A"), nullptr) << "empty";
    // Names that differ only in case, in a bit that is case for letters alone, or past a multiple of eight bytes.
    const std::vector<std::string> names = {"",
                                            "A",
                                            "a",
                                            "[",
                                            "{",
                                            "@12345678",
                                            "`12345678",
                                            "LONGNAME",
                                            "LONGNAMELONGNAME1",
                                            "LONGNAMELONGNAME2",
                                            std::string("NUL\0X", 5)};
    for (const std::string& name : names)
        dictionary.putAt(name, new VnIfcIntegerBound);
    for (int i = 0; i < 1000; ++i)
        dictionary.putAt("IFCNAME" + std::to_string(i), new VnIfcIntegerBound(i));
    for (std::size_t i = 0; i < names.size(); ++i) {
        EXPECT_EQ(dictionary.entries()[i].name, names[i]);
        EXPECT_EQ(dictionary.at(names[i]), dictionary.entries()[i].instance.get()) << names[i];
    }
    EXPECT_EQ(dictionary.find("a"), dictionary.at("A")) << "the first of several that fit";
    EXPECT_EQ(dictionary.at("longname"), nullptr);
    EXPECT_EQ(dictionary.find("longName"), dictionary.at("LONGNAME"));
    EXPECT_EQ(dictionary.find("LONGNAM"), nullptr);
    EXPECT_EQ(dictionary.find("ifcNAME999"), dictionary.entries().back().instance.get());
    EXPECT_THROW(dictionary.putAt("A", new VnIfcIntegerBound), std::invalid_argument);
    EXPECT_THROW(dictionary.putAt("B", nullptr), std::invalid_argument);
    EXPECT_EQ(dictionary.size(), names.size() + 1000);
}
