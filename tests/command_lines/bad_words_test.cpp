// For every argument and every option with a value a word that is none, and what is said of it.

#include "tests/command_lines/definitions.h"
#include "tests/iodbg/iodbg_test.h"
#include "tests/support/process.h"

#include <set>

namespace {

struct BadWord {
    const char *command;
    const char *argument;
    const char *words; // behind the command; @file, @board and @new stand for paths
    const char *message;
    int exitCode = 2;
};

constexpr char kNoFileName[] = "--from: '' is not the name of a file";

constexpr BadWord kIodbg[] = {
    {"diff", "FIRST", "/nowhere/x live", "cannot open /nowhere/x: No such file or directory", 4},
    {"diff", "SECOND", "live /nowhere/x", "cannot open /nowhere/x: No such file or directory", 4},
    {"capture", "FILE", "/nowhere/x", "cannot write /nowhere/x: No such file or directory", 4},
    {"watch", "--interval", "--interval 0.05",
     "--interval: '0.05' is not a number of seconds from 0.1 to 3600, with up to three decimals"},
    {"watch", "--count", "--count 0", "--count: '0' is not a number from 1 to 4294967295"},
    {"watch", "--only", "--only fans,lamps",
     "--only: 'lamps' is none of climate|fans|supplies|poe|sfp|clock|panel"},
    {"metrics", "FILE", "/nowhere/x.prom",
     "cannot write /nowhere/x.prom: No such file or directory", 4},
    {"identity get", "ITEM", "all", "ITEM: 'all' is none of serial|mac|record"},
    {"identity get", "--index", "--index supply3",
     "--index: 'supply3' is none of board|supply1|supply2"},
    {"identity get", "--output", "record --output /nowhere/x",
     "cannot write /nowhere/x: No such file or directory", 4},
    {"identity get", "--format", "record --output x --format xml",
     "--format: 'xml' is none of binary|json"},
    {"identity new", "--serial", "--serial \xE9 --store",
     "--serial: '\\xE9' is not up to 32 printable ASCII characters"},
    {"identity new", "--mac", "--mac 02:00 --store",
     "--mac: '02:00' is not a MAC address: give six bytes as AA:BB:CC:DD:EE:FF"},
    {"identity new", "--product-name", "--product-name 123456789012345678901234567890123",
     "--product-name: '123456789012345678901234567890123' is not up to 32 printable ASCII"},
    {"identity new", "--supply-count", "--supply-count 7",
     "--supply-count: '7' is not a number from 0 to 6"},
    {"identity new", "--supply-types", "--supply-types 01010101010101",
     "--supply-types: '01010101010101' has more than 6 bytes"},
    {"identity new", "--product-data-1", "--product-data-1 0",
     "--product-data-1: '0' is not a row of bytes: give two hexadecimal digits for each"},
    {"identity new", "--product-data-3", "--product-data-3 0102030405",
     "--product-data-3: '0102030405' has more than 4 bytes"},
    {"identity new", "--reserved-1", "--reserved-1 010203",
     "--reserved-1: '010203' has more than 2 bytes"},
    {"identity new", "--reserved-2", "--reserved-2 xx",
     "--reserved-2: 'xx' has other characters than hexadecimal digits"},
    {"identity new", "--index", "--index psu --store",
     "--index: 'psu' is none of board|supply1|supply2"},
    {"identity new", "--output", "--serial S --mac 02:00:5E:10:00:40 --output /nowhere/x",
     "cannot write /nowhere/x: No such file or directory", 4},
    {"identity new", "--format", "--format xml", "--format: 'xml' is none of binary|json"},
    {"identity set serial", "TEXT", "12345678901234567890123456789012",
     "a serial number has 1 to 31 printable ASCII characters and no spaces"},
    {"identity set mac", "MAC", "02:00:5E:10:00",
     "MAC: '02:00:5E:10:00' is not a MAC address: give six bytes as AA:BB:CC:DD:EE:FF"},
    {"identity set record", "--index", "--index psu --file x",
     "--index: 'psu' is none of board|supply1|supply2"},
    {"identity set record", "--file", "--file /nowhere/x",
     "cannot open /nowhere/x: No such file or directory", 4},
    {"eeprom dump", "--device", "--device psu", "--device: 'psu' is none of board|supply1|supply2"},
    {"eeprom dump", "--offset", "--offset 1k",
     "--offset: '1k' is not a number from 0 to 4294967295"},
    {"eeprom dump", "--length", "--length 1k",
     "--length: '1k' is not a number from 0 to 4294967295"},
    {"eeprom dump", "--output", "--output /nowhere/x",
     "cannot write /nowhere/x: No such file or directory", 4},
    {"eeprom write", "--device", "--device psu 0 00",
     "--device: 'psu' is none of board|supply1|supply2"},
    {"eeprom write", "OFFSET", "1k 00", "OFFSET: '1k' is not a number from 0 to 4294967295"},
    {"eeprom write", "HEX", "0 123",
     "HEX: '123' is not a row of bytes: give two hexadecimal digits for each"},
    {"eeprom write", "--file", "0 --file /nowhere/x",
     "cannot open /nowhere/x: No such file or directory", 4},
    {"power", "N", "7", "N: '7' is not a number from 1 to 6"},
    {"fan set", "LEVEL", "11", "LEVEL: '11' is not a number from 1 to 10"},
    {"clock set", "TIME", "12:34",
     "TIME: '12:34' is no time from 1900 to 2059: give 'now', or one like 2026-11-21T12:34:56"},
    {"led set system", "STATE", "4", "STATE: '4' is none of off|0|1|2|3"},
    {"led set lamp4", "STATE", "2", "STATE: '2' is none of off|on|0|1"},
    {"led set lamp5", "STATE", "yes", "STATE: 'yes' is none of off|on|0|1"},
    {"led set indexed", "LAMP", "11 on", "LAMP: '11' is not a number from 1 to 10"},
    {"led set indexed", "STATE", "1 2", "STATE: '2' is none of off|on|0|1"},
    {"led set poe", "PORT", "49 on", "PORT: '49' is not a number from 1 to 48"},
    {"led set poe", "STATE", "1 2", "STATE: '2' is none of off|on|0|1"},
    {"watchdog set", "PERIOD", "64", "PERIOD: '64' is not a number from 0 to 63"},
    {"watchdog feed", "--every", "--every 0", "--every: '0' is not a number from 1 to 3600"},
    {"watchdog feed", "--count", "--every 1 --count 0",
     "--count: '0' is not a number from 1 to 4294967295"},
    {"cpld get", "REG", "control", "REG: 'control' is not a number from 0 to 4294967295"},
    {"cpld set", "REG", "control 1", "REG: 'control' is not a number from 0 to 4294967295"},
    {"cpld set", "VALUE", "1 0x10000", "VALUE: '0x10000' is not a number from 0 to 65535"},
    {"i2c scan", "BUS", "256 0", "BUS: '256' is not a number from 0 to 255"},
    {"i2c scan", "CHANNEL", "0 256", "CHANNEL: '256' is not a number from 0 to 255"},
    {"i2c read", "BUS", "256 0 0 0 1", "BUS: '256' is not a number from 0 to 255"},
    {"i2c read", "CHANNEL", "0 256 0 0 1", "CHANNEL: '256' is not a number from 0 to 255"},
    {"i2c read", "DEVICE", "0 0 0x80 0 1", "DEVICE: '0x80' is not a number from 0 to 127"},
    {"i2c read", "OFFSET", "0 0 0 x 1", "OFFSET: 'x' is not a number from 0 to 4294967295"},
    {"i2c read", "--offset-length", "0 0 0 0 1 --offset-length 5",
     "--offset-length: '5' is not a number from 0 to 4"},
    {"i2c write", "BUS", "256 0 0 0 00", "BUS: '256' is not a number from 0 to 255"},
    {"i2c write", "CHANNEL", "0 256 0 0 00", "CHANNEL: '256' is not a number from 0 to 255"},
    {"i2c write", "DEVICE", "0 0 0x80 0 00", "DEVICE: '0x80' is not a number from 0 to 127"},
    {"i2c write", "OFFSET", "0 0 0 x 00", "OFFSET: 'x' is not a number from 0 to 4294967295"},
    {"i2c write", "--offset-length", "0 0 0 0 00 --offset-length 5",
     "--offset-length: '5' is not a number from 0 to 4"},
    {"i2c read", "LENGTH", "0 0 0 0 0", "LENGTH: '0' is not a number from 1 to 65535"},
    {"i2c write", "HEX", "0 0 0 0 zz", "HEX: 'zz' has other characters than hexadecimal digits"},
    {"gpio get", "LINE", "led", "LINE: 'led' is not a number from 0 to 4294967295"},
    {"gpio set", "LINE", "led 1", "LINE: 'led' is not a number from 0 to 4294967295"},
    {"gpio set", "LEVEL", "1 2", "LEVEL: '2' is not a number from 0 to 1"},
    {"poe status", "PORTS", "0", "PORTS: '0' is not a number from 1 to 48"},
    {"poe port", "PORT", "49", "PORT: '49' is not a number from 1 to 48"},
    {"poe set mode", "PORTS", "4-1 1", "PORTS: '4-1' is no range of ports; give one as 1-8"},
    {"poe set mode", "VALUE", "1 on", "VALUE: 'on' is none of auto|semi|manual|disabled"},
    {"poe set priority", "PORTS", "4-1 1", "PORTS: '4-1' is no range of ports; give one as 1-8"},
    {"poe set priority", "VALUE", "1 4", "VALUE: '4' is not a number from 1 to 3"},
    {"poe set limit", "PORTS", "4-1 1", "PORTS: '4-1' is no range of ports; give one as 1-8"},
    {"poe set limit", "VALUE", "1 102001", "VALUE: '102001' is not a number from 0 to 102000"},
    {"poe set limit-type", "PORTS", "4-1 1", "PORTS: '4-1' is no range of ports; give one as 1-8"},
    {"poe set limit-type", "VALUE", "1 3", "VALUE: '3' is not a number from 1 to 2"},
    {"poe set legacy", "PORTS", "4-1 1", "PORTS: '4-1' is no range of ports; give one as 1-8"},
    {"poe set legacy", "VALUE", "1 1", "VALUE: '1' is none of on|off"},
    {"poe set inrush", "PORTS", "4-1 1", "PORTS: '4-1' is no range of ports; give one as 1-8"},
    {"poe set inrush", "VALUE", "1 9", "VALUE: '9' is not a number from 0 to 8"},
    {"poe set force-inrush", "PORTS", "4-1 1",
     "PORTS: '4-1' is no range of ports; give one as 1-8"},
    {"poe set force-inrush", "VALUE", "1 yes", "VALUE: 'yes' is none of on|off"},
    {"poe set budget", "MILLIWATTS", "6553501",
     "MILLIWATTS: '6553501' is not a number from 0 to 6553500"},
    {"poe on", "PORTS", "49", "PORTS: '49' is not a number from 1 to 48"},
    {"poe off", "PORTS", "49", "PORTS: '49' is not a number from 1 to 48"},
    {"poe detect", "PORTS", "49", "PORTS: '49' is not a number from 1 to 48"},
    {"poe classify", "PORTS", "49", "PORTS: '49' is not a number from 1 to 48"},
    {"poe upgrade", "FILE", "/nowhere/x", "cannot open /nowhere/x: No such file or directory", 4},
    {"sfp show", "PORT", "0", "PORT: '0' is not a number from 1 to 4294967295"},
    {"sfp dump", "PORT", "0", "PORT: '0' is not a number from 1 to 4294967295"},
    {"sfp phy", "PORT", "0", "PORT: '0' is not a number from 1 to 4294967295"},
    {"sfp tx", "PORT", "0 on", "PORT: '0' is not a number from 1 to 4294967295"},
    {"sfp tx", "STATE", "49 1", "STATE: '1' is none of on|off"},
    {"mdio read", "A", "32 0", "A: '32' is not a number from 0 to 31"},
    {"mdio read", "B", "0 32", "B: '32' is not a number from 0 to 31"},
    {"mdio write", "A", "32 0 1", "A: '32' is not a number from 0 to 31"},
    {"mdio write", "B", "0 32 1", "B: '32' is not a number from 0 to 31"},
    {"mdio write", "VALUE", "0 0 0x10000", "VALUE: '0x10000' is not a number from 0 to 65535"},
    {"image info", "--bank", "--bank 2", "--bank: '2' is not a number from 0 to 1"},
    {"image verify", "FILE", "/nowhere/x --bank 0",
     "cannot open /nowhere/x: No such file or directory", 4},
    {"image verify", "--bank", "@file --bank 2", "--bank: '2' is not a number from 0 to 1"},
    {"image verify", "--spool", "@file --bank 0 --spool /tmp", "--spool is for standard input; "},
    {"image pack-boot", "IN", "/nowhere/x @file",
     "cannot open /nowhere/x: No such file or directory", 4},
    {"image pack-boot", "OUT", "@file /nowhere/x",
     "cannot write /nowhere/x: No such file or directory", 4},
    {"image check", "FILE", "/nowhere/x", "cannot open /nowhere/x: No such file or directory", 4},
    {"boot get", "SETTING", "speed",
     "SETTING: 'speed' is none of mode|flag|baudrate|console-password|user-password|password"},
    {"boot set", "SETTING", "speed 1",
     "SETTING: 'speed' is none of mode|flag|baudrate|console-password|user-password|password"},
    {"boot set", "VALUE", "baudrate 300",
     "baudrate: '300' is none of 9600|19200|38400|57600|115200"},
    {"boot set", "--backup", "mode 1 --backup /nowhere/x",
     "cannot write /nowhere/x: No such file or directory", 4},
    {"mtd info", "DEVICE", "mtd1",
     "DEVICE: 'mtd1' is none of mtd0|mtd4|mtd12|mtd14, and no path of a device"},
    {"mtd read", "DEVICE", "mtd1 @file",
     "DEVICE: 'mtd1' is none of mtd0|mtd4|mtd12|mtd14, and no path of a device"},
    {"mtd read", "FILE", "mtd4 /nowhere/x", "cannot write /nowhere/x: No such file or directory",
     4},
    {"mtd write", "DEVICE", "mtd1 @file",
     "DEVICE: 'mtd1' is none of mtd0|mtd4|mtd12|mtd14, and no path of a device"},
    {"mtd write", "FILE", "mtd4 /nowhere/x", "cannot open /nowhere/x: No such file or directory",
     4},
    {"mtd write", "--spool", "mtd4 @file --spool /tmp", "--spool is for standard input; "},
    {"mtd erase", "DEVICE", "mtd1",
     "DEVICE: 'mtd1' is none of mtd0|mtd4|mtd12|mtd14, and no path of a device"},
    {"upgrade os", "FILE", "/nowhere/x --bank 0",
     "cannot open /nowhere/x: No such file or directory", 4},
    {"upgrade os", "--bank", "@file --bank 2", "--bank: '2' is not a number from 0 to 1"},
    {"upgrade os", "--spool", "@file --bank 0 --spool /tmp", "--spool is for standard input; "},
    {"upgrade boot", "--spool", "@file --spool /tmp", "--spool is for standard input; "},
    {"upgrade cpld", "--spool", "@file --spool /tmp", "--spool is for standard input; "},
    {"upgrade boot", "FILE", "/nowhere/x", "cannot open /nowhere/x: No such file or directory", 4},
    {"upgrade cpld", "FILE", "/nowhere/x", "cannot open /nowhere/x: No such file or directory", 4},
    {"trace", "--output", "--output /nowhere/x -- true",
     "cannot write /nowhere/x: No such file or directory", 4},
    {"status", "CODE", "BSP_OK", "CODE: 'BSP_OK' is not a number from -2147483648 to 2147483647"},
    {"show", "--from", "--from ''", kNoFileName},
    {"check", "--from", "--from ''", kNoFileName},
    {"metrics", "--from", "--from ''", kNoFileName},
    {"identity get", "--from", "--from ''", kNoFileName},
    {"eeprom dump", "--from", "--from ''", kNoFileName},
    {"power", "--from", "--from ''", kNoFileName},
    {"fan get", "--from", "--from ''", kNoFileName},
    {"temperature", "--from", "--from ''", kNoFileName},
    {"clock get", "--from", "--from ''", kNoFileName},
    {"led get", "--from", "--from ''", kNoFileName},
    {"watchdog get", "--from", "--from ''", kNoFileName},
    {"cpld get", "--from", "1 --from ''", kNoFileName},
    {"i2c scan", "--from", "--from ''", kNoFileName},
    {"i2c read", "--from", "0 0 0x50 0 1 --from ''", kNoFileName},
    {"gpio list", "--from", "--from ''", kNoFileName},
    {"gpio get", "--from", "1 --from ''", kNoFileName},
    {"sfp list", "--from", "--from ''", kNoFileName},
    {"sfp show", "--from", "49 --from ''", kNoFileName},
    {"sfp dump", "--from", "49 --from ''", kNoFileName},
    {"sfp phy", "--from", "49 --from ''", kNoFileName},
    {"poe status", "--from", "--from ''", kNoFileName},
    {"poe info", "--from", "--from ''", kNoFileName},
    {"poe port", "--from", "1 --from ''", kNoFileName},
    {"image info", "--from", "--from ''", kNoFileName},
    {"image verify", "--from", "@file --bank 0 --from ''", kNoFileName},
    {"boot get", "--from", "--from ''", kNoFileName},
    {"mtd list", "--from", "--from ''", kNoFileName},
    {"mtd info", "--from", "mtd12 --from ''", kNoFileName},
    {"mtd read", "--from", "mtd12 @new --from ''", kNoFileName},
};

constexpr BadWord kVboard[] = {
    {"create", "DIR", "--model 0x0709 /nowhere/x", "/nowhere is not a folder; create it first", 1},
    {"create", "--model", "--model 0x1234 @new",
     "there is no model '0x1234'; 'vboard list-models' lists them", 1},
    {"create", "--from", "--from /nowhere/x @new",
     "cannot read /nowhere/x: No such file or directory", 1},
    {"create", "--time", "--model 0x0709 --time slow @new",
     "--time: 'slow' is none of real|virtual"},
    {"create", "--serial", "--model 0x0709 --serial '' @new",
     "a serial number is 1 to 31 printable ASCII characters", 1},
    {"create", "--mac", "--model 0x0709 --mac 02:00 @new",
     "'02:00' is not a MAC address: give six bytes as AA:BB:CC:DD:EE:FF", 1},
    {"create", "--cmdline", "--model 0x0709 --cmdline \xE9 @new",
     "a kernel command line is up to 1024 printable ASCII characters", 1},
    {"create", "--mtd", "--model 0x0709 --mtd 5:size=1 @new",
     "there is no flash partition 5; the numbers are 0, 4, 12 and 14", 1},
    {"create", "--flash-timing", "--model 0x0709 --flash-timing slow @new",
     "--flash-timing: 'slow' is none of off|usual"},
    {"env", "DIR", "/nowhere",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"capture", "DIR", "/nowhere -",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"capture", "FILE", "@board /nowhere/x", "cannot write /nowhere/x: No such file or directory",
     1},
    {"panel", "DIR", "/nowhere",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"panel", "--svg", "@board --svg /nowhere/x",
     "cannot write /nowhere/x: No such file or directory", 1},
    {"panel", "--html", "@board --html /nowhere/x",
     "cannot write /nowhere/x: No such file or directory", 1},
    {"serve", "DIR", "/nowhere", "/nowhere is not a folder; give a board, or a folder with boards",
     1},
    {"serve", "--listen", "@board --listen 8080",
     "--listen: '8080' is not ADDRESS:PORT, as '127.0.0.1:8080', '[::1]:8080', 'localhost:8080' "
     "or, "
     "with a free port, '127.0.0.1:0'"},
    {"serve", "--token-file", "@board --token-file /nowhere/x",
     "cannot read /nowhere/x: No such file or directory", 1},
    {"serve", "--scenario", "@board --scenario /nowhere/x",
     "cannot read the scenario /nowhere/x: No such file or directory", 1},
    {"serve", "--host", "@board --host a/b",
     "--host: 'a/b' is not NAME or NAME:PORT, as 'lab.example:8080'"},
    {"flash", "DIR", "/nowhere",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"upgrade", "DIR", "/nowhere", "/nowhere: No such file or directory", 1},
    {"copy", "DIR", "/nowhere @new", "/nowhere: No such file or directory", 1},
    {"copy", "COPY", "@board /nowhere/x", "/nowhere is not a folder; create it first", 1},
    {"delete", "DIR", "/nowhere", "/nowhere: No such file or directory", 1},
    {"list", "FOLDER", "/nowhere", "/nowhere is not a folder; give one with boards below it", 1},
    {"console", "DIR", "/nowhere",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"trace", "DIR", "/nowhere",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"advance", "DIR", "/nowhere 1",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"advance", "SECONDS", "@board soon", "SECONDS: 'soon' is not a number of seconds from 0 to "},
    {"advance", "--patience", "@board 1 --patience 0",
     "--patience: '0' is not a number of seconds from 0.001 to "},
    {"play", "DIR", "/nowhere @file",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"play", "FILE", "@board /nowhere/x", "cannot read /nowhere/x: No such file or directory", 1},
    {"replay", "DIR", "/nowhere @file",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"replay", "TRACE", "@board /nowhere/x", "cannot read /nowhere/x: No such file or directory",
     1},
    {"get", "DIR", "/nowhere",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"run", "DIR", "/nowhere -- true",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"set", "DIR", "/nowhere cpld.1 1",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"fault", "DIR", "/nowhere list",
     "/nowhere: No such file or directory; create a board with: vboard create", 1},
    {"get", "NAME", "@board cpld.64", "there is no cpld.64; the numbers are 0 to 63", 1},
    {"set", "NAME", "@board cpld.64 1", "there is no cpld.64; the numbers are 0 to 63", 1},
    {"properties", "PATTERN", "nothing.*",
     "no property fits 'nothing.*'; 'vboard properties' lists all", 1},
    {"fault add", "--device", "--device disk --effect no-answer",
     "'disk' is not a device (or the path of a file of the board); choose from: cpld, gpio, i2c, "
     "poe, mtd0, mtd4, mtd12, mtd14",
     1},
    {"fault add", "--op", "--device cpld --effect no-answer --op look",
     "'look' is not an operation; choose from: any, open, read, write, reset, program, erase, "
     "info, change, upgrade, map",
     1},
    {"fault add", "--offset", "--device cpld --effect no-answer --offset 64",
     "'64' is not a CPLD register: give a number from 0 to 63", 1},
    {"fault add", "--nth", "--device cpld --effect no-answer --nth 0",
     "'0' is not a count of requests: give a number from 1 to 4294967295", 1},
    {"fault add", "--when", "--device cpld --effect no-answer --when never",
     "'never' is not a time; choose from: once, every, from", 1},
    {"fault add", "--effect", "--device cpld --effect explode",
     "'explode' is not an effect; choose from: refuse, open-fails, ioctl-fails, short, corrupt, "
     "no-answer, late-answer, wrong-echo, wrong-checksum, bad-port, power-loss, no-effect, fails, "
     "power-cut",
     1},
    {"fault clear", "ID", "77",
     "there is no fault rule 77; 'vboard fault DIR list' lists them; none was cleared", 1},
    {"panel", "--interval", "@board --watch --interval 0",
     "--interval: '0' is not a number of seconds from 0.1 to 3600, with up to three decimals"},
    {"flash mark-bad", "PARTITION", "5 1",
     "there is no flash partition 5; the numbers are 0, 4, 12 and 14", 1},
    {"flash mark-bad", "BLOCK", "12 324", "'324' is not a block of partition 12; they are 0 to 323",
     1},
    {"trace", "--last", "@board --last few", "--last: 'few' is not a number from 0 to 4294967295"},
};

/** Words that a command takes, while it refuses them itself. */
bool isJudgedByCommand(const BadWord &row) {
    const std::string argument = row.argument;
    const std::string message = row.message;
    return row.exitCode != 2 || !message.starts_with(argument + ": ");
}

class BadWordsTest : public IodbgTest {
  protected:
    /** The command line of a row. */
    Words lineOf(const BadWord &row, const Words &call) const {
        Words line = call;
        for (const std::string &word : wordsOf(row.words))
            line.push_back(word == "''" ? "" : pathOf(word));
        return line;
    }

