// Transfers on sockets, whose time-outs are in the programs' time. Those of messages that can bring
// descriptors are with these.

#include "virtual_board/os/descriptor_waits.h"
#include "virtual_board/os/seam.h"

#include <sys/socket.h>

using vb::Transfer;

VB_SEAM(ssize_t, recv, int socket, void *data, size_t length, int flags) {
    return vb::awaitMessage(socket, flags) ? VB_NEXT(recv)(socket, data, length, flags) : -1;
}

VB_SEAM(ssize_t, __recv_chk, int socket, void *data, size_t length, size_t room, int flags) {
    return vb::awaitMessage(socket, flags) ? VB_NEXT(__recv_chk)(socket, data, length, room, flags)
                                           : -1;
}

VB_SEAM(ssize_t, recvfrom, int socket, void *data, size_t length, int flags, sockaddr *address,
        socklen_t *size) {
    return vb::awaitMessage(socket, flags)
               ? VB_NEXT(recvfrom)(socket, data, length, flags, address, size)
               : -1;
}

VB_SEAM(ssize_t, __recvfrom_chk, int socket, void *data, size_t length, size_t room, int flags,
        sockaddr *address, socklen_t *size) {
    return vb::awaitMessage(socket, flags)
               ? VB_NEXT(__recvfrom_chk)(socket, data, length, room, flags, address, size)
               : -1;
}

VB_SEAM(int, accept, int socket, sockaddr *address, socklen_t *size) {
    return vb::awaitTransfer(socket, Transfer::In) ? VB_NEXT(accept)(socket, address, size) : -1;
}

VB_SEAM(int, accept4, int socket, sockaddr *address, socklen_t *size, int flags) {
    return vb::awaitTransfer(socket, Transfer::In) ? VB_NEXT(accept4)(socket, address, size, flags)
                                                   : -1;
}

VB_SEAM(ssize_t, send, int socket, const void *data, size_t length, int flags) {
    return vb::awaitMessage(socket, flags, Transfer::Out)
               ? VB_NEXT(send)(socket, data, length, flags)
               : -1;
}

VB_SEAM(ssize_t, sendto, int socket, const void *data, size_t length, int flags,
        const sockaddr *address, socklen_t size) {
    return vb::awaitMessage(socket, flags, Transfer::Out)
               ? VB_NEXT(sendto)(socket, data, length, flags, address, size)
               : -1;
}

#define VB_SEAM_SENDMSG(symbol)                                                                    \
    VB_SEAM(ssize_t, symbol, int socket, const msghdr *message, int flags) {                       \
        return vb::awaitMessage(socket, flags, Transfer::Out)                                      \
                   ? VB_NEXT(symbol)(socket, message, flags)                                       \
                   : -1;                                                                           \
    }
VB_SEAM_SENDMSG(sendmsg)
VB_SEAM_SENDMSG(__sendmsg64)
