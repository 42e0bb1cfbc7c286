/**
 * @file bsp.h
 * Board-support library of the managed Ethernet switch family.
 *
 * Everything on the board except the switching chip is read and changed through the functions of
 * this header. Management software calls the io* functions; each forwards to the bsp* function of
 * the same stem, and both layers are exported.
 *
 * Conventions that hold for every function:
 *  - The result is a status: BSP_OK (0) or one of the codes of ::BspStatus. When the node of the
 *    kernel module cannot be opened, or its ioctl fails, it is what open or ioctl answered, which
 *    is -1; a value that a function documents as "driver's own code" is the result word that the
 *    kernel module wrote.
 *  - Data goes through buffers that the caller owns and sizes. Unless a function says otherwise its
 *    outputs are untouched when it fails.
 *  - Pointers are trusted. A null one is answered where a function lists BSP_E_NULL or
 *    BSP_E_POE_NULL. Any other null or wrong pointer, a buffer that is smaller than documented, and
 *    a text without a zero behind it end the process or spoil its memory.
 *  - Every call opens what it needs and closes it again. Nothing is kept between calls. Only flash
 *    and the PoE controller are locked, as their sections say.
 *  - The library keeps two lock files in /tmp, and devId, poeApp and osHeader.bin in the directory
 *    /tmp/bsp, which start-up has to make: root's, mode 0755. A link in the place of one of these
 *    files is not followed: it is as a file that cannot be opened.
 *  - Diagnostics are printed on standard output, the system's own reasons (perror) on standard
 *    error. They never replace the status.
 */
#ifndef BSP_H
#define BSP_H

#include <stdint.h>

#if defined(__GNUC__)
#define BSP_API __attribute__((visibility("default")))
#else
#define BSP_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ------------------------------------------------------------------------------------------------
 * Version
 * --------------------------------------------------------------------------------------------- */

/** A version as one number, so that versions can be compared: 0x00010100 is 1.1.0. */
#define BSP_VERSION_NUMBER(major, minor, patch) ((major) << 16 | (minor) << 8 | (patch))

#define BSP_VERSION_MAJOR 1 /**< grows when programs have to be changed or compiled anew */
#define BSP_VERSION_MINOR 1 /**< grows with what is added */
#define BSP_VERSION_PATCH 0 /**< grows with what is mended */

/** The version of this header. */
#define BSP_VERSION BSP_VERSION_NUMBER(BSP_VERSION_MAJOR, BSP_VERSION_MINOR, BSP_VERSION_PATCH)

/**
 * Tells the version of the library that is loaded, which may be newer than the header that a
 * program was compiled with. Since 1.1.
 *
 * @return the library's ::BSP_VERSION
 */
BSP_API uint32_t bspLibraryVersion(void);

/* ------------------------------------------------------------------------------------------------
 * Status codes
 * --------------------------------------------------------------------------------------------- */

/** What a function answers. Positive codes belong to the board core, codes from -1100 down to PoE.
 */
enum BspStatus {
    BSP_OK = 0,                 /**< success */
    BSP_E_NOT_SUPPORTED = 1000, /**< the board has no such thing, or the index has no mapping */
    BSP_E_NULL = 1001,          /**< a required buffer or output pointer is null */
    BSP_E_INVALID = 1002,       /**< an argument is out of range, or a record fails its CRC */
    BSP_E_TIMEOUT = 1003,       /**< the MDIO interface stayed busy for the whole poll */
    BSP_E_NO_MEMORY = 1004,     /**< a working buffer could not be allocated */
    BSP_E_LOCK = 1009,          /**< the flash lock could not be taken */
    BSP_E_OPEN = 1010,          /**< a device node or file could not be opened */
    BSP_E_SHORT_READ = 1011,    /**< fewer bytes than required were read */
    BSP_E_ERASE = 1013,         /**< the flash geometry query or the erase failed */
    BSP_E_WRITE = 1014,         /**< a seek or a write to flash failed */
    BSP_E_MAP = 1015,           /**< the MDIO register page could not be mapped */
    BSP_E_NO_RECORD = 1017,     /**< the EEPROM holds no product information record */
    BSP_E_FAILED = -1, /**< generic failure: a transfer failed, or the kernel module's node did */
    BSP_E_EEPROM_SPAN = -1002, /**< an EEPROM transfer would end beyond byte 1023 */
    BSP_E_POE_UNAVAILABLE =
        -1100,                 /**< no PoE controller, or its state does not allow the request */
    BSP_E_POE_NULL = -1101,    /**< a required PoE pointer is null */
    BSP_E_POE_INVALID = -1102, /**< a PoE argument is out of range */
    BSP_E_POE_WRITE = -1103,   /**< a request frame could not be written to the controller */
    BSP_E_POE_READ = -1104,    /**< a reply frame could not be read from the controller */
    BSP_E_POE_FRAME = -1105,   /**< the reply does not echo the request, or its checksum is wrong */
    BSP_E_POE_STATUS = -1106,  /**< the controller reports failure for the request or a port */
    BSP_E_POE_CONTENT = -1107, /**< the reply names another port or carries an unknown value */
    BSP_E_POE_LOCK = -1108,    /**< the PoE lock file could not be locked */
    BSP_E_POE_NO_MEMORY = -1110, /**< the controller's firmware image could not be buffered */
    BSP_E_POE_OPEN = -1111,      /**< the application status file or a firmware file did not open */
    BSP_E_POE_SHORT_READ = -1112 /**< a firmware file gave fewer bytes than its size */
};

/** A status in words. */
typedef struct BspStatusText {
    const char *name;    /**< as in ::BspStatus: "BSP_E_INVALID"; empty for a foreign code */
    const char *meaning; /**< one line, without a full stop */
} BspStatusText;

/**
 * Puts a status into words. The texts are constants of the library. Since 1.1.
 *
 * @param[in] status  what a function answered
 * @return its texts, never null; a code that is not one of ::BspStatus comes from the kernel module
 *         or the operating system and has an empty name
 */
BSP_API const BspStatusText *bspStatusText(int32_t status);

/* ------------------------------------------------------------------------------------------------
 * Requests to the kernel module (/dev/bspHandle)
 * --------------------------------------------------------------------------------------------- */

/** Request codes of the kernel module: the ioctl command numbers, passed as they are. */
enum BspRequest {
    BSP_REQ_CPLD_READ = 0x1001,
    BSP_REQ_CPLD_WRITE = 0x1002,
    BSP_REQ_I2C_READ = 0x1003,
    BSP_REQ_I2C_WRITE = 0x1004,
    BSP_REQ_SPI_XFER = 0x1004, /**< shares the code of an I2C write */
    BSP_REQ_GPIO_INPUT = 0x1006,
    BSP_REQ_GPIO_OUTPUT = 0x1007,
    BSP_REQ_GPIO_READ = 0x1008,
    BSP_REQ_CPLD_UPGRADE = 0x1009
};

#define BSP_REQ_SLOTS 8 /**< argument slots of a request record; the last two are always 0 */

/**
 * The record that travels to the kernel module with each request: 72 bytes in the machine's own
 * byte order, zero-filled before the arguments are placed. Each argument is a 32-bit value widened
 * to its 64-bit slot by sign or by zero extension, as its builder documents. On a 64-bit host a
 * slot that carries an address holds the whole address; one that fits in 32 bits is widened like
 * any 32-bit word.
 */
typedef struct BspIoctlRecord {
    uint64_t slot[BSP_REQ_SLOTS]; /**< arguments, first argument in slot 0 */
    int32_t result;    /**< written by the driver: the request's own status, 0 = success */
    uint32_t reserved; /**< always 0 */
} BspIoctlRecord;

/**
 * Sends one request to the kernel module: opens /dev/bspHandle read-only, issues the ioctl, closes.
 *
 * @param request  a code of ::BspRequest
 * @param record   the request record; the driver reads its slots and writes its result word
 * @return BSP_OK when the driver took the request (its own answer is record->result);
 *         BSP_E_NULL for a null record, before anything is done;
 *         the negative result of open ("open file %s fail\n" is printed) or of ioctl
 *         ("ioctl fail, cmd=%#x\n" is printed)
 */
BSP_API int32_t bspFuncIoctl_handle(uint32_t request, BspIoctlRecord *record);

/**
 * Reads one CPLD register into a 32-bit word (request 0x1001; slot 0 register, zero-extended;
 * slot 1 address of the word, sign-extended).
 *
 * @param reg    register number
 * @param value  the driver stores the register's content here as a 32-bit word
 * @return BSP_OK; BSP_E_NULL; the negative status of bspFuncIoctl_handle(); or the driver's own
 *         code
 */
BSP_API int32_t bspFpgaGet_handle(uint32_t reg, uint32_t *value);

/**
 * Writes one CPLD register (request 0x1002; slot 0 register, slot 1 value, both zero-extended).
 * The whole 32-bit value travels; bspCpldSet() is the 16-bit form.
 *
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspFpgaSet_handle(uint32_t reg, uint32_t value);

/**
 * Reads from an I2C device (request 0x1003; slot 0 busChan, slot 3 offsetLen, slot 4 buffer and
 * slot 5 length sign-extended, slot 1 device address and slot 2 offset zero-extended).
 *
 * @param busChan    bus in bits 0-7, channel in bits 8-15
 * @param devAddr    7-bit device address
 * @param offset     register or memory offset inside the device
 * @param offsetLen  number of offset bytes sent before the data
 * @param buf        receives len bytes; not checked here, the driver judges all arguments
 * @param len        byte count
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspI2cRead_handle(uint32_t busChan, uint32_t devAddr, uint32_t offset,
                                  uint32_t offsetLen, void *buf, int32_t len);

/** Writes to an I2C device: request 0x1004, arguments, slots and results as bspI2cRead_handle(). */
BSP_API int32_t bspI2cWrite_handle(uint32_t busChan, uint32_t devAddr, uint32_t offset,
                                   uint32_t offsetLen, const void *buf, int32_t len);

/**
 * Sends an SPI transfer (request 0x1004, which the kernel module shares with the I2C write; slots
 * 0, 1, 2 and 4 sign-extended, slots 3 and 5 zero-extended). The meaning of the six words is the
 * driver's; nothing in this library sends one.
 *
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspSpiXfer_handle(uint32_t a1, uint32_t a2, uint32_t a3, uint32_t a4, uint32_t a5,
                                  uint32_t a6);

/**
 * Makes a GPIO line an input (request 0x1006; slot 0 line, zero-extended).
 *
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspGpioDirectionInput_handle(uint32_t pin);

/**
 * Makes a GPIO line an output and drives it (request 0x1007; slot 0 line, zero-extended; slot 1
 * level, sign-extended).
 *
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspGpioDirectionOutput_handle(uint32_t pin, int32_t level);

/**
 * Reads a GPIO line (request 0x1008; slot 0 line, zero-extended; slot 1 address of the output word,
 * sign-extended).
 *
 * @param value  the driver stores the level here as a 32-bit word
 * @return BSP_OK; BSP_E_NULL; the negative status of bspFuncIoctl_handle(); or the driver's own
 *         code
 */
BSP_API int32_t bspGpioGetValue_handle(uint32_t pin, uint32_t *value);

/**
 * Programs the CPLD from an image file (request 0x1009; slot 0 address of the parameter block and
 * slot 1 address of the path sign-extended, slot 2 length of the path zero-extended).
 *
 * @param params  the driver's programming parameter block
 * @param path    zero-terminated path of the image file
 * @return BSP_OK; BSP_E_NULL for a null argument; the negative status of bspFuncIoctl_handle(); or
 *         the driver's own code
 */
BSP_API int32_t bspCpldUpgrade_handle(const void *params, const char *path);

/**
 * Reads a 16-bit CPLD register.
 *
 * @param reg    register number
 * @param value  receives the register's content (the low 16 bits of the driver's word)
 * @return BSP_OK; BSP_E_NULL; a negative status of the request channel; or the driver's own code
 */
BSP_API int32_t bspCpldGet(uint32_t reg, uint16_t *value);

/**
 * Writes a 16-bit CPLD register. Only the low 16 bits of value reach the driver.
 *
 * @return BSP_OK; a negative status of the request channel; or the driver's own code
 */
BSP_API int32_t bspCpldSet(uint32_t reg, uint32_t value);

/** The board has no FPGA. @return BSP_E_NOT_SUPPORTED whatever the arguments; nothing is touched.
 */
BSP_API int32_t bspFpgaGet(uint32_t reg, uint16_t *value);

