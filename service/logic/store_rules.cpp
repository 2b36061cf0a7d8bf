#include "logic/store_rules.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>
#include <vector>

namespace tarvolin::logic::shop {
namespace {

constexpr std::size_t kMaxLocaleBytes = 64;

bool letters(std::string_view s) {
    return std::all_of(s.begin(), s.end(), [](unsigned char c) { return std::isalpha(c) != 0; });
}

std::string cased(std::string_view s, bool upper) {
    std::string out(s);
    for (char& c : out) {
        c = static_cast<char>(upper ? std::toupper(static_cast<unsigned char>(c))
                                    : std::tolower(static_cast<unsigned char>(c)));
    }
    return out;
}

// "ar", "SA" from "ar_SA", "ar-SA", "ar_SA.UTF-8" or "zh-Hans-CN"; nothing without a language and a country.
std::optional<std::pair<std::string, std::string>> localeParts(std::string_view locale) {
    if (locale.size() > kMaxLocaleBytes) {
        return std::nullopt;
    }
    locale = locale.substr(0, locale.find_first_of(".@"));
    std::vector<std::string_view> parts;
    while (!locale.empty()) {
        std::size_t sep = locale.find_first_of("_-");
        parts.push_back(locale.substr(0, sep));
        locale = sep == std::string_view::npos ? std::string_view{} : locale.substr(sep + 1);
    }
    if (parts.size() < 2 || parts[0].size() < 2 || parts[0].size() > 3 || !letters(parts[0])) {
        return std::nullopt;
    }
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (parts[i].size() == 2 && letters(parts[i])) {
            return std::make_pair(cased(parts[0], false), cased(parts[i], true));
        }
    }
    return std::nullopt;
}

constexpr std::array<std::pair<std::string_view, std::string_view>, 9> kCountryCurrencies{{
    {"SA", "SAR"},
    {"AE", "AED"},
    {"EG", "EGP"},
    {"KW", "KWD"},
    {"QA", "QAR"},
    {"JO", "JOD"},
    {"MA", "MAD"},
    {"GB", "GBP"},
    {"US", "USD"},
}};

// The members of the euro area.
constexpr std::array<std::string_view, 20> kEuroArea{"AT", "BE", "CY", "DE", "EE", "ES", "FI",
                                                     "FR", "GR", "HR", "IE", "IT", "LT", "LU",
                                                     "LV", "MT", "NL", "PT", "SI", "SK"};

constexpr std::array<std::string_view, 4> kStateNames{"purchasing", "purchased", "failed", "restored"};
constexpr std::array<std::string_view, 3> kOutcomeNames{"purchase", "fail", "cancel"};

} // namespace

std::optional<std::string> localeCountry(std::string_view locale) {
    auto parts = localeParts(locale);
    return parts ? std::optional<std::string>(parts->second) : std::nullopt;
}

std::optional<std::string> countryCurrency(std::string_view country) {
    for (const auto& [c, currency] : kCountryCurrencies) {
        if (c == country) {
            return std::string(currency);
        }
    }
    if (std::find(kEuroArea.begin(), kEuroArea.end(), country) != kEuroArea.end()) {
        return "EUR";
    }
    return std::nullopt;
}

int minorDigits(std::string_view currency) {
    return currency == "KWD" || currency == "JOD" ? 3 : 2;
}

std::string formatPrice(std::int64_t minorUnits, int digits) {
    std::string sign = minorUnits < 0 ? "-" : "";
    std::string units = std::to_string(minorUnits < 0 ? -minorUnits : minorUnits);
    if (digits <= 0) {
        return sign + units;
    }
    const auto d = static_cast<std::size_t>(digits);
    if (units.size() <= d) {
        units = std::string(d + 1 - units.size(), '0') + units;
    }
    const std::size_t whole = units.size() - d;
    return sign + units.substr(0, whole) + "." + units.substr(whole);
}

std::optional<PriceTag> priceFor(const Product& p, std::string_view locale) {
    if (auto parts = localeParts(locale)) {
        if (auto currency = countryCurrency(parts->second)) {
            if (auto it = p.prices.find(*currency); it != p.prices.end()) {
                return PriceTag{formatPrice(it->second, minorDigits(*currency)), *currency,
                                parts->first + "_" + parts->second};
            }
        }
    }
    if (auto it = p.prices.find("USD"); it != p.prices.end()) {
        return PriceTag{formatPrice(it->second, minorDigits("USD")), "USD", "en_US"};
    }
    return std::nullopt;
}

const char* stateName(State s) {
    return kStateNames.at(static_cast<std::size_t>(s)).data();
}

std::optional<State> stateFrom(std::string_view name) {
    for (std::size_t i = 0; i < kStateNames.size(); ++i) {
        if (kStateNames[i] == name) {
            return static_cast<State>(i);
        }
    }
    return std::nullopt;
}

const char* outcomeName(Outcome o) {
    return kOutcomeNames.at(static_cast<std::size_t>(o)).data();
}

std::optional<Outcome> outcomeFrom(std::string_view name) {
    for (std::size_t i = 0; i < kOutcomeNames.size(); ++i) {
        if (kOutcomeNames[i] == name) {
            return static_cast<Outcome>(i);
        }
    }
    return std::nullopt;
}

Result answer(const Transaction& t, const std::string& playerId, Answer a, Outcome sandbox,
              std::int64_t now) {
    if (t.playerId != playerId) {
        return Refusal::NotFound;
    }
    if (t.state != State::Purchasing) {
        return Refusal::NotPurchasing;
    }
    Transaction out = t;
    out.updatedAt = now;
    if (a == Answer::Cancel || sandbox == Outcome::Cancel) {
        out.state = State::Failed;
        out.error = Failure{kErrorCancelled, kCancelledMessage};
    } else if (sandbox == Outcome::Fail) {
        out.state = State::Failed;
        out.error = Failure{kErrorUnknown, kDeclinedMessage};
    } else {
        out.state = State::Purchased;
    }
    return out;
}

Result finish(const Transaction& t, const std::string& playerId, std::int64_t now) {
    if (t.playerId != playerId) {
        return Refusal::NotFound;
    }
    if (t.state == State::Purchasing) {
        return Refusal::NotSettled;
    }
    if (t.finished) {
        return t;
    }
    Transaction out = t;
    out.finished = true;
    out.updatedAt = now;
    return out;
}

Transaction restoration(const Transaction& purchase, std::string id, std::int64_t now) {
    Transaction r;
    r.id = std::move(id);
    r.playerId = purchase.playerId;
    r.productId = purchase.productId;
    r.quantity = purchase.quantity;
    r.state = State::Restored;
    r.originalId = purchase.id;
    r.createdAt = now;
    r.updatedAt = now;
    return r;
}

} // namespace tarvolin::logic::shop
