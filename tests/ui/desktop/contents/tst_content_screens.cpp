// The content section of a signed-in shop: each tab lists its catalogue with the
// active playlists marked, the search narrows the cards, an opened playlist shows
// its tracks, and switching a playlist on or off reaches the server, reloads the
// schedule and moves the "Активен" marks.

#include "core/user_environment.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_timeouts.h"
#include "tests/ui/support/qml_warnings.h"
#include "tests/ui/support/screen_driver.h"
#include "ui/desktop/application_start_up.h"
#include "ui/desktop/content_tabs_widget_desktop.h"
#include "ui/desktop/main_window_desktop.h"

#include <QDir>
#include <QImage>
#include <QJsonObject>
#include <QQuickItem>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

using Core::DataTypes::Playlists::PlaylistContentType;
using Tests::ShopSession;
using UI::Desktop::MainWindowDesktop;

Q_DECLARE_METATYPE(PlaylistContentType)

class ContentScreensTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::unique_ptr<MainWindowDesktop> window;
    std::unique_ptr<Tests::ScreenDriver> driver;

    // Signed in while the window shows the sign-in screen: the catalogue needs no
    // player. The section opens over it, as the frame would show it.
    void Open(PlaylistContentType type)
    {
        window.reset(UI::Desktop::ApplicationStartUp::CreateMainWindow());
        driver = std::make_unique<Tests::ScreenDriver>(window.get());
        QString error;
        QVERIFY2(ShopSession::SignedIn(ShopSession::ServerOf(*service), ShopSession::Shop(), &error),
                 qPrintable(error));
        MainWindowDesktop::PushWidget(new UI::Desktop::ContentTabsWidgetDesktop(type));
        QTRY_VERIFY_WITH_TIMEOUT(driver->Property("playlistsGrid", "count").toInt() > 0,
                                 Tests::Timeouts::Process);
    }

    QStringList Cards(const char* property = "title") const
    {
        QStringList cards;
        const int count = driver->Property("playlistsGrid", "count").toInt();
        for (int i = 0; i < count; ++i) {
            cards.append(driver->Property(QStringLiteral("playlistCard%1").arg(i), property).toString());
        }
        return cards;
    }

    QStringList ActiveCards() const
    {
        QStringList active;
        const int count = driver->Property("playlistsGrid", "count").toInt();
        for (int i = 0; i < count; ++i) {
            const QString card = QStringLiteral("playlistCard%1").arg(i);
            if (driver->Property(card, "active").toBool()) {
                active.append(driver->Property(card, "title").toString());
            }
        }
        return active;
    }

    bool Shown(const QString& item) const
    {
        auto* quickItem = qobject_cast<QQuickItem*>(driver->Item(item));
        return quickItem != nullptr && quickItem->isVisible();
    }

    QJsonObject LastPlaylistChange() const
    {
        const QJsonArray changes = service->Received(QStringLiteral("playlist_changes"));
        return changes.isEmpty() ? QJsonObject() : changes.last().toObject();
    }

    // With nothing stored yet the schedule itself is asked for; afterwards its version.
    int ScheduleChecks() const
    {
        return static_cast<int>(service->RequestsTo(QStringLiteral("playback/version")).size() +
                                service->RequestsTo(QStringLiteral("playback/configuration_v2")).size());
    }

