// A switch without fans, clock and PoE: what it does not have is nothing to complain about.

#include "tests/system/unit_test.h"

namespace {

class PlainSwitchDay : public UnitTest {
  protected:
    PlainSwitchDay() : UnitTest("0x0109") {}
};

TEST_F(PlainSwitchDay, WhatItDoesNotHaveIsNotMissed) {
    iodbg("init");
    EXPECT_EQ(complaints(0), withEmptyFlash());
    EXPECT_EQ(column(json("fan get")["fans"], "present"), "null null");
    EXPECT_EQ(refusal("clock get", 1),
              "iodbg: cannot use the clock chip: BSP_E_NOT_SUPPORTED (1000), the board has no such "
              "thing, or the index has no mapping; this model has none");
    EXPECT_EQ(json("sfp list")["cages"].size(), 6u);
    set("sfp.30.module", "sx");
    set("sfp.30.link", "up");
    EXPECT_EQ(json("sfp show 30")["compliance"], "1000BASE-SX");
    EXPECT_EQ(complaints(0), withEmptyFlash());
}

} // namespace
