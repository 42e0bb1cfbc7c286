/*
 * Waits for a timer of 20 seconds, amid each of which a signal comes after 5. It prints how each
 * ended.
 *
 * usage: interrupted restart|no-restart
 */
#define _GNU_SOURCE
#include <errno.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/select.h>
#include <sys/timerfd.h>
#include <unistd.h>

static volatile sig_atomic_t handled;

static void handle(int signal) {
    (void)signal;
    ++handled;
}

static pthread_t waiting;

static void *interrupt(void *unused) {
    (void)unused;
    sleep(5);
    pthread_kill(waiting, SIGUSR1);
    return NULL;
}

static ssize_t readWay(int timer) {
    uint64_t count = 0;
    return read(timer, &count, sizeof(count));
}
static ssize_t pollWay(int timer) {
    struct pollfd entry = {timer, POLLIN, 0};
    return poll(&entry, 1, -1);
}
static ssize_t selectWay(int timer) {
    fd_set set;
    FD_ZERO(&set);
    FD_SET(timer, &set);
    return select(timer + 1, &set, NULL, NULL, NULL);
}
static ssize_t epollWay(int timer) {
    struct epoll_event event = {EPOLLIN, {0}};
    const int epoll = epoll_create1(0);
    epoll_ctl(epoll, EPOLL_CTL_ADD, timer, &event);
    return epoll_wait(epoll, &event, 1, -1);
}

static const struct {
    const char *name;
    ssize_t (*wait)(int timer);
} kWays[] = {{"read", readWay}, {"poll", pollWay}, {"select", selectWay}, {"epoll", epollWay}};

int main(int argc, char **argv) {
    struct sigaction action = {0};
    action.sa_handler = handle;
    action.sa_flags = argc == 2 && strcmp(argv[1], "restart") == 0 ? SA_RESTART : 0;
    sigaction(SIGUSR1, &action, NULL);
    setvbuf(stdout, NULL, _IOLBF, 0);
    fputs("ready\n", stderr);
    waiting = pthread_self();
    for (size_t way = 0; way < sizeof(kWays) / sizeof(kWays[0]); ++way) {
        pthread_t thread;
        const struct itimerspec setting = {{0, 0}, {20, 0}};
        const int timer = timerfd_create(CLOCK_MONOTONIC, 0);
        timerfd_settime(timer, 0, &setting, NULL);
        handled = 0;
        pthread_create(&thread, NULL, interrupt, NULL);
        const ssize_t result = kWays[way].wait(timer);
        const int error = errno;
        pthread_join(thread, NULL);
        printf("%s: %d, %d handled\n", kWays[way].name, (int)result < 0 ? -error : (int)result,
               (int)handled);
    }
    return 0;
}
