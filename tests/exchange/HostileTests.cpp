// Damaged and hostile texts: a fault costs no more than the instance that it is in, and never more than time and memory
// in proportion to the text.
#include "Sanitized.h"
#include "Support.h"

#include <ctime>
#include <functional>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace VN_SDAI;
using namespace exchange;

namespace {

const std::vector<std::string>& sampleLines() {
    static const std::vector<std::string> lines = {
        "#1=IFCPERSON($,'it''s',$,('(',')'),$,$,(#3),$);\n",
        "#2=IFCSIUNIT(*,.LENGTHUNIT.,$,.METRE.);\n",
        "#3=IFCPROPERTYSINGLEVALUE('a\\S\\'b',$,IFCREAL(1.5E-10),#2);\n",
        "#4=IFCCARTESIANPOINTLIST3D(((1.,2.,-3.),(0.,0.,0.)),$);\n",
        "#5=IFCFOO('x',(1,#4));\n",
        "#6=IFCRELAGGREGATES('0YvctVUKr0kugbFTf53O9L',$,$,$,#1,(#2,#3));\n",
    };
    return lines;
}

std::string sample() {
    std::string data;
    for (const std::string& line : sampleLines())
        data += line;
    return fileOf(data);
}

std::string repeated(std::size_t count, std::string_view text) {
    std::string result;
    result.reserve(count * text.size());
    while (count-- > 0)
        result += text;
    return result;
}

/// `text` with each '%' replaced by a number, for all numbers from 1.
std::string numbered(std::size_t count, std::string_view text) {
    std::string result;
    for (std::size_t i = 1; i <= count; ++i)
        for (const char c : text)
            if (c == '%')
                result += std::to_string(i);
            else
                result += c;
    return result;
}

/// Reads and writes; what was written must read and write the same again.
std::string stableRewriting(std::string_view file, std::size_t* count = nullptr) {
    Reading reading(file);
    if (!reading.result)
        return {};
    if (count)
        *count = reading.model.count();
    const std::string written = reading.model.writeText();
    EXPECT_EQ(Reading(written).model.writeText(), written) << file;
    return written;
}

struct HostileText {
    const char* what;
    std::function<std::string(std::size_t)> make; ///< of about that many bytes
};

const std::vector<HostileText>& hostileTexts() {
    const auto data = [](std::string begin, std::string unit, std::string end) {
        return [=](std::size_t size) { return fileOf(begin + repeated(size / unit.size(), unit) + end); };
    };
    static const std::vector<HostileText> texts = {
        {"nested lists",
         [](std::size_t size) {
             return fileOf("#1=IFCCARTESIANPOINT(" + repeated(size / 2, "(") + repeated(size / 2, ")") + ");\n");
         }},
        {"nested lists without an end", data("#1=IFCCARTESIANPOINTLIST3D(", "(", ";\n#2=IFCPERSON();\n")},
        {"nested typed values", data("#1=IFCPROPERTYSINGLEVALUE('',$,", "IFCLABEL(", ";\n")},
        {"nested complex instance", data("#1=", "(A(", ";\n")},
        {"parameters", data("#1=IFCPERSON($", ",1", ");\n")},
        {"parameters without commas", data("#1=IFCPERSON(", "$", ");\n")},
        {"elements", data("#1=IFCCARTESIANPOINT((0.", ",1.", "));\n")},
        {"elements of which one is wrong", data("#1=IFCCARTESIANPOINT((x", ",1.", "));\n")},
        {"references", data("#1=IFCPOLYLOOP((#1", ",#1", "));\n")},
        {"references to nothing",
         [](std::size_t size) { return fileOf("#1=IFCPOLYLOOP((#1" + numbered(size / 16, ",#55555%") + "));\n"); }},
        {"digits of a real", data("#1=IFCMATERIALLAYER($,", "7", ".5E3,$,$,$,$,$);\n")},
        {"digits behind the point", data("#1=IFCMATERIALLAYER($,0.", "0", "1,$,$,$,$,$);\n")},
        {"digits of an exponent", data("#1=IFCMATERIALLAYER($,1.E", "9", ",$,$,$,$,$);\n")},
        {"digits of an integer", data("#1=IFCMATERIALLAYER($,$,$,$,$,$,", "7", ");\n")},
        {"digits of a number", data("#", "1", "=IFCPERSON();\n")},
        {"digits of a reference", data("#1=IFCFACEBOUND(#", "1", ",.T.);\n")},
        {"a keyword", data("#1=", "IFC", "(1);\n")},
        {"a string", data("#1=IFCPERSON('", "x''\\", "',$);\n")},
        {"apostrophes", data("#1=IFCPERSON(", "'", ",$);\n")},
        {"strings that are not closed", data("", "#1=IFCFOO('x;\n", "")},
        {"strings whose closing apostrophe a directive takes", data("", "#1=IFCFOO(\\S\\');\n", "")},
        {"the same, closed at the very end", data("", "#1=IFCFOO(\\S\\');\n", "'x")},
        {"strings that something else follows", data("#1=IFCFOO(", "'a'b", ");\n")},
        {"strings that a comment follows which has no end", data("#1=IFCFOO(", "'a'/*", ");\n")},
        {"statements with apostrophes", data("ENDSEC;\nANCHOR;\n", "\\S\\'", "")},
        {"comments", data("", "/*;*/", "")},
        {"comments without an end", data("", "/* ", "")},
        {"comments without an end in instances", data("", "#1=IFCFOO(/*);\n", "")},
        {"comments in a list without an end", data("#1=IFCPERSON(", "/*/", ");\n")},
        {"scopes", data("", "#1=&SCOPE ", "")},
        {"number signs", data("", "#", "")},
        {"instances without anything", data("", "#1=", "")},
        {"empty instances without a number", data("", "#=;", "")},
        {"empty instances", data("", "#1=;", "")},
        {"equals signs", data("#1=", "= ", ";\n")},
        {"semicolons", data("", ";", "")},
        {"parentheses", data("", ")(", "")},
        {"lines of garbage", data("", "x\n", "")},
        {"sections", data("", "ENDSEC;DATA;", "")},
        {"header entries",
         [](std::size_t size) {
             return "ISO-10303-21;HEADER;" + repeated(size / 4, "A();") + "ENDSEC;DATA;ENDSEC;END-ISO-10303-21;";
         }},
        {"a header entry that is never closed",
         [](std::size_t size) {
             return "ISO-10303-21;HEADER;" + repeated(size / 3, "A('") + "\nENDSEC;DATA;ENDSEC;END-ISO-10303-21;";
         }},
        {"header entries that are never closed",
         [](std::size_t size) {
             return "ISO-10303-21;HEADER;" + repeated(size / 11, "A(\nENDSEC;\n") + "DATA;ENDSEC;END-ISO-10303-21;";
         }},
        {"parameters that do not fit", data("", "#=IFCDOOR(x,x,x,x,x,x,x,x,x,x,x,x,x);", "")},
        {"instances without parameters", data("", "#=IFCTASK();", "")},
        {"zeros", data("", std::string(1, '\0'), "")},
        {"instances of one number", data("", "#1=IFCFACEBOUND(#9,.T.);", "")},
        {"an instance that many refer to",
         [](std::size_t size) { return fileOf(numbered(size / 48, "#%=IFCRELAGGREGATES('',$,$,$,#1,(#1,#2));\n")); }},
        {"numbers in descending order",
         [](std::size_t size) {
             std::string text;
             for (std::size_t i = size / 24; i > 0; --i)
                 text += '#' + std::to_string(i) + "=IFCFACEBOUND(#1,.T.);\n";
             return fileOf(text);
         }},
        {"scattered numbers",
         [](std::size_t size) {
             std::string text;
             for (std::size_t i = 0; i < size / 48; ++i)
                 text += '#' + std::to_string((i + 1) * 0x9E3779B97F4A7C15ull) + "=IFCFACEBOUND($,.T.);\n";
             return fileOf(text);
         }},
    };
    return texts;
}

} // namespace

