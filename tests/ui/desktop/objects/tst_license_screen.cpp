// The point of sale's music-rights certificate: a document by its name, a picture
// as it is, each with the button that opens it in the browser, and the server's
// word when the point of sale has none.

#include "core/user_environment.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/license_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"

#include <QImage>
#include <QQuickItem>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::UserEnvironment;
using Tests::ShopSession;
using UI::Desktop::MainWindowDesktop;

class LicenseScreenTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<MainWindowDesktop> window;
    std::unique_ptr<Tests::ScreenDriver> driver;

    bool Shown(const QString& item) const
    {
        auto* quickItem = qobject_cast<QQuickItem*>(driver->Item(item));
        return quickItem != nullptr && quickItem->isVisible();
    }

private slots:
    void initTestCase()
    {
        Tests::QmlWarnings::StartRecording();
        UI::Desktop::ApplicationStartUp::ConfigureApplication();
        QVERIFY(content.isValid());
        QImage picture(64, 48, QImage::Format_RGB32);
        picture.fill(Qt::darkGreen);
        QVERIFY(picture.save(content.filePath(QStringLiteral("certificate.png"))));
        QString error;
        service = ShopSession::StartedServing(content.path(), {}, &error);
        QVERIFY2(service, qPrintable(error));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        Tests::QmlWarnings::Take();
    }

    void cleanup()
    {
        driver.reset();
        window.reset();
        ShopSession::ForgetSession();
        dataDirectory.reset();
        const QStringList warnings = Tests::QmlWarnings::Take();
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    }

    void showsTheCertificate_data()
    {
        QTest::addColumn<QString>("objectCode");
        QTest::addColumn<QString>("picture");
        QTest::addColumn<QString>("document");
        QTest::addColumn<QString>("error");
        QTest::newRow("a document") << "shop1"
                                    << ""
                                    << "certificate.pdf"
                                    << "";
        QTest::newRow("a picture") << "shop1"
                                   << "certificate.png"
                                   << ""
                                   << "";
        QTest::newRow("none for this point of sale") << "shop2"
                                                     << ""
                                                     << ""
                                                     << "Сертификат не доступен";
    }

    void showsTheCertificate()
    {
        QFETCH(QString, objectCode);
        QFETCH(QString, picture);
        QFETCH(QString, document);
        QFETCH(QString, error);
        if (!picture.isEmpty()) {
            Tests::ServiceFault answer(QStringLiteral("certificate"), QStringLiteral("body"));
            answer.body = QStringLiteral("{\"success\": true, \"url\": \"%1files/%2\"}")
                              .arg(service->Origin(), picture);
            QVERIFY2(service->AddFault(answer) > 0, qPrintable(service->ErrorString()));
        }
        Core::DataTypes::Auth::PlaybackObject object = ShopSession::Shop();
        if (objectCode != object.code.c_str()) {
            object.id = 102;
            object.code = objectCode.toStdString();
            object.name = "Склад";
        }
        // Signed in while the window shows the sign-in screen: the certificate
        // needs no player.
        window.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
        driver = std::make_unique<Tests::ScreenDriver>(window.get());
        QString failure;
        QVERIFY2(ShopSession::SignedIn(ShopSession::ServerOf(*service), object, &failure),
                 qPrintable(failure));
        MainWindowDesktop::PushWidget(new UI::Desktop::LicenseWidgetDesktop());
        QVERIFY(driver->DocumentShown("license_widget.qml"));

        if (!error.isEmpty()) {
            QTRY_COMPARE_WITH_TIMEOUT(driver->Property("errorMessage", "text").toString(), error,
                                      Tests::Timeouts::Process);
            QVERIFY(Shown("retryButton"));
            QVERIFY(!Shown("openInBrowserButton"));
            QVERIFY(!Shown("certificateFrame"));
            return;
        }
        QTRY_VERIFY_WITH_TIMEOUT(Shown("openInBrowserButton"), Tests::Timeouts::Process);
        QCOMPARE(driver->Property("openInBrowserButton", "text").toString(),
                 QStringLiteral("Открыть в браузере"));
        const QString url = driver->Property("licenseScreen", "certificateUrl").toUrl().toString();
        QVERIFY2(url.startsWith(service->Origin() + "files/"), qPrintable(url));
        QVERIFY(driver->Property("errorMessage", "text").toString().isEmpty());
        if (document.isEmpty()) {
            QVERIFY(url.endsWith(picture));
            QTRY_VERIFY_WITH_TIMEOUT(Shown("certificateImage"), Tests::Timeouts::Process);
            QCOMPARE(driver->Property("certificateImage", "implicitWidth").toInt(), 64);
            QVERIFY(!Shown("certificateDocumentCard"));
        } else {
            QTRY_VERIFY_WITH_TIMEOUT(Shown("certificateDocumentCard"), Tests::Timeouts::Process);
            QCOMPARE(driver->Property("documentNameText", "text").toString(), document);
            QVERIFY(!Shown("certificateImage"));
        }
        QVERIFY(driver->UnnamedControls().isEmpty());
    }
};

QTEST_MAIN(LicenseScreenTest)
#include "tst_license_screen.moc"
