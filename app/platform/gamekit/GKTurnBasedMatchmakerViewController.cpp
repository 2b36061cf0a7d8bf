#include "GKTurnBasedMatchmakerViewController.h"

#include "GKLocalPlayer.h"

#include "platform/NotificationCenter.h"
#include "platform/Platform.h"

#include <QPointer>
#include <QVariantMap>

GKTurnBasedMatchmakerViewController::GKTurnBasedMatchmakerViewController(QObject* parent)
    : ViewController(QStringLiteral("GKTurnBasedMatchmakerViewController"), parent) {}

GKTurnBasedMatchmakerViewController*
GKTurnBasedMatchmakerViewController::initWithMatchRequest(const GKMatchRequest& request) {
    auto* picker = new GKTurnBasedMatchmakerViewController();
    picker->m_request = request;
    return picker;
}

GKTurnBasedMatchmakerViewController::~GKTurnBasedMatchmakerViewController() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void GKTurnBasedMatchmakerViewController::viewDidLoad() {
    m_loadingFriends = true;
    emit changed();
    if (!GKLocalPlayer::localPlayer().isAuthenticated()) {
        // The login is still under way at the start of the game: the friends come once it is through.
        Platform::shared().notificationCenter().addObserver(
            this, GKPlayerAuthenticationDidChangeNotificationName, [this](const auto&) {
                if (GKLocalPlayer::localPlayer().isAuthenticated()) {
                    Platform::shared().notificationCenter().removeObserver(this);
                    loadFriends();
                }
            });
        return;
    }
    loadFriends();
}

void GKTurnBasedMatchmakerViewController::loadFriends() {
    QPointer<GKTurnBasedMatchmakerViewController> self(this);
    GKFriendRequest::loadFriends([self](QList<GKPlayer> players, std::optional<GKError> error) {
        if (!self) {
            return;
        }
        self->m_loadingFriends = false;
        self->m_friends.clear();
        if (error) {
            self->m_status = QStringLiteral("تعذر تحميل قائمة الأصدقاء");
        }
        // The request's recipients come first, the others by name.
        std::stable_sort(players.begin(), players.end(), [self](const GKPlayer& a, const GKPlayer& b) {
            const bool ra = self->m_request.recipients.contains(a.playerID);
            const bool rb = self->m_request.recipients.contains(b.playerID);
            return ra != rb ? ra : a.displayName.localeAwareCompare(b.displayName) < 0;
        });
        for (const GKPlayer& p : players) {
            self->m_friends.append(QVariantMap{{"playerID", p.playerID}, {"name", p.displayName}});
        }
        emit self->changed();
    });
}

void GKTurnBasedMatchmakerViewController::startAutomaticMatch() {
    GKMatchRequest request = m_request;
    request.setRecipients({});
    find(request);
}

void GKTurnBasedMatchmakerViewController::pickFriend(const QString& playerID) {
    GKMatchRequest request = m_request;
    request.setRecipients({playerID});
    find(request);
}

void GKTurnBasedMatchmakerViewController::cancel() {
    if (m_delegate) {
        m_delegate->turnBasedMatchmakerViewControllerWasCancelled(this);
    } else {
        Platform::shared().navigator().dismissViewController();
    }
}

void GKTurnBasedMatchmakerViewController::find(const GKMatchRequest& request) {
    if (m_busy) {
        return;
    }
    m_busy = true;
    m_status.clear();
    emit changed();
    QPointer<GKTurnBasedMatchmakerViewController> self(this);
    GKTurnBasedMatch::findMatchForRequestWithCompletionHandler(
        request, [self](std::optional<GKTurnBasedMatch> match, std::optional<GKError> error) {
            if (!self) {
                return;
            }
            self->m_busy = false;
            if (!match) {
                const GKError e = error.value_or(GKError::badReply(QStringLiteral("match")));
                self->m_status = e.code == QLatin1String("invitation_refused")
                                     ? QStringLiteral("لا يمكن دعوة هذا اللاعب")
                                     : e.localizedDescription();
                emit self->changed();
                if (self->m_delegate) {
                    self->m_delegate->turnBasedMatchmakerViewControllerDidFailWithError(self, e);
                }
                return;
            }
            emit self->changed();
            if (self->m_delegate) {
                self->m_delegate->turnBasedMatchmakerViewControllerDidFindMatch(self, *match);
            } else {
                Platform::shared().navigator().dismissViewController();
            }
        });
}
