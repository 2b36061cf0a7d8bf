#include "store/sql.h"

#include <charconv>

namespace tarvolin::store {

const std::string& Row::text(std::size_t i) const {
    const auto& c = cols.at(i);
    if (!c) {
        throw StoreError("unexpected NULL in column " + std::to_string(i));
    }
    return *c;
}

std::int64_t Row::integer(std::size_t i) const {
    const std::string& s = text(i);
    std::int64_t v = 0;
    auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || p != s.data() + s.size()) {
        throw StoreError("column " + std::to_string(i) + " is not an integer: " + s);
    }
    return v;
}

std::optional<std::int64_t> Row::optionalInteger(std::size_t i) const {
    if (isNull(i)) {
        return std::nullopt;
    }
    return integer(i);
}

double Row::real(std::size_t i) const {
    const std::string& s = text(i);
    double v = 0;
    auto [p, ec] = std::from_chars(s.data(), s.data() + s.size(), v);
    if (ec != std::errc() || p != s.data() + s.size()) {
        throw StoreError("column " + std::to_string(i) + " is not a number: " + s);
    }
    return v;
}

std::unique_ptr<Connection> openDatabase(const std::string& location, const std::string& schema) {
    if (location.starts_with("postgresql://") || location.starts_with("postgres://")) {
        return openPostgres(location, schema);
    }
    if (location.starts_with("sqlite:")) {
        return openSqlite(location.substr(7));
    }
    return openSqlite(location);
}

} // namespace tarvolin::store
