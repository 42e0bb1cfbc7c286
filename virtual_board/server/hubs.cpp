#include "virtual_board/server/hubs.h"

#include <utility>

namespace vboard::server {

Hubs::Hubs(const Site &site, std::function<void(const std::string &reason)> onGone)
    : site_(site), onGone_(std::move(onGone)) {
    if (site.isSingle())
        begin(site.folder(), entries_[site.folder()]);
}

void Hubs::begin(const std::string &folder, Entry &entry) {
    entry.watch = std::make_unique<Watch>(
        folder, [this, folder](const Watch &watch) { return mayEnd(folder, watch); },
        [this, folder](const std::string &reason) { leave(folder, reason); });
    if (entry.play.has_value())
        entry.watch->hub.tellPlay(*entry.play);
}

void Hubs::join(const std::string &folder, const std::shared_ptr<EventStream> &stream) {
    std::list<std::unique_ptr<Watch>> ended;
    const std::lock_guard lock(mutex_);
    ended.swap(ended_);
    if (isEnding_) {
        stream->end();
        return;
    }
    Entry &entry = entries_[folder];
    if (entry.watch == nullptr)
        begin(folder, entry);
    entry.watch->hub.join(stream);
    entry.watch->wake();
}

void Hubs::tellPlay(const std::string &folder, const Json &play) {
    const std::lock_guard lock(mutex_);
    Entry &entry = entries_[folder];
    entry.play = play;
    if (entry.watch != nullptr)
        entry.watch->hub.tellPlay(play);
}

/** A board that is served by itself is looked at as long as it is. */
bool Hubs::mayEnd(const std::string &folder, const Watch &watch) {
    const std::lock_guard lock(mutex_);
    Entry &entry = entries_[folder];
    if (site_.isSingle() || isEnding_ || entry.watch.get() != &watch ||
        entry.watch->hub.isWatched())
        return false;
    ended_.push_back(std::move(entry.watch));
    return true;
}

void Hubs::leave(const std::string &folder, const std::string &reason) {
    {
        const std::lock_guard lock(mutex_);
        Entry &entry = entries_[folder];
        entry.play.reset();
        if (entry.watch != nullptr)
            ended_.push_back(std::move(entry.watch));
    }
    if (site_.isSingle())
        onGone_(reason);
}

void Hubs::end() {
    std::map<std::string, Entry> entries;
    std::list<std::unique_ptr<Watch>> ended;
    {
        const std::lock_guard lock(mutex_);
        isEnding_ = true;
        entries.swap(entries_);
        ended.swap(ended_);
    }
}

} // namespace vboard::server
