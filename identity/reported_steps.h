#pragma once
// Steps that many functions share, reported under the name of the function that takes them.

#include "bsp.h"
#include "support/message.h"

namespace bsp {

/** The device id, or the failure's status after "get devId failed". */
int32_t readDeviceId(uint32_t *devId, CallSite site = CallSite::here());

/** The board's record, or the failure's status after "devinfo get failed". */
int32_t readBoardRecord(BspDevinfo *record, CallSite site = CallSite::here());

/** Stores the board's record, or answers the failure's status after "devinfo set failed". */
int32_t writeBoardRecord(BspDevinfo *record, CallSite site = CallSite::here());

} // namespace bsp
