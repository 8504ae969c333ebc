#include "EntityTable.h"
#include "Groups.h"

#include <charconv>
#include <cstdio>
#include <fstream>
#include <random>

namespace vnifc {

using namespace VN_SDAI;
using namespace detail;
namespace fs = std::filesystem;

namespace {

constexpr std::size_t kBuffer = 1U << 20;

/// A file of comma-separated values.
class CsvFile {
public:
    explicit CsvFile(const fs::path& path) : m_path(path), m_file(path, std::ios::binary) { check(); }

    void text(std::string_view utf8) {
        begin();
        if (utf8.find_first_of("\",\r\n") == utf8.npos) {
            // Quotes tell an empty text from no value.
            m_text += utf8.empty() ? std::string_view("\"\"") : utf8;
            return;
        }
        m_text += '"';
        for (const char c : utf8)
            m_text.append(c == '"' ? 2 : 1, c);
        m_text += '"';
    }
    template <class Number>
    void number(Number value) {
        begin();
        char digits[32];
        m_text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    }
    void null() { begin(); }
    void endRow() {
        m_text += "\r\n";
        m_follows = false;
        if (m_text.size() > kBuffer)
            flush();
    }
    void close() {
        flush();
        m_file.close();
        check();
    }

private:
    void begin() {
        if (m_follows)
            m_text += ',';
        m_follows = true;
    }
    void flush() {
        m_file.write(m_text.data(), static_cast<std::streamsize>(m_text.size()));
        m_text.clear();
        check();
    }
    void check() const {
        if (!m_file)
            throw FileError("cannot write " + m_path.string());
    }

    fs::path m_path;
    std::ofstream m_file;
    std::string m_text;
    bool m_follows = false;
};

struct KeptText {
    std::uint64_t instance;
    std::string attribute;
    std::string text;
};

class CsvCells final : public CellSink {
public:
    explicit CsvCells(std::vector<KeptText>& texts) noexcept : m_texts(texts) {}

    void start(CsvFile& file, std::uint64_t instance) {
        m_file = &file;
        m_instance = instance;
        file.number(instance);
    }
    void null() override { m_file->null(); }
    void integer(std::int64_t value) override { m_file->number(value); }
    void real(double value) override { m_file->number(value); }
    void text(std::string_view utf8) override { m_file->text(utf8); }
    void json(std::string_view text) override { m_file->text(text); }
    void kept(std::string_view attribute, std::string_view text) override {
        m_texts.push_back({m_instance, std::string(attribute), std::string(text)});
    }

private:
    std::vector<KeptText>& m_texts;
    CsvFile* m_file = nullptr;
    std::uint64_t m_instance = 0;
};

bool isReplaceable(const fs::path& folder) {
    if (!fs::is_directory(folder))
        return false;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder))
        if (!entry.is_regular_file() || entry.path().extension() != ".csv")
            return false;
    return true;
}

/// A folder that is made beside its target and takes its name in the end.
class SafeFolder {
public:
    explicit SafeFolder(const fs::path& target) : m_target(target.has_filename() ? target : target.parent_path()) {
        if (fs::exists(m_target) && !isReplaceable(m_target))
            throw FileError("cannot write " + m_target.string() +
                            ": expected a name that is free or a folder of .csv files");
        std::random_device random;
        m_name = m_target;
        m_name += ".part" + std::to_string(random());
        if (!fs::create_directories(m_name))
            throw FileError("cannot make the folder " + m_name.string());
    }
    ~SafeFolder() {
        std::error_code ignored;
        if (!m_name.empty())
            fs::remove_all(m_name, ignored);
    }
    SafeFolder(const SafeFolder&) = delete;
    SafeFolder& operator=(const SafeFolder&) = delete;

    fs::path file(std::string_view name) const { return m_name / (std::string(name) + ".csv"); }
    void commit() {
        fs::path old;
        if (fs::exists(m_target)) {
            old = m_name;
            old += ".old";
            fs::rename(m_target, old);
        }
        fs::rename(m_name, m_target);
        m_name.clear();
        std::error_code ignored;
        if (!old.empty())
            fs::remove_all(old, ignored);
    }

private:
    fs::path m_target;
    fs::path m_name;
};

class CsvExport {
public:
    CsvExport(ModelState& state, const SafeFolder& folder, const TableOptions& options)
        : m_state(state), m_folder(folder), m_roster(state.model()), m_groups(state, m_roster), m_cells(m_texts),
          m_steps(options, m_roster.size()) {}

    TableResult run() {
        for (const auto& [name, members] : m_groups.byName)
            writeTable(name, members);
        writeForeign();
        writeTexts();
        return m_result;
    }

private:
    void writeTable(std::string_view name, const std::vector<std::uint32_t>& members) {
        CsvFile file(m_folder.file(name));
        const std::vector<TableColumn> columns = columnsOf(*m_state.classOf(m_roster.instance(members.front())));
        file.text("instance_id");
        for (const TableColumn& column : columns)
            file.text(column.name);
        file.endRow();
        RowReader reader(m_state, m_cells, true);
        for (const std::uint32_t i : members) {
            m_steps.next();
            m_cells.start(file, m_roster.handle(i).number());
            reader.read(m_roster.instance(i), columns);
            file.endRow();
        }
        end(file, members.size());
    }

    void writeForeign() {
        if (m_groups.foreign.empty())
            return;
        CsvFile file(m_folder.file("foreign_instances"));
        for (const char* column : {"instance_id", "keyword", "parameters"})
            file.text(column);
        file.endRow();
        for (const std::uint32_t i : m_groups.foreign) {
            const auto& instance = static_cast<const VnIfcForeignInstance&>(m_roster.instance(i));
            file.number(m_roster.handle(i).number());
            file.text(instance.keyword().view());
            file.text(instance.parameters().view());
            file.endRow();
        }
        end(file, m_groups.foreign.size());
    }

    void writeTexts() {
        if (m_texts.empty())
            return;
        CsvFile file(m_folder.file("kept_text"));
        for (const char* column : {"instance_id", "attribute", "text"})
            file.text(column);
        file.endRow();
        for (const KeptText& each : m_texts) {
            file.number(each.instance);
            file.text(each.attribute);
            file.text(each.text);
            file.endRow();
        }
        end(file, m_texts.size());
    }

    void end(CsvFile& file, std::size_t rows) {
        file.close();
        ++m_result.tables;
        m_result.rows += rows;
    }

    ModelState& m_state;
    const SafeFolder& m_folder;
    Roster m_roster;
    Groups m_groups;
    std::vector<KeptText> m_texts;
    CsvCells m_cells;
    Steps m_steps;
    TableResult m_result;
};

} // namespace

TableResult exportCsv(const Model& model, const fs::path& folder, const TableOptions& options) {
    try {
        SafeFolder target(folder);
        const TableResult result = CsvExport(*model.wrap({}).state(), target, options).run();
        target.commit();
        return result;
    } catch (const fs::filesystem_error& error) {
        throw FileError("cannot write " + folder.string() + ": " + error.code().message());
    }
}

} // namespace vnifc
