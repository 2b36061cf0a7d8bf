#pragma once

#include "ProgressDocument.h"
#include "platform/gamekit/GameService.h"

#include <QJsonObject>
#include <QString>
#include <functional>
#include <memory>
#include <optional>

// How saved progress reaches the game service: GET and PUT /v1/progress. Tests put a script in its place.
class ProgressTransport {
public:
    using Completion = GameService::Completion;
    virtual ~ProgressTransport() = default;
    virtual void load(Completion done) = 0;
    virtual void save(qint64 baseVersion, const QJsonObject& progress, Completion done) = 0;
};

// Keeps a logged-in player's progress on the game service. Each change that matters (a level, gold, skips,
// points, the round's state, an achievement's flags) marks the progress changed and schedules one save a
// moment later; at most one save is on its way, and the state at the moment it leaves is what is sent. Going
// to the background saves at once. Without a connection the change stays pending in the profile and is sent
// when the service can be reached again. After a login the saved progress is taken silently into a fresh
// profile; when both hold progress that differs, the player chooses which to keep. Nothing happens while no
// player is logged in.
class CloudSaveManager {
public:
    // The delay that gathers the changes of one moment into one save, and the wait before a save that found
    // no connection is tried again.
    static constexpr double kSaveDelaySeconds = 2.0;
    static constexpr double kRetrySeconds = 60.0;
    // In the profile: the service's version this profile's progress is based on, the player it belongs to,
    // and whether a change has not reached the service yet.
    static inline const QString kVersionKey = QStringLiteral("cloudProgressVersion");
    static inline const QString kPlayerKey = QStringLiteral("cloudProgressPlayer");
    static inline const QString kPendingKey = QStringLiteral("cloudProgressPending");

    static CloudSaveManager& sharedInstance();
    CloudSaveManager();
    ~CloudSaveManager();
    void loadData();

    // Replaces the way to the service (tests).
    void setTransport(std::unique_ptr<ProgressTransport> transport);

    // The player logged in (or another one did): compares this profile's progress with the saved one.
    void playerLoggedIn(const QString& playerId);
    // Something that is saved changed.
    void progressChanged();
    // The game goes to the background: a pending change leaves now.
    void enterBackground();

    qint64 baseVersion() const;
    bool isPending() const;
    bool isSaving() const { return m_inFlight; }
    bool isChoosing() const { return m_choosing; }
    // The last thing that went wrong, for the log and the tests; empty after a success.
    QString lastProblem() const { return m_lastProblem; }

private:
    bool loggedIn() const;
    void schedule(double seconds);
    void saveNow();
    void saved(const QJsonObject& body, const std::optional<GKError>& error);
    // The service holds `remote` (its version and document): take it, keep ours, or ask.
    void reconcile(const QJsonObject& remote, bool afterConflict);
    void ask(const ProgressDocument& local, const ProgressDocument& remote, qint64 remoteVersion);
    void take(const ProgressDocument& remote, qint64 version);
    void keep(qint64 remoteVersion);
    void setBaseVersion(qint64 version);
    void setPending(bool pending);

    std::unique_ptr<ProgressTransport> m_transport;
    quint64 m_timer = 0;
    bool m_inFlight = false;
    bool m_changedInFlight = false; // a change came while a save was on its way
    bool m_choosing = false;        // the player is asked; nothing is saved meanwhile
    bool m_loading = false;         // the saved progress is being fetched after a login
    bool m_applying = false;        // the saved progress is being taken: its notifications are no change
    QString m_lastProblem;
    bool m_toldGoldRefused = false; // the player was told that the service refused this profile's gold
};
