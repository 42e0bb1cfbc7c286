// Programs that programs of a board start: on the board, or not at all. These tests are not for
// emulated builds, whose programs cannot execute each other.

#include "tests/virtual_board/command_test.h"
#include "virtual_board/programs/program_file.h"

#include <cstddef>
#include <elf.h>
#include <fcntl.h>
#include <functional>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr uid_t kNobody = 65534;
constexpr char kCommandLine[] = "console=ttyS0,115200 bootver=1.2.3 root=/dev/mtdblock12\n";

class ExecTest : public CommandTest {
  protected:
    ProcessResult onBoard(const Words &program, const Environment &environment = {},
                          const Words &options = {}) const {
        Words words = {"run"};
        words.insert(words.end(), options.begin(), options.end());
        words.insert(words.end(), {board(), "--"});
        words.insert(words.end(), program.begin(), program.end());
        return answer(words, environment);
    }

    /** Starts a program in one of the ways that there are. */
    ProcessResult start(const std::string &way, const Words &program) const {
        Words words = {builtProgram("start_programs"), way};
        words.insert(words.end(), program.begin(), program.end());
        return onBoard(words);
    }

    std::string makeFile(const std::string &name, const std::string &content) const {
        std::ofstream(path(name)) << content;
        fs::permissions(path(name), fs::perms::owner_all);
        return path(name);
    }

    static std::string lineOf(const std::string &program, const std::string &reason) {
        return "vboard: " + program + " " + reason +
               ": it would run on the host, not on the board; 'vboard run --allow-host' lets it\n";
    }
};

const char *const kWays[] = {"execve",       "execve-empty", "execve-null",   "execve-replaced",
                             "execve-twice", "execv",        "execvp",        "execvpe",
                             "execl",        "execle",       "execlp",        "fexecve",
                             "fexecve-path", "execveat",     "execveat-file", "posix_spawn",
                             "posix_spawnp", "vfork",        "clearenv-execv"};

TEST_F(ExecTest, EveryWayOfStartingAProgramLeadsToTheBoard) {
    for (const char *way : kWays) {
        const ProcessResult result = start(way, {"/bin/cat", "/proc/cmdline"});
        EXPECT_EQ(result.out, kCommandLine) << way;
        EXPECT_EQ(result.err, "") << way;
        EXPECT_EQ(result.exitCode, 0) << way;
    }
    for (const char *way : {"system", "popen", "clearenv-system", "clearenv-popen"}) {
        EXPECT_EQ(start(way, {"/bin/cat < /proc/cmdline; exit 7"}).out, kCommandLine) << way;
        EXPECT_EQ(start(way, {"/bin/cat < /proc/cmdline; exit 7"}).exitCode, 7) << way;
    }
    EXPECT_EQ(onBoard({"env", "-i", "/bin/cat", "/proc/cmdline"}).out, kCommandLine);
    EXPECT_EQ(onBoard({"env", "-u", "VBOARD_DIR", "sh", "-c", "cat /proc/cmdline"}).out,
              kCommandLine);
}

TEST_F(ExecTest, EveryWayOfStartingAProgramRefusesOneThatWouldBeOnTheHost) {
    const std::string program = builtProgram("static_program");
    for (const char *way : kWays) {
        const ProcessResult result = start(way, {program});
        const std::string way_ = way;
        const bool isNameless = way_.starts_with("fexecve") || way_ == "execveat-file";
        const std::string name = isNameless           ? "an open file"
                                 : way_ == "execveat" ? program.substr(1)
                                                      : program;
        EXPECT_EQ(result.out, "ENOEXEC\n") << way;
        EXPECT_EQ(result.err, lineOf(name, "is statically linked")) << way;
    }
    for (const char *way : {"system", "popen"})
        EXPECT_EQ(start(way, {program}).exitCode, 126) << way;
}

TEST_F(ExecTest, RunRefusesWhatWouldBeOnTheHost) {
    for (const char *name : {"static_program", "static_pie_program"}) {
        const std::string program = builtProgram(name);
        expectFailure(125, program + " is statically linked", {"run", board(), "--", program});
    }
    const std::string script =
        makeFile("script", "#! " + builtProgram("static_program") + " word\n");
    expectFailure(125,
                  script + " needs " + builtProgram("static_program") +
                      ", which is statically linked: it would run on the host, not on the board",
                  {"run", board(), "--", script});
    // Found by its name, too.
    const ProcessResult result = onBoard({"static_program"}, {"PATH=" + builtProgram("")});
    EXPECT_EQ(result.exitCode, 125);
    EXPECT_EQ(result.err, lineOf("static_program", "is statically linked"));
}

