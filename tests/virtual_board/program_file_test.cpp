// What is told of a program from its file, and the list of libraries that it gets.

#include "tests/support/process.h"
#include "tests/support/virtual_board_test.h"
#include "virtual_board/programs/preload_list.h"

#include <elf.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <grp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
using vb::Fitness;
using Seam = vb::PreloadList::Seam;

/** A file as linkers write it, of any machine: its header, segments, and what these hold. */
class ElfWriter {
  public:
    explicit ElfWriter(vb::Machine machine) : machine_(machine) {}

    ElfWriter &withLoader(const std::string &path) {
        loader_ = path;
        return *this;
    }
    ElfWriter &withLibrary(uint64_t tag, const std::string &name) {
        libraries_.emplace_back(tag, name);
        return *this;
    }

    std::string content() const {
        const size_t word = isWide() ? 8 : 4;
        const size_t headerSize = isWide() ? 64 : 52;
        const size_t segmentSize = isWide() ? 56 : 32;
        const uint64_t count = (loader_.empty() ? 0u : 1u) + (libraries_.empty() ? 0u : 2u);
        const uint64_t loaderAt = headerSize + count * segmentSize;
        const uint64_t namesAt = loaderAt + loader_.size() + 1;
        std::string names(1, '\0');
        std::string entries = number(DT_STRTAB, word) + number(kAddress + namesAt, word);
        for (const auto &[tag, name] : libraries_) {
            entries += number(tag, word) + number(names.size(), word);
            names += name + '\0';
        }
        entries += number(DT_NULL, word) + number(0, word);
        const uint64_t entriesAt = namesAt + names.size();

        std::string file = std::string(ELFMAG) + static_cast<char>(machine_.wordSize) +
                           static_cast<char>(machine_.byteOrder) + '\1';
        file.resize(EI_NIDENT);
        file += number(ET_DYN, 2) + number(machine_.number, 2) + number(EV_CURRENT, 4) +
                number(0, word) + number(headerSize, word) + number(0, word) + number(0, 4) +
                number(headerSize, 2) + number(segmentSize, 2) + number(count, 2) + number(0, 6);
        if (!loader_.empty())
            file += segment(PT_INTERP, loaderAt, loader_.size() + 1);
        if (!libraries_.empty())
            file += segment(PT_LOAD, 0, entriesAt + entries.size()) +
                    segment(PT_DYNAMIC, entriesAt, entries.size());
        return file + loader_ + '\0' + names + entries;
    }

  private:
    static constexpr uint64_t kAddress = 0x400000;

    bool isWide() const { return machine_.wordSize == ELFCLASS64; }

    std::string number(uint64_t value, size_t length) const {
        std::string bytes;
        for (size_t i = 0; i < length; ++i) {
            const size_t place = machine_.byteOrder == ELFDATA2MSB ? length - 1 - i : i;
            bytes += place < sizeof(value) ? static_cast<char>(value >> (8 * place)) : '\0';
        }
        return bytes;
    }

    std::string segment(uint32_t type, uint64_t offset, uint64_t size) const {
        const size_t word = isWide() ? 8 : 4;
        std::string text = number(type, 4);
        text += isWide() ? number(PF_R, 4) : "";
        text += number(offset, word) + number(kAddress + offset, word) +
                number(kAddress + offset, word) + number(size, word) + number(size, word);
        text += isWide() ? "" : number(PF_R, 4);
        return text + number(1, word);
    }

    vb::Machine machine_;
    std::string loader_;
    std::vector<std::pair<uint64_t, std::string>> libraries_;
};

constexpr vb::Machine kPc = {ELFCLASS64, ELFDATA2LSB, EM_X86_64};
constexpr vb::Machine kOldPc = {ELFCLASS32, ELFDATA2LSB, EM_386};
constexpr vb::Machine kMips = {ELFCLASS32, ELFDATA2MSB, EM_MIPS};
constexpr vb::Machine kMainframe = {ELFCLASS64, ELFDATA2MSB, EM_S390};
constexpr vb::Machine kMachines[] = {kPc, kOldPc, kMips, kMainframe};

class ProgramFileTest : public ::testing::Test {
  protected:
    std::string path(const std::string &name) const { return folder_.path() + "/" + name; }

