#include "core/content_playing/player.h"
#include "core/media_controls/mpris_service.h"
#include "core/settings.h"
#include "core/user_environment.h"
#include "tests/core/content_playing/test_periods.h"
#include "tests/core/content_playing/tone_timeline.h"
#include "tests/core/content_playing/two_sink_listener.h"
#include "tests/core/user_environment/shop_session.h"
#include "tests/support/event_log.h"
#include "tests/support/mpris_panel_call.h"
#include "tests/support/reference_service.h"
#include "tests/support/test_data_directory.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QRegularExpression>
#include <QtTest>

using Core::UserEnvironment;
using Core::ContentPlaying::Player;
using Core::DataTypes::Playback::ContentType;
using Core::MediaControls::MprisService;
using Tests::ShopSession;
using Tests::ToneTimeline;

namespace {

const QString kShop = QStringLiteral("shop1");
const QString kPlayerInterface = QStringLiteral("org.mpris.MediaPlayer2.Player");
const QString kUnavailable = QStringLiteral("Управление с панели рабочего стола недоступно: ");

// The shop's music as a catalogue gives it: titles, artists, one track with a cover
// of its own and the others under their playlist's; the last one shorter.
struct Song
{
    int id;
    const char* file;
    const char* title;
    const char* artist;
    double frequency;
    double seconds;
};
const Song kSongs[] = {
    {1, "music_a.mp3", "Утренний кофе", "Квартет Зелмар", Tests::TestMedia::MusicAFrequency, 8},
    {2, "music_b.mp3", "Полдень", "Оркестр бульвара", Tests::TestMedia::MusicBFrequency, 8},
    {3, "medium_a.mp3", "Вечерний свет", "Трио", Tests::TestMedia::MusicAFrequency, 4}};

// The length a Metadata text of gdbus gives, in microseconds; -1 without one.
qlonglong LengthIn(const QString& metadata)
{
    const QRegularExpressionMatch match =
        QRegularExpression(QStringLiteral("'mpris:length': <int64 (\\d+)>")).match(metadata);
    return match.hasMatch() ? match.captured(1).toLongLong() : -1;
}

bool CloseTo(qlonglong microseconds, double seconds)
{
    return qAbs(microseconds - static_cast<qlonglong>(seconds * 1000000)) < 500000;
}

QJsonObject ShopTemplate()
{
    QJsonArray music;
    for (int i = 0; i < 3; ++i) {
        QJsonObject track{{"id", kSongs[i].id},
                          {"path", kSongs[i].file},
                          {"name", QString::fromUtf8(kSongs[i].title)},
                          {"author", QString::fromUtf8(kSongs[i].artist)}};
        if (i == 0) {
            track.insert("image", "@ORIGIN@/covers/morning.png");
        }
        music.append(track);
    }
    QJsonObject playlist = ShopSession::MusicPlaylist(11, "Кафе", {1, 2, 3});
    playlist.insert("image", "@ORIGIN@/covers/cafe.png");
    QJsonObject schedule =
        ShopSession::Schedule({ShopSession::Period("День", "09:00", "13:00", 11)}, {playlist});
    QJsonArray content = schedule.value("content").toArray();
    for (int i = 0; i < content.size(); ++i) {
        QJsonObject kind = content.at(i).toObject();
        if (kind.value("type") == "music") {
            kind.insert("tracks", music);
            content.replace(i, kind);
        }
    }
    schedule.insert("content", content);
    return schedule;
}

// A{sv} arrives as a D-Bus argument; a variant inside it again.
QVariantMap MapOf(const QVariant& value)
{
    if (value.canConvert<QDBusArgument>()) {
        return qdbus_cast<QVariantMap>(value.value<QDBusArgument>());
    }
    if (value.canConvert<QDBusVariant>()) {
        return MapOf(value.value<QDBusVariant>().variant());
    }
    return value.toMap();
}

// Metadata as text, for comparing two of them: QVariant compares a track id, a
// type of Qt's D-Bus module, only where a comparator has been registered.
QString Text(const QVariantMap& metadata)
{
    QStringList entries;
    for (auto it = metadata.cbegin(); it != metadata.cend(); ++it) {
        const QVariant& value = it.value();
        const QString text = value.canConvert<QDBusObjectPath>()    ? value.value<QDBusObjectPath>().path()
                             : value.type() == QVariant::StringList ? value.toStringList().join('|')
                                                                    : value.toString();
        entries << it.key() + '=' + text;
    }
    return entries.join(',');
}

// What a desktop panel hears: the PropertiesChanged signals of the player object.
class Panel : public QObject
{
    Q_OBJECT

public:
    QList<QVariantMap> changes;

