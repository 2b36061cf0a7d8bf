// Two players on one machine against a real tarvolin-service on loopback: both make accounts from the game's
// login screen, solve levels, befriend each other and see each other on the leaderboard with the right ranks;
// a restart keeps the login.
#include "TwoPlayers.h"
#include "multiplayer/GCPlayerViewController.h"
#include "multiplayer/GCRealTimeMatchHelper.h"
#include "multiplayer/RealTimeBattleStartViewController.h"
#include "platform/gamekit/GKFriendRequestComposeViewController.h"

namespace {

TEST_F(TwoPlayers, BothLogInSolveBefriendAndSeeEachOther) {
    const QString amal = QStringLiteral("أمل");
    const QString badr = QStringLiteral("بدر");

    // Amal: an account, two levels, first place.
    enter("amal");
    createAccount(amal);
    auto* first = solveNextLevel();
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(first->currentRankText(), "1");
    // The round selector's column of places per round learns it too.
    EXPECT_EQ(RankManager::sharedInstance().packsLastGcRanks.at(0), 1);
    solveNextLevel();
    EXPECT_EQ(GameCenterManager::sharedInstance().playerScore, 2);

    // Her achievements live on the service: a later, lower report never lowers one, and a load brings them
    // back.
    auto& gc = GameCenterManager::sharedInstance();
    gc.reportAchievementIdentifierPercentComplete("levels:2", 100.0f);
    gc.completeMultipleAchievements(
        {GKAchievement{"levels:2", 30.0, false, {}}, GKAchievement{"days:5", 40.0, false, {}}});
    // Reports leave in order; a load may still pass them on the way, so it is asked again until both are
    // there.
    std::optional<QList<GKAchievement>> achievements;
    for (int attempt = 0; attempt < 50 && (!achievements || achievements->size() < 2); ++attempt) {
        achievements.reset();
        GKAchievement::loadAchievementsWithCompletionHandler(
            [&achievements](auto list, auto) { achievements = list.value_or(QList<GKAchievement>{}); });
        ASSERT_TRUE(QTest::qWaitFor([&achievements] { return achievements.has_value(); }, 15000));
    }
    ASSERT_EQ(achievements->size(), 2);
    EXPECT_EQ(achievements->at(0).identifier, "days:5");
    EXPECT_EQ(achievements->at(1).percentComplete, 100.0);

    // Badr: an account and three levels put him above her; her place as seen from his game.
    enter("badr");
    createAccount(badr);
    solveNextLevel();
    solveNextLevel();
    auto* third = solveNextLevel();
    ASSERT_NE(third, nullptr);
    EXPECT_EQ(third->currentRankText(), "1");
    auto* global = leaderboard(false);
    EXPECT_EQ(names(global), (QStringList{"1:" + badr, "2:" + amal}));
    EXPECT_EQ(global->currentRankText(), "1");
    QString amalID;
    for (const QVariant& row : global->rows()) {
        if (row.toMap()["name"].toString() == amal) {
            amalID = row.toMap()["playerID"].toString();
        }
    }
    // Her picture, as the service draws it.
    QImage photo;
    bool loaded = false;
    GKPlayer{amalID, amal, false, {}}.loadPhotoWithCompletionHandler(
        [&](QImage image, std::optional<GKError>) {
            photo = image;
            loaded = true;
        });
    ASSERT_TRUE(QTest::qWaitFor([&loaded] { return loaded; }, 15000));
    EXPECT_EQ(photo.size(), QSize(128, 128));
    // A friend request from her row's details.
    for (int i = 0; i < global->rows().size(); ++i) {
        if (global->rows().at(i).toMap()["playerID"] == amalID) {
            global->openPlayer(i);
        }
    }
    auto* details =
        qobject_cast<GCPlayerViewController*>(Platform::shared().navigator().presentedViewController());
    ASSERT_NE(details, nullptr);
    details->sendFriendshipRequest();
    auto* request = qobject_cast<GKFriendRequestComposeViewController*>(
        Platform::shared().navigator().presentedViewController());
    ASSERT_NE(request, nullptr);
    request->send();
    ASSERT_TRUE(QTest::qWaitFor([] { return Platform::shared().alerts().isVisible(); }, 15000));
    EXPECT_EQ(Platform::shared().alerts().title(), QStringLiteral("تم ارسال طلب الصداقة"));
    Platform::shared().alerts().press(0);

    // Amal again: the game logs her in by itself, the request waits for her, and she accepts it.
    enter("amal");
    int friendEvents = 0;
    Platform::shared().notificationCenter().addObserver(
        &friendEvents, GKEventReceivedNotification, [&friendEvents](const Notification& n) {
            if (n.userInfo.value("event") == "friend_request") {
                ++friendEvents;
            }
        });
    auto* main = new MainViewController();
    Platform::shared().navigator().setRootViewController(main);
    ASSERT_TRUE(QTest::qWaitFor(
        [] { return GameCenterManager::sharedInstance().currentStatus == "AUTHENTICATED"; }, 15000));
    EXPECT_EQ(GKLocalPlayer::localPlayer().displayName(), amal);
    ASSERT_TRUE(QTest::qWaitFor([main] { return !main->notLoggedVisible(); }, 15000));
    EXPECT_EQ(main->playerRankLabel(), "2");
    // The request made while she was away arrives over the event channel, once.
    ASSERT_TRUE(QTest::qWaitFor([&friendEvents] { return friendEvents == 1; }, 15000));

    auto* account = new AccountViewController();
    Platform::shared().navigator().presentViewController(account);
    ASSERT_TRUE(QTest::qWaitFor([account] { return account->requests().size() == 1; }, 15000));
    EXPECT_EQ(account->requests().first().toMap()["name"].toString(), badr);
    account->answer(account->requests().first().toMap()["requestID"].toString(), true);
    ASSERT_TRUE(QTest::qWaitFor([account] { return account->friends().size() == 1; }, 15000));
    EXPECT_TRUE(account->requests().isEmpty());
    account->close();

    auto* friends = leaderboard(true);
    EXPECT_EQ(names(friends), (QStringList{"1:" + badr, "2:" + amal}));
    EXPECT_EQ(friends->currentRankText(), "2");

    // Once more from the start: the login is kept, and the event is not delivered a second time.
    enter("amal");
    friendEvents = 0;
    Platform::shared().notificationCenter().addObserver(
        &friendEvents, GKEventReceivedNotification, [&friendEvents](const Notification&) { ++friendEvents; });
    auto* again = new MainViewController();
    Platform::shared().navigator().setRootViewController(again);
    ASSERT_TRUE(QTest::qWaitFor(
        [] { return GameCenterManager::sharedInstance().currentStatus == "AUTHENTICATED"; }, 15000));
    QTest::qWait(500);
    EXPECT_EQ(friendEvents, 0);
}

TEST_F(TwoPlayers, RefusalsOfTheServiceReachTheLoginScreenInArabic) {
    enter("cyrine");
    auto& nav = Platform::shared().navigator();
    auto* main = new MainViewController();
    nav.setRootViewController(main);
    main->loginToGameCenter();
    auto* login = qobject_cast<LoginViewController*>(nav.presentedViewController());
    ASSERT_NE(login, nullptr);
    login->submit(QStringLiteral("أمل"), "another-password", true);
    ASSERT_TRUE(QTest::qWaitFor([login] { return !login->busy(); }, 15000));
    EXPECT_EQ(login->errorText(), QStringLiteral("هذا الاسم مستخدم من لاعب آخر، اختر اسما غيره"));
    login->submit(QStringLiteral("أمل"), "wrong-password", false);
    ASSERT_TRUE(QTest::qWaitFor([login] { return !login->busy(); }, 15000));
    EXPECT_EQ(login->errorText(), QStringLiteral("الاسم أو كلمة المرور غير صحيحة"));
    EXPECT_FALSE(GKLocalPlayer::localPlayer().isAuthenticated());
    login->cancel();
    EXPECT_EQ(nav.presentedViewController(), nullptr);
    EXPECT_EQ(GameCenterManager::sharedInstance().currentStatus, "LOGIN_CANCELLED");
}

TEST_F(TwoPlayers, TheDailyBonusIsPaidOncePerServerDayAndTheContextNumberTravels) {
    platform.useRealWebClient();
    // A start of the game: the bonus check runs on a worker; its gold and message reach the main thread.
    const auto start = [this] {
        enter("dana");
        AppDelegate app;
        const qint64 before = CreditsManager::sharedInstance().currentCredits();
        app.applicationDidFinishLaunchingWithOptions({});
        Dispatch::waitForGlobal();
        QCoreApplication::sendPostedEvents();
        return std::make_pair(CreditsManager::sharedInstance().currentCredits() - before,
                              platform.takeMessages());
    };

    // The first start seeds the history with the service's date and pays nothing.
    EXPECT_EQ(start(), std::make_pair(qint64(0), QStringList()));
    ASSERT_EQ(BonusManager::sharedInstance().previousBonusList().size(), 1);
    const QDateTime seeded = BonusManager::sharedInstance().previousBonusList().first().bonusDay;
    ASSERT_TRUE(seeded.isValid());
    EXPECT_LT(std::abs(seeded.secsTo(QDateTime::currentDateTimeUtc())), 120);
    EXPECT_EQ(start(), std::make_pair(qint64(0), QStringList()));

    // Had the last bonus been a day earlier, this start of the day pays it, once.
    const QList<Bonus> yesterday{Bonus::initWithDayType(seeded.addDays(-1), Bonus::Daily)};
    platform.defaults().setStringForKey(QString::fromUtf8(BonusManager::archiveBonuses(yesterday)),
                                        BonusManager::kBonusListKey);
    EXPECT_EQ(start(),
              std::make_pair(qint64(25),
                             QStringList{QStringLiteral("مبروووك|لقد ربحت 25 ذهبة بفضل استخدامك اليومي\n")}));
    EXPECT_EQ(start(), std::make_pair(qint64(0), QStringList()));
    EXPECT_EQ(SessionManager::sharedInstance().acitveDays(), 1);

    // The first login's report carries the context number, and it comes back digit for digit.
    createAccount(QStringLiteral("دانة"));
    const qint64 context = UserStatsManager::sharedInstance().generateUserStatsContextNumber();
    auto load = std::make_shared<GKLeaderboard>();
    bool done = false;
    load->loadScoresWithCompletionHandler([&done](auto, auto) { done = true; });
    ASSERT_TRUE(QTest::qWaitFor([&done] { return done; }, 10000));
    ASSERT_TRUE(load->localPlayerScore.has_value());
    EXPECT_EQ(load->localPlayerScore->context, context);
    EXPECT_EQ(UserStatsManager::breakContextNumber(load->localPlayerScore->context),
              (QStringList{"1", "01", "001", "000", "00001"}));
}

// Keeps what the service's match events tell the local player.
class MatchEvents : public QObject, public GKTurnBasedEventListener {
public:
    void playerReceivedTurnEventForMatchDidBecomeActive(const GKTurnBasedMatch& match, bool) override {
        turns.append(match);
    }
    void playerMatchEnded(const GKTurnBasedMatch& match) override { ended.append(match); }
    QList<GKTurnBasedMatch> turns, ended;
};

// Runs one asynchronous call of the client classes and waits for its answer.
template <class Call> auto await(Call call) {
    std::optional<std::pair<std::optional<GKTurnBasedMatch>, std::optional<GKError>>> answer;
    call([&answer](std::optional<GKTurnBasedMatch> m, std::optional<GKError> e) { answer.emplace(m, e); });
    EXPECT_TRUE(QTest::qWaitFor([&answer] { return answer.has_value(); }, 15000));
    return answer.value_or(std::make_pair(std::optional<GKTurnBasedMatch>(), std::optional<GKError>()));
}

TEST_F(TwoPlayers, ABattleShapedMatchAndAnAutomaticOneThroughTheClientClasses) {
    // Two accounts that are friends.
    enter("hadi");
    createAccount(QStringLiteral("هادي"));
    const QString hadi = GKLocalPlayer::localPlayer().playerID();
    enter("ward");
    createAccount(QStringLiteral("ورد"));
    const QString ward = GKLocalPlayer::localPlayer().playerID();
    bool asked = false;
    GKFriendRequest::sendFriendRequest(hadi, "هيا نلعب", [&asked](auto) { asked = true; });
    ASSERT_TRUE(QTest::qWaitFor([&asked] { return asked; }, 15000));

    // Hadi accepts, then challenges Ward: the first turn goes to her with the battle's data and a notice.
    enter("hadi");
    auto* main = new MainViewController();
    Platform::shared().navigator().setRootViewController(main);
    ASSERT_TRUE(QTest::qWaitFor([] { return GKLocalPlayer::localPlayer().isAuthenticated(); }, 15000));
    std::optional<QList<GKFriendRequest>> requests;
    GKFriendRequest::loadFriendRequests(true, [&requests](auto list, auto) { requests = list; });
    ASSERT_TRUE(QTest::qWaitFor([&requests] { return requests.has_value(); }, 15000));
    ASSERT_EQ(requests->size(), 1);
    bool accepted = false;
    GKFriendRequest::answerFriendRequest(requests->first().requestID, true,
                                         [&accepted](auto) { accepted = true; });
    ASSERT_TRUE(QTest::qWaitFor([&accepted] { return accepted; }, 15000));

    GKMatchRequest request;
    request.setRecipients({ward});
    auto [found, findError] =
        await([&](auto done) { GKTurnBasedMatch::findMatchForRequestWithCompletionHandler(request, done); });
    ASSERT_TRUE(found) << (findError ? findError->message.toStdString() : "");
    EXPECT_EQ(found->status, GKTurnBasedMatchStatusOpen);
    EXPECT_EQ(found->participants.at(1).status, GKTurnBasedParticipantStatusInvited);
    GKTurnBasedMatch battle = *found;
    battle.setLocalizableMessageWithKeyArguments("gc.battle.turnMessage", {QStringLiteral("هادي")});
    auto [passed, passError] = await([&](auto done) {
        battle.endTurnWithNextParticipantsTurnTimeoutMatchDataCompletionHandler({1}, 86400.0,
                                                                                "level=7;result=1", done);
    });
    ASSERT_TRUE(passed) << (passError ? passError->message.toStdString() : "");
    EXPECT_EQ(passed->currentParticipantIndex, 1);

    // Ward's game hears of it when she comes back, answers, and ends the match with both outcomes.
    enter("ward");
    MatchEvents wardEvents;
    GKLocalPlayer::localPlayer().registerListener(&wardEvents);
    Platform::shared().navigator().setRootViewController(new MainViewController());
    ASSERT_TRUE(QTest::qWaitFor([&wardEvents] { return !wardEvents.turns.isEmpty(); }, 15000));
    GKTurnBasedMatch received = wardEvents.turns.first();
    EXPECT_EQ(received.matchID, battle.matchID);
    EXPECT_EQ(received.matchData, QByteArray("level=7;result=1"));
    EXPECT_EQ(received.messageKey, "gc.battle.turnMessage");
    EXPECT_EQ(received.currentParticipant()->playerID, ward);
    received.participants[0].setMatchOutcome(GKTurnBasedMatchOutcomeLost);
    received.participants[1].setMatchOutcome(GKTurnBasedMatchOutcomeWon);
    auto [ended, endError] = await(
        [&](auto done) { received.endMatchInTurnWithMatchDataCompletionHandler("reply=well played", done); });
    ASSERT_TRUE(ended) << (endError ? endError->message.toStdString() : "");
    EXPECT_EQ(ended->status, GKTurnBasedMatchStatusEnded);

    // Hadi learns the end and the outcomes.
    enter("hadi");
    MatchEvents hadiEvents;
    GKLocalPlayer::localPlayer().registerListener(&hadiEvents);
    Platform::shared().navigator().setRootViewController(new MainViewController());
    ASSERT_TRUE(QTest::qWaitFor([&hadiEvents] { return !hadiEvents.ended.isEmpty(); }, 15000));
    EXPECT_EQ(hadiEvents.ended.last().participants.at(0).matchOutcome, GKTurnBasedMatchOutcomeLost);
    EXPECT_EQ(hadiEvents.ended.last().matchData, QByteArray("reply=well played"));

    // An automatic match: Hadi opens one and passes the turn to its empty seat; Ward is seated in it and
    // finds the turn hers.
    auto [opened, openError] = await([&](auto done) {
        GKTurnBasedMatch::findMatchForRequestWithCompletionHandler(GKMatchRequest(), done);
    });
    ASSERT_TRUE(opened) << (openError ? openError->message.toStdString() : "");
    EXPECT_EQ(opened->status, GKTurnBasedMatchStatusMatching);
    auto [waiting, waitError] = await([&](auto done) {
        opened->endTurnWithNextParticipantsTurnTimeoutMatchDataCompletionHandler({1, 0}, GKTurnTimeoutDefault,
                                                                                 "level=3", done);
    });
    ASSERT_TRUE(waiting) << (waitError ? waitError->message.toStdString() : "");
    enter("ward");
    Platform::shared().navigator().setRootViewController(new MainViewController());
    ASSERT_TRUE(QTest::qWaitFor([] { return GKLocalPlayer::localPlayer().isAuthenticated(); }, 15000));
    auto [joined, joinError] = await([&](auto done) {
        GKTurnBasedMatch::findMatchForRequestWithCompletionHandler(GKMatchRequest(), done);
    });
    ASSERT_TRUE(joined) << (joinError ? joinError->message.toStdString() : "");
    EXPECT_EQ(joined->matchID, opened->matchID);
    EXPECT_EQ(joined->currentParticipant()->playerID, ward);
    EXPECT_EQ(joined->matchData, QByteArray("level=3"));
    std::optional<QList<GKTurnBasedMatch>> mine;
    GKTurnBasedMatch::loadMatchesWithCompletionHandler([&mine](auto list, auto) { mine = list; });
    ASSERT_TRUE(QTest::qWaitFor([&mine] { return mine.has_value(); }, 15000));
    EXPECT_EQ(mine->size(), 2);
}

// What a live match tells its delegate, and the invitations the player accepts.
class LiveRecorder : public QObject, public GKMatchDelegate, public GKInviteEventListener {
public:
    void matchDidReceiveDataFromRemotePlayer(GKMatch*, const QByteArray& data, const QString& from) override {
        received.append(data);
        senders.append(from);
    }
    void matchPlayerDidChangeConnectionState(GKMatch* match, const QString& player, int state) override {
        states.append({player, state});
        expectedAtChange.append(match->expectedPlayerCount());
    }
    void matchDidFailWithError(GKMatch*, const GKError& error) override { errors.append(error.code); }
    void matchConnectionWithPlayerFailedWithError(GKMatch*, const QString&, const GKError& error) override {
        errors.append(error.code);
    }
    void playerDidAcceptInvite(const GKInvite& invite) override { invites.append(invite); }

