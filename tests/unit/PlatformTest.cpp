// The platform layer and the shared helpers: the settings store, notifications, timers, navigation, alerts,
// dates and number formatting.
#include "TestPlatform.h"
#include "core/GameViewController.h"
#include "progress/TutorialAlertsManager.h"
#include "screens/ColorUtil.h"
#include "screens/FrameUtils.h"
#include "screens/Util.h"

#include <QFile>
#include <QTimeZone>
#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(Settings, WrittenThroughAndReadAfterARestart) {
    TestPlatform platform;
    platform.defaults().setIntegerForKey(1234567890123LL, "big");
    platform.defaults().setBoolForKey(true, "flag");
    platform.defaults().setStringForKey(QStringLiteral("نص"), "text");
    // Another reader of the same file sees every change at once, without any explicit save.
    UserDefaults other(platform.settingsPath());
    EXPECT_EQ(other.integerForKey("big"), 1234567890123LL);
    EXPECT_TRUE(other.boolForKey("flag"));
    EXPECT_EQ(other.stringForKey("text"), QStringLiteral("نص"));

    platform.restart();
    EXPECT_EQ(platform.defaults().integerForKey("big"), 1234567890123LL);
    EXPECT_FALSE(platform.defaults().boolForKey("absent"));
    EXPECT_EQ(platform.defaults().integerForKey("absent"), 0);
}

TEST(Settings, ValuesOfTheWrongTypeReadAsDefaults) {
    TestPlatform platform;
    {
        QFile f(platform.settingsPath());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write("[General]\ncurrentLevel=seven\nrandomIndex=12.9\nFirstLevelTutorial=maybe\n"
                "huge=1e300\nnegative=-1e19\nnotANumber=nan\ninfinite=inf\nlowest=-9223372036854775808\n");
    }
    platform.restart();
    EXPECT_EQ(platform.defaults().integerForKey("currentLevel"), 0);
    EXPECT_EQ(platform.defaults().integerForKey("randomIndex"), 12);
    // Numbers beyond a 64-bit integer are no numbers of the game.
    for (const char* key : {"huge", "negative", "notANumber", "infinite"}) {
        EXPECT_EQ(platform.defaults().integerForKey(key), 0) << key;
    }
    EXPECT_EQ(platform.defaults().integerForKey("lowest"), std::numeric_limits<qint64>::min());
    EXPECT_FALSE(TutorialAlertsManager::sharedInstance().isAlertShownWithId("FirstLevelTutorial"));
    TutorialAlertsManager::sharedInstance().setAlertShownWithId("FirstLevelTutorial");
    platform.restart();
    EXPECT_TRUE(TutorialAlertsManager::sharedInstance().isAlertShownWithId("FirstLevelTutorial"));
}

TEST(Notifications, ObserversByNameAndRemoval) {
    NotificationCenter center;
    QStringList calls;
    int a = 0, b = 0;
    center.addObserver(&a, "n", [&](const Notification& n) {
        calls << "a:" + n.userInfo.value("k").toString();
        center.removeObserver(&b);
    });
    center.addObserver(&b, "n", [&](const Notification&) { calls << "b"; });
    center.addObserver(&b, "other", [&](const Notification&) { calls << "other"; });
    center.postNotificationName("n", {}, {{"k", "v"}});
    // b was removed by a during the same post and is not called.
    EXPECT_EQ(calls, QStringList{"a:v"});
    EXPECT_EQ(center.observerCount("other"), 0);
    center.removeObserver(&a, "n");
    center.postNotificationName("n");
    EXPECT_EQ(calls.size(), 1);
}

