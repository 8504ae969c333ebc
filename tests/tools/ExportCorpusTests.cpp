#include "Corpus.h"
#include "Process.h"

// The programs of other folders have it, this one has not.
#include "corpus/PlainReader.cpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

// ---- what the file says

void appendUtf8(std::string& text, unsigned long c) {
    if (c < 0x80) {
        text += static_cast<char>(c);
        return;
    }
    const int following = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr unsigned long kLead[] = {0, 0xC0, 0xE0, 0xF0};
    text += static_cast<char>(kLead[following] | c >> 6 * following);
    for (int i = following - 1; i >= 0; --i)
        text += static_cast<char>(0x80 | (c >> 6 * i & 0x3F));
}

/// Decodes a string as it stands in a file, which must be without fault.
std::string decoded(const std::string& quoted) {
    std::string text;
    std::size_t digits = 0; // of a character, within \X2\ or \X4\.
    for (std::size_t i = 1; i + 1 < quoted.size();) {
        const std::string_view rest = std::string_view(quoted).substr(i);
        const auto hexadecimal = [&](std::size_t at, std::size_t count) {
            appendUtf8(text, std::stoul(quoted.substr(i + at, count), nullptr, 16));
            i += at + count;
        };
        if (rest.starts_with("\\X0\\")) {
            digits = 0;
            i += 4;
        } else if (digits > 0) {
            hexadecimal(0, digits);
        } else if (rest.starts_with("\\X2\\") || rest.starts_with("\\X4\\")) {
            digits = rest[2] == '2' ? 4 : 8;
            i += 4;
        } else if (rest.starts_with("\\X\\")) {
            hexadecimal(3, 2);
        } else if (rest.starts_with("\\S\\")) {
            appendUtf8(text, static_cast<unsigned char>(rest[3]) + 0x80u);
            i += 4;
        } else {
            text += rest[0];
            i += rest[0] == '\\' || rest[0] == '\'' ? 2 : 1;
        }
    }
    return text;
}

json jsonOf(const plain::Value& value);

json jsonOf(const std::vector<plain::Value>& values) {
    json list = json::array();
    for (const plain::Value& value : values)
        list.push_back(jsonOf(value));
    return list;
}

/// What export should say.
json jsonOf(const plain::Value& value) {
    switch (value.kind) {
    case plain::Value::kNumber:
        return value.number;
    case plain::Value::kString:
        return decoded(value.text);
    case plain::Value::kList:
        return jsonOf(value.values);
    case plain::Value::kTyped:
        return {{"type", value.text}, {"value", jsonOf(value.values.at(0))}};
    default:
        break;
    }
    const std::string& token = value.text;
    if (token.starts_with('#'))
        return {{"ref", std::stoull(token.substr(1))}};
    if (token == ".T." || token == ".F.")
        return token == ".T.";
    if (token == "$")
        return nullptr;
    return token == ".U." ? "UNKNOWN" : token.substr(1, token.size() - 2);
}

// ---- what export says

/// Files of which the index says that the schema has all that is in them.
std::vector<fs::path> fittingFiles() {
    std::vector<fs::path> files;
    std::ifstream index(corpus() / "INDEX.tsv");
    for (std::string line; std::getline(index, line);)
        if (line.find(" 0 unknown, 0 other counts") != line.npos)
            files.push_back(corpus() / line.substr(0, line.find('\t')));
    return files;
}

/// Names and types of explicit attributes by entity, in the order of the parameter list.
class Attributes {
public:
    using List = std::vector<std::pair<std::string, std::string>>;

    Attributes() {
        const json schema = json::parse(runTool({"schema", "--json"}).out);
        for (const json& entity : schema["entities"]) {
            List& list = m_lists[entity["name"]];
            if (entity["supertype"].is_string())
                list = m_lists.at(entity["supertype"]); // it comes first
            for (const json& attribute : entity["attributes"])
                if (attribute["kind"] == "explicit")
                    list.emplace_back(attribute["name"], attribute["type"]);
        }
    }
    const List& of(const std::string& entity) const { return m_lists.at(entity); }

private:
    std::map<std::string, List> m_lists;
};

using Place = std::pair<std::uint64_t, std::string>;

/// What the reader could not take as a value of its attribute.
std::set<Place> unfitValues(const fs::path& file) {
    std::set<Place> places;
    std::istringstream lines(runTool({"check", "--json", file.string()}).out);
    for (std::string line; std::getline(lines, line);) {
        const json finding = json::parse(line);
        static const std::set<std::string> kUnfit{"wrong-kind", "unknown-literal", "unknown-select-type",
                                                  "out-of-range", "binary"};
        if (finding.contains("code") && kUnfit.contains(finding["code"]))
            places.emplace(finding["id"], finding["attribute"]);
    }
    return places;
}

/// A SET has no order and no equal elements.
void makeSet(json& value) {
    if (!value.is_array())
        return;
    std::sort(value.begin(), value.end());
    value.erase(std::unique(value.begin(), value.end()), value.end());
}

/// Compares an instance with what was exported of it; answers the number of values compared.
std::size_t compare(const plain::Instance& inFile, json& exported, const Attributes::List& attributes,
                    const std::set<Place>& unfit) {
    EXPECT_EQ(exported["type"], inFile.keyword);
    json& values = exported["attributes"];
    std::size_t compared = 0, derived = 0;
    EXPECT_EQ(inFile.parameters.size(), attributes.size());
    for (std::size_t i = 0; i < std::min(inFile.parameters.size(), attributes.size()); ++i) {
        const auto& [name, type] = attributes[i];
        if (inFile.parameters[i].text == "*" && !values.contains(name)) {
            ++derived;
            continue;
        }
        if (unfit.contains({exported["id"], name}))
            continue;
        json parameter = jsonOf(inFile.parameters[i]);
        if (type.starts_with("set ")) {
            makeSet(parameter);
            makeSet(values[name]);
        }
        EXPECT_EQ(values[name], parameter) << '#' << exported["id"] << '.' << name;
        ++compared;
    }
    EXPECT_EQ(values.size() + derived, attributes.size()) << '#' << exported["id"];
    return compared;
}

TEST(ExportCorpus, ValuesAreThoseOfTheFile) {
    if (!fs::exists(corpus()))
        GTEST_SKIP() << "no files of other programs here";
    const std::vector<fs::path> files = fittingFiles();
    ASSERT_FALSE(files.empty()) << "the folder has no index";
    const Attributes attributes;
    for (const fs::path& file : files) {
        SCOPED_TRACE(file.filename());
        const plain::File inFile = plain::read(contentOf(file));
        const std::set<Place> unfit = unfitValues(file);
        std::size_t instances = 0, compared = 0;
        std::istringstream lines(runTool({"export", "--quiet", file.string()}).out);
        for (std::string line; std::getline(lines, line); ++instances) {
            json exported = json::parse(line);
            const plain::Instance& instance = inFile.instances.at(exported["id"]);
            compared += compare(instance, exported, attributes.of(instance.keyword), unfit);
        }
        EXPECT_EQ(instances, inFile.instances.size());
        EXPECT_GT(compared, 50 * unfit.size());
    }
}

} // namespace

} // namespace vnifc::test
