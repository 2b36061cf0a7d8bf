// The game's purchase path as a program of its own, so that a test can kill it in the middle of a payment
// and start it again on the same profile:
//   tarvolin_purchase_child SERVICE SETTINGS TOKEN buy-then-die-before|buy-then-die-after|start
// "buy-then-die-…" buys the second pack on the sandbox's sheet and dies (exit 9) when the payment is
// purchased: before the game has delivered it, or after the delivery and its finish but before the
// settings are written. "start" starts as the game does, waits for what the store hands over and prints the
// balance as one JSON line.
#include "outreach/GameIAPHelper.h"
#include "platform/Platform.h"
#include "platform/storekit/SKPaymentQueue.h"
#include "progress/CreditsManager.h"

#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTextStream>
#include <QTimer>
#include <cstdlib>

namespace {

// Dies as a killed process would: no destructor runs, nothing more is written.
class Killer : public SKPaymentTransactionObserver {
public:
    void paymentQueueUpdatedTransactions(SKPaymentQueue*, const QList<SKPaymentTransactionPtr>& ts) override {
        for (const auto& t : ts) {
            if (t->transactionState == SKPaymentTransactionState::Purchased) {
                std::_Exit(9);
            }
        }
    }
};

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 5) {
        QTextStream(stderr) << "usage: tarvolin_purchase_child SERVICE SETTINGS TOKEN MODE\n";
        return 2;
    }
    Platform::Services services;
    services.userDefaults = std::make_unique<UserDefaults>(args.at(2));
    services.scheduler = std::make_unique<QtScheduler>();
    services.random = std::make_unique<SystemRandom>();
    services.reachability = std::make_unique<Reachability>(false);
    services.animator = std::make_unique<ScheduledAnimator>();
    services.device = std::make_unique<Device>(Device::Phone);
    services.gameService = std::make_unique<GameService>(QUrl(args.at(1)));
    Platform::install(std::move(services));
    Platform::shared().gameService().setToken(args.at(3));
    const QString mode = args.at(4);

    Killer killer;
    auto& queue = SKPaymentQueue::defaultQueue();
    auto& helper = GameIAPHelper::sharedInstance();
    if (mode == QLatin1String("buy-then-die-before")) {
        queue.addTransactionObserver(&killer);
    }
    queue.addTransactionObserver(&helper);
    if (mode == QLatin1String("buy-then-die-after")) {
        queue.addTransactionObserver(&killer);
    }
    if (mode.startsWith(QLatin1String("buy"))) {
        // The player says yes on the sheet as soon as it is up.
        QObject::connect(&Platform::shared().paymentSheet(), &SKPaymentSheet::changed, [] {
            if (Platform::shared().paymentSheet().isVisible()) {
                QTimer::singleShot(0, [] { Platform::shared().paymentSheet().buy(); });
            }
        });
        Platform::shared().notificationCenter().addObserver(
            &app, ProductsLoaded,
            [&helper](const Notification&) { helper.buyProductIdentifier(GameIAPHelper::kPack2); });
        helper.requestProducts();
        QTimer::singleShot(20000, [] { QCoreApplication::exit(3); }); // the store never answered
        return app.exec();
    }
    // A start: what the store hands over arrives within a moment.
    QTimer::singleShot(2000, [] {
        auto& credits = CreditsManager::sharedInstance();
        const QJsonObject out{{"credits", credits.currentCredits()},
                              {"skips", credits.currentSkips()},
                              {"inAppsPurchased", GameIAPHelper::sharedInstance().areInAppsPurchased()},
                              {"unfinished", SKPaymentQueue::defaultQueue().transactions().size()}};
        QTextStream(stdout) << QJsonDocument(out).toJson(QJsonDocument::Compact) << "\n";
        QCoreApplication::exit(0);
    });
    return app.exec();
}
