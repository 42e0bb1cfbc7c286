/*
 * A program that waits by the board's time where that is easily got wrong.
 *
 * usage: waiters timers|sockets|cancelled|pass-on|forks|refusals|many|few|zombies
 *
 * It says on standard error when it begins.
 */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

enum { SECOND = 1000 }; /* in milliseconds */

static struct timespec began;

static void begin(void) {
    clock_gettime(CLOCK_MONOTONIC, &began);
}

/* Tells how long something took, by the program's clock, and what came of it. */
static void tell(const char *what, long result) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    const int64_t ns =
        ((int64_t)now.tv_sec - began.tv_sec) * 1000000000 + now.tv_nsec - began.tv_nsec;
    printf("%s: %ld after %d.%09d\n", what, result, (int)(ns / 1000000000), (int)(ns % 1000000000));
}

static int timer(int seconds) {
    const struct itimerspec setting = {{0, 0}, {seconds, 0}};
    const int fd = timerfd_create(CLOCK_MONOTONIC, 0);
    timerfd_settime(fd, 0, &setting, NULL);
    return fd;
}

static int silentPipe(void) {
    int ends[2];
    return pipe(ends) == 0 ? ends[0] : -1;
}

static void ignore(int signal) {
    (void)signal;
}

/* Sleeps by the host's time, on every board. */
static void letOthersRun(void) {
    const long ms[2] = {0, 1000000};
    syscall(SYS_nanosleep, ms, NULL);
}

/* How often a timer has gone off; or 100 and an error. */
static long readPlainly(int fd) {
    uint64_t count = 0;
    return read(fd, &count, sizeof(count)) == sizeof(count) ? (long)count : 100 + errno;
}
static long readVector(int fd) {
    uint32_t halves[2] = {0, 0}; /* also in two parts */
    const struct iovec parts[] = {{&halves[0], 4}, {&halves[1], 4}};
    uint64_t count = 0;
    if (readv(fd, parts, 2) != sizeof(count))
        return 100 + errno;
    memcpy(&count, halves, sizeof(count));
    return (long)count;
}

static void timers(void) {
    begin();
    int fd = timer(1);
    tell("read", readPlainly(fd));
    close(fd);
    fd = timer(1);
    tell("readv", readVector(fd));
    close(fd);
    fd = timer(1);
    struct pollfd entry = {dup(fd), POLLIN, 0};
    tell("poll of a copy", poll(&entry, 1, 5 * SECOND));
}

/* Vectors of a socket with a time-out. */
static void sockets(void) {
    const struct timeval second = {1, 0};
    char data[4096] = {0};
    const struct iovec part = {data, sizeof(data)};
    int ends[2];
    socketpair(AF_UNIX, SOCK_STREAM, 0, ends);
    setsockopt(ends[0], SOL_SOCKET, SO_RCVTIMEO, &second, sizeof(second));
    setsockopt(ends[0], SOL_SOCKET, SO_SNDTIMEO, &second, sizeof(second));
    while (send(ends[0], data, sizeof(data), MSG_DONTWAIT) > 0) {
    }
    begin();
    tell("readv", readv(ends[0], &part, 1));
    tell("writev", writev(ends[0], &part, 1));
}

/* Two threads that wait for one token. */

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
static int tokens, waiting, isTaken[2];

static int look(const int *value) {
    pthread_mutex_lock(&mutex);
    const int result = *value;
    pthread_mutex_unlock(&mutex);
    return result;
}

static void unlock(void *unused) {
    (void)unused;
    pthread_mutex_unlock(&mutex);
}

static void *takeToken(void *taken) {
    pthread_mutex_lock(&mutex);
    pthread_cleanup_push(unlock, NULL);
    ++waiting;
    while (tokens == 0)
        pthread_cond_wait(&condition, &mutex);
    --tokens;
    *(int *)taken = 1;
    pthread_cleanup_pop(1);
    return NULL;
}

static pthread_t startTaker(int number) {
    pthread_t thread;
    pthread_create(&thread, NULL, takeToken, &isTaken[number]);
    while (look(&waiting) != number + 1)
        letOthersRun();
    letOthersRun(); /* until it sleeps */
    return thread;
}

static void giveToken(void) {
    tokens = 1;
    pthread_cond_signal(&condition);
}

