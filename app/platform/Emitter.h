#pragma once

#include <QHash>
#include <QObject>
#include <QString>

class ViewController;

// Particle effects over a screen: confetti, a rain of gold, the rain of a battle won. The window's overlay
// draws each one for its time.
class MyEmitter : public QObject {
    Q_OBJECT
public:
    static inline const QString kConfetti = QStringLiteral("confetti");
    static inline const QString kGold = QStringLiteral("gold");
    static inline const QString kBattleWin = QStringLiteral("battleWin");
    static inline const QString kRank = QStringLiteral("rank");
    static inline const QString kRound = QStringLiteral("round");

    using QObject::QObject;

    void startEmitterOnViewForDuration(ViewController* view, double seconds);
    void startGoldEmitterOnViewForDuration(ViewController* view, double seconds);
    void startBattleWinEmitterOnViewForDuration(ViewController* view, double seconds);
    // The place on the leaderboard rose.
    void startGCRankEmitterOnViewForDuration(ViewController* view, double seconds);
    // A round finished; a time of 0 is one burst.
    void startRoundEmitterOnViewForDuration(ViewController* view, double seconds);

    // How many times each effect has started.
    int runs(const QString& kind) const { return m_runs.value(kind); }

signals:
    void started(const QString& kind, double seconds);

private:
    void start(const QString& kind, double seconds);
    QHash<QString, int> m_runs;
};
