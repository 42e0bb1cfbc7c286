// iodbg poe.

#include "bsp.h"
#include "tests/iodbg/iodbg_test.h"
#include "tests/support/firmware.h"
#include "tests/support/patterns.h"
#include "virtual_board/devices/poe_ports.h"
#include "virtual_board/words/fault_text.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <thread>
#include <unistd.h>

namespace {

using vb::FaultDevice;
using vb::FaultOp;

class PoeCommandsTest : public IodbgTest {
  protected:
    vb::PoeController &poe() const { return devices().poe; }
    vb::PoePortSettings &settings(uint32_t port) const {
        return poe().rtl8239.settings.port[port - 1];
    }

    /** A board of 24 ports whose controller is ready, and a device on port 3 that is powered. */
    void initialise() {
        useModel(0x0809);
        EXPECT_EQ(bspPoeDeviceInit(), BSP_OK);
    }
    void plug(uint32_t port, uint8_t deviceClass, uint32_t drawn) const {
        vb::poeSetDevice(poe(), port - 1,
                         {1, vb::PoeSignature::Good, deviceClass, 0, drawn + 1000, drawn}, now());
    }
    /** A fault of frames that are written to the controller, of one command or of all. */
    void spoil(const std::string &effect, const std::string &command = "",
               const std::string &when = "from", const std::string &nth = "1") {
        addFault(vb::parseFault({"poe", "write", command, nth, when, effect}));
    }

