// The power fails in the middle of upgrades and changes: what the next start finds, and the way
// back.

#include "tests/support/firmware.h"
#include "tests/system/unit_test.h"

namespace {

class BadPowerDay : public UnitTest {
  protected:
    static constexpr int kKilled = 128 + 9;

    void theSystemIsInstalled() const;
    void aCutInAnImage() const;
    void aCutInTheSettings() const;
    void aCutInThePoeFirmware() const;

    /** A rule of what goes wrong. */
    void spoil(const std::string &words) const;
    /** The power comes back: registers and memory are as after switching on. */
    void powerComesBack() const;
};

void BadPowerDay::spoil(const std::string &words) const {
    Words line = {"fault", board(), "add"};
    for (const std::string &word : wordsOf(words))
        line.push_back(word);
    vboard(line);
}

void BadPowerDay::powerComesBack() const {
    vboard({"fault", board(), "clear"});
    set("power", "cycle");
    pass(5); // the PoE controller starts
    iodbg("init");
}

void BadPowerDay::theSystemIsInstalled() const {
    iodbg("init");
    const std::string file = makeFile("old.img", osImage("old system"));
    iodbg("upgrade os " + file + " --bank 0 --yes");
    iodbg("upgrade os " + file + " --bank 1 --yes");
    iodbg("boot set mode 1");
    iodbg("boot set flag 5");
    iodbg("poe init");
    iodbg("clock sync");
    EXPECT_EQ(complaints(0), Lines{});
}

void BadPowerDay::aCutInAnImage() const {
    const std::string file = makeFile("new.img", osImage("new system"));
    spoil("--device mtd12 --op program --nth 70 --effect power-cut=1000");
    iodbg("upgrade os " + file + " --bank 0 --yes", kKilled);
    powerComesBack();
    EXPECT_EQ(complaints(0),
              (Lines{"warning PoE controller: not initialised; run 'iodbg poe init'",
                     "not-judged PoE ports: hangs on the PoE controller",
                     "warning bank 0: holds no image; write one with 'iodbg upgrade os FILE --bank "
                     "0'"}));
    EXPECT_EQ(column(json("image info")["banks"], "empty"), "true false");
    EXPECT_EQ(json("upgrade os " + file + " --bank 0 --yes")["verified"], true);
    EXPECT_EQ(column(json("image info")["banks"], "header_text"), "\"new system\" \"old system\"");
}

void BadPowerDay::aCutInTheSettings() const {
    spoil("--device mtd4 --op change --nth 2 --effect power-cut=0");
    iodbg("boot set mode 0", kKilled);
    powerComesBack();
    EXPECT_EQ(complaints(0),
              (Lines{"warning PoE controller: not initialised; run 'iodbg poe init'",
                     "not-judged PoE ports: hangs on the PoE controller",
                     "warning boot settings: none is stored, the defaults hold; set them with "
                     "'iodbg boot set'"}));
    iodbg("boot set mode 1");
    Json settings = json("boot get");
    EXPECT_EQ(settings["mode"], 1);
    EXPECT_EQ(settings["flag"], nullptr) << "lost with the rest of the block";
}

void BadPowerDay::aCutInThePoeFirmware() const {
    const std::string file = makeFile("poe.bin", firmwareImage(51200));
    iodbg("poe init");
    spoil("--device poe --op write --offset 0xC0 --nth 500 --effect power-loss");
    EXPECT_EQ(refusal("poe upgrade " + file + " --yes", 1),
              "iodbg: cannot upgrade the PoE controller's firmware: BSP_E_POE_WRITE (-1103), a "
              "request frame could not be written to the controller; the controller has no usable "
              "firmware now: repeat the upgrade");
    iodbg("clock sync");
    pass(1); // the controller starts anew
    EXPECT_EQ(complaints(5), (Lines{"fault PoE controller: its last upgrade failed; run 'iodbg poe "
                                    "upgrade FILE'",
                                    "not-judged PoE ports: hangs on the PoE controller"}));
    powerComesBack(); // which takes the note of the failure with it, but not the failure

    EXPECT_EQ(get({"poe.controller"}), Lines{"loader"});
    EXPECT_EQ(complaints(5), (Lines{"fault PoE controller: takes requests, its answers are missing "
                                    "or wrong: BSP_E_POE_FRAME (-1105); check again in a few "
                                    "seconds, then switch the unit off and on; if it stays so, "
                                    "write its firmware anew with 'iodbg poe upgrade FILE'",
                                    "not-judged PoE ports: hangs on the PoE controller"}));
    EXPECT_EQ(json("poe upgrade " + file + " --yes")["version_after"], "V1.2.3.4");
    iodbg("poe init");
    iodbg("clock sync");
    EXPECT_EQ(complaints(0), Lines{});
}

TEST_F(BadPowerDay, EveryCutHasAWayBack) {
    theSystemIsInstalled();
    aCutInAnImage();
    aCutInTheSettings();
    aCutInThePoeFirmware();
}

} // namespace
