// The game at a desktop scale of 200 %: the main screen, the play screen with its tray and boxes, and the
// screen after a solved level. For each, the window draws at twice its logical size; every visible text is
// whole (not elided, not wider or taller than its box, inside the window) and at least a readable size in
// physical pixels; and its glyphs are drawn at the doubled resolution, not a 100 % drawing blown up (the
// 100 % pictures come from this same program run again with a scale of 1).
#include "Application.h"
#include "QuickItems.h"
#include "TestPlatform.h"
#include "core/AppDelegate.h"
#include "core/GameViewController.h"
#include "core/LevelManager.h"
#include "core/LevelSuccessViewController.h"
#include "platform/Keyboard.h"

#include <QApplication>
#include <QDir>
#include <QFontMetricsF>
#include <QProcess>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <memory>

using namespace QuickItems;

namespace {
// The scale under test, and the option that makes this program save its screens at whatever scale it runs.
constexpr double kScale = 2.0;
const char* const kGrabOption = "--grab-screens-to";

// The smallest text a player must be able to read, in design units. The screens are laid out in the units of
// a 375-point-wide phone, one unit a point (a logical pixel at 100 %); 9 points is the floor below which a
// caption stops being legible (printed footnotes go no smaller; 12 pixels at 96 dpi). At 200 % it must take
// twice as many physical pixels: 18.
constexpr double kReadableUnits = 9.0;

// A text of the 200 % picture must have at least this much more fine detail than the 100 % picture blown up
// to the same size: a 100 % drawing blown up, smoothly or by doubling its pixels, has about as much or none
// (a picture of a text drawn at 100 % pixels shows 1.3 times), the game's texts drawn at 200 % two to five
// times.
constexpr double kCrispnessRatio = 1.5;
// Below this mean squared step between neighbouring pixels a region is flat: nothing is drawn there.
constexpr double kFlat = 1.0;

enum class Screen { Main, Play, Solved };

QString screenName(Screen screen) {
    switch (screen) {
    case Screen::Main:
        return QStringLiteral("main");
    case Screen::Play:
        return QStringLiteral("play");
    case Screen::Solved:
        return QStringLiteral("solved");
    }
    return {};
}

void press(QQuickWindow* window, int key, const QString& text = QString()) {
    QTest::qWait(5);
    QTest::sendKeyEvent(QTest::Click, window, Qt::Key(key), text, Qt::NoModifier);
}

// The game brought to one screen: a first-level word whose letters are typed to solve it.
struct Session {
    TestPlatform platform;
    AppDelegate app;
    std::unique_ptr<QQmlApplicationEngine> engine;
    QQuickWindow* window = nullptr;

    ~Session() { engine.reset(); }

