#pragma once

#include "Diagnostics.h"

#include <QColor>
#include <QString>

#include <optional>
#include <vector>

namespace tarvolin::levels {

// Where a symbol stands: its centre as fractions of the picture's width and height, its size as a
// fraction of the picture's side, and a clockwise rotation in degrees.
struct Placement {
    double x = 0.5;
    double y = 0.5;
    double size = 0.72;
    double rotation = 0.0;

    bool operator==(const Placement&) const = default;
};

struct SceneSymbol {
    // The artwork: SET:NAME, such as "noto:camel" for svg/noto/camel.svg, or a bare Twemoji file stem such
    // as "1f34e" for svg/1f34e.svg.
    QString stem;
    bool mirrored = false;              // written with a leading "~": flipped left to right
    std::optional<QColor> tint;         // written as "=#rrggbb": the symbol drawn as a silhouette of it
    std::optional<Placement> placement; // written as "@x,y,s" or "@x,y,s,r"; laid out automatically without
};

// The artwork sets a symbol can come from, by the prefix a scene writes before the colon.
inline constexpr const char* kSymbolSets[] = {"fluent", "noto", "openmoji", "twemoji", "gi"};

// The settings a picture can stand in instead of a plain background: each is drawn as a simple scene of
// its own (waves and a horizon for "sea", a chalkboard for "classroom", dunes for "desert", ...).
inline constexpr const char* kSettings[] = {
    "sky",    "sea",     "underwater", "beach",    "desert",   "night",   "space",
    "forest", "garden",  "farm",       "mountain", "snow",     "rain",    "city",
    "street", "kitchen", "classroom",  "room",     "hospital", "stadium",
};
bool isSetting(const QString& name);

// One line of scenes.txt: "NAME_k BACKGROUND SYMBOL...", the k-th picture (1 to 4) of the levels whose
// image= is NAME.
struct Scene {
    QString file; // the scene file that holds the line
    int line = 0;
    QString pictureName; // "apple_1"
    QString name;        // "apple"
    int index = 0;       // 1 to 4
    QColor top;          // the background; top and bottom differ for a vertical gradient
    QColor bottom;
    QString setting; // or, instead, one of kSettings
    std::vector<SceneSymbol> symbols;

    // Every symbol's placement, in drawing order: the written ones as written, the others by autoLayout.
    std::vector<Placement> layout() const;
    // A text that two scenes share exactly when they draw the same picture.
    QString fingerprint() const;
};

// Where `count` symbols without a placement go. One is centred at size 0.72, two stand side by side, three
// form a triangle, four a 2x2 grid, five to nine a 3x3 grid. The first symbol takes the first place in
// Arabic reading order: the right of a row, and the top row first. Nothing for more than nine.
std::vector<Placement> autoLayout(int count);

inline constexpr int kMaxAutoLayoutSymbols = 9;
inline constexpr int kPicturesPerLevel = 4;

// Reads the text of a scene file; reports every malformed line and duplicate picture to `report` under the
// name `file`, and keeps the lines that are well formed (of a duplicate, the first).
std::vector<Scene> parseScenes(const QString& text, const QString& file, Report& report);

// Reads the scenes at `path`: one scene file, or a folder whose *.txt files (in name order) are read as
// one. A picture defined twice, in one file or in two, is an error. False when a file cannot be read.
bool loadScenes(const QString& path, std::vector<Scene>& scenes, Report& report);

// An image= value that can name picture files and resources: ASCII letters, digits, '_' and '-'.
bool isValidPictureStem(const QString& name);

} // namespace tarvolin::levels
