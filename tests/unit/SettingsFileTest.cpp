// The settings file's own reader and writer: what the game stores comes back as it was, files written by
// other INI writers read the same, and damaged binary values read as absent without reaching the decoder.
#include "platform/SettingsFile.h"
#include "TestPlatform.h"

#include <QBuffer>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTimeZone>
#include <gtest/gtest.h>

namespace {

QVariantMap sampleValues() {
    QVariantMap match;
    match["opponentName"] = QStringLiteral("سارة");
    match["date"] = QDateTime(QDate(2026, 11, 3), QTime(20, 15, 7), Qt::UTC);
    match["won"] = true;
    return {
        {"level", qint64(1234567890123)},
        {"negative", -7},
        {"flag", true},
        {"volume", 0.25},
        {"name", QStringLiteral("  لاعب, \"مميز\" = ; \\ @ ")},
        {"at", QStringLiteral("@Variant(not binary)")},
        {"separators", QStringLiteral("أ,ب=ج;د")},
        {"control", QString::fromUtf8("a\tb\nc\0d1", 8)},
        {"emoji", QStringLiteral("🙂 x")},
        {"empty", QString()},
        {"list", QStringList{"a", "b, c", " d "}},
        {"one", QStringList{"only"}},
        {"none", QStringList{}},
        {"places", QVariantList{3, 0, 12}},
        {"history", QVariantList{match, match}},
        {"when", QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5), Qt::OffsetFromUTC, 10800)},
        {"zoned", QDateTime(QDate(2025, 1, 2), QTime(3, 4, 5), QTimeZone(-7200))},
        {"raw", QByteArray("\x00\x01\xff()", 5)},
        {"section/inner/key", QStringLiteral("deep")},
        {"General/x", 1},
        {"spaced key %", 2},
    };
}

QString writeWith(const QTemporaryDir& dir, QSettings::Format format, const QVariantMap& values) {
    const QString path = dir.filePath(format == QSettings::IniFormat ? "qt.ini" : "own.ini");
    QSettings settings(path, format);
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        settings.setValue(it.key(), it.value());
    }
    settings.sync();
    EXPECT_EQ(settings.status(), QSettings::NoError);
    return path;
}

// Lists of one come back as the single value and empty lists as nothing, whichever writer wrote them.
void expectSame(const QVariantMap& values, QSettings& read) {
    for (auto it = values.cbegin(); it != values.cend(); ++it) {
        const QVariant got = read.value(it.key());
        if (it.key() == "places") {
            // A list of numbers is written as a list of texts.
            EXPECT_EQ(got.toStringList(), (QStringList{"3", "0", "12"}));
        } else if (it.key() == "one") {
            EXPECT_EQ(got.toStringList(), QStringList{"only"});
        } else if (it.key() == "none") {
            EXPECT_TRUE(got.toStringList().isEmpty());
        } else if (it.value().typeId() == QMetaType::QVariantList ||
                   it.value().typeId() == QMetaType::QDateTime ||
                   it.value().typeId() == QMetaType::QByteArray ||
                   it.value().typeId() == QMetaType::QStringList) {
            EXPECT_EQ(got, it.value()) << it.key().toStdString();
        } else {
            EXPECT_EQ(got.toString(), it.value().toString()) << it.key().toStdString();
        }
    }
}

// Settings objects share what they read of a file by its name, so each reader gets a copy of its own.
QString copyOf(const QString& path, const QString& name) {
    const QString copy = QFileInfo(path).dir().filePath(name);
    QFile::remove(copy);
    EXPECT_TRUE(QFile::copy(path, copy));
    return copy;
}

TEST(SettingsFile, EveryKindOfValueComesBackAndQtsOwnReaderAgrees) {
    QTemporaryDir dir;
    const QVariantMap values = sampleValues();

    const QString own = writeWith(dir, SettingsFile::format(), values);
    QSettings ownRead(copyOf(own, "own-by-own.ini"), SettingsFile::format());
    expectSame(values, ownRead);
    QSettings qtRead(copyOf(own, "own-by-qt.ini"), QSettings::IniFormat);
    expectSame(values, qtRead);

    // And a file that Qt's own writer wrote reads the same through the game's reader.
    const QString qt = writeWith(dir, QSettings::IniFormat, values);
    QSettings fromQt(copyOf(qt, "qt-by-own.ini"), SettingsFile::format());
    expectSame(values, fromQt);
    EXPECT_EQ(fromQt.allKeys().size(), values.size());
}

TEST(SettingsFile, TheSyntaxOfHandWrittenFiles) {
    QByteArray text = "\xef\xbb\xbf; a comment\n"
                      "[General]\n"
                      "plain = some words  \n"
                      "quoted=\"  keeps = and ; and spaces  \"\n"
                      "continued=first \\\n  second\n"
                      "escapes=\\x41\\102\\t|\\q|\n"
                      "list=a, \"b, c\" ,d\n"
                      "crlf=1\r\n"
                      "no equals sign\n"
                      "=no key\n"
                      "%41%U0628=coded key\n"
                      "[%General]\n"
                      "inner=in a section called General\n"
                      "[sec]\n"
                      "a\\b=slashes\n";
    QBuffer buffer(&text);
    buffer.open(QIODevice::ReadOnly);
    QSettings::SettingsMap map;
    ASSERT_TRUE(SettingsFile::read(buffer, map));
    EXPECT_EQ(map.value("plain").toString(), "some words");
    EXPECT_EQ(map.value("quoted").toString(), "  keeps = and ; and spaces  ");
    EXPECT_EQ(map.value("continued").toString(), "first   second");
    EXPECT_EQ(map.value("escapes").toString(), "AB\t||");
    EXPECT_EQ(map.value("list").toStringList(), (QStringList{"a", "b, c", "d"}));
    EXPECT_EQ(map.value("crlf").toString(), "1");
    EXPECT_EQ(map.value(QStringLiteral("Aب")).toString(), "coded key");
    EXPECT_EQ(map.value("General/inner").toString(), "in a section called General");
    EXPECT_EQ(map.value("sec/a/b").toString(), "slashes");
    EXPECT_EQ(map.size(), 9);
}

