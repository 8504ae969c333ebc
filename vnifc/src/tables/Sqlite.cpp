#include "Groups.h"

#include <vnifc/Tables.h>

#if defined(VNIFC_WITH_SQLITE)
#include "../whole/Targets.h"
#include "Database.h"
#include "EntityTable.h"

#include <vnifc/Properties.h>
#include <vnifc/Relations.h>

#include <cstdio>
#include <random>
#include <set>
#endif

namespace vnifc {

#if !defined(VNIFC_WITH_SQLITE)

bool hasSqlite() noexcept { return false; }

TableResult exportSqlite(const Model&, const std::filesystem::path&, const TableOptions&) {
    throw Error("this build has no SQLite: it was made with -DVNIFC_WITH_SQLITE=OFF");
}

#else

using namespace VN_SDAI;
using namespace detail;
namespace fs = std::filesystem;

bool hasSqlite() noexcept { return true; }

namespace detail {

Database::Database(const fs::path& file) : m_file(file.string()) {
    constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_EXCLUSIVE | SQLITE_OPEN_NOMUTEX;
    if (sqlite3_open_v2(m_file.c_str(), &m_database, kFlags, nullptr) != SQLITE_OK) {
        const std::string message = m_database ? sqlite3_errmsg(m_database) : "no memory";
        sqlite3_close(m_database);
        m_database = nullptr;
        throw FileError("cannot write " + m_file + ": " + message);
    }
}

Database::~Database() { sqlite3_close(m_database); }

void Database::fail() const { throw FileError("cannot write " + m_file + ": " + sqlite3_errmsg(m_database)); }

void Database::run(const std::string& sql) {
    if (sqlite3_exec(m_database, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK)
        fail();
}

void Database::close() {
    if (sqlite3_close(m_database) != SQLITE_OK)
        fail();
    m_database = nullptr;
}

Insertion::Insertion(Database& database, const std::string& sql) : m_database(&database) {
    if (sqlite3_prepare_v3(database.get(), sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr) !=
        SQLITE_OK)
        database.fail();
}

Insertion::~Insertion() { sqlite3_finalize(m_statement); }

} // namespace detail

namespace {

// Nobody reads the file before it is whole, so that it needs no journal.
constexpr const char* kSettings = "PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA locking_mode=EXCLUSIVE;"
                                  "PRAGMA page_size=8192; PRAGMA cache_size=-32768; PRAGMA foreign_keys=OFF; BEGIN";

constexpr const char* kTables =
    "CREATE TABLE instances(instance_id INTEGER PRIMARY KEY, entity TEXT NOT NULL);"
    "CREATE TABLE foreign_instances(instance_id INTEGER PRIMARY KEY REFERENCES instances, keyword TEXT, parameters "
    "TEXT);"
    "CREATE TABLE kept_text(instance_id INTEGER REFERENCES instances, attribute TEXT, text TEXT);"
    "CREATE TABLE objects(instance_id INTEGER PRIMARY KEY REFERENCES instances, entity TEXT, globalid TEXT, name "
    "TEXT);"
    "CREATE TABLE type_of(object INTEGER PRIMARY KEY REFERENCES instances, type INTEGER REFERENCES instances);"
    "CREATE TABLE set_of(object INTEGER REFERENCES instances, set_id INTEGER REFERENCES instances);"
    "CREATE TABLE set_value(set_id INTEGER REFERENCES instances, set_name TEXT, property TEXT, value, si_value REAL, "
    "unit TEXT);"
    "CREATE TABLE place_of(object INTEGER PRIMARY KEY REFERENCES instances, container INTEGER REFERENCES instances, "
    "storey INTEGER REFERENCES instances, building INTEGER REFERENCES instances, site INTEGER REFERENCES instances);"
    "CREATE TABLE material_of(object INTEGER REFERENCES instances, position INTEGER, material TEXT, category TEXT, "
    "thickness REAL, fraction REAL)";

constexpr const char* kViews =
    "CREATE INDEX set_of_object ON set_of(object);"
    "CREATE INDEX set_value_set ON set_value(set_id);"
    "CREATE INDEX material_of_object ON material_of(object);"
    "CREATE VIEW properties AS SELECT s.object, v.set_name AS \"set\", v.property, v.value, v.si_value, v.unit, "
    "0 AS from_type FROM set_of s JOIN set_value v ON v.set_id = s.set_id "
    "UNION ALL SELECT t.object, v.set_name, v.property, v.value, v.si_value, v.unit, 1 "
    "FROM type_of t JOIN set_of s ON s.object = t.type JOIN set_value v ON v.set_id = s.set_id "
    "WHERE NOT EXISTS (SELECT 1 FROM set_of o JOIN set_value w ON w.set_id = o.set_id "
    "WHERE o.object = t.object AND w.set_name = v.set_name AND w.property = v.property);"
    "CREATE VIEW spatial AS SELECT p.object, o.entity, o.name, p.container, p.storey, s.name AS storey_name, "
    "p.building, b.name AS building_name, p.site, i.name AS site_name FROM place_of p "
    "LEFT JOIN objects o ON o.instance_id = p.object LEFT JOIN objects s ON s.instance_id = p.storey "
    "LEFT JOIN objects b ON b.instance_id = p.building LEFT JOIN objects i ON i.instance_id = p.site;"
    "CREATE VIEW materials AS SELECT object, material, category, thickness, fraction FROM material_of";

std::string identifier(std::string_view name) { return '"' + std::string(name) + '"'; }

const char* sqlTypeOf(TableColumn::Kind kind) noexcept {
    switch (kind) {
    case TableColumn::Kind::kInteger:
        return " INTEGER";
    case TableColumn::Kind::kReal:
        return " REAL";
    case TableColumn::Kind::kReference:
        return " INTEGER REFERENCES instances(instance_id)";
    case TableColumn::Kind::kSelect:
        return "";
    default:
        return " TEXT";
    }
}

std::string insertion(const std::string& table, std::size_t cells) {
    std::string sql = "INSERT INTO " + table + " VALUES(";
    for (std::size_t i = 0; i < cells; ++i)
        sql += i > 0 ? ",?" : "?";
    return sql + ')';
}

/// The database is written beside its target and takes its name in the end.
class SafeDatabase {
public:
    explicit SafeDatabase(const fs::path& target) : m_target(target), m_name(target) {
        std::random_device random;
        m_name += ".part" + std::to_string(random());
    }
    ~SafeDatabase() {
        std::error_code ignored;
        if (!m_name.empty())
            fs::remove(m_name, ignored);
    }
    SafeDatabase(const SafeDatabase&) = delete;
    SafeDatabase& operator=(const SafeDatabase&) = delete;

