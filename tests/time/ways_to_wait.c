/*
 * The ways in which a program can wait for a length of time, or to a point of a clock. Each waits
 * for what does not come.
 *
 * usage: ways_to_wait list | FOLLOWS SECONDS [NOW]
 *
 * All of a kind are tried at once; with REAL those that emulators do not have, too. Of each it
 * prints whether it ended as it should, and how much time its own clock and the host's say has
 * passed, in seconds. Before, a board's system clock is set to NOW.
 */
#define _GNU_SOURCE
#include <aio.h>
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <linux/futex.h>
#include <mqueue.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/ipc.h>
#include <sys/select.h>
#include <sys/sem.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <threads.h>
#include <time.h>
#include <unistd.h>

/* What a program that was built with checks of its buffers calls. */
int __poll_chk(struct pollfd *descriptors, nfds_t count, int timeout, size_t room);
#if __SIZEOF_LONG__ == 8 || !defined(__USE_TIME_BITS64)
int __ppoll_chk(struct pollfd *descriptors, nfds_t count, const struct timespec *timeout,
                const sigset_t *signals, size_t room);
#define PPOLL_CHK __ppoll_chk
#else
int __ppoll64_chk(struct pollfd *descriptors, nfds_t count, const struct timespec *timeout,
                  const sigset_t *signals, size_t room);
#define PPOLL_CHK __ppoll64_chk
#endif
ssize_t __read_chk(int fd, void *data, size_t length, size_t room);
ssize_t __recv_chk(int fd, void *data, size_t length, size_t room, int flags);
ssize_t __recvfrom_chk(int fd, void *data, size_t length, size_t room, int flags,
                       struct sockaddr *address, socklen_t *size);

/* The ways of C++'s library, for so many seconds. */
int waitForFuture(double seconds);
int waitForFutureUntil(double seconds);
int waitForSemaphore(double seconds);

static const long kNsPerSecond = 1000000000;

static struct timespec duration; /* how long to wait */

static int milliseconds(void) {
    return (int)(duration.tv_sec * 1000 + duration.tv_nsec / 1000000);
}

static struct timeval microseconds(void) {
    return (struct timeval){duration.tv_sec, duration.tv_nsec / 1000};
}

/* The point of a clock at which the wait shall end. */
static struct timespec endOn(clockid_t clock) {
    struct timespec end;
    clock_gettime(clock, &end);
    end.tv_sec += duration.tv_sec;
    end.tv_nsec += duration.tv_nsec;
    if (end.tv_nsec >= kNsPerSecond) {
        end.tv_nsec -= kNsPerSecond;
        ++end.tv_sec;
    }
    return end;
}

/* Things that nothing comes from. */

static int silentPipe(void) {
    int ends[2];
    return pipe(ends) == 0 ? ends[0] : -1;
}

static int silentSocket(int option) {
    int ends[2];
    const struct timeval timeout = microseconds();
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0)
        return -1;
    setsockopt(ends[0], SOL_SOCKET, option, &timeout, sizeof(timeout));
    return ends[0];
}

static int fullSocket(void) {
    const int fd = silentSocket(SO_SNDTIMEO);
    char data[4096] = {0};
    while (send(fd, data, sizeof(data), MSG_DONTWAIT) > 0) {
    }
    return fd;
}

static int silentListener(void) {
    struct sockaddr name = {AF_UNIX, {0}};
    const struct timeval timeout = microseconds();
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (bind(fd, &name, sizeof(sa_family_t)) != 0 || listen(fd, 1) != 0)
        return -1;
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &timeout, sizeof(timeout));
    return fd;
}

static mqd_t queueOf(unsigned messages) {
    char name[64];
    struct mq_attr attributes = {0};
    attributes.mq_maxmsg = 1;
    attributes.mq_msgsize = 1;
    snprintf(name, sizeof(name), "/ways_to_wait.%d", (int)getpid());
    const mqd_t queue = mq_open(name, O_RDWR | O_CREAT, 0600, &attributes);
    mq_unlink(name);
    while (messages-- > 0)
        mq_send(queue, "x", 1, 0);
    return queue;
}

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t condition = PTHREAD_COND_INITIALIZER;
static pthread_rwlock_t lock = PTHREAD_RWLOCK_INITIALIZER;

static sem_t isHeld;

