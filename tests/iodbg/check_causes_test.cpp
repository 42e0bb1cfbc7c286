// iodbg check: one cause is one finding, and what hangs on it is not judged.

#include "bsp.h"
#include "iodbg/chassis/thresholds.h"
#include "iodbg/core/finding_codes.h"
#include "tests/iodbg/iodbg_test.h"
#include "tests/support/json.h"
#include "tests/support/patterns.h"
#include "tests/support/world.h"
#include "virtual_board/words/fault_text.h"

#include <cerrno>
#include <filesystem>
#include <sys/stat.h>

namespace {

using Json = nlohmann::ordered_json;
using vb::FaultDevice;
using vb::FaultOp;

constexpr int kFaulty = 5;

class CheckCausesTest : public IodbgTest {
  protected:
    /** "subject: code", with " <- code of its cause", of all but what is good and warnings. */
    Lines causes(int exitCode = kFaulty) const;
    /** A finding of the last of these checks, by its subject. */
    Json finding(const std::string &subject) const;

    /** Leaves the devices of an I2C branch without an answer. */
    void silenceDevice(uint32_t bus, uint32_t channel, uint32_t address) {
        vb::FaultRule rule = silence(FaultDevice::I2c, FaultOp::Any);
        rule.hasAddress = 1;
        rule.bus = bus;
        rule.channel = channel;
        rule.devAddr = address;
        addFault(rule);
    }
    void silenceRecord() { silenceDevice(0, 0, 0x51); } // its page of the EEPROM
    void silenceSensor() { silenceDevice(0, 1, 0x4F); }
    void silenceClock() { silenceDevice(0, 1, 0x51); }

    void cacheDeviceId(uint32_t id) const {
        writeBoardFile("/tmp/bsp/devId", std::string(reinterpret_cast<const char *>(&id), 4));
    }

