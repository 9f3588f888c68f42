#include "core/data_types/api_error.h"
#include "core/data_types/error.h"
#include "core/data_types/json_deserialization_error.h"
#include "core/data_types/network_error.h"
#include "core/data_types/playback/content_type.h"
#include "core/data_types/playback/playback_configuration.h"
#include "core/data_types/playback/playback_period.h"
#include "core/data_types/playlists/playlist_content_type.h"

#include <QtTest>

#include <set>
#include <string>

using namespace Core::DataTypes;
using Playback::ContentType;

Q_DECLARE_METATYPE(ContentType)

namespace {

// The six yes/no questions in slot order.
std::vector<bool> Answers(const Error& error)
{
    return {error.IsWrongTokenError(),
            error.IsNoCertificateError(),
            error.IsAccountIsBlockedError(),
            error.IsPlayerControlDisabledError(),
            error.IsCurrentIntervalNotFoundError(),
            error.IsObjectExportedError()};
}

} // namespace

class DataTypesTest : public QObject
{
    Q_OBJECT

private slots:
    // Only the three exact names are known kinds; anything else the server sends
    // is shown as a photo and written back as "photo".
    void fromStringIsExactAndFallsBackToPhoto_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<ContentType>("expected");
        QTest::newRow("clip") << "clip" << ContentType::Clip;
        QTest::newRow("music") << "music" << ContentType::Music;
        QTest::newRow("video") << "video" << ContentType::Video;
        QTest::newRow("capital letter") << "Music" << ContentType::Photo;
    }

    void fromStringIsExactAndFallsBackToPhoto()
    {
        QFETCH(QString, text);
        QFETCH(ContentType, expected);
        const ContentType type = Playback::ContentTypeFromString(text.toStdString());
        QCOMPARE(type, expected);
        const QString back = QString::fromStdString(Playback::ContentTypeToString(type));
        QCOMPARE(back, expected == ContentType::Photo ? QStringLiteral("photo") : text);
        QCOMPARE(Playback::ContentTypeToString(static_cast<ContentType>(-1)), std::string("photo"));
    }

    // Database rows and the stored content list rely on this order; the catalogue
    // shares 1 to 3 with the schedule, but its 0 is not advertising; a new period
    // holds exactly the keys readers use checked access on (advertising has none).
    void orderAndKeysTheCodeReliesOn()
    {
        QCOMPARE(Playback::AllContentTypes(),
                 std::vector<ContentType>(
                     {ContentType::Clip, ContentType::Music, ContentType::Video, ContentType::Photo}));
        QCOMPARE(Playlists::PlaylistContentTypeToString(Playlists::PlaylistContentType::StockMusic),
                 std::string("stock_music"));
        for (int value = 1; value <= 3; ++value) {
            QCOMPARE(
                Playlists::PlaylistContentTypeToString(static_cast<Playlists::PlaylistContentType>(value)),
                Playback::ContentTypeToString(static_cast<ContentType>(value)));
        }
        QCOMPARE(Playlists::PlaylistContentTypeToString(static_cast<Playlists::PlaylistContentType>(9)),
                 std::string("photo"));
        QCOMPARE(Playback::PlaybackPeriod().playlistIds,
                 (std::map<ContentType, std::int32_t>{
                     {ContentType::Music, 0}, {ContentType::Video, 0}, {ContentType::Photo, 0}}));
    }

    void equalityNoticesEveryNestedField()
    {
        Playback::PlaybackConfiguration a;
        a.days.resize(1);
        a.days[0].periods.resize(1);
        a.tracks[ContentType::Music].resize(1);
        a.adBlocks.resize(1);
        a.adBlocks[0].tracks.push_back({"21.11.2026", 5});

        auto b = a;
        QVERIFY(a == b);
        b.days[0].periods[0].playlistIds.at(ContentType::Photo) = 1;
        QVERIFY(a != b);
        b = a;
        b.tracks[ContentType::Music][0].likeStatus = Playback::LikeStatus::Liked;
        QVERIFY(a != b);
        b = a;
        b.adBlocks[0].tracks[0].date = "22.11.2026";
        QVERIFY(a != b);
        b = a;
        b.tracks[ContentType::Photo];
        QVERIFY2(a != b, "an empty list under a new key is still a difference");
    }

    void eachApiCodeAnswersExactlyOnePredicate_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("predicate");
        QTest::newRow("wrong token") << 403010 << 0;
        QTest::newRow("no certificate") << 403008 << 1;
        QTest::newRow("account blocked") << 403003 << 2;
        QTest::newRow("player control disabled") << 403001 << 3;
        QTest::newRow("current interval not found") << 404007 << 4;
        QTest::newRow("object exported") << 403013 << 5;
    }

    void eachApiCodeAnswersExactlyOnePredicate()
    {
        QFETCH(int, code);
        QFETCH(int, predicate);
        // Held as the base types callers use: the answers must survive the upcast.
        const std::shared_ptr<NetworkError> asNetwork = std::make_shared<ApiError>("текст", code);
        const std::shared_ptr<Error> asError = asNetwork;
        std::vector<bool> expected(6, false);
        expected[static_cast<std::size_t>(predicate)] = true;
        QCOMPARE(Answers(*asNetwork), expected);
        QCOMPARE(Answers(*asError), expected);
    }

    void unknownOrMissingCodeAnswersNothing()
    {
        const std::vector<bool> none(6, false);
        QCOMPARE(Answers(ApiError()), none);
        QCOMPARE(Answers(ApiError("Неверный токен авторизации", 403011)), none);
        // The same text without the code is not the condition.
        QCOMPARE(Answers(NetworkError("Неверный токен авторизации")), none);
        QCOMPARE(Answers(*Error::CreateDataBaseError()), none);
    }

    // Each family names itself before the message, through the base pointer the
    // event log is given; the server's text is what a person reads, without its code.
    void toStringKeepsTheMessageAndNamesTheFamily()
    {
        const std::vector<std::shared_ptr<Error>> errors{
            std::make_shared<Error>("сбой"), std::make_shared<NetworkError>("сбой"),
            std::make_shared<ApiError>("сбой", 403003), std::make_shared<JsonDeserializationError>("сбой")};
        std::set<std::string> prefixes;
        for (const auto& error : errors) {
            const std::string text = error->ToString();
            QVERIFY2(text.size() > 8 && text.compare(text.size() - 8, 8, "сбой") == 0, text.c_str());
            prefixes.insert(text.substr(0, text.size() - 8));
        }
        QCOMPARE(prefixes.size(), errors.size());
        QCOMPARE(QString::fromStdString(ApiError("Аккаунт заблокирован", 403003).ToString()),
                 QStringLiteral("Ошибка: Аккаунт заблокирован"));
        QVERIFY(Error::CreateReadFileError()->message != Error::CreateDataBaseError()->message);
    }
};

QTEST_GUILESS_MAIN(DataTypesTest)
#include "tst_data_types.moc"
