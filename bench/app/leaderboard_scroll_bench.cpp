// The leaderboard page scrolled as a player scrolls it, on a service filled with many players: the game runs
// in this process under the offscreen platform with the software renderer, logged in to an account placed at
// a chosen rank, and every frame of the scrolling is timed.
#include "Application.h"
#include "QuickItems.h"
#include "ServiceProcess.h"
#include "leaderboard_fill.h"
#include "multiplayer/GameCenterManager.h"
#include "multiplayer/LeaderboardViewController.h"
#include "multiplayer/LoginViewController.h"
#include "platform/Platform.h"
#include "progress/ScorePointsManager.h"
#include "screens/MainViewController.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMouseEvent>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QProcess>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

struct Options {
    qint64 players = 100'000;
    qint64 rank = 5'000;
    QString framesLog;
};

const char* kUsage =
    "Usage: tarvolin_leaderboard_scroll_bench [--players N] [--rank R] [--frames-log FILE]\n"
    "\n"
    "Fills a new SQLite database with N players and their scores, starts tarvolin-service on loopback,\n"
    "makes an account placed at rank R, logs the game (in this process) in to it and opens the leaderboard\n"
    "page in an offscreen window drawn by the software renderer. It then scrolls like a player: down "
    "through\n"
    "several hundreds (the list grows at its end), back up to the top and drags there (it grows at its "
    "top),\n"
    "then jumps through the thousands and hundreds and scrolls each.\n"
    "\n"
    "A frame's time runs from the moment it was due (a 60 Hz tick, or the end of the previous frame when\n"
    "that came later) to the end of its swap: the input handling and the C++ work it causes (the page's\n"
    "controller, arriving scores, delegates), then polish, sync and rendering. Printed per phase and "
    "overall:\n"
    "frames, the longest, the 99th percentile, frames over 16 ms; and each load of scores, from its request\n"
    "to the rows being in the page.\n"
    "\n"
    "  --players N        players on the leaderboard (default 100000)\n"
    "  --rank R           the logged-in player's rank (default 5000)\n"
    "  --frames-log FILE  writes every frame: phase, input and C++ ms, render ms, frame ms\n";

using Clock = QElapsedTimer;

double percentile(std::vector<double> v, double p) {
    if (v.empty()) {
        return 0;
    }
    std::sort(v.begin(), v.end());
    const auto i = static_cast<std::size_t>(p * static_cast<double>(v.size() - 1) + 0.5);
    return v[std::min(i, v.size() - 1)];
}

// Runs the event loop until done() holds or the time is up.
bool waitFor(const std::function<bool()>& done, int ms) {
    QElapsedTimer t;
    t.start();
    while (!done()) {
        if (t.elapsed() > ms) {
            return false;
        }
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (!done()) {
            QEventLoop loop;
            QTimer::singleShot(1, Qt::PreciseTimer, &loop, &QEventLoop::quit);
            loop.exec();
        }
    }
    return true;
}

using QuickItems::findItem;

// One blocking call to the service.
QJsonObject call(QNetworkAccessManager& net, const QString& base, const QByteArray& verb, const QString& path,
                 const QString& token, const QJsonObject& body) {
    QNetworkRequest request(QUrl(base + path));
    request.setHeader(QNetworkRequest::ContentTypeHeader, "application/json");
    if (!token.isEmpty()) {
        request.setRawHeader("Authorization", "Bearer " + token.toLatin1());
    }
    QNetworkReply* reply =
        net.sendCustomRequest(request, verb, QJsonDocument(body).toJson(QJsonDocument::Compact));
    waitFor([reply] { return reply->isFinished(); }, 30000);
    const QByteArray answer = reply->readAll();
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    reply->deleteLater();
    if (status >= 300 || status == 0) {
        qFatal("%s %s answered %d: %s", verb.constData(), qPrintable(path), status, answer.constData());
    }
    return QJsonDocument::fromJson(answer).object();
}