/** The board has no FPGA. @return BSP_E_NOT_SUPPORTED whatever the arguments. */
BSP_API int32_t bspFpgaSet(uint32_t reg, uint32_t value);

/**
 * Reads from an I2C device behind a bus and channel. The arguments are not checked: the driver
 * judges them, a null buffer included.
 *
 * @param bus        bus number (its low 8 bits)
 * @param channel    branch behind the bus (its low 8 bits)
 * @param devAddr    7-bit device address
 * @param offset     register or memory offset inside the device
 * @param offsetLen  number of offset bytes sent before the data (0 for a raw transfer)
 * @param buf        receives len bytes
 * @param len        byte count
 * @return BSP_OK; a negative status of the request channel; or the driver's own code
 */
BSP_API int32_t bspI2cRead(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                           uint32_t offsetLen, uint8_t *buf, int32_t len);

/** Writes to an I2C device; arguments and results as bspI2cRead(), buf is sent. */
BSP_API int32_t bspI2cWrite(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                            uint32_t offsetLen, const uint8_t *buf, int32_t len);

/** Makes a GPIO line an input; as bspGpioDirectionInput_handle(). */
BSP_API int32_t bspGpioDirectionInput(uint32_t pin);

/** Makes a GPIO line an output and drives it to level; as bspGpioDirectionOutput_handle(). */
BSP_API int32_t bspGpioDirectionOutput(uint32_t pin, int32_t level);

/** Reads the level of a GPIO line into *value; as bspGpioGetValue_handle(). */
BSP_API int32_t bspGpioGetValue(uint32_t pin, uint32_t *value);

/* ------------------------------------------------------------------------------------------------
 * Device identity and versions
 * --------------------------------------------------------------------------------------------- */

/**
 * Reads the device id, the model code of the board (0x0709, for example).
 *
 * The id is the content of CPLD register 1. It is asked once per boot: the first answer is kept in
 * /tmp/bsp/devId (4 bytes, native byte order) and a non-zero content of that file is returned
 * without touching the CPLD and without any check. The directory /tmp/bsp must exist.
 *
 * @param devId  receives the id; must not be null (not checked)
 * @return BSP_OK; BSP_E_OPEN when the cache file can be neither opened nor created; or the status
 *         of bspCpldGet()
 */
BSP_API int32_t bspDevIdGet(uint32_t *devId);

/**
 * Reads the device serial version: bits 7-0 of CPLD register 1, read afresh on every call.
 *
 * @return BSP_OK; BSP_E_NULL; or the status of bspCpldGet()
 */
BSP_API int32_t bspDevSerialVerGet(uint32_t *ver);

/**
 * Reads the hardware revision as text, for example "A.3", from CPLD register 2: a letter ('@' +
 * bits 15-12) and a number (bits 11-8).
 *
 * @param text  receives the zero-terminated text; at least 5 bytes
 * @return BSP_OK; BSP_E_NULL; or the status of bspCpldGet()
 */
BSP_API int32_t bspHwVersionGet(char *text);

/**
 * Reads the CPLD version as text, for example "V1.2", from CPLD register 2 (major bits 7-4, minor
 * bits 3-0).
 *
 * @param text  receives the zero-terminated text; at least 7 bytes
 * @return BSP_OK; BSP_E_NULL; or the status of bspCpldGet()
 */
BSP_API int32_t bspCpldVersionGet(char *text);

/**
 * The board has no FPGA: stores "---".
 *
 * @param text  receives 4 bytes, the terminating zero included
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspFpgaVersionGet(char *text);

/**
 * Reads the boot loader's version: the 6 bytes that follow "bootver=" in the first line of
 * /proc/cmdline (at most 255 characters are looked at), whatever they are. A shorter value brings
 * the space, newline or zero bytes behind it along.
 *
 * @param version  receives exactly 6 bytes and no terminating zero, so zero-fill a buffer of 7
 *                 beforehand; untouched when the command line has no "bootver="
 * @return BSP_OK, also when the key is absent; BSP_E_FAILED (-1, not BSP_E_NULL) for a null buffer
 *         or when /proc/cmdline cannot be opened ("open /proc/cmdline fail" is printed as a line)
 */
BSP_API int32_t bspUbootVersionGet(char *version);

/** Slot number of this single-slot box as the board sees it: always 0. @return BSP_OK, BSP_E_NULL
 */
BSP_API int32_t bspBoardSlotIdGet(uint32_t *slotId);

/** The board keeps no description. @return BSP_E_NOT_SUPPORTED; nothing is touched. */
BSP_API int32_t bspBoardDescGet(char *desc);

/** The board keeps no description. @return BSP_E_NOT_SUPPORTED; nothing is touched. */
BSP_API int32_t bspBoardDescSet(const char *desc);

/** The board reports no power budget. @return BSP_E_NOT_SUPPORTED; nothing is touched. */
BSP_API int32_t bspBoardPowerInfoGet(uint32_t index, void *info);

/* ------------------------------------------------------------------------------------------------
 * EEPROM and product information records
 * --------------------------------------------------------------------------------------------- */

#define BSP_DEVINFO_MAGIC "DEVINFO"  /**< first 8 bytes of the board's record, with the zero */
#define BSP_EEPROM_SIZE 1024         /**< largest addressable EEPROM span in bytes */
#define BSP_DEVINFO_OFFSET 256       /**< where the board's record lies in the board's EEPROM */
#define BSP_SUPPLY_RECORD_OFFSET 176 /**< where a supply's record lies in the supply's EEPROM */

/** The board's product information record: 128 bytes at offset 256 of the board's EEPROM. */
typedef struct BspDevinfo {
    char magic[8];            /**< "DEVINFO" and a zero byte */
    uint8_t reserved1[2];     /**< carried unchanged */
    uint8_t mac[6];           /**< base MAC address, first octet first */
    uint8_t productData1[16]; /**< carried unchanged */
    uint8_t productData2[32]; /**< carried unchanged */
    char serial[32];          /**< serial number, ASCII, zero-padded */
    uint8_t supplyCount; /**< number of power supplies, at most 6 (models without fixed supplies) */
    uint8_t supplyType[6];   /**< type of supplies 1-6 (models without fixed supplies) */
    uint8_t productData3[4]; /**< carried unchanged */
    uint8_t reserved2[17];   /**< carried unchanged */
    uint8_t crc[4];          /**< CRC-32 of the 124 bytes before it, most significant byte first */
} BspDevinfo;

/** A power supply's record: 80 bytes at offset 176 of the supply's EEPROM, no magic and no CRC. */
typedef struct BspSupplyRecord {
    uint8_t productData2[32]; /**< carried unchanged */
    uint8_t productData3[4];  /**< carried unchanged */
    uint8_t unused[4]; /**< not shown in the ::BspDevinfo view, written as zeros through it */
    char serial[24];   /**< serial number, ASCII, zero-padded */
    uint8_t productData1[16]; /**< carried unchanged */
} BspSupplyRecord;

/**
 * Reads an EEPROM in chunks of at most 16 bytes that never cross a 256-byte block, with a pause of
 * 1 ms after each. Block n of 256 bytes answers at device address devAddr + n.
 *
 * @param bus      I2C bus
 * @param channel  branch behind the bus
 * @param devAddr  7-bit device address of the first block
 * @param offset   first byte, 0-1023
 * @param buf      receives len bytes; on failure the chunks before the failed one have arrived
 * @param len      byte count; 0 answers BSP_OK at once
 * @return BSP_OK; BSP_E_NULL ("ERROR: %s(%d): ptr buff is NULL.\n" is printed); BSP_E_EEPROM_SPAN
 *         when offset + len is 1025 or more; BSP_E_FAILED when a transfer fails
 */
BSP_API int32_t bspI2cEepromRead(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                                 uint8_t *buf, uint32_t len);

/**
 * Writes an EEPROM in chunks that never cross a 16-byte write page; otherwise as
 * bspI2cEepromRead(). On failure the chunks before the failed one stay written.
 */
BSP_API int32_t bspI2cEepromWrite(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                                  const uint8_t *buf, uint32_t len);

/** Reads the board's EEPROM (bus 0, channel 0, device 0x50); results as bspI2cEepromRead(). */
BSP_API int32_t bspLocalEepromRead(uint32_t offset, uint8_t *buf, uint32_t len);

/** Writes the board's EEPROM (bus 0, channel 0, device 0x50); results as bspI2cEepromWrite(). */
BSP_API int32_t bspLocalEepromWrite(uint32_t offset, const uint8_t *buf, uint32_t len);

/**
 * Reads the EEPROM of a power supply (bus 0, channel supply + 1, device 0x50), on any model.
 *
 * @param supply  1 or 2
 * @return as bspI2cEepromRead(); a null buffer is answered before the supply number is looked at;
 *         BSP_E_INVALID for any other supply
 */
BSP_API int32_t bspPowerEepromRead(uint32_t supply, uint32_t offset, uint8_t *buf, uint32_t len);

/** Writes the EEPROM of a power supply; arguments and results as bspPowerEepromRead(). */
BSP_API int32_t bspPowerEepromWrite(uint32_t supply, uint32_t offset, const uint8_t *buf,
                                    uint32_t len);

/**
 * Reads and checks the board's product information record.
 *
 * @param record  receives 128 bytes, on success only
 * @return BSP_OK; BSP_E_NULL; BSP_E_NO_MEMORY; the status of bspLocalEepromRead(); BSP_E_NO_RECORD
 *         when the magic is missing; BSP_E_INVALID when the CRC does not match
 */
BSP_API int32_t bspLocalPieGet(BspDevinfo *record);

/**
 * Writes the board's product information record.
 *
 * @param record  128 bytes that begin with the magic; its CRC field is computed here, so the
 *                caller's copy changes even when the write then fails
 * @return BSP_OK; BSP_E_NULL; BSP_E_NO_RECORD when the magic is missing (nothing is written); the
 *         status of bspLocalEepromWrite()
 */
BSP_API int32_t bspLocalPieSet(BspDevinfo *record);

/**
 * Reads the record of a power supply, on any model. Its content is not checked.
 *
 * @param supply  1 or 2
 * @param record  receives 80 bytes, on success only
 * @return BSP_OK; BSP_E_NULL; BSP_E_NO_MEMORY; the status of bspPowerEepromRead()
 */
BSP_API int32_t bspPowerPieGet(uint32_t supply, BspSupplyRecord *record);

/**
 * Writes the record of a power supply, on any model.
 *
 * @param supply  1 or 2
 * @param record  80 bytes
 * @return BSP_OK; BSP_E_NULL; the status of bspPowerEepromWrite()
 */
BSP_API int32_t bspPowerPieSet(uint32_t supply, const BspSupplyRecord *record);

/**
 * Continues a CRC-32 (IEEE 802.3, reflected, polynomial 0xEDB88320).
 *
 * @param crc  result of the call for the bytes before these, 0 to start
 * @param buf  len bytes
 * @return the CRC of all bytes so far; 0 for a null buffer
 */
BSP_API uint32_t bsp_crc32_cal(uint32_t crc, const uint8_t *buf, uint32_t len);

/* ------------------------------------------------------------------------------------------------
 * Device information, MAC address and serial number
 * --------------------------------------------------------------------------------------------- */

#define BSP_DEVINFO_BOARD 0u       /**< device information index of the board's own record */
#define BSP_DEVINFO_SUPPLY_1 0x50u /**< index of power supply 1; supply n is 0x50 + n - 1 */

/**
 * Reads a device information record.
 *
 * Index 0 is the board's record, magic and CRC checked. An index whose bits 7-4 are 5 is power
 * supply index - 0x4F, on two-fan models only: its record is shown in the board's layout, that is
 * productData1, productData2, productData3 and the first 24 bytes of serial are stored and all
 * other bytes of the caller's buffer keep their values.
 *
 * @param index   0, 0x50 or 0x51
 * @param record  128 bytes
 * @return BSP_OK; BSP_E_NULL; BSP_E_NOT_SUPPORTED for any other index or a supply on a model
 *         without supply records; BSP_E_INVALID for a supply above 2; the status of bspDevIdGet()
 *         ("%s-%d: get devId failed\n" is printed), of bspLocalPieGet() or of bspPowerPieGet()
 */
BSP_API int32_t bspDevinfoGet(uint32_t index, BspDevinfo *record);

/**
 * Stores a device information record, the reverse of bspDevinfoGet().
 *
 * Index 0 needs the magic and gets its CRC computed into the caller's buffer. For a supply the four
 * ranges are taken from the buffer and bytes 36-39 of the supply's record become zeros.
 *
 * @return as bspDevinfoGet(), with the statuses of bspLocalPieSet() and bspPowerPieSet()
 */
