// One exchange with the controller: frames, waits, retries, refusals.

#include "poe/rtl8239/bus.h"
#include "poe/rtl8239/transport.h"

#include "bsp.h"
#include "tests/poe/poe_board.h"
#include "tests/support/answer.h"
#include "tests/support/scripted_controller.h"

#include <numeric>

namespace {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

/** A request of 12 bytes, the unused ones 0xFF. */
Bytes requestOf(const std::string &start) {
    Bytes request = bytesOf(start);
    request.resize(12, 0xFF);
    return request;
}

/** The same, its checksum filled in. */
Bytes completeRequest(const std::string &start) {
    Bytes request = requestOf(start);
    request[11] = rtl8239CmdChecksum(request.data(), 11);
    return request;
}

class TransportTest : public PoeTest {
  protected:
    Answer exchange(const std::string &start) {
        request = requestOf(start);
        return answerOf([&] { return rtl8239CmdMessageSafe(request.data(), reply.data()); });
    }

    Answer exchangeRaw(const Bytes &frame) {
        return answerOf([&] {
            return rtl8239CmdMessage(frame.data(), reply.data(),
                                     static_cast<int32_t>(frame.size()));
        });
    }

    Bytes request;
    Bytes reply = Bytes(12, 0xEE);
};

TEST_F(TransportTest, ChecksumIsTheSumModulo256) {
    const Bytes unused(11, 0xFF);
    EXPECT_EQ(rtl8239CmdChecksum(unused.data(), 11), 0xF5);
    const uint8_t few[] = {1, 2, 0xFF, 4};
    EXPECT_EQ(rtl8239CmdChecksum(few, 2), 3);
    EXPECT_EQ(rtl8239CmdChecksum(few, 4), 6);
    EXPECT_EQ(rtl8239CmdChecksum(few, 0), 0);
    EXPECT_EQ(rtl8239CmdChecksum(few, -1), 0);
    EXPECT_EQ(rtl8239CmdChecksum(nullptr, 4), 0);
}

TEST_F(TransportTest, RawTransfersCheckTheirArguments) {
    uint8_t byte = 0;
    const Answer badRequest = {BSP_E_POE_INVALID, "ERROR: rtl8239CmdRequest(#): errno is 1102.\n"};
    const Answer badResponse = {BSP_E_POE_INVALID,
                                "ERROR: rtl8239CmdResponse(#): errno is 1102.\n"};
    EXPECT_EQ(answerOf([&] { return rtl8239CmdRequest(nullptr, 12); }), badRequest);
    EXPECT_EQ(answerOf([&] { return rtl8239CmdRequest(&byte, 0); }), badRequest);
    EXPECT_EQ(answerOf([&] { return rtl8239CmdRequest(&byte, -1); }), badRequest);
    EXPECT_EQ(answerOf([&] { return rtl8239CmdResponse(nullptr, 12); }), badResponse);
    EXPECT_EQ(answerOf([&] { return rtl8239CmdResponse(&byte, 0); }), badResponse);
    EXPECT_TRUE(controller.exchanges().empty());
    EXPECT_EQ(elapsed(), 0u);
}

TEST_F(TransportTest, RawTransfersMoveTheBytesOfTheirLength) {
    controller.answer({"02 03"});
    const Bytes frame = completeRequest("41 07");
    EXPECT_EQ(rtl8239CmdRequest(frame.data(), 12), BSP_OK);
    EXPECT_EQ(rtl8239CmdResponse(reply.data(), 3), BSP_OK);
    const std::vector<Exchange> seen = controller.exchanges();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].request, frame);
    EXPECT_EQ(seen[0].readLengths, (std::vector<int32_t>{3}));
    EXPECT_EQ(Bytes(reply.begin(), reply.begin() + 4), bytesOf("41 07 02 EE"));
    EXPECT_EQ(elapsed(), 0u);
}

