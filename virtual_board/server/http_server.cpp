// The one source that knows the HTTP library.

#include "virtual_board/server/http_server.h"

#include "language/refused.h"
#include "virtual_board/server/json.h"

#include <algorithm>
#include <atomic>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/thread_pool.hpp>
#include <boost/asio/write.hpp>
#include <boost/beast/core/bind_handler.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http.hpp>
#include <chrono>
#include <csignal>
#include <deque>
#include <list>
#include <mutex>
#include <utility>

namespace vboard::server {

namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = beast::http;
using asio::ip::tcp;
using boost::system::error_code;

// How much there may be.
constexpr size_t kMostConnections = 128;
constexpr size_t kMostStreams = 64;
constexpr uint32_t kMostHead = 16384;
constexpr size_t kMostWaiting = size_t{1} << 20; // bytes of events that a stream has not read
constexpr size_t kAnsweringThreads = 8;

// How long it may take.
constexpr std::chrono::seconds kHeadTime{10}; // also between two requests
constexpr std::chrono::seconds kBodyTime{60};
constexpr std::chrono::seconds kWriteTime{30};
constexpr std::chrono::seconds kFarewellTime{1};
constexpr std::chrono::milliseconds kLastWords{300}; // at the end
constexpr std::chrono::seconds kSignOfLife{15};
constexpr std::chrono::milliseconds kRest{100}; // after a connection could not be taken

constexpr char kSecurityPolicy[] =
    "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self' data:; "
    "connect-src 'self'; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

constexpr std::pair<const char *, const char *> kHeaders[] = {
    {"Content-Security-Policy", kSecurityPolicy},
    {"Referrer-Policy", "no-referrer"},
    {"X-Content-Type-Options", "nosniff"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cache-Control", "no-store"},
};

std::string headOfEvents() {
    std::string text =
        std::string("HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Type: ") + kEventType + "\r\n";
    for (const auto &[name, value] : kHeaders)
        text += std::string(name) + ": " + value + "\r\n";
    return text + "\r\nretry: 1000\n\n";
}

class Connection;

/** What connections share. All but its threads' work is done by the one that runs it. */
struct Shared {
    asio::io_context context{1};
    asio::thread_pool threads{kAnsweringThreads};
    const Requests *requests = nullptr;
    std::list<std::shared_ptr<Connection>> connections;
    size_t streams = 0;
    bool isEnding = false;
};

Head headOf(const http::request<http::string_body> &message, const tcp::socket &socket) {
    Head head;
    head.method = std::string(message.method_string());
    head.target = std::string(message.target());
    for (const auto &field : message)
        head.headers.emplace_back(field.name_string(), field.value());
    error_code failure;
    const auto address = socket.local_endpoint(failure).address();
    head.localAddress = hostText(address.to_string(), 0);
    head.localAddress.erase(head.localAddress.rfind(':'));
    return head;
}

/** One that is connected. It lives as long as something is under way on it. */
class Connection : public std::enable_shared_from_this<Connection>, public EventStream {
  public:
    Connection(tcp::socket socket, Shared &shared)
        : shared_(shared), stream_(std::move(socket)), timer_(shared.context) {}

    void begin() {
        place_ = shared_.connections.insert(shared_.connections.end(), shared_from_this());
        readHead();
    }

    /** How readily it makes room for another one: who has never been let in does before who only
     * waits, and who is answered does not. */
    enum class Rank { Stranger, Waiting, Busy };
    Rank rank() const {
        if (isBusy_)
            return Rank::Busy;
        return isKnown_ ? Rank::Waiting : Rank::Stranger;
    }

    void close() {
        if (!isOpen_.exchange(false))
            return;
        error_code ignored;
        timer_.cancel();
        stream_.socket().close(ignored);
        if (isStream_)
            --shared_.streams;
        shared_.connections.erase(place_);
    }

    // What others want of a stream of events, from any thread.

    bool isOpen() const override { return isOpen_; }

    bool send(const EventText &event) override {
        const std::lock_guard lock(mutex_);
        if (waitingBytes_ + event->size() > kMostWaiting && waitingBytes_ > 0)
            return false;
        enqueue(event);
        return true;
    }

    void end() override {
        const std::lock_guard lock(mutex_);
        isLast_ = true;
        awake();
    }

  private:
    using Request = http::request<http::string_body>;

    void readHead() {
        parser_.emplace();
        parser_->header_limit(kMostHead);
        parser_->body_limit(UINT64_MAX); // each route has its own
        isBusy_ = false;
        stream_.expires_after(kHeadTime);
        http::async_read_header(
            stream_, buffer_, *parser_,
            [self = shared_from_this()](error_code failure, size_t) { self->takeHead(failure); });
    }

    void takeHead(error_code failure) {
        if (failure == http::error::header_limit || failure == http::error::buffer_overflow)
            return refuse(
                {kHeadTooLarge, VBOARD_E_REFUSED, "the head of the request is larger than 16 KiB"});
        if (failure.category() == http::make_error_code(http::error::bad_method).category() &&
            failure != http::error::end_of_stream && failure != http::error::partial_message)
            return refuse({kBadRequest, VBOARD_E_REFUSED, "this is no request of HTTP/1.1"});
        if (failure)
            return close();
        const Request &request = parser_->get();
        isHead_ = request.method() == http::verb::head;
        keepsAlive_ = request.keep_alive();
        try {
            wish_ = shared_.requests->judge(headOf(request, stream_.socket()));
            isKnown_ = true;
            judgeBody();
        } catch (const std::exception &refusal) {
            keepsAlive_ = keepsAlive_ && parser_->is_done(); // a body would be the next request
            return respond(failureResponse(refusal));
        }
        if (request[http::field::expect] == "100-continue")
            return askForBody();
        readBody();
    }

    void judgeBody() {
        const auto length = parser_->content_length();
        if (length.has_value() && *length > wish_.mostBody)
            throwTooLarge();
        parser_->body_limit(wish_.mostBody);
    }

    [[noreturn]] void throwTooLarge() const {
        throw Refusal(kTooLarge, VBOARD_E_REFUSED,
                      wish_.mostBody == 0
                          ? "this request has no body"
                          : "the body is larger than " + std::to_string(wish_.mostBody) + " bytes");
    }

    void askForBody() {
        static constexpr char kContinue[] = "HTTP/1.1 100 Continue\r\n\r\n";
        stream_.expires_after(kWriteTime);
        asio::async_write(stream_, asio::buffer(kContinue, sizeof(kContinue) - 1),
                          [self = shared_from_this()](error_code failure, size_t) {
                              return failure ? self->close() : self->readBody();
                          });
    }

    void readBody() {
        if (parser_->is_done())
            return work();
        stream_.expires_after(kBodyTime);
        http::async_read(
            stream_, buffer_, *parser_,
            [self = shared_from_this()](error_code failure, size_t) { self->takeBody(failure); });
    }

    void takeBody(error_code failure) {
        if (failure == http::error::body_limit) {
            try {
                throwTooLarge();
            } catch (const Refusal &refusal) {
                return refuse(refusal);
            }
        }
        if (failure)
            return close();
        work();
    }

    /** Lets a thread answer, which may have to wait for the board. */
    void work() {
        isBusy_ = true;
        if (wish_.isStream && !isHead_)
            return follow();
        if (wish_.isStream)
            return respond({kOk, kEventType, "", ""});
        asio::post(shared_.threads, [self = shared_from_this()] {
            Response response =
                self->shared_.requests->answer(self->wish_, self->parser_->get().body());
            asio::post(self->shared_.context, [self, response = std::move(response)]() mutable {
                self->respond(std::move(response));
            });
        });
    }

    void refuse(const Refusal &refusal) {
        keepsAlive_ = false;
        respond(refusalResponse(refusal));
    }

    void respond(Response response) {
        if (!isOpen_)
            return;
        isBusy_ = true;
        answer_.emplace(static_cast<http::status>(response.status), 11);
        for (const auto &[name, value] : kHeaders)
            answer_->set(name, value);
        if (!response.contentType.empty())
            answer_->set(http::field::content_type, response.contentType);
        if (!response.location.empty())
            answer_->set(http::field::location, response.location);
        answer_->keep_alive(keepsAlive_ && !shared_.isEnding);
        answer_->body() = std::move(response.body);
        answer_->prepare_payload();
        serializer_.emplace(*answer_);
        stream_.expires_after(kWriteTime);
        const auto whenWritten = [self = shared_from_this()](error_code failure, size_t) {
            self->finish(failure);
        };
        if (isHead_)
            http::async_write_header(stream_, *serializer_, whenWritten);
        else
            http::async_write(stream_, *serializer_, whenWritten);
    }

    void finish(error_code failure) {
        if (failure || !isOpen_)
            return close();
        if (!answer_->keep_alive())
            return sayFarewell();
        readHead();
    }

    /** Lets who is still sending read the answer: a connection that is closed before all of it was
     * read takes that away. */
    void sayFarewell() {
        error_code ignored;
        stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
        isBusy_ = false;
        isKnown_ = false;
        stream_.expires_after(kFarewellTime);
        discard();
    }

    void discard() {
        stream_.async_read_some(asio::buffer(scrap_),
                                [self = shared_from_this()](error_code failure, size_t) {
                                    return failure ? self->close() : self->discard();
                                });
    }

    // A stream of events.

    void follow() {
        if (shared_.streams >= kMostStreams)
            return refuse({kTooMany, VBOARD_E_FULL,
                           "64 pages follow boards of this server, and no more can; close one"});
        ++shared_.streams;
        isStream_ = true;
        asio::post(shared_.threads, [self = shared_from_this()] {
            const auto refusal = self->shared_.requests->follow(self->wish_, self);
            asio::post(self->shared_.context, [self, refusal] {
                if (refusal.has_value())
                    self->leaveStream(*refusal);
                else
                    self->beginEvents();
            });
        });
    }

    void leaveStream(const Response &refusal) {
        if (!isOpen_)
            return;
        isStream_ = false;
        --shared_.streams;
        respond(refusal);
    }

    void beginEvents() {
        if (!isOpen_)
            return;
        const std::lock_guard lock(mutex_);
        waiting_.push_front(std::make_shared<const std::string>(headOfEvents()));
        waitingBytes_ += waiting_.front()->size();
        hasBegun_ = true;
        stream_.expires_never();
        listenForEnd();
        showLife();
        awake();
    }

    /** Who follows says nothing more, but goes. */
    void listenForEnd() {
        stream_.async_read_some(asio::buffer(scrap_),
                                [self = shared_from_this()](error_code failure, size_t) {
                                    return failure ? self->close() : self->listenForEnd();
                                });
    }

    /** Those in between that drop what is silent for long see that it is not. */
    void showLife() {
        timer_.expires_after(kSignOfLife);
        timer_.async_wait([self = shared_from_this()](error_code failure) {
            if (failure || !self->isOpen_)
                return;
            self->send(std::make_shared<const std::string>(":\n\n"));
            self->showLife();
        });
    }

    void enqueue(const EventText &event) {
        waiting_.push_back(event);
        waitingBytes_ += event->size();
        awake();
    }

    /** Lets the connections' own thread go on with it. */
    void awake() {
        if (hasBegun_ && !isWriting_)
            asio::post(shared_.context, [self = shared_from_this()] { self->writeNext(); });
    }

    void writeNext() {
        const std::lock_guard lock(mutex_);
        if (isWriting_ || !isOpen_)
            return;
        if (waiting_.empty()) {
            if (isLast_)
                asio::post(shared_.context,
                           [self = shared_from_this()] { self->sayFarewellToPage(); });
            return;
        }
        isWriting_ = true;
        stream_.expires_after(kWriteTime);
        asio::async_write(stream_, asio::buffer(*waiting_.front()),
                          [self = shared_from_this()](error_code failure, size_t) {
                              self->finishEvent(failure);
                          });
    }

    void finishEvent(error_code failure) {
        {
            const std::lock_guard lock(mutex_);
            isWriting_ = false;
            waitingBytes_ -= waiting_.front()->size();
            waiting_.pop_front();
        }
        if (failure)
            return close();
        writeNext();
    }

    void sayFarewellToPage() {
        if (!isOpen_)
            return;
        error_code ignored;
        stream_.socket().shutdown(tcp::socket::shutdown_send, ignored);
        close();
    }

    static constexpr size_t kScrap = 4096;

    Shared &shared_;
    beast::tcp_stream stream_;
    asio::steady_timer timer_;
    std::list<std::shared_ptr<Connection>>::iterator place_;
    beast::flat_buffer buffer_{size_t{64} << 10};
    std::optional<http::request_parser<http::string_body>> parser_;
    std::optional<http::response<http::string_body>> answer_;
    std::optional<http::response_serializer<http::string_body>> serializer_;
    Requests::Wish wish_;
    char scrap_[kScrap];
    std::atomic<bool> isOpen_ = true;
    bool isHead_ = false;
    bool keepsAlive_ = false;
    bool isKnown_ = false;
    bool isBusy_ = false;
    bool isStream_ = false;

    std::mutex mutex_; // what events are handed over by
    std::deque<EventText> waiting_;
    size_t waitingBytes_ = 0;
    bool hasBegun_ = false;
    bool isWriting_ = false;
    bool isLast_ = false;
};

} // namespace

class HttpServer::Implementation {
  public:
    explicit Implementation(const ListenAddress &listen)
        : acceptor_(shared_.context), signals_(shared_.context), rest_(shared_.context) {
        const tcp::endpoint place(asio::ip::make_address(listen.address), listen.port);
        try {
            acceptor_.open(place.protocol());
            acceptor_.set_option(tcp::acceptor::reuse_address(true));
            acceptor_.bind(place);
            acceptor_.listen();
        } catch (const boost::system::system_error &failure) {
            throw language::Refused("cannot listen on " + hostText(listen.address, listen.port) +
                                    ": " + failure.code().message());
        }
    }

