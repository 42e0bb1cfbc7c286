// Fault rules and the trace through the C interface, seen by a program of the board.

#include "tests/control/held_board.h"

#include "bsp.h"
#include "virtual_board/os/seam.h"

#include <nlohmann/json.hpp>

namespace {

class ControlFaultsTest : public ControlTest {
  protected:
    void SetUp() override {
        ControlTest::SetUp();
        vb::FolderError error = {};
        ASSERT_TRUE(vb::attachBoard(path("board").c_str(), error)) << error.text;
    }
    void TearDown() override { vb::detachBoard(); }

    ControlAnswer add(const VBoardFault &fault, uint32_t &id) const {
        return answerOf(
            [&](VBoardError *error) { return vboardAddFault(board, &fault, &id, error); });
    }

    ControlAnswer clear(const std::vector<uint32_t> &ids) const {
        return answerOf([&](VBoardError *error) {
            return vboardClearFaults(board, ids.data(), static_cast<uint32_t>(ids.size()), error);
        });
    }

    /** The rules in words. */
    std::vector<std::string> rules() const {
        VBoardFault *faults = nullptr;
        uint32_t count = 0;
        EXPECT_EQ(answerOf([&](VBoardError *error) {
                      return vboardFaults(board, &faults, &count, error);
                  }),
                  kDone);
        const Given<VBoardFault> list(faults);
        std::vector<std::string> texts;
        for (uint32_t i = 0; i < count; ++i) {
            const VBoardFault &rule = list[i];
            EXPECT_EQ(rule.size, sizeof(VBoardFault));
            texts.push_back(std::to_string(rule.id) + ": " + rule.device + " " + rule.op + " " +
                            (rule.offset != nullptr ? rule.offset : "-") + " " + rule.nth + " " +
                            rule.when + " " + rule.effect + ", " + std::to_string(rule.matched) +
                            " matched, " + std::to_string(rule.fired) + " fired");
        }
        return texts;
    }

    static VBoardFault silence() {
        VBoardFault fault = {};
        fault.size = sizeof(fault);
        fault.device = "i2c:0.0.0x50";
        fault.effect = "no-answer";
        fault.when = "from";
        return fault;
    }

    std::vector<nlohmann::json> trace(uint64_t &position, uint32_t most = 0,
                                      uint64_t *lost = nullptr) const {
        VBoardRequest *requests = nullptr;
        uint32_t count = 0;
        const uint64_t from = position;
        EXPECT_EQ(answerOf([&](VBoardError *error) {
                      return vboardTrace(board, &position, most, &requests, &count, lost, error);
                  }),
                  kDone);
        const Given<VBoardRequest> list(requests);
        std::vector<nlohmann::json> found;
        for (uint32_t i = 0; i < count; ++i) {
            found.push_back(nlohmann::json::parse(list[i].json));
            EXPECT_EQ(found.back()["kind"], list[i].kind);
            EXPECT_EQ(found.back()["pid"], list[i].pid);
            EXPECT_EQ(found.back()["time_ns"], list[i].time);
            EXPECT_GE(list[i].number, from);
            EXPECT_EQ(list[i].number, position - count + i);
            EXPECT_NE(std::string(list[i].text), "");
        }
        return found;
    }
};

TEST_F(ControlFaultsTest, ConcernProgramsUntilTheyAreCleared) {
    uint32_t id = 0;
    uint8_t byte = 0;
    EXPECT_EQ(bspLocalEepromRead(0, &byte, 1), BSP_OK);
    ASSERT_EQ(add(silence(), id), kDone);
    EXPECT_EQ(id, 1u);
    EXPECT_NE(bspLocalEepromRead(0, &byte, 1), BSP_OK);
    EXPECT_EQ(rules(), (std::vector<std::string>{
                           "1: i2c:0.0.0x50 any - 1 from no-answer, 1 matched, 1 fired"}));
    EXPECT_EQ(clear({1}), kDone);
    EXPECT_EQ(rules(), std::vector<std::string>{});
    EXPECT_EQ(bspLocalEepromRead(0, &byte, 1), BSP_OK);
}

TEST_F(ControlFaultsTest, AreClearedAllOrNone) {
    uint32_t id = 0;
    ASSERT_EQ(add(silence(), id), kDone);
    ASSERT_EQ(add(silence(), id), kDone);
    const ControlAnswer answer = clear({1, 9});
    EXPECT_EQ(answer.status, VBOARD_E_REFUSED);
    EXPECT_EQ(answer.text,
              "there is no fault rule 9; 'vboard fault DIR list' lists them; none was cleared");
    EXPECT_EQ(rules().size(), 2u);
    EXPECT_EQ(clear({}), kDone);
    EXPECT_EQ(rules().size(), 0u);
}

TEST_F(ControlFaultsTest, ThatCouldNeverFireAreRefused) {
    uint32_t id = 7;
    VBoardFault fault = silence();
    fault.op = "reset";
    EXPECT_EQ(add(fault, id).status, VBOARD_E_REFUSED);
    fault = silence();
    fault.size = 4;
    EXPECT_EQ(add(fault, id).status, VBOARD_E_ARGUMENT);
    fault = silence();
    fault.effect = nullptr;
    EXPECT_EQ(add(fault, id).text, "effect is null");
    EXPECT_EQ(id, 7u);
    EXPECT_EQ(rules().size(), 0u);
}

TEST_F(ControlFaultsTest, FindNoMoreRoomAtSomeTime) {
    uint32_t id = 0;
    ControlAnswer answer;
    while (answer == kDone)
        answer = add(silence(), id);
    EXPECT_EQ(answer.status, VBOARD_E_FULL);
    EXPECT_EQ(id, rules().size());
}

TEST_F(ControlFaultsTest, TheTraceGoesOnFromAPosition) {
    uint64_t position = 0;
    trace(position);
    uint16_t value = 0;
    bspCpldGet(1, &value);
    bspCpldGet(2, &value);
    bspCpldGet(3, &value);
    std::vector<nlohmann::json> found = trace(position, 2);
    ASSERT_EQ(found.size(), 2u);
    EXPECT_EQ(found[0]["register"], 1);
    EXPECT_EQ(found[1]["register"], 2);
    found = trace(position);
    ASSERT_EQ(found.size(), 1u);
    EXPECT_EQ(found[0]["register"], 3);
    EXPECT_EQ(trace(position).size(), 0u);
}

TEST_F(ControlFaultsTest, ATraceThatIsClearedKeepsItsNumbers) {
    uint16_t value = 0;
    bspCpldGet(1, &value);
    uint64_t position = 0;
    trace(position);
    const uint64_t before = position;
    ASSERT_EQ(
        answerOf([&](VBoardError *error) { return vboardClearTrace(board, UINT64_MAX, error); }),
        kDone);
    position = 0;
    uint64_t lost = 7;
    EXPECT_EQ(trace(position, 0, &lost).size(), 0u);
    EXPECT_EQ(lost, 0u) << "what somebody has forgotten is not lost";
    EXPECT_EQ(position, before);
    bspCpldGet(1, &value);
    EXPECT_EQ(trace(position).size(), 1u);
}

TEST_F(ControlFaultsTest, ATraceTellsWhatItHasLost) {
    uint64_t position = 0;
    trace(position);
    uint16_t value = 0;
    for (uint32_t i = 0; i < vb::kTraceCapacity + 5; ++i)
        bspCpldGet(1, &value);
    uint64_t lost = 0;
    EXPECT_EQ(trace(position, 1, &lost).size(), 1u);
    EXPECT_EQ(lost, 5u);
}

} // namespace
