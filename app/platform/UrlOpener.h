#pragma once

#include <QUrl>

// Opens an address with whatever the desktop has for it (a web browser, a mail client, an app's scheme).
class UrlOpener {
public:
    virtual ~UrlOpener() = default;
    virtual bool canOpenURL(const QUrl& url) const;
    virtual bool openURL(const QUrl& url);
};
