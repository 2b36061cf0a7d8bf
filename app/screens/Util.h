#pragma once

#include "platform/Random.h"

#include <QColor>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <functional>
#include <utility>

class ViewController;

// Class-level helpers the whole game leans on: device tests, dates, messages, delays, number formatting.
class Util {
public:
    static QString getStoryboard();
    static QString getGeneralStoryboard();
    static bool isIPhoneXFamily();
    static bool isiPad();
    static bool is35PhoneScreen();

    // Asked anew on each call; may be called from any thread.
    static bool isConnected();

    static ViewController* getRootViewController();
    static ViewController* getTopNavViewController();
    static ViewController* getCurrentPresentedViewController();

    static QString shuffleString(const QString& text);
    template <class T> static void shuffleArray(QList<T>& array) {
        const auto n = static_cast<std::uint32_t>(array.size());
        for (std::uint32_t i = 0; i < n; ++i) {
            const std::uint32_t r = arc4random();
            array.swapItemsAt(i, i + (r % (n - i)));
        }
    }
    static QColor generateRandomColor();

    // The moment as the player's clock on the wall shows it (the platform's time zone).
    static QDateTime inPlayersZone(const QDateTime& date);
    // Same calendar day in the player's time zone; a daylight-saving change does not move a day's bounds.
    static bool isTwoDatesSameDay(const QDateTime& a, const QDateTime& b);
    // Whole days elapsed from `from` to `to`; negative when `to` is earlier.
    static qint64 daysBetween(const QDateTime& from, const QDateTime& to);
    // a minus b in whole hours, cut toward zero (the reverse order of daysBetween).
    static qint64 hoursBetween(const QDateTime& a, const QDateTime& b);

    static void showMessageWithTitle(const QString& text, const QString& title);
    static void showMessageWithTitleOnDismiss(const QString& text, const QString& title,
                                              std::function<void()> onDismiss);
    static void showMessageWithTitleOnOk(const QString& text, const QString& title,
                                         std::function<void()> onOk);

    static void delayCallbackForTotalSeconds(std::function<void()> block, double seconds);

    // Decimal digits grouped by three with ",", whatever the locale.
    static QString formatLongNumber(qint64 number);
    // Fills a printf-style text in order: %d, %ld, %lu and %@ each take the next argument, %% is a percent
    // sign. A text with fewer places than arguments leaves the rest out; one with more leaves them empty.
    static QString stringWithFormat(const QString& format, const QStringList& arguments);
    static QString formatDateWithFormat(const QDateTime& date, const QString& format);
    static bool isStringContainedInArray(const QString& text, const QStringList& array);
    static qint64 sumLongArray(const QList<qint64>& array);

    // Leading-number conversions in the manner of the platform's strings: leading blanks, an optional sign,
    // the digits that follow; 0 when there are none; out-of-range ints clamp.
    static qint32 intValue(const QString& text);
    static double doubleValue(const QString& text);
};
