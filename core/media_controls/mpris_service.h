#pragma once

#include "core/content_playing/player_observer.h"
#include "core/content_playing/player_state.h"

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QVariantMap>

#include <memory>
#include <string>

namespace Core::MediaControls {

// The player as desktop panels and media keys see it: the MPRIS 2 service on the
// session bus. It shows the music that plays (the ads and the video are the
// schedule's business, not the panel's) and passes play, pause, next and previous
// to the player the screens use. Without a session bus, or with the name held by
// another copy of the program, it says so once in the event log and the program
// plays on without it. Qt main thread only.
class MprisService : public QObject, public ContentPlaying::PlayerObserver
{
    Q_OBJECT

public:
    static constexpr const char* ServiceName = "org.mpris.MediaPlayer2.zelmar_player";
    static constexpr const char* ObjectPath = "/org/mpris/MediaPlayer2";

    explicit MprisService(QObject* parent = nullptr);
    ~MprisService() override;

    MprisService(const MprisService&) = delete;
    MprisService& operator=(const MprisService&) = delete;

    // Takes the name and publishes the object on `bus`; false (with one line in the
    // event log) when there is no bus or the name is taken.
    bool Start(const QDBusConnection& bus = QDBusConnection::sessionBus());
    bool IsServing() const;

    // The player the screens show now; an empty pointer when there is none (signed
    // out). Not owned: the user environment keeps it.
    void Follow(const std::shared_ptr<ContentPlaying::Player>& player);

    // What the adaptors publish and do.
    QString PlaybackStatus() const;
    QVariantMap Metadata() const;
    qlonglong PositionMicroseconds() const;
    bool CanPlay() const;
    bool CanGoBetweenTracks() const;
    void Play();
    void Pause();
    void PlayPause();
    void Next();
    void Previous();
    void Raise();

    // PlayerObserver
    void PlayerDidChangePeriod(const ContentPlaying::Player& player,
                               const ContentPlaying::PlayablePeriod& period) override;
    void PlayerDidChangeState(const ContentPlaying::Player& player,
                              ContentPlaying::PlayerState state) override;
    void PlayerDidStartPlayingTrack(const ContentPlaying::Player& player,
                                    DataTypes::Playback::ContentType type,
                                    const DataTypes::Playback::Track& track, bool resumed) override;

signals:
    // A panel asked to see the program; the window's owner shows it.
    void raiseRequested();

private:
    // Compares what the panel was last told with the player's state and announces
    // what changed. Progress alone changes nothing a panel is told about: it asks
    // for the position when it wants it.
    void Announce();
    QVariantMap AnnouncedProperties() const;
    void SetPlaying(bool playing);
    // Follows the music track in `state`: a new one's length is not known until
    // the player reports progress on it.
    void NoteTrack(const ContentPlaying::PlayerState& state);
    static std::string TrackKey(const ContentPlaying::PlayerState& state);

    QDBusConnection bus;
    bool serving = false;
    std::weak_ptr<ContentPlaying::Player> player;
    QVariantMap announced;
    // At a track's start the player's state still holds the previous track's
    // length and position; they are the new one's from its first progress report.
    std::string seenTrack;
    bool lengthMeasured = false;
};

} // namespace Core::MediaControls