    std::string pathOf(const std::string &word) const {
        if (word == "@file")
            return makeFile("file", "123456789");
        if (word == "@new")
            return hostFile("new");
        return word == "@board" ? boardFolder() : word;
    }

    /** "COMMAND ARGUMENT" of all that take a word. */
    static std::set<std::string> asked(const NamedTool &named) {
        std::set<std::string> names;
        command_line::Tool tool = named.make();
        for (const command_line::Command *command : commandsOf(tool)) {
            for (const command_line::Word &word : command->words) {
                if (word.kind != command_line::Word::Kind::Flag)
                    names.insert(command->wholeName() + " " + word.name);
            }
        }
        return names;
    }

    template <size_t Rows>
    static std::set<std::string> answered(const NamedTool &tool, const BadWord (&table)[Rows]) {
        std::set<std::string> names;
        for (const BadWord &row : table)
            names.insert(tool.name + " " + row.command + " " + row.argument);
        return names;
    }

    /** Expects a row for each word that is asked for, and for no others. */
    template <size_t Rows>
    static void expectARowForEach(const NamedTool &tool, const BadWord (&table)[Rows]) {
        std::set<std::string> strangers = answered(tool, table);
        for (const std::string &name : asked(tool))
            EXPECT_EQ(strangers.erase(name), 1u) << "there is no row of " << name;
        EXPECT_EQ(strangers, std::set<std::string>{}) << "no command takes these";
    }

