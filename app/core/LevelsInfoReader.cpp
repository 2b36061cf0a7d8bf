#include "LevelsInfoReader.h"

#include "Decoder.h"
#include "Game.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"
#include "screens/Util.h"

#include <QFile>
#include <QStringDecoder>

namespace {
const QString kErrorTitle = QStringLiteral("Error reading levels file");

QString& resourceRootStorage() {
    static QString root = QStringLiteral(":/levels");
    return root;
}

QString trimmedLine(const QString& s) {
    return s.trimmed();
}

// Reads a whole file as strict UTF-8; false with a description on any failure.
bool readUtf8(const QString& path, QString* text, QString* error) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("The level file %1 could not be opened: %2").arg(path, file.errorString());
        return false;
    }
    const QByteArray bytes = file.readAll();
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    *text = decoder.decode(bytes);
    if (decoder.hasError()) {
        *error = QStringLiteral("The level file %1 is not valid UTF-8 text.").arg(path);
        return false;
    }
    return true;
}
} // namespace

LevelsInfoReader& LevelsInfoReader::sharedInstance() {
    return Shared<LevelsInfoReader>::instance();
}

void LevelsInfoReader::setResourceRoot(const QString& root) {
    resourceRootStorage() = root;
}
QString LevelsInfoReader::resourceRoot() {
    return resourceRootStorage();
}

void LevelsInfoReader::loadData() {
    auto& defaults = Platform::shared().userDefaults();
    m_randomIndex = defaults.integerForKey(QStringLiteral("randomIndex"));
    if (m_randomIndex < 1 || m_randomIndex > 25) {
        // Absent (or not a rotation this game could have written): draw the installation's rotation once.
        m_randomIndex = static_cast<qint64>(arc4random() % 25) + 1;
        defaults.setIntegerForKey(m_randomIndex, QStringLiteral("randomIndex"));
        defaults.synchronize();
    }
    m_levelsData.clear();
}

void LevelsInfoReader::loadAllPacksLevelsWithEnc(const QString& /*fileName*/, bool enc) {
    if (m_packsData) {
        return;
    }
    auto result =
        extractLevelsExtensionWithEncWithPacks(QStringLiteral("ok"), QStringLiteral("wav"), enc, true);
    if (result) {
        m_packsData = std::move(result->packs);
    }
}

LevelInfoPtr LevelsInfoReader::getLevelInfoPackId(qint64 level, qint64 packId) const {
    if (!m_packsData || packId < 0 || packId >= m_packsData->size()) {
        return nullptr;
    }
    const auto& pack = m_packsData->at(packId);
    if (pack.isEmpty() || level < 0) {
        return nullptr;
    }
    const qint64 index = packId == 0 ? level : (m_randomIndex + level) % pack.size();
    if (index >= pack.size()) {
        return nullptr;
    }
    return pack.at(index);
}

LevelInfoPtr LevelsInfoReader::getBattleLevelInfo(qint64 level) const {
    if (!m_packsData || m_packsData->isEmpty() || level < 0) {
        return nullptr;
    }
    // Without this installation's shuffle of the later rounds: both players see the same level.
    const auto& pack = m_packsData->at((level / Game::kLevelsPerRound) % m_packsData->size());
    if (pack.isEmpty()) {
        return nullptr;
    }
    return pack.at((level % Game::kLevelsPerRound) % pack.size());
}

void LevelsInfoReader::loadLevelsIfRequired(qint64 kindId) {
    const QString stem = Game::getLevelFileStemWithId(kindId);
    if (stem.isNull()) {
        return;
    }
    if (Game::isLevelFileScrambledWithId(kindId)) {
        loadLevelsInfoForFileExtensionWithEnc(stem, QStringLiteral("rfg"), true);
    } else {
        loadLevelsInfoForFileExtensionWithEnc(stem, QStringLiteral("ttt"), false);
    }
}

void LevelsInfoReader::loadLevelsInfoForFileExtensionWithEnc(const QString& stem, const QString& extension,
                                                             bool enc) {
    if (m_levelsData.contains(stem)) {
        return;
    }
    auto result = extractLevelsExtensionWithEncWithPacks(stem, extension, enc, false);
    if (!result) {
        return;
    }
    m_levelsData.insert(stem, result->levels.mid(0, kMaxLevelsPerKindFile));
}

LevelInfoPtr LevelsInfoReader::getLevelInfoForGame(const Game& game) {
    loadLevelsIfRequired(game.gameId);
    const QString stem = Game::getLevelFileStemWithId(game.gameId);
    if (stem.isNull() || !m_levelsData.contains(stem)) {
        return nullptr;
    }
    const auto& levels = m_levelsData[stem];
    if (levels.isEmpty()) {
        return nullptr;
    }
    const qint64 round = game.gameRound;
    const qint64 s = m_randomIndex + round - 1;
    qint64 index = (s % 25) + 25 * (round / 25);
    if (index < 0 || index >= levels.size()) {
        index = static_cast<qint64>(arc4random() % static_cast<std::uint32_t>(levels.size()));
    }
    return levels.at(index);
}

std::optional<LevelsInfoReader::Extraction>
LevelsInfoReader::extractLevelsExtensionWithEncWithPacks(const QString& stem, const QString& extension,
                                                         bool enc, bool packs) {
    // A scrambled file always has the type "rfg", whatever the caller says.
    const QString type = enc ? QStringLiteral("rfg") : extension;
    const QString path = resourceRoot() + "/" + stem + "." + type;
    QString text;
    QString error;
    if (!readUtf8(path, &text, &error)) {
        Util::showMessageWithTitle(error, kErrorTitle);
        return std::nullopt;
    }
    if (enc) {
        text = Decoder::decodeText(text);
    }
    auto result = parseLevelsText(text, packs, &error);
    if (!result) {
        Util::showMessageWithTitle(QStringLiteral("%1: %2").arg(stem + "." + type, error), kErrorTitle);
    }
    return result;
}