  private:
    mutable Json answer_;
};

/** What is said of a PoE controller that nobody has initialised. */
const std::string kPortsWait = "PoE ports: not-judged <- poe-not-initialised";

/** Advice has a field of its own, and every line has room on a terminal. */
void expectOrder(const Json &finding) {
    const std::string found = finding["found"];
    for (const char *word : {"check ", "see ", "run ", "replace", "plug it", "'iodbg", "look "})
        EXPECT_EQ((" " + found).find(std::string(" ") + word), std::string::npos) << found;
    EXPECT_EQ(finding["verdict"] == "fault" && finding["advice"].is_null(), false) << found;
}

Lines CheckCausesTest::causes(int exitCode) const {
    answer_ = parsedInOrder(json({"check"}, exitCode));
    Lines lines;
    int64_t faults = 0;
    int64_t notJudged = 0;
    for (const Json &finding : answer_["findings"]) {
        expectOrder(finding);
        const std::string verdict = finding["verdict"];
        faults += verdict == "fault" ? 1 : 0;
        notJudged += verdict == "not-judged" ? 1 : 0;
        if (verdict == "good" || verdict == "warning")
            continue;
        const Json &cause = finding["cause"];
        lines.push_back(finding["subject"].get<std::string>() + ": " +
                        finding["code"].get<std::string>() +
                        (cause.is_null() ? "" : " <- " + cause.get<std::string>()));
    }
    EXPECT_EQ(answer_["faults"], faults);
    EXPECT_EQ(answer_["not_judged"], notJudged);
    for (const std::string &line : linesOf(iodbg({"check"}).out))
        EXPECT_LE(line.size(), 80u) << line;
    return lines;
}

Json CheckCausesTest::finding(const std::string &subject) const {
    for (const Json &finding : answer_["findings"]) {
        if (finding["subject"] == subject)
            return finding;
    }
    ADD_FAILURE() << "nothing on " << subject;
    return {};
}

Lines behindModule(const std::string &cause) {
    Lines lines = {"kernel module: " + cause};
    for (const char *subject :
         {"CPLD", "model", "product record", "serial number", "MAC address", "temperature", "fans",
          "supplies", "PoE controller", "clock", "SFP cages"})
        lines.push_back(subject + std::string(": not-judged <- ") + cause);
    return lines;
}

Lines behindModel(Lines lines, const std::string &cause) {
    for (const char *subject : {"fans", "supplies", "PoE controller", "clock", "SFP cages"})
        lines.push_back(subject + std::string(": not-judged <- ") + cause);
    return lines;
}

TEST_F(CheckCausesTest, AUnitThatIsWellHasNone) {
    EXPECT_EQ(causes(0), Lines{kPortsWait});
    const Json model = finding("model");
    EXPECT_EQ(model["found"], "0x0709");
    EXPECT_EQ(model["code"], "good");
    const Json fan = finding("fan 2");
    EXPECT_EQ(fan["unit"], "fan");
    EXPECT_EQ(fan["index"], 2);
    EXPECT_TRUE(fan["cause"].is_null());
    EXPECT_TRUE(fan["advice"].is_null());
    EXPECT_TRUE(finding("clock")["index"].is_null());
}

TEST_F(CheckCausesTest, WithoutTheKernelModuleNothingBehindItIsAsked) {
    addFault(openFails("/dev/bspHandle", ENOENT));
    EXPECT_EQ(causes(), behindModule("kernel-module-missing"));
    EXPECT_EQ(finding("kernel module")["found"], "/dev/bspHandle does not exist");
    EXPECT_EQ(finding("kernel module")["advice"], "load the board's kernel module");
    EXPECT_EQ(finding("fans")["found"], "hangs on the kernel module");
    EXPECT_EQ(finding("bank 0")["code"], "bank-empty") << "flash needs no kernel module";
    trace();
    EXPECT_EQ(iodbg({"check"}).err, "");
    size_t opens = 0;
    for (const std::string &line : trace())
        opens += line.find("bspHandle") == std::string::npos ? 0u : 1u;
    EXPECT_LE(opens, 2u) << "one to see, one for the hint";
}

TEST_F(CheckCausesTest, AKernelModuleThatIsNotPermittedIsAnotherCause) {
    addFault(openFails("/dev/bspHandle", EACCES));
    EXPECT_EQ(causes(), behindModule("kernel-module-not-permitted"));
    EXPECT_EQ(finding("kernel module")["advice"], "run iodbg as root");
    clearFaults();
    addFault(openFails("/dev/bspHandle", EMFILE));
    EXPECT_EQ(causes(), behindModule("kernel-module-broken"));
}

TEST_F(CheckCausesTest, ACpldThatRefusesIsTheCause) {
    iodbg({"show"}); // the id is known, and does not help
    addFault(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO));
    const Lines expected = behindModel(
        {"CPLD: cpld-no-answer", "model: not-judged <- cpld-no-answer"}, "cpld-no-answer");
    EXPECT_EQ(causes(), expected);
    EXPECT_EQ(finding("CPLD")["found"], "does not answer: status -5");
    EXPECT_EQ(finding("temperature")["code"], "good");
    EXPECT_EQ(iodbg({"check"}).err, "");
}

TEST_F(CheckCausesTest, ACpldThatFloatsIsNotTakenForAModel) {
    addFault(silence(FaultDevice::Cpld, FaultOp::Any));
    const Lines expected = behindModel(
        {"CPLD: cpld-no-answer", "model: not-judged <- cpld-no-answer"}, "cpld-no-answer");
    EXPECT_EQ(causes(), expected);
    EXPECT_EQ(finding("CPLD")["found"], "register 1 reads 0xFFFF, as if nothing drove its lines");
    clearFaults();
    EXPECT_EQ(causes(0), Lines{kPortsWait}) << "the library remembers no wrong id";
    devices().cpld.reg[1] = 0;
    EXPECT_EQ(causes(), expected);
}

TEST_F(CheckCausesTest, AnUnknownModelIsNotJudgedByAnothersLines) {
    devices().cpld.reg[1] = 0x1234;
    EXPECT_EQ(causes(), behindModel({"model: model-unknown"}, "model-unknown"));
    EXPECT_EQ(finding("model")["found"], "0x1234 is none that iodbg knows");
}

TEST_F(CheckCausesTest, AWrongIdInTheCacheIsFound) {
    cacheDeviceId(0x0309);
    EXPECT_EQ(causes(), behindModel({"model: model-cache-wrong"}, "model-cache-wrong"));
    EXPECT_EQ(finding("model")["found"], "/tmp/bsp/devId says 0x0309, the CPLD 0x0709");
    EXPECT_EQ(finding("model")["advice"], "rm /tmp/bsp/devId, start the management software anew");
}

