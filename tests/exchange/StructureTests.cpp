// The file around the instances: beginning, header, sections, end; and where in it diagnostics point.
#include "Support.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include <unistd.h>

using namespace VN_SDAI;
using namespace exchange;

namespace {

constexpr std::string_view kPoint = "#1=IFCCARTESIANPOINT((1.));\n";

std::string replaced(std::string text, std::string_view what, std::string_view by) {
    for (std::size_t at = 0; (at = text.find(what, at)) != std::string::npos; at += by.size())
        text.replace(at, what.size(), by);
    return text;
}

std::string utf16(std::string_view text, bool bigEndian) {
    std::string wide;
    for (const char c : text) {
        if (bigEndian)
            wide += '\0';
        wide += c;
        if (!bigEndian)
            wide += '\0';
    }
    return wide;
}

/// The lines of the header section, without those around them.
std::string headerOf(std::string_view file) {
    const std::size_t begin = file.find("HEADER;\n") + 8;
    return std::string(file.substr(begin, file.find("ENDSEC;") - begin));
}

} // namespace

TEST(Structure, InstancesAreFoundWhateverTheFileAroundThemLooksLike) {
    const std::string file = fileOf(kPoint);
    const std::string head(kHead), tail(kTail), point(kPoint);
    const std::string schemaLine = "FILE_SCHEMA(('IFC4X3'));";
    const struct {
        const char* what;
        std::string file;
        const char* codes = "";
    } cases[] = {
        {"byte order mark", "\xEF\xBB\xBF" + file},
        {"CR line ends", replaced(file, "\n", "\r")},
        {"CR LF line ends", replaced(file, "\n", "\r\n")},
        {"no line ends", replaced(file, "\n", "")},
        {"lower case", replaced(replaced(replaced(file, "DATA", "data"), "ENDSEC", "endsec"), "HEADER", "header")},
        {"comments everywhere", "/* a */" + replaced(file, ");", ")/**/ ; /* ' ( ;*/ ") + "/* end */"},
        {"blank lines at the end", file + "\n\r\n \t"},
        {"a letter before the beginning", "n" + file, "no-magic"},
        {"a line of text before the beginning", "----- sent by mail -----\n" + file, "no-magic"},
        {"no magic word", replaced(file, "ISO-10303-21;\nH", "H"), "no-magic"},
        {"no header", "ISO-10303-21;\nDATA;\n" + point + tail, "schema no-header"},
        {"nothing but data", "DATA;\n" + point, "schema no-magic no-header no-end"},
        {"instances without a section", head.substr(0, head.size() - 6) + point + tail},
        {"two data sections", head + point + "ENDSEC;\nDATA;\n#2=IFCPERSON($,$,$,$,$,$,$,$);\n" + tail, "data-section"},
        {"parameters of data sections", replaced(file, "DATA;", "DATA ('main;',('IFC4X3'));"), "data-section"},
        {"forgotten semicolons", replaced(replaced(file, "DATA;", "DATA"), "ENDSEC;\nEND-", "ENDSEC\nEND-"),
         "no-semicolon no-semicolon"},
        {"forgotten end of the section", replaced(file, "ENDSEC;\nEND-", "END-")},
        {"forgotten end", replaced(file, "END-ISO-10303-21;\n", ""), "no-end"},
        {"other sections",
         replaced(replaced(file, "DATA;", "ANCHOR;\n<a>=#1;\nENDSEC;\nREFERENCE;\n#9=<x.ifc#a>;\nENDSEC;\nDATA;"),
                  "END-ISO-10303-21;\n", "SIGNATURE;\nMIIC==\nENDSEC;\nEND-ISO-10303-21;\n"),
         "section section section"},
        {"signatures behind the end", file + "SIGNATURE;\nMIIC/+==\nENDSEC;\nSIGNATURE;\nMI;\nENDSEC;\n\nnot this;",
         "section section garbage"},
        {"another structure behind the end", file + "-----\n" + file, "second-structure"},
        {"text behind the end", file + "-----\n", "garbage"},
        {"text between instances", head + "what is\nthis;\n" + point + "\xE2\x80\xA6\n" + tail, "garbage garbage"},
        {"numbers without an instance", head + "#\n#5\n#6;#" + point.substr(1) + tail, "garbage"},
        {"the schema in lower case", replaced(file, "'IFC4X3'", "'ifc4x3'")},
        {"a later release", replaced(file, "'IFC4X3'", "'IFC4X3_ADD2'"), "schema"},
        {"an older schema", replaced(file, "'IFC4X3'", "'IFC2X3'"), "schema"},
        {"an apostrophe too many", replaced(file, "(('IFC4X3'", "((''IFC4X3'"), "schema header-entry"},
        {"an apostrophe too many before a string",
         replaced(file, "(('IFC4X3'));\nENDSEC;\nDATA;\n#1=IFCCARTESIANPOINT((1.));\n",
                  "((''IFC4X3'));\nENDSEC;\nDATA;\n#1=IFCCARTESIANPOINT((1.));\n#2=IFCPERSON('a','b',$,$,$,$,$,$);\n"),
         "schema header-entry"},
        {"a lone apostrophe", replaced(file, "FILE_NAME('',", "FILE_NAME(',"), "schema header-entry"},
        {"an entry that is none", replaced(file, schemaLine, "'x';" + schemaLine), "schema header-entry"},
        {"an entry without an end", replaced(file, schemaLine, "FILE_SCHEMA(('IFC4X3')"), "schema header-entry"},
        {"a comment in the header without an end", replaced(file, schemaLine, "/*" + schemaLine),
         "schema open-comment"},
        {"a comment in the data without an end", head + "/* never\nclosed *" + "\n" + point + tail, "open-comment"},
    };
    for (const auto& test : cases) {
        Reading reading(test.file);
        EXPECT_TRUE(reading.result) << test.what;
        EXPECT_EQ(reading.codes(), test.codes) << test.what << '\n' << reading.texts();
        const std::string written = reading.model.writeText();
        EXPECT_NE(written.find("DATA;\n" + point), std::string::npos) << test.what << '\n' << written;
        EXPECT_EQ(Reading(written).model.writeText(), written) << test.what;
        EXPECT_EQ(reading.model.count(), test.file.find("#2=") != std::string::npos ? 2u : 1u) << test.what;
    }
}

