// Ordinary programs, which have nothing to do with the board: on one they do what they do without.

#include "tests/virtual_board/command_test.h"

namespace {

namespace fs = std::filesystem;

struct ProgramUse {
    const char *program; // that has to be there
    const char *command; // of the shell, in an empty folder
};

const ProgramUse kProgramUses[] = {
    {"dash", "dash -c 'x=$(echo a b); set -- $x; echo $# >out 2>&1; cat <out; (exit 9)'; echo $?"},
    {"dash", "cat <<END | tr a-z A-Z >out; cat out; rm out; cat out\nhere $((6*7))\nEND"},
    {"bash", "bash -c 'diff <(seq 3) <(seq 2 4); touch b a; echo *; exec 7>c; echo x >&7; cat c'"},
    {"bash", "bash -c 'coproc cat; echo hello >&${COPROC[1]}; read l <&${COPROC[0]}; echo $l; "
             "trap \"echo bye\" EXIT; kill -USR1 $$'"},
    {"bash", "bash -c 'echo ${BASH_VERSINFO[0]}; printf %q\\\\n \"a b\"; [[ -e /dev/null ]]; "
             "mapfile -t a < <(printf \"1\\n2\\n\"); echo ${#a[@]}'"},
    {"python3",
     "python3 -c 'import subprocess as s; print(s.run([\"sh\", \"-c\", \"cat; exit 3\"], "
     "input=b\"in\", capture_output=True))'"},
    {"python3", "python3 -c 'import threading as t; r = []; "
                "a = [t.Thread(target=r.append, args=(i,)) for i in range(9)]; "
                "[x.start() for x in a]; [x.join() for x in a]; print(sorted(r))'"},
    {"python3", "python3 -c 'import multiprocessing as m\nif __name__ == \"__main__\":\n"
                "  with m.Pool(2) as p: print(p.map(abs, range(-3, 3)))'"},
    {"python3", "mkdir -p a/b; touch a/f a/b/g; python3 -c 'import os, tempfile, shutil; "
                "print(sorted(os.walk(\"a\"))); d = tempfile.mkdtemp(dir=\".\"); "
                "shutil.copytree(\"a\", d + \"/a\"); print(os.listdir(d)); shutil.rmtree(d); "
                "print(os.path.exists(d)); open(\"none\")' 2>err; tail -1 err"},
    {"git", "git init -q r && cd r && echo 1 >f && git add f && git commit -qm one && "
            "echo 2 >f && git diff && git commit -qam two && git log --format='%H %s' && "
            "cd .. && git clone -q r c && git -C c status && git -C c fsck"},
    {"gcc", "printf '#include <stdio.h>\\nint main(void) { puts(\"made\"); return 4; }' >m.c; "
            "gcc -O1 m.c -o m && ./m; echo $?; gcc -c none.c"},
    {"g++", "printf '#include <filesystem>\\n#include <iostream>\\nint main() { for (auto &e : "
            "std::filesystem::directory_iterator(\"d\")) std::cout << e.path() << 10; }' >m.cpp; "
            "mkdir d; touch d/f; g++ -std=c++17 m.cpp -o m && ./m"},
    {"make",
     "printf 'all: a b\\na b:\\n\\t@echo $@ >$@ && cat $@\\nbad:\\n\\t@false\\n' >Makefile; "
     "make -s; make -s all; make -s bad"},
    {"cmake", "printf 'cmake_minimum_required(VERSION 3.20)\\nproject(p NONE)\\n"
              "file(WRITE ${CMAKE_BINARY_DIR}/f ok)\\nadd_custom_target(t ALL COMMAND "
              "${CMAKE_COMMAND} -E cat f)' >CMakeLists.txt; cmake -S . -B b -G Ninja >log && "
              "grep -c done log && cmake --build b"},
    {"tar", "mkdir d; echo x >d/f; ln -s f d/l; ln d/f d/h; tar -cf t.tar --sort=name d && "
            "tar -tf t.tar; rm -r d; tar -xf t.tar; ls d; readlink d/l; tar -xf none.tar"},
    {"gzip", "seq 1000 >f; gzip -9n f; gzip -l f.gz | tail -1 | tr -s ' '; zcat f.gz | md5sum; "
             "gzip -t f.gz; echo x | gzip -d"},
    {"find", "mkdir -p a/b; touch a/1 a/b/2; find a -type f -print0 | sort -z | "
             "xargs -0 -n1 basename; find a -name 1 -exec cat {} + -delete; find none"},
    {"xargs", "seq 9 | xargs -P 1 -n 4 echo; seq 3 | xargs -I{} sh -c 'exit 1'; echo $?"},
    {"sed", "seq 5 >f; sed -i '2d;s/3/three/' f; cat f; sed -n '$=' f; sed s/x none"},
    {"awk", "seq 5 | awk '{ s += $1 } END { print s; print \"x\" | \"cat\"; close(\"cat\"); "
            "while ((getline l < \"/etc/hostname\") > 0) n++; print n }'"},
    {"grep", "mkdir d; echo abc >d/f; grep -rn b d; grep -c x d/f; echo $?; grep x none"},
    {"sort", "seq 2000 | sort -R --random-source=/dev/zero | sort -n -S 16K -T . | md5sum; "
             "sort none"},
    {"diff", "seq 3 >a; seq 2 4 >b; diff -u --label a --label b a b; cmp a b; diff a none"},
    {"cp", "mkdir d; echo x >d/f; ln -s f d/l; touch -d 2001-01-01 d/f; cp -a d e; "
           "stat -c '%n %Y' e/f; stat -c %F e/l; cp none x; cp -r --reflink=auto d g; ls g"},
    {"mv", "echo 1 >a; echo 2 >b; mv a b; cat b; mkdir d; mv b d; ls d; mv none x; mv -n d/b d"},
    {"rm", "mkdir -p d/e; touch d/f; rm -r d; ls; rm none; rm -f none; mkdir d; rm d; rmdir d"},
    {"ls", "mkdir d; ln -s f l; touch -h -d 2001-01-01 d/f f l d; ls -lR --time-style=+%F . | "
           "grep -v ^total; ls -l /dev/null /dev/full none; ls -d /tmp /proc/self"},
    {"dd", "dd if=/dev/zero of=f bs=1k count=4 status=none; dd if=f bs=1 count=9 skip=1 "
           "status=none | wc -c; dd if=none of=x; dd if=/dev/zero of=/dev/full count=1 "
           "status=none"},
    {"perl", "perl -e 'open F, \">f\"; print F \"x\" x 9; close F; print -s \"f\", \"\\n\"; "
             "opendir D, \".\"; print sort(readdir D), \"\\n\"; print qx(echo sub); "
             "my $p = fork; if (!$p) { exit 5 } waitpid $p, 0; print $? >> 8, \"\\n\"; "
             "open F, \"<none\" or die \"$!\\n\"'"},
    {"gdb", "printf 'int main(void) { return 6; }' >m.c; gcc -g m.c -o m; gdb -q -batch -nx "
            "-iex 'set debuginfod enabled off' -ex 'break main' -ex run -ex bt -ex continue ./m "
            "2>&1 | grep -E '^#0|exited' | sed 's/process [0-9]*//'"},
    {"strace", "strace -f -e trace=exit_group -o t true; sed 's/^[0-9]* *//' t"},
    {"tail", "seq 50 >f; tail -n 2 f; tail -c 3 f; head -n -48 f; tail none"},
    {"env", "env -i X=1 /bin/sh -c 'echo $X; echo ${HOME-none}'; env none; echo $?"},
    {"timeout", "timeout 100 true; echo $?; timeout --foreground 100 sh -c 'exit 4'; echo $?"},
    {"mkfifo", "mkfifo p; echo through >p & cat p; wait; test -p p && echo pipe"},
};

class ProgramsTest : public CommandTest {
  protected:
    /** Runs a command in a new folder, always of the same path; all that it leaves behind. */
    ProcessResult inNewFolder(const Words &before, const char *command) const {
        const std::string folder = path("work");
        fs::remove_all(folder);
        fs::create_directory(folder);
        Words words = before;
        for (const char *word : {"sh", "-c", "cd \"$0\" && eval \"$1\""})
            words.emplace_back(word);
        words.push_back(folder);
        words.emplace_back(command);
        const Environment environment = {"LC_ALL=C",
                                         "HOME=" + folder,
                                         "GIT_AUTHOR_NAME=a",
                                         "GIT_AUTHOR_EMAIL=a@b",
                                         "GIT_COMMITTER_NAME=a",
                                         "GIT_COMMITTER_EMAIL=a@b",
                                         "GIT_AUTHOR_DATE=2001-01-01T00:00:00Z",
                                         "GIT_COMMITTER_DATE=2001-01-01T00:00:00Z",
                                         "GIT_CONFIG_NOSYSTEM=1",
                                         "PYTHONDONTWRITEBYTECODE=1"};
        return run(words, environment);
    }
};

TEST_F(ProgramsTest, DoOnABoardWhatTheyDoWithoutOne) {
    std::map<std::string, int> programs;
    for (const ProgramUse &use : kProgramUses) {
        ASSERT_EQ(run({"sh", "-c", std::string("command -v ") + use.program}).exitCode, 0)
            << use.program << " is missing: scripts/install-dependencies tests installs it";
        ++programs[use.program];
        const ProcessResult alone = inNewFolder({}, use.command);
        const ProcessResult onBoard =
            inNewFolder({builtProgram("vboard"), "run", board(), "--"}, use.command);
        EXPECT_EQ(onBoard.out, alone.out) << use.command;
        EXPECT_EQ(onBoard.err, alone.err) << use.command;
        EXPECT_EQ(onBoard.exitCode, alone.exitCode) << use.command;
        EXPECT_NE(alone.out + alone.err, "") << use.command;
    }
    EXPECT_GE(programs.size(), 25u);
    EXPECT_EQ(vboard({"trace", board()}), ""); // nothing of this concerns the board
}

TEST_F(ProgramsTest, LibrariesThatAreLoadedLateUseTheBoard) {
    const ProcessResult result = inNewFolder(
        {builtProgram("vboard"), "run", board(), "--"},
        "printf '#include <fcntl.h>\\n#include <unistd.h>\\nchar text[8];\\n"
        "const char *load(void) { (void)!read(open(\"/proc/cmdline\", O_RDONLY), text, 7); "
        "return text; }' >l.c; gcc -shared -fPIC l.c -o l.so && "
        "python3 -c 'import ctypes as c; f = c.CDLL(\"./l.so\").load; f.restype = c.c_char_p; "
        "print(f().decode())'");
    EXPECT_EQ(result.out, "console\n") << result.err;
}

} // namespace
