// PostgreSQL through libpqxx: a small pool of connections, each reopened when it breaks, and LISTEN/NOTIFY
// between the instances that share the database.
#include "store/sql.h"

#include <pqxx/pqxx>

#include <atomic>
#include <charconv>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace tarvolin::store {
namespace {

// Channels are per schema, so that instances on different schemas of one database keep apart.
std::string channelName(std::string_view channel, const std::string& schema) {
    return schema.empty() ? std::string(channel) : std::string(channel) + "_" + schema;
}

std::unique_ptr<pqxx::connection> connect(const std::string& url, const std::string& schema) {
    auto conn = std::make_unique<pqxx::connection>(url);
    {
        pqxx::nontransaction n(*conn);
        // Floating-point values come out with the digits that read back the same double, whatever the
        // server's default.
        n.exec("SET extra_float_digits TO 3");
        if (!schema.empty()) {
            n.exec("CREATE SCHEMA IF NOT EXISTS " + conn->quote_name(schema));
            n.exec("SET search_path TO " + conn->quote_name(schema));
        }
    }
    return conn;
}

class PgTx : public Tx {
public:
    PgTx(pqxx::transaction_base& w, const std::string& schema) : work_(w), schema_(schema) {}

    Rows exec(std::string_view sql, const Params& params) override {
        std::vector<std::string> storage;
        storage.reserve(params.size());
        for (const Value& v : params) {
            if (std::holds_alternative<std::monostate>(v)) {
                storage.emplace_back();
            } else if (const auto* n = std::get_if<std::int64_t>(&v)) {
                storage.push_back(std::to_string(*n));
            } else if (const auto* d = std::get_if<double>(&v)) {
                char buf[32];
                auto [end, ec] = std::to_chars(buf, buf + sizeof buf, *d);
                storage.emplace_back(buf, end);
            } else {
                storage.push_back(std::get<std::string>(v));
            }
        }
        std::vector<const char*> values;
        values.reserve(params.size());
        for (std::size_t i = 0; i < params.size(); ++i) {
            values.push_back(std::holds_alternative<std::monostate>(params[i]) ? nullptr
                                                                               : storage[i].c_str());
        }
        pqxx::result r = work_.exec_params(std::string(sql), pqxx::prepare::make_dynamic_params(values));
        Rows rows;
        rows.reserve(r.size());
        for (const auto& prow : r) {
            Row row;
            row.cols.reserve(prow.size());
            for (const auto& f : prow) {
                if (f.is_null()) {
                    row.cols.emplace_back(std::nullopt);
                } else {
                    row.cols.emplace_back(std::string(f.c_str(), f.size()));
                }
            }
            rows.push_back(std::move(row));
        }
        return rows;
    }

    void script(std::string_view sql) override { work_.exec(std::string(sql)); }

    void notify(std::string_view channel, const std::string& payload) override {
        work_.exec_params("SELECT pg_notify($1, $2)", channelName(channel, schema_), payload);
    }

private:
    pqxx::transaction_base& work_;
    const std::string& schema_;
};

// Listens on a connection of its own; reconnects after a failure.
class PgWatch : public Watch {
public:
    PgWatch(std::string url, std::string schema, std::vector<std::string> channels, NotificationHandler fn)
        : url_(std::move(url)), schema_(std::move(schema)), channels_(std::move(channels)),
          fn_(std::move(fn)) {
        // The first connection is made here, so that a watch that exists is listening.
        open();
        thread_ = std::thread([this] { loop(); });
    }

    ~PgWatch() override {
        stop_ = true;
        thread_.join();
    }

private:
    class Receiver : public pqxx::notification_receiver {
    public:
        Receiver(pqxx::connection_base& c, const std::string& listened, std::string channel,
                 const NotificationHandler& fn)
            : pqxx::notification_receiver(c, listened), channel_(std::move(channel)), fn_(fn) {}
        void operator()(const std::string& payload, int) override { fn_(channel_, payload); }

    private:
        std::string channel_;
        const NotificationHandler& fn_;
    };

    void open() {
        receivers_.clear();
        conn_ = connect(url_, {});
        for (const auto& c : channels_) {
            receivers_.push_back(std::make_unique<Receiver>(*conn_, channelName(c, schema_), c, fn_));
        }
    }

