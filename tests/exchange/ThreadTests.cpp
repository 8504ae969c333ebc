// The number of threads and the pieces in which they look through a text change nothing that anybody can see.
#include "Sanitized.h"
#include "Support.h"
#include "support/Corpus.h"

#include <IFC4X3/IfcPropertySingleValue.h>
#include <VnIfcCore/VnIfcCheck.h>
#include <VnIfcCore/VnIfcIterator.h>
#include <VnIfcCore/VnIfcVariantTypeAggregate.h>

#include <algorithm>
#include <cstdint>
#include <random>

using namespace VN_SDAI;
using namespace exchange;
using vnifc::test::contents;
using vnifc::test::corpusFiles;

namespace {

std::string handlesIn(const VnIfcVariant& value) {
    if (const auto* handle = value.get<VnDbObjectId>())
        return std::to_string(handle->number());
    std::string handles = "(";
    VnIfcVariant converted;
    const auto& type = VnIfcVariantType::Desc<VnIfcAggr*>::value();
    if (value.convertTo(type, converted) && *converted.get<VnIfcAggr*>())
        for (VnIfcConstIterator each(**converted.get<VnIfcAggr*>()); !each.atEnd(); each.next())
            handles += std::to_string(each.currentAs<VnDbObjectId>().number()) + ',';
    return handles + ')';
}

std::string inversesOf(const VnIfcModel& model) {
    std::string all;
    model.forEach([&](const VnIfcEntityBase& instance) {
        for (const VnIfcEntityType* type = instance.getInstanceType(); type; type = type->supertype())
            for (const VnIfcInverseAttributeDefinition* inverse : type->inverseAttributes()) {
                VnIfcVariant value;
                EXPECT_TRUE(instance.getAttr(inverse->name(), value));
                all += std::to_string(instance.objectId().number()) + handlesIn(value) + '\n';
            }
    });
    return all;
}

/// All that can be seen of a reading, a check and a writing.
struct Seen {
    std::string findings;
    std::string inverses;
    std::string written;
    std::size_t count = 0;

    bool operator==(const Seen&) const = default;
};

Seen see(std::string_view text, unsigned threads, std::size_t piece) {
    Seen seen;
    const auto note = [&](const VnIfcDiagnostic& finding) { seen.findings += finding.text() + '\n'; };
    VnIfcModel model(schema());
    VnIfcReadOptions options;
    options.diagnostics = note;
    options.threads = threads;
    options.piece = piece;
    options.places = true;
    const VnIfcFileResult result = model.readText(text, options);
    seen.findings += result.message + std::to_string(result.errors) + '/' + std::to_string(result.warnings) + '\n';
    VnIfcCheck check(model, note);
    check.run(threads);
    seen.findings += std::to_string(check.errors()) + '/' + std::to_string(check.warnings()) + '\n';
    VnIfcCheck counting(model, {});
    counting.run(threads);
    EXPECT_TRUE(counting.errors() == check.errors() && counting.warnings() == check.warnings());
    seen.inverses = inversesOf(model);
    seen.count = model.count();
    VnIfcWriteOptions writing;
    writing.threads = threads;
    seen.written = model.writeText(writing);
    return seen;
}

/// What two readings differ in, for whoever looks at a failure.
std::string difference(const Seen& seen, const Seen& whole) {
    return seen.findings + "instead of\n" + whole.findings + seen.inverses + "instead of\n" + whole.inverses +
           seen.written + "instead of\n" + whole.written;
}

void expectSame(std::string_view text, std::initializer_list<std::size_t> pieces) {
    const Seen whole = see(text, 1, text.size() + 1);
    for (const std::size_t piece : pieces)
        for (const unsigned threads : {1u, 2u, 3u, 8u}) {
            const Seen seen = see(text, threads, piece);
            ASSERT_TRUE(seen == whole) << "pieces of " << piece << ", " << threads << " threads\n"
                                       << seen.findings << "instead of\n"
                                       << whole.findings << "for\n"
                                       << text.substr(0, 2000);
        }
}

/// Instances whose borders are hard to find from the middle of them.
std::string puzzles() {
    return fileOf(
        "#1=IFCPERSON('a',$,$,$,$,$,$,$);\n"
        "#2=IFCPERSON('x;\n#3=IFCPERSON(''y'',$);\n#4 = ',$,$,$,$,$,$,$);#5=IFCPERSON($,'\\S\\'',$,$,$,$,$,$);\n"
        "/* ;\n#6=IFCPERSON('z',$,$,$,$,$,$,$); ' */#7=/*;#7=/* */IFCPERSON('b',$,$,$,$,$,$,$);\n"
        "#8/**/=/*;\n#9=*/IFCORGANIZATION($,'o','\\X2\\00E4\\X0\\',$,$);#10\n=\nIFCPERSON($,$,$,$,$,$,$,$)\n;\n"
        "#11=IFCPROPERTYSINGLEVALUE('=#1=',$,IFCLABEL('#1=;'),$);#12=IFCPERSONANDORGANIZATION(#1,#8,$);\n"
        "#13=IFCRELAGGREGATES('0YvctVUKr0kugbFTf53O9L',$,$,$,#14,(#15,#16));\n"
        "#14=IFCWALL('0YvctVUKr0kugbFTf53O9L',$,$,$,$,$,$,$,$);#15=IFCWALL('',$,$,$,$,$,$,$,$);\n"
        "#16=IFCWALL('0YvctVUKr0kugbFTf53O9M',$,$,$,$,$,$,$,$);\n"
        "#17=#14;\n");
}

} // namespace

