#pragma once

#include "tools/reference_service/configuration_builder.h"
#include "tools/reference_service/fault_plan.h"
#include "tools/reference_service/incoming_request.h"
#include "tools/reference_service/recorder.h"
#include "tools/reference_service/reply.h"
#include "tools/reference_service/service_addresses.h"
#include "tools/reference_service/service_state.h"

#include <QJsonObject>
#include <QString>

#include <optional>

namespace ReferenceService {

// The control API under "/control/" for tests: changes the service's state,
// plans faults and reads back what was received. Bodies and replies are JSON
// objects; a refused request gets HTTP 400 (404 for an unknown object or login)
// with {"error": "<why>"}. Control requests are neither logged nor faulted.
//
//   GET  state                    today, day offset, clock shift and the service's addresses
//   POST reset                    back to the scenario: state, faults, records, log
//   POST clock                    any of {"day_offset": N}, {"date": "dd.MM.yyyy"|null} and
//                                 {"shift_seconds": N}: the "Date" of every reply is the
//                                 real time moved by N seconds
//   GET  configuration?object=C   {"version", "configuration"} as the player gets them
//   POST configuration/bump       {"object"} -> {"version"}
//   POST configuration/version    {"object", "version"} -> {"version"}
//   POST configuration/replace    {"object", "configuration": template} -> {"version"}
//   POST accounts/block           {"login", "blocked": bool}
//   POST objects/export           {"object", "exported": bool}
//   POST tokens/invalidate        {"object"} or {"token"} -> {"invalidated": N}
//   GET  tokens                   {"tokens": [{"token", "login", "object"}]}
//   POST faults                   a fault (see FaultPlan) -> {"id"}
//   GET  faults                   {"faults": [... with "fired" and "remaining"]}
//   POST faults/clear
//   GET  received                 the records, by section (see Recorder)
//   GET  requests?from=N          {"requests": [...], "total", "dropped"}
class ControlHandler
{
public:
    ControlHandler(ServiceState& state, Recorder& recorder, FaultPlan& faults,
                   const ConfigurationBuilder& builder, const ServiceAddresses& addresses);

    static bool IsControl(const IncomingRequest& request);
    Reply Handle(const IncomingRequest& request);

private:
    Reply Clock(const QJsonObject& body);
    Reply ConfigurationOf(const QString& code);
    Reply ChangeConfiguration(const QString& action, const QJsonObject& body);
    Reply BlockAccount(const QJsonObject& body);
    Reply ExportObject(const QJsonObject& body);
    Reply InvalidateTokens(const QJsonObject& body);
    Reply Tokens();
    Reply AddFault(const QJsonObject& body);
    Reply State();

    ServiceState& state;
    Recorder& recorder;
    FaultPlan& faults;
    const ConfigurationBuilder& builder;
    const ServiceAddresses& addresses;
};

} // namespace ReferenceService