    std::string put(const std::string &name, const std::string &content) const {
        fs::create_directories(fs::path(path(name)).parent_path());
        std::ofstream(path(name)) << content;
        fs::permissions(path(name), fs::perms::owner_all | fs::perms::group_exec |
                                        fs::perms::others_read | fs::perms::others_exec);
        return path(name);
    }
    std::string putProgram(const std::string &name, vb::Machine machine = kPc,
                           const std::string &library = "libc.so.6") const {
        return put(name, ElfWriter(machine)
                             .withLoader("/lib64/ld-linux-x86-64.so.2")
                             .withLibrary(DT_NEEDED, library)
                             .content());
    }
    std::string putSeam(const std::string &name, vb::Machine machine) const {
        return put(name, ElfWriter(machine).withLibrary(DT_SONAME, "libvboard.so").content());
    }

    static vb::ProgramFile examine(const std::string &program) {
        return vb::examineProgram(AT_FDCWD, program.c_str());
    }
    static Fitness fitness(const std::string &program) { return examine(program).fitness; }

    static std::string listFor(const vb::ProgramFile &program, const std::string &library,
                               const char *inherited = nullptr, Seam preferred = Seam::Inherited) {
        const vb::PreloadList list(program, library.c_str(), inherited, preferred);
        if (!list.hasSeam())
            return "(none)";
        std::string text(list.size(), '#');
        const char *end = list.write(text.data());
        return std::string(text.c_str(), end);
    }

    /** What is told in a process of its own, which changes itself at first. */
    static Fitness fitnessAfter(const std::function<bool()> &change, const std::string &program) {
        const pid_t child = fork();
        if (child == 0)
            _exit(change() ? static_cast<int>(fitness(program)) : 100);
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_NE(WEXITSTATUS(status), 100);
        return static_cast<Fitness>(WEXITSTATUS(status));
    }

  private:
    TemporaryFolder folder_;
};

TEST_F(ProgramFileTest, LinkedProgramsOfAllMachinesAreKnown) {
    for (const vb::Machine &machine : kMachines) {
        const vb::ProgramFile program = examine(putProgram("program", machine));
        EXPECT_EQ(program.fitness, Fitness::Fits) << machine.number;
        EXPECT_EQ(program.machine, machine);
        EXPECT_STREQ(program.interpreter, "");
        EXPECT_STREQ(program.runtime, "");
        // It is the machine's that counts, and all of it.
        EXPECT_TRUE(vb::isOfMachine(path("program").c_str(), machine));
        for (const vb::Machine &other : kMachines)
            EXPECT_EQ(vb::isOfMachine(path("program").c_str(), other), other == machine);
    }
    EXPECT_EQ(fitness("/proc/self/exe"), Fitness::Fits);
}

TEST_F(ProgramFileTest, ProgramsThatNoSeamIsLoadedIntoAreKnown) {
    for (const vb::Machine &machine : kMachines) {
        EXPECT_EQ(fitness(put("static", ElfWriter(machine).content())), Fitness::Static);
        const std::string pie = ElfWriter(machine).withLibrary(DT_SONAME, "x").content();
        EXPECT_EQ(fitness(put("static-pie", pie)), Fitness::Static);
        for (const char *loader : {"/lib/ld-musl-x86_64.so.1", "/system/bin/linker64",
                                   "/lib/ld-uClibc.so.0", "ld-linux/other"})
            EXPECT_EQ(fitness(put("other", ElfWriter(machine).withLoader(loader).content())),
                      Fitness::OtherLoader)
                << loader;
        for (const char *loader : {"/lib/ld.so.1", "/lib64/ld64.so.2", "/x/ld-linux-armhf.so.3"})
            EXPECT_EQ(fitness(put("gnu", ElfWriter(machine).withLoader(loader).content())),
                      Fitness::Fits)
                << loader;
        const std::string user =
            ElfWriter(machine).withLibrary(DT_NEEDED, "ld-linux.so.2").content();
        EXPECT_EQ(fitness(put("user", user)), Fitness::Static);
        // The loader itself, started as a program.
        const std::string loader =
            ElfWriter(machine).withLibrary(DT_SONAME, "ld-linux.so.2").content();
        EXPECT_EQ(fitness(put("loader", loader)), Fitness::Fits);
    }
}

