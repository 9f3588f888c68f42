#include "core/media_controls/mpris_player_adaptor.h"

#include "core/media_controls/mpris_service.h"

namespace Core::MediaControls {

MprisPlayerAdaptor::MprisPlayerAdaptor(MprisService& service)
    : QDBusAbstractAdaptor(&service)
    , service(service)
{
}

MprisPlayerAdaptor::~MprisPlayerAdaptor() = default;

QString MprisPlayerAdaptor::PlaybackStatus() const
{
    return service.PlaybackStatus();
}

QVariantMap MprisPlayerAdaptor::Metadata() const
{
    return service.Metadata();
}

double MprisPlayerAdaptor::Rate() const
{
    return 1.0;
}

double MprisPlayerAdaptor::Volume() const
{
    return 1.0;
}

qlonglong MprisPlayerAdaptor::Position() const
{
    return service.PositionMicroseconds();
}

bool MprisPlayerAdaptor::CanGoNext() const
{
    return service.CanGoBetweenTracks();
}

bool MprisPlayerAdaptor::CanGoPrevious() const
{
    return service.CanGoBetweenTracks();
}

bool MprisPlayerAdaptor::CanPlay() const
{
    return service.CanPlay();
}

bool MprisPlayerAdaptor::CanPause() const
{
    return service.CanPlay();
}

bool MprisPlayerAdaptor::CanSeek() const
{
    return false;
}

bool MprisPlayerAdaptor::CanControl() const
{
    return true;
}

void MprisPlayerAdaptor::Play()
{
    service.Play();
}

void MprisPlayerAdaptor::Pause()
{
    service.Pause();
}

void MprisPlayerAdaptor::PlayPause()
{
    service.PlayPause();
}

void MprisPlayerAdaptor::Stop()
{
    service.Pause();
}

void MprisPlayerAdaptor::Next()
{
    service.Next();
}

void MprisPlayerAdaptor::Previous()
{
    service.Previous();
}

void MprisPlayerAdaptor::Seek(qlonglong) {}

void MprisPlayerAdaptor::SetPosition(const QDBusObjectPath&, qlonglong) {}

void MprisPlayerAdaptor::OpenUri(const QString&) {}

} // namespace Core::MediaControls
