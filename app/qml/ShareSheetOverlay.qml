import QtQuick
import "components"

// The share screen, where a phone's share sheet, compose sheet or "open in" menu rises from the bottom: what
// is shared, then the targets with their icons (or, for a compose sheet, the text to post), and a cancel.
Item {
    id: overlay
    visible: shareSheet.visible
    z: 950
    // Escape is its cancel; Enter or Space presses the button Tab reached.
    Keys.onPressed: (event) => { event.accepted = A11y.pressFocused(event, Window.activeFocusItem, [overlay]) }
    Keys.onEscapePressed: shareSheet.cancel()

    Rectangle {
        anchors.fill: parent
        color: "#000000"
        opacity: 0.5
    }
    MouseArea {
        anchors.fill: parent
        onClicked: shareSheet.cancel()
        Accessible.role: Accessible.Button
        Accessible.name: A11y.text("a11y.close")
        Accessible.ignored: !enabled
        Accessible.onPressAction: shareSheet.cancel()
        activeFocusOnTab: true
    }

    Rectangle {
        id: sheet
        objectName: "shareSheet"
        width: Math.min(parent.width, 520)
        height: column.implicitHeight + 34
        anchors.horizontalCenter: parent.horizontalCenter
        y: overlay.visible ? parent.height - height + 16 : parent.height
        Behavior on y { NumberAnimation { duration: 220; easing.type: Easing.OutCubic } }
        radius: 16
        color: "#f4f4f7"
        MouseArea { anchors.fill: parent }

        Column {
            id: column
            anchors.top: parent.top
            anchors.topMargin: 12
            anchors.horizontalCenter: parent.horizontalCenter
            width: parent.width - 32
            spacing: 12

            Rectangle {
                anchors.horizontalCenter: parent.horizontalCenter
                width: 40; height: 5; radius: 2.5
                color: "#c7c7cc"
            }
            Text {
                objectName: "shareSheetTitle"
                text: shareSheet.title
                font.family: Theme.fontFamily
                font.pixelSize: 18
                font.bold: true
                color: "#1c1c1e"
            }

            // What goes out: the picture, the text and the link.
            Rectangle {
                width: parent.width
                height: Math.max(preview.visible ? 76 : 0, words.implicitHeight + 20)
                radius: 12
                color: "#ffffff"
                border.color: "#e0e0e5"
                Image {
                    id: preview
                    objectName: "shareSheetPicture"
                    visible: shareSheet.picture.toString().length > 0
                    anchors.left: parent.left
                    anchors.leftMargin: 8
                    anchors.verticalCenter: parent.verticalCenter
                    width: 60
                    height: 60
                    fillMode: Image.PreserveAspectFit
                    source: shareSheet.picture
                    cache: false
                }
                Column {
                    id: words
                    anchors.left: preview.visible ? preview.right : parent.left
                    anchors.leftMargin: 12
                    anchors.right: parent.right
                    anchors.rightMargin: 12
                    anchors.verticalCenter: parent.verticalCenter
                    spacing: 2
                    Text {
                        visible: !shareSheet.compose
                        width: parent.width
                        text: shareSheet.text.length > 0 ? shareSheet.text : (preview.visible ? "صورة المرحلة" : "")
                        wrapMode: Text.WordWrap
                        maximumLineCount: 3
                        elide: Text.ElideRight
                        font.family: Theme.fontFamily
                        font.pixelSize: 13
                        color: "#1c1c1e"
                    }
                    // A compose sheet lets the player write before he posts.
                    Rectangle {
                        visible: shareSheet.compose
                        width: parent.width
                        height: Math.max(56, edit.implicitHeight + 12)
                        radius: 8
                        color: "#f4f4f7"
                        TextEdit {
                            id: edit
                            objectName: "shareSheetText"
                            anchors.fill: parent
                            anchors.margins: 6
                            text: shareSheet.text
                            wrapMode: TextEdit.Wrap
                            font.family: Theme.fontFamily
                            font.pixelSize: 13
                            color: "#1c1c1e"
                            onTextChanged: if (shareSheet.compose && text !== shareSheet.text) shareSheet.text = text
                            Text {
                                visible: edit.text.length === 0
                                text: "اكتب شيئا…"
                                font: edit.font
                                color: "#8e8e93"
                            }
                        }
                    }
                    Text {
                        visible: shareSheet.link.length > 0
                        width: parent.width
                        text: shareSheet.link
                        elide: Text.ElideMiddle
                        font.pixelSize: 12
                        color: "#007aff"
                    }
                }
            }

            // The targets, four to a row.
            Grid {
                id: targets
                objectName: "shareSheetTargets"
                visible: !shareSheet.compose
                anchors.horizontalCenter: parent.horizontalCenter
                columns: 4
                columnSpacing: Math.max(4, (column.width - 4 * 64) / 4)
                rowSpacing: 8
                Repeater {
                    model: shareSheet.targets
                    delegate: BrandIcon {
                        objectName: "shareTarget_" + modelData.activityType
                        side: 50
                        glyph: modelData.glyph
                        disc: modelData.color
                        glyphColor: modelData.glyphColor
                        name: modelData.name
                        onTapped: shareSheet.choose(modelData.activityType)
                    }
                }
            }
            Rectangle {
                objectName: "shareSheetPost"
                visible: shareSheet.compose
                width: parent.width
                height: 46
                radius: 12
                color: postArea.pressed ? "#0062cc" : "#007aff"
                Text { anchors.centerIn: parent; text: "نشر"; font.family: Theme.fontFamily; font.pixelSize: 17; font.bold: true; color: "#ffffff" }
                MouseArea {
                    id: postArea
                    anchors.fill: parent
                    onClicked: shareSheet.post()
                    Accessible.role: Accessible.Button
                    Accessible.name: "نشر"
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: shareSheet.post()
                    activeFocusOnTab: true
                }
            }
            Rectangle {
                objectName: "shareSheetCancel"
                width: parent.width
                height: 46
                radius: 12
                color: cancelArea.pressed ? "#e5e5ea" : "#ffffff"
                Text { anchors.centerIn: parent; text: "إلغاء"; font.family: Theme.fontFamily; font.pixelSize: 16; font.bold: true; color: "#007aff" }
                MouseArea {
                    id: cancelArea
                    anchors.fill: parent
                    onClicked: shareSheet.cancel()
                    Accessible.role: Accessible.Button
                    Accessible.name: "إلغاء"
                    Accessible.ignored: !enabled
                    Accessible.onPressAction: shareSheet.cancel()
                    activeFocusOnTab: true
                }
            }
            Item { width: 1; height: 8 }
        }
    }
}