TEST_F(CheckCausesTest, ACacheThatCannotBeOpenedIsNamed) {
    addFault(openFails("/tmp/bsp/devId", EACCES));
    EXPECT_EQ(causes(), behindModel({"model: model-unreadable"}, "model-unreadable"));
}

TEST_F(CheckCausesTest, TheSharedFolderIsTheCauseWhenItIsMissing) {
    std::filesystem::remove_all(boardFile("/tmp/bsp"));
    Lines expected =
        behindModel({"shared file: shared-file-unsafe", "model: not-judged <- shared-file-unsafe"},
                    "shared-file-unsafe");
    expected.insert(expected.end() - 1, {"bank 0: not-judged <- shared-file-unsafe",
                                         "bank 1: not-judged <- shared-file-unsafe"});
    EXPECT_EQ(causes(), expected);
    EXPECT_EQ(finding("shared file")["found"], "/tmp/bsp is missing");
    EXPECT_EQ(finding("shared file")["advice"], "make it as root: mkdir -m 0755 /tmp/bsp");
}

TEST_F(CheckCausesTest, SharedFilesThatOthersCanChangeAreFaults) {
    iodbg({"check"});
    const std::string flashLock = boardFile("/tmp/bspFlashLockFile");
    const std::string poeLock = boardFile("/tmp/bspPoeLockFile");
    ASSERT_EQ(chmod(flashLock.c_str(), 0666), 0);
    ASSERT_EQ(chmod(poeLock.c_str(), 0622), 0);
    EXPECT_EQ(causes(), (Lines{"shared file: shared-file-unsafe", "shared file: shared-file-unsafe",
                               kPortsWait, "bank 0: not-judged <- shared-file-unsafe",
                               "bank 1: not-judged <- shared-file-unsafe"}));
    EXPECT_EQ(finding("shared file")["found"],
              "/tmp/bspFlashLockFile can be changed by others, its mode is 0666");
    ASSERT_EQ(chmod(flashLock.c_str(), 0644), 0);
    ASSERT_EQ(chmod(poeLock.c_str(), 0644), 0);
    ASSERT_EQ(chmod(boardFile("/tmp/bsp").c_str(), 0777), 0);
    EXPECT_EQ(causes().at(0), "shared file: shared-file-unsafe");
    EXPECT_EQ(finding("shared file")["found"],
              "/tmp/bsp can be changed by others, its mode is 0777");
}

TEST_F(CheckCausesTest, ABusOnWhichNobodyAnswersIsTheCause) {
    silenceRecord();
    silenceSensor();
    silenceClock();
    EXPECT_EQ(causes(), (Lines{"I2C bus 0: i2c-bus-no-answer",
                               "product record: not-judged <- i2c-bus-no-answer",
                               "serial number: not-judged <- i2c-bus-no-answer",
                               "MAC address: not-judged <- i2c-bus-no-answer",
                               "temperature: not-judged <- i2c-bus-no-answer", kPortsWait,
                               "clock: not-judged <- i2c-bus-no-answer"}));
    const Json bus = finding("I2C bus 0");
    EXPECT_EQ(bus["found"], "none of 3 devices answers");
    EXPECT_EQ(bus["unit"], "i2c-bus");
    EXPECT_EQ(bus["index"], 0);
    EXPECT_EQ(finding("serial number")["found"], "hangs on I2C bus 0");
    EXPECT_EQ(iodbg({"check"}).err, "") << "the library is not asked for what cannot be had";
}

TEST_F(CheckCausesTest, AChannelOnWhichNobodyAnswersIsTheCause) {
    silenceSensor();
    silenceClock();
    EXPECT_EQ(causes(),
              (Lines{"I2C bus 0: i2c-bus-no-answer", "temperature: not-judged <- i2c-bus-no-answer",
                     kPortsWait, "clock: not-judged <- i2c-bus-no-answer"}));
    EXPECT_EQ(finding("I2C bus 0")["found"], "channel 1: none of 2 devices answers");
}

TEST_F(CheckCausesTest, ADeviceOfABusThatWorksIsItsOwnCause) {
    silenceSensor();
    EXPECT_EQ(causes(), (Lines{"temperature: no-answer", kPortsWait}));
    clearFaults();
    silenceClock();
    EXPECT_EQ(causes(), (Lines{kPortsWait, "clock: no-answer"}));
    clearFaults();
    silenceRecord();
    EXPECT_EQ(causes(),
              (Lines{"product record: no-answer", "serial number: not-judged <- no-answer",
                     "MAC address: not-judged <- no-answer", kPortsWait}));
}

