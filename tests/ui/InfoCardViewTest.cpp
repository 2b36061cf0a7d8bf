// The info card as the player sees it, drawn by the software renderer under the offscreen platform: where the
// map is framed and the pin stands, what the map shows there, and the rows and facts of the card.
#include "core/InfoCardView.h"
#include "Application.h"
#include "QuickItems.h"
#include "TestPlatform.h"

#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QSGRendererInterface>
#include <QtTest>
#include <algorithm>
#include <cstdlib>
#include <memory>

namespace {

// The sea and the land of images/worldmap.svg (content/tools/make-worldmap.mjs).
const QColor kSea(0xa7, 0xd3, 0xee);
const QColor kLand(0xf7, 0xf0, 0xdc);

// The card inside the same layout mirroring as the game's window.
const char* const kHost = R"(
import QtQuick
Item {
    LayoutMirroring.enabled: true
    LayoutMirroring.childrenInherit: true
    property alias card: infoCard.card
    InfoCardView { id: infoCard; anchors.fill: parent }
}
)";

struct Place {
    double lat;
    double lon;
};
constexpr Place kParis{48.85, 2.35};
constexpr Place kSuva{-18.14, 178.44};

LevelInfoPtr cityLevel(Place place) {
    auto level = std::make_shared<LevelInfo>();
    level->solution = QStringLiteral("باريس");
    level->country = QStringLiteral("فرنسا");
    level->continent = QStringLiteral("europe");
    level->area = QStringLiteral("105 كم²");
    level->population = QStringLiteral("2,1 مليون نسمة");
    level->location = QStringLiteral("%1,%2").arg(place.lat).arg(place.lon);
    level->timezone = 1;
    level->priceIndex = 85;
    level->facts = {QStringLiteral("بُني برج إيفل لمعرض عام 1889."),
                    QStringLiteral("يعبر نهر السين المدينة من الشرق إلى الغرب."),
                    QStringLiteral("في المدينة أكثر من 130 متحفاً.")};
    level->hasFacts = true;
    return level;
}

bool near(const QColor& a, const QColor& b, int tolerance = 8) {
    return std::abs(a.red() - b.red()) <= tolerance && std::abs(a.green() - b.green()) <= tolerance &&
           std::abs(a.blue() - b.blue()) <= tolerance;
}

QByteArray describe(const QColor& c) {
    return c.name().toLatin1();
}

// A card on the screen: the engine, the window and the card's item.
struct Shown {
    QQmlEngine engine;
    QQuickWindow window;
    std::unique_ptr<QQuickItem> root;
    QImage image;

    // Every item under the card, depth first.
    QList<QQuickItem*> items() const { return QuickItems::allItems(root.get()); }
    QQuickItem* find(const QString& name) const {
        const QList<QQuickItem*> all = items();
        const auto it =
            std::find_if(all.begin(), all.end(), [&](QQuickItem* i) { return i->objectName() == name; });
        return it == all.end() ? nullptr : *it;
    }
    // Takes the picture of the window; TARVOLIN_CARD_SHOTS=folder keeps it, named after the test.
    void grab() {
        image = window.grabWindow();
        const QString shots = qEnvironmentVariable("TARVOLIN_CARD_SHOTS");
        if (!shots.isEmpty()) {
            image.save(QDir(shots).filePath(QStringLiteral("%1-%2x%3.png")
                                                .arg(QString::fromLatin1(QTest::currentTestFunction()))
                                                .arg(image.width())
                                                .arg(image.height())));
        }
    }
    // How many pixels in a part of the picture are drawn in about the given colour: the cores of a text's
    // letters.
    int inked(const QRectF& sceneRect, const QColor& colour) const {
        const QRect area = sceneRect.toAlignedRect() & image.rect();
        int n = 0;
        for (int y = area.top(); y <= area.bottom(); ++y) {
            for (int x = area.left(); x <= area.right(); ++x) {
                n += near(image.pixelColor(x, y), colour, 40) ? 1 : 0;
            }
        }
        return n;
    }
    QColor pixel(QPointF scenePoint) const { return image.pixelColor(scenePoint.toPoint()); }
};

} // namespace

