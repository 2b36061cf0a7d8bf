#include "GKFriendRequestComposeViewController.h"

#include "platform/Platform.h"

#include <QPointer>
#include <QVariantMap>
#include <algorithm>

GKFriendRequestComposeViewController::GKFriendRequestComposeViewController(QObject* parent)
    : ViewController(QStringLiteral("GKFriendRequestComposeViewController"), parent) {}

void GKFriendRequestComposeViewController::addRecipientPlayers(const QList<GKPlayer>& players) {
    for (const GKPlayer& p : players) {
        if (m_recipients.size() >= maxNumberOfRecipients()) {
            break;
        }
        const bool known = std::any_of(m_recipients.cbegin(), m_recipients.cend(),
                                       [&p](const GKPlayer& r) { return r.playerID == p.playerID; });
        if (!p.playerID.isEmpty() && !known) {
            m_recipients.append(p);
        }
    }
    emit changed();
}

void GKFriendRequestComposeViewController::setMessage(const QString& message) {
    const QString cut = message.left(maxMessageLength());
    if (cut != m_message) {
        m_message = cut;
        emit changed();
    }
}

QVariantList GKFriendRequestComposeViewController::recipients() const {
    QVariantList list;
    for (const GKPlayer& p : m_recipients) {
        list.append(QVariantMap{{"playerID", p.playerID}, {"name", p.displayName}});
    }
    return list;
}

void GKFriendRequestComposeViewController::removeRecipient(const QString& playerID) {
    if (m_busy) {
        return;
    }
    m_recipients.removeIf([&playerID](const GKPlayer& p) { return p.playerID == playerID; });
    emit changed();
}

void GKFriendRequestComposeViewController::findPlayers(const QString& text) {
    const QString prefix = text.trimmed();
    const quint64 search = ++m_search;
    if (prefix.isEmpty()) {
        m_found.clear();
        m_searching = false;
        emit changed();
        return;
    }
    m_searching = true;
    emit changed();
    QPointer<GKFriendRequestComposeViewController> self(this);
    GKPlayer::loadPlayersNamed(prefix, [self, search](QList<GKPlayer> players, std::optional<GKError> error) {
        if (!self || search != self->m_search) {
            return; // a later search has taken its place
        }
        self->m_searching = false;
        self->m_found = players;
        if (error) {
            self->m_status = describeFailure(*error);
        } else if (players.isEmpty()) {
            self->m_status = QStringLiteral("لا يوجد لاعب بهذا الاسم");
        } else {
            self->m_status.clear();
        }
        emit self->changed();
    });
}

void GKFriendRequestComposeViewController::addFoundPlayer(const QString& playerID) {
    for (const GKPlayer& p : std::as_const(m_found)) {
        if (p.playerID == playerID) {
            addRecipientPlayers({p});
            return;
        }
    }
}

QVariantList GKFriendRequestComposeViewController::found() const {
    QVariantList list;
    for (const GKPlayer& p : m_found) {
        const bool added = std::any_of(m_recipients.cbegin(), m_recipients.cend(),
                                       [&p](const GKPlayer& r) { return r.playerID == p.playerID; });
        list.append(QVariantMap{{"playerID", p.playerID}, {"name", p.displayName}, {"added", added}});
    }
    return list;
}

QString GKFriendRequestComposeViewController::describeFailure(const GKError& error) {
    if (error.code == QLatin1String("already_friends")) {
        return QStringLiteral("أنتما صديقان من قبل");
    }
    if (error.code == QLatin1String("already_requested")) {
        return QStringLiteral("أرسلت له طلبا من قبل، انتظر رده");
    }
    if (error.code == QLatin1String("reverse_request_pending")) {
        return QStringLiteral("هذا اللاعب أرسل إليك طلب صداقة، اقبله من صفحة حسابك");
    }
    if (error.code == QLatin1String("player_not_found")) {
        return QStringLiteral("لم يعد هذا اللاعب موجودا");
    }
    return error.localizedDescription();
}

void GKFriendRequestComposeViewController::send() {
    if (m_busy) {
        return;
    }
    if (m_recipients.isEmpty()) {
        m_status = QStringLiteral("اختر لاعبا واحدا على الأقل");
        emit changed();
        return;
    }
    m_busy = true;
    m_status = QStringLiteral("جارٍ الإرسال…");
    emit changed();
    sendNext(0);
}

void GKFriendRequestComposeViewController::sendNext(qsizetype index) {
    if (index >= m_recipients.size()) {
        m_busy = false;
        m_sent = true;
        m_status.clear();
        emit changed();
        finish();
        return;
    }
    QPointer<GKFriendRequestComposeViewController> self(this);
    const GKPlayer to = m_recipients.at(index);
    GKFriendRequest::sendFriendRequest(
        to.playerID, m_message.trimmed(), [self, index, to](std::optional<GKError> error) {
            if (!self) {
                return;
            }
            if (!error) {
                self->sendNext(index + 1);
                return;
            }
            // Those already reached leave the list: sending again asks
            // only the others.
            self->m_recipients.remove(0, index);
            self->m_busy = false;
            self->m_status = QStringLiteral("%1: %2").arg(to.displayName, describeFailure(*error));
            emit self->changed();
        });
}

void GKFriendRequestComposeViewController::cancel() {
    if (m_busy) {
        return;
    }
    finish();
}

void GKFriendRequestComposeViewController::finish() {
    if (m_delegate) {
        m_delegate->friendRequestComposeViewControllerDidFinish(this);
    } else {
        Platform::shared().navigator().dismissViewController();
    }
}
