// Parts of `vboard serve` that no client sees by themselves.

#include "language/refused.h"
#include "virtual_board/server/hub.h"
#include "virtual_board/server/listen_address.h"
#include "virtual_board/server/snapshot.h"
#include "virtual_board/server/target.h"
#include "virtual_board/server/token.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace {

using namespace vboard::server;

/** A page that takes what a test lets it take. */
class Page : public EventStream {
  public:
    bool send(const EventText &event) override {
        if (hasRoom)
            events.push_back(*event);
        return hasRoom;
    }
    void end() override { isOn = false; }
    bool isOpen() const override { return isOn; }

    std::vector<std::string> events;
    bool hasRoom = true;
    bool isOn = true;
};

Snapshot snapshotWith(const std::string &clock) {
    Snapshot snapshot;
    snapshot.properties = {{"clock", clock}, {"time", "real"}, {"fan.1.state", "good"}};
    snapshot.parts = {{"fan.1", "fan", "turning", "2400", "Fan 1", {"fan.1.*"}, "", 2400}};
    return snapshot;
}

TEST(ServerDifferenceTest, NothingIsNone) {
    EXPECT_TRUE(difference(snapshotWith("1"), snapshotWith("1")).is_null());
}

TEST(ServerDifferenceTest, OnlyWhatHasChangedIsTold) {
    const Snapshot earlier = snapshotWith("1");
    Snapshot later = snapshotWith("2");
    EXPECT_EQ(dumped(difference(earlier, later)), R"({"clock":"2","properties":{"clock":"2"}})");
    later = earlier;
    later.properties.erase("fan.1.state");
    later.properties["fan.2.state"] = "stuck";
    later.properties["time"] = "x60";
    EXPECT_EQ(
        dumped(difference(earlier, later)),
        R"({"time":"x60","properties":{"fan.2.state":"stuck","time":"x60","fan.1.state":null}})");
    later = earlier;
    later.parts[0].rpm = 0;
    later.users = "iodbg 7";
    later.faults.push_back({{"id", 1}});
    EXPECT_EQ(dumped(difference(earlier, later)),
              R"({"parts":[{"id":"fan.1","kind":"fan","look":"turning","text":"2400",)"
              R"("label":"Fan 1","properties":["fan.1.*"],"rpm":0}],)"
              R"("faults":[{"id":1}],"users":"iodbg 7"})");
}

TEST(ServerHubTest, WhoComesIsToldAllAndThenChanges) {
    Hub hub;
    EXPECT_FALSE(hub.isWatched());
    const auto page = std::make_shared<Page>();
    hub.join(page);
    EXPECT_TRUE(hub.isWatched());
    EXPECT_TRUE(hub.isAwaited());
    hub.publish(snapshotWith("1"));
    EXPECT_FALSE(hub.isAwaited());
    hub.publish(snapshotWith("1"));
    hub.publish(snapshotWith("2"));
    ASSERT_EQ(page->events.size(), 2U);
    EXPECT_EQ(page->events[0], "event: board\ndata: " + dumped(whole(snapshotWith("1"))) + "\n\n");
    EXPECT_EQ(page->events[1],
              "event: change\ndata: {\"clock\":\"2\",\"properties\":{\"clock\":\"2\"}}\n\n");
}

TEST(ServerHubTest, WhoIsTooSlowIsToldAllAgainAndOthersAreNotKeptWaiting) {
    Hub hub;
    const auto slow = std::make_shared<Page>(), other = std::make_shared<Page>();
    hub.join(slow);
    hub.join(other);
    hub.publish(snapshotWith("1"));
    slow->hasRoom = false;
    hub.publish(snapshotWith("2"));
    EXPECT_TRUE(hub.isAwaited());
    hub.publish(snapshotWith("3"));
    hub.tellTrace(Json::object());
    slow->hasRoom = true;
    hub.tellTrace(Json::object()); // of what it does not know it is told nothing
    hub.publish(snapshotWith("4"));
    hub.publish(snapshotWith("5"));
    EXPECT_EQ(other->events.size(), 7U);
    ASSERT_EQ(slow->events.size(), 3U);
    EXPECT_EQ(slow->events[1], "event: board\ndata: " + dumped(whole(snapshotWith("4"))) + "\n\n");
    EXPECT_EQ(slow->events[2],
              "event: change\ndata: {\"clock\":\"5\",\"properties\":{\"clock\":\"5\"}}\n\n");
}

