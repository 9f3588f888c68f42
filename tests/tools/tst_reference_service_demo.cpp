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

    static int Minutes(const QJsonValue& time, bool isEnd)
    {
        const QStringList parts = time.toString().split(':');
        const int minutes = parts.value(0).toInt() * 60 + parts.value(1).toInt();
        return isEnd && minutes == 0 ? 24 * 60 : minutes;
    }

    QJsonObject Get(const QString& code, const QString& path)
    {
        const QString token = client->SignIn("demo", "demo", code);
        return client->Get("/api/v1/" + code + '/' + path, ApiClient::Token(token)).Json();
    }

    QJsonObject ConfigurationOf(const QString& code)
    {
        return Get(code, "playback/configuration_v2?timestamp=1&lang=ru").value("configuration").toObject();
    }

private slots:
    void initTestCase()
    {
        service = std::make_unique<Tests::ReferenceService>(Tests::ReferenceService::SourceDirectory() +
                                                            "/demo/scenario");
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
        client = std::make_unique<ApiClient>(service->Origin());
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void demoAccountHasTwoPointsOfSaleOnThisService()
    {
        QStringList codes;
        const auto objects = client->Post("/api/v1/auth/objects", R"({"login":"demo","password":"demo"})");
        for (const QJsonValue& object : objects.Json().value("objects").toArray()) {
            codes << object["code"].toString();
        }
        QCOMPARE(codes, QStringList({"demo-cafe", "demo-shop"}));
        const auto servers = client->Get("/api/player/legacy/v1/auth/servers");
        QCOMPARE(servers.Json().value("servers")[0]["url"].toString(), service->BaseUrl());
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
        // Track ids by content type; every playlist names tracks of its own type only.
        QHash<QString, QSet<int>> tracks;
        for (const QJsonValue& list : configuration.value("content").toArray()) {
            for (const QJsonValue& track : list["tracks"].toArray()) {
                tracks[list["type"].toString()].insert(track["id"].toInt());
            }
        }
        QHash<int, QString> kinds;
        for (const QJsonValue& playlist : configuration.value("playlists").toArray()) {
            kinds.insert(playlist["id"].toInt(), playlist["content_type"].toString());
            QVERIFY(!playlist["tracks"].toArray().isEmpty());
            for (const QJsonValue& id : playlist["tracks"].toArray()) {
                QVERIFY2(tracks.value(playlist["content_type"].toString()).contains(id.toInt()),
                         qPrintable(QString::number(id.toInt())));
            }
        }
        const QJsonArray days = configuration.value("schedule").toArray();
        QCOMPARE(days.size(), 7);
        const QDate today = QDate::fromString(days.at(0)["date"].toString(), "dd.MM.yyyy");
        QSet<QString> dates;
        for (int d = 0; d < days.size(); ++d) {
            QCOMPARE(days.at(d)["date"].toString(), today.addDays(d).toString("dd.MM.yyyy"));
            dates.insert(days.at(d)["date"].toString());
            QSet<int> music;
            QSet<int> volumes;
            int reached = 0;
            for (const QJsonValue& period : days.at(d)["periods"].toArray()) {
                QCOMPARE(Minutes(period["start_time_str"], false), reached);
                reached = Minutes(period["end_time_str"], true);
                music.insert(period["music_playlist_id"].toInt());
                QCOMPARE(kinds.value(period["music_playlist_id"].toInt()), "music");
                for (const QString& kind : {QStringLiteral("video"), QStringLiteral("photo")}) {
                    const int id = period[kind + "_playlist_id"].toInt();
                    QVERIFY(id == 0 || kinds.value(id) == kind);
                }
                volumes.insert(period["content_volume"].toInt());
                QVERIFY(period["content_volume"].toInt() > 0 && period["content_volume"].toInt() <= 100);
                QVERIFY(period["ads_volume"].toInt() > 0 && period["ads_volume"].toInt() <= 100);
            }
            QCOMPARE(reached, 24 * 60);
            QCOMPARE(music.size(), 4);
            QCOMPARE(volumes.size(), 4);
        }

        // Ads round the clock, each block on every day, some of them interrupting.
        const QJsonArray blocks = configuration.value("ads").toArray();
        int previous = -1;
        int interrupting = 0;
        for (const QJsonValue& block : blocks) {
            const int start = Minutes(block["start_time_str"], false);
            const int gap = start - std::max(previous, 0);
            QVERIFY2(gap >= (previous < 0 ? 0 : 15) && gap <= 30,
                     qPrintable(block["start_time_str"].toString()));
            previous = start;
            interrupting += block["interrupt_content"].toBool() ? 1 : 0;
            QSet<QString> blockDates;
            for (const QJsonValue& entry : block["tracks"].toArray()) {
                QVERIFY(tracks.value("clip").contains(entry["track"].toInt()));
                blockDates.insert(entry["date"].toString());
            }
            QCOMPARE(blockDates, dates);
        }
        QVERIFY(24 * 60 - previous <= 30);
        QVERIFY(interrupting > 0 && interrupting < blocks.size());
    }

    void mediaFollowTheDemoContentLayout()
    {
        const QHash<QString, QRegularExpression> layout = {
            {"music", QRegularExpression("^track(0[1-9]|1[0-2])\\.mp3$")},
            {"clip", QRegularExpression("^(ad0[1-6]\\.mp3|ad_video01\\.mp4)$")},
            {"video", QRegularExpression("^clip0[1-4]\\.mp4$")},
            {"photo", QRegularExpression("^photo0[1-8]\\.jpg$")}};
        const QRegularExpression images(
            QStringLiteral("^%1files/(covers/cover0[1-8]|photo/photo0[1-8])\\.jpg$")
                .arg(QRegularExpression::escape(service->Origin())));
        QSet<QString> used;
        for (const QString& code : {QStringLiteral("demo-cafe"), QStringLiteral("demo-shop")}) {
            const QJsonObject configuration = ConfigurationOf(code);
            QCOMPARE(configuration.value("domains").toArray(), QJsonArray({service->MediaDomain()}));
            for (const QJsonValue& list : configuration.value("content").toArray()) {
                const QString type = list["type"].toString();
                QVERIFY2(layout.contains(type), qPrintable(type));
                for (const QJsonValue& track : list["tracks"].toArray()) {
                    const QString path = track["path"].toString();
                    QVERIFY2(layout.value(type).match(path).hasMatch(), qPrintable(type + '/' + path));
                    used.insert(type + '/' + path);
                    const QString image = track["image"].toString();
                    QVERIFY2(image.isEmpty() || images.match(image).hasMatch(), qPrintable(image));
                }
            }
        }
        // Between them the two points of sale use every generated file.
        QCOMPARE(used.size(), 12 + 7 + 4 + 8);
    }

    // The content screens list at least two playlists of each kind, one chosen,
    // none of them empty.
    void catalogueFillsTheContentScreens()
    {
        for (const QString& type :
             {QStringLiteral("stock_music"), QStringLiteral("video"), QStringLiteral("photo")}) {
            const QJsonArray playlists = Get("demo-cafe", "playlists/" + type).value("playlists").toArray();
            QVERIFY2(playlists.size() >= 2, qPrintable(type));
            bool anyActive = false;
            for (const QJsonValue& playlist : playlists) {
                anyActive = anyActive || playlist["active"].toBool();
                const QString path = "playlists/" + type + '/' + QString::number(playlist["id"].toInt());
                QVERIFY2(!Get("demo-cafe", path).value("data")["tracks"].toArray().isEmpty(),
                         qPrintable(path));
            }
            QVERIFY2(anyActive, qPrintable(type));
        }
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceDemoTest)
#include "tst_reference_service_demo.moc"