struct Frame {
    QString phase;
    double work = 0;   // due → the frame's render starts: input and the C++ work
    double render = 0; // polish, sync, render and swap
    double total = 0;
};

struct Load {
    QString phase;
    QString kind;
    double ms = 0;
};

// Drives the page frame by frame and times each frame.
class Driver {
public:
    Driver(QQuickWindow* window, LeaderboardViewController* board, QQuickItem* list)
        : m_window(window), m_board(board), m_list(list) {
        m_clock.start();
        QObject::connect(
            window, &QQuickWindow::afterAnimating, window, [this] { m_renderStart = now(); },
            Qt::DirectConnection);
        QObject::connect(
            window, &QQuickWindow::frameSwapped, window, [this] { ++m_swaps; }, Qt::DirectConnection);
        QObject::connect(board, &LeaderboardViewController::rowsChanged, window, [this] {
            if (m_loadStart >= 0) {
                const auto& rows = m_board->leaderboardScores;
                const qint64 first = rows.isEmpty() ? 0 : rows.first().rank;
                const QString kind = first < m_loadFirst && rows.size() > m_loadCount ? QStringLiteral("top")
                                     : first == m_loadFirst && rows.size() > m_loadCount
                                         ? QStringLiteral("end")
                                         : QStringLiteral("jump");
                m_loads.push_back({m_phase, kind, now() - m_loadStart});
                m_loadStart = -1;
            }
        });
        m_nextDue = now();
    }

    void setPhase(const QString& phase) { m_phase = phase; }

    // One frame: the step's input at the frame's due time, then the frame drawn.
    void frame(const std::function<void()>& step = {}) {
        const qint64 firstBefore =
            m_board->leaderboardScores.isEmpty() ? 0 : m_board->leaderboardScores.first().rank;
        const qsizetype countBefore = m_board->leaderboardScores.size();
        const bool wasLoading = m_board->loading();
        const double due = std::max(m_nextDue, m_lastSwap);
        // Idle until due; whatever runs meanwhile (an answer of the service) delays the frame.
        while (now() < due) {
            QEventLoop loop;
            QTimer::singleShot(std::max(1, static_cast<int>(due - now())), Qt::PreciseTimer, &loop,
                               &QEventLoop::quit);
            loop.exec();
        }
        if (step) {
            step();
        }
        const auto noteLoad = [&] {
            // A load that went out during this frame, from the input or from a delegate made for it.
            if (!wasLoading && m_board->loading() && m_loadStart < 0) {
                m_loadStart = due;
                m_loadFirst = firstBefore;
                m_loadCount = countBefore;
            }
        };
        noteLoad();
        const int swaps = m_swaps;
        m_renderStart = -1;
        m_window->update();
        QEventLoop loop;
        QTimer guard;
        guard.setSingleShot(true);
        QObject::connect(&guard, &QTimer::timeout, &loop, &QEventLoop::quit);
        auto c = QObject::connect(m_window, &QQuickWindow::frameSwapped, &loop, &QEventLoop::quit,
                                  Qt::QueuedConnection);
        guard.start(2000);
        while (m_swaps == swaps && guard.isActive()) {
            loop.exec();
        }
        QObject::disconnect(c);
        const double swapped = now();
        noteLoad();
        Frame f;
        f.phase = m_phase;
        const double renderStart = m_renderStart >= 0 ? m_renderStart : swapped;
        f.work = renderStart - due;
        f.render = swapped - renderStart;
        f.total = swapped - due;
        m_frames.push_back(f);
        m_lastSwap = swapped;
        m_nextDue = due + 1000.0 / 60.0;
    }

