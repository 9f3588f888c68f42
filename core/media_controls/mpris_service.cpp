#include "core/media_controls/mpris_service.h"

#include "core/content_playing/player.h"
#include "core/media_controls/mpris_player_adaptor.h"
#include "core/media_controls/mpris_root_adaptor.h"
#include "core/utilities/logger.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QStringList>

#include <cmath>

namespace Core::MediaControls {

using ContentPlaying::Player;
using ContentPlaying::PlayerState;
using DataTypes::Playback::ContentType;

namespace {

const char* const PropertiesInterface = "org.freedesktop.DBus.Properties";
const char* const PlayerInterface = "org.mpris.MediaPlayer2.Player";
// The protocol's own path for "nothing is playing".
const char* const NoTrackPath = "/org/mpris/MediaPlayer2/TrackList/NoTrack";
const char* const Unavailable = "Управление с панели рабочего стола недоступно: ";

QString TrackPath(std::int64_t id)
{
    // Object path elements take no minus sign.
    const QString number = id < 0 ? QStringLiteral("n") + QString::number(-id) : QString::number(id);
    return QStringLiteral("/org/zelmar_player/track/") + number;
}

} // namespace

MprisService::MprisService(QObject* parent)
    : QObject(parent)
    , bus(QString())
{
    // What was announced is compared with what is so now; a track id compares by
    // its path only once QVariant knows how, otherwise every look is a change.
    QMetaType::registerEqualsComparator<QDBusObjectPath>();
    // Owned by this object as their parent, and published with it.
    new MprisRootAdaptor(*this);
    new MprisPlayerAdaptor(*this);
}

MprisService::~MprisService()
{
    Follow(nullptr);
    if (serving) {
        bus.unregisterObject(QString::fromLatin1(ObjectPath));
        bus.unregisterService(QString::fromLatin1(ServiceName));
    }
}

bool MprisService::Start(const QDBusConnection& connection)
{
    if (serving) {
        return true;
    }
    if (!connection.isConnected()) {
        Utilities::Logger::Log(std::string(Unavailable) + "нет сеансовой шины D-Bus");
        return false;
    }
    // The object first: a panel that sees the name appear asks it at once.
    QDBusConnection published(connection);
    if (!published.registerObject(QString::fromLatin1(ObjectPath), this, QDBusConnection::ExportAdaptors)) {
        Utilities::Logger::Log(std::string(Unavailable) + "не удалось опубликовать объект " + ObjectPath);
        return false;
    }
    // Another copy of the program keeps the name; this one plays on without it.
    QDBusConnectionInterface* names = published.interface();
    const bool named = names && names->registerService(QString::fromLatin1(ServiceName),
                                                       QDBusConnectionInterface::DontQueueService,
                                                       QDBusConnectionInterface::DontAllowReplacement)
                                        .value() == QDBusConnectionInterface::ServiceRegistered;
    if (!named) {
        published.unregisterObject(QString::fromLatin1(ObjectPath));
        Utilities::Logger::Log(std::string(Unavailable) + "имя " + ServiceName +
                               " занято другой копией плеера");
        return false;
    }
    bus = published;
    serving = true;
    announced = AnnouncedProperties();
    return true;
}

bool MprisService::IsServing() const
{
    return serving;
}

void MprisService::Follow(const std::shared_ptr<Player>& newPlayer)
{
    const auto current = player.lock();
    if (current == newPlayer) {
        return;
    }
    if (current) {
        current->RemoveObserver(this);
    }
    player = newPlayer;
    seenTrack.clear();
    lengthMeasured = false;
    if (newPlayer) {
        newPlayer->AddObserver(this);
        // Followed in the middle of a track: what it says of it is its own.
        const PlayerState state = newPlayer->CurrentState();
        seenTrack = TrackKey(state);
        const auto music = state.contentPlayingStates.find(ContentType::Music);
        lengthMeasured = music != state.contentPlayingStates.end() && music->second.progress > 0;
    }
    Announce();
}

QString MprisService::PlaybackStatus() const
{
    const auto current = player.lock();
    if (!current) {
        return QStringLiteral("Stopped");
    }
    // The player's "off" resumes with "Play", which for a panel is a pause.
    return current->CurrentState().playingNow ? QStringLiteral("Playing") : QStringLiteral("Paused");
}

QVariantMap MprisService::Metadata() const
{
    QVariantMap metadata;
    const auto current = player.lock();
    const PlayerState state = current ? current->CurrentState() : PlayerState();
    const auto music = state.contentPlayingStates.find(ContentType::Music);
    if (!current || music == state.contentPlayingStates.end() || music->second.trackTitle.empty()) {
        metadata.insert(QStringLiteral("mpris:trackid"),
                        QVariant::fromValue(QDBusObjectPath(QString::fromLatin1(NoTrackPath))));
        return metadata;
    }
    const auto& track = music->second;
    metadata.insert(QStringLiteral("mpris:trackid"),
                    QVariant::fromValue(QDBusObjectPath(TrackPath(track.trackIdentifier))));
    metadata.insert(QStringLiteral("xesam:title"), QString::fromStdString(track.trackTitle));
    if (!track.trackSubtitle.empty()) {
        metadata.insert(QStringLiteral("xesam:artist"),
                        QStringList{QString::fromStdString(track.trackSubtitle)});
    }
    // Whole milliseconds: the media library refines a file's length as it plays,
    // and a panel need not hear of every microsecond.
    if (track.durationSeconds > 0 && lengthMeasured && TrackKey(state) == seenTrack) {
        metadata.insert(QStringLiteral("mpris:length"),
                        static_cast<qlonglong>(std::llround(track.durationSeconds * 1000.0)) * 1000);
    }
    // The cover the now-playing screen shows: the track's own, else its playlist's.
    std::string cover = track.playlistImage;
    for (const auto& scheduled : current->GetCurrentTracks(ContentType::Music)) {
        if (scheduled.id == track.trackIdentifier && !scheduled.image.empty()) {
            cover = scheduled.image;
        }
    }
    if (!cover.empty()) {
        metadata.insert(QStringLiteral("mpris:artUrl"), QString::fromStdString(cover));
    }
    return metadata;
}

qlonglong MprisService::PositionMicroseconds() const
{
    const auto current = player.lock();
    if (!current) {
        return 0;
    }
    const PlayerState state = current->CurrentState();
    const auto music = state.contentPlayingStates.find(ContentType::Music);
    if (music == state.contentPlayingStates.end() || !lengthMeasured || TrackKey(state) != seenTrack) {
        return 0;
    }
    return std::llround(music->second.progress * music->second.durationSeconds * 1000000.0);
}

bool MprisService::CanPlay() const
{
    return !player.expired();
}

bool MprisService::CanGoBetweenTracks() const
{
    const auto current = player.lock();
    return current && current->CurrentState().playingNow;
}

void MprisService::Play()
{
    SetPlaying(true);
}

void MprisService::Pause()
{
    SetPlaying(false);
}

void MprisService::PlayPause()
{
    if (const auto current = player.lock()) {
        current->TogglePlayback();
    }
}

void MprisService::Next()
{
    if (const auto current = player.lock()) {
        current->GoToNextTrack(ContentType::Music);
    }
}

void MprisService::Previous()
{
    if (const auto current = player.lock()) {
        current->GoToPreviousTrack(ContentType::Music);
    }
}

void MprisService::Raise()
{
    emit raiseRequested();
}

void MprisService::SetPlaying(bool playing)
{
    const auto current = player.lock();
    if (current && current->CurrentState().playingNow != playing) {
        current->TogglePlayback();
    }
}

void MprisService::PlayerDidChangePeriod(const Player&, const ContentPlaying::PlayablePeriod&)
{
    Announce();
}

void MprisService::PlayerDidChangeState(const Player&, PlayerState state)
{
    NoteTrack(state);
    Announce();
}

void MprisService::NoteTrack(const PlayerState& state)
{
    const std::string key = TrackKey(state);
    // The first word of a track is its start; any later one of the same track
    // comes after the player has measured it.
    lengthMeasured = key == seenTrack && !key.empty();
    seenTrack = key;
}

std::string MprisService::TrackKey(const PlayerState& state)
{
    const auto music = state.contentPlayingStates.find(ContentType::Music);
    if (music == state.contentPlayingStates.end() || music->second.trackTitle.empty()) {
        return {};
    }
    return std::to_string(music->second.trackIdentifier) + '\n' + music->second.trackTitle;
}

void MprisService::PlayerDidStartPlayingTrack(const Player&, ContentType, const DataTypes::Playback::Track&,
                                              bool)
{
    Announce();
}

QVariantMap MprisService::AnnouncedProperties() const
{
    return {{QStringLiteral("PlaybackStatus"), PlaybackStatus()},
            {QStringLiteral("Metadata"), Metadata()},
            {QStringLiteral("CanPlay"), CanPlay()},
            {QStringLiteral("CanPause"), CanPlay()},
            {QStringLiteral("CanGoNext"), CanGoBetweenTracks()},
            {QStringLiteral("CanGoPrevious"), CanGoBetweenTracks()}};
}

void MprisService::Announce()
{
    if (!serving) {
        return;
    }
    const QVariantMap now = AnnouncedProperties();
    QVariantMap changed;
    for (auto it = now.cbegin(); it != now.cend(); ++it) {
        if (announced.value(it.key()) != it.value()) {
            changed.insert(it.key(), it.value());
        }
    }
    announced = now;
    if (changed.isEmpty()) {
        return;
    }
    QDBusMessage signal =
        QDBusMessage::createSignal(QString::fromLatin1(ObjectPath), QString::fromLatin1(PropertiesInterface),
                                   QStringLiteral("PropertiesChanged"));
    signal << QString::fromLatin1(PlayerInterface) << changed << QStringList();
    bus.send(signal);
}

} // namespace Core::MediaControls
