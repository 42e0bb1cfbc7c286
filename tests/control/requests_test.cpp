// Requests that are sent to a board without a program.

#include "tests/control/held_board.h"
#include "tests/support/json.h"

#include <cerrno>

namespace {

using nlohmann::json;

class ControlRequestsTest : public ControlTest {
  protected:
    ControlAnswer send(const std::string &request, json &answer) const {
        char *given = nullptr;
        const ControlAnswer status = answerOf(
            [&](VBoardError *error) { return vboardSend(board, request.c_str(), &given, error); });
        const Given<char> text(given);
        EXPECT_EQ(text != nullptr, status == kDone);
        answer = text != nullptr ? parsedJson(text.get()) : json();
        return status;
    }

    /** A request, what it was once answered included, gets this answer now. */
    void expectAnswer(const std::string &kind, json request, const json &answer) const {
        request["time_ns"] = 5;
        request["pid"] = 4711;
        request["kind"] = kind;
        json answered;
        EXPECT_EQ(send(request.dump(), answered), kDone);
        EXPECT_EQ(answered["time_ns"], now());
        for (const auto &member : answer.items())
            EXPECT_EQ(answered[member.key()], member.value()) << answered;
        EXPECT_EQ(answered["pid"], 4711);
        EXPECT_EQ(answered["kind"], kind);
        EXPECT_EQ(lastInTrace(), answered);
    }

    std::string refusal(const std::string &request) const {
        json answered;
        const ControlAnswer answer = send(request, answered);
        EXPECT_EQ(answer.status, VBOARD_E_REFUSED);
        return answer.text;
    }