TEST(ServerHubTest, WhoComesDuringAPlayIsToldOfIt) {
    Hub hub;
    hub.tellPlay({{"state", "running"}});
    const auto page = std::make_shared<Page>();
    hub.join(page);
    hub.publish(snapshotWith("1"));
    ASSERT_EQ(page->events.size(), 2U);
    EXPECT_EQ(page->events[1], "event: play\ndata: {\"state\":\"running\"}\n\n");
}

TEST(ServerHubTest, TheEndIsToldAndThoseWhoHaveGoneAreForgotten) {
    Hub hub;
    const auto gone = std::make_shared<Page>(), page = std::make_shared<Page>();
    hub.join(gone);
    hub.join(page);
    gone->isOn = false;
    EXPECT_TRUE(hub.isWatched());
    EXPECT_EQ(gone.use_count(), 1);
    hub.tellGone("it was removed");
    EXPECT_EQ(page->events,
              std::vector<std::string>{"event: gone\ndata: {\"reason\":\"it was removed\"}\n\n"});
    EXPECT_FALSE(page->isOpen());
    EXPECT_FALSE(hub.isWatched());
}

TEST(ServerTargetTest, PathsAndWords) {
    const Target target = parseTarget("/a/b?name=fan.%2a&name=x+y&empty&=z&board=%C3%A4");
    EXPECT_EQ(target.path, "/a/b");
    const Query expected = {
        {"name", "fan.*"}, {"name", "x y"}, {"empty", ""}, {"", "z"}, {"board", "\xC3\xA4"}};
    EXPECT_EQ(target.query, expected);
    EXPECT_EQ(valuesOf(target.query, "name"), (std::vector<std::string>{"fan.*", "x y"}));
    EXPECT_EQ(valueOf(target.query, "none"), "");
    EXPECT_THROW(valueOf(target.query, "name"), Refusal);
    for (const char *wrong : {"", "a", "*", "/?a=%", "/?a=%1", "/?a=%1g", "/?a=%-1", "/?a=%00"})
        EXPECT_THROW(parseTarget(wrong), Refusal) << wrong;
}

TEST(ServerTokenTest, OnlyTheTokenIsTheToken) {
    EXPECT_TRUE(isToken("0123456789abcdef", "0123456789abcdef"));
    for (const char *word :
         {"", "0", "0123456789abcdeF", "0123456789abcde", "0123456789abcdef0", "x123456789abcdef"})
        EXPECT_FALSE(isToken(word, "0123456789abcdef")) << word;
    EXPECT_NE(makeToken(), makeToken());
}

TEST(ServerAddressTest, AddressesAndPorts) {
    EXPECT_EQ(parseListenAddress("localhost:80").address, "127.0.0.1");
    EXPECT_EQ(parseListenAddress("[::1]:8080").address, "::1");
    EXPECT_EQ(parseListenAddress("[::1]:8080").port, 8080);
    EXPECT_EQ(hostText("::1", 8080), "[::1]:8080");
    EXPECT_EQ(hostText("127.0.0.1", 80), "127.0.0.1:80");
    EXPECT_TRUE(parseListenAddress("0.0.0.0:0").isWildcard());
    EXPECT_FALSE(ListenAddress().isWildcard());
    for (const char *wrong : {"", ":", "1.2.3:4", "1.2.3.4:", "1.2.3.4:-1", "1.2.3.4:1x", "[]:1",
                              "[1.2.3.4]:1", "::1:1", "host:1"})
        EXPECT_THROW(parseListenAddress(wrong), language::Refused) << wrong;
}

} // namespace
