#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

// How often, and on how many days, the game has been used. A session begins at a start or at a return more
// than ten minutes after the last session began; a day counts when its first session begins.
class SessionManager {
public:
    static inline const QString kActiveSessionsKey = QStringLiteral("activeSessions");
    static inline const QString kActiveDaysKey = QStringLiteral("activeDays");
    static inline const QString kLaunchedBeforeKey = QStringLiteral("isLaunchedBefore");
    static inline const QString kLastSessionTimeKey = QStringLiteral("lastSessionTime");
    static constexpr double kSessionSeconds = 600.0;

    static SessionManager& sharedInstance();
    void loadData();

    void checkAndLogSessionInfo();
    bool isNewSession() const;
    bool checkNewActiveDay() const;
    void logNewSession();
    void logNewActiveDay();
    void logSessionStartTime();
    bool isFirstSession() const { return m_activeSessions == 1; }
    bool isSecondSession() const { return m_activeSessions == 2; }

    qint64 activeSessions() const { return m_activeSessions; }
    qint64 acitveDays() const { return m_acitveDays; }
    bool isNewActiveDay() const { return m_isNewActiveDay; }
    bool isFirstLaunch() const { return m_isFirstLaunch; }
    qint64 videoRewardsCount() const { return m_videoRewardsCount; }
    void setActiveSessions(qint64 v) { m_activeSessions = v; }
    void setAcitveDays(qint64 v) { m_acitveDays = v; }
    void setIsNewActiveDay(bool v) { m_isNewActiveDay = v; }
    void setIsFirstLaunch(bool v) { m_isFirstLaunch = v; }
    void setVideoRewardsCount(qint64 v) { m_videoRewardsCount = v; }

private:
    // A stored moment: nothing when absent; an unreadable value is reported and also gives nothing.
    static std::optional<QDateTime> storedDate(const QString& key);

    qint64 m_activeSessions = 0;
    qint64 m_acitveDays = 0;
    bool m_isNewActiveDay = false;
    bool m_isFirstLaunch = false;
    qint64 m_videoRewardsCount = 0;
};
