#include "UrlOpener.h"

#include <QDebug>
#include <QDesktopServices>

bool UrlOpener::canOpenURL(const QUrl& url) const {
    // Web and mail addresses always have a handler on a desktop; other schemes belong to phone apps.
    const QString scheme = url.scheme();
    return url.isValid() && (scheme == QLatin1String("https") || scheme == QLatin1String("http") ||
                             scheme == QLatin1String("mailto"));
}

bool UrlOpener::openURL(const QUrl& url) {
    if (!canOpenURL(url)) {
        qInfo().noquote() << "Nothing opens" << url.toString();
        return false;
    }
    return QDesktopServices::openUrl(url);
}
