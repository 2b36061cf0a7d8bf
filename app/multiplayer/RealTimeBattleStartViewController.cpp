#include "RealTimeBattleStartViewController.h"

#include "core/LevelManager.h"
#include "multiplayer/GCPlayerViewController.h"
#include "multiplayer/GameCenterManager.h"
#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/UserStatsManager.h"

namespace {

GCRealTimeMatchHelper& helper() {
    return GCRealTimeMatchHelper::sharedInstance();
}

} // namespace

RealTimeBattleStartViewController::RealTimeBattleStartViewController(QObject* parent)
    : ViewController(QStringLiteral("RealTimeBattleStartViewController"), parent) {}

RealTimeBattleStartViewController::~RealTimeBattleStartViewController() {
    if (Shared<GCRealTimeMatchHelper>::exists() && helper().matchDelegate == this) {
        helper().matchDelegate = nullptr;
    }
}

void RealTimeBattleStartViewController::viewDidLoad() {
    const auto& stats = UserStatsManager::sharedInstance();
    m_player1 = QVariantMap{{"playerID", GKLocalPlayer::localPlayer().playerID()},
                            {"name", GKLocalPlayer::localPlayer().displayName()},
                            {"rank", QString::number(GameCenterManager::sharedInstance().playerRank)},
                            {"battles", QString::number(stats.totalBattles())},
                            {"wins", QString::number(stats.totalWins())},
                            {"levels", QString::number(LevelManager::sharedInstance().currentLevel())}};
    helper().matchDelegate = this;
    if (m_match) {
        adopt(m_match);
        return;
    }
    setStatus(invite ? QStringLiteral("جارٍ الانضمام إلى المباراة…") : QStringLiteral("ابحث عن خصم…"));
    if (useStandardMatchMaker || invite) {
        helper().startStandardMatchMakerOnViewControllerWithInvite(this, invite);
    }
}

void RealTimeBattleStartViewController::adopt(std::shared_ptr<GKMatch> match) {
    m_match = std::move(match);
    if (!m_match) {
        return;
    }
    m_match->setDelegate(&helper());
    const QString other = m_match->players().value(0, invite ? invite->sender.playerID : QString());
    loadOpponent(other);
    if (m_match->expectedPlayerCount() == 0 && !other.isEmpty()) {
        allPlayersConnected();
    } else {
        setStatus(QStringLiteral("بانتظار الخصم…"));
    }
}

void RealTimeBattleStartViewController::loadOpponent(const QString& playerID) {
    if (playerID.isEmpty()) {
        return;
    }
    m_player2 = QVariantMap{{"playerID", playerID}};
    emit changed();
    GKPlayer::loadPlayersForIdentifiers({playerID}, [this, alive = std::weak_ptr<int>(m_alive)](
                                                        QList<GKPlayer> players, std::optional<GKError>) {
        if (alive.expired() || players.isEmpty()) {
            return;
        }
        m_player2.insert("name", players.first().displayName);
        emit changed();
        // His place and the summary his score carries.
        GameCenterManager::sharedInstance().loadPlayerScoresCompletionHandler(
            players, [this, alive](std::optional<QList<GKScore>> scores) {
                if (alive.expired() || !scores || scores->isEmpty()) {
                    return;
                }
                const GKScore& s = scores->first();
                const QVariantMap summary = GCPlayerViewController::summaryOfContext(s.context);
                m_player2.insert("rank", QString::number(s.rank));
                m_player2.insert("levels", summary.value("currentLevel"));
                m_player2.insert("battles", summary.value("totalBattles"));
                emit changed();
            });
    });
}

void RealTimeBattleStartViewController::setStatus(const QString& text) {
    m_status = text;
    emit changed();
}

void RealTimeBattleStartViewController::close() {
    SoundFactory::sharedInstance().playMenuTap();
    if (m_match) {
        m_match->setDelegate(nullptr);
        m_match->disconnect();
    }
    if (helper().matchDelegate == this) {
        helper().matchDelegate = nullptr;
    }
    Platform::shared().navigator().dismissViewController();
}

void RealTimeBattleStartViewController::realTimeMatchFoundUsingStandardMatchMaker(
    std::shared_ptr<GKMatch> match) {
    adopt(std::move(match));
}

void RealTimeBattleStartViewController::allPlayersConnected() {
    m_connected = true;
    if (m_match && m_player2.value("playerID").toString().isEmpty()) {
        loadOpponent(m_match->players().value(0));
    }
    setStatus(QStringLiteral("الخصم متصل، استعد!"));
}

void RealTimeBattleStartViewController::playerDisconnected() {
    m_connected = false;
    setStatus(QStringLiteral("غادر الخصم المباراة"));
}

void RealTimeBattleStartViewController::matchDidReceiveData(const QVariantMap& /*data*/) {
    // No game runs on the match yet: its packets are only heard.
}