TEST_F(ExecTest, AScriptForSuchAProgramIsNotTheShells) {
    const std::string script =
        makeFile("script", "#!" + builtProgram("static_program") + "\necho run by a shell\n");
    const std::string line = lineOf(script + " needs " + builtProgram("static_program") + ", which",
                                    "is statically linked");
    for (const char *way : {"execve", "execvp", "posix_spawn", "posix_spawnp", "vfork"}) {
        EXPECT_EQ(start(way, {script}).out, "EACCES\n") << way;
        EXPECT_EQ(start(way, {script}).err, line) << way;
    }
    for (const char *shell : {"sh", "bash"}) {
        const ProcessResult result = onBoard({shell, "-c", script + "; exit $?"});
        EXPECT_EQ(result.out, "") << shell;
        EXPECT_EQ(result.exitCode, 126) << shell;
    }
}

TEST_F(ExecTest, AProgramOfAMachineWithoutASeamIsRefused) {
    const std::string program = path("program");
    fs::copy_file("/bin/true", program);
    std::fstream file(program, std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(offsetof(Elf64_Ehdr, e_machine)).write("\xF0\xF0", 2);
    file.close();
    const std::string reason = "is for a machine of which no libvboard.so is beside this one";
    expectFailure(125, program + " " + reason, {"run", board(), "--", program});
    const ProcessResult result = start("execve", {program});
    EXPECT_EQ(result.out, "ENOEXEC\n");
    EXPECT_EQ(result.err, lineOf(program, reason));
}

TEST_F(ExecTest, RunRefusesWhatIsStartedWithOtherRights) {
    if (geteuid() != 0)
        GTEST_SKIP() << "only root can give files away";
    const std::string program = path("program");
    fs::copy_file("/bin/true", program);
    EXPECT_EQ(onBoard({program}).exitCode, 0);
    ASSERT_EQ(chown(program.c_str(), kNobody, 0), 0);
    ASSERT_EQ(chmod(program.c_str(), 04755), 0);
    expectFailure(125, program + " is started with other rights", {"run", board(), "--", program});
    EXPECT_EQ(onBoard({program}, {}, {"--allow-host"}).exitCode, 0);
}

/** What is thought of a program's rights, beside what the kernel does with them. */
class ProgramRightsAtWorkTest : public ExecTest {
  protected:
    void SetUp() override {
        if (geteuid() != 0)
            GTEST_SKIP() << "only root can give files away";
        ASSERT_EQ(chmod(path("").c_str(), 0755), 0);
        fs::copy_file(builtProgram("start_programs"), program());
    }

    std::string program() const { return path("program"); }

    /** Whether the loader is careful with the program, after a change of the process. */
    bool isCareful(const std::function<bool()> &change) const {
        constexpr int kDiffers = 2;
        constexpr int kNotTried = 4;
        const pid_t child = fork();
        if (child == 0) {
            if (!change())
                _exit(kNotTried);
            const vb::Fitness fitness = vb::examineProgram(AT_FDCWD, program().c_str()).fitness;
            if (fitness == vb::Fitness::Unreadable || fitness == vb::Fitness::NotStarted)
                _exit(0);
            const char *thought = fitness == vb::Fitness::Fits ? "0" : "1";
            execl(program().c_str(), "program", "compare", thought, nullptr);
            _exit(kDiffers);
        }
        int status = 0;
        EXPECT_EQ(waitpid(child, &status, 0), child);
        EXPECT_EQ(WEXITSTATUS(status) & (kDiffers | kNotTried), 0);
        return WEXITSTATUS(status) == 1;
    }

    static bool becomeNobody() { return setgid(kNobody) == 0 && setuid(kNobody) == 0; }
};

TEST_F(ProgramRightsAtWorkTest, TheKernelAgreesOnIds) {
    const std::function<bool()> changes[] = {
        [] { return true; },
        [] { return setegid(kNobody) == 0; },
        [] { return seteuid(kNobody) == 0; },
        becomeNobody,
        [] { return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0; },
    };
    int careful = 0;
    for (const uid_t user : {uid_t{0}, kNobody}) {
        for (const mode_t mode : {00755u, 04755u, 02755u, 02745u, 06755u, 00711u}) {
            ASSERT_EQ(chown(program().c_str(), user, user), 0);
            ASSERT_EQ(chmod(program().c_str(), mode), 0);
            for (const auto &change : changes) {
                SCOPED_TRACE(::testing::Message()
                             << user << ' ' << std::oct << mode << ' ' << &change - changes);
                careful += isCareful(change) ? 1 : 0;
            }
        }
    }
    EXPECT_GT(careful, 10);
}

TEST_F(ProgramRightsAtWorkTest, TheKernelAgreesOnCapabilities) {
    // CAP_NET_RAW, permitted and effective, as setcap writes it.
    constexpr unsigned char kNetRaw[20] = {0x01, 0, 0, 0x02, 0, 0x20};
    if (setxattr(program().c_str(), "security.capability", kNetRaw, sizeof(kNetRaw), 0) != 0)
        GTEST_SKIP() << "files have no capabilities here";
    EXPECT_TRUE(isCareful(becomeNobody));
    EXPECT_FALSE(isCareful([] { return true; }));
}

TEST_F(ProgramRightsAtWorkTest, TheKernelAgreesWhereFilesGiveNoRights) {
    ASSERT_EQ(chown(program().c_str(), kNobody, kNobody), 0);
    ASSERT_EQ(chmod(program().c_str(), 06755), 0);
    EXPECT_TRUE(isCareful([] { return true; }));
    const std::string folder = path("");
    const auto forbid = [&] {
        constexpr unsigned long kBind = MS_BIND;
        return unshare(CLONE_NEWNS) == 0 &&
               mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
               mount(folder.c_str(), folder.c_str(), nullptr, kBind, nullptr) == 0 &&
               mount(nullptr, folder.c_str(), nullptr, kBind | MS_REMOUNT | MS_NOSUID, nullptr) ==
                   0;
    };
    const pid_t child = fork();
    if (child == 0)
        _exit(forbid() ? 0 : 1);
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    if (status != 0)
        GTEST_SKIP() << "nothing can be mounted here";
    EXPECT_FALSE(isCareful(forbid));
}

TEST_F(ExecTest, ThoseWhoMeanItMayStartThem) {
    const std::string program = builtProgram("static_program");
    EXPECT_EQ(onBoard({program}, {}, {"--allow-host"}).out, "on the host\n");
    EXPECT_EQ(onBoard({"env", "-i", "/bin/sh", "-c", program}, {}, {"--allow-host"}).out,
              "on the host\n");
    EXPECT_EQ(
        onBoard({"env", "-u", "VBOARD_ALLOW_HOST", "/bin/sh", "-c", program}, {}, {"--allow-host"})
            .out,
        "on the host\n");
    EXPECT_EQ(
        onBoard({builtProgram("start_programs"), "execve-empty", program}, {}, {"--allow-host"})
            .out,
        "on the host\n");
    EXPECT_EQ(onBoard({"sh", "-c", "VBOARD_ALLOW_HOST=1 " + program}).out, "on the host\n");
    EXPECT_EQ(onBoard({"cat", "/proc/cmdline"}, {}, {"--allow-host"}).out, kCommandLine);
    EXPECT_EQ(onBoard({program}, {"VBOARD_ALLOW_HOST="}).exitCode, 125);
}

TEST_F(ExecTest, AToolThatWatchesProgramsOfTheBoardIsStarted) {
    const std::string tool = builtProgram("static_program");
    EXPECT_EQ(onBoard({"env", "VALGRIND_LAUNCHER=/usr/bin/valgrind", tool}).out, "on the host\n");
    EXPECT_EQ(onBoard({"env", "VALGRIND_LAUNCHER=", tool}).exitCode, 126);
}

TEST_F(ExecTest, WhatTheKernelRefusesHasItsErrno) {
    const std::string text = makeFile("text", "echo \"$@\"\n");
    const std::string missing = makeFile("missing", "#!/no/such/interpreter\n");
    const std::string plain = makeFile("plain", "#!/bin/sh\n");
    fs::permissions(plain, fs::perms::owner_read);
    const std::map<std::string, std::string> errors = {
        {path("none"), "ENOENT"},
        {path(""), "EACCES"},
        {plain, "EACCES"},
        {missing, "ENOENT"},
        {text + "/x", "ENOTDIR"},
        {text, "ENOEXEC"},
        {"/" + std::string(5000, 'x'), "ENAMETOOLONG"}};
    for (const auto &[program, error] : errors) {
        for (const char *way : {"execve-empty", "posix_spawn", "vfork"}) {
            const ProcessResult result = start(way, {program});
            EXPECT_EQ(result.out, error + "\n") << way << ' ' << program;
            EXPECT_EQ(result.err, "") << way << ' ' << program;
        }
    }
    EXPECT_EQ(start("execvp", {"no-such-program"}).out, "ENOENT\n");
    EXPECT_EQ(start("posix_spawnp", {"no-such-program"}).out, "ENOENT\n");
    EXPECT_EQ(start("execvp", {""}).out, "ENOENT\n");
}

TEST_F(ExecTest, FilesThatTheKernelDoesNotKnowAreTheShells) {
    makeFile("text", "echo \"$@\"; cat /proc/cmdline\n");
    for (const char *way : {"execvp", "execvpe", "execlp"})
        EXPECT_EQ(start(way, {path("text"), "a", "b c"}).out, std::string("a b c\n") + kCommandLine)
            << way;
    // Behind folders where the name stands for nothing that can be started.
    fs::create_directories(path("1/text"));
    fs::create_directories(path("2"));
    makeFile("2/text", "");
    fs::permissions(path("2/text"), fs::perms::owner_read);
    const ProcessResult result =
        onBoard({builtProgram("start_programs"), "execlp", "text", "a"},
                {"PATH=" + path("1") + ":" + path("2") + ":" + path("") + ":/bin:/usr/bin"});
    EXPECT_EQ(result.out, std::string("a\n") + kCommandLine) << result.err;
}

TEST_F(ExecTest, AScriptOfTheBoardIsStartedFromItsFolder) {
    const std::string script = board() + "/root/tmp/bsp/x.sh";
    std::ofstream(script) << "#!/bin/sh\ncat /proc/cmdline\n";
    fs::permissions(script, fs::perms::owner_all);
    for (const char *way : {"execve", "posix_spawn", "execvp", "posix_spawnp", "vfork"})
        EXPECT_EQ(start(way, {"/tmp/bsp/x.sh"}).out, kCommandLine) << way;
    EXPECT_EQ(onBoard({"sh", "-c", "/tmp/bsp/x.sh"}).out, kCommandLine);
    EXPECT_EQ(
        onBoard({builtProgram("start_programs"), "execlp", "x.sh"}, {"PATH=/tmp/bsp:/bin:/usr/bin"})
            .out,
        kCommandLine);
}

TEST_F(ExecTest, AProgramsOwnLibrariesStayInTheListAndOnlyOneSeam) {
    const std::string list = "echo \"$LD_PRELOAD\"";
    const std::string library = BSP_TEST_HOST_SEAM;
    EXPECT_EQ(onBoard({"sh", "-c", list}).out, library + "\n");
    // A sanitized vboard wants to have nothing before its own sanitizer.
    EXPECT_EQ(onBoard({"sh", "-c", list},
                      {"LD_PRELOAD=libdl.so.2", "ASAN_OPTIONS=verify_asan_link_order=0"})
                  .out,
              "libdl.so.2:" + library + "\n");
    EXPECT_EQ(start("execve-replaced", {"/bin/sh", "-c", list}).out,
              "libdl.so.2:" + library + "\n");
    EXPECT_EQ(onBoard({builtProgram("vboard"), "run", board(), "--", "sh", "-c", list}).out,
              library + "\n");
    // Another seam that fits is somebody's choice; a file of that name that does not fit is not.
    fs::create_directory(path("other"));
    fs::copy_file(library, path("other/libvboard.so"));
    EXPECT_EQ(onBoard({"env", "LD_PRELOAD=" + path("other/libvboard.so"), "sh", "-c", list}).out,
              path("other/libvboard.so") + "\n");
    std::ofstream(path("other/libvboard.so")) << "no library";
    EXPECT_EQ(onBoard({"env", "LD_PRELOAD=" + path("other/libvboard.so"), "sh", "-c", list}).out,
              library + "\n");
}

TEST_F(ExecTest, ASanitizedProgramRunsAsItIs) {
    const std::string program = builtProgram("use_memory");
    for (const Words &words :
         {Words{program}, Words{"env", "-i", program}, Words{"sh", "-c", program}}) {
        const ProcessResult result = onBoard(words);
        EXPECT_EQ(result.out, "on the board\n") << words[0];
        EXPECT_EQ(result.err, "") << words[0];
        EXPECT_EQ(result.exitCode, 0) << words[0];
    }
    for (const char *mistake : {"overflow", "read"}) {
        const ProcessResult result = onBoard({program, mistake});
        EXPECT_NE(result.exitCode, 0) << mistake;
        EXPECT_NE(result.err.find("heap-buffer-overflow"), std::string::npos)
            << mistake << result.err;
    }
    // What it starts gets no sanitizer that it does not want.
    const ProcessResult result =
        onBoard({program, "system", "echo \"$LD_PRELOAD\"; " + program}, {"LD_PRELOAD="});
    const Words lines = linesOf(result.out);
    ASSERT_EQ(lines.size(), 3u) << result.out << result.err;
    EXPECT_EQ(fs::path(lines[1]).filename(), "libvboard.so");
    EXPECT_EQ(lines[1].find(':'), std::string::npos);
    EXPECT_EQ(lines[2], "on the board");
}

TEST_F(ExecTest, ThePreloadWithoutItsBoardEndsTheProgram) {
    const std::string library = BSP_TEST_HOST_SEAM;
    for (const char *folder : {"VBOARD_DIR", "VBOARD_DIR="}) {
        const Words words =
            folder[10] == '=' ? Words{"env", folder, "LD_PRELOAD=" + library, "echo", "here"}
                              : Words{"env", "-u", folder, "LD_PRELOAD=" + library, "echo", "here"};
        const ProcessResult result = run(words);
        EXPECT_EQ(result.exitCode, 125);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err, "vboard: libvboard.so is preloaded, but VBOARD_DIR names no board; "
                              "start the program with 'vboard run', or set what 'vboard env' "
                              "prints\n");
    }
}

