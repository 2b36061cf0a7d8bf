// The tool as CI and the build run it: its output and its exit status.

#include "ContentFixtures.h"

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

namespace tarvolin::levels::test {
namespace {

struct ToolRun {
    int status = -1;
    QString out;
    QString err;
};

ToolRun runTool(const QStringList& args) {
    QProcess tool;
    tool.setWorkingDirectory(dataDir());
    tool.start(QStringLiteral(TARVOLIN_LEVELS_TOOL), args);
    EXPECT_TRUE(tool.waitForFinished(60000)) << args.join(QLatin1Char(' ')).toStdString();
    return {tool.exitStatus() == QProcess::NormalExit ? tool.exitCode() : -1,
            QString::fromUtf8(tool.readAllStandardOutput()), QString::fromUtf8(tool.readAllStandardError())};
}

TEST(CommandLine, CheckExitsZeroOnlyWhenTheFileShips) {
    const ToolRun good = runTool({QStringLiteral("check"), QStringLiteral("good.wav"),
                                  QStringLiteral("--pictures"), QStringLiteral("pictures")});
    EXPECT_EQ(good.status, 0) << good.out.toStdString();
    EXPECT_TRUE(good.out.endsWith(QLatin1String("good.wav: 1 packs, 25 levels: 0 errors, 0 warnings\n")))
        << good.out.toStdString();

    // faults.wav holds one fault a level; the findings come in the order of their lines.
    const ToolRun faults = runTool({QStringLiteral("check"), QStringLiteral("faults.wav"),
                                    QStringLiteral("--pictures"), QStringLiteral("pictures")});
    EXPECT_EQ(faults.status, 1);
    static const QRegularExpression finding(QStringLiteral("^(faults\\.wav:\\d+: (error|warning)):"));
    QStringList lines;
    for (const QString& line : faults.out.split(QLatin1Char('\n'))) {
        if (const QRegularExpressionMatch m = finding.match(line); m.hasMatch())
            lines << m.captured(1);
    }
    EXPECT_EQ(lines.join(QLatin1Char('|')).toStdString(),
              "faults.wav:2: error|faults.wav:5: error|faults.wav:6: error|faults.wav:9: error|"
              "faults.wav:12: warning|faults.wav:15: error")
        << faults.out.toStdString();
}

TEST(CommandLine, WrongUseExitsTwoAndHelpExitsZero) {
    EXPECT_EQ(runTool({}).status, 2);
    EXPECT_EQ(runTool({QStringLiteral("draw")}).status, 2);
    EXPECT_EQ(runTool({QStringLiteral("check")}).status, 2);
    EXPECT_EQ(runTool({QStringLiteral("check"), QStringLiteral("good.wav"), QStringLiteral("--rounds"),
                       QStringLiteral("many")})
                  .status,
              2);
    const ToolRun build =
        runTool({QStringLiteral("build"), QStringLiteral("--levels"), QStringLiteral("good.wav")});
    EXPECT_EQ(build.status, 2);
    EXPECT_TRUE(build.err.contains(QLatin1String("build needs --levels, --scenes, --svg and --out")));

    for (const QStringList& help : {QStringList{QStringLiteral("--help")},
                                    QStringList{QStringLiteral("check"), QStringLiteral("--help")},
                                    QStringList{QStringLiteral("build"), QStringLiteral("--help")}}) {
        const ToolRun run = runTool(help);
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(run.out.startsWith(QLatin1String("Usage: tarvolin-levels"))) << run.out.toStdString();
    }
}

TEST(CommandLine, BuildWritesThePicturesAndTheirListing) {
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const ToolRun run =
        runTool({QStringLiteral("build"), QStringLiteral("--levels"), QStringLiteral("good.wav"),
                 QStringLiteral("--scenes"), QStringLiteral("pictures/scenes.txt"), QStringLiteral("--svg"),
                 QStringLiteral("pictures/svg"), QStringLiteral("--out"), dir.filePath(QStringLiteral("out")),
                 QStringLiteral("--qrc"), dir.filePath(QStringLiteral("p.qrc")), QStringLiteral("--size"),
                 QStringLiteral("40")});
    EXPECT_EQ(run.status, 0) << run.out.toStdString() << run.err.toStdString();
    EXPECT_EQ(QDir(dir.filePath(QStringLiteral("out"))).entryList({QStringLiteral("*.jpg")}).size(), 100);
    EXPECT_TRUE(QFile::exists(dir.filePath(QStringLiteral("p.qrc"))));
}

} // namespace
} // namespace tarvolin::levels::test
