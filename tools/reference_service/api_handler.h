#pragma once

#include "tools/reference_service/configuration_builder.h"
#include "tools/reference_service/incoming_request.h"
#include "tools/reference_service/object_endpoints.h"
#include "tools/reference_service/recorder.h"
#include "tools/reference_service/reply.h"
#include "tools/reference_service/scenario.h"
#include "tools/reference_service/service_addresses.h"
#include "tools/reference_service/service_state.h"

#include <QString>
#include <QStringList>

namespace ReferenceService {

// The server API under "/api/v1/" and the servers list: finds which endpoint a
// request is for, answers the sign-in family itself, checks the token of every
// authorized request and hands those to ObjectEndpoints.
//
// URLs are those the player builds: plain ones are the base URL followed by the
// path ("auth/sign_in"), authorized ones the base URL, the object's code and the
// path ("<code>/playback/version"), and account deletion the base URL followed by
// "/delete_account", double slash included.
class ApiHandler
{
public:
    ApiHandler(const Scenario& scenario, ServiceState& state, Recorder& recorder,
               const ConfigurationBuilder& builder, const ServiceAddresses& addresses);

    // The endpoint's name, which fault targets use ("servers", "auth/sign_in",
    // "playback/version", "playlists/tracks", ...), "unknown" for any other path of
    // the API, or an empty string when the path is not the API's.
    static QString EndpointOf(const IncomingRequest& request);
    static const QStringList& Endpoints();

    Reply Handle(const IncomingRequest& request, const QString& endpoint);

private:
    Reply Servers(const IncomingRequest& request) const;
    Reply SendConfirmationCode(const IncomingRequest& request);
    Reply Catalogue(const QString& key, const QJsonArray& items) const;
    Reply Objects(const IncomingRequest& request);
    Reply SignIn(const IncomingRequest& request);
    Reply SignUp(const IncomingRequest& request);
    Reply DeleteAccount(const IncomingRequest& request);
    Reply Authorized(const IncomingRequest& request, const QString& endpoint);

    const Scenario& scenario;
    ServiceState& state;
    Recorder& recorder;
    const ServiceAddresses& addresses;
    ObjectEndpoints objectEndpoints;
};

} // namespace ReferenceService
