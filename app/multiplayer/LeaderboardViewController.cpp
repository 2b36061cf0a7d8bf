#include "LeaderboardViewController.h"

#include "multiplayer/GCPlayerViewController.h"

#include "GameCenterManager.h"
#include "LoginViewController.h"
#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "screens/PresentationUtil.h"
#include "screens/Util.h"

#include <QPointer>

void LeaderboardViewController::viewDidLoad() {
    if (!Util::isConnected()) {
        Util::showMessageWithTitle(QStringLiteral("تعذر الاتصال بالجيم سنتر"), QStringLiteral("غير متصل"));
        return;
    }
    auto& gc = GameCenterManager::sharedInstance();
    if (gc.currentStatus == QLatin1String("AUTHENTICATING") ||
        gc.currentStatus == QLatin1String("AUTHENTICATED")) {
        reload();
        return;
    }
    if (gc.currentStatus == QLatin1String("LOGIN_CANCELLED")) {
        gc.authenticateLocalUserWithCompletionHandler([](ViewController* screen, std::optional<GKError>) {
            if (screen) {
                Platform::shared().navigator().presentViewController(screen);
            }
        });
        return;
    }
    Util::showMessageWithTitle(
        QStringLiteral("للدخول في قائمة الأذكياء يرجى منك تسجيل الدخول في أبل جيم سنتر "),
        QStringLiteral("تسجيل الدخول بالجيم سنتر"));
}

void LeaderboardViewController::setScope(int scope) {
    SoundFactory::sharedInstance().playMenuTap();
    m_scope = scope == 1 ? 1 : 0;
    reload();
}

void LeaderboardViewController::reload() {
    auto& gc = GameCenterManager::sharedInstance();
    // A length of 0 asks for the player's friends.
    auto request = gc.prepareLeaderboardRequestWithRangeAndPlayerList({1, m_scope == 1 ? 0 : 100}, nullptr);
    if (!request) {
        return;
    }
    m_loading = true;
    m_message.clear();
    emit changed();
    auto load = std::make_shared<GKLeaderboard>(*request);
    const quint64 generation = ++m_generation;
    QPointer<LeaderboardViewController> self(this);
    load->loadScoresWithCompletionHandler(
        [self, load, generation](std::optional<QList<GKScore>> scores, std::optional<GKError> error) {
            if (!self || generation != self->m_generation) {
                return;
            }
            self->m_loading = false;
            self->m_rows.clear();
            self->m_scores = scores.value_or(QList<GKScore>());
            if (!scores) {
                self->m_message = error ? LoginViewController::messageForError(*error) : QString();
                emit self->changed();
                return;
            }
            const QString me = GKLocalPlayer::localPlayer().playerID();
            for (const GKScore& s : *scores) {
                self->m_rows.append(QVariantMap{{"rank", Util::formatLongNumber(s.rank)},
                                                {"name", s.player.displayName},
                                                {"score", Util::formatLongNumber(s.value)},
                                                {"playerID", s.player.playerID},
                                                {"isLocal", s.player.playerID == me},
                                                {"isFriend", s.player.isFriend}});
            }
            const auto& local = load->localPlayerScore;
            self->m_localRank = local ? Util::formatLongNumber(local->rank) : QStringLiteral("---");
            self->m_localScore = local ? Util::formatLongNumber(local->value) : QStringLiteral("0");
            self->m_total = Util::formatLongNumber(load->maxRange);
            if (scores->isEmpty()) {
                self->m_message = self->m_scope == 1 ? QStringLiteral("لا يوجد أصدقاء في القائمة بعد")
                                                     : QStringLiteral("لا يوجد لاعبون في القائمة بعد");
            }
            emit self->changed();
        });
}

void LeaderboardViewController::openPlayer(int row) {
    if (row < 0 || row >= m_scores.size() ||
        m_scores.at(row).player.playerID == GKLocalPlayer::localPlayer().playerID()) {
        return;
    }
    SoundFactory::sharedInstance().playMenuTap();
    auto* details = new GCPlayerViewController();
    details->setScore(m_scores.at(row));
    Platform::shared().navigator().presentViewController(details);
}

void LeaderboardViewController::addFriend(const QString& playerID) {
    SoundFactory::sharedInstance().playMenuTap();
    GKFriendRequest::sendFriendRequest(
        playerID, QStringLiteral("لنتنافس في طارفولين!"), [](std::optional<GKError> e) {
            if (!e) {
                Util::showMessageWithTitle(QStringLiteral("سيصله طلبك، وحين يقبله ستجده في قائمة أصدقائك"),
                                           QStringLiteral("تم ارسال طلب الصداقة"));
                return;
            }
            QString text;
            if (e->code == QLatin1String("already_friends")) {
                text = QStringLiteral("أنتما صديقان من قبل");
            } else if (e->code == QLatin1String("already_requested")) {
                text = QStringLiteral("أرسلت له طلبا من قبل، انتظر رده");
            } else if (e->code == QLatin1String("reverse_request_pending")) {
                text = QStringLiteral("هذا اللاعب أرسل لك طلب صداقة، اقبله من صفحة حسابك");
            } else if (e->code == QLatin1String("cannot_befriend_self")) {
                text = QStringLiteral("لا يمكنك مصادقة نفسك");
            } else {
                text = LoginViewController::messageForError(*e);
            }
            Util::showMessageWithTitle(text, QStringLiteral("طلب الصداقة"));
        });
}

void LeaderboardViewController::openUserProfile() {
    SoundFactory::sharedInstance().playMenuTap();
    PresentationUtil::openUserProfileViewController(this);
}

void LeaderboardViewController::openAccount() {
    SoundFactory::sharedInstance().playMenuTap();
    auto& nav = Platform::shared().navigator();
    if (auto* account =
            nav.instantiateViewControllerWithIdentifier(QStringLiteral("AccountViewController"))) {
        nav.presentViewController(account);
    }
}

void LeaderboardViewController::close() {
    SoundFactory::sharedInstance().playMenuTap();
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController() == this) {
        nav.dismissViewController();
    } else {
        nav.popViewController();
    }
}
