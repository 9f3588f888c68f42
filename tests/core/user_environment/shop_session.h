#pragma once

#include "core/data_types/auth/playback_object.h"
#include "core/data_types/auth/server.h"
#include "core/user_environment.h"
#include "tests/support/reference_service.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

namespace Tests {

// The point of sale "shop1" of the reference service's basic scenario, signed in as
// its owner: what the user environment tests start from. Schedules are built for
// the test day (day offset 0) from music tracks 1, 2 and 3 (music_a/b/c.mp3) and the
// ad track 41 (ad_short.mp3).
class ShopSession
{
public:
    ShopSession() = delete;

    static constexpr int ShopId = 101;
    static constexpr int AdTrack = 41;

    // The service on the basic scenario, serving the generated media named by
    // `media` ("music/music_a.mp3": folder and file) from `contentDirectory`; null
    // with the reason in *error.
    static std::unique_ptr<ReferenceService> StartedServing(const QString& contentDirectory,
                                                            const QStringList& media, QString* error);
    static Core::DataTypes::Auth::Server ServerOf(const ReferenceService& service);
    static Core::DataTypes::Auth::PlaybackObject Shop();

    // A period of the "Будни" schedule playing music playlist `musicPlaylist`.
    static QJsonObject Period(const QString& name, const QString& start, const QString& end,
                              int musicPlaylist, int contentVolume = 100, int adsVolume = 100);
    static QJsonObject MusicPlaylist(int id, const QString& name, const QList<int>& tracks);
    // An interrupting ad block of the ad track at `start` on the test day.
    static QJsonObject AdBlock(const QString& start);
    // The test day's schedule template; `firstMusicFile` is track 1's file.
    static QJsonObject Schedule(const QJsonArray& periods, const QJsonArray& playlists,
                                const QJsonArray& ads = QJsonArray(),
                                const QString& firstMusicFile = QStringLiteral("music_a.mp3"));

    // Signed in as the owner on `shop`; null with the reason in *error.
    static std::shared_ptr<Core::UserEnvironment> SignedIn(const Core::DataTypes::Auth::Server& server,
                                                           const Core::DataTypes::Auth::PlaybackObject& shop,
                                                           QString* error);
    // The configuration loaded and stored; false with the reason in *error.
    static bool LoadSchedule(Core::UserEnvironment& environment, QString* error);
    // What a test leaves behind for the next one: no current environment, the
    // program's own timing and clock, released environments gone.
    static void ForgetSession();
    // Signs in to `server` with the shop, stores its schedule and forgets the
    // environment, as after a restart: what a window opened next finds.
    static bool StoredAsAfterRestart(const Core::DataTypes::Auth::Server& server, QString* error);
    // Moves the service's clock to the one the test set on the player's side, so
    // that a faked hour does not look like a computer clock gone wrong.
    static bool AlignServiceClock(ReferenceService& service);
};

} // namespace Tests
