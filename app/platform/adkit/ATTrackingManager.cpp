#include "ATTrackingManager.h"

#include "platform/Dispatch.h"
#include "platform/Platform.h"
#include "platform/SharedInstances.h"

#include <vector>

namespace {

// The handlers waiting for the player's answer while the alert is up.
class TrackingPrompt {
public:
    void loadData() {}
    bool asking = false;
    std::vector<std::function<void(ATTrackingManagerAuthorizationStatus)>> waiting;
};

void answer(ATTrackingManagerAuthorizationStatus status) {
    Platform::shared().userDefaults().setIntegerForKey(static_cast<int>(status),
                                                       ATTrackingManager::kStatusKey);
    auto& prompt = Shared<TrackingPrompt>::instance();
    prompt.asking = false;
    const auto waiting = std::move(prompt.waiting);
    prompt.waiting.clear();
    for (const auto& handler : waiting) {
        if (handler) {
            handler(status);
        }
    }
}

} // namespace

ATTrackingManagerAuthorizationStatus ATTrackingManager::trackingAuthorizationStatus() {
    const qint64 stored = Platform::shared().userDefaults().integerForKey(kStatusKey);
    if (stored < static_cast<int>(ATTrackingManagerAuthorizationStatus::NotDetermined) ||
        stored > static_cast<int>(ATTrackingManagerAuthorizationStatus::Authorized)) {
        return ATTrackingManagerAuthorizationStatus::NotDetermined;
    }
    return static_cast<ATTrackingManagerAuthorizationStatus>(stored);
}

void ATTrackingManager::requestTrackingAuthorizationWithCompletionHandler(
    std::function<void(ATTrackingManagerAuthorizationStatus)> handler) {
    const ATTrackingManagerAuthorizationStatus status = trackingAuthorizationStatus();
    if (status != ATTrackingManagerAuthorizationStatus::NotDetermined) {
        if (handler) {
            Dispatch::asyncMain([handler = std::move(handler), status] { handler(status); });
        }
        return;
    }
    auto& prompt = Shared<TrackingPrompt>::instance();
    prompt.waiting.push_back(std::move(handler));
    if (prompt.asking) {
        return;
    }
    prompt.asking = true;
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        kPromptTitle,
        QStringLiteral("نعرض في اللعبة إعلانات لعروضها ولألعابنا الأخرى. إن سمحت، نحفظ ما شاهدته منها مع "
                       "حسابك لنختار لك ما يناسبك؛ وإن لم تسمح، تبقى الإعلانات نفسها دون ربطها بك."),
        QString(), {kAllowTitle, kDenyTitle}, [](int index) {
            answer(index == 0 ? ATTrackingManagerAuthorizationStatus::Authorized
                              : ATTrackingManagerAuthorizationStatus::Denied);
        });
}
