// The interface that management software calls: each function is the bsp function of its stem.

#include "bsp.h"

// Device identity and versions
int32_t ioDevIdGet(uint32_t *devId) {
    return bspDevIdGet(devId);
}
int32_t ioDevSerialVerGet(uint32_t *ver) {
    return bspDevSerialVerGet(ver);
}
int32_t ioHwVersionGet(char *text) {
    return bspHwVersionGet(text);
}
int32_t ioCpldVersionGet(char *text) {
    return bspCpldVersionGet(text);
}
int32_t ioFpgaVersionGet(char *text) {
    return bspFpgaVersionGet(text);
}
int32_t ioBiosVersionGet(char *version) {
    return bspUbootVersionGet(version);
}
int32_t ioBoardSlotIdGet(uint32_t *slotId) {
    return bspBoardSlotIdGet(slotId);
}
int32_t ioBoardDescGet(char *desc) {
    return bspBoardDescGet(desc);
}
int32_t ioBoardDescSet(const char *desc) {
    return bspBoardDescSet(desc);
}
int32_t ioBoardPowerInfoGet(uint32_t index, void *info) {
    return bspBoardPowerInfoGet(index, info);
}

// Device information, MAC address and serial number
int32_t ioDevinfoGet(uint32_t index, BspDevinfo *record) {
    return bspDevinfoGet(index, record);
}
int32_t ioDevinfoSet(uint32_t index, BspDevinfo *record) {
    return bspDevinfoSet(index, record);
}
int32_t ioMacAddrGet(uint32_t index, uint8_t *mac) {
    return bspMacAddrGet(index, mac);
}
int32_t ioMacAddrSet(uint32_t index, const uint8_t *mac) {
    return bspMacAddrSet(index, mac);
}
int32_t ioSerialNumGet(char *serial, uint32_t *len) {
    return bspSerialNumGet(serial, len);
}
int32_t ioSerialNumSet(const char *serial, int32_t len) {
    return bspSerialNumSet(serial, len);
}
int32_t ioMfgDateGet(char *date) {
    return bspMfgDateGet(date);
}
int32_t ioMfgDateSet(const char *date) {
    return bspMfgDateSet(date);
}
