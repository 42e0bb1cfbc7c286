// iodbg check: each thing that can be wrong, and what is said of it.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/json.h"
#include "tests/support/world.h"

#include <cerrno>
#include <unistd.h>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class CheckCommandTest : public IodbgTest {
  protected:
    static void passSeconds(unsigned seconds) { sleep(seconds); }
    /** "VERDICT FOUND" of a subject; the exit code must be this one. */
    std::string verdictOn(const std::string &subject, int exitCode) const {
        const auto answer = parsedJson(json({"check"}, exitCode));
        for (const auto &finding : answer["findings"]) {
            if (finding["subject"] == subject)
                return finding["verdict"].get<std::string>() + " " +
                       finding["found"].get<std::string>();
        }
        return "nothing";
    }
};

TEST_F(CheckCommandTest, ANewUnitHasNoFault) {
    const std::string answer = json({"check"});
    EXPECT_EQ(jsonKeys(answer, ""),
              (Words{"findings", "faults", "warnings", "not_judged", "failures"}));
    EXPECT_EQ(jsonKeys(answer, "/findings/0"),
              (Words{"subject", "verdict", "found", "advice", "code", "unit", "index", "cause"}));
    EXPECT_EQ(jsonAt(answer, "/faults"), "0");
    EXPECT_EQ(verdictOn("product record", 0), "good whole");
    EXPECT_EQ(verdictOn("fan 1", 0), "good 2400 rpm");
    EXPECT_EQ(verdictOn("supply 2", 0), "good plugged, status 0");
    EXPECT_EQ(verdictOn("PoE controller", 0), "warning not initialised");
    EXPECT_EQ(verdictOn("bank 1", 0), "warning holds no image");
    EXPECT_EQ(verdictOn("boot settings", 0), "warning none is stored, the defaults hold");
}

TEST_F(CheckCommandTest, ADamagedRecordIsAFault) {
    record()[20] ^= 1;
    EXPECT_EQ(verdictOn("product record", 5).substr(0, 19), "fault its CRC is 0x");
    record()[0] = 'X';
    EXPECT_EQ(verdictOn("product record", 5), "fault there is none");
}

TEST_F(CheckCommandTest, AnAddressOfNoUnitIsAFault) {
    world::set("identity.mac", "01:00:5e:10:00:00");
    EXPECT_EQ(verdictOn("MAC address", 5), "fault 01:00:5E:10:00:01 is no address of a unit");
}

TEST_F(CheckCommandTest, FansAndSuppliesAreJudged) {
    world::set("fan.1.present", "no");
    EXPECT_EQ(verdictOn("fan 1", 5), "fault it or its neighbour is missing");
    world::set("fan.1.present", "yes");
    world::set("fan.1.state", "stuck");
    passSeconds(10);
    EXPECT_EQ(verdictOn("fan 2", 5), "fault it or its neighbour stands still");
    world::set("supply.2.present", "no");
    EXPECT_EQ(verdictOn("supply 2", 5), "warning not plugged");
    world::set("supply.1.input", "failed");
    EXPECT_EQ(verdictOn("supply 1", 5).substr(0, 28), "fault its lines tell status ");
}

TEST_F(CheckCommandTest, AFanThatIsSlowerThanTheOthersIsAFault) {
    useModel(0x0309);
    world::set("fan.3.state", "failing");
    passSeconds(10);
    EXPECT_EQ(verdictOn("fan 3", 5), "fault 1200 rpm, while the fastest has 2400");
    EXPECT_EQ(verdictOn("fan 4", 5), "good 2400 rpm");
    devices().cpld.reg[29] = 0x0F14; // three quarters are not slow yet
    EXPECT_EQ(verdictOn("fan 4", 0), "good 1800 rpm");
}

TEST_F(CheckCommandTest, AModelNeedNotHaveFans) {
    useModel(0x0109);
    EXPECT_EQ(verdictOn("fan 1", 0), "good none seen");
    devices().cpld.reg[28] = 0x0014; // the first one turns after all
    EXPECT_EQ(verdictOn("fan 1", 5), "good 2400 rpm");
    EXPECT_EQ(verdictOn("fan 2", 5), "fault stands still or is not there");
}

