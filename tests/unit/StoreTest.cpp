// The store over a fake sandbox store: the catalogue before and after it loads, buying (offline, with the
// catalogue missing, cancelled, failed, completed, two in a row), the minute's wait, and payments that
// finish when no store screen is there: after a restart, after a lost answer, after a finish the store
// never heard of. Each pack is paid once and only once.
#include "TestPlatform.h"
#include "outreach/GameIAPHelper.h"
#include "outreach/StoreViewController.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "platform/storekit/SKPaymentQueue.h"
#include "progress/CreditsManager.h"
#include "screens/MainViewController.h"
#include "screens/Screens.h"

#include <QFile>
#include <QJsonArray>
#include <gtest/gtest.h>

namespace {

// The sandbox store in memory. Answers come at once, unless held; held answers are given by answerHeld().
class FakeStore : public SKStoreServer {
public:
    struct Stored {
        SKPaymentTransaction t;
        bool finished = false;
    };
    bool loggedIn = true;
    bool hold = false;
    bool failProducts = false;
    bool failFinish = false;
    bool loseApproval = false; // the approval goes through but its answer never arrives
    QString outcome = QStringLiteral("purchase");
    int productRequests = 0;
    int finishes = 0;
    std::vector<Stored> store;
    std::vector<std::function<void()>> held;

    void answer(std::function<void()> f) {
        if (hold) {
            held.push_back(std::move(f));
        } else {
            f();
        }
    }
    void answerHeld() {
        auto pending = std::move(held);
        held.clear();
        for (auto& f : pending) {
            f();
        }
    }
    Stored* find(const QString& id) {
        for (auto& s : store) {
            if (s.t.transactionIdentifier == id) {
                return &s;
            }
        }
        return nullptr;
    }
    // A purchase made on the store's side that the game has not heard of.
    QString addPurchased(const QString& product) {
        SKPaymentTransaction t;
        t.transactionIdentifier = QStringLiteral("P%1").arg(store.size() + 1, 16, 10, QLatin1Char('0'));
        t.payment.productIdentifier = product;
        t.transactionState = SKPaymentTransactionState::Purchased;
        store.push_back({t, false});
        return t.transactionIdentifier;
    }

