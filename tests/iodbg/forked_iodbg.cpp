#include "tests/iodbg/forked_iodbg.h"

#include "support/owned.h"
#include "tests/iodbg/fork_server.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>

namespace {

[[noreturn]] void fail(const char *step) {
    throw std::runtime_error(std::string("the server of iodbg: ") + step + ": " +
                             std::strerror(errno));
}

mode_t fileMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

/** Words as the server takes them. */
std::string joined(const std::vector<std::string> &words) {
    std::string text;
    for (const std::string &word : words)
        text.append(word.c_str(), word.size() + 1);
    return text;
}

void send(int socket, const ForkRequest &request, const ForkDescriptors &descriptors) {
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(descriptors))] = {};
    iovec part = {const_cast<ForkRequest *>(&request), sizeof(request)};
    msghdr message = {};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof(control);
    cmsghdr *header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(sizeof(descriptors));
    std::memcpy(CMSG_DATA(header), &descriptors, sizeof(descriptors));
    if (sendmsg(socket, &message, MSG_NOSIGNAL) != static_cast<ssize_t>(sizeof(request)))
        fail("asking");
}

} // namespace

bool ForkedIodbg::isThere() {
    return *BSP_TEST_FORK_SERVER != '\0';
}

ForkedIodbg::ForkedIodbg() {
    const std::string board = folder_.path() + "/board";
    vb::FolderError error = {};
    vb::BoardOptions options;
    options.devId = 0x0709;
    if (!vb::createBoard(board, options, error))
        throw std::runtime_error(error.text);
    int sockets[2];
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
        fail("a socket");
    socket_ = sockets[0];
    fcntl(sockets[1], F_SETFD, 0);
    Environment environment = boardEnvironment(board);
    for (std::string &variable : environment) {
        if (variable.starts_with("LD_PRELOAD="))
            variable += ":" BSP_TEST_FORK_SERVER;
    }
    environment.emplace_back("LD_BIND_NOW=1"); // once, in place of each time
    environment.push_back(std::string(kServerVariable) + "=" + std::to_string(sockets[1]));
    server_ = std::make_unique<Process>(Words{builtProgram("iodbg")}, environment);
    close(sockets[1]);
}

ForkedIodbg::~ForkedIodbg() {
    close(socket_);
}

ProcessResult ForkedIodbg::run(const Words &argv, const Environment &environment,
                               const std::string &input) const {
    const StreamFile in(input), out, err;
    const bsp::Descriptor folder(open(".", O_PATH | O_CLOEXEC));
    const Environment variables = withOurs(environment);
    const std::string text = joined(argv) + joined(variables);
    const ForkRequest request = {static_cast<uint32_t>(text.size()),
                                 static_cast<uint32_t>(argv.size()),
                                 static_cast<uint32_t>(variables.size()), fileMask()};
    send(socket_, request, {{in.descriptor(), out.descriptor(), err.descriptor()}, folder.get()});
    if (::send(socket_, text.data(), text.size(), MSG_NOSIGNAL) !=
        static_cast<ssize_t>(text.size()))
        fail("asking");
    int status = 0;
    if (recv(socket_, &status, sizeof(status), MSG_WAITALL) != static_cast<ssize_t>(sizeof(status)))
        throw std::runtime_error("the server of iodbg has ended: " + server_->errors());
    return {exitCodeOf(status), out.content(), err.content()};
}
