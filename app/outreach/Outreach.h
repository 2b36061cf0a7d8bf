#pragma once

#include <QString>
#include <QStringList>
#include <functional>

class ViewController;

// Sharing to other apps: the completion names the activity the player chose (empty when cancelled).
class Sharing {
public:
    virtual ~Sharing() = default;
    virtual void
    shareContentOnViewControllerOnCompletion(const QStringList& items, const QString& imagePath,
                                             ViewController* screen,
                                             std::function<void(const QString& activity)> done) = 0;
    virtual qint64 levelsShared() const = 0;
    virtual void incrementLevelsShared() = 0;
    virtual QString appStoreLink() const = 0;
    // What the tasks ask: a share of the game completed, the rate page opened, the maker's page opened.
    virtual bool isAppShared() const = 0;
    virtual bool isAppRated() const = 0;
    virtual bool isOurAppsOpened() const = 0;
};

// The managers behind sharing register here when they start; while
// one is missing, the features that need it tell the player they are not available.
class Outreach {
public:
    static Sharing* sharing;
    static void clear();

    static inline const QString kUnavailableTitle = QStringLiteral("غير متوفر حاليا");
    static void showUnavailable(const QString& what);
};
