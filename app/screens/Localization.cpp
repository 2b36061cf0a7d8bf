#include "Localization.h"

#include <QDebug>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>

namespace {
QHash<QString, QString> loadTable() {
    QHash<QString, QString> table;
    QFile file(QStringLiteral(":/strings/Localizable.json"));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("The table of texts is missing from the game's resources.");
        return table;
    }
    const QJsonObject o = QJsonDocument::fromJson(file.readAll()).object();
    for (auto it = o.begin(); it != o.end(); ++it) {
        table.insert(it.key(), it.value().toString());
    }
    return table;
}
} // namespace

QString Localization::localizedString(const QString& key) {
    static const QHash<QString, QString> table = loadTable();
    const auto it = table.constFind(key);
    if (it == table.constEnd()) {
        qWarning().noquote() << "No text for the key" << key;
        return key;
    }
    return *it;
}
