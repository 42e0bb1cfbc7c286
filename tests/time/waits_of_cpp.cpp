// Waits of C++'s library that ask the kernel past the C library. Each is for what does not come,
// and returns whether it ended as it should.

#include <chrono>
#include <future>
#include <semaphore>

namespace {

std::chrono::nanoseconds lengthOf(double seconds) {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
        std::chrono::duration<double>(seconds));
}

} // namespace

extern "C" {
int waitForFuture(double seconds);
int waitForFutureUntil(double seconds);
int waitForSemaphore(double seconds);
}

int waitForFuture(double seconds) {
    std::promise<void> promise;
    return promise.get_future().wait_for(lengthOf(seconds)) == std::future_status::timeout;
}

int waitForFutureUntil(double seconds) {
    std::promise<void> promise;
    return promise.get_future().wait_until(std::chrono::system_clock::now() + lengthOf(seconds)) ==
           std::future_status::timeout;
}

int waitForSemaphore(double seconds) {
    std::counting_semaphore<1> semaphore(0);
    return !semaphore.try_acquire_for(lengthOf(seconds));
}
