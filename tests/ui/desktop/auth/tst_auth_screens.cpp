// The screens a signed-out shop owner sees, against the reference service: signing in
// and choosing the point of sale, the four sign-up steps, and what each says when the
// server refuses, fails or keeps silent.

#include "core/user_environment.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/reference_service.h"
#include "tests/support/service_fault.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/base_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"
#include "ui/desktop/pending_request.h"
#include "ui/desktop/player_widget_desktop.h"
#include "ui/desktop/screen_error_text.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QQuickItem>
#include <QStackedWidget>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::UserEnvironment;
using UI::Desktop::ScreenErrorText;

namespace {

const QString SignInDocument = QStringLiteral("auth/sign_in_widget.qml");
const QString ChooseObjectDocument = QStringLiteral("auth/choose_object_widget.qml");

} // namespace

class AuthScreensTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<UI::Desktop::MainWindowDesktop> window;
    std::unique_ptr<Tests::ScreenDriver> driver;

    QString Text(const QString& item, const char* property = "text") const
    {
        return driver->Property(item, property).toString();
    }

    // "Другой сервер…" and an address typed by hand: how support staff reach a
    // server that is not built in, and how the tests reach the service's own port.
    void ChooseServer(const QString& address)
    {
        QObject* combo = driver->Item(QStringLiteral("serverComboBox"));
        QVERIFY(combo);
        QVERIFY(combo->setProperty("currentIndex", combo->property("count").toInt() - 1));
        QVERIFY(driver->SetText(QStringLiteral("serverAddressField"), address));
    }

    void TypeSignIn(const QString& address, const QString& login, const QString& password)
    {
        ChooseServer(address);
        QVERIFY(driver->SetText(QStringLiteral("loginField"), login));
        QVERIFY(driver->SetText(QStringLiteral("passwordField"), password));
    }

    void SignInAsOwner()
    {
        TypeSignIn(service->BaseUrl(), QStringLiteral("owner"), QStringLiteral("secret"));
        QVERIFY(driver->Click(QStringLiteral("signInButton")));
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(ChooseObjectDocument), Tests::Timeouts::Process);
    }

    bool PlayerShown() const
    {
        return qobject_cast<UI::Desktop::PlayerWidgetDesktop*>(driver->CurrentScreen()) != nullptr;
    }

    int ObjectRequests() const
    {
        return static_cast<int>(service->RequestsTo(QStringLiteral("auth/objects")).size());
    }

    // The code the service sends to every phone, from its scenario.
    static QString ConfirmationCode()
    {
        QFile file(Tests::ReferenceService::SourceDirectory() +
                   QStringLiteral("/tests/tools/scenarios/basic/service.json"));
        if (!file.open(QIODevice::ReadOnly)) {
            return {};
        }
        return QJsonDocument::fromJson(file.readAll())
            .object()
            .value(QStringLiteral("confirmation_code"))
            .toString();
    }

