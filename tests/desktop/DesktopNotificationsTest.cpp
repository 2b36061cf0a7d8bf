// Desktop notifications on a session bus of the test's own (a private dbus-daemon): the notifier without a
// notification service and with one that refuses, clicks (forged, early, repeated), and the running game
// delivering a due notification to the desktop while its window is hidden, coming forward when the player
// clicks, and showing its own banner when the desktop refuses.
#include "Application.h"
#include "FakeNotificationServer.h"
#include "platform/DesktopNotifier.h"
#include "platform/Platform.h"
#include "progress/NotificationManager.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QProcess>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTemporaryDir>
#include <QtTest>

class DesktopNotificationsTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        m_bus.setProcessChannelMode(QProcess::SeparateChannels);
        m_bus.start(QStringLiteral("dbus-daemon"), {"--session", "--nofork", "--nopidfile",
                                                    "--print-address=1", "--address=unix:tmpdir=/tmp"});
        QVERIFY2(m_bus.waitForStarted(5000), "dbus-daemon did not start");
        QTRY_VERIFY(m_bus.canReadLine());
        m_address = QString::fromUtf8(m_bus.readLine()).trimmed();
        QVERIFY(!m_address.isEmpty());
        // The game's session bus is this one from its first use on.
        qputenv("DBUS_SESSION_BUS_ADDRESS", m_address.toUtf8());
    }

    void cleanupTestCase() {
        m_bus.terminate();
        m_bus.waitForFinished(5000);
    }

    void withoutAServiceTheGameShowsItItself() {
        DesktopNotifier notifier;
        int clicks = 0;
        int refusals = 0;
        notifier.notify(
            "title", "body", [&] { ++clicks; }, [&] { ++refusals; });
        QTRY_COMPARE(refusals, 1);
        QCOMPARE(clicks, 0);
    }

    void aServiceThatAnswersWithAnErrorLeavesItToTheGame() {
        FakeNotificationServer server(m_address);
        QVERIFY(server.isRegistered());
        server.setRefusing(true);
        DesktopNotifier notifier;
        int refusals = 0;
        notifier.notify(
            "title", "body", [] {}, [&] { ++refusals; });
        QTRY_COMPARE(refusals, 1);
        QVERIFY(server.shown().isEmpty());
    }

    void aClickOnTheNotificationRunsItsActionOnce() {
        FakeNotificationServer server(m_address);
        QVERIFY(server.isRegistered());
        DesktopNotifier notifier;
        int clicks = 0;
        int refusals = 0;
        notifier.notify(
            QStringLiteral("اعرف الحل"), QStringLiteral("الحل الصحيح هو: نجم"), [&] { ++clicks; },
            [&] { ++refusals; });
        QTRY_COMPARE(server.shown().size(), 1);
        const ShownNotification shown = server.shown().first();
        QCOMPARE(shown.summary, QStringLiteral("اعرف الحل"));
        QCOMPARE(shown.body, QStringLiteral("الحل الصحيح هو: نجم"));
        QVERIFY(shown.actions.contains("default"));

        // The same signal from anyone but the service that showed it is not a click.
        QDBusConnection intruder = QDBusConnection::connectToBus(m_address, QStringLiteral("intruder"));
        QVERIFY(intruder.isConnected());
        QDBusMessage forged = QDBusMessage::createSignal(QStringLiteral("/org/freedesktop/Notifications"),
                                                         QStringLiteral("org.freedesktop.Notifications"),
                                                         QStringLiteral("ActionInvoked"));
        forged << shown.id << QStringLiteral("default");
        QVERIFY(intruder.send(forged));
        // Another notification's click is not this one's.
        server.click(shown.id + 1);
        QTest::qWait(200);
        QCOMPARE(clicks, 0);
        QDBusConnection::disconnectFromBus(QStringLiteral("intruder"));

        server.click(shown.id);
        QTRY_COMPARE(clicks, 1);
        // A closed notification is forgotten: a second click does nothing.
        server.click(shown.id);
        QTest::qWait(100);
        QCOMPARE(clicks, 1);
        QCOMPARE(refusals, 0);
    }

    void aClickThatComesBeforeTheAnswerIsNotLost() {
        FakeNotificationServer server(m_address);
        QVERIFY(server.isRegistered());
        server.setClickingAtOnce(true);
        DesktopNotifier notifier;
        int firstClicks = 0;
        int secondClicks = 0;
        notifier.notify(
            "first", "body", [&] { ++firstClicks; }, [] {});
        notifier.notify(
            "second", "body", [&] { ++secondClicks; }, [] {});
        QTRY_COMPARE(firstClicks, 1);
        QTRY_COMPARE(secondClicks, 1);
        QTest::qWait(100);
        QCOMPARE(firstClicks, 1);
        QCOMPARE(secondClicks, 1);
    }

    void theRunningGameSendsADueNotificationToTheDesktop() {
        FakeNotificationServer server(m_address);
        QVERIFY(server.isRegistered());
        QTemporaryDir data;
        Application::Options options;
        options.profileRoot = data.path();
        options.service = QStringLiteral("http://127.0.0.1:9");
        options.offline = true;
        Application game(options);
        QVERIFY(game.start());
        // The tracking question of a first start and the offline prize message.
        QCOMPARE(Platform::shared().alerts().count(), 2);
        Platform::shared().alerts().press(0);
        Platform::shared().alerts().press(0);
        QQuickWindow* window = game.window();
        QVERIFY(window);
        window->hide();

        NotificationManager::sharedInstance().scheduleNotificationWithDelay(
            QStringLiteral("الحل الصحيح هو: قمر"), 0);
        QTRY_COMPARE_WITH_TIMEOUT(server.shown().size(), 1, 5000);
        QCOMPARE(server.shown().first().body, QStringLiteral("الحل الصحيح هو: قمر"));
        QVERIFY(!Platform::shared().alerts().isVisible());

        // The click brings the game forward and hands the notification over: the answer is shown.
        server.click(server.shown().first().id);
        QTRY_VERIFY(window->isVisible());
        QTRY_COMPARE(Platform::shared().alerts().title(), QStringLiteral("الحل الصحيح"));
        QCOMPARE(Platform::shared().alerts().message(), QStringLiteral("الحل الصحيح هو: قمر"));
        // Delivered to the desktop, not as the in-game banner, and gone from the schedule.
        QVERIFY(!Platform::shared().banner().isVisible());
        QVERIFY(!NotificationManager::sharedInstance().isWaitNotificationIsScheduled());

        // When the desktop will not show one, the game shows it as its own banner.
        Platform::shared().alerts().press(0);
        window->hide();
        server.setRefusing(true);
        NotificationManager::sharedInstance().scheduleNotificationWithDelay(
            QStringLiteral("الحل الصحيح هو: شمس"), 0);
        QTRY_VERIFY(Platform::shared().banner().isVisible());
        QCOMPARE(Platform::shared().banner().message(), QStringLiteral("الحل الصحيح هو: شمس"));
        QCOMPARE(server.shown().size(), 1);
        QVERIFY(!NotificationManager::sharedInstance().isWaitNotificationIsScheduled());
    }

private:
    QProcess m_bus;
    QString m_address;
};

QTEST_MAIN(DesktopNotificationsTest)
#include "DesktopNotificationsTest.moc"
