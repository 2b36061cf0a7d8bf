import QtQuick
import "components"

// The info card of a level's answer: a title band, a world map framed on the card's region (with a pin on a
// city), the rows that have a value, the price comparison and the numbered facts. Laid out from the start
// edge, so that the window's layout mirroring puts it right to left.
Item {
    id: view
    property QtObject card
    signal closeRequested()

    implicitWidth: 375
    implicitHeight: 667

    readonly property bool hasMap: card !== null && card.mapSpan.x > 0 && card.mapSpan.y > 0

    // A caption and its value, with an optional coloured badge after the value; no height while the value is
    // empty.
    component InfoRow: Item {
        id: row
        property string caption
        property string value
        property string badgeText
        property color badgeColor: Theme.ink
        readonly property bool shown: value !== ""
        visible: shown
        width: parent ? parent.width : 0
        height: shown ? Math.max(captionText.implicitHeight, values.height) + 16 : 0

        Text {
            id: captionText
            anchors.left: parent.left
            anchors.leftMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            width: 92
            text: row.caption
            font.family: Theme.fontFamily
            font.pixelSize: 13
            font.bold: true
            color: "#8a6a2a"
            horizontalAlignment: Text.AlignLeft
        }
        Flow {
            id: values
            anchors.left: captionText.right
            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            spacing: 10
            Text {
                objectName: row.objectName + "Value"
                width: Math.min(implicitWidth, values.width)
                text: row.value
                font.family: Theme.fontFamily
                font.pixelSize: 14
                color: Theme.ink
                wrapMode: Text.Wrap
                horizontalAlignment: Text.AlignLeft
            }
            Rectangle {
                visible: row.badgeText !== ""
                width: badge.implicitWidth + 18
                height: badge.implicitHeight + 4
                radius: height / 2
                color: Qt.rgba(row.badgeColor.r, row.badgeColor.g, row.badgeColor.b, 0.12)
                border.color: row.badgeColor
                border.width: 1
                Text {
                    id: badge
                    objectName: row.objectName + "Badge"
                    anchors.centerIn: parent
                    text: row.badgeText
                    font.family: Theme.fontFamily
                    font.pixelSize: 13
                    font.bold: true
                    color: row.badgeColor
                }
            }
        }
        Rectangle {
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.leftMargin: 12
            anchors.rightMargin: 12
            height: 1
            color: "#e6d5ae"
        }
    }

    // A pin whose point is the item's origin; the mark stands above it and can drop in from higher up.
    component Pin: Item {
        id: pin
        property real lift: 0
        function drop() { dropAnimation.restart() }

        Rectangle {
            x: -9
            y: -3
            width: 18
            height: 6
            radius: 3
            color: "#000000"
            opacity: 0.3 * (1 + pin.lift / 80)
        }
        // A circle and one square quarter, turned so that the square corner points down.
        Item {
            readonly property real size: 24
            width: size
            height: size
            x: -size / 2
            y: -size / 2 - size / Math.SQRT2 + pin.lift
            rotation: 45
            Rectangle {
                anchors.fill: parent
                radius: width / 2
                color: Theme.red
                border.color: "#ffffff"
                border.width: 2
            }
            Rectangle {
                x: parent.width / 2
                y: parent.height / 2
                width: parent.width / 2
                height: parent.height / 2
                color: Theme.red
            }
            Rectangle {
                anchors.centerIn: parent
                width: 9
                height: 9
                radius: 4.5
                color: "#ffffff"
            }
        }
        NumberAnimation {
            id: dropAnimation
            target: pin
            property: "lift"
            from: -70
            to: 0
            duration: 700
            easing.type: Easing.OutBounce
        }
    }

    // The world picture framed on a region: `span` (latitude, longitude degrees) around `center` fills the
    // item, never closer than `narrowestWindow` degrees nor farther than the whole world, and the window stays
    // inside the world. xOf() and yOf() place a longitude and a latitude in the item.
    component WorldMap: Item {
        id: map
        property point center
        property point span: Qt.point(180, 360)
        // A window narrower than this would show a blank patch of land or sea.
        property real narrowestWindow: 4
        clip: true

        readonly property real wanted: Math.min(width / span.y, height / span.x)
        readonly property real closest: Math.min(width, height) / narrowestWindow
        readonly property real farthest: Math.max(width / 360, height / 180)
        // A whole, even number of pixels for the width of the world.
        readonly property int worldWidth: 2 * Math.ceil(180 * Math.max(farthest, Math.min(wanted, closest)))
        readonly property real pixelsPerDegree: worldWidth / 360
        // The window's top-left corner in the world picture.
        readonly property int originX: Math.round(Math.max(0, Math.min(worldWidth - width,
                                                                      (center.y + 180) * pixelsPerDegree - width / 2)))
        readonly property int originY: Math.round(Math.max(0, Math.min(worldWidth / 2 - height,
                                                                      (90 - center.x) * pixelsPerDegree - height / 2)))
        readonly property rect window: Qt.rect(originX, originY, width, height)

        function xOf(lon) { return (lon + 180) * pixelsPerDegree - originX }
        function yOf(lat) { return (90 - lat) * pixelsPerDegree - originY }

        // Only the window is drawn, once its numbers have settled: the whole world at this scale would not fit
        // in memory.
        onWindowChanged: Qt.callLater(drawWorld)
        onWorldWidthChanged: Qt.callLater(drawWorld)
        function drawWorld() {
            world.source = ""
            if (width < 1 || height < 1) {
                return
            }
            world.sourceSize = Qt.size(worldWidth, worldWidth / 2)
            world.sourceClipRect = window
            world.source = Theme.image("worldmap")
        }

        // The map's sea, shown until the picture is drawn.
        Rectangle {
            anchors.fill: parent
            color: "#a7d3ee"
        }
        Image {
            id: world
            objectName: "worldMap"
            width: map.width
            height: map.height
            asynchronous: true
            smooth: true
        }
    }

    // A soft shadow under the card.
    Rectangle {
        anchors.fill: sheet
        anchors.topMargin: 6
        anchors.bottomMargin: -6
        radius: sheet.radius
        color: "#000000"
        opacity: 0.28
    }

    Rectangle {
        id: sheet
        objectName: "infoCard"
        anchors.fill: parent
        anchors.margins: 12
        radius: 22
        color: Theme.paper
        border.color: Theme.gold
        border.width: 3

        Rectangle {
            id: header
            anchors.top: parent.top
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.margins: sheet.border.width
            height: 70
            radius: sheet.radius - sheet.border.width
            gradient: Gradient {
                GradientStop { position: 0.0; color: Theme.backgroundTop }
                GradientStop { position: 1.0; color: "#3d3278" }
            }
            // Squares the band's lower corners.
            Rectangle {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                height: parent.radius
                color: "#3d3278"
            }
            Rectangle {
                anchors.left: parent.left
                anchors.right: parent.right
                anchors.bottom: parent.bottom
                height: 2
                color: Theme.gold
            }

            Column {
                anchors.left: parent.left
                anchors.right: closeButton.left
                anchors.leftMargin: 18
                anchors.rightMargin: 10
                anchors.verticalCenter: parent.verticalCenter
                spacing: 0
                Text {
                    objectName: "cardTitle"
                    width: parent.width
                    text: card && card.countryLabel !== "" ? card.countryLabel : "بطاقة المعلومات"
                    font.family: Theme.fontFamily
                    font.pixelSize: 20
                    font.bold: true
                    color: Theme.gold
                    elide: Text.ElideRight
                    horizontalAlignment: Text.AlignLeft
                }
                Text {
                    width: parent.width
                    visible: card !== null && card.countryLabel !== ""
                    text: "بطاقة المعلومات"
                    font.family: Theme.fontFamily
                    font.pixelSize: 12
                    color: "#d8d2ea"
                    horizontalAlignment: Text.AlignLeft
                }
            }

            Rectangle {
                id: closeButton
                objectName: "closeButton"
                anchors.right: parent.right
                anchors.rightMargin: 16
                anchors.verticalCenter: parent.verticalCenter
                width: 34
                height: 34
                radius: 17
                color: closeArea.pressed ? "#ffffff" : Theme.gold
                Repeater {
                    model: [45, -45]
                    Rectangle {
                        anchors.centerIn: parent
                        width: 16
                        height: 3
                        radius: 1.5
                        rotation: modelData
                        color: Theme.ink
                    }
                }
                MouseArea {
                    id: closeArea
                    anchors.fill: parent
                    anchors.margins: -8
                    onClicked: view.closeRequested()
                    Accessible.role: Accessible.Button
                    Accessible.name: A11y.text("a11y.close")
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: view.closeRequested()
                    activeFocusOnTab: true
                }
            }
        }

        Flickable {
            id: scroller
            anchors.top: header.bottom
            anchors.left: parent.left
            anchors.right: parent.right
            anchors.bottom: parent.bottom
            anchors.topMargin: 2
            anchors.bottomMargin: 16
            contentHeight: content.implicitHeight + 28
            boundsBehavior: Flickable.StopAtBounds
            clip: true

            Column {
                id: content
                x: 16
                y: 14
                width: scroller.width - 32
                spacing: 14

                Item {
                    id: mapFrame
                    objectName: "mapFrame"
                    visible: view.hasMap
                    width: parent.width
                    height: view.hasMap ? Math.round(width * 0.58) : 0

                    WorldMap {
                        id: map
                        objectName: "mapView"
                        anchors.fill: parent
                        visible: view.hasMap
                        center: view.hasMap ? view.card.mapCenter : Qt.point(0, 0)
                        span: view.hasMap ? view.card.mapSpan : Qt.point(180, 360)

                        Pin {
                            id: pin
                            objectName: "mapPin"
                            visible: view.hasMap && view.card.hasPin
                            x: view.hasMap ? map.xOf(view.card.pin.y) : 0
                            y: view.hasMap ? map.yOf(view.card.pin.x) : 0
                        }
                    }
                    // Rounds the frame's corners: a paper-coloured ring whose inner edge is the frame.
                    Rectangle {
                        anchors.fill: parent
                        anchors.margins: -8
                        radius: 16 + 8
                        color: "transparent"
                        border.color: Theme.paper
                        border.width: 8
                    }
                    Rectangle {
                        anchors.fill: parent
                        radius: 16
                        color: "transparent"
                        border.color: Theme.gold
                        border.width: 2
                    }
                }

                Rectangle {
                    width: parent.width
                    height: rows.height
                    visible: rows.height > 0
                    radius: 14
                    color: "#f6ead0"

                    Column {
                        id: rows
                        width: parent.width

                        InfoRow { caption: "القارة"; value: card ? card.continentLabel : "" }
                        InfoRow { caption: "المساحة"; value: card ? card.areaLabel : "" }
                        InfoRow { caption: "عدد السكان"; value: card ? card.populationLabel : "" }
                        InfoRow { caption: "الناتج المحلي"; value: card ? card.gdpLabel : "" }
                        InfoRow { caption: "التأسيس"; value: card ? card.establishedLabel : "" }
                        InfoRow { caption: "الملعب"; value: card ? card.stadiumLabel : "" }
                        InfoRow { caption: "البطولات"; value: card ? card.titlesLabel : "" }
                        InfoRow { caption: "اللاعبون"; value: card ? card.playersLabel : "" }
                        InfoRow { caption: "المدير"; value: card ? card.managerLabel : "" }
                        InfoRow { caption: "المدرب"; value: card ? card.coachLabel : "" }
                        InfoRow { caption: "المخرج"; value: card ? card.directorLabel : "" }
                        InfoRow { caption: "الإنتاج"; value: card ? card.productionLabel : "" }
                        InfoRow { caption: "العرض الأول"; value: card ? card.firstShowLabel : "" }
                        InfoRow { caption: "الممثلون"; value: card ? card.actorsLabel : "" }
                        InfoRow { caption: "القصة"; value: card ? card.storyLabel : "" }
                        InfoRow { caption: "الوقت الآن"; value: card ? card.currentTimeLabel : "" }
                        InfoRow { caption: "الوقت هناك"; value: card ? card.cityTimeLabel : "" }
                        InfoRow {
                            objectName: "priceRow"
                            caption: "الأسعار"
                            value: card ? card.priceLabel : ""
                            badgeText: card ? card.cheaperPercentLabel : ""
                            badgeColor: card ? card.cheaperPercentColor : Theme.ink
                        }
                    }
                }

                Text {
                    width: parent.width
                    visible: factsRepeater.count > 0
                    text: "هل تعلم؟"
                    font.family: Theme.fontFamily
                    font.pixelSize: 17
                    font.bold: true
                    color: Theme.backgroundTop
                    horizontalAlignment: Text.AlignLeft
                }
                Column {
                    width: parent.width
                    spacing: 10
                    Repeater {
                        id: factsRepeater
                        model: card ? card.factTexts : []
                        delegate: Item {
                            width: parent.width
                            height: Math.max(badge.height, factText.implicitHeight)

                            Rectangle {
                                id: badge
                                anchors.left: parent.left
                                anchors.top: parent.top
                                anchors.topMargin: 2
                                width: 28
                                height: 28
                                radius: 14
                                color: Theme.gold
                                Text {
                                    anchors.centerIn: parent
                                    text: index + 1
                                    font.family: Theme.fontFamily
                                    font.pixelSize: 14
                                    font.bold: true
                                    color: Theme.ink
                                }
                            }
                            Text {
                                id: factText
                                objectName: "fact" + index
                                anchors.left: badge.right
                                anchors.leftMargin: 10
                                anchors.right: parent.right
                                text: modelData
                                font.family: Theme.fontFamily
                                font.pixelSize: 14
                                lineHeight: 1.1
                                color: "#4a3b22"
                                wrapMode: Text.Wrap
                                horizontalAlignment: Text.AlignLeft
                            }
                        }
                    }
                }
            }
        }
    }

    // Fades the foot of the list while more of it lies below.
    Rectangle {
        anchors.left: sheet.left
        anchors.right: sheet.right
        anchors.bottom: sheet.bottom
        anchors.leftMargin: sheet.border.width
        anchors.rightMargin: sheet.border.width
        anchors.bottomMargin: 16
        height: 28
        visible: scroller.contentY + scroller.height < scroller.contentHeight - 1
        gradient: Gradient {
            GradientStop { position: 0.0; color: Qt.rgba(Theme.paper.r, Theme.paper.g, Theme.paper.b, 0) }
            GradientStop { position: 1.0; color: Theme.paper }
        }
    }

    function dropPin() {
        if (hasMap && card.hasPin && card.mapAnimated) {
            pin.drop()
        }
    }
    onCardChanged: dropPin()
    Connections {
        target: view.card
        function onChanged() { view.dropPin() }
    }
}