BSP_API int32_t bspDevinfoSet(uint32_t index, BspDevinfo *record);

/**
 * Reads a MAC address from the board's record.
 *
 * @param index  0 gives the stored base address with 1 added to its last byte (0xFF becomes 0x00,
 *               nothing is carried); any other index gives the stored base address
 * @param mac    receives 6 bytes, first octet first
 * @return BSP_OK; BSP_E_NULL; the status of bspDevinfoGet() ("%s-%d: devinfo get failed\n" is
 *         printed)
 */
BSP_API int32_t bspMacAddrGet(uint32_t index, uint8_t *mac);

/**
 * Stores the base MAC address in the board's record, the same for every index: a set with index 0
 * followed by a get with index 0 answers the address plus one.
 *
 * @param mac  6 bytes, first octet first
 * @return BSP_OK; BSP_E_NULL; the status of bspDevinfoGet() ("%s-%d: devinfo get failed\n" is
 *         printed) or of bspDevinfoSet() ("%s-%d: devinfo set failed\n" is printed)
 */
BSP_API int32_t bspMacAddrSet(uint32_t index, const uint8_t *mac);

/**
 * Reads the serial number from the board's record.
 *
 * @param serial  receives the characters and no terminating zero, so zero-fill it beforehand; 32
 *                bytes suffice for every number that bspSerialNumSet() writes, 64 for any record
 * @param len     receives the number of characters, up to the first zero byte of the field (a field
 *                without one runs on into the bytes behind it, to the record's end at the latest)
 * @return BSP_OK; BSP_E_NULL; the status of bspDevinfoGet() ("%s-%d: devinfo get failed\n" is
 *         printed)
 */
BSP_API int32_t bspSerialNumGet(char *serial, uint32_t *len);

/**
 * Stores the serial number in the board's record, padded with zeros to 32 bytes.
 *
 * @param serial  len bytes
 * @param len     1 to 31
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID for a length out of range; the status of
 *         bspDevinfoGet() ("%s-%d: devinfo get failed\n" is printed) or of bspDevinfoSet()
 *         ("%s-%d: devinfo set failed\n" is printed)
 */
BSP_API int32_t bspSerialNumSet(const char *serial, int32_t len);

/** The board keeps no manufacturing date. @return BSP_OK; the output is not touched. */
BSP_API int32_t bspMfgDateGet(char *date);

/** The board keeps no manufacturing date. @return BSP_OK; nothing is stored. */
BSP_API int32_t bspMfgDateSet(const char *date);

/* ------------------------------------------------------------------------------------------------
 * Boot settings
 *
 * Texts in the first 256 bytes of the flash partition /dev/mtd4. There is no lock: two setters at
 * the same time can lose each other's setting, and a power cut between the erase and the write of a
 * setter leaves an erased block, which reads as the defaults below.
 *
 * A partition that cannot be opened, read, erased or written is not reported. Getters then answer
 * as for an erased block, and setters answer BSP_OK: read a setting back to know that it is stored.
 * --------------------------------------------------------------------------------------------- */

#define BSP_BOOT_PASSWORD_MAX 40 /**< longest boot password in characters */

/**
 * Reads which system the boot loader starts ("main_system=").
 *
 * @param mode  receives 1 for a stored value other than 0, else 0; 0 when nothing is stored
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspBootModeGet(uint32_t *mode);

/** Stores which system the boot loader starts: 1 for a mode above 0, else 0. @return BSP_OK */
BSP_API int32_t bspBootModeSet(int32_t mode);

/**
 * Reads the boot flag ("boot_type=").
 *
 * @param flag  receives the stored number
 * @return BSP_OK; BSP_E_NULL; BSP_E_FAILED when no flag is stored
 */
BSP_API int32_t bspBootFlagGet(int32_t *flag);

/** Stores the boot flag as it is, negative ones too. @return BSP_OK */
BSP_API int32_t bspBootFlagSet(int32_t flag);

/**
 * Reads the console's baud rate at start-up ("baudrate=").
 *
 * @param rate  receives the rate in bits per second; 115200 when nothing is stored
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspBaudrateGet(uint32_t *rate);

/**
 * Switches the running console (/dev/ttyS0, by the command stty) to a baud rate and stores it for
 * the next start.
 *
 * @param rate  9600, 19200, 38400, 57600 or 115200
 * @return BSP_OK; BSP_E_INVALID for another rate (a message is printed); BSP_E_FAILED when stty
 *         fails (a message is printed), and then nothing is stored
 */
BSP_API int32_t bspBaudrateSet(uint32_t rate);

/**
 * Tells whether the console asks for a password ("password=").
 *
 * @param valid  receives 1 for a stored value other than 0, else 0; 0 when nothing is stored
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspConsolePwdValidGet(uint32_t *valid);

/** Stores whether the console asks for a password: 1 for a value above 0, else 0. @return BSP_OK */
BSP_API int32_t bspConsolePwdValidSet(int32_t valid);

/**
 * Tells whether the user password is in force ("user_pwd=").
 *
 * @param valid  receives 0 when 0 is stored, else 1; 1 when nothing is stored
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspUserPwdValidGet(uint32_t *valid);

/** Stores whether the user password is in force: 0 as such, any other value as an erased slot.
 * @return BSP_OK
 */
BSP_API int32_t bspUserPwdValidSet(int32_t valid);

/**
 * Reads the boot password ("boot_pwd=").
 *
 * @param pwd  receives the zero-terminated password, empty when none is stored. 41 bytes for what
 *             bspBootPwdSet() stores; 56 bytes for whatever the slot may hold
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspBootPwdGet(char *pwd);

/**
 * Stores the boot password.
 *
 * @param pwd  zero-terminated, at most 40 characters; an empty one clears the slot
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID for a longer one, before anything is read
 */
BSP_API int32_t bspBootPwdSet(const char *pwd);

/* ------------------------------------------------------------------------------------------------
 * Power supplies
 * --------------------------------------------------------------------------------------------- */

/** What bspPowerInfoGet() tells of a supply. A reading that the supply does not give is 0. */
typedef struct BspPowerInfo {
    int32_t type;          /**< as from bspPowerTypeGet() */
    int32_t inputVoltage;  /**< millivolts, PMBus READ_VIN */
    int32_t inputCurrent;  /**< milliamperes, READ_IIN */
    int32_t inputPower;    /**< milliwatts, READ_PIN */
    int32_t outputVoltage; /**< millivolts, READ_VOUT */
    int32_t outputCurrent; /**< milliamperes, READ_IOUT */
    int32_t outputPower;   /**< milliwatts, READ_POUT */
    int32_t reserved;      /**< always 0 */
    int32_t temperature1;  /**< degrees Celsius, READ_TEMPERATURE_1 */
    int32_t temperature2;  /**< degrees Celsius, READ_TEMPERATURE_2 */
    int32_t temperature3;  /**< degrees Celsius, READ_TEMPERATURE_3 */
} BspPowerInfo;

/**
 * Tells how many power supplies the board has: 2 on four-fan and two-fan models, the count of the
 * board's record on all others.
 *
 * @param out  receives the count, also when it is refused; must not be null (not checked)
 * @return BSP_OK; the status of bspDevIdGet() ("%s-%d: get devId failed\n" is printed) or of
 *         bspDevinfoGet() ("%s-%d: devinfo get failed\n" is printed); BSP_E_INVALID for a count
 *         above 6 ("%s-%d: power num %d > max %d\n" is printed)
 */
BSP_API int32_t bspPowerNumGet(int32_t *out);

/**
 * Tells whether a supply is present: CPLD register 30, bit index - 1, on four-fan and two-fan
 * models; register 6, bit index + 8 (active low), on all others.
 *
 * @param index  1 or 2 on every model
 * @param out    receives 1 or 0; must not be null (not checked)
 * @return BSP_OK; BSP_E_INVALID; the status of bspDevIdGet() ("%s-%d: get devId failed\n" is
 *         printed) or of bspCpldGet()
 */
BSP_API int32_t bspPowerPresentGet(int32_t index, int32_t *out);

/**
 * Reads the type of a supply: on four-fan and two-fan models CPLD register 30, bit index + 1 (1
 * when it is set, else 2), on all others the type byte of the board's record.
 *
 * On the models with fixed supplies the type can be read only while bit index - 1 of register 30 is
 * clear, the very bit that bspPowerPresentGet() answers.
 *
 * @param index  supply, counted from 1 (not checked on models with fixed supplies)
 * @param out    receives the type
 * @return BSP_OK; BSP_E_NULL; BSP_E_FAILED while the bit above is set; BSP_E_INVALID for a supply
 *         that the board's record does not have ("%s-%d: power index %d > powerNum %d\n" is
 *         printed); the status of bspDevIdGet() ("%s-%d: get devId failed\n" is printed), of
 *         bspDevinfoGet() ("%s-%d: devinfo get failed\n" is printed) or of bspCpldGet()
 */
BSP_API int32_t bspPowerTypeGet(int32_t index, int32_t *out);

/**
 * Reads the status of a supply, 0 to 4, from the lines of CPLD register 30; always 0 on models
 * without fixed supplies.
 *
 * @param index  supply, counted from 1
 * @param out    receives the status code; must not be null (not checked)
 * @return BSP_OK; BSP_E_INVALID for an index below 1 or above the count; the status of
 *         bspDevIdGet() ("%s-%d: get devId failed\n" is printed), of bspPowerNumGet() or of
 *         bspCpldGet()
 */
BSP_API int32_t bspPowerStatusGet(int32_t index, int32_t *out);

/**
 * Takes all live readings of a supply over PMBus (bus 0, channel index + 1, device 0x58): at least
 * 900 ms on a two-fan model. On all others the type alone is filled.
 *
 * @param index  1 or 2 on a two-fan model; on others what bspPowerTypeGet() takes
 * @param info   cleared first; readings before a failure keep their values; must not be null (not
 *               checked)
 * @return BSP_OK; the status of bspPowerTypeGet() ("%s-%d: get power type failed, ret=%d\n" is
 *         printed) or of bspDevIdGet() ("%s-%d: get devId failed\n" is printed); BSP_E_FAILED
 *         when a reading fails, or for an index other than 1 and 2 on a two-fan model
 */
BSP_API int32_t bspPowerInfoGet(int32_t index, BspPowerInfo *info);

/* ------------------------------------------------------------------------------------------------
 * LEDs, watchdog, reboot and PTP trigger
 * --------------------------------------------------------------------------------------------- */

/**
 * Sets a front-panel LED, read-modify-write of its CPLD register.
 *
 * @param unit    ignored
 * @param index   lamp or PoE port, counted from 1, for the kinds 7 and 9
 * @param kind    1: system lamp (register 7, bits 0-1); 4 and 5: register 7, bit 4 or 5; 7:
 *                register 7, bit index + 5; 9: PoE port (registers 13 to 15, a bit for each port,
 *                active low)
 * @param colour  ignored
 * @param state   0 to 3 for kind 1, 0 or 1 for the others
 * @return BSP_OK; BSP_E_NOT_SUPPORTED for another kind, for kind 9 on a model without PoE, and for
 *         the states 2 and 3 of a lamp that has two; BSP_E_INVALID for a state above 3 or a port
 *         that the model does not have; the status of bspDevIdGet(), bspCpldGet() or bspCpldSet()
 */
BSP_API int32_t bspLedStateSet(uint32_t unit, uint32_t index, uint32_t kind, uint32_t colour,
                               uint32_t state);

/** Feeds the watchdog: one edge on GPIO line 0. @return BSP_OK, also when the line fails */
BSP_API int32_t bspWatchdogFeed(void);

/** Does nothing: bspWatchdogPeriodSet() arms the watchdog. @return BSP_OK */
BSP_API int32_t bspWatchdogStart(void);

/** Disarms the watchdog: period 0. @return the status of bspWatchdogPeriodSet() */
BSP_API int32_t bspWatchdogStop(void);

/**
 * Reads the watchdog's period from CPLD register 4, bits 7-2.
 *
 * @return BSP_OK; BSP_E_NULL; the status of bspCpldGet()
 */
BSP_API int32_t bspWatchdogPeriodGet(uint32_t *period);

/**
 * Sets the watchdog's period in the CPLD's units and arms it; 0 disarms it. The whole of CPLD
 * register 4 is written.
 *
 * @param period  0 to 63
 * @return BSP_OK; BSP_E_INVALID; the status of bspCpldSet()
 */
BSP_API int32_t bspWatchdogPeriodSet(uint32_t period);

