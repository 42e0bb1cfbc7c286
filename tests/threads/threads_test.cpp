// Threads of one program that call the library at once, under ThreadSanitizer: no call may touch
// what another one works with, and each has to succeed as it does alone.

#include "tests/sweep/working_board.h"

#include <atomic>
#include <cstdio>
#include <set>
#include <thread>

// The virtual board is not compiled for the sanitizer, which sees what it copies and not the locks
// under which it does.
extern "C" const char *__tsan_default_suppressions();
extern "C" const char *__tsan_default_suppressions() {
    return "race:vb::\n";
}

namespace {

using sweep::Exception;
using sweep::Function;
using sweep::Output;

constexpr int kThreads = 8;
constexpr int kRounds = 2;

/** What cannot be relied on, or makes others fail, unless the callers serialise it. */
const std::set<std::string> kNotPromised = {
    // The flash lock keeps processes apart, not threads, and a header is read through one file.
    "bsp_mtd_write_from_file", "bsp_mtd_read_to_file", "bsp_mtd_erase", "bspOsImageInfoGet",
    "ioOsImageInfoGet", "bspImageUpgrade", "ioImageUpgrade", "ioBiosUpgrade",
    // There is one register for commands, and one programmer.
    "bsp_smi_read", "bsp_smi_write", "ioCpldUpgrade", "bspCpldUpgrade_handle",
    // Who reads a record while it is written finds half of it.
    "bspLocalPieSet", "bspDevinfoSet", "ioDevinfoSet", "bspMacAddrSet", "ioMacAddrSet",
    "bspSerialNumSet", "ioSerialNumSet",
    // A setting is stored by an erase and a write, and is missing in between.
    "bspBootModeSet", "ioBootModeSet", "bspBootFlagSet", "ioBootFlagSet", "bspBaudrateSet",
    "ioBaudrateSet", "bspConsolePwdValidSet", "ioConsolePwdValidSet", "bspUserPwdValidSet",
    "ioUserPwdValidSet", "bspBootPwdSet", "ioBootPwdSet",
    // They set the one system clock, by the C library's one time zone.
    "bspSysClockSync", "bspInit",
    // They take from others what these work with: the board restarts, the controller does.
    "bspHwReboot", "ioRebootEx", "bspPoeDeviceInit", "ioPoeDeviceInit", "bspPoeAppUpgradeSet",
    "ioPoeAppUpgradeSet", "bspPoeRtl8239DeviceInit", "bspPoeRtl8239McuUpgrade"};

/** How the table of functions calls these: with one buffer for all, or over the board's record. */
const std::set<std::string> kNotAsTheTableDoes = {"bspFuncIoctl_handle", "bspI2cWrite",
                                                  "bspI2cWrite_handle"};

class ThreadsTest : public sweep::WorkingBoardTest {
  protected:
    std::vector<Function> promised() const {
        std::vector<Function> functions;
        for (const Function &function : sweep::allFunctions(files_)) {
            if (kNotPromised.count(function.name) + kNotAsTheTableDoes.count(function.name) == 0)
                functions.push_back(function);
        }
        return functions;
    }
};

/** Whether a function answers as it does when nothing else runs. */
bool succeeds(const Function &function) {
    Output output;
    return (function.call(output) == BSP_OK) != (function.exception == Exception::NeverSucceeds);
}

/** Calls all of them, each thread from another one on; counts what failed. */
void callAll(const std::vector<Function> &functions, size_t from, std::atomic<int> *failures) {
    for (size_t i = 0; i < functions.size() * kRounds; ++i) {
        const Function &function = functions[(from + i) % functions.size()];
        if (!succeeds(function)) {
            std::fprintf(stderr, "%s fails\n", function.name.c_str());
            ++*failures;
        }
    }
}

TEST_F(ThreadsTest, EightThreadsCallWhatIsPromisedToThem) {
    const std::vector<Function> functions = promised();
    ASSERT_GT(functions.size(), 230u);
    std::atomic<int> failures = 0;
    {
        std::vector<std::jthread> threads;
        for (size_t i = 0; i < kThreads; ++i)
            threads.emplace_back(callAll, std::cref(functions), i * functions.size() / kThreads,
                                 &failures);
    }
    EXPECT_EQ(failures, 0);
}

} // namespace
