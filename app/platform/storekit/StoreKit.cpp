#include "StoreKit.h"

#include "SKPaymentQueue.h"
#include <QJsonValue>
#include <QRegularExpression>
#include <QTimeZone>

namespace {

// A decimal string such as "7.49" or "2.900"; the number of digits after the point is kept.
bool readPrice(const QString& text, double* value, int* digits) {
    static const QRegularExpression shape(QStringLiteral("^[0-9]{1,9}(\\.[0-9]{1,4})?$"));
    if (!shape.match(text).hasMatch()) {
        return false;
    }
    *value = text.toDouble();
    const qsizetype dot = text.indexOf('.');
    *digits = dot < 0 ? 0 : static_cast<int>(text.size() - dot - 1);
    return true;
}

} // namespace

std::optional<SKProduct> SKProduct::fromJson(const QJsonObject& json) {
    SKProduct p;
    p.productIdentifier = json.value(QLatin1String("productIdentifier")).toString();
    p.localizedTitle = json.value(QLatin1String("localizedTitle")).toString();
    p.currencyCode = json.value(QLatin1String("currencyCode")).toString();
    const QString locale = json.value(QLatin1String("priceLocale")).toString();
    if (p.productIdentifier.isEmpty() || p.currencyCode.size() != 3 || locale.isEmpty() ||
        !readPrice(json.value(QLatin1String("price")).toString(), &p.price, &p.currencyDigits)) {
        return std::nullopt;
    }
    p.priceLocale = QLocale(locale);
    return p;
}

std::shared_ptr<SKProductsRequest>
SKProductsRequest::initWithProductIdentifiers(const QSet<QString>& identifiers) {
    auto request = std::shared_ptr<SKProductsRequest>(new SKProductsRequest());
    request->m_identifiers = QStringList(identifiers.begin(), identifiers.end());
    request->m_identifiers.sort();
    return request;
}

void SKProductsRequest::start() {
    auto self = std::static_pointer_cast<SKProductsRequest>(shared_from_this());
    SKPaymentQueue::server().products(
        m_identifiers, QLocale::system().name(),
        [self](const SKProductsResponse& response, const std::optional<SKError>& error) {
            if (self->m_cancelled || !self->m_delegate) {
                return;
            }
            if (error) {
                self->m_delegate->requestDidFailWithError(self.get(), *error);
            } else {
                self->m_delegate->productsRequestDidReceiveResponse(self.get(), response);
            }
        });
}

QString SKProduct::formattedPrice() const {
    return priceLocale.toCurrencyString(price, priceLocale.currencySymbol(QLocale::CurrencySymbol),
                                        currencyDigits);
}

SKPayment SKPayment::paymentWithProduct(const SKProduct& product) {
    SKPayment payment;
    payment.productIdentifier = product.productIdentifier;
    payment.localizedTitle = product.localizedTitle;
    payment.priceText = product.formattedPrice();
    return payment;
}

QString SKPaymentTransaction::stateName(SKPaymentTransactionState state) {
    switch (state) {
    case SKPaymentTransactionState::Purchasing:
        return QStringLiteral("purchasing");
    case SKPaymentTransactionState::Purchased:
        return QStringLiteral("purchased");
    case SKPaymentTransactionState::Failed:
        return QStringLiteral("failed");
    case SKPaymentTransactionState::Restored:
        return QStringLiteral("restored");
    case SKPaymentTransactionState::Deferred:
        return QStringLiteral("deferred");
    }
    return {};
}

std::optional<SKPaymentTransaction> SKPaymentTransaction::fromJson(const QJsonObject& json) {
    SKPaymentTransaction t;
    t.transactionIdentifier = json.value(QLatin1String("transactionIdentifier")).toString();
    t.payment.productIdentifier = json.value(QLatin1String("productIdentifier")).toString();
    t.payment.quantity = json.value(QLatin1String("quantity")).toInt(1);
    const QString state = json.value(QLatin1String("state")).toString();
    bool known = false;
    for (auto s : {SKPaymentTransactionState::Purchasing, SKPaymentTransactionState::Purchased,
                   SKPaymentTransactionState::Failed, SKPaymentTransactionState::Restored}) {
        if (state == stateName(s)) {
            t.transactionState = s;
            known = true;
        }
    }
    if (!known || t.transactionIdentifier.isEmpty() || t.payment.productIdentifier.isEmpty() ||
        t.payment.quantity < 1) {
        return std::nullopt;
    }
    const QJsonValue created = json.value(QLatin1String("createdAt"));
    // Milliseconds as a whole number; anything else leaves the date unknown.
    if (created.isDouble() && created.toDouble() == static_cast<double>(created.toInteger())) {
        t.transactionDate = QDateTime::fromMSecsSinceEpoch(created.toInteger(), Qt::UTC);
    }
    if (t.transactionState == SKPaymentTransactionState::Failed) {
        const QJsonObject error = json.value(QLatin1String("error")).toObject();
        t.error = SKError{error.value(QLatin1String("code")).toInt(0),
                          error.value(QLatin1String("message")).toString()};
    }
    const QString original = json.value(QLatin1String("originalTransactionIdentifier")).toString();
    if (t.transactionState == SKPaymentTransactionState::Restored) {
        if (original.isEmpty()) {
            return std::nullopt;
        }
        auto first = std::make_shared<SKPaymentTransaction>();
        first->transactionIdentifier = original;
        first->transactionState = SKPaymentTransactionState::Purchased;
        first->payment = t.payment;
        t.originalTransaction = first;
    }
    return t;
}
