// iodbg's commands on a board whose controller is the quill. They run in a child of the test, in
// which the calls of the library pass iodbg as they do in the program.

#include "bsp.h"
#include "iodbg/commands.h"
#include "iodbg/core/console.h"
#include "iodbg/poe/wire.h"
#include "tests/second_controller/catalogues/models.h"
#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"

#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace {

struct Said {
    int exitCode;
    std::string out, err;
};

class SecondControllerIodbgTest : public VirtualBoardTest {
  protected:
    SecondControllerIodbgTest() : VirtualBoardTest(kQuillModel) {}

    Said iodbg(std::vector<const char *> words) const {
        words.insert(words.begin(), "iodbg");
        const std::string out = files_.path() + "/out", err = files_.path() + "/err";
        std::fflush(nullptr);
        const pid_t child = fork();
        if (child == 0) {
            lead(out, STDOUT_FILENO);
            lead(err, STDERR_FILENO);
            iodbg::Console console;
            _exit(static_cast<int>(
                iodbg::carryOut(console, static_cast<int>(words.size()), words.data())));
        }
        int status = -1;
        waitpid(child, &status, 0);
        return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, textOf(out), textOf(err)};
    }

    static void settle() { usleep(1000000); }

  private:
    static void lead(const std::string &path, int stream) {
        const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
        dup2(file, stream);
        close(file);
    }
    static std::string textOf(const std::string &path) {
        std::ifstream file(path);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    TemporaryFolder files_;
};

TEST_F(SecondControllerIodbgTest, InitialisesByTheDriversSteps) {
    const Said said = iodbg({"poe", "init"});
    EXPECT_EQ(said.exitCode, 0);
    EXPECT_EQ(said.err, "poe init: step 1 of 4, reset the controller\n"
                        "poe init: step 2 of 4, set the power budget\n"
                        "poe init: step 3 of 4, set modes and limits\n"
                        "poe init: step 4 of 4, serve the ports\n");
    EXPECT_EQ(said.out, "PoE\n"
                        "  Controller                present\n"
                        "  Firmware                  usable\n"
                        "  Firmware version          Q2.7\n"
                        "  Initialised               yes\n"
                        "  Power budget, W           3000.000\n"
                        "  Power drawn, W            0.000\n"
                        "  Rated for each supply, W  1440.000\n");
}

TEST_F(SecondControllerIodbgTest, ShowsPorts) {
    ASSERT_EQ(ioPoeDeviceInit(), BSP_OK);
    world::set("poe.3.device", "class=4 requests=19000 draws=18000");
    settle();
    const Said said = iodbg({"poe", "status", "3-4"});
    EXPECT_EQ(said.exitCode, 0) << said.err;
    EXPECT_NE(said.out.find("3    auto     4 good    4     no    on    5"), std::string::npos);
    EXPECT_NE(said.out.find("18.000 90.000  -      -\n"), std::string::npos) << said.out;
    EXPECT_NE(said.out.find(
                  "4    auto     6 open    -     no    off   -  -    -      90.000  -      -\n"),
              std::string::npos)
        << said.out;
    const Said port = iodbg({"poe", "port", "3", "--json"});
    EXPECT_EQ(port.exitCode, 0);
    EXPECT_NE(port.out.find("\"inrush_mode\""), std::string::npos);
    EXPECT_NE(port.out.find("\"power_mw\": 18000"), std::string::npos) << port.out;
}

TEST_F(SecondControllerIodbgTest, SetsAndSwitches) {
    ASSERT_EQ(ioPoeDeviceInit(), BSP_OK);
    world::set("poe.3.device", "class=4 requests=19000 draws=18000");
    EXPECT_EQ(iodbg({"poe", "set", "limit", "3", "30001"}).out, "PORT  SET TO  READS\n"
                                                                "3     30001   30001\n")
        << "this controller rounds nothing";
    EXPECT_EQ(iodbg({"poe", "set", "budget", "40001"}).out, "Power budget, W  40.001\n");
    EXPECT_EQ(iodbg({"poe", "set", "mode", "3", "semi"}).exitCode, 0);
    settle();
    EXPECT_EQ(iodbg({"poe", "on", "3"}).exitCode, 0);
    EXPECT_EQ(world::get("poe.3.state"), "delivering");
    EXPECT_EQ(iodbg({"poe", "off", "3"}).exitCode, 0);
    EXPECT_EQ(world::get("poe.3.state"), "held");
}