TEST(Hostile, AFileCutOffAnywhereKeepsWhatStandsBeforeTheCut) {
    const std::string file = sample();
    for (std::size_t length = 1; length < file.size(); ++length) {
        const std::string_view cut = std::string_view(file).substr(0, length);
        const std::string written = stableRewriting(cut);
        for (const std::string& line : sampleLines()) {
            const bool isWhole = cut.find(line.substr(0, line.size() - 1)) != cut.npos;
            ASSERT_TRUE(!isWhole || written.find(line) != written.npos) << cut << "\nbecame\n" << written;
        }
        const bool isInData = cut.find("DATA;") != cut.npos && cut.find("END-") == cut.npos;
        ASSERT_TRUE(!isInData || Reading(cut).result.errors != 0) << cut;
    }
}

TEST(Hostile, AWrongByteCostsNoMoreThanItsInstanceAndTheNext) {
    const std::string file = sample();
    for (std::size_t at = 0; at < file.size(); ++at) {
        std::string damaged = file;
        for (const char byte : std::string_view("'()/;#\\\0\xFF,", 10)) {
            damaged[at] = byte;
            const std::string written = stableRewriting(damaged);
            if (written.empty())
                continue; // no longer an exchange file
            std::size_t lost = 0;
            for (const std::string& line : sampleLines())
                lost += written.find(line) == written.npos;
            ASSERT_LE(lost, at < kHead.size() ? 0u : 2u) << "byte " << at << ":\n"
                                                         << damaged << "\nbecame\n"
                                                         << written;
        }
    }
}