private slots:
    void initTestCase()
    {
        Tests::QmlWarnings::StartRecording();
        UI::Desktop::ApplicationStartUp::ConfigureApplication();
        QVERIFY(content.isValid());
        // The stock playlist's cover, which the catalogue names.
        QVERIFY(QDir(content.path()).mkpath(QStringLiteral("covers")));
        QImage cover(32, 32, QImage::Format_RGB32);
        cover.fill(Qt::darkYellow);
        QVERIFY(cover.save(content.filePath(QStringLiteral("covers/jazz.png"))));
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
        // The application's window goes only after exec() has delivered the pending
        // deletions; so does this one. A search or a reload resets the cards' model, and
        // the grid deletes the cards it let go of later: deleted after their screen, they
        // would leave the pictures they drew in its scene graph, which is gone by then.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        window.reset();
        ShopSession::ForgetSession();
        dataDirectory.reset();
        const QStringList warnings = Tests::QmlWarnings::Take();
        QVERIFY2(warnings.isEmpty(), qPrintable(warnings.join(QLatin1Char('\n'))));
    }

    void eachTabListsItsCatalogue_data()
    {
        QTest::addColumn<PlaylistContentType>("openedOn");
        QTest::addColumn<QString>("tab");
        QTest::addColumn<QStringList>("cards");
        QTest::addColumn<QStringList>("active");
        QTest::addColumn<QString>("firstDetails");
        // The service's stock music and the account's own both belong to the music tab.
        QTest::newRow("music") << PlaylistContentType::Music << "musicTab"
                               << QStringList{"Утренний джаз", "Своя музыка"} << QStringList{"Утренний джаз"}
                               << "2 трека · 1,4 ГБ";
        QTest::newRow("video, through its tab")
            << PlaylistContentType::Music << "videoTab" << QStringList{"Клипы дня", "Клипы вечера"}
            << QStringList{"Клипы дня", "Клипы вечера"} << "1 ролик";
        QTest::newRow("photo, opened on it") << PlaylistContentType::Photo << "photoTab"
                                             << QStringList{"Интерьер"} << QStringList() << "0 фото";
    }

    void eachTabListsItsCatalogue()
    {
        QFETCH(PlaylistContentType, openedOn);
        QFETCH(QString, tab);
        QFETCH(QStringList, cards);
        QFETCH(QStringList, active);
        QFETCH(QString, firstDetails);
        Open(openedOn);
        if (!driver->Property(tab, "selected").toBool()) {
            QVERIFY(driver->Click(tab));
            QTRY_COMPARE_WITH_TIMEOUT(Cards(), cards, Tests::Timeouts::Process);
        }
        QCOMPARE(Cards(), cards);
        QCOMPARE(ActiveCards(), active);
        QCOMPARE(Cards("details").value(0), firstDetails);
        QVERIFY(driver->Property(tab, "selected").toBool());
        for (const QString other : {"musicTab", "videoTab", "photoTab"}) {
            QCOMPARE(driver->Property(other, "selected").toBool(), other == tab);
        }
        QVERIFY(driver->UnnamedControls().isEmpty());
    }

    void searchNarrowsTheCards_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QStringList>("cards");
        QTest::newRow("part of a name") << "джаз" << QStringList{"Утренний джаз"};
        QTest::newRow("in capitals") << "СВОЯ" << QStringList{"Своя музыка"};
        QTest::newRow("nothing like it") << "рок" << QStringList();
    }

    void searchNarrowsTheCards()
    {
        QFETCH(QString, text);
        QFETCH(QStringList, cards);
        Open(PlaylistContentType::Music);
        QVERIFY(driver->SetText("searchField", text));
        QTRY_COMPARE_WITH_TIMEOUT(Cards(), cards, Tests::Timeouts::Quick);
        QCOMPARE(Shown("emptyText"), cards.isEmpty());
        // Clearing the search brings every card back.
        QVERIFY(driver->SetText("searchField", QString()));
        QTRY_COMPARE_WITH_TIMEOUT(Cards(), (QStringList{"Утренний джаз", "Своя музыка"}),
                                  Tests::Timeouts::Quick);
    }

    void anOpenedPlaylistShowsItsTracks()
    {
        Open(PlaylistContentType::Music);
        QVERIFY(driver->Click("playlistCard0"));
        QTRY_VERIFY_WITH_TIMEOUT(driver->Item("trackRow1"), Tests::Timeouts::Process);
        QCOMPARE(driver->Property("openedNameText", "text").toString(), QStringLiteral("Утренний джаз"));
        QCOMPARE(driver->Property("trackRow0", "title").toString(), QStringLiteral("Первая"));
        QCOMPARE(driver->Property("trackRow1", "title").toString(), QStringLiteral("Вторая"));
        QVERIFY(Shown("openedActiveBadge"));
        QVERIFY(Shown("deactivateButton"));
        QVERIFY(!Shown("playlistsGrid"));
        QVERIFY(driver->UnnamedControls().isEmpty());
        QVERIFY(driver->Click("backButton"));
        QVERIFY(Shown("playlistsGrid"));
        QVERIFY(!Shown("tracksList"));
    }

    // The video section plays by parts of the day: the playlist is switched off,
    // then on again for the day and the night only.
    void switchingAPlaylistOffAndOnForPartsOfTheDay()
    {
        Open(PlaylistContentType::Video);
        QCOMPARE(ActiveCards(), (QStringList{"Клипы дня", "Клипы вечера"}));
        QVERIFY(driver->Click("playlistCard1"));
        QTRY_VERIFY_WITH_TIMEOUT(Shown("deactivateButton"), Tests::Timeouts::Quick);

        int checks = ScheduleChecks();
        QVERIFY(driver->Click("deactivateButton"));
        QVERIFY(driver->DocumentShown("set_playlist_widget.qml"));
        QCOMPARE(driver->Property("headerText", "text").toString(),
                 QStringLiteral("Отключить «Клипы вечера»?"));
        QVERIFY(driver->UnnamedControls().isEmpty());
        QVERIFY(driver->Click("okButton"));
        QTRY_COMPARE_WITH_TIMEOUT(service->Received(QStringLiteral("playlist_changes")).size(), 1,
                                  Tests::Timeouts::Process);
        QCOMPARE(LastPlaylistChange().value("type").toString(), QStringLiteral("video"));
        QCOMPARE(LastPlaylistChange().value("playlist_id").toInt(), 4);
        QCOMPARE(LastPlaylistChange().value("action").toString(), QStringLiteral("deactivate"));
        QTRY_COMPARE_WITH_TIMEOUT(ActiveCards(), QStringList{"Клипы дня"}, Tests::Timeouts::Process);
        QVERIFY(driver->DocumentShown("video_playlists_widget.qml"));
        QVERIFY(!Shown("openedActiveBadge"));
        QVERIFY(!Shown("deactivateButton"));
        QTRY_VERIFY_WITH_TIMEOUT(ScheduleChecks() > checks, Tests::Timeouts::Process);

        checks = ScheduleChecks();
        QVERIFY(driver->Click("activateButton"));
        QVERIFY(driver->DocumentShown("set_playlist_widget.qml"));
        QVERIFY(driver->Property("setPlaylistScreen", "byParts").toBool());
        // No part of the day chosen yet: there is nothing to send.
        QVERIFY(!driver->Click("okButton"));
        for (const char* part : {"daySwitch", "nightSwitch"}) {
            QObject* partSwitch = driver->Item(QString::fromLatin1(part));
            QVERIFY(partSwitch);
            QVERIFY(!partSwitch->property("checked").toBool());
            QVERIFY(QMetaObject::invokeMethod(partSwitch, "toggle"));
        }
        QVERIFY(driver->Click("okButton"));
        QTRY_COMPARE_WITH_TIMEOUT(service->Received(QStringLiteral("playlist_changes")).size(), 2,
                                  Tests::Timeouts::Process);
        const QJsonObject change = LastPlaylistChange();
        QCOMPARE(change.value("action").toString(), QStringLiteral("activate"));
        QCOMPARE(change.value("playlist_id").toInt(), 4);
        QCOMPARE(change.value("morning").toString(), QStringLiteral("false"));
        QCOMPARE(change.value("day").toString(), QStringLiteral("true"));
        QCOMPARE(change.value("evening").toString(), QStringLiteral("false"));
        QCOMPARE(change.value("night").toString(), QStringLiteral("true"));
        QTRY_COMPARE_WITH_TIMEOUT(ActiveCards(), (QStringList{"Клипы дня", "Клипы вечера"}),
                                  Tests::Timeouts::Process);
        QVERIFY(Shown("openedActiveBadge"));
        QTRY_VERIFY_WITH_TIMEOUT(ScheduleChecks() > checks, Tests::Timeouts::Process);
    }

    // The music section plays one playlist all day: switching another on takes its place.
    void switchingAPlaylistOnForTheWholeDay()
    {
        Open(PlaylistContentType::Music);
        QVERIFY(driver->Click("playlistCard1"));
        QTRY_VERIFY_WITH_TIMEOUT(Shown("activateButton"), Tests::Timeouts::Quick);
        QVERIFY(driver->Click("activateButton"));
        QVERIFY(driver->DocumentShown("set_playlist_widget.qml"));
        QVERIFY(!driver->Property("setPlaylistScreen", "byParts").toBool());
        QVERIFY(driver->Click("okButton"));
        QTRY_COMPARE_WITH_TIMEOUT(service->Received(QStringLiteral("playlist_changes")).size(), 1,
                                  Tests::Timeouts::Process);
        const QJsonObject change = LastPlaylistChange();
        QCOMPARE(change.value("type").toString(), QStringLiteral("music"));
        QCOMPARE(change.value("playlist_id").toInt(), 2);
        QCOMPARE(change.value("action").toString(), QStringLiteral("activate"));
        QVERIFY(!change.contains("morning"));
        QTRY_COMPARE_WITH_TIMEOUT(ActiveCards(), QStringList{"Своя музыка"}, Tests::Timeouts::Process);
    }
};

QTEST_MAIN(ContentScreensTest)
#include "tst_content_screens.moc"
