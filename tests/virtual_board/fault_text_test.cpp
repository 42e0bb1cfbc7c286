// Fault rules in words.

#include "virtual_board/words/fault_text.h"
#include "virtual_board/words/values.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace {

using vb::FaultWords;

std::string refusalOf(const FaultWords &words) {
    try {
        vb::parseFault(words);
    } catch (const vb::Refused &refusal) {
        return refusal.what();
    }
    return "accepted";
}

TEST(FaultText, EveryRuleComesBackInTheSameWords) {
    const FaultWords cases[] = {
        {"cpld", "any", "", "1", "once", "refuse=-5"},
        {"cpld", "upgrade", "", "1", "once", "no-answer"},
        {"cpld", "read", "63", "2", "every", "corrupt=1:0x80"},
        {"gpio", "write", "31", "4294967295", "from", "ioctl-fails=EIO"},
        {"i2c", "any", "4294967295", "1", "once", "short=0"},
        {"i2c:255.255.0x7F", "read", "", "1", "from", "corrupt=4095:0xFF"},
        {"i2c:0.2.0x50", "write", "", "1", "once", "no-answer"},
        {"/dev/bspHandle", "open", "", "1", "once", "open-fails=ENODEV"},
        {"/tmp/bsp/devId", "read", "", "1", "once", "short=2"},
        {"/tmp/bsp/devId", "write", "", "1", "once", "short=2"},
        {"/proc/cmdline", "read", "", "1", "once", "corrupt=0:0x01"},
        {"poe", "write", "66", "1", "from", "late-answer=2"},
        {"poe", "write", "", "1", "once", "wrong-echo"},
        {"poe", "write", "", "1", "once", "wrong-checksum"},
        {"poe", "write", "", "1", "once", "bad-port=47"},
        {"poe", "write", "", "1", "once", "power-loss"},
        {"poe", "write", "", "1", "once", "no-effect"},
        {"poe", "reset", "", "1", "once", "no-answer"},
        {"mtd0", "any", "", "1", "once", "fails=EIO"},
        {"mtd4", "change", "65536", "2", "from", "power-cut=100"},
        {"mtd12", "program", "2048", "3", "from", "fails=EROFS"},
        {"mtd14", "erase", "", "1", "every", "power-cut=0"},
        {"mtd14", "info", "", "1", "once", "fails=ENODEV"},
        {"mtd4", "read", "", "1", "once", "short=8"},
        {"mtd4", "read", "0", "1", "once", "corrupt=0:0x01"},
        {"/dev/mtd4", "open", "", "1", "once", "open-fails=EIO"},
        {"/tmp/bsp/poeApp", "write", "", "2", "once", "power-cut=2147483647"},
        {"console", "write", "", "1", "once", "fails=EIO"},
        {"console", "any", "", "3", "from", "fails=EACCES"},
    };
    for (const FaultWords &words : cases) {
        const FaultWords back = vb::faultWords(vb::parseFault(words));
        EXPECT_EQ(back.device, words.device);
        EXPECT_EQ(back.op, words.op);
        EXPECT_EQ(back.offset, words.offset);
        EXPECT_EQ(back.nth, words.nth);
        EXPECT_EQ(back.when, words.when);
        EXPECT_EQ(back.effect, words.effect);
    }
}

TEST(FaultText, ARuleBecomesArgumentsOfTheCommand) {
    EXPECT_EQ(vb::faultText(vb::parseFault({"cpld", "read", "0x2", "1", "once", "refuse=-5"})),
              "--device cpld --op read --offset 2 --nth 1 --when once --effect refuse=-5");
}

TEST(FaultText, NumbersAreWrittenAsEverywhere) {
    for (const auto &[effect, same] : {std::pair{"refuse=-0x10", "refuse=-16"},
                                       {"refuse=010", "refuse=10"}, // not of base 8
                                       {"refuse=0x7FFFFFFF", "refuse=2147483647"},
                                       {"short=0x2", "short=2"}})
        EXPECT_EQ(vb::faultWords(vb::parseFault({"i2c", "any", "", "1", "once", effect})).effect,
                  same);
}

TEST(FaultText, ErrorsHaveNamesOrNumbers) {
    const FaultWords byName = {"i2c", "any", "", "1", "once", "ioctl-fails=ENOENT"};
    EXPECT_EQ(vb::parseFault(byName).argument, ENOENT);
    const FaultWords byNumber = {"i2c", "any", "", "1", "once", "ioctl-fails=2"};
    EXPECT_EQ(vb::faultWords(vb::parseFault(byNumber)).effect, "ioctl-fails=ENOENT");
}

