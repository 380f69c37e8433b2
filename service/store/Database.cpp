#include "service/store/Database.hpp"

#include "service/seed/Seed.hpp"

#include <utility>

namespace KeloService {

Query::Query(Database& database, const std::string& sql)
    : database_(database)
    , lock_(database.mutex_)
    , kept_(database.take(sql))
    , statement_(kept_.mapped().get()) {}

Query::~Query() {
    sqlite3_reset(statement_);
    sqlite3_clear_bindings(statement_);
    database_.idle_.insert(std::move(kept_));
}

bool Query::next() {
    const int result = sqlite3_step(statement_);
    if (result != SQLITE_ROW && result != SQLITE_DONE) {
        database_.fail();
    }
    return result == SQLITE_ROW;
}

std::string Query::text(int column) const {
    const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(statement_, column));
    const auto count = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    return bytes == nullptr ? std::string() : std::string(bytes, count);
}

Database::Database(const std::string& file) {
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
    sqlite3* connection = nullptr;
    const int opened = sqlite3_open_v2(file.c_str(), &connection, flags, nullptr);
    connection_.reset(connection);
    try {
        if (opened != SQLITE_OK) {
            fail();
        }
        sqlite3_busy_timeout(connection, 2000);
        if (sqlite3_db_readonly(connection, "main") == 1) {
            throw DatabaseError("it is read-only");
        }
        prepareSchema(*this);
        seedIfEmpty(*this);
    } catch (const DatabaseError& error) {
        throw DatabaseError("cannot use the database " + file + ": " + error.what());
    }
}

Statements::node_type Database::take(const std::string& sql) {
    auto found = idle_.find(sql);
    if (found == idle_.end()) {
        sqlite3_stmt* statement = nullptr;
        if (sqlite3_prepare_v3(connection_.get(), sql.c_str(), static_cast<int>(sql.size()) + 1,
                               SQLITE_PREPARE_PERSISTENT, &statement, nullptr) != SQLITE_OK) {
            fail();
        }
        found = idle_.emplace(sql, statement);
    }
    return idle_.extract(found);
}

void Database::execute(const std::string& sql) {
    const std::lock_guard lock(mutex_);
    if (sqlite3_exec(connection_.get(), sql.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail();
    }
}

void Database::fail() const {
    throw DatabaseError(sqlite3_errmsg(connection_.get()));
}

} // namespace KeloService