    bool canMakePayments() const override { return loggedIn; }
    void
    products(const QStringList& ids, const QString&,
             std::function<void(const SKProductsResponse&, const std::optional<SKError>&)> done) override {
        ++productRequests;
        answer([this, ids, done] {
            if (failProducts) {
                done({}, SKError{0, QStringLiteral("offline")});
                return;
            }
            SKProductsResponse r;
            int n = 0;
            for (const QString& id : ids) {
                SKProduct p;
                p.productIdentifier = id;
                p.localizedTitle = QStringLiteral("حزمة %1").arg(++n);
                p.price = 7.49 + n;
                p.currencyCode = QStringLiteral("SAR");
                p.priceLocale = QLocale(QStringLiteral("ar_SA"));
                r.products.append(std::make_shared<const SKProduct>(p));
            }
            done(r, std::nullopt);
        });
    }
    void createPayment(const SKPayment& payment, TransactionDone done) override {
        answer([this, payment, done] {
            SKPaymentTransaction t;
            t.transactionIdentifier = QStringLiteral("P%1").arg(store.size() + 1, 16, 10, QLatin1Char('0'));
            t.payment = payment;
            store.push_back({t, false});
            done(t, std::nullopt);
        });
    }
    void settle(const QString& id, bool buy, TransactionDone done) {
        answer([this, id, buy, done] {
            Stored* s = find(id);
            if (!s || s->t.transactionState != SKPaymentTransactionState::Purchasing) {
                done(std::nullopt, SKError{0, QStringLiteral("transaction_not_purchasing")});
                return;
            }
            if (!buy || outcome == QLatin1String("cancel")) {
                s->t.transactionState = SKPaymentTransactionState::Failed;
                s->t.error = SKError{2, QStringLiteral("cancelled")};
            } else if (outcome == QLatin1String("fail")) {
                s->t.transactionState = SKPaymentTransactionState::Failed;
                s->t.error = SKError{0, QStringLiteral("رفض المتجر التجريبي الدفع")};
            } else {
                s->t.transactionState = SKPaymentTransactionState::Purchased;
            }
            if (loseApproval && buy) {
                done(std::nullopt, SKError{0, QStringLiteral("network")});
                return;
            }
            done(s->t, std::nullopt);
        });
    }
    void approvePayment(const QString& id, TransactionDone done) override { settle(id, true, done); }
    void cancelPayment(const QString& id, TransactionDone done) override { settle(id, false, done); }
    void unfinishedTransactions(ListDone done) override {
        answer([this, done] {
            QList<SKPaymentTransaction> list;
            for (const auto& s : store) {
                if (!s.finished) {
                    list.append(s.t);
                }
            }
            done(list, std::nullopt);
        });
    }
    void finishTransaction(const QString& id, TransactionDone done) override {
        answer([this, id, done] {
            if (failFinish) {
                done(std::nullopt, SKError{0, QStringLiteral("network")});
                return;
            }
            Stored* s = find(id);
            if (!s) {
                done(std::nullopt, SKError{0, QStringLiteral("transaction_not_found")});
                return;
            }
            ++finishes;
            s->finished = true;
            done(s->t, std::nullopt);
        });
    }
    void restoreTransactions(ListDone done) override {
        answer([this, done] {
            QList<SKPaymentTransaction> restored;
            const auto before = store;
            for (const auto& s : before) {
                if (s.finished && s.t.transactionState == SKPaymentTransactionState::Purchased) {
                    SKPaymentTransaction t;
                    t.transactionIdentifier =
                        QStringLiteral("R%1").arg(store.size() + 1, 16, 10, QLatin1Char('0'));
                    t.payment = s.t.payment;
                    t.transactionState = SKPaymentTransactionState::Restored;
                    auto original = std::make_shared<SKPaymentTransaction>(s.t);
                    t.originalTransaction = original;
                    store.push_back({t, false});
                    restored.append(t);
                }
            }
            done(restored, std::nullopt);
        });
    }
    int unfinished() const {
        return static_cast<int>(
            std::count_if(store.begin(), store.end(), [](const Stored& s) { return !s.finished; }));
    }
};

class Store : public ::testing::Test {
protected:
    void SetUp() override {
        auto fake = std::make_unique<FakeStore>();
        store = fake.get();
        SKPaymentQueue::setServer(std::move(fake));
        start();
    }
    // What the game does at launch: the helper hears the queue, and the catalogue is asked for.
    void start() {
        registerScreens(Platform::shared().navigator());
        Platform::shared().navigator().setRootViewController(new MainViewController());
        GKLocalPlayer::localPlayer().setAuthenticatedPlayer(
            GKPlayer{QStringLiteral("Tme"), QStringLiteral("ريم"), false, {}});
        SKPaymentQueue::defaultQueue().addTransactionObserver(&GameIAPHelper::sharedInstance());
    }
    void restart() {
        platform.restart();
        start();
    }
    StoreViewController* openStore() {
        auto* screen = new StoreViewController();
        Platform::shared().navigator().presentViewController(screen);
        return screen;
    }
    static qint64 gold() { return CreditsManager::sharedInstance().currentCredits(); }
    static qint64 skips() { return CreditsManager::sharedInstance().currentSkips(); }
    Alerts& alerts() { return Platform::shared().alerts(); }
    SKPaymentSheet& sheet() { return Platform::shared().paymentSheet(); }
    bool hud() { return Platform::shared().progressHud().isVisible(); }
    void loadCatalogue() { GameIAPHelper::sharedInstance().requestProducts(); }