static void *hold(void *unused) {
    (void)unused;
    pthread_mutex_lock(&mutex);
    pthread_rwlock_wrlock(&lock);
    sem_post(&isHeld);
    for (;;)
        pause();
    return NULL;
}

/* A thread that holds both locks and does not end. */
static pthread_t holder(void) {
    pthread_t thread;
    sem_init(&isHeld, 0, 0);
    pthread_create(&thread, NULL, hold, NULL);
    sem_wait(&isHeld);
    return thread;
}

static void ignore(int signal) {
    (void)signal;
}

static void handleAlarm(void) {
    struct sigaction action = {0};
    action.sa_handler = ignore;
    sigaction(SIGALRM, &action, NULL);
}

/* Functions return what is right when the time is over. */

static int sleepWay(void) {
    return sleep((unsigned)duration.tv_sec) == 0;
}
static int usleepWay(void) {
    return usleep((useconds_t)milliseconds() * 1000) == 0;
}
static int nanosleepWay(void) {
    return nanosleep(&duration, NULL) == 0;
}
static int clockNanosleepWay(void) {
    return clock_nanosleep(CLOCK_MONOTONIC, 0, &duration, NULL) == 0;
}
static int clockNanosleepRealtimeWay(void) {
    return clock_nanosleep(CLOCK_REALTIME, 0, &duration, NULL) == 0;
}
static int untilMonotonicWay(void) {
    const struct timespec end = endOn(CLOCK_MONOTONIC);
    return clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &end, NULL) == 0;
}
static int untilRealtimeWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    return clock_nanosleep(CLOCK_REALTIME, TIMER_ABSTIME, &end, NULL) == 0;
}
static int untilBoottimeWay(void) {
    const struct timespec end = endOn(CLOCK_BOOTTIME);
    return clock_nanosleep(CLOCK_BOOTTIME, TIMER_ABSTIME, &end, NULL) == 0;
}
static int thrdSleepWay(void) {
    return thrd_sleep(&duration, NULL) == 0;
}

static int pollWay(void) {
    struct pollfd entry = {silentPipe(), POLLIN, 0};
    return poll(&entry, 1, milliseconds()) == 0;
}
static int pollNothingWay(void) {
    return poll(NULL, 0, milliseconds()) == 0;
}
static int pollChkWay(void) {
    struct pollfd entry = {silentPipe(), POLLIN, 0};
    return __poll_chk(&entry, 1, milliseconds(), sizeof(entry)) == 0;
}
static int ppollWay(void) {
    struct pollfd entry = {silentPipe(), POLLIN, 0};
    return ppoll(&entry, 1, &duration, NULL) == 0;
}
static int ppollChkWay(void) {
    struct pollfd entry = {silentPipe(), POLLIN, 0};
    return PPOLL_CHK(&entry, 1, &duration, NULL, sizeof(entry)) == 0;
}
static int selectWay(void) {
    struct timeval time = microseconds();
    const int fd = silentPipe();
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    return select(fd + 1, &set, NULL, NULL, &time) == 0 && time.tv_sec == 0 && time.tv_usec == 0;
}
static int selectNothingWay(void) {
    struct timeval time = microseconds();
    return select(0, NULL, NULL, NULL, &time) == 0;
}
static int pselectWay(void) {
    const int fd = silentPipe();
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    return pselect(fd + 1, &set, NULL, NULL, &duration, NULL) == 0;
}
static int epollOf(int fd) {
    struct epoll_event event = {EPOLLIN, {0}};
    const int epoll = epoll_create1(0);
    epoll_ctl(epoll, EPOLL_CTL_ADD, fd, &event);
    return epoll;
}
static int epollWaitWay(void) {
    struct epoll_event event;
    return epoll_wait(epollOf(silentPipe()), &event, 1, milliseconds()) == 0;
}
static int epollPwaitWay(void) {
    struct epoll_event event;
    return epoll_pwait(epollOf(silentPipe()), &event, 1, milliseconds(), NULL) == 0;
}
static int epollPwait2Way(void) {
    struct epoll_event event;
    return epoll_pwait2(epollOf(silentPipe()), &event, 1, &duration, NULL) == 0;
}