    QList<QByteArray> received;
    QStringList senders, errors;
    QList<QPair<QString, int>> states;
    QList<int> expectedAtChange;
    QList<GKInvite> invites;
};

template <class Call> std::pair<std::shared_ptr<GKMatch>, std::optional<GKError>> awaitLive(Call call) {
    std::optional<std::pair<std::shared_ptr<GKMatch>, std::optional<GKError>>> answer;
    call([&answer](std::shared_ptr<GKMatch> m, std::optional<GKError> e) { answer.emplace(m, e); });
    EXPECT_TRUE(QTest::qWaitFor([&answer] { return answer.has_value(); }, 15000));
    return answer.value_or(std::make_pair(nullptr, std::nullopt));
}

TEST_F(TwoPlayers, ALiveMatchThroughTheMatchmakerAnInvitationAndTheRelay) {
    const TwoAccounts accounts = twoAccounts("lina", QStringLiteral("لينا"), "sami", QStringLiteral("سامي"));
    const QString lina = accounts.other;
    const QString sami = accounts.local;
    ASSERT_TRUE(QTest::qWaitFor([] { return GKLocalPlayer::localPlayer().events().isConnected(); }, 10000));
    RawPlayer other(port, accounts.otherToken);
    LiveRecorder recorder;

    // Sami searches first and waits; Lina's search finds him.
    std::optional<std::pair<std::shared_ptr<GKMatch>, std::optional<GKError>>> answer;
    GKMatchmaker::sharedMatchmaker().findMatchForRequestWithCompletionHandler(
        GKMatchRequest(), [&answer](auto m, auto e) { answer.emplace(m, e); });
    ASSERT_TRUE(QTest::qWaitFor([] { return GKMatchmaker::sharedMatchmaker().isSearching(); }, 1000));
    QTest::qWait(300);
    EXPECT_FALSE(answer);
    const QJsonObject joined = other.call("POST", "/v1/live").value("match").toObject();
    ASSERT_TRUE(joined.value("found").toBool());
    ASSERT_TRUE(QTest::qWaitFor([&answer] { return answer.has_value(); }, 10000));
    std::shared_ptr<GKMatch> match = answer->first;
    ASSERT_TRUE(match);
    EXPECT_EQ(match->matchID(), joined.value("matchID").toString());
    EXPECT_EQ(match->players(), QStringList{lina});
    EXPECT_EQ(match->expectedPlayerCount(), 1);
    match->setDelegate(&recorder);
    // The match may outlive this test inside the event channel: it lets go of the recorder first.
    const std::shared_ptr<void> letGo(nullptr, [match](void*) { match->setDelegate(nullptr); });

    // Lina connects: Sami's match hears it and expects nobody more.
    other.send({{"type", "live_connect"}, {"match", match->matchID()}});
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return !recorder.states.isEmpty(); }, 10000));
    EXPECT_EQ(recorder.states.first(), qMakePair(lina, int(GKPlayerStateConnected)));
    EXPECT_EQ(recorder.expectedAtChange.first(), 0);

    // Data both ways, in order.
    std::optional<GKError> error;
    ASSERT_TRUE(
        match->sendDataToAllPlayersWithDataModeError(QByteArray("مرحبا"), GKMatchSendDataReliable, &error));
    EXPECT_EQ(QByteArray::fromBase64(other.next("live_data").value("data").toString().toLatin1()),
              QByteArray("مرحبا"));
    for (const char* piece : {"one", "two", "three"}) {
        other.send({{"type", "live_send"},
                    {"match", match->matchID()},
                    {"data", QString::fromLatin1(QByteArray(piece).toBase64())}});
    }
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return recorder.received.size() == 3; }, 10000));
    EXPECT_EQ(recorder.received, (QList<QByteArray>{"one", "two", "three"}));
    EXPECT_EQ(recorder.senders.first(), lina);
    EXPECT_FALSE(match->sendDataToAllPlayersWithDataModeError(QByteArray(GKMatchMaxDataBytes + 1, 'x'),
                                                              GKMatchSendDataReliable, &error));
    EXPECT_EQ(error->code, "live_data_too_large");

    // Lina leaves: Sami's match sees her disconnect and sends nothing more.
    other.send({{"type", "live_leave"}, {"match", match->matchID()}});
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return recorder.states.size() == 2; }, 10000));
    EXPECT_EQ(recorder.states.last(), qMakePair(lina, int(GKPlayerStateDisconnected)));
    EXPECT_FALSE(match->sendDataToAllPlayersWithDataModeError("late", GKMatchSendDataReliable, &error));

    // A search nobody joins can be cancelled; the service forgets it.
    answer.reset();
    GKMatchmaker::sharedMatchmaker().findMatchForRequestWithCompletionHandler(
        GKMatchRequest(), [&answer](auto m, auto e) { answer.emplace(m, e); });
    QTest::qWait(300);
    GKMatchmaker::sharedMatchmaker().cancel();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->second->code, "cancelled");

    // Lina, now a friend, invites Sami: his game asks him; he declines once, then accepts.
    befriendFrom(other, sami);
    GKLocalPlayer::localPlayer().registerListener(&recorder);
    auto& alerts = Platform::shared().alerts();
    other.call("POST", "/v1/live", {{"recipients", QJsonArray{sami}}});
    ASSERT_TRUE(QTest::qWaitFor([&alerts] { return alerts.isVisible(); }, 10000));
    EXPECT_EQ(alerts.title(), QStringLiteral("دعوة إلى مباراة مباشرة"));
    EXPECT_TRUE(alerts.message().contains(QStringLiteral("لينا")));
    alerts.pressTitled(QStringLiteral("لا"));
    EXPECT_EQ(other.next("live_state", GKPlayerStateDisconnected).value("reason").toString(), "declined");
    EXPECT_TRUE(recorder.invites.isEmpty());

    const QString invited = other.call("POST", "/v1/live", {{"recipients", QJsonArray{sami}}})
                                .value("match")
                                .toObject()
                                .value("matchID")
                                .toString();
    ASSERT_TRUE(QTest::qWaitFor([&alerts] { return alerts.isVisible(); }, 10000));
    alerts.pressTitled(QStringLiteral("قبول"));
    ASSERT_EQ(recorder.invites.size(), 1);
    EXPECT_EQ(recorder.invites.first().matchID, invited);
    EXPECT_EQ(recorder.invites.first().sender.displayName, QStringLiteral("لينا"));
    auto [accepted, acceptError] = awaitLive([&](auto done) {
        GKMatchmaker::sharedMatchmaker().matchForInviteCompletionHandler(recorder.invites.first(), done);
    });
    ASSERT_TRUE(accepted) << (acceptError ? acceptError->message.toStdString() : "");
    EXPECT_EQ(other.next("live_match").value("match").toObject().value("matchID").toString(), invited);
    other.send({{"type", "live_connect"}, {"match", invited}});
    ASSERT_TRUE(QTest::qWaitFor([&accepted] { return accepted->expectedPlayerCount() == 0; }, 10000));
    // Sami's game goes away: Lina sees him disconnect.
    accepted->disconnect();
    const QJsonObject gone = other.next("live_state", GKPlayerStateDisconnected);
    EXPECT_EQ(gone.value("player").toString(), sami);
    EXPECT_EQ(gone.value("state").toInt(), int(GKPlayerStateDisconnected));
}

