#include "CloudSaveManager.h"

#include "CreditsManager.h"
#include "ScorePointsManager.h"
#include "core/LevelManager.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "screens/Localization.h"
#include "screens/Util.h"

#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace {

// The service of the logged-in player. A save is a PUT, which the game service's client has no call for: it
// goes out here with the same token and is read the same way.
class ServiceTransport : public ProgressTransport {
public:
    void load(Completion done) override {
        Platform::shared().gameService().get(QStringLiteral("/v1/progress"), {}, std::move(done));
    }
    void save(qint64 baseVersion, const QJsonObject& progress, Completion done) override {
        const GameService& service = Platform::shared().gameService();
        QNetworkRequest request(service.urlFor(QStringLiteral("/v1/progress")));
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("application/json"));
        request.setTransferTimeout(15000);
        if (!service.token().isEmpty()) {
            request.setRawHeader("Authorization", "Bearer " + service.token().toLatin1());
        }
        const QByteArray body =
            QJsonDocument(QJsonObject{{"baseVersion", baseVersion}, {"progress", progress}})
                .toJson(QJsonDocument::Compact);
        QNetworkReply* reply = m_network.put(request, body);
        QObject::connect(reply, &QNetworkReply::finished, &m_network, [reply, done = std::move(done)]() {
            reply->deleteLater();
            const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
            if (status == 0) {
                done({}, GKError{QStringLiteral("network"), reply->errorString(), 0, 0});
                return;
            }
            QJsonObject object;
            const std::optional<GKError> error =
                GameService::readReply(status, reply->readAll(), reply->rawHeader("Retry-After"), &object);
            done(object, error);
        });
    }

private:
    QNetworkAccessManager m_network;
};

QString progressText(const char* key) {
    return Localization::localizedString(QString::fromLatin1(key));
}

} // namespace

CloudSaveManager& CloudSaveManager::sharedInstance() {
    return Shared<CloudSaveManager>::instance();
}

CloudSaveManager::CloudSaveManager() : m_transport(std::make_unique<ServiceTransport>()) {}

CloudSaveManager::~CloudSaveManager() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
        if (m_timer) {
            Platform::shared().scheduler().cancel(m_timer);
        }
    }
}

void CloudSaveManager::loadData() {
    auto& center = Platform::shared().notificationCenter();
    for (const QString& name :
         {NotificationLevelChanged, NotificationCreditsChanged, NotificationSkipsChanged,
          PointsChangedNotification, NotificationProgressChanged}) {
        center.addObserver(this, name, [this](const Notification&) { progressChanged(); });
    }
    center.addObserver(this, GKPlayerAuthenticationDidChangeNotificationName, [this](const Notification&) {
        const GKLocalPlayer& player = GKLocalPlayer::localPlayer();
        if (player.isAuthenticated()) {
            playerLoggedIn(player.playerID());
        }
    });
    if (GKLocalPlayer::localPlayer().isAuthenticated()) {
        playerLoggedIn(GKLocalPlayer::localPlayer().playerID());
    }
    // A connection that comes back sends what waited for it.
    center.addObserver(this, kReachabilityChangedNotification, [this](const Notification&) {
        if (isPending() && Platform::shared().reachability().isReachable()) {
            schedule(0);
        }
    });
}

void CloudSaveManager::setTransport(std::unique_ptr<ProgressTransport> transport) {
    m_transport = std::move(transport);
}

qint64 CloudSaveManager::baseVersion() const {
    return Platform::shared().userDefaults().integerForKey(kVersionKey);
}

bool CloudSaveManager::isPending() const {
    return Platform::shared().userDefaults().boolForKey(kPendingKey);
}

void CloudSaveManager::setBaseVersion(qint64 version) {
    Platform::shared().userDefaults().setIntegerForKey(version, kVersionKey);
}

void CloudSaveManager::setPending(bool pending) {
    Platform::shared().userDefaults().setBoolForKey(pending, kPendingKey);
}

bool CloudSaveManager::loggedIn() const {
    const GKLocalPlayer& player = GKLocalPlayer::localPlayer();
    return player.isAuthenticated() &&
           Platform::shared().userDefaults().stringForKey(kPlayerKey) == player.playerID();
}

void CloudSaveManager::playerLoggedIn(const QString& playerId) {
    auto& defaults = Platform::shared().userDefaults();
    if (defaults.stringForKey(kPlayerKey) != playerId) {
        // Versions belong to one player: another player's progress starts from none.
        defaults.setStringForKey(playerId, kPlayerKey);
        setBaseVersion(0);
    }
    if (m_loading || m_choosing) {
        return;
    }
    m_loading = true;
    m_transport->load([this](const QJsonObject& body, const std::optional<GKError>& error) {
        m_loading = false;
        if (error && error->code == QLatin1String("no_progress")) {
            // Nothing saved yet: this profile's progress is the first version.
            setBaseVersion(0);
            setPending(true);
            saveNow();
            return;
        }
        if (error) {
            m_lastProblem = error->message.isEmpty() ? error->code : error->message;
            qWarning().noquote() << "The saved progress could not be loaded:" << m_lastProblem;
            return;
        }
        reconcile(body, false);
    });
}