/** Resets the board: writes 0 to CPLD register 5. @return the status of bspCpldSet() */
BSP_API int32_t bspHwReboot(void);

/**
 * Gives a low pulse of at least 100 microseconds on the PTP trigger line (CPLD register 6, bit 15).
 *
 * @param value  ignored
 * @return BSP_OK; the status of bspCpldGet() or bspCpldSet(), which is also printed
 */
BSP_API int32_t bspPtpTriggerSet(uint32_t value);

/** The box has no slots. @return BSP_E_NOT_SUPPORTED; nothing is touched */
BSP_API int32_t bspSlotPresentGet(uint32_t slot, uint32_t *out);

/** The box has no slots. @return BSP_E_NOT_SUPPORTED; nothing is touched */
BSP_API int32_t bspSlotPowerStateSet(uint32_t slot, uint32_t state);

/* ------------------------------------------------------------------------------------------------
 * Fans and temperature
 * --------------------------------------------------------------------------------------------- */

/**
 * Reads the board's temperature from its sensor (I2C bus 0, channel 1, device 0x4F).
 *
 * @param sensor  ignored: there is one
 * @param out     receives whole degrees Celsius, -128 to 127
 * @return BSP_OK; BSP_E_NULL; the status of bspI2cRead()
 */
BSP_API int32_t bspTemperGet(uint32_t sensor, int32_t *out);

/**
 * Reads the speed of a fan from CPLD register 28 (fans 1 and 2) or 29 (fans 3 and 4): 120
 * revolutions per minute for each of its tachometer's counts. Both fans of a two-fan model have one
 * tachometer.
 *
 * @param fan  1 to 4 on a four-fan model, 1 or 2 on all others
 * @param out  receives revolutions per minute, 0 to 30600
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID for another fan; the status of bspDevIdGet()
 *         ("%s-%d: get devId failed\n" is printed) or of bspCpldGet()
 */
BSP_API int32_t bspFanSpeedGet(uint32_t fan, uint32_t *out);

/**
 * Sets the speed level of all fans: bits 5-8 of CPLD register 6 become level - 1, its other bits
 * are kept. Nothing else may write that register meanwhile: it also has the PTP trigger line.
 *
 * @param fan    ignored: the fans share one level
 * @param level  1 (slowest) to 10
 * @return BSP_OK; BSP_E_INVALID for another level; the status of bspCpldGet() or bspCpldSet()
 */
BSP_API int32_t bspFanSpeedSet(uint32_t fan, int32_t level);

/**
 * Tells whether a fan is present. A line tells it of a pair of fans: on a four-fan model bit 0
 * (fans 1 and 2) and bit 1 (fans 3 and 4) of CPLD register 30, on a two-fan model bit 8 of
 * register 31. All other models have no such line, and the answer is 0.
 *
 * @param fan  1 to 4 on a four-fan model, 1 or 2 on all others
 * @param out  receives 1 or 0
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID for another fan; the status of bspDevIdGet()
 *         ("%s-%d: get devId failed\n" is printed) or of bspCpldGet()
 */
BSP_API int32_t bspFanPresentGet(int32_t fan, uint32_t *out);

/* ------------------------------------------------------------------------------------------------
 * Clock chip and system clock
 *
 * The battery-backed clock chip is on I2C bus 0, channel 1, device 0x51. Some models do not have
 * it.
 * --------------------------------------------------------------------------------------------- */

/**
 * A date and time. The chip stores any numbers; bspSysClockSync() takes them by the conventions of
 * the C library's struct tm, whose first six members these are.
 */
typedef struct BspCalendar {
    uint32_t second; /**< 0 to 59 */
    uint32_t minute; /**< 0 to 59 */
    uint32_t hour;   /**< 0 to 23 */
    uint32_t day;    /**< of the month, 1 to 31 */
    uint32_t month;  /**< 0 to 11 */
    uint32_t year;   /**< since 1900; the chip holds 0 to 159 */
} BspCalendar;

/**
 * Reads the clock chip on any model, one register after another: second, minute, hour, day, month,
 * year (registers 2, 3, 4, 5, 7, 8). The decimal digits are decoded and not checked.
 *
 * @param year    receives the stored year
 * @param month   receives the stored month
 * @param day     receives the stored day
 * @param hour    receives the stored hour
 * @param minute  receives the stored minute
 * @param second  receives the stored second
 * @return BSP_OK; BSP_E_NULL when an output is null, before anything is read; the status of the
 *         first failed bspI2cRead(): what was read before it has been stored, the other outputs
 *         are untouched
 */
BSP_API int32_t bsp_rtc_chip_get(uint16_t *year, uint8_t *month, uint8_t *day, uint8_t *hour,
                                 uint8_t *minute, uint8_t *second);

/**
 * Writes the clock chip on any model, in the order and to the registers of bsp_rtc_chip_get(). The
 * numbers are not checked. What reads back as it was written: minute and second 0 to 79, day and
 * hour 0 to 39, month 0 to 19, year 0 to 159, of which the low byte counts.
 *
 * @return BSP_OK; the status of the first failed bspI2cWrite(): what comes before it is written
 */
BSP_API int32_t bsp_rtc_chip_set(uint32_t year, uint32_t month, uint32_t day, uint32_t hour,
                                 uint32_t minute, uint32_t second);

/**
 * Reads the clock chip. A model without one answers BSP_OK at once.
 *
 * @param record  receives the chip's content, as bsp_rtc_chip_get() does, also up to a failure;
 *                untouched on a model without the chip
 * @return BSP_OK; the status of bspDevIdGet(); BSP_E_NULL on a model with the chip; the status of
 *         bsp_rtc_chip_get()
 */
BSP_API int32_t bspRealtimeGet(BspCalendar *record);

/**
 * Writes the clock chip. A model without one answers BSP_OK at once.
 *
 * @param record  of each number the low 8 bits count; must not be null on a model with the
 *                chip (not checked)
 * @return BSP_OK; the status of bspDevIdGet() or of bsp_rtc_chip_set()
 */
BSP_API int32_t bspRealtimeSet(const BspCalendar *record);

/**
 * Sets the system clock from the clock chip, whose content is local time. A model without the chip
 * sets it from a record of zeros. Whether the system clock could be set (it takes the privilege) is
 * not told.
 *
 * @return BSP_OK; the status of bspRealtimeGet(), and then the system clock is left alone
 */
BSP_API int32_t bspSysClockSync(void);

/** Starts the library: bspSysClockSync(), whatever comes of it. @return BSP_OK */
BSP_API int32_t bspInit(void);

/* ------------------------------------------------------------------------------------------------
 * Pluggable transceivers
 *
 * Ports are numbered as on the front panel. Which of them are SFP cages, and on which I2C branch,
 * depends on the model.
 * --------------------------------------------------------------------------------------------- */

/**
 * Reads a device of the transceiver in a cage, in chunks as bspI2cEepromRead() does.
 *
 * @param port     an SFP cage of the board
 * @param devAddr  7-bit device address, its low byte: 0x50 identification page, 0x51 diagnostics
 *                 page, 0x56 PHY of a copper module
 * @param offset   first byte, 0 to 255
 * @param buf      receives len bytes; on failure the chunks before the failed one have arrived
 * @param len      byte count, at least 1
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID when len is 0, when offset + len is above 256, or for a
 *         port that is no SFP cage; the status of bspDevIdGet() or of bspI2cEepromRead()
 */
BSP_API int32_t bspLaserSfpRead(uint32_t port, uint32_t devAddr, uint32_t offset, uint8_t *buf,
                                uint32_t len);

/**
 * Writes a device of the transceiver in a cage, in chunks as bspI2cEepromWrite() does; arguments
 * and results as bspLaserSfpRead(). On failure the chunks before the failed one stay written.
 */
BSP_API int32_t bspLaserSfpWrite(uint32_t port, uint32_t devAddr, uint32_t offset,
                                 const uint8_t *buf, uint32_t len);

/** Reads a byte of the identification page (device 0x50). @return as bspLaserSfpRead() */
BSP_API int32_t bspLaserBasicGet(uint32_t port, uint32_t offset, uint8_t *byte);

/** Reads a byte of the diagnostics page (device 0x51). @return as bspLaserSfpRead() */
BSP_API int32_t bspLaserAdvanceGet(uint32_t port, uint32_t offset, uint8_t *byte);

/**
 * Reads a register of a copper module's PHY (2 bytes of device 0x56, most significant byte first).
 *
 * @param reg    register number, 0 to 254
 * @param value  receives the register's content; on failure what has arrived of it, else 0
 * @return BSP_E_NULL, and value is not stored; otherwise as bspLaserSfpRead()
 */
BSP_API int32_t bspLaserPhyGet(uint32_t port, uint32_t reg, uint16_t *value);

/**
 * Writes a register of a copper module's PHY.
 *
 * @param reg    register number, 0 to 254
 * @param value  its low 16 bits are written
 * @return as bspLaserSfpWrite()
 */
BSP_API int32_t bspLaserPhySet(uint32_t port, uint32_t reg, uint32_t value);

/** Whether a module has a copper port, and the mode of its PHY (register 27, bits 0-3). */
enum BspCopperKind {
    BSP_COPPER_NONE = 0,      /**< not a copper module */
    BSP_COPPER_MODE_4 = 1,    /**< PHY mode 4 */
    BSP_COPPER_MODE_12 = 2,   /**< PHY mode 12 */
    BSP_COPPER_OTHER_MODE = 3 /**< any other PHY mode */
};

/**
 * Recognises a copper module by its connector type (identification byte 2 is 0x22) and tells the
 * mode of its PHY.
 *
 * @param kind  receives a code of ::BspCopperKind, also when the PHY cannot be read; untouched when
 *              the connector type cannot be read, for whatever reason
 * @return BSP_OK, also when the connector type cannot be read; BSP_E_NULL; the status of
 *         bspLaserPhyGet()
 */
BSP_API int32_t bspElectricModerTypeGet(uint32_t port, uint16_t *kind);

/** No board has QSFP cages. @return BSP_E_NOT_SUPPORTED; nothing is touched */
BSP_API int32_t bspLaserQsfpRead(uint32_t port, uint32_t offset, uint8_t *buf, uint32_t len);

/** No board has QSFP cages. @return BSP_E_NOT_SUPPORTED; nothing is touched */
BSP_API int32_t bspLaserQsfpWrite(uint32_t port, uint32_t offset, uint32_t value);

/** A transmitter's state. */
enum BspLaserState {
    BSP_LASER_ON = 1, /**< the transmitter-disable line is low */
    BSP_LASER_OFF = 2 /**< the transmitter-disable line is high */
};

/**
 * Tells whether a transceiver is in a cage. CPLD registers 19 to 21 for the front cages, register 8
 * for the uplinks.
 *
 * @param port  an SFP cage of the board (not checked: what another port answers means nothing)
 * @param out   receives 1 or 0; must not be null (not checked)
 * @return BSP_OK; the status of bspDevIdGet(), or of bspCpldGet()
 *         ("%s-%d: bspCpldGet error. ret=%d \n" is printed)
 */
BSP_API int32_t bspLaserPresentGet(uint32_t port, uint32_t *out);

/**
 * Switches a transmitter, read-modify-write of its transmitter-disable line's register (CPLD
 * registers 25 to 27 for the front cages, register 12 for the uplinks). Nothing else may write that
 * register meanwhile.
 *
 * @param port   an SFP cage of the board (not checked)
 * @param state  BSP_LASER_ON (1) switches on, any other value off
 * @return BSP_OK; the status of bspDevIdGet(), of bspCpldGet()
 *         ("%s-%d: bspCpldGet error. ret=%d \n" is printed) or of bspCpldSet()
 *         ("%s-%d: bspCpldSet error. ret=%d \n" is printed)
 */
BSP_API int32_t bspLaserControlSet(uint32_t port, uint32_t state);

/**
 * Reads a transmitter's state from the register that bspLaserControlSet() writes.
 *
 * @param out  receives a code of ::BspLaserState; otherwise as bspLaserPresentGet()
 * @return as bspLaserPresentGet()
 */
BSP_API int32_t bspLaserControlGet(uint32_t port, uint32_t *out);

/**
 * Tells whether a receiver has lost its signal. CPLD registers 16 to 18 for the front cages,
 * register 8 for the uplinks; on the models with 24 front cages the uplinks' line is that of
 * bspLaserPresentGet().
 *
 * @param out  receives 1 (lost) or 0; otherwise as bspLaserPresentGet()
 * @return as bspLaserPresentGet()
 */
