#pragma once
// The answers to requests, one function for each route.

#include "virtual_board/server/routes.h"
#include "virtual_board/server/services.h"

namespace vboard::server {

Response listBoards(Services &services, const Asked &asked);
Response makeTwin(Services &services, const Asked &asked);
Response getProperties(Services &services, const Asked &asked);
Response changeProperties(Services &services, const Asked &asked);
Response describeNames(Services &services, const Asked &asked);
Response getPanel(Services &services, const Asked &asked);
Response drawPanel(Services &services, const Asked &asked);
Response listFaults(Services &services, const Asked &asked);
Response addFault(Services &services, const Asked &asked);
Response clearFaults(Services &services, const Asked &asked);
Response getTrace(Services &services, const Asked &asked);
Response clearTrace(Services &services, const Asked &asked);
Response getFlash(Services &services, const Asked &asked);
Response listScenarios(Services &services, const Asked &asked);
Response play(Services &services, const Asked &asked);
Response describeEffects(Services &services, const Asked &asked);
Response advance(Services &services, const Asked &asked);
Response describeInterface(Services &services, const Asked &asked);

} // namespace vboard::server
