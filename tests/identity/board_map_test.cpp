// The two maps of the board, entry by entry: what the library reaches for is where the circuit
// diagrams have it.

#include "support/board_map.h"
#include "virtual_board/board/paths.h"
#include "virtual_board/devices/board_map.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string words(uint32_t number) {
    return std::to_string(number);
}

template <typename Line>
requires requires(Line line) {
    line.bit;
}
std::string words(const Line &line) {
    return "register " + words(line.reg) + " bit " + words(line.bit);
}

template <typename Field>
requires requires(Field field) {
    field.width;
}
std::string words(const Field &field) {
    return "register " + words(field.reg) + " bits " + words(field.lowestBit) + " to " +
           words(field.lowestBit + field.width - 1);
}

template <typename Place>
requires requires(Place place) {
    place.device;
}
std::string words(const Place &place) {
    return "bus " + words(place.bus) + " channel " + words(place.channel) + " device " +
           words(place.device);
}

template <typename OfLibrary, typename OfBoard>
void expectSame(const char *name, const OfLibrary &ofLibrary, const OfBoard &ofBoard) {
    EXPECT_EQ(words(ofLibrary), words(ofBoard)) << name;
}

/** A partition, of which the board has the number and the library the node. */
void expectSame(const char *name, const char *node, const uint32_t &partition) {
    EXPECT_EQ(node, vb::kFlashNodePrefix + words(partition)) << name;
}

TEST(BoardMapTest, LibraryAndBoardAgreeOnEachEntry) {
    int entries = 0;
#define ENTRY(name)                                                                                \
    expectSame(#name, bsp::name, vb::name);                                                        \
    ++entries;
#include BSP_TEST_MAP_ENTRIES
    EXPECT_GT(entries, 50); // that the maps were understood
}

} // namespace
