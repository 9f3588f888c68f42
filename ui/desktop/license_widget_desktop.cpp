#include "ui/desktop/license_widget_desktop.h"

#include "core/user_environment.h"
#include "core/utilities/logger.h"
#include "ui/desktop/screen_error_text.h"

#include <QDesktopServices>
#include <QFileInfo>
#include <QPointer>
#include <QStringList>

namespace UI::Desktop {

namespace {

const char* const Document = "qrc:/ui_kit/screens/desktop/player/license/license_widget.qml";

} // namespace

LicenseWidgetDesktop::LicenseWidgetDesktop(QWidget* parent)
    : BaseWidgetDesktop(parent)
    , mLoad([this](bool busy) { SetPropertyOfRoot("loading", busy); },
            [this]() {
                SetPropertyOfRoot("loadFailed", true);
                ShowError(QString::fromUtf8(ScreenErrorText::NoAnswer));
            })
{
    SetSource(QUrl(QString::fromLatin1(Document)));
    ConnectQmlChild(QStringLiteral("openInBrowserButton"), "clicked()", this, "OnOpenInBrowser()");
    ConnectQmlChild(QStringLiteral("retryButton"), "clicked()", this, "OnRetry()");
    QPointer<LicenseWidgetDesktop> self(this);
    Core::UserEnvironment::GetSignedInEnvironment([self](std::shared_ptr<Core::UserEnvironment> environment) {
        if (!self || !environment) {
            return;
        }
        self->mEnvironment = environment;
        self->Load();
    });
}

LicenseWidgetDesktop::~LicenseWidgetDesktop()
{
    setSource(QUrl());
}

bool LicenseWidgetDesktop::IsImage(const QUrl& url)
{
    static const QStringList pictures = {QStringLiteral("png"), QStringLiteral("jpg"), QStringLiteral("jpeg"),
                                         QStringLiteral("gif"), QStringLiteral("bmp"), QStringLiteral("webp"),
                                         QStringLiteral("svg")};
    return pictures.contains(QFileInfo(url.path()).suffix().toLower());
}

QString LicenseWidgetDesktop::DocumentName(const QUrl& url)
{
    const QString file = url.fileName(QUrl::FullyDecoded);
    return file.isEmpty() ? url.host() : file;
}

void LicenseWidgetDesktop::Load()
{
    const auto environment = mEnvironment.lock();
    if (!environment || mLoad.IsRunning()) {
        return;
    }
    ShowError(QString());
    SetPropertyOfRoot("loadFailed", false);
    QPointer<LicenseWidgetDesktop> self(this);
    const int ticket = mLoad.Start();
    environment->LoadCertifcate(
        [self, ticket](const std::string& address) {
            if (self && self->mLoad.Finish(ticket)) {
                self->ShowCertificate(QUrl(QString::fromStdString(address)));
            }
        },
        [self, ticket](std::shared_ptr<Core::DataTypes::NetworkError> error) {
            if (self && self->mLoad.Finish(ticket)) {
                self->SetPropertyOfRoot("loadFailed", true);
                self->ShowError(ScreenErrorText::For(error));
            }
        });
}

void LicenseWidgetDesktop::ShowCertificate(const QUrl& url)
{
    // Only a web address can be opened in the browser; anything else the server
    // sends is a fault of its own, not a document.
    const bool usable =
        url.isValid() && (url.scheme() == QLatin1String("http") || url.scheme() == QLatin1String("https"));
    if (!usable) {
        Core::Utilities::Logger::Log("Адрес сертификата не подходит: " + url.toString().toStdString());
        SetPropertyOfRoot("loadFailed", true);
        ShowError(QString::fromUtf8(ScreenErrorText::BadAnswer));
        return;
    }
    mUrl = url;
    SetPropertyOfRoot("documentName", DocumentName(url));
    SetPropertyOfRoot("isImage", IsImage(url));
    SetPropertyOfRoot("certificateUrl", url);
}

void LicenseWidgetDesktop::OnOpenInBrowser()
{
    if (!mUrl.isValid()) {
        return;
    }
    if (!QDesktopServices::openUrl(mUrl)) {
        Core::Utilities::Logger::Log("Не удалось открыть сертификат в браузере: " +
                                     mUrl.toString().toStdString());
        ShowError(QStringLiteral("Не удалось открыть браузер. Откройте адрес сертификата вручную: %1")
                      .arg(mUrl.toString()));
    }
}

void LicenseWidgetDesktop::OnRetry()
{
    Load();
}

void LicenseWidgetDesktop::ShowError(const QString& text)
{
    SetPropertyOfChild(QStringLiteral("errorMessage"), "text", text);
}

} // namespace UI::Desktop