TEST(Timers, RepeatingTimerFiresOnTheTestClockUntilInvalidated) {
    TestPlatform platform;
    int ticks = 0;
    auto timer = Timer::scheduledTimerWithTimeInterval(0.1, true, [&] { ++ticks; });
    platform.scheduler().advance(1.0);
    EXPECT_EQ(ticks, 10);
    timer->fire();
    EXPECT_EQ(ticks, 11);
    timer->invalidate();
    platform.scheduler().advance(1.0);
    EXPECT_EQ(ticks, 11);
    EXPECT_EQ(platform.scheduler().pendingCount(), 0);

    int once = 0;
    auto single = Timer::scheduledTimerWithTimeInterval(2.0, false, [&] { ++once; });
    single->fire();
    EXPECT_FALSE(single->isValid());
    platform.scheduler().advance(3.0);
    EXPECT_EQ(once, 1);

    // A delayed block runs once at its time; a null block is skipped.
    int delayed = 0;
    Util::delayCallbackForTotalSeconds([&] { ++delayed; }, 0.5);
    Util::delayCallbackForTotalSeconds(nullptr, 0.5);
    platform.scheduler().advance(0.49);
    EXPECT_EQ(delayed, 0);
    platform.scheduler().advance(0.01);
    EXPECT_EQ(delayed, 1);
}

TEST(Navigation, StackAndPresentedScreens) {
    TestPlatform platform;
    auto& nav = Platform::shared().navigator();
    auto* root = new ViewController("Root");
    auto* second = new ViewController("Second");
    auto* popup = new ViewController("Popup");
    nav.setRootViewController(root);
    EXPECT_FALSE(nav.popViewController());
    nav.pushViewController(second);
    EXPECT_EQ(Util::getTopNavViewController(), second);
    EXPECT_EQ(Util::getRootViewController(), root);
    nav.presentViewController(popup);
    EXPECT_EQ(Util::getCurrentPresentedViewController(), popup);
    nav.dismissViewController();
    EXPECT_EQ(Util::getCurrentPresentedViewController(), second);
    EXPECT_TRUE(nav.popViewController());
    EXPECT_EQ(nav.depth(), 1);
    EXPECT_EQ(nav.instantiateViewControllerWithIdentifier("Unknown"), nullptr);
}

TEST(Messages, OneButtonOkCancelAndDismissal) {
    TestPlatform platform;
    auto& alerts = platform.alerts();
    int dismissed = 0, ok = 0;
    Util::showMessageWithTitle("m1", "t1");
    Util::showMessageWithTitleOnDismiss("m2", "t2", [&] { ++dismissed; });
    Util::showMessageWithTitleOnDismiss("m3", "t3", nullptr);
    Util::showMessageWithTitleOnOk("m4", "t4", [&] { ++ok; });
    Util::showMessageWithTitleOnOk("m5", "t5", [&] { ++ok; });
    ASSERT_EQ(alerts.count(), 5);
    EXPECT_EQ(alerts.buttons(), QStringList{"موافق"});
    EXPECT_FALSE(alerts.press(1));
    EXPECT_TRUE(alerts.press(0));
    EXPECT_EQ(alerts.title(), "t2");
    EXPECT_TRUE(alerts.press(0));
    EXPECT_EQ(dismissed, 1);
    EXPECT_TRUE(alerts.press(0));
    EXPECT_EQ(alerts.buttons(), (QStringList{"الغاء", "موافق"}));
    EXPECT_TRUE(alerts.pressTitled("الغاء"));
    EXPECT_EQ(ok, 0);
    EXPECT_TRUE(alerts.pressTitled("موافق"));
    EXPECT_EQ(ok, 1);
    EXPECT_FALSE(alerts.isVisible());
}

TEST(Dates, DaysHoursAndTheSameDay) {
    const QDateTime a(QDate(2026, 5, 1), QTime(10, 0));
    const QDateTime b = a.addSecs(47 * 3600);
    EXPECT_EQ(Util::daysBetween(a, b), 1);
    EXPECT_EQ(Util::daysBetween(b, a), -1);
    EXPECT_EQ(Util::daysBetween(a, a.addSecs(48 * 3600)), 2);
    EXPECT_EQ(Util::hoursBetween(b, a), 47);
    EXPECT_EQ(Util::hoursBetween(a, b), -47);
    EXPECT_EQ(Util::hoursBetween(a.addSecs(3599), a), 0);

    const QDateTime beforeMidnight(QDate(2026, 5, 1), QTime(23, 58));
    EXPECT_FALSE(Util::isTwoDatesSameDay(beforeMidnight, beforeMidnight.addSecs(240)));
    EXPECT_TRUE(Util::isTwoDatesSameDay(a, a.addSecs(3600)));
}