TEST_F(TransportTest, RawTransfersThatFail) {
    controller.answer({"", Spoil::Write});
    const Bytes frame = completeRequest("41");
    EXPECT_EQ(rtl8239CmdRequest(frame.data(), 12), BSP_E_POE_WRITE);
    controller.answer({"", Spoil::Read});
    EXPECT_EQ(rtl8239CmdRequest(frame.data(), 12), BSP_OK);
    EXPECT_EQ(rtl8239CmdResponse(reply.data(), 12), BSP_E_POE_READ);
}

TEST_F(TransportTest, OnlyPoeModelsHaveAController) {
    const Bytes frame = completeRequest("41 00");
    for (const vb::Model &model : vb::kModels) {
        SCOPED_TRACE(model.devId);
        usePoeModel(model.devId);
        const int32_t expected = model.poePorts != 0 ? BSP_OK : BSP_E_POE_UNAVAILABLE;
        EXPECT_EQ(rtl8239CmdRequest(frame.data(), 12), expected);
        EXPECT_EQ(rtl8239CmdResponse(reply.data(), 12), expected);
    }
}

TEST_F(TransportTest, ADeviceIdThatCannotBeReadIsNoController) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    const Bytes frame = completeRequest("41");
    EXPECT_EQ(rtl8239CmdRequest(frame.data(), 12), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(rtl8239CmdResponse(reply.data(), 12), BSP_E_POE_UNAVAILABLE);
    EXPECT_EQ(bspPoeRtl8239PortMapGet(), nullptr);
}

TEST_F(TransportTest, WithoutAControllerAnExchangeEndsAfterItsFirstWait) {
    usePoeModel(0x0309);
    EXPECT_EQ(exchange("41"),
              (Answer{BSP_E_POE_UNAVAILABLE, "ERROR: rtl8239CmdMessage(#): rtl8239CmdRequest "
                                             "failed, cmd=0x41.\n"}));
    EXPECT_EQ(elapsed(), 100000u);
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(TransportTest, ResponseCheckComparesBothEchoesAndTheChecksum) {
    const Bytes asked = completeRequest("41 07");
    const Bytes good = completeRequest("41 07 01 02");
    const auto check = [&](size_t at, int change) {
        Bytes response = good;
        response[at] = static_cast<uint8_t>(response[at] + change);
        if (at < 2) // the sum stays what it is: the echo alone is wrong
            response[2] = static_cast<uint8_t>(response[2] - change);
        return rtl8239CmdResponseCheck(asked.data(), response.data());
    };
    EXPECT_EQ(check(0, 0), BSP_OK);
    for (const size_t at : {0u, 1u, 2u, 10u, 11u})
        EXPECT_EQ(check(at, 1), BSP_E_POE_FRAME) << "byte " << at;
    EXPECT_EQ(rtl8239CmdResponseCheck(nullptr, good.data()), BSP_E_POE_NULL);
    EXPECT_EQ(rtl8239CmdResponseCheck(asked.data(), nullptr), BSP_E_POE_NULL);
}

TEST_F(TransportTest, NullBuffersAreReportedByName) {
    uint8_t frame[12] = {};
    const Answer raw = {BSP_E_POE_NULL, "ERROR: rtl8239CmdMessage(#): ptr buff is NULL.\n"};
    const Answer safe = {BSP_E_POE_NULL, "ERROR: rtl8239CmdMessageSafe(#): ptr buff is NULL.\n"};
    EXPECT_EQ(answerOf([&] { return rtl8239CmdMessage(nullptr, frame, 12); }), raw);
    EXPECT_EQ(answerOf([&] { return rtl8239CmdMessage(frame, nullptr, 12); }), raw);
    EXPECT_EQ(answerOf([&] { return rtl8239CmdMessageSafe(nullptr, frame); }), safe);
    EXPECT_EQ(answerOf([&] { return rtl8239CmdMessageSafe(frame, nullptr); }), safe);
    EXPECT_TRUE(trace().empty());
}

TEST_F(TransportTest, AnExchangeFillsSequenceAndChecksumAndHoldsTheLock) {
    controller.answer({"0A 0B 0C 0D 0E 0F 10 11 12"});
    EXPECT_EQ(exchange("42 FF 05"), kSilentSuccess);
    const std::vector<Exchange> seen = controller.exchanges();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].request, bytesOf("42 10 05 FF FF FF FF FF FF FF FF 4F"));
    EXPECT_EQ(seen[0].request, request);
    EXPECT_EQ(seen[0].readLengths, (std::vector<int32_t>{12}));
    EXPECT_TRUE(seen[0].isLocked);
    EXPECT_EQ(reply, bytesOf("42 10 0A 0B 0C 0D 0E 0F 10 11 12 D0"));
    EXPECT_EQ(readBoardFile(kLockFile), "\x10");
    EXPECT_EQ(elapsed(), 200000u);
}

