#include "TestPlatform.h"

#include "core/LevelsInfoReader.h"
#include "platform/Dispatch.h"
#include "platform/SharedInstances.h"
#include "platform/adkit/ATTrackingManager.h"
#include "platform/storekit/SKPaymentQueue.h"
#include "platform/storekit/SKStoreProductViewController.h"
#include "screens/Screens.h"

#include <QCoreApplication>
#include <QDir>
#include <QEvent>
#include <QFile>
#include <QLocale>
#include <cmath>

ManualScheduler::ManualScheduler(QDateTime start) : m_now(std::move(start)) {}

quint64 ManualScheduler::schedule(double seconds, std::function<void()> callback) {
    const quint64 id = m_nextId++;
    const qint64 due = m_nowMs + std::max<qint64>(0, std::llround(seconds * 1000.0));
    m_queue.emplace(std::make_pair(due, id), std::move(callback));
    return id;
}

void ManualScheduler::cancel(quint64 id) {
    for (auto it = m_queue.begin(); it != m_queue.end(); ++it) {
        if (it->first.second == id) {
            m_queue.erase(it);
            return;
        }
    }
}

void ManualScheduler::advance(double seconds) {
    const qint64 target = m_nowMs + std::llround(seconds * 1000.0);
    while (!m_queue.empty() && m_queue.begin()->first.first <= target) {
        auto node = m_queue.extract(m_queue.begin());
        const qint64 step = node.key().first - m_nowMs;
        m_nowMs = node.key().first;
        m_now = m_now.addMSecs(step);
        node.mapped()();
    }
    m_now = m_now.addMSecs(target - m_nowMs);
    m_nowMs = target;
}

void ManualScheduler::setNow(const QDateTime& now) {
    m_nowMs += m_now.msecsTo(now);
    m_now = now;
}

WebResponse ScriptedWebClient::sendSynchronousRequest(const QByteArray& method, const QUrl& url, int) {
    QMutexLocker lock(&m_mutex);
    ++m_requests;
    m_lastMethod = QString::fromLatin1(method);
    m_lastUrl = url;
    if (m_always) {
        return *m_always;
    }
    WebResponse none;
    none.error = QStringLiteral("no answer scripted");
    return none;
}

void ScriptedWebClient::answerAlways(WebResponse response) {
    QMutexLocker lock(&m_mutex);
    m_always = std::move(response);
}

void ScriptedWebClient::answerWithDate(const QDateTime& date) {
    WebResponse r;
    r.received = true;
    r.status = 200;
    if (date.isValid()) {
        r.headers.insert("date", httpDate(date));
    }
    answerAlways(r);
}

QByteArray ScriptedWebClient::httpDate(const QDateTime& date) {
    return QLocale::c().toString(date.toUTC(), QStringLiteral("ddd, dd MMM yyyy HH:mm:ss")).toLatin1() +
           " GMT";
}

int ScriptedWebClient::requests() const {
    QMutexLocker lock(&m_mutex);
    return m_requests;
}
QString ScriptedWebClient::lastMethod() const {
    QMutexLocker lock(&m_mutex);
    return m_lastMethod;
}
QUrl ScriptedWebClient::lastUrl() const {
    QMutexLocker lock(&m_mutex);
    return m_lastUrl;
}

void ManualAnimator::animateWithDurationAnimationsCompletion(double seconds, std::function<void()> changes,
                                                             std::function<void()> completion) {
    m_lastDuration = seconds;
    if (changes) {
        changes();
    }
    m_completions.push_back(completion ? std::move(completion) : [] {});
}

bool ManualAnimator::completeNext() {
    if (m_completions.empty()) {
        return false;
    }
    auto completion = std::move(m_completions.front());
    m_completions.pop_front();
    completion();
    return true;
}

void ManualAnimator::completeAll() {
    while (completeNext()) {
    }
}

std::uint32_t ScriptedRandom::arc4random() {
    ++m_draws;
    if (!m_values.empty()) {
        const std::uint32_t v = m_values.front();
        m_values.pop_front();
        return v;
    }
    return m_fallback.arc4random();
}

TestPlatform::TestPlatform(Device::Class device) : m_device(device) {
    install();
}

namespace {
// Screens let go of by the navigator are deleted later; they go while the platform they use is still there.
void flushDeletes() {
    if (QCoreApplication::instance()) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}
} // namespace

