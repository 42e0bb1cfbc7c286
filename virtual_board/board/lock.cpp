#include "virtual_board/board/lock.h"

#include "virtual_board/board/kernel.h"

#include <atomic>
#include <cerrno>
#include <pthread.h>
#include <sys/file.h>

namespace vb {

void blockSignals(sigset_t &before) {
    sigset_t all;
    sigfillset(&all);
    for (const int own : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGABRT, SIGSYS})
        sigdelset(&all, own);
    pthread_sigmask(SIG_BLOCK, &all, &before);
}

namespace {

// Within the process. A child that is forked while another thread works on the board would go on
// with a descriptor of the lock, and hold it for as long as it lives when its parent is killed.
pthread_mutex_t ownProcess = PTHREAD_MUTEX_INITIALIZER;
pthread_once_t forksArePrepared = PTHREAD_ONCE_INIT;

// A thread that forks, and its signals before that. Its handlers wait; what the program itself does
// around a fork may come for the board meanwhile. The mutex guards them.
pthread_t forker;
std::atomic<bool> isForking;
sigset_t signalsOfForker;

bool isForker() {
    return isForking.load(std::memory_order_acquire) && pthread_equal(forker, pthread_self()) != 0;
}

void holdBack() {
    sigset_t before;
    blockSignals(before);
    pthread_mutex_lock(&ownProcess);
    signalsOfForker = before;
    forker = pthread_self();
    isForking.store(true, std::memory_order_release);
}

void goOn() {
    const sigset_t before = signalsOfForker;
    isForking.store(false, std::memory_order_release);
    pthread_mutex_unlock(&ownProcess);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void prepareForks() {
    pthread_atfork(holdBack, goOn, goOn);
}

} // namespace

BoardLock::BoardLock(const BoardFolder &folder, Use use) : folder_(folder), use_(use) {
    // Both: a cancellation that is on its way already looks at the type alone.
    pthread_setcanceltype(PTHREAD_CANCEL_DEFERRED, &cancelType_);
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancelState_);
    blockSignals(signals_);
    pthread_once(&forksArePrepared, prepareForks);
    take();
}

BoardLock::~BoardLock() {
    giveBack();
    pthread_sigmask(SIG_SETMASK, &signals_, nullptr);
    pthread_setcancelstate(cancelState_, nullptr);
    pthread_setcanceltype(cancelType_, nullptr);
}

void BoardLock::take() {
    if (!isForker())
        pthread_mutex_lock(&ownProcess);
    fd_ = kernel::openBeyondLimit(AT_FDCWD, folder_.lockPath(), O_RDWR);
    while (fd_ >= 0 && flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
}

void BoardLock::giveBack() {
    if (fd_ >= 0) {
        // Explicitly: a process that vfork has made a moment ago shares the descriptor until it
        // executes its program.
        flock(fd_, LOCK_UN);
        kernel::close(fd_);
        if (use_ == Use::Changes)
            folder_.tellOfChange();
    }
    fd_ = -1;
    if (!isForker())
        pthread_mutex_unlock(&ownProcess);
}

} // namespace vb