// Keeps what the turn-based picker tells its delegate.
class PickerRecorder : public GKTurnBasedMatchmakerViewControllerDelegate {
public:
    void turnBasedMatchmakerViewControllerDidFindMatch(GKTurnBasedMatchmakerViewController*,
                                                       const GKTurnBasedMatch& match) override {
        found.append(match);
    }
    void turnBasedMatchmakerViewControllerWasCancelled(GKTurnBasedMatchmakerViewController*) override {
        ++cancelled;
    }
    void turnBasedMatchmakerViewControllerDidFailWithError(GKTurnBasedMatchmakerViewController*,
                                                           const GKError& error) override {
        failures.append(error.code);
    }
    QList<GKTurnBasedMatch> found;
    QStringList failures;
    int cancelled = 0;
};

// Keeps what the live picker tells its delegate.
class LivePickerRecorder : public GKMatchmakerViewControllerDelegate {
public:
    void matchmakerViewControllerDidFindMatch(GKMatchmakerViewController*,
                                              std::shared_ptr<GKMatch> match) override {
        found = std::move(match);
    }
    void matchmakerViewControllerWasCancelled(GKMatchmakerViewController*) override {}
    void matchmakerViewControllerDidFailWithError(GKMatchmakerViewController*,
                                                  const GKError& error) override {
        failures.append(error.code);
    }
    std::shared_ptr<GKMatch> found;
    QStringList failures;
};

