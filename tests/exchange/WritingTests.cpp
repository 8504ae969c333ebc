// Writing to files, and what progress callbacks and threads have to do with the result.
#include "Support.h"
#include "support/Files.h"

#include <IFC4X3/IfcCartesianPoint.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace VN_SDAI;
using namespace IFC4X3;
using namespace exchange;
using vnifc::test::contents;
namespace fs = std::filesystem;

namespace {

/// Instances of many kinds and faults, more than a block of reading or writing holds.
std::string longFile() {
    const std::string_view lines[] = {
        "=IFCWALL('0YvctVUKr0kugbFTf53O9L',#1,'it''s',$,$,$,$,$,.SOLIDWALL.);\n",
        "=IFCPROPERTYSINGLEVALUE('a',$,IFCREAL(0.1),#77777);\n",
        "=IFCCARTESIANPOINT((1.5,'x',-2.E-10));\n",
        "=IFCFOO('x',(1,#2),.X.);\n",
        "=IFCRELAGGREGATES('',$,$,$,#1,(#9,#3,#99999));\n",
        "=IFCPERSON($,$$,$,5,,$,$,'y');\n",
    };
    std::string data;
    for (std::size_t i = 1; i <= 40000; ++i)
        (data += '#').append(std::to_string(i % 1000 == 7 ? 5 : i)).append(lines[i % std::size(lines)]);
    return fileOf(data);
}

class WritingTest : public testing::Test {
protected:
    WritingTest() : directory(fs::path(testing::TempDir()) / ("writing" + std::to_string(::getpid()))) {
        fs::create_directory(directory);
        std::ofstream(target, std::ios::binary) << "old";
    }
    ~WritingTest() override { fs::remove_all(directory); }

    /// Nothing but the old file is there.
    void expectUntouched() const {
        EXPECT_EQ(contents(target), "old");
        std::size_t files = 0;
        for ([[maybe_unused]] const auto& each : fs::directory_iterator(directory))
            ++files;
        EXPECT_EQ(files, 1u) << "something was left behind";
    }

    const fs::path directory;
    const fs::path target = directory / "model.ifc";
};

} // namespace

TEST_F(WritingTest, AFileIsReplacedWithWhatWriteTextGives) {
    const Reading reading(longFile());
    const VnIfcFileResult result = reading.model.writeFile(target);
    ASSERT_TRUE(result) << result.message;
    EXPECT_EQ(contents(target), reading.model.writeText());
    EXPECT_EQ(result.bytes, fs::file_size(target));
    ASSERT_TRUE(reading.model.writeFile(directory / "new.ifc"));
    EXPECT_EQ(contents(directory / "new.ifc"), contents(target));
}

TEST_F(WritingTest, TheInputMayBeTheTarget) {
    std::ofstream(target, std::ios::binary) << longFile();
    VnIfcModel model(schema());
    ASSERT_TRUE(model.readFile(target));
    const std::string expected = model.writeText();
    ASSERT_TRUE(model.writeFile(target));
    EXPECT_EQ(contents(target), expected);
    EXPECT_EQ(model.writeText(), expected) << "the model must not live in the file";
}

TEST_F(WritingTest, ALinkStaysALinkAndPermissionsStay) {
    fs::permissions(target, fs::perms::owner_read | fs::perms::owner_write);
    fs::create_symlink(target, directory / "link.ifc");
    const Reading reading(fileOf(""));
    ASSERT_TRUE(reading.model.writeFile(directory / "link.ifc"));
    EXPECT_TRUE(fs::is_symlink(directory / "link.ifc"));
    EXPECT_EQ(contents(target), reading.model.writeText());
    EXPECT_EQ(fs::status(target).permissions(), fs::perms::owner_read | fs::perms::owner_write);
}

TEST_F(WritingTest, AFullDiskLeavesTheOldFile) {
    const Reading reading(longFile());
    rlimit before{};
    ::getrlimit(RLIMIT_FSIZE, &before);
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    for (const rlim_t size : {rlim_t{0}, rlim_t{1000}, rlim_t{1'000'000}}) {
        const rlimit small{size, before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &small);
        const VnIfcFileResult result = reading.model.writeFile(target);
        ::setrlimit(RLIMIT_FSIZE, &before);
        EXPECT_EQ(result.status, VN::eCannotWrite);
        EXPECT_FALSE(result.message.empty());
        expectUntouched();
    }
    std::signal(SIGXFSZ, handler);
}

