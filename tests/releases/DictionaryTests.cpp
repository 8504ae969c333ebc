// Life cycle, records, factories and descriptors of every release.
#include "Release.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcException.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcCore/VnIfcVariant.h>
#include <VnIfcCore/VnIfcVariantTypeEnum.h>

#include <set>

using namespace VN_SDAI;

namespace vnifc::test {

namespace {

class DictionaryOf : public Release {
protected:
    template <class T>
    static const T* underlying(const DictionaryInstance* record) {
        const auto* type = dynamic_cast<const VnIfcDefinedType*>(record);
        return type ? dynamic_cast<const T*>(type->underlyingType()) : nullptr;
    }
};

TEST_P(DictionaryOf, LivesFromInitialisationToItsEnd) {
    VnModuleLifeCycleApp& app = m_module.lifeCycle();
    for (int round = 0; round < 2; ++round) {
        const VnIfcSchema* schema = m_module.schema();
        ASSERT_TRUE(schema);
        EXPECT_TRUE(app.initApp());
        EXPECT_EQ(m_module.schema(), schema);
        EXPECT_EQ(schema->name(), GetParam());
        EXPECT_EQ(schema->entityCount(), m_declared.entities().size());
        EXPECT_EQ(app.status(), 0);
        app.uninitApp();
        EXPECT_EQ(m_module.schema(), nullptr);
        app.uninitApp();
        EXPECT_TRUE(app.initApp());
    }
}

TEST_P(DictionaryOf, HasSupertypesFirstAndFactoriesOfEveryClass) {
    std::set<const VnIfcEntityType*> seen{nullptr};
    for (std::size_t i = 0; i < m_schema.entityCount(); ++i) {
        const VnIfcEntityType* entity = m_schema.entityAt(i);
        SCOPED_TRACE(entity->name().constStr());
        EXPECT_TRUE(seen.contains(entity->supertype()));
        seen.insert(entity);
        EXPECT_EQ(entity->schema(), &m_schema);
        const std::unique_ptr<VnIfcEntityBase> instance(entity->create());
        EXPECT_EQ(instance->getInstanceType(), entity);
        const declared::Entity& declaration = *m_declared.entity(entity->name().view());
        for (const declared::Entity* each : m_declared.upwards(declaration)) {
            EXPECT_TRUE(instance->isKindOf(each->name.c_str()));
            EXPECT_TRUE(instance->isKindOf(m_schema.entity(each->name)));
        }
        EXPECT_EQ(entity->explicitAttributes().size(), declaration.explicits.size());
        for (const VnIfcInverseAttributeDefinition* inverse : entity->inverseAttributes())
            EXPECT_TRUE(inverse->invertedAttribute()) << inverse->name().constStr();
    }
}

TEST_P(DictionaryOf, LinksEveryRecordToTheOnesThatItNames) {
    for (const Dictionary* dictionary : {&m_schema.namedTypes(), &m_schema.anonymousTypes()})
        for (const auto& [name, record] : *dictionary) {
            SCOPED_TRACE(name.constStr());
            if (const auto* select = underlying<VnIfcSelectType>(record.get())) {
                ASSERT_EQ(select->members().size(), select->memberNames().size());
                for (std::size_t i = 0; i < select->members().size(); ++i) {
                    ASSERT_TRUE(select->members()[i]);
                    EXPECT_EQ(select->members()[i]->name().compareNoCase(select->memberNames()[i]), 0);
                }
            }
            const auto* list = underlying<VnIfcAggregationType>(record.get());
            EXPECT_TRUE(!list || list->elementType());
            const auto* defined = dynamic_cast<const VnIfcDefinedType*>(record.get());
            EXPECT_TRUE(!defined || defined->underlyingType());
        }
}

std::string narrow(const std::wstring& text) { return {text.begin(), text.end()}; }

/// The descriptor of an attribute's value, made for a declared enumeration or select.
void expectDescriptor(const std::string& release, const declared::Named& type, const VnIfcVariantType& descriptor) {
    const bool isEnumeration = type.kind == declared::Named::kEnumeration;
    const std::string name = release + "::" + type.name;
    EXPECT_TRUE(narrow(descriptor.name()).starts_with(name)) << narrow(descriptor.name());
    EXPECT_EQ(descriptor.isSelect(), !isEnumeration);
    const IVnIfcVariantTypeEnumeration* literals = descriptor.enumeration();
    ASSERT_EQ(literals != nullptr, isEnumeration);
    if (!isEnumeration)
        return;
    std::vector<std::string> expected;
    for (const std::string& item : type.items)
        expected.push_back(release + "::k" + type.name + '_' + declared::upper(item));
    expected.push_back(release + "::k" + type.name + "_UNSET");
    ASSERT_EQ(static_cast<std::size_t>(literals->literalCount()), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i)
        EXPECT_EQ(literals->literalName(static_cast<int>(i))->view(), expected[i]);
}

TEST_P(DictionaryOf, HasADescriptorForEveryEnumerationAndSelect) {
    std::map<std::string, const VnIfcVariantType*> seen;
    for (const declared::Entity& entity : m_declared.entities()) {
        const std::unique_ptr<VnIfcEntityBase> instance(m_schema.entity(entity.name)->create());
        for (const declared::Explicit& attribute : entity.explicits) {
            const declared::Type resolved = m_declared.resolved(attribute.type);
            const declared::Named* type = m_declared.type(resolved.name);
            if (!type || !resolved.layers.empty())
                continue;
            SCOPED_TRACE(entity.name + '.' + attribute.name);
            VnIfcVariant value;
            ASSERT_TRUE(instance->getAttr(attribute.name, value));
            const auto [known, isNew] = seen.try_emplace(type->name, value.type());
            EXPECT_EQ(known->second, value.type()) << "one for a type";
            if (isNew)
                expectDescriptor(GetParam(), *type, *value.type());
        }
    }
    EXPECT_FALSE(seen.empty());
}

INSTANTIATE_TEST_SUITE_P(Releases, DictionaryOf, testing::ValuesIn(allReleases()), nameOfRelease);

} // namespace

} // namespace vnifc::test