std::optional<LevelsInfoReader::Extraction> LevelsInfoReader::parseLevelsText(const QString& text, bool packs,
                                                                              QString* error) {
    Extraction result;
    const QStringList packPieces = text.split(QStringLiteral("[pack="));
    if (packPieces.size() < 2) {
        return result;
    }
    qint64 number = 1;
    for (qsizetype p = 1; p < packPieces.size(); ++p) {
        const QString& piece = packPieces.at(p);
        if (!piece.contains(QLatin1Char('\n')) && !piece.contains(QLatin1Char(']'))) {
            continue;
        }
        QList<LevelInfoPtr> packLevels;
        const QStringList records = piece.split(QStringLiteral("level="));
        for (qsizetype r = 1; r < records.size(); ++r) {
            LevelInfoPtr level = levelWithString(records.at(r));
            if (!level) {
                if (error) {
                    const QString line = records.at(r).section(QLatin1Char('\n'), 0, 0).trimmed();
                    *error =
                        QStringLiteral("level %1 (\"%2\") is not a valid record: a solution needs a line of "
                                       "its own with 1 to %3 letters")
                            .arg(number)
                            .arg(line.left(40))
                            .arg(kMaxSolutionLength);
                }
                return std::nullopt;
            }
            level->number = number++;
            packLevels.append(level);
        }
        if (packs) {
            result.packs.append(packLevels);
        } else {
            result.levels.append(packLevels);
        }
    }
    return result;
}

LevelInfoPtr LevelsInfoReader::levelWithString(const QString& record) {
    const qsizetype newline = record.indexOf(QLatin1Char('\n'));
    if (newline < 0) {
        return nullptr;
    }
    auto level = std::make_shared<LevelInfo>();
    level->fullSolution = trimmedLine(record.left(newline));
    level->solution = QString(level->fullSolution).remove(QLatin1Char(' '));
    if (level->solution.isEmpty() || level->solution.size() > kMaxSolutionLength) {
        return nullptr;
    }

    static const QStringList kKeys{
        "other_letters=", "image=",       "wiki=",  "wikipedia=",   "copyright_photo", "riddle=",
        "continent=",     "area=",        "pop=",   "gdp=",         "country=",        "timezone=",
        "price=",         "coordinates=", "facts=", "established=", "stadium=",        "titles=",
        "players=",       "manager=",     "coach=", "director=",    "production=",     "firstshow=",
        "actors=",        "story=",       "sound=", "type=",        "info=",           "youtube="};

    const QStringList lines = record.split(QLatin1Char('\n'));
    for (const QString& raw : lines) {
        const QString line = trimmedLine(raw);
        for (const QString& key : kKeys) {
            if (!line.startsWith(key)) {
                continue;
            }
            const QString value = line.mid(key.size());
            if (key == "other_letters=") {
                level->otherLetters = value;
            } else if (key == "image=") {
                level->imageName = value;
            } else if (key == "wiki=" || key == "wikipedia=") {
                level->wikipediaUrl = value;
            } else if (key == "copyright_photo") {
                qsizetype digits = 0;
                while (digits < value.size() && value.at(digits).isDigit() &&
                       value.at(digits).unicode() < 128) {
                    ++digits;
                }
                bool ok = false;
                const qint64 index = value.left(digits).toLongLong(&ok) - 1;
                const qsizetype eq = value.indexOf(QLatin1Char('='));
                if (ok && index >= 0 && index <= 3 && eq >= 0) {
                    const QString credit = value.mid(eq + 1);
                    if (credit.size() >= 2) {
                        level->copyrightArray[index] = credit;
                    }
                }
            } else if (key == "riddle=") {
                level->riddle = value;
            } else if (key == "continent=") {
                level->continent = value;
            } else if (key == "area=") {
                level->area = value;
            } else if (key == "pop=") {
                level->population = value;
            } else if (key == "gdp=") {
                level->gdp = value;
            } else if (key == "country=") {
                level->country = value;
            } else if (key == "timezone=") {
                level->timezone = Util::intValue(value);
            } else if (key == "price=") {
                level->priceIndex = Util::doubleValue(value);
            } else if (key == "coordinates=") {
                level->location = value;
            } else if (key == "facts=") {
                level->facts = value.split(QStringLiteral("***"), Qt::KeepEmptyParts);
                level->hasFacts = true;
            } else if (key == "established=") {
                level->established = value;
            } else if (key == "stadium=") {
                level->stadium = value;
            } else if (key == "titles=") {
                level->titles = value;
            } else if (key == "players=") {
                level->players = value;
            } else if (key == "manager=") {
                level->manager = value;
            } else if (key == "coach=") {
                level->coach = value;
            } else if (key == "director=") {
                level->director = value;
            } else if (key == "production=") {
                level->production = value;
            } else if (key == "firstshow=") {
                level->firstshow = value;
            } else if (key == "actors=") {
                level->actors = value;
            } else if (key == "story=") {
                level->story = value;
            } else if (key == "sound=") {
                level->soundName = value;
            } else if (key == "type=") {
                level->type = value;
            } else if (key == "info=") {
                level->info = value;
            } else if (key == "youtube=") {
                level->youtubeUrl = value;
            }
            break;
        }
    }
    return level;
}