TEST(Structure, TheHeaderIsWrittenAsItWasRead) {
    for (const std::string_view header : {
             "FILE_DESCRIPTION(('ViewDefinition\r\n[X]','it''s "
             "\\X\\C4'),'2;1');\nFILE_NAME($,'2020',$,(),'','a\\S\\'b','');\n"
             "FILE_SCHEMA(('IFC4X3'));\n",
             "FILE_SCHEMA(('IFC4X3'));\nFILE_NAME('a',5,.X.,(('b')),1.50);\nFILE_DESCRIPTION();\n",
             "FILE_SCHEMA(('IFC4X3'));\nFILE_POPULATION('a /* b */',$);\n!OWN_ENTRY(1, 2);\nSECTION_LANGUAGE('en');\n",
         }) {
        const std::string file =
            "ISO-10303-21;\nHEADER;\n" + std::string(header) + "ENDSEC;\nDATA;\n" + std::string(kTail);
        Reading reading(file);
        EXPECT_EQ(reading.codes(), "") << reading.texts();
        EXPECT_EQ(headerOf(reading.model.writeText()), header);
    }
    EXPECT_EQ(Reading("ISO-10303-21;HEADER;file_schema /*x*/ ( ( 'IFC4X3' ) ) ; ENDSEC;DATA;ENDSEC;END-ISO-10303-21;")
                  .model.header()
                  .schemas(),
              std::vector<std::string>{"IFC4X3"});
}

TEST(Structure, HeaderStringsAreTakenApart) {
    VnIfcHeader header;
    header.set("FILE_NAME", "'it''s', ( 'a' , 'b\\S\\'c' /* 'no' */ ), $, 'd\\\\''e'");
    EXPECT_EQ(header.strings("file_name", 0), std::vector<std::string>{"it's"});
    EXPECT_EQ(header.strings("FILE_NAME", 1), (std::vector<std::string>{"a", "b\\S\\'c"}));
    EXPECT_TRUE(header.strings("FILE_NAME", 2).empty());
    EXPECT_EQ(header.strings("FILE_NAME", 3), std::vector<std::string>{"d\\\\'e"});
    EXPECT_TRUE(header.strings("FILE_NAME", 4).empty());
    EXPECT_TRUE(header.strings("FILE_SCHEMA", 0).empty());
    const VnIfcHeader fresh = VnIfcHeader::standard("IFC4X3", "it's\\x", "2020-01-01T00:00:00");
    EXPECT_EQ(fresh.schemas(), std::vector<std::string>{"IFC4X3"});
    EXPECT_EQ(fresh.strings("FILE_NAME", 0), std::vector<std::string>{"it's\\\\x"});
}

