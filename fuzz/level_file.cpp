// The game's level files: a pack file and a file of one game kind, each scrambled or plain, read from disk
// as the game reads them, and the levels of the packs looked up as play looks them up.
//
// The first byte of an input chooses the road (bit 0: scrambled, bit 1: the pack file); the rest is the
// file. A file that cannot be a level file is refused with a message; nothing else may go wrong.

#include "game_fixture.h"

#include "core/Decoder.h"
#include "core/LevelsInfoReader.h"

#include <cstddef>
#include <cstdint>

namespace {

void check(bool condition) {
    if (!condition) {
        __builtin_trap();
    }
}

void checkLevel(const LevelInfoPtr& level) {
    if (!level) {
        return;
    }
    check(!level->solution.isEmpty() && level->solution.size() <= LevelsInfoReader::kMaxSolutionLength);
    (void)level->getContinentName();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static tarvolin::fuzz::GameFixture fixture;
    if (!Platform::isInstalled()) {
        fixture.installOnce();
        LevelsInfoReader::setResourceRoot(fixture.path(QString()));
    }
    if (size == 0) {
        return 0;
    }
    const bool scrambled = data[0] & 1;
    const bool packs = data[0] & 2;
    const QByteArray bytes(reinterpret_cast<const char*>(data + 1), static_cast<qsizetype>(size - 1));

    // Scrambling is undone exactly.
    const QString text = QString::fromUtf8(bytes);
    check(Decoder::encodeText(Decoder::decodeText(text)) == text);

    // A scrambled file is always "ok.rfg"; a plain pack file is "ok.wav", a plain file of one kind "ok.ttt".
    fixture.write(scrambled ? QStringLiteral("ok.rfg")
                  : packs   ? QStringLiteral("ok.wav")
                            : QStringLiteral("ok.ttt"),
                  bytes);
    LevelsInfoReader reader;
    if (packs) {
        reader.loadAllPacksLevelsWithEnc(QStringLiteral("ok"), scrambled);
        const qint64 count = reader.packCount();
        for (qint64 pack = -1; pack <= count; ++pack) {
            for (qint64 level : {-1LL, 0LL, 1LL, 24LL, 25LL, 99LL}) {
                checkLevel(reader.getLevelInfoPackId(level, pack));
            }
        }
        for (qint64 level : {-1LL, 0LL, 7LL, 25LL, 1000LL, 1LL << 40}) {
            checkLevel(reader.getBattleLevelInfo(level));
        }
    } else if (auto result = reader.extractLevelsExtensionWithEncWithPacks(
                   QStringLiteral("ok"), QStringLiteral("ttt"), scrambled, false)) {
        for (const auto& level : result->levels) {
            checkLevel(level);
        }
    }
    // The messages of refused files are read and dismissed.
    auto& alerts = Platform::shared().alerts();
    while (alerts.isVisible()) {
        alerts.press(0);
    }
    return 0;
}
