// How a board serves the table of properties: every row, by patterns, and several at once.

#include "tests/support/virtual_board_test.h"
#include "tests/support/world.h"
#include "virtual_board/board/models.h"
#include "virtual_board/words/bindings.h"
#include "virtual_board/words/equipment.h"

#include <cstring>
#include <fcntl.h>
#include <map>
#include <unistd.h>

namespace {

using world::get;

class BoardPropertiesTest : public VirtualBoardTest {
  protected:
    static void set(const std::vector<vb::Assignment> &assignments) {
        vb::setProperties(*vb::attachedFolder(), assignments);
    }

    /** Why changes are refused; nothing of the board may have changed then. */
    std::string refusalOf(const std::vector<vb::Assignment> &assignments) {
        const vb::Clock clock = board().clock;
        const vb::Devices before = devices();
        std::string reason = "accepted";
        try {
            set(assignments);
        } catch (const vb::Refused &refused) {
            reason = refused.what();
        }
        EXPECT_EQ(std::memcmp(&before, &devices(), sizeof(before)), 0) << reason;
        EXPECT_EQ(std::memcmp(&clock, &board().clock, sizeof(clock)), 0) << reason;
        return reason;
    }

    static std::vector<std::string> namesFor(const std::string &pattern) {
        std::vector<std::string> names;
        for (const vb::Property &property : vb::matchingProperties(*vb::attachedFolder(), pattern))
            names.push_back(property.name);
        return names;
    }
};

using Names = std::vector<std::string>;

TEST_F(BoardPropertiesTest, EachRowOfTheTableIsServedOnce) {
    std::map<const language::Property *, int> served;
    for (const vb::Binding &binding : vb::allBindings())
        ++served[binding.property];
    EXPECT_EQ(served.size(), language::properties().size());
    for (const language::Property &property : language::properties()) {
        EXPECT_EQ(served[&property], 1) << property.name;
        EXPECT_EQ(vb::bindingOf(property).property, &property) << property.name;
    }
}

TEST_F(BoardPropertiesTest, WhatABoardHoldsIsWhatTheTableAllows) {
    for (const vb::Model &model : vb::kModels) {
        useModel(model.devId);
        for (const vb::Property &property : vb::properties(*vb::attachedFolder())) {
            const language::Property &type = *property.type;
            SCOPED_TRACE(property.name + " is " + property.value);
            if (property.content.isNumber() && type.type == language::Type::Word) {
                EXPECT_NE(property.value, "?");
            } else if (property.content.isNumber()) {
                EXPECT_GE(property.content.as<int64_t>(), type.lowest);
                EXPECT_LE(property.content.as<int64_t>(), type.highest);
            }
        }
    }
}

TEST_F(BoardPropertiesTest, APatternStandsForAllThatFitIt) {
    EXPECT_EQ(namesFor("fan.*"), (Names{"fan.1.present", "fan.2.present", "fan.1.state",
                                        "fan.2.state", "fan.1.speed", "fan.2.speed"}));
    EXPECT_EQ(namesFor("fan.[13].speed"), Names{"fan.1.speed"});
    EXPECT_EQ(namesFor("sfp.5?.link").size(), 5u);
    EXPECT_EQ(namesFor("mdio.*"), (Names{"mdio.state", "mdio.busy-polls"}));
    EXPECT_EQ(namesFor("mdio.7.*").size(), 32u); // asked for what is too long to be listed
    try {
        namesFor("fan.9.*");
        ADD_FAILURE();
    } catch (const vb::Refused &refused) {
        EXPECT_STREQ(refused.what(), "no property of model 0x0709 fits 'fan.9.*'; 'vboard "
                                     "properties' lists those of all models");
    }
}

TEST_F(BoardPropertiesTest, SeveralAreChangedAtOnce) {
    set({{"fan.1.state", "stuck"},
         {"temperature.ambient", "-7"},
         {"sfp.49.module", "sr"},
         {"sfp.49.rx-power", "500"}, // has a module to be set at by now
         {"cmdline", "quiet"},
         {"flash.4.content@16", "00ff"}});
    EXPECT_EQ(get("fan.1.state"), "stuck");
    EXPECT_EQ(get("temperature.ambient"), "-7");
    EXPECT_EQ(get("sfp.49.rx-power"), "500");
    EXPECT_EQ(get("cmdline"), "quiet");
    EXPECT_EQ(get("flash.4.content@15+4"), "ff00ffff");
    set({{"cpld.40", "1"}, {"cpld.40", "2"}});
    EXPECT_EQ(get("cpld.40"), "0x0002") << "the last one holds";
}

TEST_F(BoardPropertiesTest, NothingIsChangedWhenOneIsRefused) {
    const std::string line = get("cmdline");
    writeBoardFile("/tmp/bsp/kept", "");
    const std::vector<vb::Assignment> good = {{"power", "cycle"},         {"time", "real"},
                                              {"cpld.40", "1"},           {"fan.1.present", "no"},
                                              {"cmdline", "quiet"},       {"flash.4.content", "00"},
                                              {"poe.1.device", "class=4"}};
    const struct {
        vb::Assignment bad;
        const char *reason;
    } cases[] = {{{"colour", "1"}, "there is no property 'colour'"},
                 {{"model", "1"}, "model can only be read"},
                 {{"fan.1.state", "ill"}, "fan.1.state: 'ill' is none of good|failing|stuck|held"},
                 {{"sfp.50.link", "up"}, "sfp.50.link: cage 50 is empty"},
                 {{"flash.0.bad-blocks", "1"}, "flash.0.bad-blocks: only NAND has bad blocks"},
                 {{"console.speed", "9601"}, "console.speed: '9601' is no rate"},
                 {{"poe.2.device", "class=9"}, "poe.2.device: class: '9' is not a number"}};
    for (const auto &[bad, reason] : cases) {
        for (const bool isFirst : {false, true}) {
            std::vector<vb::Assignment> all = good;
            all.insert(isFirst ? all.begin() : all.end(), bad);
            EXPECT_EQ(refusalOf(all).substr(0, std::strlen(reason)), reason);
            EXPECT_EQ(get("cmdline"), line);
            EXPECT_EQ(get("flash.4.content@0+1"), "ff");
            EXPECT_EQ(access("/tmp/bsp/kept", F_OK), 0);
        }
    }
}

TEST_F(BoardPropertiesTest, WhatCannotBeWrittenIsTakenBack) {
    const std::string line = get("cmdline");
    // A folder in its place: the new command line cannot be put there.
    const std::string own = vb::attachedFolder()->ownFile("cmdline.new").text;
    const int root = open(vb::attachedFolder()->path(), O_RDONLY | O_DIRECTORY);
    ASSERT_EQ(mkdirat(root, "cmdline.new", 0755), 0) << own;
    writeBoardFile("/tmp/bsp/kept", "");
    EXPECT_NE(
        refusalOf(
            {{"power", "cycle"}, {"flash.4.content", "00"}, {"cpld.40", "1"}, {"cmdline", "quiet"}})
            .find("cannot write the command line"),
        std::string::npos);
    EXPECT_EQ(get("flash.4.content@0+1"), "ff");
    EXPECT_EQ(get("cmdline"), line);
    EXPECT_EQ(access("/tmp/bsp/kept", F_OK), 0);
    unlinkat(root, "cmdline.new", AT_REMOVEDIR);
    close(root);
}

} // namespace
