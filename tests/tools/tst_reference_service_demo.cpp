#include "tests/support/reference_service.h"
#include "tests/tools/api_client.h"

#include <memory>

using Tests::ApiClient;

// The demo scenario, read through the service as the player reads it: both points
// of sale have a week of days covered from midnight to midnight by periods that
// name playlists of their own kind, and media named by the layout
// scripts/make-demo-content writes.
class ReferenceServiceDemoTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Tests::ReferenceService> service;

    static int Minutes(const QJsonValue& time, bool isEnd)
    {
        const int minutes = QTime::fromString(time.toString(), "hh:mm").msecsSinceStartOfDay() / 60000;
        return isEnd && minutes == 0 ? 24 * 60 : minutes;
    }

private slots:
    void initTestCase()
    {
        service = std::make_unique<Tests::ReferenceService>(Tests::ReferenceService::SourceDirectory() +
                                                            "/demo/scenario");
        QVERIFY2(service->Start(), qPrintable(service->ErrorString()));
    }

    void cleanupTestCase()
    {
        QVERIFY2(service->Stop(), qPrintable(service->ErrorString()));
    }

    void everyDayIsCoveredWithPlaylistsOfTheDemoContent()
    {
        const ApiClient client(service->Origin());
        const auto objects = client.Post("/api/v1/auth/objects", R"({"login":"demo","password":"demo"})");
        QStringList codes;
        for (const QJsonValue& object : objects.Json().value("objects").toArray()) {
            codes << object["code"].toString();
        }
        QCOMPARE(codes, QStringList({"demo-cafe", "demo-shop"}));
        const QHash<QString, QRegularExpression> layout = {
            {"music", QRegularExpression("^track(0[1-9]|1[0-2])\\.mp3$")},
            {"clip", QRegularExpression("^(ad0[1-6]\\.mp3|ad_video01\\.mp4)$")},
            {"video", QRegularExpression("^clip0[1-4]\\.mp4$")},
            {"photo", QRegularExpression("^photo0[1-8]\\.jpg$")}};
        QSet<QString> used;
        for (const QString& code : codes) {
            const QString token = client.SignIn("demo", "demo", code);
            const QJsonObject configuration =
                client.Get("/api/v1/" + code + "/playback/configuration_v2?timestamp=1&lang=ru", token)
                    .Json()["configuration"]
                    .toObject();
            QCOMPARE(configuration.value("domains").toArray(), QJsonArray({service->MediaDomain()}));
            for (const QJsonValue& list : configuration.value("content").toArray()) {
                const QString type = list["type"].toString();
                for (const QJsonValue& track : list["tracks"].toArray()) {
                    QVERIFY2(layout.value(type).match(track["path"].toString()).hasMatch(),
                             qPrintable(type + '/' + track["path"].toString()));
                    used.insert(type + '/' + track["path"].toString());
                }
            }
            QHash<int, QString> kinds;
            for (const QJsonValue& playlist : configuration.value("playlists").toArray()) {
                kinds.insert(playlist["id"].toInt(), playlist["content_type"].toString());
                QVERIFY(!playlist["tracks"].toArray().isEmpty());
            }
            const QJsonArray days = configuration.value("schedule").toArray();
            QCOMPARE(days.size(), 7);
            for (const QJsonValue& day : days) {
                int reached = 0;
                for (const QJsonValue& period : day["periods"].toArray()) {
                    QCOMPARE(Minutes(period["start_time_str"], false), reached);
                    reached = Minutes(period["end_time_str"], true);
                    QCOMPARE(kinds.value(period["music_playlist_id"].toInt()), "music");
                    for (const QString& kind : {QStringLiteral("video"), QStringLiteral("photo")}) {
                        const int id = period[kind + "_playlist_id"].toInt();
                        QVERIFY2(id == 0 || kinds.value(id) == kind, qPrintable(code + ' ' + kind));
                    }
                }
                QCOMPARE(reached, 24 * 60);
            }
            QVERIFY(!configuration.value("ads").toArray().isEmpty());
        }
        // Between them the two points of sale use every generated file.
        QCOMPARE(used.size(), 12 + 7 + 4 + 8);
    }
};

QTEST_GUILESS_MAIN(ReferenceServiceDemoTest)
#include "tst_reference_service_demo.moc"
