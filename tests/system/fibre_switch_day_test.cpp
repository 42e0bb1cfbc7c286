// A day in the life of a switch of fibre ports: it has no PoE, built-in supplies, and four fans
// that each tell their own speed, but whose presence lines are the supplies', too.

#include "tests/system/unit_test.h"

namespace {

class FibreSwitchDay : public UnitTest {
  protected:
    FibreSwitchDay() : UnitTest("0x0609") {}

    void firstStart() const;
    void noPoe() const;
    void modulesInAllKindsOfCages() const;
    void fansFailOneByOne() const;
    void aSupplyIsPulled() const;
    void aPhyIsAsked() const;
    void powerIsSwitchedOff() const;

    /** What is always said of this model's lines, between what is said of its fans and supplies. */
    static Lines findings(Lines fans = {}, const Lines &rest = {});
    /** "plugged" cages among all: "1 17 48". */
    std::string pluggedPorts() const;
};

Lines FibreSwitchDay::findings(Lines fans, const Lines &rest) {
    fans.emplace_back("not-judged presence lines: one is that of fans 1-2 and of supply 1, one of "
                      "fans 3-4 and of supply 2: they tell of neither for sure");
    fans.insert(fans.end(), rest.begin(), rest.end());
    return withEmptyFlash(fans);
}

std::string FibreSwitchDay::pluggedPorts() const {
    std::string ports;
    Json answer = json("sfp list");
    EXPECT_EQ(answer["cages"].size(), 54u);
    for (const Json &cage : answer["cages"]) {
        if (cage["present"] == true)
            ports += (ports.empty() ? "" : " ") + cage["port"].dump();
    }
    return ports;
}

void FibreSwitchDay::firstStart() const {
    iodbg("init");
    EXPECT_EQ(complaints(0), findings());
    EXPECT_EQ(json("show")["board"]["device_id"], 0x0609);
    EXPECT_EQ(json("power")["supply1"]["has_readings"], false);
}

void FibreSwitchDay::noPoe() const {
    EXPECT_EQ(refusal("poe init", 1),
              "iodbg: this model has no PoE; 'iodbg show' tells which it is");
    EXPECT_EQ(json("led")["poe"]["ports"], 0);
}

void FibreSwitchDay::modulesInAllKindsOfCages() const {
    EXPECT_EQ(pluggedPorts(), "");
    for (const char *port : {"1", "16", "17", "48", "49", "54"}) {
        set("sfp." + std::string(port) + ".module", "lr");
        set("sfp." + std::string(port) + ".link", "up");
    }
    EXPECT_EQ(pluggedPorts(), "1 16 17 48 49 54");
    for (const char *port : {"1", "17", "48", "54"})
        EXPECT_EQ(json("sfp show " + std::string(port))["serial_number"],
                  "SFP00000" + std::string(2 - std::string(port).size(), '0') + port);
    iodbg("sfp tx 17 off");
    set("sfp.48.link", "down");
    set("sfp.54.state", "tx-fault");
    set("sfp.16.module", "none");
    iodbg("clock sync");
    Lines expected = findings();
    expected.emplace_back(
        "warning SFP port 48: no signal arrives; check fibre or cable, and that the "
        "far end transmits");
    expected.emplace_back("fault SFP port 54: transmitter fault; replace the module");
    EXPECT_EQ(complaints(5), expected);
    EXPECT_EQ(
        panel(),
        (Lines{"", "SFP     [1 lr up] [2] [3] [4] [5] [6] [7] [8] [9] [10] [11] [12]",
               "        [13] [14] [15] [16] [17 lr off] [18] [19] [20] [21] [22] [23] [24]",
               "        [25] [26] [27] [28] [29] [30] [31] [32] [33] [34] [35] [36]",
               "        [37] [38] [39] [40] [41] [42] [43] [44] [45] [46] [47] [48 lr no signal]",
               "uplinks [49 lr up] [50] [51] [52] [53] [54 lr fault]",
               "fans    [1 2400 rpm] [2 2400 rpm] [3 2400 rpm] [4 2400 rpm]",
               "supplies [1 good] [2 good]",
               "presence [fans 1, 2 and supply 1: 0] [fans 3, 4 and supply 2: 0], one line each",
               "board   40 C", "lamps   system 0, 4 0, 5 0"}));
    for (const char *port : {"1", "17", "48", "49", "54"})
        set("sfp." + std::string(port) + ".module", "none");
    iodbg("sfp tx 17 on");
    EXPECT_EQ(pluggedPorts(), "");
}

void FibreSwitchDay::fansFailOneByOne() const {
    iodbg("fan set 10");
    set("fan.2.present", "no");
    set("fan.3.state", "failing");
    set("fan.4.state", "stuck");
    pass(30);
    EXPECT_EQ(column(json("fan get")["fans"], "speed_rpm"), "13200 0 6600 0");
    EXPECT_EQ(complaints(5),
              findings({"fault fan 2: stands still or is not there; plug it, or replace it",
                        "fault fan 3: 6600 rpm, while the fastest has 13200; replace it",
                        "fault fan 4: stands still or is not there; plug it, or replace it"}));
    set("fan.2.present", "yes");
    set("fan.3.state", "good");
    set("fan.4.state", "good");
    iodbg("fan set 1");
    pass(30);
    EXPECT_EQ(column(json("fan get")["fans"], "speed_rpm"), "2400 2400 2400 2400");
}

void FibreSwitchDay::aSupplyIsPulled() const {
    set("supply.1.present", "no");
    set("supply.2.input", "failed");
    EXPECT_EQ(
        complaints(5),
        findings({}, {"warning supply 1: status 3: not plugged, or it has failed; look whether it "
                      "is plugged; then check its cable and its own lamp",
                      "fault supply 2: its lines tell status 1; check its cable and its own "
                      "lamp; replace it"}));
    set("supply.1.present", "yes");
    set("supply.2.input", "good");
    EXPECT_EQ(complaints(0), findings());
}

void FibreSwitchDay::aPhyIsAsked() const {
    set("mdio.3.5", "0x1234");
    EXPECT_EQ(json("mdio read 3 5")["value"], 0x1234);
    EXPECT_EQ(json("mdio write 3 5 0xABCD")["after"], 0xABCD);
    EXPECT_EQ(get({"mdio.3.5"}), Lines{"0xABCD"});
}

void FibreSwitchDay::powerIsSwitchedOff() const {
    iodbg("clock set 2026-06-01T12:00:00");
    iodbg("clock sync");
    set("power", "cycle");
    EXPECT_EQ(get({"reset.reason", "system-clock", "rtc.time"}),
              (Lines{"power-on", "host", "2026-06-01 12:00:00"}));
    set("rtc.battery", "empty");
    set("power", "cycle");
    EXPECT_EQ(complaints(5),
              findings({}, {"fault clock: has lost the time; set it with 'iodbg clock set'; if it "
                            "comes again, replace the battery"}));
    EXPECT_EQ(refusal("clock sync", 1),
              "iodbg: the clock chip holds no date and time, 1900-01-01 00:00:00; set it with "
              "'iodbg clock set' first");
    set("rtc.battery", "good");
    iodbg("clock set 2026-06-01T12:00:00");
    iodbg("clock sync");
    EXPECT_EQ(complaints(0), findings());
}

TEST_F(FibreSwitchDay, FromTheCartonToThePowerCut) {
    repeatOnCopies();
    firstStart();
    noPoe();
    modulesInAllKindsOfCages();
    fansFailOneByOne();
    aSupplyIsPulled();
    aPhyIsAsked();
    powerIsSwitchedOff();
}

} // namespace
