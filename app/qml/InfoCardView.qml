import QtQuick
import "components"

// The info card of a level's answer: a title band, a world map framed on the card's region (with a pin on a
// city), the rows of facts that have a value, the price comparison and the numbered facts. Laid out from the
// start edge, so that the window's layout mirroring puts it right to left.
Item {
    id: view
    property QtObject card
    signal closeRequested()

    implicitWidth: 375
    implicitHeight: 667

    readonly property color seaColor: "#a7d3ee"
    readonly property color captionColor: "#8a6a2a"
    readonly property color rowTint: "#f6ead0"
    readonly property bool hasMap: card !== null && card.mapSpan.x > 0 && card.mapSpan.y > 0

    // A caption and its value; hidden while the value is empty.
    component InfoRow: Item {
        id: row
        property string caption
        property string value
        visible: value !== ""
        width: parent ? parent.width : 0
        height: visible ? Math.max(captionText.implicitHeight, valueText.implicitHeight) + 16 : 0

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
            color: view.captionColor
            horizontalAlignment: Text.AlignLeft
        }
        Text {
            id: valueText
            anchors.left: captionText.right
            anchors.right: parent.right
            anchors.rightMargin: 14
            anchors.verticalCenter: parent.verticalCenter
            text: row.value
            font.family: Theme.fontFamily
            font.pixelSize: 14
            color: Theme.ink
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignLeft
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
                    text: view.card && view.card.countryLabel !== "" ? view.card.countryLabel : "بطاقة المعلومات"
                    font.family: Theme.fontFamily
                    font.pixelSize: 20
                    font.bold: true
                    color: Theme.gold
                    elide: Text.ElideRight
                    horizontalAlignment: Text.AlignLeft
                }
                Text {
                    width: parent.width
                    visible: view.card !== null && view.card.countryLabel !== ""
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

                // The map: the card's region fills the frame.
                Item {
                    id: mapFrame
                    objectName: "mapFrame"
                    visible: view.hasMap
                    width: parent.width
                    height: visible ? Math.round(width * 0.58) : 0

                    Item {
                        id: map
                        objectName: "mapView"
                        anchors.fill: parent
                        clip: true

                        // A window narrower than this many degrees would show a blank patch of land or sea.
                        readonly property real narrowestWindow: 4
                        readonly property real latSpan: view.hasMap ? view.card.mapSpan.x : 180
                        readonly property real lonSpan: view.hasMap ? view.card.mapSpan.y : 360
                        readonly property real wanted: Math.min(width / lonSpan, height / latSpan)
                        readonly property real closest: Math.min(width, height) / narrowestWindow
                        readonly property real farthest: Math.max(width / 360, height / 180)
                        // Pixels a degree, a whole number of pixels for the width of the world.
                        readonly property int worldWidth:
                            2 * Math.ceil(180 * Math.max(farthest, Math.min(wanted, closest)))
                        readonly property real pixelsPerDegree: worldWidth / 360
                        readonly property real centerLat: view.hasMap ? view.card.mapCenter.x : 0
                        readonly property real centerLon: view.hasMap ? view.card.mapCenter.y : 0
                        // The window's top-left corner in the world picture, kept inside the world.
                        readonly property int originX: Math.round(Math.max(0, Math.min(worldWidth - width,
                                                                  (centerLon + 180) * pixelsPerDegree - width / 2)))
                        readonly property int originY: Math.round(Math.max(0, Math.min(worldWidth / 2 - height,
                                                                  (90 - centerLat) * pixelsPerDegree - height / 2)))

                        function xOf(lon) { return (lon + 180) * pixelsPerDegree - originX }
                        function yOf(lat) { return (90 - lat) * pixelsPerDegree - originY }

                        Rectangle {
                            anchors.fill: parent
                            color: view.seaColor
                        }
                        Image {
                            id: world
                            objectName: "worldMap"
                            width: map.width
                            height: map.height
                            source: view.hasMap && map.width > 0 && map.height > 0 ? Theme.image("worldmap") : ""
                            sourceSize: Qt.size(map.worldWidth, map.worldWidth / 2)
                            sourceClipRect: Qt.rect(map.originX, map.originY, map.width, map.height)
                            smooth: true
                        }

                        // The pin's point is the item's origin; the mark stands above it.
                        Item {
                            id: pin
                            objectName: "mapPin"
                            visible: view.hasMap && view.card.hasPin
                            x: view.hasMap ? map.xOf(view.card.pin.y) : 0
                            y: view.hasMap ? map.yOf(view.card.pin.x) : 0
                            property real lift: 0

                            Rectangle {
                                x: -9
                                y: -3
                                width: 18
                                height: 6
                                radius: 3
                                color: "#000000"
                                opacity: 0.3 * (1 + pin.lift / 80)
                            }
                            Item {
                                id: mark
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
                                // Fills the corner that turns into the point, over the circle's border.
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
                    id: rowsBox
                    width: parent.width
                    height: rows.height
                    visible: rows.height > 0
                    radius: 14
                    color: view.rowTint

                    Column {
                        id: rows
                        width: parent.width

                        InfoRow { caption: "القارة"; value: view.card ? view.card.continentLabel : "" }
                        InfoRow { caption: "المساحة"; value: view.card ? view.card.areaLabel : "" }
                        InfoRow { caption: "عدد السكان"; value: view.card ? view.card.populationLabel : "" }
                        InfoRow { caption: "الناتج المحلي"; value: view.card ? view.card.gdpLabel : "" }
                        InfoRow { caption: "التأسيس"; value: view.card ? view.card.establishedLabel : "" }
                        InfoRow { caption: "الملعب"; value: view.card ? view.card.stadiumLabel : "" }
                        InfoRow { caption: "البطولات"; value: view.card ? view.card.titlesLabel : "" }
                        InfoRow { caption: "اللاعبون"; value: view.card ? view.card.playersLabel : "" }
                        InfoRow { caption: "المدير"; value: view.card ? view.card.managerLabel : "" }
                        InfoRow { caption: "المدرب"; value: view.card ? view.card.coachLabel : "" }
                        InfoRow { caption: "المخرج"; value: view.card ? view.card.directorLabel : "" }
                        InfoRow { caption: "الإنتاج"; value: view.card ? view.card.productionLabel : "" }
                        InfoRow { caption: "العرض الأول"; value: view.card ? view.card.firstShowLabel : "" }
                        InfoRow { caption: "الممثلون"; value: view.card ? view.card.actorsLabel : "" }
                        InfoRow { caption: "القصة"; value: view.card ? view.card.storyLabel : "" }
                        InfoRow { caption: "الوقت الآن"; value: view.card ? view.card.currentTimeLabel : "" }
                        InfoRow { caption: "الوقت هناك"; value: view.card ? view.card.cityTimeLabel : "" }

                        // The price level, and how it compares in its own colour.
                        Item {
                            id: priceRow
                            objectName: "priceRow"
                            visible: view.card !== null && view.card.priceLabel !== ""
                            width: parent.width
                            height: visible ? Math.max(priceCaption.implicitHeight, priceValues.height) + 16 : 0

                            Text {
                                id: priceCaption
                                anchors.left: parent.left
                                anchors.leftMargin: 14
                                anchors.verticalCenter: parent.verticalCenter
                                width: 92
                                text: "الأسعار"
                                font.family: Theme.fontFamily
                                font.pixelSize: 13
                                font.bold: true
                                color: view.captionColor
                                horizontalAlignment: Text.AlignLeft
                            }
                            Flow {
                                id: priceValues
                                anchors.left: priceCaption.right
                                anchors.right: parent.right
                                anchors.rightMargin: 14
                                anchors.verticalCenter: parent.verticalCenter
                                spacing: 10
                                Text {
                                    objectName: "priceLabel"
                                    text: view.card ? view.card.priceLabel : ""
                                    font.family: Theme.fontFamily
                                    font.pixelSize: 14
                                    color: Theme.ink
                                }
                                Rectangle {
                                    visible: cheaper.text !== ""
                                    width: cheaper.implicitWidth + 18
                                    height: cheaper.implicitHeight + 4
                                    radius: height / 2
                                    color: Qt.rgba(cheaper.color.r, cheaper.color.g, cheaper.color.b, 0.12)
                                    border.color: cheaper.color
                                    border.width: 1
                                    Text {
                                        id: cheaper
                                        objectName: "cheaperPercent"
                                        anchors.centerIn: parent
                                        text: view.card ? view.card.cheaperPercentLabel : ""
                                        font.family: Theme.fontFamily
                                        font.pixelSize: 13
                                        font.bold: true
                                        color: view.card ? view.card.cheaperPercentColor : Theme.ink
                                    }
                                }
                            }
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
                        model: view.card ? view.card.factTexts : []
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

    function dropPin() {
        if (view.hasMap && view.card.hasPin && view.card.mapAnimated) {
            dropAnimation.restart()
        }
    }
    onCardChanged: dropPin()
    Connections {
        target: view.card
        function onChanged() { view.dropPin() }
    }
}
