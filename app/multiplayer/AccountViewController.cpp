#include "AccountViewController.h"

#include "LoginViewController.h"
#include "outreach/SoundFactory.h"
#include "platform/Platform.h"
#include "platform/gamekit/GKEventChannel.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "screens/Util.h"

#include <QPointer>

AccountViewController::AccountViewController(QObject* parent)
    : ViewController(QStringLiteral("AccountViewController"), parent) {}

AccountViewController::~AccountViewController() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
}

QString AccountViewController::displayName() const {
    return GKLocalPlayer::localPlayer().displayName();
}

void AccountViewController::viewDidLoad() {
    // A request or an answer that arrives while the page is open shows at once.
    Platform::shared().notificationCenter().addObserver(this, GKEventReceivedNotification,
                                                        [this](const Notification&) { reload(); });
    reload();
}

void AccountViewController::reload() {
    QPointer<AccountViewController> self(this);
    GKFriendRequest::loadFriends([self](QList<GKPlayer> players, std::optional<GKError>) {
        if (!self) {
            return;
        }
        self->m_friends.clear();
        for (const GKPlayer& p : players) {
            self->m_friends.append(QVariantMap{{"name", p.displayName}, {"playerID", p.playerID}});
        }
        emit self->changed();
    });
    GKFriendRequest::loadFriendRequests(true, [self](QList<GKFriendRequest> list, std::optional<GKError>) {
        if (!self) {
            return;
        }
        self->m_requests.clear();
        for (const GKFriendRequest& r : list) {
            self->m_requests.append(QVariantMap{
                {"requestID", r.requestID}, {"name", r.from.displayName}, {"message", r.message}});
        }
        emit self->changed();
    });
}

void AccountViewController::answer(const QString& requestID, bool accept) {
    SoundFactory::sharedInstance().playMenuTap();
    QPointer<AccountViewController> self(this);
    GKFriendRequest::answerFriendRequest(requestID, accept, [self](std::optional<GKError> error) {
        if (error) {
            Util::showMessageWithTitle(LoginViewController::messageForError(*error),
                                       QStringLiteral("طلب الصداقة"));
        }
        if (self) {
            self->reload();
        }
    });
}

void AccountViewController::logOut() {
    SoundFactory::sharedInstance().playMenuTap();
    GKLocalPlayer::localPlayer().logOut();
    close();
}

void AccountViewController::close() {
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController() == this) {
        nav.dismissViewController();
    }
}
