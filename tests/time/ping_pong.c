/*
 * Two threads that send each other events, and wait for them with a time-out that none needs.
 *
 * usage: ping_pong condition|semaphore|poll|select|epoll|signal|queue|futex ROUNDS
 */
#define _GNU_SOURCE
#include <errno.h>
#include <linux/futex.h>
#include <mqueue.h>
#include <poll.h>
#include <pthread.h>
#include <semaphore.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/select.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

enum { kPlayers = 2, kTimeoutSeconds = 1000000 };

static int rounds;

static struct timespec farEnd(void) {
    struct timespec end;
    clock_gettime(CLOCK_REALTIME, &end);
    end.tv_sec += kTimeoutSeconds;
    return end;
}

/* The turn of a player; each way tells the other player, and waits for the other. */

static pthread_mutex_t mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t condition[kPlayers] = {PTHREAD_COND_INITIALIZER, PTHREAD_COND_INITIALIZER};
static int told[kPlayers];

static void tellCondition(int player) {
    pthread_mutex_lock(&mutex);
    ++told[player];
    pthread_mutex_unlock(&mutex);
    pthread_cond_signal(&condition[player]); /* when nobody holds the mutex */
}
static int awaitCondition(int player) {
    int result = 0;
    const struct timespec end = farEnd();
    pthread_mutex_lock(&mutex);
    while (told[player] == 0 && result == 0)
        result = pthread_cond_timedwait(&condition[player], &mutex, &end);
    told[player] -= result == 0;
    pthread_mutex_unlock(&mutex);
    return result == 0;
}

static sem_t semaphore[kPlayers];
static void tellSemaphore(int player) {
    sem_post(&semaphore[player]);
}
static int awaitSemaphore(int player) {
    const struct timespec end = farEnd();
    return sem_timedwait(&semaphore[player], &end) == 0;
}

static int event[kPlayers], watch[kPlayers];
static void tellEvent(int player) {
    eventfd_write(event[player], 1);
}
static int takeEvent(int player) {
    eventfd_t value = 0;
    return eventfd_read(event[player], &value) == 0 && value == 1;
}
static int awaitPoll(int player) {
    struct pollfd entry = {event[player], POLLIN, 0};
    return poll(&entry, 1, kTimeoutSeconds * 1000) == 1 && takeEvent(player);
}
static int awaitSelect(int player) {
    struct timeval time = {kTimeoutSeconds, 0};
    fd_set set;
    FD_ZERO(&set);
    FD_SET(event[player], &set);
    return select(event[player] + 1, &set, NULL, NULL, &time) == 1 && time.tv_sec > 0 &&
           takeEvent(player);
}
static int awaitEpoll(int player) {
    struct epoll_event ready;
    return epoll_wait(watch[player], &ready, 1, kTimeoutSeconds * 1000) == 1 && takeEvent(player);
}

static pthread_t thread[kPlayers];
static sigset_t signals;
static void tellSignal(int player) {
    pthread_kill(thread[player], SIGUSR1);
}
static int awaitSignal(int player) {
    const struct timespec time = {kTimeoutSeconds, 0};
    (void)player;
    return sigtimedwait(&signals, NULL, &time) == SIGUSR1;
}

static mqd_t queue[kPlayers];
static void tellQueue(int player) {
    mq_send(queue[player], "x", 1, 0);
}
static int awaitQueue(int player) {
    char message[1];
    const struct timespec end = farEnd();
    return mq_timedreceive(queue[player], message, sizeof(message), NULL, &end) == 1;
}

static int word[kPlayers];
static void tellFutex(int player) {
    __atomic_fetch_add(&word[player], 1, __ATOMIC_SEQ_CST);
    syscall(SYS_futex, &word[player], FUTEX_WAKE_PRIVATE, 1, NULL, NULL, 0);
}
static int awaitFutex(int player) {
    const struct timespec time = {kTimeoutSeconds, 0};
    while (__atomic_load_n(&word[player], __ATOMIC_SEQ_CST) == 0) {
        if (syscall(SYS_futex, &word[player], FUTEX_WAIT_PRIVATE, 0, &time, NULL, 0) != 0 &&
            errno != EAGAIN)
            return 0;
    }
    __atomic_fetch_sub(&word[player], 1, __ATOMIC_SEQ_CST);
    return 1;
}

static const struct Way {
    const char *name;
    void (*tell)(int player);
    int (*await)(int player);
} kWays[] = {{"condition", tellCondition, awaitCondition},
             {"semaphore", tellSemaphore, awaitSemaphore},
             {"poll", tellEvent, awaitPoll},
             {"select", tellEvent, awaitSelect},
             {"epoll", tellEvent, awaitEpoll},
             {"signal", tellSignal, awaitSignal},
             {"queue", tellQueue, awaitQueue},
             {"futex", tellFutex, awaitFutex}};

static const struct Way *way;

static void *play(void *player) {
    const int own = player != NULL;
    for (int round = 0; round < rounds; ++round) {
        if (own == 0)
            way->tell(1);
        if (!way->await(own)) {
            printf("round %d: nothing came\n", round);
            exit(1);
        }
        if (own == 1)
            way->tell(0);
    }
    return NULL;
}

static void prepare(void) {
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &signals, NULL);
    for (int player = 0; player < kPlayers; ++player) {
        char name[64];
        struct epoll_event ready = {EPOLLIN, {0}};
        struct mq_attr attributes = {0};
        attributes.mq_maxmsg = 1;
        attributes.mq_msgsize = 1;
        snprintf(name, sizeof(name), "/ping_pong.%d.%d", (int)getpid(), player);
        queue[player] = mq_open(name, O_RDWR | O_CREAT, 0600, &attributes);
        mq_unlink(name);
        sem_init(&semaphore[player], 0, 0);
        event[player] = eventfd(0, 0);
        watch[player] = epoll_create1(0);
        epoll_ctl(watch[player], EPOLL_CTL_ADD, event[player], &ready);
    }
}

int main(int argc, char **argv) {
    if (argc != 3)
        return 2;
    rounds = atoi(argv[2]);
    for (size_t i = 0; i < sizeof(kWays) / sizeof(kWays[0]); ++i) {
        if (strcmp(kWays[i].name, argv[1]) == 0)
            way = &kWays[i];
    }
    if (way == NULL)
        return 2;
    prepare();
    thread[0] = pthread_self();
    if (pthread_create(&thread[1], NULL, play, &rounds) != 0)
        return 2;
    play(NULL);
    pthread_join(thread[1], NULL);
    puts("done");
    return 0;
}
