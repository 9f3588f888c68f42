#include "core/media_controls/mpris_root_adaptor.h"

#include "core/media_controls/mpris_service.h"

namespace Core::MediaControls {

MprisRootAdaptor::MprisRootAdaptor(MprisService& service)
    : QDBusAbstractAdaptor(&service)
    , service(service)
{
}

MprisRootAdaptor::~MprisRootAdaptor() = default;

QString MprisRootAdaptor::Identity() const
{
    return QStringLiteral("Zelmar Player");
}

QString MprisRootAdaptor::DesktopEntry() const
{
    return QStringLiteral("zelmar-player");
}

bool MprisRootAdaptor::CanQuit() const
{
    return false;
}

bool MprisRootAdaptor::CanRaise() const
{
    return true;
}

bool MprisRootAdaptor::HasTrackList() const
{
    return false;
}

QStringList MprisRootAdaptor::SupportedUriSchemes() const
{
    return {};
}

QStringList MprisRootAdaptor::SupportedMimeTypes() const
{
    return {};
}

void MprisRootAdaptor::Raise()
{
    service.Raise();
}

void MprisRootAdaptor::Quit() {}

} // namespace Core::MediaControls
