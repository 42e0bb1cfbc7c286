#pragma once
// A page that is told what happens: where events go.

#include <memory>
#include <string>

namespace vboard::server {

using EventText = std::shared_ptr<const std::string>;

class EventStream {
  public:
    EventStream() = default;
    EventStream(const EventStream &) = delete;
    EventStream &operator=(const EventStream &) = delete;
    virtual ~EventStream() = default;

    /** Hands an event over, from any thread, and does not wait for who reads it: false when there
     * is no room, since that is too slow. */
    virtual bool send(const EventText &event) = 0;
    /** Behind what was sent the stream ends. */
    virtual void end() = 0;
    virtual bool isOpen() const = 0;
};

/** "event: change", with its data in one line. */
EventText eventText(const std::string &name, const std::string &data);

} // namespace vboard::server