    /** Expects the words to be refused before anything is done; or not, when that is the command's.
     */
    static void expectJudged(const NamedTool &tool, const BadWord &row, const Words &line) {
        const std::string refusal = refusalOf(tool, line);
        if (isJudgedByCommand(row)) {
            EXPECT_EQ(refusal, "") << row.command << " " << row.argument;
            return;
        }
        EXPECT_EQ(refusal.find(row.message), 0u) << row.command << ": " << refusal;
        EXPECT_TRUE(refusal.ends_with("; see '" + tool.name + " " + row.command + " --help'"))
            << refusal;
    }
};

TEST_F(BadWordsTest, IodbgNamesTheArgumentAndWhatIsAllowed) {
    expectARowForEach(kIodbgTool, kIodbg);
    size_t judgedByParsers = 0;
    for (const BadWord &row : kIodbg) {
        const Words line = lineOf(row, wordsOf(row.command));
        expectJudged(kIodbgTool, row, line);
        if (isJudgedByCommand(row))
            expectRefusal(line, row.exitCode, row.message);
        else
            ++judgedByParsers;
    }
    EXPECT_GT(judgedByParsers, 80u);
}

TEST_F(BadWordsTest, VboardNamesTheArgumentAndWhatIsAllowed) {
    expectARowForEach(kVboardTool, kVboard);
    const BoardContent before = content();
    for (const BadWord &row : kVboard) {
        Words call;
        for (const std::string &word : wordsOf(row.command)) {
            if (call.size() == 1)
                call.push_back(boardFolder()); // stands before a command of a group
            call.push_back(word);
        }
        const Words line = lineOf(row, call);
        expectJudged(kVboardTool, row, line);
        if (!isJudgedByCommand(row))
            continue;
        const std::string name = std::string(row.command) + " " + row.argument;
        const RefusedAction refused = refusedActionOf(kVboardTool, line);
        EXPECT_NE(refused.message.find(row.message), std::string::npos)
            << name << ": " << refused.message;
        EXPECT_EQ(refused.message.find('\n'), std::string::npos) << refused.message;
        EXPECT_EQ(refused.isWrongUsage, row.exitCode == 2) << name;
        EXPECT_TRUE(content() == before) << name;
        EXPECT_NE(access(hostFile("new").c_str(), F_OK), 0) << name;
    }
}

} // namespace
