import QtQuick 2.12
import QtQuick.Controls 2.12
import QtQuick.Layouts 1.12

// The filter's panel: the setup, a preset, pre-roll and the frame rate
// (the project's, so that frame numbers match fizzle-render's). The other
// controls keep the setup's values; MLT passes them by title.
Item {
    width: 350
    height: 180
    Component.onCompleted: {
        if (filter.isNew) {
            filter.set('preset', 'Basic')
            filter.set('preroll', 1)
        }
        filter.set('frame rate', String(profile.fps))
        setupField.text = filter.get('setup')
        presetBox.currentIndex = Math.max(0, presetBox.model.indexOf(filter.get('preset')))
        prerollBox.checked = filter.get('preroll') === '1'
    }

    GridLayout {
        columns: 2
        anchors.fill: parent
        anchors.margins: 8

        Label { text: qsTr('Setup file') }
        TextField {
            id: setupField
            Layout.fillWidth: true
            Accessible.name: qsTr('Setup file')
            onEditingFinished: filter.set('setup', text)
        }
        Label { text: qsTr('Preset') }
        ComboBox {
            id: presetBox
            Accessible.name: qsTr('Preset')
            model: ['', 'Basic', 'Soap', 'Champagne', 'Under Water', 'Floating', 'Bubbly', 'Swirly', 'Gathering', 'Flurry', 'Pipe']
            onActivated: filter.set('preset', currentText)
        }
        Label { text: qsTr('Pre-roll') }
        CheckBox {
            id: prerollBox
            Accessible.name: qsTr('Pre-roll')
            onClicked: filter.set('preroll', checked ? 1 : 0)
        }
        Item { Layout.fillHeight: true }
    }
}
