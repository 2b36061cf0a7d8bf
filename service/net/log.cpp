#include "net/log.h"

#include <boost/json/serialize.hpp>

#include <chrono>
#include <cstdio>
#include <ctime>

namespace tarvolin::net {

std::optional<LogLevel> parseLogLevel(std::string_view s) {
    if (s == "debug") {
        return LogLevel::Debug;
    }
    if (s == "info") {
        return LogLevel::Info;
    }
    if (s == "warn") {
        return LogLevel::Warn;
    }
    if (s == "error") {
        return LogLevel::Error;
    }
    if (s == "off") {
        return LogLevel::Off;
    }
    return std::nullopt;
}

void Logger::log(LogLevel l, std::string_view msg, boost::json::object fields) {
    if (!enabled(l)) {
        return;
    }
    static constexpr const char* kNames[] = {"debug", "info", "warn", "error", "off"};
    using namespace std::chrono;
    auto now = system_clock::now();
    auto secs = duration_cast<seconds>(now.time_since_epoch()).count();
    auto millis = duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000;
    std::time_t t = static_cast<std::time_t>(secs);
    std::tm tm{};
    gmtime_r(&t, &tm);
    char stamp[64];
    std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", tm.tm_year + 1900,
                  tm.tm_mon + 1, tm.tm_mday, tm.tm_hour, tm.tm_min, tm.tm_sec, static_cast<int>(millis));
    boost::json::object line;
    line["time"] = stamp;
    line["level"] = kNames[static_cast<int>(l)];
    line["msg"] = msg;
    for (auto& kv : fields) {
        line[kv.key()] = std::move(kv.value());
    }
    std::string text = boost::json::serialize(line);
    text += '\n';
    std::lock_guard lock(mutex_);
    std::fwrite(text.data(), 1, text.size(), stderr);
    std::fflush(stderr);
}

std::string httpDate(std::int64_t unixSeconds) {
    static constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    static constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                              "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::time_t t = static_cast<std::time_t>(unixSeconds);
    std::tm tm{};
    gmtime_r(&t, &tm);
    char buf[64];
    std::snprintf(buf, sizeof buf, "%s, %02d %s %04d %02d:%02d:%02d GMT", kDays[tm.tm_wday], tm.tm_mday,
                  kMonths[tm.tm_mon], tm.tm_year + 1900, tm.tm_hour, tm.tm_min, tm.tm_sec);
    return buf;
}

} // namespace tarvolin::net
