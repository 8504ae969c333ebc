// Every entity of the schema on its way through an exchange file, with values made from the dictionary. More than 300
// of them occur in no file that we know.
#include "exchange/Support.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcDefinedType.h>
#include <VnIfcCore/VnIfcDerivedAttributeDefinition.h>
#include <VnIfcCore/VnIfcEnumerationType.h>
#include <VnIfcCore/VnIfcExplicitAttributeDefinition.h>
#include <VnIfcCore/VnIfcSchema.h>
#include <VnIfcCore/VnIfcSelectType.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

using namespace VN_SDAI;
using namespace exchange;

namespace {

std::string lower(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](unsigned char c) { return std::tolower(c); });
    return result;
}

std::string upper(std::string_view text) {
    std::string result(text);
    std::ranges::transform(result, result.begin(), [](unsigned char c) { return std::toupper(c); });
    return result;
}

/// What the dictionary does not tell: which attributes are OPTIONAL, and the literals that the classes know.
struct SchemaText {
    SchemaText() {
        std::ifstream file(VNIFC_SCHEMAS "/ifc4x3/declarations.exp");
        std::string entity, enumeration;
        for (std::string line; std::getline(file, line);) {
            std::istringstream words(line);
            std::string first, second, third;
            words >> first >> second >> third;
            if (first == "ENTITY")
                entity = lower(second.substr(0, second.find(';')));
            if (second == ":" && third == "OPTIONAL")
                optional.insert(entity + '.' + lower(first));
            if (first == "TYPE" && line.ends_with("ENUMERATION OF (")) {
                enumeration = lower(second);
            } else if (first == "END_TYPE;") {
                enumeration.clear();
            } else if (!enumeration.empty()) {
                std::ranges::replace_if(
                    line, [](char c) { return c == ',' || c == ')' || c == ';'; }, ' ');
                std::istringstream names(line);
                for (std::string literal; names >> literal;)
                    literals[enumeration].push_back(literal);
            }
        }
    }

    std::set<std::string> optional;
    std::map<std::string, std::vector<std::string>> literals;
};

/// A position of a parameter list.
struct Field {
    const VnIfcAttributeDefinition* attribute;
    bool isDerived;
    bool isOptional;
};

/// Makes parameters of every kind. Each concrete entity has two instances, so that there is something to refer to.
class Values {
public:
    static constexpr std::size_t kSecond = 1000; ///< distance between the two

    Values() {
        for (std::size_t i = 0; i < schema()->entityCount(); ++i)
            if (!schema()->entityAt(i)->isAbstract())
                concrete.push_back(schema()->entityAt(i));
    }

    std::vector<Field> fieldsOf(const VnIfcEntityType& entity) const {
        std::set<const VnIfcAttributeDefinition*> derived;
        for (const VnIfcAttributeDefinition* each : entity.allAttributes())
            if (const auto* own = dynamic_cast<const VnIfcDerivedAttributeDefinition*>(each))
                derived.insert(own->redeclaredAttribute());
        std::vector<Field> fields;
        for (const VnIfcAttributeDefinition* each : entity.allAttributes()) {
            if (!dynamic_cast<const VnIfcExplicitAttributeDefinition*>(each))
                continue;
            const std::string name = lower(each->parentEntity()->name()) + '.' + lower(each->name());
            fields.push_back({each, derived.contains(each), text.optional.contains(name)});
        }
        return fields;
    }

    std::string valueOf(const VnIfcAttributeDefinition& attribute) {
        return attribute.type() ? valueOf(*attribute.type()) : literalOf(attribute.typeName());
    }

    /// The types that a select takes in the end, each as often as the select and its members name it.
    static void collectMembers(const VnIfcSelectType& select, std::vector<const VnIfcNameType*>& members) {
        for (const VnIfcNameType* member : select.members()) {
            const auto* inner = underlying<VnIfcSelectType>(member);
            if (inner)
                collectMembers(*inner, members);
            else
                members.push_back(member);
        }
    }

    std::string typedValueOf(const VnIfcNameType& member) {
        const std::string value = valueOf(member);
        return member.kind() == VnTypeCodeKind::kEntity ? value : upper(member.name()) + '(' + value + ')';
    }

