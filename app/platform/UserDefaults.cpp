#include "UserDefaults.h"

#include "SettingsFile.h"

#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QLockFile>

#include <cmath>

namespace {

std::unique_ptr<QSettings> openSettings(const QString& filePath) {
    auto settings = std::make_unique<QSettings>(filePath, SettingsFile::format());
    // Every change is written through before its setter returns, so before anything announces it, to a new
    // file that replaces the old one whole: a program killed while it writes leaves the previous file, never
    // a truncated one. Where no new file can be made beside it, the write fails with a log line instead of
    // rewriting the file in place.
    settings->setAtomicSyncRequired(true);
    return settings;
}

// Each write takes the lock file beside the settings. A program killed after creating it and before writing
// its owner into it leaves a lock that nobody can tell is stale: the next write would wait half a minute for
// it to age. Such a lock is removed at start; one with an owner is left to QLockFile, which sees through a
// dead owner at once.
void removeOwnerlessLock(const QString& filePath) {
    const QString lockPath = filePath + QStringLiteral(".lock");
    if (!QFileInfo::exists(lockPath)) {
        return;
    }
    QLockFile lock(lockPath);
    qint64 pid = 0;
    QString host, app;
    if (!lock.getLockInfo(&pid, &host, &app)) {
        qWarning().noquote() << "Removing the ownerless lock" << lockPath << "left by an earlier run.";
        QFile::remove(lockPath);
    }
}

} // namespace

UserDefaults::UserDefaults(const QString& filePath) : m_path(filePath) {
    QDir().mkpath(QFileInfo(filePath).absolutePath());
    removeOwnerlessLock(filePath);
    const int unreadableBefore = SettingsFile::unreadableValueCount();
    m_settings = openSettings(filePath);
    // Values that do not read are read as absent and would be gone with the next write: the file as it was
    // is kept beside the new one first.
    if (m_settings->status() == QSettings::NoError &&
        SettingsFile::unreadableValueCount() != unreadableBefore) {
        const QString aside = filePath + ".unreadable";
        QFile::remove(aside);
        QFile::copy(filePath, aside);
        qWarning().noquote() << "The settings file" << filePath
                             << "holds values that could not be read; they read as absent, and the file as it"
                             << "was is kept as" << aside;
    }
    if (m_settings->status() != QSettings::NoError) {
        qWarning().noquote() << "The settings file" << filePath
                             << "could not be read; starting from defaults and keeping the file aside.";
        QFile::rename(filePath, filePath + ".unreadable");
        m_settings = openSettings(filePath);
    }
}

QVariant UserDefaults::read(const QString& key) const {
    QMutexLocker lock(&m_mutex);
    return m_settings->value(key);
}

void UserDefaults::write(const QString& key, const QVariant& value) {
    QMutexLocker lock(&m_mutex);
    m_settings->setValue(key, value);
    if (m_batchDepth > 0) {
        return;
    }
    m_settings->sync();
    if (m_settings->status() != QSettings::NoError) {
        qWarning().noquote() << "Could not write the settings file" << m_path;
    }
}

qint64 UserDefaults::integerForKey(const QString& key) const {
    const QVariant v = read(key);
    if (!v.isValid()) {
        return 0;
    }
    bool ok = false;
    const qint64 n = v.toLongLong(&ok);
    if (!ok) {
        // Stored as a decimal with a fraction, or not a number at all.
        const double d = v.toDouble(&ok);
        // Only a number that a 64-bit integer holds (2^63 is the first one that it does not).
        if (ok && std::isfinite(d) && d >= -9.223372036854775808e18 && d < 9.223372036854775808e18) {
            return static_cast<qint64>(d);
        }
        qWarning().noquote() << "Stored value of" << key
                             << "is not a whole number a 64-bit integer holds:" << v.toString()
                             << "- using 0";
        return 0;
    }
    return n;
}

bool UserDefaults::boolForKey(const QString& key) const {
    const QVariant v = read(key);
    if (!v.isValid()) {
        return false;
    }
    const QString s = v.toString().trimmed().toLower();
    if (s == "true" || s == "1" || s == "yes") {
        return true;
    }
    if (s == "false" || s == "0" || s == "no" || s.isEmpty()) {
        return false;
    }
    bool ok = false;
    const double d = s.toDouble(&ok);
    if (ok) {
        return d != 0.0;
    }
    qWarning().noquote() << "Stored value of" << key << "is not a yes/no value:" << s << "- using false";
    return false;
}

double UserDefaults::doubleForKey(const QString& key) const {
    const QVariant v = read(key);
    if (!v.isValid()) {
        return 0.0;
    }
    bool ok = false;
    const double d = v.toDouble(&ok);
    if (!ok) {
        qWarning().noquote() << "Stored value of" << key << "is not a number:" << v.toString() << "- using 0";
        return 0.0;
    }
    return d;
}

QString UserDefaults::stringForKey(const QString& key) const {
    const QVariant v = read(key);
    return v.isValid() ? v.toString() : QString();
}

QStringList UserDefaults::stringArrayForKey(const QString& key) const {
    const QVariant v = read(key);
    if (!v.isValid()) {
        return {};
    }
    // QSettings gives back a one-element list as a plain string.
    if (v.typeId() == QMetaType::QString) {
        return {v.toString()};
    }
    if (!v.canConvert<QStringList>() || v.typeId() != QMetaType::QStringList) {
        qWarning().noquote() << "Stored value of" << key << "is not a list of strings - using an empty one";
        return {};
    }
    return v.toStringList();
}

QVariant UserDefaults::objectForKey(const QString& key) const {
    return read(key);
}

bool UserDefaults::hasKey(const QString& key) const {
    QMutexLocker lock(&m_mutex);
    return m_settings->contains(key);
}

void UserDefaults::setIntegerForKey(qint64 value, const QString& key) {
    write(key, value);
}
void UserDefaults::setBoolForKey(bool value, const QString& key) {
    write(key, value);
}
void UserDefaults::setDoubleForKey(double value, const QString& key) {
    write(key, value);
}
void UserDefaults::setStringForKey(const QString& value, const QString& key) {
    write(key, value);
}
void UserDefaults::setObjectForKey(const QVariant& value, const QString& key) {
    write(key, value);
}

void UserDefaults::removeObjectForKey(const QString& key) {
    QMutexLocker lock(&m_mutex);
    m_settings->remove(key);
    if (m_batchDepth == 0) {
        m_settings->sync();
    }
}

void UserDefaults::synchronize() {
    QMutexLocker lock(&m_mutex);
    if (m_batchDepth > 0) {
        return; // the batch writes everything together when it ends
    }
    m_settings->sync();
}

UserDefaults::Batch::Batch(UserDefaults& defaults) : m_defaults(defaults) {
    QMutexLocker lock(&m_defaults.m_mutex);
    ++m_defaults.m_batchDepth;
}

UserDefaults::Batch::~Batch() {
    QMutexLocker lock(&m_defaults.m_mutex);
    if (--m_defaults.m_batchDepth == 0) {
        m_defaults.m_settings->sync();
        if (m_defaults.m_settings->status() != QSettings::NoError) {
            qWarning().noquote() << "Could not write the settings file" << m_defaults.m_path;
        }
    }
}
