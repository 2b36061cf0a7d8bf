#pragma once

#include "platform/ViewController.h"
#include "platform/gamekit/GKFriendRequestComposeViewController.h"
#include "platform/gamekit/GameKit.h"

#include <QAbstractListModel>
#include <QPointer>
#include <QStringList>
#include <QVariantList>

// The rows of the leaderboard page for its list. Growth at either end inserts only the new rows, so that the
// list keeps the rows it has drawn and makes only those that come into view; a jump resets it.
class LeaderboardRowsModel : public QAbstractListModel {
    Q_OBJECT
public:
    enum Role { RankRole = Qt::UserRole + 1, NameRole, ScoreRole, PlayerIDRole, IsLocalRole, IsFriendRole };

    LeaderboardRowsModel(const QList<GKScore>& scores, QObject* parent);
    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;
    // The scores have changed: `count` rows came at the top (Prepend) or at the end (Append), or all are new.
    void scoresChanged(qint64 added, qsizetype count);

private:
    const QList<GKScore>& m_scores;
    qsizetype m_count = 0;
};

// The leaderboard browser, page 0 of the Game Center pages. It opens around the player's own rank, jumps by
// thousands and hundreds, grows at both ends as the list scrolls, and marks the player and his friends.
// Opened to pick a friend (type 1) or a former opponent (type 2), it says how and shows that list instead.
class LeaderboardViewController : public ViewController, public GKFriendRequestComposeViewControllerDelegate {
    Q_OBJECT
    Q_PROPERTY(QVariantList rows READ rows NOTIFY rowsChanged)
    // The same rows as a list model, for the list on the screen.
    Q_PROPERTY(QAbstractItemModel* rowsModel READ rowsModel CONSTANT)
    Q_PROPERTY(QString currentRankText READ currentRankText NOTIFY headerChanged)
    Q_PROPERTY(QString lastWeekRankText READ lastWeekRankText NOTIFY headerChanged)
    Q_PROPERTY(QString bestRankText READ bestRankText NOTIFY headerChanged)
    Q_PROPERTY(QString playerName READ playerName NOTIFY headerChanged)
    Q_PROPERTY(QString localPlayerID READ localPlayerID NOTIFY headerChanged)
    Q_PROPERTY(QString totalPointsText READ totalPointsText NOTIFY headerChanged)
    Q_PROPERTY(int initialSegment READ initialSegment NOTIFY segmentsChanged)
    Q_PROPERTY(bool multiSegmentVisible READ multiSegmentVisible NOTIFY segmentsChanged)
    Q_PROPERTY(int mainSegment READ mainSegment NOTIFY segmentsChanged)
    Q_PROPERTY(QStringList mainSegmentTitles READ mainSegmentTitles CONSTANT)
    Q_PROPERTY(int segment1 READ segment1 NOTIFY segmentsChanged)
    Q_PROPERTY(int segment2 READ segment2 NOTIFY segmentsChanged)
    Q_PROPERTY(QStringList segment1Titles READ segment1Titles NOTIFY segmentsChanged)
    Q_PROPERTY(QStringList segment2Titles READ segment2Titles NOTIFY segmentsChanged)
    Q_PROPERTY(bool hundredsVisible READ hundredsVisible NOTIFY segmentsChanged)
    Q_PROPERTY(bool playerActionsVisible READ playerActionsVisible NOTIFY segmentsChanged)
public:
    // How the page was opened.
    enum OpenType { Normal = 0, PickFriend = 1, PickOpponent = 2 };
    // How a load joins the rows.
    enum Added { Prepend = -1, Replace = 0, Append = 1 };

    explicit LeaderboardViewController(QObject* parent = nullptr);
    ~LeaderboardViewController() override;

    QList<GKScore> leaderboardScores;
    qint64 playerRank = 0;
    qint64 openType = Normal;
    void setOpenType(qint64 type) { openType = type; }

    void viewDidLoad() override;
    // The player's own score is in: the header, then the list the opening asks for.
    void playerScoreLoaded();
    void scoreLoaded();
    void loadLeaderboardAddedScrollToMe(GKLeaderboard::Range range, qint64 added, bool scrollToMe);
    // The scores of these players, best first; nothing (null) asks about no players at all.
    void loadLeaderboardWithPlayerIds(const QStringList* ids);

    QVariantList rows() const;
    QAbstractItemModel* rowsModel() const { return m_rowsModel; }
    QString currentRankText() const { return m_currentRank; }
    QString lastWeekRankText() const { return m_lastWeekRank; }
    QString bestRankText() const { return m_bestRank; }
    QString playerName() const { return m_playerName; }
    QString localPlayerID() const { return m_localPlayerID; }
    QString totalPointsText() const { return m_totalPoints; }
    int initialSegment() const { return m_initialSegment; }
    bool multiSegmentVisible() const { return m_multiSegmentVisible; }
    int mainSegment() const { return m_mainSegment; }
    QStringList mainSegmentTitles() const;
    int segment1() const { return m_segment1; }
    int segment2() const { return m_segment2; }
    QStringList segment1Titles() const { return m_segment1Titles; }
    QStringList segment2Titles() const { return m_segment2Titles; }
    bool hundredsVisible() const { return m_hundredsVisible; }
    bool playerActionsVisible() const { return m_playerActionsVisible; }
    // Whether a load of scores is under way.
    bool loading() const { return m_loading; }

    Q_INVOKABLE void goBack();
    Q_INVOKABLE void initialSegmentChanged(int index);
    Q_INVOKABLE void mainSegmentChanged(int index);
    Q_INVOKABLE void segment1Changed(int index);
    Q_INVOKABLE void segment2Changed(int index);
    Q_INVOKABLE void tapImage();
    Q_INVOKABLE void openUserStats();
    Q_INVOKABLE void openFriendsRequestView();
    // The player's friends and the requests waiting for his answer.
    Q_INVOKABLE void openAccount();
    // A row tapped: that player's details.
    Q_INVOKABLE void openPlayer(int row);
    // The list is about to draw a row: the last row of a full hundred loads the next hundred.
    Q_INVOKABLE void tableViewWillDisplayRow(int row);
    // The player starts to drag the list: at its very top, the hundred above comes in.
    Q_INVOKABLE void scrollViewWillBeginDragging(double offset);

    void friendRequestComposeViewControllerDidFinish(GKFriendRequestComposeViewController* composer) override;

signals:
    void rowsChanged();
    void headerChanged();
    void segmentsChanged();
    // The view brings the row to the middle of the list, or to its top.
    void scrollToRow(int row, bool middle);

private:
    void openJumpView(bool scrollToMe);
    void setJumpTitles();
    qint64 jumpBase() const { return (4 - m_mainSegment) * 1000; }
    void fillHeader();

    int m_initialSegment = -1;
    bool m_multiSegmentVisible = false;
    int m_mainSegment = 4;
    int m_segment1 = 4;
    int m_segment2 = -1;
    QStringList m_segment1Titles, m_segment2Titles;
    bool m_hundredsVisible = true;
    bool m_playerActionsVisible = false;
    bool m_loading = false;
    QString m_currentRank, m_lastWeekRank, m_bestRank, m_playerName, m_localPlayerID, m_totalPoints;
    QPointer<GKFriendRequestComposeViewController> m_composer;
    LeaderboardRowsModel* m_rowsModel = nullptr;
    std::shared_ptr<int> m_alive = std::make_shared<int>(0);
};
