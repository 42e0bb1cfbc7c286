#include "virtual_board/server/hub.h"

#include <algorithm>
#include <utility>

namespace vboard::server {

EventText eventText(const std::string &name, const std::string &data) {
    return std::make_shared<const std::string>("event: " + name + "\ndata: " + data + "\n\n");
}

void Hub::forgetClosed() {
    members_.remove_if([](const Member &member) { return !member.stream->isOpen(); });
}

void Hub::join(std::shared_ptr<EventStream> stream) {
    const std::lock_guard lock(mutex_);
    members_.push_back({std::move(stream)});
}

bool Hub::isWatched() {
    const std::lock_guard lock(mutex_);
    forgetClosed();
    return !members_.empty();
}

bool Hub::isAwaited() {
    const std::lock_guard lock(mutex_);
    return std::any_of(members_.begin(), members_.end(),
                       [](const Member &member) { return member.needsWhole; });
}

void Hub::publish(Snapshot snapshot) {
    const std::lock_guard lock(mutex_);
    const Json changed = isKnown_ ? difference(snapshot_, snapshot) : Json();
    snapshot_ = std::move(snapshot);
    isKnown_ = true;
    if (!changed.is_null())
        tellAll(eventText("change", dumped(changed)));
    EventText all;
    for (Member &member : members_) {
        if (!member.needsWhole)
            continue;
        if (all == nullptr)
            all = eventText("board", dumped(whole(snapshot_)));
        member.needsWhole = !member.stream->send(all);
        if (!member.needsWhole && play_ != nullptr)
            member.stream->send(play_);
    }
}

/** Who has no room for it is told all again once there is. */
void Hub::tellAll(const EventText &event) {
    forgetClosed();
    for (Member &member : members_) {
        if (!member.needsWhole)
            member.needsWhole = !member.stream->send(event);
    }
}

void Hub::tellTrace(const Json &requests) {
    const std::lock_guard lock(mutex_);
    tellAll(eventText("trace", dumped(requests)));
}

void Hub::tellPlay(const Json &play) {
    const std::lock_guard lock(mutex_);
    play_ = eventText("play", dumped(play));
    tellAll(play_);
}

void Hub::tellGone(const std::string &reason) {
    const std::lock_guard lock(mutex_);
    const EventText event = eventText("gone", dumped(Json{{"reason", reason}}));
    for (Member &member : members_) {
        member.stream->send(event);
        member.stream->end();
    }
    members_.clear();
}

void Hub::end() {
    const std::lock_guard lock(mutex_);
    for (Member &member : members_)
        member.stream->end();
    members_.clear();
}

} // namespace vboard::server