    const fs::path& name() const noexcept { return m_name; }
    void commit() {
        fs::rename(m_name, m_target);
        m_name.clear();
    }

private:
    fs::path m_target;
    fs::path m_name;
};

class SqlCells final : public CellSink {
public:
    explicit SqlCells(Insertion& texts) noexcept : m_texts(texts) {}

    void start(Insertion& row, std::vector<Insertion>* lists, std::uint64_t instance) {
        m_row = &row;
        m_lists = lists;
        m_list = 0;
        m_instance = static_cast<std::int64_t>(instance);
        row.integer(m_instance);
    }
    void null() override { m_row->null(); }
    void integer(std::int64_t value) override { m_row->integer(value); }
    void real(double value) override { m_row->real(value); }
    void text(std::string_view utf8) override { m_row->text(utf8); }
    void json(std::string_view text) override { m_row->text(text); }
    void targets(const TableColumn& column, const VnIfcAggr& elements) override {
        Insertion& list = (*m_lists)[m_list++];
        std::int64_t position = 0;
        for (const VnDbObjectId& handle : static_cast<const VnIfcAggrOf<VnDbObjectId>&>(elements)) {
            ++position;
            if (!handle.isNull() && !handle.openObject())
                kept(column.name, '#' + std::to_string(handle.number()));
            list.integer(m_instance);
            list.integer(position);
            handle.openObject() ? list.integer(static_cast<std::int64_t>(handle.number())) : list.null();
            list.endRow();
            ++m_rows;
        }
    }
    void kept(std::string_view attribute, std::string_view text) override {
        m_texts.integer(m_instance);
        m_texts.text(attribute);
        m_texts.text(text);
        m_texts.endRow();
        ++m_rows;
    }
    /// Written beside those of entities.
    std::uint64_t rows() const noexcept { return m_rows; }

private:
    Insertion& m_texts;
    Insertion* m_row = nullptr;
    std::vector<Insertion>* m_lists = nullptr;
    std::size_t m_list = 0;
    std::int64_t m_instance = 0;
    std::uint64_t m_rows = 0;
};

class SqliteExport {
public:
    SqliteExport(const Model& model, Database& database, const TableOptions& options)
        : m_model(model), m_state(*model.wrap({}).state()), m_database(database), m_roster(m_state.model()),
          m_groups(m_state, m_roster), m_steps(options, m_roster.size()) {}