    void loop() {
        while (!stop_) {
            try {
                if (!conn_) {
                    open();
                }
                conn_->await_notification(0, 50'000);
            } catch (const std::exception&) {
                receivers_.clear();
                conn_.reset();
                for (int i = 0; i < 10 && !stop_; ++i) {
                    std::this_thread::sleep_for(std::chrono::milliseconds(100));
                }
            }
        }
        receivers_.clear();
    }

    std::string url_;
    std::string schema_;
    std::vector<std::string> channels_;
    NotificationHandler fn_;
    std::unique_ptr<pqxx::connection> conn_;
    std::vector<std::unique_ptr<Receiver>> receivers_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

class PgConnection : public Connection {
public:
    PgConnection(std::string url, std::string schema, std::size_t poolSize)
        : url_(std::move(url)), schema_(std::move(schema)), poolSize_(std::max<std::size_t>(1, poolSize)) {
        idle_.push_back(open()); // fail at once when the database cannot be reached
        open_ = 1;
    }

    void transact(const std::function<void(Tx&)>& fn) override { run<pqxx::work>(fn); }

    // Reads run without BEGIN and COMMIT: one round trip per statement.
    void read(const std::function<void(Tx&)>& fn) override { run<pqxx::nontransaction>(fn); }

    std::string dialect() const override { return "postgresql"; }

    std::unique_ptr<Watch> watch(const std::vector<std::string>& channels, NotificationHandler fn) override {
        try {
            return std::make_unique<PgWatch>(url_, schema_, channels, std::move(fn));
        } catch (const std::exception& e) {
            throw StoreError(std::string("cannot listen on PostgreSQL: ") + e.what());
        }
    }

private:
    template <typename Transaction> void run(const std::function<void(Tx&)>& fn) {
        for (int attempt = 0;; ++attempt) {
            std::unique_ptr<pqxx::connection> conn = acquire();
            try {
                {
                    Transaction w(*conn);
                    PgTx tx(w, schema_);
                    fn(tx);
                    w.commit();
                }
                release(std::move(conn));
                return;
            } catch (const pqxx::broken_connection& e) {
                // The transaction never committed: run it again once on a new connection.
                drop();
                if (attempt > 0) {
                    throw StoreError(std::string("PostgreSQL connection lost: ") + e.what());
                }
            } catch (const pqxx::unique_violation& e) {
                release(std::move(conn));
                throw ConflictError(std::string("PostgreSQL: ") + e.what());
            } catch (const pqxx::failure& e) {
                release(std::move(conn));
                throw StoreError(std::string("PostgreSQL: ") + e.what());
            } catch (...) {
                release(std::move(conn));
                throw;
            }
        }
    }

    std::unique_ptr<pqxx::connection> open() {
        try {
            return connect(url_, schema_);
        } catch (const std::exception& e) {
            throw StoreError(std::string("cannot connect to PostgreSQL: ") + e.what());
        }
    }

    std::unique_ptr<pqxx::connection> acquire() {
        {
            std::unique_lock lock(mutex_);
            freed_.wait(lock, [&] { return !idle_.empty() || open_ < poolSize_; });
            if (!idle_.empty()) {
                auto c = std::move(idle_.back());
                idle_.pop_back();
                return c;
            }
            ++open_;
        }
        try {
            return open();
        } catch (...) {
            drop();
            throw;
        }
    }

    void release(std::unique_ptr<pqxx::connection> c) {
        std::lock_guard lock(mutex_);
        idle_.push_back(std::move(c));
        freed_.notify_one();
    }

    // A connection has gone for good.
    void drop() {
        std::lock_guard lock(mutex_);
        --open_;
        freed_.notify_one();
    }

    std::string url_;
    std::string schema_;
    std::size_t poolSize_;
    std::mutex mutex_;
    std::condition_variable freed_;
    std::vector<std::unique_ptr<pqxx::connection>> idle_;
    std::size_t open_ = 0;
};

} // namespace

std::unique_ptr<Connection> openPostgres(const std::string& url, const std::string& schema,
                                         std::size_t poolSize) {
    return std::make_unique<PgConnection>(url, schema, poolSize);
}

} // namespace tarvolin::store
