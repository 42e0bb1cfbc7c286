#pragma once
// What the parts of a twin are made with.

#include "language/captured_properties.h"
#include "virtual_board/board/models.h"
#include "virtual_board/twin/twin.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vb {

/** A board that becomes a unit's twin. */
struct Twin {
    const BoardFolder &folder;
    const language::CapturedUnit &unit;
    const Model &model;
    std::vector<TwinGap> gaps;

    Board &board() const { return *folder.board(); }
    Devices &devices() const { return board().devices; }

    /** What was read of a name with its number for '#'; nothing when it failed or is not there. */
    const language::CapturedReading *read(const std::string &row, uint32_t number) const;
    const language::CapturedReading *read(const std::string &name) const;
    /** One that the board has no room for is told, and nothing. */
    std::optional<int64_t> number(const std::string &row, uint32_t number, int64_t lowest,
                                  int64_t highest);
    std::string text(const std::string &row, uint32_t number) const; // empty: nothing
    /** The bytes that a text of digits stands for. */
    language::Bytes bytes(const std::string &row, uint32_t number) const;
    bool has(const std::string &row, uint32_t number) const;
    /** Whether reading it failed. */
    bool hasFailed(const std::string &name) const;

    /** Tells once what the board cannot have. */
    void lack(const std::string &name, const std::string &reason);
};

/** A row's name with a number: "fan.1.speed". */
std::string twinName(const std::string &row, uint32_t number);

// The parts, in the order in which they are made
void makeTwinRegisters(Twin &twin); // once before all others, and once behind them
void makeTwinLines(Twin &twin);
void makeTwinMemories(Twin &twin);
void makeTwinSupplies(Twin &twin);
void makeTwinPoe(Twin &twin);
void makeTwinModules(Twin &twin);
void makeTwinClimate(Twin &twin);
void makeTwinClock(Twin &twin);
void makeTwinFlash(Twin &twin);
void makeTwinFaults(Twin &twin);

} // namespace vb
