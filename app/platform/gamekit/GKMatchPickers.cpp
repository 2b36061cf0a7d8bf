#include "GKMatchPickers.h"

#include "GKLocalPlayer.h"

#include "platform/NotificationCenter.h"
#include "platform/Platform.h"

#include <QPointer>
#include <QVariantMap>

GKMatchPicker::GKMatchPicker(const QString& identifier, QObject* parent)
    : ViewController(identifier, parent) {}

GKMatchPicker::~GKMatchPicker() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

void GKMatchPicker::viewDidLoad() {
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

void GKMatchPicker::loadFriends() {
    QPointer<GKMatchPicker> self(this);
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

void GKMatchPicker::startAutomaticMatch() {
    if (m_busy) {
        return;
    }
    GKMatchRequest request = m_request;
    request.setRecipients({});
    find(request);
}

void GKMatchPicker::pickFriend(const QString& playerID) {
    if (m_busy) {
        return;
    }
    GKMatchRequest request = m_request;
    request.setRecipients({playerID});
    find(request);
}

void GKMatchPicker::setBusy(bool busy, const QString& status) {
    m_busy = busy;
    m_status = status;
    emit changed();
}

void GKMatchPicker::showFailure(const GKError& error) {
    QString text = error.localizedDescription();
    if (error.code == QLatin1String("invitation_refused")) {
        text = QStringLiteral("لا يمكن دعوة هذا اللاعب");
    } else if (error.code == QLatin1String("declined")) {
        text = QStringLiteral("اعتذر صديقك عن المباراة");
    } else if (error.code == QLatin1String("expired")) {
        text = QStringLiteral("لم يحضر أحد؛ حاول مرة أخرى");
    }
    setBusy(false, text);
}

GKTurnBasedMatchmakerViewController::GKTurnBasedMatchmakerViewController(QObject* parent)
    : GKMatchPicker(QStringLiteral("GKTurnBasedMatchmakerViewController"), parent) {}

GKTurnBasedMatchmakerViewController*
GKTurnBasedMatchmakerViewController::initWithMatchRequest(const GKMatchRequest& request) {
    auto* picker = new GKTurnBasedMatchmakerViewController();
    picker->m_request = request;
    return picker;
}

QString GKTurnBasedMatchmakerViewController::title() const {
    return QStringLiteral("مباراة جديدة");
}

QString GKTurnBasedMatchmakerViewController::hint() const {
    return QStringLiteral("تلعب مع أول لاعب يبحث عن منافس، أو اختر صديقاً من القائمة");
}

void GKTurnBasedMatchmakerViewController::cancel() {
    if (m_delegate) {
        m_delegate->turnBasedMatchmakerViewControllerWasCancelled(this);
    } else {
        Platform::shared().navigator().dismissViewController();
    }
}

void GKTurnBasedMatchmakerViewController::find(const GKMatchRequest& request) {
    setBusy(true, QStringLiteral("جارٍ البحث عن مباراة…"));
    QPointer<GKTurnBasedMatchmakerViewController> self(this);
    GKTurnBasedMatch::findMatchForRequestWithCompletionHandler(
        request, [self](std::optional<GKTurnBasedMatch> match, std::optional<GKError> error) {
            if (!self) {
                return;
            }
            if (!match) {
                const GKError e = error.value_or(GKError::badReply(QStringLiteral("match")));
                self->showFailure(e);
                if (self->m_delegate) {
                    self->m_delegate->turnBasedMatchmakerViewControllerDidFailWithError(self, e);
                }
                return;
            }
            self->setBusy(false);
            if (self->m_delegate) {
                self->m_delegate->turnBasedMatchmakerViewControllerDidFindMatch(self, *match);
            } else {
                Platform::shared().navigator().dismissViewController();
            }
        });
}

GKMatchmakerViewController::GKMatchmakerViewController(QObject* parent)
    : GKMatchPicker(QStringLiteral("GKMatchmakerViewController"), parent) {}

GKMatchmakerViewController::~GKMatchmakerViewController() {
    if (busy()) {
        GKMatchmaker::sharedMatchmaker().cancel();
    }
}

GKMatchmakerViewController* GKMatchmakerViewController::initWithMatchRequest(const GKMatchRequest& request) {
    auto* picker = new GKMatchmakerViewController();
    picker->m_request = request;
    return picker;
}

GKMatchmakerViewController* GKMatchmakerViewController::initWithInvite(const GKInvite& invite) {
    auto* picker = new GKMatchmakerViewController();
    picker->m_invite = invite;
    return picker;
}

QString GKMatchmakerViewController::title() const {
    return QStringLiteral("مباراة مباشرة");
}

QString GKMatchmakerViewController::hint() const {
    return QStringLiteral("تلعبان في الوقت نفسه: مع أول لاعب يبحث عن منافس، أو مع صديق تدعوه");
}

void GKMatchmakerViewController::viewDidLoad() {
    GKMatchPicker::viewDidLoad();
    if (m_invite) {
        setBusy(true, QStringLiteral("جارٍ الانضمام إلى مباراة %1…").arg(m_invite->sender.displayName));
        QPointer<GKMatchmakerViewController> self(this);
        GKMatchmaker::sharedMatchmaker().matchForInviteCompletionHandler(
            *m_invite, [self](std::shared_ptr<GKMatch> match, std::optional<GKError> error) {
                if (self) {
                    self->found(std::move(match), std::move(error));
                }
            });
    }
}

void GKMatchmakerViewController::cancel() {
    if (busy() && !m_invite) {
        GKMatchmaker::sharedMatchmaker().cancel();
    }
    if (m_delegate) {
        m_delegate->matchmakerViewControllerWasCancelled(this);
    } else {
        Platform::shared().navigator().dismissViewController();
    }
}

void GKMatchmakerViewController::find(const GKMatchRequest& request) {
    setBusy(true, request.recipients.isEmpty() ? QStringLiteral("جارٍ البحث عن لاعب…")
                                               : QStringLiteral("بانتظار رد صديقك…"));
    QPointer<GKMatchmakerViewController> self(this);
    GKMatchmaker::sharedMatchmaker().findMatchForRequestWithCompletionHandler(
        request, [self](std::shared_ptr<GKMatch> match, std::optional<GKError> error) {
            if (self) {
                self->found(std::move(match), std::move(error));
            }
        });
}

void GKMatchmakerViewController::found(std::shared_ptr<GKMatch> match, std::optional<GKError> error) {
    if (!match) {
        const GKError e = error.value_or(GKError::badReply(QStringLiteral("live match")));
        if (e.code == QLatin1String("cancelled")) {
            setBusy(false);
            return;
        }
        showFailure(e);
        if (m_delegate) {
            m_delegate->matchmakerViewControllerDidFailWithError(this, e);
        }
        return;
    }
    setBusy(false);
    if (m_delegate) {
        m_delegate->matchmakerViewControllerDidFindMatch(this, std::move(match));
    } else {
        match->disconnect();
        Platform::shared().navigator().dismissViewController();
    }
}