TEST_F(ProgramFileTest, TheSanitizersLibraryIsTold) {
    for (const vb::Machine &machine : kMachines) {
        const std::string program = ElfWriter(machine)
                                        .withLoader("/lib/ld-linux.so.2")
                                        .withLibrary(DT_NEEDED, "libasan.so.8")
                                        .withLibrary(DT_NEEDED, "libc.so.6")
                                        .content();
        EXPECT_STREQ(examine(put("program", program)).runtime, "libasan.so.8");
    }
    EXPECT_STREQ(examine(putProgram("tsan", kPc, "libtsan.so.2")).runtime, "libtsan.so.2");
    EXPECT_STREQ(examine(putProgram("clang", kPc, "libclang_rt.asan-x86_64.so")).runtime,
                 "libclang_rt.asan-x86_64.so");
    const std::string itself = ElfWriter(kPc).withLibrary(DT_SONAME, "libasan.so.8").content();
    EXPECT_STREQ(examine(put("itself", itself)).runtime, "");
    EXPECT_STREQ(examine(putProgram("long", kPc, "libasan.so" + std::string(300, '8'))).runtime,
                 "");
}

TEST_F(ProgramFileTest, ScriptsAreTheirInterpreters) {
    const std::string program = putProgram("program");
    const std::string bare = put("bare", ElfWriter(kPc).content());
    for (const std::string &line :
         {"#!" + program, "#! \t" + program + " -x y\n", "#!" + program + "\n#!" + bare}) {
        const vb::ProgramFile file = examine(put("script", line));
        EXPECT_EQ(file.fitness, Fitness::Fits) << line;
        EXPECT_EQ(file.interpreter, program) << line;
    }
    const vb::ProgramFile file = examine(put("script", "#!" + bare + "\n"));
    EXPECT_EQ(file.fitness, Fitness::Static);
    EXPECT_EQ(file.interpreter, bare);
    // Interpreters may be scripts, as deep as the kernel follows them.
    std::string last = bare;
    for (int depth = 1; depth <= 5; ++depth) {
        last = put("script" + std::to_string(depth), "#!" + last + "\n");
        EXPECT_EQ(fitness(last), Fitness::Static) << depth;
        EXPECT_EQ(examine(last).interpreter, bare);
    }
    EXPECT_EQ(fitness(put("script6", "#!" + last + "\n")), Fitness::NotStarted);
    // Others are the shell's.
    for (const char *content : {"echo", "", "#!", "#!\n", "\177ELF"})
        EXPECT_STREQ(examine(put("text", content)).interpreter, "/bin/sh") << content;
}

TEST_F(ProgramFileTest, TheInterpretersOfALongFirstLineIsTheKernels) {
    const std::string program = putProgram("program");
    const std::string longest(256 - 2 - 1, 'x');
    EXPECT_EQ(examine(put("script", "#!" + longest + "\n")).fitness, Fitness::NotStarted);
    EXPECT_EQ(examine(path("script")).interpreter, longest);
    EXPECT_STREQ(examine(put("script", "#!" + longest + "x\n")).interpreter, "/bin/sh");
    const std::string arguments = " " + std::string(1000, 'y') + "\n";
    EXPECT_EQ(examine(put("script", "#!" + program + arguments)).interpreter, program);
}

TEST_F(ProgramFileTest, WhatTheKernelDoesNotStartIsNotJudged) {
    EXPECT_EQ(fitness(path("none")), Fitness::NotStarted);
    EXPECT_EQ(fitness(path("")), Fitness::NotStarted);
    EXPECT_EQ(fitness(put("script", "#!/no/such/interpreter\n")), Fitness::NotStarted);
    const std::string program = put("program", ElfWriter(kPc).content());
    EXPECT_EQ(fitness(program), Fitness::Static);
    ASSERT_EQ(chmod(program.c_str(), 0600), 0);
    EXPECT_EQ(fitness(program), Fitness::NotStarted);
    ASSERT_EQ(mkfifo(path("pipe").c_str(), 0700), 0);
    EXPECT_EQ(fitness(path("pipe")), Fitness::NotStarted);
}

TEST_F(ProgramFileTest, EveryCutAndEveryChangeOfAFileIsSurvived) {
    for (const vb::Machine &machine : {kPc, kMips}) {
        const std::string whole = ElfWriter(machine)
                                      .withLoader("/lib/ld-linux.so.2")
                                      .withLibrary(DT_NEEDED, "libasan.so.8")
                                      .content();
        for (size_t length = 0; length < whole.size(); ++length) {
            const vb::ProgramFile program = examine(put("cut", whole.substr(0, length)));
            EXPECT_LT(strnlen(program.runtime, sizeof(program.runtime)), sizeof(program.runtime));
        }
        for (size_t i = EI_NIDENT; i < whole.size(); ++i) {
            std::string changed = whole;
            changed[i] = static_cast<char>(0xFF);
            const vb::ProgramFile program = examine(put("changed", changed));
            EXPECT_LT(strnlen(program.runtime, sizeof(program.runtime)), sizeof(program.runtime));
        }
    }
}

