#pragma once

#include "tools/reference_service/content_library.h"
#include "tools/reference_service/service_addresses.h"
#include "tools/reference_service/service_state.h"

#include <QDate>
#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace ReferenceService {

// Turns a playback object's configuration template into the configuration the
// player receives on a given day: dated days and ad entries, the service's own
// download domain, each track's size and MD5 taken from the file in the content
// folder, and the likes received so far.
//
// The version changes whenever what the player would store changes, apart from
// likes (the player records those itself): it is a digest of the built
// configuration, so a new day, a replaced template or a changed file all bring a
// new version. A template's own "version", or one set through the control API,
// replaces the digest; bumps are added on top of either.
class ConfigurationBuilder
{
public:
    struct Result
    {
        QJsonObject configuration;
        int version = 0;
    };

    ConfigurationBuilder(const ContentLibrary& content, const ServiceAddresses& addresses);

    Result Build(const ServiceState::ObjectState& object, const QDate& today) const;
    // Relative paths the template names that are not in the content folder.
    QStringList MissingFiles(const ConfigurationTemplate& configuration) const;

    static QString DateText(const QDate& date);
    static QString WeekdayName(int dayOfWeek);

private:
    QJsonArray BuildSchedule(const QJsonArray& days, const QDate& today) const;
    QJsonArray BuildAds(const QJsonArray& blocks, const QDate& today) const;
    QJsonArray BuildContent(const QJsonArray& lists, int shopId) const;
    QJsonObject BuildTrack(QJsonObject track, const QString& type, int shopId) const;

    const ContentLibrary& content;
    const ServiceAddresses& addresses;
};

} // namespace ReferenceService
