/* A sanitized program: opens the driver's node, and runs, stores or reads as it is told. */
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

int main(int argc, char **argv) {
    const char *what = argc > 1 ? argv[1] : "";
    char *memory = malloc(10);
    volatile int length = 11;
    printf("%s\n", open("/dev/bspHandle", O_RDWR) >= 0 ? "on the board" : "on the host");
    fflush(stdout);
    if (strcmp(what, "system") == 0)
        return system(argv[2]) == 0 ? 0 : 1;
    if (strcmp(what, "overflow") == 0)
        memset(memory, 0, (size_t)length);
    if (strcmp(what, "read") == 0 && read(open("/dev/mtd4", O_RDONLY), memory, (size_t)length) < 0)
        return 1;
    free(memory);
    return 0;
}
