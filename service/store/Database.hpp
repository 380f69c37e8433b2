#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>

namespace KeloService {

/// A database that cannot be used; the text says why.
class DatabaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct SqliteDeleter {
    void operator()(sqlite3* connection) const { sqlite3_close(connection); }
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
/// Prepared statements by their text.
using Statements = std::multimap<std::string, std::unique_ptr<sqlite3_stmt, SqliteDeleter>>;

class Database;

/// One run of a statement. Other threads wait for the database as long as it lives.
class Query {
public:
    /// Binds the values to ?1, ?2, ... in order; an absent one is null.
    template <typename... Values>
    Query(Database& database, const std::string& sql, const Values&... values)
        : Query(database, sql) {
        int position = 0;
        (bind(++position, values), ...);
    }
    Query(Database& database, const std::string& sql);
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    /// Moves to the next row; false after the last.
    bool next();

    int columns() const { return sqlite3_column_count(statement_); }
    std::string name(int column) const { return sqlite3_column_name(statement_, column); }
    /// SQLITE_INTEGER, SQLITE_FLOAT, SQLITE_TEXT or SQLITE_NULL.
    int type(int column) const { return sqlite3_column_type(statement_, column); }
    bool isNull(int column) const { return type(column) == SQLITE_NULL; }
    std::int64_t integer(int column) const { return sqlite3_column_int64(statement_, column); }
    double real(int column) const { return sqlite3_column_double(statement_, column); }
    std::string text(int column) const;

private:
    template <typename Value>
    void bind(int position, const Value& value) {
        if constexpr (std::is_integral_v<Value>) {
            sqlite3_bind_int64(statement_, position, static_cast<std::int64_t>(value));
        } else if constexpr (std::is_floating_point_v<Value>) {
            sqlite3_bind_double(statement_, position, value);
        } else {
            const std::string_view text(value);
            sqlite3_bind_text64(statement_, position, text.data(), text.size(), SQLITE_TRANSIENT,
                                SQLITE_UTF8);
        }
    }
    template <typename Value>
    void bind(int position, const std::optional<Value>& value) {
        if (value) {
            bind(position, *value);
        }
    }

    Database& database_;
    std::unique_lock<std::recursive_mutex> lock_;
    Statements::node_type kept_;
    sqlite3_stmt* statement_;
};

/// All that the service remembers: one SQLite database. Safe to use from any thread.
class Database {
public:
    /// Opens or makes the file (":memory:" for none) and sees to it that it holds this service's
    /// tables, and the seed where they were empty. Throws DatabaseError.
    explicit Database(const std::string& file);

    template <typename... Values>
    Query query(const std::string& sql, const Values&... values) {
        return Query(*this, sql, values...);
    }
    /// Runs a statement that has no rows; how many rows of tables it changed.
    template <typename... Values>
    int run(const std::string& sql, const Values&... values) {
        Query query(*this, sql, values...);
        while (query.next()) {
        }
        return sqlite3_changes(connection_.get());
    }
    /// The first column of the first row, if there is one.
    template <typename... Values>
    std::optional<std::int64_t> number(const std::string& sql, const Values&... values) {
        Query query(*this, sql, values...);
        return query.next() ? std::optional(query.integer(0)) : std::nullopt;
    }
    template <typename... Values>
    std::optional<std::string> text(const std::string& sql, const Values&... values) {
        Query query(*this, sql, values...);
        return query.next() ? std::optional(query.text(0)) : std::nullopt;
    }
    /// Runs several statements that have neither values nor rows.
    void execute(const std::string& sql);
    /// Everything that `work` writes is kept, or nothing when it throws. No other thread writes
    /// meanwhile.
    template <typename Work>
    void transact(Work work) {
        const std::lock_guard lock(mutex_);
        execute("BEGIN IMMEDIATE");
        try {
            work();
        } catch (...) {
            execute("ROLLBACK");
            throw;
        }
        execute("COMMIT");
    }

private:
    friend class Query;
    [[noreturn]] void fail() const;
    Statements::node_type take(const std::string& sql);

    std::recursive_mutex mutex_;
    std::unique_ptr<sqlite3, SqliteDeleter> connection_;
    /// Those that no query uses now.
    Statements idle_;
};

/// Makes the tables in an empty database; throws DatabaseError when the database is another's or
/// of another version.
void prepareSchema(Database& database);

} // namespace KeloService
