// Where commands of iodbg save bytes and take them from: files, standard output, standard input.

#include "flash/flash_lock.h"
#include "support/owned.h"
#include "tests/iodbg/flash_commands_test.h"

#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;

mode_t modeOf(const std::string &path) {
    struct stat info = {};
    return stat(path.c_str(), &info) == 0 ? info.st_mode & 07777 : 0;
}

class OutputFilesTest : public FlashCommandsTest {
  protected:
    /** The files of a folder of the host. */
    Words filesIn(const std::string &folder) const {
        Words names;
        for (const auto &entry : fs::directory_iterator(folder))
            names.push_back(entry.path().filename());
        return names;
    }
    std::string folder(const std::string &name) const {
        fs::create_directory(hostFile(name));
        return hostFile(name);
    }

    struct Save {
        Words words; // without the file
        std::string bytes;
    };
    /** Stores a small file behind a length header, which is read in no time. */
    void storeSmallFile(uint32_t number) const {
        store(number, 0, std::string("\0\0\0\x64\xA1\x02\xA3\x04", 8) + std::string(100, 's'));
    }
    /** Every command that saves bytes, and what it should save. */
    std::vector<Save> saves() const {
        storeSmallFile(0);
        const std::string eeprom(reinterpret_cast<const char *>(devices().eeprom.bytes), 1024);
        const std::string image = makeFile("image", "123456789");
        std::string packed = "123456789BOOT";
        packed += std::string("\0\0\0\0\0\0\0\x50\x97\x3D\x18\x3A\0\0\0\0\xCB\xF4\x39\x26", 20);
        packed += std::string(8, '\0') + "ZENTRAV48_BOOT" + std::string(34, '\0');
        return {{{"eeprom", "dump", "--output"}, eeprom},
                {{"identity", "get", "record", "--output"}, eeprom.substr(256, 128)},
                {{"image", "pack-boot", image}, packed},
                {{"boot", "set", "mode", "1", "--backup"}, stored(4, 0, 256)},
                {{"mtd", "read", "mtd0", "--header"}, std::string(100, 's')}};
    }
    static Words with(Words words, const Words &more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
};

TEST_F(OutputFilesTest, AFileIsReplacedOnlyByForce) {
    for (const Save &save : saves()) {
        const std::string file = makeFile("old", "kept");
        expectRefusal(with(save.words, {file}), 4,
                      file + " exists; choose another name, or replace it with --force");
        EXPECT_EQ(readFile(file), "kept");
        const ProcessResult result = iodbg(with(save.words, {file, "--force"}));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_EQ(readFile(file), save.bytes) << save.words[0];
        fs::remove(file);
    }
}

TEST_F(OutputFilesTest, NothingButFilesIsEverReplaced) {
    const std::string target = makeFile("target", "kept");
    const std::string link = hostFile("link");
    const std::string dangling = hostFile("dangling");
    const std::string fifo = hostFile("fifo");
    fs::create_symlink(target, link);
    fs::create_symlink(hostFile("nowhere"), dangling);
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    for (const Save &save : saves()) {
        for (const std::string &path : {link, dangling})
            expectRefusal(with(save.words, {path, "--force"}), 4,
                          path + " is a symbolic link; give the name of the file itself, or - for "
                                 "standard output");
        for (const std::string &path : {fifo, hostFile(""), std::string("/dev/null")})
            expectRefusal(with(save.words, {path, "--force"}), 4,
                          path + " is not a regular file; choose another name, or - for standard "
                                 "output");
    }
    EXPECT_EQ(readFile(target), "kept");
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_TRUE(fs::is_symlink(dangling));
    EXPECT_TRUE(fs::is_fifo(fifo));
    EXPECT_TRUE(fs::is_character_file("/dev/null"));
    EXPECT_FALSE(fs::exists(hostFile("nowhere")));
}

TEST_F(OutputFilesTest, StandardOutputCarriesTheBytesAlone) {
    for (const Save &save : saves()) {
        const ProcessResult result = iodbg(with(save.words, {"-"}));
        EXPECT_EQ(result.exitCode, 0) << result.err;
        EXPECT_TRUE(result.out == save.bytes) << save.words[0] << result.out.size();
        ASSERT_GT(linesOf(result.err).size(), 1u) << "the answer is on standard error";
    }
}

TEST_F(OutputFilesTest, StandardOutputHasSeveralNames) {
    const Save dump = saves()[0];
    for (const char *name :
         {"/dev/stdout", "/dev/fd/1", "/proc/self/fd/1", "/dev/../dev//./stdout"}) {
        const ProcessResult result = iodbg(with(dump.words, {name}));
        EXPECT_TRUE(result.out == dump.bytes) << name << result.err;
        EXPECT_NE(result.err.find("Saved in  standard output\n"), std::string::npos) << result.err;
    }
}

TEST_F(OutputFilesTest, StandardOutputIsNotForBytesAndJson) {
    for (const Save &save : saves())
        EXPECT_EQ(jsonAt(json(with(save.words, {"-"}), 2), "/error/message"),
                  "\"the bytes and an answer in JSON cannot both go to standard output; leave "
                  "--json out, or save the bytes in a file\"");
    EXPECT_EQ(flash(4).erases[0], 0u);
}

TEST_F(OutputFilesTest, AFullStandardOutputStopsBeforeTheSetting) {
    const FileSizeLimit limit = limitFiles(100);
    const ProcessResult result = iodbg({"boot", "set", "mode", "1", "--backup", "-"});
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_NE(result.err.find("cannot write to standard output: File too large"),
              std::string::npos);
    EXPECT_EQ(flash(4).erases[0], 0u);
}

TEST_F(OutputFilesTest, ModesAreThoseOfAnyFile) {
    const mode_t mask = umask(027);
    EXPECT_EQ(iodbg({"eeprom", "dump", "--output", hostFile("new")}).exitCode, 0);
    umask(mask);
    EXPECT_EQ(modeOf(hostFile("new")), 0640u);
    ASSERT_EQ(chmod(hostFile("new").c_str(), 0604), 0);
    EXPECT_EQ(iodbg({"eeprom", "dump", "--output", hostFile("new"), "--force"}).exitCode, 0);
    EXPECT_EQ(modeOf(hostFile("new")), 0604u) << "the one of the file that it replaces";
    storeSmallFile(0);
    EXPECT_EQ(iodbg({"mtd", "read", "mtd0", hostFile("loader"), "--header"}).exitCode, 0);
    EXPECT_EQ(modeOf(hostFile("loader")), 0666u & ~mask);
}

TEST_F(OutputFilesTest, FilesWithPasswordsAreTheirOwnersAlone) {
    const std::string file = hostFile("secret");
    storeSmallFile(4);
    for (const Words &command : {Words{"mtd", "read", "mtd4", "--header"},
                                 Words{"mtd", "read", "/dev/../dev/mtd4", "--header"},
                                 Words{"boot", "set", "mode", "1", "--backup"}}) {
        EXPECT_EQ(iodbg(with(command, {file})).exitCode, 0);
        EXPECT_EQ(modeOf(file), 0600u) << ::testing::PrintToString(command);
        ASSERT_EQ(chmod(file.c_str(), 0644), 0);
        EXPECT_EQ(iodbg(with(command, {file, "--force"})).exitCode, 0);
        EXPECT_EQ(modeOf(file), 0600u) << ::testing::PrintToString(command);
        fs::remove(file);
    }
}

TEST_F(OutputFilesTest, AFullFileSystemKeepsTheOldFile) {
    const std::string place = folder("place");
    const std::string old = place + "/old";
    std::ofstream(old) << "kept";
    for (const Save &save : saves()) {
        const FileSizeLimit limit = limitFiles(50);
        const ProcessResult result = iodbg(with(save.words, {old, "--force"}));
        EXPECT_EQ(result.exitCode, 4) << save.words[0];
        EXPECT_NE(result.err.find(old), std::string::npos) << result.err;
    }
    EXPECT_EQ(readFile(old), "kept");
    EXPECT_EQ(filesIn(place), Words{"old"});
    EXPECT_EQ(flash(4).erases[0], 0u) << "no setting without its backup";
}

TEST_F(OutputFilesTest, AnInterruptedReadKeepsTheOldFile) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE}) {
        const std::string place = folder("place" + std::to_string(signal));
        const std::string old = place + "/old";
        std::ofstream(old) << "kept";
        // While this test holds the flash lock, the library waits with its work half begun.
        const bsp::Descriptor lock(
            open(boardFile("/tmp/bspFlashLockFile").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
        ASSERT_EQ(bsp_flash_lock_set(lock.get(), 1), 0);
        Process reader = start({"mtd", "read", "mtd4", old, "--force"});
        ASSERT_TRUE(comesTrue([&] { return filesIn(place).size() == 2; }));
        reader.signal(signal);
        EXPECT_EQ(reader.wait().exitCode, 128 + signal);
        EXPECT_EQ(filesIn(place), Words{"old"});
        EXPECT_EQ(readFile(old), "kept");
    }
}

TEST_F(OutputFilesTest, ATemporaryFileOfADeadProcessIsLeftAlone) {
    const std::string place = folder("place");
    const bsp::Descriptor lock(
        open(boardFile("/tmp/bspFlashLockFile").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    ASSERT_EQ(bsp_flash_lock_set(lock.get(), 1), 0);
    {
        const Process killed = start({"mtd", "read", "mtd4", place + "/copy"});
        ASSERT_TRUE(comesTrue([&] { return filesIn(place).size() == 1; }));
    }
    ASSERT_EQ(bsp_flash_lock_set(lock.get(), 2), 0);
    const std::string left = place + "/" + filesIn(place)[0];
    EXPECT_EQ(modeOf(left), 0600u);
    storeSmallFile(4);
    EXPECT_EQ(iodbg({"mtd", "read", "mtd4", place + "/copy", "--header"}).exitCode, 0);
    EXPECT_EQ(readFile(place + "/copy"), std::string(100, 's'));
    EXPECT_TRUE(fs::exists(left));
}

TEST_F(OutputFilesTest, AFileThatAppearsMeanwhileIsKept) {
    const std::string place = folder("place");
    const bsp::Descriptor lock(
        open(boardFile("/tmp/bspFlashLockFile").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    ASSERT_EQ(bsp_flash_lock_set(lock.get(), 1), 0);
    storeSmallFile(4);
    Process reader = start({"mtd", "read", "mtd4", place + "/copy", "--header"});
    ASSERT_TRUE(comesTrue([&] { return filesIn(place).size() == 1; }));
    std::ofstream(place + "/copy") << "another's";
    ASSERT_EQ(bsp_flash_lock_set(lock.get(), 2), 0);
    const ProcessResult result = reader.wait();
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_NE(result.err.find("cannot write " + place + "/copy: File exists"), std::string::npos);
    EXPECT_EQ(readFile(place + "/copy"), "another's");
    EXPECT_EQ(filesIn(place), Words{"copy"});
}

TEST_F(OutputFilesTest, ALongNameIsANameLikeAnyOther) {
    const std::string file = hostFile(std::string(255, 'n'));
    EXPECT_EQ(iodbg({"eeprom", "dump", "--output", file}).exitCode, 0);
    EXPECT_EQ(readFile(file).size(), 1024u);
}

TEST_F(OutputFilesTest, SmallContentComesFromStandardInput) {
    const std::string before(reinterpret_cast<const char *>(record()), 128);
    std::string image = saves()[2].bytes;
    ASSERT_EQ(iodbg({"eeprom", "write", "0", "--file", "-"}, "hello").exitCode, 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(devices().eeprom.bytes), 5), "hello");
    record()[0] = 0;
    ASSERT_EQ(iodbg({"identity", "set", "record", "--file", "-"}, before).exitCode, 0);
    EXPECT_EQ(std::string(reinterpret_cast<const char *>(record()), 128), before);
    EXPECT_EQ(iodbg({"image", "pack-boot", "-", "-"}, "123456789").out, image);
    const ProcessResult checked = iodbg({"image", "check", "-"}, image);
    EXPECT_EQ(checked.exitCode, 0) << checked.err;
    EXPECT_EQ(checked.out.find("File                      standard input\n"), 0u) << checked.out;
}

TEST_F(OutputFilesTest, ABackupOfTheSettingsGoesRoundThroughPipes) {
    store(4, 0, "main_system=1" + std::string(243, '\0'));
    const std::string backup = iodbg({"boot", "set", "mode", "0", "--backup", "-"}).out;
    ASSERT_EQ(backup.size(), 256u);
    const ProcessResult result = iodbg({"mtd", "write", "mtd4", "-", "--yes"}, backup);
    EXPECT_EQ(result.exitCode, 0) << result.err;
    EXPECT_EQ(result.out, "Device       /dev/mtd4\n"
                          "File         standard input\n"
                          "Size, bytes  256\n"
                          "Dry run      no\n"
                          "Verified     read back, all bytes are the file's\n");
    EXPECT_EQ(stored(4, 0, 256), backup);
}

TEST_F(OutputFilesTest, StandardInputThatIsWrongIsRefused) {
    const struct {
        Words words;
        std::string input;
        int exitCode;
        const char *text;
    } cases[] = {
        {{"eeprom", "write", "0", "--file", "-"},
         std::string(1025, 'x'),
         4,
         "standard input is longer than 1024 bytes; give the right file"},
        {{"eeprom", "write", "0", "--file", "-"}, "", 4, "standard input is empty"},
        {{"identity", "set", "record", "--file", "-"}, "x", 4, "standard input has 1 bytes; a"},
        {{"image", "pack-boot", "-", "-"}, "", 4, "standard input is empty"},
        {{"mtd", "write", "mtd4", "-", "--yes"}, "", 4, "standard input is empty"},
        {{"mtd", "write", "mtd4", "-", "--yes"},
         std::string(262146, 'x'),
         4,
         "standard input is longer than 262145 bytes"},
        {{"mtd", "write", "mtd4", "-", "--yes", "--spool", "/nowhere"},
         "x",
         4,
         "cannot write a spool file for standard input: No such file or directory"},
        {{"mtd", "write", "mtd4", "/dev/null", "--yes", "--spool", "/tmp"},
         "",
         2,
         "--spool is for standard input"},
        {{"mtd", "write", "mtd4", "-", "--yes"},
         std::string(262145, 'x'),
         2,
         "'standard input' has 262145 bytes; /dev/mtd4 holds 262144"},
        {{"mtd", "write", "mtd4", "-"},
         "x",
         2,
         "standard input has the file, so that it cannot "
         "have the answer to a question; say --yes"},
        {{"upgrade", "os", "-", "--bank", "0", "--yes"},
         "x",
         2,
         "'standard input' has 1 bytes; an operating-system image has 512"},
        {{"upgrade", "os", "-", "--bank", "0", "--yes"},
         std::string(512, 'x'),
         2,
         "'standard input' is hardly an image: all bytes of its header block are 0x78"},
        {{"upgrade", "os", "-", "--bank", "0"}, "x", 2, "say --yes"},
        {{"upgrade", "boot", "-", "--yes"}, "x", 2, "'standard input' has 1 bytes"},
        {{"upgrade", "cpld", "-", "--yes"}, "", 4, "standard input is empty"},
    };
    const BoardContent before = content();
    for (const auto &[words, input, exitCode, text] : cases) {
        const ProcessResult result = iodbg(words, input);
        EXPECT_EQ(result.exitCode, exitCode) << ::testing::PrintToString(words);
        EXPECT_NE(result.err.find(text), std::string::npos) << result.err;
        EXPECT_EQ(result.out, "");
    }
    EXPECT_TRUE(content() == before);
}

} // namespace
