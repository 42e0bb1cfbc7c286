#pragma once
// The kernel module's side of a request: takes the record apart, asks the devices, answers.

#include "bsp.h"
#include "virtual_board/board/board.h"

namespace vb {

/**
 * Serves one ioctl. The slots' addresses are those of the calling process.
 * Answers 0, or the errno with which the ioctl itself fails.
 */
int serveRequest(Board &board, const Sender &sender, uint32_t code, BspIoctlRecord &record);

} // namespace vb