static int armed(clockid_t clock, int flags) {
    const int fd = timerfd_create(clock, 0);
    struct itimerspec setting = {{0, 0}, duration};
    if ((flags & TFD_TIMER_ABSTIME) != 0)
        setting.it_value = endOn(clock);
    return timerfd_settime(fd, flags, &setting, NULL) == 0 ? fd : -1;
}
static int readOnce(int fd) {
    uint64_t count = 0;
    return read(fd, &count, sizeof(count)) == sizeof(count) && count == 1;
}
static int timerfdReadWay(void) {
    return readOnce(armed(CLOCK_MONOTONIC, 0));
}
static int timerfdReadChkWay(void) {
    uint64_t count = 0;
    return __read_chk(armed(CLOCK_MONOTONIC, 0), &count, sizeof(count), sizeof(count)) ==
               sizeof(count) &&
           count == 1;
}
static int timerfdRealtimeWay(void) {
    return readOnce(armed(CLOCK_REALTIME, 0));
}
static int timerfdBoottimeWay(void) {
    return readOnce(armed(CLOCK_BOOTTIME, 0));
}
static int timerfdUntilMonotonicWay(void) {
    return readOnce(armed(CLOCK_MONOTONIC, TFD_TIMER_ABSTIME));
}
static int timerfdUntilRealtimeWay(void) {
    return readOnce(armed(CLOCK_REALTIME, TFD_TIMER_ABSTIME));
}
static int timerfdPollWay(void) {
    struct pollfd entry = {armed(CLOCK_MONOTONIC, 0), POLLIN, 0};
    return poll(&entry, 1, -1) == 1 && readOnce(entry.fd);
}
static int timerfdSelectWay(void) {
    const int fd = armed(CLOCK_MONOTONIC, 0);
    fd_set set;
    FD_ZERO(&set);
    FD_SET(fd, &set);
    return select(fd + 1, &set, NULL, NULL, NULL) == 1 && readOnce(fd);
}
static int timerfdEpollWay(void) {
    struct epoll_event event;
    const int fd = armed(CLOCK_MONOTONIC, 0);
    return epoll_wait(epollOf(fd), &event, 1, -1) == 1 && readOnce(fd);
}
static int timerfdIntervalWay(void) {
    const int fd = timerfd_create(CLOCK_MONOTONIC, 0);
    const int64_t half = ((int64_t)duration.tv_sec * kNsPerSecond + duration.tv_nsec) / 2;
    const struct timespec part = {(time_t)(half / kNsPerSecond), (long)(half % kNsPerSecond)};
    const struct itimerspec setting = {part, part};
    uint64_t count = 0, sum = 0;
    timerfd_settime(fd, 0, &setting, NULL);
    while (sum < 2 && read(fd, &count, sizeof(count)) == sizeof(count))
        sum += count;
    return sum >= 2;
}

static int posixTimer(clockid_t clock, int flags) {
    sigset_t signals;
    timer_t timer;
    siginfo_t info;
    struct sigevent event = {0};
    struct itimerspec setting = {{0, 0}, duration};
    sigemptyset(&signals);
    sigaddset(&signals, SIGRTMIN);
    sigprocmask(SIG_BLOCK, &signals, NULL);
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGRTMIN;
    if (flags != 0)
        setting.it_value = endOn(clock);
    return timer_create(clock, &event, &timer) == 0 &&
           timer_settime(timer, flags, &setting, NULL) == 0 &&
           sigwaitinfo(&signals, &info) == SIGRTMIN;
}
static int timerMonotonicWay(void) {
    return posixTimer(CLOCK_MONOTONIC, 0);
}
static int timerRealtimeWay(void) {
    return posixTimer(CLOCK_REALTIME, 0);
}
static int timerUntilMonotonicWay(void) {
    return posixTimer(CLOCK_MONOTONIC, TIMER_ABSTIME);
}
static int timerUntilRealtimeWay(void) {
    return posixTimer(CLOCK_REALTIME, TIMER_ABSTIME);
}
static sem_t expired;
static void post(union sigval value) {
    (void)value;
    sem_post(&expired);
}
static int timerThreadWay(void) {
    timer_t timer;
    struct sigevent event = {0};
    const struct itimerspec setting = {{0, 0}, duration};
    const struct timespec never = {endOn(CLOCK_REALTIME).tv_sec + 100000, 0};
    event.sigev_notify = SIGEV_THREAD;
    event.sigev_notify_function = post;
    sem_init(&expired, 0, 0);
    return timer_create(CLOCK_MONOTONIC, &event, &timer) == 0 &&
           timer_settime(timer, 0, &setting, NULL) == 0 && sem_timedwait(&expired, &never) == 0;
}
static int setitimerWay(void) {
    const struct itimerval setting = {{0, 0}, microseconds()};
    handleAlarm();
    return setitimer(ITIMER_REAL, &setting, NULL) == 0 && pause() == -1;
}
static int alarmWay(void) {
    handleAlarm();
    return alarm((unsigned)duration.tv_sec) == 0 && pause() == -1;
}
/* Lets alarms come in sigsuspend alone. */
static void blockAlarm(void) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    sigprocmask(SIG_BLOCK, &signals, NULL);
    handleAlarm();
}
static int ualarmWay(void) {
    sigset_t none;
    sigemptyset(&none);
    blockAlarm();
    for (int halves = milliseconds() / 500; halves > 0; --halves) { /* of less than a second */
        if (ualarm(500000, 0) != 0 || sigsuspend(&none) != -1)
            return 0;
    }
    return 1;
}
static int alarmSigsuspendWay(void) {
    sigset_t none;
    sigemptyset(&none);
    blockAlarm();
    alarm((unsigned)duration.tv_sec);
    return sigsuspend(&none) == -1;
}
static int alarmSigwaitWay(void) {
    sigset_t signals;
    int taken = 0;
    sigemptyset(&signals);
    sigaddset(&signals, SIGALRM);
    sigprocmask(SIG_BLOCK, &signals, NULL);
    alarm((unsigned)duration.tv_sec);
    return sigwait(&signals, &taken) == 0 && taken == SIGALRM;
}
static int sigtimedwaitWay(void) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    sigprocmask(SIG_BLOCK, &signals, NULL);
    return sigtimedwait(&signals, NULL, &duration) == -1 && errno == EAGAIN;
}

