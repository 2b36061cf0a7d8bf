// The payment sandbox: the catalogue priced for the player's locale, payments that the sandbox's sheet
// approves or cancels, the unfinished transactions the game hands over and finishes, restoring, and the
// player's sandbox switch. No money moves anywhere.
#include "net/api_support.h"

namespace tarvolin::net {

using namespace detail;
namespace shop = logic::shop;

namespace {

json::object transactionJson(const shop::Transaction& t) {
    json::value error = nullptr;
    if (t.error) {
        error = json::object{{"code", t.error->code}, {"message", t.error->message}};
    }
    return json::object{{"transactionIdentifier", t.id},
                        {"productIdentifier", t.productId},
                        {"quantity", t.quantity},
                        {"state", shop::stateName(t.state)},
                        {"originalTransactionIdentifier",
                         t.originalId.empty() ? json::value(nullptr) : json::value(t.originalId)},
                        {"error", std::move(error)},
                        {"finished", t.finished},
                        {"createdAt", t.createdAt},
                        {"updatedAt", t.updatedAt}};
}

Response transactionResponse(const shop::Transaction& t, unsigned status = 200) {
    return jsonResponse(status, json::object{{"transaction", transactionJson(t)}});
}

Response transactionsResponse(const std::vector<shop::Transaction>& list) {
    json::array out;
    for (const shop::Transaction& t : list) {
        out.push_back(transactionJson(t));
    }
    return jsonResponse(200, json::object{{"transactions", std::move(out)}});
}

Response refusalResponse(shop::Refusal r) {
    switch (r) {
    case shop::Refusal::NotFound:
        break;
    case shop::Refusal::NotPurchasing:
        return errorResponse(409, "transaction_not_purchasing",
                             "only a payment still on the payment sheet can be approved or cancelled");
    case shop::Refusal::NotSettled:
        return errorResponse(409, "transaction_not_settled",
                             "a payment still on the payment sheet cannot be finished");
    }
    return errorResponse(404, "transaction_not_found", "no transaction of yours has this identifier");
}

// The product identifiers of "ids": comma-separated, in their order, each once; empty items are skipped.
std::vector<std::string> productIds(const std::string& text) {
    std::vector<std::string> ids;
    std::size_t given = 0;
    std::size_t start = 0;
    while (start <= text.size()) {
        std::size_t comma = text.find(',', start);
        std::string id = text.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        start = comma == std::string::npos ? text.size() + 1 : comma + 1;
        if (id.empty()) {
            continue;
        }
        const bool printable = std::none_of(id.begin(), id.end(), [](char ch) {
            return static_cast<unsigned char>(ch) < 0x20 || ch == 0x7f;
        });
        if (id.size() > shop::kMaxProductIdBytes || !printable || !logic::utf8Length(id)) {
            throw ApiError(400, "invalid_parameter",
                           "a product identifier is printable UTF-8 of at most " +
                               std::to_string(shop::kMaxProductIdBytes) + " bytes");
        }
        if (++given > shop::kMaxProductIds) {
            throw ApiError(400, "invalid_parameter",
                           "at most " + std::to_string(shop::kMaxProductIds) + " identifiers in \"ids\"");
        }
        if (std::find(ids.begin(), ids.end(), id) == ids.end()) {
            ids.push_back(std::move(id));
        }
    }
    return ids;
}

// The sandbox's confirmation sheet and the finish take an empty body or a JSON object.
void emptyBody(const Request& req) {
    if (!req.body.empty()) {
        parseBody(req.body);
    }
}

std::string newTransactionId() {
    return "P" + randomHex(8);
}

} // namespace

void Api::addStoreRoutes() {
    add("GET", "/v1/store/products", &Api::storeProducts, false);
    add("POST", "/v1/store/payments", &Api::openPayment, true);
    add("POST", "/v1/store/payments/{id}/approve", &Api::approvePayment, true);
    add("POST", "/v1/store/payments/{id}/cancel", &Api::cancelPayment, true);
    add("GET", "/v1/store/transactions", &Api::listTransactions, true);
    add("POST", "/v1/store/transactions/{id}/finish", &Api::finishTransaction, true);
    add("POST", "/v1/store/restore", &Api::restorePurchases, true);
    add("GET", "/v1/store/sandbox", &Api::sandbox, true);
    add("PUT", "/v1/store/sandbox", &Api::setSandbox, true);
}

void Api::failLeftPayments(const std::string& playerId) {
    const std::int64_t now = clock_();
    const std::size_t n =
        store_.failLeftPayments(playerId, now - shop::kSheetTimeoutMs, now,
                                shop::Failure{shop::kErrorCancelled, shop::kSheetLeftMessage});
    commerce_.payments(CommerceMetrics::Payment::Failed, n);
}

Response Api::storeProducts(Ctx& c) {
    auto it = c.req.query.find("ids");
    if (it == c.req.query.end()) {
        throw ApiError(400, "invalid_parameter",
                       "\"ids\" is required: product identifiers separated by commas");
    }
    const std::vector<std::string> ids = productIds(it->second);
    auto locale = c.req.query.find("locale");
    const std::string localeName = locale == c.req.query.end() ? std::string() : locale->second;

    std::map<std::string, shop::Product> found;
    for (shop::Product& p : store_.products(ids)) {
        found.emplace(p.id, std::move(p));
    }
    json::array products;
    json::array invalid;
    for (const std::string& id : ids) {
        auto p = found.find(id);
        std::optional<shop::PriceTag> price;
        if (p != found.end()) {
            price = shop::priceFor(p->second, localeName);
        }
        if (!price) {
            invalid.emplace_back(id);
            continue;
        }
        products.push_back(json::object{{"productIdentifier", id},
                                        {"price", price->price},
                                        {"currencyCode", price->currency},
                                        {"priceLocale", price->locale},
                                        {"localizedTitle", p->second.title}});
    }
    return jsonResponse(200, json::object{{"products", std::move(products)},
                                          {"invalidProductIdentifiers", std::move(invalid)}});
}

Response Api::openPayment(Ctx& c) {
    const json::object body = parseBody(c.req.body);
    const std::string product = requiredString(body, "productIdentifier");
    const std::int64_t quantity = optionalInt64(body, "quantity").value_or(1);
    if (quantity < shop::kMinQuantity || quantity > shop::kMaxQuantity) {
        throw ApiError(400, "invalid_field",
                       "\"quantity\" must be from " + std::to_string(shop::kMinQuantity) + " to " +
                           std::to_string(shop::kMaxQuantity));
    }
    if (product.size() > shop::kMaxProductIdBytes) {
        throw ApiError(404, "product_not_found", "no product of the catalogue has this identifier");
    }
    failLeftPayments(c.playerId);
    shop::Transaction t;
    t.id = newTransactionId();
    t.playerId = c.playerId;
    t.productId = product;
    t.quantity = quantity;
    t.createdAt = t.updatedAt = clock_();
    store::PaymentResult opened = store_.openPayment(t, shop::kMaxPurchasing);
    if (const auto* refusal = std::get_if<store::PaymentRefusal>(&opened)) {
        if (*refusal == store::PaymentRefusal::ProductNotFound) {
            throw ApiError(404, "product_not_found", "no product of the catalogue has this identifier");
        }
        throw ApiError(429, "too_many_payments",
                       "at most " + std::to_string(shop::kMaxPurchasing) + " payments on the sheet at once");
    }
    commerce_.payments(CommerceMetrics::Payment::Created);
    return transactionResponse(std::get<shop::Transaction>(opened), 201);
}

Response Api::approvePayment(Ctx& c) {
    return answerPayment(c, shop::Answer::Approve);
}

Response Api::cancelPayment(Ctx& c) {
    return answerPayment(c, shop::Answer::Cancel);
}

Response Api::answerPayment(Ctx& c, shop::Answer answer) {
    emptyBody(c.req);
    failLeftPayments(c.playerId);
    const std::int64_t now = clock_();
    store::TransactionResult r =
        store_.changeTransaction(c.args[0], [&](const shop::Transaction& t, shop::Outcome sandbox) {
            return shop::answer(t, c.playerId, answer, sandbox, now);
        });
    if (const auto* refusal = std::get_if<shop::Refusal>(&r)) {
        return refusalResponse(*refusal);
    }
    const shop::Transaction& t = std::get<store::TransactionChange>(r).transaction;
    commerce_.payments(t.state == shop::State::Purchased ? CommerceMetrics::Payment::Purchased
                                                         : CommerceMetrics::Payment::Failed);
    return transactionResponse(t);
}

Response Api::listTransactions(Ctx& c) {
    failLeftPayments(c.playerId);
    return transactionsResponse(store_.unfinishedTransactions(c.playerId));
}

Response Api::finishTransaction(Ctx& c) {
    emptyBody(c.req);
    failLeftPayments(c.playerId);
    const std::int64_t now = clock_();
    store::TransactionResult r =
        store_.changeTransaction(c.args[0], [&](const shop::Transaction& t, shop::Outcome) {
            return shop::finish(t, c.playerId, now);
        });
    if (const auto* refusal = std::get_if<shop::Refusal>(&r)) {
        return refusalResponse(*refusal);
    }
    const store::TransactionChange& change = std::get<store::TransactionChange>(r);
    if (change.changed) {
        commerce_.payments(CommerceMetrics::Payment::Finished);
    }
    return transactionResponse(change.transaction);
}

Response Api::restorePurchases(Ctx& c) {
    emptyBody(c.req);
    store::Restoration r = store_.restorePurchases(c.playerId, clock_(), newTransactionId);
    commerce_.payments(CommerceMetrics::Payment::Restored, r.added);
    return transactionsResponse(r.transactions);
}

Response Api::sandbox(Ctx& c) {
    return jsonResponse(200, json::object{{"outcome", shop::outcomeName(store_.sandboxOutcome(c.playerId))}});
}

Response Api::setSandbox(Ctx& c) {
    const json::object body = parseBody(c.req.body);
    const std::optional<shop::Outcome> outcome = shop::outcomeFrom(requiredString(body, "outcome"));
    if (!outcome) {
        throw ApiError(400, "invalid_field", "\"outcome\" must be \"purchase\", \"fail\" or \"cancel\"");
    }
    store_.setSandboxOutcome(c.playerId, *outcome);
    return jsonResponse(200, json::object{{"outcome", shop::outcomeName(*outcome)}});
}

} // namespace tarvolin::net
