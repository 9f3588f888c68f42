import QtQuick 2.15
import "components"

ZDialogCard {
    objectName: "nonskippableDialog"
    skippable: false
    focus: true
}
