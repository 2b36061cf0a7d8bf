import QtQuick
import ".."
import "../components"

// The leaderboard browser: the player's header, the ways to move through the ranks, and the rows, which grow
// at both ends as the player scrolls.
Item {
    id: screen
    property QtObject controller
    anchors.fill: parent
    readonly property real u: Math.min(width / 375, height / 667)

    Background {}
    MouseArea { anchors.fill: parent }
    TopBar {
        id: bar
        width: parent.width
        title: "قائمة الأذكياء"
        onBack: controller.goBack()
    }

    // The player: his picture (a tap opens his charts), name, points and three ranks.
    Rectangle {
        id: header
        objectName: "profileHeader"
        anchors.top: bar.bottom
        anchors.topMargin: 8 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 20 * screen.u
        height: 74 * screen.u
        radius: 14 * screen.u
        color: "#fff1c9"
        border.color: Theme.gold
        border.width: 2
        Row {
            anchors.fill: parent
            anchors.margins: 8 * screen.u
            spacing: 10 * screen.u
            PlayerFace {
                id: face
                objectName: "playerImageView"
                width: 58 * screen.u; height: width
                playerID: controller.localPlayerID
                name: controller.playerName
                MouseArea {
                    anchors.fill: parent
                    onClicked: controller.tapImage()
                    Accessible.role: Accessible.Button
                    Accessible.name: A11y.text("a11y.photo").arg(controller.playerName)
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: controller.tapImage()
                    activeFocusOnTab: true
                }
            }
            Column {
                anchors.verticalCenter: parent.verticalCenter
                width: 92 * screen.u
                Text {
                    objectName: "playerNameLabel"
                    width: parent.width
                    elide: Text.ElideRight
                    text: controller.playerName
                    font.family: Theme.fontFamily
                    font.pixelSize: 15 * screen.u
                    font.bold: true
                    color: Theme.ink
                }
                Text {
                    objectName: "totalPointsLabel"
                    text: controller.totalPointsText + " نقطة"
                    font.family: Theme.fontFamily
                    font.pixelSize: 12 * screen.u
                    color: "#8a7a5a"
                }
            }
            Repeater {
                model: [
                    { "name": "currentRankLabel", "label": "ترتيبك", "value": controller.currentRankText },
                    { "name": "lastWeekRankLabel", "label": "قبل أسبوع", "value": controller.lastWeekRankText },
                    { "name": "bestRankLabel", "label": "أفضل ترتيب", "value": controller.bestRankText }
                ]
                delegate: Column {
                    anchors.verticalCenter: parent.verticalCenter
                    width: (header.width - 58 * screen.u - 92 * screen.u - 16 * screen.u - 50 * screen.u) / 3
                    Text {
                        objectName: modelData.name
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: modelData.value
                        font.family: Theme.fontFamily
                        font.pixelSize: 17 * screen.u
                        font.bold: true
                        color: Theme.ink
                    }
                    Text {
                        anchors.horizontalCenter: parent.horizontalCenter
                        text: modelData.label
                        font.family: Theme.fontFamily
                        font.pixelSize: 10 * screen.u
                        color: "#8a7a5a"
                    }
                }
            }
        }
    }

    // Segments of a row: titles, the selected index, and what a tap calls.
    component Segments: Row {
        id: seg
        property var titles: []
        property int selected: -1
        property string prefix: ""
        property real itemWidth: 60
        signal picked(int index)
        spacing: 4 * screen.u
        Repeater {
            model: seg.titles
            delegate: Rectangle {
                objectName: seg.prefix + index
                width: seg.itemWidth
                height: 30 * screen.u
                radius: height / 2
                color: seg.selected === index ? Theme.gold : "#33ffffff"
                Text {
                    anchors.centerIn: parent
                    text: modelData
                    font.family: Theme.fontFamily
                    font.pixelSize: 11 * screen.u
                    font.bold: true
                    color: seg.selected === index ? Theme.ink : "#ffffff"
                }
                MouseArea {
                    anchors.fill: parent
                    onClicked: seg.picked(index)
                    Accessible.role: Accessible.PageTab
                    Accessible.name: modelData
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: seg.picked(index)
                    Accessible.checkable: true
                    Accessible.checked: seg.selected === index
                    activeFocusOnTab: true
                }
            }
        }
    }

    Column {
        id: controls
        anchors.top: header.bottom
        anchors.topMargin: 8 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        spacing: 6 * screen.u
        Segments {
            objectName: "initialSegment"
            anchors.horizontalCenter: parent.horizontalCenter
            visible: !controller.multiSegmentVisible
            prefix: "initial"
            titles: ["تصفح الترتيب", "الأوائل", "خصومي", "حولي"]
            itemWidth: 84 * screen.u
            selected: controller.initialSegment
            onPicked: (index) => controller.initialSegmentChanged(index)
        }
        Column {
            objectName: "multiSegmentView"
            visible: controller.multiSegmentVisible
            spacing: 6 * screen.u
            Segments {
                objectName: "mainSegment"
                anchors.horizontalCenter: parent.horizontalCenter
                prefix: "main"
                titles: controller.mainSegmentTitles
                itemWidth: 56 * screen.u
                selected: controller.mainSegment
                onPicked: (index) => controller.mainSegmentChanged(index)
            }
            Segments {
                objectName: "segment1"
                anchors.horizontalCenter: parent.horizontalCenter
                visible: controller.hundredsVisible
                prefix: "hundreds1_"
                titles: controller.segment1Titles
                itemWidth: 62 * screen.u
                selected: controller.segment1
                onPicked: (index) => controller.segment1Changed(index)
            }
            Segments {
                objectName: "segment2"
                anchors.horizontalCenter: parent.horizontalCenter
                visible: controller.hundredsVisible
                prefix: "hundreds2_"
                titles: controller.segment2Titles
                itemWidth: 62 * screen.u
                selected: controller.segment2
                onPicked: (index) => controller.segment2Changed(index)
            }
        }
        Text {
            objectName: "playerActionsLabel"
            visible: controller.playerActionsVisible
            width: screen.width - 30 * screen.u
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.WordWrap
            text: "هنا اللاعبون الذين تعاركت معهم؛ اضغط على أحدهم لتتحداه من جديد"
            font.family: Theme.fontFamily
            font.pixelSize: 12 * screen.u
            color: "#ddffffff"
        }
        Row {
            anchors.horizontalCenter: parent.horizontalCenter
            spacing: 8 * screen.u
            GameButton {
                objectName: "openFriendsRequestView"
                primary: false
                width: 130 * screen.u
                height: 30 * screen.u
                fontSize: 12 * screen.u
                text: "أضف صديقا"
                onClicked: controller.openFriendsRequestView()
            }
            GameButton {
                objectName: "openAccount"
                primary: false
                width: 130 * screen.u
                height: 30 * screen.u
                fontSize: 12 * screen.u
                text: "أصدقائي وطلباتي"
                onClicked: controller.openAccount()
            }
        }
    }

    ListView {
        id: list
        objectName: "scoresList"
        anchors.top: controls.bottom
        anchors.topMargin: 6 * screen.u
        anchors.bottom: parent.bottom
        anchors.bottomMargin: 5 * screen.u
        anchors.horizontalCenter: parent.horizontalCenter
        width: parent.width - 20 * screen.u
        clip: true
        spacing: 3 * screen.u
        // Rows are all of one height, so that a jump to a row lands where it should at once.
        readonly property real rowHeight: 44 * screen.u
        cacheBuffer: rowHeight * 20
        // Rows that leave the screen, or a whole list that a jump replaces, give their items to the next.
        reuseItems: true
        model: controller.rowsModel
        // In whole pixels: a list at rest at its top can stand a fraction of a pixel off it.
        onMovementStarted: controller.scrollViewWillBeginDragging(Math.round(contentY - originY))
        onMovementEnded: positionPending()
        property int pendingRow: -1
        property bool pendingMiddle: false
        function positionPending() {
            if (pendingRow < 0)
                return
            positionViewAtIndex(pendingRow, pendingMiddle ? ListView.Center : ListView.Beginning)
            pendingRow = -1
        }
        delegate: Rectangle {
            objectName: "scoreRow" + index
            width: list.width
            height: list.rowHeight
            radius: 10 * screen.u
            color: model.isLocal ? Qt.rgba(204 / 255, 1, 51 / 255, 1)
                   : model.isFriend ? Qt.rgba(1, 1, 148 / 255, 1) : "#f2f2f7"
            Component.onCompleted: controller.tableViewWillDisplayRow(index)
            ListView.onReused: controller.tableViewWillDisplayRow(index)
            Text {
                id: rank
                anchors.left: parent.left // mirrored: the right edge
                anchors.leftMargin: 10 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                width: 64 * screen.u
                horizontalAlignment: Text.AlignHCenter
                text: model.rank
                font.family: Theme.fontFamily
                font.pixelSize: 15 * screen.u
                font.bold: true
                color: Theme.ink
            }
            Text {
                anchors.left: rank.right
                anchors.right: points.left
                anchors.rightMargin: 8 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                horizontalAlignment: Text.AlignLeft // mirrored: beside the rank
                elide: Text.ElideRight
                text: model.name
                font.family: Theme.fontFamily
                font.pixelSize: 15 * screen.u
                color: Theme.ink
            }
            Text {
                id: points
                anchors.right: parent.right
                anchors.rightMargin: 12 * screen.u
                anchors.verticalCenter: parent.verticalCenter
                text: model.score
                font.family: Theme.fontFamily
                font.pixelSize: 14 * screen.u
                color: "#6b5a3a"
            }
            MouseArea {
                anchors.fill: parent
                onClicked: controller.openPlayer(index)
                Accessible.role: Accessible.ListItem
                Accessible.name: A11y.text("a11y.leaderRow").arg(model.rank).arg(model.name).arg(model.score)
                Accessible.ignored: !enabled
                Accessible.onPressAction: controller.openPlayer(index)
                activeFocusOnTab: true
            }
        }
        Connections {
            target: screen.controller
            function onScrollToRow(row, middle) {
                // Once the list has taken the new rows, and once the finger that pulled them in has let go
                // and the list has come to rest: a move under way would carry the rows away again.
                list.pendingRow = row
                list.pendingMiddle = middle
                if (!list.moving)
                    Qt.callLater(list.positionPending)
            }
        }
    }
    Text {
        anchors.centerIn: list
        visible: list.count === 0
        width: list.width - 40 * screen.u
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.WordWrap
        text: "لا يوجد لاعبون هنا"
        font.family: Theme.fontFamily
        font.pixelSize: 14 * screen.u
        color: "#ccffffff"
    }
}
