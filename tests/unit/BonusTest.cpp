// Sessions and active days, and the usage bonuses paid by the service's date: first start, same day, next
// day, weeks and months of use, the end of the history, time zones and daylight saving, a moved device clock,
// no connection, a bad date.
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "platform/Dispatch.h"
#include "progress/BonusManager.h"
#include "progress/CreditsManager.h"
#include "progress/SessionManager.h"

#include <QCoreApplication>
#include <QTimeZone>
#include <gtest/gtest.h>

namespace {

const QString kDaily = QStringLiteral("لقد ربحت 25 ذهبة بفضل استخدامك اليومي\n");
const QString kWeekly = QStringLiteral("لقد ربحت 50 ذهبة بفضل استخدامك الإسبوعي\n");
const QString kMonthly = QStringLiteral("لقد ربحت 100 ذهبة بفضل استخدامك الشهري\n");

QDateTime utc(int y, int m, int d, int h = 12, int min = 0) {
    return QDateTime(QDate(y, m, d), QTime(h, min), QTimeZone::utc());
}

class Bonuses : public ::testing::Test {
protected:
    // One check as the app delegate runs it: on a worker, with the message taken to the main thread.
    // Returns the gold it paid.
    qint64 check() {
        const qint64 before = CreditsManager::sharedInstance().currentCredits();
        Dispatch::asyncGlobal(&AppDelegate::checkForEntitledBonuses);
        Dispatch::waitForGlobal();
        QCoreApplication::sendPostedEvents();
        return CreditsManager::sharedInstance().currentCredits() - before;
    }
    QStringList messages() { return platform.takeMessages(); }
    QList<qint32> types() const {
        QList<qint32> t;
        for (const Bonus& b : BonusManager::sharedInstance().previousBonusList()) {
            t << b.type;
        }
        return t;
    }

