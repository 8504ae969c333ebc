// Every attribute of every concrete entity of every release by name.
#include "Release.h"
#include "Values.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcException.h>
#include <VnIfcCore/VnIfcGUID.h>
#include <VnIfcCore/VnIfcSelectType.h>
#include <VnIfcCore/VnIfcSetAggr.h>
#include <VnIfcCore/VnIfcVariantTypeSelect.h>

#include <cctype>
#include <map>
#include <set>

using namespace VN_SDAI;

namespace vnifc::test {

namespace {

using Variants = VnIfcArray<VnIfcVariant>;

std::string mixedCase(const VnAnsiString& name) {
    std::string text(name.view());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto c = static_cast<unsigned char>(text[i]);
        text[i] = static_cast<char>(i % 2 == 0 ? std::tolower(c) : std::toupper(c));
    }
    return text;
}

const VnIfcParameterType* resolved(const VnIfcParameterType* type) {
    while (const auto* defined = dynamic_cast<const VnIfcDefinedType*>(type))
        type = defined->underlyingType();
    return type;
}

/// A value that an attribute takes, what getAttr answers then, and a value of another kind.
struct Offer {
    VnIfcVariant good;
    VnIfcVariant expected;
    VnIfcVariant bad;
};

class AttributeWalk : public Release {
protected:
    static VnIfcVariant get(const VnIfcEntityBase& instance, const VnAnsiString& name) {
        VnIfcVariant value;
        EXPECT_TRUE(instance.getAttr(name, value));
        return value;
    }
    VnDbObjectId instanceOf(const VnIfcNameType& entity) {
        return model.append(std::unique_ptr<VnIfcEntityBase>(m_schema.entity(entity.name().view())->create()));
    }
    /// References are taken whatever they refer to.
    VnDbObjectId anyInstance() { return instanceOf(*m_schema.entityAt(m_schema.entityCount() - 1)); }

    /// The first member of a select, nested selects looked into.
    static const VnIfcNameType& firstMember(const VnIfcParameterType* type) {
        const VnIfcNameType* member = dynamic_cast<const VnIfcSelectType&>(*resolved(type)).members()[0];
        return dynamic_cast<const VnIfcSelectType*>(resolved(member)) ? firstMember(member) : *member;
    }
    VnIfcVariant selectOffer(const VnIfcVariant& present, const VnIfcParameterType* type) {
        VnIfcVariant fresh;
        EXPECT_TRUE(present.type()->createVariant(fresh));
        VnIfcSelect* select = dynamic_cast<const VnIfcSelectVariantType&>(*fresh.type()).selectIn(fresh);
        const VnIfcNameType& member = firstMember(type);
        const bool isEntity = member.kind() == VnTypeCodeKind::kEntity;
        EXPECT_TRUE(isEntity ? select->setHandle(instanceOf(member)) : select->underlyingTypeName(member.name()));
        return fresh;
    }

    VnIfcVariant elementOffer(const VnIfcParameterType* type) {
        switch (resolved(type)->kind()) {
        case VnTypeCodeKind::kEntity:
            return anyInstance();
        case VnTypeCodeKind::kReal:
            return 2.5;
        case VnTypeCodeKind::kInteger:
            return 7;
        case VnTypeCodeKind::kAggregation:
            return Variants{elementOffer(dynamic_cast<const VnIfcAggregationType&>(*resolved(type)).elementType())};
        case VnTypeCodeKind::kSelect:
            break;
        default:
            return "element";
        }
        const VnIfcNameType& member = firstMember(type);
        return member.kind() == VnTypeCodeKind::kEntity ? VnIfcVariant(instanceOf(member)) : VnIfcVariant();
    }

    /// What an aggregate of selects takes, as a file brings it.
    VnIfcVariant readElements(const VnIfcExplicitAttributeDefinition& attribute) {
        const declared::Entity& owner = *m_declared.entity(attribute.parentEntity()->name().view());
        const auto isMeant = [&](const declared::Entity* each) { return m_declared.isKindOf(*each, owner.name); };
        const declared::Entity& entity = **std::ranges::find_if(m_values.concrete, isMeant);
        std::vector<std::string> parameters;
        for (const declared::Parameter& each : m_declared.parameters(entity)) {
            const bool isIt = attribute.name() == each.attribute->name;
            const std::string member = isIt ? memberOf(each.attribute->type) : "";
            parameters.push_back(isIt             ? m_values.aggregateOf(each.attribute->type, member)
                                 : each.isDerived ? "*"
                                                  : "$");
        }
        m_read.clear();
        EXPECT_TRUE(m_read.readText(fileOf(line(1, entity, parameters))));
        VnIfcVariant elements;
        EXPECT_TRUE(get(*m_read.find(1).openObject(), attribute.name())
                        .convertTo(VnIfcVariantType::Desc<Variants>::value(), elements));
        return elements;
    }
    std::string memberOf(const declared::Type& type) {
        return m_values.memberValueOf(m_values.membersOf(*m_values.selectOf(type))[0]);
    }

