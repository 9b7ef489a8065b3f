import QtQuick
import QtQuick.Controls

// A column that scrolls if it is too long, and keeps the item with the focus visible.
ScrollView {
    id: scroller

    default property alias content: column.data
    // As high as all of it is.
    readonly property real wholeHeight: column.implicitHeight
    readonly property Item focused: Window.activeFocusItem

    function showFocused() {
        const view = scroller.contentItem;
        for (let item = focused; item !== null; item = item.parent) {
            if (item === column) {
                const top = focused.mapToItem(column, 0, 0).y;
                const margin = 8;
                view.contentY = Math.max(0, Math.min(top - margin, Math.max(view.contentY, top + focused.height + margin - view.height)));
                return;
            }
        }
    }

    clip: true // the log may be right below
    contentWidth: availableWidth
    onFocusedChanged: showFocused()

    Column {
        id: column

        width: scroller.availableWidth
        leftPadding: 4
        rightPadding: 12
        topPadding: 4
        bottomPadding: 4
        spacing: 10
    }
}