TEST(Pieces, BordersMayFallAnywhere) {
    const std::string file = puzzles();
    const Seen whole = see(file, 1, 0);
    for (std::size_t piece = 1; piece < 80; ++piece) {
        const Seen seen = see(file, 2, piece);
        ASSERT_TRUE(seen == whole) << piece << '\n' << difference(seen, whole);
    }
    for (const std::string_view data : {
             "#1=IFCPERSON('a',$,$,$,$,$,$,$);\n#2=IFCPERSON('open,$,$,$,$,$,$,$);\n#3=IFCPERSON('b',$,$,$,$,$,$,$);\n",
             "#1=IFCPERSON('a',$,$,$,$,$,$,$);\n/* open\n#2=IFCPERSON('b',$,$,$,$,$,$,$);\n/* closed "
             "*/\n#3=IFCWALL();\n",
             "#1=IFCPERSON('a',$,$,(($,$,$,$);\n#2=IFCPERSON('b',$,$,$,$,$,$,$);\n#3=IFCPERSON('c',$,$,),$,$,$,$);\n",
             "#1=IFCPERSON('a')\n#2=IFCPERSON('b',\n#3=IFCPERSON('c'\n;#4=\n#5=;#6=IFCPERSON('d');;;\n#7;#8=#9=IFCWALL("
             ");\n",
             "#1=IFCWALL();#1=IFCPERSON();#2=IFCWALL();#1=IFCWALL();#0=IFCWALL();#99999999999999999999999=IFCWALL();#3="
             "IFCPERSON(#4,#1);\n",
             "#1=&SCOPE #2=IFCWALL();#3=IFCWALL();ENDSCOPE/#2/ "
             "IFCWALL();#4=IFCWALL();\n#5=IFCPERSON('x;#6=IFCWALL();\n",
             "#1=IFCWALL();ENDSEC;DATA;#2=IFCWALL();\nENDSEC;\nDATA('x',('y'));\n#3=IFCWALL();#4=IFCWALL();\n",
             "#1=IFCWALL();\nENDSEC;\nANCHOR;<a>=#1;ENDSEC;DATA;#18446744073709551615=IFCWALL();#7=IFCWALL();#7="
             "IFCWALL();",
         })
        expectSame(fileOf(data), {1, 3, 7, 16, 64});
}

TEST(Pieces, PlacesAreThoseOfTheNumbers) {
    constexpr struct {
        std::uint64_t number, line, column;
    } kPlaces[] = {{1, 8, 1},   {2, 9, 1},    {5, 11, 23}, {7, 13, 38},  {8, 14, 1}, {10, 15, 48},
                   {11, 19, 1}, {12, 19, 57}, {14, 21, 1}, {15, 21, 55}, {17, 23, 1}};
    for (const std::size_t piece : {std::size_t{0}, std::size_t{20}, std::size_t{64}}) {
        VnIfcModel model(schema());
        VnIfcReadOptions options;
        options.piece = piece;
        options.places = true;
        (void)model.readText(puzzles(), options);
        for (const auto& [number, line, column] : kPlaces) {
            std::uint64_t ownLine = 0, ownColumn = 0;
            EXPECT_TRUE(model.place(model.find(number), ownLine, ownColumn));
            EXPECT_TRUE(ownLine == line && ownColumn == column)
                << '#' << number << " at " << ownLine << ':' << ownColumn << ", pieces of " << piece;
        }
    }
}

TEST(Pieces, DamageAnywhereIsFoundTheSameWay) {
    std::mt19937 random(20260101);
    const std::string file = puzzles();
    constexpr std::string_view kBytes = "'()/*;#=\\ \n,1\0";
    for (int round = 0; round < 400; ++round) {
        std::string damaged = file;
        for (std::size_t i = 0; i < 1 + random() % 3; ++i)
            damaged[kHead.size() + random() % (file.size() - kHead.size())] = kBytes[random() % kBytes.size()];
        const std::size_t piece = 1 + random() % 70;
        ASSERT_TRUE(see(damaged, 3, piece) == see(damaged, 1, 0)) << piece << '\n' << damaged;
    }
}

TEST(Pieces, RealFilesGiveTheSameModel) {
    if (corpusFiles().empty())
        GTEST_SKIP() << "no files of other programs here";
    for (const std::filesystem::path& path : corpusFiles()) {
        SCOPED_TRACE(path.filename());
        const std::string text = contents(path);
        ASSERT_TRUE(see(text, 3, 64) == see(text, 1, 0));
    }
}