QByteArray stream(const QVariant& value, QDataStream::Version version) {
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out.setVersion(version);
    out << value;
    return bytes;
}

QByteArray be32(quint32 v) {
    QByteArray b;
    QDataStream(&b, QIODevice::WriteOnly) << v;
    return b;
}

TEST(SettingsFile, BinaryValuesAreWalkedBeforeTheyAreDecoded) {
    const QVariantMap values = sampleValues();
    for (const auto& value : values) {
        for (auto version : {QDataStream::Qt_4_0, QDataStream::Qt_5_6}) {
            EXPECT_TRUE(SettingsFile::isDecodableVariant(stream(value, version), version))
                << value.typeName() << " " << version;
        }
    }
    const QByteArray list = stream(QVariantList{1, 2}, QDataStream::Qt_4_0);
    const auto v4 = QDataStream::Qt_4_0;
    // Counts and lengths beyond what follows them: a list of two thousand million, a text of four gigabytes,
    // a map of a million entries with nothing after it.
    EXPECT_FALSE(SettingsFile::isDecodableVariant(be32(QMetaType::QVariantList) + be32(0x7fffffff), v4));
    EXPECT_FALSE(SettingsFile::isDecodableVariant(be32(QMetaType::QString) + be32(0xfffffffe), v4));
    EXPECT_FALSE(
        SettingsFile::isDecodableVariant(be32(QMetaType::QStringList) + be32(3) + be32(2) + "ab", v4));
    EXPECT_FALSE(SettingsFile::isDecodableVariant(be32(QMetaType::QVariantMap) + be32(1000000), v4));
    // A text of an odd number of bytes, a value cut short, types the game never stores.
    EXPECT_FALSE(SettingsFile::isDecodableVariant(be32(QMetaType::QString) + be32(3) + "abc", v4));
    EXPECT_FALSE(SettingsFile::isDecodableVariant(list.chopped(1), v4));
    EXPECT_FALSE(SettingsFile::isDecodableVariant(be32(QMetaType::QPolygon) + be32(0x10000000), v4));
    EXPECT_FALSE(SettingsFile::isDecodableVariant(be32(QMetaType::User) + be32(4) + "QFoo", v4));
    // Lists within lists, deeper than anything the game stores.
    QVariant deep = 1;
    for (int i = 0; i < 40; ++i) {
        deep = QVariantList{deep};
    }
    EXPECT_FALSE(SettingsFile::isDecodableVariant(stream(deep, v4), v4));
}

TEST(SettingsFile, ADamagedValueReadsAsAbsentAndTheFileIsKeptAside) {
    TestPlatform platform;
    // What a fuzzer once made of a settings file: a binary value whose list claims more items than the
    // memory of the machine holds, among other damage.
    const QByteArray damaged =
        QByteArray::fromBase64("W0dl7mVyYWxdCmN1cnJMZXZlbD01NwpyYW5kW0dlbmVyYWxdCmN1cnJlbnRMZXZlbD0xZTMwMApyY"
                               "W5kb21JbmRleD0tOTk5OTk5OTk5"
                               "OTk5OTk5OTk5OTkKdG90YWxQb2ludHM9YWJjCnNlZEJlZm9yZT1tYXliZQpkYWn//29t//////"
                               "8OPSJbe1wiZGF5XCI6MTV9XSIKNGFj"
                               "MDAKZ3JlbnRMZXYjbHRpdmVEYXlzPUBWYXJpYW50KFwwXDBcMFw9MXhyN2VmKQo=");
    const QByteArray file =
        "[General]\nplaces=@Variant(\\0\\0\\0\\t\\x7f\\xff\\xff\\xff)\nkept=5\n" + damaged;
    {
        QFile f(platform.settingsPath());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write(file);
    }
    const int before = SettingsFile::unreadableValueCount();
    platform.restart();
    EXPECT_GT(SettingsFile::unreadableValueCount(), before);
    auto& defaults = platform.defaults();
    EXPECT_FALSE(defaults.objectForKey("places").isValid());
    EXPECT_EQ(defaults.integerForKey("kept"), 5);
    EXPECT_EQ(defaults.integerForKey("currentLevel"), 0);

    // The next write drops what could not be read; the file as it was stays beside it.
    defaults.setIntegerForKey(6, "kept");
    QFile aside(platform.settingsPath() + ".unreadable");
    ASSERT_TRUE(aside.open(QIODevice::ReadOnly));
    EXPECT_EQ(aside.readAll(), file);
    platform.restart();
    EXPECT_EQ(platform.defaults().integerForKey("kept"), 6);
}

TEST(SettingsFile, AFileTooLargeToBeTheGamesIsNotRead) {
    TestPlatform platform;
    {
        QFile f(platform.settingsPath());
        ASSERT_TRUE(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
        f.write("[General]\ncurrentLevel=9\n");
        f.write(QByteArray(SettingsFile::kMaxFileBytes, ';'));
    }
    platform.restart();
    EXPECT_EQ(platform.defaults().integerForKey("currentLevel"), 0);
    EXPECT_TRUE(QFile::exists(platform.settingsPath() + ".unreadable"));
    platform.defaults().setIntegerForKey(3, "currentLevel");
    platform.restart();
    EXPECT_EQ(platform.defaults().integerForKey("currentLevel"), 3);
}

} // namespace
