// Every share, rate and promotion button of every screen, tapped in the game's window: each reaches a
// target (an address opened, the share screen, the store sheet) or tells the player why not.
#include "Application.h"
#include "QuickItems.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "outreach/AppPromoView.h"
#include "progress/SessionManager.h"
#include "screens/LevelSelectorViewController.h"
#include "screens/MainViewController.h"
#include "screens/RoundSelectorViewController.h"

#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtTest>

using namespace QuickItems;

class OutreachButtonsTest : public QObject {
    Q_OBJECT

    // What a tap led to; empty when nothing happened.
    static QString outcome(TestPlatform& platform, qsizetype openedBefore) {
        auto& p = Platform::shared();
        if (p.shareSheet().isVisible()) {
            return QStringLiteral("share screen");
        }
        if (p.alerts().isVisible()) {
            return QStringLiteral("message: ") + p.alerts().title();
        }
        if (auto* presented = p.navigator().presentedViewController();
            presented && presented->identifier() == QLatin1String("SKStoreProductViewController")) {
            return QStringLiteral("store sheet");
        }
        if (platform.urls().opened.size() > openedBefore) {
            return QStringLiteral("opened ") + platform.urls().opened.last().toString();
        }
        return {};
    }
    // Taps the button and checks where it led, then puts the screen back as it was.
    static void tapAndCheck(TestPlatform& platform, QQuickWindow* window, const QString& button,
                            ViewController* screen) {
        QQuickItem* item = findItem(window, button);
        QVERIFY2(item && item->isVisible(), qPrintable(button + " is not on the screen"));
        const qsizetype before = platform.urls().opened.size();
        click(window, item);
        QString result;
        QTRY_VERIFY2(!(result = outcome(platform, before)).isEmpty(), qPrintable(button + " led nowhere"));
        auto& p = Platform::shared();
        if (p.shareSheet().isVisible()) {
            p.shareSheet().cancel();
        }
        while (p.alerts().isVisible()) {
            p.alerts().press(0);
        }
        while (p.navigator().presentedViewController() && p.navigator().presentedViewController() != screen) {
            p.navigator().dismissViewController();
        }
        QCoreApplication::processEvents();
    }

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        Application::registerResources();
    }

    void everyOutreachButtonReachesATargetOrAMessage() {
        TestPlatform platform;
        // A player of a few days, on the launch that shows the promotion.
        SessionManager::sharedInstance().setAcitveDays(3);
        platform.random().queue({4});
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launchGameWindow(app, engine);
        QVERIFY(window);
        auto& p = Platform::shared();
        while (p.alerts().isVisible()) {
            p.alerts().press(0);
        }
        auto& nav = p.navigator();
        auto* main = qobject_cast<MainViewController*>(nav.topViewController());
        QVERIFY(main);
        QTRY_VERIFY(main->promoVisible());
        for (const char* button : {"shareButton", "rateButton", "promoView"}) {
            tapAndCheck(platform, window, button, nullptr);
        }

        // The about hub.
        main->openAbout();
        ViewController* about = nav.presentedViewController();
        QTRY_VERIFY(isShown(window, "shareGame"));
        for (const char* button : {"shareGame", "rateGame", "openOurGames", "openFacebookPage",
                                   "openTwitterPage", "openInstagramPage"}) {
            tapAndCheck(platform, window, button, about);
        }
        nav.dismissViewController();

        // The selectors' panels and the level selector's social buttons.
        main->startAction();
        auto* rounds = qobject_cast<RoundSelectorViewController*>(nav.topViewController());
        QVERIFY(rounds);
        QTRY_VERIFY(isShown(window, "promoView"));
        tapAndCheck(platform, window, "promoView", nullptr);
        rounds->tableViewDidSelectRowAtIndexPath(0);
        QVERIFY(qobject_cast<LevelSelectorViewController*>(nav.topViewController()));
        QTest::qWait(50);
        // The social buttons stand clear of the promotion panel under them: each is whole to see and to tap.
        const auto sceneRect = [window](const char* name) {
            QQuickItem* item = findItem(window, QString::fromLatin1(name));
            return item ? item->mapRectToScene(QRectF(0, 0, item->width(), item->height())) : QRectF();
        };
        const QRectF panel = sceneRect("promoView");
        QVERIFY(!panel.isEmpty());
        for (const char* button : {"openFacebookPage", "openTwitterPage", "openInstaPage"}) {
            QVERIFY2(sceneRect(button).bottom() <= panel.top(), button);
        }
        for (const char* button : {"promoView", "openFacebookPage", "openTwitterPage", "openInstaPage"}) {
            tapAndCheck(platform, window, button, nullptr);
        }

        // The card of a promoted game: its download and its close.
        ViewController* card =
            nav.instantiateViewControllerWithIdentifier(QStringLiteral("AppPromoViewController"));
        nav.presentViewController(card);
        QTRY_VERIFY(isShown(window, "downloadButton"));
        tapAndCheck(platform, window, "downloadButton", card);
        click(window, findItem(window, "closeButton"));
        QTRY_COMPARE(nav.presentedViewController(), nullptr);
    }
};

QTEST_MAIN(OutreachButtonsTest)
#include "OutreachButtonsTest.moc"
