#include "Util.h"

#include <QRegularExpression>

#include "platform/Platform.h"

#include <QLocale>
#include <QTimeZone>
#include <cmath>
#include <limits>

QString Util::getStoryboard() {
    if (isiPad()) {
        return QStringLiteral("Main_iPad");
    }
    return isIPhoneXFamily() ? QStringLiteral("Main_iPhoneX") : QStringLiteral("Main_iPhone");
}

QString Util::getGeneralStoryboard() {
    return isiPad() ? QStringLiteral("General_iPad") : QStringLiteral("General_iPhone");
}

bool Util::isIPhoneXFamily() {
    return Platform::shared().device().nativeAspectRatio() >= 2.0f;
}
bool Util::isiPad() {
    return Platform::shared().device().isPad();
}
bool Util::is35PhoneScreen() {
    return !isiPad() && Platform::shared().device().designSize().height() <= 480.0;
}

bool Util::isConnected() {
    return Platform::shared().reachability().currentReachabilityStatus() != 0;
}

ViewController* Util::getRootViewController() {
    return Platform::shared().navigator().rootViewController();
}
ViewController* Util::getTopNavViewController() {
    return Platform::shared().navigator().topViewController();
}

ViewController* Util::getCurrentPresentedViewController() {
    auto& nav = Platform::shared().navigator();
    if (auto* presented = nav.presentedViewController()) {
        return presented;
    }
    return nav.topViewController();
}

QString Util::shuffleString(const QString& text) {
    if (text.isEmpty()) {
        return text;
    }
    QList<QChar> units(text.begin(), text.end());
    shuffleArray(units);
    return QString(units.constData(), units.size());
}

QColor Util::generateRandomColor() {
    const int r = static_cast<int>(arc4random() % 256);
    const int g = static_cast<int>(arc4random() % 256);
    const int b = static_cast<int>(arc4random() % 256);
    return QColor::fromRgbF(r / 255.0f, g / 255.0f, b / 255.0f, 1.0f);
}

QDateTime Util::inPlayersZone(const QDateTime& date) {
    if (!Platform::isInstalled()) {
        return date.toLocalTime();
    }
    return date.toTimeZone(Platform::shared().scheduler().timeZone());
}

bool Util::isTwoDatesSameDay(const QDateTime& a, const QDateTime& b) {
    return inPlayersZone(a).date() == inPlayersZone(b).date();
}

qint64 Util::daysBetween(const QDateTime& from, const QDateTime& to) {
    const QDateTime f = inPlayersZone(from);
    const QDateTime t = inPlayersZone(to);
    qint64 days = f.date().daysTo(t.date());
    if (days > 0 && t.time() < f.time()) {
        --days;
    } else if (days < 0 && t.time() > f.time()) {
        ++days;
    }
    return days;
}

qint64 Util::hoursBetween(const QDateTime& a, const QDateTime& b) {
    const double seconds = static_cast<double>(b.msecsTo(a)) / 1000.0;
    return static_cast<qint64>(std::trunc(seconds / 3600.0));
}

void Util::showMessageWithTitle(const QString& text, const QString& title) {
    showMessageWithTitleOnDismiss(text, title, nullptr);
}

void Util::showMessageWithTitleOnDismiss(const QString& text, const QString& title,
                                         std::function<void()> onDismiss) {
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        title, text, QStringLiteral("موافق"), {}, [onDismiss = std::move(onDismiss)](int) {
            if (onDismiss) {
                onDismiss();
            }
        });
}

void Util::showMessageWithTitleOnOk(const QString& text, const QString& title, std::function<void()> onOk) {
    Platform::shared().alerts().showWithTitleMessageCancelButtonTitleOtherButtonTitlesTapBlock(
        title, text, QStringLiteral("الغاء"), {QStringLiteral("موافق")}, [onOk = std::move(onOk)](int index) {
            if (index == 1 && onOk) {
                onOk();
            }
        });
}

void Util::delayCallbackForTotalSeconds(std::function<void()> block, double seconds) {
    delayCallback(std::move(block), seconds);
}

QString Util::formatLongNumber(qint64 number) {
    const bool negative = number < 0;
    // The magnitude as unsigned so that the smallest 64-bit number keeps its digits.
    const quint64 magnitude = negative ? 0 - static_cast<quint64>(number) : static_cast<quint64>(number);
    const QString digits = QString::number(magnitude);
    QString out;
    const qsizetype n = digits.size();
    for (qsizetype i = 0; i < n; ++i) {
        if (i > 0 && (n - i) % 3 == 0) {
            out += QLatin1Char(',');
        }
        out += digits.at(i);
    }
    return negative ? QStringLiteral("-") + out : out;
}

QString Util::formatDateWithFormat(const QDateTime& date, const QString& format) {
    return QLocale::c().toString(inPlayersZone(date), format);
}

bool Util::isStringContainedInArray(const QString& text, const QStringList& array) {
    return array.contains(text);
}

qint64 Util::sumLongArray(const QList<qint64>& array) {
    qint64 sum = 0;
    for (qint64 v : array) {
        // Each element counts by its 32-bit value, as the stored numbers always were.
        sum += static_cast<qint32>(v);
    }
    return sum;
}

qint32 Util::intValue(const QString& text) {
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace()) {
        ++i;
    }
    bool negative = false;
    if (i < text.size() && (text.at(i) == QLatin1Char('-') || text.at(i) == QLatin1Char('+'))) {
        negative = text.at(i) == QLatin1Char('-');
        ++i;
    }
    qint64 value = 0;
    while (i < text.size() && text.at(i) >= QLatin1Char('0') && text.at(i) <= QLatin1Char('9')) {
        value = value * 10 + (text.at(i).unicode() - '0');
        if (value > std::numeric_limits<qint32>::max()) {
            return negative ? std::numeric_limits<qint32>::min() : std::numeric_limits<qint32>::max();
        }
        ++i;
    }
    return static_cast<qint32>(negative ? -value : value);
}

double Util::doubleValue(const QString& text) {
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace()) {
        ++i;
    }
    qsizetype end = i;
    if (end < text.size() && (text.at(end) == QLatin1Char('-') || text.at(end) == QLatin1Char('+'))) {
        ++end;
    }
    bool dot = false;
    while (end < text.size()) {
        const QChar c = text.at(end);
        if (c >= QLatin1Char('0') && c <= QLatin1Char('9')) {
            ++end;
        } else if (c == QLatin1Char('.') && !dot) {
            dot = true;
            ++end;
        } else {
            break;
        }
    }
    bool ok = false;
    const double v = text.mid(i, end - i).toDouble(&ok);
    return ok ? v : 0.0;
}

QString Util::stringWithFormat(const QString& format, const QStringList& arguments) {
    static const QRegularExpression place(QStringLiteral("%(%|@|d|ld|lu)"));
    QString out;
    qsizetype from = 0;
    qsizetype next = 0;
    for (auto it = place.globalMatch(format); it.hasNext();) {
        const QRegularExpressionMatch m = it.next();
        out += format.mid(from, m.capturedStart() - from);
        out += m.captured(1) == QLatin1String("%") ? QStringLiteral("%") : arguments.value(next++);
        from = m.capturedEnd();
    }
    return out + format.mid(from);
}