TEST_F(CheckCausesTest, WhatARecordTellsHangsOnIt) {
    record()[20] ^= 1;
    EXPECT_EQ(causes(), (Lines{"product record: record-damaged",
                               "serial number: not-judged <- record-damaged",
                               "MAC address: not-judged <- record-damaged", kPortsWait}));
    useModel(0x0109); // the record names its supplies
    record()[0] = 'X';
    EXPECT_EQ(causes(), (Lines{"product record: record-missing",
                               "serial number: not-judged <- record-missing",
                               "MAC address: not-judged <- record-missing",
                               "supplies: not-judged <- record-missing"}));
    silenceRecord();
    silenceSensor();
    EXPECT_EQ(causes().back(), "supplies: not-judged <- i2c-bus-no-answer");
    EXPECT_EQ(iodbg({"check"}).err.find("devinfo get failed"),
              iodbg({"check"}).err.rfind("devinfo get failed"))
        << "of the supplies alone";
}

TEST_F(CheckCausesTest, ARecordThatNamesTooManySuppliesIsSaidToDoSo) {
    useModel(0x0109);
    record()[96] = 7;
    const uint32_t crc = bsp_crc32_cal(0, record(), 124);
    for (unsigned byte = 0; byte < 4; ++byte)
        record()[124 + byte] = static_cast<uint8_t>(crc >> (24 - 8 * byte));
    EXPECT_EQ(causes(), Lines{"supplies: record-damaged"});
    EXPECT_EQ(finding("supplies")["found"], "the product record names 7 supplies");
}

TEST_F(CheckCausesTest, FansAndSuppliesOfOneRegisterAreOneFinding) {
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 28));
    EXPECT_EQ(causes(), (Lines{"fans: unreadable", kPortsWait}));
    EXPECT_EQ(finding("supply 1")["code"], "good") << "the others are judged";
    clearFaults();
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 30));
    EXPECT_EQ(causes(), (Lines{"supplies: unreadable", kPortsWait}));
    clearFaults();
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 8));
    EXPECT_EQ(causes(), (Lines{kPortsWait, "SFP cages: unreadable"}));
    EXPECT_EQ(finding("SFP cages")["found"].get<std::string>().substr(0, 40),
              "lines of ports 49-54 cannot be read: sta");
}

TEST_F(CheckCausesTest, ModulesThatAllKeepSilentHangOnTheirBus) {
    world::set("sfp.49.module", "dead");
    world::set("sfp.50.module", "dead");
    EXPECT_EQ(causes(), (Lines{"I2C bus 1: i2c-bus-no-answer", kPortsWait,
                               "SFP port 49: not-judged <- i2c-bus-no-answer",
                               "SFP port 50: not-judged <- i2c-bus-no-answer"}));
    world::set("sfp.51.module", "sr");
    EXPECT_EQ(causes(), (Lines{kPortsWait, "SFP port 49: no-answer", "SFP port 50: no-answer"}))
        << "one answers";
    world::set("sfp.51.module", "none");
    world::set("sfp.50.module", "none");
    EXPECT_EQ(causes(), (Lines{kPortsWait, "SFP port 49: no-answer"})) << "one is no bus";
}

TEST_F(CheckCausesTest, NoFirmwareIsSentOverADeadBus) {
    const auto advises = [this] {
        return finding("PoE controller")["advice"].get<std::string>().find("upgrade") !=
               std::string::npos;
    };
    silenceDevice(16, 0, 0x20);
    const Lines dead = {"PoE controller: poe-bus-no-answer",
                        "PoE ports: not-judged <- poe-bus-no-answer"};
    EXPECT_EQ(causes(), dead);
    EXPECT_FALSE(advises());
    writeBoardFile("/tmp/bsp/poeApp", std::string(1, '\2'));
    EXPECT_EQ(causes(), dead) << "whatever the last upgrade left";
    EXPECT_EQ(finding("PoE controller")["found"],
              "its bus, I2C 16, takes no request; its last upgrade failed");
    EXPECT_FALSE(advises());
    clearFaults();
    EXPECT_EQ(causes(), (Lines{"PoE controller: poe-upgrade-failed",
                               "PoE ports: not-judged <- poe-upgrade-failed"}));
    EXPECT_TRUE(advises());
    writeBoardFile("/tmp/bsp/poeApp", std::string(1, '\0'));
    addFault(silence(FaultDevice::Poe, FaultOp::Write));
    EXPECT_EQ(causes(),
              (Lines{"PoE controller: poe-no-answer", "PoE ports: not-judged <- poe-no-answer"}));
    EXPECT_EQ(finding("PoE controller")["advice"].get<std::string>().substr(0, 29),
              "check again in a few seconds,")
        << "firmware comes last";
    EXPECT_EQ(finding("PoE controller")["found"],
              "takes requests, its answers are missing or wrong: BSP_E_POE_FRAME (-1105)");
    clearFaults();
    world::set("poe.controller", "missing");
    EXPECT_EQ(causes(),
              (Lines{"PoE controller: poe-missing", "PoE ports: not-judged <- poe-missing"}));
}

