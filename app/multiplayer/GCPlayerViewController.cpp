#include "GCPlayerViewController.h"

#include "multiplayer/GCTurnBasedMatchHelper.h"
#include "outreach/SoundFactory.h"
#include "platform/Navigator.h"
#include "platform/Platform.h"
#include "platform/ProgressHud.h"
#include "progress/RankManager.h"
#include "progress/UserStatsManager.h"
#include "screens/Util.h"

#include <QVariantMap>
#include <algorithm>

GCPlayerViewController::GCPlayerViewController(QObject* parent)
    : ViewController(QStringLiteral("GCPlayerViewController"), parent) {}

GCPlayerViewController::~GCPlayerViewController() {
    if (m_composer) {
        m_composer->setComposeViewDelegate(nullptr);
    }
}

QString GCPlayerViewController::lastPlayed() const {
    const qint64 days = Util::daysBetween(score.date, Platform::shared().scheduler().now());
    return days == 0 ? QStringLiteral("اليوم") : QStringLiteral("منذ %1 يوم").arg(days);
}

QVariantMap GCPlayerViewController::summaryOfContext(qint64 context) {
    QVariantMap details;
    const auto& ranks = RankManager::sharedInstance();
    const auto showLevel = [&](qint64 n) {
        details.insert("currentLevel", QString::number(n));
        details.insert("currentRound", QString::number(n / 25 + 1));
        const Rank& rank = ranks.getRankForRound(n / 25);
        details.insert("badge", rank.getBadge());
        details.insert("badgeLabel", rank.name);
    };
    const QStringList fields = UserStatsManager::breakContextNumber(context);
    if (fields.isEmpty()) {
        // A level's report carries no summary: the context is the level itself.
        showLevel(context);
    } else if (fields.size() >= 3) {
        showLevel(fields.at(0).toLongLong());
        details.insert("achievements", QString::number(fields.at(1).toLongLong()));
        details.insert("activeDays", QString::number(fields.at(2).toLongLong()));
        if (fields.size() == 5) {
            // The number holds one battle field and one gold field: five labels share them.
            const QString battles = QString::number(fields.at(3).toLongLong());
            const QString gold = QString::number(fields.at(4).toLongLong());
            details.insert("timeTraveled", battles);
            details.insert("trainingsTaken", battles);
            details.insert("totalBattles", battles);
            details.insert("levelsShared", gold);
            details.insert("usedCredits", gold);
        }
    }
    return details;
}

void GCPlayerViewController::viewDidLoad() {
    m_details = summaryOfContext(score.context);
    emit detailsChanged();
}

void GCPlayerViewController::sendFriendshipRequest() {
    SoundFactory::sharedInstance().playMenuTap();
    auto* composer = new GKFriendRequestComposeViewController();
    composer->addRecipientPlayers({score.player});
    composer->setMessage(
        QStringLiteral("مرحبا %1 لقد رأيت ترتيبك المتقدم في لعبة %2، لذلك أريد ان نصبح اصدقاء عبر الجيم سنتر "
                       "لنتحدى بعضنا")
            .arg(score.player.displayName, QStringLiteral("طارفولين")));
    composer->setComposeViewDelegate(this);
    m_composer = composer;
    Platform::shared().navigator().presentViewController(composer);
}

void GCPlayerViewController::friendRequestComposeViewControllerDidFinish(
    GKFriendRequestComposeViewController* composer) {
    const bool sent = composer->wasSent();
    Platform::shared().navigator().dismissViewController();
    if (sent) {
        Util::showMessageWithTitle(QStringLiteral("سيصله طلبك، وحين يقبله ستجده في قائمة أصدقائك"),
                                   QStringLiteral("تم ارسال طلب الصداقة"));
    }
}

void GCPlayerViewController::showRequestOutcome(const std::optional<GKError>& error, bool battle,
                                                const std::function<void()>& onSent) {
    if (!error) {
        Util::showMessageWithTitleOnDismiss(QStringLiteral("لقد تم ارسال الطلب بنجاح"),
                                            QStringLiteral("تم الارسال"), onSent);
        return;
    }
    qWarning().noquote() << "error:" << error->message;
    if (error->code == QLatin1String("invitation_refused")) {
        Util::showMessageWithTitle(
            battle ? QStringLiteral("يمكنك بدء معركة فقط مع اصدقائك أو لاعبين لعبت معارك ضدهم من قبل")
                   : QStringLiteral("يمكنك طلب %1 فقط من اصدقائك أو لاعبين لعبت معارك ضدهم من قبل")
                         .arg(QStringLiteral("الذهب")),
            QStringLiteral("خطأ"));
        return;
    }
    // The service keeps requests for gold within bounds: so many a day, and one open request to a player.
    if (error->code == QLatin1String("too_many_exchange_requests")) {
        const int hours = std::max(1, (error->retryAfterSeconds + 3599) / 3600);
        Util::showMessageWithTitle(
            QStringLiteral("لقد طلبت الذهب مرات كثيرة اليوم، يمكنك الطلب من جديد بعد %1 ساعة").arg(hours),
            QStringLiteral("مهلا"));
        return;
    }
    if (error->code == QLatin1String("exchange_already_open")) {
        Util::showMessageWithTitle(QStringLiteral("طلبت الذهب من هذا اللاعب من قبل ولم يرد بعد، انتظر رده"),
                                   QStringLiteral("مهلا"));
        return;
    }
    Util::showMessageWithTitle(QStringLiteral("%1\n%2").arg(QStringLiteral("حدثت مشكلة ولم يتم ارسال الطلب"),
                                                            error->localizedDescription()),
                               QStringLiteral("خطأ"));
}

