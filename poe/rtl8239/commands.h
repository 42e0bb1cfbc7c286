#pragma once
// The controller's command set, one builder per command. Ports are the controller's, 0-47.
//
// Every builder answers BSP_OK, a status of the exchange (transport.h), BSP_E_POE_INVALID for an
// argument out of range (nothing is sent then), BSP_E_POE_STATUS when the controller reports
// failure, or BSP_E_POE_CONTENT when a reply names another port than asked. Outputs are written on
// success only.
//
// No operation of the library sends those that say what they are for. They complete the set for
// those who bring up boards, look for faults and prepare units in production, with programs that
// have the library in them; by hand the same frames go out with "iodbg poe poeCommand".

#include "bsp.h"

#include <cstdint>

/** Controller firmware and hardware, command 0x40. */
struct Rtl8239SystemInfo {
    uint8_t byte3;
    uint8_t byte4;
    uint16_t word5;      // bytes 5-6
    uint16_t appVersion; // byte 7 and byte 10
    uint8_t byte8;
    bool flag0, flag1, flag2; // bits 0-2 of byte 9
};

/** Power totals, command 0x41. */
struct Rtl8239PowerTotals {
    uint32_t power2; // milliwatts, bytes 2-3
    uint32_t power7; // milliwatts, bytes 7-8: drawn by all ports
    uint32_t power4; // milliwatts, bytes 4-5: not 0 once the controller is initialised
    uint8_t byte6;
};

/** State of a port, command 0x42. A member without a meaning in the state is 0xFF. */
struct Rtl8239PortStatus {
    uint8_t status;
    uint8_t fault;          // status 4 only
    uint8_t classification; // high nibble of byte 4; not in status 4
    uint8_t detection;      // low nibble of byte 4; not in status 4
    uint8_t low5;           // low nibble of byte 5 when mode is 2, else the whole byte
    uint8_t high5;          // high nibble of byte 5 when mode is 2
    uint8_t mode;           // byte 7
};

/** Measurements of a port, command 0x44. */
struct Rtl8239PortMeasurement {
    uint32_t voltage;    // millivolts
    uint32_t current;    // milliamperes
    int32_t temperature; // (220 - code) x 1.25, whose unit the controller's data sheet has
    uint32_t power;      // milliwatts
};

/** Command 0x45. */
struct Rtl8239Query45 {
    uint8_t byte[5]; // bytes 3-7
};

/** Event flags, command 0x46. */
struct Rtl8239Query46 {
    bool flag2[2]; // bits 1 and 2 of byte 2
    bool flag3[2]; // bits 1 and 2 of byte 3
    bool port[BSP_POE_PORTS_MAX];
};

/** Settings of a port, command 0x48. */
struct Rtl8239PortConfig {
    uint8_t enable;   // byte 3
    uint8_t funcMode; // byte 4
    uint8_t byte5;
    uint8_t byte7;
    uint8_t byte8;
};

/** Power settings of a port, command 0x49. */
struct Rtl8239PortPowerConfig {
    uint8_t inrushMode; // byte 3
    uint8_t byte4;
    uint8_t priority; // byte 6, on the controller's scale
    uint8_t byte7;
    uint8_t byte8;
    uint8_t byte9;
    uint32_t powerLimit; // milliwatts
};

/** Voltage thresholds, command 0x4A. */
struct Rtl8239GlobalParam {
    uint32_t lowThreshold;  // millivolts
    uint32_t highThreshold; // millivolts
    uint8_t byte3;
    uint8_t byte8;
};

/** A power bank, command 0x4B. */
struct Rtl8239PowerSource {
    uint8_t byte2;
    uint32_t power;        // milliwatts
    uint32_t reservePower; // milliwatts
};

/** Commands 0x4C, 0x4E, 0x4F and 0x50. */
struct Rtl8239Query4C {
    uint8_t byte[12];
};
struct Rtl8239Query4E {
    uint8_t byte[8];
};
struct Rtl8239Query4F {
    struct {
        uint32_t voltage; // millivolts
        uint16_t word;
    } pair[2];
};
struct Rtl8239Query50 {
    uint8_t value[12]; // 4 bits each
};

/** A register of a power-sourcing chip, commands 0xF0 and 0xF1. */
struct Rtl8239ChipRegister {
    uint8_t selector;
    uint32_t address;
    uint32_t value;
};

