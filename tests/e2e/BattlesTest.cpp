// Battles between two profiles of this machine through a service that runs inside the test, so that its clock
// can be moved: a challenge from a player's details and its answer, the 24-hour rule, a refused stranger, and
// an automatic battle, with both sides' points and counters; and gold asked for, given and refused, with both
// balances at each step.
#include "TwoPlayers.h"
#include "multiplayer/BattlesViewController.h"
#include "multiplayer/ExchangesViewController.h"
#include "multiplayer/GCPlayerViewController.h"
#include "multiplayer/GameCenterSwipeViewControllers.h"
#include "multiplayer/RandomBattleViewController.h"
#include "platform/gamekit/GKFriendRequestComposeViewController.h"
#include "progress/CreditsManager.h"
#include "support.h"

namespace {

class Battles : public TwoPlayers {
protected:
    void SetUp() override {
        service = std::make_unique<tarvolin::testing::TestService>("sqlite");
        platform.setServiceUrl(QStringLiteral("http://127.0.0.1:%1").arg(service->port()));
        enter(QString());
    }

    // The front alert, once it has this title; pressed away.
    void dismiss(const QString& title) {
        auto& alerts = Platform::shared().alerts();
        ASSERT_TRUE(QTest::qWaitFor([&] { return alerts.isVisible() && alerts.title() == title; }, 15000))
            << "waited for \"" << title.toStdString() << "\", saw \"" << alerts.title().toStdString() << "\"";
        alerts.press(0);
    }

    // Plays the battle level now on screen: solved in time, or left.
    void playBattle(bool solve) {
        auto& nav = Platform::shared().navigator();
        GameViewController* play = nullptr;
        ASSERT_TRUE(QTest::qWaitFor(
            [&] {
                return (play = qobject_cast<GameViewController*>(nav.presentedViewController())) != nullptr;
            },
            5000));
        ASSERT_GE(play->battleGameType, 1);
        Platform::shared().alerts().press(0); // the rule
        if (!solve) {
            play->closeBattleButtonTapped();
            Platform::shared().alerts().pressTitled(QStringLiteral("موافق"));
            return;
        }
        QList<LetterLabel*> used;
        for (const QChar c : play->game->levelInfo()->solution) {
            for (LetterLabel* t : std::as_const(play->lettersLabels)) {
                if (t->text() == QString(c) && !used.contains(t)) {
                    used.append(t);
                    play->tapTile(static_cast<int>(play->lettersLabels.indexOf(t)));
                    break;
                }
            }
        }
        platform.animator().completeAll();
        ASSERT_TRUE(
            QTest::qWaitFor([] { return Platform::shared().alerts().title() == "اجابة صحيحة"; }, 5000))
            << "the level was not solved; the alert says "
            << Platform::shared().alerts().title().toStdString();
        Platform::shared().alerts().press(0);
    }

    // The logged-in player of a profile, back in the game.
    void comeBack(const QString& profile) {
        enter(profile);
        Platform::shared().navigator().setRootViewController(new MainViewController());
        ASSERT_TRUE(
            QTest::qWaitFor([] { return GKLocalPlayer::localPlayer().events().isConnected(); }, 15000));
    }

    // Challenges a player from his details: the level is played first, then the challenge goes out.
    void challenge(const QString& playerID, const QString& name, bool solve) {
        GKScore score;
        score.player = GKPlayer{playerID, name, false, {}};
        auto* details = new GCPlayerViewController();
        details->setScore(score);
        Platform::shared().navigator().presentViewController(details);
        details->sendBattleRequest(QStringLiteral("هل تقدرين عليها؟"));
        dismiss(QStringLiteral("معركة تحدي مع لاعب اخر"));
        playBattle(solve);
    }

    // The notice of Omar's challenge: it leads to the battles page, which is closed again.
    void closeChallengeNotice() {
        dismiss(QStringLiteral("عمر يتحداك في معركة!"));
        ASSERT_TRUE(QTest::qWaitFor(
            [] {
                return qobject_cast<GameCenterSwipeViewControllers*>(
                    Platform::shared().navigator().presentedViewController());
            },
            5000));
        Platform::shared().navigator().dismissViewController();
    }

    static qint64 points() { return ScorePointsManager::sharedInstance().totalPoints(); }
    static qint64 gold() { return CreditsManager::sharedInstance().currentCredits(); }

    // Asks a player for gold from his details.
    void askForGold(const QString& playerID, const QString& name) {
        GKScore score;
        score.player = GKPlayer{playerID, name, false, {}};
        auto* details = new GCPlayerViewController();
        details->setScore(score);
        Platform::shared().navigator().presentViewController(details);
        details->sendExchangeRequest(QStringLiteral("ينقصني ذهب"));
    }

