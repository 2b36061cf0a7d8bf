#pragma once

#include "StoreKit.h"

#include <QJsonArray>
#include <functional>
#include <optional>

struct GKError;

// What the payment queue asks of the store: the routes of docs/API.md, "Store". Completions come on the main
// thread; an answer that is not what the contract says becomes an error.
class SKStoreServer {
public:
    using TransactionDone =
        std::function<void(const std::optional<SKPaymentTransaction>&, const std::optional<SKError>&)>;
    using ListDone = std::function<void(const QList<SKPaymentTransaction>&, const std::optional<SKError>&)>;

    virtual ~SKStoreServer() = default;
    virtual bool canMakePayments() const = 0; // a player is logged in to the service
    virtual void
    products(const QStringList& identifiers, const QString& locale,
             std::function<void(const SKProductsResponse&, const std::optional<SKError>&)> done) = 0;
    virtual void createPayment(const SKPayment& payment, TransactionDone done) = 0;
    virtual void approvePayment(const QString& transactionId, TransactionDone done) = 0;
    virtual void cancelPayment(const QString& transactionId, TransactionDone done) = 0;
    virtual void unfinishedTransactions(ListDone done) = 0;
    virtual void finishTransaction(const QString& transactionId, TransactionDone done) = 0;
    virtual void restoreTransactions(ListDone done) = 0;
};

// The store over the platform's GameService.
class GameServiceStoreServer : public SKStoreServer {
public:
    bool canMakePayments() const override;
    void
    products(const QStringList& identifiers, const QString& locale,
             std::function<void(const SKProductsResponse&, const std::optional<SKError>&)> done) override;
    void createPayment(const SKPayment& payment, TransactionDone done) override;
    void approvePayment(const QString& transactionId, TransactionDone done) override;
    void cancelPayment(const QString& transactionId, TransactionDone done) override;
    void unfinishedTransactions(ListDone done) override;
    void finishTransaction(const QString& transactionId, TransactionDone done) override;
    void restoreTransactions(ListDone done) override;

    // The player's words for a refusal of the service or a failed connection.
    static SKError errorFrom(const GKError& error);
    // Reads {"transactions": [T…]}; nullopt when it is not that.
    static std::optional<QList<SKPaymentTransaction>> transactionList(const QJsonObject& body);

private:
    void postTransaction(const QString& path, TransactionDone done);
};
