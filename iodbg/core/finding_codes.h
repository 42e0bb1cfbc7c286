#pragma once
// What the unit's parts are called and what can be found of them, for programs: these words stay.

#include <cstddef>
#include <iterator>

namespace iodbg {

enum class Severity {
    Good,
    NotJudged, // hangs on something else
    Warning,   // works, but somebody should look at it
    Fault,     // does not do what it is for
};

/** What a finding can be about. */
enum class Unit {
    KernelModule,
    SharedFile,
    Cpld,
    Model,
    I2cBus,
    ProductRecord,
    SerialNumber,
    MacAddress,
    Temperature,
    Fan,
    Supply,
    PresenceLines,
    PoeController,
    PoePort,
    Clock,
    Flash,
    BootSettings,
    Bank,
    SfpPort,
};

struct UnitRow {
    Unit unit;
    const char *key;
    const char *name; // for people
    const char *all;  // the same of all that there are, where they have numbers
};

constexpr UnitRow kUnits[] = {
    {Unit::KernelModule, "kernel-module", "kernel module", nullptr},
    {Unit::SharedFile, "shared-file", "shared file", nullptr},
    {Unit::Cpld, "cpld", "CPLD", nullptr},
    {Unit::Model, "model", "model", nullptr},
    {Unit::I2cBus, "i2c-bus", "I2C bus", nullptr},
    {Unit::ProductRecord, "product-record", "product record", nullptr},
    {Unit::SerialNumber, "serial-number", "serial number", nullptr},
    {Unit::MacAddress, "mac-address", "MAC address", nullptr},
    {Unit::Temperature, "temperature", "temperature", nullptr},
    {Unit::Fan, "fan", "fan", "fans"},
    {Unit::Supply, "supply", "supply", "supplies"},
    {Unit::PresenceLines, "presence-lines", "presence lines", nullptr},
    {Unit::PoeController, "poe-controller", "PoE controller", nullptr},
    {Unit::PoePort, "poe-port", "PoE port", "PoE ports"},
    {Unit::Clock, "clock", "clock", nullptr},
    {Unit::Flash, "flash", "flash", nullptr},
    {Unit::BootSettings, "boot-settings", "boot settings", nullptr},
    {Unit::Bank, "bank", "bank", "banks"},
    {Unit::SfpPort, "sfp-port", "SFP port", "SFP cages"},
};

enum class Code {
    Good,
    NotJudged,
    Unreadable,
    NoAnswer,
    KernelModuleMissing,
    KernelModuleNotPermitted,
    KernelModuleBroken,
    SharedFileUnsafe,
    CpldNoAnswer,
    ModelUnreadable,
    ModelCacheWrong,
    ModelUnknown,
    I2cBusNoAnswer,
    RecordMissing,
    RecordDamaged,
    SerialMissing,
    MacInvalid,
    TemperatureHot,
    TemperatureWarm,
    TemperatureCold,
    FanMissing,
    FanStandsStill,
    FanSlow,
    SupplyNotPlugged,
    SupplyAbsentOrFailed,
    SupplyFault,
    LinesShared,
    PoeMissing,
    PoeUpgradeFailed,
    PoeBusNoAnswer,
    PoeNoAnswer,
    PoeNotInitialised,
    PoePortFault,
    ClockLostTime,
    ClockInvalid,
    ClockDiffers,
    PartitionMissing,
    PartitionNotPermitted,
    BootSettingsEmpty,
    BankEmpty,
    SfpChecksumWrong,
    SfpDiagnosticsUnreadable,
    SfpTxFault,
    SfpNoSignal,
    SfpAlarm,
    SfpWarning,
};

struct CodeRow {
    Code code;
    const char *key;
    Severity severity;
    const char *advice; // what to do, the least harmful first; empty: nothing, or it depends
};

constexpr CodeRow kCodes[] = {
    {Code::Good, "good", Severity::Good, ""},
    {Code::NotJudged, "not-judged", Severity::NotJudged, ""},
    {Code::Unreadable, "unreadable", Severity::Fault, "see the kernel log, check again"},
    {Code::NoAnswer, "no-answer", Severity::Fault,
     "see the kernel log, check again; if it stays so, it is broken"},
    {Code::KernelModuleMissing, "kernel-module-missing", Severity::Fault, ""},
    {Code::KernelModuleNotPermitted, "kernel-module-not-permitted", Severity::Fault, ""},
    {Code::KernelModuleBroken, "kernel-module-broken", Severity::Fault, ""},
    {Code::SharedFileUnsafe, "shared-file-unsafe", Severity::Fault, ""},
    {Code::CpldNoAnswer, "cpld-no-answer", Severity::Fault,
     "see the kernel log, switch the unit off and on; then it needs repair"},
    {Code::ModelUnreadable, "model-unreadable", Severity::Fault,
     "see that /tmp/bsp/devId can be opened for writing"},
    {Code::ModelCacheWrong, "model-cache-wrong", Severity::Fault,
     "rm /tmp/bsp/devId, start the management software anew"},
    {Code::ModelUnknown, "model-unknown", Severity::Fault,
     "install the library and iodbg that know this model"},
    {Code::I2cBusNoAnswer, "i2c-bus-no-answer", Severity::Fault,
     "see the kernel log, switch the unit off and on; then look for a device that holds the bus"},
    {Code::RecordMissing, "record-missing", Severity::Fault,
     "make one with 'iodbg identity new', or store a file with 'iodbg identity set record'"},
    {Code::RecordDamaged, "record-damaged", Severity::Fault,
     "compare it with the label, then store it again with --renew-crc"},
    {Code::SerialMissing, "serial-missing", Severity::Warning,
     "store it with 'iodbg identity set serial TEXT'"},
    {Code::MacInvalid, "mac-invalid", Severity::Fault, "store it with 'iodbg identity set mac'"},
    {Code::TemperatureHot, "temperature-hot", Severity::Fault, "check fans and air flow now"},
    {Code::TemperatureWarm, "temperature-warm", Severity::Warning,
     "check fans, air flow and the room"},
    {Code::TemperatureCold, "temperature-cold", Severity::Warning,
     "check the room, and the sensor"},
    {Code::FanMissing, "fan-missing", Severity::Fault, "plug it"},
    {Code::FanStandsStill, "fan-stands-still", Severity::Fault, "plug it, or replace it"},
    {Code::FanSlow, "fan-slow", Severity::Fault, "replace it"},
    {Code::SupplyNotPlugged, "supply-not-plugged", Severity::Warning,
     "plug it, or live without a spare one"},
    {Code::SupplyAbsentOrFailed, "supply-absent-or-failed", Severity::Warning,
     "look whether it is plugged; then check its cable and its own lamp"},
    {Code::SupplyFault, "supply-fault", Severity::Fault,
     "check its cable and its own lamp; replace it"},
    {Code::LinesShared, "lines-shared", Severity::NotJudged, ""},
    {Code::PoeMissing, "poe-missing", Severity::Fault, "check its card"},
    {Code::PoeUpgradeFailed, "poe-upgrade-failed", Severity::Fault, "run 'iodbg poe upgrade FILE'"},
    {Code::PoeBusNoAnswer, "poe-bus-no-answer", Severity::Fault,
     "check again in a few seconds; then its card and power, and the kernel log"},
    {Code::PoeNoAnswer, "poe-no-answer", Severity::Fault,
     "check again in a few seconds, then switch the unit off and on; if it stays so, write its "
     "firmware anew with 'iodbg poe upgrade FILE'"},
    {Code::PoeNotInitialised, "poe-not-initialised", Severity::Warning, "run 'iodbg poe init'"},
    {Code::PoePortFault, "poe-port-fault", Severity::Warning,
     "look at its device and cable; 'iodbg poe status' tells more"},
    {Code::ClockLostTime, "clock-lost-time", Severity::Fault,
     "set it with 'iodbg clock set'; if it comes again, replace the battery"},
    {Code::ClockInvalid, "clock-invalid", Severity::Fault,
     "set it with 'iodbg clock set'; if it comes again, replace the battery"},
    {Code::ClockDiffers, "clock-differs", Severity::Warning,
     "set the wrong one: 'iodbg clock set now' or 'iodbg clock sync'"},
    {Code::PartitionMissing, "partition-missing", Severity::Fault,
     "see /proc/mtd for those that the kernel has"},
    {Code::PartitionNotPermitted, "partition-not-permitted", Severity::Fault, "run iodbg as root"},
    {Code::BootSettingsEmpty, "boot-settings-empty", Severity::Warning,
     "set them with 'iodbg boot set'"},
    {Code::BankEmpty, "bank-empty", Severity::Warning, ""},
    {Code::SfpChecksumWrong, "sfp-checksum-wrong", Severity::Warning,
     "see 'iodbg sfp show'; replace the module"},
    {Code::SfpDiagnosticsUnreadable, "sfp-diagnostics-unreadable", Severity::Fault,
     "pull the module and plug it again; then replace it"},
    {Code::SfpTxFault, "sfp-tx-fault", Severity::Fault, "replace the module"},
    {Code::SfpNoSignal, "sfp-no-signal", Severity::Warning,
     "check fibre or cable, and that the far end transmits"},
    {Code::SfpAlarm, "sfp-alarm", Severity::Fault,
     "see 'iodbg sfp show'; check fibre and far end, then the module"},
    {Code::SfpWarning, "sfp-warning", Severity::Warning,
     "see 'iodbg sfp show'; check fibre and far end, then the module"},
};

constexpr const UnitRow &rowOf(Unit unit) {
    return kUnits[static_cast<size_t>(unit)];
}

constexpr const CodeRow &rowOf(Code code) {
    return kCodes[static_cast<size_t>(code)];
}

/** Every row stands where its number says. */
constexpr bool areFindingWordsInOrder() {
    for (size_t i = 0; i < std::size(kUnits); ++i) {
        if (static_cast<size_t>(kUnits[i].unit) != i)
            return false;
    }
    for (size_t i = 0; i < std::size(kCodes); ++i) {
        if (static_cast<size_t>(kCodes[i].code) != i)
            return false;
    }
    return true;
}
static_assert(areFindingWordsInOrder());

/** "fault", as programs get it. */
constexpr const char *severityKey(Severity severity) {
    constexpr const char *kKeys[] = {"good", "not-judged", "warning", "fault"};
    return kKeys[static_cast<size_t>(severity)];
}

} // namespace iodbg
