// Questions that this single-slot box answers without asking anything.

#include "bsp.h"
#include "tests/support/virtual_board_test.h"

namespace {

using FixedAnswersTest = VirtualBoardTest;

TEST_F(FixedAnswersTest, TheUnitNumberDoesNotMatter) {
    const struct {
        const char *name;
        int32_t (*get)(uint32_t, uint32_t *);
        uint32_t answer;
    } cases[] = {
        {"product id", ioProductIdGet, 1}, {"slot id", ioSlotIdGet, 1},
        {"card id", ioCardIdGet, 0},       {"frame type", ioFrameTypeGet, 1},
        {"slot type", ioSlotTypeGet, 1},   {"card type", ioCardTypeGet, 1},
    };
    for (const auto &expected : cases) {
        SCOPED_TRACE(expected.name);
        for (const uint32_t unit : {0u, 1u, 7u, 0xFFFFFFFFu}) {
            uint32_t value = 0xA5A5A5A5;
            EXPECT_EQ(answerOf([&] { return expected.get(unit, &value); }), Answer{BSP_OK});
            EXPECT_EQ(value, expected.answer);
        }
        EXPECT_EQ(answerOf([&] { return expected.get(0, nullptr); }), Answer{BSP_E_NULL});
    }
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(FixedAnswersTest, TheBoardCountsItsSlotFromZero) {
    uint32_t slot = 0xA5A5A5A5;
    EXPECT_EQ(answerOf([&] { return bspBoardSlotIdGet(&slot); }), Answer{BSP_OK});
    EXPECT_EQ(slot, 0u);
    EXPECT_EQ(answerOf([] { return bspBoardSlotIdGet(nullptr); }), Answer{BSP_E_NULL});
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(FixedAnswersTest, TheBoardHasNoDescriptionAndNoPowerBudget) {
    std::string text(8, '#');
    EXPECT_EQ(answerOf([&] { return bspBoardDescGet(text.data()); }), Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(answerOf([&] { return bspBoardDescSet("new"); }), Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(answerOf([&] { return bspBoardPowerInfoGet(1, text.data()); }),
              Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(text, "########");
    EXPECT_EQ(answerOf([] { return bspBoardDescGet(nullptr); }), Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(answerOf([] { return bspBoardDescSet(nullptr); }), Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(answerOf([] { return bspBoardPowerInfoGet(0, nullptr); }),
              Answer{BSP_E_NOT_SUPPORTED});
    EXPECT_EQ(trace(), Lines{});
}

TEST_F(FixedAnswersTest, TheBoardHasNoManufacturingDate) {
    std::string date(8, '#');
    EXPECT_EQ(answerOf([&] { return bspMfgDateGet(date.data()); }), Answer{BSP_OK});
    EXPECT_EQ(answerOf([&] { return bspMfgDateSet("20260131"); }), Answer{BSP_OK});
    EXPECT_EQ(date, "########");
    EXPECT_EQ(answerOf([] { return bspMfgDateGet(nullptr); }), Answer{BSP_OK});
    EXPECT_EQ(answerOf([] { return bspMfgDateSet(nullptr); }), Answer{BSP_OK});
    EXPECT_EQ(trace(), Lines{});
}

} // namespace