class InfoCardViewTest : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() {
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
        Application::registerResources();
    }

    // The card's QML runs without a binding error and the map's picture loads.
    void init() {
        QTest::failOnWarning(QRegularExpression(QStringLiteral("qrc:/qml/")));
        QTest::failOnWarning(QRegularExpression(QStringLiteral("imageio")));
    }

    // A city's card zooms in on it: the shorter side of the frame spans the closest window of four degrees,
    // the pin stands on the city, and the map under it is the real coast line.
    void pinnedCityIsFramedAndPinned() {
        TestPlatform platform;
        std::unique_ptr<InfoCardView> card(InfoCardView::initWithLevel(cityLevel(kParis)));
        card->setupViewWithId(3);
        auto shown = show(card.get(), QSize(375, 667));
        QVERIFY(shown);

        QQuickItem* map = shown->find("mapView");
        QQuickItem* pin = shown->find("mapPin");
        QVERIFY(map && pin);
        QVERIFY(map->isVisible() && pin->isVisible());
        QVERIFY(map->width() > map->height());
        const double ppd = map->height() / 4.0;
        const QPointF pinPoint = pin->mapToScene(QPointF(0, 0));
        const QPointF centre = map->mapToScene(QPointF(map->width() / 2, map->height() / 2));
        QVERIFY2(QLineF(pinPoint, centre).length() < 1.5,
                 qPrintable(QStringLiteral("pin at %1,%2, centre %3,%4")
                                .arg(pinPoint.x())
                                .arg(pinPoint.y())
                                .arg(centre.x())
                                .arg(centre.y())));

        // The pin drops in, and lands on its point.
        QTRY_COMPARE(pin->property("lift").toDouble(), 0.0);
        shown->grab();
        const auto at = [&](Place p) {
            return map->mapToScene(QPointF(map->width() / 2 + (p.lon - kParis.lon) * ppd,
                                           map->height() / 2 - (p.lat - kParis.lat) * ppd));
        };
        // Orléans, a degree south of the pin, is land; the Channel off Dieppe, 1.5° north-west, is sea.
        const QColor land = shown->pixel(at({47.9, 1.9}));
        const QColor channel = shown->pixel(at({50.4, 0.8}));
        QVERIFY2(near(land, kLand), describe(land));
        QVERIFY2(near(channel, kSea), describe(channel));
        // The pin is drawn in the card's red just above its point.
        QVERIFY2(near(shown->pixel(pinPoint + QPointF(-5, -22)), QColor(0xea, 0x41, 0x44), 12),
                 describe(shown->pixel(pinPoint + QPointF(-5, -22))));
    }

    // Near the date line the window stops at the world's edge: the pin moves off the centre by as much.
    void windowStopsAtTheWorldsEdge() {
        TestPlatform platform;
        std::unique_ptr<InfoCardView> card(InfoCardView::initWithLevel(cityLevel(kSuva)));
        card->setupViewWithId(3);
        auto shown = show(card.get(), QSize(375, 667));
        QVERIFY(shown);

        QQuickItem* map = shown->find("mapView");
        QQuickItem* pin = shown->find("mapPin");
        QVERIFY(map && pin && pin->isVisible());
        const double ppd = map->height() / 4.0;
        const QPointF expected =
            map->mapToScene(QPointF(map->width() - (180.0 - kSuva.lon) * ppd, map->height() / 2));
        const QPointF pinPoint = pin->mapToScene(QPointF(0, 0));
        QVERIFY(QLineF(pinPoint, expected).length() < 1.5);
        // The land beside the pin is where that window puts it: the middle of Viti Levu.
        QTRY_COMPARE(pin->property("lift").toDouble(), 0.0);
        shown->grab();
        const QColor island = shown->pixel(map->mapToScene(
            QPointF(map->width() - 2.0 * ppd, map->height() / 2 - (-17.8 - kSuva.lat) * ppd)));
        QVERIFY2(near(island, kLand), describe(island));
    }

    // A region's card shows 20° by 40° around a centre moved at random, with no pin to give the place away.
    void regionFillsTheFrame() {
        TestPlatform platform;
        platform.random().queue({10, 20}); // no move: the region is centred on the city
        std::unique_ptr<InfoCardView> card(InfoCardView::initWithLevel(cityLevel(kParis)));
        card->setupViewWithId(2);
        auto shown = show(card.get(), QSize(375, 667));
        QVERIFY(shown);

        QQuickItem* map = shown->find("mapView");
        QVERIFY(map && map->isVisible());
        QQuickItem* pin = shown->find("mapPin");
        QVERIFY(pin && !pin->isVisible());
        const double ppd = std::min(map->width() / 40.0, map->height() / 20.0);
        const auto at = [&](Place p) {
            return map->mapToScene(QPointF(map->width() / 2 + (p.lon - kParis.lon) * ppd,
                                           map->height() / 2 - (p.lat - kParis.lat) * ppd));
        };
        shown->grab();
        const struct {
            Place place;
            QColor colour;
        } samples[] = {
            {{50.5, 10.0}, kLand}, // Hesse
            {{46.0, -12.0}, kSea}, // the Atlantic west of Brittany
            {{40.0, 6.0}, kSea},   // between the Balearics and Sardinia
            {{41.0, -4.0}, kLand}, // Castile
        };
        for (const auto& s : samples) {
            const QColor seen = shown->pixel(at(s.place));
            QVERIFY2(
                near(seen, s.colour),
                qPrintable(QStringLiteral("%1,%2: %3").arg(s.place.lat).arg(s.place.lon).arg(seen.name())));
        }
    }

    // The rows with a value, captions at the start (the right) of each row, the comparison in its colour and
    // the facts numbered in order; a card without coordinates has no map.
    void rowsAndFactsAreShown() {
        TestPlatform platform;
        std::unique_ptr<InfoCardView> card(InfoCardView::initWithLevel(cityLevel(kParis)));
        card->setupViewWithId(3);
        auto shown = show(card.get(), QSize(375, 1200));
        QVERIFY(shown);

        const QList<QQuickItem*> items = shown->items();
        const auto textItem = [&](const QString& text, bool visibleOnly = true) -> QQuickItem* {
            for (QQuickItem* item : items) {
                if (item->property("text").toString() == text && (item->isVisible() || !visibleOnly)) {
                    return item;
                }
            }
            return nullptr;
        };

        QQuickItem* continent = textItem(QStringLiteral("القارة"));
        QVERIFY(continent);
        QQuickItem* continentValue = textItem(QStringLiteral("أوروبا"));
        QVERIFY(continentValue);
        QVERIFY(continent->parentItem()->isAncestorOf(continentValue));
        QVERIFY(continent->mapToScene(QPointF(0, 0)).x() > continentValue->mapToScene(QPointF(0, 0)).x());
        QVERIFY(textItem(QStringLiteral("105 كم²")));
        QVERIFY(textItem(card->cityTimeLabel));
        // No GDP in the record: its row is not shown.
        QQuickItem* gdp = textItem(QStringLiteral("الناتج المحلي"), false);
        QVERIFY(gdp && !gdp->isVisible());

        QQuickItem* cheaper = shown->find("priceRowBadge");
        QVERIFY(cheaper && cheaper->isVisible());
        QCOMPARE(cheaper->property("text").toString(), card->cheaperPercentLabel);
        QCOMPARE(cheaper->property("color").value<QColor>(), card->cheaperPercentColor);
        QVERIFY(shown->inked(cheaper->mapRectToScene(cheaper->boundingRect()), card->cheaperPercentColor) >
                20);

        double lastY = -1;
        for (int i = 0; i < card->factTexts.size(); ++i) {
            QQuickItem* fact = shown->find(QStringLiteral("fact%1").arg(i));
            QVERIFY(fact && fact->isVisible());
            QCOMPARE(fact->property("text").toString(), card->factTexts.at(i));
            const QRectF box = fact->mapRectToScene(fact->boundingRect());
            QVERIFY(box.top() > lastY);
            QVERIFY(shown->root->mapRectToScene(shown->root->boundingRect()).contains(box));
            QVERIFY(shown->inked(box, fact->property("color").value<QColor>()) > 20);
            lastY = box.bottom();
        }
        QVERIFY(!shown->find(QStringLiteral("fact%1").arg(card->factTexts.size())));

        // The same level without coordinates: no map, the rows remain.
        auto plain = cityLevel(kParis);
        plain->location.clear();
        std::unique_ptr<InfoCardView> noMap(InfoCardView::initWithLevel(plain));
        noMap->setupViewWithId(1);
        auto second = show(noMap.get(), QSize(375, 667));
        QVERIFY(second);
        QQuickItem* frame = second->find("mapFrame");
        QVERIFY(frame && !frame->isVisible() && frame->height() == 0);
        QVERIFY(second->find("fact0") && second->find("fact0")->isVisible());
    }

private:
    static std::unique_ptr<Shown> show(InfoCardView* card, QSize size) {
        auto shown = std::make_unique<Shown>();
        QQmlComponent component(&shown->engine);
        component.setData(kHost, QUrl(QStringLiteral("qrc:/qml/InfoCardViewHost.qml")));
        std::unique_ptr<QObject> object(
            component.createWithInitialProperties({{QStringLiteral("card"), QVariant::fromValue(card)}}));
        if (!object) {
            qWarning().noquote() << component.errorString();
            return nullptr;
        }
        shown->root.reset(qobject_cast<QQuickItem*>(object.release()));
        shown->window.resize(size);
        shown->root->setSize(size);
        shown->root->setParentItem(shown->window.contentItem());
        shown->window.show();
        if (!QTest::qWaitForWindowExposed(&shown->window)) {
            return nullptr;
        }
        QQuickItem* world = shown->find("worldMap");
        if (world && world->isVisible() &&
            !QTest::qWaitFor([&] { return world->property("status").toInt() == 1; })) {
            qWarning("The world map did not load");
            return nullptr;
        }
        shown->grab();
        return shown;
    }
};

QTEST_MAIN(InfoCardViewTest)
#include "InfoCardViewTest.moc"