TEST(Threads, NumbersOfAllKindsGetTheSameSlots) {
    constexpr std::uint64_t kCount = kSanitized ? 4'000 : 20'000;
    const auto file = [](auto number) {
        std::string data;
        for (std::uint64_t i = 1; i <= kCount; ++i)
            data += '#' + std::to_string(number(i)) + "=IFCRELAGGREGATES('',$,$,$,#" +
                    std::to_string(number(i / 2 + 1)) + ",(#" + std::to_string(number(kCount + 1 - i)) + ",#" +
                    std::to_string(number(i) + 1) + "));\n";
        return fileOf(data);
    };
    // Dense, in reverse, with gaps, far apart in both directions, with large jumps, one number for many, all of which
    // may meet in a cell.
    expectSame(file([](std::uint64_t i) { return i; }), {5000});
    expectSame(file([](std::uint64_t i) { return 30'000 - i; }), {5000});
    expectSame(file([](std::uint64_t i) { return i * 7919; }), {5000});
    expectSame(file([](std::uint64_t i) { return UINT64_MAX - i * 7919; }), {5000});
    expectSame(file([](std::uint64_t i) { return i * 5 + (i / 3000 << 40); }), {5000});
    expectSame(file([](std::uint64_t i) { return i % 100 == 0 ? 300 : i; }), {5000});
    expectSame(file([](std::uint64_t i) { return i % 100 == 0 ? 7919 : i * 7919; }), {5000});
    expectSame(file([](std::uint64_t i) { return i % 2 == 0 ? i << 40 : (std::uint64_t{1} << 63) + i; }), {5000});
}

TEST(Threads, InversesAndFindingsAreThoseOfOne) {
    // One target of many, many of one, single inverse attributes with rivals, equal identifiers all over the file.
    std::string data;
    for (std::size_t i = 1; i <= 30'000; ++i) {
        const std::string own = std::to_string(i % 20'000);
        const std::string guid = "'0YvctVUKr0kugbFTf" + std::to_string(10'000 + i % 9'000) + "'";
        const std::string other = std::to_string(i * 7 % 30'000 + 1);
        data += '#' + std::to_string(i);
        switch (i % 4) {
        case 0:
            data += "=IFCWALL(" + guid + ",$,$,$,$,$,$,$,$);\n";
            break;
        case 1:
            data += "=IFCRELAGGREGATES(" + guid + ",$,$,$,#4,(#" + other + ",#" + own + "));\n";
            break;
        case 2:
            data += "=IFCMATERIALLAYERSET((#" + other + ",#3),$,$);\n";
            break;
        default:
            data += "=IFCMATERIALLAYER($,1.,$,'n',$,$,$);\n";
        }
    }
    expectSame(fileOf(data), {100'000});
}

TEST(Threads, StringsThatShareATextChangeOnTheirOwn) {
    Reading reading(fileOf("#1=IFCPROPERTYSINGLEVALUE('Same name',$,IFCLABEL('Same name'),$);\n"
                           "#2=IFCPROPERTYSINGLEVALUE('Same name',$,IFCLABEL('Same name'),$);\n"
                           "#3=IFCPROPERTYSINGLEVALUE('Same nam',$,$,$);\n"));
    auto& first = reading.as<IFC4X3::IfcPropertySingleValue>(1);
    auto& second = reading.as<IFC4X3::IfcPropertySingleValue>(2);
    EXPECT_EQ(first.getName().constStr(), second.getName().constStr()) << "one copy";
    first.setName("Another");
    EXPECT_EQ(second.getName(), "Same name");
    VnAnsiString copy = second.getName();
    EXPECT_NE(copy.constStr(), second.getName().constStr()) << "a copy may outlive the model";
    std::ranges::fill_n(copy.allocate(3), 3, 'x');
    second.setName(copy);
    EXPECT_EQ(reading.data(), "#1=IFCPROPERTYSINGLEVALUE('Another',$,IFCLABEL('Same name'),$);\n"
                              "#2=IFCPROPERTYSINGLEVALUE('xxx',$,IFCLABEL('Same name'),$);\n"
                              "#3=IFCPROPERTYSINGLEVALUE('Same nam',$,$,$);\n");
}

TEST(Threads, OfRivalsTheSameOneStays) {
    // Two relations for each opening, which holds only one: the next instance, and one far away on either side.
    constexpr std::uint64_t kCount = 2'000;
    std::string data;
    const auto voids = [&](std::uint64_t number, std::uint64_t opening) {
        data += '#' + std::to_string(number) + "=IFCRELVOIDSELEMENT('',$,$,$,$,#" + std::to_string(opening) + ");\n";
    };
    for (std::uint64_t i = 0; i < kCount; ++i) {
        data += '#' + std::to_string(3 * i + 1) + "=IFCOPENINGELEMENT('',$,$,$,$,$,$,$,$);\n";
        voids(3 * i + 2, 3 * i + 1);
        voids(3 * i + 3, 3 * (kCount - 1 - i) + 1);
    }
    expectSame(fileOf(data), {5000});
}
