#include "tests/core/user_environment/shop_session.h"

#include "core/utilities/clock.h"
#include "tests/support/call_outcome.h"
#include "tests/support/test_media.h"
#include "tests/support/test_timeouts.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace Tests {

using Core::UserEnvironment;

std::unique_ptr<ReferenceService> ShopSession::StartedServing(const QString& contentDirectory,
                                                              const QStringList& media, QString* error)
{
    const QDir content(contentDirectory);
    for (const QString& file : media) {
        const QString source = TestMedia::Path(QFileInfo(file).fileName());
        if (source.isEmpty()) {
            *error = QStringLiteral("no generated %1: register the test with NEEDS media").arg(file);
            return nullptr;
        }
        if (!content.mkpath(QFileInfo(file).path()) || !QFile::copy(source, content.filePath(file))) {
            *error = QStringLiteral("%1 cannot be copied into %2").arg(file, contentDirectory);
            return nullptr;
        }
    }
    return ReferenceService::Started(QStringLiteral("basic"), error, contentDirectory);
}

Core::DataTypes::Auth::Server ShopSession::ServerOf(const ReferenceService& service)
{
    Core::DataTypes::Auth::Server server;
    server.id = 1;
    server.name = "Тестовый сервер";
    server.url = service.BaseUrl().toStdString();
    return server;
}

Core::DataTypes::Auth::PlaybackObject ShopSession::Shop()
{
    Core::DataTypes::Auth::PlaybackObject shop;
    shop.id = ShopId;
    shop.code = "shop1";
    shop.name = "Кофейня";
    return shop;
}

QJsonObject ShopSession::Period(const QString& name, const QString& start, const QString& end,
                                int musicPlaylist, int contentVolume, int adsVolume)
{
    return {{"name", name},
            {"start_time_str", start},
            {"end_time_str", end},
            {"content_volume", contentVolume},
            {"ads_volume", adsVolume},
            {"schedule_id", 7},
            {"schedule_name", "Будни"},
            {"music_playlist_id", musicPlaylist},
            {"video_playlist_id", 0},
            {"photo_playlist_id", 0}};
}

QJsonObject ShopSession::MusicPlaylist(int id, const QString& name, const QList<int>& tracks)
{
    QJsonArray ids;
    for (const int track : tracks) {
        ids.append(track);
    }
    return {{"id", id}, {"name", name}, {"content_type", "music"}, {"image", ""}, {"tracks", ids}};
}

QJsonObject ShopSession::AdBlock(const QString& start)
{
    return {{"name", "Полдень"},
            {"interrupt_content", true},
            {"start_time_str", start},
            {"tracks", QJsonArray{QJsonObject{{"track", AdTrack}, {"day_offset", 0}}}}};
}

QJsonObject ShopSession::Schedule(const QJsonArray& periods, const QJsonArray& playlists,
                                  const QJsonArray& ads, const QString& firstMusicFile)
{
    const QJsonArray music{QJsonObject{{"id", 1}, {"path", firstMusicFile}},
                           QJsonObject{{"id", 2}, {"path", "music_b.mp3"}},
                           QJsonObject{{"id", 3}, {"path", "music_c.mp3"}}};
    const QJsonArray clips{QJsonObject{{"id", AdTrack}, {"path", "ad_short.mp3"}}};
    return {{"schedule", QJsonArray{QJsonObject{{"day_offset", 0}, {"periods", periods}}}},
            {"playlists", playlists},
            {"ads", ads},
            {"content", QJsonArray{QJsonObject{{"type", "clip"}, {"tracks", clips}},
                                   QJsonObject{{"type", "music"}, {"tracks", music}},
                                   QJsonObject{{"type", "video"}, {"tracks", QJsonArray()}},
                                   QJsonObject{{"type", "photo"}, {"tracks", QJsonArray()}}}}};
}

std::shared_ptr<UserEnvironment> ShopSession::SignedIn(const Core::DataTypes::Auth::Server& server,
                                                       const Core::DataTypes::Auth::PlaybackObject& shop,
                                                       QString* error)
{
    CallOutcome<std::shared_ptr<UserEnvironment>, Core::DataTypes::Error> signIn;
    UserEnvironment::CreateAndStoreEnvironment(server, shop, "owner", "secret", signIn.Success(),
                                               signIn.Failure());
    if (!QTest::qWaitFor([&signIn]() { return signIn.Calls() > 0; }, Timeouts::Process)) {
        *error = QStringLiteral("the sign-in did not answer");
    } else if (!signIn.value) {
        *error = signIn.Describe();
    }
    return signIn.value;
}

bool ShopSession::LoadSchedule(UserEnvironment& environment, QString* error)
{
    CallOutcome<bool, Core::DataTypes::Error> loading;
    const auto loaded = loading.Success();
    environment.LoadPlaybackConfiguration([loaded](bool updated, const std::string&) { loaded(updated); },
                                          loading.Failure());
    if (!QTest::qWaitFor([&loading]() { return loading.Calls() > 0; }, Timeouts::Process)) {
        *error = QStringLiteral("the configuration did not load");
        return false;
    }
    if (loading.successes != 1) {
        *error = loading.Describe();
        return false;
    }
    return true;
}

void ShopSession::ForgetSession()
{
    UserEnvironment::ForgetProcessStateForTesting();
    UserEnvironment::ResetTimingForTesting();
    Core::Utilities::Clock::ResetForTesting();
    // A released environment goes on the next pass of the event loop.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

bool ShopSession::StoredAsAfterRestart(const Core::DataTypes::Auth::Server& server, QString* error)
{
    auto earlier = SignedIn(server, Shop(), error);
    if (!earlier || !LoadSchedule(*earlier, error)) {
        return false;
    }
    earlier.reset();
    UserEnvironment::ForgetProcessStateForTesting();
    return true;
}

bool ShopSession::AlignServiceClock(ReferenceService& service)
{
    const auto shift = Core::Utilities::Clock::CurrentSecsSinceEpoch() - QDateTime::currentSecsSinceEpoch();
    return service.ShiftClock(static_cast<int>(shift));
}

} // namespace Tests