    TestPlatform platform;
};

TEST_F(Bonuses, FirstStartSeedsTheHistoryAndTheNextServerDayPaysOnceWithOneLine) {
    platform.web().answerWithDate(utc(2026, 3, 14, 9));
    CreditsManager::sharedInstance();
    EXPECT_EQ(check(), 0);
    EXPECT_TRUE(messages().isEmpty());
    ASSERT_EQ(BonusManager::sharedInstance().previousBonusList().size(), 1);
    EXPECT_EQ(BonusManager::sharedInstance().previousBonusList().first(),
              Bonus::initWithDayType(utc(2026, 3, 14, 9), Bonus::Daily));
    EXPECT_EQ(platform.web().lastMethod(), "HEAD");
    EXPECT_EQ(platform.web().lastUrl().path(), "/");

    // Two starts later the same server day: nothing.
    platform.web().answerWithDate(utc(2026, 3, 14, 22));
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(check(), 0);
    EXPECT_TRUE(messages().isEmpty());

    platform.web().answerWithDate(utc(2026, 3, 15, 8));
    EXPECT_EQ(check(), 25);
    EXPECT_EQ(messages(), QStringList{"مبروووك|" + kDaily});
    EXPECT_EQ(check(), 0);

    // The history outlives a restart.
    platform.restart();
    platform.web().answerWithDate(utc(2026, 3, 15, 23));
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(types(), (QList<qint32>{1, 1}));
}

TEST_F(Bonuses, UnbrokenDailyUsePaysWeeksAndMonthsOnTheirDaysAndStopsWhenTheHistoryIsFull) {
    QList<int> weekly, monthly, paidDays;
    for (int day = 1; day <= 90; ++day) {
        platform.web().answerWithDate(utc(2026, 1, 1).addDays(day - 1));
        const qint64 gold = check();
        const QStringList shown = messages();
        if (gold == 0) {
            EXPECT_TRUE(shown.isEmpty()) << "day " << day;
            continue;
        }
        paidDays << day;
        ASSERT_EQ(shown.size(), 1);
        QString expected = kDaily;
        qint64 expectedGold = 25;
        const QList<qint32> today = [&] {
            QList<qint32> t = types();
            return t.mid(t.lastIndexOf(1));
        }();
        if (today.contains(2)) {
            weekly << day;
            expected += kWeekly;
            expectedGold += 50;
        }
        if (today.contains(3)) {
            monthly << day;
            expected += kMonthly;
            expectedGold += 100;
        }
        EXPECT_EQ(shown.first(), "مبروووك|" + expected) << "day " << day;
        EXPECT_EQ(gold, expectedGold) << "day " << day;
    }
    EXPECT_EQ(weekly, (QList<int>{6, 12, 17, 23, 29, 34, 40, 45, 51, 57, 62, 68, 74, 80}));
    EXPECT_EQ(monthly, (QList<int>{15, 29, 44, 58, 73}));
    // Day 82 fills the history to 101 records: it is paid, the history is emptied, and no bonus comes again.
    EXPECT_EQ(paidDays.first(), 2);
    EXPECT_EQ(paidDays.last(), 82);
    EXPECT_EQ(paidDays.size(), 81);
    EXPECT_TRUE(BonusManager::sharedInstance().previousBonusList().isEmpty());
    EXPECT_TRUE(platform.defaults().hasKey(BonusManager::kBonusListKey));
}

TEST_F(Bonuses, TheSeventeenthRecordBringsTheMonthAfterTheWeek) {
    // A seed and fifteen days without a weekly record, then a day on which both tests pass.
    QList<Bonus> history;
    for (int i = 0; i < 16; ++i) {
        history << Bonus::initWithDayType(utc(2026, 1, 1).addDays(i), Bonus::Daily);
    }
    platform.defaults().setStringForKey(QString::fromUtf8(BonusManager::archiveBonuses(history)),
                                        BonusManager::kBonusListKey);
    platform.web().answerWithDate(utc(2026, 1, 17));
    EXPECT_EQ(check(), 175);
    EXPECT_EQ(messages(), QStringList{"مبروووك|" + kDaily + kWeekly + kMonthly});
    EXPECT_EQ(types().mid(16), (QList<qint32>{1, 2, 3}));
}

TEST_F(Bonuses, ALongAbsenceStillPaysTheWeekUntilTheSpanIsTooLong) {
    // Five records spread over 115 days: the sixth still makes a week; over 117 days it does not.
    const auto history = [](int spanDays) {
        QList<Bonus> h;
        for (int i = 0; i < 5; ++i) {
            h << Bonus::initWithDayType(utc(2026, 1, 1).addDays(i * spanDays / 5), Bonus::Daily);
        }
        return h;
    };
    auto& bonuses = BonusManager::sharedInstance();
    bonuses.setPreviousBonusList(history(100) << Bonus{utc(2026, 1, 1).addDays(116), 1});
    EXPECT_TRUE(bonuses.isEntitledForWeeklyBonus(utc(2026, 1, 1).addDays(116)));
    bonuses.setPreviousBonusList(history(100) << Bonus{utc(2026, 1, 1).addDays(117), 1});
    EXPECT_FALSE(bonuses.isEntitledForWeeklyBonus(utc(2026, 1, 1).addDays(117)));
    // A weekly record among the last six stops the next one.
    QList<Bonus> withWeek = history(5);
    withWeek[2].type = Bonus::Weekly;
    bonuses.setPreviousBonusList(withWeek << Bonus{utc(2026, 1, 7), 1});
    EXPECT_FALSE(bonuses.isEntitledForWeeklyBonus(utc(2026, 1, 7)));
    EXPECT_FALSE(bonuses.isEntitledForDailyBonus(utc(2026, 1, 7, 23)));
    bonuses.setPreviousBonusList({});
    EXPECT_FALSE(bonuses.isEntitledForDailyBonus(utc(2026, 1, 7)));
}

TEST_F(Bonuses, TheServerDateCountsNotTheDeviceClock) {
    platform.web().answerWithDate(utc(2026, 3, 14));
    check();
    // The device moves a day on; the service does not.
    platform.scheduler().advance(86400 * 2);
    EXPECT_EQ(check(), 0);
    // The service's date a day before the last record's is another day, and pays.
    platform.web().answerWithDate(utc(2026, 3, 13));
    EXPECT_EQ(check(), 25);
    EXPECT_EQ(messages().size(), 1);
}

TEST_F(Bonuses, NoDateMeansNoBonusAndNoMessage) {
    CreditsManager::sharedInstance();
    // A first start without an answer seeds a record without a date.
    EXPECT_EQ(check(), 0);
    ASSERT_EQ(BonusManager::sharedInstance().previousBonusList().size(), 1);
    EXPECT_FALSE(BonusManager::sharedInstance().previousBonusList().first().bonusDay.isValid());

    const auto answer = [&](int status, const QByteArray& date) {
        WebResponse r;
        r.received = true;
        r.status = status;
        if (!date.isNull()) {
            r.headers.insert("date", date);
        }
        platform.web().answerAlways(r);
        return check();
    };
    // No header, one that is no date (the forms are the date parser's tests), or an answer that is no
    // success.
    EXPECT_EQ(answer(200, QByteArray()), 0);
    EXPECT_EQ(answer(200, "Mon, 15 Mar 2026 10:00:00 GMT"), 0); // the 15th was a Sunday
    EXPECT_EQ(answer(503, "Sun, 15 Mar 2026 10:00:00 GMT"), 0);
    EXPECT_TRUE(messages().isEmpty());
    EXPECT_EQ(BonusManager::sharedInstance().previousBonusList().size(), 1);

    // The next good date finds the seed different and pays.
    EXPECT_EQ(answer(200, "Sun, 15 Mar 2026 10:00:00 GMT"), 25);
}

TEST_F(Bonuses, ADayEndsAtTheZonesMidnightAndDaylightSavingMovesNoDay) {
    // Riyadh is three hours ahead: 21:30 UTC is already tomorrow there.
    platform.scheduler().setTimeZone(QTimeZone("Asia/Riyadh"));
    platform.web().answerWithDate(utc(2026, 3, 14, 20, 30));
    check();
    platform.web().answerWithDate(utc(2026, 3, 14, 21, 30));
    EXPECT_EQ(check(), 25);
    platform.web().answerWithDate(utc(2026, 3, 15, 20, 59));
    EXPECT_EQ(check(), 0);
    messages();

    // New York's autumn day of 25 hours: 00:10 and 23:50 are one day though 24 h 40 min apart.
    BonusManager::sharedInstance().setPreviousBonusList({});
    platform.defaults().removeObjectForKey(BonusManager::kBonusListKey);
    platform.scheduler().setTimeZone(QTimeZone("America/New_York"));
    const QTimeZone ny("America/New_York");
    platform.web().answerWithDate(QDateTime(QDate(2026, 11, 1), QTime(0, 10), ny));
    check();
    platform.web().answerWithDate(QDateTime(QDate(2026, 11, 1), QTime(23, 50), ny));
    EXPECT_EQ(check(), 0);
    // Its spring day of 23 hours: 23:30 the day before and 23:30 that day are two days 23 hours apart.
    platform.web().answerWithDate(QDateTime(QDate(2027, 3, 13), QTime(23, 30), ny));
    EXPECT_EQ(check(), 25);
    platform.web().answerWithDate(QDateTime(QDate(2027, 3, 14), QTime(23, 30), ny));
    EXPECT_EQ(check(), 25);
}

TEST_F(Bonuses, AnUnreadableHistoryStartsAgainAndIsKeptAside) {
    platform.defaults().setStringForKey("[{\"type\": \"daily\"}", BonusManager::kBonusListKey);
    platform.web().answerWithDate(utc(2026, 3, 14));
    EXPECT_EQ(check(), 0);
    EXPECT_EQ(types(), QList<qint32>{1});
    EXPECT_EQ(platform.defaults().stringForKey("bonusList.unreadable"), "[{\"type\": \"daily\"}");
    EXPECT_FALSE(BonusManager::unarchiveBonuses("[{\"bonusDay\": \"soon\", \"type\": 1}]"));
    EXPECT_FALSE(BonusManager::unarchiveBonuses("{}"));
    // A type that is no 32-bit whole number is refused rather than cut down.
    EXPECT_FALSE(BonusManager::unarchiveBonuses("[{\"type\": 1e300}]"));
    EXPECT_FALSE(BonusManager::unarchiveBonuses("[{\"type\": 4294967297}]"));
    EXPECT_FALSE(BonusManager::unarchiveBonuses("[{\"type\": 1.5}]"));
    EXPECT_TRUE(BonusManager::unarchiveBonuses("[]")->isEmpty());
}

TEST_F(Bonuses, MessagesAndGoldOfAList) {
    EXPECT_FALSE(BonusManager::getBonusListMessage(std::nullopt));
    EXPECT_FALSE(BonusManager::getBonusListMessage(QList<Bonus>{}));
    EXPECT_EQ(BonusManager::getBonusListCredits(std::nullopt), 0);
    const QList<Bonus> list{{utc(2026, 1, 1), 3}, {utc(2026, 1, 1), 7}, {utc(2026, 1, 1), 1}};
    EXPECT_EQ(*BonusManager::getBonusListMessage(list), kMonthly + kDaily);
    EXPECT_EQ(BonusManager::getBonusListCredits(list), 125);
    // On the main thread the gold is paid and nothing is said.
    platform.web().answerWithDate(utc(2026, 3, 14));
    AppDelegate::checkForEntitledBonuses();
    platform.web().answerWithDate(utc(2026, 3, 15));
    const qint64 before = CreditsManager::sharedInstance().currentCredits();
    AppDelegate::checkForEntitledBonuses();
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits() - before, 25);
    EXPECT_FALSE(platform.alerts().isVisible());
}