/* Whether a token goes to the other thread when the first is cancelled that was woken for it. */
static int isPassedOn(void) {
    tokens = waiting = isTaken[0] = isTaken[1] = 0;
    const pthread_t first = startTaker(0), second = startTaker(1);
    pthread_mutex_lock(&mutex);
    giveToken();
    pthread_cancel(first);
    pthread_mutex_unlock(&mutex);
    pthread_join(first, NULL);
    for (int tries = 0; !look(&isTaken[0]) && !look(&isTaken[1]); ++tries) {
        if (tries == 10 * SECOND)
            return 0;
        letOthersRun();
    }
    if (!look(&isTaken[1]))
        giveToken();
    pthread_join(second, NULL);
    return 1;
}

static void passOn(void) {
    enum { ROUNDS = 30 };
    /* Threads that are woken do not run before the one that wakes them sleeps: it cancels first. */
    cpu_set_t one;
    const struct sched_param none = {0};
    CPU_ZERO(&one);
    CPU_SET((size_t)sched_getcpu(), &one);
    sched_setaffinity(0, sizeof(one), &one);
    sched_setscheduler(0, SCHED_BATCH, &none);
    int round = 0;
    while (round < ROUNDS && isPassedOn())
        ++round;
    printf("passed on %d times\n", round);
}

/* Alarms are a process's own. */
static void forks(void) {
    const struct itimerval every = {{5, 0}, {5, 0}};
    struct itimerval left;
    int status = 0;
    signal(SIGALRM, ignore);
    begin();
    alarm(10);
    if (fork() == 0) {
        tell("alarm of a child", (long)alarm(2));
        pause();
        tell("its own", (long)alarm(0));
        setitimer(ITIMER_REAL, &every, NULL);
        if (fork() == 0) {
            getitimer(ITIMER_REAL, &left);
            tell("timer of its child", (long)(left.it_value.tv_sec + left.it_interval.tv_sec));
            fflush(stdout);
            _exit(0);
        }
        wait(&status);
        pause();
        tell("its timer", status);
        fflush(stdout);
        _exit(0);
    }
    while (wait(&status) < 0) {
    }
    tell("child", status);
    pause();
    tell("alarm", (long)alarm(0));
}

/* What is refused at once. */

static void refused(const char *what, long result) {
    printf("%s: %ld, %s\n", what, result, result < 0 ? strerrorname_np(errno) : "");
}
#define REFUSED(call) (errno = 0, refused(#call, (long)(call)))

/* Where times of the kernel are wider than the program's, the C library itself reads them, and
 * would end the program. */
#if UINTPTR_MAX > UINT32_MAX
#define WILD_TIME_REFUSED(call) REFUSED(call)
#else
#define WILD_TIME_REFUSED(call) (void)wild
#endif

/* Functions that return what errno would be. */
static long asErrno(int error) {
    errno = error;
    return error == 0 ? 0 : -1;
}

