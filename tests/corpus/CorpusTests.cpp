// Files of other programs, foreign and broken ones too: what goes in comes out. They are no part of this project;
// without them there is nothing to test.
#include "PlainReader.h"
#include "exchange/Support.h"

#include <VnIfcCore/VnIfcAggregationType.h>
#include <VnIfcCore/VnIfcDefinedType.h>
#include <VnIfcCore/VnIfcExplicitAttributeDefinition.h>
#include <VnIfcCore/VnIfcSchema.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <sstream>

using namespace VN_SDAI;
using namespace exchange;
namespace fs = std::filesystem;

namespace {

fs::path corpus() {
    const char* place = std::getenv("VNIFC_CORPUS");
    return place ? fs::path(place) : fs::path(VNIFC_TEST_DATA "/../../../shared/corpus");
}

std::string contents(const fs::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

const VnIfcAggregationType* aggregation(const VnIfcParameterType* type) {
    const auto* defined = dynamic_cast<const VnIfcDefinedType*>(type);
    return defined ? dynamic_cast<const VnIfcAggregationType*>(defined->underlyingType()) : nullptr;
}

/// The types of the parameters of an entity.
std::vector<const VnIfcParameterType*> typesOf(std::string_view keyword) {
    std::vector<const VnIfcParameterType*> types;
    if (const VnIfcEntityType* entity = schema()->entity(keyword))
        for (const VnIfcAttributeDefinition* each : entity->allAttributes())
            if (dynamic_cast<const VnIfcExplicitAttributeDefinition*>(each))
                types.push_back(each->type());
    return types;
}

/// A text that is the same for equal values; SETs are sorted.
std::string canonical(const plain::Value& value, const VnIfcParameterType* type) {
    const VnIfcAggregationType* list = aggregation(type);
    if (value.kind == plain::Value::kNumber) {
        std::ostringstream text;
        text << std::hexfloat << value.number;
        return text.str();
    }
    if (value.kind == plain::Value::kToken && value.text.starts_with('.')) {
        std::string literal = value.text;
        std::ranges::transform(literal, literal.begin(), [](unsigned char c) { return std::toupper(c); });
        return literal;
    }
    const bool isList = value.kind == plain::Value::kList;
    if (!isList && value.kind != plain::Value::kTyped)
        return value.text;
    std::vector<std::string> values;
    for (const plain::Value& each : value.values)
        values.push_back(canonical(each, list && isList ? list->elementType() : nullptr));
    if (dynamic_cast<const VnIfcSetType*>(list))
        std::ranges::sort(values);
    std::string text = isList ? "(" : value.text + '(';
    for (const std::string& each : values)
        text += each + ',';
    return text + ')';
}

std::vector<std::string> canonical(const plain::Instance& instance) {
    const std::vector<const VnIfcParameterType*> types = typesOf(instance.keyword);
    std::vector<std::string> values;
    for (std::size_t i = 0; i < instance.parameters.size(); ++i)
        values.push_back(canonical(instance.parameters[i], i < types.size() ? types[i] : nullptr));
    return values;
}

/// What is in the file but did not come out the same, one line for each instance.
std::string lossesOf(const plain::File& before, const plain::File& after) {
    std::string losses;
    for (const auto& [number, instance] : before.instances) {
        const std::string name = '#' + std::to_string(number) + '=' + instance.keyword;
        const auto found = after.instances.find(number);
        if (found == after.instances.end())
            losses += name + " is missing\n";
        else if (found->second.keyword != instance.keyword)
            losses += name + " has become another\n";
        else if (found->second.text != instance.text)
            losses += name + " has another text\n";
        else if (canonical(found->second) != canonical(instance))
            losses += name + " has other parameters\n";
    }
    if (after.instances.size() != before.instances.size())
        losses += "other instances have come in\n";
    return losses;
}

} // namespace

TEST(PlainReader, takesApartWhatTheLibraryMustKeep) {
    const plain::File file = plain::read(
        fileOf("#1= IFCX ( 'a''b\\S\\'',$$,/* ) */ (1.,.T.),,IFCLABEL ('x'),#12,\"0F\",);\n#2=(A(1)B());\n"));
    EXPECT_EQ(file.header.size(), 3u);
    ASSERT_EQ(file.instances.size(), 2u);
    EXPECT_EQ(canonical(file.instances.at(1)), (std::vector<std::string>{"'a''b\\S\\''", "$", "$", "(0x1p+0,.T.,)", "",
                                                                         "IFCLABEL('x',)", "#12", "\"0F\"", ""}));
    EXPECT_EQ(file.instances.at(2).text, "(A(1)B())");
    const plain::File other = plain::read(fileOf("#1=IFCX('a''b\\S\\'',$,$,(1.0,.T.),$,IFCLABEL('x'),#12,\"0F\",);\n"));
    EXPECT_EQ(lossesOf(file, other), "#1=IFCX has other parameters\n#2= is missing\nother instances have come in\n");
}

TEST(Corpus, everyInstanceAndParameterComesBack) {
    if (!fs::exists(corpus()))
        GTEST_SKIP() << "no files of other programs here";
    std::size_t files = 0, instances = 0;
    for (const auto& entry : fs::directory_iterator(corpus())) {
        if (entry.path().extension() != ".ifc")
            continue;
        SCOPED_TRACE(entry.path().filename());
        const std::string text = contents(entry.path());
        Reading reading(text, 0);
        ASSERT_TRUE(reading.result) << reading.result.message;
        const std::string written = reading.model.writeText();
        const plain::File before = plain::read(text), after = plain::read(written);
        EXPECT_EQ(after.header, before.header);
        EXPECT_EQ(before.doubles, 0u);
        EXPECT_EQ(lossesOf(before, after), "");
        EXPECT_EQ(Reading(written).model.writeText(), written) << "the second time";
        ++files;
        instances += before.instances.size();
    }
    EXPECT_GT(files, 0u);
    RecordProperty("files", static_cast<int>(files));
    RecordProperty("instances", static_cast<int>(instances));
}
