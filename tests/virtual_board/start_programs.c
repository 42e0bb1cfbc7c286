/* Starts a program in one of the ways that there are: start_programs WAY PROGRAM [ARGUMENT...] */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/auxv.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

static int isWay(const char *way, const char *name) {
    return strcmp(way, name) == 0;
}

static int codeOf(int status) {
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

static int fail(int error) {
    printf("%s\n", strerrorname_np(error));
    return 1;
}

static int waitFor(pid_t child) {
    int status = 0;
    return waitpid(child, &status, 0) == child ? codeOf(status) : fail(errno);
}

static int spawned(int error, const pid_t *child) {
    return error == 0 ? waitFor(*child) : fail(error);
}

static int runInShell(char *command) {
    return codeOf(system(command));
}

static int runInPipe(char *command) {
    char text[256];
    size_t count = 0;
    FILE *pipe = popen(command, "r");
    if (pipe == NULL)
        return fail(errno);
    count = fread(text, 1, sizeof(text), pipe);
    fwrite(text, 1, count, stdout);
    return codeOf(pclose(pipe));
}

static int runInVfork(char **words) {
    volatile int error = 0;
    const pid_t child = vfork();
    if (child == 0) {
        char *none[] = {NULL};
        execve(words[0], words, none);
        error = errno;
        _exit(1);
    }
    return error == 0 ? waitFor(child) : fail(error);
}

static void appendOwn(char *setting, size_t size, const char *name) {
    const char *value = getenv(name);
    if (value != NULL)
        strncat(setting, value, size - strlen(setting) - 1);
}

int main(int argc, char **argv) {
    char *none[] = {NULL};
    char **noArray = NULL;
    char *replaced[] = {"HOME=/", "LD_PRELOAD=libdl.so.2", "VBOARD_DIR=", NULL};
    static char list[4096] = "LD_PRELOAD=";
    static char board[4096] = "VBOARD_DIR=";
    char *twice[] = {list, board, "LD_PRELOAD=", NULL};
    const char *way = argc > 2 ? argv[1] : "";
    char **words = argv + 2;
    char *first = argc > 2 ? argv[2] : NULL;
    char *second = argc > 3 ? argv[3] : NULL;
    char *third = argc > 4 ? argv[4] : NULL;
    pid_t child = 0;

    appendOwn(list, sizeof(list), "LD_PRELOAD");
    appendOwn(board, sizeof(board), "VBOARD_DIR");
    /* Whether the loader is careful with this program: 1, and 2 when something else was thought. */
    if (isWay(way, "compare"))
        return getauxval(AT_SECURE) == 0 ? (*first == '0' ? 0 : 2) : (*first == '1' ? 1 : 3);
    if (isWay(way, "execve"))
        execve(first, words, environ);
    else if (isWay(way, "execve-empty"))
        execve(first, words, none);
    else if (isWay(way, "execve-null"))
        execve(first, words, noArray);
    else if (isWay(way, "execve-replaced"))
        execve(first, words, replaced);
    else if (isWay(way, "execve-twice"))
        execve(first, words, twice);
    else if (isWay(way, "execv"))
        execv(first, words);
    else if (isWay(way, "execvp"))
        execvp(first, words);
    else if (isWay(way, "execvpe"))
        execvpe(first, words, none);
    else if (isWay(way, "execl"))
        execl(first, first, second, third, (char *)NULL);
    else if (isWay(way, "execle"))
        execle(first, first, second, third, (char *)NULL, none);
    else if (isWay(way, "execlp"))
        execlp(first, first, second, third, (char *)NULL);
    else if (isWay(way, "fexecve"))
        fexecve(open(first, O_RDONLY), words, none);
    else if (isWay(way, "fexecve-path"))
        fexecve(open(first, O_PATH), words, none);
    else if (isWay(way, "execveat"))
        execveat(open("/", O_PATH), first + 1, words, none, 0);
    else if (isWay(way, "execveat-file"))
        execveat(open(first, O_PATH), "", words, none, AT_EMPTY_PATH);
    else if (isWay(way, "posix_spawn"))
        return spawned(posix_spawn(&child, first, NULL, NULL, words, none), &child);
    else if (isWay(way, "posix_spawnp"))
        return spawned(posix_spawnp(&child, first, NULL, NULL, words, none), &child);
    else if (isWay(way, "vfork"))
        return runInVfork(words);
    else if (isWay(way, "system"))
        return runInShell(first);
    else if (isWay(way, "popen"))
        return runInPipe(first);
    else if (isWay(way, "clearenv-system"))
        return clearenv() == 0 ? runInShell(first) : 1;
    else if (isWay(way, "clearenv-popen"))
        return clearenv() == 0 ? runInPipe(first) : 1;
    else if (isWay(way, "clearenv-execv") && clearenv() == 0)
        execv(first, words);
    else
        return 2;
    return fail(errno);
}