TEST_F(CheckCausesTest, PortsWithAFaultAreNumbered) {
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    for (const char *port : {"8", "48"})
        world::set("poe." + std::string(port) + ".device", "class=3 over-current");
    iodbg({"poe", "detect", "8,48"});
    EXPECT_EQ(causes(0), Lines{});
    EXPECT_EQ(finding("PoE port 48")["code"], "poe-port-fault");
    EXPECT_EQ(finding("PoE port 48")["index"], 48);
    EXPECT_EQ(finding("PoE port 8")["unit"], "poe-port");
}

TEST_F(CheckCausesTest, APortThatCannotBeReadEndsTheTour) {
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    addFault(at(silence(FaultDevice::Poe, FaultOp::Write), 0x42));
    const uint64_t before = now();
    EXPECT_EQ(causes(), (Lines{"PoE port 1: unreadable", "PoE ports: not-judged <- unreadable"}));
    EXPECT_LT(now() - before, 3000000000u) << "twice";
    EXPECT_EQ(finding("PoE ports")["found"], "hangs on PoE port 1");
}

TEST_F(CheckCausesTest, PartitionsAreNamedAndNothingIsWrittenForAnUnreadOne) {
    addFault(openFails("/dev/mtd12", ENOENT));
    addFault(openFails("/dev/mtd4", EACCES));
    EXPECT_EQ(causes(), (Lines{kPortsWait, "boot settings: partition-not-permitted",
                               "bank 0: partition-missing"}));
    EXPECT_EQ(finding("bank 0")["found"], "/dev/mtd12 does not exist");
    EXPECT_EQ(finding("boot settings")["found"], "/dev/mtd4 may not be opened");
    EXPECT_EQ(finding("bank 1")["code"], "bank-empty");
    EXPECT_EQ(iodbg({"check"}).err, "");
    clearFaults();
    addFault(vb::parseFault({"mtd12", "read", "", "1", "from", "fails=EIO"}));
    addFault(vb::parseFault({"mtd4", "read", "", "1", "from", "fails=EIO"}));
    EXPECT_EQ(causes(), (Lines{kPortsWait, "boot settings: unreadable", "bank 0: unreadable"}));
    EXPECT_EQ(finding("bank 0")["found"], "its header cannot be read: BSP_E_FAILED (-1)");
    EXPECT_EQ(finding("bank 0")["advice"],
              "see the kernel log for /dev/mtd12, and 'iodbg image info --bank 0'");
    EXPECT_EQ(finding("boot settings")["found"],
              "cannot read /dev/mtd4 at 0x0: Input/output error");
}

TEST_F(CheckCausesTest, FlashThatIsNotThereIsOneFinding) {
    for (const char *device : {"/dev/mtd4", "/dev/mtd12", "/dev/mtd14"})
        addFault(openFails(device, ENOENT));
    EXPECT_EQ(causes(), (Lines{kPortsWait, "flash: partition-missing",
                               "boot settings: not-judged <- partition-missing",
                               "bank 0: not-judged <- partition-missing",
                               "bank 1: not-judged <- partition-missing"}));
}

