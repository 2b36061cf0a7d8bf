#pragma once

#include "SKStoreServer.h"
#include "StoreKit.h"

#include <QObject>
#include <QSet>
#include <memory>
#include <vector>

class SKPaymentQueue;

class SKPaymentTransactionObserver {
public:
    virtual ~SKPaymentTransactionObserver() = default;
    virtual void paymentQueueUpdatedTransactions(SKPaymentQueue* queue,
                                                 const QList<SKPaymentTransactionPtr>& transactions) = 0;
    virtual void paymentQueueRestoreCompletedTransactionsFinished(SKPaymentQueue*) {}
    virtual void paymentQueueRestoreCompletedTransactionsFailedWithError(SKPaymentQueue*, const SKError&) {}
};

// The payment queue. A payment goes: purchasing (the store takes it and the sandbox's sheet asks the
// player), then purchased or failed. Each change reaches every observer in order, on the main thread, and
// while the observers run the settings are written as one, so a payment and its delivery are kept together
// or not at all. A transaction stays in the queue until finishTransaction; the store hands every unfinished
// one over again once a player is logged in, and one that the game finished but could not tell the store of
// is told again instead of being handed over.
class SKPaymentQueue {
public:
    // The transactions finished here whose finish the store has not confirmed yet.
    static inline const QString kFinishedKey = QStringLiteral("SKFinishedTransactions");
    // How long to wait before asking the store again after a payment's answer was lost.
    static constexpr double kResyncSeconds = 5.0;

    static SKPaymentQueue& defaultQueue();
    // The store the queue talks to; the game service's sandbox store when none is set (tests set a fake).
    static void setServer(std::unique_ptr<SKStoreServer> server);
    static SKStoreServer& server();
    static bool canMakePayments();

    SKPaymentQueue();
    ~SKPaymentQueue();
    void loadData();

    void addTransactionObserver(SKPaymentTransactionObserver* observer);
    void removeTransactionObserver(SKPaymentTransactionObserver* observer);
    void addPayment(const SKPayment& payment);
    void finishTransaction(const SKPaymentTransactionPtr& transaction);
    void restoreCompletedTransactions();
    QList<SKPaymentTransactionPtr> transactions() const { return m_transactions; }

    // Asks the store for the player's unfinished transactions and hands over those not yet handed in this
    // state. Runs when the first observer is added and at every login.
    void syncUnfinishedTransactions();

private:
    void update(const QList<SKPaymentTransactionPtr>& changed);
    void settle(const SKPaymentTransactionPtr& transaction, const std::optional<SKPaymentTransaction>& answer,
                const std::optional<SKError>& error);
    void fail(const SKPaymentTransactionPtr& transaction, const SKError& error);
    void askSheet(const SKPaymentTransactionPtr& transaction);
    void tellStoreFinished(const QString& transactionId);
    void scheduleResync();
    SKPaymentTransactionPtr adopt(const SKPaymentTransaction& fromStore);
    QStringList finishedJournal() const;
    void setFinishedJournal(const QStringList& ids);

    std::vector<SKPaymentTransactionObserver*> m_observers;
    QList<SKPaymentTransactionPtr> m_transactions;
    QSet<QString> m_handed; // "id:state" pairs handed over in this run
    bool m_syncing = false;
    bool m_resyncPending = false;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