    bool open(Screen screen) {
        platform.writePackFile(1, QStringLiteral("سلامة"), QStringLiteral("أهيىس"));
        window = launchGameWindow(app, engine);
        if (!window) {
            return false;
        }
        window->requestActivate();
        if (!QTest::qWaitForWindowActive(window)) {
            return false;
        }
        LevelManager::sharedInstance().setCurrentLevel(1);
        if (screen != Screen::Main) {
            press(window, Qt::Key_Return);
            press(window, Qt::Key_Return);
            platform.random().queue({0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
            press(window, Qt::Key_Return);
            if (!qobject_cast<GameViewController*>(Keyboard::frontController())) {
                return false;
            }
        }
        if (screen == Screen::Solved) {
            for (const QChar letter : QStringLiteral("سلامة")) {
                press(window, letter.unicode(), QString(letter));
            }
            platform.animator().completeAll();
            auto* solved = qobject_cast<LevelSuccessViewController*>(Keyboard::frontController());
            if (!solved) {
                return false;
            }
            platform.scheduler().advance(3.0);
            if (!QTest::qWaitFor([solved] { return solved->buttonsEnabled(); })) {
                return false;
            }
        }
        platform.animator().completeAll();
        QTest::qWait(50);
        return true;
    }
};

// Visible and not fully transparent, up the parent chain.
bool seen(const QQuickItem* item) {
    for (; item; item = item->parentItem()) {
        if (!item->isVisible() || item->opacity() <= 0.0) {
            return false;
        }
    }
    return true;
}

QList<QQuickItem*> visibleTexts(QQuickWindow* window) {
    QList<QQuickItem*> texts;
    for (QQuickItem* item : allItems(window->contentItem())) {
        if (item->inherits("QQuickText") && seen(item) &&
            !item->property("text").toString().trimmed().isEmpty()) {
            texts << item;
        }
    }
    return texts;
}

// Where a text's glyphs lie in its own units: across its box, and for one line of its own font from the top
// to the bottom of its glyphs (the line's spacing above and below draws nothing); else its whole box.
QRectF inkRect(const QQuickItem* text) {
    const QRectF box(0, 0, text->width(), text->height());
    if (text->property("lineCount").toInt() != 1 || text->property("fontSizeMode").toInt() != 0) {
        return box;
    }
    const QFontMetricsF metrics(text->property("font").value<QFont>());
    const QRectF glyphs = metrics.tightBoundingRect(text->property("text").toString());
    return {0, text->baselineOffset() + glyphs.top(), text->width(), glyphs.height()};
}

// The nearest drawn box (a rectangle with a colour or a border) around the text that the text does not fit
// in.
const QQuickItem* spilledFrom(const QQuickItem* text, const QRectF& inWindow) {
    for (const QQuickItem* box = text->parentItem(); box; box = box->parentItem()) {
        if (!box->inherits("QQuickRectangle") || box->width() <= 0 || box->height() <= 0) {
            continue;
        }
        const QColor fill = box->property("color").value<QColor>();
        const QObject* border = box->property("border").value<QObject*>();
        const bool bordered = border && border->property("width").toDouble() > 0 &&
                              border->property("color").value<QColor>().alpha() > 0;
        if (fill.alpha() == 0 && !bordered) {
            continue;
        }
        const QRectF boxRect = box->mapRectToScene(QRectF(0, 0, box->width(), box->height()));
        return boxRect.adjusted(-0.5, -0.5, 0.5, 0.5).contains(inWindow) ? nullptr : box;
    }
    return nullptr;
}

// How many window pixels one unit of the item takes.
double sceneScale(const QQuickItem* item) {
    const QPointF origin = item->mapToScene(QPointF(0, 0));
    const QPointF unit = item->mapToScene(QPointF(1, 0));
    return std::hypot(unit.x() - origin.x(), unit.y() - origin.y());
}

// The pixel size the text is drawn at in its own units: its font's, or the smaller one a fitting text chose,
// read off the height its lines take.
double drawnPixelSize(const QQuickItem* text) {
    const QFont font = text->property("font").value<QFont>();
    const double size = font.pixelSize() > 0 ? font.pixelSize() : font.pointSizeF() * 96.0 / 72.0;
    if (text->property("fontSizeMode").toInt() == 0) {
        return size;
    }
    const int lines = std::max(1, text->property("lineCount").toInt());
    const double lineHeight = QFontMetricsF(font).height();
    const double fitted = size * text->property("contentHeight").toDouble() / (lines * lineHeight);
    return std::min(size, fitted);
}

QString describe(const QQuickItem* text) {
    return QStringLiteral("\"%1\" (%2)")
        .arg(text->property("text").toString(),
             text->objectName().isEmpty() ? QStringLiteral("no name") : text->objectName());
}

// Mean squared luminance step between neighbouring pixels in the region: how much edge it carries.
double edgeEnergy(const QImage& picture, const QRect& region) {
    const QImage grey = picture.convertToFormat(QImage::Format_Grayscale8);
    const QRect r = region.intersected(grey.rect().adjusted(0, 0, -1, -1));
    double sum = 0;
    qint64 count = 0;
    for (int y = r.top(); y <= r.bottom(); ++y) {
        const uchar* row = grey.constScanLine(y);
        const uchar* below = grey.constScanLine(y + 1);
        for (int x = r.left(); x <= r.right(); ++x) {
            const double dx = row[x + 1] - row[x];
            const double dy = below[x] - row[x];
            sum += dx * dx + dy * dy;
            ++count;
        }
    }
    return count ? sum / count : 0.0;
}

// How much detail the region has finer than a picture of half its resolution can hold: the mean squared
// difference of each pixel from the mean of its 2x2 block. A picture drawn at half the resolution and blown
// up has almost none (none at all when its pixels were merely doubled).
double fineDetail(const QImage& picture, const QRect& region) {
    const QImage grey = picture.convertToFormat(QImage::Format_Grayscale8);
    const QRect r = region.intersected(grey.rect());
    double sum = 0;
    qint64 count = 0;
    for (int y = r.top() & ~1; y + 1 <= r.bottom(); y += 2) {
        const uchar* row = grey.constScanLine(y);
        const uchar* below = grey.constScanLine(y + 1);
        for (int x = r.left() & ~1; x + 1 <= r.right(); x += 2) {
            const double block[4] = {double(row[x]), double(row[x + 1]), double(below[x]),
                                     double(below[x + 1])};
            const double mean = (block[0] + block[1] + block[2] + block[3]) / 4;
            for (const double p : block) {
                sum += (p - mean) * (p - mean);
            }
            count += 4;
        }
    }
    return count ? sum / count : 0.0;
}

double textArea(const QList<std::pair<QString, QRect>>& rects) {
    double area = 0;
    for (const auto& [what, r] : rects) {
        area += double(r.width()) * r.height();
    }
    return std::max(area, 1.0);
}

// This program run again at a scale of 1, saving the three screens into the folder.
bool grabAtOneX(const QString& folder) {
    QProcess child;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("QT_SCALE_FACTOR"), QStringLiteral("1"));
    child.setProcessEnvironment(env);
    child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    child.start(QCoreApplication::applicationFilePath(), {QString::fromLatin1(kGrabOption), folder});
    return child.waitForFinished(120000) && child.exitStatus() == QProcess::NormalExit &&
           child.exitCode() == 0;
}

// The child's part: each screen's picture as the window draws it, at the scale the program runs at.
int saveScreens(const QString& folder) {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    Application::registerResources();
    for (const Screen screen : {Screen::Main, Screen::Play, Screen::Solved}) {
        Session session;
        if (!session.open(screen) ||
            !session.window->grabWindow().save(QDir(folder).filePath(screenName(screen) + ".png"))) {
            qCritical("The %s screen could not be shown and saved", qPrintable(screenName(screen)));
            return 1;
        }
    }
    return 0;
}
} // namespace

class ScaleTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        Application::registerResources();
        QVERIFY(m_oneX.isValid());
        QVERIFY2(grabAtOneX(m_oneX.path()), "the screens could not be drawn at 100 %");
    }

    void textsStayWholeAndSharpAtDoubleScale_data() {
        QTest::addColumn<int>("screen");
        QTest::newRow("main") << int(Screen::Main);
        QTest::newRow("play") << int(Screen::Play);
        QTest::newRow("solved") << int(Screen::Solved);
    }

    void textsStayWholeAndSharpAtDoubleScale() {
        QFETCH(int, screen);
        const auto which = Screen(screen);
        Session session;
        QVERIFY(session.open(which));
        QQuickWindow* window = session.window;

        // The window draws twice as many pixels as its logical size.
        QCOMPARE(window->effectiveDevicePixelRatio(), kScale);
        // (The software renderer's picture is that many pixels but does not note its ratio.)
        QImage picture = window->grabWindow();
        QCOMPARE(picture.size(), window->size() * kScale);
        picture.setDevicePixelRatio(1);
        if (which != Screen::Main) {
            QVERIFY(isShown(window, "tile0"));
        }
        if (which == Screen::Solved) {
            QVERIFY(isShown(window, "solutionText"));
        }

        const QRectF windowRect(QPointF(0, 0), QSizeF(window->size()));
        const QList<QQuickItem*> texts = visibleTexts(window);
        QVERIFY(texts.size() >= 3);
        double smallest = 1e9;
        QString smallestText;
        // The texts in front, whose pixels are compared; a screen covered by another is disabled.
        QList<std::pair<QString, QRect>> textRects;
        for (QQuickItem* text : texts) {
            const QString what = describe(text);
            QVERIFY2(!text->property("truncated").toBool(), qPrintable(what + " is cut short"));
            if (text->property("wrapMode").toInt() == 0) {
                QVERIFY2(text->property("contentWidth").toDouble() <= text->width() + 1,
                         qPrintable(QStringLiteral("%1 is %2 wide in a box of %3")
                                        .arg(what)
                                        .arg(text->property("contentWidth").toDouble())
                                        .arg(text->width())));
            }
            QVERIFY2(text->property("contentHeight").toDouble() <= text->height() + 1,
                     qPrintable(QStringLiteral("%1 is %2 tall in a box of %3")
                                    .arg(what)
                                    .arg(text->property("contentHeight").toDouble())
                                    .arg(text->height())));
            const QRectF inWindow = text->mapRectToScene(QRectF(0, 0, text->width(), text->height()));
            QVERIFY2(windowRect.adjusted(-0.5, -0.5, 0.5, 0.5).contains(inWindow),
                     qPrintable(QStringLiteral("%1 lies at %2,%3 %4x%5, outside the window")
                                    .arg(what)
                                    .arg(inWindow.x())
                                    .arg(inWindow.y())
                                    .arg(inWindow.width())
                                    .arg(inWindow.height())));
            // Nor does its ink spill out of a card, a pill or a button it is drawn on.
            const QRectF ink = text->mapRectToScene(inkRect(text));
            if (const QQuickItem* card = spilledFrom(text, ink)) {
                const QRectF cardRect = card->mapRectToScene(QRectF(0, 0, card->width(), card->height()));
                QFAIL(qPrintable(
                    QStringLiteral("%1 at %2,%3 %4x%5 spills out of its %6 at %7,%8 %9x%10")
                        .arg(what)
                        .arg(ink.x())
                        .arg(ink.y())
                        .arg(ink.width())
                        .arg(ink.height())
                        .arg(card->objectName().isEmpty() ? QStringLiteral("box") : card->objectName())
                        .arg(cardRect.x())
                        .arg(cardRect.y())
                        .arg(cardRect.width())
                        .arg(cardRect.height())));
            }
            const double physical =
                drawnPixelSize(text) * sceneScale(text) * window->effectiveDevicePixelRatio();
            QVERIFY2(physical >= kScale * kReadableUnits - 0.01,
                     qPrintable(QStringLiteral("%1 is drawn %2 pixels tall").arg(what).arg(physical)));
            if (physical < smallest) {
                smallest = physical;
                smallestText = what;
            }
            if (text->isEnabled()) {
                textRects.append(
                    {what, QRectF(inWindow.topLeft() * kScale, inWindow.size() * kScale).toAlignedRect()});
            }
        }
        qInfo("%s: %lld texts, the smallest %s drawn %.1f pixels tall", qPrintable(screenName(which)),
              static_cast<long long>(texts.size()), qPrintable(smallestText), smallest);

        // Crisp: each text in front has more detail finer than a 100 % pixel than the same screen drawn at
        // 100 % and blown up; where the blown-up picture is flat nothing is drawn to compare.
        QImage oneX(QDir(m_oneX.path()).filePath(screenName(which) + ".png"));
        QVERIFY(!oneX.isNull());
        QCOMPARE(oneX.size(), window->size());
        oneX = oneX.scaled(picture.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        double sharpDetail = 0;
        double blownUpDetail = 0;
        double leastRatio = 1e9;
        QString leastCrisp;
        for (const auto& [what, r] : textRects) {
            if (edgeEnergy(oneX, r) < kFlat) {
                continue;
            }
            const double sharp = fineDetail(picture, r);
            const double blownUp = fineDetail(oneX, r);
            const double area = double(r.width()) * r.height();
            sharpDetail += sharp * area;
            blownUpDetail += blownUp * area;
            const double ratio = blownUp > 0 ? sharp / blownUp : (sharp > 0 ? 1e9 : 0.0);
            if (ratio < leastRatio) {
                leastRatio = ratio;
                leastCrisp = what;
            }
            QVERIFY2(ratio >= kCrispnessRatio,
                     qPrintable(QStringLiteral("%1 at 200 % has %2 times the fine detail of 100 % blown up")
                                    .arg(what)
                                    .arg(ratio)));
        }
        QVERIFY2(blownUpDetail > 0, "no text in front to compare");
        qInfo(
            "%s: fine detail of the texts in front %.1f at 200 %%, %.1f at 100 %% blown up (%.2f times; the "
            "least %.2f times, %s)",
            qPrintable(screenName(which)), sharpDetail / textArea(textRects),
            blownUpDetail / textArea(textRects), sharpDetail / blownUpDetail, leastRatio,
            qPrintable(leastCrisp));
    }

private:
    QTemporaryDir m_oneX;
};

int main(int argc, char** argv) {
    // The scale is fixed before the application exists; run again with a folder, the program saves its
    // screens.
    QString grabFolder;
    if (argc == 3 && qstrcmp(argv[1], kGrabOption) == 0) {
        grabFolder = QString::fromLocal8Bit(argv[2]);
    } else if (!qEnvironmentVariableIsSet("QT_SCALE_FACTOR")) {
        qputenv("QT_SCALE_FACTOR", QByteArray::number(kScale));
    }
    // A QApplication, as the game's own: QtTest's key and mouse events take the application for one when
    // widgets are linked in.
    QApplication app(argc, argv);
    if (!grabFolder.isEmpty()) {
        return saveScreens(grabFolder);
    }
    ScaleTest test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "ScaleTest.moc"
