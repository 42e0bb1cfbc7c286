// The failure sweep: for every exported function on a working board, each of its system calls fails
// once, and from then on, in every way that it can; without a failure it does what it is for.
// Standard output is the only thing that never fails. Run with --gtest_filter='*Sweep*' the program
// prints how many functions, points and runs.

#include "tests/sweep/calls.h"
#include "tests/sweep/functions.h"
#include "tests/sweep/working_board.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>

namespace {

using sweep::Exception;
using sweep::Failure;
using sweep::Function;
using sweep::Outcome;
using sweep::Output;
using sweep::Silence;
using sweep::WorkingBoardTest;

constexpr uint32_t kParts = 8;

std::string describe(const Function &function, const Failure &failure, const Outcome &run) {
    std::ostringstream text;
    text << function.name << ", call " << failure.nth << " (" << run.failedCall << ") in way "
         << failure.way << (failure.stays ? ", and all behind it" : "");
    return text.str();
}

class SweepTest : public WorkingBoardTest, public ::testing::WithParamInterface<uint32_t> {
  protected:
    void SetUp() override {
        WorkingBoardTest::SetUp();
        *devices_ = devices();
    }

    void restoreBoard() {
        devices() = *devices_;
        setSystemOffset(board().clock, 0);
        for (const char *path :
             {"/tmp/bsp/devId", "/tmp/bsp/poeApp", "/tmp/bsp/osHeader.bin", "/tmp/bsp/output"})
            std::filesystem::remove(boardFile(path));
    }

    Outcome run(const Function &function, const Failure &failure) {
        restoreBoard();
        Output output;
        int32_t status = 0;
        Outcome result;
        {
            const Silence silence;
            sweep::begin(failure);
            status = function.call(output);
            result = sweep::end();
        }
        check(function, failure, result, status, output);
        return result;
    }

    static void check(const Function &function, const Failure &failure, const Outcome &run,
                      int32_t status, const Output &output) {
        SCOPED_TRACE(describe(function, failure, run));
        if (failure.nth == 0)
            checkSuccess(function, status, output);
        const bool isDocumented = status == BSP_OK || function.statuses.count(status) > 0;
        EXPECT_TRUE(isDocumented) << "answers " << status;
        EXPECT_EQ(run.left.openDescriptors(), 0u);
        EXPECT_EQ(run.left.files.size(), 0u);
        EXPECT_EQ(run.left.buffers.size(), 0u);
        EXPECT_EQ(run.left.mappings.size(), 0u);
        EXPECT_EQ(run.left.strayCloses, 0u);
        if (status != BSP_OK && function.exception != Exception::StoresBeforeFailure) {
            EXPECT_TRUE(output.isUntouched());
        }
    }

    /** On a board on which everything works. */
    static void checkSuccess(const Function &function, int32_t status, const Output &output) {
        EXPECT_EQ(status == BSP_OK, function.exception != Exception::NeverSucceeds)
            << "answers " << status;
        const bool stores = status == BSP_OK && output.isAskedFor() &&
                            function.exception != Exception::StoresNothing;
        EXPECT_EQ(output.isUntouched(), !stores);
    }

    /** All failures of one call; false when the function does not get that far. */
    bool failCall(const Function &function, uint32_t nth) {
        Failure failure = {nth};
        uint32_t ways = 1;
        for (; failure.way < ways; ++failure.way) {
            for (const bool stays : {false, true}) {
                failure.stays = stays;
                ways = run(function, failure).ways;
                ++runs_;
                if (ways == 0)
                    return false;
            }
        }
        ++points_;
        return true;
    }

    void sweepFunction(const Function &function) {
        run(function, {});
        uint32_t nth = 1;
        while (failCall(function, nth))
            nth += nth < function.depth.first ? 1 : function.depth.step;
    }

    uint32_t points_ = 0;
    uint32_t runs_ = 0;

  private:
    std::unique_ptr<vb::Devices> devices_ = std::make_unique<vb::Devices>();
};

TEST_P(SweepTest, EveryFailureHasItsDocumentedAnswer) {
    const std::vector<Function> functions = sweep::allFunctions(files_);
    uint32_t count = 0;
    for (size_t i = GetParam(); i < functions.size(); i += kParts) {
        sweepFunction(functions[i]);
        ++count;
    }
    EXPECT_GT(points_, count);
    std::printf("part %u of %u: %u functions, %u points, %u runs\n", GetParam() + 1, kParts, count,
                points_, runs_);
}
INSTANTIATE_TEST_SUITE_P(OfTheFunctions, SweepTest, ::testing::Range(0u, kParts));

/** The name on a line of the linker's list of exports, "    name;"; empty on its other lines. */
std::string exportedName(const std::string &line) {
    const size_t start = line.find_first_not_of(' ');
    if (start != 4 || line.back() != ';')
        return "";
    return line.substr(start, line.size() - start - 1);
}

TEST(SweepTable, HasEveryExportedFunction) {
    std::set<std::string> swept;
    for (const Function &function : sweep::allFunctions({}))
        EXPECT_TRUE(swept.insert(function.name).second) << function.name << " is there twice";
    std::ifstream exports(BSP_TEST_EXPORTS);
    ASSERT_TRUE(exports.is_open());
    size_t exported = 0;
    for (std::string line; std::getline(exports, line);) {
        const std::string name = exportedName(line);
        if (name.empty() || name == "bspPoeRtl8239Driver") // which is data
            continue;
        ++exported;
        EXPECT_EQ(swept.count(name), 1u) << name << " is not swept";
    }
    EXPECT_EQ(swept.size(), exported);
    EXPECT_GT(exported, 280u);
}

} // namespace
