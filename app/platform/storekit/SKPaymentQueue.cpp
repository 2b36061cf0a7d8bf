#include "SKPaymentQueue.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "platform/gamekit/GKLocalPlayer.h"

#include <QDebug>
#include <algorithm>

namespace {

std::unique_ptr<SKStoreServer>& serverSlot() {
    static std::unique_ptr<SKStoreServer> slot;
    return slot;
}

// The most finished transactions remembered while the store has not confirmed them.
constexpr qsizetype kJournalLimit = 200;

QString handedKey(const SKPaymentTransaction& t) {
    return t.transactionIdentifier + QLatin1Char(':') + SKPaymentTransaction::stateName(t.transactionState);
}

} // namespace

SKPaymentQueue& SKPaymentQueue::defaultQueue() {
    return Shared<SKPaymentQueue>::instance();
}

void SKPaymentQueue::setServer(std::unique_ptr<SKStoreServer> server) {
    serverSlot() = std::move(server);
}

SKStoreServer& SKPaymentQueue::server() {
    if (!serverSlot()) {
        serverSlot() = std::make_unique<GameServiceStoreServer>();
    }
    return *serverSlot();
}

bool SKPaymentQueue::canMakePayments() {
    return server().canMakePayments();
}

SKPaymentQueue::SKPaymentQueue() = default;

SKPaymentQueue::~SKPaymentQueue() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void SKPaymentQueue::loadData() {
    Platform::shared().notificationCenter().addObserver(
        this, GKPlayerAuthenticationDidChangeNotificationName, [this](const Notification&) {
            if (GKLocalPlayer::localPlayer().isAuthenticated() && !m_observers.empty()) {
                syncUnfinishedTransactions();
            }
        });
}

void SKPaymentQueue::addTransactionObserver(SKPaymentTransactionObserver* observer) {
    if (std::find(m_observers.begin(), m_observers.end(), observer) != m_observers.end()) {
        return;
    }
    m_observers.push_back(observer);
    if (m_observers.size() == 1) {
        syncUnfinishedTransactions();
    }
}

void SKPaymentQueue::removeTransactionObserver(SKPaymentTransactionObserver* observer) {
    m_observers.erase(std::remove(m_observers.begin(), m_observers.end(), observer), m_observers.end());
}

QStringList SKPaymentQueue::finishedJournal() const {
    return Platform::shared().userDefaults().stringArrayForKey(kFinishedKey);
}

void SKPaymentQueue::setFinishedJournal(const QStringList& ids) {
    auto& defaults = Platform::shared().userDefaults();
    if (ids.isEmpty()) {
        defaults.removeObjectForKey(kFinishedKey);
    } else {
        defaults.setObjectForKey(ids.mid(std::max<qsizetype>(0, ids.size() - kJournalLimit)), kFinishedKey);
    }
}

void SKPaymentQueue::update(const QList<SKPaymentTransactionPtr>& changed) {
    for (const auto& t : changed) {
        if (!t->transactionIdentifier.isEmpty()) {
            m_handed.insert(handedKey(*t));
        }
    }
    // The delivery of a payment and its finish are written to the settings together.
    UserDefaults::Batch batch(Platform::shared().userDefaults());
    const auto observers = m_observers;
    for (SKPaymentTransactionObserver* o : observers) {
        if (std::find(m_observers.begin(), m_observers.end(), o) != m_observers.end()) {
            o->paymentQueueUpdatedTransactions(this, changed);
        }
    }
}

SKPaymentTransactionPtr SKPaymentQueue::adopt(const SKPaymentTransaction& fromStore) {
    for (const auto& t : m_transactions) {
        if (t->transactionIdentifier == fromStore.transactionIdentifier) {
            t->transactionState = fromStore.transactionState;
            t->error = fromStore.error;
            t->originalTransaction = fromStore.originalTransaction;
            return t;
        }
    }
    auto t = std::make_shared<SKPaymentTransaction>(fromStore);
    m_transactions.append(t);
    return t;
}

