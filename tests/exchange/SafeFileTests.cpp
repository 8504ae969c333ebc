// A file that is written is complete, or as it was, and nothing lies beside it.
#include "Support.h"
#include "support/Files.h"

#include <VnIfcCore/VnSafeFile.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace VN_SDAI;
using namespace exchange;
using vnifc::test::contents;
namespace fs = std::filesystem;

#if defined(__linux__)
namespace {
std::string calls; // of those below, which stand before the C library's
}
extern "C" __attribute__((visibility("default"))) int fsync(int file) {
    calls += "fsync ";
    return static_cast<int>(::syscall(SYS_fsync, file));
}
extern "C" __attribute__((visibility("default"))) int linkat(int fromDirectory, const char* from, int toDirectory,
                                                             const char* to, int flags) noexcept {
    calls += "link ";
    return static_cast<int>(::syscall(SYS_linkat, fromDirectory, from, toDirectory, to, flags));
}
#endif

namespace {

class SafeFile : public ::testing::Test {
protected:
    SafeFile() { fs::create_directories(directory); }
    ~SafeFile() override { fs::remove_all(directory); }

    std::string namesThere() const {
        std::set<std::string> names;
        for (const auto& entry : fs::directory_iterator(directory))
            names.insert(entry.path().filename().string());
        std::string all;
        for (const std::string& name : names)
            all += name + ' ';
        return all;
    }
    void put(const std::string& text) const { std::ofstream(target, std::ios::binary) << text; }

    fs::path directory = fs::temp_directory_path() / ("vnifc_safe_file_" + std::to_string(::getpid()));
    fs::path target = directory / "file.ifc";
};

} // namespace

TEST_F(SafeFile, TakesItsNameWithCommitOnly) {
    put("before");
    {
        VnSafeFile file(target);
        EXPECT_TRUE(file.write("half"));
        EXPECT_EQ(contents(target), "before");
    }
    EXPECT_EQ(contents(target), "before");
    EXPECT_EQ(namesThere(), "file.ifc ");
    VnSafeFile file(target);
    EXPECT_TRUE(file.write("af") && file.write("ter") && file.commit());
    EXPECT_EQ(contents(target), "after");
    EXPECT_EQ(namesThere(), "file.ifc ");
}

TEST_F(SafeFile, KeepsPermissionsAndLinks) {
    put("before");
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink("file.ifc", directory / "link");
    VnSafeFile file(directory / "link");
    EXPECT_TRUE(file.write("after") && file.commit());
    EXPECT_TRUE(fs::is_symlink(directory / "link"));
    EXPECT_EQ(contents(target), "after");
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(SafeFile, TellsWhyItCannotBeWritten) {
    VnSafeFile nowhere(directory / "missing" / "file");
    EXPECT_TRUE(!nowhere.stream() && nowhere.error() == ENOENT && !nowhere.write("x") && !nowhere.commit());
    VnSafeFile overDirectory(directory);
    EXPECT_TRUE(overDirectory.write("x"));
    EXPECT_FALSE(overDirectory.commit());
    EXPECT_NE(overDirectory.error(), 0);
    EXPECT_TRUE(fs::is_directory(directory));
    EXPECT_EQ(namesThere(), "");
    const VnIfcModel model(schema());
    const VnIfcFileResult result = model.writeFile(directory);
    EXPECT_EQ(result.status, VN::eCannotWrite);
    EXPECT_EQ(namesThere(), "");
}

#if defined(__linux__)
TEST_F(SafeFile, IsOnTheDiskBeforeItHasAName) {
    calls.clear();
    VnSafeFile file(target);
    EXPECT_TRUE(file.write("text"));
    EXPECT_EQ(calls, "");
    EXPECT_TRUE(file.commit());
    EXPECT_TRUE(calls == "fsync link " || calls == "fsync ") << calls; // where there are no files without a name
}

TEST_F(SafeFile, AKilledWriterLeavesNothing) {
    put("before");
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        VnSafeFile file(target);
        file.write("half");
        ::kill(::getpid(), SIGKILL);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(contents(target), "before");
    EXPECT_EQ(namesThere(), "file.ifc ");
}
#endif

// ---- numbers of instances, which two ways of writing share

TEST(InstanceNumbers, AreWrittenWhole) {
    for (const std::uint64_t number : {1ull, 9ull, 10ull, 99'999'999ull, 100'000'000ull, 100'000'001ull, 999'999'999ull,
                                       1'000'000'000ull, 18'446'744'073'709'551'615ull}) {
        const std::string data =
            '#' + std::to_string(number) + "=IFCPERSONANDORGANIZATION(#" + std::to_string(number) + ",$,$);\n";
        EXPECT_EQ(rewritten(data), data);
    }
}