TEST_F(ExecTest, RunWithoutDashesTellsTheRightCommandLine) {
    expectFailure(
        2, "'--' is missing before the program: vboard run " + board() + " -- ls -l --help 'a b'",
        {"run", board(), "ls", "-l", "--help", "a b"});
    expectFailure(2, "PROGRAM behind '--' is required: vboard run " + board() + " -- PROGRAM",
                  {"run", board()});
    expectFailure(2, "DIR is required", {"run"});
}

TEST_F(ExecTest, AShellTakesTheEnvironmentByEval) {
    const std::string odd = path("it's a \"board\" $HOME");
    vboard({"create", "--model", "0x0109", odd});
    const std::string setting = vboard({"env", "--shell", odd});
    EXPECT_EQ(linesOf(setting).size(), 1u) << setting;
    EXPECT_EQ(setting.substr(0, 19), "export VBOARD_DIR='");
    const ProcessResult result = run(
        {"sh", "-c",
         "eval \"$(\"$1\" env --shell \"$2\")\" && echo \"$VBOARD_DIR\" && sh -c '\"$0\"' \"$3\"",
         "sh", builtProgram("vboard"), odd, builtProgram("show_device_id")});
    EXPECT_EQ(result.out, fs::canonical(odd).string() + "\n0x0109\n") << result.err;
}

TEST_F(ExecTest, NamesThatCannotBeReadAreBadAddresses) {
    constexpr char kProgram[] = "import ctypes\n"
                                "library = ctypes.CDLL(None, use_errno=True)\n"
                                "for start in library.execv, library.execvp:\n"
                                "    print(start(ctypes.c_void_p(8), None), ctypes.get_errno())\n";
    const ProcessResult result = onBoard({"python3", "-c", kProgram});
    const std::string failure = "-1 " + std::to_string(EFAULT) + "\n";
    EXPECT_EQ(result.out, failure + failure) << result.err;
}

} // namespace