BSP_API int32_t bspLaserRxLosGet(uint32_t port, uint32_t *out);

/**
 * Tells whether a transmitter has a fault. CPLD registers 22 to 24 for the front cages, register 12
 * for the uplinks; on the models with 24 front cages the uplinks' line is that of
 * bspLaserControlGet().
 *
 * @param out  receives 1 (fault) or 0; otherwise as bspLaserPresentGet()
 * @return as bspLaserPresentGet()
 */
BSP_API int32_t bspLaserTxfaultGet(uint32_t port, uint32_t *out);

/* ------------------------------------------------------------------------------------------------
 * MDIO registers of the PHYs
 *
 * The switch controller's MDIO interface is a register in the memory of the processor (address
 * 0x1B0007F4), which is mapped through /dev/mem for each call. It takes one command at a time and
 * nothing is locked: callers see to it that only one of them, in all processes, uses it.
 *
 * The two address fields are the PHY's address and its register's number. Which is which is a
 * matter of the switch controller; the library puts them into the command as they are given.
 * --------------------------------------------------------------------------------------------- */

/**
 * Reads a PHY's register: writes the command, then polls until it is done, at most 19001 times with
 * pauses of a microsecond.
 *
 * @param unit      ignored
 * @param addrA     address field in bits 2-6 of the command, its low 5 bits
 * @param reserved  ignored
 * @param addrB     address field in bits 7-11 of the command, its low 5 bits
 * @param value     receives the register's 16 bits
 * @return BSP_OK; BSP_E_NULL; BSP_E_OPEN when /dev/mem cannot be opened ("Can't open /dev/mem " is
 *         printed as a line); BSP_E_MAP when the register cannot be mapped ("Can't map physical
 *         memory: 0x%lx\n" is printed); BSP_E_FAILED when the hardware reports an error
 *         ("%s: read failed \n" is printed); BSP_E_TIMEOUT ("%s: read timeout \n" is printed)
 */
BSP_API int32_t bsp_smi_read(uint32_t unit, uint32_t addrA, uint32_t reserved, uint32_t addrB,
                             uint32_t *value);

/**
 * Writes a PHY's register; otherwise as bsp_smi_read().
 *
 * @param data  its low 16 bits are written
 * @return as bsp_smi_read(), but an error of the hardware is not printed and the other message is
 *         "%s: write timeout \n"
 */
BSP_API int32_t bsp_smi_write(uint32_t unit, uint32_t addrA, uint32_t reserved, uint32_t addrB,
                              uint32_t data);

/* ------------------------------------------------------------------------------------------------
 * Flash partitions
 *
 * The partitions are MTD character devices. Writing and reading hold the flash lock
 * (/tmp/bspFlashLockFile, a record lock of the process) for the whole transfer; where the lock file
 * cannot be opened they go on without it.
 *
 * A record lock keeps processes apart, not the threads of one: those all get it at once. And a
 * process loses it as soon as any of its threads closes any descriptor of the lock file, as each
 * flash call does at its end: then other processes come in while the first thread still works. So a
 * process does its flash work, header reads and upgrades included, in one thread at a time, and
 * leaves the lock file alone.
 * --------------------------------------------------------------------------------------------- */

/**
 * Copies a file into a partition: erases, then writes whole pages, the last one padded with zeros.
 * A page that cannot be written is skipped, its data go into the next one.
 *
 * @param file       path of the file
 * @param device     path of the partition's device
 * @param hasHeader  not 0: the file's length (4 bytes, big-endian) and the marker A1 02 A3 04 are
 *                   written in front of it, and the erasing ends with the first block that begins
 *                   behind the file's size (the next one that can be erased); 0: the whole
 *                   partition is erased, and the file starts at offset 0
 * @return BSP_OK: written, or refused with a message and nothing touched because the file is larger
 *         than the partition or there is no memory;
 *         BSP_E_NULL;
 *         BSP_E_FAILED when the lock cannot be taken, the file is missing, or file or device cannot
 *         be opened (a message is printed);
 *         the negative result of a failed geometry query (a message is printed);
 *         BSP_E_SHORT_READ when the file gives fewer bytes than its size; BSP_E_WRITE when a seek
 *         fails;
 *         when the partition ends before the file does ("write file to flash ... failed" is
 *         printed) what the last page write answered: the page size, a smaller count, or -1, and 0
 *         when the length header's page was all there was
 */
BSP_API int32_t bsp_mtd_write_from_file(const char *file, const char *device, int32_t hasHeader);

/**
 * Copies a partition to a file. The file is created if it is missing and appended to if it is not:
 * remove it first for a fresh copy. What the file does not take is not noticed.
 *
 * @param device     path of the partition's device
 * @param file       path of the output file
 * @param hasHeader  not 0: copies the file that was written with a length header; 0: copies the
 *                   whole partition
 * @return BSP_OK, also when a partition has no valid length header (then no file is made);
 *         BSP_E_NULL; BSP_E_LOCK; BSP_E_OPEN; BSP_E_ERASE when the geometry query fails;
 *         BSP_E_NO_MEMORY (messages are printed with these four); BSP_E_WRITE when a seek of
 *         the device fails; BSP_E_SHORT_READ
 */
BSP_API int32_t bsp_mtd_read_to_file(const char *device, const char *file, int32_t hasHeader);

/**
 * Erases the first erase block of a partition, and only that. Takes no lock.
 *
 * @param device  path of the partition's device
 * @return BSP_OK; BSP_E_NULL; BSP_E_OPEN; BSP_E_ERASE when the geometry query or the erase fails
 *         (messages are printed)
 */
BSP_API int32_t bsp_mtd_erase(const char *device);

/* ------------------------------------------------------------------------------------------------
 * Images and upgrades
 * --------------------------------------------------------------------------------------------- */

#define BSP_OS_HEADER_SIZE 512 /**< bytes of an operating-system image's header block */

/** What bspImageUpgrade() replaces. */
enum BspImageKind {
    BSP_IMAGE_OS = 1,   /**< an operating-system image */
    BSP_IMAGE_BOOT = 2, /**< the boot loader */
    BSP_IMAGE_CPLD = 4  /**< the CPLD's logic */
};

/**
 * Reads the header block of a stored operating-system image from its fixed place in the bank (by
 * the command nanddump, under the flash lock). The block is not interpreted: an empty bank gives
 * 512 bytes of 0xFF.
 *
 * The command's output is one file for all, and it is read after the lock was given back. Of two
 * processes that read headers at once, one may get the header of the other's bank with BSP_OK (one
 * time in twenty when both do nothing else), or find the file incomplete or gone; a header read in
 * the last moments of an upgrade may take the upgrade's file away. Callers see to it that one
 * process at a time reads headers or upgrades.
 *
 * @param header  receives BSP_OS_HEADER_SIZE bytes
 * @param bank    0 for /dev/mtd12, any other value for /dev/mtd14
 * @return BSP_OK; BSP_E_NULL; BSP_E_LOCK; BSP_E_FAILED when the command fails; BSP_E_OPEN or
 *         BSP_E_SHORT_READ when the command's output (/tmp/bsp/osHeader.bin) cannot be read; or
 *         the status of the command that removes it, and then the header is stored all the same.
 *         Messages are printed with all but the first and the last failure
 */
BSP_API int32_t bspOsImageInfoGet(uint8_t *header, int32_t bank);

/**
 * Replaces an image of the board. Takes minutes; a power cut on the way leaves the image
 * incomplete.
 *
 * Operating system (BSP_IMAGE_OS): erases the bank, writes the file and a copy of its header block
 * (by the commands flash_erase and nandwrite, under the flash lock). A failure after the erase
 * leaves the bank erased or incomplete; the other bank is never touched. The file has at most
 * 40894464 bytes (39 MiB) and at least 512. Messages are printed with all failures but
 * BSP_E_NULL, a path that is too long, and the removal of the work file.
 *  - BSP_E_NULL; BSP_E_SHORT_READ for a missing file or a header block that cannot be read;
 *    BSP_E_FAILED for a file that is too large, for a path that is too long for a command line (127
 *    characters; one that begins with "-" is two longer there), or when a command fails;
 *    BSP_E_LOCK; BSP_E_NO_MEMORY; BSP_E_OPEN; BSP_E_WRITE for a file of fewer than 512 bytes (found
 *    after it was written); or the status of the command that removes the work file.
 *
 * Boot loader (BSP_IMAGE_BOOT): checks the file (trailer of 80 bytes: magic, board name, length,
 * two CRCs), then erases /dev/mtd0 and writes it, under the flash lock.
 *  - BSP_E_NULL; BSP_E_SHORT_READ for a missing file or one that cannot be read whole; BSP_E_FAILED
 *    for a file above 1 MiB or one that fails the check (messages are printed); BSP_E_NO_MEMORY;
 *    BSP_E_OPEN. A write to flash that fails, also for a lock that cannot be taken, is printed
 *    ("Update bios file error(%d), ...") and answers BSP_OK all the same.
 *
 * CPLD (BSP_IMAGE_CPLD): the kernel module opens the file and programs the CPLD.
 *  - the status of bspCpldUpgrade_handle().
 *
 * @param kind  a value of ::BspImageKind
 * @param file  path of the image file
 * @param bank  of an operating-system image: 0 for /dev/mtd12, any other value for /dev/mtd14;
 *              otherwise not used
 * @return BSP_OK; a status of the image's kind, above; BSP_E_NOT_SUPPORTED for another kind
 */
BSP_API int32_t bspImageUpgrade(int32_t kind, const char *file, int32_t bank);

/* ------------------------------------------------------------------------------------------------
 * Power over Ethernet
 * --------------------------------------------------------------------------------------------- */

/**
 * A PoE driver: the operations of one kind of controller, in the order of their slots. Ports count
 * from 0. A null operation is one that the driver does not have.
 */
typedef struct BspPoeDriver {
    int32_t (*deviceInit)(void);
    int32_t (*initStatusSet)(uint32_t status);
    int32_t (*initStatusGet)(uint32_t *out);
    int32_t (*appStatusGet)(uint32_t *out);
    int32_t (*appUpgrade)(const char *file);
    int32_t (*appVersionGet)(char *text);
    int32_t (*globalMaxPowerSet)(uint32_t power);
    int32_t (*portModeSet)(uint32_t port, uint32_t mode);
    int32_t (*portPowerOnSet)(uint32_t port, uint32_t on);
    int32_t (*portDetectionSet)(uint32_t port);
    int32_t (*portClassificationSet)(uint32_t port);
    int32_t (*portPrioritySet)(uint32_t port, uint32_t priority);
    int32_t (*portMaxPowerSet)(uint32_t port, uint32_t power);
    int32_t (*portLegacyEnableSet)(uint32_t port, uint32_t enable);
    int32_t (*portInrushModeSet)(uint32_t port, uint32_t mode);
    int32_t (*portForceInrushSet)(uint32_t port, uint32_t force);
    int32_t (*portMaxPowerTypeSet)(uint32_t port, uint32_t type);
    int32_t (*globalMaxPowerGet)(uint32_t *out);
    int32_t (*globalPowerGet)(uint32_t *out);
    int32_t (*portModeGet)(uint32_t port, uint32_t *out);
    int32_t (*portCurrentGet)(uint32_t port, uint32_t *out);
    int32_t (*portVoltageGet)(uint32_t port, uint32_t *out);
    int32_t (*portPowerGet)(uint32_t port, uint32_t *out);
    int32_t (*portMaxPowerGet)(uint32_t port, uint32_t *out);
    int32_t (*portFaultGet)(uint32_t port, uint32_t *out);
    int32_t (*portDetectionGet)(uint32_t port, uint32_t *out);
    int32_t (*portClassificationGet)(uint32_t port, uint32_t *out);
    int32_t (*portDisconnectGet)(uint32_t port, uint32_t *out);
    int32_t (*portInrushModeGet)(uint32_t port, uint32_t *out);
    int32_t (*debugAllInfoGet)(void);
    int32_t (*debugPortInfoGet)(uint32_t port);
    int32_t (*debugSwVersionGet)(void);
    int32_t (*debugDispatch)(uint32_t unit, int32_t argc, char **argv);
    int32_t (*debugDispatchHelp)(int32_t index);
} BspPoeDriver;

/** The driver of the RTL8239 controller. */
extern BSP_API const BspPoeDriver bspPoeRtl8239Driver;