    // The notice of a request for gold leads to the exchanges page, with the request in it.
    ExchangesViewController* exchangesFromNotice(const QString& title) {
        dismiss(title);
        ExchangesViewController* page = nullptr;
        EXPECT_TRUE(QTest::qWaitFor(
            [&page] {
                auto* pages = qobject_cast<GameCenterSwipeViewControllers*>(
                    Platform::shared().navigator().presentedViewController());
                page = pages ? qobject_cast<ExchangesViewController*>(
                                   pages->viewControllerArray().value(pages->currentPageIndex()))
                             : nullptr;
                return page && !page->receivedExchanges.isEmpty();
            },
            10000));
        return page;
    }

    std::unique_ptr<tarvolin::testing::TestService> service;
};

TEST_F(Battles, AChallengeItsAnswerTheDayRuleAStrangerAndAnAutomaticBattle) {
    const TwoAccounts accounts = twoAccounts("reem", QStringLiteral("ريم"), "omar", QStringLiteral("عمر"));
    const QString reem = accounts.other;
    const QString omar = accounts.local;
    RawPlayer reemOutside(service->port(), accounts.otherToken);
    befriendFrom(reemOutside, omar);
    // The ladder's amounts, read afresh: each profile switch makes new managers.
    const auto win = [] { return RankManager::sharedInstance().getBattleWinPoints(); };
    const auto loss = [] { return RankManager::sharedInstance().getBattleLossPoints(); };

    // Omar solves his level in time and challenges Reem.
    ScorePointsManager::sharedInstance().addPoints(20);
    challenge(reem, QStringLiteral("ريم"), true);
    dismiss(QStringLiteral("تم الارسال"));

    // Reem is told when she comes back, answers from her battles page, and leaves the level: she loses.
    comeBack("reem");
    ScorePointsManager::sharedInstance().addPoints(20);
    dismiss(QStringLiteral("عمر يتحداك في معركة!"));
    auto* pages = qobject_cast<GameCenterSwipeViewControllers*>(
        Platform::shared().navigator().presentedViewController());
    ASSERT_NE(pages, nullptr);
    auto* list =
        qobject_cast<BattlesViewController*>(pages->viewControllerArray().at(pages->currentPageIndex()));
    ASSERT_NE(list, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([list] { return list->openBattles.size() == 1; }, 10000));
    list->playBattleButtonTapped(0, QStringLiteral("في المرة القادمة"));
    dismiss(QStringLiteral("العب دورك"));
    playBattle(false);
    dismiss(QStringLiteral("خسارة"));
    EXPECT_EQ(points(), 20 + loss());
    EXPECT_EQ(UserStatsManager::sharedInstance().totalLosses(), 1);

    // Omar hears of the end and wins.
    comeBack("omar");
    dismiss(QStringLiteral("فوز!"));
    EXPECT_EQ(points(), 20 + win());
    EXPECT_EQ(UserStatsManager::sharedInstance().totalWins(), 1);

    // A second challenge that Reem leaves alone: a day later the turn comes back to Omar, who wins.
    challenge(reem, QStringLiteral("ريم"), false);
    dismiss(QStringLiteral("تم الارسال"));
    service->advance(86'400'000 + 1);
    EXPECT_EQ(service->api().expireDueTurns(), 1u);
    dismiss(QStringLiteral("فوز!"));
    EXPECT_EQ(points(), 20 + 2 * win());
    EXPECT_EQ(UserStatsManager::sharedInstance().totalWins(), 2);

    // A stranger cannot be challenged.
    const auto stranger = service->signUp("Stranger");
    challenge(QString::fromStdString(stranger.id), QStringLiteral("Stranger"), true);
    dismiss(QStringLiteral("خطأ"));

    // He asks to be friends instead, with the request written for him; asking twice is refused on the
    // request's screen, which stays until he gives up.
    auto& nav = Platform::shared().navigator();
    const auto askFriendship = [&nav, &stranger] {
        GKScore score;
        score.player = GKPlayer{QString::fromStdString(stranger.id), QStringLiteral("Stranger"), false, {}};
        auto* details = new GCPlayerViewController();
        details->setScore(score);
        nav.presentViewController(details);
        details->sendFriendshipRequest();
        return qobject_cast<GKFriendRequestComposeViewController*>(nav.presentedViewController());
    };
    auto* request = askFriendship();
    ASSERT_NE(request, nullptr);
    ASSERT_EQ(request->recipients().size(), 1);
    EXPECT_EQ(request->recipients().first().toMap()["name"], QStringLiteral("Stranger"));
    EXPECT_TRUE(request->message().startsWith(QStringLiteral("مرحبا Stranger لقد رأيت ترتيبك")));
    request->send();
    dismiss(QStringLiteral("تم ارسال طلب الصداقة"));
    EXPECT_TRUE(qobject_cast<GCPlayerViewController*>(nav.presentedViewController()));
    request = askFriendship();
    ASSERT_NE(request, nullptr);
    request->send();
    ASSERT_TRUE(QTest::qWaitFor([request] { return !request->busy(); }, 10000));
    EXPECT_EQ(request->status(), QStringLiteral("Stranger: أرسلت له طلبا من قبل، انتظر رده"));
    EXPECT_EQ(nav.presentedViewController(), request);
    request->cancel();
    EXPECT_TRUE(qobject_cast<GCPlayerViewController*>(nav.presentedViewController()));

    // An automatic battle: Omar opens it and plays first; Reem joins it, answers correctly and wins.
    auto* first = new RandomBattleViewController();
    Platform::shared().navigator().presentViewController(first);
    ASSERT_TRUE(QTest::qWaitFor([first] { return first->hasMatch(); }, 10000));
    EXPECT_TRUE(first->isNewMatch);
    first->playTheTurn(QStringLiteral("تعالوا"));
    dismiss(QStringLiteral("معركة تحدي مع لاعب اخر"));
    playBattle(false);
    dismiss(QStringLiteral("تم انشاء معركة بنجاح"));

    comeBack("reem");
    // The challenge she left alone is still told when she comes back (its day has gone); she looks and
    // closes.
    closeChallengeNotice();
    const qint64 before = points();
    auto* second = new RandomBattleViewController();
    Platform::shared().navigator().presentViewController(second);
    ASSERT_TRUE(QTest::qWaitFor([second] { return second->hasMatch(); }, 10000));
    EXPECT_FALSE(second->isNewMatch);
    EXPECT_EQ(second->senderMessage(), QStringLiteral("تعالوا"));
    // Taking the seat gives her the turn, and the game tells her of the challenge as of any other.
    closeChallengeNotice();
    second->playTheTurn(QStringLiteral("سهلة"));
    dismiss(QStringLiteral("العب دورك"));
    playBattle(true);
    dismiss(QStringLiteral("فوز!"));
    EXPECT_EQ(points(), before + win());
    EXPECT_EQ(UserStatsManager::sharedInstance().totalWins(), 1);

    // And Omar, back, loses it: two wins and a loss in all.
    comeBack("omar");
    dismiss(QStringLiteral("خسارة"));
    EXPECT_EQ(points(), 20 + 2 * win() + loss());
    EXPECT_EQ(UserStatsManager::sharedInstance().totalLosses(), 1);
    EXPECT_EQ(UserStatsManager::sharedInstance().totalWins(), 2);
}

TEST_F(Battles, GoldAskedGivenAndRefusedWithBothBalancesAtEachStep) {
    const TwoAccounts accounts = twoAccounts("huda", QStringLiteral("هدى"), "omar", QStringLiteral("عمر"));
    RawPlayer hudaOutside(service->port(), accounts.otherToken);
    befriendFrom(hudaOutside, accounts.local);
    const qint64 start = gold();

    // Omar asks; a second request while the first is open is refused by the service.
    askForGold(accounts.other, QStringLiteral("هدى"));
    dismiss(QStringLiteral("تم الارسال"));
    askForGold(accounts.other, QStringLiteral("هدى"));
    dismiss(QStringLiteral("مهلا"));
    Platform::shared().navigator().dismissViewController();
    EXPECT_EQ(gold(), start);

    // Huda gives 30 from the exchanges page: the gold leaves her then.
    comeBack("huda");
    const qint64 hudaStart = gold();
    ExchangesViewController* page = exchangesFromNotice(QStringLiteral("عمر يطلب منك بعض الذهبات"));
    ASSERT_NE(page, nullptr);
    page->stepperTapped(0, 30);
    page->sendGoldButtonTapped(0, QStringLiteral("تفضل"));
    dismiss(QStringLiteral("تم الارسال"));
    EXPECT_EQ(gold(), hudaStart - 30);

    // Omar hears of it and has the gold once the message is closed.
    comeBack("omar");
    EXPECT_EQ(gold(), start);
    dismiss(QStringLiteral("وصلتك 30 ذهبة من صديقك"));
    EXPECT_EQ(gold(), start + 30);

    // He asks again, she refuses: nothing moves on either side.
    askForGold(accounts.other, QStringLiteral("هدى"));
    dismiss(QStringLiteral("تم الارسال"));
    comeBack("huda");
    page = exchangesFromNotice(QStringLiteral("عمر يطلب منك بعض الذهبات"));
    ASSERT_NE(page, nullptr);
    // The service's clock stands still here: the answered request and the new one share their time.
    int open = -1;
    for (int i = 0; i < page->rows().size(); ++i) {
        if (page->rows().at(i).toMap().value("kind") == "ReceivedRequestCell") {
            open = i;
        }
    }
    ASSERT_GE(open, 0);
    page->rejectButtonTapped(open, QStringLiteral("ليس الآن"));
    dismiss(QStringLiteral("رفض"));
    EXPECT_EQ(gold(), hudaStart - 30);
    comeBack("omar");
    dismiss(QStringLiteral("اعتذر صديقك عن إرسال الذهب"));
    EXPECT_EQ(gold(), start + 30);
}

} // namespace
