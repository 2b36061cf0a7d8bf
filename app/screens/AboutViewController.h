#pragma once

#include "platform/ViewController.h"

// The hub of the secondary actions: help, tips, sharing and rating the game, the maker's pages and games, and
// the credits.
class AboutViewController : public ViewController {
    Q_OBJECT
public:
    explicit AboutViewController(QObject* parent = nullptr);

    Q_INVOKABLE void openHelp();
    Q_INVOKABLE void openTips();
    Q_INVOKABLE void shareGame();
    Q_INVOKABLE void rateGame();
    Q_INVOKABLE void openInstagramPage();
    Q_INVOKABLE void openTwitterPage();
    Q_INVOKABLE void openFacebookPage();
    Q_INVOKABLE void openOurGames();
    Q_INVOKABLE void openCredits();
    Q_INVOKABLE void close();
};
