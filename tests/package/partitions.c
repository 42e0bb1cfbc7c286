/* Prints the partitions: a program of any word size, and of no library of ours. */
#include <stdio.h>

int main(void) {
    char line[128];
    FILE *file = fopen("/proc/mtd", "r");
    if (file == NULL)
        return 1;
    while (fgets(line, sizeof(line), file) != NULL)
        printf("%d-bit: %s", (int)sizeof(void *) * 8, line);
    return fclose(file) == 0 ? 0 : 1;
}