TEST(Numbers, GroupingAndLeadingNumbers) {
    EXPECT_EQ(Util::formatLongNumber(1234567), QStringLiteral("1,234,567"));
    EXPECT_EQ(Util::formatLongNumber(-1234), QStringLiteral("-1,234"));
    // Printf-style texts take their arguments in order; a percent sign stays one.
    EXPECT_EQ(Util::stringWithFormat(QStringLiteral("%lu %@ و %lu"), {"900", "ذهبة", "5"}), "900 ذهبة و 5");
    EXPECT_EQ(Util::stringWithFormat(QStringLiteral("%d%% من %@"), {"7"}), "7% من ");
    EXPECT_EQ(Util::stringWithFormat(QStringLiteral("%1 بلا مكان"), {"x"}), "%1 بلا مكان");
    EXPECT_EQ(Util::formatLongNumber(0), QStringLiteral("0"));
    EXPECT_EQ(Util::formatLongNumber(std::numeric_limits<qint64>::min()),
              QStringLiteral("-9,223,372,036,854,775,808"));
    EXPECT_EQ(Util::intValue("  -42abc"), -42);
    EXPECT_EQ(Util::intValue("abc"), 0);
    EXPECT_EQ(Util::intValue("99999999999"), std::numeric_limits<qint32>::max());
    EXPECT_DOUBLE_EQ(Util::doubleValue(" 70.9 dollars"), 70.9);
    EXPECT_DOUBLE_EQ(Util::doubleValue("x"), 0.0);
    EXPECT_EQ(Util::sumLongArray({1, 2, 4294967297LL}), 4);
    EXPECT_TRUE(Util::isStringContainedInArray("b", {"a", "b"}));
}

TEST(Shuffles, ForwardFisherYatesDrawsModuloTheRemainder) {
    TestPlatform platform;
    // i=0 swaps with 0 + 5 % 4 = 1; i=1 with 1 + 0; i=2 with 2 + 1 % 2 = 3; i=3 with 3.
    platform.random().queue({5, 0, 1, 7});
    QList<int> values{10, 20, 30, 40};
    Util::shuffleArray(values);
    EXPECT_EQ(values, (QList<int>{20, 10, 40, 30}));
    EXPECT_EQ(Util::shuffleString(QString()), QString());
    platform.random().queue({1, 0});
    EXPECT_EQ(Util::shuffleString(QStringLiteral("اب")), QStringLiteral("با"));
}

TEST(Device, ClassByTheShorterSideAndTheRatio) {
    EXPECT_EQ(Device::classForWindowSize({375, 750}), Device::TallPhone);
    EXPECT_EQ(Device::classForWindowSize({375, 667}), Device::Phone);
    EXPECT_EQ(Device::classForWindowSize({1024, 600}), Device::Tablet);
}

TEST(Connection, ForcedOfflineAndTheChangeNotification) {
    TestPlatform platform;
    EXPECT_TRUE(Util::isConnected());
    int changes = 0;
    Platform::shared().notificationCenter().addObserver(&changes, kReachabilityChangedNotification,
                                                        [&](const Notification&) { ++changes; });
    platform.reachability().setForcedOffline(true);
    EXPECT_FALSE(Util::isConnected());
    EXPECT_EQ(changes, 0); // the notifier is not started yet
    platform.reachability().startNotifier();
    platform.reachability().setForcedOffline(false);
    platform.reachability().setSystemReachable(false);
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(platform.reachability().currentReachabilityStatus(), 0);
}

TEST(Colours, UnknownColoursAndFramesOfNothing) {
    EXPECT_FALSE(ColorUtil::getColorWithType(4).has_value());
    EXPECT_FALSE(ColorUtil::getColorWithType(-1).has_value());
    EXPECT_EQ(FrameUtils::fixFrameDim(std::nan("")), 0.0);
    EXPECT_EQ(FrameUtils::fixFrame({1.4, 2.6, 3.5, std::nan("")}), QRectF(1, 3, 4, 0));
    EXPECT_EQ(FrameUtils::frameCenterInFrame({5, 5, 10, 20}, {0, 0, 100, 50}), QRectF(45, 15, 10, 20));
}

} // namespace
