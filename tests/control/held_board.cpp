#include "tests/control/held_board.h"

std::ostream &operator<<(std::ostream &stream, const ControlAnswer &answer) {
    return stream << vboardStatusName(answer.status) << ", errno " << answer.osError << ": "
                  << answer.text;
}

ControlTest::ControlTest(const char *model, const char *time) : model_(model), time_(time) {}

ControlTest::~ControlTest() {
    for (VBoard *opened : boards_)
        vboardClose(opened);
}

void ControlTest::SetUp() {
    board = newBoard("board", model_, time_);
    ASSERT_NE(board, nullptr);
}

VBoard *ControlTest::newBoard(const std::string &name, const char *model, const char *time) {
    VBoardOptions options = {};
    options.size = sizeof(options);
    options.model = model;
    options.time = time;
    VBoard *opened = nullptr;
    EXPECT_EQ(answerOf([&](VBoardError *error) {
                  return vboardCreate(path(name).c_str(), &options, error);
              }),
              kDone);
    EXPECT_EQ(answerOf([&](VBoardError *error) {
                  return vboardOpen(path(name).c_str(), &opened, error);
              }),
              kDone);
    boards_.push_back(opened);
    return opened;
}

std::map<std::string, std::string> ControlTest::get(const std::vector<const char *> &names) const {
    VBoardProperty *properties = nullptr;
    uint32_t count = 0;
    EXPECT_EQ(answerOf([&](VBoardError *error) {
                  return vboardGet(board, names.data(), static_cast<uint32_t>(names.size()),
                                   &properties, &count, error);
              }),
              kDone);
    const Given<VBoardProperty> list(properties);
    std::map<std::string, std::string> values;
    for (uint32_t i = 0; i < count; ++i)
        values[list[i].name] = list[i].value;
    return values;
}

ControlAnswer ControlTest::set(const std::vector<VBoardChange> &changes) const {
    return answerOf([&](VBoardError *error) {
        return vboardSet(board, changes.data(), static_cast<uint32_t>(changes.size()), error);
    });
}

ControlAnswer ControlTest::wait(const char *condition, uint64_t timeoutNs) const {
    return answerOf(
        [&](VBoardError *error) { return vboardWait(board, condition, timeoutNs, error); });
}

ControlAnswer ControlTest::advance(uint64_t seconds) const {
    constexpr uint64_t kPatience = 30 * kSecond; // with crowds that an emulator starts
    return answerOf([&](VBoardError *error) {
        return vboardAdvance(board, seconds * kSecond, kPatience, error);
    });
}

uint64_t ControlTest::now() const {
    uint64_t time = 0;
    EXPECT_EQ(answerOf([&](VBoardError *error) { return vboardTime(board, &time, error); }), kDone);
    return time;
}