static int condition_(clockid_t clock, int isGiven) {
    pthread_condattr_t attributes;
    const struct timespec end = endOn(clock);
    pthread_condattr_init(&attributes);
    if (!isGiven)
        pthread_condattr_setclock(&attributes, clock);
    pthread_cond_init(&condition, &attributes);
    pthread_mutex_lock(&mutex);
    return (isGiven ? pthread_cond_clockwait(&condition, &mutex, clock, &end)
                    : pthread_cond_timedwait(&condition, &mutex, &end)) == ETIMEDOUT;
}
static int condTimedwaitWay(void) {
    return condition_(CLOCK_REALTIME, 0);
}
static int condTimedwaitMonotonicWay(void) {
    return condition_(CLOCK_MONOTONIC, 0);
}
static int condClockwaitWay(void) {
    return condition_(CLOCK_MONOTONIC, 1);
}
static int cndTimedwaitWay(void) {
    cnd_t cnd;
    mtx_t mtx;
    const struct timespec end = endOn(CLOCK_REALTIME);
    cnd_init(&cnd);
    mtx_init(&mtx, mtx_plain);
    mtx_lock(&mtx);
    return cnd_timedwait(&cnd, &mtx, &end) == thrd_timedout;
}
static int mutexTimedlockWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    holder();
    return pthread_mutex_timedlock(&mutex, &end) == ETIMEDOUT;
}
static int mutexClocklockWay(void) {
    const struct timespec end = endOn(CLOCK_MONOTONIC);
    holder();
    return pthread_mutex_clocklock(&mutex, CLOCK_MONOTONIC, &end) == ETIMEDOUT;
}
static mtx_t heldMutex;
static int holdMtx(void *unused) {
    (void)unused;
    mtx_lock(&heldMutex);
    sem_post(&expired);
    for (;;)
        pause();
    return 0;
}
static int mtxTimedlockWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    thrd_t thread;
    sem_init(&expired, 0, 0);
    mtx_init(&heldMutex, mtx_timed);
    thrd_create(&thread, holdMtx, NULL);
    sem_wait(&expired);
    return mtx_timedlock(&heldMutex, &end) == thrd_timedout;
}
static int rwlockTimedrdlockWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    holder();
    return pthread_rwlock_timedrdlock(&lock, &end) == ETIMEDOUT;
}
static int rwlockTimedwrlockWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    holder();
    return pthread_rwlock_timedwrlock(&lock, &end) == ETIMEDOUT;
}
static int rwlockClockrdlockWay(void) {
    const struct timespec end = endOn(CLOCK_MONOTONIC);
    holder();
    return pthread_rwlock_clockrdlock(&lock, CLOCK_MONOTONIC, &end) == ETIMEDOUT;
}
static int rwlockClockwrlockWay(void) {
    const struct timespec end = endOn(CLOCK_MONOTONIC);
    holder();
    return pthread_rwlock_clockwrlock(&lock, CLOCK_MONOTONIC, &end) == ETIMEDOUT;
}
static int semTimedwaitWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    sem_init(&expired, 0, 0);
    return sem_timedwait(&expired, &end) == -1 && errno == ETIMEDOUT;
}
static int semClockwaitWay(void) {
    const struct timespec end = endOn(CLOCK_MONOTONIC);
    sem_init(&expired, 0, 0);
    return sem_clockwait(&expired, CLOCK_MONOTONIC, &end) == -1 && errno == ETIMEDOUT;
}
static int semtimedopWay(void) {
    const int set = semget(IPC_PRIVATE, 1, 0600);
    struct sembuf operation = {0, -1, 0};
    const int result = semtimedop(set, &operation, 1, &duration);
    const int error = errno;
    semctl(set, 0, IPC_RMID);
    return result == -1 && error == EAGAIN;
}
static int timedjoinWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    return pthread_timedjoin_np(holder(), NULL, &end) == ETIMEDOUT;
}
static int clockjoinWay(void) {
    const struct timespec end = endOn(CLOCK_MONOTONIC);
    return pthread_clockjoin_np(holder(), NULL, CLOCK_MONOTONIC, &end) == ETIMEDOUT;
}
static int mqTimedreceiveWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    char message[1];
    return mq_timedreceive(queueOf(0), message, sizeof(message), NULL, &end) == -1 &&
           errno == ETIMEDOUT;
}
static int mqTimedsendWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    return mq_timedsend(queueOf(1), "x", 1, 0, &end) == -1 && errno == ETIMEDOUT;
}

