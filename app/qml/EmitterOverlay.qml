import QtQuick
import QtQuick.Particles

// The particle effects over the screen: confetti, a rain of gold, the stars of a battle won, the sparkles of a
// rise on the leaderboard, and a round's celebration. Each runs for the time it is given (a burst for 0).
Item {
    id: overlay
    objectName: "emitterOverlay"


    ParticleSystem { id: particles }

    ItemParticle {
        system: particles
        groups: ["confetti", "round"]
        fade: true
        delegate: Rectangle {
            width: 6 + Math.random() * 6
            height: width * 0.5
            color: ["#f9c32d", "#1474fb", "#32c832", "#ea4144", "#b07cff"][Math.floor(Math.random() * 5)]
            rotation: Math.random() * 360
        }
    }
    ItemParticle {
        system: particles
        groups: ["gold"]
        fade: true
        delegate: Rectangle {
            width: 14
            height: 14
            radius: 7
            color: "#f9c32d"
            border.color: "#b98a00"
            border.width: 2
        }
    }
    ItemParticle {
        system: particles
        groups: ["battleWin", "rank"]
        fade: true
        delegate: Text {
            text: "★"
            font.pixelSize: 14 + Math.random() * 10
            color: Math.random() < 0.5 ? "#f9c32d" : "#ffffff"
        }
    }

    // From the top edge, falling.
    component Rain: Emitter {
        system: particles
        anchors.top: parent.top
        width: parent.width
        height: 1
        enabled: false
        lifeSpan: 2400
        lifeSpanVariation: 600
        size: 12
        velocity: PointDirection { y: 180; yVariation: 90; xVariation: 60 }
        acceleration: PointDirection { y: 60 }
    }
    Rain { id: confetti; group: "confetti"; emitRate: 90 }
    Rain { id: gold; group: "gold"; emitRate: 40 }
    Rain { id: battleWin; group: "battleWin"; emitRate: 50 }
    Rain { id: round; group: "round"; emitRate: 160 }
    // From the middle, outwards.
    Emitter {
        id: rank
        system: particles
        group: "rank"
        anchors.centerIn: parent
        width: 40
        height: 40
        enabled: false
        emitRate: 60
        lifeSpan: 1200
        velocity: AngleDirection { angleVariation: 360; magnitude: 160; magnitudeVariation: 60 }
    }

    function emitterFor(kind) {
        return { confetti: confetti, gold: gold, battleWin: battleWin, rank: rank, round: round }[kind]
    }

    Connections {
        target: emitter
        function onStarted(kind, seconds) {
            const e = overlay.emitterFor(kind)
            if (!e)
                return
            if (seconds <= 0) {
                e.burst(120)
                return
            }
            // A short time still shows: at least a generous burst.
            e.burst(Math.round(e.emitRate * 0.5))
            e.enabled = true
            stopper.createObject(overlay, { target: e, interval: Math.round(seconds * 1000) })
        }
    }
    Component {
        id: stopper
        Timer {
            property var target
            running: true
            onTriggered: { target.enabled = false; destroy() }
        }
    }
}
