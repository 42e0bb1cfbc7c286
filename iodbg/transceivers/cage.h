#pragma once
// An SFP cage: its lines, and the pages of the module in it.

#include "bsp.h"
#include "iodbg/core/format.h"
#include "iodbg/core/report.h"

#include <cstdint>

namespace iodbg {

struct CageLines {
    uint32_t isPresent = 0;
    uint32_t transmitter = 0; // BSP_LASER_ON or BSP_LASER_OFF
    uint32_t hasLostSignal = 0;
    uint32_t hasTxFault = 0;
};

/** "port 49" */
std::string portName(uint32_t port);

/** Reads all lines; the first status that is not BSP_OK. */
int32_t readCageLines(uint32_t port, CageLines &lines);

/** Adds what the CPLD tells of a cage; lines: what could be read of them. */
void addCageLines(Report &report, Section &section, uint32_t port, CageLines &lines);

/** Reads the first bytes of a page; the library's status. */
int32_t readSfpPage(uint32_t port, BspSfpDevice page, size_t length, Bytes &bytes);

} // namespace iodbg
