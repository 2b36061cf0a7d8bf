#pragma once

#include "Game.h"
#include "LevelInfo.h"

#include <QHash>
#include <QList>
#include <QString>
#include <optional>

// Reads the level files that travel with the game. The game plays from the pack file "ok.wav" (one pack per
// round); a second road reads one file per game kind and keeps at most 100 levels of it.
class LevelsInfoReader {
public:
    static constexpr int kMaxLevelsPerKindFile = 100;
    static constexpr int kMaxSolutionLength = 12;

    static LevelsInfoReader& sharedInstance();
    void loadData();

    // Where the level files are looked up (":/levels" unless a test says otherwise).
    static void setResourceRoot(const QString& root);
    static QString resourceRoot();

    qint64 randomIndex() const { return m_randomIndex; }
    bool isPacksDataLoaded() const { return m_packsData.has_value(); }
    qint64 packCount() const { return m_packsData ? m_packsData->size() : 0; }
    const QList<QList<LevelInfoPtr>>* packsData() const { return m_packsData ? &*m_packsData : nullptr; }
    const QHash<QString, QList<LevelInfoPtr>>& levelsData() const { return m_levelsData; }

    // Reads the pack file unless it is already read. The file name is always "ok" with the extension "wav".
    void loadAllPacksLevelsWithEnc(const QString& fileName, bool enc);
    // The level at a position of a round. Round 0 is played in file order; later rounds are rotated by
    // randomIndex. Null when the pack file is not read or the round has no pack.
    LevelInfoPtr getLevelInfoPackId(qint64 level, qint64 packId) const;
    // The level of a battle by its number over all rounds, the same on every installation.
    LevelInfoPtr getBattleLevelInfo(qint64 level) const;

    void loadLevelsIfRequired(qint64 kindId);
    void loadLevelsInfoForFileExtensionWithEnc(const QString& stem, const QString& extension, bool enc);
    LevelInfoPtr getLevelInfoForGame(const Game& game);

    struct Extraction {
        QList<QList<LevelInfoPtr>> packs; // with the packs flag: one list per pack section
        QList<LevelInfoPtr> levels;       // without it: all levels in file order
    };
    // Reads and parses a level file; on a read or parse error shows "Error reading levels file" and gives
    // nothing.
    std::optional<Extraction> extractLevelsExtensionWithEncWithPacks(const QString& stem,
                                                                     const QString& extension, bool enc,
                                                                     bool packs);

    // The grammar itself, on text already read. On a record that cannot be a level it gives nothing and puts
    // the reason in `error`.
    static std::optional<Extraction> parseLevelsText(const QString& text, bool packs, QString* error);
    // One record, from the text after "level="; null when it has no newline or its solution is empty or
    // longer than twelve characters.
    static LevelInfoPtr levelWithString(const QString& record);

private:
    qint64 m_randomIndex = 0;
    QHash<QString, QList<LevelInfoPtr>> m_levelsData;
    std::optional<QList<QList<LevelInfoPtr>>> m_packsData;
};
