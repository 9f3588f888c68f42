import QtQuick 2.15
import "components"

ZDialogCard {
    objectName: "skippableDialog"
    skippable: true
    focus: true
}
