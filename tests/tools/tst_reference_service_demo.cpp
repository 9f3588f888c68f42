#include "tests/support/reference_service.h"
#include "tests/tools/api_client.h"

#include <QDate>
#include <QJsonArray>
#include <QRegularExpression>
#include <QSet>
#include <QtTest>

#include <memory>

using Tests::ApiClient;

// The demo scenario, read through the service as the player reads it: both points
// of sale have a week of days covered from midnight to midnight by periods with
// their own playlists and volumes, ads every 15 to 30 minutes, and media named by
// the layout scripts/make-demo-content writes.
class ReferenceServiceDemoTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;
    std::unique_ptr<ApiClient> client;

    static int Minutes(const QString& time, bool isEnd)
    {
        const QStringList parts = time.split(QLatin1Char(':'));
        const int minutes = parts.value(0).toInt() * 60 + parts.value(1).toInt();
        return isEnd && minutes == 0 ? 24 * 60 : minutes;
    }

    QJsonObject ConfigurationOf(const QString& code)
    {
        const QString token = client->SignIn(QStringLiteral("demo"), QStringLiteral("demo"), code);
        const auto answer =
            client->Get(QStringLiteral("/api/v1/%1/playback/configuration_v2?timestamp=1&lang=ru").arg(code),
                        ApiClient::Token(token));
        return answer.Json().value(QStringLiteral("configuration")).toObject();
    }

    // Ids of the tracks of each content type.
    static QHash<QString, QSet<int>> TrackIds(const QJsonObject& configuration)
    {
        QHash<QString, QSet<int>> ids;
        for (const QJsonValue& list : configuration.value(QStringLiteral("content")).toArray()) {
            for (const QJsonValue& track : list.toObject().value(QStringLiteral("tracks")).toArray()) {
                ids[list.toObject().value(QStringLiteral("type")).toString()].insert(
                    track.toObject().value(QStringLiteral("id")).toInt());
            }
        }
        return ids;
    }

