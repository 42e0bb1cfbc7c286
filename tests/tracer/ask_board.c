/* A program that asks the board from threads, from a child and from what it starts: COUNT requests
 * of each of four threads, then a child's, then those of the program that it becomes. */

#include "bsp.h"

#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#define THREADS 4

static int count;

static void *ask(void *reg) {
    for (int i = 0; i < count; ++i) {
        uint16_t value = 0;
        if (bspCpldGet(*(const uint32_t *)reg, &value) != BSP_OK)
            exit(1);
    }
    return NULL;
}

int main(int argc, char **argv) {
    uint32_t registers[THREADS + 2] = {1, 2, 3, 4, 5, 6};
    pthread_t threads[THREADS];
    int status = 0;
    if (argc < 2)
        return 2;
    count = atoi(argv[1]);
    if (argc > 2) {
        ask(&registers[THREADS + 1]);
        puts("asked");
        return 3;
    }
    for (int i = 0; i < THREADS; ++i)
        pthread_create(&threads[i], NULL, ask, &registers[i]);
    for (int i = 0; i < THREADS; ++i)
        pthread_join(threads[i], NULL);
    if (fork() == 0) {
        ask(&registers[THREADS]);
        _exit(0);
    }
    wait(&status);
    execl(argv[0], argv[0], argv[1], "again", (char *)NULL);
    return 1;
}