    // Mouse input in the window's coordinates, with real timestamps.
    void mouse(QEvent::Type type, QPointF pos) {
        // As the platform delivers a finger's mouse: through the window system, with its state of buttons.
        if (type == QEvent::MouseButtonPress) {
            QTest::mousePress(m_window, Qt::LeftButton, {}, pos.toPoint());
        } else if (type == QEvent::MouseMove) {
            QTest::mouseMove(m_window, pos.toPoint());
        } else {
            QTest::mouseRelease(m_window, Qt::LeftButton, {}, pos.toPoint());
        }
    }

    // A drag of the finger by dy window pixels over `frames` frames, then a still moment before it lifts
    // (no fling), all in frames.
    void drag(QPointF from, double dy, int frames) {
        QPointF p = from;
        frame([&] { mouse(QEvent::MouseButtonPress, p); });
        for (int i = 0; i < frames; ++i) {
            p.ry() += dy / frames;
            frame([&] { mouse(QEvent::MouseMove, p); });
        }
        for (int i = 0; i < 8; ++i) {
            frame();
        }
        frame([&] { mouse(QEvent::MouseButtonRelease, p); });
    }

    void tap(QQuickItem* item) {
        const QPointF c = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
        frame([&] { mouse(QEvent::MouseButtonPress, c); });
        frame([&] { mouse(QEvent::MouseButtonRelease, c); });
    }

    // Frames until the page has its rows and no load is under way.
    bool settle(int maxFrames = 600) {
        for (int i = 0; i < maxFrames; ++i) {
            frame();
            if (!m_board->loading() && !Platform::shared().progressHud().isVisible()) {
                frame();
                return true;
            }
        }
        return false;
    }

    double offset() const {
        return m_list->property("contentY").toDouble() - m_list->property("originY").toDouble();
    }

    const std::vector<Frame>& frames() const { return m_frames; }
    const std::vector<Load>& loads() const { return m_loads; }

private:
    double now() const { return static_cast<double>(m_clock.nsecsElapsed()) / 1e6; }

    QQuickWindow* m_window;
    LeaderboardViewController* m_board;
    QQuickItem* m_list;
    QElapsedTimer m_clock;
    QString m_phase;
    double m_nextDue = 0;
    double m_lastSwap = 0;
    double m_renderStart = -1;
    int m_swaps = 0;
    double m_loadStart = -1;
    qint64 m_loadFirst = 0;
    qsizetype m_loadCount = 0;
    std::vector<Frame> m_frames;
    std::vector<Load> m_loads;
};

void printFrames(const QString& title, const std::vector<Frame>& frames) {
    std::vector<double> total, work, render;
    for (const Frame& f : frames) {
        if (title.isEmpty() || f.phase == title) {
            total.push_back(f.total);
            work.push_back(f.work);
            render.push_back(f.render);
        }
    }
    const auto over = std::count_if(total.begin(), total.end(), [](double t) { return t > 16.0; });
    std::printf("%-22s frames %5zu  max %6.1f ms  p99 %6.1f ms  p50 %5.1f ms  over 16 ms: %3ld"
                "   (input+C++ max %6.1f, render max %5.1f)\n",
                title.isEmpty() ? "all" : qPrintable(title), total.size(), percentile(total, 1.0),
                percentile(total, 0.99), percentile(total, 0.5), static_cast<long>(over),
                percentile(work, 1.0), percentile(render, 1.0));
}

} // namespace