    TableResult run() {
        m_database.run(kSettings);
        m_database.run(kTables);
        m_result.tables = 9;
        writeInstances();
        {
            Insertion texts(m_database, insertion("kept_text", 3));
            SqlCells cells(texts);
            for (const auto& [name, members] : m_groups.byName)
                writeTable(name, members, cells);
            m_result.rows += cells.rows();
        }
        writeForeign();
        writeObjects();
        writeSets();
        m_database.run(kViews);
        m_database.run("COMMIT");
        return m_result;
    }

private:
    static std::int64_t idOf(const Instance& instance) { return static_cast<std::int64_t>(instance.id()); }
    static void reference(Insertion& row, const Instance& instance) {
        instance ? row.integer(idOf(instance)) : row.null();
    }
    static void optional(Insertion& row, const std::optional<double>& value) { value ? row.real(*value) : row.null(); }
    void end(Insertion& row) {
        row.endRow();
        ++m_result.rows;
    }

    void writeInstances() {
        Insertion row(m_database, insertion("instances", 2));
        for (std::uint32_t i = 0; i < m_roster.size(); ++i) {
            const ClassInfo* info = m_state.classOf(m_roster.instance(i));
            row.integer(static_cast<std::int64_t>(m_roster.handle(i).number()));
            if (info)
                row.text(info->rows.name);
            else
                row.text(static_cast<const VnIfcForeignInstance&>(m_roster.instance(i)).keyword().view());
            end(row);
        }
    }

    void writeTable(std::string_view name, const std::vector<std::uint32_t>& members, SqlCells& cells) {
        const std::vector<TableColumn> columns = columnsOf(*m_state.classOf(m_roster.instance(members.front())));
        const std::string table = identifier(name);
        std::string sql = "CREATE TABLE " + table + "(instance_id INTEGER PRIMARY KEY REFERENCES instances";
        std::size_t count = 1;
        std::vector<Insertion> lists;
        std::string listTables;
        for (const TableColumn& column : columns) {
            if (column.kind != TableColumn::Kind::kTargets) {
                sql += ", " + identifier(column.name) + sqlTypeOf(column.kind);
                ++count;
                continue;
            }
            const std::string list = identifier(std::string(name) + '_' + column.name);
            m_database.run("CREATE TABLE " + list + "(instance_id INTEGER REFERENCES " + table +
                           ", position INTEGER, target INTEGER REFERENCES instances(instance_id), "
                           "PRIMARY KEY(instance_id, position)) WITHOUT ROWID");
            lists.emplace_back(m_database, insertion(list, 3));
            ++m_result.tables;
        }
        m_database.run(sql + ')');
        ++m_result.tables;
        Insertion row(m_database, insertion(table, count));
        RowReader reader(m_state, cells, false);
        for (const std::uint32_t i : members) {
            m_steps.next();
            cells.start(row, &lists, m_roster.handle(i).number());
            reader.read(m_roster.instance(i), columns);
            end(row);
        }
    }

    void writeForeign() {
        Insertion row(m_database, insertion("foreign_instances", 3));
        for (const std::uint32_t i : m_groups.foreign) {
            const auto& instance = static_cast<const VnIfcForeignInstance&>(m_roster.instance(i));
            row.integer(static_cast<std::int64_t>(m_roster.handle(i).number()));
            row.text(instance.keyword().view());
            row.text(instance.parameters().view());
            end(row);
        }
    }

    /// What is said of objects and types in one place each.
    void writeObjects() {
        Insertion objects(m_database, insertion("objects", 4));
        Insertion types(m_database, insertion("type_of", 2));
        Insertion places(m_database, insertion("place_of", 5));
        Insertion materials(m_database, insertion("material_of", 6));
        for (const Instance& object : m_model.instances("IfcObjectDefinition")) {
            const std::string globalId = object.globalId();
            const std::string name = object.name();
            objects.integer(idOf(object));
            objects.text(object.type());
            objects.text(globalId);
            objects.text(name);
            end(objects);
            if (const Instance type = typeOf(object)) {
                types.integer(idOf(object));
                types.integer(idOf(type));
                end(types);
            }
            if (object.is("IfcProduct"))
                writePlace(places, object);
            const Material material = vnifc::material(object);
            std::int64_t position = 0;
            for (const MaterialPart& part : material.parts) {
                materials.integer(idOf(object));
                materials.integer(++position);
                materials.text(part.name);
                materials.text(part.category);
                optional(materials, part.thickness);
                optional(materials, part.fraction);
                end(materials);
            }
        }
    }