/** Operation numbers of bspPoeOptDriver(): settings, readings, firmware, debugging. */
typedef enum BspPoeOperation {
    BSP_POE_DEVICE_INIT = 0,
    BSP_POE_GLOBAL_MAX_POWER_SET,
    BSP_POE_INIT_STATUS_SET,
    BSP_POE_INIT_STATUS_GET,
    BSP_POE_PORT_MODE_SET,
    BSP_POE_PORT_POWER_ON_SET,
    BSP_POE_PORT_DETECTION_SET,
    BSP_POE_PORT_CLASSIFICATION_SET,
    BSP_POE_PORT_PRIORITY_SET,
    BSP_POE_PORT_MAX_POWER_SET,
    BSP_POE_PORT_LEGACY_ENABLE_SET,
    BSP_POE_PORT_INRUSH_MODE_SET,
    BSP_POE_PORT_FORCE_INRUSH_SET,
    BSP_POE_PORT_MAX_POWER_TYPE_SET,
    BSP_POE_GLOBAL_MAX_POWER_GET,
    BSP_POE_GLOBAL_POWER_GET,
    BSP_POE_PORT_MODE_GET,
    BSP_POE_PORT_CURRENT_GET,
    BSP_POE_PORT_VOLTAGE_GET,
    BSP_POE_PORT_POWER_GET,
    BSP_POE_PORT_MAX_POWER_GET,
    BSP_POE_PORT_FAULT_GET,
    BSP_POE_PORT_DETECTION_GET,
    BSP_POE_PORT_CLASSIFICATION_GET,
    BSP_POE_PORT_DISCONNECT_GET,
    BSP_POE_PORT_INRUSH_MODE_GET,
    BSP_POE_APP_STATUS_GET,
    BSP_POE_APP_UPGRADE,
    BSP_POE_APP_VERSION_GET,
    BSP_POE_DEBUG_ALL_INFO,
    BSP_POE_DEBUG_PORT_INFO,
    BSP_POE_DEBUG_SW_VERSION,
    BSP_POE_DEBUG_DISPATCH,
    BSP_POE_DEBUG_DISPATCH_HELP,
    BSP_POE_OPERATIONS /**< how many there are */
} BspPoeOperation;

/* Below, an "exchange status" is one of BSP_E_POE_UNAVAILABLE (no controller, or a request that it
 * refuses), BSP_E_POE_WRITE, BSP_E_POE_READ, BSP_E_POE_FRAME, BSP_E_POE_STATUS, BSP_E_POE_CONTENT
 * and BSP_E_POE_LOCK. An exchange holds the lock /tmp/bspPoeLockFile and waits for others to
 * release it: for minutes while another process upgrades the controller. Where the lock file cannot
 * be opened it goes on without it. */

/**
 * Tells whether the PoE controller is missing: CPLD register 6, bit 14.
 *
 * @param out  receives 0 when the controller is present, 1 when it is not
 * @return BSP_OK; BSP_E_POE_NULL; the status of bspCpldGet(), which is also printed
 */
BSP_API int32_t bspPoeOnlineGet(uint32_t *out);

/**
 * Chooses the driver for this board as it is now.
 *
 * @return the driver's table; null on models without PoE, when the device id cannot be read, and
 *         when the controller is missing
 */
BSP_API const BspPoeDriver *bspPoeDriverGet(void);

/**
 * Calls one operation of the board's driver.
 *
 * @param portRef  points to the port, counted from 1, which the driver gets minus 1; null for
 *                 operations without a port. The two debug operations get the word as it is.
 * @param op       a number of ::BspPoeOperation
 * @param arg      points to the value of a setting, or is the output or argument of the operation
 * @return the operation's status; BSP_E_POE_UNAVAILABLE without a driver, for an unknown number and
 *         for an operation that the driver does not have; BSP_E_POE_NULL for a debug operation
 *         without a word and for a setting without a value
 */
BSP_API int32_t bspPoeOptDriver(const uint32_t *portRef, uint32_t op, void *arg);

/**
 * Initialises the controller: reset, port mapping, defaults, power budget, power on. Takes tens of
 * seconds, more than 200 ms for each of some 220 frames.
 *
 * @return BSP_OK; BSP_E_POE_UNAVAILABLE, also after a failed firmware upgrade (nothing is sent
 *         then); BSP_E_POE_OPEN when the application status file cannot be opened; the status of
 *         bspGpioDirectionOutput(); an exchange status of the first step that failed
 */
BSP_API int32_t bspPoeDeviceInit(void);

/** Does nothing on this controller. @return BSP_OK, BSP_E_POE_UNAVAILABLE */
BSP_API int32_t bspPoeInitStatusSet(uint32_t status);

/**
 * Tells whether the controller has been initialised: command 0x41, bytes 4-5 not 0.
 *
 * @param out  receives 1 or 0; keeps its value when the controller does not answer
 * @return BSP_OK, also when the controller does not answer; BSP_E_POE_UNAVAILABLE; BSP_E_POE_NULL
 */
BSP_API int32_t bspPoeInitStatusGet(uint32_t *out);

/**
 * Sets the power budget of all ports, command 0x04.
 *
 * @param power  milliwatts, up to 6553500, rounded up to 100
 * @return BSP_OK; BSP_E_POE_INVALID; an exchange status
 */
BSP_API int32_t bspPoeGlobalMaxPowerSet(uint32_t power);

/** Reads the power budget in milliwatts, command 0x4B. @return as bspPoeGlobalPowerGet() */
BSP_API int32_t bspPoeGlobalMaxPowerGet(uint32_t *out);

/**
 * Reads the power that all ports draw in milliwatts, command 0x41.
 *
 * @return BSP_OK; BSP_E_POE_NULL; an exchange status
 */
BSP_API int32_t bspPoeGlobalPowerGet(uint32_t *out);

/**
 * Tells the rated PoE power of a supply, a fixed budget: 1440000 milliwatts.
 *
 * @param supplyIndex  supply, counted from 1
 * @return BSP_OK; BSP_E_NULL; BSP_E_NOT_SUPPORTED on a model without PoE or for an index outside 1
 *         to the supply count; the status of bspDevIdGet() or bspPowerNumGet()
 */
BSP_API int32_t bspPoeGlobalRatedPowerGet(int32_t supplyIndex, uint32_t *out);

/**
 * Sets the mode of a port, commands 0x08 and 0x01.
 *
 * @param port  counted from 1
 * @param mode  0, 1 or 2: function mode, and the port is enabled; 5: the port is disabled
 * @return BSP_OK; BSP_E_POE_INVALID for a port or mode out of range; an exchange status
 */
BSP_API int32_t bspPoePortModeSet(uint32_t port, uint32_t mode);

/**
 * Reads the mode of a port, command 0x48.
 *
 * @param port  counted from 1
 * @param out   receives 0, 1 or 2, or 5 for a disabled port
 * @return BSP_OK; BSP_E_POE_NULL; BSP_E_POE_INVALID for a port out of range; BSP_E_POE_CONTENT for
 *         another mode; an exchange status
 */
BSP_API int32_t bspPoePortModeGet(uint32_t port, uint32_t *out);

/**
 * Switches the power of a port in function mode 1 (command 0x01) or 2 (command 0x18).
 *
 * @param port  counted from 1
 * @param on    1: on, 2: off
 * @return BSP_OK; BSP_E_POE_UNAVAILABLE in another function mode; BSP_E_POE_INVALID for a port or
 *         argument out of range; an exchange status
 */
BSP_API int32_t bspPoePortPowerOnSet(uint32_t port, uint32_t on);

/** Starts a detection on a port (from 1), command 0x0A. @return as bspPoePortMaxPowerSet() */
BSP_API int32_t bspPoePortDetectionSet(uint32_t port);

/** Starts a classification on a port (from 1), command 0x0B. @return as bspPoePortMaxPowerSet() */
BSP_API int32_t bspPoePortClassificationSet(uint32_t port);

/**
 * Sets the priority of a port (from 1), command 0x15.
 *
 * @param priority  1, 2 or 3, which the controller gets as 2, 1 or 0
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortPrioritySet(uint32_t port, uint32_t priority);

/**
 * Sets the power limit of a port, command 0x14.
 *
 * @param port   counted from 1
 * @param power  milliwatts, 0 to 102000, rounded up to 400
 * @return BSP_OK; BSP_E_POE_INVALID for a port or value out of range; an exchange status
 */
BSP_API int32_t bspPoePortMaxPowerSet(uint32_t port, uint32_t power);

/** Detection of legacy devices on a port (from 1): 1 on, 2 off; command 0x09. @return as
 * bspPoePortMaxPowerSet() */
BSP_API int32_t bspPoePortLegacyEnableSet(uint32_t port, uint32_t enable);

/** Inrush mode of a port (from 1): 0 to 8; command 0x0C. @return as bspPoePortMaxPowerSet() */
BSP_API int32_t bspPoePortInrushModeSet(uint32_t port, uint32_t mode);

/** Forced inrush of a port (from 1): 1 on, 2 off; command 0x0D. @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortForceInrushSet(uint32_t port, uint32_t force);

/** Kind of power limit of a port (from 1): 1 or 2; command 0x12. @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortMaxPowerTypeSet(uint32_t port, uint32_t type);

/**
 * Reads the voltage of a port in volts, command 0x44, truncated toward zero.
 *
 * @param port  counted from 1
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortVoltageGet(uint32_t port, uint32_t *out);

/**
 * Reads the current of a port in milliamperes, command 0x44.
 *
 * @param port  counted from 1
 * @return BSP_OK; BSP_E_POE_NULL; BSP_E_POE_INVALID for a port out of range; BSP_E_POE_CONTENT when
 *         the reply names another port; an exchange status
 */
BSP_API int32_t bspPoePortCurrentGet(uint32_t port, uint32_t *out);

/** Power of a port (from 1) in milliwatts, command 0x44. @return as bspPoePortCurrentGet() */
BSP_API int32_t bspPoePortPowerGet(uint32_t port, uint32_t *out);

/** Power limit of a port (from 1) in milliwatts, command 0x49. @return as bspPoePortCurrentGet() */
BSP_API int32_t bspPoePortMaxPowerGet(uint32_t port, uint32_t *out);

/** Fault of a port (from 1): 1 yes, 2 no; command 0x42. @return as bspPoePortCurrentGet() */
BSP_API int32_t bspPoePortFaultGet(uint32_t port, uint32_t *out);

/** Detection result of a port (from 1): 1 to 7, else 0; command 0x42. @return as
 * bspPoePortCurrentGet() */
BSP_API int32_t bspPoePortDetectionGet(uint32_t port, uint32_t *out);

/** Class of the device at a port (from 1): 1 to 8, 9 for the codes 0 and 12, else 0; command 0x42.
 * @return as bspPoePortCurrentGet() */
BSP_API int32_t bspPoePortClassificationGet(uint32_t port, uint32_t *out);

/** Disconnection of a port (from 1): 2 at port status 2, which is delivering power, else 1; command
 * 0x42. @return as bspPoePortCurrentGet() */
BSP_API int32_t bspPoePortDisconnectGet(uint32_t port, uint32_t *out);

/** Inrush mode of a port (from 1): 0 to 8; command 0x49. @return as bspPoePortCurrentGet() */
BSP_API int32_t bspPoePortInrushModeGet(uint32_t port, uint32_t *out);

/**
 * Drives the PoE LED of a port (LED kind 9).
 *
 * @param port   counted from 1
 * @param state  1 lights it, any other value does not
 * @return as bspLedStateSet()
 */
BSP_API int32_t bspPoePortLedStateSet(uint32_t port, uint32_t state);

/**
 * Tells what the last firmware upgrade left, from /tmp/bsp/poeApp: 0 a usable application, 1 an
 * upgrade that started, 2 one that failed.
 *
 * @return BSP_OK; BSP_E_POE_UNAVAILABLE; BSP_E_POE_NULL; BSP_E_POE_OPEN ("%s-%d: open %s file
 *         filed, %d \n" is printed with errno)
 */
BSP_API int32_t bspPoeAppStatusGet(uint32_t *out);

/**
 * Upgrades the controller's firmware. Holds the PoE lock, up to some 13 minutes.
 *
 * @param file  image of 51200 to 196608 bytes, a multiple of 4
 * @return BSP_OK; BSP_E_POE_NULL; BSP_E_POE_INVALID for a file that does not exist or has another
 *         size; BSP_E_POE_NO_MEMORY; BSP_E_POE_OPEN; BSP_E_POE_SHORT_READ; BSP_E_POE_LOCK; an
 *         exchange status of the block that failed
 */
BSP_API int32_t bspPoeAppUpgradeSet(const char *file);

