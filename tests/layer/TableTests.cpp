#include "Building.h"

#include <vnifc/Tables.h>

#if defined(VNIFC_WITH_SQLITE)
#include <sqlite3.h>
#endif

#include <fstream>
#include <iterator>

namespace vnifc::test {

namespace {

namespace fs = std::filesystem;

/// A folder for the files of one test.
class Tables : public testing::TestWithParam<std::string> {
protected:
    void SetUp() override {
        const auto* test = testing::UnitTest::GetInstance()->current_test_info();
        std::string name = std::string("vnifc_") + test->name();
        std::ranges::replace(name, '/', '_');
        m_folder = fs::temp_directory_path() / name;
        fs::remove_all(m_folder);
        fs::create_directories(m_folder);
    }
    void TearDown() override { fs::remove_all(m_folder); }

    std::vector<std::string> names(const fs::path& folder) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::ranges::sort(names);
        return names;
    }

    fs::path m_folder;
};

INSTANTIATE_TEST_SUITE_P(Layer, Tables, testing::ValuesIn(kReleases), [](const auto& each) { return each.param; });

// Every kind of cell, in entities that all releases have with the same parameters.
const char* const kCells = R"(#1=IFCCARTESIANPOINT((1.,2.5));
#2=IFCPERSON($,'Stra\X\DFe','say "a, b"',('x','y'),$,$,$,$);
#3=IFCPROPERTYSINGLEVALUE('a','',IFCLABEL('EI 60'),#99);
#4=IFCPROPERTYSINGLEVALUE('b',$,IFCLOGICAL(.U.),$);
#5=IFCPROPERTYENUMERATEDVALUE('d',$,(IFCLABEL('x'),IFCINTEGER(3)),$);
#6=IFCPOLYLINE((#1,#1));
#7=IFCFOO('what is this',#1);
#8=IFCSIUNIT(*,.LENGTHUNIT.,'no literal',.METRE.);
)";

TEST_P(Tables, FolderHasAFileForEachEntity) {
    const Model model = openText(fileOf(GetParam(), kCells), {.release = GetParam()});
    const TableResult result = exportCsv(model, m_folder / "out");
    EXPECT_EQ(result.tables, names(m_folder / "out").size());
    const std::string id = GetParam() == "IFC2X3" ? "Id" : "Identification";
    const std::string text = GetParam() == "IFC4X3_ADD2" ? "Specification" : "Description";
    const struct {
        const char* file;
        std::string content;
    } kCases[] = {
        {"IfcCartesianPoint", "instance_id,Coordinates\r\n1,\"[1,2.5]\"\r\n"},
        {"IfcPerson", "instance_id," + id +
                          ",FamilyName,GivenName,MiddleNames,PrefixTitles,SuffixTitles,Roles,Addresses\r\n"
                          "2,,Straße,\"say \"\"a, b\"\"\",\"[\"\"x\"\",\"\"y\"\"]\",,,,\r\n"},
        {"IfcPropertySingleValue", "instance_id,Name," + text +
                                       ",NominalValue,NominalValue_type,Unit\r\n"
                                       "3,a,\"\",EI 60,IfcLabel,\r\n4,b,,UNKNOWN,IfcLogical,\r\n"},
        {"IfcPolyline", "instance_id,Points\r\n6,\"[1,1]\"\r\n"},
        {"foreign_instances", "instance_id,keyword,parameters\r\n7,IFCFOO,\"'what is this',#1\"\r\n"},
        {"kept_text", "instance_id,attribute,text\r\n3,Unit,#99\r\n8,Prefix,'no literal'\r\n"},
    };
    for (const auto& [file, content] : kCases)
        EXPECT_EQ(contents(m_folder / "out" / (std::string(file) + ".csv")), content) << file;
}

TEST_P(Tables, FolderIsReplacedAsAWholeOrNotAtAll) {
    const Model model = openText(fileOf(GetParam(), kCells), {.release = GetParam()});
    const fs::path target = m_folder / "out";
    fs::create_directories(target);
    std::ofstream(target / "IfcOld.csv") << "old";
    EXPECT_THROW(exportCsv(model, target, {.progress = [](double) { return false; }}), Error);
    EXPECT_EQ(names(target), std::vector<std::string>{"IfcOld.csv"});
    exportCsv(model, target);
    EXPECT_FALSE(fs::exists(target / "IfcOld.csv"));
    std::ofstream(target / "notes.txt") << "mine";
    EXPECT_THROW(exportCsv(model, target), FileError);
    EXPECT_TRUE(fs::exists(target / "notes.txt"));
    EXPECT_THROW(exportCsv(model, target / "notes.txt"), FileError);
    EXPECT_EQ(names(m_folder), std::vector<std::string>{"out"}) << "nothing is left beside it";
}

