#pragma once

#include "platform/Platform.h"

#include <QMutex>
#include <QTemporaryDir>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <vector>

// Readable strings in test failures.
inline void PrintTo(const QString& s, std::ostream* os) {
    *os << '"' << s.toStdString() << '"';
}

// A clock that moves only when told; due callbacks run in order of their time.
class ManualScheduler : public Scheduler {
public:
    explicit ManualScheduler(QDateTime start);
    QDateTime now() const override { return m_now; }
    QTimeZone timeZone() const override { return m_zone; }
    void setTimeZone(const QTimeZone& zone) { m_zone = zone; }
    // Puts the clock at a moment; nothing due on the way runs.
    void setNow(const QDateTime& now);
    quint64 schedule(double seconds, std::function<void()> callback) override;
    void cancel(quint64 id) override;
    // Moves the clock forward, running everything that falls due on the way.
    void advance(double seconds);
    int pendingCount() const { return static_cast<int>(m_queue.size()); }

private:
    QDateTime m_now;
    QTimeZone m_zone = QTimeZone::systemTimeZone();
    qint64 m_nowMs = 0;
    quint64 m_nextId = 1;
    // (due time in ms, id) -> callback; the id keeps equal times in the order they were scheduled.
    std::map<std::pair<qint64, quint64>, std::function<void()>> m_queue;
};

// Web requests answered from a script, on whichever thread asks; what nothing was scripted for gets no
// answer.
class ScriptedWebClient : public WebClient {
public:
    WebResponse sendSynchronousRequest(const QByteArray& method, const QUrl& url, int timeoutMs) override;
    // Every request from now on gets this answer.
    void answerAlways(WebResponse response);
    // A 200 with this Date header; an invalid moment means no header at all.
    void answerWithDate(const QDateTime& date);
    static QByteArray httpDate(const QDateTime& date);
    int requests() const;
    QString lastMethod() const;
    QUrl lastUrl() const;

private:
    mutable QMutex m_mutex;
    std::optional<WebResponse> m_always;
    int m_requests = 0;
    QString m_lastMethod;
    QUrl m_lastUrl;
};

// Addresses are remembered instead of opened. The apps named in `installed` (by their schemes) are there;
// with `broken` set nothing opens at all.
class RecordingUrlOpener : public UrlOpener {
public:
    bool canOpenURL(const QUrl& url) const override {
        return !broken && (installed.contains(url.scheme()) || UrlOpener::canOpenURL(url));
    }
    bool openURL(const QUrl& url) override {
        opened.append(url);
        return canOpenURL(url);
    }
    QList<QUrl> opened;
    QStringList installed;
    bool broken = false;
};

// The player's answers to "where shall this be saved?", in order; an empty one declines.
class ScriptedFileChooser : public FileChooser {
public:
    QString saveFileName(const QString& title, const QString& suggestedPath) override {
        titles.append(title);
        suggested = suggestedPath;
        return answers.isEmpty() ? QString() : answers.takeFirst();
    }
    QStringList answers;
    QStringList titles;
    QString suggested;
};

// Animations that end only when the test says so.
class ManualAnimator : public Animator {
public:
    void animateWithDurationAnimationsCompletion(double seconds, std::function<void()> changes,
                                                 std::function<void()> completion) override;
    int pending() const { return static_cast<int>(m_completions.size()); }
    // Ends the oldest animation; false when none is running.
    bool completeNext();
    void completeAll();
    double lastDuration() const { return m_lastDuration; }

private:
    std::deque<std::function<void()>> m_completions;
    double m_lastDuration = 0;
};

// Returns the queued values first, then a fixed-seed sequence.
class ScriptedRandom : public Random {
public:
    std::uint32_t arc4random() override;
    void queue(std::initializer_list<std::uint32_t> values) { m_values.insert(m_values.end(), values); }
    int draws() const { return m_draws; }

private:
    std::deque<std::uint32_t> m_values;
    SystemRandom m_fallback{12345};
    int m_draws = 0;
};