static void refusals(void) {
    static const struct timespec kNegative = {-1, 0}, kTooLarge = {0, 1000000000}, kLong = {60, 0};
    static const struct itimerspec kNegativeTimer = {{0, 0}, {-1, 0}},
                                   kNegativeEvery = {{0, -1}, {1, 0}},
                                   kTooLargeTimer = {{0, 0}, {0, 1000000000}},
                                   kTimer = {{0, 0}, {60, 0}};
    static const struct itimerval kTooLargeAlarm = {{0, 0}, {0, 1000000}},
                                  kNegativeAlarm = {{0, 0}, {-1, 0}}, kAlarm = {{0, 0}, {60, 0}};
    struct timeval negativeTime = {-1, 0}, longTime = {60, 0};
    struct sigevent noEvent = {0}, noSignal = {0};
    struct itimerspec told;
    struct itimerval toldAlarm;
    struct epoll_event event;
    sigset_t none;
    fd_set set;
    timer_t timer;
    uint32_t half;
    const struct iovec part = {&half, sizeof(half)};
    sem_t semaphore;
    void *volatile wild = (void *)8; /* of which compilers know nothing */
    volatile int lessThanNone = -1;
    const int closed = dup(0), open = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK),
              silent = silentPipe(), epoll = epoll_create1(0);
    close(closed);
    sigemptyset(&none);
    FD_ZERO(&set);
    FD_SET(closed, &set);
    noEvent.sigev_notify = 77;
    noSignal.sigev_signo = 777;
    sem_init(&semaphore, 0, 0);

    REFUSED(nanosleep(&kNegative, NULL));
    REFUSED(nanosleep(&kTooLarge, NULL));
    WILD_TIME_REFUSED(nanosleep(wild, NULL));
    REFUSED(asErrno(clock_nanosleep(77, 0, &kLong, NULL)));
    REFUSED(asErrno(clock_nanosleep(CLOCK_THREAD_CPUTIME_ID, 0, &kLong, NULL)));
    REFUSED(asErrno(clock_nanosleep(CLOCK_MONOTONIC_RAW, 0, &kLong, NULL)));
    REFUSED(asErrno(clock_nanosleep(CLOCK_REALTIME_COARSE, TIMER_ABSTIME, &kLong, NULL)));
    REFUSED(asErrno(clock_nanosleep(CLOCK_MONOTONIC, 0, &kNegative, NULL)));
    REFUSED(asErrno(clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &kNegative, NULL)));
    REFUSED(asErrno(clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &kTooLarge, NULL)));
    WILD_TIME_REFUSED(asErrno(clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, wild, NULL)));

    REFUSED(ppoll(NULL, 0, &kNegative, NULL));
    REFUSED(ppoll(NULL, 0, &kTooLarge, NULL));
    REFUSED(ppoll(NULL, 0, &kLong, wild));
    REFUSED(poll(wild, 2, 60 * SECOND));
    REFUSED(select(0, NULL, NULL, NULL, &negativeTime));
    REFUSED(select(-1, NULL, NULL, NULL, &longTime));
    REFUSED(select(closed + 1, &set, NULL, NULL, &longTime));
    REFUSED(select(5, wild, NULL, NULL, &longTime));
    REFUSED(pselect(0, NULL, NULL, NULL, &kTooLarge, NULL));
    REFUSED(pselect(0, NULL, NULL, NULL, &kLong, wild));
    REFUSED(epoll_wait(closed, &event, 1, 60 * SECOND));
    REFUSED(epoll_wait(silent, &event, 1, 60 * SECOND));
    REFUSED(epoll_wait(epoll, &event, 0, 60 * SECOND));
    REFUSED(epoll_pwait(epoll, &event, lessThanNone, 60 * SECOND, &none));

    REFUSED(timerfd_create(77, 0));
    REFUSED(timerfd_create(CLOCK_PROCESS_CPUTIME_ID, 0));
    REFUSED(timerfd_create(CLOCK_MONOTONIC, 1));
    REFUSED(timerfd_settime(closed, 0, &kTimer, NULL));
    REFUSED(timerfd_settime(silent, 0, &kTimer, NULL));
    REFUSED(timerfd_settime(open, 0, &kNegativeTimer, NULL));
    REFUSED(timerfd_settime(open, 0, &kNegativeEvery, NULL));
    REFUSED(timerfd_settime(open, 0, &kTooLargeTimer, NULL));
    REFUSED(timerfd_settime(open, TFD_TIMER_ABSTIME, &kNegativeTimer, NULL));
    REFUSED(timerfd_settime(open, 8, &kTimer, NULL));
    WILD_TIME_REFUSED(timerfd_settime(open, 0, wild, NULL));
    WILD_TIME_REFUSED(timerfd_gettime(open, wild));
    REFUSED(timerfd_gettime(closed, &told));
    REFUSED(timerfd_gettime(silent, &told));
    REFUSED(timerfd_settime(open, 0, &kTimer, NULL));
    WILD_TIME_REFUSED(timerfd_gettime(open, wild));
    REFUSED(timerfd_settime(open, 0, &kTooLargeTimer, NULL));
    REFUSED(read(open, &half, sizeof(half)));
    REFUSED(readPlainly(open));
    REFUSED(readVector(open));
    fcntl(open, F_SETFL, 0);
    REFUSED(read(open, &half, sizeof(half))); /* which does not wait */
    REFUSED(readv(open, &part, 1));
    close(open);
    REFUSED(timerfd_settime(open, 0, &kTimer, NULL));
    REFUSED(timerfd_gettime(open, &told));
    REFUSED(readPlainly(open));

    REFUSED(timer_create(77, NULL, &timer));
    REFUSED(timer_create(CLOCK_MONOTONIC, &noEvent, &timer));
    REFUSED(timer_create(CLOCK_MONOTONIC, &noSignal, &timer));
    REFUSED(timer_create(CLOCK_MONOTONIC, NULL, &timer));
    REFUSED(timer_settime(timer, 0, &kNegativeTimer, NULL));
    REFUSED(timer_settime(timer, 0, &kNegativeEvery, NULL));
    REFUSED(timer_settime(timer, TIMER_ABSTIME, &kTooLargeTimer, NULL));
    REFUSED(timer_settime(timer, 0, &kTimer, NULL));
    REFUSED(timer_settime(timer, 0, &kTooLargeTimer, NULL));
    REFUSED(timer_delete(timer));
    REFUSED(timer_settime(timer, 0, &kTimer, NULL));
    REFUSED(timer_gettime(timer, &told));
    REFUSED(timer_delete(timer));
    REFUSED(setitimer(77, &kAlarm, NULL));
    REFUSED(getitimer(77, &toldAlarm));
    REFUSED(setitimer(ITIMER_REAL, &kTooLargeAlarm, NULL));
    REFUSED(setitimer(ITIMER_REAL, &kNegativeAlarm, NULL));
    REFUSED(setitimer(ITIMER_REAL, &kAlarm, NULL));
    WILD_TIME_REFUSED(getitimer(ITIMER_REAL, wild));
    REFUSED(setitimer(ITIMER_REAL, &kTooLargeAlarm, NULL));

    REFUSED(sigtimedwait(&none, NULL, &kNegative));
    REFUSED(sigtimedwait(&none, NULL, &kTooLarge));
    REFUSED(sem_timedwait(&semaphore, &kTooLarge));
    REFUSED(sem_timedwait(&semaphore, &kNegative));
    REFUSED(sem_clockwait(&semaphore, CLOCK_MONOTONIC_RAW, &kLong));
    pthread_mutex_lock(&mutex);
    REFUSED(asErrno(pthread_cond_timedwait(&condition, &mutex, &kTooLarge)));
    REFUSED(asErrno(pthread_cond_timedwait(&condition, &mutex, &kNegative)));
    REFUSED(asErrno(pthread_cond_clockwait(&condition, &mutex, CLOCK_BOOTTIME, &kLong)));
    REFUSED(asErrno(pthread_mutex_timedlock(&mutex, &kTooLarge)));
    REFUSED(asErrno(pthread_mutex_clocklock(&mutex, CLOCK_BOOTTIME, &kLong)));
}

