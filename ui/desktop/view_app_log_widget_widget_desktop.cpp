#include "ui/desktop/view_app_log_widget_widget_desktop.h"

#include "core/utilities/logger.h"
#include "ui/desktop/main_window_desktop.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QUrl>

#include <utility>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/settings/view_app_log_widget.qml";

QString LogPath()
{
    return QString::fromStdString(Core::Utilities::Logger::GetLogFileName());
}

} // namespace

ViewAppLogWidgetWidgetDesktop::FolderChooser ViewAppLogWidgetWidgetDesktop::sFolderChooser;

ViewAppLogWidgetWidgetDesktop::ViewAppLogWidgetWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    SetPropertyOfRoot("logModel", QVariant::fromValue<QObject*>(&mModel));
    ConnectQmlChild(QStringLiteral("backButton"), "clicked()", this, "OnBack()");
    ConnectQmlRoot("backRequested()", this, "OnBack()");
    ConnectQmlChild(QStringLiteral("refreshButton"), "clicked()", this, "OnRefresh()");
    ConnectQmlChild(QStringLiteral("saveCopyButton"), "clicked()", this, "OnSaveCopy()");
    ConnectQmlRoot("searchChanged()", this, "OnSearchChanged()");
    connect(&mModel, &ListModels::AppLogModel::loaded, this, &ViewAppLogWidgetWidgetDesktop::OnLoaded);
    OnRefresh();
}

ViewAppLogWidgetWidgetDesktop::~ViewAppLogWidgetWidgetDesktop()
{
    // The document goes first: its list view still reads the model while it is torn down.
    setSource(QUrl());
}

ListModels::AppLogModel& ViewAppLogWidgetWidgetDesktop::Model()
{
    return mModel;
}

void ViewAppLogWidgetWidgetDesktop::SetExportFolderChooserForTesting(FolderChooser chooser)
{
    sFolderChooser = std::move(chooser);
}

QString ViewAppLogWidgetWidgetDesktop::FreeCopyPath(const QString& folder)
{
    const QDir directory(folder);
    const QFileInfo log(LogPath());
    const QString own = directory.filePath(log.fileName());
    if (!QFileInfo::exists(own)) {
        return own;
    }
    const QString stem =
        log.completeBaseName() + QLatin1Char('-') + QDate::currentDate().toString(Qt::ISODate);
    const QString suffix = log.suffix().isEmpty() ? QString() : QString(QStringLiteral(".") + log.suffix());
    QString candidate = directory.filePath(stem + suffix);
    for (int counter = 2; QFileInfo::exists(candidate); ++counter) {
        candidate = directory.filePath(stem + QLatin1Char('-') + QString::number(counter) + suffix);
    }
    return candidate;
}

void ViewAppLogWidgetWidgetDesktop::OnBack()
{
    MainWindowDesktop::PopCurrentWidget();
}

void ViewAppLogWidgetWidgetDesktop::OnRefresh()
{
    ShowMessage(QString(), false);
    mModel.LoadFile(LogPath());
}

void ViewAppLogWidgetWidgetDesktop::OnSearchChanged()
{
    mModel.setFilterText(GetPropertyOfChild(QStringLiteral("searchField"), "text").toString());
    CallQmlFunction("scrollToEnd");
}

void ViewAppLogWidgetWidgetDesktop::OnLoaded()
{
    SetPropertyOfRoot("empty", mModel.TotalLineCount() == 0);
    CallQmlFunction("scrollToEnd");
}

void ViewAppLogWidgetWidgetDesktop::OnSaveCopy()
{
    if (!QFileInfo::exists(LogPath())) {
        ShowMessage(QStringLiteral("Журнал пока пуст: сохранять нечего."), true);
        return;
    }
    const QString folder =
        sFolderChooser ? sFolderChooser()
                       : QFileDialog::getExistingDirectory(this, QStringLiteral("Папка для копии журнала"),
                                                           QDir::homePath(), QFileDialog::ShowDirsOnly);
    if (folder.isEmpty()) {
        return;
    }
    const QString target = FreeCopyPath(folder);
    if (!QFile::copy(LogPath(), target)) {
        ShowMessage(QStringLiteral("Не удалось сохранить копию в папку %1. Выберите папку, в которую можно "
                                   "записывать, и попробуйте ещё раз.")
                        .arg(QDir::toNativeSeparators(folder)),
                    true);
        return;
    }
    ShowMessage(QStringLiteral("Копия журнала сохранена: %1").arg(QDir::toNativeSeparators(target)), false);
}

void ViewAppLogWidgetWidgetDesktop::ShowMessage(const QString& text, bool error)
{
    SetPropertyOfRoot("messageText", text);
    SetPropertyOfRoot("messageIsError", error);
}

} // namespace UI::Desktop