private slots:
    void initTestCase()
    {
        service = std::make_unique<Tests::ReferenceService>(Tests::ReferenceService::SourceDirectory() +
                                                            QStringLiteral("/demo/scenario"));
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
        client = std::make_unique<ApiClient>(service->Origin());
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void demoAccountHasTwoPointsOfSale()
    {
        const auto answer =
            client->PostJson(QStringLiteral("/api/v1/auth/objects"), R"({"login":"demo","password":"demo"})");
        QStringList codes;
        for (const QJsonValue& object : answer.Json().value(QStringLiteral("objects")).toArray()) {
            codes << object.toObject().value(QStringLiteral("code")).toString();
        }
        QCOMPARE(codes, QStringList({"demo-cafe", "demo-shop"}));
        const QJsonObject servers = client->Get(QStringLiteral("/api/player/legacy/v1/auth/servers")).Json();
        const QJsonObject demo = servers.value(QStringLiteral("servers")).toArray().at(0).toObject();
        QCOMPARE(demo.value(QStringLiteral("name")).toString(), QStringLiteral("Локальный демо-сервер"));
        QCOMPARE(demo.value(QStringLiteral("url")).toString(), service->BaseUrl());
    }

    void everyDayIsCoveredFromMidnightToMidnightWithAds_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("cafe") << "demo-cafe";
        QTest::newRow("shop") << "demo-shop";
    }

    void everyDayIsCoveredFromMidnightToMidnightWithAds()
    {
        QFETCH(QString, code);
        const QJsonObject configuration = ConfigurationOf(code);
        const QJsonArray days = configuration.value(QStringLiteral("schedule")).toArray();
        QCOMPARE(days.size(), 7);
        QHash<int, QString> playlistKinds;
        for (const QJsonValue& playlist : configuration.value(QStringLiteral("playlists")).toArray()) {
            playlistKinds.insert(playlist.toObject().value(QStringLiteral("id")).toInt(),
                                 playlist.toObject().value(QStringLiteral("content_type")).toString());
        }
        const QDate today = QDate::fromString(days.at(0).toObject().value(QStringLiteral("date")).toString(),
                                              QStringLiteral("dd.MM.yyyy"));
        QVERIFY(today.isValid());
        QSet<QString> dates;
        for (int d = 0; d < days.size(); ++d) {
            const QJsonObject day = days.at(d).toObject();
            QCOMPARE(day.value(QStringLiteral("date")).toString(),
                     today.addDays(d).toString(QStringLiteral("dd.MM.yyyy")));
            dates.insert(day.value(QStringLiteral("date")).toString());
            const QJsonArray periods = day.value(QStringLiteral("periods")).toArray();
            QStringList names;
            QSet<int> musicPlaylists;
            QSet<int> volumes;
            int reached = 0;
            for (const QJsonValue& value : periods) {
                const QJsonObject period = value.toObject();
                names << period.value(QStringLiteral("name")).toString();
                QCOMPARE(Minutes(period.value(QStringLiteral("start_time_str")).toString(), false), reached);
                reached = Minutes(period.value(QStringLiteral("end_time_str")).toString(), true);
                const int music = period.value(QStringLiteral("music_playlist_id")).toInt();
                QCOMPARE(playlistKinds.value(music), QStringLiteral("music"));
                musicPlaylists.insert(music);
                for (const QString& kind : {QStringLiteral("video"), QStringLiteral("photo")}) {
                    const int id = period.value(kind + QStringLiteral("_playlist_id")).toInt();
                    QVERIFY(id == 0 || playlistKinds.value(id) == kind);
                }
                const int content = period.value(QStringLiteral("content_volume")).toInt();
                const int ads = period.value(QStringLiteral("ads_volume")).toInt();
                QVERIFY(content > 0 && content <= 100 && ads > 0 && ads <= 100);
                volumes.insert(content);
            }
            QCOMPARE(reached, 24 * 60);
            QCOMPARE(names, QStringList({QStringLiteral("Ночь"), QStringLiteral("Утро"),
                                         QStringLiteral("День"), QStringLiteral("Вечер")}));
            QCOMPARE(musicPlaylists.size(), 4);
            QCOMPARE(volumes.size(), 4);
        }
        // Every playlist names only tracks of its own kind that exist.
        const auto ids = TrackIds(configuration);
        for (const QJsonValue& value : configuration.value(QStringLiteral("playlists")).toArray()) {
            const QJsonObject playlist = value.toObject();
            const QString kind = playlist.value(QStringLiteral("content_type")).toString();
            const QJsonArray tracks = playlist.value(QStringLiteral("tracks")).toArray();
            QVERIFY(!tracks.isEmpty());
            for (const QJsonValue& track : tracks) {
                QVERIFY2(ids.value(kind).contains(track.toInt()),
                         qPrintable(QStringLiteral("%1 names track %2")
                                        .arg(playlist.value(QStringLiteral("name")).toString())
                                        .arg(track.toInt())));
            }
        }

        // Ads every 15 to 30 minutes round the clock, each block on every day.
        const QSet<int> clips = ids.value(QStringLiteral("clip"));
        const QJsonArray blocks = configuration.value(QStringLiteral("ads")).toArray();
        QVERIFY(blocks.size() >= 48);
        int previous = -1;
        int interrupting = 0;
        for (const QJsonValue& value : blocks) {
            const QJsonObject block = value.toObject();
            const int start = Minutes(block.value(QStringLiteral("start_time_str")).toString(), false);
            if (previous < 0) {
                QVERIFY(start <= 30);
            } else {
                QVERIFY2(start - previous >= 15 && start - previous <= 30,
                         qPrintable(block.value(QStringLiteral("start_time_str")).toString()));
            }
            previous = start;
            interrupting += block.value(QStringLiteral("interrupt_content")).toBool() ? 1 : 0;
            QSet<QString> blockDates;
            for (const QJsonValue& entry : block.value(QStringLiteral("tracks")).toArray()) {
                QVERIFY(clips.contains(entry.toObject().value(QStringLiteral("track")).toInt()));
                blockDates.insert(entry.toObject().value(QStringLiteral("date")).toString());
            }
            QCOMPARE(blockDates, dates);
        }
        QVERIFY(24 * 60 - previous <= 30);
        QVERIFY(interrupting > 0 && interrupting < blocks.size());
    }

    void mediaFollowTheDemoContentLayout()
    {
        const QHash<QString, QRegularExpression> layout = {
            {QStringLiteral("music"), QRegularExpression(QStringLiteral("^track(0[1-9]|1[0-2])\\.mp3$"))},
            {QStringLiteral("clip"),
             QRegularExpression(QStringLiteral("^(ad0[1-6]\\.mp3|ad_video01\\.mp4)$"))},
            {QStringLiteral("video"), QRegularExpression(QStringLiteral("^clip0[1-4]\\.mp4$"))},
            {QStringLiteral("photo"), QRegularExpression(QStringLiteral("^photo0[1-8]\\.jpg$"))}};
        const QRegularExpression files(
            QStringLiteral("^%1files/(covers/cover0[1-8]|photo/photo0[1-8])\\.jpg$")
                .arg(QRegularExpression::escape(service->Origin())));
        QSet<QString> used;
        for (const QString& code : {QStringLiteral("demo-cafe"), QStringLiteral("demo-shop")}) {
            const QJsonObject configuration = ConfigurationOf(code);
            QCOMPARE(configuration.value(QStringLiteral("domains")).toArray(),
                     QJsonArray({service->MediaDomain()}));
            for (const QJsonValue& list : configuration.value(QStringLiteral("content")).toArray()) {
                const QString type = list.toObject().value(QStringLiteral("type")).toString();
                QVERIFY2(layout.contains(type), qPrintable(type));
                for (const QJsonValue& value : list.toObject().value(QStringLiteral("tracks")).toArray()) {
                    const QJsonObject track = value.toObject();
                    const QString path = track.value(QStringLiteral("path")).toString();
                    QVERIFY2(layout.value(type).match(path).hasMatch(),
                             qPrintable(type + QLatin1Char('/') + path));
                    used.insert(type + QLatin1Char('/') + path);
                    const QString image = track.value(QStringLiteral("image")).toString();
                    QVERIFY2(image.isEmpty() || files.match(image).hasMatch(), qPrintable(image));
                }
            }
        }
        // Between them the two points of sale use every generated file.
        QCOMPARE(used.size(), 12 + 7 + 4 + 8);
    }

    void catalogueFillsTheContentScreens()
    {
        const QString token =
            client->SignIn(QStringLiteral("demo"), QStringLiteral("demo"), QStringLiteral("demo-cafe"));
        for (const QString& type :
             {QStringLiteral("stock_music"), QStringLiteral("video"), QStringLiteral("photo")}) {
            const QJsonArray playlists =
                client->Get(QStringLiteral("/api/v1/demo-cafe/playlists/") + type, ApiClient::Token(token))
                    .Json()
                    .value(QStringLiteral("playlists"))
                    .toArray();
            QVERIFY2(playlists.size() >= 2, qPrintable(type));
            bool anyActive = false;
            for (const QJsonValue& playlist : playlists) {
                const int id = playlist.toObject().value(QStringLiteral("id")).toInt();
                anyActive = anyActive || playlist.toObject().value(QStringLiteral("active")).toBool();
                const auto tracks =
                    client->Get(QStringLiteral("/api/v1/demo-cafe/playlists/%1/%2").arg(type).arg(id),
                                ApiClient::Token(token));
                QVERIFY(!tracks.Json()
                             .value(QStringLiteral("data"))[QStringLiteral("tracks")]
                             .toArray()
                             .isEmpty());
            }
            QVERIFY2(anyActive, qPrintable(type));
        }
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceDemoTest)
#include "tst_reference_service_demo.moc"