/* Waits for one second, each in its way, for what does not come. */

static long pollOf(int fd) {
    struct pollfd entry = {fd, POLLIN, 0};
    return poll(&entry, 1, SECOND);
}

static long waitForSemaphore(void) {
    sem_t semaphore;
    struct timespec end;
    sem_init(&semaphore, 0, 0);
    clock_gettime(CLOCK_REALTIME, &end);
    ++end.tv_sec;
    return sem_timedwait(&semaphore, &end) < 0 && errno == ETIMEDOUT ? 0 : -1;
}

static int openDescriptors(void) {
    int count = 0;
    for (int fd = 0; fd < 8192; ++fd)
        count += fcntl(fd, F_GETFD) >= 0;
    return count;
}

static long pagesOfMemory(void) {
    long pages = 0;
    FILE *file = fopen("/proc/self/statm", "re");
    if (file == NULL || fscanf(file, "%ld", &pages) != 1)
        pages = -1;
    if (file != NULL)
        fclose(file);
    return pages;
}

/* Tells what has become more meanwhile. */
static void tellLeaks(int descriptors, long pages) {
    const long more = pagesOfMemory() - pages;
    printf("%d descriptors more, %s memory\n", openDescriptors() - descriptors,
           pages > 0 && more <= 64 ? "no more" : "more");
}

