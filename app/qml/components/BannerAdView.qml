import QtQuick

// A banner (a GADBannerView) in its host: its picture, or one line of the ad's title and words with its call
// to action, in the ad's colours. Drawn at the banner's frame; nothing while it is hidden or has no ad yet.
Item {
    id: root
    objectName: "bannerAdView"
    property QtObject view: null

    readonly property bool picture: view !== null && view.kind === "picture"
    readonly property color foreground: view ? view.foreground : "#ffffff"
    readonly property color accent: view ? view.accent : Theme.gold

    function inkOn(c) {
        return 0.299 * c.r + 0.587 * c.g + 0.114 * c.b > 0.6 ? "#1c1408" : "#ffffff"
    }

    x: view ? view.frame.x : 0
    y: view ? view.frame.y : 0
    width: view ? view.frame.width : 0
    height: view ? view.frame.height : 0
    visible: view !== null && view.loaded && !view.hidden
    clip: true
    LayoutMirroring.enabled: true
    LayoutMirroring.childrenInherit: true

    // A new ad of the rotation fades in.
    Connections {
        target: root.view
        function onChanged() {
            if (root.view && root.view.adIdentifier !== content.shownIdentifier) {
                content.shownIdentifier = root.view.adIdentifier
                fadeIn.restart()
            }
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: 8
        color: root.view ? root.view.background : "transparent"
        border.color: root.accent
        border.width: 1
    }

    Item {
        id: content
        anchors.fill: parent
        property string shownIdentifier: ""
        NumberAnimation { id: fadeIn; target: content; property: "opacity"; from: 0; to: 1; duration: 350 }

        Image {
            objectName: "bannerPicture"
            visible: root.picture
            anchors.fill: parent
            anchors.margins: 1
            source: root.picture ? root.view.imageSource : ""
            sourceSize.width: width * 2
            fillMode: Image.PreserveAspectFit
            asynchronous: true
        }

        // Over a picture as over a plain card. Right to left: the mark at the right edge, then the title, the
        // words, and the call to action at the
        // left edge.
        Rectangle {
            id: mark
            anchors.left: parent.left
            anchors.leftMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            width: markLabel.implicitWidth + 10
            height: 18
            radius: 4
            color: "transparent"
            border.color: root.foreground
            border.width: 1
            opacity: 0.8
            Text {
                id: markLabel
                anchors.centerIn: parent
                text: "إعلان"
                font.family: Theme.fontFamily
                font.pixelSize: 10
                color: root.foreground
            }
        }
        Text {
            id: title
            objectName: "bannerAdTitle"
            anchors.left: mark.right
            anchors.leftMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, root.width * 0.4)
            text: root.view ? root.view.title : ""
            elide: Text.ElideRight
            font.family: Theme.fontFamily
            font.pixelSize: 14
            font.bold: true
            color: root.foreground
        }
        Text {
            anchors.left: title.right
            anchors.leftMargin: 8
            anchors.right: cta.visible ? cta.left : parent.right
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            text: root.view ? root.view.body : ""
            // Two short lines where they fit; a strip too narrow for a few words shows none.
            wrapMode: Text.WordWrap
            elide: Text.ElideRight
            maximumLineCount: 2
            lineHeight: 0.9
            opacity: width >= 48 ? 0.85 : 0
            font.family: Theme.fontFamily
            font.pixelSize: 10
            color: root.foreground
        }
        Rectangle {
            id: cta
            visible: ctaLabel.text.length > 0
            anchors.right: parent.right
            anchors.rightMargin: 8
            anchors.verticalCenter: parent.verticalCenter
            width: ctaLabel.implicitWidth + 20
            height: Math.min(parent.height - 12, 32)
            radius: height / 2
            color: root.accent
            Text {
                id: ctaLabel
                anchors.centerIn: parent
                text: root.view ? root.view.callToAction : ""
                font.family: Theme.fontFamily
                font.pixelSize: 12
                font.bold: true
                color: root.inkOn(root.accent)
            }
        }
    }

    MouseArea {
        anchors.fill: parent
        onClicked: if (root.view) root.view.tap()
        Accessible.role: Accessible.Button
        Accessible.name: A11y.text("a11y.adAction")
        Accessible.ignored: !enabled
        Accessible.onPressAction: if (root.view) root.view.tap()
    }
}