    TestPlatform platform;
    FakeStore* store = nullptr;
};

TEST_F(Store, PricesAreTheDollarDefaultsUntilTheCatalogueArrivesAndChangeOnlyAtTheNextOpening) {
    auto* before = openStore();
    EXPECT_EQ(before->pack1PriceLabel(), "$1.99");
    EXPECT_EQ(before->pack5PriceLabel(), "$12.99");
    EXPECT_EQ(before->pack3CreditsLabel(), "6000");
    EXPECT_EQ(before->pack4SkipsLabel(), "50");

    QVariant loaded;
    Platform::shared().notificationCenter().addObserver(this, ProductsLoaded,
                                                        [&](const Notification& n) { loaded = n.object; });
    loadCatalogue();
    const QString local =
        GameIAPHelper::sharedInstance().getPriceStringForProductID(GameIAPHelper::kPack1).value();
    EXPECT_NE(local, "$1.99");
    EXPECT_TRUE(local.contains(QLocale(QStringLiteral("ar_SA")).toString(8.49, 'f', 2)))
        << local.toStdString();
    EXPECT_EQ(loaded.value<QList<SKProductPtr>>().size(), 5);
    EXPECT_FALSE(GameIAPHelper::sharedInstance().isProductsBeingRequested());
    // The open screen keeps what it showed; the next one shows the store's prices.
    EXPECT_EQ(before->pack1PriceLabel(), "$1.99");
    Platform::shared().navigator().dismissViewController();
    EXPECT_EQ(openStore()->pack1PriceLabel(), local);
    Platform::shared().notificationCenter().removeObserver(this);
}

TEST_F(Store, AFailedCatalogueKeepsTheDefaultsAndAnnouncesIt) {
    store->failProducts = true;
    int failed = 0;
    Platform::shared().notificationCenter().addObserver(this, ProductsFailLoaded,
                                                        [&](const Notification&) { ++failed; });
    loadCatalogue();
    EXPECT_EQ(failed, 1);
    EXPECT_FALSE(GameIAPHelper::sharedInstance().products().has_value());
    EXPECT_FALSE(GameIAPHelper::sharedInstance().isProductsBeingRequested());
    EXPECT_EQ(openStore()->pack2PriceLabel(), "$3.99");
    Platform::shared().notificationCenter().removeObserver(this);
}

TEST_F(Store, BuyingOfflineOrBeforeTheCatalogueStartsNoPayment) {
    auto* screen = openStore();
    platform.reachability().setForcedOffline(true);
    screen->buyPack1();
    EXPECT_EQ(alerts().title(), "لايوجد اتصال");
    EXPECT_EQ(alerts().message(), "تعذر الاتصال بالانترنت يرجى المحاولة لاحقا");
    EXPECT_FALSE(hud());
    alerts().press(0);
    platform.reachability().setForcedOffline(false);

    // The catalogue is still on its way: one request, and the message at each press.
    store->hold = true;
    screen->buyPack2();
    screen->buyPack2();
    EXPECT_EQ(store->productRequests, 1);
    EXPECT_TRUE(hud());
    ASSERT_EQ(alerts().count(), 2);
    EXPECT_EQ(alerts().title(), "..المتجر قيد التحميل");
    EXPECT_EQ(alerts().message(), "حاول لاحقا بعد 20 ثانية");
    // Dismissing it goes the failure's way with no error: a second, empty error message, and the wait ends.
    alerts().press(0);
    EXPECT_EQ(alerts().title(), "..المتجر قيد التحميل");
    EXPECT_FALSE(hud());
    alerts().press(0);
    EXPECT_EQ(alerts().title(), "خطأ!");
    EXPECT_EQ(alerts().message(), "");
    EXPECT_TRUE(store->store.empty());
    EXPECT_FALSE(screen->isTimeoutPending());
}

TEST_F(Store, APackIsPaidOnceWithTheMessageAndTwoPacksAddUp) {
    loadCatalogue();
    auto* screen = openStore();
    const qint64 gold0 = gold();
    const qint64 skips0 = skips();
    screen->buyPack1();
    EXPECT_TRUE(hud());
    ASSERT_TRUE(sheet().isVisible());
    EXPECT_EQ(sheet().productTitle(), "حزمة 1");
    EXPECT_EQ(sheet().accountName(), "ريم");
    EXPECT_FALSE(sheet().priceText().isEmpty());
    EXPECT_EQ(gold(), gold0);
    const int purchaseSounds = platform.audio().totalPlays();
    sheet().buy();
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_EQ(gold(), gold0 + 900);
    EXPECT_EQ(skips(), skips0 + 5);
    EXPECT_FALSE(hud());
    EXPECT_FALSE(screen->isTimeoutPending());
    EXPECT_GT(platform.audio().totalPlays(), purchaseSounds);
    EXPECT_EQ(alerts().title(), "مبروك");
    EXPECT_EQ(alerts().message(), "لقد اشتريت بنجاح 900 ذهبة و 5 تجاوز");
    EXPECT_EQ(alerts().buttons(), QStringList{"موافق"});
    alerts().press(0);
    EXPECT_TRUE(GameIAPHelper::sharedInstance().areInAppsPurchased());
    EXPECT_TRUE(GameIAPHelper::sharedInstance().isProductPurchased(GameIAPHelper::kPack1));
    EXPECT_EQ(store->unfinished(), 0);
    EXPECT_TRUE(SKPaymentQueue::defaultQueue().transactions().isEmpty());
    EXPECT_EQ(screen->balanceText(), QStringLiteral("%1 ذهبة  ·  %2 تجاوز").arg(gold()).arg(skips()));

    // Consumable: the same pack again, then another, each paid.
    screen->buyPack1();
    sheet().buy();
    alerts().press(0);
    screen->buyPack5();
    sheet().buy();
    EXPECT_EQ(alerts().message(), "لقد اشتريت بنجاح 25000 ذهبة و 100 تجاوز");
    EXPECT_EQ(gold(), gold0 + 900 + 900 + 25000);
    EXPECT_EQ(skips(), skips0 + 5 + 5 + 100);
    EXPECT_EQ(store->finishes, 3);
}

TEST_F(Store, ACancelPassesInSilenceAndAFailureIsShown) {
    loadCatalogue();
    auto* screen = openStore();
    const qint64 gold0 = gold();
    int failures = 0;
    Platform::shared().notificationCenter().addObserver(this, ProductPurchaseFailed,
                                                        [&](const Notification&) { ++failures; });
    screen->buyPack3();
    sheet().cancel();
    EXPECT_EQ(failures, 1);
    EXPECT_EQ(alerts().count(), 0);
    EXPECT_FALSE(hud());
    EXPECT_EQ(store->unfinished(), 0);

    store->outcome = QStringLiteral("fail");
    screen->buyPack3();
    sheet().buy();
    EXPECT_EQ(failures, 2);
    EXPECT_EQ(alerts().title(), "خطأ!");
    EXPECT_EQ(alerts().message(), "رفض المتجر التجريبي الدفع");
    EXPECT_EQ(gold(), gold0);
    EXPECT_FALSE(GameIAPHelper::sharedInstance().areInAppsPurchased());
    EXPECT_EQ(store->unfinished(), 0);
    Platform::shared().notificationCenter().removeObserver(this);
}

TEST_F(Store, WithoutALoginThePaymentFailsWithAReason) {
    loadCatalogue();
    store->loggedIn = false;
    openStore()->buyPack2();
    EXPECT_FALSE(sheet().isVisible());
    EXPECT_EQ(alerts().title(), "خطأ!");
    EXPECT_EQ(alerts().message(), "سجل دخولك إلى خدمة اللعبة لتتمكن من الشراء");
    EXPECT_TRUE(store->store.empty());
}

TEST_F(Store, AfterAMinuteTheWaitEndsAndALatePaymentIsStillPaid) {
    loadCatalogue();
    auto* screen = openStore();
    const qint64 gold0 = gold();
    screen->buyPack2();
    store->hold = true; // nothing more is answered for now
    sheet().buy();
    EXPECT_TRUE(hud());
    platform.scheduler().advance(59);
    EXPECT_TRUE(hud());
    platform.scheduler().advance(1);
    EXPECT_FALSE(hud());
    EXPECT_EQ(alerts().count(), 0);
    store->answerHeld();
    EXPECT_EQ(gold(), gold0 + 3000);
}

TEST_F(Store, APaymentLeftUnfinishedIsPaidAtTheNextStartAndNeverTwice) {
    const qint64 gold0 = gold();
    store->addPurchased(GameIAPHelper::kPack4);
    restart();
    EXPECT_EQ(gold(), gold0 + 12000);
    EXPECT_EQ(alerts().count(), 0); // no store screen: paid in silence
    EXPECT_TRUE(GameIAPHelper::sharedInstance().areInAppsPurchased());
    EXPECT_EQ(store->unfinished(), 0);
    restart();
    restart();
    EXPECT_EQ(gold(), gold0 + 12000);
    EXPECT_TRUE(GameIAPHelper::sharedInstance().areInAppsPurchased());
}

TEST_F(Store, AFinishTheStoreNeverHeardOfIsToldAgainNotPaidAgain) {
    loadCatalogue();
    const qint64 gold0 = gold();
    store->failFinish = true;
    openStore()->buyPack1();
    sheet().buy();
    EXPECT_EQ(gold(), gold0 + 900);
    EXPECT_EQ(store->unfinished(), 1);
    EXPECT_EQ(Platform::shared().userDefaults().stringArrayForKey(SKPaymentQueue::kFinishedKey).size(), 1);

    store->failFinish = false;
    restart();
    EXPECT_EQ(gold(), gold0 + 900);
    EXPECT_EQ(store->unfinished(), 0);
    EXPECT_TRUE(Platform::shared().userDefaults().stringArrayForKey(SKPaymentQueue::kFinishedKey).isEmpty());
}

TEST_F(Store, ALostApprovalIsAskedForAgainAndPaidOnce) {
    loadCatalogue();
    const qint64 gold0 = gold();
    store->loseApproval = true;
    openStore()->buyPack2();
    sheet().buy();
    EXPECT_EQ(gold(), gold0);
    platform.scheduler().advance(SKPaymentQueue::kResyncSeconds);
    EXPECT_EQ(gold(), gold0 + 3000);
    EXPECT_EQ(store->unfinished(), 0);
    SKPaymentQueue::defaultQueue().syncUnfinishedTransactions();
    EXPECT_EQ(gold(), gold0 + 3000);
}

TEST_F(Store, TheDeliveryAndItsFinishAreWrittenTogether) {
    // A program killed while the observers run leaves the settings file as it was.
    auto& defaults = Platform::shared().userDefaults();
    const auto onDisk = [&] {
        QFile file(defaults.filePath());
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    };
    {
        UserDefaults::Batch batch(defaults);
        defaults.setIntegerForKey(42, QStringLiteral("gold"));
        defaults.setObjectForKey(QStringList{QStringLiteral("P1")}, SKPaymentQueue::kFinishedKey);
        defaults.synchronize(); // as the purchase flag's write asks: still held for the batch
        EXPECT_EQ(defaults.integerForKey(QStringLiteral("gold")), 42);
        EXPECT_FALSE(onDisk().contains(QStringLiteral("gold=42")));
        EXPECT_FALSE(onDisk().contains(SKPaymentQueue::kFinishedKey));
    }
    EXPECT_TRUE(onDisk().contains(QStringLiteral("gold=42")));
    EXPECT_TRUE(onDisk().contains(SKPaymentQueue::kFinishedKey));
}

TEST_F(Store, ARestorePaysThePacksAgainAndCountsTheQueue) {
    loadCatalogue();
    openStore()->buyPack1();
    sheet().buy();
    alerts().press(0);
    const qint64 gold0 = gold();
    QVariant restored;
    Platform::shared().notificationCenter().addObserver(this, ProductsRestored,
                                                        [&](const Notification& n) { restored = n.object; });
    GameIAPHelper::sharedInstance().restoreCompletedTransactions();
    EXPECT_EQ(gold(), gold0 + 900);
    EXPECT_EQ(restored.toLongLong(), 0); // every restored one was finished before the count
    EXPECT_EQ(store->unfinished(), 0);
    Platform::shared().notificationCenter().removeObserver(this);
}

TEST(StoreReplies, WhatTheStoreAnswersIsReadOrRefused) {
    const auto ok =
        SKPaymentTransaction::fromJson(QJsonObject{{"transactionIdentifier", "P1"},
                                                   {"productIdentifier", "p"},
                                                   {"state", "failed"},
                                                   {"error", QJsonObject{{"code", 2}, {"message", "x"}}},
                                                   {"quantity", 1}});
    ASSERT_TRUE(ok);
    EXPECT_EQ(ok->transactionState, SKPaymentTransactionState::Failed);
    EXPECT_EQ(ok->error->code, 2);
    EXPECT_FALSE(SKPaymentTransaction::fromJson(
        QJsonObject{{"transactionIdentifier", "P1"}, {"productIdentifier", "p"}, {"state", "paid"}}));
    EXPECT_FALSE(SKPaymentTransaction::fromJson(
        QJsonObject{{"transactionIdentifier", "P1"}, {"productIdentifier", "p"}, {"state", "restored"}}))
        << "a restored transaction names its original";
    EXPECT_FALSE(
        SKPaymentTransaction::fromJson(QJsonObject{{"productIdentifier", "p"}, {"state", "purchased"}}));

    // One unreadable entry is left out; the others stay.
    const auto list = GameServiceStoreServer::transactionList(QJsonObject{
        {"transactions",
         QJsonArray{
             QJsonObject{{"transactionIdentifier", "P1"}, {"productIdentifier", "p"}, {"state", "purchased"}},
             QJsonValue(7), QJsonObject{{"state", "purchased"}}}}});
    ASSERT_TRUE(list);
    EXPECT_EQ(list->size(), 1);
    EXPECT_FALSE(GameServiceStoreServer::transactionList(QJsonObject{{"transactions", "many"}}));

    EXPECT_TRUE(SKProduct::fromJson(QJsonObject{
        {"productIdentifier", "p"}, {"price", "2.900"}, {"currencyCode", "KWD"}, {"priceLocale", "ar_KW"}}));
    for (const char* bad : {"-1", "1e9", "", "1.2.3", "NaN"}) {
        EXPECT_FALSE(SKProduct::fromJson(QJsonObject{
            {"productIdentifier", "p"}, {"price", bad}, {"currencyCode", "USD"}, {"priceLocale", "en_US"}}))
            << bad;
    }
}

} // namespace