static void many(void) {
    enum { COUNT = 4000, BITS = 8 * sizeof(long), WORDS = (COUNT + 100) / BITS + 1, ROUNDS = 200 };
    static struct pollfd entries[COUNT];
    static long sets[2][WORDS];
    struct rlimit limit;
    struct timeval second = {1, 0};
    struct epoll_event event = {EPOLLIN, {0}};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = COUNT + 600;
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
        perror("setrlimit");
    int ends[2];
    const int epoll = epoll_create1(0);
    if (pipe(ends) != 0)
        exit(1);
    int last = 0;
    for (int i = 0; i < COUNT; ++i) {
        last = dup(ends[0]);
        entries[i] = (struct pollfd){last, POLLIN, 0};
        sets[0][last / BITS] |= 1L << last % BITS;
        epoll_ctl(epoll, EPOLL_CTL_ADD, last, &event);
    }
    memcpy(sets[1], sets[0], sizeof(sets[0]));
    begin();
    tell("poll", poll(entries, COUNT, SECOND));
    begin();
    tell("select", select(last + 1, (fd_set *)sets[0], NULL, NULL, &second));
    begin();
    tell("epoll", epoll_wait(epoll, &event, 1, SECOND));
    const int descriptors = openDescriptors();
    const long pages = pagesOfMemory();
    begin();
    for (int i = 0; i < ROUNDS; ++i)
        poll(entries, COUNT, 5);
    tell("polls", ROUNDS);
    tellLeaks(descriptors, pages);
    begin();
    tell("write", write(ends[1], "x", 1));
    tell("poll", poll(entries, COUNT, SECOND));
    second.tv_sec = 1;
    tell("select", select(last + 1, (fd_set *)sets[1], NULL, NULL, &second));
    tell("epoll", epoll_wait(epoll, &event, 1, SECOND));
}

/* All descriptors are in use that the process may have. */
static void few(void) {
    const int silent = silentPipe(), epoll = epoll_create1(0), armed = timer(6);
    struct rlimit limit;
    fd_set set;
    struct timeval second = {1, 0};
    struct epoll_event event = {EPOLLIN, {0}};
    epoll_ctl(epoll, EPOLL_CTL_ADD, silent, &event);
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = 40;
    setrlimit(RLIMIT_NOFILE, &limit);
    while (dup(silent) >= 0) {
    }
    FD_ZERO(&set);
    FD_SET(silent, &set);
    begin();
    tell("poll", pollOf(silent));
    tell("select", select(silent + 1, &set, NULL, NULL, &second));
    tell("epoll", epoll_wait(epoll, &event, 1, SECOND));
    tell("semaphore", waitForSemaphore());
    tell("sleep", (long)sleep(1));
    tell("timer", readPlainly(armed));
    tell("dup", dup(silent));
    getrlimit(RLIMIT_NOFILE, &limit);
    tell("limit", (long)limit.rlim_cur);
}

static void *pollForEver(void *unused) {
    struct pollfd entries[20];
    for (size_t i = 0; i < sizeof(entries) / sizeof(entries[0]); ++i)
        entries[i] = (struct pollfd){-1, 0, 0};
    poll(entries, sizeof(entries) / sizeof(entries[0]), 100 * SECOND);
    return unused;
}
static void *selectForEver(void *unused) {
    struct timeval time = {100, 0};
    fd_set set;
    FD_ZERO(&set);
    select(FD_SETSIZE, &set, NULL, NULL, &time);
    return unused;
}

/* Threads that are cancelled while they wait leave nothing behind. */
static void cancelled(void) {
    enum { WARM = 10, ROUNDS = 60 };
    int descriptors = 0;
    long pages = 0;
    for (int i = 0; i < ROUNDS; ++i) {
        pthread_t thread;
        if (i == WARM) {
            descriptors = openDescriptors();
            pages = pagesOfMemory();
        }
        pthread_create(&thread, NULL, i % 2 == 0 ? pollForEver : selectForEver, NULL);
        letOthersRun();
        pthread_cancel(thread);
        pthread_join(thread, NULL);
    }
    tellLeaks(descriptors, pages);
}

/* Children that have ended, and that nobody has asked about. */
static void zombies(void) {
    if (fork() == 0)
        _exit(0);
    const pid_t killed = fork();
    if (killed == 0) {
        for (;;)
            pause();
    }
    begin();
    sleep(1);
    tell("sleep", 0);
    kill(killed, SIGKILL);
    sleep(1);
    tell("sleep", 0);
}

static const struct {
    const char *name;
    void (*wait)(void);
} kWays[] = {{"timers", timers},  {"sockets", sockets}, {"cancelled", cancelled},
             {"pass-on", passOn}, {"forks", forks},     {"refusals", refusals},
             {"many", many},      {"few", few},         {"zombies", zombies}};

int main(int argc, char **argv) {
    setvbuf(stdout, NULL, _IOLBF, 0);
    fputs("ready\n", stderr);
    for (size_t way = 0; argc == 2 && way < sizeof(kWays) / sizeof(kWays[0]); ++way) {
        if (strcmp(kWays[way].name, argv[1]) != 0)
            continue;
        kWays[way].wait();
        puts("done");
        return 0;
    }
    return 2;
}
