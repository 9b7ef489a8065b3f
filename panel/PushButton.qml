import QtQuick
import QtQuick.Controls

// A button that is seen to be disabled: the window's palette gives the text of all buttons one colour.
Button {
    opacity: enabled ? 1 : 0.5
}