    uint16_t port() const { return acceptor_.local_endpoint().port(); }

    void run(const Requests &requests, const std::function<void()> &onEnd) {
        shared_.requests = &requests;
        awaitSignals();
        accept();
        shared_.context.run();
        shared_.isEnding = true;
        onEnd();
        shared_.threads.join();
        finishWriting();
    }

    void stop() {
        asio::post(shared_.context, [this] { shared_.context.stop(); });
    }

  private:
    /** Lets those who are being told something, the end for one, get all of it. */
    void finishWriting() {
        error_code ignored;
        acceptor_.close(ignored);
        signals_.cancel(ignored);
        rest_.cancel();
        const auto connections = shared_.connections;
        for (const auto &connection : connections) {
            if (connection->rank() != Connection::Rank::Busy)
                connection->close();
        }
        shared_.context.restart();
        shared_.context.run_for(kLastWords);
        while (!shared_.connections.empty())
            shared_.connections.front()->close();
        shared_.context.restart();
        shared_.context.poll();
    }

    /** But for those that somebody wants not to be noticed. */
    void awaitSignals() {
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            struct sigaction before = {};
            sigaction(signal, nullptr, &before);
            if (before.sa_handler != SIG_IGN)
                signals_.add(signal);
        }
        signals_.async_wait([this](error_code failure, int) {
            if (!failure)
                shared_.context.stop();
        });
    }

