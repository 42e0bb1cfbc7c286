#include "tests/support/host_clock.h"

#include <cstdint>
#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

void protectHostClock() {
    // Of root alone, who would get it back with the next program.
    prctl(PR_CAPBSET_DROP, CAP_SYS_TIME, 0, 0, 0);
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[_LINUX_CAPABILITY_U32S_3] = {};
    if (syscall(SYS_capget, &header, data) != 0)
        return;
    constexpr uint32_t kRight = 1u << CAP_SYS_TIME; // one of the first 32
    data[0].effective &= ~kRight;
    data[0].permitted &= ~kRight;
    data[0].inheritable &= ~kRight;
    syscall(SYS_capset, &header, data);
}