TEST_F(ProgramFileTest, AFileIsFoundByFolderAndByDescriptor) {
    put("bare", ElfWriter(kPc).content());
    const int folder = open(path("").c_str(), O_PATH | O_CLOEXEC);
    EXPECT_EQ(vb::examineProgram(folder, "bare").fitness, Fitness::Static);
    for (const int flags : {O_PATH, O_RDONLY}) {
        const int file = open(path("bare").c_str(), flags | O_CLOEXEC);
        EXPECT_EQ(vb::examineProgram(file, "", AT_EMPTY_PATH).fitness, Fitness::Static);
        EXPECT_EQ(vb::examineProgram(file, "").fitness, Fitness::NotStarted);
        close(file);
    }
    fs::create_symlink("bare", path("link"));
    EXPECT_EQ(vb::examineProgram(folder, "link").fitness, Fitness::Static);
    EXPECT_EQ(vb::examineProgram(folder, "link", AT_SYMLINK_NOFOLLOW).fitness, Fitness::NotStarted);
    close(folder);
}

// Rights. These tests have to be root, who alone can give files away.

class ProgramRightsTest : public ProgramFileTest {
  protected:
    static constexpr uid_t kNobody = 65534;

    void SetUp() override {
        if (geteuid() != 0)
            GTEST_SKIP() << "only root can give files away";
        ASSERT_EQ(chmod(path("").c_str(), 0755), 0);
    }

    /** A program with somebody's ids in its mode. */
    std::string putWithIds(uid_t user, gid_t group, mode_t mode) const {
        const std::string program = putProgram("program");
        EXPECT_EQ(chown(program.c_str(), user, group), 0);
        EXPECT_EQ(chmod(program.c_str(), mode), 0);
        return program;
    }
    static bool becomeNobody() {
        return setgroups(0, nullptr) == 0 && setresgid(kNobody, kNobody, kNobody) == 0 &&
               setresuid(kNobody, kNobody, kNobody) == 0;
    }
};

TEST_F(ProgramRightsTest, ThoseOfAnotherUserOrGroupAreTold) {
    EXPECT_EQ(fitness(putWithIds(kNobody, kNobody, 0755)), Fitness::Fits);
    EXPECT_EQ(fitness(putWithIds(kNobody, 0, 04755)), Fitness::OtherIds);
    EXPECT_EQ(fitness(putWithIds(0, kNobody, 02755)), Fitness::OtherIds);
    EXPECT_EQ(fitness(putWithIds(0, kNobody, 02745)), Fitness::Fits) << "a mark of mandatory locks";
    EXPECT_EQ(fitness(putWithIds(0, 0, 06755)), Fitness::Fits) << "they are root's already";
    EXPECT_EQ(fitnessAfter(becomeNobody, putWithIds(0, 0, 04755)), Fitness::OtherIds);
    EXPECT_EQ(fitnessAfter(becomeNobody, putWithIds(kNobody, kNobody, 06755)), Fitness::Fits);
    const std::string script = put("script", "#!" + putWithIds(kNobody, 0, 04755));
    EXPECT_EQ(fitness(script), Fitness::OtherIds);
}

TEST_F(ProgramRightsTest, AProcessThatGaveUpNewOnesGetsNone) {
    const auto giveUp = [] { return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0; };
    EXPECT_EQ(fitnessAfter(giveUp, putWithIds(kNobody, 0, 04755)), Fitness::Fits);
}

TEST_F(ProgramRightsTest, AProcessOfTwoUsersIsTold) {
    const auto lend = [] { return seteuid(kNobody) == 0; };
    EXPECT_EQ(fitnessAfter(lend, putWithIds(0, 0, 0755)), Fitness::OtherIds);
    const auto lendGroup = [] { return setegid(kNobody) == 0; };
    EXPECT_EQ(fitnessAfter(lendGroup, putWithIds(0, 0, 0755)), Fitness::OtherIds);
}