void CloudSaveManager::reconcile(const QJsonObject& remote, bool afterConflict) {
    const qint64 version = remote.value("version").toInteger(-1);
    QString problem;
    const std::optional<ProgressDocument> saved =
        version > 0 ? ProgressDocument::fromJson(remote.value("progress"), &problem) : std::nullopt;
    if (!saved) {
        // Nothing of it is taken: this profile keeps its own progress and saves it over the unreadable one.
        m_lastProblem = problem.isEmpty() ? QStringLiteral("the saved progress has no version") : problem;
        qWarning().noquote() << "The saved progress is refused:" << m_lastProblem;
        Util::showMessageWithTitle(progressText("progress.unreadable.message"),
                                   progressText("progress.unreadable.title"));
        if (version > 0) {
            keep(version);
        }
        return;
    }
    const ProgressDocument local = ProgressDocument::capture(Platform::shared().userDefaults());
    if (version == baseVersion() && !afterConflict) {
        // The saved progress is this profile's own last save: what changed here since goes on top.
        if (isPending()) {
            saveNow();
        }
        return;
    }
    if (local.sameStanding(*saved)) {
        take(*saved, version);
        return;
    }
    if (local.isFresh()) {
        take(*saved, version);
        return;
    }
    ask(local, *saved, version);
}

void CloudSaveManager::ask(const ProgressDocument& local, const ProgressDocument& remote,
                           qint64 remoteVersion) {
    m_choosing = true;
    const QString message = progressText("progress.choice.message")
                                .arg(local.level + 1)
                                .arg(local.gold)
                                .arg(remote.level + 1)
                                .arg(remote.gold);
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        progressText("progress.choice.title"), message, progressText("progress.choice.keepDevice"),
        {progressText("progress.choice.takeSaved")}, [this, remote, remoteVersion](int button) {
            m_choosing = false;
            if (button == 1) {
                take(remote, remoteVersion);
            } else {
                keep(remoteVersion);
            }
        });
}

void CloudSaveManager::take(const ProgressDocument& remote, qint64 version) {
    m_applying = true;
    remote.store(Platform::shared().userDefaults());
    ProgressDocument::reload();
    m_applying = false;
    setBaseVersion(version);
    setPending(false);
    m_lastProblem.clear();
}

void CloudSaveManager::keep(qint64 remoteVersion) {
    // An explicit overwrite: the next save is based on the newest version the service holds.
    setBaseVersion(remoteVersion);
    setPending(true);
    saveNow();
}

void CloudSaveManager::progressChanged() {
    if (m_applying || !loggedIn()) {
        return;
    }
    setPending(true);
    if (m_inFlight) {
        m_changedInFlight = true;
        return;
    }
    if (!m_timer) {
        schedule(kSaveDelaySeconds);
    }
}

void CloudSaveManager::enterBackground() {
    if (loggedIn() && isPending()) {
        saveNow();
    }
}

void CloudSaveManager::schedule(double seconds) {
    auto& scheduler = Platform::shared().scheduler();
    if (m_timer) {
        scheduler.cancel(m_timer);
    }
    m_timer = scheduler.schedule(seconds, [this] {
        m_timer = 0;
        saveNow();
    });
}

void CloudSaveManager::saveNow() {
    if (m_timer) {
        Platform::shared().scheduler().cancel(m_timer);
        m_timer = 0;
    }
    if (!loggedIn() || m_choosing || m_loading || !isPending()) {
        return;
    }
    if (m_inFlight) {
        m_changedInFlight = true;
        return;
    }
    if (!Platform::shared().reachability().isReachable()) {
        return; // kept pending until the connection comes back
    }
    m_inFlight = true;
    m_changedInFlight = false;
    // What stands at the moment of sending is what is sent.
    const QJsonObject progress = ProgressDocument::capture(Platform::shared().userDefaults()).toJson();
    m_transport->save(
        baseVersion(), progress,
        [this](const QJsonObject& body, const std::optional<GKError>& error) { saved(body, error); });
}

void CloudSaveManager::saved(const QJsonObject& body, const std::optional<GKError>& error) {
    m_inFlight = false;
    if (!error) {
        setBaseVersion(body.value("version").toInteger(baseVersion()));
        m_lastProblem.clear();
        m_toldGoldRefused = false;
        if (m_changedInFlight) {
            schedule(kSaveDelaySeconds);
        } else {
            setPending(false);
        }
        return;
    }
    m_lastProblem = error->message.isEmpty() ? error->code : error->message;
    if (error->code == QLatin1String("progress_conflict")) {
        // Another device saved meanwhile: the player chooses, as after a login.
        const QJsonObject newest = body.value("newest").toObject();
        if (newest.isEmpty()) {
            setBaseVersion(0);
            schedule(kSaveDelaySeconds);
        } else {
            reconcile(newest, true);
        }
        return;
    }
    if (error->httpStatus == 0 || error->httpStatus >= 500 || error->code == QLatin1String("rate_limited")) {
        // No answer, or none yet: the change waits and is tried again.
        schedule(kRetrySeconds);
        return;
    }
    // Refused for good (gold not earned, a malformed document): the profile keeps its progress, and the next
    // change tries again.
    qWarning().noquote() << "The progress was not saved:" << error->code << m_lastProblem;
    if (error->code == QLatin1String("gold_not_earned") && !m_toldGoldRefused) {
        // The player hears it once, not at every change that is refused the same way.
        m_toldGoldRefused = true;
        Util::showMessageWithTitle(progressText("progress.goldRefused.message"),
                                   progressText("progress.goldRefused.title"));
    }
    if (m_changedInFlight) {
        schedule(kSaveDelaySeconds);
    }
}
