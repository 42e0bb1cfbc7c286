// A unit in a file when readings of it fail: each request fails once, and from then on, and what
// comes is a document that says so. It is captured within the test, thousands of times, with the
// calls of the library passing iodbg as they do in the program.

#include "bsp.h"
#include "language/captured_properties.h"
#include "tests/iodbg/capture_test.h"
#include "tests/support/depth.h"
#include "tests/support/world.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fnmatch.h>
#include <memory>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using language::CapturedReading;
using language::CapturedUnit;
using vb::FaultDevice;
using vb::FaultOp;
using vb::FaultWhen;

class CaptureSweepTest : public CaptureTest {
  protected:
    CaptureSweepTest() : CaptureTest(0x0809) {}

    void SetUp() override {
        VirtualBoardTest::SetUp();
        // Headers of images, for which the library starts programs, are not to be had.
        chmod(boardFile("/tmp/bsp").c_str(), 0777);
        for (vb::Flash &flash : devices().flash)
            flash.geometry.size = 2 * flash.geometry.eraseSize; // which takes no time to read
        world::set("sfp.25.module", "sr");
        world::set("sfp.25.rx-power", "420");
        world::set("sfp.26.module", "copper-mode4");
        world::set("poe.3.device", "class=4 draws=5000");
        const Quiet quiet;
        ASSERT_EQ(ioPoeDeviceInit(), BSP_OK);
        sleep(3);
        *devices_ = devices();
        clock_ = board().clock;
    }

    void restore() {
        clearFaults();
        devices() = *devices_;
        board().clock = clock_;
        for (const char *path : {"/tmp/bsp/devId", "/tmp/bsp/poeApp", "/tmp/bsp/osHeader.bin"})
            std::filesystem::remove(boardFile(path));
    }

    /** A capture during which a rule holds; nothing when no request was left for the rule. */
    std::optional<CapturedUnit> captureWith(const vb::FaultRule &rule) {
        restore();
        addFault(rule);
        const CapturedUnit unit = capture();
        const vb::FaultTable &table = board().faults;
        const bool hasFired = std::any_of(std::begin(table.rule), std::end(table.rule),
                                          [](const vb::FaultRule &one) { return one.fired != 0; });
        return hasFired ? std::optional(unit) : std::nullopt;
    }

    /** Every n-th request of a kind fails, alone and with all behind it; how many there were. */
    uint32_t sweep(vb::FaultRule rule, uint32_t most = UINT32_MAX) {
        // So many requests one by one, then one of each so many.
        const auto [first, step] =
            depthOf<std::pair<uint32_t, uint32_t>>({5, 83}, {2, 331}, {32, 7}, {8, 83});
        const CapturedUnit whole = wholeCapture();
        uint32_t points = 0;
        for (rule.nth = 1; rule.nth <= most; rule.nth += rule.nth < first ? 1 : step) {
            for (const FaultWhen when : {FaultWhen::Once, FaultWhen::FromOn}) {
                rule.when = when;
                const auto unit = captureWith(rule);
                if (!unit)
                    return points;
                SCOPED_TRACE("request " + std::to_string(rule.nth) +
                             (when == FaultWhen::Once ? "" : " and all behind it"));
                checkDocument(*unit);
                checkEverythingIsTold(whole, *unit);
                if (when == FaultWhen::FromOn) {
                    EXPECT_TRUE(saysMore(*unit, whole));
                }
            }
            ++points;
        }
        return points;
    }

    CapturedUnit wholeCapture() {
        restore();
        return capture();
    }

    static void checkDocument(const CapturedUnit &unit) {
        const std::string document = language::writtenCapture(unit);
        EXPECT_EQ(language::writtenCapture(language::readCapture(document)), document);
        for (const CapturedReading &reading : unit.properties)
            EXPECT_TRUE(language::capturedName(reading.name).has_value()) << reading.name;
    }

    /** What is missing is left out with a reason, or hangs on a reading that failed. */
    static void checkEverythingIsTold(const CapturedUnit &whole, const CapturedUnit &unit) {
        for (const CapturedReading &reading : whole.properties) {
            const bool isTold = unit.find(reading.name) != nullptr ||
                                isLeftOut(unit, reading.name) ||
                                hasFailedBeside(unit, reading.name);
            EXPECT_TRUE(isTold) << reading.name;
        }
    }

    /** Whether one unit has a complaint that another has not. */
    static bool saysMore(const CapturedUnit &unit, const CapturedUnit &whole) {
        const std::set<std::string> usual = complaints(whole);
        const std::set<std::string> found = complaints(unit);
        return std::any_of(found.begin(), found.end(),
                           [&usual](const std::string &one) { return usual.count(one) == 0; });
    }

