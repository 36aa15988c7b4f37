import QtQuick 2.0
import org.shotcut.qml 1.0

// Lists the Fizzle frei0r filter among Shotcut's video filters.
Metadata {
    type: Metadata.Filter
    name: qsTr('Fizzle')
    mlt_service: 'frei0r.fizzle'
    qml: 'ui.qml'
    keywords: qsTr('bubbles particles fizzle', 'search keywords for the Fizzle video filter')
}