TEST_F(TwoPlayers, ThePickersStartAnAutomaticMatchOrChallengeAFriend) {
    const TwoAccounts accounts = twoAccounts("muna", QStringLiteral("منى"), "yasir", QStringLiteral("ياسر"));
    const QString muna = accounts.other;
    const QString yasir = accounts.local;
    RawPlayer other(port, accounts.otherToken);
    befriendFrom(other, yasir);

    PickerRecorder recorder;
    std::unique_ptr<GKTurnBasedMatchmakerViewController> picker(
        GKTurnBasedMatchmakerViewController::initWithMatchRequest(GKMatchRequest()));
    picker->setTurnBasedMatchmakerDelegate(&recorder);
    picker->viewDidLoad();
    ASSERT_TRUE(QTest::qWaitFor([&picker] { return !picker->loadingFriends(); }, 10000));
    ASSERT_EQ(picker->friends().size(), 1);
    EXPECT_EQ(picker->friends().first().toMap().value("name").toString(), QStringLiteral("منى"));

    // A friend picked: an invitation with her in the second seat.
    picker->pickFriend(muna);
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return recorder.found.size() == 1; }, 10000));
    EXPECT_EQ(recorder.found.first().participants.at(1).playerID, muna);
    EXPECT_FALSE(picker->busy());

    // Automatic: a match whose second seat waits.
    picker->startAutomaticMatch();
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return recorder.found.size() == 2; }, 10000));
    EXPECT_EQ(recorder.found.last().status, GKTurnBasedMatchStatusMatching);

    // A player who is neither a friend nor a former opponent is refused, and the picker says so and stays.
    enter("stranger");
    createAccount(QStringLiteral("غريب"));
    const QString stranger = GKLocalPlayer::localPlayer().playerID();
    enter("yasir");
    Platform::shared().navigator().setRootViewController(new MainViewController());
    ASSERT_TRUE(QTest::qWaitFor([] { return GKLocalPlayer::localPlayer().isAuthenticated(); }, 15000));
    picker->pickFriend(stranger);
    ASSERT_TRUE(QTest::qWaitFor([&recorder] { return !recorder.failures.isEmpty(); }, 10000));
    EXPECT_EQ(recorder.failures.first(), "invitation_refused");
    EXPECT_EQ(picker->status(), QStringLiteral("لا يمكن دعوة هذا اللاعب"));
    picker->cancel();
    EXPECT_EQ(recorder.cancelled, 1);

    // The live picker: a search waits, shows it, and ends when Muna's search finds it.
    LivePickerRecorder live;
    std::unique_ptr<GKMatchmakerViewController> livePicker(
        GKMatchmakerViewController::initWithMatchRequest(GKMatchRequest()));
    livePicker->setMatchmakerDelegate(&live);
    livePicker->viewDidLoad();
    livePicker->startAutomaticMatch();
    ASSERT_TRUE(QTest::qWaitFor([] { return GKMatchmaker::sharedMatchmaker().isSearching(); }, 1000));
    EXPECT_TRUE(livePicker->busy());
    EXPECT_EQ(livePicker->status(), QStringLiteral("جارٍ البحث عن لاعب…"));
    QTest::qWait(300);
    EXPECT_TRUE(other.call("POST", "/v1/live").value("match").toObject().value("found").toBool());
    ASSERT_TRUE(QTest::qWaitFor([&live] { return live.found != nullptr; }, 10000));
    EXPECT_EQ(live.found->players(), QStringList{muna});
    EXPECT_FALSE(livePicker->busy());
    live.found->disconnect();

    // Made with an invitation, it takes the invitation's match at once and offers no choice.
    const QString invited = other.call("POST", "/v1/live", {{"recipients", QJsonArray{yasir}}})
                                .value("match")
                                .toObject()
                                .value("matchID")
                                .toString();
    live.found.reset();
    livePicker.reset(GKMatchmakerViewController::initWithInvite(
        GKInvite{invited, GKPlayer{muna, QStringLiteral("منى"), true, {}}}));
    livePicker->setMatchmakerDelegate(&live);
    EXPECT_FALSE(livePicker->offersChoice());
    livePicker->viewDidLoad();
    ASSERT_TRUE(QTest::qWaitFor([&live] { return live.found != nullptr; }, 10000));
    EXPECT_EQ(live.found->matchID(), invited);
    EXPECT_EQ(other.next("live_match").value("match").toObject().value("matchID").toString(), invited);
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

