// The screens around the game as the player reaches them from the main screen, drawn under the offscreen
// platform: settings, the ladder, the tasks (one collected), the profile with both charts, the tips, the help
// show; the tip of the day's banner and a rain of gold over the window.
#include "Application.h"
#include "QuickItems.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "progress/CreditsManager.h"
#include "progress/SessionManager.h"
#include "progress/TipsManager.h"
#include "screens/PresentationUtil.h"
#include "screens/Screens.h"

#include <QElapsedTimer>
#include <QQmlApplicationEngine>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtTest>

using namespace QuickItems;

class ReportScreensTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        Application::registerResources();
    }

    void everyScreenFromTheMainScreen() {
        TestPlatform platform;
        AppDelegate app;
        std::unique_ptr<QQmlApplicationEngine> engine;
        QQuickWindow* window = launchGameWindow(app, engine);
        QVERIFY(window);
        auto& nav = Platform::shared().navigator();

        // Settings: the sound switch turns the effects off.
        click(window, findItem(window, "settingsButton"));
        QTRY_VERIFY(isShown(window, "soundToggle"));
        click(window, findItem(window, "soundToggle"));
        QVERIFY(!platform.defaults().boolForKey("sound"));
        QVERIFY(isShown(window, "notificationsView"));
        click(window, findItem(window, "backButton"));
        QTRY_VERIFY(!nav.presentedViewController());

        // The ladder, from the rank card.
        click(window, findItem(window, "rankView"));
        QTRY_VERIFY(isShown(window, "ladder"));
        QVERIFY(findItem(window, "ladder")->property("count").toInt() == 41);
        nav.dismissViewController();

        // The tasks: the first day's task is met on opening, and a tap on it collects its gold.
        const qint64 gold = CreditsManager::sharedInstance().currentCredits();
        click(window, findItem(window, "achievementsView"));
        QTRY_VERIFY(isShown(window, "tasks"));
        QCOMPARE(findItem(window, "counterLabel")->property("text").toString(), QStringLiteral("1/41"));
        QQuickItem* list = findItem(window, "tasks");
        const QPointF firstRow = list->mapToScene(QPointF(list->width() / 2, 20));
        QTest::mouseClick(window, Qt::LeftButton, {}, firstRow.toPoint());
        QCOMPARE(CreditsManager::sharedInstance().currentCredits(), gold + 50);
        nav.dismissViewController();
        QTRY_COMPARE(findItem(window, "completedAchmtsLabel")->property("text").toString(),
                     QStringLiteral("1/41"));

        // The profile with its two charts; the history in place of the bars.
        PresentationUtil::openUserProfileViewController(nullptr);
        QTRY_VERIFY(isShown(window, "ranksChart"));
        QVERIFY(isShown(window, "levelsChart"));
        click(window, findItem(window, "profileSegment1"));
        QTRY_VERIFY(isShown(window, "rankHistory"));
        QVERIFY(!isShown(window, "ranksChart"));
        nav.dismissViewController();

        // The tips and the help show, whose button steps to the end.
        PresentationUtil::openTipsViewController(nullptr);
        QTRY_VERIFY(isShown(window, "tipsList"));
        QCOMPARE(findItem(window, "tipsList")->property("count").toInt(), 10);
        nav.dismissViewController();
        PresentationUtil::openHelpViewController(nullptr);
        QTRY_VERIFY(isShown(window, "nextButton"));
        QVERIFY(!isShown(window, "closeButton")); // the first session
        click(window, findItem(window, "nextButton"));
        click(window, findItem(window, "nextButton"));
        QTRY_COMPARE(findItem(window, "helpTitle")->property("text").toString(), QStringLiteral("طارفولين"));
        click(window, findItem(window, "nextButton"));
        QTRY_VERIFY(!nav.presentedViewController());

        // The tip of the day slides in at the top.
        TipsManager::sharedInstance().showTipOfTheDayBanner();
        QTRY_VERIFY(isShown(window, "dropdownBanner"));
        QCOMPARE(findItem(window, "bannerTitle")->property("text").toString(),
                 QStringLiteral("ملاحظة اليوم"));
        Platform::shared().banner().dismiss();

        // A rain of gold: gold coins appear over the window. They are told by their dark gold rim, a colour
        // nothing else on the screen has: the tasks screen's confetti, still falling, has the coins' gold.
        const auto coinRims = [window] {
            const QImage image = window->grabWindow();
            int n = 0;
            for (int y = 0; y < image.height(); y += 2) {
                for (int x = 0; x < image.width(); x += 2) {
                    const QColor c = image.pixelColor(x, y);
                    n += (qAbs(c.red() - 0xb9) < 10 && qAbs(c.green() - 0x8a) < 10 && c.blue() < 10) ? 1 : 0;
                }
            }
            return n;
        };
        QTest::qWait(300);
        QCOMPARE(coinRims(), 0);
        // Long enough to be seen on a machine busy with other work.
        Platform::shared().emitter().startGoldEmitterOnViewForDuration(nullptr, 4.0);
        // Coins enter and leave, so the count is read once a round and the round that saw the rain is the one
        // checked: a retrying check would read it again and could fail on a frame between coins.
        QElapsedTimer clock;
        clock.start();
        int rims = coinRims();
        while (rims < 100 && clock.elapsed() < 20000) {
            QTest::qWait(50);
            rims = coinRims();
        }
        QVERIFY2(rims >= 100,
                 qPrintable(QStringLiteral("%1 coin rims after %2 ms").arg(rims).arg(clock.elapsed())));
        // TARVOLIN_UI_SHOTS=DIR keeps a picture of it for a person to look at.
        if (const QString dir = qEnvironmentVariable("TARVOLIN_UI_SHOTS"); !dir.isEmpty()) {
            window->grabWindow().save(dir + "/gold-rain.png");
        }
        engine.reset();
    }
};

QTEST_MAIN(ReportScreensTest)
#include "ReportScreensTest.moc"