static int isOver(ssize_t result) {
    return result == -1 && errno == EAGAIN;
}
static int socketReadWay(void) {
    char data;
    return isOver(read(silentSocket(SO_RCVTIMEO), &data, 1));
}
static int socketReadChkWay(void) {
    char data;
    return isOver(__read_chk(silentSocket(SO_RCVTIMEO), &data, 1, 1));
}
static int readvWay(void) {
    char data;
    const struct iovec part = {&data, 1};
    return isOver(readv(silentSocket(SO_RCVTIMEO), &part, 1));
}
static int recvWay(void) {
    char data;
    return isOver(recv(silentSocket(SO_RCVTIMEO), &data, 1, 0));
}
static int recvChkWay(void) {
    char data;
    return isOver(__recv_chk(silentSocket(SO_RCVTIMEO), &data, 1, 1, 0));
}
static int recvfromWay(void) {
    char data;
    return isOver(recvfrom(silentSocket(SO_RCVTIMEO), &data, 1, 0, NULL, NULL));
}
static int recvfromChkWay(void) {
    char data;
    return isOver(__recvfrom_chk(silentSocket(SO_RCVTIMEO), &data, 1, 1, 0, NULL, NULL));
}
static int recvmsgWay(void) {
    char data;
    struct iovec part = {&data, 1};
    struct msghdr message = {0};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    return isOver(recvmsg(silentSocket(SO_RCVTIMEO), &message, 0));
}
static int recvmmsgWay(void) {
    char data;
    struct iovec part = {&data, 1};
    struct mmsghdr message = {0};
    message.msg_hdr.msg_iov = &part;
    message.msg_hdr.msg_iovlen = 1;
    return isOver(recvmmsg(silentSocket(SO_RCVTIMEO), &message, 1, 0, NULL));
}
static int acceptWay(void) {
    return isOver(accept(silentListener(), NULL, NULL));
}
static int accept4Way(void) {
    return isOver(accept4(silentListener(), NULL, NULL, 0));
}
static int socketWriteWay(void) {
    return isOver(write(fullSocket(), "x", 1));
}
static int writevWay(void) {
    char data = 'x';
    const struct iovec part = {&data, 1};
    return isOver(writev(fullSocket(), &part, 1));
}
static int sendWay(void) {
    return isOver(send(fullSocket(), "x", 1, 0));
}
static int sendtoWay(void) {
    return isOver(sendto(fullSocket(), "x", 1, 0, NULL, 0));
}
static int sendmsgWay(void) {
    char data = 'x';
    struct iovec part = {&data, 1};
    struct msghdr message = {0};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    return isOver(sendmsg(fullSocket(), &message, 0));
}
static int aioSuspendWay(void) {
    char data;
    struct aiocb request = {0};
    const struct aiocb *requests[] = {&request};
    request.aio_fildes = silentPipe();
    request.aio_buf = &data;
    request.aio_nbytes = 1;
    aio_read(&request);
    return isOver(aio_suspend(requests, 1, &duration));
}