    Offer offerFor(const VnIfcVariant& present, const VnIfcExplicitAttributeDefinition& attribute) {
        const VnIfcParameterType* type = attribute.type();
        const VnIfcVariant text("a text"), handle(anyInstance()), real(2.5), boolean(VnIfcBoolean(true));
        const VnIfcVariant unknown = VnIfcLogical(VnIfcLogical::Unknown), guid = VnIfcGUID("0123456789ABCDEFGHIJ_$");
        if (present.is<const char*>())
            return {text, text, handle};
        if (present.is<VnIfcGUID>())
            return {VnAnsiString("0123456789ABCDEFGHIJ_$"), guid, VnAnsiString("more than 22 characters")};
        if (present.is<double>())
            return {real, real, boolean};
        if (present.is<int>())
            return {VnAnsiString("-7"), -7, real};
        if (present.is<VnIfcBoolean>())
            return {boolean, boolean, 1};
        if (present.is<VnIfcLogical>())
            return {unknown, unknown, 1};
        if (present.is<VnDbObjectId>())
            return {handle, handle, text};
        if (const auto* enumeration = present.type()->enumeration()) {
            const std::string_view name = enumeration->literalName(0)->view();
            const std::uint32_t first = 0;
            const std::string prefix = GetParam() + "::k";
            const std::string literal(name.substr(name.find('_', prefix.size()) + 1));
            return {VnAnsiString(literal), VnIfcVariant(*present.type(), &first), present};
        }
        if (present.type()->isSelect()) {
            const VnIfcVariant select = selectOffer(present, type);
            return {select, select, text};
        }
        const VnIfcVariant element =
            elementOffer(dynamic_cast<const VnIfcAggregationType&>(*resolved(type)).elementType());
        if (element.isNull())
            return {readElements(attribute), {}, Variants{VnIfcLogical()}};
        return {Variants{element}, {}, Variants{element, VnIfcLogical()}};
    }

    void tryAttribute(VnIfcEntityBase& instance, const VnIfcExplicitAttributeDefinition& attribute) {
        const VnAnsiString name(mixedCase(attribute.name()));
        const VnIfcVariant unset = get(instance, name);
        const bool isAggregate = unset.type()->isAggregate();
        EXPECT_FALSE(instance.testAttr(name));
        const Offer offer = offerFor(unset, attribute);
        EXPECT_TRUE(instance.putAttr(name, offer.good));
        EXPECT_TRUE(instance.testAttr(name));
        const auto isAsOffered = [&] {
            VnIfcVariant elements;
            const VnIfcVariant value = get(instance, name);
            if (!isAggregate)
                return value == offer.expected;
            return value.convertTo(VnIfcVariantType::Desc<Variants>::value(), elements) &&
                   elements.get<Variants>()->size() == 1;
        };
        EXPECT_TRUE(isAsOffered());
        EXPECT_FALSE(instance.putAttr(name, offer.bad));
        EXPECT_FALSE(instance.putAttr(name, VnIfcVariant()));
        EXPECT_TRUE(isAsOffered());
        instance.unsetAttr(name);
        EXPECT_FALSE(instance.testAttr(name));
        // Aggregates and selects are handed out as pointers, whose target shows the change.
        EXPECT_TRUE(get(instance, name) == unset);
        kinds[isAggregate                   ? L"aggregate"
              : unset.type()->isSelect()    ? L"select"
              : unset.type()->enumeration() ? L"enumeration"
                                            : unset.type()->name()]++;
    }