/**
 * Reads the version of the controller's application, command 0x40: "V1.2.3.4".
 *
 * @param text  receives the zero-terminated text; at least 13 bytes
 * @return BSP_OK; BSP_E_POE_NULL; an exchange status
 */
BSP_API int32_t bspPoeAppVersionGet(char *text);

/** No driver has this. @return BSP_E_POE_UNAVAILABLE */
BSP_API int32_t bspPoeDebugAllInfoGet(void);

/** No driver has this. @return BSP_E_POE_UNAVAILABLE */
BSP_API int32_t bspPoeDebugPortInfoGet(uint32_t port);

/** No driver has this. @return BSP_E_POE_UNAVAILABLE */
BSP_API int32_t bspPoeDebugSwVersionGet(void);

/**
 * Runs a debug command of the controller's driver, as from a shell.
 *
 * @param unit  ignored
 * @param argc  number of words
 * @param argv  the words: two of the shell, the command word, its arguments
 * @return the command's status; BSP_OK for an unknown command word (a message is printed);
 *         BSP_E_POE_UNAVAILABLE; BSP_E_POE_NULL
 */
BSP_API int32_t bspPoeDebugChipDispatch(uint32_t unit, int32_t argc, char **argv);

/**
 * Prints the debug commands (index below 0), or the usage of the first (index 0).
 *
 * @return BSP_OK; BSP_E_POE_UNAVAILABLE
 */
BSP_API int32_t bspPoeDebugChipDispatchHelp(int32_t index);

/* The RTL8239 driver's operations. Ports count from 0 (0 to 47); apart from that, and from what is
 * said here, each is the service operation of its name, without the choice of a driver. */

/** As bspPoeDeviceInit(). */
BSP_API int32_t bspPoeRtl8239DeviceInit(void);
/** As bspPoeInitStatusSet(). */
BSP_API int32_t bspPoeRtl8239InitStatusSet(uint32_t status);
/** As bspPoeInitStatusGet(). */
BSP_API int32_t bspPoeRtl8239InitStatusGet(uint32_t *out);
/** As bspPoeAppStatusGet(). */
BSP_API int32_t bspPoeRtl8239AppStatusGet(uint32_t *out);
/**
 * Stores the application status, the low byte of value, in /tmp/bsp/poeApp.
 *
 * @return BSP_OK; BSP_E_POE_OPEN ("%s-%d: open %s file filed, %d \n" is printed with errno)
 */
BSP_API int32_t bspPoeRtl8239AppStatusSet(uint32_t value);
/** As bspPoeAppVersionGet(). */
BSP_API int32_t bspPoeRtl8239AppVersionGet(char *text);
/** As bspPoeAppUpgradeSet(). */
BSP_API int32_t bspPoeRtl8239McuUpgrade(const char *file);
/** As bspPoeGlobalMaxPowerSet(). */
BSP_API int32_t bspPoeRtl8239GlobalMaxPowerSet(uint32_t power);
/** As bspPoeGlobalMaxPowerGet(). */
BSP_API int32_t bspPoeRtl8239GlobalMaxPowerGet(uint32_t *out);
/** As bspPoeGlobalPowerGet(). */
BSP_API int32_t bspPoeRtl8239GlobalPowerGet(uint32_t *out);
/** As bspPoePortModeSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortModeSet(uint32_t port, uint32_t mode);
/** As bspPoePortPowerOnSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortPowerOnSet(uint32_t port, uint32_t on);
/** As bspPoePortDetectionSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortDetectionSet(uint32_t port);
/** As bspPoePortClassificationSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortClassificationSet(uint32_t port);
/** As bspPoePortPrioritySet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortPrioritySet(uint32_t port, uint32_t priority);
/** As bspPoePortMaxPowerSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortMaxPowerSet(uint32_t port, uint32_t power);
/** As bspPoePortLegacyEnableSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortLegacyEnableSet(uint32_t port, uint32_t enable);
/** As bspPoePortInrushModeSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortInrushModeSet(uint32_t port, uint32_t mode);
/** As bspPoePortForceInrushSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortForceInrushSet(uint32_t port, uint32_t force);
/** As bspPoePortMaxPowerTypeSet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortMaxPowerTypeSet(uint32_t port, uint32_t type);
/** As bspPoePortModeGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortModeGet(uint32_t port, uint32_t *out);
/** As bspPoePortCurrentGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortCurrentGet(uint32_t port, uint32_t *out);
/** As bspPoePortPowerGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortPowerGet(uint32_t port, uint32_t *out);
/** As bspPoePortMaxPowerGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortMaxPowerGet(uint32_t port, uint32_t *out);
/** As bspPoePortFaultGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortFaultGet(uint32_t port, uint32_t *out);
/** As bspPoePortDetectionGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortDetectionGet(uint32_t port, uint32_t *out);
/** As bspPoePortClassificationGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortClassificationGet(uint32_t port, uint32_t *out);
/** As bspPoePortDisconnectGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortDisconnectGet(uint32_t port, uint32_t *out);
/** As bspPoePortInrushModeGet(), port from 0. */
BSP_API int32_t bspPoeRtl8239PortInrushModeGet(uint32_t port, uint32_t *out);
/** Voltage of a port (from 0) in millivolts. @return as bspPoePortCurrentGet() */
BSP_API int32_t bspPoeRtl8239PortVoltageGet(uint32_t port, uint32_t *out);
/** As bspPoeDebugChipDispatch(). */
BSP_API int32_t bspPoeRtl8239DebugDispatch(uint32_t unit, int32_t argc, char **argv);
/** As bspPoeDebugChipDispatchHelp(). */
BSP_API int32_t bspPoeRtl8239DebugDispatchHelp(int32_t index);
/**
 * The debug command "poeCommand": sends the words from argv[3] on, hexadecimal bytes, as one frame.
 *
 * @param row   row of the command in the help
 * @return BSP_E_POE_NULL for null words; BSP_E_FAILED without a byte (the usage is printed); the
 *         status of bspPoeRtl8239DbgUdfCmd()
 */
BSP_API int32_t bspPoeRtl8239DbgPoeCommand(int32_t row, int32_t argc, char **argv);
/**
 * Sends bytes as one frame, padded with 0xFF, and prints both frames. Bytes beyond 12 are cut off;
 * checksum and, for most commands, sequence number are filled in.
 *
 * @return BSP_OK; BSP_E_POE_INVALID for a null buffer or a count below 1; an exchange status
 */
BSP_API int32_t bspPoeRtl8239DbgUdfCmd(const uint8_t *data, int32_t count);

/* ------------------------------------------------------------------------------------------------
 * PoE ports in few exchanges (since version 1.1)
 *
 * One call for each of a port's state, measurement and settings, instead of one for each value: the
 * values of a record come from as few exchanges as the controller allows, and those of one exchange
 * from one moment. An exchange takes 200 ms at least. The values are those of the functions that
 * each member names; so are the statuses and what is printed. A driver that does not know these
 * questions is asked for value after value.
 * --------------------------------------------------------------------------------------------- */

/** What goes on at a port, command 0x42: one exchange. */
typedef struct BspPoePortState {
    uint32_t detection;      /**< as bspPoePortDetectionGet(): 1 to 7, else 0 */
    uint32_t classification; /**< as bspPoePortClassificationGet(): 1 to 8, 9 for unknown, else 0 */
    uint32_t fault;          /**< as bspPoePortFaultGet(): 1 yes, 2 no */
    uint32_t disconnect;     /**< as bspPoePortDisconnectGet(): 2 delivering power, else 1 */
} BspPoePortState;

/** BspPoePortMeasurement::temperature of a controller that does not tell it. */
#define BSP_POE_TEMPERATURE_UNKNOWN INT32_MIN

/** What a port draws at one moment, command 0x44: one exchange. */
typedef struct BspPoePortMeasurement {
    uint32_t voltageMv; /**< millivolts */
    uint32_t voltageV;  /**< the same in volts, as bspPoePortVoltageGet(): truncated toward zero */
    uint32_t currentMa; /**< milliamperes, as bspPoePortCurrentGet() */
    uint32_t powerMw;   /**< milliwatts, as bspPoePortPowerGet() */
    /** Temperature, (220 - code) x 1250 / 1000 of the controller's 16-bit code; the controller's
     * documentation has its unit. No other function tells it. */
    int32_t temperature;
} BspPoePortMeasurement;

/**
 * How a port is set, command 0x48 and then 0x49: two exchanges, each with a status of its own, so
 * that one that fails hides nothing of the other. Its members hold UINT32_MAX then.
 */
typedef struct BspPoePortSettings {
    int32_t modeStatus;    /**< of the mode, as bspPoePortModeGet() answers */
    uint32_t mode;         /**< as bspPoePortModeGet(): 0, 1, 2, or 5 for a disabled port */
    int32_t powerStatus;   /**< of limit and inrush mode, as bspPoePortMaxPowerGet() answers */
    uint32_t powerLimitMw; /**< milliwatts, as bspPoePortMaxPowerGet() */
    uint32_t inrushMode;   /**< as bspPoePortInrushModeGet(): 0 to 8 */
} BspPoePortSettings;

/**
 * Reads what goes on at a port: detection, class, fault, disconnection.
 *
 * @param[in]  port   counted from 1
 * @param[out] state  receives the record; untouched unless the call answers BSP_OK
 * @return BSP_OK; BSP_E_POE_NULL; BSP_E_POE_INVALID for a port out of range; BSP_E_POE_CONTENT when
 *         the reply names another port; an exchange status
 */
BSP_API int32_t bspPoePortStateGet(uint32_t port, BspPoePortState *state);

/**
 * Reads what a port draws: voltage, current, power, temperature. A port that does not deliver power
 * draws nothing: bspPoePortStateGet() tells.
 *
 * @param[in]  port         counted from 1
 * @param[out] measurement  receives the record; untouched unless the call answers BSP_OK
 * @return as bspPoePortStateGet()
 */
BSP_API int32_t bspPoePortMeasurementGet(uint32_t port, BspPoePortMeasurement *measurement);

/**
 * Reads how a port is set: mode, power limit, inrush mode. Both exchanges are made, whatever the
 * first one answers.
 *
 * @param[in]  port      counted from 1
 * @param[out] settings  receives the record with the status of each exchange; untouched unless the
 *                       call answers BSP_OK
 * @return BSP_OK when one of the exchanges gave its values; BSP_E_POE_NULL; else the status of the
 *         first one, which is as bspPoePortModeGet() answers
 */
BSP_API int32_t bspPoePortSettingsGet(uint32_t port, BspPoePortSettings *settings);

/** As bspPoePortStateGet(). */
BSP_API int32_t ioPoePortStateGet(uint32_t port, BspPoePortState *state);
/** As bspPoePortMeasurementGet(). */
BSP_API int32_t ioPoePortMeasurementGet(uint32_t port, BspPoePortMeasurement *measurement);
/** As bspPoePortSettingsGet(). */
BSP_API int32_t ioPoePortSettingsGet(uint32_t port, BspPoePortSettings *settings);

/* ------------------------------------------------------------------------------------------------
 * Facade: what management software calls. Unless said otherwise a function is the bsp* function of
 * the same stem: same arguments, same status.
 * --------------------------------------------------------------------------------------------- */

/** Product of this fixed unit: stores 1. @param unit ignored @return BSP_OK, BSP_E_NULL */
BSP_API int32_t ioProductIdGet(uint32_t unit, uint32_t *productId);
/** Slot of this fixed unit: stores 1 (bspBoardSlotIdGet() answers 0). @return BSP_OK, BSP_E_NULL */
BSP_API int32_t ioSlotIdGet(uint32_t unit, uint32_t *slotId);
/** Card of this fixed unit: stores 0. @param unit ignored @return BSP_OK, BSP_E_NULL */
BSP_API int32_t ioCardIdGet(uint32_t unit, uint32_t *cardId);
/** Frame type of this fixed unit: stores 1. @param unit ignored @return BSP_OK, BSP_E_NULL */
BSP_API int32_t ioFrameTypeGet(uint32_t unit, uint32_t *type);
/** Slot type of this fixed unit: stores 1. @param unit ignored @return BSP_OK, BSP_E_NULL */
BSP_API int32_t ioSlotTypeGet(uint32_t unit, uint32_t *type);
/** Card type of this fixed unit: stores 1. @param unit ignored @return BSP_OK, BSP_E_NULL */
BSP_API int32_t ioCardTypeGet(uint32_t unit, uint32_t *type);