    std::string image(size_t size) const { return makeFile("image", firmwareImage(size)); }
};

TEST_F(PoeCommandsTest, TellsOfTheController) {
    EXPECT_EQ(iodbg({"poe", "info"}).out, "PoE\n"
                                          "  Controller                present\n"
                                          "  Firmware                  usable\n"
                                          "  Firmware version          V1.0.0.0\n"
                                          "  Initialised               no\n"
                                          "  Power budget, W           0.000\n"
                                          "  Power drawn, W            0.000\n"
                                          "  Rated for each supply, W  1440.000\n");
    initialise();
    plug(3, 4, 18000);
    usleep(1000000);
    EXPECT_EQ(jsonAt(json({"poe", "info"}), ""),
              "{\"poe\":{\"controller_present\":true,\"application_status\":0,\"application_"
              "version\":\"V1.0.0.0\","
              "\"initialised\":true,\"budget_mw\":3000000,\"drawn_mw\":18000,"
              "\"rated_per_supply_mw\":1440000},\"failures\":[]}");
}

TEST_F(PoeCommandsTest, TellsWhatAnUpgradeLeft) {
    writeBoardFile("/tmp/bsp/poeApp", "\1");
    EXPECT_NE(iodbg({"poe", "info"}).out.find("upgrade started, not initialised since\n"),
              std::string::npos);
    writeBoardFile("/tmp/bsp/poeApp", "\2");
    EXPECT_NE(iodbg({"poe", "info"}).out.find("upgrade failed: run 'iodbg poe upgrade'\n"),
              std::string::npos);
    expectFailure({"poe", "init"}, 1, {"BSP_E_POE_UNAVAILABLE", "'iodbg poe upgrade FILE'"});
}

TEST_F(PoeCommandsTest, ShowsPortsInATable) {
    initialise();
    plug(3, 4, 18000);
    usleep(1000000);
    EXPECT_EQ(iodbg({"poe", "set", "priority", "3", "1"}).exitCode, 0);
    const ProcessResult result = iodbg({"poe", "status", "3-4"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(linesOf(result.err),
              (Words{"poe status: step 1 of 2, port 3", "poe status: step 2 of 2, port 4"}));
    const Words lines = linesOf(result.out);
    ASSERT_EQ(lines.size(), 12u) << result.out;
    EXPECT_EQ(lines[9],
              "PORT MODE     DETECTION CLASS FAULT POWER V  MA   W      LIMIT W INRUSH PRIORITY");
    const char *powered = "3    auto     4 good    4     no    on    5[34] 3\\d\\d  "
                          "1[78]\\.\\d00 90\\.000  6      1";
    EXPECT_TRUE(matches(lines[10], powered)) << lines[10];
    EXPECT_EQ(lines[11],
              "4    auto     6 open    -     no    off   -  -    -      90.000  6      3");
}

/** The longest words of all columns, and a row whose exchanges all fail. */
TEST_F(PoeCommandsTest, EachLineOfTheTableFitsInto80Columns) {
    initialise();
    plug(1, 0, 12000); // without a class
    settings(1).limit = 255;
    settings(1).priority = 3;
    settings(2).enable = 0;
    usleep(1000000);
    spoil("bad-port=2", "0x48");
    spoil("bad-port=3", "0x42");
    spoil("bad-port=3", "0x49");
    const ProcessResult result = iodbg({"poe", "status", "1-4"});
    EXPECT_EQ(result.exitCode, 1);
    const Words lines = linesOf(result.out);
    ASSERT_GT(lines.size(), 14u) << result.out;
    for (size_t i = 9; i < 14; ++i)
        EXPECT_LE(lines[i].size(), 80u) << lines[i];
    const char *first = "1    auto     4 good    \\?     no    on    5[34] 2\\d\\d  "
                        "1[12]\\.\\d00 102.000 6      above 1";
    EXPECT_TRUE(matches(lines[10], first)) << lines[10];
    EXPECT_EQ(lines[11],
              "2    disabled 6 open    -     no    off   -  -    -      90.000  6      3");
    EXPECT_EQ(lines[12],
              "3    !        6 open    -     no    off   -  -    -      90.000  6      3")
        << "a mode that cannot be read hides nothing else";
    EXPECT_EQ(lines[13],
              "4    auto     !         !     !     !     -  -    -      !       !      !");
}

TEST_F(PoeCommandsTest, AsksNoMoreThanItMust) {
    useModel(0x0709);
    EXPECT_EQ(bspPoeDeviceInit(), BSP_OK);
    const auto duration = [this](const Words &words) {
        const uint64_t before = now();
        EXPECT_EQ(iodbg(words).exitCode, 0);
        return (now() - before) / 1000000;
    };
    EXPECT_LE(duration({"poe", "status"}), 31'000u);
    EXPECT_LE(duration({"poe", "port", "48"}), 800u);
    for (uint32_t port = 1; port <= 48; ++port)
        plug(port, 4, 18000);
    usleep(1000000);
    EXPECT_LE(duration({"poe", "status"}), 41'000u);
    EXPECT_LE(duration({"poe", "port", "48"}), 1000u);
    EXPECT_EQ(jsonAt(json({"poe", "port", "48"}), "/delivering"), "true");
}

TEST_F(PoeCommandsTest, LooksForTheModelNoMoreThanItMust) {
    initialise();
    const auto looks = [this](const std::string &words) {
        trace();
        EXPECT_EQ(iodbg(wordsOf(words)).exitCode, 0) << words;
        const Lines lines = trace();
        return std::count_if(lines.begin(), lines.end(), [](const std::string &line) {
            return line.find("open /tmp/bsp/devId") != std::string::npos;
        });
    };
    // The command looks once; each call of the library for the driver, and for each transfer, and
    // those about the budget for the map of the ports besides.
    constexpr int kPortCall = 3;
    constexpr int kBudgetCall = 4;
    EXPECT_EQ(looks("poe set limit 3-8 30000"), 1 + 6 * 2 * kPortCall);
    EXPECT_EQ(looks("poe set mode 3-4 semi"), 1 + 2 * (kPortCall + 2 + kPortCall));
    EXPECT_EQ(looks("poe set budget 40000"), 1 + 2 * kBudgetCall);
}

TEST_F(PoeCommandsTest, ShowsEachPortOnATerminalAsItIsRead) {
    initialise();
    spoil("no-answer", "0x44"); // which only a port with power is asked
    plug(2, 4, 18000);
    usleep(1000000);
    const std::string screen = iodbgOnTerminal({"poe", "status", "1-3"});
    // What the library prints of port 2 stands between the rows.
    size_t last = 0;
    for (const char *text :
         {"PoE\r\n", "\r\nPORT MODE", "\r\n1    auto     6 open",
          "rtl8239CmdResponse failed, cmd=0x44",
          "\r\n2    -        4 good    4     no    on    !  !    !      -       -      -\r\n",
          "3    auto     6 open", "Failures\r\n  ports.2.voltage_v: BSP_E_POE_FRAME"}) {
        const size_t place = screen.find(text);
        ASSERT_NE(place, std::string::npos) << text << "\n" << screen;
        EXPECT_GE(place, last) << text << "\n" << screen;
        last = place;
    }
    EXPECT_EQ(screen.find("step "), std::string::npos) << "rows are progress enough";
}

TEST_F(PoeCommandsTest, TellsTheSameOnATerminalAndElsewhere) {
    initialise();
    std::string elsewhere;
    for (const std::string &line : linesOf(iodbg({"poe", "status", "1-2"}).out))
        elsewhere += line + "\r\n";
    EXPECT_EQ(iodbgOnTerminal({"poe", "status", "1-2"}), elsewhere);
    const std::string document = iodbgOnTerminal({"poe", "status", "1-2", "--json"});
    EXPECT_NE(document.find("step 2 of 2, port 2"), std::string::npos);
    EXPECT_EQ(jsonKeys(document.substr(document.find('{')), "/ports").size(), 2u);
}

TEST_F(PoeCommandsTest, AnswersProgramsWithStableKeys) {
    initialise();
    plug(24, 4, 18000);
    usleep(1000000);
    const std::string answer = json({"poe", "status"});
    EXPECT_EQ(jsonKeys(answer, ""), (Words{"poe", "ports", "failures"}));
    EXPECT_EQ(jsonKeys(answer, "/ports").size(), 24u);
    EXPECT_EQ(jsonKeys(answer, "/ports/0"),
              (Words{"port", "mode", "detection", "class", "fault", "delivering", "voltage_v",
                     "current_ma", "power_mw", "limit_mw", "inrush_mode", "priority"}));
    EXPECT_EQ(jsonAt(answer, "/ports/0/voltage_v"), "null");
    EXPECT_EQ(jsonAt(answer, "/ports/23/port"), "24");
    EXPECT_EQ(jsonAt(answer, "/ports/23/mode"), "\"auto\"");
    EXPECT_EQ(jsonAt(answer, "/ports/23/detection"), "4");
    EXPECT_EQ(jsonAt(answer, "/ports/23/class"), "4");
    EXPECT_EQ(jsonAt(answer, "/ports/23/fault"), "false");
    EXPECT_EQ(jsonAt(answer, "/ports/23/delivering"), "true");
    EXPECT_EQ(jsonAt(answer, "/ports/23/voltage_v"), "53");
    EXPECT_EQ(jsonAt(answer, "/ports/23/limit_mw"), "90000");
    EXPECT_EQ(jsonAt(answer, "/ports/23/inrush_mode"), "6");
    EXPECT_EQ(jsonAt(answer, "/ports/23/priority"), "3");
    EXPECT_EQ(std::to_string(std::stoul(jsonAt(answer, "/ports/23/power_mw")) / 1000), "18");
}

TEST_F(PoeCommandsTest, ShowsAPort) {
    initialise();
    settings(5).enable = 0;
    settings(5).priority = 3;
    EXPECT_EQ(iodbg({"poe", "port", "5"}).out, "Port                                5\n"
                                               "Mode                                disabled\n"
                                               "Detection                           6 open\n"
                                               "Class                               -\n"
                                               "Fault                               no\n"
                                               "Power                               off\n"
                                               "Voltage, V                          -\n"
                                               "Current, mA                         -\n"
                                               "Power, W                            -\n"
                                               "Power limit, W                      90.000\n"
                                               "Inrush mode                         6\n"
                                               "Priority (1 is the most important)  above 1\n");
    EXPECT_EQ(jsonAt(json({"poe", "port", "5"}), "/mode"), "\"disabled\"");
}

TEST_F(PoeCommandsTest, AFailingPortDoesNotHideTheOthers) {
    initialise();
    spoil("bad-port=1");
    const std::string answer = json({"poe", "status", "1-3"}, 1);
    EXPECT_EQ(jsonAt(answer, "/ports/0/mode"), "\"auto\"");
    EXPECT_EQ(jsonAt(answer, "/ports/1/mode"), "null");
    EXPECT_EQ(jsonAt(answer, "/ports/1/priority"), "null");
    EXPECT_EQ(jsonAt(answer, "/ports/2/mode"), "\"auto\"");
    EXPECT_EQ(jsonKeys(answer, "/failures").size(), 3u) << "one for each exchange";
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"ports.2.mode\"");
    EXPECT_EQ(jsonAt(answer, "/failures/1/item"), "\"ports.2.detection\"");
    EXPECT_EQ(jsonAt(answer, "/failures/2/item"), "\"ports.2.limit_mw\"");
    EXPECT_EQ(jsonAt(answer, "/failures/0/status_name"), "\"BSP_E_POE_CONTENT\"");
}

TEST_F(PoeCommandsTest, APortThatFallsSilentIsNotAskedFurther) {
    initialise();
    spoil("no-answer", "0x42");
    const std::string answer = json({"poe", "port", "2"}, 1);
    for (const char *key : {"/mode", "/detection", "/class", "/delivering", "/limit_mw"})
        EXPECT_EQ(jsonAt(answer, key), "null") << key;
    EXPECT_EQ(jsonKeys(answer, "/failures").size(), 1u);
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"ports.2.detection\"");
}

TEST_F(PoeCommandsTest, ASilentControllerEndsTheCommandAtOnce) {
    spoil("no-answer");
    const uint64_t before = now();
    expectFailure({"poe", "status"}, 1, {"cannot ask the PoE controller: BSP_E_POE_FRAME"});
    EXPECT_EQ(now() - before, 600'000'000u);
    expectFailure({"poe", "port", "1"}, 1, {"cannot ask the PoE controller"});
    expectFailure({"poe", "info"}, 1, {"cannot ask the PoE controller"});
}

TEST_F(PoeCommandsTest, AMissingControllerIsNamed) {
    devices().cpld.reg[6] |= 0x4000;
    for (const Words &words : {Words{"poe", "info"},
                               {"poe", "init"},
                               {"poe", "status"},
                               {"poe", "port", "1"},
                               {"poe", "on", "1"},
                               {"poe", "set", "budget", "5"},
                               {"poe", "set", "mode", "1", "auto"}})
        expectRefusal(words, 1, "the PoE controller is missing (CPLD register 6, bit 14 is set)");
    useModel(0x0309);
    expectRefusal({"poe", "status"}, 1, "this model has no PoE");
}

TEST_F(PoeCommandsTest, SetsAndReadsBack) {
    initialise();
    EXPECT_EQ(iodbg({"poe", "set", "mode", "1-2,5", "semi"}).out, "PORT  SET TO  READS\n"
                                                                  "1     semi    semi\n"
                                                                  "2     semi    semi\n"
                                                                  "5     semi    semi\n");
    EXPECT_EQ(settings(2).funcMode, 1);
    EXPECT_EQ(settings(3).funcMode, 0);
    EXPECT_EQ(iodbg({"poe", "set", "limit", "24", "30001"}).out, "PORT  SET TO  READS\n"
                                                                 "24    30001   30400\n");
    EXPECT_EQ(settings(24).limit, 76);
    EXPECT_EQ(iodbg({"poe", "set", "inrush", "7", "8"}).exitCode, 0);
    EXPECT_EQ(settings(7).inrushMode, 9);
    EXPECT_EQ(jsonAt(json({"poe", "set", "priority", "7", "2"}), "/ports"),
              "[{\"port\":7,\"set_to\":2,\"read_back\":null}]");
    EXPECT_EQ(settings(7).priority, 1);
    EXPECT_EQ(iodbg({"poe", "set", "limit-type", "7", "2"}).exitCode, 0);
    EXPECT_EQ(settings(7).limitType, 2);
    EXPECT_EQ(iodbg({"poe", "set", "legacy", "all", "on"}).exitCode, 0);
    EXPECT_EQ(settings(24).detType, 1);
    EXPECT_EQ(iodbg({"poe", "set", "legacy", "7", "off"}).out, "PORT  SET TO  READS\n"
                                                               "7     off     not readable\n");
    EXPECT_EQ(settings(7).detType, 0);
    EXPECT_EQ(iodbg({"poe", "set", "force-inrush", "7", "on"}).exitCode, 0);
    EXPECT_EQ(settings(7).forceInrush, 1);
    EXPECT_EQ(iodbg({"poe", "set", "mode", "7", "disabled"}).exitCode, 0);
    EXPECT_EQ(settings(7).enable, 0);
    EXPECT_EQ(iodbg({"poe", "set", "budget", "740001"}).out, "Power budget, W  740.100\n");
    EXPECT_EQ(poe().rtl8239.settings.bank[0].power, 7401);
}

TEST_F(PoeCommandsTest, AReadBackThatDiffersIsFound) {
    initialise();
    spoil("no-effect");
    expectFailure({"poe", "set", "limit", "1", "4000"}, 3,
                  {"the limit of port 1 was set to 4000 but reads 90000", "'iodbg poe port 1'"});
    expectFailure({"poe", "set", "mode", "1", "semi"}, 3,
                  {"the mode of port 1 was set to semi but reads auto"});
    expectFailure({"poe", "set", "budget", "4000"}, 3,
                  {"the power budget was set to 4000 mW but reads 3000000 mW"});
}

TEST_F(PoeCommandsTest, AFailedSettingNamesThePort) {
    initialise();
    spoil("bad-port=1", "0x14");
    expectFailure({"poe", "set", "limit", "1-3", "8000"}, 1,
                  {"cannot set the limit of port 2: BSP_E_POE_STATUS"});
    EXPECT_EQ(settings(1).limit, 20);
    EXPECT_EQ(settings(3).limit, 225);
}

TEST_F(PoeCommandsTest, ActsOnPorts) {
    initialise();
    EXPECT_EQ(iodbg({"poe", "set", "mode", "3", "semi"}).exitCode, 0);
    plug(3, 4, 18000);
    EXPECT_EQ(iodbg({"poe", "detect", "3"}).out, "PORT  DETECTION\n3     4 good\n");
    EXPECT_EQ(iodbg({"poe", "classify", "3"}).out, "PORT  CLASS\n3     4\n");
    const uint64_t before = now();
    EXPECT_EQ(iodbg({"poe", "on", "3"}).out, "PORT  POWER  WHY\n3     on     -\n");
    EXPECT_LT(now() - before, 2'500'000'000u) << "a port that follows is not asked again";
    EXPECT_EQ(jsonAt(json({"poe", "off", "3"}), "/ports"), "[{\"port\":3,\"delivering\":false}]");
    expectFailure({"poe", "on", "3-4"}, 1,
                  {"cannot switch on port 4: BSP_E_POE_UNAVAILABLE", "the port is in the mode auto",
                   "'iodbg poe set mode 4 semi'"});
    EXPECT_EQ(iodbg({"poe", "set", "mode", "4", "disabled"}).exitCode, 0);
    expectFailure({"poe", "on", "4"}, 1, {"the port is disabled", "'iodbg poe set mode 4 semi'"});
}

TEST_F(PoeCommandsTest, APortThatStaysOffIsTold) {
    initialise();
    EXPECT_EQ(iodbg({"poe", "set", "mode", "1-6", "semi"}).exitCode, 0);
    EXPECT_EQ(iodbg({"poe", "set", "budget", "40000"}).exitCode, 0);
    plug(1, 4, 18000);
    vb::poeSetDevice(poe(), 2, {1, vb::PoeSignature::Good, 4, 1, 19000, 18000}, now()); // draws all
    vb::poeSetDevice(poe(), 3, {1, vb::PoeSignature::Legacy, 0, 0, 5000, 4000}, now());
    vb::poeSetDevice(poe(), 4, {1, vb::PoeSignature::Bad, 0, 0, 5000, 4000}, now());
    plug(6, 4, 25000);
    usleep(1000000);
    const ProcessResult result = iodbg({"poe", "on", "1-6"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out,
              "PORT  POWER  WHY\n"
              "1     on     -\n"
              "2     off    no device was found: check device and cable\n"
              "3     off    it has a fault: look at device and cable\n"
              "4     off    an older device: see 'iodbg poe set legacy'\n"
              "5     off    no device was found: check device and cable\n"
              "6     off    too little power is left for it (18.000 of 40.000 W are drawn)\n");
    EXPECT_EQ(result.err, "iodbg: switched on, but without power: port 2-6\n");
    const std::string answer = json({"poe", "on", "2"}, 3);
    EXPECT_EQ(jsonAt(answer, "/ports/0/delivering"), "false");
    EXPECT_EQ(jsonAt(answer, "/ports/0/why"), "\"no device was found: check device and cable\"");
}

TEST_F(PoeCommandsTest, APortIsGivenTimeToPowerUp) {
    initialise();
    EXPECT_EQ(iodbg({"poe", "set", "mode", "1-2", "manual"}).exitCode, 0);
    plug(1, 4, 18000);
    const auto seconds = [this](const Words &words, int exitCode) {
        const uint64_t before = now();
        EXPECT_EQ(iodbg(words).exitCode, exitCode);
        return static_cast<double>(now() - before) / 1e9;
    };
    constexpr double kSwitch = 0.4, kLook = 1.2, kUnansweredLook = 1.6;
    spoil("no-answer", "0x42", "once"); // the port is looked at again
    EXPECT_DOUBLE_EQ(seconds({"poe", "on", "1"}, 0), kSwitch + kUnansweredLook + kLook);
    clearFaults();
    EXPECT_DOUBLE_EQ(seconds({"poe", "on", "1"}, 0), kSwitch + kLook);
    EXPECT_DOUBLE_EQ(seconds({"poe", "on", "1-2"}, 3), 2 * kSwitch + kLook + 0.2 + 2 * kLook);
}

TEST_F(PoeCommandsTest, AnOutcomeThatCannotBeReadIsAFailure) {
    initialise();
    EXPECT_EQ(iodbg({"poe", "set", "mode", "1", "semi"}).exitCode, 0);
    spoil("no-answer", "0x42");
    const std::string answer = json({"poe", "on", "1"}, 1);
    EXPECT_EQ(jsonAt(answer, "/ports/0/delivering"), "null");
    EXPECT_EQ(jsonAt(answer, "/ports/0/why"), "null");
    EXPECT_EQ(jsonAt(answer, "/failures/0/item"), "\"ports.1\"");
}

TEST_F(PoeCommandsTest, InitialisesStepByStep) {
    useModel(0x0809);
    const ProcessResult result = iodbg({"poe", "init"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(linesOf(result.err),
              (Words{"poe init: step 1 of 14, reset the controller",
                     "poe init: step 2 of 14, switch all ports off",
                     "poe init: step 3 of 14, forget the port mapping",
                     "poe init: step 4 of 14, map the ports",
                     "poe init: step 5 of 14, set priorities", "poe init: step 6 of 14, set modes",
                     "poe init: step 7 of 14, set kinds of power limit",
                     "poe init: step 8 of 14, set kinds of detection",
                     "poe init: step 9 of 14, set forced inrush",
                     "poe init: step 10 of 14, set kinds of disconnection",
                     "poe init: step 11 of 14, set voltages and the power budget",
                     "poe init: step 12 of 14, use the port mapping",
                     "poe init: step 13 of 14, set the ports' limits",
                     "poe init: step 14 of 14, switch all ports on"}));
    EXPECT_EQ(poe().rtl8239.settings.isEnabled, 1);
    EXPECT_EQ(jsonAt(json({"poe", "info"}), "/poe/initialised"), "true");
}

/** Holds the lock of the PoE exchanges as long as it lives. */
class HeldPoeLock {
  public:
    explicit HeldPoeLock(const std::string &path)
        : fd_(open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644)) {
        flock(fd_, LOCK_EX);
    }
    HeldPoeLock(const HeldPoeLock &) = delete;
    HeldPoeLock &operator=(const HeldPoeLock &) = delete;
    ~HeldPoeLock() { close(fd_); }

  private:
    int fd_;
};

TEST_F(PoeCommandsTest, AnInterruptedInitialisationSaysWhatItLeaves) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        useModel(0x0809);
        requests();
        std::optional<HeldPoeLock> lock(boardFile("/tmp/bspPoeLockFile"));
        Process process = start({"poe", "init", "--json"});
        while (process.output().find("reset the controller") == std::string::npos)
            std::this_thread::yield(); // it is behind the point from which signals wait
        process.signal(signal);
        lock.reset();
        const ProcessResult result = process.wait();
        EXPECT_EQ(result.exitCode, 128 + signal);
        const std::string text = "interrupted after 2 of 14 steps: the controller is set up in "
                                 "part, and no port has power; run 'iodbg poe init' again";
        EXPECT_EQ(result.err, "iodbg: " + text + "\n");
        const std::string last = linesOf(result.out).back();
        EXPECT_EQ(jsonAt(last, "/event"), "\"error\"");
        EXPECT_EQ(jsonAt(last, "/error/message"), "\"" + text + "\"");
        EXPECT_EQ(poe().rtl8239.settings.isEnabled, 0);
        const Lines lines = requests();
        ASSERT_FALSE(lines.empty());
        EXPECT_TRUE(lines.back().starts_with("I2C read")) << lines.back() << ": no answer waits";
        EXPECT_EQ(iodbg({"poe", "init"}).exitCode, 0);
        EXPECT_EQ(poe().rtl8239.settings.isEnabled, 1);
    }
}

TEST_F(PoeCommandsTest, ASignalDuringAnInitialisationThatFailsIsItsEnd) {
    useModel(0x0809);
    spoil("no-answer");
    std::optional<HeldPoeLock> lock(boardFile("/tmp/bspPoeLockFile"));
    Process process = start({"poe", "init", "--json"});
    while (process.output().find("reset the controller") == std::string::npos)
        std::this_thread::yield();
    process.signal(SIGINT);
    lock.reset();
    const ProcessResult result = process.wait();
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_NE(result.err.find("cannot initialise the PoE controller"), std::string::npos);
}

TEST_F(PoeCommandsTest, DrawsABarOnATerminal) {
    const std::string screen = iodbgOnTerminal({"poe", "init"}, {}, {24, 100});
    EXPECT_EQ(screen.find("\r\x1b[K[..............................] 0 %  53 s left  step 1 of 14, "
                          "reset the controller"),
              0u)
        << screen;
    EXPECT_NE(screen.find("[############################..] 9"), std::string::npos);
    EXPECT_NE(screen.find("\r\x1b[KPoE\r\n"), std::string::npos); // the bar goes before the answer
}

TEST_F(PoeCommandsTest, TheBarIsAsShortAsTheTerminalWants) {
    const struct {
        unsigned short columns;
        std::string first; // what the first step looks like
    } rows[] = {
        {80, "[..........................] 0 %  53 s left  step 1 of 14, reset the controller"},
        {64, "[..........] 0 %  53 s left  step 1 of 14, reset the controller"},
        {63, "0 %  53 s left  step 1 of 14, reset the controller"},
        {60, "0 %  53 s left  step 1 of 14, reset the controller"},
        {40, "0 %  53 s left  step 1 of 14, reset the"},
    };
    for (const auto &[columns, first] : rows) {
        const std::string screen = iodbgOnTerminal({"poe", "init"}, {}, {24, columns});
        const std::string kStartLineOver = "\r\x1b[K";
        ASSERT_TRUE(screen.starts_with(kStartLineOver + first + kStartLineOver)) << screen;
        size_t drawn = 0;
        for (size_t begin = 0; (begin = screen.find(kStartLineOver, begin)) != std::string::npos;) {
            begin += kStartLineOver.size();
            const size_t end = screen.find('\r', begin);
            EXPECT_LT(end - begin, columns) << screen.substr(begin, end - begin);
            ++drawn;
        }
        EXPECT_GT(drawn, 14u) << screen;
    }
}

/** The event, step and percentage of each line of progress. */
struct ProgressLine {
    std::string event;
    unsigned long step, percent;
};

std::vector<ProgressLine> progressOf(const std::string &out) {
    std::vector<ProgressLine> lines;
    for (const std::string &line : linesOf(out)) {
        const std::string event = jsonAt(line, "/event");
        if (event == "\"progress\"")
            lines.push_back(
                {event, std::stoul(jsonAt(line, "/step")), std::stoul(jsonAt(line, "/percent"))});
        else
            lines.push_back({event, 0, 0});
    }
    return lines;
}

TEST_F(PoeCommandsTest, TellsProgramsTheProgressInLines) {
    for (const auto &[model, perPort] : {std::pair{0x0709u, 2u}, {0x0809u, 1u}}) {
        useModel(model);
        const ProcessResult result = iodbg({"poe", "init", "--json"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.err, "");
        const std::vector<ProgressLine> lines = progressOf(result.out);
        ASSERT_GT(lines.size(), 50u * perPort / 2);
        EXPECT_EQ(jsonKeys(linesOf(result.out)[0], ""),
                  (Words{"event", "task", "step", "steps", "name", "percent", "seconds_left"}));
        EXPECT_EQ(lines.front().percent, 0u);
        for (size_t i = 1; i + 1 < lines.size(); ++i) {
            EXPECT_GE(lines[i].step, lines[i - 1].step);
            EXPECT_GE(lines[i].percent, lines[i - 1].percent);
        }
        const ProgressLine &last = lines[lines.size() - 2];
        EXPECT_EQ(last.step, 14u);
        EXPECT_GE(last.percent, 95u);
        EXPECT_EQ(lines.back().event, "\"result\"");
        EXPECT_EQ(jsonAt(linesOf(result.out).back(), "/poe/initialised"), "true");
    }
}

TEST_F(PoeCommandsTest, AFailedInitialisationIsALineToo) {
    spoil("no-answer", "0x0E");
    const ProcessResult result = iodbg({"poe", "init", "--json"});
    EXPECT_EQ(result.exitCode, 1);
    const std::string last = linesOf(result.out).back();
    EXPECT_EQ(jsonAt(last, "/event"), "\"error\"");
    EXPECT_EQ(jsonAt(last, "/error/status_name"), "\"BSP_E_POE_FRAME\"");
}

TEST_F(PoeCommandsTest, UpgradesTheFirmware) {
    const std::string file = image(51220);
    const ProcessResult result = iodbg({"poe", "upgrade", file, "--yes"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "Image              " + file +
                              "\n"
                              "Size, bytes        51220\n"
                              "Takes at least, s  213\n"
                              "Firmware before    V1.0.0.0\n"
                              "Dry run            no\n"
                              "Firmware now       V1.2.3.4\n"
                              "Next               initialise the controller with 'iodbg poe "
                              "init'\n");
    EXPECT_EQ(linesOf(result.err), (Words{"poe upgrade: step 1 of 4, ask the controller",
                                          "poe upgrade: step 2 of 4, start its loader",
                                          "poe upgrade: step 3 of 4, write the image",
                                          "poe upgrade: step 4 of 4, start the new firmware"}));
    EXPECT_EQ(vb::poeVersion(poe().image), 0x1234);
    EXPECT_EQ(poe().image.size, 51220u);
}

TEST_F(PoeCommandsTest, TellsProgramsOfTheUpgradeInLines) {
    const ProcessResult result = iodbg({"poe", "upgrade", image(196608), "--yes", "--json"});
    EXPECT_EQ(result.exitCode, 0) << result.err;
    const std::vector<ProgressLine> lines = progressOf(result.out);
    ASSERT_GT(lines.size(), 95u);
    EXPECT_LT(lines.size(), 110u);
    EXPECT_EQ(lines[lines.size() - 2].step, 4u);
    EXPECT_GE(lines[lines.size() - 2].percent, 99u);
    EXPECT_EQ(jsonKeys(linesOf(result.out).back(), ""),
              (Words{"event", "file", "size_bytes", "least_seconds", "version_before", "dry_run",
                     "version_after", "next", "failures"}));
    EXPECT_EQ(jsonAt(linesOf(result.out).back(), "/version_after"), "\"V1.2.3.4\"");
}

TEST_F(PoeCommandsTest, ADryRunOfAnUpgradeChangesNothing) {
    const std::string file = image(51200);
    const auto before = poe().image;
    EXPECT_EQ(jsonAt(iodbg({"poe", "upgrade", file, "--dry-run", "--json"}).out, "/dry_run"),
              "true");
    EXPECT_EQ(std::memcmp(&before, &poe().image, sizeof(before)), 0);
    EXPECT_EQ(poe().mode, vb::PoeMode::Application);
}

TEST_F(PoeCommandsTest, AnUpgradeIsConfirmed) {
    const std::string file = image(51200);
    const ProcessResult refused = iodbg({"poe", "upgrade", file}, "n\n");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_EQ(refused.out, "");
    EXPECT_EQ(refused.err,
              "Firmware of the PoE controller\n"
              "  now  V1.0.0.0\n"
              "  new  " +
                  file +
                  ", 51200 bytes\n"
                  "The upgrade takes at least 3 min 33 s and must not be interrupted; no port has\n"
                  "power afterwards until 'iodbg poe init'.\n"
                  "Upgrade the firmware now? [y/N] "
                  "\niodbg: not confirmed, nothing was done\n");
    EXPECT_EQ(iodbg({"poe", "upgrade", file}).exitCode, 2);
    EXPECT_EQ(vb::poeVersion(poe().image), 0x1000);
    EXPECT_EQ(iodbg({"poe", "upgrade", file}, "y\n").exitCode, 0);
    EXPECT_EQ(vb::poeVersion(poe().image), 0x1234);
}

TEST_F(PoeCommandsTest, RefusesFilesThatAreNoFirmware) {
    for (const size_t size : {51196u, 51201u, 51202u})
        expectRefusal({"poe", "upgrade", image(size), "--yes"}, 2,
                      "' has " + std::to_string(size) + " bytes; firmware of the PoE controller");
    expectRefusal({"poe", "upgrade", image(196612), "--yes"}, 4, "image");
    expectRefusal({"poe", "upgrade", hostFile("nothing"), "--yes"}, 4, "No such file or directory");
}

TEST_F(PoeCommandsTest, AFailedUpgradeSaysWhatToDo) {
    spoil("wrong-echo", "0xC0", "once", "40");
    expectFailure({"poe", "upgrade", image(51200), "--yes"}, 1,
                  {"BSP_E_POE_STATUS", "no usable firmware now: repeat the upgrade"});
    EXPECT_EQ(readBoardFile("/tmp/bsp/poeApp"), "\2");
    EXPECT_EQ(poe().mode, vb::PoeMode::Loader);
    clearFaults();
    const ProcessResult again = iodbg({"poe", "upgrade", image(51200), "--yes"});
    EXPECT_EQ(again.exitCode, 0) << again.err;
    EXPECT_NE(again.out.find("Firmware before    none that answered\n"), std::string::npos);
    EXPECT_NE(again.out.find("Firmware now       V1.2.3.4\n"), std::string::npos);
}

TEST_F(PoeCommandsTest, FirmwareThatDoesNotAnswerIsFound) {
    spoil("no-effect", "0xC0", "once", "40"); // a block is lost: the loader starts no such image
    expectFailure({"poe", "upgrade", image(51200), "--yes"}, 3,
                  {"the new firmware does not answer"});
}

TEST_F(PoeCommandsTest, PassesDebugWordsOn) {
    const ProcessResult frame = iodbg({"poe", "poeCommand", "4b", "0", "1"});
    EXPECT_EQ(frame.exitCode, 0);
    EXPECT_EQ(frame.err, "");
    EXPECT_EQ(frame.out, "\nSend Data:\n4B 00 01 FF FF FF FF FF FF FF FF 44 "
                         "\nRecv Data:\n4B 00 01 00 00 00 00 FF FF FF FF 48 \n");
    for (const char *word : {"-h", "?"}) {
        const ProcessResult help = iodbg({"poe", word});
        EXPECT_EQ(help.exitCode, 0);
        EXPECT_EQ(help.out, "\nSupported poe chip iodbg: \n  iodbg poe poeCommand" +
                                std::string(21, ' ') + "CMD SEQ DATA ... \n");
    }
    const ProcessResult noArguments = iodbg({"poe", "poeCommand"});
    EXPECT_EQ(noArguments.exitCode, 2);
    EXPECT_EQ(noArguments.out.find("Caution, command should be: \n  iodbg poe poeCommand"), 0u);
    const ProcessResult refused = iodbg({"poe", "poeCommand", "c0", "80"});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.out.find("\nSend Data:\nC0 80 FF"), 0u);
    EXPECT_EQ(refused.err.find("iodbg: cannot exchange the frame: BSP_E_POE_UNAVAILABLE"), 0u);
    useModel(0x0309);
    EXPECT_EQ(iodbg({"poe", "-h"}).exitCode, 1);
}

TEST_F(PoeCommandsTest, RefusesWordsThatAreNotRight) {
    initialise();
    const std::pair<const char *, const char *> cases[] = {
        {"poe", "a command is missing: give one of status|info|port|set|"},
        {"poe port 0", "'0' is not a number from 1 to 48"},
        {"poe port 25", "there is no PoE port 25; this board has ports 1 to 24"},
        {"poe status 20-25", "there is no PoE port 25"},
        {"poe on 1-", "'' is not a number from 1 to 48"},
        {"poe on 5-2", "'5-2' is no range of ports; give one as 1-8"},
        {"poe on 1-2-3", "'1-2-3' is no range of ports"},
        {"poe on 49", "'49' is not a number from 1 to 48"},
        {"poe on x", "'x' is not a number from 1 to 48"},
        {"poe on", "PORTS is required"},
        {"poe set mode 1 fast", "'fast' is none of auto|semi|manual|disabled"},
        {"poe set priority 1 0", "'0' is not a number from 1 to 3"},
        {"poe set priority 1 4", "'4' is not a number from 1 to 3"},
        {"poe set limit 1 102001", "'102001' is not a number from 0 to 102000"},
        {"poe set limit-type 1 3", "'3' is not a number from 1 to 2"},
        {"poe set legacy 1 1", "'1' is none of on|off"},
        {"poe set inrush 1 9", "'9' is not a number from 0 to 8"},
        {"poe set budget 6553501", "'6553501' is not a number from 0 to 6553500"},
        {"poe set colour 1 2", "'colour' is none of mode|priority|limit|"},
        {"poe upgrade", "FILE is required"},
    };
    for (const auto &[line, text] : cases)
        expectRefusal(wordsOf(line), 2, text);
}

} // namespace
