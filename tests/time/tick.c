/*
 * A program that does something each second, and prints the seconds that have passed by its clocks.
 * It says on standard error when it begins.
 *
 * usage: tick sleep|poll|select|epoll|timerfd|condition|semaphore|spin|crowd COUNT
 *
 * A crowd is so many children that wait for nothing, and end with their parent.
 */
#define _GNU_SOURCE
#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/prctl.h>
#include <sys/select.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

static struct timespec secondFrom(clockid_t clock) {
    struct timespec end;
    clock_gettime(clock, &end);
    ++end.tv_sec;
    return end;
}

static int timerOf(void) {
    const struct itimerspec setting = {{1, 0}, {1, 0}};
    const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
    timerfd_settime(timer, 0, &setting, NULL);
    return timer;
}

static void readTimer(int timer) {
    uint64_t count = 0;
    if (read(timer, &count, sizeof(count)) != sizeof(count) || count != 1)
        printf("%u expirations\n", (unsigned)count);
}

static void sleepWay(void) {
    sleep(1);
}
static void pollWay(void) {
    poll(NULL, 0, 1000);
}
static void selectWay(void) {
    struct timeval time = {1, 0};
    select(0, NULL, NULL, NULL, &time);
}
static void epollWay(void) {
    static int epoll = -1, timer;
    struct epoll_event event = {EPOLLIN, {0}};
    if (epoll < 0) {
        epoll = epoll_create1(EPOLL_CLOEXEC);
        timer = timerOf();
        epoll_ctl(epoll, EPOLL_CTL_ADD, timer, &event);
    }
    if (epoll_wait(epoll, &event, 1, -1) == 1)
        readTimer(timer);
}
static void timerfdWay(void) {
    static int timer = -1;
    if (timer < 0)
        timer = timerOf();
    readTimer(timer);
}
static void conditionWay(void) {
    static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
    static pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
    const struct timespec end = secondFrom(CLOCK_REALTIME);
    pthread_mutex_lock(&mutex);
    while (pthread_cond_timedwait(&condition, &mutex, &end) == 0) {
    }
    pthread_mutex_unlock(&mutex);
}
static void semaphoreWay(void) {
    static sem_t semaphore;
    const struct timespec end = secondFrom(CLOCK_REALTIME);
    while (sem_timedwait(&semaphore, &end) != -1 || errno != ETIMEDOUT) {
    }
}

static void spin(void) {
    for (;;) {
    }
}

static const struct {
    const char *name;
    void (*wait)(void);
} kWays[] = {{"sleep", sleepWay},         {"poll", pollWay},       {"select", selectWay},
             {"epoll", epollWay},         {"timerfd", timerfdWay}, {"condition", conditionWay},
             {"semaphore", semaphoreWay}, {"spin", spin}};

static void print(const struct timespec *start, const struct timespec *now) {
    const int64_t ns =
        ((int64_t)now->tv_sec - start->tv_sec) * 1000000000 + now->tv_nsec - start->tv_nsec;
    printf("%d.%09d", (int)(ns / 1000000000), (int)(ns % 1000000000));
}

static void crowd(int count) {
    while (count-- > 0) {
        if (fork() == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            pause();
            _exit(0);
        }
    }
    pause();
}

int main(int argc, char **argv) {
    struct timespec start, system, now;
    setvbuf(stdout, NULL, _IOLBF, 0);
    fputs("ready\n", stderr);
    if (argc == 3 && strcmp(argv[1], "crowd") == 0)
        crowd(atoi(argv[2]));
    clock_gettime(CLOCK_MONOTONIC, &start);
    clock_gettime(CLOCK_REALTIME, &system);
    for (size_t way = 0; argc == 3 && way < sizeof(kWays) / sizeof(kWays[0]); ++way) {
        if (strcmp(kWays[way].name, argv[1]) != 0)
            continue;
        for (int i = 0; i < atoi(argv[2]); ++i) {
            kWays[way].wait();
            clock_gettime(CLOCK_MONOTONIC, &now);
            print(&start, &now);
            putchar(' ');
            clock_gettime(CLOCK_REALTIME, &now);
            print(&system, &now);
            putchar('\n');
        }
        return 0;
    }
    return 2;
}
