/* Runs its arguments as shell commands, one after the other, up to the first that fails. */
#include <stdlib.h>
#include <sys/wait.h>

int main(int argc, char **argv) {
    int i;
    for (i = 1; i < argc; ++i) {
        int status = system(argv[i]);
        if (status != 0)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
    return 0;
}
