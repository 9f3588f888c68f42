#pragma once

#include "core/data_types/auth/playback_object.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"
#include "ui/list_models/playback_objects_list_model.h"

#include <memory>
#include <vector>

namespace Core {
class UserEnvironment;
}

namespace UI::Desktop {

// The account's points of sale with the one this player plays for marked. Choosing
// another, once the owner confirms, signs in for it and plays its schedule from the
// start: the music stops for the moment the switch takes.
class ObjectsWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit ObjectsWidgetDesktop(QWidget* parent = nullptr);
    ~ObjectsWidgetDesktop() override;

private slots:
    void OnObjectChosen(int index);
    void OnRetry();

private:
    void Load();
    void ShowObjects(const std::vector<std::shared_ptr<Core::DataTypes::Auth::PlaybackObject>>& objects);
    void SwitchTo(const Core::DataTypes::Auth::PlaybackObject& object);
    void MarkCurrentObject();
    void ShowError(const QString& text);

    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    PlaybackObjectsListModel mObjects;
    PendingRequest mLoad;
    PendingRequest mSwitch;
};

} // namespace UI::Desktop
