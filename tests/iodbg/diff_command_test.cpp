// iodbg diff: files, this unit, what is said, and the exit codes.

#include "tests/iodbg/iodbg_test.h"
#include "tests/support/json.h"
#include "tests/support/world.h"

namespace {

class DiffCommandTest : public IodbgTest {
  protected:
    void SetUp() override {
        IodbgTest::SetUp();
        useModel(0x0309); // without PoE nothing takes long
        world::set("sfp.25.module", "sr");
    }

    std::string captured(const std::string &name) const {
        EXPECT_EQ(iodbg({"capture", hostFile(name)}).exitCode, 0);
        return hostFile(name);
    }
};

TEST_F(DiffCommandTest, AUnitIsAsItWas) {
    const std::string file = captured("unit");
    const ProcessResult result = iodbg({"diff", file, "live"});
    EXPECT_EQ(result.exitCode, 0) << result.out;
    EXPECT_NE(result.out.find("Properties that differ  0\n"), std::string::npos);
    EXPECT_EQ(iodbg({"diff", "-", file}, readFile(file)).exitCode, 0);
}

TEST_F(DiffCommandTest, WhatHasChangedIsSaidByGroups) {
    const std::string before = captured("before");
    world::set("fan.1.state", "stuck");
    world::set("sfp.26.module", "lr");
    iodbg({"led", "set", "system", "2"});
    sleep(30);
    const ProcessResult live = iodbg({"diff", before, "live"});
    EXPECT_EQ(live.exitCode, 6);
    EXPECT_NE(live.out.find("\nRegisters and lines\n"
                            "PROPERTY  FIRST   SECOND\n"
                            "cpld.7    0x0000  0x0002\n"),
              std::string::npos)
        << live.out;
    EXPECT_NE(live.out.find("\nFans and temperature\n"
                            "PROPERTY     FIRST     SECOND\n"
                            "fan.1.speed  2400 rpm  0 rpm\n"),
              std::string::npos)
        << live.out;
    EXPECT_NE(live.out.find("sfp.26.id "), std::string::npos);
    EXPECT_EQ(live.out.find("rtc.time"), std::string::npos);
    const std::string after = captured("after");
    const std::string answer = json({"diff", before, after, "--all"}, 6);
    EXPECT_EQ(jsonKeys(answer, ""),
              (Words{"first", "second", "different", "differences", "failures"}));
    EXPECT_EQ(jsonKeys(answer, "/differences/0"), (Words{"property", "group", "first", "second"}));
    EXPECT_NE(answer.find("\"property\": \"rtc.time\""), std::string::npos);
    EXPECT_NE(answer.find("\"first\": null"), std::string::npos) << "the module was not there";
}

TEST_F(DiffCommandTest, TroubleIsNoDifference) {
    const std::string file = captured("unit");
    expectRefusal({"diff", file, makeFile("none", "{}")}, 4,
                  "it is no captured unit; 'iodbg capture FILE' makes one");
    expectRefusal({"diff", file, "/nowhere/x"}, 4, "cannot open /nowhere/x");
    expectRefusal({"diff", "-", "-"}, 2, "standard input has one document");
    std::string later = readFile(file);
    later.replace(later.find("\"version\": 1"), 12, "\"version\": 2");
    expectRefusal(
        {"diff", makeFile("later", later), file}, 4,
        "version: 2 is of a later iodbg; take that one, or capture the unit with this one");
}

} // namespace