TEST_F(CheckCausesTest, LinesOfFourFansAreSaidToBeShared) {
    useModel(0x0309);
    const std::string shared = "presence lines: lines-shared";
    EXPECT_EQ(causes(0), Lines{shared});
    EXPECT_EQ(finding("presence lines")["found"],
              "one is that of fans 1-2 and of supply 1, one of fans 3-4 and of supply 2: they tell "
              "of neither for sure");
    EXPECT_EQ(finding("supply 1")["found"], "status 0");
    devices().cpld.reg[30] |= 0x0001; // the fans are there, or the supply is not
    EXPECT_EQ(causes(0), Lines{shared});
    EXPECT_EQ(finding("supply 1")["code"], "good") << "its status lines say that it works";
    addFault(at(refuse(FaultDevice::Cpld, FaultOp::Read, -EIO), 30));
    EXPECT_EQ(causes(), (Lines{shared, "supplies: unreadable"}));
    clearFaults();
    world::set("supply.1.present", "no");
    EXPECT_EQ(causes(0), Lines{shared});
    EXPECT_EQ(finding("supply 1")["code"], "supply-absent-or-failed");
    world::set("supply.1.present", "yes");
    world::set("supply.1.input", "failed");
    EXPECT_EQ(causes(), (Lines{shared, "supply 1: supply-fault"}));
}

TEST_F(CheckCausesTest, TakesNoMoreBoardTimeThanItsQuestions) {
    ASSERT_EQ(iodbg({"poe", "init"}).exitCode, 0);
    constexpr uint64_t kMs = 1000000;
    uint64_t before = now();
    EXPECT_EQ(iodbg({"check"}).exitCode, 0);
    EXPECT_LE(now() - before, 9824 * kMs) << "49 answers of the PoE controller, and an EEPROM";
    before = now();
    EXPECT_EQ(iodbg({"show"}).exitCode, 0);
    EXPECT_LE(now() - before, 2642 * kMs);
}

using CheckDocumentTest = IodbgTest;

/** The words in backquotes of a text, in their order. */
Words quotedIn(const std::string &text) {
    Words words;
    for (const Words &word : matchesIn(text, "`([^`]*)`"))
        words.push_back(word[1]);
    return words;
}

TEST_F(CheckDocumentTest, NamesTheKeysOfTheAnswer) {
    const std::string text = readFile(BSP_TEST_IODBG_DOCUMENT);
    const size_t at = text.find("\n| `check` | `findings`");
    ASSERT_NE(at, std::string::npos);
    const size_t keysAt = text.find(" | ", at) + 3;
    const std::string row = text.substr(keysAt, text.find('\n', keysAt) - keysAt);
    const Words documented = quotedIn(replaced(row, "\\([^)]*\\)", ""));

    const std::string answer = json({"check"});
    Words keys = jsonKeys(answer, "");
    ASSERT_EQ(keys.front(), "findings");
    ASSERT_EQ(keys.back(), "failures") << "which all answers have";
    keys.pop_back();
    const Words ofFinding = jsonKeys(answer, "/findings/0");
    keys.insert(keys.begin() + 1, ofFinding.begin(), ofFinding.end());
    EXPECT_EQ(documented, keys);
    EXPECT_NE(row.find("`verdict` (`good`, `not-judged`, `warning`, `fault`)"), std::string::npos);
}

TEST_F(CheckDocumentTest, NamesEveryCodeUnitAndLimit) {
    const std::string text = readFile(BSP_TEST_IODBG_DOCUMENT);
    std::string codes;
    for (const iodbg::CodeRow &row : iodbg::kCodes)
        codes += "| `" + std::string(row.key) + "` | " + severityKey(row.severity) + " | ";
    std::string documented;

    for (const std::string &line : linesOf(text)) {
        const size_t verdict = line.find("` | ");
        const size_t meaning =
            verdict == std::string::npos ? verdict : line.find(" | ", verdict + 4);
        for (const char *word : {"good", "not-judged", "warning", "fault"}) {
            if (meaning != std::string::npos &&
                line.substr(verdict + 4, meaning - verdict - 4) == word)
                documented += line.substr(0, meaning + 3);
        }
    }
    EXPECT_EQ(documented, codes) << "docs/iodbg.md lists them in this order";
    for (const iodbg::Threshold &limit : iodbg::kThresholds)
        EXPECT_NE(text.find("| `" + std::string(rowOf(limit.code).key) + "` | " + limit.beyond +
                            " " + std::to_string(limit.value) + " " + limit.unit + " |\n"),
                  std::string::npos)
            << rowOf(limit.code).key;
    for (const iodbg::UnitRow &row : iodbg::kUnits)
        EXPECT_NE(text.find("`" + std::string(row.key) + "`"), std::string::npos) << row.key;
}

} // namespace
