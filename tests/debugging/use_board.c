/*
 * Threads that use a board at once, each in all the ways that the board's library is asked in. They
 * share a count under a lock; with an argument another one without.
 */

#include "bsp.h"

#include <dirent.h>
#include <fcntl.h>
#include <limits.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

enum { kThreads = 3, kRounds = 3 };

static pthread_mutex_t lock = PTHREAD_MUTEX_INITIALIZER;
static int rounds;
static volatile int raced;

static void check(int isGood) {
    if (!isGood)
        abort();
}

static void useFlash(void) {
    char data[16];
    const int fd = open("/dev/mtd4", O_RDWR);
    check(read(fd, data, sizeof(data)) == sizeof(data));
    check(lseek(fd, 0, SEEK_SET) == 0 && write(fd, data, sizeof(data)) == sizeof(data));
    close(fd);
}

static void useFiles(void) {
    char name[] = "/tmp/bsp/threadXXXXXX";
    const int fd = mkstemp(name);
    check(fd >= 0);
    close(fd);
    check(unlink(name) == 0);
    FILE *file = fopen("/proc/cmdline", "r");
    check(file != NULL && fgetc(file) != EOF);
    fclose(file);
    struct stat status;
    check(stat("/dev/mtd4", &status) == 0 && S_ISCHR(status.st_mode));
    DIR *folder = opendir("/dev");
    while (readdir(folder) != NULL) {
    }
    closedir(folder);
    char path[PATH_MAX];
    check(realpath("/tmp/bsp/.", path) != NULL);
}

static void useMemory(void) {
    const int fd = open("/dev/mem", O_RDWR | O_SYNC);
    void *page = mmap(NULL, 4096, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0x1B000000);
    check(page != MAP_FAILED);
    usleep(10);
    munmap(page, 4096);
    close(fd);
}

static void *work(void *doesRace) {
    if (doesRace != NULL)
        raced++;
    for (int i = 0; i < kRounds; ++i) {
        int32_t celsius = 0;
        check(ioTemperGet(0, &celsius) == BSP_OK);
        useFlash();
        useFiles();
        useMemory();
        const struct timespec pause = {0, 1000000};
        nanosleep(&pause, NULL);
        pthread_mutex_lock(&lock);
        rounds++;
        pthread_mutex_unlock(&lock);
    }
    return NULL;
}

int main(int count, char **arguments) {
    pthread_t threads[kThreads];
    for (int i = 0; i < kThreads; ++i)
        check(pthread_create(&threads[i], NULL, work, count > 1 ? arguments : NULL) == 0);
    for (int i = 0; i < kThreads; ++i)
        pthread_join(threads[i], NULL);
    check(system("flash_erase -q /dev/mtd4 0 1") == 0);
    printf("%d rounds\n", rounds);
    return 0;
}
