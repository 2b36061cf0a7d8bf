#include "LeaderboardViewController.h"

#include "GameCenterManager.h"
#include "multiplayer/GCPlayerViewController.h"
#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/ProgressHud.h"
#include "platform/gamekit/GKLocalPlayer.h"
#include "progress/ScorePointsManager.h"
#include "progress/UserStatsManager.h"
#include "screens/PresentationUtil.h"
#include "screens/Util.h"

#include <QVariantMap>
#include <algorithm>

namespace {

ProgressHud& hud() {
    return Platform::shared().progressHud();
}

} // namespace

LeaderboardRowsModel::LeaderboardRowsModel(const QList<GKScore>& scores, QObject* parent)
    : QAbstractListModel(parent), m_scores(scores) {}

int LeaderboardRowsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_count);
}

QVariant LeaderboardRowsModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_count || index.row() >= m_scores.size()) {
        return {};
    }
    const GKScore& s = m_scores.at(index.row());
    switch (role) {
    case RankRole:
        return Util::formatLongNumber(s.rank);
    case NameRole:
        return s.player.displayName;
    case ScoreRole:
        return QString::number(s.value);
    case PlayerIDRole:
        return s.player.playerID;
    case IsLocalRole:
        return s.player.playerID == GKLocalPlayer::localPlayer().playerID();
    case IsFriendRole:
        return s.player.isFriend;
    default:
        return {};
    }
}

QHash<int, QByteArray> LeaderboardRowsModel::roleNames() const {
    return {{RankRole, "rank"},         {NameRole, "name"},       {ScoreRole, "score"},
            {PlayerIDRole, "playerID"}, {IsLocalRole, "isLocal"}, {IsFriendRole, "isFriend"}};
}

void LeaderboardRowsModel::scoresChanged(qint64 added, qsizetype count) {
    const qsizetype total = m_scores.size();
    if (added != LeaderboardViewController::Replace && count > 0 && m_count + count == total) {
        const qsizetype first = added == LeaderboardViewController::Prepend ? 0 : m_count;
        beginInsertRows(QModelIndex(), static_cast<int>(first), static_cast<int>(first + count - 1));
        m_count = total;
        endInsertRows();
    } else if (added == LeaderboardViewController::Replace || m_count != total) {
        beginResetModel();
        m_count = total;
        endResetModel();
    }
}

LeaderboardViewController::LeaderboardViewController(QObject* parent)
    : ViewController(QStringLiteral("LeaderboardViewController"), parent),
      m_rowsModel(new LeaderboardRowsModel(leaderboardScores, this)) {}

LeaderboardViewController::~LeaderboardViewController() {
    if (Platform::isInstalled()) {
        Platform::shared().notificationCenter().removeObserver(this);
    }
    if (m_composer) {
        m_composer->setComposeViewDelegate(nullptr);
    }
}

