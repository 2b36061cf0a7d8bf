#include "SceneFile.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>

#include <cmath>

namespace tarvolin::levels {

namespace {

const QRegularExpression& stemPattern() {
    static const QRegularExpression re(QStringLiteral("^[0-9a-f]+(-[0-9a-f]+)*$"));
    return re;
}

const QRegularExpression& namePattern() {
    static const QRegularExpression re(QStringLiteral("^[a-z0-9]+(-[a-z0-9]+)*$"));
    return re;
}

bool isSymbolName(const QString& symbol) {
    const qsizetype colon = symbol.indexOf(QLatin1Char(':'));
    if (colon < 0)
        return stemPattern().match(symbol).hasMatch();
    const QString set = symbol.left(colon);
    bool knownSet = false;
    for (const char* s : kSymbolSets)
        knownSet = knownSet || set == QLatin1String(s);
    return knownSet && namePattern().match(symbol.mid(colon + 1)).hasMatch();
}

const QRegularExpression& colourPattern() {
    static const QRegularExpression re(QStringLiteral("^#[0-9a-fA-F]{6}$"));
    return re;
}

bool parseBackground(const QString& field, Scene& scene) {
    if (isSetting(field)) {
        scene.setting = field;
        return true;
    }
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

// "[~]SYMBOL[=#rrggbb][@x,y,s[,r]]"; an empty string when well formed, otherwise what is wrong.
QString parseSymbol(const QString& field, SceneSymbol& symbol) {
    QString rest = field;
    if (rest.startsWith(QLatin1Char('~'))) {
        symbol.mirrored = true;
        rest.remove(0, 1);
    }
    const qsizetype at = rest.indexOf(QLatin1Char('@'));
    QString name = at < 0 ? rest : rest.left(at);
    if (const qsizetype equals = name.indexOf(QLatin1Char('=')); equals >= 0) {
        const QString colour = name.mid(equals + 1);
        if (!colourPattern().match(colour).hasMatch())
            return QStringLiteral("'%1': a tint is =#rrggbb").arg(field);
        symbol.tint = QColor(colour);
        name = name.left(equals);
    }
    symbol.stem = name;
    if (!isSymbolName(symbol.stem))
        return QStringLiteral("'%1' is not a symbol: write SET:NAME (SET one of fluent, noto, openmoji, "
                              "twemoji, gi; NAME in lowercase letters, digits and '-') or a Twemoji file "
                              "stem such as 1f34e")
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
    QString out = setting.isEmpty() ? top.name() + QLatin1Char('/') + bottom.name() : setting;
    const std::vector<Placement> places = layout();
    for (size_t i = 0; i < symbols.size(); ++i) {
        const Placement& p = places[i];
        out += QLatin1Char(' ') + (symbols[i].mirrored ? QStringLiteral("~") : QString()) + symbols[i].stem +
               (symbols[i].tint ? QLatin1Char('=') + symbols[i].tint->name() : QString()) + QLatin1Char('@') +
               number(p.x) + QLatin1Char(',') + number(p.y) + QLatin1Char(',') + number(p.size) +
               QLatin1Char(',') + number(std::fmod(p.rotation + 720.0, 360.0));
    }
    return out;
}

bool isSetting(const QString& name) {
    for (const char* s : kSettings) {
        if (name == QLatin1String(s))
            return true;
    }
    return false;
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
        scene.file = file;
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
            QStringList settings;
            for (const char* s : kSettings)
                settings << QLatin1String(s);
            report.error(
                file, lineNumber,
                QStringLiteral("%1: the background must be #rrggbb, #rrggbb/#rrggbb or a setting (%2)")
                    .arg(scene.pictureName, settings.join(QStringLiteral(", "))));
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

bool loadScenes(const QString& path, std::vector<Scene>& scenes, Report& report) {
    QStringList files;
    if (QFileInfo(path).isDir()) {
        const QDir dir(path);
        for (const QString& name : dir.entryList({QStringLiteral("*.txt")}, QDir::Files, QDir::Name))
            files << dir.filePath(name);
        if (files.isEmpty()) {
            report.error(path, 0, QStringLiteral("no scene file (*.txt) in the folder"));
            return false;
        }
    } else {
        files << path;
    }
    QHash<QString, std::pair<QString, int>> defined; // picture -> file and line of its first definition
    std::vector<Scene> all;
    for (const QString& file : files) {
        QString text;
        if (!readUtf8(file, text, report))
            return false;
        for (Scene& scene : parseScenes(text, file, report))
            all.push_back(std::move(scene));
    }
    for (Scene& scene : all) {
        if (const auto seen = defined.constFind(scene.pictureName); seen != defined.cend()) {
            report.error(scene.file, scene.line,
                         QStringLiteral("%1 is already defined at %2:%3")
                             .arg(scene.pictureName, QFileInfo(seen->first).fileName())
                             .arg(seen->second));
            continue;
        }
        defined.insert(scene.pictureName, {scene.file, scene.line});
        scenes.push_back(std::move(scene));
    }
    return true;
}

} // namespace tarvolin::levels
