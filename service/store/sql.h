// The SQL connection under the store: parameters are written $1, $2, … in both dialects.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tarvolin::store {

// A failed database operation that is not the caller's fault.
class StoreError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A unique or primary key constraint was violated.
class ConflictError : public StoreError {
public:
    using StoreError::StoreError;
};

using Value = std::variant<std::monostate, std::int64_t, double, std::string>;
using Params = std::vector<Value>;

struct Row {
    std::vector<std::optional<std::string>> cols;

    bool isNull(std::size_t i) const { return !cols.at(i).has_value(); }
    const std::string& text(std::size_t i) const;
    std::int64_t integer(std::size_t i) const;
    std::optional<std::int64_t> optionalInteger(std::size_t i) const;
    // A floating-point column; both connections write it with the digits that read back the same double.
    double real(std::size_t i) const;
};
using Rows = std::vector<Row>;

// Statements of one transaction.
class Tx {
public:
    virtual ~Tx() = default;
    virtual Rows exec(std::string_view sql, const Params& params = {}) = 0;
    // Runs several statements without parameters (migrations).
    virtual void script(std::string_view sql) = 0;
    // Tells the other instances on the same database, once the transaction commits. Does nothing where
    // the database has only one user (SQLite).
    virtual void notify(std::string_view /*channel*/, const std::string& /*payload*/) {}
};

// A running watch on notifications; it ends when destroyed.
class Watch {
public:
    virtual ~Watch() = default;
};
using NotificationHandler = std::function<void(const std::string& channel, const std::string& payload)>;

class Connection {
public:
    virtual ~Connection() = default;
    // Runs fn inside one transaction: commits when fn returns, rolls back when it throws.
    virtual void transact(const std::function<void(Tx&)>& fn) = 0;
    // Runs fn, which only reads, in a transaction that need not wait for writers.
    virtual void read(const std::function<void(Tx&)>& fn) { transact(fn); }
    virtual std::string dialect() const = 0;
    // Calls fn from a thread of its own for each notification on the channels, from every instance on the
    // database, until the watch is destroyed. nullptr where there are no other instances (SQLite).
    virtual std::unique_ptr<Watch> watch(const std::vector<std::string>& /*channels*/,
                                         NotificationHandler /*fn*/) {
        return nullptr;
    }
};

std::unique_ptr<Connection> openSqlite(const std::string& path);
// schema: when not empty, the connections work in that schema, creating it if needed (tests use it).
// poolSize: how many transactions may run at once.
std::unique_ptr<Connection> openPostgres(const std::string& url, const std::string& schema = {},
                                         std::size_t poolSize = 4);

// Opens "postgresql://…"/"postgres://…" with PostgreSQL, "sqlite:PATH" or a plain path with SQLite.
std::unique_ptr<Connection> openDatabase(const std::string& location, const std::string& schema = {});

} // namespace tarvolin::store