    std::string aggregateOf(const VnIfcAggregationType& type, std::string_view only = {}) {
        const auto low = static_cast<std::size_t>(type.lowerBound().value());
        const std::size_t high =
            type.upperBound().isUnbounded() ? 2 : static_cast<std::size_t>(type.upperBound().value());
        const bool isSet = dynamic_cast<const VnIfcSetType*>(&type);
        const bool ofSelects = underlying<VnIfcSelectType>(type.elementType());
        // Values of a set stand in ascending order: for those of selects that depends on the members.
        const std::size_t count =
            !only.empty() || (isSet && ofSelects) ? 1 : std::max(low, std::min<std::size_t>(2, high));
        std::string list = "(";
        for (std::size_t i = 0; i < count; ++i) {
            m_wantsSecond = i % 2 == 1;
            (list += i > 0 ? "," : "") += only.empty() ? valueOf(*type.elementType()) : std::string(only);
        }
        m_wantsSecond = false;
        return list + ')';
    }

    template <class T>
    static const T* underlying(const VnIfcParameterType* type) {
        const auto* defined = dynamic_cast<const VnIfcDefinedType*>(type);
        return defined ? dynamic_cast<const T*>(defined->underlyingType()) : nullptr;
    }

    std::vector<const VnIfcEntityType*> concrete;
    SchemaText text;

private:
    std::string valueOf(const VnIfcParameterType& type) {
        if (const auto* entity = dynamic_cast<const VnIfcEntityType*>(&type))
            return referenceTo(*entity);
        if (underlying<VnIfcEnumerationType>(&type))
            return literalOf(static_cast<const VnIfcNameType&>(type).name());
        if (const auto* list = underlying<VnIfcAggregationType>(&type))
            return aggregateOf(*list);
        if (const auto* select = underlying<VnIfcSelectType>(&type)) {
            std::vector<const VnIfcNameType*> members;
            collectMembers(*select, members);
            return typedValueOf(*members[m_counter++ % members.size()]);
        }
        const auto* defined = dynamic_cast<const VnIfcDefinedType*>(&type);
        if (defined && defined->name() == "IfcGloballyUniqueId")
            return "'0YvctVUKr0kugbFTf5" + std::to_string(1000 + m_counter++ % 9000) + '\'';
        if (defined)
            return valueOf(*defined->underlyingType());
        const std::string number = std::to_string(++m_counter);
        switch (type.kind()) {
        case VnTypeCodeKind::kInteger:
            return number;
        case VnTypeCodeKind::kReal:
            return number + ".5";
        case VnTypeCodeKind::kBoolean:
            return m_counter % 2 ? ".T." : ".F.";
        case VnTypeCodeKind::kLogical:
            return m_counter % 2 ? ".U." : ".T.";
        case VnTypeCodeKind::kBinary:
            return "\"0" + number + '"';
        default:
            return "'it''s " + number + '\'';
        }
    }

    std::string literalOf(std::string_view enumeration) {
        const std::vector<std::string>& known = text.literals.at(lower(enumeration));
        return '.' + known[m_counter++ % known.size()] + '.';
    }

    std::string referenceTo(const VnIfcEntityType& entity) const {
        const auto found = std::ranges::find_if(concrete, [&](const auto* each) { return each->isKindOf(&entity); });
        const auto number = static_cast<std::size_t>(found - concrete.begin()) + 1;
        return '#' + std::to_string(m_wantsSecond ? number + kSecond : number);
    }

    std::size_t m_counter = 0;
    bool m_wantsSecond = false;
};

std::string line(std::size_t number, const VnIfcEntityType& entity, const std::vector<std::string>& parameters) {
    std::string result = '#' + std::to_string(number) + '=' + entity.name().constStr() + '(';
    for (std::size_t i = 0; i < parameters.size(); ++i)
        (result += i > 0 ? "," : "") += parameters[i];
    return result + ");\n";
}

bool isAggregate(const Field& field) {
    return field.attribute->type() && field.attribute->type()->kind() == VnTypeCodeKind::kAggregation;
}

/// The only single binary attribute, which has no value in memory.
bool isBinary(const Field& field) { return field.attribute->name() == "RasterCode"; }

} // namespace

