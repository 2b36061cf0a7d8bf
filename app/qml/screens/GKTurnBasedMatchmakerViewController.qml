import QtQuick
import ".."

// The picker of a turn-based match.
MatchPickerView {}
