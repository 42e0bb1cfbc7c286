// iodbg boot.

#include "tests/iodbg/flash_commands_test.h"
#include "tests/support/world.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>

namespace {

class BootCommandsTest : public FlashCommandsTest {
  protected:
    std::string block() const { return stored(4, 0, 256); }
    /** The block of a unit with every setting stored. */
    void storeAll() const {
        std::string bytes(256, '\xFF');
        const auto put = [&bytes](size_t at, size_t size, const std::string &text) {
            bytes.replace(at, size, text + std::string(size - text.size(), '\0'));
        };
        put(0, 32, "main_system=1");
        put(32, 32, "boot_type=-7");
        put(64, 32, "baudrate=38400");
        put(96, 32, "password=1");
        put(128, 32, "user_pwd=0");
        put(192, 64, "boot_pwd=Secret1");
        store(4, 0, bytes);
    }
    void useLargePages() const {
        flash(4).geometry = {vb::FlashType::Nand, 262144, 131072, 2048, 64};
        std::string page = "main_system=1";
        page.resize(2048, '\0');
        page.replace(192, 16, "boot_pwd=Secret1");
        store(4, 0, page);
    }
    /** The board's library with another stty beside it, which fails. */
    Environment withFailingStty() const {
        namespace fs = std::filesystem;
        const fs::path folder = hostFile("library");
        const fs::path stty = folder / "vboard-tools/stty";
        fs::create_directories(stty.parent_path());
        std::ofstream(stty) << "#!/bin/sh\necho 'stty: no such console' >&2\nexit 1\n";
        fs::permissions(stty, fs::perms::owner_all);
        const std::string preload = "LD_PRELOAD=";
        Environment environment = boardEnvironment(boardFolder());
        for (std::string &variable : environment) {
            if (!variable.starts_with(preload))
                continue;
            const fs::path library = variable.substr(preload.size());
            fs::copy_file(library, folder / library.filename(),
                          fs::copy_options::overwrite_existing);
            // The one for the shell of a host of another kind.
            const fs::path hosts = library.parent_path() / "x86_64-linux-gnu";
            if (fs::exists(hosts))
                fs::copy(hosts, folder / hosts.filename(),
                         fs::copy_options::recursive | fs::copy_options::overwrite_existing);
            variable = preload + (folder / library.filename()).string();
        }
        return environment;
    }
};

TEST_F(BootCommandsTest, AnErasedBlockShowsDefaults) {
    const ProcessResult result = iodbg({"boot", "get"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(result.out, "Mode (system to start)       0\n"
                          "Boot flag                    none stored\n"
                          "Console, baud                115200\n"
                          "Console asks for a password  no\n"
                          "User password in force       yes\n"
                          "Boot password                none\n"
                          "Block                        erased: nothing is stored, these are the "
                          "defaults\n");
}

TEST_F(BootCommandsTest, ShowsEverySettingButThePassword) {
    storeAll();
    EXPECT_EQ(iodbg({"boot", "get"}).out,
              "Mode (system to start)       1\n"
              "Boot flag                    -7\n"
              "Console, baud                38400\n"
              "Console asks for a password  yes\n"
              "User password in force       no\n"
              "Boot password                stored; --show-password shows it\n"
              "Block                        written\n");
    EXPECT_EQ(iodbg({"boot", "get", "password", "--show-password"}).out,
              "Boot password  Secret1\n"
              "Block          written\n");
    EXPECT_EQ(jsonAt(json({"boot", "get"}), ""),
              "{\"mode\":1,\"flag\":-7,\"baudrate\":38400,\"console_password\":true,"
              "\"user_password\":false,\"has_password\":true,\"erased\":false,\"failures\":[]}");
    EXPECT_EQ(jsonAt(json({"boot", "get", "--show-password"}), "/password"), "\"Secret1\"");
    EXPECT_EQ(jsonAt(json({"boot", "get", "flag"}), ""),
              "{\"flag\":-7,\"erased\":false,\"failures\":[]}");
}

TEST_F(BootCommandsTest, APasswordOfAnyBytesCanBeShown) {
    world::set("flash.4.content@192", "626f6f745f7077643d5cff1b4100"); // boot_pwd=
    EXPECT_EQ(jsonAt(json({"boot", "get", "--show-password"}), "/password"),
              R"("\\\\\\xFF\\x1BA")");
    EXPECT_EQ(iodbg({"boot", "get", "password", "--show-password"}).out,
              "Boot password  \\\\\\xFF\\x1BA\n"
              "Block          written\n");
    world::set("flash.4.content@192", "626f6f745f7077643d415c4200");
    EXPECT_EQ(jsonAt(json({"boot", "get", "--show-password"}), "/password"), R"("A\\B")");
}

TEST_F(BootCommandsTest, ABlockThatCannotBeReadIsNoDefault) {
    spoil("mtd4", "read", "fails=EIO");
    expectFailure({"boot", "get"}, 1, {"cannot read /dev/mtd4 at 0x0: Input/output error"});
    expectFailure({"boot", "set", "mode", "1"}, 1, {"cannot read /dev/mtd4"});
    EXPECT_EQ(flash(4).erases[0], 0u);
    clearFaults();
    addFault(openFails("/dev/mtd4", ENODEV));
    expectFailure({"boot", "get"}, 1, {"cannot open /dev/mtd4: No such device"});
}

TEST_F(BootCommandsTest, SetsEverySettingAndLeavesTheOthers) {
    storeAll();
    const struct {
        const char *setting, *value, *text;
        size_t at;
    } cases[] = {
        {"mode", "0", "main_system=0", 0},
        {"flag", "2147483647", "boot_type=2147483647", 32},
        {"baudrate", "9600", "baudrate=9600", 64},
        {"console-password", "off", "password=0", 96},
        {"user-password", "off", "user_pwd=0", 128},
    };
    for (const auto &[setting, value, text, at] : cases) {
        std::string wanted = block();
        wanted.replace(at, 32, text + std::string(32 - std::strlen(text), '\0'));
        const ProcessResult result = iodbg({"boot", "set", setting, value});
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(block(), wanted) << setting;
    }
    EXPECT_EQ(iodbg({"boot", "set", "flag", "--", "-5"}).out,
              "Setting   flag\n"
              "Value     -5\n"
              "Verified  read back, and the other settings are as they were\n");
    EXPECT_EQ(iodbg({"boot", "set", "user-password", "on"}).exitCode, 0);
    EXPECT_EQ(block().substr(128, 32), std::string(32, '\xFF'));
    EXPECT_EQ(devices().console.speed, 9600u);
    EXPECT_EQ(
        jsonAt(json({"boot", "set", "console-password", "on"}), ""),
        "{\"setting\":\"console-password\",\"value\":true,\"verified\":true,\"failures\":[]}");
    EXPECT_EQ(jsonAt(json({"boot", "set", "mode", "1"}), "/value"), "1");
}

TEST_F(BootCommandsTest, ThePasswordIsNeverShown) {
    storeAll();
    const ProcessResult result = iodbg({"boot", "set", "password", "-"}, "New pass\n");
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "Setting   password\n"
                          "Password  stored\n"
                          "Verified  read back, and the other settings are as they were\n");
    EXPECT_EQ(result.err, "");
    EXPECT_EQ(block().substr(192, 18), std::string("boot_pwd=New pass\0", 18));
    EXPECT_EQ(iodbg({"boot", "set", "password", "-"}, "\n").out.find("Password  removed"), 19u);
    EXPECT_EQ(block().substr(192), std::string(64, '\0'));
    EXPECT_EQ(iodbg({"boot", "set", "password", "-"}, std::string(40, 'p')).exitCode, 0);
    for (const std::string &bad : {std::string(41, 'p'), std::string("a\tb")}) {
        const ProcessResult refused = iodbg({"boot", "set", "password", "-"}, bad + "\n");
        EXPECT_EQ(refused.exitCode, 2);
        EXPECT_EQ(refused.err,
                  "iodbg: password: a boot password has at most 40 printable characters\n");
    }
    EXPECT_EQ(iodbg({"boot", "set", "password", "-"}).exitCode, 2); // nobody there
    EXPECT_EQ(block().substr(192, 50), "boot_pwd=" + std::string(40, 'p') + std::string(1, '\0'));
}

TEST_F(BootCommandsTest, ATerminalDoesNotShowThePassword) {
    const std::string shown = iodbgOnTerminal(
        {"boot", "set", "password", "-"}, {.prompt = "New boot password: ", .answer = "hidden7\n"});
    EXPECT_EQ(shown.find("hidden7"), std::string::npos) << shown;
    EXPECT_NE(shown.find("New boot password: \r\nSetting   password\r\n"), std::string::npos)
        << shown;
    EXPECT_EQ(block().substr(192, 17), std::string("boot_pwd=hidden7\0", 17));
}

TEST_F(BootCommandsTest, ATerminalShowsAgainWhatIsTypedBehindThePassword) {
    const struct {
        const char *typed;
        int exitCode;
    } cases[] = {
        {"secret\n", 0},
        {"secret\x03", 128 + SIGINT},
        {"\x1c", 128 + SIGQUIT},
        {"a\x1a"
         "b\n",
         2}, // a character like any other: a stopped program's terminal stayed silent
        {"\x04", 2},
    };
    for (const auto &[typed, exitCode] : cases) {
        TerminalEnd end;
        const std::string shown =
            iodbgOnTerminal({"boot", "set", "password", "-"},
                            {.prompt = "New boot password: ", .answer = typed}, {}, &end);
        EXPECT_EQ(end.exitCode, exitCode) << shown;
        EXPECT_TRUE(end.isEchoing) << shown;
        EXPECT_TRUE(end.isSuspending) << shown;
        EXPECT_EQ(shown.find("secret"), std::string::npos) << shown;
        EXPECT_NE(shown.find("New boot password: \r\n"), std::string::npos)
            << "the next prompt begins a line: " << shown;
    }
}

TEST_F(BootCommandsTest, LargePagesLoseAllSettings) {
    useLargePages();
    const ProcessResult result =
        expectFailure({"boot", "set", "flag", "3"}, 3,
                      {"flag was not stored, and all boot settings are lost: the block was erased "
                       "and not written; they were main_system=1, boot_pwd=(not shown); the flash "
                       "takes only whole pages of 2048 bytes",
                       "'iodbg mtd write mtd4 FILE', FILE being its 256 bytes"});
    EXPECT_EQ(result.err.find("Secret1"), std::string::npos);
    EXPECT_EQ(block(), std::string(256, '\xFF'));
}

TEST_F(BootCommandsTest, LargePagesTakeNoSettingIntoAnErasedBlockEither) {
    flash(4).geometry = {vb::FlashType::Nand, 262144, 131072, 2048, 64};
    const ProcessResult result =
        expectFailure({"boot", "set", "flag", "3"}, 3,
                      {"flag was not stored, the block is as it was; the flash takes only whole "
                       "pages of 2048 bytes, and so no setting of these 256"});
    EXPECT_EQ(result.err.find("write the block back"), std::string::npos) << "nothing is lost";
    EXPECT_EQ(block(), std::string(256, '\xFF'));
}

TEST_F(BootCommandsTest, ABackupIsSavedFirst) {
    useLargePages();
    const std::string before = block();
    const std::string file = hostFile("backup");
    expectFailure({"boot", "set", "flag", "3", "--backup", file}, 3,
                  {"write the block back with 'iodbg mtd write mtd4 " + file + "'"});
    EXPECT_EQ(readFile(file), before);
    expectFailure({"boot", "set", "flag", "3", "--backup", "/none/x"}, 4, {"cannot write /none/x"});
}

TEST_F(BootCommandsTest, GarbageInTheBlockIsCut) {
    std::string bytes(256, '\x01');
    bytes.replace(0, 12, "main_system=");
    store(4, 0, bytes);
    spoil("mtd4", "program", "fails=EIO");
    std::string shown = "they were main_system=";
    for (int i = 0; i < 12; ++i)
        shown += "\\x01";
    expectFailure({"boot", "set", "flag", "0"}, 3, {shown + "...; write the block back"});
}

TEST_F(BootCommandsTest, WornFlashIsFound) {
    storeAll();
    spoil("mtd4", "erase", "fails=EIO");
    expectFailure({"boot", "set", "mode", "0"}, 3,
                  {"mode was not stored, the block is as it was; check the kernel log"});
    clearFaults();
    spoil("mtd4", "program", "fails=EIO");
    expectFailure({"boot", "set", "mode", "0"}, 3,
                  {"all boot settings are lost", "boot_type=-7, baudrate=38400, password=1, "
                                                 "user_pwd=0, boot_pwd=(not shown)"});
    clearFaults();
    storeAll();
    // The third read is the one of the verification: another setting reads differently.
    spoil("mtd4", "read", "corrupt=40:0x01", "", "3");
    expectFailure({"boot", "set", "mode", "0"}, 3,
                  {"the boot settings read back differently: flag; they were main_system=1"});
}

TEST_F(BootCommandsTest, ABlockThatDidNotOpenForTheWriteIsFound) {
    storeAll();
    const std::string before = block();
    vb::FaultRule rule = openFails("/dev/mtd4", ENODEV);
    rule.when = vb::FaultWhen::Once;
    rule.nth = 3; // behind the reads of iodbg and of the library
    addFault(rule);
    expectFailure({"boot", "set", "baudrate", "57600"}, 3, {"baudrate was not stored"});
    EXPECT_EQ(block(), before);
}

TEST_F(BootCommandsTest, ARateThatTheConsoleRefusesIsNotStored) {
    storeAll();
    const std::string before = block();
    const Words command = {builtProgram("iodbg"), "boot", "set", "baudrate", "9600"};
    const ProcessResult result = run(command, withFailingStty());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, "");
    const Words lines = linesOf(result.err);
    ASSERT_EQ(lines.size(), 3u) << result.err;
    EXPECT_EQ(lines[0], "stty: no such console");
    EXPECT_NE(lines[1].find(": set console baudrate to 9600 error, ret = 256"), std::string::npos)
        << lines[1];
    EXPECT_EQ(lines[2].find("iodbg: cannot set baudrate: BSP_E_FAILED (-1), "), 0u) << lines[2];
    EXPECT_NE(lines[2].find("; nothing was stored, as the running console /dev/ttyS0 refuses it; "
                            "the messages above say more"),
              std::string::npos)
        << lines[2];
    EXPECT_EQ(block(), before);
    EXPECT_EQ(flash(4).erases[0], 0u);
    EXPECT_EQ(devices().console.speed, 115200u);
    // Nothing else asks the console.
    EXPECT_EQ(run({builtProgram("iodbg"), "boot", "set", "mode", "0"}, withFailingStty()).exitCode,
              0);
}

TEST_F(BootCommandsTest, TheLibrarysMessagesAreNotAmongTheBytesOfABackup) {
    storeAll();
    const ProcessResult result =
        run({builtProgram("iodbg"), "boot", "set", "baudrate", "9600", "--backup", "-"},
            withFailingStty());
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_TRUE(result.out == block()) << result.out;
    EXPECT_NE(result.err.find(": set console baudrate to 9600 error"), std::string::npos)
        << result.err;
}

TEST_F(BootCommandsTest, RefusesWordsThatAreNotRight) {
    const std::pair<const char *, const char *> cases[] = {
        {"boot", "a command is missing: give one of get|set; see 'iodbg boot --help'"},
        {"boot get colour",
         "'colour' is none of mode|flag|baudrate|console-password|user-password|password"},
        {"boot set", "SETTING is required"},
        {"boot set mode", "VALUE is required"},
        {"boot set colour 1", "'colour' is none of mode"},
        {"boot set mode 2", "mode: '2' is not a number from 0 to 1"},
        {"boot set mode -- -1", "mode: '-1' is not a number from 0 to 1"},
        {"boot set flag -- -2147483649", "flag: '-2147483649' is not a number"},
        {"boot set mode 1 0", "The following argument was not expected: 0"},
        {"boot get mode flag", "The following argument was not expected: flag"},
        {"boot set mode 1 --backup", "--backup"},
        {"boot set flag x", "flag: 'x' is not a number from -2147483648 to 2147483647"},
        {"boot set flag 2147483648", "flag: '2147483648' is not a number"},
        {"boot set baudrate 9601", "baudrate: '9601' is none of 9600|19200|38400|57600|115200"},
        {"boot set console-password 1", "console-password: '1' is none of on|off"},
        {"boot set user-password yes", "user-password: 'yes' is none of on|off"},
        {"boot set password secret", "a password on a command line is seen by everyone"},
    };
    for (const auto &[line, text] : cases)
        expectRefusal(wordsOf(line), 2, text);
    expectRefusal({"boot", "set", "mode", ""}, 2, "mode: '' is not a number from 0 to 1");
    expectRefusal({"boot", "set", "mode", "1", "--backup", ""}, 2, "'' is not the name of a file");
    expectRefusal({"boot", "set", "mode", "1", "--backup", "/tmp"}, 4,
                  "/tmp is not a regular file");
    expectRefusal({"boot", "set", "mode", "1", "--backup", "/none/x"}, 4, "cannot write /none/x");
}

} // namespace
