// A day in the life of a switch that powers devices: it comes blank from the line, becomes a unit
// of its own, is installed, used, mistreated, repaired, upgraded, and started again.

#include "tests/support/firmware.h"
#include "tests/system/unit_test.h"

namespace {

/** What `boot get` tells once the settings are as the installer wants them. */
constexpr char kSettings[] =
    "{\"mode\":1,\"flag\":2,\"baudrate\":9600,\"console_password\":true,\"user_password\":false,"
    "\"password\":\"s3cret\",\"erased\":false,\"failures\":[]}";

class PoeSwitchDay : public UnitTest {
  protected:
    void firstStart() const;
    void identity() const;
    void clock() const;
    void poeInitialisation() const;
    void devicesArePlugged() const;
    void modulesArePlugged() const;
    void modulesAreSwapped() const;
    void aFanAndASupplyFail() const;
    void everythingIsRepaired() const;
    void settings() const;
    void watchdog() const;
    void anEngineerLooksInside() const;
    void operatingSystemUpgrade() const;
    void bootLoaderAndLogicUpgrade() const;
    void poeFirmwareUpgrade() const;
    void reboot() const;
    void afterTheReboot() const;

    /** One line for each cage: "49 on 10GBASE-SR". */
    Lines cages(int exitCode = 0) const;
    /** What a flash partition holds. */
    Json held(uint32_t partition) const;
};

Lines PoeSwitchDay::cages(int exitCode) const {
    Lines lines;
    Json answer = json("sfp list", exitCode);
    for (const Json &cage : answer.at("cages")) {
        std::string line = cage.at("port").dump();
        if (cage.at("present") == true) {
            line += cage.at("transmitter_on") == true ? " on" : " off";
            line += cage.at("rx_loss") == true ? " no-signal" : "";
            line += " " + cage.at("compliance").dump();
        }
        lines.push_back(line);
    }
    return lines;
}

Json PoeSwitchDay::held(uint32_t partition) const {
    for (const Json &flash : Json::parse(vboard({"flash", board(), "--json"}))) {
        if (flash.at("partition") == partition)
            return flash.at("holds");
    }
    return {};
}

void PoeSwitchDay::firstStart() const {
    set("eeprom.board@0x100", std::string(256, 'f'));
    EXPECT_EQ(json("init")["system"].get<std::string>().substr(0, 18), "2024-01-01 00:00:0");
    EXPECT_EQ(
        complaints(5),
        withEmptyFlash(
            {"fault product record: there is none; make one with 'iodbg identity new', or store "
             "a file with 'iodbg identity set record'",
             "not-judged serial number: hangs on the product record",
             "not-judged MAC address: hangs on the product record",
             "warning PoE controller: not initialised; run 'iodbg poe init'",
             "not-judged PoE ports: hangs on the PoE controller"}));
}

void PoeSwitchDay::identity() const {
    EXPECT_EQ(refusal("identity set serial SW-0042", 1),
              "iodbg: cannot change a part of the board's record: BSP_E_NO_RECORD (1017), the "
              "EEPROM holds no product information record; a damaged record can only be replaced: "
              "write a whole one with 'iodbg identity set record --file FILE'");
    std::string record(128, '\0');
    record.replace(0, 7, "DEVINFO");
    record.replace(32, 11, "SWITCH-48-P");
    record[96] = 2; // supplies
    const std::string file = makeFile("record", record);
    EXPECT_EQ(refusal("identity set record --file " + file, 4),
              "iodbg: " + file +
                  " does not match its own CRC; give an undamaged file, or --renew-crc when it was "
                  "edited on purpose");
    iodbg("identity set record --renew-crc --file " + file);
    iodbg("identity set serial SW-0042");
    iodbg("identity set mac 02:00:5E:20:00:FF");
    EXPECT_EQ(get({"identity.serial", "identity.mac"}), (Lines{"SW-0042", "02:00:5e:20:00:ff"}));
    Json known = json("identity get");
    EXPECT_EQ(known["serial_number"], "SW-0042");
    EXPECT_EQ(known["base_mac"], "02:00:5E:20:00:FF");
    EXPECT_EQ(known["board_mac"], "02:00:5E:20:00:00") << "the last byte alone is counted up";
    EXPECT_EQ(known["record"]["crc_ok"], true);
    EXPECT_EQ(known["record"]["product_name"], "SWITCH-48-P");
    EXPECT_EQ(known["record"]["supply_count"], 2);
}

void PoeSwitchDay::clock() const {
    Json answer = json("clock set 2051-02-28T23:59:50");
    EXPECT_EQ(answer["after"], "2051-02-28 23:59:50");
    pass(20);
    EXPECT_EQ(get({"rtc.time"}), Lines{"2051-03-01 00:00:10"});
    EXPECT_EQ(json("clock sync")["system"].get<std::string>().substr(0, 18), "2051-03-01 00:00:1");
    EXPECT_NE(get({"system-clock"}), Lines{"host"});
    EXPECT_LE(std::abs(json("clock get")["drift_s"].get<int>()), 10);
}

void PoeSwitchDay::poeInitialisation() const {
    Json answer;
    // 227 commands, each of which takes 100 ms before it is sent and 100 ms until its answer is
    // fetched; two resets take a second more, two switches of all ports 1.1 s, two of the
    // mapping 2.1 s.
    EXPECT_EQ(millisecondsOf([&] { answer = json("poe init"); }), 53800);
    EXPECT_EQ(answer["event"], "result");
    EXPECT_EQ(answer["poe"].dump(),
              "{\"controller_present\":true,\"application_status\":0,"
              "\"application_version\":\"V1.0.0.0\",\"initialised\":true,\"budget_mw\":3000000,"
              "\"drawn_mw\":0,\"rated_per_supply_mw\":1440000}");
}

void PoeSwitchDay::devicesArePlugged() const {
    iodbg("poe set budget 40000");
    set("poe.3.device", "class=4 requests=25500 draws=18000");
    iodbg("poe detect 3");
    set("poe.1.device", "class=4 requests=25500 draws=18000");
    set("poe.2.device", "class=3 over-current");
    set("poe.4.device", "class=2 signature=short");
    set("poe.5.device", "class=4 signature=bad");
    set("poe.48.device", "class=2 requests=6000 draws=5500");
    iodbg("poe detect 1-2");
    Json answer = json("poe status 1-5,48");
    EXPECT_EQ(answer["poe"]["drawn_mw"], 23500);
    Json &ports = answer["ports"];
    EXPECT_EQ(column(ports, "detection"), "4 0 4 0 3 4");
    EXPECT_EQ(column(ports, "class"), "4 0 4 0 0 2");
    EXPECT_EQ(column(ports, "delivering"), "false false true false false true");
    EXPECT_EQ(column(ports, "fault"), "false true false true false false");
    EXPECT_EQ(column(ports, "power_mw"), "null null 18000 null null 5500");
    EXPECT_EQ(column(ports, "voltage_v"), "null null 53 null null 53");
    EXPECT_EQ(column(ports, "limit_mw"), "90000 90000 90000 90000 90000 90000");
    EXPECT_EQ(get({"poe.1.state", "poe.2.state", "poe.3.state", "poe.4.state", "poe.5.state",
                   "poe.48.state"}),
              (Lines{"denied", "fault", "delivering", "fault", "idle", "delivering"}));

    set("poe.3.device", "none"); // which frees enough for the first port
    set("poe.2.device", "none");
    set("poe.4.device", "none");
    iodbg("poe detect 1,2,4");
    EXPECT_EQ(get({"poe.1.state", "poe.2.state", "poe.3.state", "poe.4.state"}),
              (Lines{"delivering", "idle", "idle", "idle"}));
    iodbg("poe set mode 1 semi");
    EXPECT_EQ(column(json("poe off 1")["ports"], "delivering"), "false");
    EXPECT_EQ(json("poe info")["poe"]["drawn_mw"], 5500);
    EXPECT_EQ(column(json("poe on 1")["ports"], "delivering"), "true");
    iodbg("poe set mode 1 auto");
    EXPECT_EQ(json("poe info")["poe"]["drawn_mw"], 23500);

    iodbg("poe set priority 7 1"); // the most important port takes what another one has
    set("poe.7.device", "class=4 requests=25500 draws=20000");
    iodbg("poe detect 7");
    EXPECT_EQ(get({"poe.1.state", "poe.7.state"}), (Lines{"denied", "delivering"}));
    set("poe.7.device", "none");
    iodbg("poe detect 7");
    EXPECT_EQ(get({"poe.1.state", "poe.7.state"}), (Lines{"delivering", "idle"}));
}

void PoeSwitchDay::modulesArePlugged() const {
    const char *const modules[] = {"sr",          "lr", "dac", "copper-mode4", "copper-mode12",
                                   "copper-other"};
    uint32_t port = 49;
    for (const char *module : modules) {
        set("sfp." + std::to_string(port) + ".module", module);
        set("sfp." + std::to_string(port++) + ".link", "up");
    }
    EXPECT_EQ(cages(),
              (Lines{"49 on \"10GBASE-SR\"", "50 on \"10GBASE-LR\"", "51 on \"passive cable\"",
                     "52 on \"1000BASE-T\"", "53 on \"1000BASE-T\"", "54 on \"1000BASE-T\""}));
    Json sr = json("sfp show 49");
    EXPECT_EQ(sr["part_number"], "VIRTUAL-SR");
    EXPECT_EQ(sr["wavelength_nm"], 850);
    EXPECT_EQ(column(sr["diagnostics"], "judgement"),
              "\"normal\" \"normal\" \"normal\" \"normal\" \"normal\"");
    EXPECT_EQ(sr["diagnostics"][4].dump(),
              "{\"quantity\":\"rx_power_nw\",\"value\":500000,\"judgement\":\"normal\","
              "\"low_alarm\":50000,\"low_warning\":100000,\"high_warning\":1260000,\"high_alarm\":"
              "1600000}");
    EXPECT_EQ(json("sfp dump 49")["a0h"].get<std::string>().substr(0, 6), "030407");
    EXPECT_EQ(json("sfp show 52")["copper_kind"], 1);
    EXPECT_EQ(json("sfp show 53")["copper_kind"], 2);
    EXPECT_EQ(json("sfp show 54")["copper_kind"], 3);
    EXPECT_EQ(json("sfp phy 54")["registers"][27]["value"], 0x9080);
}

void PoeSwitchDay::modulesAreSwapped() const {
    set("sfp.49.module", "lr");
    set("sfp.50.module", "sr");
    set("sfp.50.rx-power", "60"); // a dirty connector
    set("sfp.51.module", "none");
    set("sfp.52.module", "bad-checksum");
    set("sfp.52.link", "up");
    set("sfp.53.module", "dead");
    iodbg("sfp tx 54 off");
    EXPECT_EQ(cages(1),
              (Lines{"49 on no-signal \"10GBASE-LR\"", "50 on \"10GBASE-SR\"", "51",
                     "52 on \"10GBASE-SR\"", "53 on no-signal null", "54 off \"1000BASE-T\""}));
    iodbg("clock sync");
    const Lines found = complaints(5);
    const Lines modules(found.size() < 5 ? found.begin() : found.end() - 5, found.end());
    EXPECT_EQ(
        modules,
        (Lines{"warning SFP port 49: no signal arrives; check fibre or cable, and that the far end "
               "transmits",
               "warning SFP port 50: received power too low; see 'iodbg sfp show'; check fibre and "
               "far end, then the module",
               "warning SFP port 52: a checksum of its identification is wrong; see 'iodbg sfp "
               "show'; replace the module",
               "warning SFP port 53: no signal arrives; check fibre or cable, and that the far end "
               "transmits",
               "fault SFP port 53: does not answer: BSP_E_FAILED (-1); pull the module and plug it "
               "again; then replace it"}));
}

void PoeSwitchDay::aFanAndASupplyFail() const {
    for (const char *port : {"49", "50", "52", "53"})
        set("sfp." + std::string(port) + ".module", "none");
    set("fan.1.state", "failing");
    set("supply.1.input", "failed");
    pass(5);
    iodbg("led set system 2");
    iodbg("led set lamp4 on");
    EXPECT_EQ(column(json("fan get")["fans"], "speed_rpm"), "1200 1200");
    Json supplies = json("power");
    EXPECT_EQ(supplies["supply1"]["output_power_mw"], 0);
    EXPECT_EQ(supplies["supply2"].dump(),
              "{\"plugged\":true,\"presence_line\":0,\"status\":0,\"type\":1,\"has_readings\":true,"
              "\"input_voltage_mv\":230000,\"input_current_ma\":500,\"input_power_mw\":115000,"
              "\"output_voltage_mv\":54000,\"output_current_ma\":1900,\"output_power_mw\":102625,"
              "\"temperature1_c\":28,\"temperature2_c\":41,\"temperature3_c\":45}");
    EXPECT_EQ(panel(),
              (Lines{"", "[ 1* ][ 3. ][ 5. ][ 7. ][ 9. ][11. ][13. ][15. ][17. ][19. ][21. ][23. ]",
                     "[ 2. ][ 4. ][ 6. ][ 8. ][10. ][12. ][14. ][16. ][18. ][20. ][22. ][24. ]", "",
                     "[25. ][27. ][29. ][31. ][33. ][35. ][37. ][39. ][41. ][43. ][45. ][47. ]",
                     "[26. ][28. ][30. ][32. ][34. ][36. ][38. ][40. ][42. ][44. ][46. ][48* ]", "",
                     "uplinks [49] [50] [51] [52] [53] [54 copper-other off]",
                     "fans    [1 1200 rpm] [2 2400 rpm]", "supplies [1 no input] [2 good, 102 W]",
                     "board   40 C", "lamps   system 2, 4 1, 5 0", "PoE     23 of 40 W",
                     "       * delivers  ~ powering up  . nothing  - denied  ! fault  blank: off",
                     "       o LED lit"}));

    set("fan.1.present", "no");
    set("supply.2.present", "no");
    iodbg("clock sync");
    EXPECT_EQ(complaints(5),
              withEmptyFlash(
                  {"fault fan 1: it or its neighbour is missing; look which, plug it",
                   "fault fan 2: it or its neighbour is missing; look which, plug it",
                   "fault supply 1: its lines tell status 1; check its cable and its own lamp; "
                   "replace it",
                   "warning supply 2: not plugged; plug it, or live without a spare one"}));
}

void PoeSwitchDay::everythingIsRepaired() const {
    set("fan.1.present", "yes");
    set("fan.1.state", "good");
    set("supply.1.input", "good");
    set("supply.2.present", "yes");
    iodbg("fan set 5");
    pass(30);
    EXPECT_EQ(column(json("fan get")["fans"], "speed_rpm"), "7200 7200");
    iodbg("led set lamp4 off");
    iodbg("led set system 1");
    EXPECT_EQ(complaints(0), withEmptyFlash());
}

void PoeSwitchDay::settings() const {
    iodbg("boot set mode 1");
    iodbg("boot set flag 2");
    iodbg("boot set baudrate 9600");
    iodbg("boot set console-password on");
    iodbg("boot set user-password off");
    iodbg("boot set password -", 0, "s3cret\n");
    EXPECT_EQ(json("boot get --show-password").dump(), kSettings);
    EXPECT_EQ(vboard({"console", board()}), "/dev/ttyS0 9600 baud\n");
}

void PoeSwitchDay::watchdog() const {
    iodbg("watchdog set 20");
    EXPECT_EQ(millisecondsOf([this] { iodbg("watchdog feed --every 10 --count 4"); }), 30000);
    EXPECT_EQ(get({"reset.count", "watchdog.expires"}), (Lines{"0", "20.000000000"}));
    pass(25); // too long
    EXPECT_EQ(get({"reset.count", "reset.reason", "watchdog.expires"}),
              (Lines{"1", "watchdog", "off"}));
    EXPECT_EQ(json("watchdog get")["armed"], false);
    EXPECT_EQ(json("led")["panel"]["system"], 0) << "nobody has set it since the reset";
    EXPECT_EQ(json("poe info")["poe"]["initialised"], false);
}

void PoeSwitchDay::anEngineerLooksInside() const {
    EXPECT_EQ(column(json("cpld get 1 2")["registers"], "value"), "1801 4882"); // 0x0709, 0x1312
    EXPECT_EQ(json("cpld set 10 0x1234")["after"], 0x1234);
    EXPECT_EQ(json("gpio get 19")["level"], 1);
    iodbg("gpio set 5 1");
    iodbg("ptp pulse");
    iodbg("eeprom write 0x200 C0FFEE"); // behind the record
    iodbg("led set poe 18 on");
    iodbg("led set indexed 2 on");
    EXPECT_EQ(get({"cpld.10", "gpio.5.direction", "gpio.5", "ptp.pulses", "cpld.14", "cpld.7",
                   "eeprom.board@0x1FF+5"}),
              (Lines{"0x1234", "output", "1", "1", "0xFFFD", "0x0080", "ffc0ffeeff"}));
    iodbg("cpld get 7");
    const std::string trace = vboard({"trace", board(), "--last", "1"});
    EXPECT_NE(trace.find(" CPLD read  reg 7 (lamps) = 0x0080\n"), std::string::npos) << trace;
    EXPECT_EQ(json("i2c read 0 1 0x4F 0 1 --offset-length 0")["data_hex"], "23");
    EXPECT_EQ(json("temperature")["temperature_c"], 35);
    EXPECT_EQ(json("eeprom dump --offset 0x100 --length 8")["data_hex"], "444556494E464F00");
    EXPECT_EQ(json("mtd read mtd4 " + path("settings"))["size_bytes"], 262144);
    EXPECT_EQ(readFile(path("settings")).substr(0, 13), "main_system=1");
    EXPECT_EQ(json("status 1017")["status_name"], "BSP_E_NO_RECORD");
    Json board = json("show")["board"];
    EXPECT_EQ(board["hardware_version"], "A.3");
    EXPECT_EQ(board["cpld_version"], "V1.2");
    EXPECT_EQ(board["boot_loader_version"], "1.2.3");
    EXPECT_EQ(board["serial_number"], "SW-0042");
}

void PoeSwitchDay::operatingSystemUpgrade() const {
    const std::string first = makeFile("os-1.img", osImage("system 1"));
    const std::string second = makeFile("os-2.img", osImage("system 2", 500000));
    EXPECT_EQ(json("upgrade os " + first + " --bank 0 --yes")["verified"], true);
    Json answer = json("upgrade os " + second + " --bank 1 --yes");
    EXPECT_EQ(answer["before"], "empty");
    EXPECT_EQ(answer["verified"], true);
    EXPECT_EQ(column(json("image info")["banks"], "header_text"), "\"system 1\" \"system 2\"");
    EXPECT_EQ(held(12), Json({"image", "image header at 0x2700000"}));
    EXPECT_EQ(held(14), Json({"image", "image header at 0x2700000"}));
}

void PoeSwitchDay::bootLoaderAndLogicUpgrade() const {
    const std::string loader = path("loader.bin");
    iodbg("image pack-boot " + makeFile("loader.raw", std::string(20000, 'L')) + " " + loader);
    EXPECT_EQ(json("image check " + loader)["valid"], true);
    EXPECT_EQ(json("upgrade boot " + loader + " --yes")["verified"], true);
    EXPECT_EQ(get({"flash.0.content@0+4", "flash.0.content@19999+5", "flash.0.erase-counts"}),
              (Lines{"4c4c4c4c", "4c424f4f54", "min=1 max=1 total=16"}));
    const std::string logic = makeFile("logic.vme", "new logic");
    EXPECT_EQ(json("upgrade cpld " + logic + " --yes")["after"], "version V1.2");
    EXPECT_EQ(get({"cpld.logic"}), Lines{"9 bytes, CRC-32 0xD65B4B64, programmed 1 times"});
}

void PoeSwitchDay::poeFirmwareUpgrade() const {
    const std::string file = makeFile("poe.bin", firmwareImage(65536));
    Json answer;
    // 2048 blocks of 125 ms, 10 s for the loader's start, pauses of a second
    EXPECT_EQ(millisecondsOf([&] { answer = json("poe upgrade " + file + " --yes"); }), 269850);
    EXPECT_EQ(answer["version_before"], "V1.0.0.0");
    EXPECT_EQ(answer["version_after"], "V1.2.3.4");
    EXPECT_EQ(json("poe info")["poe"]["application_status"], 1);
    EXPECT_EQ(millisecondsOf([this] { iodbg("poe init"); }), 53800);
    EXPECT_EQ(json("poe info")["poe"]["application_status"], 0);
}

void PoeSwitchDay::reboot() const {
    iodbg("led set system 3");
    iodbg("watchdog set 60");
    iodbg("fan set 7");
    EXPECT_EQ(refusal("reboot", 2),
              "iodbg: nobody answered, nothing was done; say --yes where nobody can");
    EXPECT_EQ(get({"reset.count"}), Lines{"1"});
    iodbg("reboot --yes");
    EXPECT_EQ(get({"reset.count", "reset.reason"}), (Lines{"2", "register"}));
}

void PoeSwitchDay::afterTheReboot() const {
    pass(10);
    EXPECT_EQ(json("init")["system"].get<std::string>().substr(0, 15), "2051-03-01 00:0");
    // What is in flash, EEPROMs and under a battery has stayed...
    EXPECT_EQ(get({"identity.serial", "identity.mac"}), (Lines{"SW-0042", "02:00:5e:20:00:ff"}));
    EXPECT_EQ(json("boot get --show-password").dump(), kSettings);
    EXPECT_EQ(column(json("image info")["banks"], "header_text"), "\"system 1\" \"system 2\"");
    EXPECT_EQ(get({"cpld.logic"}), Lines{"9 bytes, CRC-32 0xD65B4B64, programmed 1 times"});
    EXPECT_EQ(json("poe info")["poe"]["application_version"], "V1.2.3.4");
    EXPECT_EQ(vboard({"console", board()}), "/dev/ttyS0 9600 baud\n");
    // ...and what is in registers has not: lamps, watchdog, the fans' level, the transmitter that
    // was switched off, and all that the PoE controller was told.
    EXPECT_EQ(complaints(0), (Lines{"warning PoE controller: not initialised; run 'iodbg poe init'",
                                    "not-judged PoE ports: hangs on the PoE controller"}));
    EXPECT_EQ(json("watchdog get")["period"], 0);
    EXPECT_EQ(json("fan get")["level"], 1);
    EXPECT_EQ(
        panel(),
        (Lines{"", "[ 1  ][ 3  ][ 5  ][ 7  ][ 9  ][11  ][13  ][15  ][17  ][19  ][21  ][23  ]",
               "[ 2  ][ 4  ][ 6  ][ 8  ][10  ][12  ][14  ][16  ][18  ][20  ][22  ][24  ]", "",
               "[25  ][27  ][29  ][31  ][33  ][35  ][37  ][39  ][41  ][43  ][45  ][47  ]",
               "[26  ][28  ][30  ][32  ][34  ][36  ][38  ][40  ][42  ][44  ][46  ][48  ]", "",
               "uplinks [49] [50] [51] [52] [53] [54 copper-other up]",
               "fans    [1 2400 rpm] [2 2400 rpm]", "supplies [1 good, 102 W] [2 good, 102 W]",
               "board   39 C", "lamps   system 0, 4 0, 5 0", "PoE     0 of 0 W",
               "       * delivers  ~ powering up  . nothing  - denied  ! fault  blank: off",
               "       o LED lit"}));
    // The controller powers again what it finds, once it is told to.
    iodbg("poe init");
    iodbg("poe detect 1");
    EXPECT_EQ(json("poe status 1,48")["poe"]["drawn_mw"], 23500);
}

TEST_F(PoeSwitchDay, FromTheLineToTheNight) {
    repeatOnCopies();
    firstStart();
    identity();
    clock();
    poeInitialisation();
    devicesArePlugged();
    modulesArePlugged();
    modulesAreSwapped();
    aFanAndASupplyFail();
    everythingIsRepaired();
    settings();
    watchdog();
    anEngineerLooksInside();
    operatingSystemUpgrade();
    bootLoaderAndLogicUpgrade();
    poeFirmwareUpgrade();
    reboot();
    afterTheReboot();
}

} // namespace
