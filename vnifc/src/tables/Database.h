#pragma once
#include <vnifc/Error.h>

#include <sqlite3.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace vnifc::detail {

/// An SQLite database that is being written, for one thread. Throws FileError whenever SQLite fails.
class Database {
public:
    explicit Database(const std::filesystem::path& file);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    void run(const std::string& sql);
    void close();
    [[noreturn]] void fail() const;
    sqlite3* get() const noexcept { return m_database; }

private:
    std::string m_file;
    sqlite3* m_database = nullptr;
};

/// A statement that is prepared once and run for each row. Cells are given one after the other.
class Insertion {
public:
    Insertion(Database& database, const std::string& sql);
    ~Insertion();
    Insertion(Insertion&& other) noexcept
        : m_database(other.m_database), m_statement(std::exchange(other.m_statement, nullptr)) {}
    Insertion(const Insertion&) = delete;
    Insertion& operator=(const Insertion&) = delete;
    Insertion& operator=(Insertion&&) = delete;

    void null() { check(sqlite3_bind_null(m_statement, ++m_cell)); }
    void integer(std::int64_t value) { check(sqlite3_bind_int64(m_statement, ++m_cell, value)); }
    void real(double value) { check(sqlite3_bind_double(m_statement, ++m_cell, value)); }
    /// The text must be there until the row has ended.
    void text(std::string_view utf8) {
        check(sqlite3_bind_text64(m_statement, ++m_cell, utf8.data(), utf8.size(), SQLITE_STATIC, SQLITE_UTF8));
    }
    void endRow() {
        if (sqlite3_step(m_statement) != SQLITE_DONE)
            m_database->fail();
        sqlite3_reset(m_statement);
        m_cell = 0;
    }

private:
    void check(int status) const {
        if (status != SQLITE_OK)
            m_database->fail();
    }

    Database* m_database;
    sqlite3_stmt* m_statement = nullptr;
    int m_cell = 0;
};

} // namespace vnifc::detail
