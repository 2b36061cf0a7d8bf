#pragma once

#include <QString>
#include <functional>

enum class ATTrackingManagerAuthorizationStatus {
    NotDetermined = 0,
    Restricted = 1,
    Denied = 2,
    Authorized = 3
};

// The player's consent to tracking by the ads. It is asked once, with an alert; the answer is kept in the
// settings and every later request answers from there.
class ATTrackingManager {
public:
    static inline const QString kStatusKey = QStringLiteral("ATTrackingAuthorizationStatus");
    static inline const QString kPromptTitle = QStringLiteral("السماح بالتتبع؟");
    static inline const QString kAllowTitle = QStringLiteral("اسمح");
    static inline const QString kDenyTitle = QStringLiteral("لا تسمح");

    static ATTrackingManagerAuthorizationStatus trackingAuthorizationStatus();
    // Asks the player when the status is not determined yet (one alert, however many ask meanwhile); the
    // handler gets the status on the main thread, after this returns.
    static void requestTrackingAuthorizationWithCompletionHandler(
        std::function<void(ATTrackingManagerAuthorizationStatus)> handler);
};