void LeaderboardViewController::viewDidLoad() {
    Platform::shared().notificationCenter().addObserver(this, scoreLoadedNotification,
                                                        [this](const Notification&) { scoreLoaded(); });
    if (!Util::isConnected()) {
        Util::showMessageWithTitle(QStringLiteral("تعذر الاتصال بالجيم سنتر"), QStringLiteral("غير متصل"));
        return;
    }
    auto& gc = GameCenterManager::sharedInstance();
    if (gc.currentStatus == QLatin1String("AUTHENTICATING") ||
        gc.currentStatus == QLatin1String("AUTHENTICATED")) {
        hud().showWithMaskType(3);
        m_loading = true;
        gc.reloadPlayerScoreWithCompletionHandler([this, alive = std::weak_ptr<int>(m_alive)] {
            if (!alive.expired()) {
                m_loading = false;
                playerScoreLoaded();
            }
        });
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

void LeaderboardViewController::fillHeader() {
    const auto& gc = GameCenterManager::sharedInstance();
    const auto& stats = UserStatsManager::sharedInstance();
    m_currentRank = QString::number(gc.playerRank);
    // No rank kept yet reads as a dash, as it does for last week.
    m_bestRank = stats.getBestRank() > 0 ? QString::number(stats.getBestRank()) : QStringLiteral("-");
    // The rank a week ago, from the ranks the game keeps a day at a time; unknown reads as a dash.
    const QList<qint64> week = stats.getGCRanksForLastDays(8);
    const qint64 lastWeek = week.isEmpty() ? 0 : week.first();
    m_lastWeekRank = lastWeek > 0 ? QString::number(lastWeek) : QStringLiteral("-");
    m_playerName = GKLocalPlayer::localPlayer().displayName();
    m_localPlayerID = GKLocalPlayer::localPlayer().playerID();
    m_totalPoints = QString::number(gc.scoreObject ? gc.scoreObject->value
                                                   : ScorePointsManager::sharedInstance().totalPoints());
    emit headerChanged();
}

void LeaderboardViewController::playerScoreLoaded() {
    hud().dismiss();
    fillHeader();
    const qint64 rank = GameCenterManager::sharedInstance().playerRank;
    switch (openType) {
    case Normal:
        playerRank = rank;
        loadLeaderboardAddedScrollToMe({std::max<qint64>(rank, 51) - 50, 100}, Replace, true);
        break;
    case PickFriend:
        m_initialSegment = 3;
        emit segmentsChanged();
        initialSegmentChanged(3);
        Util::showMessageWithTitle(QStringLiteral("اضغط على أي من اصدقائك لإظهار معلوماته ثم اكتب رسالة تحدي "
                                                  "واضغط على زر بدء معركة للعب ضده"),
                                   QStringLiteral("معركة مع صديق"));
        break;
    case PickOpponent:
        m_initialSegment = 2;
        emit segmentsChanged();
        initialSegmentChanged(2);
        Util::showMessageWithTitle(QStringLiteral("اضغط على أي لاعب لإظهار معلوماته ثم اكتب رسالة تحدي واضغط "
                                                  "على زر بدء معركة للعب ضده"),
                                   QStringLiteral("معركة مع لاعب لعبت ضده مؤخرا"));
        break;
    default:
        break;
    }
}

void LeaderboardViewController::scoreLoaded() {
    m_currentRank = QString::number(GameCenterManager::sharedInstance().playerRank);
    emit headerChanged();
}

void LeaderboardViewController::initialSegmentChanged(int index) {
    m_initialSegment = index;
    m_playerActionsVisible = index == 2;
    emit segmentsChanged();
    switch (index) {
    case 1:
        loadLeaderboardAddedScrollToMe({1, 100}, Replace, false);
        break;
    case 2:
        // The opponents are not looked up here: the list asks about nobody and stays empty.
        loadLeaderboardWithPlayerIds(nullptr);
        break;
    case 3:
        loadLeaderboardAddedScrollToMe({std::max<qint64>(playerRank, 51) - 50, 100}, Replace, false);
        break;
    default:
        openJumpView(index == 4);
        break;
    }
}

QStringList LeaderboardViewController::mainSegmentTitles() const {
    QStringList titles;
    for (int m = 0; m <= 4; ++m) {
        const qint64 base = (4 - m) * 1000;
        titles << QStringLiteral("%1-%2").arg(Util::formatLongNumber(base + 1),
                                              Util::formatLongNumber(base + 1000));
    }
    titles << QStringLiteral("الأصدقاء");
    return titles;
}

void LeaderboardViewController::setJumpTitles() {
    const qint64 base = jumpBase();
    m_segment1Titles.clear();
    m_segment2Titles.clear();
    for (int i = 0; i <= 4; ++i) {
        m_segment1Titles << Util::formatLongNumber(base + 100 * (5 - i));
        m_segment2Titles << Util::formatLongNumber(base + 500 + 100 * (5 - i));
    }
    m_hundredsVisible = true;
    m_segment1 = 4;
    m_segment2 = -1;
    emit segmentsChanged();
}

void LeaderboardViewController::openJumpView(bool scrollToMe) {
    // The initial segments go for good; the jump view stays until the page closes.
    m_multiSegmentVisible = true;
    setJumpTitles();
    loadLeaderboardAddedScrollToMe({jumpBase() + 1, 100}, Replace, scrollToMe);
}

void LeaderboardViewController::mainSegmentChanged(int index) {
    if (index < 0 || index > 5) {
        return;
    }
    m_mainSegment = index;
    if (index == 5) {
        m_hundredsVisible = false;
        emit segmentsChanged();
        loadLeaderboardAddedScrollToMe({1, 0}, Replace, false);
        return;
    }
    setJumpTitles();
    loadLeaderboardAddedScrollToMe({jumpBase() + 1, 100}, Replace, false);
}

void LeaderboardViewController::segment1Changed(int index) {
    if (index < 0 || index > 4 || m_mainSegment == 5) {
        return;
    }
    m_segment1 = index;
    m_segment2 = -1;
    emit segmentsChanged();
    loadLeaderboardAddedScrollToMe({jumpBase() + 100 * (4 - index) + 1, 100}, Replace, false);
}

void LeaderboardViewController::segment2Changed(int index) {
    if (index < 0 || index > 4 || m_mainSegment == 5) {
        return;
    }
    m_segment2 = index;
    m_segment1 = -1;
    emit segmentsChanged();
    loadLeaderboardAddedScrollToMe({jumpBase() + 100 * (4 - index) + 501, 100}, Replace, false);
}

void LeaderboardViewController::loadLeaderboardAddedScrollToMe(GKLeaderboard::Range range, qint64 added,
                                                               bool scrollToMe) {
    hud().showWithMaskType(3);
    auto& gc = GameCenterManager::sharedInstance();
    std::optional<GKLeaderboard> request = gc.prepareLeaderboardRequestWithRangeAndPlayerList(range, nullptr);
    if (!request) {
        return;
    }
    m_loading = true;
    gc.loadScores(std::make_shared<GKLeaderboard>(*request),
                  [this, alive = std::weak_ptr<int>(m_alive), added,
                   scrollToMe](std::optional<QList<GKScore>> scores, std::optional<GKError>) {
                      if (alive.expired()) {
                          hud().dismiss();
                          return;
                      }
                      m_loading = false;
                      const QList<GKScore> got = scores.value_or(QList<GKScore>());
                      qsizetype added_n = 0;
                      if (added == Replace) {
                          leaderboardScores = got;
                      } else if (added == Append) {
                          if (scores) {
                              leaderboardScores.append(got);
                              added_n = got.size();
                          }
                      } else if (added == Prepend) {
                          if (scores) {
                              leaderboardScores = got + leaderboardScores;
                              added_n = got.size();
                          }
                      }
                      m_rowsModel->scoresChanged(added, added_n);
                      emit rowsChanged();
                      if (scrollToMe && !leaderboardScores.isEmpty() && playerRank >= 1) {
                          // Near the middle of a hundred that starts fifty above the player: no exact search.
                          emit scrollToRow(
                              static_cast<int>(std::min<qint64>(playerRank, leaderboardScores.size() / 2)),
                              true);
                      } else if (added == Prepend) {
                          // The rows on the screen stay where they were.
                          emit scrollToRow(static_cast<int>(added_n), false);
                      }
                      hud().dismiss();
                  });
}

void LeaderboardViewController::loadLeaderboardWithPlayerIds(const QStringList* ids) {
    hud().showWithMaskType(3);
    const QStringList asked = ids ? *ids : QStringList();
    GKPlayer::loadPlayersForIdentifiers(asked, [this, alive = std::weak_ptr<int>(m_alive)](
                                                   QList<GKPlayer> players, std::optional<GKError> error) {
        if (alive.expired()) {
            hud().dismiss();
            return;
        }
        if (error) {
            players.clear();
        }
        auto& gc = GameCenterManager::sharedInstance();
        std::optional<GKLeaderboard> request =
            gc.prepareLeaderboardRequestWithRangeAndPlayerList({1, 100}, &players);
        if (!request) {
            return;
        }
        gc.loadScores(std::make_shared<GKLeaderboard>(*request),
                      [this, alive](std::optional<QList<GKScore>> scores, std::optional<GKError>) {
                          if (!alive.expired()) {
                              leaderboardScores = scores.value_or(QList<GKScore>());
                              std::stable_sort(
                                  leaderboardScores.begin(), leaderboardScores.end(),
                                  [](const GKScore& a, const GKScore& b) { return a.rank < b.rank; });
                              m_rowsModel->scoresChanged(Replace, 0);
                              emit rowsChanged();
                          }
                          hud().dismiss();
                      });
    });
}

void LeaderboardViewController::tableViewWillDisplayRow(int row) {
    // The list around the player (3) and the opponents (2) never grow; neither does one that is loading.
    if (m_initialSegment == 2 || m_initialSegment == 3 || m_loading) {
        return;
    }
    const qsizetype count = leaderboardScores.size();
    if (row != count - 1 || count < 100 || row % 100 != 99) {
        return;
    }
    loadLeaderboardAddedScrollToMe({leaderboardScores.last().rank + 1, 100}, Append, false);
}

void LeaderboardViewController::scrollViewWillBeginDragging(double offset) {
    if (m_initialSegment == 2 || m_initialSegment == 3 || m_loading) {
        return;
    }
    qInfo("Will begin dragging:%f", offset);
    if (offset != 0.0 || leaderboardScores.isEmpty()) {
        return;
    }
    const qint64 r = leaderboardScores.first().rank;
    if (r < 2) {
        return;
    }
    if (r <= 100) {
        loadLeaderboardAddedScrollToMe({1, r - 1}, Prepend, false);
    } else {
        loadLeaderboardAddedScrollToMe({r - 100, 100}, Prepend, false);
    }
}

QVariantList LeaderboardViewController::rows() const {
    QVariantList out;
    out.reserve(leaderboardScores.size());
    const QString me = GKLocalPlayer::localPlayer().playerID();
    for (const GKScore& s : leaderboardScores) {
        out.append(QVariantMap{{"rank", Util::formatLongNumber(s.rank)},
                               {"name", s.player.displayName},
                               {"score", QString::number(s.value)},
                               {"playerID", s.player.playerID},
                               {"isLocal", s.player.playerID == me},
                               {"isFriend", s.player.isFriend}});
    }
    return out;
}

void LeaderboardViewController::goBack() {
    SoundFactory::sharedInstance().playMenuTap();
    // Away goes what was presented: the page itself, or the pages that hold it.
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController()) {
        nav.dismissViewController();
    } else {
        nav.popViewController();
    }
}

void LeaderboardViewController::tapImage() {
    openUserStats();
}

void LeaderboardViewController::openUserStats() {
    PresentationUtil::openGameCenterNavControllerWithPageNumAndType(this, 3, 0);
}

void LeaderboardViewController::openFriendsRequestView() {
    auto* composer = new GKFriendRequestComposeViewController();
    composer->setComposeViewDelegate(this);
    m_composer = composer;
    Platform::shared().navigator().presentViewController(composer);
}

void LeaderboardViewController::friendRequestComposeViewControllerDidFinish(
    GKFriendRequestComposeViewController*) {
    Platform::shared().navigator().dismissViewController();
}

void LeaderboardViewController::openAccount() {
    SoundFactory::sharedInstance().playMenuTap();
    auto& nav = Platform::shared().navigator();
    if (auto* account =
            nav.instantiateViewControllerWithIdentifier(QStringLiteral("AccountViewController"))) {
        nav.presentViewController(account);
    }
}

void LeaderboardViewController::openPlayer(int row) {
    if (row < 0 || row >= leaderboardScores.size() ||
        leaderboardScores.at(row).player.playerID == GKLocalPlayer::localPlayer().playerID()) {
        return;
    }
    SoundFactory::sharedInstance().playMenuTap();
    auto* details = new GCPlayerViewController();
    details->setScore(leaderboardScores.at(row));
    Platform::shared().navigator().presentViewController(details);
}
