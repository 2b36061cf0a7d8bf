#include "Game.h"

#include <array>

namespace {
struct Kind {
    const char* name;
    const char* stem;
    bool scrambled;
    const char* question;
    const char* info;
    const char* oneWord;
    const char* promoAppId;
};

// One row per kind id. The one-word column is a table of its own and does not follow the kinds.
const std::array<Kind, 12> kKinds{{
    {"دول العالم", "countries", true, "ماهي الدولة", "ماهي الدولة التي تعبر عنها الصور", "اللغز",
     "com.molvane.countries"},
    {"احزر الصوت", "tindrelle", false, "احزر الصوت", "احزر ماهو الصوت او عن ماذا يعبر", "اللغز",
     "com.molvane.sounds"},
    {"ألغاز وحلول", "riddles", false, "ماهو حل اللغز", "احزر ماهو حل اللغز", "الصوت", "com.molvane.riddles"},
    {"الصورة المكبرة", "zoomedimage", false, "احزر الصورة", "احزر الصورة الاصلية من جزء الصورة المكبر",
     "النادي", "com.molvane.zoomed"},
    {"أكمل الجملة", "sentences", false, "اكمل الجملة", "ماهي الكلمة التي تكمل الجملة", "المسلسل",
     "com.molvane.sentences"},
    {"طارفولين", "pictures", true, "ماهي الكلمة", "احزر الكلمة التي تعبر عنها الصور", "الكلمة",
     "com.molvane.tarvolin"},
    {"الكلمة المبعثرة", "scrambleword", false, "رتب الكلمة", "اعد ترتيب حروف الكلمة المبعثرة", "الدولة",
     "com.molvane.scramble"},
    {"مدن العالم", "cities", true, "ماهي المدينة", "من الصور والمعلومات، حاول معرفة المدينة", "المدينة",
     "com.molvane.cities"},
    {"ألغاز دينية", "faithriddles", true, "احزر اللغز", "الغاز دينية.. هل تستطيع حلها", "",
     "com.molvane.faith"},
    {"أندية كرة القدم", "clubs", true, "احزر النادي", "من الصور والمعلومات.. حاول معرفة نادي كرة القدم", "",
     "com.molvane.clubs"},
    {"فوق المدن", "flyover", false, "احزر المدينة", "تحليق ثلاثي الأبعاد فوق المدن", "",
     "com.molvane.flyover"},
    {"الصورة المدورة", "flipimage", false, "احزر الصورة", "صورة اجزائها مدورة .. احزر الصورة", "",
     "com.molvane.flip"},
}};

// Ids are compared as unsigned, so a negative id is out of range too.
const Kind* kindFor(qint64 id) {
    if (static_cast<quint64>(id) > 11) {
        return nullptr;
    }
    return &kKinds[static_cast<size_t>(id)];
}

QString column(qint64 id, const char* Kind::*field) {
    const Kind* k = kindFor(id);
    return k ? QString::fromUtf8(k->*field) : QString();
}
} // namespace

std::shared_ptr<Game> Game::initWithGameLevelAndGameRound(qint64 level, qint64 round) {
    std::shared_ptr<Game> g(new Game());
    g->gameId = level % kLevelsPerRound;
    g->gameRound = round;
    g->gameLevel = level;
    return g;
}

std::shared_ptr<Game> Game::initWithGameLevel(qint64 level) {
    std::shared_ptr<Game> g(new Game());
    g->gameId = level % kLevelsPerRound;
    g->gameRound = level / kLevelsPerRound;
    g->gameLevel = level;
    return g;
}

std::shared_ptr<Game> Game::initWithGameIdAndGameRound(qint64 gameId, qint64 round) {
    std::shared_ptr<Game> g(new Game());
    g->gameId = gameId;
    g->gameRound = round;
    g->gameLevel = gameId + kLevelsPerRound * round;
    return g;
}

LevelInfoPtr Game::levelInfo() const {
    std::lock_guard<std::mutex> lock(m_levelInfoMutex);
    return m_levelInfo;
}

void Game::setLevelInfo(LevelInfoPtr info) {
    std::lock_guard<std::mutex> lock(m_levelInfoMutex);
    m_levelInfo = std::move(info);
}

QString Game::getGameNameWithId(qint64 id) {
    return column(id, &Kind::name);
}
QString Game::getGameInfoWithId(qint64 id) {
    return column(id, &Kind::info);
}
QString Game::getGameQuesWithId(qint64 id) {
    return column(id, &Kind::question);
}
QString Game::getGameOneWord(qint64 id) {
    return column(id, &Kind::oneWord);
}
QString Game::getPromoGameAppId(qint64 id) {
    return column(id, &Kind::promoAppId);
}
QString Game::getLevelFileStemWithId(qint64 id) {
    return column(id, &Kind::stem);
}

bool Game::isLevelFileScrambledWithId(qint64 id) {
    const Kind* k = kindFor(id);
    return k && k->scrambled;
}

QColor Game::getGameTopbarColor() {
    return QColor::fromRgbF(0.2f, 0.2f, 0.0f, 0.6f);
}
