import QtQuick
import QtQuick.Controls

// Why the phone refused the last order of a control, beside that control; takes no room without a reason.
Label {
    visible: text !== ""
    color: palette.brightText
    textFormat: Text.PlainText
    wrapMode: Text.Wrap
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text
}
