#pragma once

#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/pending_request.h"

#include <QUrl>

#include <memory>

namespace Core {
class UserEnvironment;
}

namespace UI::Desktop {

// The point of sale's music-rights certificate, which an inspector may ask to see:
// a picture is shown as it is, any other document by its name, and either opens in
// the browser for printing.
class LicenseWidgetDesktop : public BaseWidgetDesktop
{
    Q_OBJECT

public:
    explicit LicenseWidgetDesktop(QWidget* parent = nullptr);
    ~LicenseWidgetDesktop() override;

    // Whether the address names a picture Qt Quick can show by itself.
    static bool IsImage(const QUrl& url);
    // What the owner sees as the document's name: its file name, or the host when
    // the address has no file in it.
    static QString DocumentName(const QUrl& url);

private slots:
    void OnOpenInBrowser();
    void OnRetry();

private:
    void Load();
    void ShowCertificate(const QUrl& url);
    void ShowError(const QString& text);

    std::weak_ptr<Core::UserEnvironment> mEnvironment;
    PendingRequest mLoad;
    QUrl mUrl;
};

} // namespace UI::Desktop