TEST(Hostile, TimeIsInProportionToTheText) {
    // A reader that looks at every byte once for every other one would take minutes. Time of the processor, because
    // others may be at work.
    const auto secondsFor = [](const std::string& file) {
        const std::clock_t start = std::clock();
        VnIfcModel model(schema());
        VnIfcReadOptions options;
        options.threads = 1;
        static_cast<void>(model.readText(file, options)); // whatever comes of it
        const std::string written = model.writeText();
        return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
    };
    for (const HostileText& text : hostileTexts()) {
        const double once = secondsFor(text.make(500'000)), twice = secondsFor(text.make(1'000'000));
        EXPECT_LT(twice, 3 * once + 0.3) << text.what;
    }
}

TEST(Hostile, MemoryIsInProportionToTheText) {
    if (kSanitized)
        GTEST_SKIP() << "sanitizers keep freed memory back";
    // Each in a process of its own, because what was taken once stays with the process. The worst are three bytes that
    // make an instance, a diagnostic and a number of its own.
    constexpr std::size_t kFactor = 100;
    for (const HostileText& text : hostileTexts()) {
        const pid_t child = ::fork();
        if (child == 0) {
            const std::string file = text.make(1'000'000);
            VnIfcModel model(schema());
            VnIfcReadOptions options;
            options.threads = 1;
            const auto peak = [] {
                rusage usage{};
                ::getrusage(RUSAGE_SELF, &usage);
                return static_cast<std::size_t>(usage.ru_maxrss) * 1024;
            };
            const std::size_t before = peak();
            static_cast<void>(model.readText(file, options)); // whatever comes of it
            const std::size_t factor = (peak() - before) / file.size();
            ::_exit(static_cast<int>(std::min<std::size_t>(factor, 255)));
        }
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status)) << text.what;
        EXPECT_LT(static_cast<std::size_t>(WEXITSTATUS(status)), kFactor) << text.what;
    }
}

TEST(Hostile, MillionsOfOneThingComeBack) {
    constexpr std::size_t kMillion = 1'000'000;
    for (const std::string& data : {
             "#1=IFCPERSON($,$,$,$,$,$,$,$" + repeated(10 * kMillion, ",1") + ");\n",
             "#1=IFCCARTESIANPOINT((0." + repeated(2 * kMillion, ",1.") + "));\n",
             "#1=IFCCARTESIANPOINT(" + repeated(kMillion, "(") + repeated(kMillion, ")") + ");\n",
             "#1=IFCMATERIALLAYER($,$,$,$,$,$," + repeated(kMillion, "7") + ");\n",
             "#1=IFCPERSON('" + repeated(kMillion, "''\\\\") + "',$,$,$,$,$,$,$);\n",
         })
        EXPECT_TRUE(rewritten(data) == data) << data.substr(0, 60);
}

TEST(Hostile, HostileTextsAreRewrittenStably) {
    for (const HostileText& text : hostileTexts()) {
        SCOPED_TRACE(text.what);
        stableRewriting(text.make(300));
    }
}