int main(int argc, char** argv) {
    Options opt;
    for (int i = 1; i < argc; ++i) {
        const QString a = QString::fromLocal8Bit(argv[i]);
        if (a == "--players" && i + 1 < argc) {
            opt.players = QString::fromLocal8Bit(argv[++i]).toLongLong();
        } else if (a == "--rank" && i + 1 < argc) {
            opt.rank = QString::fromLocal8Bit(argv[++i]).toLongLong();
        } else if (a == "--frames-log" && i + 1 < argc) {
            opt.framesLog = QString::fromLocal8Bit(argv[++i]);
        } else {
            std::fputs(kUsage, a == "--help" || a == "-h" ? stdout : stderr);
            return a == "--help" || a == "-h" ? 0 : 2;
        }
    }
    if (opt.players < 1000 || opt.rank < 1 || opt.rank > opt.players) {
        std::fputs("--players must be at least 1000 and --rank between 1 and the players\n", stderr);
        return 2;
    }
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // A window update is drawn at once rather than after the platform's idle wait of a few milliseconds.
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");
    QApplication qapp(argc, argv);
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    QTemporaryDir dir;

    QElapsedTimer t;
    t.start();
    const QString dbPath = dir.filePath("leaderboard.db");
    tarvolin::fill::fillLeaderboard(dbPath.toStdString(), opt.players);
    std::printf("fill: %lld players with scores stored in %.1f s\n", static_cast<long long>(opt.players),
                static_cast<double>(t.elapsed()) / 1000.0);

    ServiceProcess service;
    const int port = service.start(TARVOLIN_SERVICE_BINARY, dbPath, {"--rate-limit", "0"}, 60000);
    if (port == 0) {
        qFatal("tarvolin-service did not start or did not say where it listens");
    }
    // Its request log is not needed.
    QProcess& log = service.process();
    QObject::connect(&log, &QProcess::readyRead, &log, [&log] { log.readAll(); });
    const QString base = QStringLiteral("http://127.0.0.1:%1").arg(port);
    std::printf("service: up on port %d after %.1f s (ranks loaded)\n", port,
                static_cast<double>(t.elapsed()) / 1000.0);

    // The player's account, with a score at the wanted rank.
    const QString name = QStringLiteral("bench player");
    const QString password = QStringLiteral("bench password 1");
    const qint64 score = tarvolin::fill::scoreForPlace(opt.players, opt.rank);
    {
        QNetworkAccessManager net;
        const QString token =
            call(net, base, "POST", "/v1/accounts", {}, {{"displayName", name}, {"password", password}})
                .value("token")
                .toString();
        call(net, base, "POST", "/v1/leaderboard/scores", token, {{"value", score}, {"context", 0}});
    }

    Application::Options appOptions;
    appOptions.profileRoot = dir.filePath("profiles");
    appOptions.service = base;
    appOptions.device = QStringLiteral("phone");
    Application game(appOptions);
    if (!game.start()) {
        return 1;
    }
    auto* window = game.window();
    waitFor([window] { return window->isExposed(); }, 10000);
    // The game knows its points: logging in does not put a first score of 0 over them.
    ScorePointsManager::sharedInstance().setTotalPoints(score);
    auto& nav = Platform::shared().navigator();
    auto* main = qobject_cast<MainViewController*>(nav.topViewController());
    if (!main) {
        qFatal("the game did not open on its main screen");
    }
    main->loginToGameCenter();
    auto* login = qobject_cast<LoginViewController*>(nav.presentedViewController());
    if (!login) {
        qFatal("no login screen");
    }
    login->submit(name, password, false);
    if (!waitFor([] { return GameCenterManager::sharedInstance().currentStatus == "AUTHENTICATED"; },
                 30000)) {
        qFatal("the game did not log in");
    }
    waitFor([] { return Platform::shared().alerts().isVisible(); }, 5000);
    while (Platform::shared().alerts().isVisible()) {
        Platform::shared().alerts().press(0);
    }

    t.restart();
    auto* board = new LeaderboardViewController();
    nav.presentViewController(board);
    if (!waitFor(
            [&] {
                return !board->loading() && board->leaderboardScores.size() >= 100 &&
                       findItem(window, "scoresList");
            },
            30000)) {
        qFatal("the leaderboard did not open");
    }
    QQuickItem* list = findItem(window, "scoresList");
    std::printf("opened: ranks %lld-%lld around rank %lld in %lld ms (account, page and first hundred)\n\n",
                static_cast<long long>(board->leaderboardScores.first().rank),
                static_cast<long long>(board->leaderboardScores.last().rank),
                static_cast<long long>(GameCenterManager::sharedInstance().playerRank),
                static_cast<long long>(t.elapsed()));

    Driver d(window, board, list);
    d.setPhase("open");
    d.settle();
    for (int i = 0; i < 30; ++i) {
        d.frame();
    }

    // The finger drags across the middle of the list.
    const QPointF top = list->mapToScene(QPointF(list->width() / 2, list->height() * 0.2));
    const QPointF bottom = list->mapToScene(QPointF(list->width() / 2, list->height() * 0.8));
    const double span = bottom.y() - top.y();

    // Down through several hundreds: each hundred's last row brings the next.
    d.setPhase("down");
    const qsizetype startCount = board->leaderboardScores.size();
    for (int drags = 0; board->leaderboardScores.size() < startCount + 400 && drags < 400; ++drags) {
        d.drag(bottom, -span, 12);
    }
    if (board->leaderboardScores.size() < startCount + 400) {
        std::fprintf(stderr, "scrolling down did not grow the list beyond %lld rows\n",
                     static_cast<long long>(board->leaderboardScores.size()));
    }
    d.settle();

    // Back up to the top of the loaded stretch, then drags there: each brings the hundred above.
    d.setPhase("up");
    for (int grown = 0; grown < 3;) {
        for (int drags = 0; d.offset() > 0.5 && drags < 400; ++drags) {
            d.drag(top, span, 6);
        }
        d.settle();
        const qint64 first = board->leaderboardScores.first().rank;
        d.drag(top, span / 3, 6);
        d.settle();
        if (board->leaderboardScores.first().rank < first) {
            ++grown;
        } else if (first <= 1) {
            break;
        } else {
            std::fprintf(stderr, "a drag at the top of rank %lld did not bring the rows above\n",
                         static_cast<long long>(first));
            break;
        }
    }

    // Jumps by thousands and hundreds, each scrolled.
    d.setPhase("jumps");
    d.tap(findItem(window, "initial0"));
    d.settle();
    for (const char* segment : {"main1", "hundreds1_2", "hundreds2_3", "main3", "hundreds2_0", "main0"}) {
        QQuickItem* item = findItem(window, QString::fromLatin1(segment));
        if (!item) {
            qFatal("no segment %s", segment);
        }
        d.tap(item);
        d.settle();
        for (int i = 0; i < 6; ++i) {
            d.drag(bottom, -span, 10);
        }
        d.settle();
    }

    std::printf("frames (the time from when a frame is due to its swap; 60 Hz):\n");
    for (const char* phase : {"open", "down", "up", "jumps"}) {
        printFrames(QString::fromLatin1(phase), d.frames());
    }
    printFrames(QString(), d.frames());
    std::printf("\nloads (request → rows in the page):\n");
    std::vector<double> all;
    for (const Load& l : d.loads()) {
        std::printf("  %-6s %-5s %6.1f ms\n", qPrintable(l.phase), qPrintable(l.kind), l.ms);
        all.push_back(l.ms);
    }
    std::printf("  %zu loads, max %.1f ms, median %.1f ms\n", all.size(), percentile(all, 1.0),
                percentile(all, 0.5));
    std::printf("rows at the end: %lld (ranks %lld-%lld)\n",
                static_cast<long long>(board->leaderboardScores.size()),
                static_cast<long long>(board->leaderboardScores.first().rank),
                static_cast<long long>(board->leaderboardScores.last().rank));

    if (!opt.framesLog.isEmpty()) {
        if (std::FILE* f = std::fopen(qPrintable(opt.framesLog), "w")) {
            std::fprintf(f, "phase\tinput_cpp_ms\trender_ms\tframe_ms\n");
            for (const Frame& fr : d.frames()) {
                std::fprintf(f, "%s\t%.3f\t%.3f\t%.3f\n", qPrintable(fr.phase), fr.work, fr.render, fr.total);
            }
            std::fclose(f);
        }
    }
    return 0; // the service stops with its process object
}
