#pragma once
// The map of the board, from its circuit diagrams: the registers of the CPLD with their lines and
// fields, what is where on the I2C buses, the GPIO lines that are wired, the partitions of the
// flash, and the page that reaches the PHYs. It is kept apart from the library's own
// (support/board_map.h) on purpose, so that a mistake in one shows: a test compares the two.

#include <cstdint>

namespace vb {

// Registers of the CPLD, by the names that traces print.

constexpr uint32_t kCpldDeviceId = 1;
constexpr uint32_t kCpldVersion = 2;
constexpr uint32_t kCpldWatchdog = 4;
constexpr uint32_t kCpldReset = 5; // a write of 0 resets the board
constexpr uint32_t kCpldControl = 6;
constexpr uint32_t kCpldLamps = 7;
constexpr uint32_t kCpldUplinkInputs = 8;
constexpr uint32_t kCpldUplinkTransmitters = 12;
// Registers of three, a line for each of 48 ports.
constexpr uint32_t kCpldPoeLamps = 13; // active low
constexpr uint32_t kCpldSfpReceiveLoss = 16;
constexpr uint32_t kCpldSfpPresence = 19;
constexpr uint32_t kCpldSfpTransmitFault = 22;
constexpr uint32_t kCpldSfpTransmitDisable = 25;
constexpr uint32_t kCpldFanSpeeds = 28; // and the register behind it, two fans in each
constexpr uint32_t kCpldSupplies = 30;
constexpr uint32_t kCpldFans = 31;

constexpr uint32_t kCpldLinesPerRegister = 16;

// Their lines and fields. Where there are several of a thing, the place is that of the first, and
// the others follow it bit by bit.

struct CpldLine {
    uint32_t reg;
    uint32_t bit;
};

struct CpldField {
    uint32_t reg;
    uint32_t lowestBit;
    uint32_t width;
};

constexpr CpldField kDeviceSerialVersion = {kCpldDeviceId, 0, 8};

constexpr CpldField kHardwareLetter = {kCpldVersion, 12, 4}; // 1 is 'A'
constexpr CpldField kHardwareNumber = {kCpldVersion, 8, 4};
constexpr CpldField kCpldMajorVersion = {kCpldVersion, 4, 4};
constexpr CpldField kCpldMinorVersion = {kCpldVersion, 0, 4};

constexpr CpldField kWatchdogPeriod = {kCpldWatchdog, 2, 6};

constexpr CpldField kFanLevel = {kCpldControl, 5, 4};          // counted from 0
constexpr CpldLine kRecordedSupplyAbsence = {kCpldControl, 9}; // of supply 1
constexpr CpldLine kPoeAbsence = {kCpldControl, 14};
constexpr CpldLine kPtpTrigger = {kCpldControl, 15};

constexpr CpldField kSystemLamp = {kCpldLamps, 0, 2};
constexpr CpldLine kLamp4 = {kCpldLamps, 4};
constexpr CpldLine kLamp5 = {kCpldLamps, 5};
constexpr CpldLine kIndexedLamp = {kCpldLamps, 6};

constexpr CpldLine kUplinkReceiveLoss = {kCpldUplinkInputs, 0};
constexpr CpldLine kUplinkPresence = {kCpldUplinkInputs, 6};
constexpr CpldLine kUplinkTransmitFault = {kCpldUplinkTransmitters, 0};
constexpr CpldLine kUplinkTransmitDisable = {kCpldUplinkTransmitters, 6};

constexpr CpldField kFanSpeed = {kCpldFanSpeeds, 0, 8};

// Of supply 1. Those of supply 2 are behind each of them.
constexpr CpldLine kSupplyPresence = {kCpldSupplies, 0};
constexpr CpldLine kSupplyType = {kCpldSupplies, 2};
constexpr CpldLine kSupplyStatus0 = {kCpldSupplies, 4};
constexpr CpldLine kSupplyStatus1 = {kCpldSupplies, 6};
constexpr CpldLine kSupplyStatus2 = {kCpldSupplies, 8};

// A line for each pair of fans: one that is a supply's presence line as well, or its own.
constexpr CpldLine kFanPresenceBesideSupplies = {kCpldSupplies, 0};
constexpr CpldLine kFanPresence = {kCpldFans, 8};

// I2C devices. Where there are several of a kind, the first one's place: the others are on the
// channels behind it.

struct I2cPlace {
    uint32_t bus;
    uint32_t channel;
    uint32_t device;
};

constexpr I2cPlace kBoardEeprom = {0, 0, 0x50};
constexpr I2cPlace kTemperatureSensor = {0, 1, 0x4F};
constexpr I2cPlace kClockChip = {0, 1, 0x51};
constexpr I2cPlace kSupplyEeprom = {0, 2, 0x50};
constexpr I2cPlace kSupplyPmbus = {0, 2, 0x58};
constexpr I2cPlace kUplinkModule = {1, 0, 0x50};
constexpr I2cPlace kFrontModule = {1, 8, 0x50};
constexpr I2cPlace kPoeController = {16, 0, 0x20};

// GPIO lines.

constexpr uint32_t kWatchdogGpio = 0;
constexpr uint32_t kPoeResetGpio = 19; // low holds the PoE controller in reset

// Partitions of the flash, by the numbers of their devices.

constexpr uint32_t kBootLoaderPartition = 0;
constexpr uint32_t kBootSettingsPartition = 4;
constexpr uint32_t kOsBank0Partition = 12;
constexpr uint32_t kOsBank1Partition = 14;

// The page of the switch controller's registers, and the one that carries commands to the PHYs.

constexpr uint32_t kMdioPageAddress = 0x1B000000; // physical
constexpr uint32_t kMdioCommand = 0x7F4;          // in the page

} // namespace vb
