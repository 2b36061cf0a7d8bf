#include "LoginViewController.h"

#include "platform/Platform.h"
#include "platform/gamekit/GKLocalPlayer.h"

#include <QPointer>

QString LoginViewController::messageForError(const GKError& e) {
    const QString& c = e.code;
    if (c == QLatin1String("name_taken")) {
        return QStringLiteral("هذا الاسم مستخدم من لاعب آخر، اختر اسما غيره");
    }
    if (c == QLatin1String("invalid_credentials")) {
        return QStringLiteral("الاسم أو كلمة المرور غير صحيحة");
    }
    if (c == QLatin1String("too_many_attempts")) {
        const int minutes = std::max(1, (e.retryAfterSeconds + 59) / 60);
        return QStringLiteral("محاولات خاطئة كثيرة، حاول مرة أخرى بعد %1 دقيقة").arg(minutes);
    }
    if (c == QLatin1String("invalid_display_name")) {
        return QStringLiteral("الاسم يجب أن يكون من 2 إلى 32 حرفا، بلا مسافة في أوله أو آخره");
    }
    if (c == QLatin1String("invalid_password")) {
        return QStringLiteral("كلمة المرور يجب أن تكون من 8 إلى 128 حرفا");
    }
    if (c == QLatin1String("network") || c == QLatin1String("storage_unavailable")) {
        return QStringLiteral("لا يوجد اتصال بخادم اللعبة، تأكد من الاتصال وحاول مرة أخرى");
    }
    if (c == QLatin1String("rate_limited")) {
        return QStringLiteral("طلبات كثيرة في وقت قصير، انتظر قليلا ثم حاول مرة أخرى");
    }
    return QStringLiteral("حدث خطأ غير متوقع، حاول مرة أخرى");
}

void LoginViewController::submit(const QString& displayName, const QString& password, bool createAccount) {
    if (m_busy) {
        return;
    }
    const QString name = displayName.trimmed();
    if (name.isEmpty() || password.isEmpty()) {
        m_error = QStringLiteral("اكتب الاسم وكلمة المرور");
        emit changed();
        return;
    }
    m_busy = true;
    m_error.clear();
    emit changed();
    QPointer<LoginViewController> self(this);
    auto done = [self](std::optional<GKError> error) {
        if (!self) {
            return;
        }
        self->m_busy = false;
        if (error) {
            self->m_error = messageForError(*error);
            emit self->changed();
            return;
        }
        emit self->changed();
        auto& nav = Platform::shared().navigator();
        if (nav.presentedViewController() == self) {
            nav.dismissViewController();
        }
    };
    auto& player = GKLocalPlayer::localPlayer();
    if (createAccount) {
        player.createAccount(name, password, done);
    } else {
        player.logIn(name, password, done);
    }
}

void LoginViewController::cancel() {
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController() == this) {
        nav.dismissViewController();
    }
    GKLocalPlayer::localPlayer().cancelLogin();
}