void SKPaymentQueue::syncUnfinishedTransactions() {
    if (m_syncing || !server().canMakePayments()) {
        return;
    }
    m_syncing = true;
    const QStringList journalWhenAsked = finishedJournal();
    server().unfinishedTransactions([this, alive = std::weak_ptr<int>(m_alive),
                                     journalWhenAsked](const QList<SKPaymentTransaction>& list,
                                                       const std::optional<SKError>& error) {
        if (alive.expired()) {
            return;
        }
        m_syncing = false;
        if (error) {
            qWarning().noquote() << "The store's unfinished transactions could not be read:"
                                 << error->localizedDescription();
            return;
        }
        QSet<QString> listed;
        QList<SKPaymentTransactionPtr> changed;
        for (const SKPaymentTransaction& t : list) {
            listed.insert(t.transactionIdentifier);
            if (t.transactionState == SKPaymentTransactionState::Purchasing) {
                continue; // its sheet belongs to the run that asked; a sheet left alone fails in the store
            }
            if (journalWhenAsked.contains(t.transactionIdentifier) ||
                finishedJournal().contains(t.transactionIdentifier)) {
                tellStoreFinished(t.transactionIdentifier); // finished here already: told, not handed over
                continue;
            }
            if (m_handed.contains(handedKey(t))) {
                continue;
            }
            changed.append(adopt(t));
        }
        // What was finished here before the question and is no longer listed, the store has finished.
        QStringList journal = finishedJournal();
        journal.erase(std::remove_if(journal.begin(), journal.end(),
                                     [&](const QString& id) {
                                         return journalWhenAsked.contains(id) && !listed.contains(id);
                                     }),
                      journal.end());
        setFinishedJournal(journal);
        if (!changed.isEmpty()) {
            update(changed);
        }
    });
}

void SKPaymentQueue::addPayment(const SKPayment& payment) {
    auto t = std::make_shared<SKPaymentTransaction>();
    t->payment = payment;
    t->transactionState = SKPaymentTransactionState::Purchasing;
    t->transactionDate = Platform::shared().scheduler().now();
    m_transactions.append(t);
    update({t});
    if (!server().canMakePayments()) {
        fail(t, SKError{0, QStringLiteral("سجل دخولك إلى خدمة اللعبة لتتمكن من الشراء")});
        return;
    }
    server().createPayment(
        payment, [this, alive = std::weak_ptr<int>(m_alive),
                  t](const std::optional<SKPaymentTransaction>& answer, const std::optional<SKError>& error) {
            if (alive.expired()) {
                return;
            }
            if (error || !answer) {
                fail(t, error.value_or(SKError{}));
                return;
            }
            t->transactionIdentifier = answer->transactionIdentifier;
            askSheet(t);
        });
}

void SKPaymentQueue::askSheet(const SKPaymentTransactionPtr& t) {
    const QString title =
        t->payment.localizedTitle.isEmpty() ? t->payment.productIdentifier : t->payment.localizedTitle;
    Platform::shared().paymentSheet().ask(
        title, t->payment.priceText, GKLocalPlayer::localPlayer().displayName(),
        [this, alive = std::weak_ptr<int>(m_alive), t](bool buy) {
            if (alive.expired()) {
                return;
            }
            auto done = [this, alive, t, buy](const std::optional<SKPaymentTransaction>& answer,
                                              const std::optional<SKError>& error) {
                if (alive.expired()) {
                    return;
                }
                if (error || !answer) {
                    if (!buy) {
                        // The player said no; the store fails the payment on its own once the sheet is left.
                        fail(t, SKError{SKError::kPaymentCancelled, QStringLiteral("تم إلغاء الشراء")});
                        return;
                    }
                    // Whether the payment went through is for the store to say: ask it again shortly.
                    qWarning().noquote() << "The store's answer to a payment was lost; asking again.";
                    scheduleResync();
                    return;
                }
                settle(t, answer, std::nullopt);
            };
            if (buy) {
                server().approvePayment(t->transactionIdentifier, done);
            } else {
                server().cancelPayment(t->transactionIdentifier, done);
            }
        });
}

