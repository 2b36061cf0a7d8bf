#include "SceneFile.h"

#include <QHash>
#include <QRegularExpression>

#include <cmath>

namespace tarvolin::levels {

namespace {

const QRegularExpression& stemPattern() {
    static const QRegularExpression re(QStringLiteral("^[0-9a-f]+(-[0-9a-f]+)*$"));
    return re;
}

const QRegularExpression& colourPattern() {
    static const QRegularExpression re(QStringLiteral("^#[0-9a-fA-F]{6}$"));
    return re;
}

bool parseBackground(const QString& field, Scene& scene) {
    const QStringList parts = field.split(QLatin1Char('/'));
    if (parts.size() > 2)
        return false;
    for (const QString& part : parts) {
        if (!colourPattern().match(part).hasMatch())
            return false;
    }
    scene.top = QColor(parts.front());
    scene.bottom = QColor(parts.back());
    return true;
}

// "[~]STEM[@x,y,s[,r]]"; an empty string when well formed, otherwise what is wrong.
QString parseSymbol(const QString& field, SceneSymbol& symbol) {
    QString rest = field;
    if (rest.startsWith(QLatin1Char('~'))) {
        symbol.mirrored = true;
        rest.remove(0, 1);
    }
    const qsizetype at = rest.indexOf(QLatin1Char('@'));
    symbol.stem = at < 0 ? rest : rest.left(at);
    if (!stemPattern().match(symbol.stem).hasMatch())
        return QStringLiteral("'%1' is not a symbol: a symbol is a Twemoji file stem such as 1f34e or "
                              "1f468-200d-1f373")
            .arg(field);
    if (at < 0)
        return {};
    const QStringList numbers = rest.mid(at + 1).split(QLatin1Char(','));
    if (numbers.size() != 3 && numbers.size() != 4)
        return QStringLiteral("'%1': a placement is @x,y,size or @x,y,size,rotation").arg(field);
    double values[4] = {0, 0, 0, 0};
    for (qsizetype i = 0; i < numbers.size(); ++i) {
        bool ok = false;
        values[i] = numbers[i].toDouble(&ok);
        if (!ok || !std::isfinite(values[i]))
            return QStringLiteral("'%1': '%2' is not a number").arg(field, numbers[i]);
    }
    const Placement p{values[0], values[1], values[2], values[3]};
    if (p.x < 0 || p.x > 1 || p.y < 0 || p.y > 1)
        return QStringLiteral("'%1': the centre must lie in the picture (x and y from 0 to 1)").arg(field);
    if (p.size <= 0 || p.size > 1.5)
        return QStringLiteral("'%1': the size must be above 0 and at most 1.5 times the picture's side")
            .arg(field);
    if (std::abs(p.rotation) > 360)
        return QStringLiteral("'%1': the rotation must be from -360 to 360 degrees").arg(field);
    symbol.placement = p;
    return {};
}

QString number(double v) {
    return QString::number(v, 'f', 4);
}

} // namespace

std::vector<Placement> autoLayout(int count) {
    switch (count) {
    case 1:
        return {{0.5, 0.5, 0.72, 0}};
    case 2:
        return {{0.73, 0.5, 0.44, 0}, {0.27, 0.5, 0.44, 0}};
    case 3:
        return {{0.5, 0.28, 0.4, 0}, {0.73, 0.71, 0.4, 0}, {0.27, 0.71, 0.4, 0}};
    case 4:
        return {{0.73, 0.27, 0.4, 0}, {0.27, 0.27, 0.4, 0}, {0.73, 0.73, 0.4, 0}, {0.27, 0.73, 0.4, 0}};
    default:
        break;
    }
    if (count < 1 || count > kMaxAutoLayoutSymbols)
        return {};
    std::vector<Placement> places;
    for (int i = 0; i < count; ++i) {
        const int row = i / 3;
        const int column = 2 - i % 3;
        places.push_back({0.18 + 0.32 * column, 0.18 + 0.32 * row, 0.28, 0});
    }
    return places;
}

std::vector<Placement> Scene::layout() const {
    int unplaced = 0;
    for (const SceneSymbol& s : symbols)
        unplaced += s.placement ? 0 : 1;
    const std::vector<Placement> automatic = autoLayout(unplaced);
    std::vector<Placement> out;
    size_t next = 0;
    for (const SceneSymbol& s : symbols) {
        if (s.placement)
            out.push_back(*s.placement);
        else
            out.push_back(next < automatic.size() ? automatic[next++] : Placement{});
    }
    return out;
}

QString Scene::fingerprint() const {
    QString out = top.name() + QLatin1Char('/') + bottom.name();
    const std::vector<Placement> places = layout();
    for (size_t i = 0; i < symbols.size(); ++i) {
        const Placement& p = places[i];
        out += QLatin1Char(' ') + (symbols[i].mirrored ? QStringLiteral("~") : QString()) + symbols[i].stem +
               QLatin1Char('@') + number(p.x) + QLatin1Char(',') + number(p.y) + QLatin1Char(',') +
               number(p.size) + QLatin1Char(',') + number(std::fmod(p.rotation + 720.0, 360.0));
    }
    return out;
}

bool isValidPictureStem(const QString& name) {
    static const QRegularExpression re(QStringLiteral("^[A-Za-z0-9_-]+$"));
    return re.match(name).hasMatch();
}

std::vector<Scene> parseScenes(const QString& text, const QString& file, Report& report) {
    static const QRegularExpression blanks(QStringLiteral("\\s+"));
    std::vector<Scene> scenes;
    QHash<QString, int> lineOfPicture;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const int lineNumber = static_cast<int>(i) + 1;
        const QString line = lines[i].trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('#')))
            continue;
        const QStringList fields = line.split(blanks, Qt::SkipEmptyParts);
        Scene scene;
        scene.line = lineNumber;
        scene.pictureName = fields[0];
        const qsizetype underscore = scene.pictureName.lastIndexOf(QLatin1Char('_'));
        bool indexOk = false;
        scene.index = underscore > 0 ? scene.pictureName.mid(underscore + 1).toInt(&indexOk) : 0;
        scene.name = underscore > 0 ? scene.pictureName.left(underscore) : QString();
        if (!indexOk || scene.index < 1 || scene.index > kPicturesPerLevel ||
            !isValidPictureStem(scene.name) ||
            scene.pictureName != scene.name + QLatin1Char('_') + QString::number(scene.index)) {
            report.error(file, lineNumber,
                         QStringLiteral("'%1' is not a picture name: write NAME_1 to NAME_4, NAME being the "
                                        "level's image= (letters, digits, '_' and '-')")
                             .arg(scene.pictureName));
            continue;
        }
        if (fields.size() < 2 || !parseBackground(fields[1], scene)) {
            report.error(file, lineNumber,
                         QStringLiteral("%1: the background must be #rrggbb or #rrggbb/#rrggbb")
                             .arg(scene.pictureName));
            continue;
        }
        bool ok = true;
        for (qsizetype f = 2; f < fields.size() && ok; ++f) {
            if (fields[f].startsWith(QLatin1Char('#')))
                break; // a comment runs to the end of the line
            SceneSymbol symbol;
            const QString problem = parseSymbol(fields[f], symbol);
            if (!problem.isEmpty()) {
                report.error(file, lineNumber, QStringLiteral("%1: %2").arg(scene.pictureName, problem));
                ok = false;
            }
            scene.symbols.push_back(symbol);
        }
        if (!ok)
            continue;
        if (scene.symbols.empty()) {
            report.error(file, lineNumber, QStringLiteral("%1 has no symbol").arg(scene.pictureName));
            continue;
        }
        int unplaced = 0;
        for (const SceneSymbol& s : scene.symbols)
            unplaced += s.placement ? 0 : 1;
        if (unplaced > kMaxAutoLayoutSymbols) {
            report.error(file, lineNumber,
                         QStringLiteral("%1 has %2 symbols without a placement; at most %3 are laid out "
                                        "automatically")
                             .arg(scene.pictureName)
                             .arg(unplaced)
                             .arg(kMaxAutoLayoutSymbols));
            continue;
        }
        if (const auto seen = lineOfPicture.constFind(scene.pictureName); seen != lineOfPicture.cend()) {
            report.error(
                file, lineNumber,
                QStringLiteral("%1 is already defined at line %2").arg(scene.pictureName).arg(*seen));
            continue;
        }
        lineOfPicture.insert(scene.pictureName, lineNumber);
        scenes.push_back(std::move(scene));
    }
    return scenes;
}

} // namespace tarvolin::levels
