#include "virtual_board/board/lock.h"

#include "virtual_board/board/kernel.h"

#include <cerrno>
#include <pthread.h>
#include <sys/file.h>

namespace vb {

namespace {

// Within the process. A child that is forked while another thread works on the board would go on
// with a descriptor of the lock, and hold it for as long as it lives when its parent is killed.
pthread_mutex_t ownProcess = PTHREAD_MUTEX_INITIALIZER;
pthread_once_t forksArePrepared = PTHREAD_ONCE_INIT;

void holdBack() {
    pthread_mutex_lock(&ownProcess);
}

void goOn() {
    pthread_mutex_unlock(&ownProcess);
}

void prepareForks() {
    pthread_atfork(holdBack, goOn, goOn);
}

/** Signals that a program sends to itself by what it does wrong come through. */
void blockSignals(sigset_t &before) {
    sigset_t all;
    sigfillset(&all);
    for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
        sigdelset(&all, own);
    pthread_sigmask(SIG_BLOCK, &all, &before);
}

} // namespace

BoardLock::BoardLock(const BoardFolder &folder) {
    pthread_once(&forksArePrepared, prepareForks);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState_);
    blockSignals(signals_);
    pthread_mutex_lock(&ownProcess);
    fd_ = kernel::open(folder.lockPath(), O_RDWR);
    while (fd_ >= 0 && flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

BoardLock::~BoardLock() {
    if (fd_ >= 0) {
        // Explicitly: a process that vfork has made a moment ago shares the descriptor until it
        // executes its program.
        flock(fd_, LOCK_UN);
        kernel::close(fd_);
    }
    pthread_mutex_unlock(&ownProcess);
    pthread_sigmask(SIG_SETMASK, &signals_, nullptr);
    pthread_setcancelstate(cancelState_, nullptr);
}

} // namespace vb
