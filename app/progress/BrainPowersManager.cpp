#include "BrainPowersManager.h"

#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <array>
#include <cmath>

namespace {
// The weights per kind of level: memory, calculation, focus, sight, coordination.
constexpr std::array<std::array<qint64, 5>, 20> kBaseWeights{{
    {0, 2, 6, 4, 0}, {6, 0, 6, 4, 0}, {4, 6, 2, 0, 0}, {0, 0, 4, 4, 6}, {0, 0, 6, 2, 2},
    {0, 0, 4, 2, 6}, {0, 6, 4, 0, 0}, {0, 0, 4, 6, 0}, {0, 0, 4, 2, 6}, {6, 0, 2, 4, 0},
    {0, 0, 4, 0, 4}, {6, 0, 4, 0, 0}, {0, 0, 4, 4, 4}, {6, 0, 0, 0, 4}, {0, 0, 4, 4, 6},
    {0, 6, 2, 0, 0}, {4, 0, 4, 0, 0}, {2, 0, 4, 6, 0}, {4, 0, 4, 0, 0}, {0, 0, 2, 2, 6},
}};

// "totalPoints" is also the key of the score points; each manager keeps its own figure under it.
const QString kTotalKey = QStringLiteral("totalPoints");
} // namespace

BrainPowersManager& BrainPowersManager::sharedInstance() {
    return Shared<BrainPowersManager>::instance();
}

void BrainPowersManager::loadData() {
    const auto& defaults = Platform::shared().userDefaults();
    m_totalPoints = defaults.integerForKey(kTotalKey);
    m_memoryPoints = defaults.integerForKey(QStringLiteral("memoryPoints"));
    m_calcPoints = defaults.integerForKey(QStringLiteral("calcPoints"));
    m_focusPoints = defaults.integerForKey(QStringLiteral("focusPoints"));
    m_sightPoints = defaults.integerForKey(QStringLiteral("sightPoints"));
    m_coordPoints = defaults.integerForKey(QStringLiteral("coordPoints"));
}

void BrainPowersManager::addToPower(qint64& field, const QString& key, qint64 amount) {
    field += amount;
    m_totalPoints += amount;
    auto& defaults = Platform::shared().userDefaults();
    defaults.setIntegerForKey(field, key);
    defaults.setIntegerForKey(m_totalPoints, kTotalKey);
    defaults.synchronize();
}

void BrainPowersManager::addMemoryPoints(qint64 amount) {
    addToPower(m_memoryPoints, QStringLiteral("memoryPoints"), amount);
}
void BrainPowersManager::addCalcPoints(qint64 amount) {
    addToPower(m_calcPoints, QStringLiteral("calcPoints"), amount);
}
void BrainPowersManager::addFocusPoints(qint64 amount) {
    addToPower(m_focusPoints, QStringLiteral("focusPoints"), amount);
}
void BrainPowersManager::addSightPoints(qint64 amount) {
    addToPower(m_sightPoints, QStringLiteral("sightPoints"), amount);
}
void BrainPowersManager::addCoordPoints(qint64 amount) {
    addToPower(m_coordPoints, QStringLiteral("coordPoints"), amount);
}

qint64 BrainPowersManager::getMaxBrainPoints() const {
    return getMaxMemoryPoints() + getMaxCalcPoints() + getMaxFocusPoints() + getMaxSightPoints() +
           getMaxCoordPoints();
}

namespace {
float fraction(qint64 value, qint64 ceiling) {
    return static_cast<float>(value) / static_cast<float>(ceiling);
}
} // namespace

float BrainPowersManager::getTotalPercent() const {
    return fraction(m_totalPoints, getMaxBrainPoints());
}
float BrainPowersManager::getMemoryPercent() const {
    return fraction(m_memoryPoints, getMaxMemoryPoints());
}
float BrainPowersManager::getCalcPercent() const {
    return fraction(m_calcPoints, getMaxCalcPoints());
}
float BrainPowersManager::getFocusPercent() const {
    return fraction(m_focusPoints, getMaxFocusPoints());
}
float BrainPowersManager::getSightPercent() const {
    return fraction(m_sightPoints, getMaxSightPoints());
}
float BrainPowersManager::getCoordPercent() const {
    return fraction(m_coordPoints, getMaxCoordPoints());
}

BrainPowersManager::PointsArray BrainPowersManager::getBasePointsArrayForGame(qint64 gameId) {
    if (gameId < 0 || gameId >= static_cast<qint64>(kBaseWeights.size())) {
        qFatal("There is no kind of level %lld among the brain powers' weights",
               static_cast<long long>(gameId));
    }
    const auto& row = kBaseWeights.at(static_cast<std::size_t>(gameId));
    return PointsArray(row.begin(), row.end());
}

BrainPowersManager::PointsArray BrainPowersManager::getMaxPointsArrayForGameInRound(qint64 gameId,
                                                                                    qint64 round) {
    const qint64 step = round / 5;
    PointsArray result = getBasePointsArrayForGame(gameId);
    for (qint64& b : result) {
        b = b == 0 ? 0 : b + step;
    }
    return result;
}

qint64 BrainPowersManager::getSumMaxPointsForGameInRound(qint64 gameId, qint64 round) {
    qint64 sum = 0;
    for (qint64 v : getMaxPointsArrayForGameInRound(gameId, round)) {
        sum += v;
    }
    return sum;
}

BrainPowersManager::PointsArray
BrainPowersManager::getRewardedPointsArrayForGameInRoundWithTrialsAndSpeedPercent(qint64 gameId, qint64 round,
                                                                                  qint64 trials,
                                                                                  qint64 speedPercent) {
    const PointsArray max = getMaxPointsArrayForGameInRound(gameId, round);
    const double penalty = std::ceil(static_cast<double>(trials - 1) * 0.25 * static_cast<double>(round + 1));
    // The speed rises in place: each trained power sees a higher factor than the one before it.
    qint64 s = speedPercent;
    PointsArray result;
    for (qint64 entry : max) {
        const float m = static_cast<float>(entry);
        if (m <= 0.0f) {
            result.append(0);
            continue;
        }
        s = std::min<qint64>(s, 80) + 20;
        double v = static_cast<double>(static_cast<float>(s) / 100.0f * m);
        if (trials >= 2) {
            v = std::max(v - penalty, 0.0);
        }
        result.append(static_cast<qint64>(std::trunc(v)));
    }
    return result;
}

void BrainPowersManager::addRewardedPointsArray(const PointsArray& points) {
    if (points.size() != 5) {
        return;
    }
    addMemoryPoints(points.at(0));
    addCalcPoints(points.at(1));
    addFocusPoints(points.at(2));
    addSightPoints(points.at(3));
    addCoordPoints(points.at(4));
}

void BrainPowersManager::deductPointsArray(const PointsArray& points) {
    if (points.size() != 5) {
        return;
    }
    addRewardedPointsArray({-points.at(0), -points.at(1), -points.at(2), -points.at(3), -points.at(4)});
}
