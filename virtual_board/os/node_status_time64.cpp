// The names that examining files has in 32-bit programs with 64-bit time.

#define _FILE_OFFSET_BITS 64
#define _TIME_BITS 64

#include <bits/timesize.h>

#if __TIMESIZE == 32

#include "virtual_board/os/node_status.h"

using Status = struct stat *;

VB_SEAM_STAT(__stat64_time64, vb::LastLink::Followed, Status)
VB_SEAM_STAT(__lstat64_time64, vb::LastLink::Kept, Status)
VB_SEAM_FSTAT(__fstat64_time64, Status)
VB_SEAM_STATAT(__fstatat64_time64, Status)

#endif