    Values m_values{m_declared};
    VnIfcModel model{&m_schema};
    VnIfcModel m_read{&m_schema};
    std::map<std::wstring, int> kinds;
};

TEST_P(AttributeWalk, ExplicitAttributesTakeValuesOfTheirKindAlone) {
    for (std::size_t i = 0; i < m_schema.entityCount(); ++i) {
        const VnIfcEntityType* entity = m_schema.entityAt(i);
        if (entity->isAbstract())
            continue;
        const std::unique_ptr<VnIfcEntityBase> instance(entity->create());
        for (const VnIfcAttributeDefinition* attribute : entity->allAttributes()) {
            SCOPED_TRACE(std::string(entity->name().constStr()) + "." + attribute->name().constStr());
            if (const auto* own = dynamic_cast<const VnIfcExplicitAttributeDefinition*>(attribute))
                tryAttribute(*instance, *own);
        }
        model.clear();
        if (HasFailure())
            break;
    }
    EXPECT_EQ(kinds.size(), 10u);
    int tried = 0, expected = 0;
    for (const auto& [kind, count] : kinds)
        tried += count;
    for (const declared::Entity* entity : m_values.concrete)
        expected += static_cast<int>(m_declared.parameters(*entity).size());
    EXPECT_EQ(tried, expected);
}

TEST_P(AttributeWalk, InverseAttributesCanOnlyBeRead) {
    int inverses = 0;
    for (std::size_t i = 0; i < m_schema.entityCount(); ++i) {
        const VnIfcEntityType* entity = m_schema.entityAt(i);
        const std::unique_ptr<VnIfcEntityBase> instance(entity->create());
        for (const VnIfcInverseAttributeDefinition* inverse : entity->inverseAttributes()) {
            SCOPED_TRACE(std::string(entity->name().constStr()) + "." + inverse->name().constStr());
            const VnAnsiString name(mixedCase(inverse->name()));
            const VnIfcVariant value = get(*instance, name);
            EXPECT_TRUE(value.is<VnDbObjectId>() || value.is<VnIfcSetAggr<VnDbObjectId>*>());
            const auto* set = value.get<VnIfcSetAggr<VnDbObjectId>*>();
            if (set)
                (*set)->add(anyInstance());
            EXPECT_FALSE(instance->testAttr(name));
            EXPECT_FALSE(instance->putAttr(name, VnIfcArray<VnDbObjectId>()));
            instance->unsetAttr(name);
            EXPECT_TRUE(!set || (*set)->count() == 1);
            ++inverses;
        }
    }
    int expected = 0;
    for (const declared::Entity& entity : m_declared.entities())
        expected += static_cast<int>(entity.inverses.size());
    EXPECT_EQ(inverses, expected);
}

TEST_P(AttributeWalk, AccessModesRefuseBeforeTheNameIsLookedAt) {
    const auto refusal = [](auto operation) {
        try {
            operation();
        } catch (const VnIfcException& error) {
            return std::to_string(error.code()) + " " + error.what() + " " + error.place();
        }
        return std::string("none");
    };
    for (std::size_t i = 0; i < m_schema.entityCount(); ++i) {
        const VnIfcEntityType* entity = m_schema.entityAt(i);
        VnIfcEntityBase& instance = *model.append(std::unique_ptr<VnIfcEntityBase>(entity->create())).openObject();
        const std::string place =
            ' ' + GetParam() + "::" + std::string(entity->typeCode()->parameters()[0].text().view()) + "::";
        const VnAnsiString name("unknown");
        VnIfcVariant value(1);
        for (const SdaiAccessMode mode : {sdaiNoAccess, sdaiReadOnly, sdaiReadWrite}) {
            model.setMode(mode);
            const std::string read = mode == sdaiNoAccess ? "190 SDAI-model access not defined" + place : "";
            const std::string write = mode != sdaiReadWrite ? "180 SDAI-model access not read-write" + place : "";
            const auto expected = [](const std::string& start, const char* operation) {
                return start.empty() ? "none" : start + operation;
            };
            EXPECT_EQ(refusal([&] { EXPECT_FALSE(instance.getAttr(name, value)); }), expected(read, "getAttr"));
            EXPECT_EQ(refusal([&] { EXPECT_FALSE(instance.testAttr(name)); }), expected(read, "testAttr"));
            EXPECT_EQ(refusal([&] { EXPECT_FALSE(instance.putAttr(name, value)); }), expected(write, "putAttr"));
            EXPECT_EQ(refusal([&] { instance.unsetAttr(name); }), expected(write, "unsetAttr"));
            EXPECT_TRUE(value == VnIfcVariant(1));
        }
        model.clear();
    }
}

INSTANTIATE_TEST_SUITE_P(Releases, AttributeWalk, testing::ValuesIn(allReleases()), nameOfRelease);

} // namespace

} // namespace vnifc::test