TEST_F(TransportTest, SequenceNumbersFollowEachOtherAndWrap) {
    writeBoardFile(kLockFile, "\xFE");
    Bytes numbers;
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(exchange("41"), kSilentSuccess);
    for (const Exchange &seen : controller.exchanges())
        numbers.push_back(seen.request[1]);
    EXPECT_EQ(numbers, bytesOf("FF 00 01"));
}

TEST_F(TransportTest, AnEmptyLockFileNumbersEveryFrameZero) {
    writeBoardFile(kLockFile, "");
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(exchange("41"), kSilentSuccess);
    for (const Exchange &seen : controller.exchanges())
        EXPECT_EQ(seen.request[1], 0);
    EXPECT_EQ(readBoardFile(kLockFile), "");
}

TEST_F(TransportTest, SomeCommandsOwnTheirSecondByte) {
    for (const char *start : {"0A 01", "4B 05", "C0 01", "C0 41", "C0 7F", "C0 84", "C0 FF"}) {
        EXPECT_EQ(exchange(start), kSilentSuccess) << start;
        const std::vector<Exchange> seen = controller.exchanges();
        ASSERT_EQ(seen.size(), 1u);
        EXPECT_EQ(seen[0].request, completeRequest(start)) << start;
    }
    EXPECT_EQ(readBoardFile(kLockFile), "\x0F") << "a number was taken";
}

TEST_F(TransportTest, TheLoadersCommandsAreRefusedAndStayAsBuilt) {
    for (const char *start :
         {"CA", "CA 01", "C0 00", "C0 40", "C0 80", "C0 81", "C0 82", "C0 83"}) {
        EXPECT_EQ(exchange(start), (Answer{BSP_E_POE_UNAVAILABLE, ""})) << start;
        EXPECT_EQ(request, requestOf(start));
    }
    EXPECT_TRUE(trace().empty()) << "nothing is opened, nothing is waited for";
    EXPECT_TRUE(controller.exchanges().empty());
}

TEST_F(TransportTest, WithoutALockFileTheExchangeGoesOnWithNumberZero) {
    addFault(openFails(kLockFile, EACCES));
    std::string complaint;
    Answer outcome;
    complaint = complainedBy([&] { outcome = exchange("41"); });
    EXPECT_EQ(outcome, kSilentSuccess);
    EXPECT_EQ(complaint, "open /tmp/bspPoeLockFile error \n: Permission denied\n");
    const std::vector<Exchange> seen = controller.exchanges();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_EQ(seen[0].request, completeRequest("41 00"));
    EXPECT_FALSE(seen[0].isLocked);
}

TEST_F(TransportTest, ALockThatCannotBeTakenEndsTheExchange) {
    recorder.failAlways("flock /tmp/bspPoeLockFile");
    EXPECT_EQ(exchange("41"), (Answer{BSP_E_POE_LOCK, "rtl8239CmdMessageSafe-# \r\n"}));
    EXPECT_TRUE(controller.exchanges().empty());
    EXPECT_EQ(readBoardFile(kLockFile), "\x0F");
    EXPECT_EQ(elapsed(), 0u);
}

