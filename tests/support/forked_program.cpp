#include "tests/support/forked_program.h"

#include "support/owned.h"
#include "tests/support/fork_server.h"
#include "tests/support/virtual_board_test.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <optional>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

using Words = std::vector<std::string>;

[[noreturn]] void fail(const char *step) {
    throw std::runtime_error(std::string("a server of programs: ") + step + ": " +
                             std::strerror(errno));
}

mode_t fileMask() {
    const mode_t mask = umask(0);
    umask(mask);
    return mask;
}

/** Words as the server takes them. */
std::string joined(const Words &words) {
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

constexpr char kBoardVariable[] = "VBOARD_DIR=";

/** What a server needs that is on a board: one that no other program is on. */
class ServersBoard {
  public:
    ServersBoard() {
        vb::FolderError error = {};
        vb::BoardOptions options;
        options.devId = 0x0709;
        if (!vb::createBoard(path(), options, error))
            throw std::runtime_error(error.text);
    }

    Environment environment() const { return boardEnvironment(path()); }

  private:
    std::string path() const { return folder_.path() + "/board"; }

    TemporaryFolder folder_;
};

/** A program that forks for each of its command lines. */
class ForkServer {
  public:
    ForkServer(const std::string &program, bool isOnBoard) {
        if (isOnBoard)
            board_.emplace();
        int sockets[2];
        if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets) != 0)
            fail("a socket");
        socket_ = sockets[0];
        fcntl(sockets[1], F_SETFD, 0);
        Environment environment = preloading(board_ ? board_->environment() : Environment{});
        environment.emplace_back("LD_BIND_NOW=1"); // once, in place of each time
        environment.push_back(std::string(kServerVariable) + "=" + std::to_string(sockets[1]));
        server_.emplace(Words{program}, environment);
        close(sockets[1]);
    }
    ForkServer(const ForkServer &) = delete;
    ForkServer &operator=(const ForkServer &) = delete;
    ~ForkServer() { close(socket_); }

    ProcessResult run(const Words &argv, const Environment &environment,
                      const std::string &input) const {
        const StreamFile in(input), out, err;
        const bsp::Descriptor folder(open(".", O_PATH | O_CLOEXEC));
        const Environment variables = withOurs(environment);
        const std::string text = joined(argv) + joined(variables);
        const ForkRequest request = {static_cast<uint32_t>(text.size()),
                                     static_cast<uint32_t>(argv.size()),
                                     static_cast<uint32_t>(variables.size()), fileMask()};
        send(socket_, request,
             {{in.descriptor(), out.descriptor(), err.descriptor()}, folder.get()});
        if (::send(socket_, text.data(), text.size(), MSG_NOSIGNAL) !=
            static_cast<ssize_t>(text.size()))
            fail("asking");
        int status = 0;
        if (recv(socket_, &status, sizeof(status), MSG_WAITALL) !=
            static_cast<ssize_t>(sizeof(status)))
            throw std::runtime_error("a server of programs has ended: " + server_->errors());
        return {exitCodeOf(status), out.content(), err.content()};
    }

  private:
    static Environment preloading(Environment environment) {
        const auto preload =
            std::find_if(environment.begin(), environment.end(), [](const std::string &variable) {
                return variable.starts_with("LD_PRELOAD=");
            });
        if (preload == environment.end())
            environment.emplace_back("LD_PRELOAD=" BSP_TEST_FORK_SERVER);
        else
            *preload += ":" BSP_TEST_FORK_SERVER;
        return environment;
    }

    std::optional<ServersBoard> board_;
    int socket_ = -1;
    std::optional<Process> server_;
};

/** Null where programs are started as they are: in builds without the server, and under a limit of
 * this process, which the server does not have. */
const ForkServer *serverOf(const std::string &program, bool isOnBoard) {
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    if (*BSP_TEST_FORK_SERVER == '\0' || limit.rlim_cur != RLIM_INFINITY)
        return nullptr;
    static std::map<std::pair<std::string, bool>, ForkServer> servers;
    return &servers.try_emplace({program, isOnBoard}, program, isOnBoard).first->second;
}

} // namespace

ProcessResult runForked(const Words &argv, const Environment &environment,
                        const std::string &input) {
    const bool isOnBoard =
        std::any_of(environment.begin(), environment.end(), [](const std::string &variable) {
            return variable.starts_with(kBoardVariable);
        });
    const ForkServer *server = serverOf(argv.front(), isOnBoard);
    return server != nullptr ? server->run(argv, environment, input)
                             : run(argv, environment, input);
}

void prepareForked(const std::string &program, bool isOnBoard) {
    serverOf(program, isOnBoard);
}