/** As bspDevIdGet(). */
BSP_API int32_t ioDevIdGet(uint32_t *devId);
/** As bspDevSerialVerGet(). */
BSP_API int32_t ioDevSerialVerGet(uint32_t *ver);
/** As bspHwVersionGet(). */
BSP_API int32_t ioHwVersionGet(char *text);
/** As bspCpldVersionGet(). */
BSP_API int32_t ioCpldVersionGet(char *text);
/** As bspFpgaVersionGet(). */
BSP_API int32_t ioFpgaVersionGet(char *text);
/** As bspUbootVersionGet(). */
BSP_API int32_t ioBiosVersionGet(char *version);
/** As bspBoardSlotIdGet(). */
BSP_API int32_t ioBoardSlotIdGet(uint32_t *slotId);
/** As bspBoardDescGet(). */
BSP_API int32_t ioBoardDescGet(char *desc);
/** As bspBoardDescSet(). */
BSP_API int32_t ioBoardDescSet(const char *desc);
/** As bspBoardPowerInfoGet(). */
BSP_API int32_t ioBoardPowerInfoGet(uint32_t index, void *info);
/** As bspDevinfoGet(). */
BSP_API int32_t ioDevinfoGet(uint32_t index, BspDevinfo *record);
/** As bspDevinfoSet(). */
BSP_API int32_t ioDevinfoSet(uint32_t index, BspDevinfo *record);
/** As bspMacAddrGet(). */
BSP_API int32_t ioMacAddrGet(uint32_t index, uint8_t *mac);
/** As bspMacAddrSet(). */
BSP_API int32_t ioMacAddrSet(uint32_t index, const uint8_t *mac);
/** As bspSerialNumGet(). */
BSP_API int32_t ioSerialNumGet(char *serial, uint32_t *len);
/** As bspSerialNumSet(). */
BSP_API int32_t ioSerialNumSet(const char *serial, int32_t len);
/** As bspMfgDateGet(). */
BSP_API int32_t ioMfgDateGet(char *date);
/** As bspMfgDateSet(). */
BSP_API int32_t ioMfgDateSet(const char *date);
/** As bspBootModeGet(). */
BSP_API int32_t ioBootModeGet(uint32_t *mode);
/** As bspBootModeSet(). */
BSP_API int32_t ioBootModeSet(int32_t mode);
/** As bspBootFlagGet(). */
BSP_API int32_t ioBootFlagGet(int32_t *flag);
/** As bspBootFlagSet(). */
BSP_API int32_t ioBootFlagSet(int32_t flag);
/** As bspBaudrateGet(). */
BSP_API int32_t ioBaudrateGet(uint32_t *rate);
/** As bspBaudrateSet(). */
BSP_API int32_t ioBaudrateSet(uint32_t rate);
/** As bspConsolePwdValidGet(). */
BSP_API int32_t ioConsolePwdValidGet(uint32_t *valid);
/** As bspConsolePwdValidSet(). */
BSP_API int32_t ioConsolePwdValidSet(int32_t valid);
/** As bspUserPwdValidGet(). */
BSP_API int32_t ioUserPwdValidGet(uint32_t *valid);
/** As bspUserPwdValidSet(). */
BSP_API int32_t ioUserPwdValidSet(int32_t valid);
/** As bspBootPwdGet(). */
BSP_API int32_t ioBootPwdGet(char *pwd);
/** As bspBootPwdSet(). */
BSP_API int32_t ioBootPwdSet(const char *pwd);
/** As bspOsImageInfoGet(). */
BSP_API int32_t ioOsImageInfoGet(uint8_t *header, int32_t bank);
/** Writes an operating-system image: bspImageUpgrade() of kind BSP_IMAGE_OS. */
BSP_API int32_t ioImageUpgrade(const char *file, int32_t bank);
/** Upgrades the boot loader: bspImageUpgrade() of kind BSP_IMAGE_BOOT. */
BSP_API int32_t ioBiosUpgrade(const char *file);
/** Upgrades the CPLD: bspImageUpgrade() of kind BSP_IMAGE_CPLD. */
BSP_API int32_t ioCpldUpgrade(const char *file);
/**
 * Stores the boot flag, waits a second, and resets the board as bspHwReboot() does. Neither the
 * flag's nor the reset's failure is told.
 *
 * @return BSP_OK, when the reset comes back at all
 */
BSP_API int32_t ioRebootEx(int32_t flag);
/** As bspPowerNumGet(). */
BSP_API int32_t ioPowerNumGet(int32_t *out);
/** As bspPowerPresentGet(). */
BSP_API int32_t ioPowerPresentGet(int32_t index, int32_t *out);
/** As bspPowerStatusGet(). */
BSP_API int32_t ioPowerStatusGet(int32_t index, int32_t *out);
/** As bspPowerInfoGet(). */
BSP_API int32_t ioPowerInfoGet(int32_t index, BspPowerInfo *info);
/** As bspLedStateSet(). */
BSP_API int32_t ioLedStateSet(uint32_t unit, uint32_t index, uint32_t kind, uint32_t colour,
                              uint32_t state);
/** As bspWatchdogFeed(). */
BSP_API int32_t ioWatchdogFeed(void);
/** As bspWatchdogStart(). */
BSP_API int32_t ioWatchdogStart(void);
/** As bspWatchdogStop(). */
BSP_API int32_t ioWatchdogStop(void);
/** As bspWatchdogPeriodGet(). */
BSP_API int32_t ioWatchdogPeriodGet(uint32_t *period);
/** As bspWatchdogPeriodSet(). */
BSP_API int32_t ioWatchdogPeriodSet(uint32_t period);
/** As bspPtpTriggerSet(). */
BSP_API int32_t ioPtpTriggerSet(uint32_t value);
/** As bspSlotPresentGet(). */
BSP_API int32_t ioSlotPresentGet(uint32_t slot, uint32_t *out);
/** As bspSlotPowerStateSet(). */
BSP_API int32_t ioSlotPowerStateSet(uint32_t slot, uint32_t state);
/** As bspFanSpeedGet(). */
BSP_API int32_t ioFanSpeedGet(uint32_t fan, uint32_t *out);
/** As bspFanSpeedSet(). */
BSP_API int32_t ioFanSpeedSet(uint32_t fan, int32_t level);
/** As bspFanPresentGet(). */
BSP_API int32_t ioFanPresentGet(int32_t fan, uint32_t *out);
/** As bspTemperGet(). */
BSP_API int32_t ioTemperGet(uint32_t sensor, int32_t *out);
/** As bspRealtimeGet(). */
BSP_API int32_t ioRealtimeGet(BspCalendar *record);
/** As bspRealtimeSet(). */
BSP_API int32_t ioRealtimeSet(const BspCalendar *record);
/** As bspLaserBasicGet(). */
BSP_API int32_t ioLaserBasicGet(uint32_t port, uint32_t offset, uint8_t *byte);
/** As bspLaserAdvanceGet(). */
BSP_API int32_t ioLaserAdvanceGet(uint32_t port, uint32_t offset, uint8_t *byte);
/** As bspLaserPresentGet(). */
BSP_API int32_t ioLaserPresentGet(uint32_t port, uint32_t *out);
/** As bspLaserControlSet(). */
BSP_API int32_t ioLaserControlSet(uint32_t port, uint32_t state);
/** As bspLaserControlGet(). */
BSP_API int32_t ioLaserControlGet(uint32_t port, uint32_t *out);
/** As bspLaserRxLosGet(). */
BSP_API int32_t ioLaserRxLosGet(uint32_t port, uint32_t *out);
/** As bspLaserTxfaultGet(). */
BSP_API int32_t ioLaserTxfaultGet(uint32_t port, uint32_t *out);
/** As bspLaserPhyGet(). */
BSP_API int32_t ioLaserPhyGet(uint32_t port, uint32_t reg, uint16_t *value);
/** As bspLaserPhySet(), with the low 16 bits of value. */
BSP_API int32_t ioLaserPhySet(uint32_t port, uint32_t reg, uint32_t value);
/** bspLaserQsfpRead() of one byte. */
BSP_API int32_t ioLaserQsfpGet(uint32_t port, uint32_t offset, uint8_t *buf);
/** bspLaserQsfpWrite() of the low 8 bits of value. */
BSP_API int32_t ioLaserQsfpSet(uint32_t port, uint32_t offset, uint32_t value);
/** As bspPoeDeviceInit(). */
BSP_API int32_t ioPoeDeviceInit(void);
/** As bspPoeInitStatusSet(). */
BSP_API int32_t ioPoeInitStatusSet(uint32_t status);
/** As bspPoeInitStatusGet(). */
BSP_API int32_t ioPoeInitStatusGet(uint32_t *out);
/** As bspPoeGlobalMaxPowerSet(). */
BSP_API int32_t ioPoeGlobalMaxPowerSet(uint32_t power);
/** As bspPoePortModeSet(). */
BSP_API int32_t ioPoePortModeSet(uint32_t port, uint32_t mode);
/** As bspPoePortPowerOnSet(). */
BSP_API int32_t ioPoePortPowerOnSet(uint32_t port, uint32_t on);
/** As bspPoePortDetectionSet(). */
BSP_API int32_t ioPoePortDetectionSet(uint32_t port);
/** As bspPoePortClassificationSet(). */
BSP_API int32_t ioPoePortClassificationSet(uint32_t port);
/** As bspPoePortPrioritySet(). */
BSP_API int32_t ioPoePortPrioritySet(uint32_t port, uint32_t priority);
/** As bspPoePortMaxPowerSet(). */
BSP_API int32_t ioPoePortMaxPowerSet(uint32_t port, uint32_t power);
/** As bspPoePortLegacyEnableSet(). */
BSP_API int32_t ioPoePortLegacyEnableSet(uint32_t port, uint32_t enable);
/** As bspPoePortInrushModeSet(). */
BSP_API int32_t ioPoePortInrushModeSet(uint32_t port, uint32_t mode);
/** As bspPoePortForceInrushSet(). */
BSP_API int32_t ioPoePortForceInrushSet(uint32_t port, uint32_t force);
/** As bspPoePortMaxPowerTypeSet(). */
BSP_API int32_t ioPoePortMaxPowerTypeSet(uint32_t port, uint32_t type);
/** As bspPoePortLedStateSet(). */
BSP_API int32_t ioPoePortLedStateSet(uint32_t port, uint32_t state);
/** As bspPoeGlobalMaxPowerGet(). */
BSP_API int32_t ioPoeGlobalMaxPowerGet(uint32_t *out);
/** As bspPoeGlobalRatedPowerGet(). */
BSP_API int32_t ioPoeGlobalRatedPowerGet(int32_t supplyIndex, uint32_t *out);
/** As bspPoeGlobalPowerGet(). */
BSP_API int32_t ioPoeGlobalPowerGet(uint32_t *out);
/** As bspPoePortModeGet(). */
BSP_API int32_t ioPoePortModeGet(uint32_t port, uint32_t *out);
/** As bspPoePortCurrentGet(). */
BSP_API int32_t ioPoePortCurrentGet(uint32_t port, uint32_t *out);
/** As bspPoePortVoltageGet(). */
BSP_API int32_t ioPoePortVoltageGet(uint32_t port, uint32_t *out);
/** As bspPoePortPowerGet(). */
BSP_API int32_t ioPoePortPowerGet(uint32_t port, uint32_t *out);
/** As bspPoePortMaxPowerGet(). */
BSP_API int32_t ioPoePortMaxPowerGet(uint32_t port, uint32_t *out);
/** As bspPoePortFaultGet(). */
BSP_API int32_t ioPoePortFaultGet(uint32_t port, uint32_t *out);
/** As bspPoePortDetectionGet(). */
BSP_API int32_t ioPoePortDetectionGet(uint32_t port, uint32_t *out);
/** As bspPoePortClassificationGet(). */
BSP_API int32_t ioPoePortClassificationGet(uint32_t port, uint32_t *out);
/** As bspPoePortDisconnectGet(). */
BSP_API int32_t ioPoePortDisconnectGet(uint32_t port, uint32_t *out);
/** As bspPoePortInrushModeGet(). */
BSP_API int32_t ioPoePortInrushModeGet(uint32_t port, uint32_t *out);
/** As bspPoeAppStatusGet(). */
BSP_API int32_t ioPoeAppStatusGet(uint32_t *out);
/** As bspPoeAppUpgradeSet(). */
BSP_API int32_t ioPoeAppUpgradeSet(const char *file);
/** As bspPoeAppVersionGet(). */
BSP_API int32_t ioPoeAppVersionGet(char *text);

#ifdef __cplusplus
}
#endif

#endif /* BSP_H */