/* By the kernel's numbers, as the run-time libraries of languages wait. */
static int futexOver(int operation, const struct timespec *time) {
    int word = 0;
    return syscall(SYS_futex, &word, operation, 0, time, NULL, FUTEX_BITSET_MATCH_ANY) == -1 &&
           errno == ETIMEDOUT;
}
static int futexWaitWay(void) {
    return futexOver(FUTEX_WAIT_PRIVATE, &duration);
}
static int futexBitsetWay(void) {
    const struct timespec end = endOn(CLOCK_MONOTONIC);
    return futexOver(FUTEX_WAIT_BITSET_PRIVATE, &end);
}
static int futexBitsetRealtimeWay(void) {
    const struct timespec end = endOn(CLOCK_REALTIME);
    return futexOver(FUTEX_WAIT_BITSET | FUTEX_CLOCK_REALTIME, &end);
}
static int rawNanosleepWay(void) {
    return syscall(SYS_nanosleep, &duration, NULL) == 0;
}
static int rawClockNanosleepWay(void) {
    struct timespec end;
    syscall(SYS_clock_gettime, CLOCK_MONOTONIC, &end);
    end.tv_sec += duration.tv_sec;
    end.tv_nsec += duration.tv_nsec;
    return syscall(SYS_clock_nanosleep, CLOCK_MONOTONIC, TIMER_ABSTIME, &end, NULL) == 0;
}

static double asSeconds(void) {
    return (double)duration.tv_sec + (double)duration.tv_nsec / 1e9;
}
static int futureWaitForWay(void) {
    return waitForFuture(asSeconds());
}
static int futureWaitUntilWay(void) {
    return waitForFutureUntil(asSeconds());
}
static int semaphoreAcquireWay(void) {
    return waitForSemaphore(asSeconds());
}

/* What a wait goes by. */
enum Follows {
    PACES = 1,   /* the board's clock where it is scaled or stepped */
    VIRTUAL = 2, /* the board's where it is virtual */
    HOST = 4,    /* the host's where it is virtual */
    REAL = 8     /* and emulators do not have it */
};