TEST_F(WritingTest, WhereNoFileCanBeTheStatusSaysSo) {
    const Reading reading(fileOf(""));
    fs::create_directory(directory / "sub");
    EXPECT_EQ(reading.model.writeFile(directory / "sub").status, VN::eCannotWrite);
    fs::remove(directory / "sub");
    EXPECT_EQ(reading.model.writeFile(directory / "no" / "x.ifc").status, VN::eCannotWrite);
    // A device would do, too, but a writer that is at fault replaces it, for all who use the machine.
    ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), S_IRUSR | S_IWUSR), 0);
    EXPECT_EQ(reading.model.writeFile(directory / "pipe").status, VN::eCannotWrite);
    EXPECT_TRUE(fs::is_fifo(directory / "pipe"));
    fs::remove(directory / "pipe");
    EXPECT_EQ(reading.model.writeFile("").status, VN::eCannotWrite);
    expectUntouched();
    // Nothing is forbidden to root, so that root becomes somebody else for a moment.
    const uid_t user = ::geteuid();
    fs::permissions(directory,
                    fs::perms::owner_read | fs::perms::owner_exec | fs::perms::others_read | fs::perms::others_exec);
    if (user == 0) {
        ASSERT_EQ(::seteuid(65534), 0); // a macro with an if of its own
    }
    const VnIfcFileResult result = reading.model.writeFile(target);
    ASSERT_EQ(::seteuid(user), 0);
    EXPECT_EQ(result.status, VN::eCannotWrite);
    expectUntouched();
    fs::permissions(directory, fs::perms::owner_all);
}

TEST_F(WritingTest, AProcessThatDiesHalfWayLeavesTheOldFile) {
    const Reading reading(longFile());
    const pid_t child = ::fork();
    if (child == 0) {
        VnIfcWriteOptions options;
        options.threads = 1;
        options.progress = [](double) -> bool { ::_exit(0); };
        static_cast<void>(reading.model.writeFile(target, options));
        ::_exit(1);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(WEXITSTATUS(status), 0) << "it was to die while it writes";
    EXPECT_EQ(contents(target), "old");
}

TEST_F(WritingTest, CancellingWritesNothing) {
    const Reading reading(longFile());
    for (const unsigned threads : {1u, 4u}) {
        VnIfcWriteOptions options;
        options.threads = threads;
        options.progress = [](double) { return false; };
        EXPECT_EQ(reading.model.writeFile(target, options).status, VN::eCancelled);
        expectUntouched();
    }
}

TEST(Progress, GrowsToOneAndCancellingAReadLeavesAnEmptyModel) {
    const std::string file = longFile();
    VnIfcModel model(schema());
    for (const unsigned threads : {1u, 4u}) {
        VnIfcReadOptions options;
        options.threads = threads;
        options.progress = [](double) { return false; };
        EXPECT_EQ(model.readText(file, options).status, VN::eCancelled);
        EXPECT_EQ(model.count(), 0u);
        EXPECT_TRUE(model.header().entries().empty());
        EXPECT_TRUE(model.find(1).isNull() && model.instances().empty());
    }
    for (const unsigned threads : {4u, 1u}) {
        VnIfcReadOptions options;
        options.threads = threads;
        double last = 0;
        options.progress = [&](double done) {
            EXPECT_GE(done, last);
            last = done;
            return done <= 1;
        };
        model.clear();
        ASSERT_TRUE(model.readText(file, options)) << "the model can be used again";
        EXPECT_EQ(last, 1.);
    }
    EXPECT_EQ(model.writeText(), Reading(file).model.writeText());
}

TEST(Threads, NobodyWaitsForAWorkerThatFailed) {
    class Failing : public IfcCartesianPoint {
        VN::ErrorStatus outFields(VnSpfFilerBase*) const override { throw std::bad_alloc(); }
    };
    VnIfcModel model(schema());
    for (int i = 0; i < 70000; ++i)
        if (i == 20000)
            model.append(std::make_unique<Failing>());
        else
            model.create<IfcCartesianPoint>();
    VnIfcWriteOptions options;
    for (const unsigned threads : {1u, 4u}) {
        options.threads = threads;
        EXPECT_THROW(model.writeText(options), std::bad_alloc);
    }
}

TEST(Threads, TheirNumberChangesNothing) {
    const std::string file = longFile();
    const Reading single(file, 1);
    VnIfcWriteOptions options;
    options.threads = 1;
    const std::string written = single.model.writeText(options);
    EXPECT_GT(single.diagnostics.size(), 10000u);
    for (const unsigned threads : {2u, 8u}) {
        const Reading several(file, threads);
        EXPECT_EQ(several.texts(), single.texts());
        EXPECT_EQ(several.result.errors, single.result.errors);
        options.threads = threads;
        EXPECT_EQ(several.model.writeText(options), written);
    }
    EXPECT_EQ(Reading(written, 2).model.writeText(), written);
}