TEST_F(ProgramRightsTest, CapabilitiesAreToldToAllButRoot) {
    // CAP_NET_RAW, permitted and effective, as setcap writes it.
    constexpr unsigned char kNetRaw[20] = {0x01, 0, 0, 0x02, 0, 0x20};
    const std::string program = putProgram("program");
    if (setxattr(program.c_str(), "security.capability", kNetRaw, sizeof(kNetRaw), 0) != 0)
        GTEST_SKIP() << "files have no capabilities here";
    EXPECT_EQ(fitness(program), Fitness::Fits);
    EXPECT_EQ(fitnessAfter(becomeNobody, program), Fitness::Capabilities);
}

TEST_F(ProgramRightsTest, AProgramThatCannotBeReadIsNotTrusted) {
    const std::string program = putProgram("program");
    ASSERT_EQ(chmod(program.c_str(), 0711), 0);
    EXPECT_EQ(fitnessAfter(becomeNobody, program), Fitness::Unreadable);
    ASSERT_EQ(chmod(program.c_str(), 0700), 0);
    EXPECT_EQ(fitnessAfter(becomeNobody, program), Fitness::NotStarted);
}

// Lists

TEST_F(ProgramFileTest, ASeamOfTheProgramsMachineIsFoundBesideOurs) {
    const std::string ours = putSeam("lib/x86_64-linux-gnu/libvboard.so", kPc);
    const std::string folder = path("lib/x86_64-linux-gnu/");
    const vb::ProgramFile pc = examine(putProgram("pc", kPc));
    const vb::ProgramFile oldPc = examine(putProgram("old-pc", kOldPc));
    const vb::ProgramFile mips = examine(putProgram("mips", kMips));
    EXPECT_EQ(listFor(pc, ours), ours);
    EXPECT_EQ(listFor(oldPc, ours), "(none)");
    putSeam("lib/i386-linux-gnu/libvboard.so", kOldPc);
    EXPECT_EQ(listFor(oldPc, ours), folder + "../i386-linux-gnu/libvboard.so");
    putSeam("lib/x86_64-linux-gnu/mips-linux-gnu/libvboard.so", kMips);
    EXPECT_EQ(listFor(mips, ours), folder + "mips-linux-gnu/libvboard.so");
    // From the folder of another machine to the one above, where the host's own may be.
    const std::string nested = path("lib/x86_64-linux-gnu/mips-linux-gnu/libvboard.so");
    EXPECT_EQ(listFor(pc, nested), folder + "mips-linux-gnu/../libvboard.so");
    // What is there has to be what its place says.
    putSeam("lib/i386-linux-gnu/libvboard.so", kMips);
    EXPECT_EQ(listFor(oldPc, ours), "(none)");
}

TEST_F(ProgramFileTest, TheListKeepsWhatIsInheritedInFront) {
    const std::string ours = putSeam("libvboard.so", kPc);
    const std::string others = putSeam("i386-linux-gnu/libvboard.so", kOldPc);
    const vb::ProgramFile pc = examine(putProgram("pc", kPc));
    const vb::ProgramFile oldPc = examine(putProgram("old-pc", kOldPc));
    EXPECT_EQ(listFor(pc, ours, ""), ours);
    EXPECT_EQ(listFor(pc, ours, "a.so:/b/b.so c.so"), "a.so:/b/b.so:c.so:" + ours);
    EXPECT_EQ(listFor(pc, ours, (ours + ":a.so").c_str()), "a.so:" + ours);
    EXPECT_EQ(listFor(oldPc, ours, ("a.so:" + ours).c_str()), "a.so:" + others);
    EXPECT_EQ(listFor(pc, others, ("a.so:" + others).c_str()),
              "a.so:" + path("i386-linux-gnu/../libvboard.so"));
    EXPECT_EQ(listFor(pc, ours, "mylibvboard.so:libvboard.so:/x/libvboard.so"),
              "mylibvboard.so:" + ours);
    const fs::path before = fs::current_path();
    fs::current_path(fs::path(ours).parent_path()); // where the loader does not look for names
    EXPECT_EQ(listFor(pc, ours, "libvboard.so"), ours);
    EXPECT_EQ(listFor(pc, ours, "./libvboard.so"), "./libvboard.so");
    fs::current_path(before);
    const std::string fitting = putSeam("other/libvboard.so", kPc);
    EXPECT_EQ(listFor(pc, ours, fitting.c_str()), fitting);
    EXPECT_EQ(listFor(pc, ours, fitting.c_str(), Seam::Own), ours);
    const vb::ProgramFile sanitized = examine(putProgram("sanitized", kPc, "libasan.so.8"));
    EXPECT_EQ(listFor(sanitized, ours, "a.so"), "a.so:libasan.so.8:" + ours);
}

} // namespace