    QString LastTitle() const
    {
        for (auto it = changes.crbegin(); it != changes.crend(); ++it) {
            if (it->contains(QStringLiteral("Metadata"))) {
                return MapOf(it->value(QStringLiteral("Metadata")))
                    .value(QStringLiteral("xesam:title"))
                    .toString();
            }
        }
        return {};
    }

    // The first playback status told from change `from` on; empty before one is.
    QString FirstStatusFrom(int from) const
    {
        for (int i = from; i < changes.size(); ++i) {
            if (changes.at(i).contains(QStringLiteral("PlaybackStatus"))) {
                return changes.at(i).value(QStringLiteral("PlaybackStatus")).toString();
            }
        }
        return {};
    }

    QString LastStatus() const
    {
        for (auto it = changes.crbegin(); it != changes.crend(); ++it) {
            if (it->contains(QStringLiteral("PlaybackStatus"))) {
                return it->value(QStringLiteral("PlaybackStatus")).toString();
            }
        }
        return {};
    }

public slots:
    void Changed(const QDBusMessage& message)
    {
        const QList<QVariant> arguments = message.arguments();
        if (arguments.size() == 3 && arguments.at(0).toString() == kPlayerInterface) {
            changes.append(MapOf(arguments.at(1)));
        }
    }
};

} // namespace

// The player as a desktop panel sees and drives it through MPRIS 2: what plays,
// play and pause, next and previous, told as they happen; and a program without a
// bus, or with another copy holding the name, playing on without the panel.
class MprisServiceTest : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir content;
    std::unique_ptr<Tests::ReferenceService> service;
    Tests::TwoSinkListener listener;
    std::unique_ptr<Tests::TestDataDirectory> dataDirectory;
    std::shared_ptr<UserEnvironment> environment;
    std::shared_ptr<Player> player;
    std::unique_ptr<MprisService> mpris;
    Panel panel;

    static QString Call(const QString& method, const QStringList& arguments = {})
    {
        return Tests::MprisPanelCall::Call(method, arguments);
    }

    static QString Get(const QString& interface, const QString& property)
    {
        return Tests::MprisPanelCall::Get(interface, property);
    }

    QString Status()
    {
        return Get(kPlayerInterface, QStringLiteral("PlaybackStatus"));
    }

    // gdbus's text of the player's Metadata.
    QString Metadata()
    {
        return Get(kPlayerInterface, QStringLiteral("Metadata"));
    }

    bool Playing() const
    {
        return player && player->CurrentState().playingNow;
    }

    QString PlayerTitle() const
    {
        return QString::fromStdString(
            player->CurrentState().contentPlayingStates.at(ContentType::Music).trackTitle);
    }

    // Signed in on the shop, its music playing and heard, all three files on disk.
    void SignInAndPlay()
    {
        QString error;
        environment = ShopSession::SignedIn(ShopSession::ServerOf(*service), ShopSession::Shop(), &error);
        QVERIFY2(environment, qPrintable(error));
        QVERIFY2(ShopSession::LoadSchedule(*environment, &error), qPrintable(error));
        player = environment->GetContentPlayer();
        QVERIFY(player);
        player->Start();
        double level = 0;
        QVERIFY2(listener.WaitForToneLevel(
                     kSongs[0].frequency, [](double l) { return l > ToneTimeline::Heard; }, 0.3,
                     Tests::Timeouts::Playback, &level),
                 qPrintable(QString::number(level)));
        QTRY_COMPARE_WITH_TIMEOUT(player->CurrentState().downloadsInfo.at(ContentType::Music).downloaded, 3,
                                  Tests::Timeouts::Process);
    }

    void StartService()
    {
        mpris = std::make_unique<MprisService>();
        QVERIFY(mpris->Start());
        mpris->Follow(player);
    }