// Sound players that only count their plays.
class RecordingPlayer : public AudioPlayer {
public:
    explicit RecordingPlayer(QString path) : path(std::move(path)) {}
    void prepareToPlay() override {}
    void setNumberOfLoops(int loops) override { this->loops = loops; }
    void setVolume(float v) override { m_volume = v; }
    float volume() const override { return m_volume; }
    void play() override { ++plays; }
    bool isPlaying() const override { return playing; }

    QString path;
    int plays = 0;
    int loops = -1;
    bool playing = false;

private:
    float m_volume = 1.0f;
};

class RecordingAudio : public Audio {
public:
    std::unique_ptr<AudioPlayer> createPlayer(const QString& path) override {
        auto p = std::make_unique<RecordingPlayer>(path);
        players.push_back(p.get());
        return p;
    }
    RecordingPlayer* player(const QString& stem) const {
        for (auto* p : players) {
            if (p->path.endsWith("/" + stem + ".wav")) {
                return p;
            }
        }
        return nullptr;
    }
    int totalPlays() const {
        int n = 0;
        for (auto* p : players) {
            n += p->plays;
        }
        return n;
    }
    std::vector<RecordingPlayer*> players;
};

// Installs a fresh platform with test doubles, the game's screens and a settings file in a temporary folder;
// drops every shared instance when it goes.
class TestPlatform {
public:
    explicit TestPlatform(Device::Class device = Device::Phone);
    // The game service the platform talks to (by default an address where nothing answers).
    void setServiceUrl(const QString& url);
    // From the next restart on, web requests go out for real (to a service on loopback) instead of the
    // script.
    void useRealWebClient() { m_realWeb = true; }
    ~TestPlatform();

    // Drops the managers and the platform, and installs them again on the same settings file: a restart.
    void restart();
    // Goes on as another player's profile in this folder (a restart onto that profile's settings).
    void useProfile(const QString& name);

    ManualScheduler& scheduler() { return *m_scheduler; }
    ManualAnimator& animator() { return *m_animator; }
    ScriptedRandom& random() { return *m_random; }
    RecordingAudio& audio() { return *m_audio; }
    // The scripted web client; not there after useRealWebClient().
    ScriptedWebClient& web() { return *m_web; }
    RecordingUrlOpener& urls() { return *m_urls; }
    ScriptedFileChooser& files() { return *m_files; }
    Reachability& reachability() { return Platform::shared().reachability(); }
    Alerts& alerts() { return Platform::shared().alerts(); }
    UserDefaults& defaults() { return Platform::shared().userDefaults(); }
    // Every message on screen, oldest first, as "title|text"; each is dismissed.
    QStringList takeMessages();
    // Writes a pack file "ok.wav" of `packs` packs of 25 levels into the folder and points the level reader
    // at it; "%1" in the solution stands for the pack's index, and level i of pack p shows the pictures
    // "p<p>l<i>".
    void writePackFile(int packs, const QString& solution, const QString& otherLetters);
    // The level reader reads its files from the folder until the platform goes.
    void useLevelFolder();
    // The next shuffle of the play screen's tray leaves every tile at its own place.
    void keepTrayOrder() {
        for (int i = 0; i < 12; ++i) {
            random().queue({0});
        }
    }
    QString settingsPath() const { return m_dir.filePath(m_profile + "settings.ini"); }
    QString folder() const { return m_dir.path(); }

private:
    void install();

    QTemporaryDir m_dir;
    Device::Class m_device;
    QString m_serviceUrl = QStringLiteral("http://127.0.0.1:9");
    QString m_profile;
    ManualScheduler* m_scheduler = nullptr;
    ManualAnimator* m_animator = nullptr;
    ScriptedRandom* m_random = nullptr;
    RecordingAudio* m_audio = nullptr;
    ScriptedWebClient* m_web = nullptr;
    RecordingUrlOpener* m_urls = nullptr;
    ScriptedFileChooser* m_files = nullptr;
    bool m_realWeb = false;
    bool m_levelFolder = false;
};