    json lastInTrace() const {
        uint64_t position = 0;
        VBoardRequest *requests = nullptr;
        uint32_t count = 0;
        EXPECT_EQ(vboardTrace(board, &position, 0, &requests, &count, nullptr, nullptr), VBOARD_OK);
        const Given<VBoardRequest> list(requests);
        return count > 0 ? parsedJson(list[count - 1].json) : json();
    }
};

TEST_F(ControlRequestsTest, TheDriverAnswers) {
    const json failed = {{"result", -EIO}, {"errno", 0}};
    json request = failed;
    request.update({{"register", 1}, {"name", nullptr}, {"value", nullptr}});
    expectAnswer("cpld-read", request, {{"value", 0x0709}, {"result", 0}, {"errno", 0}});
    request["register"] = 64;
    expectAnswer("cpld-read", request, {{"value", nullptr}, {"result", -EINVAL}, {"errno", 0}});
    request.update({{"register", 7}, {"value", 3}, {"ignored_bits", 0}});
    expectAnswer("cpld-write", request, {{"value", 3}, {"result", 0}});
    EXPECT_EQ(get("cpld.7"), "0x0003");

    request = failed;
    request.update({{"line", 19}, {"level", 1}});
    expectAnswer("gpio-output", request, {{"level", 1}, {"result", 0}});
    request["level"] = nullptr;
    expectAnswer("gpio-read", request, {{"level", 1}, {"result", 0}});
    request.erase("level");
    expectAnswer("gpio-input", request, {{"result", 0}});
    expectAnswer("request", {{"code", 0x4242}, {"result", 0}, {"errno", 0}},
                 {{"result", nullptr}, {"errno", ENOTTY}});
}

TEST_F(ControlRequestsTest, DevicesOnTheBusesAnswer) {
    json request = {{"name", nullptr}, {"bus", 0},           {"channel", 0}, {"device", 0x50},
                    {"offset", 16},    {"offset_length", 1}, {"length", 3},  {"data", "00ff10"},
                    {"result", 0},     {"errno", 0}};
    expectAnswer("i2c-write", request, {{"data", "00ff10"}, {"result", 0}});
    request["data"] = "010203";
    expectAnswer("i2c-read", request, {{"data", "00ff10"}, {"result", 0}});
    request["channel"] = 9;
    expectAnswer("i2c-read", request, {{"data", nullptr}, {"result", -ENXIO}});
    request["length"] = 0;
    expectAnswer("i2c-read", request, {{"data", nullptr}, {"result", -EINVAL}});
    request.update({{"channel", 0}, {"length", 4096}});
    expectAnswer("i2c-read", request, {{"length", 4096}, {"result", 0}});
    request["length"] = INT32_MAX;
    expectAnswer("i2c-read", request, {{"data", nullptr}, {"result", -EINVAL}});
}

TEST_F(ControlRequestsTest, FlashAnswers) {
    json request = {{"partition", 12}, {"offset", 0},        {"length", 0x20000},
                    {"done", 0},       {"power_cut", false}, {"errno", EIO}};
    expectAnswer("mtd-erase", request, {{"done", 0x20000}, {"errno", 0}});
    expectAnswer("mtd-read", request, {{"done", 0x20000}, {"errno", 0}});
    request["length"] = 1;
    expectAnswer("mtd-erase", request, {{"errno", EINVAL}});
    expectAnswer("mtd-info", {{"partition", 12}, {"errno", 0}}, {{"errno", 0}});
    expectAnswer("mtd-mark-bad", {{"partition", 12}, {"offset", 0x20000}, {"errno", 0}},
                 {{"errno", 0}});
    expectAnswer("mtd-is-bad",
                 {{"partition", 12}, {"offset", 0x20000}, {"bad", false}, {"errno", 0}},
                 {{"bad", true}, {"errno", 0}});
    expectAnswer("mtd-request", {{"partition", 12}, {"code", 1}, {"errno", 0}},
                 {{"errno", ENOTTY}});
    // The same question as machines of another kind ask it.
    for (const uint32_t code : {0x80104D12u, 0x40104D12u})
        expectAnswer("mtd-request", {{"partition", 12}, {"code", code}, {"errno", 0}},
                     {{"errno", 0}});
}

TEST_F(ControlRequestsTest, TheControllerOfThePhysAnswers) {
    json request = {{"first", 3}, {"second", 4}, {"value", 0x1234}, {"errno", 0}};
    expectAnswer("mdio-write", request, {{"value", 0x1234}, {"errno", 0}});
    request["value"] = 0;
    expectAnswer("mdio-read", request, {{"value", 0x1234}, {"errno", 0}});
    EXPECT_EQ(set({{"mdio.state", "error"}}), kDone);
    expectAnswer("mdio-read", request, {{"value", nullptr}, {"errno", EIO}});
    EXPECT_EQ(set({{"mdio.state", "stuck"}}), kDone);
    expectAnswer("mdio-read", request, {{"value", nullptr}, {"errno", ETIMEDOUT}});
}

TEST_F(ControlRequestsTest, RulesCountThem) {
    uint32_t id = 0;
    VBoardFault rule = {};
    rule.size = sizeof(rule);
    rule.device = "cpld";
    rule.op = "read";
    rule.offset = "1";
    rule.effect = "refuse=-5";
    EXPECT_EQ(
        answerOf([&](VBoardError *error) { return vboardAddFault(board, &rule, &id, error); }),
        kDone);
    const json request = {
        {"register", 1}, {"name", nullptr}, {"value", 1}, {"result", 0}, {"errno", 0}};
    expectAnswer("cpld-read", request, {{"value", nullptr}, {"result", -5}});
    expectAnswer("cpld-read", request, {{"value", 0x0709}, {"result", 0}});
}

TEST_F(ControlRequestsTest, WhatATraceDoesNotHoldIsRefused) {
    EXPECT_EQ(refusal("{}"), "it has no \"time_ns\"");
    EXPECT_EQ(refusal(R"({"time_ns":0,"pid":1,"kind":"sleep","duration_ns":1})"),
              "a request of the kind 'sleep' cannot be sent: sleeps and steps of the clock");
    EXPECT_EQ(refusal(R"({"time_ns":0,"pid":1,"kind":"mtd-info","partition":3,"errno":0})"),
              "partition: a board has no mtd3");
}

} // namespace