static const struct Way {
    const char *name;
    int (*wait)(void);
    int follows;
} kWays[] = {
    {"sleep", sleepWay, PACES | VIRTUAL},
    {"usleep", usleepWay, PACES | VIRTUAL},
    {"nanosleep", nanosleepWay, PACES | VIRTUAL},
    {"clock_nanosleep, CLOCK_MONOTONIC", clockNanosleepWay, PACES | VIRTUAL},
    {"clock_nanosleep, CLOCK_REALTIME", clockNanosleepRealtimeWay, PACES | VIRTUAL},
    {"clock_nanosleep, CLOCK_MONOTONIC, TIMER_ABSTIME", untilMonotonicWay, PACES | HOST},
    {"clock_nanosleep, CLOCK_REALTIME, TIMER_ABSTIME", untilRealtimeWay, PACES | HOST},
    {"clock_nanosleep, CLOCK_BOOTTIME, TIMER_ABSTIME", untilBoottimeWay, PACES | HOST},
    {"thrd_sleep", thrdSleepWay, PACES | HOST},
    {"poll", pollWay, PACES | HOST},
    {"poll without descriptors", pollNothingWay, PACES | HOST},
    {"poll, fortified", pollChkWay, PACES | HOST},
    {"ppoll", ppollWay, PACES | HOST},
    {"ppoll, fortified", ppollChkWay, PACES | HOST},
    {"select", selectWay, PACES | HOST},
    {"select without descriptors", selectNothingWay, PACES | HOST},
    {"pselect", pselectWay, PACES | HOST},
    {"epoll_wait", epollWaitWay, PACES | HOST},
    {"epoll_pwait", epollPwaitWay, PACES | HOST},
    {"epoll_pwait2", epollPwait2Way, PACES | HOST | REAL},
    {"timerfd, CLOCK_MONOTONIC: read", timerfdReadWay, PACES | HOST},
    {"timerfd, CLOCK_MONOTONIC: read, fortified", timerfdReadChkWay, PACES | HOST},
    {"timerfd, CLOCK_REALTIME: read", timerfdRealtimeWay, PACES | HOST},
    {"timerfd, CLOCK_BOOTTIME: read", timerfdBoottimeWay, PACES | HOST},
    {"timerfd, CLOCK_MONOTONIC, TFD_TIMER_ABSTIME: read", timerfdUntilMonotonicWay, PACES | HOST},
    {"timerfd, CLOCK_REALTIME, TFD_TIMER_ABSTIME: read", timerfdUntilRealtimeWay, PACES | HOST},
    {"timerfd: poll", timerfdPollWay, PACES | HOST},
    {"timerfd: select", timerfdSelectWay, PACES | HOST},
    {"timerfd: epoll_wait", timerfdEpollWay, PACES | HOST},
    {"timerfd with an interval: read", timerfdIntervalWay, PACES | HOST},
    {"timer_create, CLOCK_MONOTONIC: sigwaitinfo", timerMonotonicWay, PACES | HOST},
    {"timer_create, CLOCK_REALTIME: sigwaitinfo", timerRealtimeWay, PACES | HOST},
    {"timer_create, CLOCK_MONOTONIC, TIMER_ABSTIME: sigwaitinfo", timerUntilMonotonicWay,
     PACES | HOST},
    {"timer_create, CLOCK_REALTIME, TIMER_ABSTIME: sigwaitinfo", timerUntilRealtimeWay,
     PACES | HOST},
    {"timer_create, SIGEV_THREAD: sem_timedwait", timerThreadWay, PACES | HOST | REAL},
    {"setitimer: pause", setitimerWay, PACES | HOST},
    {"alarm: pause", alarmWay, PACES | HOST},
    {"ualarm: sigsuspend", ualarmWay, PACES | HOST},
    {"alarm: sigsuspend", alarmSigsuspendWay, PACES | HOST},
    {"alarm: sigwait", alarmSigwaitWay, PACES | HOST},
    {"sigtimedwait", sigtimedwaitWay, PACES | HOST},
    {"pthread_cond_timedwait", condTimedwaitWay, PACES | HOST},
    {"pthread_cond_timedwait, CLOCK_MONOTONIC", condTimedwaitMonotonicWay, PACES | HOST},
    {"pthread_cond_clockwait", condClockwaitWay, PACES | HOST},
    {"cnd_timedwait", cndTimedwaitWay, PACES | HOST},
    {"pthread_mutex_timedlock", mutexTimedlockWay, PACES | HOST},
    {"pthread_mutex_clocklock", mutexClocklockWay, PACES | HOST},
    {"mtx_timedlock", mtxTimedlockWay, PACES | HOST},
    {"pthread_rwlock_timedrdlock", rwlockTimedrdlockWay, PACES | HOST},
    {"pthread_rwlock_timedwrlock", rwlockTimedwrlockWay, PACES | HOST},
    {"pthread_rwlock_clockrdlock", rwlockClockrdlockWay, PACES | HOST},
    {"pthread_rwlock_clockwrlock", rwlockClockwrlockWay, PACES | HOST},
    {"sem_timedwait", semTimedwaitWay, PACES | HOST},
    {"sem_clockwait", semClockwaitWay, PACES | HOST},
    {"semtimedop", semtimedopWay, PACES | HOST},
    {"pthread_timedjoin_np", timedjoinWay, PACES | HOST},
    {"pthread_clockjoin_np", clockjoinWay, PACES | HOST},
    {"mq_timedreceive", mqTimedreceiveWay, PACES | HOST},
    {"mq_timedsend", mqTimedsendWay, PACES | HOST},
    {"SO_RCVTIMEO: read", socketReadWay, PACES | HOST},
    {"SO_RCVTIMEO: read, fortified", socketReadChkWay, PACES | HOST},
    {"SO_RCVTIMEO: readv", readvWay, PACES | HOST},
    {"SO_RCVTIMEO: recv", recvWay, PACES | HOST},
    {"SO_RCVTIMEO: recv, fortified", recvChkWay, PACES | HOST},
    {"SO_RCVTIMEO: recvfrom", recvfromWay, PACES | HOST},
    {"SO_RCVTIMEO: recvfrom, fortified", recvfromChkWay, PACES | HOST},
    {"SO_RCVTIMEO: recvmsg", recvmsgWay, PACES | HOST},
    {"SO_RCVTIMEO: recvmmsg", recvmmsgWay, PACES | HOST},
    {"SO_RCVTIMEO: accept", acceptWay, PACES | HOST},
    {"SO_RCVTIMEO: accept4", accept4Way, PACES | HOST},
    {"SO_SNDTIMEO: write", socketWriteWay, PACES | HOST},
    {"SO_SNDTIMEO: writev", writevWay, PACES | HOST},
    {"SO_SNDTIMEO: send", sendWay, PACES | HOST},
    {"SO_SNDTIMEO: sendto", sendtoWay, PACES | HOST},
    {"SO_SNDTIMEO: sendmsg", sendmsgWay, PACES | HOST},
    {"aio_suspend", aioSuspendWay, PACES | HOST},
    {"futex, FUTEX_WAIT", futexWaitWay, PACES | HOST},
    {"futex, FUTEX_WAIT_BITSET", futexBitsetWay, PACES | HOST},
    {"futex, FUTEX_WAIT_BITSET, FUTEX_CLOCK_REALTIME", futexBitsetRealtimeWay, PACES | HOST},
    {"syscall, SYS_nanosleep", rawNanosleepWay, PACES | HOST},
    {"syscall, SYS_clock_nanosleep, TIMER_ABSTIME", rawClockNanosleepWay, PACES | HOST},
    {"std::future::wait_for", futureWaitForWay, PACES | HOST},
    {"std::future::wait_until, system_clock", futureWaitUntilWay, PACES | HOST},
    {"std::counting_semaphore::try_acquire_for", semaphoreAcquireWay, PACES | HOST},
};

