// Every entity of every release on its way through an exchange file, with values made from the declarations. Hundreds
// of them occur in no file that we know.
#include "Release.h"
#include "Values.h"

#include <set>
#include <sstream>

using namespace VN_SDAI;

namespace vnifc::test {

namespace {

using declared::Parameter;

class Exchange : public Release {
protected:
    /// A model read from a text, with all that was said about it.
    struct Reading {
        Reading(const VnIfcSchema& schema, std::string_view file) : model(&schema) {
            VnIfcReadOptions options;
            options.diagnostics = [this](const VnIfcDiagnostic& finding) { findings.push_back(finding); };
            options.threads = 1;
            result = model.readText(file, options);
        }
        VnIfcModel model;
        std::vector<VnIfcDiagnostic> findings;
        VnIfcFileResult result;
    };

    std::string dataOf(const Reading& reading) const {
        const std::string head = fileOf(""), tail = "ENDSEC;\nEND-ISO-10303-21;\n", text = reading.model.writeText();
        const std::size_t begin = head.size() - tail.size();
        return text.substr(begin, text.size() - head.size());
    }

    bool isAggregate(const Parameter& each) const { return !m_declared.resolved(each.attribute->type).layers.empty(); }
    /// A single binary value has no place in memory.
    bool isBinary(const Parameter& each) const {
        return m_declared.resolved(each.attribute->type).name == "BINARY" && !isAggregate(each);
    }
    std::string unset(const Parameter& each, bool isFirst) const {
        if (each.isDerived)
            return "*";
        // The first field is never written as "$" when it is an aggregate.
        return isAggregate(each) && (isFirst || !each.attribute->isOptional) ? "()" : "$";
    }
    std::vector<std::string> unsetParameters(const std::vector<Parameter>& parameters) const {
        std::vector<std::string> texts;
        for (const Parameter& each : parameters)
            texts.push_back(isBinary(each) ? "\"\"" : unset(each, texts.empty()));
        return texts;
    }

    std::string targets() const {
        std::string text;
        for (const std::size_t first : {std::size_t{1}, 1 + Values::kSecond})
            for (std::size_t i = 0; i < m_values.concrete.size(); ++i) {
                const declared::Entity& entity = *m_values.concrete[i];
                text += line(first + i, entity, unsetParameters(m_declared.parameters(entity)));
            }
        return text;
    }

    void comesBack(const std::string& data) {
        Reading reading(m_schema, fileOf(data));
        for (const VnIfcDiagnostic& finding : reading.findings)
            EXPECT_EQ(finding.severity, VnIfcDiagnostic::kInfo) << finding.text();
        std::istringstream expected(data), found(dataOf(reading));
        for (std::string before, after; std::getline(expected, before);) {
            std::getline(found, after);
            EXPECT_EQ(after, before);
        }
    }

    Values m_values{m_declared};
};

TEST_P(Exchange, KeepsEveryEntityWithEveryAttributeSetAndWithEveryOptionalOneUnset) {
    std::string full, bare, empty;
    for (std::size_t i = 0; i < m_values.concrete.size(); ++i) {
        const declared::Entity& entity = *m_values.concrete[i];
        const std::vector<Parameter> parameters = m_declared.parameters(entity);
        std::vector<std::string> all, mandatory;
        const std::vector<std::string> none = unsetParameters(parameters);
        for (const Parameter& each : parameters) {
            const std::string& gone = none[all.size()];
            all.push_back(each.isDerived || isBinary(each) ? gone : m_values.valueOf(each.attribute->type));
            mandatory.push_back(each.attribute->isOptional ? gone : all.back());
        }
        full += line(i + 1, entity, all);
        bare += line(i + 1 + Values::kSecond, entity, mandatory);
        empty += line(i + 1 + 2 * Values::kSecond, entity, none);
    }
    comesBack(full + bare + empty);

    const Reading reading(m_schema, fileOf(full + bare + empty));
    for (std::size_t i = 0; i < m_values.concrete.size(); ++i) {
        for (const Parameter& each : m_declared.parameters(*m_values.concrete[i])) {
            if (each.isDerived || isBinary(each))
                continue;
            const VnAnsiString name(each.attribute->name);
            const auto isSet = [&](std::size_t place) {
                return reading.model.find(i + 1 + place * Values::kSecond).openObject()->testAttr(name);
            };
            const bool isRight = isSet(0) && isSet(1) == !each.attribute->isOptional && !isSet(2);
            EXPECT_TRUE(isRight) << m_values.concrete[i]->name << '.' << name.view();
        }
    }
}

TEST_P(Exchange, KeepsEveryMemberOfEverySelectAndEveryLiteral) {
    std::string data = targets();
    std::size_t number = 2 * Values::kSecond;
    std::set<std::string> done;
    for (const declared::Entity* entity : m_values.concrete) {
        const std::vector<Parameter> parameters = m_declared.parameters(*entity);
        for (std::size_t i = 0; i < parameters.size(); ++i) {
            const declared::Type type = m_declared.resolved(parameters[i].attribute->type);
            const declared::Named* select = m_values.selectOf(type);
            const declared::Named* enumeration = m_values.enumerationOf(type);
            if ((!select && !enumeration) || type.layers.size() > 1 || parameters[i].isDerived ||
                !done.insert(type.name).second)
                continue;
            std::vector<std::string> values;
            for (const std::string& each : select ? m_values.membersOf(*select) : enumeration->items)
                values.push_back(select ? m_values.memberValueOf(each) : '.' + declared::upper(each) + '.');
            for (const std::string& value : values) {
                std::vector<std::string> texts = unsetParameters(parameters);
                texts[i] = type.layers.empty() ? value : m_values.aggregateOf(type, value);
                data += line(++number, *entity, texts);
            }
        }
    }
    std::size_t declaredTypes = 0;
    for (const declared::Named& type : m_declared.types())
        declaredTypes += type.kind != declared::Named::kDefined ? 1 : 0;
    EXPECT_GT(done.size(), declaredTypes / 2) << "most of them are the type of an attribute";
    comesBack(data);
}

INSTANTIATE_TEST_SUITE_P(Releases, Exchange, testing::ValuesIn(allReleases()), nameOfRelease);

} // namespace

} // namespace vnifc::test
