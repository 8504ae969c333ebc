#include "Process.h"
#include "support/Corpus.h"
#include "support/Releases.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <fstream>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;
using nlohmann::json;

/// What a file is known to hold.
struct Known {
    fs::path file;
    std::uint64_t instances;
    std::uint64_t types;
};

std::vector<Known> knownFiles() {
    std::vector<Known> known;
    std::ifstream index(corpus() / "INDEX.tsv");
    for (std::string line; std::getline(index, line);) {
        unsigned long long instances = 0;
        unsigned long long types = 0;
        const std::size_t counts = line.rfind(", ", line.find(" instances of "));
        if (counts != std::string::npos &&
            std::sscanf(&line[counts], ", %llu instances of %llu classes", &instances, &types) == 2)
            known.push_back({corpus() / line.substr(0, line.find('\t')), instances, types});
    }
    return known;
}

json infoOf(const fs::path& file) {
    const Outcome outcome = runTool({"info", "--json", "--quiet", file.string()});
    const json info = json::parse(outcome.out);
    EXPECT_EQ(outcome.exitCode, info["diagnostics"]["error"] == 0 ? 0 : 1);
    return info;
}

TEST(Corpus, EveryInstanceIsReadAndWritten) {
    if (!fs::exists(corpus()))
        GTEST_SKIP() << "no files of other programs here";
    const std::vector<Known> files = knownFiles();
    ASSERT_FALSE(files.empty()) << "the folder has no index";
    const fs::path copy = scratch() / "copy.ifc";
    const fs::path copyOfCopy = scratch() / "copy2.ifc";
    for (const Known& known : files) {
        SCOPED_TRACE(known.file.filename());
        const plain::File before = plain::read(contents(known.file));
        const declared::Schema& release = declared::schemaNamed(releaseOf(before));
        if (!isBuilt(release.name()))
            continue;
        const json info = infoOf(known.file);
        EXPECT_EQ(info["instances"], known.instances);
        EXPECT_EQ(info["types"].size(), known.types);

        const int errors = info["diagnostics"]["error"] == 0 ? 0 : 1;
        EXPECT_EQ(runTool({"rewrite", "--threads", "3", known.file.string(), copy.string()}).exitCode, errors);
        EXPECT_EQ(info["release"], release.name());
        EXPECT_EQ(lossesOf(before, plain::read(contents(copy)), release), "");
        runTool({"rewrite", "--threads", "1", copy.string(), copyOfCopy.string()});
        EXPECT_EQ(contents(copy), contents(copyOfCopy));
    }
}

} // namespace

} // namespace vnifc::test