TEST(Walk, everyEntityComesBackWithEveryAttributeSetAndWithEveryOptionalOneUnset) {
    Values values;
    ASSERT_EQ(values.concrete.size(), 746u);
    EXPECT_EQ(values.text.optional.size(), 871u);
    std::string full, bare, empty;
    for (std::size_t i = 0; i < values.concrete.size(); ++i) {
        const VnIfcEntityType& entity = *values.concrete[i];
        std::vector<std::string> all, mandatory, none;
        for (const Field& field : values.fieldsOf(entity)) {
            const std::string value = field.isDerived   ? "*"
                                      : isBinary(field) ? "\"\""
                                                        : values.valueOf(*field.attribute);
            // The first field is never written as "$" when it is an aggregate.
            const bool isNeverUnset = field.isDerived || isBinary(field);
            const std::string unset = isNeverUnset                                               ? value
                                      : isAggregate(field) && (all.empty() || !field.isOptional) ? "()"
                                                                                                 : "$";
            all.push_back(value);
            mandatory.push_back(field.isOptional ? unset : value);
            none.push_back(unset);
        }
        full += line(i + 1, entity, all);
        bare += line(i + 1 + Values::kSecond, entity, mandatory);
        empty += line(i + 1 + 2 * Values::kSecond, entity, none);
    }
    const std::string data = full + bare + empty;
    Reading reading(fileOf(data));
    EXPECT_EQ(reading.result.errors + reading.result.warnings, 0u) << reading.texts();
    const std::string written = reading.data();
    std::istringstream expected(data), actual(written);
    for (std::string before, after; std::getline(expected, before);) {
        std::getline(actual, after);
        EXPECT_EQ(after, before);
    }
    EXPECT_EQ(rewritten(written), written);

    for (std::size_t i = 0; i < values.concrete.size(); ++i) {
        for (const Field& field : values.fieldsOf(*values.concrete[i])) {
            if (field.isDerived || isBinary(field))
                continue;
            const VnAnsiString& name = field.attribute->name();
            const auto isSet = [&](std::size_t place) {
                return reading.model.find(i + 1 + place * Values::kSecond).openObject()->testAttr(name);
            };
            const bool isRight = isSet(0) && isSet(1) == !field.isOptional && !isSet(2);
            EXPECT_TRUE(isRight) << values.concrete[i]->name().view() << '.' << name.view();
        }
    }
}

TEST(Walk, everyMemberOfEverySelectComesBack) {
    Values values;
    std::string targets, data;
    std::size_t number = 2 * Values::kSecond;
    std::set<const VnIfcSelectType*> done;
    for (std::size_t i = 0; i < values.concrete.size(); ++i)
        targets += line(i + 1, *values.concrete[i], {}) + line(i + 1 + Values::kSecond, *values.concrete[i], {});
    for (const VnIfcEntityType* entity : values.concrete) {
        const std::vector<Field> fields = values.fieldsOf(*entity);
        for (std::size_t position = 0; position < fields.size(); ++position) {
            const VnIfcParameterType* type = fields[position].attribute->type();
            const auto* list = Values::underlying<VnIfcAggregationType>(type);
            const auto* select = Values::underlying<VnIfcSelectType>(list ? list->elementType() : type);
            if (!select || !done.insert(select).second)
                continue;
            std::vector<const VnIfcNameType*> members;
            Values::collectMembers(*select, members);
            for (const VnIfcNameType* member : members) {
                std::vector<std::string> parameters;
                for (const Field& field : fields)
                    parameters.push_back(field.isDerived                                                   ? "*"
                                         : isAggregate(field) && (parameters.empty() || !field.isOptional) ? "()"
                                                                                                           : "$");
                const std::string value = values.typedValueOf(*member);
                parameters[position] = list ? values.aggregateOf(*list, value) : value;
                data += line(++number, *entity, parameters);
            }
        }
    }
    EXPECT_GE(done.size(), 60u) << "nearly every select is the type of an attribute";
    Reading reading(fileOf(targets + data));
    for (const VnIfcDiagnostic& diagnostic : reading.diagnostics)
        EXPECT_EQ(diagnostic.code, "too-few-parameters") << diagnostic.text();
    const std::string written = reading.data();
    EXPECT_EQ(written.substr(written.size() - data.size()), data);
}