// Sessions and the launch and foreground sequences.
class Sessions : public Bonuses {
protected:
    void relaunch(double afterSeconds) {
        const QDateTime at = Platform::shared().scheduler().now().addMSecs(qint64(afterSeconds * 1000));
        platform.restart();
        platform.scheduler().setNow(at);
    }
};

TEST_F(Sessions, FirstRunCountsASessionAndADayAndPaysNothing) {
    platform.web().answerWithDate(utc(2026, 3, 14));
    AppDelegate app;
    app.applicationDidFinishLaunchingWithOptions({});
    auto& sessions = SessionManager::sharedInstance();
    EXPECT_TRUE(sessions.isFirstLaunch());
    EXPECT_TRUE(sessions.isFirstSession());
    EXPECT_EQ(sessions.activeSessions(), 1);
    EXPECT_EQ(sessions.acitveDays(), 1);
    EXPECT_TRUE(sessions.isNewActiveDay());
    Dispatch::waitForGlobal();
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(messages().isEmpty());
    EXPECT_EQ(types(), QList<qint32>{1});
    EXPECT_EQ(platform.defaults().integerForKey("activeSessions"), 1);
    EXPECT_EQ(platform.defaults().integerForKey("activeDays"), 1);
    EXPECT_TRUE(platform.defaults().boolForKey("isLaunchedBefore"));
}

