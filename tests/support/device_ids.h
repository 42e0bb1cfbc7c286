#pragma once
// The models by what they have, for tests that know them from their data sheets alone. A model is
// one row.

#include <cstdint>
#include <vector>

using DeviceIds = std::vector<uint32_t>;

enum class Chassis {
    FourFan, // two supplies, CPLD register 30
    TwoFan,  // two supplies, register 30, with records and live readings
    Other,   // supplies as the board's record says
};

struct DataSheet {
    uint32_t devId;
    Chassis chassis;
    uint32_t poePorts; // 0: no controller
    bool hasClock;
    uint32_t frontCages; // of ports from 1 on
    uint32_t firstUplink;
};

/** The family. */
inline constexpr DataSheet kDataSheets[] = {
    {0x0109, Chassis::Other, 0, false, 0, 25},   {0x0309, Chassis::FourFan, 0, true, 0, 25},
    {0x0409, Chassis::FourFan, 0, false, 0, 49}, {0x0509, Chassis::FourFan, 0, true, 24, 33},
    {0x0609, Chassis::FourFan, 0, true, 48, 49}, {0x0709, Chassis::TwoFan, 48, true, 0, 49},
    {0x0809, Chassis::TwoFan, 24, true, 0, 25},  {0x8209, Chassis::Other, 0, false, 0, 25},
    {0x8309, Chassis::FourFan, 0, false, 0, 49}, {0x8409, Chassis::FourFan, 0, true, 0, 25},
    {0x8509, Chassis::FourFan, 0, true, 48, 49}, {0x8609, Chassis::FourFan, 0, true, 24, 33},
    {0x8709, Chassis::TwoFan, 24, true, 0, 25},  {0x8809, Chassis::TwoFan, 48, true, 0, 49},
};

/** What is known of an id that nobody knows. */
constexpr DataSheet unknownSheet(uint32_t devId) {
    return {devId, Chassis::Other, 0, false, 0, 49};
}

/** The ids of the sheets that fit a condition. */
template <typename Fits>
DeviceIds idsWhere(Fits fits) {
    DeviceIds ids;
    for (const DataSheet &sheet : kDataSheets) {
        if (fits(sheet))
            ids.push_back(sheet.devId);
    }
    return ids;
}

inline DeviceIds idsWith(Chassis chassis) {
    return idsWhere([chassis](const DataSheet &sheet) { return sheet.chassis == chassis; });
}

/** The family, and three ids that nobody knows. */
inline const DeviceIds kKnownIds = idsWhere([](const DataSheet &) { return true; });
inline const DeviceIds kUnknownIds = {0x0209, 0x8109, 0x00010709};

inline DeviceIds allIds() {
    DeviceIds ids = kKnownIds;
    ids.insert(ids.end(), kUnknownIds.begin(), kUnknownIds.end());
    return ids;
}

inline bool isOneOf(uint32_t devId, const DeviceIds &ids) {
    for (const uint32_t id : ids) {
        if (id == devId)
            return true;
    }
    return false;
}