private slots:
    void initTestCase()
    {
        Tests::QmlWarnings::StartRecording();
        UI::Desktop::ApplicationStartUp::ConfigureApplication();
        // The cover the point of sale's playlist names: now playing, which a sign-in
        // opens, shows it at once.
        QVERIFY(content.isValid());
        QVERIFY(QDir(content.path()).mkpath(QStringLiteral("covers")));
        QImage cover(32, 32, QImage::Format_RGB32);
        cover.fill(Qt::darkGreen);
        QVERIFY(cover.save(content.filePath(QStringLiteral("covers/music.png"))));
        QString error;
        service = Tests::ReferenceService::Started(QStringLiteral("basic"), &error, content.path());
        QVERIFY2(service, qPrintable(error));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        UserEnvironment::ForgetProcessStateForTesting();
        window.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
        driver = std::make_unique<Tests::ScreenDriver>(window.get());
        QVERIFY(driver->DocumentShown(SignInDocument));
        // The built-in list has arrived once the primary server is chosen.
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property(QStringLiteral("serverComboBox"), "currentIndex").toInt() >=
                                         0 &&
                                     !Text(QStringLiteral("supportEmailText")).isEmpty(),
                                 Tests::Timeouts::Quick);
    }

    void cleanup()
    {
        driver.reset();
        window.reset();
        UI::Desktop::PendingRequest::ResetNoAnswerDelayForTesting();
        Tests::ShopSession::ForgetSession();
        dataDirectory.reset();
        const QStringList warnings = Tests::QmlWarnings::Take();
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    }

    void theFirstScreenShowsTheBuiltInServer()
    {
        QCOMPARE(driver->Property(QStringLiteral("serverComboBox"), "currentText").toString(),
                 QStringLiteral("Локальный демо-сервер"));
        QCOMPARE(Text(QStringLiteral("versionText")), QStringLiteral("Версия 3.13"));
        QVERIFY(!driver->Property(QStringLiteral("serverAddressField"), "visible").toBool());
        QCOMPARE(driver->StackSize(), 1);
    }

    // Every way a sign-in can end on the sign-in screen, and what it says there.
    void signInRefused_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<QString>("login");
        QTest::addColumn<QString>("password");
        // A fault of the objects request: kind and, for "body", the answer.
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("faultBody");
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("property");
        QTest::addColumn<QString>("expected");
        // Whether the objects request went out.
        QTest::addColumn<bool>("sent");

        const QString service = QStringLiteral("service");
        const QString message = QStringLiteral("errorMessage");
        QTest::newRow("wrong password, in the server's words")
            << service << "owner"
            << "wrong" << QString() << QString() << message << "text"
            << "Неправильный логин или пароль" << true;
        QTest::newRow("empty login") << service << ""
                                     << "secret" << QString() << QString() << message << "text"
                                     << "Введите логин." << false;
        QTest::newRow("empty password") << service << "owner"
                                        << "" << QString() << QString() << message << "text"
                                        << "Введите пароль." << false;
        QTest::newRow("not an address")
            << "http://"
            << "owner"
            << "secret" << QString() << QString() << "serverChooser"
            << "addressError"
            << "Это не адрес сервера. Пример: http://127.0.0.1:8091/api/v1/" << false;
        QTest::newRow("nobody listens there") << "http://127.0.0.1:1/api/v1/"
                                              << "owner"
                                              << "secret" << QString() << QString() << message << "text"
                                              << QString::fromUtf8(ScreenErrorText::NoConnection) << false;
        QTest::newRow("answer is not JSON") << service << "owner"
                                            << "secret"
                                            << "not_json" << QString() << message << "text"
                                            << QString::fromUtf8(ScreenErrorText::BadAnswer) << true;
        QTest::newRow("account without points of sale")
            << service << "owner"
            << "secret"
            << "body"
            << R"({"success": true, "objects": []})" << message << "text"
            << "В этом аккаунте нет ни одной точки продаж. Добавьте точку в личном кабинете или позвоните в "
               "поддержку."
            << true;
        QTest::newRow("server keeps silent") << service << "owner"
                                             << "secret"
                                             << "delay" << QString() << message << "text"
                                             << QString::fromUtf8(ScreenErrorText::NoAnswer) << true;
    }

    void signInRefused()
    {
        QFETCH(QString, address);
        QFETCH(QString, login);
        QFETCH(QString, password);
        QFETCH(QString, fault);
        QFETCH(QString, faultBody);
        QFETCH(QString, item);
        QFETCH(QString, property);
        QFETCH(QString, expected);
        QFETCH(bool, sent);
        if (!fault.isEmpty()) {
            Tests::ServiceFault planned(QStringLiteral("auth/objects"), fault, 1);
            planned.body = faultBody;
            if (fault == QLatin1String("delay")) {
                // Longer than the screen waits, which the test shortens.
                planned.delayMs = Tests::Timeouts::Process;
                UI::Desktop::PendingRequest::SetNoAnswerDelayForTesting(Tests::Timeouts::Silence);
            }
            QVERIFY(service->AddFault(planned) >= 0);
        }
        TypeSignIn(address == QLatin1String("service") ? service->BaseUrl() : address, login, password);
        QVERIFY(driver->Click(QStringLiteral("signInButton")));
        QTRY_COMPARE_WITH_TIMEOUT(Text(item, property.toLatin1().constData()), expected,
                                  Tests::Timeouts::Process);
        QVERIFY(driver->DocumentShown(SignInDocument));
        QCOMPARE(driver->StackSize(), 1);
        // Never left busy, so the owner can try again.
        QVERIFY(!driver->Property(QStringLiteral("signInButton"), "busy").toBool());

        // A second, wrong-password attempt is the witness that comes later: once the
        // server has refused it, every request the first attempt sent has arrived.
        QVERIFY(service->ClearFaults());
        TypeSignIn(service->BaseUrl(), QStringLiteral("owner"), QStringLiteral("wrong"));
        const int before = ObjectRequests();
        QVERIFY(driver->Click(QStringLiteral("signInButton")));
        QTRY_COMPARE_WITH_TIMEOUT(ObjectRequests(), before + 1, Tests::Timeouts::Process);
        QTRY_COMPARE_WITH_TIMEOUT(Text(QStringLiteral("errorMessage")),
                                  QStringLiteral("Неправильный логин или пароль"), Tests::Timeouts::Process);
        QCOMPARE(before, sent ? 1 : 0);
    }

    void signInLeadsToTheChosenPointOfSale()
    {
        SignInAsOwner();
        QCOMPARE(driver->Property(QStringLiteral("listView"), "count").toInt(), 2);
        QCOMPARE(driver->Property(QStringLiteral("objectCard0"), "title").toString(),
                 QStringLiteral("Кофейня"));
        QCOMPARE(driver->Property(QStringLiteral("objectCard1"), "title").toString(),
                 QStringLiteral("Склад"));

        // A slow sign-in shows the activity indicator instead of a frozen screen.
        Tests::ServiceFault slow(QStringLiteral("auth/sign_in"), QStringLiteral("delay"), 1);
        slow.delayMs = Tests::Timeouts::Silence;
        QVERIFY(service->AddFault(slow) >= 0);
        QVERIFY(driver->Click(QStringLiteral("objectCard0")));
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property(QStringLiteral("fullScreenThrobber"), "visible").toBool(),
                                 Tests::Timeouts::Quick);
        QTRY_VERIFY_WITH_TIMEOUT(PlayerShown(), Tests::Timeouts::Process);
        // The player frame alone: nothing behind it leads back into signing in.
        QCOMPARE(driver->StackSize(), 1);

        const QJsonArray signIns = service->Received(QStringLiteral("sign_ins"));
        QCOMPARE(signIns.size(), 1);
        QCOMPARE(signIns.first().toObject().value(QStringLiteral("code")).toString(),
                 QStringLiteral("shop1"));
        // Stored: a restart resumes it.
        UserEnvironment::ForgetProcessStateForTesting();
        QVERIFY(UserEnvironment::UserIsSignedIn());
    }

    void anExportedPointOfSaleIsExplained()
    {
        QVERIFY(service->SetObjectExported(QStringLiteral("shop2"), true));
        SignInAsOwner();
        QVERIFY(driver->Click(QStringLiteral("objectCard1")));
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(QStringLiteral("nonskippable_dialog_widget.qml")),
                                 Tests::Timeouts::Process);
        QVERIFY(Text(QStringLiteral("bodyText")).contains(QStringLiteral("выгрузка")));
        QVERIFY(driver->Click(QStringLiteral("okButton")));
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(ChooseObjectDocument), Tests::Timeouts::Quick);
        QVERIFY(!UserEnvironment::UserIsSignedIn());
    }

    void backLeavesChoosingThePointOfSale_data()
    {
        QTest::addColumn<bool>("escape");
        QTest::newRow("Назад") << false;
        QTest::newRow("Escape") << true;
    }

    void backLeavesChoosingThePointOfSale()
    {
        QFETCH(bool, escape);
        SignInAsOwner();
        QCOMPARE(driver->StackSize(), 2);
        if (escape) {
            driver->PressKey(Qt::Key_Escape);
        } else {
            QVERIFY(driver->Click(QStringLiteral("backButton")));
        }
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(SignInDocument), Tests::Timeouts::Quick);
        QCOMPARE(driver->StackSize(), 1);
        // What was typed is still there for another try.
        QCOMPARE(Text(QStringLiteral("loginField")), QStringLiteral("owner"));
    }

    // The password crosses the network readable only after the owner was told so.
    void unencryptedRemoteServerIsWarnedAbout_data()
    {
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("warned");
        QTest::newRow("127.0.0.1") << QString() << false;
        QTest::newRow("localhost") << QStringLiteral("http://localhost:%1/api/v1/") << false;
        QTest::newRow("remote, http") << QStringLiteral("http://shop-server.invalid/api/v1/") << true;
    }

    void unencryptedRemoteServerIsWarnedAbout()
    {
        QFETCH(QString, address);
        QFETCH(bool, warned);
        const QString url = address.isEmpty()                       ? service->BaseUrl()
                            : address.contains(QLatin1String("%1")) ? address.arg(service->Port())
                                                                    : address;
        TypeSignIn(url, QStringLiteral("owner"), QStringLiteral("secret"));
        QVERIFY(driver->Click(QStringLiteral("signInButton")));
        if (!warned) {
            QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(ChooseObjectDocument), Tests::Timeouts::Process);
            return;
        }
        QVERIFY(Text(QStringLiteral("httpsWarning")).contains(QStringLiteral("без шифрования")));
        QVERIFY(driver->Property(QStringLiteral("httpsWarning"), "visible").toBool());
        // The second "Войти" goes ahead; the made-up host then cannot be reached.
        QVERIFY(driver->Click(QStringLiteral("signInButton")));
        QTRY_COMPARE_WITH_TIMEOUT(Text(QStringLiteral("errorMessage")),
                                  QString::fromUtf8(ScreenErrorText::NoConnection), Tests::Timeouts::Process);
        // Another server is another question.
        ChooseServer(service->BaseUrl());
        QVERIFY(Text(QStringLiteral("httpsWarning")).isEmpty());
    }

    void theKeyboardAlone_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Return") << int(Qt::Key_Return);
        QTest::newRow("Enter") << int(Qt::Key_Enter);
    }

    void theKeyboardAlone()
    {
        QFETCH(int, key);
        TypeSignIn(service->BaseUrl(), QStringLiteral("owner"), QStringLiteral("secret"));
        QObject* password = driver->Item(QStringLiteral("passwordField"));
        QVERIFY(password);
        QVERIFY(QMetaObject::invokeMethod(password, "forceActiveFocus"));
        driver->PressKey(key);
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(ChooseObjectDocument), Tests::Timeouts::Process);
        // The list has the focus: Enter takes the first point of sale.
        driver->PressKey(key);
        QTRY_VERIFY_WITH_TIMEOUT(PlayerShown(), Tests::Timeouts::Process);
        QCOMPARE(
            service->Received(QStringLiteral("sign_ins")).first().toObject().value(QStringLiteral("code")),
            QJsonValue(QStringLiteral("shop1")));
    }

    void signUp_data()
    {
        QTest::addColumn<QList<int>>("styles");
        QTest::addColumn<QJsonArray>("sentStyles");
        QTest::newRow("music styles skipped") << QList<int>() << QJsonArray();
        QTest::newRow("one music style") << QList<int>{1} << QJsonArray{11};
    }

    void signUp()
    {
        QFETCH(QList<int>, styles);
        QFETCH(QJsonArray, sentStyles);
        const QString code = ConfirmationCode();
        QVERIFY(!code.isEmpty());

        QVERIFY(driver->Click(QStringLiteral("signUpButton")));
        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(QStringLiteral("auth/sign_up_phone_city_widget.qml")),
                                 Tests::Timeouts::Quick);
        QTRY_COMPARE_WITH_TIMEOUT(Text(QStringLiteral("signUpPhoneCityScreen"), "phoneCountryCode"),
                                  QStringLiteral("+7"), Tests::Timeouts::Quick);
        ChooseServer(service->BaseUrl());
        QVERIFY(driver->SetText(QStringLiteral("phoneField"), QStringLiteral("999 123-45-67")));
        QVERIFY(driver->SetText(QStringLiteral("cityField"), QStringLiteral("моск")));
        QVERIFY(driver->Click(QStringLiteral("citySuggestion0")));
        QCOMPARE(Text(QStringLiteral("cityField")), QStringLiteral("Москва"));
        // The city is chosen: no more suggestions.
        QCOMPARE(driver->Property(QStringLiteral("citySuggestions"), "count").toInt(), 0);
        QVERIFY(driver->Click(QStringLiteral("nextButton")));

        QTRY_VERIFY_WITH_TIMEOUT(
            driver->DocumentShown(QStringLiteral("auth/sign_up_confirm_phone_widget.qml")),
            Tests::Timeouts::Process);
        const QJsonArray codes = service->Received(QStringLiteral("confirmation_codes"));
        QCOMPARE(codes.size(), 1);
        QCOMPARE(codes.first().toObject().value(QStringLiteral("phone")).toString(),
                 QStringLiteral("+79991234567"));
        // Asking again has to wait for the countdown.
        QVERIFY(!driver->Click(QStringLiteral("resendButton")));

        // A wrong code is refused on the spot; nothing is created.
        QVERIFY(driver->SetText(QStringLiteral("codeField"), code + QStringLiteral("9")));
        QVERIFY(driver->Click(QStringLiteral("nextButton")));
        QVERIFY(!Text(QStringLiteral("codeInput"), "errorText").isEmpty());
        QVERIFY(driver->DocumentShown(QStringLiteral("auth/sign_up_confirm_phone_widget.qml")));

        QVERIFY(driver->SetText(QStringLiteral("codeField"), code));
        QVERIFY(driver->Click(QStringLiteral("nextButton")));
        QTRY_VERIFY_WITH_TIMEOUT(
            driver->DocumentShown(QStringLiteral("auth/sign_up_business_type_widget.qml")),
            Tests::Timeouts::Process);
        // One account, from the right code only.
        QCOMPARE(service->Received(QStringLiteral("sign_ups")).size(), 1);
        // The account exists: no way back into creating it again.
        QVERIFY(!driver->Click(QStringLiteral("backButton")));
        QTRY_VERIFY_WITH_TIMEOUT(driver->Item(QStringLiteral("businessTypeTile1")), Tests::Timeouts::Process);
        QVERIFY(driver->Click(QStringLiteral("businessTypeTile1")));
        QVERIFY(driver->Property(QStringLiteral("businessTypeTile1"), "checked").toBool());
        QVERIFY(driver->Click(QStringLiteral("nextButton")));

        QTRY_VERIFY_WITH_TIMEOUT(
            driver->DocumentShown(QStringLiteral("auth/sign_up_music_styles_widget.qml")),
            Tests::Timeouts::Process);
        const QJsonArray types = service->Received(QStringLiteral("business_types"));
        QCOMPARE(types.size(), 1);
        QCOMPARE(types.first().toObject().value(QStringLiteral("business_type_id")).toInt(), 2);
        QTRY_VERIFY_WITH_TIMEOUT(driver->Item(QStringLiteral("musicStyleChip1")), Tests::Timeouts::Process);
        for (const int style : styles) {
            const QString chip = QStringLiteral("musicStyleChip%1").arg(style);
            QVERIFY(driver->Click(chip));
            QVERIFY(driver->Property(chip, "checked").toBool());
        }
        QVERIFY(
            driver->Click(styles.isEmpty() ? QStringLiteral("skipButton") : QStringLiteral("nextButton")));

        QTRY_VERIFY_WITH_TIMEOUT(driver->DocumentShown(QStringLiteral("auth/sign_up_success_widget.qml")),
                                 Tests::Timeouts::Process);
        const QJsonArray sent = service->Received(QStringLiteral("music_styles"));
        QCOMPARE(sent.size(), sentStyles.isEmpty() ? 0 : 1);
        if (!sentStyles.isEmpty()) {
            QCOMPARE(sent.first().toObject().value(QStringLiteral("music_styles")).toArray(), sentStyles);
        }
        driver->PressKey(Qt::Key_Return);
        QTRY_VERIFY_WITH_TIMEOUT(PlayerShown(), Tests::Timeouts::Quick);
        QCOMPARE(driver->StackSize(), 1);
        UserEnvironment::ForgetProcessStateForTesting();
        QVERIFY(UserEnvironment::UserIsSignedIn());
    }
};

QTEST_MAIN(AuthScreensTest)
#include "tst_auth_screens.moc"
