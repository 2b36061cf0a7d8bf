#include "SKStoreServer.h"

#include "platform/Platform.h"

#include <QDebug>
#include <QJsonArray>
#include <QUrlQuery>

namespace {

GameService& storeService() {
    return Platform::shared().gameService();
}

} // namespace

SKError GameServiceStoreServer::errorFrom(const GKError& error) {
    if (error.code == QLatin1String("network")) {
        return SKError{0, QStringLiteral("تعذر الاتصال بالمتجر، حاول مرة أخرى")};
    }
    if (error.code == QLatin1String("unauthorized")) {
        return SKError{0, QStringLiteral("سجل دخولك إلى خدمة اللعبة لتتمكن من الشراء")};
    }
    if (error.code == QLatin1String("too_many_payments")) {
        return SKError{0, QStringLiteral("لديك عمليات شراء لم تكتمل بعد، حاول بعد قليل")};
    }
    if (error.code == QLatin1String("product_not_found")) {
        return SKError{0, QStringLiteral("هذه الحزمة غير متوفرة في المتجر")};
    }
    return SKError{0, QStringLiteral("تعذر إتمام العملية في المتجر (%1)").arg(error.code)};
}

std::optional<QList<SKPaymentTransaction>> GameServiceStoreServer::transactionList(const QJsonObject& body) {
    const QJsonValue list = body.value(QLatin1String("transactions"));
    if (!list.isArray()) {
        return std::nullopt;
    }
    QList<SKPaymentTransaction> out;
    for (const QJsonValue& v : list.toArray()) {
        const auto t = SKPaymentTransaction::fromJson(v.toObject());
        if (!t) {
            qWarning().noquote()
                << "The store handed over a transaction that cannot be read; it is left alone.";
            continue;
        }
        out.append(*t);
    }
    return out;
}

bool GameServiceStoreServer::canMakePayments() const {
    return Platform::isInstalled() && !storeService().token().isEmpty();
}

void GameServiceStoreServer::products(
    const QStringList& identifiers, const QString& locale,
    std::function<void(const SKProductsResponse&, const std::optional<SKError>&)> done) {
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("ids"), identifiers.join(','));
    query.addQueryItem(QStringLiteral("locale"), locale);
    storeService().get(
        QStringLiteral("/v1/store/products"), query,
        [done](const QJsonObject& body, const std::optional<GKError>& error) {
            if (error) {
                done({}, errorFrom(*error));
                return;
            }
            const QJsonValue list = body.value(QLatin1String("products"));
            if (!list.isArray()) {
                done({}, SKError{0, QStringLiteral("The store's product list cannot be read")});
                return;
            }
            SKProductsResponse response;
            for (const QJsonValue& v : list.toArray()) {
                if (const auto p = SKProduct::fromJson(v.toObject())) {
                    response.products.append(std::make_shared<const SKProduct>(*p));
                } else {
                    qWarning().noquote() << "The store listed a product that cannot be read.";
                }
            }
            for (const QJsonValue& v : body.value(QLatin1String("invalidProductIdentifiers")).toArray()) {
                response.invalidProductIdentifiers.append(v.toString());
            }
            done(response, std::nullopt);
        });
}

void GameServiceStoreServer::postTransaction(const QString& path, TransactionDone done) {
    storeService().post(
        path, QJsonObject{}, [done](const QJsonObject& body, const std::optional<GKError>& error) {
            if (error) {
                done(std::nullopt, errorFrom(*error));
                return;
            }
            const auto t =
                SKPaymentTransaction::fromJson(body.value(QLatin1String("transaction")).toObject());
            if (!t) {
                done(std::nullopt, SKError{0, QStringLiteral("The store's answer cannot be read")});
                return;
            }
            done(t, std::nullopt);
        });
}

void GameServiceStoreServer::createPayment(const SKPayment& payment, TransactionDone done) {
    const QJsonObject body{{QStringLiteral("productIdentifier"), payment.productIdentifier},
                           {QStringLiteral("quantity"), payment.quantity}};
    storeService().post(
        QStringLiteral("/v1/store/payments"), body,
        [done](const QJsonObject& reply, const std::optional<GKError>& error) {
            if (error) {
                done(std::nullopt, errorFrom(*error));
                return;
            }
            const auto t =
                SKPaymentTransaction::fromJson(reply.value(QLatin1String("transaction")).toObject());
            if (!t) {
                done(std::nullopt, SKError{0, QStringLiteral("The store's answer cannot be read")});
                return;
            }
            done(t, std::nullopt);
        });
}

void GameServiceStoreServer::approvePayment(const QString& transactionId, TransactionDone done) {
    postTransaction(QStringLiteral("/v1/store/payments/%1/approve").arg(transactionId), std::move(done));
}

void GameServiceStoreServer::cancelPayment(const QString& transactionId, TransactionDone done) {
    postTransaction(QStringLiteral("/v1/store/payments/%1/cancel").arg(transactionId), std::move(done));
}

void GameServiceStoreServer::finishTransaction(const QString& transactionId, TransactionDone done) {
    postTransaction(QStringLiteral("/v1/store/transactions/%1/finish").arg(transactionId), std::move(done));
}

namespace {

// The answer of a route that lists transactions.
GameService::Completion listAnswer(SKStoreServer::ListDone done) {
    return [done = std::move(done)](const QJsonObject& body, const std::optional<GKError>& error) {
        if (error) {
            done({}, GameServiceStoreServer::errorFrom(*error));
            return;
        }
        const auto list = GameServiceStoreServer::transactionList(body);
        if (!list) {
            done({}, SKError{0, QStringLiteral("The store's answer cannot be read")});
            return;
        }
        done(*list, std::nullopt);
    };
}

} // namespace

void GameServiceStoreServer::unfinishedTransactions(ListDone done) {
    storeService().get(QStringLiteral("/v1/store/transactions"), {}, listAnswer(std::move(done)));
}

void GameServiceStoreServer::restoreTransactions(ListDone done) {
    storeService().post(QStringLiteral("/v1/store/restore"), QJsonObject{}, listAnswer(std::move(done)));
}
