#include "Process.h"

#include <VnIfcCore/VnIfcVersion.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <sys/wait.h>

namespace vnifc::test {

namespace {

using testing::IsSubstring;

TEST(Usage, ExitCodeSaysWhoIsAtFault) {
    const std::string broken = makeModel("broken.ifc", "#1=IFCWALL(;\n");
    const std::string noModel = makeFile("letter.txt", "Dear reader,\n");
    const std::string nowhere = (scratch() / "missing" / "x.ifc").string();
    const struct {
        std::vector<std::string> arguments;
        int exitCode;
        std::string message;
    } cases[] = {
        {{}, 2, "subcommand"},
        {{"bogus"}, 2, "vnifc: expected a command, found \"bogus\""},
        {{"chekc", house}, 2, "did you mean check?"},
        {{"e", house}, 2, "which may be edit or extract or export"},
        {{"report", "-"}, 2, "expected -o"},
        {{"report", house, "-o", nowhere}, 3, "vnifc: cannot write " + nowhere},
        {{"report", house, "--rules", nowhere}, 3, nowhere},
        {{"schema", "IfcWall", "--html", nowhere}, 2, "--html"},
        {{"schema", "--html", house}, 3, "cannot make the folder"},
        {{"info"}, 2, "FILE"},
        {{"info", house, "extra"}, 2, "extra"},
        {{"info", house, "--bogus"}, 2, "--bogus"},
        {{"info", house, "--threads", "0"}, 2, "--threads"},
        {{"rewrite", house}, 2, "OUT"},
        {{"schema", "IfcGardenGnome"}, 4, "IfcGardenGnome"},
        {{"schema", "ifcwal"}, 4, "did you mean IfcWall?"},
        {{"find", house, "IfcWlal"}, 4, "did you mean IfcWall?"},
        {{"export", house, "--type", "IfcWindoww"}, 4, "IfcWindow?"},
        {{"show", house, "#99"}, 4, "#99"},
        {{"info", nowhere}, 3, nowhere},
        {{"info", scratch().string()}, 3, "directory"},
        {{"info", "--json", noModel}, 3, noModel},
        {{"rewrite", house, nowhere}, 3, nowhere},
        {{"rewrite", house, scratch().string()}, 3, "cannot write"},
        {{"rewrite", broken, (scratch() / "mended.ifc").string()}, 1, "unclosed-list"},
    };
    for (const auto& [arguments, exitCode, message] : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.exitCode, exitCode);
        EXPECT_PRED_FORMAT2(IsSubstring, message, outcome.err);
        if (exitCode != 1) {
            // The last line: findings, which begin with their place, come before it.
            const std::size_t end = outcome.err.rfind('\n', outcome.err.size() - 2);
            EXPECT_EQ(outcome.err.substr(end == std::string::npos ? 0 : end + 1, 7), "vnifc: ");
        }
        EXPECT_EQ(outcome.out, "");
    }
    EXPECT_EQ(runTool({"info", broken}).exitCode, 1);
}

TEST(Usage, HelpHasAnExampleEverywhere) {
    for (const std::string command : {"", "info", "rewrite", "schema"}) {
        std::vector<std::string> arguments{"--help"};
        if (!command.empty())
            arguments.insert(arguments.begin(), command);
        const Outcome outcome = runTool(arguments);
        EXPECT_EQ(outcome.exitCode, 0) << command;
        EXPECT_PRED_FORMAT2(IsSubstring, "Example:\n  vnifc " + command, outcome.out) << command;
        EXPECT_EQ(outcome.err, "") << command;
    }
}

TEST(Usage, HelpIsACommandAndCommandsMayBeCutShort) {
    const std::string help = runTool({"info", "--help"}).out;
    EXPECT_EQ(runTool({"help", "info"}).out, help);
    EXPECT_EQ(runTool({"help", "inf"}).out, help);
    EXPECT_EQ(runTool({"help"}).out, runTool({"--help"}).out);
    EXPECT_EQ(runTool({"inf", "--json", house}).exitCode, 0);
    EXPECT_EQ(runTool({"e", house}).exitCode, 2) << "edit or export";
}

// A wall in two storeys, a value that is lost on conversion, and what the reader has to say.
TEST(Usage, QuietHidesEveryMessageAndNothingElse) {
    const std::string file = makeModel(
        "noisy.ifc", "#1=IFCSITE('1',$,$,$,$,$,$,$,$,$,$,$,$,$);\n#2=IFCSITE('2',$,$,$,$,$,$,$,$,$,$,$,$,$);\n"
                     "#3=IFCWALL('3',$,42,$,$,$,$,$,$);\n#6=IFCGARDENGNOME();\n"
                     "#4=IFCRELCONTAINEDINSPATIALSTRUCTURE('4',$,$,$,(#3),#1);\n"
                     "#5=IFCRELCONTAINEDINSPATIALSTRUCTURE('5',$,$,$,(#3),#2);\n");
    const std::string target = (scratch() / "quiet.ifc").string();
    const std::vector<std::string> cases[] = {
        {"info", file},
        {"show", file, "3"},
        {"find", file, "IfcWall"},
        {"tree", file},
        {"props", file, "3"},
        {"export", file},
        {"rewrite", file, target},
        {"edit", file, target, "--set", "#3.GlobalId=x"},
        {"convert", file, target, "--to", "IFC2X3"},
    };
    for (std::vector<std::string> arguments : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome noisy = runTool(arguments);
        EXPECT_NE(noisy.err, "");
        arguments.emplace_back("--quiet");
        const Outcome quiet = runTool(arguments);
        EXPECT_EQ(quiet.exitCode, noisy.exitCode);
        EXPECT_EQ(quiet.err, "");
        if (arguments[0] != "info") { // which tells the time that it took
            EXPECT_EQ(quiet.out, noisy.out);
        }
    }
}

TEST(Usage, VersionNamesTheSchemaThatIsLoaded) {
    const Outcome outcome = runTool({"--version"});
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_TRUE(outcome.out.starts_with("vnifc " VNIFC_VERSION "\n")) << outcome.out;
    EXPECT_PRED_FORMAT2(IsSubstring, "\nIFC4X3_ADD2  version 4.3, ", outcome.out);
}

TEST(Usage, FullDiskIsNoSuccess) {
    if (!std::filesystem::exists("/dev/full"))
        GTEST_SKIP() << "no device that is always full";
    const std::vector<std::string> cases[] = {
        {"--version"}, {"info", house}, {"schema", "--json"}, {"rewrite", house, "-"}};
    for (const std::vector<std::string>& arguments : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        const Outcome outcome = runTool(arguments, {.out = "/dev/full"});
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_PRED_FORMAT2(IsSubstring, "cannot write", outcome.err);
    }
}

TEST(Usage, ReaderThatLeavesEndsTheToolQuietly) {
    std::FILE* pipe = ::popen("exec " VNIFC_TOOL " schema --json 2>&1", "r");
    ASSERT_NE(pipe, nullptr);
    char line[64];
    ASSERT_NE(std::fgets(line, sizeof line, pipe), nullptr);
    const int status = ::pclose(pipe);
    EXPECT_TRUE((WIFSIGNALED(status) && WTERMSIG(status) == SIGPIPE) || (WIFEXITED(status) && WEXITSTATUS(status) == 3))
        << status;
}

/// What a command prints on a terminal of 60 columns.
std::string onTerminal(const std::string& environment, const std::string& arguments) {
    const std::string command = "env -u NO_COLOR -u CLICOLOR -u CLICOLOR_FORCE TERM=xterm " + environment +
                                " script -qec 'stty cols 60; exec " VNIFC_TOOL " " + arguments +
                                "' /dev/null </dev/null";
    std::FILE* pipe = ::popen(command.c_str(), "r");
    std::string text;
    char buffer[4096];
    while (pipe && std::fgets(buffer, sizeof buffer, pipe))
        text += buffer;
    if (pipe)
        ::pclose(pipe);
    return text;
}

TEST(Usage, TablesAreAsWideAsTheTerminal) {
    if (std::system("command -v script >/dev/null") != 0)
        GTEST_SKIP() << "no command to have a terminal";
    std::string name;
    for (int i = 0; i < 50; ++i)
        name += "\\X\\E4"; // two bytes in UTF-8
    const std::string file =
        makeModel("wide.ifc", "#1=IFCWALL($,$,'" + name + "','" + name + "','short text',$,$,$,$);\n");
    const std::string arguments = "find " + file + " IfcWall --columns Name,Description,ObjectType --quiet";
    const std::string text = onTerminal("", arguments);
    const std::size_t begin = text.find("#1");
    ASSERT_NE(begin, std::string::npos) << text;
    const std::string line = text.substr(begin, text.find('\r', begin) - begin);
    EXPECT_EQ(std::ranges::count_if(line, [](char c) { return (c & 0xC0) != 0x80; }), 60) << line;
    EXPECT_PRED_FORMAT2(IsSubstring, "ä…  ä", line);
    EXPECT_TRUE(line.ends_with("ä…  short text")) << line;
    std::string whole;
    for (int i = 0; i < 50; ++i)
        whole += "ä";
    EXPECT_PRED_FORMAT2(IsSubstring, "  " + whole + "  short text\n",
                        runTool({"find", file, "IfcWall", "--columns", "Name,Description,ObjectType", "--quiet"}).out);
}

TEST(Usage, TerminalsHaveColoursBarsAndSeparatorsAndProgramsHaveNone) {
    if (std::system("command -v script >/dev/null") != 0)
        GTEST_SKIP() << "no command to have a terminal";
    std::string instances;
    for (int i = 1; i <= 1200; ++i)
        instances += "#" + std::to_string(i) + "=IFCCARTESIANPOINT((0.,0.));\n";
    const std::string file = makeModel("points.ifc", instances + "#1201=IFCGARDENGNOME();\n");
    const std::string info = "info " + file;
    const struct {
        const char* environment;
        std::string arguments;
        bool hasColours;
    } cases[] = {
        {"", info, true},
        {"NO_COLOR=1", info, false},
        {"CLICOLOR=0", info, false},
        {"TERM=dumb", info, false},
        {"NO_COLOR=1", info + " --color always", true},
        {"", "--color never " + info, false},
    };
    for (const auto& [environment, arguments, hasColours] : cases) {
        SCOPED_TRACE(std::string(environment) + ' ' + arguments);
        const std::string text = onTerminal(environment, arguments);
        EXPECT_EQ(text.find("\x1b[1;33mwarning") != std::string::npos, hasColours) << text;
        EXPECT_PRED_FORMAT2(IsSubstring, "1,200  IFCCARTESIANPOINT  ", text);
        EXPECT_PRED_FORMAT2(IsSubstring, "▇▇▇▇▇▇▇▇▇▇", text);
    }
    const Outcome plain = runTool({"info", file});
    EXPECT_PRED_FORMAT2(IsSubstring, "1200  IFCCARTESIANPOINT\n", plain.out);
    EXPECT_EQ((plain.out + plain.err).find('\x1b'), std::string::npos);
    EXPECT_NE(runTool({"info", file, "--color", "always"}).err.find("\x1b[1;33mwarning"), std::string::npos);
    EXPECT_EQ(runTool({"info", file, "--color", "sometimes"}).exitCode, 2);
}

} // namespace

} // namespace vnifc::test
