#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>

// What went wrong with an ad. The codes are the kit's own, named as an ads kit names them.
struct GADError {
    int code = 0;
    QString localizedDescription;
};

enum GADErrorCode {
    GADErrorNoFill = 1,          // the server has no ad of that format now
    GADErrorNetworkError = 2,    // the server could not be reached, or failed
    GADErrorInvalidRequest = 3,  // an unknown unit, nobody logged in, or the kit not started
    GADErrorInvalidResponse = 4, // the server's answer is not an ad
    GADErrorCannotPresent = 11,  // already presented, another full-screen ad on screen, or no root screen
};

GADError makeGADError(int code, const QString& detail = {});

// A request for an ad. It carries nothing of its own today; the tracking consent goes with every load.
class GADRequest {
public:
    static GADRequest request() { return GADRequest(); }
};

class GADRequestConfiguration {
public:
    void setTestDeviceIdentifiers(const QStringList& identifiers) { m_testDevices = identifiers; }
    QStringList testDeviceIdentifiers() const { return m_testDevices; }

private:
    QStringList m_testDevices;
};

// Where ads come from. The real one speaks to tarvolin-service; tests put a fake in its place. Completions
// come on the main thread.
class GADAdServer {
public:
    virtual ~GADAdServer() = default;
    virtual void nextAd(const QString& unit, const QString& tracking,
                        std::function<void(const QJsonObject& ad, const std::optional<GADError>&)> done) = 0;
    virtual void recordImpression(
        const QString& token, const QString& tracking,
        std::function<void(const QString& impressionId, const std::optional<GADError>&)> done) = 0;
    virtual void claimReward(const QString& impressionId,
                             std::function<void(const std::optional<GADError>&)> done) = 0;
    virtual QUrl creativeUrl(const QString& relative) const = 0;
};

// The house ads of tarvolin-service (GET /v1/ads/next, POST /v1/ads/impressions, POST /v1/ads/rewards) over
// the platform's game service, with the player's token. Nobody logged in is an invalid request.
class GADServiceAdServer : public GADAdServer {
public:
    void nextAd(const QString& unit, const QString& tracking,
                std::function<void(const QJsonObject& ad, const std::optional<GADError>&)> done) override;
    void recordImpression(
        const QString& token, const QString& tracking,
        std::function<void(const QString& impressionId, const std::optional<GADError>&)> done) override;
    void claimReward(const QString& impressionId,
                     std::function<void(const std::optional<GADError>&)> done) override;
    QUrl creativeUrl(const QString& relative) const override;
};

// The kit itself: started once by the game, it holds the request configuration and the ad server. Loads
// made before the start fail.
class GADMobileAds {
public:
    static GADMobileAds& sharedInstance();
    ~GADMobileAds();

    // Marks the kit started and runs the handler (when there is one) on the main thread, after this returns.
    void startWithCompletionHandler(std::function<void()> handler);
    bool isStarted() const { return m_started; }
    GADRequestConfiguration& requestConfiguration() { return m_configuration; }

    // Puts a server in place of the one over the game service (tests); null goes back to the real one.
    static void setServer(std::unique_ptr<GADAdServer> server);
    GADAdServer& server();

    void loadData() {}

private:
    GADMobileAds() = default;
    template <class T> friend class Shared;

    bool m_started = false;
    GADRequestConfiguration m_configuration;
    std::unique_ptr<GADAdServer> m_server;
};