#if defined(VNIFC_WITH_SQLITE)

/// The rows of a query: cells with bars, NULL as nothing.
std::vector<std::string> query(const fs::path& file, const std::string& sql) {
    sqlite3* database = nullptr;
    EXPECT_EQ(sqlite3_open_v2(file.string().c_str(), &database, SQLITE_OPEN_READONLY, nullptr), SQLITE_OK);
    std::vector<std::string> rows;
    const auto add = [](void* to, int count, char** cells, char**) {
        std::string row;
        for (int i = 0; i < count; ++i)
            row.append(i > 0 ? "|" : "").append(cells[i] ? cells[i] : "");
        static_cast<std::vector<std::string>*>(to)->push_back(row);
        return 0;
    };
    char* message = nullptr;
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), add, &rows, &message), SQLITE_OK) << (message ? message : "");
    sqlite3_free(message);
    sqlite3_close(database);
    return rows;
}

using Rows = std::vector<std::string>;

TEST_P(Tables, DatabaseAnswersQuestions) {
    const Model model = buildingOf(GetParam());
    const fs::path file = m_folder / "out.sqlite";
    exportSqlite(model, file);
    const struct {
        const char* sql;
        Rows expected;
    } kCases[] = {
        {"PRAGMA integrity_check", {"ok"}},
        {"PRAGMA foreign_key_check", {}},
        {"SELECT count(*) FROM instances", {std::to_string(model.size())}},
        {"SELECT Name, ObjectPlacement FROM IfcWall", {"W|13", "part|"}},
        {"SELECT typeof(OverallHeight), OverallHeight FROM IfcDoor", {"real|2100.0"}},
        {"SELECT target FROM IfcRelDefinesByType_RelatedObjects ORDER BY position", {"4", "7"}},
        {"SELECT NominalValue, NominalValue_type FROM IfcPropertySingleValue WHERE instance_id IN (32, 42, 47)",
         {"1|IfcBoolean", "200.0|IfcLengthMeasure", "7|IfcInteger"}},
        // the view of properties: a type's where the object has none of that name
        {"SELECT object, value, from_type FROM properties WHERE property = 'FireRating' ORDER BY object",
         {"4|EI60|0", "7|EI30|1", "8|EI30|0"}},
        {"SELECT property, value, round(si_value, 6), unit FROM properties WHERE object = 4 AND unit IS NOT NULL "
         "ORDER BY property",
         {"Height.Max|8.0|2.4384|FOOT", "NetVolume|2.5|2.5|m³", "Width|200.0|0.2|mm"}},
        {"SELECT value FROM properties WHERE property = 'Complex.Straße'", {"7"}},
        // and the three questions that people ask first
        {"SELECT storey_name, count(*) FROM spatial WHERE entity LIKE 'IfcWall%' GROUP BY 1", {"First|2"}},
        {"SELECT material, sum(si_value) FROM materials JOIN properties USING (object) WHERE property = 'NetVolume' "
         "GROUP BY 1",
         {"Brick|2.5"}},
        {"SELECT Name FROM IfcDoor WHERE instance_id NOT IN (SELECT object FROM properties WHERE property = "
         "'FireRating')",
         {"D"}},
    };
    for (const auto& [sql, expected] : kCases)
        EXPECT_EQ(query(file, sql), expected) << sql;
    exportSqlite(openText(fileOf(GetParam(), kCells), {.release = GetParam()}), file);
    EXPECT_EQ(query(file, "SELECT * FROM kept_text"), (Rows{"3|Unit|#99", "8|Prefix|'no literal'"}));
    EXPECT_EQ(query(file, "SELECT * FROM foreign_instances"), (Rows{"7|IFCFOO|'what is this',#1"}));
    EXPECT_EQ(query(file, "SELECT FamilyName FROM IfcPerson"), Rows{"Straße"});
}

TEST_P(Tables, DatabaseIsCompleteOrAsItWas) {
    const Model model = buildingOf(GetParam());
    const fs::path file = m_folder / "out.sqlite";
    std::ofstream(file) << "as it was";
    EXPECT_THROW(exportSqlite(model, file, {.progress = [](double) { return false; }}), Error);
    EXPECT_EQ(contents(file), "as it was");
    EXPECT_EQ(names(m_folder), std::vector<std::string>{"out.sqlite"});
    EXPECT_THROW(exportSqlite(model, m_folder), FileError);
    EXPECT_THROW(exportSqlite(model, m_folder / "missing" / "out.sqlite"), FileError);
}

#endif

} // namespace

} // namespace vnifc::test