TEST_F(Sessions, ASessionLastsTenMinutesFromItsStart) {
    AppDelegate app;
    app.applicationDidFinishLaunchingWithOptions({});
    auto& sessions = SessionManager::sharedInstance();
    platform.scheduler().advance(600.0);
    EXPECT_FALSE(sessions.isNewSession());
    app.setApplicationIconBadgeNumber(4);
    app.applicationWillEnterForeground();
    EXPECT_EQ(sessions.activeSessions(), 1);
    EXPECT_EQ(app.applicationIconBadgeNumber(), 0);
    platform.scheduler().advance(0.1);
    EXPECT_TRUE(sessions.isNewSession());
    app.applicationWillEnterForeground();
    EXPECT_EQ(sessions.activeSessions(), 2);
    EXPECT_EQ(sessions.acitveDays(), 1);

    // A start five minutes later is no new session, but the session's start moves on.
    relaunch(300);
    AppDelegate again;
    again.applicationDidFinishLaunchingWithOptions({});
    EXPECT_FALSE(SessionManager::sharedInstance().isFirstLaunch());
    EXPECT_EQ(SessionManager::sharedInstance().activeSessions(), 2);
    EXPECT_FALSE(SessionManager::sharedInstance().isNewActiveDay());
    EXPECT_EQ(platform.defaults().stringForKey("lastSessionTime"),
              Platform::shared().scheduler().now().toUTC().toString(Qt::ISODateWithMs));

    // The next morning is a new day.
    relaunch(20 * 3600);
    AppDelegate tomorrow;
    tomorrow.applicationDidFinishLaunchingWithOptions({});
    EXPECT_EQ(SessionManager::sharedInstance().activeSessions(), 3);
    EXPECT_EQ(SessionManager::sharedInstance().acitveDays(), 2);
    EXPECT_TRUE(SessionManager::sharedInstance().isNewActiveDay());
}

