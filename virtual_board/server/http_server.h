#pragma once
// Connections: requests read, answers and events written, with limits on all of it.

#include "virtual_board/server/listen_address.h"
#include "virtual_board/server/requests.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace vboard::server {

class HttpServer {
  public:
    /** Listens; connections wait until it runs. Throws Refused where it cannot. */
    explicit HttpServer(const ListenAddress &listen);
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;
    ~HttpServer();

    /** The one that it listens on. */
    uint16_t port() const;

    /** Serves until SIGINT, SIGTERM or SIGHUP comes, or stop(); then asks others to end, too. */
    void run(const Requests &requests, const std::function<void()> &onEnd);
    /** From any thread. */
    void stop();

  private:
    class Implementation;
    const std::unique_ptr<Implementation> implementation_;
};

} // namespace vboard::server