TEST(Structure, WhatIsNoExchangeFileIsRefusedWithTheReason) {
    const std::string file = fileOf(kPoint);
    const struct {
        std::string text;
        const char* reason;
    } cases[] = {
        {"", "empty"},
        {" \r\n\t/* x */\n", "empty"},
        {"\xEF\xBB\xBF", "empty"},
        {std::string(5000, '\0'), "empty"},
        {"{\"no\": \"exchange file\"}", "ISO-10303-21"},
        {"PK\x03\x04 something else", "ISO-10303-21"},
        {"\xFF\xFE" + utf16(file, false), "UTF-16"},
        {"\xFE\xFF" + utf16(file, true), "UTF-16"},
        {utf16(file, false), "UTF-16"},
        {utf16(file, true), "UTF-16"},
    };
    for (const auto& test : cases) {
        Reading reading(test.text);
        EXPECT_EQ(reading.result.status, VN::eCannotRead) << test.text;
        EXPECT_NE(reading.result.message.find(test.reason), std::string::npos) << reading.result.message;
        EXPECT_EQ(reading.model.count(), 0u);
        EXPECT_TRUE(reading.model.readText(file)) << "the model can still be used";
    }
}

TEST(Structure, WhatIsNoReadableFileIsToldApart) {
    VnIfcModel model(schema());
    const std::filesystem::path directory =
        std::filesystem::temp_directory_path() / ("vnifc_structure_" + std::to_string(::getpid()));
    std::filesystem::create_directory(directory);
    EXPECT_EQ(model.readFile(directory / "no such file.ifc").status, VN::eNotFound);
    EXPECT_EQ(model.readFile(directory).status, VN::eCannotRead);
    for (const char* device : {"/dev/null", "/dev/zero"})
        EXPECT_EQ(model.readFile(device).status, VN::eCannotRead) << device;
    const std::filesystem::path file = directory / "read.ifc";
    std::ofstream(file, std::ios::binary) << fileOf(kPoint);
    const VnIfcFileResult result = model.readFile(file);
    EXPECT_TRUE(result) << result.message;
    EXPECT_EQ(result.bytes, std::filesystem::file_size(file));
    EXPECT_EQ(model.readFile(file).status, VN::eRefused) << "a model is filled once";
    EXPECT_EQ(dataOf(model.writeText()), kPoint);
    std::filesystem::remove_all(directory);
}

TEST(Structure, AReadThatFailsIsNoEmptyFile) {
    VnIfcModel model(schema());
    const VnIfcFileResult result = model.readFile("/proc/self/mem"); // opens, and has nothing at its beginning
    EXPECT_EQ(result.status, VN::eCannotRead);
    EXPECT_EQ(result.message, std::strerror(EIO));
}

TEST(Structure, FindingsAndPlacesComeInTheOrderOfTheFile) {
    const struct {
        std::string data;
        const char* told;
    } cases[] = {
        {"#9=IFCFOO();\n?\n#5=IFCPERSON(1,$,$,$,$,$,$,$);\n!\n#7=IFCBAR();\n#1=IFCFOO(1;\n",
         "8 unknown-keyword, 9 garbage, 10 wrong-kind, 11 garbage, 12 unknown-keyword, 13 unknown-keyword, "
         "13 unclosed-list, "},
        {"what\n#3=IFCFOO();\n/* never closed\n#2=IFCFOO();\n",
         "8 garbage, 9 unknown-keyword, 10 open-comment, 11 unknown-keyword, "},
        {"what /* never closed\n#2=IFCFOO();\nis\n#1=IFCFOO();\n",
         "8 garbage, 9 unknown-keyword, 10 garbage, 11 unknown-keyword, "},
    };
    for (const auto& each : cases)
        for (const bool places : {false, true}) {
            VnIfcModel model(schema());
            VnIfcReadOptions options;
            std::string told;
            options.places = places;
            options.diagnostics = [&](const VnIfcDiagnostic& found) {
                told += std::to_string(found.line) + ' ' + found.code + ", ";
            };
            ASSERT_TRUE(model.readText(fileOf(each.data), options));
            EXPECT_EQ(told, each.told) << each.data;
            model.forEach([&](const VnIfcEntityBase& instance) {
                std::uint64_t line = 0, column = 0;
                EXPECT_EQ(model.place(instance.objectId(), line, column), places);
                const std::string begin = '#' + std::to_string(instance.objectId().number()) + '=';
                const std::string before = fileOf(each.data.substr(0, each.data.find(begin)));
                EXPECT_EQ(line, places ? static_cast<std::uint64_t>(std::ranges::count(before, '\n')) - 1 : 0);
            });
            std::uint64_t line = 77, column = 0;
            EXPECT_FALSE(model.place(model.create("IfcWall"), line, column)) << "it stands in no file";
            EXPECT_EQ(line, 77u);
        }
}

TEST(Structure, APipeIsReadToItsEnd) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    const std::string file = fileOf("#1=IFCFOO();\n");
    ASSERT_EQ(::write(ends[1], file.data(), file.size()), static_cast<ssize_t>(file.size()));
    ::close(ends[1]);
    VnIfcModel model(schema());
    VnIfcReadOptions options;
    std::string said;
    options.name = "the pipe";
    options.diagnostics = [&](const VnIfcDiagnostic& diagnostic) { said = diagnostic.text(); };
    ASSERT_TRUE(model.readFile("/dev/fd/" + std::to_string(ends[0]), options));
    ::close(ends[0]);
    EXPECT_EQ(model.count(), 1u);
    EXPECT_TRUE(said.starts_with("the pipe:8:4: warning")) << said;
}

