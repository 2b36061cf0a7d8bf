// Structured logging: one JSON object per line on standard error.
#pragma once

#include <boost/json/object.hpp>

#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace tarvolin::net {

enum class LogLevel { Debug = 0, Info = 1, Warn = 2, Error = 3, Off = 4 };

std::optional<LogLevel> parseLogLevel(std::string_view s);

class Logger {
public:
    explicit Logger(LogLevel level = LogLevel::Info) : level_(level) {}
    bool enabled(LogLevel l) const { return l >= level_ && level_ != LogLevel::Off; }
    // Writes the fields with "time", "level" and "msg" in front.
    void log(LogLevel l, std::string_view msg, boost::json::object fields = {});

private:
    LogLevel level_;
    std::mutex mutex_;
};

// An HTTP date such as "Sun, 06 Nov 1994 08:49:37 GMT".
std::string httpDate(std::int64_t unixSeconds);

} // namespace tarvolin::net
