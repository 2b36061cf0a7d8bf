#pragma once

#include <QMutex>
#include <QSettings>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <memory>

// The player's settings store: one INI file in the profile folder. Every change is written through at once,
// so nothing is lost when the program ends abruptly. A stored value of the wrong type reads as the default
// and is reported once in the log.
class UserDefaults {
public:
    explicit UserDefaults(const QString& filePath);

    QString filePath() const { return m_path; }

    qint64 integerForKey(const QString& key) const;
    bool boolForKey(const QString& key) const;
    double doubleForKey(const QString& key) const;
    QString stringForKey(const QString& key) const;
    QVariant objectForKey(const QString& key) const;
    // A list of strings; empty when the key is absent or holds something else.
    QStringList stringArrayForKey(const QString& key) const;
    bool hasKey(const QString& key) const;

    void setIntegerForKey(qint64 value, const QString& key);
    void setBoolForKey(bool value, const QString& key);
    void setDoubleForKey(double value, const QString& key);
    void setStringForKey(const QString& value, const QString& key);
    void setObjectForKey(const QVariant& value, const QString& key);
    void removeObjectForKey(const QString& key);

    // Flushes to disk. Setters already do this; kept for callers that batch.
    void synchronize();

    // While a batch lives, changes are kept in memory and written together when the outermost batch ends:
    // a program killed in between leaves the file as it was before the batch.
    class Batch {
    public:
        explicit Batch(UserDefaults& defaults);
        ~Batch();
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

    private:
        UserDefaults& m_defaults;
    };

private:
    QVariant read(const QString& key) const;
    void write(const QString& key, const QVariant& value);

    QString m_path;
    mutable QMutex m_mutex;
    int m_batchDepth = 0;
    std::unique_ptr<QSettings> m_settings;
};
