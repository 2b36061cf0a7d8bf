#include "GCMatchData.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonValue>
#include <cmath>

std::optional<GCMatchData> GCMatchData::unarchive(const QByteArray& data) {
    if (data.isEmpty() || data.size() > kMaxBytes) {
        return std::nullopt;
    }
    QJsonParseError error{};
    const QJsonDocument doc = QJsonDocument::fromJson(data, &error);
    if (error.error != QJsonParseError::NoError || !doc.isObject()) {
        return std::nullopt;
    }
    GCMatchData out;
    const QJsonObject o = doc.object();
    for (auto it = o.begin(); it != o.end(); ++it) {
        const QJsonValue v = it.value();
        if (v.isString()) {
            out.m_values.insert(it.key(), v.toString());
            continue;
        }
        // JSON numbers arrive as doubles: only whole ones that a 64-bit integer holds exactly are numbers
        // here.
        const double d = v.toDouble(std::nan(""));
        if (!v.isDouble() || !std::isfinite(d) || std::trunc(d) != d ||
            std::fabs(d) > static_cast<double>(kMaxWholeNumber)) {
            return std::nullopt;
        }
        out.m_values.insert(it.key(), static_cast<qint64>(d));
    }
    return out;
}

std::optional<GCMatchData> GCMatchData::fromValues(const QVariantMap& values) {
    GCMatchData out;
    for (auto it = values.begin(); it != values.end(); ++it) {
        const QVariant& v = it.value();
        if (v.typeId() == QMetaType::QString) {
            out.setString(it.key(), v.toString());
        } else if (v.typeId() == QMetaType::Int || v.typeId() == QMetaType::LongLong ||
                   v.typeId() == QMetaType::UInt || v.typeId() == QMetaType::Bool) {
            // The wire holds whole numbers of at most 2^53 in size: a larger one could not be read back.
            const qint64 n = v.toLongLong();
            if (n > kMaxWholeNumber || n < -kMaxWholeNumber) {
                return std::nullopt;
            }
            out.setNumber(it.key(), n);
        } else {
            return std::nullopt;
        }
    }
    return out;
}

QByteArray GCMatchData::archivedData() const {
    QJsonObject o;
    for (auto it = m_values.begin(); it != m_values.end(); ++it) {
        if (it.value().typeId() == QMetaType::QString) {
            o.insert(it.key(), it.value().toString());
        } else {
            o.insert(it.key(), static_cast<double>(it.value().toLongLong()));
        }
    }
    return QJsonDocument(o).toJson(QJsonDocument::Compact);
}

std::optional<QString> GCMatchData::string(const QString& key) const {
    const auto it = m_values.find(key);
    if (it == m_values.end() || it.value().typeId() != QMetaType::QString) {
        return std::nullopt;
    }
    return it.value().toString();
}

qint64 GCMatchData::number(const QString& key) const {
    const auto it = m_values.find(key);
    if (it == m_values.end() || it.value().typeId() == QMetaType::QString) {
        return 0;
    }
    return it.value().toLongLong();
}