extern "C" {
// Settings of all ports

int32_t rtl8239CmdGlobalEnableSet(int32_t enable);
/** For bring-up: starts the application over. */
int32_t rtl8239CmdGlobalResetSet(int32_t reset);
int32_t rtl8239CmdGlobalPowerSourceSet(int32_t bank, uint32_t power, uint32_t reservePower);
int32_t rtl8239CmdPortMappingEnableSet(int32_t enable, int32_t portCount);
int32_t rtl8239CmdPortPairMappingSet(int32_t port, int32_t isFourPair, int32_t deviceIndex,
                                     int32_t primaryChannel, int32_t secondaryChannel,
                                     int32_t chipAddress);
int32_t rtl8239CmdGlobalParamSet(uint32_t lowThreshold, uint32_t highThreshold);
int32_t rtl8239CmdGlobalPmModeSet(int32_t mode);
/** For bring-up: a setting that the initialisation leaves alone. */
int32_t rtl8239CmdGlobalPmModeExtSet(int32_t mode);
/** For rtl8239CmdQuery46Get(): which events it tells. */
int32_t rtl8239CmdGlobalPortEventMaskSet(int32_t first, int32_t second);

// Settings of the ports from firstPort to lastPort

int32_t rtl8239CmdPortEnableSet(int32_t firstPort, int32_t lastPort, int32_t enable);
/** For bring-up: ports as they are without settings. */
int32_t rtl8239CmdPortResetSet(int32_t firstPort, int32_t lastPort, int32_t reset);
int32_t rtl8239CmdPortFuncModeSet(int32_t firstPort, int32_t lastPort, int32_t mode);
int32_t rtl8239CmdPortDetTypeSet(int32_t firstPort, int32_t lastPort, int32_t type);
int32_t rtl8239CmdPortDetTriggerSet(int32_t firstPort, int32_t lastPort, int32_t trigger);
int32_t rtl8239CmdPortClsTriggerSet(int32_t firstPort, int32_t lastPort, int32_t trigger);
int32_t rtl8239CmdPortInrushModeSet(int32_t firstPort, int32_t lastPort, int32_t mode);
int32_t rtl8239CmdPortForceInrushSet(int32_t firstPort, int32_t lastPort, int32_t force);
int32_t rtl8239CmdPortDisconnectTypeSet(int32_t firstPort, int32_t lastPort, int32_t type);
int32_t rtl8239CmdPortMaxPowerTypeSet(int32_t firstPort, int32_t lastPort, int32_t type);
int32_t rtl8239CmdPortMaxPowerValueExtSet(int32_t firstPort, int32_t lastPort, uint32_t power);
int32_t rtl8239CmdPortPrioritySet(int32_t firstPort, int32_t lastPort, int32_t priority);
int32_t rtl8239CmdPortTriggerDetClsPwrSet(int32_t firstPort, int32_t lastPort, int32_t action);

// Queries of the ports from firstPort to lastPort; values has room for each of them

/** For fault finding: is a detection under way? */
int32_t rtl8239CmdPortDetTriggerGet(int32_t firstPort, int32_t lastPort, uint8_t *values);
/** For fault finding: reads rtl8239CmdPortFuncModeSet() back. */
int32_t rtl8239CmdPortFuncModeGet(int32_t firstPort, int32_t lastPort, uint8_t *values);

// Queries of one port

int32_t rtl8239CmdPortStatusGet(int32_t port, Rtl8239PortStatus *out);
int32_t rtl8239CmdPortMeasurementGet(int32_t port, Rtl8239PortMeasurement *out);
/** For fault finding: what a port has counted. */
int32_t rtl8239CmdQuery45Get(int32_t port, int32_t flag, Rtl8239Query45 *out);
int32_t rtl8239CmdQuery48Get(int32_t port, Rtl8239PortConfig *out);
int32_t rtl8239CmdQuery49Get(int32_t port, Rtl8239PortPowerConfig *out);
/** For fault finding: reads rtl8239CmdPortPairMappingSet() back. */
int32_t rtl8239CmdQuery4EGet(int32_t port, Rtl8239Query4E *out);
/** For fault finding: each pair of a port by itself. */
int32_t rtl8239CmdQuery4FGet(int32_t port, Rtl8239Query4F *out);

// Queries of the controller; a null output is BSP_E_POE_NULL

int32_t rtl8239CmdSystemInfoGet(Rtl8239SystemInfo *out);
int32_t rtl8239CmdQuery41Get(Rtl8239PowerTotals *out);
/** For fault finding: which ports have had events. */
int32_t rtl8239CmdQuery46Get(int32_t flag, Rtl8239Query46 *out);
/** For fault finding: reads rtl8239CmdGlobalParamSet() back. */
int32_t rtl8239CmdGlobalParamGet(Rtl8239GlobalParam *out);
int32_t rtl8239CmdGlobalPowerSourceGet(int32_t bank, Rtl8239PowerSource *out);
/** For fault finding: what is known of the power-sourcing chips. */
int32_t rtl8239CmdQuery4CGet(Rtl8239Query4C *out);
/** For fault finding: what is known of the power-sourcing chips. */
int32_t rtl8239CmdQuery50Get(Rtl8239Query50 *out);

// Stored configuration and chip registers

/** For production: settings that last over a reset. */
int32_t rtl8239CmdMiscConfigInfoSave(void);
/** For production: without those again. */
int32_t rtl8239CmdMiscConfigInfoClear(void);
/** For bring-up: starts over with what was saved. */
int32_t rtl8239CmdMiscConfigInfoReset(void);
/** For bring-up: starts over without it. */
int32_t rtl8239CmdMiscConfigInfoInit(void);
/** For fault finding in the power-sourcing chips. */
int32_t rtl8239CmdDebugChipRegSet(const Rtl8239ChipRegister *chipRegister);
/** For fault finding in the power-sourcing chips. */
int32_t rtl8239CmdDebugChipRegGet(Rtl8239ChipRegister *chipRegister);
}
