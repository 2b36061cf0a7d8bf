#pragma once

#include <QDateTime>
#include <QJsonObject>
#include <QList>
#include <QLocale>
#include <QMetaType>
#include <QSet>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

// The purchase service a phone platform gives, over tarvolin-service's sandbox store (docs/API.md, "Store").
// Products come from the service's catalogue, payments are confirmed on the sandbox's sheet, and every
// transaction the game has not finished is handed over again at the next start.

struct SKError {
    // 2: the player cancelled the payment. 0: anything else.
    static constexpr int kPaymentCancelled = 2;
    int code = 0;
    QString message;
    QString localizedDescription() const { return message; }
};

class SKProduct {
public:
    QString productIdentifier;
    QString localizedTitle;
    double price = 0;       // in the currency's units
    QString currencyCode;   // "USD", "SAR", …
    QLocale priceLocale;    // the locale the price is shown in
    int currencyDigits = 2; // digits after the decimal point

    // Reads one entry of the service's product list; nullopt when it is not one.
    static std::optional<SKProduct> fromJson(const QJsonObject& json);
    // The price as the locale writes an amount of its currency ("$1.99").
    QString formattedPrice() const;
};
using SKProductPtr = std::shared_ptr<const SKProduct>;

class SKProductsResponse {
public:
    QList<SKProductPtr> products;
    QStringList invalidProductIdentifiers;
};

class SKRequest;
class SKProductsRequest;

class SKProductsRequestDelegate {
public:
    virtual ~SKProductsRequestDelegate() = default;
    virtual void productsRequestDidReceiveResponse(SKProductsRequest* request,
                                                   const SKProductsResponse& response) = 0;
    virtual void requestDidFailWithError(SKRequest* request, const SKError& error) = 0;
};

class SKRequest : public std::enable_shared_from_this<SKRequest> {
public:
    virtual ~SKRequest() = default;
    virtual void start() = 0;
    // The delegate is told nothing more.
    void cancel() { m_cancelled = true; }

protected:
    bool m_cancelled = false;
};

// Asks the store for products; the answer goes to the delegate on the main thread. The request keeps itself
// alive until it is answered.
class SKProductsRequest : public SKRequest {
public:
    static std::shared_ptr<SKProductsRequest> initWithProductIdentifiers(const QSet<QString>& identifiers);
    void setDelegate(SKProductsRequestDelegate* delegate) { m_delegate = delegate; }
    void start() override;
    QStringList productIdentifiers() const { return m_identifiers; }

private:
    QStringList m_identifiers;
    SKProductsRequestDelegate* m_delegate = nullptr;
};

class SKPayment {
public:
    static SKPayment paymentWithProduct(const SKProduct& product);
    QString productIdentifier;
    int quantity = 1;
    // What the sheet shows; empty for a payment the store handed over.
    QString localizedTitle;
    QString priceText;
};

enum class SKPaymentTransactionState {
    Purchasing = 0,
    Purchased = 1,
    Failed = 2,
    Restored = 3,
    Deferred = 4
};

class SKPaymentTransaction {
public:
    QString transactionIdentifier; // empty until the store has taken the payment
    SKPaymentTransactionState transactionState = SKPaymentTransactionState::Purchasing;
    SKPayment payment;
    std::shared_ptr<const SKPaymentTransaction> originalTransaction; // restored ones
    std::optional<SKError> error;                                    // failed ones
    QDateTime transactionDate;

    // Reads the service's transaction object; nullopt when it is not one.
    static std::optional<SKPaymentTransaction> fromJson(const QJsonObject& json);
    static QString stateName(SKPaymentTransactionState state);
};
using SKPaymentTransactionPtr = std::shared_ptr<SKPaymentTransaction>;

Q_DECLARE_METATYPE(SKPaymentTransactionPtr)
Q_DECLARE_METATYPE(SKProductPtr)
