#pragma once

#include "tools/reference_service/content_library.h"
#include "tools/reference_service/incoming_request.h"
#include "tools/reference_service/reply.h"
#include "tools/reference_service/service_state.h"

#include <QString>

namespace ReferenceService {

// Downloads. "media/<code>/<type>/<path>" is what the player asks for once a
// configuration's domain (the service's "@MEDIA_DOMAIN@") is followed by the
// object's code, the content type and the track's path; it serves
// <content>/<type>/<path> to a known object. "files/<path>" serves any file of the
// content folder, for covers and pictures named in the scenario.
class MediaHandler
{
public:
    MediaHandler(const ContentLibrary& content, ServiceState& state);

    // "media/<type>/<path>" or "files/<path>" for fault targets; empty when the
    // path is not a download.
    static QString EndpointOf(const IncomingRequest& request);

    Reply Handle(const IncomingRequest& request) const;

private:
    static std::string ContentTypeOf(const QString& path);

    const ContentLibrary& content;
    ServiceState& state;
};

} // namespace ReferenceService