TEST(Structure, DiagnosticsPointToTheTokenAndSayWhatWasExpected) {
    const std::string file(fileOf("#1=IFCWALL('guid',#9,5,$,$,$,$,$,.WAVY.);\r"
                                  "#2 = IFCPERSON ( $,$ ,\r\n\t 'x' 'y',\n  .A. ,$,$,$,$);\n"
                                  "#3=IFCFOO(1);  #4=IFCPERSON($);\n"
                                  "#4=IFCFACEBOUND(#5,\n,#6);\n"
                                  "stray text\n"
                                  "#5=IFCPERSON('unclosed,$,$,$,$,$,$,$);\n"
                                  "#6=IFCCARTESIANPOINT((1.,2.,\n'x'));\n"));
    Reading reading(file);
    EXPECT_EQ(
        reading.texts(),
        ":8:19: warning: #1 IFCWALL.OwnerHistory: expected the number of an instance of this file, found #9 "
        "[dangling-reference]\n"
        ":8:22: warning: #1 IFCWALL.Name: expected a value of the attribute's type, found 5 [wrong-kind]\n"
        ":8:34: warning: #1 IFCWALL.PredefinedType: expected a literal of the enumeration, found .WAVY. "
        "[unknown-literal]\n"
        ":10:7: error: #2 IFCPERSON.MiddleNames: expected a comma between two values, found nothing [missing-comma]\n"
        ":10:7: warning: #2 IFCPERSON.MiddleNames: expected a value of the attribute's type, found 'y' [wrong-kind]\n"
        ":11:3: warning: #2 IFCPERSON.PrefixTitles: expected a value of the attribute's type, found .A. [wrong-kind]\n"
        ":11:14: warning: #2 IFCPERSON: expected ) behind the last attribute, found $ [too-many-parameters]\n"
        ":12:4: warning: #3 IFCFOO: expected an entity of the schema, found IFCFOO [unknown-keyword]\n"
        ":12:30: warning: #4 IFCPERSON.FamilyName: expected one value for each attribute, found nothing "
        "[too-few-parameters]\n"
        ":13:4: error: #4: expected a number that no earlier instance has; it gets one, found #4 [duplicate-id]\n"
        ":14:1: error: #10 IFCFACEBOUND.Orientation: expected a value, found nothing [malformed]\n"
        ":14:2: warning: #10 IFCFACEBOUND: expected ) behind the last attribute, found #6 [too-many-parameters]\n"
        ":15:1: error: expected an instance: #1=KEYWORD(...);, found stray text [garbage]\n"
        ":16:14: error: #5: expected an apostrophe that closes the string, found 'unclosed,$,$,$,$,$,$,$); "
        "[open-string]\n"
        ":16:14: warning: #5 IFCPERSON.Identification: expected a value of the attribute's type, found "
        "'unclosed,$,$,$,$,$,$,$); [wrong-kind]\n"
        ":16:39: warning: #5 IFCPERSON.FamilyName: expected one value for each attribute, found nothing "
        "[too-few-parameters]\n"
        ":16:39: error: #5 IFCPERSON: expected ) that closes the parameter list, found nothing [unclosed-list]\n"
        ":17:22: warning: #6 IFCCARTESIANPOINT.Coordinates: expected a value of the attribute's type, found "
        "(1.,2., 'x') [wrong-kind]\n");
    VnIfcModel withPlaces(schema());
    VnIfcReadOptions options;
    std::string texts;
    options.places = true;
    options.diagnostics = [&](const VnIfcDiagnostic& diagnostic) { texts += diagnostic.text() + '\n'; };
    ASSERT_TRUE(withPlaces.readText(file, options));
    EXPECT_EQ(texts, reading.texts()) << "places of instances are found on the way";
    EXPECT_EQ(reading.result.errors, 6u);
    EXPECT_EQ(reading.result.warnings, 12u);
    EXPECT_EQ(Reading(fileOf("#1=IFCFOO(" + std::string(500, 'x') + "\n")).diagnostics.at(0).found.size(), 6u);
    for (const std::size_t length : {60u, 61u}) { // longer texts are cut
        const std::string digits(length, '7');
        EXPECT_EQ(Reading(fileOf("#1=IFCPERSON(" + digits + ",$,$,$,$,$,$,$);\n")).diagnostics.at(0).found,
                  length == 60 ? digits : digits.substr(0, 60) + "...");
    }
}