    void writePlace(Insertion& row, const Instance& product) {
        row.integer(idOf(product));
        reference(row, container(product));
        reference(row, storey(product));
        reference(row, building(product));
        reference(row, site(product));
        end(row);
    }

    void writeSets() {
        Insertion uses(m_database, insertion("set_of", 2));
        std::set<std::pair<std::uint32_t, std::uint32_t>> known;
        const auto use = [&](std::uint32_t object, std::uint32_t set) {
            if (!known.emplace(object, set).second)
                return;
            uses.integer(static_cast<std::int64_t>(m_roster.handle(object).number()));
            uses.integer(static_cast<std::int64_t>(m_roster.handle(set).number()));
            end(uses);
        };
        for (const Instance& relation : m_model.instances("IfcRelDefinesByProperties")) {
            const VnIfcEntityBase& core = *relation.core().openObject();
            for (const std::uint32_t set : targetsOf(m_state, m_roster, core, "RelatingPropertyDefinition"))
                for (const std::uint32_t object : targetsOf(m_state, m_roster, core, "RelatedObjects"))
                    use(object, set);
        }
        for (const Instance& type : m_model.instances("IfcTypeObject"))
            for (const std::uint32_t set : targetsOf(m_state, m_roster, *type.core().openObject(), "HasPropertySets"))
                use(m_roster.ordinalOf(type.core()), set);
        Insertion values(m_database, insertion("set_value", 6));
        for (const Instance& instance : m_model.instances("IfcPropertySetDefinition"))
            for (const PropertySet& set : propertySets(instance))
                writeProperties(values, instance, set.name, "", set.properties);
    }

    void writeProperties(Insertion& row, const Instance& set, const std::string& setName, const std::string& prefix,
                         const std::vector<Property>& properties) {
        for (const Property& property : properties) {
            const std::string name = prefix + property.name;
            if (property.kind == PropertyKind::kComplex) {
                writeProperties(row, set, setName, name + '.', property.parts);
                continue;
            }
            row.integer(idOf(set));
            row.text(setName);
            row.text(name);
            const Value value = property.value().untyped();
            const std::string words = value.toString();
            bindValue(row, value, words);
            const auto [si, sign] = siOf(property);
            optional(row, si);
            sign.empty() ? row.null() : row.text(sign);
            end(row);
        }
    }

    static void bindValue(Insertion& row, const Value& value, std::string_view words) {
        if (value.isNull())
            row.null();
        else if (const auto* truth = std::get_if<bool>(&value.variant()))
            row.integer(*truth ? 1 : 0);
        else if (const auto* number = std::get_if<std::int64_t>(&value.variant()))
            row.integer(*number);
        else if (const auto* real = std::get_if<double>(&value.variant()))
            row.real(*real);
        else
            row.text(words);
    }

    /// The value in SI and the sign of its own unit, of properties that have one value.
    static std::pair<std::optional<double>, std::string> siOf(const Property& property) {
        if (property.values.size() != 1)
            return {};
        const PropertyValue& value = property.values.front();
        std::pair<std::optional<double>, std::string> result;
        if (value.unit)
            result.second = signOf(value.unit);
        try {
            if (const std::optional<Quantity> quantity = value.quantity())
                result.first = quantity->si();
        } catch (const BadValue&) {
            result.first.reset(); // money and the like have no way to SI
        }
        return result;
    }

    const Model& m_model;
    ModelState& m_state;
    Database& m_database;
    Roster m_roster;
    Groups m_groups;
    Steps m_steps;
    TableResult m_result;
};

} // namespace

TableResult exportSqlite(const Model& model, const fs::path& file, const TableOptions& options) {
    if (fs::is_directory(file))
        throw FileError("cannot write " + file.string() + ": it is a folder");
    SafeDatabase target(file);
    Database database(target.name());
    const TableResult result = SqliteExport(model, database, options).run();
    database.close();
    try {
        target.commit();
    } catch (const fs::filesystem_error& error) {
        throw FileError("cannot write " + file.string() + ": " + error.code().message());
    }
    return result;
}

#endif

} // namespace vnifc