TestPlatform::~TestPlatform() {
    Dispatch::waitForGlobal();
    SKStoreProductViewController::clearProducts();
    SKPaymentQueue::setServer(nullptr);
    flushDeletes();
    SharedInstances::resetAll();
    Platform::uninstall();
    flushDeletes();
    if (m_levelFolder) {
        LevelsInfoReader::setResourceRoot(QStringLiteral(":/levels"));
    }
}

void TestPlatform::install() {
    Platform::Services services;
    services.userDefaults = std::make_unique<UserDefaults>(settingsPath());
    auto scheduler = std::make_unique<ManualScheduler>(QDateTime(QDate(2026, 3, 14), QTime(9, 30)));
    auto animator = std::make_unique<ManualAnimator>();
    auto random = std::make_unique<ScriptedRandom>();
    m_scheduler = scheduler.get();
    m_animator = animator.get();
    m_random = random.get();
    auto audio = std::make_unique<RecordingAudio>();
    m_audio = audio.get();
    services.audio = std::move(audio);
    services.scheduler = std::move(scheduler);
    services.animator = std::move(animator);
    services.random = std::move(random);
    services.reachability = std::make_unique<Reachability>(false);
    services.device = std::make_unique<Device>(m_device);
    auto urls = std::make_unique<RecordingUrlOpener>();
    m_urls = urls.get();
    services.urls = std::move(urls);
    auto files = std::make_unique<ScriptedFileChooser>();
    m_files = files.get();
    services.files = std::move(files);
    services.homeDirectory = m_dir.filePath(m_profile + "home");
    services.localNotifications =
        std::make_unique<LocalNotifications>(m_dir.filePath(m_profile + "notifications.json"));
    if (m_realWeb) {
        m_web = nullptr;
        services.web = std::make_unique<QtWebClient>();
    } else {
        auto web = std::make_unique<ScriptedWebClient>();
        m_web = web.get();
        services.web = std::move(web);
    }
    // Nothing listens on the discard port: a test that does not start a service gets a refused connection.
    services.gameService = std::make_unique<GameService>(QUrl(m_serviceUrl));
    Platform::install(std::move(services));
    registerScreens(Platform::shared().navigator());
    // The device's tracking question was answered before: tests of other things see no prompt.
    if (!Platform::shared().userDefaults().hasKey(ATTrackingManager::kStatusKey)) {
        Platform::shared().userDefaults().setIntegerForKey(
            static_cast<int>(ATTrackingManagerAuthorizationStatus::Denied), ATTrackingManager::kStatusKey);
    }
}

void TestPlatform::useLevelFolder() {
    LevelsInfoReader::setResourceRoot(folder());
    m_levelFolder = true;
}

void TestPlatform::writePackFile(int packs, const QString& solution, const QString& otherLetters) {
    QString text;
    for (int p = 0; p < packs; ++p) {
        text += QStringLiteral("[pack=%1]\n").arg(p + 1);
        const QString answer = solution.contains("%1") ? solution.arg(p) : solution;
        for (int i = 0; i < 25; ++i) {
            text += QStringLiteral("level=%1\nimage=p%2l%3\nother_letters=%4\n")
                        .arg(answer)
                        .arg(p)
                        .arg(i)
                        .arg(otherLetters);
        }
    }
    QFile f(QDir(m_dir.path()).filePath("ok.wav"));
    if (!f.open(QIODevice::WriteOnly) || f.write(text.toUtf8()) < 0) {
        qFatal("The test pack file could not be written");
    }
    useLevelFolder();
}

void TestPlatform::useProfile(const QString& name) {
    m_profile = name.isEmpty() ? QString() : name + "/";
    restart();
}

void TestPlatform::setServiceUrl(const QString& url) {
    m_serviceUrl = url;
    restart();
}

QStringList TestPlatform::takeMessages() {
    QStringList shown;
    while (alerts().isVisible()) {
        shown << alerts().title() + "|" + alerts().message();
        alerts().press(0);
    }
    return shown;
}

void TestPlatform::restart() {
    Dispatch::waitForGlobal();
    flushDeletes();
    SharedInstances::resetAll();
    Platform::uninstall();
    flushDeletes();
    install();
}