private slots:
    void initTestCase()
    {
        QVERIFY2(qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS"),
                 "no session bus: register the test with NEEDS session-bus");
        QVERIFY2(!Tests::MprisPanelCall::Gdbus().isEmpty(),
                 "gdbus is missing: install 'libglib2.0-bin' (scripts/install-deps)");
        QVERIFY(content.isValid());
        QString error;
        service = ShopSession::StartedServing(
            content.path(),
            {"music/music_a.mp3", "music/music_b.mp3", "music/medium_a.mp3", "clip/ad_short.mp3"}, &error);
        QVERIFY2(service, qPrintable(error));
        QVERIFY2(listener.Start(), qPrintable(listener.ErrorString()));
        QDBusConnection bus = QDBusConnection::connectToBus(
            QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS")), QStringLiteral("panel"));
        QVERIFY2(bus.isConnected(), qPrintable(bus.lastError().message()));
        QVERIFY(bus.connect(QString(), MprisService::ObjectPath,
                            QStringLiteral("org.freedesktop.DBus.Properties"),
                            QStringLiteral("PropertiesChanged"), &panel, SLOT(Changed(QDBusMessage))));
    }

    void cleanupTestCase()
    {
        QDBusConnection::disconnectFromBus(QStringLiteral("panel"));
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void init()
    {
        QVERIFY2(service->Reset(), qPrintable(service->ErrorString()));
        const QDate today =
            QDate::fromString(QString::fromStdString(Tests::TestPeriods::Today()), "dd.MM.yyyy");
        QVERIFY(service->SetToday(today));
        QVERIFY(service->ReplaceConfiguration(kShop, ShopTemplate()) > 0);
        dataDirectory = std::make_unique<Tests::TestDataDirectory>();
        QVERIFY(dataDirectory->IsValid());
        Tests::TestPeriods::SetNow(QTime(10, 0));
        Core::Settings::SetShuffle(ContentType::Music, false);
        panel.changes.clear();
    }

    void cleanup()
    {
        mpris.reset();
        if (environment) {
            environment->StopAndClearPlayer();
        }
        player.reset();
        environment.reset();
        ShopSession::ForgetSession();
        dataDirectory.reset();
    }

    // The panel names the program and may bring its window up, which the window's
    // owner does on the service's word; it may not end the program.
    void theRootInterfaceNamesTheProgramAndRaisesIt()
    {
        mpris = std::make_unique<MprisService>();
        QVERIFY(mpris->Start());
        const QString root = QStringLiteral("org.mpris.MediaPlayer2");
        QCOMPARE(Get(root, "Identity"), QStringLiteral("(<'Zelmar Player'>,)"));
        QCOMPARE(Get(root, "DesktopEntry"), QStringLiteral("(<'zelmar-player'>,)"));
        QCOMPARE(Get(root, "CanQuit"), QStringLiteral("(<false>,)"));
        QSignalSpy raised(mpris.get(), &MprisService::raiseRequested);
        QCOMPARE(Call(root + ".Raise"), QStringLiteral("()"));
        QCOMPARE(raised.count(), 1);
        // No player yet (signed out): nothing plays, nothing to press.
        QCOMPARE(Status(), QStringLiteral("(<'Stopped'>,)"));
        QCOMPARE(Get(kPlayerInterface, "CanPlay"), QStringLiteral("(<false>,)"));
        QVERIFY2(
            Metadata().contains("'mpris:trackid': <objectpath '/org/mpris/MediaPlayer2/TrackList/NoTrack'>"),
            qPrintable(Metadata()));
    }

    // The track the shop hears, with the D-Bus types a panel reads: its title, its
    // artist as a list, its length in microseconds, the cover now playing shows and
    // a track id that is an object path; the position is the real one.
    void metadataIsThePlayingTrack()
    {
        SignInAndPlay();
        StartService();
        const QString metadata = Metadata();
        QVERIFY2(metadata.contains(QStringLiteral("'xesam:title': <'Утренний кофе'>")), qPrintable(metadata));
        QVERIFY2(metadata.contains(QStringLiteral("'xesam:artist': <['Квартет Зелмар']>")),
                 qPrintable(metadata));
        QVERIFY2(metadata.contains("'mpris:trackid': <objectpath '/org/zelmar_player/track/1'>"),
                 qPrintable(metadata));
        // The address as the schedule gives it, which now playing loads.
        QString cover;
        for (const auto& track : player->GetCurrentTracks(ContentType::Music)) {
            if (track.id == kSongs[0].id) {
                cover = QString::fromStdString(track.image);
            }
        }
        QVERIFY2(cover.startsWith("http://") && cover.endsWith("/covers/morning.png"), qPrintable(cover));
        QVERIFY2(metadata.contains("'mpris:artUrl': <'" + cover + "'>"), qPrintable(metadata));
        // The media library measures the length once the file plays.
        QTRY_VERIFY2_WITH_TIMEOUT(LengthIn(Metadata()) > 0, qPrintable(Metadata()), Tests::Timeouts::Quick);
        const qlonglong microseconds = LengthIn(Metadata());
        QVERIFY2(CloseTo(microseconds, kSongs[0].seconds), qPrintable(QString::number(microseconds)));
        const QRegularExpression position(QStringLiteral("\\(<int64 (\\d+)>,\\)"));
        QTRY_VERIFY_WITH_TIMEOUT(position.match(Get(kPlayerInterface, "Position")).captured(1).toLongLong() >
                                     0,
                                 Tests::Timeouts::Quick);
        QVERIFY(position.match(Get(kPlayerInterface, "Position")).captured(1).toLongLong() <= microseconds);
    }

    // Play and pause from the panel reach the player only when they change
    // something; Stop pauses, so that Play resumes the shop's music.
    void playAndPauseFromThePanel_data()
    {
        QTest::addColumn<bool>("playingBefore");
        QTest::addColumn<QString>("method");
        QTest::addColumn<bool>("playingAfter");
        QTest::newRow("Pause while playing") << true << "Pause" << false;
        QTest::newRow("PlayPause while playing") << true << "PlayPause" << false;
        QTest::newRow("Stop while playing") << true << "Stop" << false;
        QTest::newRow("Play while playing") << true << "Play" << true;
        QTest::newRow("Play while paused") << false << "Play" << true;
        QTest::newRow("PlayPause while paused") << false << "PlayPause" << true;
        QTest::newRow("Pause while paused") << false << "Pause" << false;
    }

    void playAndPauseFromThePanel()
    {
        QFETCH(bool, playingBefore);
        QFETCH(QString, method);
        QFETCH(bool, playingAfter);
        SignInAndPlay();
        StartService();
        if (!playingBefore) {
            player->TogglePlayback();
            QCOMPARE(Status(), QStringLiteral("(<'Paused'>,)"));
            QTRY_COMPARE_WITH_TIMEOUT(panel.LastStatus(), QStringLiteral("Paused"), Tests::Timeouts::Quick);
        } else {
            QCOMPARE(Status(), QStringLiteral("(<'Playing'>,)"));
        }
        const int changesBefore = panel.changes.size();
        QCOMPARE(Call(kPlayerInterface + "." + method), QStringLiteral("()"));
        QCOMPARE(Playing(), playingAfter);
        const QString expected = playingAfter ? QStringLiteral("Playing") : QStringLiteral("Paused");
        QCOMPARE(Status(), "(<'" + expected + "'>,)");
        if (playingBefore != playingAfter) {
            QTRY_COMPARE_WITH_TIMEOUT(panel.LastStatus(), expected, Tests::Timeouts::Quick);
        } else {
            // No status to tell: the first the panel hears is that of a later change
            // made at the player itself. (The track's length may be told meanwhile:
            // it is known only once the player reports progress.)
            player->TogglePlayback();
            QTRY_VERIFY_WITH_TIMEOUT(!panel.FirstStatusFrom(changesBefore).isEmpty(), Tests::Timeouts::Quick);
            QCOMPARE(panel.FirstStatusFrom(changesBefore),
                     playingAfter ? QStringLiteral("Paused") : QStringLiteral("Playing"));
            player->TogglePlayback();
        }
        if (playingAfter && !playingBefore) {
            double level = 0;
            QVERIFY2(listener.WaitForToneLevel(
                         kSongs[0].frequency, [](double l) { return l > ToneTimeline::Heard; }, 0.3,
                         Tests::Timeouts::Playback, &level),
                     qPrintable(QString::number(level)));
        }
    }

    // Next and previous move the music the shop hears; the panel is told the new
    // track without asking, once, and never with the length of the one before.
    void nextAndPreviousChangeTheTrack_data()
    {
        QTest::addColumn<QString>("method");
        QTest::addColumn<int>("song");
        QTest::newRow("Next") << "Next" << 1;
        // Back from the first track is the playlist's last, half as long.
        QTest::newRow("Previous") << "Previous" << 2;
    }

    void nextAndPreviousChangeTheTrack()
    {
        QFETCH(QString, method);
        QFETCH(int, song);
        SignInAndPlay();
        StartService();
        QTRY_VERIFY_WITH_TIMEOUT(LengthIn(Metadata()) > 0, Tests::Timeouts::Quick);
        const int changesBefore = panel.changes.size();
        QCOMPARE(Call(kPlayerInterface + "." + method), QStringLiteral("()"));
        const QString title = QString::fromUtf8(kSongs[song].title);
        QTRY_COMPARE_WITH_TIMEOUT(panel.LastTitle(), title, Tests::Timeouts::Quick);
        QCOMPARE(PlayerTitle(), title);
        QString metadata = Metadata();
        QVERIFY2(metadata.contains("'xesam:title': <'" + title + "'>"), qPrintable(metadata));
        QVERIFY2(
            metadata.contains(QStringLiteral("'mpris:trackid': <objectpath '/org/zelmar_player/track/%1'>")
                                  .arg(kSongs[song].id)),
            qPrintable(metadata));
        // Without a cover of its own, the track shows its playlist's.
        QVERIFY2(metadata.contains("/covers/cafe.png'>"), qPrintable(metadata));
        QTRY_VERIFY2_WITH_TIMEOUT(CloseTo(LengthIn(metadata = Metadata()), kSongs[song].seconds),
                                  qPrintable(metadata), Tests::Timeouts::Quick);
        if (song == 1) {
            double level = 0;
            QVERIFY2(listener.WaitForToneLevel(
                         kSongs[song].frequency, [](double l) { return l > ToneTimeline::Heard; }, 0.3,
                         Tests::Timeouts::Playback, &level),
                     qPrintable(QString::number(level)));
        }
        // Told of each change once, while the player reported its progress many
        // times; a length is the track's own or none yet.
        QString previous;
        for (int i = changesBefore; i < panel.changes.size(); ++i) {
            if (!panel.changes.at(i).contains(QStringLiteral("Metadata"))) {
                continue;
            }
            const QVariantMap told = MapOf(panel.changes.at(i).value(QStringLiteral("Metadata")));
            QVERIFY2(Text(told) != previous, qPrintable("told twice: " + previous));
            previous = Text(told);
            if (told.value(QStringLiteral("xesam:title")).toString() == title &&
                told.contains(QStringLiteral("mpris:length"))) {
                const qlonglong length = told.value(QStringLiteral("mpris:length")).toLongLong();
                QVERIFY2(CloseTo(length, kSongs[song].seconds), qPrintable(QString::number(length)));
            }
        }
    }

    // A kiosk without a session bus, and a second copy of the program whose name the
    // first one holds: one line in the event log, and the music plays on.
    void withoutTheBusTheMusicPlaysOn_data()
    {
        QTest::addColumn<QString>("situation");
        QTest::addColumn<QString>("line");
        QTest::newRow("no session bus") << "no bus" << kUnavailable + "нет сеансовой шины D-Bus";
        QTest::newRow("another copy holds the name")
            << "taken"
            << kUnavailable + "имя org.mpris.MediaPlayer2.zelmar_player занято другой копией плеера";
    }

    void withoutTheBusTheMusicPlaysOn()
    {
        QFETCH(QString, situation);
        QFETCH(QString, line);
        SignInAndPlay();
        const QString other = QStringLiteral("other copy");
        QDBusConnection bus =
            situation == QLatin1String("no bus")
                ? QDBusConnection::connectToBus("unix:path=" + dataDirectory->Path() + "/no-such-bus", other)
                : QDBusConnection::sessionBus();
        if (situation == QLatin1String("taken")) {
            QDBusConnection first = QDBusConnection::connectToBus(
                QString::fromLocal8Bit(qgetenv("DBUS_SESSION_BUS_ADDRESS")), other);
            QVERIFY(first.registerService(MprisService::ServiceName));
        }
        mpris = std::make_unique<MprisService>();
        QVERIFY(!mpris->Start(bus));
        QVERIFY(!mpris->IsServing());
        mpris->Follow(player);
        QCOMPARE(Tests::EventLog::Count(line), 1);
        QDBusConnection::disconnectFromBus(other);
        QVERIFY(Playing());
        double level = 0;
        QVERIFY2(listener.WaitForToneLevel(
                     kSongs[0].frequency, [](double l) { return l > ToneTimeline::Heard; }, 0.3,
                     Tests::Timeouts::Playback, &level),
                 qPrintable(QString::number(level)));
    }
};

QTEST_GUILESS_MAIN(MprisServiceTest)
#include "tst_mpris_service.moc"
