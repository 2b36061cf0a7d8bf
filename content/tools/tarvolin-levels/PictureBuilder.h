#pragma once

#include "Diagnostics.h"

#include <QString>

namespace tarvolin::levels {

struct BuildOptions {
    QString levelsFile;
    QString scenesFile;
    QString svgDir;
    QString outDir;
    QString qrcFile; // when set, the resource listing of the pictures built, under the prefix "/pictures"
    int size = 360;
    int jobs = 0; // 0: one per core
};

struct BuildSummary {
    int pictures = 0; // pictures of the levels, NAME_1.jpg to NAME_4.jpg each
    int rendered = 0; // of which drawn anew; the others were up to date
    int removed = 0;  // pictures of an earlier build that no level needs now
};

// Draws the four pictures of every level of the pack file into OUT/NAME_k.jpg. A picture is drawn again
// only when its scene, its symbols' files or the size changed since the last build (OUT/.pictures-cache
// remembers). Fails, with the reasons in `report`, when a level lacks a picture or a scene cannot be drawn.
BuildSummary buildPictures(const BuildOptions& options, Report& report);

} // namespace tarvolin::levels