TEST_F(CheckCommandTest, TheTemperatureIsJudged) {
    constexpr unsigned kHour = 3600;
    EXPECT_EQ(verdictOn("temperature", 0), "good 40 C");
    world::set("temperature.ambient", "50");
    passSeconds(kHour);
    EXPECT_EQ(verdictOn("temperature", 0), "warning 65 C");
    world::set("temperature.ambient", "85");
    passSeconds(kHour);
    EXPECT_EQ(verdictOn("temperature", 5), "fault 100 C, too hot");
    world::set("temperature.ambient", "-40");
    passSeconds(kHour);
    EXPECT_EQ(verdictOn("temperature", 0), "warning -25 C");
    world::set("temperature.state", "missing");
    EXPECT_EQ(verdictOn("temperature", 5), "fault does not answer: status -6");
}

TEST_F(CheckCommandTest, TransceiversAreJudged) {
    EXPECT_EQ(verdictOn("SFP cages", 0), "good no module is plugged");
    world::set("sfp.50.module", "sr");
    EXPECT_EQ(verdictOn("SFP cages", 0), "nothing");
    EXPECT_EQ(verdictOn("SFP port 50", 0), "warning no signal arrives");
    world::set("sfp.50.link", "up");
    EXPECT_EQ(verdictOn("SFP port 50", 0), "good module works");
    world::set("sfp.50.rx-power", "60");
    EXPECT_EQ(verdictOn("SFP port 50", 0), "warning received power too low");
    world::set("sfp.50.rx-power", "6000");
    EXPECT_EQ(verdictOn("SFP port 50", 5), "fault received power too high");
    world::set("sfp.50.rx-power", "500");
    world::set("sfp.50.state", "tx-fault");
    EXPECT_EQ(verdictOn("SFP port 50", 5), "fault transmitter fault");
    world::set("sfp.50.module", "bad-checksum");
    world::set("sfp.50.link", "up");
    EXPECT_EQ(verdictOn("SFP port 50", 0), "warning a checksum of its identification is wrong");
}

TEST_F(CheckCommandTest, ATransceiverThatDoesNotAnswerIsAFault) {
    world::set("sfp.49.module", "lr");
    world::set("sfp.49.link", "up");
    world::set("sfp.49.state", "dead");
    const std::string answer = iodbg({"check"}).out;
    EXPECT_NE(answer.find("\nSFP port 49     FAULT       does not answer: BSP_E_FAILED (-1)\n"
                          "                            > pull the module and plug it again; then "
                          "replace it\n"),
              std::string::npos)
        << answer;
}

TEST_F(CheckCommandTest, TheClockIsJudged) {
    iodbg({"i2c", "write", "0", "1", "0x51", "7", "13"}); // a month of 13, counted from 0
    EXPECT_EQ(verdictOn("clock", 5), "fault holds no date and time");
    world::set("rtc.battery", "empty");
    world::set("power", "cycle");
    passSeconds(5); // the PoE controller starts
    EXPECT_EQ(verdictOn("clock", 5), "fault has lost the time");
    EXPECT_EQ(iodbg({"clock", "set", "now"}).exitCode, 0);
    EXPECT_EQ(verdictOn("clock", 0).substr(0, 5), "good ");
    useModel(0x0409);
    EXPECT_EQ(verdictOn("clock", 0), "nothing") << "the model has none";
}

TEST_F(CheckCommandTest, ThePoeControllerIsJudged) {
    EXPECT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    EXPECT_EQ(verdictOn("PoE controller", 0), "good initialised");
    EXPECT_EQ(verdictOn("PoE ports", 0), "good none has a fault");
    world::set("poe.8.device", "class=3 over-current");
    iodbg({"poe", "detect", "8"}); // a second passes
    EXPECT_EQ(verdictOn("PoE ports", 0), "nothing");
    EXPECT_EQ(verdictOn("PoE port 8", 0), "warning has a fault");
    world::set("poe.controller", "missing");
    EXPECT_EQ(verdictOn("PoE controller", 5), "fault missing");
}

TEST_F(CheckCommandTest, ModulesAreJudged) {
    world::set("sfp.49.module", "sr");
    world::set("sfp.49.link", "up");
    EXPECT_EQ(verdictOn("SFP port 49", 0), "good module works");
    EXPECT_EQ(iodbg({"sfp", "tx", "49", "off"}).exitCode, 0);
    EXPECT_EQ(verdictOn("SFP port 49", 0), "good its transmitter is switched off");
    world::set("sfp.49.module", "dead");
    EXPECT_EQ(verdictOn("SFP port 49", 5), "fault does not answer: BSP_E_FAILED (-1)");
}

TEST_F(CheckCommandTest, LinesThatTellNothingAreNotJudged) {
    useModel(0x0509); // the uplinks' loss line is their presence line
    world::set("sfp.33.module", "sr");
    world::set("sfp.33.link", "up");
    EXPECT_EQ(verdictOn("SFP port 33", 0), "good module works");
}

} // namespace
