// Properties through the C interface.

#include "tests/control/held_board.h"

#include <nlohmann/json.hpp>

namespace {

class ControlPropertiesTest : public ControlTest {
  protected:
    struct Row {
        std::string name, value, json, note;
        int32_t isIdle;
        bool operator==(const Row &other) const = default;
    };

    std::vector<Row> rows(const std::vector<const char *> &names) const {
        VBoardProperty *properties = nullptr;
        uint32_t count = 0;
        EXPECT_EQ(answerOf([&](VBoardError *error) {
                      return vboardGet(board, names.data(), static_cast<uint32_t>(names.size()),
                                       &properties, &count, error);
                  }),
                  kDone);
        const Given<VBoardProperty> list(properties);
        std::vector<Row> found;
        for (uint32_t i = 0; i < count; ++i)
            found.push_back(
                {list[i].name, list[i].value, list[i].json, list[i].note, list[i].isIdle});
        return found;
    }
};

TEST_F(ControlPropertiesTest, AreReadForPeopleAndForPrograms) {
    EXPECT_EQ(rows({"fan.1.state", "cpld.2", "temperature.ambient"}),
              (std::vector<Row>{{"fan.1.state", "good", "\"good\"", "", 1},
                                {"cpld.2", get("cpld.2"),
                                 std::to_string(std::stoul(get("cpld.2"), nullptr, 16)), "", 0},
                                {"temperature.ambient", "25", "25", "", 0}}));
}

TEST_F(ControlPropertiesTest, OfPatternsStandOnceInTheirOrder) {
    const std::vector<Row> found = rows({"fan.*.state", "fan.1.*", "model", "fan.1.state"});
    std::vector<std::string> names;
    for (const Row &row : found)
        names.push_back(row.name);
    EXPECT_EQ(std::vector<std::string>(names.begin(), names.begin() + 2),
              (std::vector<std::string>{"fan.1.state", "fan.2.state"}));
    EXPECT_EQ(std::count(names.begin(), names.end() - 1, "fan.1.state"), 1);
    EXPECT_EQ(names.back(), "fan.1.state") << "a name is answered each time";
    EXPECT_EQ(names[names.size() - 2], "model");
}

TEST_F(ControlPropertiesTest, AreAllThatAreNotTooLongWithoutAName) {
    const std::vector<Row> found = rows({});
    EXPECT_GT(found.size(), 200u);
    EXPECT_EQ(found.front().name, "model");
    for (const Row &row : found)
        EXPECT_TRUE(nlohmann::json::accept(row.json)) << row.name << ": " << row.json;
}

TEST_F(ControlPropertiesTest, OfWhichOneIsNotThereAreNotRead) {
    const char *const names[] = {"model", "fan.7.state"};
    VBoardProperty *properties = nullptr;
    uint32_t count = 7;
    const ControlAnswer answer = answerOf(
        [&](VBoardError *error) { return vboardGet(board, names, 2, &properties, &count, error); });
    EXPECT_EQ(answer.status, VBOARD_E_REFUSED);
    EXPECT_NE(answer.text.find("fan.7.state"), std::string::npos) << answer;
    EXPECT_EQ(properties, nullptr);
    EXPECT_EQ(count, 7u);
}

TEST_F(ControlPropertiesTest, AreSetAllOrNone) {
    EXPECT_EQ(set({{"fan.1.state", "stuck"}, {"temperature.ambient", "40"}}), kDone);
    EXPECT_EQ(get("fan.1.state"), "stuck");
    EXPECT_EQ(get("temperature.ambient"), "40");

    const ControlAnswer answer = set({{"temperature.ambient", "41"}, {"fan.1.state", "broken"}});
    EXPECT_EQ(answer.status, VBOARD_E_REFUSED);
    EXPECT_EQ(answer.text.substr(0, 13), "fan.1.state: ") << answer;
    EXPECT_EQ(get("temperature.ambient"), "40");
    EXPECT_EQ(set({}), kDone);
}

TEST_F(ControlPropertiesTest, ThatAreReadChangeNothing) {
    const uint32_t before = vboardChanges(board);
    rows({});
    now();
    EXPECT_EQ(vboardChanges(board), before);
    EXPECT_EQ(set({{"fan.1.state", "stuck"}}), kDone);
    EXPECT_NE(vboardChanges(board), before);
}

TEST_F(ControlPropertiesTest, ThatAHandMovesTheClockIsAChange) {
    const uint32_t before = vboardChanges(board);
    EXPECT_EQ(vboardAdvance(board, 1, VBOARD_USUAL_PATIENCE, nullptr), VBOARD_OK);
    EXPECT_NE(vboardChanges(board), before);
}

} // namespace