TEST_F(TransportTest, AFailedWriteIsReportedAndNotRepeated) {
    controller.answer({"", Spoil::Write});
    EXPECT_EQ(exchange("15"), (Answer{BSP_E_POE_WRITE, "ERROR: rtl8239CmdMessage(#): "
                                                       "rtl8239CmdRequest failed, cmd=0x15.\n"}));
    const std::vector<Exchange> seen = controller.exchanges();
    ASSERT_EQ(seen.size(), 1u);
    EXPECT_TRUE(seen[0].readLengths.empty());
    EXPECT_EQ(elapsed(), 100000u);
    controller.answer({"", Spoil::Write});
    EXPECT_EQ(exchange("C0 05"), (Answer{BSP_E_POE_WRITE, "ERROR: rtl8239CmdMessage(#): rtl8239Cmd"
                                                          "Request failed, cmd=0xc0.\n"}));
}

TEST_F(TransportTest, TheReplyIsPolledForUpToFiveTimes) {
    for (const Spoil spoil :
         {Spoil::Read, Spoil::CommandEcho, Spoil::SecondByteEcho, Spoil::Checksum}) {
        for (int badPolls = 0; badPolls < 5; ++badPolls) {
            elapsed();
            controller.answer({"", spoil, badPolls});
            EXPECT_EQ(exchange("41"), kSilentSuccess);
            EXPECT_EQ(controller.exchanges().at(0).readLengths.size(),
                      static_cast<size_t>(badPolls) + 1);
            EXPECT_EQ(elapsed(), 200000u + 100000u * static_cast<unsigned>(badPolls));
        }
        const int32_t status = spoil == Spoil::Read ? BSP_E_POE_READ : BSP_E_POE_FRAME;
        controller.answer({"", spoil, 5});
        EXPECT_EQ(exchange("41"),
                  (Answer{status, "ERROR: rtl8239CmdMessage(#): rtl8239CmdResponse failed, "
                                  "cmd=0x41, errno is " +
                                      std::to_string(status) + ".\n"}));
        EXPECT_EQ(controller.exchanges().at(0).readLengths.size(), 5u);
        EXPECT_EQ(elapsed(), 600000u);
    }
}

TEST_F(TransportTest, TheLockIsFreeAfterAFailure) {
    controller.answer({"", Spoil::Read});
    exchange("41");
    EXPECT_TRUE(controller.exchanges().at(0).isLocked);
    EXPECT_EQ(exchange("41"), kSilentSuccess);
    EXPECT_TRUE(controller.exchanges().at(0).isLocked);
}

TEST_F(TransportTest, EachCommandHasItsWaits) {
    struct Case {
        const char *start;
        unsigned wait;
        unsigned poll;
        int32_t length;
        bool isChecked;
    };
    constexpr Case kCases[] = {
        {"00", 1100000, 100000, 12, true}, {"05", 2100000, 100000, 12, true},
        {"C0 00", 0, 25000, 12, true},     {"C0 40", 0, 25000, 12, false},
        {"C0 80", 0, 25000, 4, false},     {"C0 81", 0, 25000, 4, false},
        {"C0 82", 0, 25000, 4, false},     {"C0 83", 0, 25000, 4, false},
        {"C0 01", 0, 100000, 12, true},    {"C0 84", 0, 100000, 12, true},
        {"C0 41", 0, 100000, 12, true},    {"01", 0, 100000, 12, true},
        {"04", 0, 100000, 12, true},       {"06", 0, 100000, 12, true},
        {"0A 01", 0, 100000, 12, true},    {"4B 07", 0, 100000, 12, true},
        {"F1", 0, 100000, 12, true},
    };
    for (const Case &row : kCases) {
        SCOPED_TRACE(row.start);
        const Bytes frame = completeRequest(row.start);
        elapsed();
        EXPECT_EQ(exchangeRaw(frame), kSilentSuccess);
        EXPECT_EQ(elapsed(), 100000 + row.wait + row.poll);
        const std::vector<Exchange> seen = controller.exchanges();
        ASSERT_EQ(seen.size(), 1u);
        EXPECT_EQ(seen[0].request, frame) << "the raw exchange sends a frame as it is";
        EXPECT_EQ(seen[0].readLengths, (std::vector<int32_t>{row.length}));
        EXPECT_FALSE(seen[0].isLocked);

        // Where the reply is not checked, a wrong one is the caller's business.
        controller.answer({"", Spoil::CommandEcho});
        EXPECT_EQ(exchangeRaw(frame).status, row.isChecked ? BSP_E_POE_FRAME : BSP_OK);
        EXPECT_EQ(elapsed(), 100000 + row.wait + (row.isChecked ? 5 : 1) * row.poll);

        controller.answer({"", Spoil::Read});
        EXPECT_EQ(exchangeRaw(frame).status, BSP_E_POE_READ);
        EXPECT_EQ(elapsed(), 100000 + row.wait + 5 * row.poll);
        controller.exchanges();
    }
}

