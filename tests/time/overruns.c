/*
 * A timer of POSIX that expires each second, whose signal is taken after 5.5 seconds, and after 1
 * more. It prints the overruns of both.
 */
#define _GNU_SOURCE
#include <signal.h>
#include <stdio.h>
#include <time.h>
#include <unistd.h>

int main(void) {
    sigset_t signals;
    timer_t timer;
    struct sigevent event = {0};
    const struct itimerspec setting = {{1, 0}, {1, 0}};
    sigemptyset(&signals);
    sigaddset(&signals, SIGRTMIN);
    sigprocmask(SIG_BLOCK, &signals, NULL);
    event.sigev_notify = SIGEV_SIGNAL;
    event.sigev_signo = SIGRTMIN;
    fputs("ready\n", stderr);
    timer_create(CLOCK_MONOTONIC, &event, &timer);
    timer_settime(timer, 0, &setting, NULL);
    usleep(5500000);
    for (int i = 0; i < 2; ++i) {
        const int taken = sigwaitinfo(&signals, NULL);
        printf("%s: %d overruns\n", taken == SIGRTMIN ? "taken" : "not taken",
               timer_getoverrun(timer));
    }
    return 0;
}