TEST_F(SecondControllerIodbgTest, SaysHowEachControllerRounds) {
    const std::string help = iodbg({"poe", "set", "limit", "--help"}).out;
    EXPECT_NE(help.find("Milliwatts, 0 to 102000; rounded up to 1 or 400"), std::string::npos)
        << help;
}

TEST_F(SecondControllerIodbgTest, SaysWhatTheControllerHasNot) {
    ASSERT_EQ(ioPoeDeviceInit(), BSP_OK);
    const Said priority = iodbg({"poe", "set", "priority", "3", "1"});
    EXPECT_EQ(priority.exitCode, 1);
    EXPECT_NE(priority.err.find("BSP_E_POE_UNAVAILABLE"), std::string::npos) << priority.err;
    const Said words = iodbg({"poe", "poeCommand", "0"});
    EXPECT_EQ(words.exitCode, 1);
    EXPECT_NE(words.err.find("BSP_E_POE_UNAVAILABLE"), std::string::npos) << words.err;

    const std::string image = boardFolder() + "-image";
    std::ofstream(image) << std::string(51200, 'p');
    const Said upgrade = iodbg({"poe", "upgrade", image.c_str(), "--yes"});
    EXPECT_EQ(upgrade.exitCode, 1);
    EXPECT_EQ(upgrade.err, "iodbg: the PoE controller of this model takes no firmware\n");
    unlink(image.c_str());
}

TEST_F(SecondControllerIodbgTest, JudgesItAsAnyController) {
    EXPECT_NE(iodbg({"check"}).out.find("PoE controller  warning     not initialised"),
              std::string::npos);
    ASSERT_EQ(ioPoeDeviceInit(), BSP_OK);
    world::set("poe.3.device", "class=4 over-current");
    settle();
    const std::string found = iodbg({"check"}).out;
    EXPECT_NE(found.find("PoE controller  good        initialised"), std::string::npos) << found;
    EXPECT_NE(found.find("PoE port 3      warning     has a fault"), std::string::npos) << found;
}

TEST_F(SecondControllerIodbgTest, SaysThatItDoesNotKnowAController) {
    useModel(kStrangeModel);
    const std::string image = boardFolder() + "-image";
    std::ofstream(image) << std::string(51200, 'p');
    const Said said = iodbg({"poe", "upgrade", image.c_str(), "--yes"});
    unlink(image.c_str());
    EXPECT_EQ(said.exitCode, 1);
    EXPECT_NE(said.err.find("this iodbg does not know the PoE controller of this model"),
              std::string::npos)
        << said.err;
}

TEST_F(SecondControllerIodbgTest, ChangesNothingThatItCannotJudge) {
    useModel(kUnguidedModel);
    ASSERT_EQ(ioPoeDeviceInit(), BSP_OK);
    for (const auto &words : {std::vector<const char *>{"poe", "set", "limit", "3", "30000"},
                              {"poe", "set", "budget", "40000"},
                              {"poe", "init"}}) {
        requests();
        const Said said = iodbg(words);
        EXPECT_EQ(said.exitCode, 1);
        EXPECT_NE(said.err.find("this iodbg does not know the PoE controller of this model"),
                  std::string::npos)
            << said.err;
        for (const std::string &request : requests())
            EXPECT_NE(request.find("CPLD read"), std::string::npos) << request;
    }
    EXPECT_EQ(iodbg({"poe", "set", "mode", "3", "semi"}).exitCode, 0) << "this needs no guide";
}

} // namespace