void GCPlayerViewController::sendExchangeRequest(const QString& message) {
    SoundFactory::sharedInstance().playMenuTap();
    if (message.isEmpty()) {
        Util::showMessageWithTitle(
            QStringLiteral("قبل ارسال الطلب يرجى كتابة الرسالة التي ستظهر لدى تلقي اللاعب الطلب"),
            QStringLiteral("اكتب رسالة"));
        return;
    }
    Platform::shared().progressHud().showWithMaskType(3);
    GCTurnBasedMatchHelper::sharedInstance().sendExchangeMatchRequestToPlayerWithMessageOnCompletion(
        score.player, message, [this, alive = std::weak_ptr<int>(m_alive)](std::optional<GKError> error) {
            Platform::shared().progressHud().dismiss();
            showRequestOutcome(error, false, [this, alive] {
                if (!alive.expired()) {
                    tapAction(); // away without a sound
                }
            });
        });
}

void GCPlayerViewController::sendBattleRequest(const QString& message) {
    SoundFactory::sharedInstance().playMenuTap();
    if (message.isEmpty()) {
        Util::showMessageWithTitle(
            QStringLiteral("قبل ارسال طلب المعركة يرجى كتابة الرسالة التي ستظهر لدى تلقي "
                           "اللاعب الطلب"),
            QStringLiteral("اكتب رسالة"));
        return;
    }
    m_message = message;
    const auto& rank = RankManager::sharedInstance();
    const QString rules =
        QStringLiteral(
            "ستظهر لك مرحلة عشوائية يجب ان تنهيها بنجاح ضمن فترة محدودة وعند انهاء المرحلة او انتهاء "
            "الوقت سينتقل الدور للاعب الاخر الذي يجب عليه لعب نفس المرحلة:\n-في حال انت انهيت المرحلة "
            "بشكل صحيح واللاعب الاخر لم يستطع ذلك او لم يلعب دوره خلال ٢٤ ساعة ستفوز انت في المعركة "
            "وستأخذ منه %1 نقطة لتضاف لرصيدك وتسحب من رصيده\n-في حال انت خسرت واللاعب الاخر أجاب بشكل "
            "صحيح ستخسر %2 نقطة من رصيدك لتضاف لرصيد اللاعب الخصم\n-في حالة التعادل سيربح كل منكما %3 "
            "نقطة")
            .arg(rank.getBattleWinPoints())
            .arg(rank.getBattleWinPoints())
            .arg(rank.getBattleDrawPoints());
    Util::showMessageWithTitleOnDismiss(
        rules, QStringLiteral("معركة تحدي مع لاعب اخر"), [this, alive = std::weak_ptr<int>(m_alive)] {
            if (!alive.expired()) {
                BattleLevels::startBattleGame(BattleLevels::newBattleLevel(), 1, this);
            }
        });
}

void GCPlayerViewController::playerAnsweredLevelWithScore(qint64 level, qint64 result) {
    Platform::shared().progressHud().showWithMaskType(3);
    GCTurnBasedMatchHelper::sharedInstance()
        .sendBattleMatchRequestToPlayerWithMessageAndLevelAndSenderResultOnCompletion(
            score.player, m_message, level, result,
            [this, alive = std::weak_ptr<int>(m_alive)](std::optional<GKError> error) {
                Platform::shared().progressHud().dismiss();
                showRequestOutcome(error, true, [this, alive] {
                    if (!alive.expired()) {
                        tapAction(); // away without a sound
                    }
                });
            });
}

void GCPlayerViewController::close() {
    SoundFactory::sharedInstance().playMenuTap();
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController() == this) {
        nav.dismissViewController();
    }
}

void GCPlayerViewController::tapAction() {
    auto& nav = Platform::shared().navigator();
    if (nav.presentedViewController() == this) {
        nav.dismissViewController();
    }
}
