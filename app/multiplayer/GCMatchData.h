#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QVariant>
#include <optional>

// The small keyed dictionary that a battle or a gold exchange keeps as a turn-based match's data: string
// keys, and values that are strings or whole numbers. A reader takes a missing number as 0 and a missing
// string as null.
//
// On the wire it is one JSON object in UTF-8, written compactly with its keys sorted, whose values are JSON
// strings or JSON integers of at most 2^53 in size, for example
//     {"level":57,"message":"هيا","senderResult":1,"type":"battle"}
// Data that is not such an object (empty, truncated, another program's, larger than the service keeps, with a
// value of any other kind) is no dictionary at all.
class GCMatchData {
public:
    // The most a match keeps.
    static constexpr qsizetype kMaxBytes = 64 * 1024;
    // The largest whole number a value may be (2^53), and the smallest its negative.
    static constexpr qint64 kMaxWholeNumber = qint64(1) << 53;

    static std::optional<GCMatchData> unarchive(const QByteArray& data);
    QByteArray archivedData() const;

    void setString(const QString& key, const QString& value) { m_values.insert(key, value); }
    void setNumber(const QString& key, qint64 value) { m_values.insert(key, value); }

    // The string under the key; null when there is none (a number there counts as none).
    std::optional<QString> string(const QString& key) const;
    // The number under the key; 0 when there is none.
    qint64 number(const QString& key) const;
    bool contains(const QString& key) const { return m_values.contains(key); }

    bool operator==(const GCMatchData& other) const { return m_values == other.m_values; }

    // The values by key: QString or qint64.
    QVariantMap values() const { return m_values; }
    // A dictionary of these values; nothing when one is neither a string nor a whole number of at most 2^53
    // in size.
    static std::optional<GCMatchData> fromValues(const QVariantMap& values);

private:
    QMap<QString, QVariant> m_values; // QString or qint64
};
