#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace KeloService {

/// A database that cannot be used; the text says why.
class DatabaseError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

class Database;

/// One run of a prepared statement. Hold the database's lock for as long as it lives.
class Query {
public:
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    /// Binds the values to ?1, ?2, ... in order.
    template <typename... Values>
    Query& bind(const Values&... values) {
        int position = 0;
        (bindAt(++position, values), ...);
        return *this;
    }
    /// Moves to the next row; false after the last.
    bool next();
    /// Runs a statement that has no rows.
    void run();
    /// Makes the statement ready for other values.
    void reset();

    std::int64_t integer(int column) const;
    double real(int column) const;
    std::string text(int column) const;
    bool boolean(int column) const { return integer(column) != 0; }
    bool isNull(int column) const;
    int columns() const;

private:
    friend class Database;
    Query(Database& database, std::string sql, sqlite3_stmt* statement);

    void bindAt(int position, std::int64_t value);
    void bindAt(int position, int value) { bindAt(position, static_cast<std::int64_t>(value)); }
    void bindAt(int position, bool value) { bindAt(position, static_cast<std::int64_t>(value)); }
    void bindAt(int position, double value);
    void bindAt(int position, std::string_view value);
    void bindAt(int position, const std::string& value) {
        bindAt(position, std::string_view(value));
    }
    void bindAt(int /*position*/, std::nullptr_t /*value*/) {}
    void bindAt(int position, const char* value) { bindAt(position, std::string_view(value)); }
    template <typename Value>
    void bindAt(int position, const std::optional<Value>& value) {
        if (value) {
            bindAt(position, *value);
        }
    }

    Database& database_;
    std::string sql_;
    sqlite3_stmt* statement_;
};

/// One SQLite database with its prepared statements. Many threads may share it, each under `lock`.
class Database {
public:
    /// Opens or makes the file (":memory:" for none) and sees to it that it holds this service's
    /// tables. Throws DatabaseError.
    explicit Database(const std::string& file);
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// May be taken again by the thread that holds it.
    [[nodiscard]] std::unique_lock<std::recursive_mutex> lock() { return std::unique_lock(mutex_); }
    Query query(const std::string& sql);
    /// Runs statements that have neither values nor rows.
    void execute(const std::string& sql);
    /// Everything that `work` writes is kept, or nothing when it throws. Under the lock.
    template <typename Work>
    void transact(Work work) {
        execute("BEGIN IMMEDIATE");
        try {
            work();
        } catch (...) {
            execute("ROLLBACK");
            throw;
        }
        execute("COMMIT");
    }
    std::int64_t lastRowId() const;

private:
    friend class Query;
    [[noreturn]] void fail() const;
    void giveBack(const std::string& sql, sqlite3_stmt* statement);

    sqlite3* connection_ = nullptr;
    std::recursive_mutex mutex_;
    std::map<std::string, std::vector<sqlite3_stmt*>> idle_;
};

/// Makes the tables in an empty database; throws DatabaseError when the database is another's or
/// of another version.
void prepareSchema(Database& database);

} // namespace KeloService