TEST_F(Sessions, AnUnreadableSessionTimeStartsANewSessionAndDay) {
    platform.defaults().setStringForKey("not a date", "lastSessionTime");
    auto& sessions = SessionManager::sharedInstance();
    EXPECT_TRUE(sessions.isNewSession());
    EXPECT_TRUE(sessions.checkNewActiveDay());
    sessions.checkAndLogSessionInfo();
    EXPECT_EQ(sessions.acitveDays(), 1);
    EXPECT_FALSE(sessions.isNewSession());
}

TEST_F(Sessions, OfflineTheLostPrizeIsToldOncePerRun) {
    platform.reachability().setForcedOffline(true);
    AppDelegate app;
    app.applicationDidFinishLaunchingWithOptions({});
    EXPECT_EQ(messages(), QStringList{AppDelegate::kPenaltyTitle + "|" + AppDelegate::kPenaltyMessage});
    EXPECT_TRUE(app.isPenaltyMessageShown);
    platform.scheduler().advance(700);
    app.applicationWillEnterForeground();
    EXPECT_TRUE(messages().isEmpty());
    EXPECT_EQ(SessionManager::sharedInstance().activeSessions(), 2);
    EXPECT_EQ(platform.web().requests(), 0);

    // Online at the start, offline at the next session: told then, once.
    relaunch(700);
    platform.web().answerWithDate(utc(2026, 3, 14));
    AppDelegate online;
    online.applicationDidFinishLaunchingWithOptions({});
    Dispatch::waitForGlobal();
    QCoreApplication::sendPostedEvents();
    EXPECT_TRUE(messages().isEmpty());
    platform.reachability().setForcedOffline(true);
    platform.scheduler().advance(700);
    online.applicationWillEnterForeground();
    EXPECT_EQ(messages(), QStringList{AppDelegate::kPenaltyTitle + "|" + AppDelegate::kPenaltyMessage});
    platform.scheduler().advance(700);
    online.applicationWillEnterForeground();
    EXPECT_TRUE(messages().isEmpty());
}

TEST_F(Sessions, ANewSessionOnANewServerDayPaysAtTheForeground) {
    platform.web().answerWithDate(utc(2026, 3, 14));
    AppDelegate app;
    app.applicationDidFinishLaunchingWithOptions({});
    Dispatch::waitForGlobal();
    QCoreApplication::sendPostedEvents();
    const qint64 before = CreditsManager::sharedInstance().currentCredits();
    platform.scheduler().advance(86400);
    platform.web().answerWithDate(utc(2026, 3, 15));
    app.applicationWillEnterForeground();
    Dispatch::waitForGlobal();
    QCoreApplication::sendPostedEvents();
    EXPECT_EQ(CreditsManager::sharedInstance().currentCredits() - before, 25);
    EXPECT_EQ(messages(), QStringList{"مبروووك|" + kDaily});
    EXPECT_EQ(SessionManager::sharedInstance().acitveDays(), 2);
}

} // namespace