TEST_F(TransportTest, OnlyTheLoadersSilenceIsNotReported) {
    controller.answerAlways({"", Spoil::Read});
    for (const char *start : {"C0 00", "C0 40", "C0 80", "C0 05"})
        EXPECT_EQ(exchangeRaw(completeRequest(start)), (Answer{BSP_E_POE_READ, ""})) << start;
    EXPECT_EQ(exchangeRaw(completeRequest("4B")), (Answer{BSP_E_POE_READ, silenceText("4b")}));
}

TEST_F(TransportTest, TheRawExchangeSendsAsManyBytesAsItIsTold) {
    Bytes block(24, 0x11);
    block[0] = 0xC0;
    block[1] = 0x81;
    EXPECT_EQ(exchangeRaw(block), kSilentSuccess);
    EXPECT_EQ(controller.exchanges().at(0).request, block);
    EXPECT_EQ(reply, bytesOf("C0 81 11 11 EE EE EE EE EE EE EE EE"));
}

TEST_F(TransportTest, PresenceIsBit14OfRegister6ActiveLow) {
    for (const auto &[content, expected] :
         {std::pair{0x0000, 0u}, {0x4000, 1u}, {0xBFFF, 0u}, {0xFFFF, 1u}}) {
        devices().cpld.reg[6] = static_cast<uint16_t>(content);
        uint32_t isMissing = 7;
        EXPECT_EQ(bspPoeOnlineGet(&isMissing), BSP_OK);
        EXPECT_EQ(isMissing, expected);
    }
    EXPECT_EQ(bspPoeOnlineGet(nullptr), BSP_E_POE_NULL);
}

TEST_F(TransportTest, PresenceThatCannotBeReadIsReported) {
    addFault(refuse(vb::FaultDevice::Cpld, vb::FaultOp::Read, 5));
    uint32_t isMissing = 7;
    EXPECT_EQ(answerOf([&] { return bspPoeOnlineGet(&isMissing); }),
              (Answer{5, "bspPoeOnlineGet-#: bspCpldGet error. ret=5 \n"}));
    EXPECT_EQ(isMissing, 7u);
}

TEST_F(TransportTest, ResetIsActiveLowOnLine19) {
    for (const auto &[value, level] : {std::pair{1u, 0u}, {0u, 1u}, {0x80000000u, 0u}}) {
        EXPECT_EQ(bspPoeRtl8239ResetSet(value), BSP_OK);
        EXPECT_EQ(trace(), (Lines{"GPIO output line 19 = " + std::to_string(level)}));
    }
    addFault(refuse(vb::FaultDevice::Gpio, vb::FaultOp::Write, 11));
    EXPECT_EQ(bspPoeRtl8239ResetSet(1), 11);
}

} // namespace
