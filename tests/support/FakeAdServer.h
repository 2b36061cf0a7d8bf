// An ad server for tests: it answers at once with the ad or the error set for the unit, or holds its answers
// until the test releases them, and keeps what it was asked.
#pragma once

#include "platform/adkit/GADMobileAds.h"

#include <QJsonObject>
#include <QList>
#include <QMap>
#include <QPair>
#include <functional>
#include <memory>
#include <vector>

class FakeAdServer : public GADAdServer {
public:
    // What the test sees and sets; it outlives the server the kit owns.
    struct State {
        QMap<QString, QJsonObject> ads;             // by unit
        QMap<QString, GADError> adErrors;           // by unit, before ads
        QList<QPair<QString, QString>> requests;    // (unit, tracking)
        QList<QPair<QString, QString>> impressions; // (token, tracking)
        QStringList claims;                         // impression identifiers
        std::optional<GADError> impressionError;
        std::optional<GADError> claimError;
        QString creativeBase = QStringLiteral("http://ads.test"); // what creatives' paths are relative to
        bool holdAds = false;
        bool holdImpressions = false;
        std::vector<std::function<void()>> heldAds;
        std::vector<std::function<void()>> heldImpressions;

        int requestsFor(const QString& unit) const {
            int n = 0;
            for (const auto& r : requests) {
                n += r.first == unit ? 1 : 0;
            }
            return n;
        }
        static void release(std::vector<std::function<void()>>& held) {
            auto answers = std::move(held);
            held.clear();
            for (auto& answer : answers) {
                answer();
            }
        }
    };

    explicit FakeAdServer(std::shared_ptr<State> state) : m_state(std::move(state)) {}

    // Puts a fake server in the kit and hands back its state.
    static std::shared_ptr<State> install() {
        auto state = std::make_shared<State>();
        GADMobileAds::setServer(std::make_unique<FakeAdServer>(state));
        return state;
    }

    void nextAd(const QString& unit, const QString& tracking,
                std::function<void(const QJsonObject&, const std::optional<GADError>&)> done) override {
        m_state->requests.append({unit, tracking});
        std::function<void()> answer;
        if (m_state->adErrors.contains(unit)) {
            answer = [done, e = m_state->adErrors.value(unit)] { done({}, e); };
        } else if (m_state->ads.contains(unit)) {
            answer = [done, ad = m_state->ads.value(unit)] { done(ad, std::nullopt); };
        } else {
            answer = [done] {
                done({}, makeGADError(GADErrorInvalidRequest, QStringLiteral("unknown unit")));
            };
        }
        if (m_state->holdAds) {
            m_state->heldAds.push_back(std::move(answer));
        } else {
            answer();
        }
    }

    void recordImpression(const QString& token, const QString& tracking,
                          std::function<void(const QString&, const std::optional<GADError>&)> done) override {
        m_state->impressions.append({token, tracking});
        const QString id = QStringLiteral("I%1").arg(m_state->impressions.size());
        std::function<void()> answer = [done, id, e = m_state->impressionError] {
            done(e ? QString() : id, e);
        };
        if (m_state->holdImpressions) {
            m_state->heldImpressions.push_back(std::move(answer));
        } else {
            answer();
        }
    }

    void claimReward(const QString& impressionId,
                     std::function<void(const std::optional<GADError>&)> done) override {
        m_state->claims.append(impressionId);
        done(m_state->claimError);
    }

    QUrl creativeUrl(const QString& relative) const override {
        return QUrl(m_state->creativeBase + relative);
    }

private:
    std::shared_ptr<State> m_state;
};

// An ad as the service describes it.
inline QJsonObject fakeAd(const QString& id, const QString& format,
                          const QString& kind = QStringLiteral("card")) {
    QJsonObject ad{{"adIdentifier", id},
                   {"format", format},
                   {"kind", kind},
                   {"promotion", "house"},
                   {"title", QStringLiteral("متجر الذهب")},
                   {"body", QStringLiteral("ضاعف ذهبك اليوم")},
                   {"callToAction", QStringLiteral("افتح المتجر")},
                   {"actionUrl", "tarvolin://store"},
                   {"imageUrl", kind == QLatin1String("picture")
                                    ? QJsonValue("/v1/ads/creatives/" + id + ".svg")
                                    : QJsonValue(QJsonValue::Null)},
                   {"background", "#1d1640"},
                   {"foreground", "#fff8ea"},
                   {"accent", "#f9c32d"},
                   {"durationSeconds", format == QLatin1String("rewarded") ? 15 : 0},
                   {"width", format == QLatin1String("banner") ? 320 : 0},
                   {"height", format == QLatin1String("banner") ? 50 : 0},
                   {"impressionToken", "T-" + id}};
    return ad;
}
