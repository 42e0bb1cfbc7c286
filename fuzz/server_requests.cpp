// What clients send to `vboard serve`: bytes of a connection, right or wrong, in which @T is the
// token and @H the host. They go through a connection as any other's, and what comes back is looked
// at.

#include "fuzz/board.h"
#include "fuzz/input.h"
#include "virtual_board/server/http_server.h"
#include "virtual_board/server/requests.h"

#include <algorithm>
#include <arpa/inet.h>
#include <cstdlib>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>

namespace {

using namespace vboard::server;

constexpr char kToken[] = "0123456789abcdef";
constexpr int kSilenceMs = 200; // of an answer that does not end

/** A server of a board, for as long as the program runs. */
class Server {
  public:
    Server()
        : board_(0x0709), http_({}),
          services_(board_.path(), {}, false, [](const std::string &) {}),
          requests_(Gate(kToken, http_.port(), "127.0.0.1", {}), services_),
          thread_([this] { http_.run(requests_, [this] { services_.end(); }); }) {}
    Server(const Server &) = delete;
    Server &operator=(const Server &) = delete;
    ~Server() {
        http_.stop();
        thread_.join();
    }

    uint16_t port() const { return http_.port(); }

  private:
    fuzz::FactoryBoard board_;
    HttpServer http_;
    Services services_;
    const Requests requests_;
    std::thread thread_;
};

void replaceAll(std::string &text, const std::string &word, const std::string &other) {
    for (size_t at = text.find(word); at != std::string::npos;
         at = text.find(word, at + other.size()))
        text.replace(at, word.size(), other);
}

/** All that is answered to the bytes of a connection. */
std::string answerTo(uint16_t port, const std::string &bytes) {
    const int client = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_port = htons(port);
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    fuzz::require(connect(client, reinterpret_cast<const sockaddr *>(&place), sizeof(place)) == 0,
                  "nobody listens any more");
    size_t sent = 0;
    while (sent < bytes.size()) {
        const ssize_t done = send(client, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
        if (done <= 0)
            break; // it has been refused before its end
        sent += static_cast<size_t>(done);
    }
    shutdown(client, SHUT_WR);
    std::string answer;
    char part[4096];
    pollfd poll = {client, POLLIN, 0};
    while (::poll(&poll, 1, kSilenceMs) > 0) {
        const ssize_t got = recv(client, part, sizeof(part), 0);
        if (got <= 0)
            break;
        answer.append(part, static_cast<size_t>(got));
    }
    close(client);
    return answer;
}

/**
 * Whether one of a connection's answers has a status. Their texts repeat words of requests, so what
 * looks like a status there is none.
 */
bool hasStatus(std::string_view answers, std::string_view status) {
    constexpr std::string_view kHeadersEnd = "\r\n\r\n";
    constexpr std::string_view kLength = "\r\nContent-Length: ";
    while (!answers.empty()) {
        if (answers.starts_with(status))
            return true;
        const size_t end = answers.find(kHeadersEnd);
        if (end == std::string_view::npos)
            break;
        size_t next = end + kHeadersEnd.size();
        const size_t length = answers.substr(0, end).find(kLength);
        if (length != std::string_view::npos) // else there is no text, or events until the end
            next += std::strtoul(answers.data() + length + kLength.size(), nullptr, 10);
        answers.remove_prefix(std::min(answers.size(), next));
    }
    return false;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const Server server;
    std::string bytes(data, data + size);
    replaceAll(bytes, "@T", kToken);
    replaceAll(bytes, "@H", "127.0.0.1:" + std::to_string(server.port()));
    const std::string answer = answerTo(server.port(), bytes);
    fuzz::require(answer.empty() || answer.starts_with("HTTP/1.1 "), "an answer of another kind");
    fuzz::require(!hasStatus(answer, "HTTP/1.1 500"), "it fails by itself");
    const bool hasToken = bytes.find(kToken) != std::string::npos;
    fuzz::require(hasToken || !hasStatus(answer, "HTTP/1.1 200"),
                  "somebody is let in without the token");
    return 0;
}
