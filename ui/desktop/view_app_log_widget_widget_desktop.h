#pragma once

#include "ui/desktop/base_widget_desktop.h"
#include "ui/list_models/app_log_model.h"

#include <QString>

#include <functional>

namespace UI::Desktop {

// The event log as support staff ask for it on the phone: every line of "log.txt",
// the newest at the bottom and scrolled to, a search that keeps the matching
// lines, a re-read, and a copy of the file saved into a folder the user picks (to
// send it on). A copy never replaces a file already in that folder.
class ViewAppLogWidgetWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    using FolderChooser = std::function<QString()>;

    explicit ViewAppLogWidgetWidgetDesktop(QWidget* parent = nullptr);
    ~ViewAppLogWidgetWidgetDesktop() override;

    ListModels::AppLogModel& Model();

    // Test seam: what answers instead of the folder dialog (an empty text is a
    // cancelled dialog); an empty function brings the dialog back.
    static void SetExportFolderChooserForTesting(FolderChooser chooser);

    // The name the copy takes in `folder`: the log's own name while it is free,
    // otherwise the date and then a counter, so nothing there is overwritten.
    static QString FreeCopyPath(const QString& folder);

private slots:
    void OnBack();
    void OnRefresh();
    void OnSaveCopy();
    void OnSearchChanged();
    void OnLoaded();

private:
    void ShowMessage(const QString& text, bool error);

    ListModels::AppLogModel mModel;
    static FolderChooser sFolderChooser;
};

} // namespace UI::Desktop
