#include "Process.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdint>
#include <fstream>
#include <thread>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;
using testing::IsSubstring;

/// A file in an archive.
struct Entry {
    std::string name;
    std::string content;
    std::uint16_t flags = 0;
};

std::string number(std::uint32_t value, int bytes) {
    std::string text;
    for (; bytes > 0; --bytes, value >>= 8)
        text += static_cast<char>(value & 0xFF);
    return text;
}

std::uint32_t crcOf(const std::string& content) {
    std::uint32_t crc = ~0u;
    for (const char c : content) {
        crc ^= static_cast<unsigned char>(c);
        for (int i = 0; i < 8; ++i)
            crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

/// An archive of files that are not deflated, byte by byte, so that it can be wrong.
std::string archiveOf(const std::vector<Entry>& entries) {
    std::string files, directory;
    for (const Entry& entry : entries) {
        const auto length = static_cast<std::uint32_t>(entry.content.size());
        const std::string common = number(20, 2) + number(entry.flags, 2) + number(0, 2 + 2) + number(0x21, 2) +
                                   number(crcOf(entry.content), 4) + number(length, 4) + number(length, 4) +
                                   number(static_cast<std::uint32_t>(entry.name.size()), 2) + number(0, 2);
        directory += "PK\1\2" + number(20, 2) + common + number(0, 2 + 2 + 2 + 4) +
                     number(static_cast<std::uint32_t>(files.size()), 4) + entry.name;
        files += "PK\3\4" + common + entry.name + entry.content;
    }
    const auto count = static_cast<std::uint32_t>(entries.size());
    return files + directory + "PK\5\6" + number(0, 4) + number(count, 2) + number(count, 2) +
           number(static_cast<std::uint32_t>(directory.size()), 4) +
           number(static_cast<std::uint32_t>(files.size()), 4) + number(0, 2);
}

/// The house as the tool archives it, with another size claimed for it.
std::string archiveClaiming(std::uint32_t size) {
    const fs::path file = scratch() / "true.ifczip";
    runTool({"rewrite", "--quiet", house, file.string()});
    std::string archive = contents(file);
    archive.replace(22, 4, number(size, 4));
    archive.replace(archive.find("PK\1\2") + 24, 4, number(size, 4));
    return archive;
}

std::string rewritten(const fs::path& file) { return runTool({"rewrite", "--quiet", file.string(), "-"}).out; }

TEST(Archive, WhatIsWrittenIsReadAgain) {
    const fs::path archive = scratch() / "House.IFCZIP";
    ASSERT_EQ(runTool({"rewrite", "--quiet", house, archive.string()}).exitCode, 0);
    EXPECT_TRUE(contents(archive).starts_with("PK\3\4"));
    EXPECT_PRED_FORMAT2(IsSubstring, "House.ifc", contents(archive));
    EXPECT_EQ(rewritten(archive), contents(house));
    const fs::path zip = scratch() / "House.Zip";
    ASSERT_EQ(runTool({"rewrite", "--quiet", house, zip.string()}).exitCode, 0);
    EXPECT_EQ(contents(zip), contents(archive));
    const fs::path umlaut = scratch() / "ä.ifczip";
    ASSERT_EQ(runTool({"rewrite", "--quiet", house, umlaut.string()}).exitCode, 0);
    const std::string named = contents(umlaut);
    EXPECT_EQ(named.substr(30, 6), "ä.ifc");
    EXPECT_EQ(named[7] & 8, 8) << "that the name is in UTF-8";
    const fs::path directory = scratch() / "directory.ifczip";
    fs::create_directory(directory);
    EXPECT_EQ(runTool({"rewrite", "--quiet", house, directory.string()}).exitCode, 3);
    EXPECT_TRUE(fs::is_directory(directory));
    // By its contents, not by its name, and from a stream as well.
    const fs::path renamed = makeFile("archive.dat", contents(archive));
    EXPECT_EQ(rewritten(renamed), contents(house));
    EXPECT_EQ(runTool({"rewrite", "--quiet", "-", "-"}, {.in = renamed}).out, contents(house));
    EXPECT_EQ(rewritten(makeFile("plain.ifczip", contents(house))), contents(house));
    // Edited in place.
    EXPECT_EQ(runTool({"edit", "--quiet", archive.string(), archive.string(), "--set", "#8.Name=x"}).exitCode, 0);
    EXPECT_PRED_FORMAT2(IsSubstring, "aa',$,'x',", rewritten(archive));
}

TEST(Archive, PipesBringArchivesAndPlainFiles) {
    const fs::path archive = scratch() / "piped.ifczip", pipe = scratch() / "pipe";
    runTool({"rewrite", "--quiet", house, archive.string()});
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    for (const std::string& content : {contents(archive), contents(house), "Posted by mail\n" + contents(house),
                                       "/*" + std::string(3'000'000, '*') + "/" + contents(house)}) {
        // In two parts, of which the first tells little.
        std::thread writer([&] {
            std::ofstream out(pipe, std::ios::binary);
            out << content.substr(0, 1) << std::flush << content.substr(1);
        });
        EXPECT_EQ(runTool({"rewrite", "--quiet", "-", "-"}, {.in = pipe}).out, contents(house));
        writer.join();
    }
}

TEST(Archive, TheExchangeFileIsFoundUnderAnyName) {
    const Entry model{"a/B.IFC", contents(house)};
    const struct {
        std::vector<Entry> entries;
        const char* message;
    } cases[] = {
        {{model}, ""},
        {{{"whatever", contents(house)}}, ""},
        {{{"a/", ""}, model}, ""},
        {{{"readme.txt", "x"}, model, {"c.ifc", "no"}}, "vnifc: 3 files in the archive; reading a/B.IFC\n"},
    };
    for (const auto& [entries, message] : cases) {
        const fs::path file = makeFile("found.ifczip", archiveOf(entries));
        EXPECT_EQ(rewritten(file), contents(house)) << entries.size();
        const Outcome outcome = runTool({"info", file.string()});
        EXPECT_EQ(outcome.err.substr(0, outcome.err.find(".ifczip:") - file.string().size() + 7), message);
    }
}

TEST(Archive, BrokenAndHostileOnesAreRefused) {
    const std::string good = archiveOf({{"a.ifc", contents(house)}});
    std::string damaged = good;
    damaged[60] = static_cast<char>(damaged[60] ^ 0x55);
    const struct {
        std::string archive;
        const char* message;
    } cases[] = {
        {"PK\3\4", "it is a broken archive"},
        {good.substr(0, good.size() / 2), "it is a broken archive"},
        {damaged, "the file in the archive is broken"},
        {archiveClaiming(4000), "the file in the archive is broken"},
        {archiveClaiming(4), "the file in the archive is broken"},
        {archiveOf({{"a.ifc", contents(house), 1}}), "the file in the archive is encrypted"},
        {archiveOf({{"a.txt", "x"}, {"b.txt", "y"}}), "the archive has several files, and none of them is an .ifc"},
        {archiveOf({{"a/", ""}}), "the archive is empty"},
        {archiveClaiming(0xFFFFFFF0), "the file in the archive is too large: 4294967280 bytes, "},
        {archiveClaiming(20'000'000), "too large: 20000000 bytes, 16777216 at most"},
        {archiveOf({{"a.ifc", "no model"}}), "it does not begin with ISO-10303-21"},
    };
    for (const auto& [archive, message] : cases) {
        const Outcome outcome = runTool({"info", makeFile("bad.ifczip", archive).string()});
        EXPECT_EQ(outcome.exitCode, 3) << message;
        EXPECT_EQ(outcome.out, "");
        EXPECT_PRED_FORMAT2(IsSubstring, message, outcome.err);
    }
}

TEST(Archive, AnyDamageToTheDirectoriesIsSurvived) {
    const std::string model = contents(house);
    const std::string good = archiveOf({{"a.ifc", model}});
    for (std::size_t i = 4; i < good.size(); i = i == good.find(model) ? i + model.size() : i + 1) {
        std::string damaged = good;
        damaged[i] = static_cast<char>(~damaged[i]);
        const Outcome outcome = runTool({"info", "--quiet", makeFile("damaged.ifczip", damaged).string()});
        EXPECT_TRUE(outcome.exitCode == 0 || outcome.exitCode == 3) << i << ' ' << outcome.exitCode;
    }
}

TEST(Archive, AFailureLeavesTheTargetAsItWas) {
    const fs::path target = makeFile("old.ifczip", "old");
    const struct rlimit before = [] {
        struct rlimit limit {};
        ::getrlimit(RLIMIT_FSIZE, &limit);
        return limit;
    }();
    // The tool inherits the limit, and that the signal which goes with it is ignored.
    struct rlimit small = before;
    small.rlim_cur = 300;
    const auto signalBefore = std::signal(SIGXFSZ, SIG_IGN);
    ::setrlimit(RLIMIT_FSIZE, &small);
    const Outcome outcome = runTool({"rewrite", "--quiet", house, target.string()});
    ::setrlimit(RLIMIT_FSIZE, &before);
    std::signal(SIGXFSZ, signalBefore);
    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_PRED_FORMAT2(IsSubstring, "cannot write " + target.string(), outcome.err);
    EXPECT_EQ(contents(target), "old");
    for (const auto& each : fs::directory_iterator(scratch()))
        EXPECT_EQ(each.path().extension().string().find(".part"), std::string::npos);
}

TEST(Archive, ALinkStaysALinkAndPermissionsStay) {
    const fs::path target = makeFile("linked.ifczip", "old"), link = scratch() / "link.ifczip";
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(target, link);
    EXPECT_EQ(runTool({"rewrite", "--quiet", house, link.string()}).exitCode, 0);
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(rewritten(target), contents(house));
}

} // namespace

} // namespace vnifc::test
