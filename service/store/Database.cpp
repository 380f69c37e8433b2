#include "service/store/Database.hpp"

#include <sqlite3.h>

namespace KeloService {

Query::Query(Database& database, std::string sql, sqlite3_stmt* statement)
    : database_(database)
    , sql_(std::move(sql))
    , statement_(statement) {}

Query::~Query() {
    database_.giveBack(sql_, statement_);
}

bool Query::next() {
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        database_.fail();
    }
    return result == SQLITE_ROW;
}

void Query::run() {
    while (next()) {
    }
}

void Query::reset() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
}

std::int64_t Query::integer(int column) const {
    return sqlite3_column_int64(statement_, column);
}

double Query::real(int column) const {
    return sqlite3_column_double(statement_, column);
}

std::string Query::text(int column) const {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    return bytes == nullptr
               ? std::string()
               : std::string(bytes,
                             static_cast<std::size_t>(sqlite3_column_bytes(statement_, column)));
}

bool Query::isNull(int column) const {
    return sqlite3_column_type(statement_, column) == SQLITE_NULL;
}

int Query::columns() const {
    return sqlite3_column_count(statement_);
}

void Query::bindAt(int position, std::int64_t value) {
    sqlite3_bind_int64(statement_, position, value);
}

void Query::bindAt(int position, double value) {
    sqlite3_bind_double(statement_, position, value);
}

void Query::bindAt(int position, std::string_view value) {
    sqlite3_bind_text64(statement_, position, value.data(), value.size(), SQLITE_TRANSIENT,
                        SQLITE_UTF8);
}

Database::Database(const std::string& file) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    try {
        if (sqlite3_open_v2(file.c_str(), &connection_, flags, nullptr) != SQLITE_OK) {
            fail();
        }
        sqlite3_busy_timeout(connection_, 2000);
        if (sqlite3_db_readonly(connection_, "main") == 1) {
            throw DatabaseError("it is read-only");
        }
        prepareSchema(*this);
    } catch (const DatabaseError& error) {
        idle_.clear();
        // Also finalises what was prepared so far.
        for (sqlite3_stmt* statement = sqlite3_next_stmt(connection_, nullptr);
             statement != nullptr; statement = sqlite3_next_stmt(connection_, nullptr)) {
            sqlite3_finalize(statement);
        }
        sqlite3_close(connection_);
        throw DatabaseError("cannot use the database " + file + ": " + error.what());
    }
}

Database::~Database() {
    for (const auto& [sql, statements] : idle_) {
        for (sqlite3_stmt* statement : statements) {
            sqlite3_finalize(statement);
        }
    }
    sqlite3_close(connection_);
}

Query Database::query(const std::string& sql) {
    auto& statements = idle_[sql];
    sqlite3_stmt* statement = nullptr;
    if (!statements.empty()) {
        statement = statements.back();
        statements.pop_back();
    } else if (sqlite3_prepare_v3(connection_, sql.c_str(), static_cast<int>(sql.size()) + 1,
                                  SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK) {
        fail();
    }
    return {*this, sql, statement};
}

void Database::giveBack(const std::string& sql, sqlite3_stmt* statement) {
    sqlite3_reset(statement);
    sqlite3_clear_bindings(statement);
    idle_[sql].push_back(statement);
}

void Database::execute(const std::string& sql) {
    if (sqlite3_exec(connection_, sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

std::int64_t Database::lastRowId() const {
    return sqlite3_last_insert_rowid(connection_);
}

void Database::fail() const {
    throw DatabaseError(sqlite3_errmsg(connection_));
}

} // namespace KeloService