/* The C library's own way to the kernel, past all that stands before it. */
static long (*hostCall)(long number, ...);

static double hostNow(void) {
    struct {
        int64_t seconds, ns;
    } now;
#ifdef SYS_clock_gettime64
    hostCall(SYS_clock_gettime64, CLOCK_MONOTONIC, &now);
#else
    hostCall(SYS_clock_gettime, CLOCK_MONOTONIC, &now);
#endif
    return (double)now.seconds + (double)now.ns / 1e9;
}

static double ownNow(void) {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return (double)now.tv_sec + (double)now.tv_nsec / 1e9;
}

/* Tries one way in a process of its own, and prints what it was like in one piece. */
static void try(const struct Way *way) {
    char line[160];
    const double host = hostNow(), own = ownNow();
    const int isRight = way->wait();
    const int length = snprintf(line, sizeof(line), "%s\t%s\t%.9f\t%.9f\n", way->name,
                                isRight ? "right" : "wrong", ownNow() - own, hostNow() - host);
    _exit(write(STDOUT_FILENO, line, (size_t)length) == length ? 0 : 1);
}

int main(int argc, char **argv) {
    const size_t count = sizeof(kWays) / sizeof(kWays[0]);
    if (argc == 2 && strcmp(argv[1], "list") == 0) {
        for (size_t i = 0; i < count; ++i)
            printf("%d\t%s\n", kWays[i].follows, kWays[i].name);
        return 0;
    }
    if (argc != 3 && argc != 4)
        return 2;
    const struct timespec now = {argc == 4 ? strtol(argv[3], NULL, 10) : 0, 0};
    if (argc == 4 && getenv("VBOARD_DIR") != NULL && clock_settime(CLOCK_REALTIME, &now) != 0)
        return 1;
    *(void **)&hostCall = dlsym(dlopen("libc.so.6", RTLD_LAZY), "syscall");
    fcntl(STDOUT_FILENO, F_SETFL, O_APPEND); /* processes that write at once write one by one */
    const int follows = atoi(argv[1]);
    const double seconds = strtod(argv[2], NULL);
    duration.tv_sec = (time_t)seconds;
    duration.tv_nsec = (long)((seconds - (double)duration.tv_sec) * 1e9);
    for (size_t i = 0; i < count; ++i) {
        if ((kWays[i].follows & follows & ~REAL) != 0 &&
            (kWays[i].follows & REAL & ~follows) == 0 && fork() == 0)
            try(&kWays[i]);
    }
    while (wait(NULL) > 0) {
    }
    return 0;
}
