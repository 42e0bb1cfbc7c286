#include "iodbg/core/examples.h"

namespace iodbg {

namespace {

struct Example {
    const char *command;
    const char *words; // behind it
};

constexpr Example kExamples[] = {
    {"show", ""},
    {"show", "--json"},
    {"check", ""},
    {"check", "--json"},
    {"watch", ""},
    {"watch", "--interval 10 --count 6 --json"},
    {"init", ""},
    {"status", ""},
    {"status", "1017"},
    {"identity get", ""},
    {"identity get", "record --index supply1 --output saved.rec"},
    {"identity set serial", "SN0001 --dry-run"},
    {"identity set serial", "SN0001"},
    {"identity set mac", "02:00:5E:10:00:40"},
    {"identity set record", "--file board.rec --dry-run"},
    {"identity set record", "--file supply1.rec --index supply1"},
    {"eeprom dump", "--offset 0x100 --length 128"},
    {"eeprom dump", "--device supply1 --output saved.eeprom"},
    {"eeprom write", "0x140 4E45572D3432 --dry-run"},
    {"eeprom write", "0 --file board.eeprom"},
    {"power", ""},
    {"power", "2 --json"},
    {"fan get", ""},
    {"fan set", "5"},
    {"temperature", ""},
    {"clock get", ""},
    {"clock set", "now"},
    {"clock set", "2026-11-21T12:34:56"},
    {"clock sync", ""},
    {"led", ""},
    {"led get", "--json"},
    {"led set system", "2"},
    {"led set lamp4", "on"},
    {"led set lamp5", "off"},
    {"led set indexed", "3 on"},
    {"led set poe", "17 on"},
    {"watchdog get", ""},
    {"watchdog set", "10"},
    {"watchdog feed", ""},
    {"watchdog feed", "--every 5"},
    {"watchdog stop", ""},
    {"ptp pulse", ""},
    {"reboot", ""},
    {"reboot", "--yes"},
    {"cpld get", ""},
    {"cpld get", "1 2 0x1E"},
    {"cpld set", "7 0x0002"},
    {"i2c read", "0 0 0x51 0x100 16 --offset-length 2"},
    {"i2c write", "0 0 0x51 0x3F0 4E4557 --offset-length 2"},
    {"gpio get", "19"},
    {"gpio set", "0 1"},
    {"mdio read", "3 5"},
    {"mdio write", "3 5 0xABCD"},
    {"sfp list", ""},
    {"sfp list", "--json"},
    {"sfp show", "49"},
    {"sfp dump", "49"},
    {"sfp phy", "50"},
    {"sfp tx", "49 off"},
    {"poe info", ""},
    {"poe status", ""},
    {"poe status", "1-8,12 --json"},
    {"poe port", "3"},
    {"poe set mode", "3 semi"},
    {"poe set priority", "1-4 1"},
    {"poe set limit", "3 30000"},
    {"poe set limit-type", "3 2"},
    {"poe set legacy", "all off"},
    {"poe set inrush", "3 6"},
    {"poe set force-inrush", "3 off"},
    {"poe set budget", "370000"},
    {"poe on", "3"},
    {"poe off", "3"},
    {"poe detect", "1-8"},
    {"poe classify", "1-8"},
    {"poe init", ""},
    {"poe upgrade", "poe.bin --dry-run"},
    {"poe upgrade", "poe.bin --yes"},
    {"image info", ""},
    {"image info", "--bank 1"},
    {"image pack-boot", "loader.raw new-loader.bin"},
    {"image check", "loader.bin"},
    {"boot get", ""},
    {"boot get", "baudrate"},
    {"boot set", "flag 3"},
    {"boot set", "mode 1 --backup saved-settings.bin"},
    {"mtd read", "mtd4 saved.bin"},
    {"mtd write", "mtd4 settings.bin --dry-run"},
    {"mtd write", "mtd4 settings.bin --yes"},
    {"mtd erase", "mtd4"},
    {"upgrade os", "os.img --bank 1 --dry-run"},
    {"upgrade os", "os.img --bank 1"},
    {"upgrade boot", "loader.bin --dry-run"},
    {"upgrade boot", "loader.bin"},
    {"upgrade cpld", "cpld.bin"},
};

} // namespace

std::string examplesOf(const std::string &command) {
    std::string text;
    for (const auto &[name, words] : kExamples) {
        if (command == "iodbg " + std::string(name))
            text += "  " + command + (*words == '\0' ? "" : " ") + words + "\n";
    }
    return text;
}

} // namespace iodbg
