#include "virtual_board/server/serve.h"

#include "language/refused.h"
#include "virtual_board/server/gate.h"
#include "virtual_board/server/http_server.h"
#include "virtual_board/server/listen_address.h"
#include "virtual_board/server/requests.h"
#include "virtual_board/server/services.h"
#include "virtual_board/server/token.h"

#include <cstdio>
#include <mutex>

namespace vboard::server {

namespace {

/** The address by which the page can be reached from this machine. */
std::string urlText(const ListenAddress &listen, uint16_t port, const std::string &token) {
    std::string address = listen.address;
    if (listen.isWildcard())
        address = address == "::" ? "::1" : "127.0.0.1";
    return "http://" + hostText(address, port) + "/" + token + "/";
}

/** Why the board that is served is gone, if it is. */
class Loss {
  public:
    void tell(const std::string &reason) {
        const std::lock_guard lock(mutex_);
        reason_ = reason;
    }
    void judge() {
        const std::lock_guard lock(mutex_);
        if (!reason_.empty())
            throw language::Refused(reason_);
    }

  private:
    std::mutex mutex_;
    std::string reason_;
};

} // namespace

void serve(const ServeOptions &options) {
    const ListenAddress &listen = options.listen;
    const std::string token =
        options.tokenFile.empty() ? makeToken() : readToken(options.tokenFile);
    Loss loss;
    HttpServer http(listen);
    Services services(options.folder, options.scenarios, options.canRun,
                      [&](const std::string &reason) {
                          loss.tell(reason);
                          http.stop();
                      });
    const Requests requests(Gate(token, http.port(), listen.address, options.hosts), services);
    std::printf("%s\n", urlText(listen, http.port(), token).c_str());
    if (std::fflush(stdout) != 0)
        throw language::Refused("cannot write the output");
    http.run(requests, [&services] { services.end(); });
    loss.judge();
}

} // namespace vboard::server