namespace {

// What the live-match helper tells whoever listens.
class LiveListener : public GCRealTimeMatchDelegate {
public:
    void realTimeMatchFoundUsingStandardMatchMaker(std::shared_ptr<GKMatch>) override {}
    void allPlayersConnected() override { ++connected; }
    void playerDisconnected() override { ++disconnected; }
    void matchDidReceiveData(const QVariantMap& data) override { packets.append(data); }
    int connected = 0;
    int disconnected = 0;
    QList<QVariantMap> packets;
};

TEST_F(TwoPlayers, AnAcceptedLiveInvitationOpensTheStartScreenOnBothSides) {
    const TwoAccounts accounts = twoAccounts("nada", QStringLiteral("ندى"), "fadi", QStringLiteral("فادي"));
    const QString nada = accounts.other;
    const QString fadi = accounts.local;
    RawPlayer other(port, accounts.otherToken);
    befriendFrom(other, fadi);
    auto& nav = Platform::shared().navigator();
    // The game logs Fadi in, and its live helper listens from then on.
    nav.setRootViewController(new MainViewController());
    ASSERT_TRUE(QTest::qWaitFor(
        [] {
            return GKLocalPlayer::localPlayer().listeners().contains(
                &GCRealTimeMatchHelper::sharedInstance());
        },
        15000));
    ASSERT_TRUE(QTest::qWaitFor([] { return GKLocalPlayer::localPlayer().events().isConnected(); }, 10000));
    const auto startScreen = [&nav] {
        RealTimeBattleStartViewController* start = nullptr;
        EXPECT_TRUE(QTest::qWaitFor(
            [&] {
                return (start =
                            qobject_cast<RealTimeBattleStartViewController*>(nav.presentedViewController()));
            },
            10000));
        return start;
    };

    // Nada invites him; he accepts, and the start screen takes the invitation's match.
    const QString invited = other.call("POST", "/v1/live", {{"recipients", QJsonArray{fadi}}})
                                .value("match")
                                .toObject()
                                .value("matchID")
                                .toString();
    auto& alerts = Platform::shared().alerts();
    ASSERT_TRUE(QTest::qWaitFor([&alerts] { return alerts.isVisible(); }, 10000));
    alerts.pressTitled(QStringLiteral("قبول"));
    RealTimeBattleStartViewController* start = startScreen();
    ASSERT_NE(start, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([start] { return start->match() != nullptr; }, 10000));
    EXPECT_EQ(start->match()->matchID(), invited);
    EXPECT_EQ(start->player1().value("name"), QStringLiteral("فادي"));
    other.send({{"type", "live_connect"}, {"match", invited}});
    ASSERT_TRUE(QTest::qWaitFor([start] { return start->connected(); }, 10000));
    ASSERT_TRUE(
        QTest::qWaitFor([start] { return start->player2().value("name") == QStringLiteral("ندى"); }, 10000));

    // Packets through the relay, both ways, as dictionaries with their type.
    LiveListener listener;
    GCRealTimeMatchHelper::sharedInstance().matchDelegate = &listener;
    GCRealTimeMatchHelper::sharedInstance().sendMatchDataDataWithType(start->match().get(), {{"move", 4}}, 2);
    const QByteArray sent =
        QByteArray::fromBase64(other.next("live_data").value("data").toString().toLatin1());
    EXPECT_EQ(GCRealTimeMatchHelper::unarchivePacket(sent),
              (QVariantMap{{"move", qint64(4)}, {"type", qint64(2)}}));
    for (const QByteArray& bytes :
         {QByteArray("not a packet"), GCRealTimeMatchHelper::archivePacket({{"type", 7}})}) {
        other.send(
            {{"type", "live_send"}, {"match", invited}, {"data", QString::fromLatin1(bytes.toBase64())}});
    }
    ASSERT_TRUE(QTest::qWaitFor([&listener] { return !listener.packets.isEmpty(); }, 10000));
    EXPECT_EQ(listener.packets, (QList<QVariantMap>{{{"type", qint64(7)}}}));
    GCRealTimeMatchHelper::sharedInstance().matchDelegate = start;

    // Leaving the screen leaves the match.
    start->close();
    EXPECT_EQ(other.next("live_state", GKPlayerStateDisconnected).value("player").toString(), fadi);

    // The other side: Fadi starts one from the start screen and invites Nada, who accepts.
    auto* mine = new RealTimeBattleStartViewController();
    mine->useStandardMatchMaker = true;
    nav.presentViewController(mine);
    auto* picker = qobject_cast<GKMatchmakerViewController*>(nav.presentedViewController());
    ASSERT_NE(picker, nullptr);
    ASSERT_TRUE(QTest::qWaitFor([picker] { return !picker->loadingFriends(); }, 10000));
    picker->pickFriend(nada);
    const QString asked = other.next("live_invitation").value("match").toObject().value("matchID").toString();
    ASSERT_FALSE(asked.isEmpty());
    other.call("POST", "/v1/live/" + asked + "/accept");
    other.send({{"type", "live_connect"}, {"match", asked}});
    ASSERT_TRUE(QTest::qWaitFor([mine] { return mine->connected(); }, 10000));
    EXPECT_EQ(nav.presentedViewController(), mine);
    EXPECT_EQ(mine->match()->matchID(), asked);
    mine->close();
}

} // namespace

