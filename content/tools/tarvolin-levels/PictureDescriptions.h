#pragma once

#include "SceneFile.h"
#include "SceneRules.h"

#include <QHash>
#include <QString>

namespace tarvolin::levels {

// Short Arabic names of what symbols show, from svg/symbols-ar.tsv: "KEY<TAB>NAME[<TAB>SOURCE]" lines, KEY
// being what svg/symbols.tsv says the symbol shows; '#' starts a comment line. A missing file names nothing.
class ArabicNames {
public:
    static ArabicNames load(const QString& path);
    void insert(const QString& key, const QString& name) { m_names.insert(key, name); }
    QString nameOf(const QString& key) const { return m_names.value(key); }
    qsizetype size() const { return m_names.size(); }

private:
    QHash<QString, QString> m_names;
};

// Where a setting puts what the picture shows, in Arabic ("في الصحراء"); empty for anything else.
QString settingPhrase(const QString& setting);

// The short Arabic text a screen reader says for the picture: the named symbols, the largest first, each
// once, joined with "و", then where they are ("نخلة وجمل في الصحراء"). A picture none of whose symbols has a
// name is "صورة" with its setting. Never empty, and on one line.
QString describeScene(const Scene& scene, const SymbolKeys& keys, const ArabicNames& names);

} // namespace tarvolin::levels
