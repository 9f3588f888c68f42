#pragma once

#include "tools/reference_service/configuration_builder.h"
#include "tools/reference_service/incoming_request.h"
#include "tools/reference_service/recorder.h"
#include "tools/reference_service/reply.h"
#include "tools/reference_service/scenario.h"
#include "tools/reference_service/service_addresses.h"
#include "tools/reference_service/service_state.h"

#include <QString>

#include <mutex>

namespace ReferenceService {

// The authorized endpoints of one playback object, reached once ApiHandler has
// accepted the token. Bodies are checked as strictly as the player is expected to
// build them; anything else is answered with 400000, so a client mistake shows up
// as an error instead of passing unnoticed.
class ObjectEndpoints
{
public:
    ObjectEndpoints(const Scenario& scenario, ServiceState& state, Recorder& recorder,
                    const ConfigurationBuilder& builder, const ServiceAddresses& addresses);

    // Called with the state locked through `lock`; may unlock it for slow work.
    Reply Handle(const IncomingRequest& request, const QString& endpoint, const QString& token,
                 ServiceState::ObjectState& object, std::unique_lock<std::mutex>& lock);

private:
    Reply Version(const IncomingRequest& request, ServiceState::ObjectState& object,
                  std::unique_lock<std::mutex>& lock) const;
    Reply Configuration(const IncomingRequest& request, ServiceState::ObjectState& object,
                        std::unique_lock<std::mutex>& lock) const;
    Reply PlayerVersion(const IncomingRequest& request, const ServiceState::ObjectState& object);
    Reply Recommended(const IncomingRequest& request) const;
    Reply SetBusinessType(const IncomingRequest& request, const ServiceState::ObjectState& object);
    Reply SetMusicStyles(const IncomingRequest& request, const ServiceState::ObjectState& object);
    Reply Playlists(const IncomingRequest& request, const ServiceState::ObjectState& object) const;
    Reply PlaylistTracks(const IncomingRequest& request, const ServiceState::ObjectState& object) const;
    Reply ChangePlaylist(const IncomingRequest& request, const QString& endpoint,
                         ServiceState::ObjectState& object);
    Reply Certificate(const ServiceState::ObjectState& object) const;
    Reply Statistics(const IncomingRequest& request, const ServiceState::ObjectState& object);
    Reply Like(const IncomingRequest& request, ServiceState::ObjectState& object);
    Reply SignOut(const IncomingRequest& request, const QString& token,
                  const ServiceState::ObjectState& object);

    const Scenario& scenario;
    ServiceState& state;
    Recorder& recorder;
    const ConfigurationBuilder& builder;
    const ServiceAddresses& addresses;
};

} // namespace ReferenceService
