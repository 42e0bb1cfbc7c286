// iodbg --from FILE: commands that only read, on a captured unit. No board is attached then.

#include "tests/virtual_board/command_test.h"

#include <csignal>

namespace {

namespace fs = std::filesystem;

class FromOptionTest : public CommandTest {
  protected:
    std::string document() const { return path("unit.json"); }
    std::string temporary() const { return path("tmp"); }

    void SetUp() override {
        CommandTest::SetUp();
        fs::create_directory(temporary());
    }

    void capture() const { ASSERT_EQ(onBoard({"capture", document()}).exitCode, 0); }
    ProcessResult onBoard(Words words) const {
        words.insert(words.begin(), builtProgram("iodbg"));
        return runOnBoard(board(), words);
    }
    /** iodbg on this host. */
    ProcessResult iodbg(Words words, Environment environment = {}) const {
        words.insert(words.begin(), builtProgram("iodbg"));
        environment.push_back("TMPDIR=" + temporary());
        return run(words, environment);
    }
    /** One without vboard beside it. */
    std::string iodbgElsewhere() const {
        const std::string program = path("iodbg");
        fs::copy_file(builtProgram("iodbg"), program);
        return program;
    }
    Environment elsewhere(const std::string &programs = "/nowhere") const {
        const fs::path libraries = fs::path(builtProgram("iodbg")).parent_path().parent_path();
        return {"TMPDIR=" + temporary(), "PATH=" + programs,
                "LD_LIBRARY_PATH=" + libraries.string()};
    }
    void expectFailure(int exitCode, const std::string &reason, const Words &words) const {
        const ProcessResult result = iodbg(words);
        EXPECT_EQ(result.exitCode, exitCode);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.substr(0, 7), "iodbg: ");
        EXPECT_NE(result.err.find(reason), std::string::npos) << result.err;
        EXPECT_TRUE(fs::is_empty(temporary()));
    }
};

TEST_F(FromOptionTest, ACapturedUnitAnswersAsItDid) {
    vboard({"set", board(), "sfp.49.module=sr", "sfp.49.rx-power=3", "fan.1.state=stuck",
            "supply.2.present=no", "temperature.ambient=30"});
    vboard({"run", board(), "--", "sleep", "120"}); // fans and temperature have settled
    capture();
    for (const Words &words :
         {Words{"boot", "get"}, Words{"fan", "get", "--json"}, Words{"--json", "gpio", "list"},
          Words{"identity", "get"}, Words{"cpld", "get", "1-5"},
          Words{"eeprom", "dump", "--offset", "256", "--length", "32"}, Words{"image", "info"}}) {
        const ProcessResult live = onBoard(words);
        Words from = words;
        from.insert(from.end(), {"--from", document()});
        const ProcessResult captured = iodbg(from);
        EXPECT_EQ(captured.exitCode, live.exitCode) << words[0];
        EXPECT_EQ(captured.out, live.out);
    }
    EXPECT_EQ(iodbg({"check", "--from=" + document()}).exitCode, 5) << "the fan stands";
    const ProcessResult piped = run({builtProgram("iodbg"), "cpld", "get", "1-5", "--from", "-"},
                                    {"TMPDIR=" + temporary()}, bytesOutsideHoles(document()));
    EXPECT_EQ(piped.out, onBoard({"cpld", "get", "1-5"}).out);
    EXPECT_TRUE(fs::is_empty(temporary()));
}

TEST_F(FromOptionTest, WhatIsNotAsItWasIsCounted) {
    capture();
    EXPECT_EQ(iodbg({"temperature", "--from", document()}).err, "");
    vboard({"set", board(), "flash.12.content@0x20000=00112233"});
    ASSERT_EQ(onBoard({"capture", document(), "--force"}).exitCode, 0);
    EXPECT_EQ(iodbg({"temperature", "--from", document()}).err,
              "iodbg: " + document() +
                  ": not as they were: 1 properties; 'vboard create --from' tells which\n");
}

TEST_F(FromOptionTest, FilesAreNamedFromWhereOneIs) {
    capture();
    EXPECT_EQ(
        iodbg({"eeprom", "dump", "--length", "16", "--output", path("saved"), "--from", document()})
            .exitCode,
        0);
    EXPECT_EQ(fs::file_size(path("saved")), 16U);
}

TEST_F(FromOptionTest, WhatIsNoUnitIsRefused) {
    expectFailure(4, "/nowhere", {"fan", "get", "--from", "/nowhere"});
    std::ofstream(document()) << "{}";
    expectFailure(4, "it is no captured unit", {"fan", "get", "--from", document()});
    expectFailure(2, "--from", {"fan", "set", "3", "--from", document()});
    EXPECT_EQ(iodbg({"fan", "get", "--from", document()}, {"TMPDIR=/nowhere"}).exitCode, 4);
}

TEST_F(FromOptionTest, WithoutVboardOneIsToldWhatToInstall) {
    capture();
    const ProcessResult result =
        run({iodbgElsewhere(), "fan", "get", "--from", document()}, elsewhere());
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.err, "iodbg: cannot start vboard, which makes a virtual board of the captured "
                          "unit: No such file or directory; install it beside iodbg, or where PATH "
                          "leads\n");
    EXPECT_TRUE(fs::is_empty(temporary()));
}

TEST_F(FromOptionTest, SignalsAreForTheCommandAndNothingIsLeft) {
    const std::string iodbg = iodbgElsewhere();
    const std::string standIn = fs::path(iodbg).replace_filename("vboard").string();
    std::ofstream(standIn) << "#!/bin/sh\n[ \"$1\" = create ] && exit 0\n"
                              "trap 'exit 9' TERM\necho ready\nwhile :; do sleep 0.1; done\n";
    fs::permissions(standIn, fs::perms::owner_all);
    Process process({iodbg, "fan", "get", "--from", document()}, elsewhere("/usr/bin:/bin"));
    ASSERT_TRUE(comesTrue([&] { return process.output() == "ready\n"; }));
    EXPECT_FALSE(fs::is_empty(temporary()));
    process.signal(SIGTERM);
    EXPECT_EQ(process.wait().exitCode, 9);
    EXPECT_TRUE(fs::is_empty(temporary()));

    std::ofstream(standIn) << "#!/bin/sh\n[ \"$1\" = create ] && kill -TERM $$\necho ran\n";
    const ProcessResult unmade =
        run({iodbg, "fan", "get", "--from", document()}, elsewhere("/usr/bin:/bin"));
    EXPECT_EQ(unmade.exitCode, 128 + SIGTERM) << "while the board is made";
    EXPECT_EQ(unmade.err, "");
    EXPECT_TRUE(fs::is_empty(temporary()));
}

} // namespace
