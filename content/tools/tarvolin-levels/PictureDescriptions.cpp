#include "PictureDescriptions.h"

#include <QFile>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <numeric>

namespace tarvolin::levels {

ArabicNames ArabicNames::load(const QString& path) {
    ArabicNames names;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return names;
    for (const QString& line : QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'))) {
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const QStringList fields = line.split(QLatin1Char('\t'));
        QString name = fields.size() >= 2 ? fields.at(1) : QString();
        // Direction marks and embeddings are dropped: the text is said, and goes on one line of its own.
        name.remove(
            QRegularExpression(QStringLiteral("[\\x{200e}\\x{200f}\\x{202a}-\\x{202e}\\x{2066}-\\x{2069}]")));
        name = name.simplified();
        if (!fields.at(0).isEmpty() && !name.isEmpty())
            names.insert(fields.at(0), name);
    }
    return names;
}

QString settingPhrase(const QString& setting) {
    static const QHash<QString, QString> phrases{
        {QStringLiteral("sky"), QStringLiteral("في السماء")},
        {QStringLiteral("sea"), QStringLiteral("في البحر")},
        {QStringLiteral("underwater"), QStringLiteral("تحت الماء")},
        {QStringLiteral("beach"), QStringLiteral("على الشاطئ")},
        {QStringLiteral("desert"), QStringLiteral("في الصحراء")},
        {QStringLiteral("night"), QStringLiteral("في الليل")},
        {QStringLiteral("space"), QStringLiteral("في الفضاء")},
        {QStringLiteral("forest"), QStringLiteral("في الغابة")},
        {QStringLiteral("garden"), QStringLiteral("في الحديقة")},
        {QStringLiteral("farm"), QStringLiteral("في المزرعة")},
        {QStringLiteral("mountain"), QStringLiteral("على الجبل")},
        {QStringLiteral("snow"), QStringLiteral("في الثلج")},
        {QStringLiteral("rain"), QStringLiteral("تحت المطر")},
        {QStringLiteral("city"), QStringLiteral("في المدينة")},
        {QStringLiteral("street"), QStringLiteral("في الشارع")},
        {QStringLiteral("kitchen"), QStringLiteral("في المطبخ")},
        {QStringLiteral("classroom"), QStringLiteral("في الفصل")},
        {QStringLiteral("room"), QStringLiteral("في الغرفة")},
        {QStringLiteral("hospital"), QStringLiteral("في المستشفى")},
        {QStringLiteral("stadium"), QStringLiteral("في الملعب")},
    };
    return phrases.value(setting);
}

QString describeScene(const Scene& scene, const SymbolKeys& keys, const ArabicNames& names) {
    // Largest first, so that the main symbol is heard first; of equal sizes, the first written.
    const std::vector<Placement> places = scene.layout();
    std::vector<size_t> order(scene.symbols.size());
    std::iota(order.begin(), order.end(), size_t{0});
    std::stable_sort(order.begin(), order.end(),
                     [&](size_t a, size_t b) { return places[a].size > places[b].size; });
    QStringList said;
    for (size_t i : order) {
        const QString name = names.nameOf(keys.keyOf(scene.symbols[i].stem));
        if (!name.isEmpty() && !said.contains(name))
            said << name;
    }
    QString text = said.isEmpty() ? QStringLiteral("صورة") : said.join(QStringLiteral(" و"));
    const QString where = settingPhrase(scene.setting);
    if (!where.isEmpty())
        text += QLatin1Char(' ') + where;
    return text;
}

} // namespace tarvolin::levels