    void accept() {
        acceptor_.async_accept([this](error_code failure, tcp::socket socket) {
            if (failure)
                return acceptLater();
            take(std::move(socket));
            accept();
        });
    }

    /** The system has no room for one more; there may be soon. */
    void acceptLater() {
        rest_.expires_after(kRest);
        rest_.async_wait([this](error_code failure) {
            if (!failure)
                accept();
        });
    }

    void take(tcp::socket socket) {
        if (shared_.connections.size() >= kMostConnections && !makeRoom())
            return;
        error_code ignored;
        socket.set_option(tcp::no_delay(true), ignored);
        std::make_shared<Connection>(std::move(socket), shared_)->begin();
    }

    /** Who has waited longest goes, so that nobody can keep others out by doing nothing. */
    bool makeRoom() const {
        const auto &all = shared_.connections;
        const auto place =
            std::min_element(all.begin(), all.end(), [](const auto &one, const auto &other) {
                return one->rank() < other->rank();
            });
        if ((*place)->rank() == Connection::Rank::Busy)
            return false;
        std::shared_ptr<Connection>(*place)->close();
        return true;
    }

    Shared shared_;
    tcp::acceptor acceptor_;
    asio::signal_set signals_;
    asio::steady_timer rest_;
};

HttpServer::HttpServer(const ListenAddress &listen)
    : implementation_(std::make_unique<Implementation>(listen)) {}
HttpServer::~HttpServer() = default;

uint16_t HttpServer::port() const {
    return implementation_->port();
}

void HttpServer::run(const Requests &requests, const std::function<void()> &onEnd) {
    implementation_->run(requests, onEnd);
}

void HttpServer::stop() {
    implementation_->stop();
}

} // namespace vboard::server