void SKPaymentQueue::settle(const SKPaymentTransactionPtr& t,
                            const std::optional<SKPaymentTransaction>& answer,
                            const std::optional<SKError>&) {
    if (!answer || answer->transactionState == SKPaymentTransactionState::Purchasing ||
        m_handed.contains(handedKey(*answer))) {
        return;
    }
    t->transactionState = answer->transactionState;
    t->error = answer->error;
    update({t});
}

void SKPaymentQueue::fail(const SKPaymentTransactionPtr& t, const SKError& error) {
    t->transactionState = SKPaymentTransactionState::Failed;
    t->error = error;
    update({t});
}

void SKPaymentQueue::finishTransaction(const SKPaymentTransactionPtr& transaction) {
    if (!transaction) {
        return;
    }
    if (transaction->transactionState == SKPaymentTransactionState::Purchasing) {
        qWarning().noquote() << "A transaction that is still being paid cannot be finished.";
        return;
    }
    m_transactions.removeAll(transaction);
    const QString id = transaction->transactionIdentifier;
    if (id.isEmpty()) {
        return; // it never reached the store
    }
    QStringList journal = finishedJournal();
    if (!journal.contains(id)) {
        journal.append(id);
        setFinishedJournal(journal);
    }
    tellStoreFinished(id);
}

void SKPaymentQueue::tellStoreFinished(const QString& id) {
    server().finishTransaction(
        id, [this, alive = std::weak_ptr<int>(m_alive), id](const std::optional<SKPaymentTransaction>&,
                                                            const std::optional<SKError>& error) {
            if (alive.expired()) {
                return;
            }
            if (error) {
                // Kept in the journal and told again at the next start or login.
                qWarning().noquote() << "The store was not told of a finished transaction:"
                                     << error->localizedDescription();
                return;
            }
            QStringList journal = finishedJournal();
            journal.removeAll(id);
            setFinishedJournal(journal);
        });
}

void SKPaymentQueue::scheduleResync() {
    if (m_resyncPending) {
        return;
    }
    m_resyncPending = true;
    Platform::shared().scheduler().schedule(kResyncSeconds, [this, alive = std::weak_ptr<int>(m_alive)] {
        if (alive.expired()) {
            return;
        }
        m_resyncPending = false;
        syncUnfinishedTransactions();
    });
}

void SKPaymentQueue::restoreCompletedTransactions() {
    if (!server().canMakePayments()) {
        const SKError error{0, QStringLiteral("سجل دخولك إلى خدمة اللعبة لتتمكن من الاسترجاع")};
        const auto observers = m_observers;
        for (SKPaymentTransactionObserver* o : observers) {
            o->paymentQueueRestoreCompletedTransactionsFailedWithError(this, error);
        }
        return;
    }
    server().restoreTransactions(
        [this, alive = std::weak_ptr<int>(m_alive)](const QList<SKPaymentTransaction>& list,
                                                    const std::optional<SKError>& error) {
            if (alive.expired()) {
                return;
            }
            const auto observers = m_observers;
            if (error) {
                for (SKPaymentTransactionObserver* o : observers) {
                    o->paymentQueueRestoreCompletedTransactionsFailedWithError(this, *error);
                }
                return;
            }
            QList<SKPaymentTransactionPtr> changed;
            const QStringList journal = finishedJournal();
            for (const SKPaymentTransaction& t : list) {
                if (!journal.contains(t.transactionIdentifier) && !m_handed.contains(handedKey(t))) {
                    changed.append(adopt(t));
                }
            }
            if (!changed.isEmpty()) {
                update(changed);
            }
            for (SKPaymentTransactionObserver* o : observers) {
                o->paymentQueueRestoreCompletedTransactionsFinished(this);
            }
        });
}
