import QtQuick
import ".."

// The picker of a live match.
MatchPickerView {}
