#pragma once
// A virtual board in the hands of a test, through the C interface alone.

#include "tests/support/virtual_board_test.h"
#include "virtual_board/include/vboard.h"

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

/** What a call answered. */
struct ControlAnswer {
    int32_t status = VBOARD_OK;
    std::string text;
    int32_t osError = 0;

    bool operator==(const ControlAnswer &other) const = default;
};
std::ostream &operator<<(std::ostream &stream, const ControlAnswer &answer);

/** Calls a function with an error to fill; without a failure it has to stay as it is. */
template <typename Call>
ControlAnswer answerOf(Call call) {
    VBoardError error = {-7, -7, "untouched"};
    const int32_t status = call(&error);
    if (status == VBOARD_OK) {
        EXPECT_EQ(error.status, -7);
        EXPECT_EQ(error.osError, -7);
        EXPECT_STREQ(error.text, "untouched");
        return {};
    }
    EXPECT_EQ(error.status, status);
    return {status, error.text, error.osError};
}

const ControlAnswer kDone = {};

struct FreeGiven {
    void operator()(void *given) const { vboardFree(given); }
};

/** A list or a text that was given away. */
template <typename Row>
using Given = std::unique_ptr<Row[], FreeGiven>;

/** A test with a folder for boards, and a board in it that is held open. */
class ControlTest : public ::testing::Test {
  protected:
    explicit ControlTest(const char *model = "0x0709", const char *time = "virtual");
    ~ControlTest() override;
    void SetUp() override;

    std::string path(const std::string &name) const { return folder_.path() + "/" + name; }

    /** Makes a board and opens it; the test is at its end when that fails. */
    VBoard *newBoard(const std::string &name, const char *model, const char *time);

    std::map<std::string, std::string> get(const std::vector<const char *> &names) const;
    std::string get(const char *name) const { return get(std::vector{name}).begin()->second; }
    ControlAnswer set(const std::vector<VBoardChange> &changes) const;
    ControlAnswer wait(const char *condition, uint64_t timeoutNs) const;
    ControlAnswer advance(uint64_t seconds) const;
    uint64_t now() const;

    VBoard *board = nullptr;

  private:
    const char *model_;
    const char *time_;
    TemporaryFolder folder_;
    std::vector<VBoard *> boards_;
};

constexpr uint64_t kSecond = 1000000000;
