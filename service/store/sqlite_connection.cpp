// SQLite: a file in WAL mode with synchronous FULL. One connection writes; a second one reads, so that
// readers never wait for a writer's commit to reach the disk.
#include "store/sql.h"

#include <sqlite3.h>

#include <charconv>
#include <cstdlib>
#include <map>
#include <mutex>
#include <vector>

namespace tarvolin::store {
namespace {

std::string shortest(double v) {
    char buf[32];
    auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v);
    return std::string(buf, end);
}

// One sqlite3 handle with its cache of prepared statements, used by one transaction at a time.
class Handle : public Tx {
public:
    Handle(const std::string& path, bool readOnly) {
        int rc = sqlite3_open_v2(path.c_str(), &db_,
                                 SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX, nullptr);
        if (rc != SQLITE_OK) {
            std::string msg = db_ ? sqlite3_errmsg(db_) : "out of memory";
            sqlite3_close(db_);
            db_ = nullptr;
            throw StoreError("cannot open SQLite database " + path + ": " + msg);
        }
        sqlite3_busy_timeout(db_, 5000);
        if (readOnly) {
            run("PRAGMA query_only=ON");
        } else {
            run("PRAGMA journal_mode=WAL");
            run("PRAGMA synchronous=FULL");
        }
        run("PRAGMA foreign_keys=ON");
    }

    ~Handle() override {
        for (auto& [sql, s] : cache_) {
            sqlite3_finalize(s.stmt);
        }
        sqlite3_close(db_);
    }

    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void transaction(const char* begin, const std::function<void(Tx&)>& fn) {
        std::lock_guard lock(mutex_);
        run(begin);
        try {
            fn(*this);
            run("COMMIT");
        } catch (...) {
            sqlite3_exec(db_, "ROLLBACK", nullptr, nullptr, nullptr);
            throw;
        }
    }

    Rows exec(std::string_view sql, const Params& params) override {
        Statement& prepared = prepare(sql);
        sqlite3_stmt* stmt = prepared.stmt;
        sqlite3_reset(stmt);
        sqlite3_clear_bindings(stmt);
        for (std::size_t i = 0; i < params.size(); ++i) {
            int idx = i < prepared.slots.size() ? prepared.slots[i] : 0;
            if (idx == 0) {
                continue;
            }
            const Value& v = params[i];
            int rc = SQLITE_OK;
            if (std::holds_alternative<std::monostate>(v)) {
                rc = sqlite3_bind_null(stmt, idx);
            } else if (const auto* n = std::get_if<std::int64_t>(&v)) {
                rc = sqlite3_bind_int64(stmt, idx, *n);
            } else if (const auto* d = std::get_if<double>(&v)) {
                rc = sqlite3_bind_double(stmt, idx, *d);
            } else {
                const auto& s = std::get<std::string>(v);
                rc = sqlite3_bind_text(stmt, idx, s.data(), static_cast<int>(s.size()), SQLITE_TRANSIENT);
            }
            check(rc, sql);
        }
        Rows rows;
        for (;;) {
            int rc = sqlite3_step(stmt);
            if (rc == SQLITE_DONE) {
                break;
            }
            if (rc != SQLITE_ROW) {
                sqlite3_reset(stmt);
                check(rc, sql);
            }
            int n = sqlite3_column_count(stmt);
            Row row;
            row.cols.reserve(static_cast<std::size_t>(n));
            for (int c = 0; c < n; ++c) {
                int type = sqlite3_column_type(stmt, c);
                if (type == SQLITE_NULL) {
                    row.cols.emplace_back(std::nullopt);
                } else if (type == SQLITE_FLOAT) {
                    // SQLite's own text of a REAL keeps 15 digits; this keeps every bit.
                    row.cols.emplace_back(shortest(sqlite3_column_double(stmt, c)));
                } else {
                    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(stmt, c));
                    row.cols.emplace_back(
                        std::string(text, static_cast<std::size_t>(sqlite3_column_bytes(stmt, c))));
                }
            }
            rows.push_back(std::move(row));
        }
        sqlite3_reset(stmt);
        return rows;
    }

    void script(std::string_view sql) override { run(std::string(sql)); }

private:
    // A prepared statement and, for $1, $2, …, the slot that SQLite gave each (in order of first use).
    struct Statement {
        sqlite3_stmt* stmt = nullptr;
        std::vector<int> slots;
    };

    void run(const std::string& sql) {
        char* err = nullptr;
        int rc = sqlite3_exec(db_, sql.c_str(), nullptr, nullptr, &err);
        if (rc != SQLITE_OK) {
            std::string msg = err ? err : sqlite3_errstr(rc);
            sqlite3_free(err);
            throw StoreError("SQLite: " + msg);
        }
    }

    Statement& prepare(std::string_view sql) {
        std::string key(sql);
        auto it = cache_.find(key);
        if (it != cache_.end()) {
            return it->second;
        }
        Statement s;
        int rc = sqlite3_prepare_v2(db_, key.c_str(), static_cast<int>(key.size()), &s.stmt, nullptr);
        check(rc, sql);
        int count = sqlite3_bind_parameter_count(s.stmt);
        for (int slot = 1; slot <= count; ++slot) {
            const char* name = sqlite3_bind_parameter_name(s.stmt, slot);
            if (name && name[0] == '$') {
                auto n = static_cast<std::size_t>(std::strtoul(name + 1, nullptr, 10));
                if (n >= 1) {
                    s.slots.resize(std::max(s.slots.size(), n), 0);
                    s.slots[n - 1] = slot;
                }
            }
        }
        return cache_.emplace(std::move(key), std::move(s)).first->second;
    }

    void check(int rc, std::string_view sql) {
        if (rc == SQLITE_OK || rc == SQLITE_DONE || rc == SQLITE_ROW) {
            return;
        }
        std::string msg =
            std::string("SQLite: ") + sqlite3_errmsg(db_) + " in: " + std::string(sql.substr(0, 80));
        int ext = sqlite3_extended_errcode(db_);
        if (ext == SQLITE_CONSTRAINT_UNIQUE || ext == SQLITE_CONSTRAINT_PRIMARYKEY) {
            throw ConflictError(msg);
        }
        throw StoreError(msg);
    }

    sqlite3* db_ = nullptr;
    std::mutex mutex_;
    std::map<std::string, Statement, std::less<>> cache_;
};

class SqliteConnection : public Connection {
public:
    // The writer comes first: it puts the file in WAL mode, which lets the reader work beside it.
    explicit SqliteConnection(const std::string& path) : writer_(path, false), reader_(path, true) {}

    void transact(const std::function<void(Tx&)>& fn) override { writer_.transaction("BEGIN IMMEDIATE", fn); }
    void read(const std::function<void(Tx&)>& fn) override { reader_.transaction("BEGIN", fn); }
    std::string dialect() const override { return "sqlite"; }

private:
    Handle writer_;
    Handle reader_;
};

} // namespace

std::unique_ptr<Connection> openSqlite(const std::string& path) {
    return std::make_unique<SqliteConnection>(path);
}

} // namespace tarvolin::store