TEST(FaultText, PathsAreTidied) {
    const FaultWords words = {"//tmp/./bsp//devId", "read", "", "1", "once", "short=2"};
    EXPECT_EQ(vb::faultWords(vb::parseFault(words)).device, "/tmp/bsp/devId");
}

TEST(FaultText, WordsThatMakeNoRuleAreRefusedWithWhatWouldBeRight) {
    const struct {
        FaultWords words;
        const char *reason; // a part of it
    } cases[] = {
        {{"spi", "any", "", "1", "once", "refuse=-5"}, "choose from: cpld, gpio, i2c"},
        {{"i2c:0.1", "any", "", "1", "once", "no-answer"}, "i2c:0.0.0x51"},
        {{"i2c:0.1.0x80", "any", "", "1", "once", "no-answer"}, "0 to 127"},
        {{"/etc/passwd", "read", "", "1", "once", "short=2"}, "not one of the board's own files"},
        {{"/etc/passwd", "read", "", "1", "once", "short=2"},
         "/tmp/bspPoeLockFile, /dev/mtd0, /dev/mtd4, /dev/mtd12, /dev/mtd14, /tmp/bsp/..."},
        {{"/tmp/bsp/../x", "read", "", "1", "once", "short=2"}, "not one of the board's own files"},
        {{"cpld", "peek", "", "1", "once", "refuse=-5"}, "choose from: any, open, read, write"},
        {{"cpld", "any", "64", "1", "once", "refuse=-5"}, "0 to 63"},
        {{"gpio", "any", "32", "1", "once", "refuse=-5"}, "0 to 31"},
        {{"/proc/cmdline", "read", "3", "1", "once", "short=2"}, "leave out --offset"},
        {{"cpld", "any", "", "0", "once", "refuse=-5"}, "from 1"},
        {{"cpld", "any", "", "-1", "once", "refuse=-5"}, "from 1"},
        {{"cpld", "any", "", "1", "often", "refuse=-5"}, "choose from: once, every, from"},
        {{"cpld", "any", "", "1", "once", "explode"}, "choose from: refuse, open-fails"},
        {{"cpld", "any", "", "1", "once", "refuse"}, "refuse=-5"},
        {{"cpld", "any", "", "1", "once", "refuse=0"}, "other than 0"},
        {{"cpld", "any", "", "1", "once", "refuse=5x"}, "refuse=-5"},
        {{"cpld", "any", "", "1", "once", "refuse=+5"}, "refuse=-5"},
        {{"cpld", "any", "", "1", "once", "refuse= 5"}, "refuse=-5"},
        {{"cpld", "any", "", "1", "once", "refuse=4294967296"}, "refuse=-5"},
        {{"cpld", "any", "", "1", "once", "ioctl-fails=EWHAT"}, "ENOENT or 2"},
        {{"cpld", "any", "", "1", "once", "ioctl-fails=0"}, "ENOENT or 2"},
        {{"cpld", "any", "", "1", "once", "no-answer=1"}, "takes no value"},
        {{"cpld", "any", "", "1", "once", "corrupt=1"}, "corrupt=0:0x80"},
        {{"cpld", "any", "", "1", "once", "corrupt=2:1"}, "0 to 1"},
        {{"i2c", "any", "", "1", "once", "corrupt=0:0"}, "1 to 255"},
        {{"cpld", "any", "", "1", "once", "short=1"}, "; for short give --device i2c"},
        {{"gpio", "any", "", "1", "once", "corrupt=0:1"}, "for corrupt give --device cpld or i2c"},
        {{"cpld", "open", "", "1", "once", "refuse=-5"}, "give --op read, write, upgrade or any"},
        {{"cpld", "open", "", "1", "once", "open-fails=EIO"},
         "; for open-fails give --device /dev/bspHandle"},
        {{"cpld", "any", "", "1", "once", "open-fails=EIO"},
         "--device /dev/bspHandle with --op open"},
        {{"/proc/cmdline", "any", "", "1", "once", "open-fails=EIO"}, "--op open"},
        {{"/proc/cmdline", "any", "", "1", "once", "short=1"}, "--op read or write"},
        {{"/dev/bspHandle", "read", "", "1", "once", "short=1"}, "; for short give --device i2c"},
        {{"/proc/cmdline", "write", "", "1", "once", "corrupt=0:1"}, "--op read"},
        {{"/proc/cmdline", "read", "", "1", "once", "refuse=-5"}, "cannot have the effect refuse"},
        {{"/dev/bspHandle", "any", "", "1", "once", "ioctl-fails=EIO"}, "cannot have the effect"},
        {{"/proc/cmdline", "read", "", "1", "once", "no-answer"}, "cannot have the effect"},
        {{"poe", "any", "", "1", "once", "wrong-echo"}, "give --op write"},
        {{"poe", "write", "", "1", "once", "refuse=-5"}, "i2c:16.0.0x20"},
        {{"poe", "write", "256", "1", "once", "no-answer"}, "0 to 255"},
        {{"poe", "write", "", "1", "once", "late-answer=1"}, "2 to 255"},
        {{"poe", "write", "", "1", "once", "bad-port=48"}, "0 to 47"},
        {{"poe", "write", "", "1", "once", "wrong-echo=1"}, "takes no value"},
        {{"poe", "reset", "1", "1", "once", "no-answer"},
         "out of reset there is no frame; leave out --offset"},
        {{"poe", "reset", "", "1", "once", "wrong-echo"}, "no-answer"},
        {{"i2c", "any", "", "1", "once", "late-answer=2"}, "give --device poe"},
        {{"gpio", "reset", "", "1", "once", "no-answer"}, "give --device poe"},
        {{"mtd5", "any", "", "1", "once", "fails=EIO"}, "mtd0, mtd4, mtd12, mtd14"},
        {{"mtd4", "write", "", "1", "once", "fails=EIO"},
         "read, program, erase, info, change or any"},
        {{"mtd4", "open", "", "1", "once", "fails=EIO"}, "give --op read, program, erase"},
        {{"mtd4", "open", "", "1", "once", "open-fails=EIO"}, "give --device /dev/mtdN"},
        {{"mtd4", "info", "0", "1", "once", "fails=EIO"}, "leave out --offset"},
        {{"mtd4", "read", "", "1", "once", "power-cut=1"}, "--op program, erase or change"},
        {{"mtd4", "any", "", "1", "once", "power-cut=1"}, "--op program, erase or change"},
        {{"mtd4", "program", "", "1", "once", "short=1"}, "--op read"},
        {{"mtd4", "program", "", "1", "once", "refuse=-5"}, "fails, power-cut, short"},
        {{"mtd4", "program", "", "1", "once", "power-cut=-1"}, "0 to 2147483647"},
        {{"mtd4", "program", "", "1", "once", "fails=EWHAT"}, "ENOENT or 2"},
        {{"cpld", "program", "", "1", "once", "refuse=-5"},
         "give --op read, write, upgrade or any"},
        {{"cpld", "program", "", "1", "once", "fails=EIO"}, "for fails give --device mtdN"},
        {{"cpld", "any", "", "1", "once", "fails=EIO"}, "give --device mtdN"},
        {{"cpld", "any", "", "1", "once", "power-cut=1"},
         "give --device mtdN with --op program, erase or change; or --device PATH with --op write"},
        {{"poe", "write", "", "1", "once", "fails=EIO"}, "for fails give --device console"},
        {{"poe", "erase", "", "1", "once", "wrong-echo"}, "give --op write"},
        {{"/dev/mtd4", "read", "", "1", "once", "short=1"}, "give --device mtdN"},
        {{"/tmp/bsp/x", "read", "", "1", "once", "power-cut=1"}, "give --op write"},
        {{"console", "read", "", "1", "once", "fails=EIO"}, "give --op write or any"},
        {{"console", "open", "", "1", "once", "open-fails=EIO"}, "it can have fails;"},
        {{"console", "write", "0", "1", "once", "fails=EIO"}, "leave out --offset"},
        {{"console", "write", "", "1", "once", "short=1"}, "it can have fails"},
        {{"cpld", "write", "", "1", "once", "fails=EIO"}, "for fails give --device console"},
        {{"/tmp/bsp/x", "erase", "", "1", "once", "open-fails=EIO"}, "give --op open"},
        {{"/dev/bspHandle", "any", "", "1", "once", "refuse=-5"},
         "for refuse give --device cpld, gpio or i2c"},
    };
    for (const auto &[words, reason] : cases)
        EXPECT_NE(refusalOf(words).find(reason), std::string::npos)
            << words.device << ' ' << words.effect << ": " << refusalOf(words);
}

} // namespace
