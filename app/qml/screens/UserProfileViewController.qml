import QtQuick
import QtCharts
import ".."
import "../components"

// The player's figures, the places of the last ten days as bars (or their history as a table), and the levels
// of every day as a line. Charts read from the right: the oldest day stands at the right.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    function reversed(list) { const out = []; for (let i = list.length - 1; i >= 0; --i) out.push(list[i]); return out }
    function largest(list) { let m = 0; for (let i = 0; i < list.length; ++i) m = Math.max(m, list[i]); return m }
    // An axis always spans something, so that a series of zeros draws as a flat row.
    function niceMax(list) {
        const m = largest(list)
        if (m <= 0)
            return 4
        // Four steps of 1, 2 or 5 times a power of ten.
        const raw = m * 1.05 / 4
        const power = Math.pow(10, Math.floor(Math.log10(raw)))
        const step = [1, 1.5, 2, 2.5, 3, 4, 5, 6, 8, 10].map(f => f * power).find(v => v >= raw)
        return Math.max(4, step * 4)
    }

    Background {}
    MouseArea { anchors.fill: parent }
    TopBar {
        id: bar
        width: parent.width
        title: "ارقامي"
        onBack: controller.goBack()
    }

    Flickable {
        anchors.top: bar.bottom
        anchors.bottom: parent.bottom
        anchors.left: parent.left
        anchors.right: parent.right
        contentHeight: content.implicitHeight + 24 * screen.u
        clip: true

        Column {
            id: content
            x: 12 * screen.u
            y: 12 * screen.u
            width: parent.width - 24 * screen.u
            spacing: 12 * screen.u

            // The leaderboard entry.
            Rectangle {
                width: parent.width
                height: 76 * screen.u
                radius: 18 * screen.u
                color: "#1fffffff"
                border.color: "#33ffffff"
                Rectangle {
                    id: photoFrame
                    anchors.right: parent.right
                    anchors.rightMargin: 12 * screen.u
                    anchors.verticalCenter: parent.verticalCenter
                    width: 54 * screen.u
                    height: width
                    radius: width / 2
                    color: "#33ffffff"
                    clip: true
                    Image {
                        anchors.fill: parent
                        visible: controller.playerID.length > 0
                        source: controller.playerID.length > 0 ? "image://players/" + controller.playerID : ""
                    }
                }
                Column {
                    anchors.right: photoFrame.left
                    anchors.rightMargin: 12 * screen.u
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 2
                    Text {
                        objectName: "playerAlias"
                        text: controller.playerAlias.length > 0 ? controller.playerAlias : "لم تسجل الدخول بعد"
                        font.family: Theme.fontFamily
                        font.pixelSize: 18 * screen.u
                        font.bold: true
                        color: "#ffffff"
                    }
                    Text {
                        text: controller.gcRankLabel.length > 0 ? "ترتيبك " + controller.gcRankLabel + "  •  نقاطك " + controller.totalPointsLabel : "ترتيبك يظهر بعد تسجيل الدخول"
                        font.family: Theme.fontFamily
                        font.pixelSize: 13 * screen.u
                        color: Theme.gold
                    }
                }
            }

            // The lifetime figures.
            Grid {
                width: parent.width
                columns: 5
                spacing: 6 * screen.u
                Repeater {
                    model: controller.figures
                    delegate: Rectangle {
                        objectName: modelData.name
                        width: (content.width - 4 * 6 * screen.u) / 5
                        height: 66 * screen.u
                        radius: 12 * screen.u
                        color: "#44000000"
                        border.color: "#26ffffff"
                        Column {
                            anchors.centerIn: parent
                            width: parent.width - 6
                            Text {
                                width: parent.width
                                horizontalAlignment: Text.AlignHCenter
                                text: modelData.value
                                font.family: Theme.fontFamily
                                font.pixelSize: 18 * screen.u
                                font.bold: true
                                color: Theme.gold
                                fontSizeMode: Text.HorizontalFit
                                minimumPixelSize: 10
                            }
                            Text {
                                width: parent.width
                                horizontalAlignment: Text.AlignHCenter
                                text: modelData.caption
                                font.family: Theme.fontFamily
                                font.pixelSize: 9 * screen.u
                                color: "#d9d2f5"
                                wrapMode: Text.WordWrap
                                maximumLineCount: 2
                            }
                        }
                    }
                }
            }

            GameButton {
                objectName: "scoreChallenge"
                anchors.horizontalCenter: parent.horizontalCenter
                width: 200 * screen.u
                height: 40 * screen.u
                fontSize: 15 * screen.u
                text: "تحدي النقاط"
                onClicked: controller.sendScoreChallege()
            }

            // Places: the chart of ten days, or the history.
            Row {
                anchors.horizontalCenter: parent.horizontalCenter
                spacing: 6 * screen.u
                Repeater {
                    model: ["ترتيبي في عشرة أيام", "سجل الترتيب"]
                    delegate: Rectangle {
                        objectName: "profileSegment" + index
                        width: 150 * screen.u
                        height: 32 * screen.u
                        radius: height / 2
                        color: controller.segment === index ? Theme.gold : "#33ffffff"
                        Text {
                            anchors.centerIn: parent
                            text: modelData
                            font.family: Theme.fontFamily
                            font.pixelSize: 13 * screen.u
                            font.bold: true
                            color: controller.segment === index ? Theme.ink : "#ffffff"
                        }
                        MouseArea {
                            anchors.fill: parent
                            onClicked: controller.segmentChanged(index)
                            Accessible.role: Accessible.PageTab
                            Accessible.name: modelData
                            Accessible.ignored: !enabled
                            Accessible.onPressAction: controller.segmentChanged(index)
                            activeFocusOnTab: true
                        }
                    }
                }
            }
            Rectangle {
                width: parent.width
                height: 240 * screen.u
                radius: 16 * screen.u
                color: Theme.paper
                clip: true
                ChartView {
                    id: ranksChart
                    objectName: "ranksChart"
                    anchors.fill: parent
                    visible: controller.segment === 0
                    antialiasing: true
                    legend.visible: false
                    backgroundColor: "transparent"
                    margins.top: 4; margins.left: 4; margins.right: 4
                    margins.bottom: 44 * screen.u
                    // The days under their bars, oldest at the right.
                    Repeater {
                        model: screen.reversed(controller.barLabels)
                        delegate: Text {
                            readonly property real slot: ranksChart.plotArea.width / 10
                            x: ranksChart.plotArea.x + (index + 0.5) * slot - width
                            y: ranksChart.plotArea.y + ranksChart.plotArea.height + 8 * screen.u
                            transformOrigin: Item.TopRight
                            rotation: -40
                            text: modelData
                            font.family: Theme.fontFamily
                            font.pixelSize: 10 * screen.u
                            color: Theme.ink
                        }
                    }
                    BarSeries {
                        axisX: BarCategoryAxis {
                            categories: screen.reversed(controller.barLabels)
                            // Drawn below by the view: the charts cut rotated labels short.
                            labelsVisible: false
                        }
                        axisY: ValueAxis {
                            min: 0
                            max: screen.niceMax(controller.barValues)
                            tickCount: 5
                            labelFormat: "%d"
                            labelsFont.pixelSize: 9 * screen.u
                        }
                        BarSet {
                            label: "الترتيب"
                            color: "#1474fb"
                            values: screen.reversed(controller.barValues)
                        }
                    }
                }
                ListView {
                    id: history
                    objectName: "rankHistory"
                    anchors.fill: parent
                    anchors.margins: 8 * screen.u
                    visible: controller.segment !== 0
                    clip: true
                    model: controller.historyRows
                    delegate: Item {
                        width: history.width
                        height: 34 * screen.u
                        Text {
                            anchors.right: parent.right
                            anchors.verticalCenter: parent.verticalCenter
                            text: modelData.day
                            font.family: Theme.fontFamily
                            font.pixelSize: 13 * screen.u
                            color: Theme.ink
                        }
                        Text {
                            anchors.centerIn: parent
                            text: modelData.value
                            font.family: Theme.fontFamily
                            font.pixelSize: 15 * screen.u
                            font.bold: true
                            color: Theme.ink
                        }
                        Text {
                            anchors.left: parent.left
                            anchors.verticalCenter: parent.verticalCenter
                            text: modelData.change ? (modelData.arrow === "red-arrow.png" ? "▼ " : "▲ ") + modelData.change : ""
                            font.family: Theme.fontFamily
                            font.pixelSize: 13 * screen.u
                            color: modelData.color ? modelData.color : Theme.ink
                        }
                    }
                    Text {
                        anchors.centerIn: parent
                        visible: history.count === 0
                        text: "لا يوجد سجل للترتيب بعد"
                        font.family: Theme.fontFamily
                        font.pixelSize: 14 * screen.u
                        color: "#8a7a5a"
                    }
                }
            }

            // Levels of every day.
            Text {
                anchors.right: parent.right
                text: "المراحل في كل يوم"
                font.family: Theme.fontFamily
                font.pixelSize: 15 * screen.u
                font.bold: true
                color: "#ffffff"
            }
            Rectangle {
                width: parent.width
                height: 190 * screen.u
                radius: 16 * screen.u
                color: Theme.paper
                clip: true
                ChartView {
                    id: levelsChart
                    objectName: "levelsChart"
                    anchors.fill: parent
                    antialiasing: true
                    legend.visible: false
                    backgroundColor: "transparent"
                    margins.top: 4; margins.bottom: 4; margins.left: 4; margins.right: 4
                    ValueAxis {
                        id: levelsY
                        min: 0
                        max: screen.niceMax(controller.lineValues)
                        tickCount: 5
                        labelFormat: "%d"
                        labelsFont.pixelSize: 9 * screen.u
                    }
                    CategoryAxis {
                        id: levelsX
                        min: 0
                        max: Math.max(1, controller.lineValues.length - 1)
                        labelsPosition: CategoryAxis.AxisLabelsPositionOnValue
                        labelsFont.pixelSize: 9 * screen.u
                    }
                    LineSeries {
                        id: levelsLine
                        axisX: levelsX
                        axisY: levelsY
                        color: "#148814"
                        width: 3
                        pointsVisible: true
                    }
                    function refill() {
                        levelsLine.clear()
                        for (const label of levelsX.categoriesLabels)
                            levelsX.remove(label)
                        const values = controller.lineValues
                        const labels = controller.lineLabels
                        const n = values.length
                        // Day 0 at the right.
                        for (let i = 0; i < n; ++i)
                            levelsLine.append(n - 1 - i, values[i])
                        for (let i = n - 1; i >= 0; --i)
                            levelsX.append(labels[i], n - 1 - i)
                    }
                    Component.onCompleted: refill()
                    Connections {
                        target: controller
                        function onChanged() { levelsChart.refill() }
                    }
                }
            }
        }
    }
}