namespace {

TEST_F(TwoPlayers, AFriendRequestToAPlayerFoundByName) {
    const TwoAccounts accounts = twoAccounts("rana", QStringLiteral("رنا"), "karim", QStringLiteral("كريم"));
    auto* board = leaderboard(false);
    board->openFriendsRequestView();
    auto* request = qobject_cast<GKFriendRequestComposeViewController*>(
        Platform::shared().navigator().presentedViewController());
    ASSERT_NE(request, nullptr);
    EXPECT_TRUE(request->recipients().isEmpty());
    request->send();
    EXPECT_EQ(request->status(), QStringLiteral("اختر لاعبا واحدا على الأقل"));

    // A search that finds nobody says so; the next finds her, and she is added once.
    request->findPlayers(QStringLiteral("زز"));
    ASSERT_TRUE(QTest::qWaitFor([request] { return !request->searching(); }, 10000));
    EXPECT_EQ(request->status(), QStringLiteral("لا يوجد لاعب بهذا الاسم"));
    request->findPlayers(QStringLiteral("ر"));
    ASSERT_TRUE(QTest::qWaitFor([request] { return !request->searching(); }, 10000));
    ASSERT_EQ(request->found().size(), 1);
    EXPECT_EQ(request->found().first().toMap().value("name"), QStringLiteral("رنا"));
    request->addFoundPlayer(accounts.other);
    request->addFoundPlayer(accounts.other);
    ASSERT_EQ(request->recipients().size(), 1);
    EXPECT_TRUE(request->found().first().toMap().value("added").toBool());
    request->setMessage(QStringLiteral("لنتحدى بعضنا"));
    request->send();
    ASSERT_TRUE(QTest::qWaitFor(
        [] {
            return qobject_cast<LeaderboardViewController*>(
                Platform::shared().navigator().presentedViewController());
        },
        10000));

    // She has the request, with its message.
    RawPlayer rana(port, accounts.otherToken);
    const QJsonArray pending = rana.call("GET", "/v1/friend-requests").value("requests").toArray();
    ASSERT_EQ(pending.size(), 1);
    EXPECT_EQ(pending.first().toObject().value("message").toString(), QStringLiteral("لنتحدى بعضنا"));
}

} // namespace