  private:
    static std::set<std::string> complaints(const CapturedUnit &unit) {
        const language::CapturedContent noAnswer = "no-answer";
        std::set<std::string> all;
        for (const CapturedReading &reading : unit.properties) {
            if (reading.hasFailed() || reading.content == noAnswer)
                all.insert(reading.name);
        }
        for (const language::LeftOut &item : unit.capture.leftOut)
            all.insert(item.name + ": " + item.reason);
        for (const language::CapturedFinding &finding : unit.findings) {
            if (finding.verdict == "fault" || finding.verdict == "not-judged")
                all.insert(finding.subject + ": " + finding.code);
        }
        return all;
    }

    static bool isLeftOut(const CapturedUnit &unit, const std::string &name) {
        return std::any_of(unit.capture.leftOut.begin(), unit.capture.leftOut.end(),
                           [&name](const language::LeftOut &item) {
                               return fnmatch(item.name.c_str(), name.c_str(), 0) == 0;
                           });
    }

    /** Of the same thing: "sfp.25". */
    static bool hasFailedBeside(const CapturedUnit &unit, const std::string &name) {
        const size_t dot = name.find('.');
        const std::string thing = name.substr(0, name.find('.', dot + 1)) + ".";
        return std::any_of(unit.properties.begin(), unit.properties.end(),
                           [&thing](const CapturedReading &reading) {
                               return reading.hasFailed() && reading.name.starts_with(thing);
                           });
    }

    vb::Clock clock_{};
    std::unique_ptr<vb::Devices> devices_ = std::make_unique<vb::Devices>();
};

TEST_F(CaptureSweepTest, AWholeUnitIsCapturedTheSameTwice) {
    inChild([this] {
        const CapturedUnit first = wholeCapture();
        const CapturedUnit second = wholeCapture();
        checkDocument(first);
        EXPECT_EQ(first.properties.size(), second.properties.size());
        uint32_t failed = 0;
        for (const CapturedReading &reading : first.properties) {
            if (reading.hasFailed())
                ++failed;
            if (language::capturedName(reading.name)->row->compared != language::Compared::Clock) {
                ASSERT_NE(second.find(reading.name), nullptr) << reading.name;
                EXPECT_EQ(*second.find(reading.name), reading) << reading.name;
            }
        }
        EXPECT_EQ(failed, 3U); // no second page of the copper module, no headers of images
        EXPECT_EQ(first.capture.leftOut, second.capture.leftOut);
    });
}

TEST_F(CaptureSweepTest, RegistersThatFail) {
    inChild([this] {
        EXPECT_GT(sweep(refuse(FaultDevice::Cpld, FaultOp::Read, -5)), 1U);
        EXPECT_GT(sweep(ioctlFails(FaultDevice::Cpld, FaultOp::Read, 5)), 1U);
    });
}

TEST_F(CaptureSweepTest, LinesThatFail) {
    inChild([this] { EXPECT_EQ(sweep(refuse(FaultDevice::Gpio, FaultOp::Read, -5)), 1U); });
}

TEST_F(CaptureSweepTest, TransfersThatFail) {
    inChild([this] { EXPECT_GT(sweep(refuse(FaultDevice::I2c, FaultOp::Read, -6)), 1U); });
}

TEST_F(CaptureSweepTest, AControllerThatFails) {
    inChild([this] {
        vb::FaultRule rule = refuse(FaultDevice::Poe, FaultOp::Any, 0);
        rule.effect = vb::FaultEffect::NoAnswer;
        EXPECT_GT(sweep(rule), 1U);
        rule.effect = vb::FaultEffect::WrongChecksum;
        EXPECT_GT(sweep(rule), 1U);
    });
}

TEST_F(CaptureSweepTest, FlashThatFails) {
    inChild([this] {
        for (const uint32_t partition : {0U, 4U, 12U}) {
            for (const FaultOp op : {FaultOp::Read, FaultOp::Info}) {
                SCOPED_TRACE(partition);
                vb::FaultRule rule = refuse(FaultDevice::Mtd, op, 5);
                rule.effect = vb::FaultEffect::Fails;
                rule.hasAddress = 1;
                rule.devAddr = partition;
                EXPECT_GT(sweep(rule), 0U);
            }
        }
    });
}

TEST_F(CaptureSweepTest, FilesThatCannotBeOpened) {
    inChild([this] {
        for (const char *path : {"/dev/bspHandle", "/proc/cmdline", "/dev/mtd12", "/dev/mtd4",
                                 "/tmp/bsp/devId", "/tmp/bsp/poeApp"}) {
            SCOPED_TRACE(path);
            EXPECT_EQ(sweep(openFails(path, 13), 1), 1U);
        }
    });
}

} // namespace
