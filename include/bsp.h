/**
 * @file bsp.h
 * Board-support library of the managed Ethernet switch family.
 *
 * Everything on the board except the switching chip is read and changed through the functions of
 * this header. Management software calls the io* functions; each forwards to the bsp* function of
 * the same stem, and both layers are exported.
 *
 * @section conventions Conventions that hold for every function
 *
 *  - The result is a status: BSP_OK (0) or one of the codes of ::BspStatus. When the node of the
 *    kernel module cannot be opened, or its ioctl fails, it is what open or ioctl answered, which
 *    is -1; a value that a function documents as "driver's own code" is the result word that the
 *    kernel module wrote.
 *  - Data goes through buffers that the caller owns and sizes. Unless a function says otherwise its
 *    outputs are untouched when it fails.
 *  - Pointers are trusted. A null one is answered where a function lists BSP_E_NULL or
 *    BSP_E_POE_NULL. Any other null or wrong pointer, a buffer that is smaller than documented, and
 *    a text without a zero behind it end the process or spoil its memory.
 *  - [in] is read, [out] is written, [in,out] is both. A number that has a unit is named after it:
 *    milliwatts, volts, celsius, baud. Where a parameter is called len it counts bytes.
 *  - Values whose meaning the library knows have names here, most of them enumerators. They are
 *    names of integers: parameters, results and record fields stay plain integers. Of all other
 *    values the limits have names, and what the values mean is in the hardware's documentation, as
 *    is said where they stand.
 *  - Ports, fans, supplies and lamps count from 1, as on the front panel; only the operations of
 *    the RTL8239 driver count ports from 0.
 *  - Every call opens what it needs and closes it again. Nothing is kept between calls.
 *  - The library keeps two lock files in /tmp, and devId, poeApp and osHeader.bin in the directory
 *    /tmp/bsp, which start-up has to make: root's, mode 0755. A link in the place of one of these
 *    files is not followed: it is as a file that cannot be opened.
 *
 * @section models Models
 *
 * What a board has follows from its device id, see bspDevIdGet(). No id is refused.
 *
 * | model    | device ids                                     | what it has                      |
 * |----------|------------------------------------------------|----------------------------------|
 * | four-fan | 0x0309 0x0409 0x0509 0x0609, the same + 0x8000 | 4 fans, 2 supplies               |
 * | two-fan  | 0x0709 0x0809 0x8709 0x8809                    | 2 fans, 2 supplies, PoE          |
 * | other    | all others, 0x0109 and 0x8209 among them       | 2 fans, supplies as in a record  |
 *
 * The supplies of four-fan and two-fan models are called fixed: their lines are in CPLD register
 * 30; those of two-fan models have an EEPROM and live readings, too. How many supplies other models
 * have, and of which types, is in the board's record. 48 PoE ports have 0x0709 and 0x8809, 24 have
 * 0x0809 and 0x8709. The clock chip is in 0x0309, 0x0509, 0x0609, 0x0709, 0x0809, 0x8409, 0x8509,
 * 0x8609, 0x8709 and 0x8809.
 *
 * | SFP cages      | device ids                                |
 * |----------------|-------------------------------------------|
 * | 25-30          | 0x0109 0x0309 0x0809 0x8209 0x8409 0x8709 |
 * | 1-24 and 33-38 | 0x0509 0x8609                             |
 * | 1-54           | 0x0609 0x8509                             |
 * | 49-54          | all others                                |
 *
 * @section threads Threads and processes
 *
 * The library has no memory of its own that calls could fight for: any functions may run at once in
 * any threads and processes, as far as memory goes. What they share is the board. A call that is
 * one request to the kernel module (a register, an I2C transfer, a GPIO line) is whole; what
 * consists of several is not, unless a lock stands below:
 *
 *  - The PoE lock (an flock of /tmp/bspPoeLockFile) is held for each exchange with the controller,
 *    and for a whole firmware upgrade. Each call opens the file anew, so that threads of one
 *    process are kept apart just as processes are. Operations of several exchanges are not one:
 *    those of other callers may come in between. Waiting for the lock takes up to some 13 minutes
 *    while another upgrades the controller; a signal that ends the wait gives BSP_E_POE_LOCK.
 *  - The flash lock (a record lock of /tmp/bspFlashLockFile) keeps processes apart, and only them:
 *    it belongs to the process, so that its threads all pass at once, and it is lost for all of
 *    them as soon as one opens and closes the lock file, which each call does that takes it.
 *    bsp_mtd_erase() and the boot settings do not take it.
 *
 * Where a lock file cannot be opened the work goes on without the lock. All else is the callers' to
 * serialise, above all what reads a register and writes it back changed:
 *
 * | functions                     | at once    | one at a time, in all processes           |
 * |-------------------------------|------------|-------------------------------------------|
 * | device id, versions, statuses | all        |                                           |
 * | requests, CPLD, I2C, GPIO     | all others | what belongs together; CPLD programming   |
 * | EEPROMs, records, MAC, serial | readers    | a writer, alone: it writes a whole record |
 * | boot settings, ioRebootEx()   | getters    | a setter, alone: it erases first          |
 * | power supplies                | all others | bspPowerInfoGet() of one supply           |
 * | LEDs, those of PoE ports, too |            | those of one register, see ::BspLedKind   |
 * | watchdog                      | all others | bspWatchdogFeed()                         |
 * | temperature, readings of fans | all        |                                           |
 * | fan level, PTP trigger        |            | both together: CPLD register 6            |
 * | clock chip, system clock      | readers    | a writer, bspInit(), bspSysClockSync()    |
 * | SFP memories and PHYs         | readers    | a writer of a module, alone               |
 * | SFP lines                     | readers    | bspLaserControlSet() of one register      |
 * | MDIO registers                |            | all                                       |
 * | flash partitions and upgrades | processes  | threads of a process, and bsp_mtd_erase() |
 * | bspOsImageInfoGet()           |            | it, together with upgrades of the system  |
 * | the CPLD's upgrade            |            | it, and all that uses registers           |
 * | PoE readings                  | all        |                                           |
 * | PoE settings                  | ports      | those of one port                         |
 * | PoE controller                |            | bspPoeDeviceInit(), firmware upgrade      |
 *
 * What the C library shares within a process: bspSysClockSync() and bspInit() convert local time
 * (mktime), and must not run while a thread changes the environment. bspBaudrateSet(),
 * bspOsImageInfoGet() and upgrades of the operating system run commands (system): the process
 * ignores SIGINT and SIGQUIT meanwhile, and it must neither ignore SIGCHLD nor wait for children
 * that it does not know, or the commands count as failed. Pauses are usleep and sleep: a signal
 * that is handled in the calling thread cuts them short, and devices depend on them, so block
 * signals in threads that call. No function may be called from a signal handler.
 *
 * @section output Standard output
 *
 * Diagnostics are printed on standard output with printf, the system's own reasons (perror) on
 * standard error, and the commands that are run write to both. They never replace the status. A
 * daemon keeps them apart from its own output by giving them descriptor 1 and keeping another one
 * for itself, before its first call and before its first thread:
 *
 * @code
 * int own = fcntl(1, F_DUPFD_CLOEXEC, 3);             // what used to be standard output
 * int log = open("bsp.log", O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
 * dup2(log, 1);                                       // the same for 2, if wanted
 * setvbuf(stdout, NULL, _IOLBF, 0);                   // else lines wait for a full buffer
 * FILE *mine = fdopen(own, "w");
 * @endcode
 *
 * Each message is one printf and so stays whole, also with several threads; only the frames that
 * debug commands show are printed in pieces. Whoever does not set the buffering calls
 * fflush(stdout) after a call whose lines are to be seen, and before fork. The descriptors 0, 1 and
 * 2 must be open, on /dev/null if on nothing else: where 1 is free, the next file that is opened, a
 * device perhaps, gets that number, and with it all that is printed.
 */
#ifndef BSP_H
#define BSP_H

#include <stdint.h>

/** What the library exports. */
#if defined(__GNUC__)
#define BSP_API __attribute__((visibility("default")))
#else
#define BSP_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup version Version
 * @{
 */

/**
 * A version as one number, so that versions can be compared: 0x00010100 is 1.1.0.
 *
 * @param major  0 to 127
 * @param minor  0 to 255
 * @param patch  0 to 255
 */
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

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup statuses Status codes
 * @{
 */

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
/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup requests Requests to the kernel module (/dev/bspHandle)
 * @{
 */

/** Request codes of the kernel module: the ioctl command numbers, passed as they are. */
enum BspRequest {
    BSP_REQ_CPLD_READ = 0x1001,   /**< reads a CPLD register */
    BSP_REQ_CPLD_WRITE = 0x1002,  /**< writes a CPLD register */
    BSP_REQ_I2C_READ = 0x1003,    /**< reads from an I2C device */
    BSP_REQ_I2C_WRITE = 0x1004,   /**< writes to an I2C device */
    BSP_REQ_SPI_XFER = 0x1004,    /**< SPI transfer: shares the code of an I2C write */
    BSP_REQ_GPIO_INPUT = 0x1006,  /**< makes a GPIO line an input */
    BSP_REQ_GPIO_OUTPUT = 0x1007, /**< makes a GPIO line an output and drives it */
    BSP_REQ_GPIO_READ = 0x1008,   /**< reads a GPIO line */
    BSP_REQ_CPLD_UPGRADE = 0x1009 /**< programs the CPLD */
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
 * @param[in] request     a code of ::BspRequest
 * @param[in,out] record  the request record; the driver reads its slots and writes its result word
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
 * @param[in] reg     register number
 * @param[out] value  the driver stores the register's content here as a 32-bit word
 * @return BSP_OK; BSP_E_NULL; the negative status of bspFuncIoctl_handle(); or the driver's own
 *         code
 */
BSP_API int32_t bspFpgaGet_handle(uint32_t reg, uint32_t *value);

/**
 * Writes one CPLD register (request 0x1002; slot 0 register, slot 1 value, both zero-extended).
 * The whole 32-bit value travels; bspCpldSet() is the 16-bit form.
 *
 * @param[in] reg    register number
 * @param[in] value  the content
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspFpgaSet_handle(uint32_t reg, uint32_t value);

/**
 * Reads from an I2C device (request 0x1003; slot 0 busChan, slot 3 offsetLen, slot 4 buffer and
 * slot 5 length sign-extended, slot 1 device address and slot 2 offset zero-extended).
 *
 * @param[in] busChan    bus in bits 0-7, channel in bits 8-15
 * @param[in] devAddr    7-bit device address
 * @param[in] offset     register or memory offset inside the device
 * @param[in] offsetLen  number of offset bytes sent before the data
 * @param[out] buf       receives len bytes; not checked here, the driver judges all arguments
 * @param[in] len        byte count
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspI2cRead_handle(uint32_t busChan, uint32_t devAddr, uint32_t offset,
                                  uint32_t offsetLen, void *buf, int32_t len);

/**
 * Writes to an I2C device: request 0x1004, slots and results as bspI2cRead_handle().
 *
 * @param[in] busChan    bus in bits 0-7, channel in bits 8-15
 * @param[in] devAddr    7-bit device address
 * @param[in] offset     register or memory offset inside the device
 * @param[in] offsetLen  number of offset bytes sent before the data
 * @param[in] buf        len bytes; not checked here, the driver judges all arguments
 * @param[in] len        byte count
 * @return as bspI2cRead_handle()
 */
BSP_API int32_t bspI2cWrite_handle(uint32_t busChan, uint32_t devAddr, uint32_t offset,
                                   uint32_t offsetLen, const void *buf, int32_t len);

/**
 * Sends an SPI transfer (request 0x1004, which the kernel module shares with the I2C write; slots
 * 0, 1, 2 and 4 sign-extended, slots 3 and 5 zero-extended). The meaning of the six words is in the
 * kernel module's documentation; nothing in this library sends one.
 *
 * @param[in] a1  word of slot 0
 * @param[in] a2  word of slot 1
 * @param[in] a3  word of slot 2
 * @param[in] a4  word of slot 3
 * @param[in] a5  word of slot 4
 * @param[in] a6  word of slot 5
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspSpiXfer_handle(uint32_t a1, uint32_t a2, uint32_t a3, uint32_t a4, uint32_t a5,
                                  uint32_t a6);

/** GPIO lines that the library uses; which others there are is in the board's documentation. */
enum BspGpioLine {
    BSP_GPIO_WATCHDOG = 0,  /**< each edge feeds the watchdog, see bspWatchdogFeed() */
    BSP_GPIO_POE_RESET = 19 /**< low holds the PoE controller in reset */
};

/** Levels of a GPIO line. */
enum BspGpioLevel {
    BSP_GPIO_LOW = 0, /**< the line is low */
    BSP_GPIO_HIGH = 1 /**< the line is high */
};

/**
 * Makes a GPIO line an input (request 0x1006; slot 0 line, zero-extended).
 *
 * @param[in] pin  line number, a value of ::BspGpioLine for instance
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspGpioDirectionInput_handle(uint32_t pin);

/**
 * Makes a GPIO line an output and drives it (request 0x1007; slot 0 line, zero-extended; slot 1
 * level, sign-extended).
 *
 * @param[in] pin    line number, a value of ::BspGpioLine for instance
 * @param[in] level  a value of ::BspGpioLevel
 * @return BSP_OK; the negative status of bspFuncIoctl_handle(); or the driver's own code
 */
BSP_API int32_t bspGpioDirectionOutput_handle(uint32_t pin, int32_t level);

/**
 * Reads a GPIO line (request 0x1008; slot 0 line, zero-extended; slot 1 address of the output word,
 * sign-extended).
 *
 * @param[in] pin     line number, a value of ::BspGpioLine for instance
 * @param[out] value  the driver stores the level here as a 32-bit word, see ::BspGpioLevel
 * @return BSP_OK; BSP_E_NULL; the negative status of bspFuncIoctl_handle(); or the driver's own
 *         code
 */
BSP_API int32_t bspGpioGetValue_handle(uint32_t pin, uint32_t *value);

/**
 * Programs the CPLD from an image file (request 0x1009; slot 0 address of the parameter block and
 * slot 1 address of the path sign-extended, slot 2 length of the path zero-extended).
 *
 * @param[in] params  the driver's programming parameter block
 * @param[in] path    zero-terminated path of the image file
 * @return BSP_OK; BSP_E_NULL for a null argument; the negative status of bspFuncIoctl_handle(); or
 *         the driver's own code
 */
BSP_API int32_t bspCpldUpgrade_handle(const void *params, const char *path);

#define BSP_CPLD_VALUE_MAX 0xFFFF /**< a CPLD register has 16 bits */

/**
 * Reads a 16-bit CPLD register.
 *
 * @param[in] reg     register number
 * @param[out] value  receives the register's content (the low 16 bits of the driver's word)
 * @return BSP_OK; BSP_E_NULL; a negative status of the request channel; or the driver's own code
 */
BSP_API int32_t bspCpldGet(uint32_t reg, uint16_t *value);

/**
 * Writes a 16-bit CPLD register.
 *
 * @param[in] reg    register number
 * @param[in] value  0 to BSP_CPLD_VALUE_MAX; only the low 16 bits reach the driver
 * @return BSP_OK; a negative status of the request channel; or the driver's own code
 */
BSP_API int32_t bspCpldSet(uint32_t reg, uint32_t value);

/**
 * The board has no FPGA.
 *
 * @param[in] reg     ignored
 * @param[out] value  not touched
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspFpgaGet(uint32_t reg, uint16_t *value);

/**
 * The board has no FPGA.
 *
 * @param[in] reg    ignored
 * @param[in] value  ignored
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspFpgaSet(uint32_t reg, uint32_t value);

/**
 * Reads from an I2C device behind a bus and channel. The arguments are not checked: the driver
 * judges them, a null buffer included.
 *
 * @param[in] bus        bus number (its low 8 bits)
 * @param[in] channel    branch behind the bus (its low 8 bits)
 * @param[in] devAddr    7-bit device address
 * @param[in] offset     register or memory offset inside the device
 * @param[in] offsetLen  number of offset bytes sent before the data (0 for a raw transfer)
 * @param[out] buf       receives len bytes
 * @param[in] len        byte count
 * @return BSP_OK; a negative status of the request channel; or the driver's own code
 */
BSP_API int32_t bspI2cRead(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                           uint32_t offsetLen, uint8_t *buf, int32_t len);

/**
 * Writes to an I2C device behind a bus and channel; otherwise as bspI2cRead().
 *
 * @param[in] bus        bus number (its low 8 bits)
 * @param[in] channel    branch behind the bus (its low 8 bits)
 * @param[in] devAddr    7-bit device address
 * @param[in] offset     register or memory offset inside the device
 * @param[in] offsetLen  number of offset bytes sent before the data (0 for a raw transfer)
 * @param[in] buf        len bytes
 * @param[in] len        byte count
 * @return as bspI2cRead()
 */
BSP_API int32_t bspI2cWrite(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                            uint32_t offsetLen, const uint8_t *buf, int32_t len);

/** @copydoc bspGpioDirectionInput_handle */
BSP_API int32_t bspGpioDirectionInput(uint32_t pin);

/** @copydoc bspGpioDirectionOutput_handle */
BSP_API int32_t bspGpioDirectionOutput(uint32_t pin, int32_t level);

/** @copydoc bspGpioGetValue_handle */
BSP_API int32_t bspGpioGetValue(uint32_t pin, uint32_t *value);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup identity Device identity and versions
 * @{
 */

/* Sizes of texts in bytes, with the terminating zero but for the last. */
#define BSP_HW_VERSION_SIZE 5     /**< "O.15" at most */
#define BSP_CPLD_VERSION_SIZE 7   /**< "V15.15" at most */
#define BSP_FPGA_VERSION_SIZE 4   /**< of BSP_FPGA_VERSION_NONE */
#define BSP_BOOT_VERSION_LENGTH 6 /**< bytes of the boot loader's version, which has no zero */

#define BSP_FPGA_VERSION_NONE "---" /**< version of the FPGA that the board does not have */

/** What the questions of chassis with slots and cards are answered: the box is one fixed unit. */
enum BspFixedAnswer {
    BSP_PRODUCT_ID = 1,   /**< of ioProductIdGet() */
    BSP_SLOT_ID = 1,      /**< of ioSlotIdGet(), which counts from 1 */
    BSP_CARD_ID = 0,      /**< of ioCardIdGet() */
    BSP_FRAME_TYPE = 1,   /**< of ioFrameTypeGet() */
    BSP_SLOT_TYPE = 1,    /**< of ioSlotTypeGet() */
    BSP_CARD_TYPE = 1,    /**< of ioCardTypeGet() */
    BSP_BOARD_SLOT_ID = 0 /**< of bspBoardSlotIdGet(), which counts from 0 */
};

/**
 * Reads the device id, the model code of the board (0x0709, for example; see @ref models).
 *
 * The id is the content of CPLD register 1. It is asked once per boot: the first answer is kept in
 * /tmp/bsp/devId (4 bytes, native byte order) and a non-zero content of that file is returned
 * without touching the CPLD and without any check. The directory /tmp/bsp must exist.
 *
 * @param[out] devId  receives the id; must not be null (not checked)
 * @return BSP_OK; BSP_E_OPEN when the cache file can be neither opened nor created; or the status
 *         of bspCpldGet()
 */
BSP_API int32_t bspDevIdGet(uint32_t *devId);

/**
 * Reads the device serial version: bits 7-0 of CPLD register 1, read afresh on every call.
 *
 * @param[out] ver  receives the version, 0 to 255
 * @return BSP_OK; BSP_E_NULL; or the status of bspCpldGet()
 */
BSP_API int32_t bspDevSerialVerGet(uint32_t *ver);

/**
 * Reads the hardware revision as text, for example "A.3", from CPLD register 2: a letter ('@' +
 * bits 15-12) and a number (bits 11-8).
 *
 * @param[out] text  receives the zero-terminated text; BSP_HW_VERSION_SIZE bytes
 * @return BSP_OK; BSP_E_NULL; or the status of bspCpldGet()
 */
BSP_API int32_t bspHwVersionGet(char *text);

/**
 * Reads the CPLD version as text, for example "V1.2", from CPLD register 2 (major bits 7-4, minor
 * bits 3-0).
 *
 * @param[out] text  receives the zero-terminated text; BSP_CPLD_VERSION_SIZE bytes
 * @return BSP_OK; BSP_E_NULL; or the status of bspCpldGet()
 */
BSP_API int32_t bspCpldVersionGet(char *text);

/**
 * The board has no FPGA: stores BSP_FPGA_VERSION_NONE.
 *
 * @param[out] text  receives the zero-terminated text; BSP_FPGA_VERSION_SIZE bytes
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspFpgaVersionGet(char *text);

/**
 * Reads the boot loader's version: the 6 bytes that follow "bootver=" in the first line of
 * /proc/cmdline (at most 255 characters are looked at), whatever they are. A shorter value brings
 * the space, newline or zero bytes behind it along.
 *
 * @param[out] version  receives exactly BSP_BOOT_VERSION_LENGTH bytes and no terminating zero, so
 *                      zero-fill a buffer with one byte more beforehand; untouched when the command
 *                      line has no "bootver="
 * @return BSP_OK, also when the key is absent; BSP_E_FAILED (-1, not BSP_E_NULL) for a null buffer
 *         or when /proc/cmdline cannot be opened ("open /proc/cmdline fail" is printed as a line)
 */
BSP_API int32_t bspUbootVersionGet(char *version);

/**
 * Slot number of this single-slot box as the board sees it: always BSP_BOARD_SLOT_ID.
 *
 * @param[out] slotId  receives the number
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspBoardSlotIdGet(uint32_t *slotId);

/**
 * The board keeps no description.
 *
 * @param[out] desc  not touched
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspBoardDescGet(char *desc);

/**
 * The board keeps no description.
 *
 * @param[in] desc  ignored
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspBoardDescSet(const char *desc);

/**
 * The board reports no power budget.
 *
 * @param[in] index  ignored
 * @param[out] info  not touched
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspBoardPowerInfoGet(uint32_t index, void *info);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup records EEPROM and product information records
 * @{
 */

#define BSP_DEVINFO_MAGIC "DEVINFO"  /**< first 8 bytes of the board's record, with the zero */
#define BSP_DEVINFO_OFFSET 256       /**< where the board's record lies in the board's EEPROM */
#define BSP_SUPPLY_RECORD_OFFSET 176 /**< where a supply's record lies in the supply's EEPROM */

#define BSP_EEPROM_SIZE 1024      /**< largest addressable EEPROM span in bytes */
#define BSP_EEPROM_BLOCK_SIZE 256 /**< bytes of a block, which has a device address of its own */
#define BSP_EEPROM_PAGE_SIZE 16   /**< bytes of a write page, and of the longest transfer */

/** Where the EEPROMs of the board and of its supplies are on I2C. */
enum BspEepromPlace {
    BSP_EEPROM_BUS = 0,              /**< I2C bus of all of them */
    BSP_EEPROM_BOARD_CHANNEL = 0,    /**< branch of the board's */
    BSP_EEPROM_SUPPLY_1_CHANNEL = 2, /**< branch of supply 1's; supply 2's is the next */
    BSP_EEPROM_ADDRESS = 0x50        /**< 7-bit device address of the first block */
};

#define BSP_FIXED_SUPPLIES 2 /**< supplies of four-fan and two-fan models */
#define BSP_SUPPLIES_MAX 6   /**< most supplies of any model */

#define BSP_MAC_LENGTH 6            /**< bytes of a MAC address */
#define BSP_SERIAL_NUMBER_MIN 1     /**< shortest serial number that can be stored */
#define BSP_SERIAL_NUMBER_MAX 31    /**< longest serial number that can be stored */
#define BSP_SERIAL_NUMBER_BUFFER 64 /**< bytes for the serial number of any record */

/**
 * The board's product information record: 128 bytes at offset 256 of the board's EEPROM. What the
 * product data hold is the manufacturer's matter.
 */
typedef struct BspDevinfo {
    char magic[8];               /**< BSP_DEVINFO_MAGIC: "DEVINFO" and a zero byte */
    uint8_t reserved1[2];        /**< carried unchanged */
    uint8_t mac[BSP_MAC_LENGTH]; /**< base MAC address, first octet first */
    uint8_t productData1[16];    /**< carried unchanged */
    uint8_t productData2[32];    /**< carried unchanged */
    char serial[32];             /**< serial number, ASCII, zero-padded */
    /** number of supplies, at most BSP_SUPPLIES_MAX (models without fixed supplies) */
    uint8_t supplyCount;
    /** type of supplies 1 to 6 (models without fixed supplies), see bspPowerTypeGet() */
    uint8_t supplyType[BSP_SUPPLIES_MAX];
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
 * Reads an EEPROM in chunks of at most BSP_EEPROM_PAGE_SIZE bytes that never cross a block, with a
 * pause of 1 ms after each. Block n of BSP_EEPROM_BLOCK_SIZE bytes answers at device address
 * devAddr + n.
 *
 * @param[in] bus      I2C bus
 * @param[in] channel  branch behind the bus
 * @param[in] devAddr  7-bit device address of the first block
 * @param[in] offset   first byte, 0 to BSP_EEPROM_SIZE - 1
 * @param[out] buf     receives len bytes; on failure the chunks before the failed one have arrived
 * @param[in] len      byte count; 0 answers BSP_OK at once
 * @return BSP_OK; BSP_E_NULL ("ERROR: %s(%d): ptr buff is NULL.\n" is printed); BSP_E_EEPROM_SPAN
 *         when offset + len is above BSP_EEPROM_SIZE; BSP_E_FAILED when a transfer fails
 */
BSP_API int32_t bspI2cEepromRead(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                                 uint8_t *buf, uint32_t len);

/**
 * Writes an EEPROM in chunks that never cross a write page; otherwise as bspI2cEepromRead(). On
 * failure the chunks before the failed one stay written.
 *
 * @param[in] bus      I2C bus
 * @param[in] channel  branch behind the bus
 * @param[in] devAddr  7-bit device address of the first block
 * @param[in] offset   first byte, 0 to BSP_EEPROM_SIZE - 1
 * @param[in] buf      len bytes
 * @param[in] len      byte count; 0 answers BSP_OK at once
 * @return as bspI2cEepromRead()
 */
BSP_API int32_t bspI2cEepromWrite(uint32_t bus, uint32_t channel, uint32_t devAddr, uint32_t offset,
                                  const uint8_t *buf, uint32_t len);

/**
 * Reads the board's EEPROM, see ::BspEepromPlace.
 *
 * @param[in] offset  first byte, 0 to BSP_EEPROM_SIZE - 1
 * @param[out] buf    receives len bytes; on failure the chunks before the failed one have arrived
 * @param[in] len     byte count; 0 answers BSP_OK at once
 * @return as bspI2cEepromRead()
 */
BSP_API int32_t bspLocalEepromRead(uint32_t offset, uint8_t *buf, uint32_t len);

/**
 * Writes the board's EEPROM, see ::BspEepromPlace. On failure the chunks before the failed one stay
 * written.
 *
 * @param[in] offset  first byte, 0 to BSP_EEPROM_SIZE - 1
 * @param[in] buf     len bytes
 * @param[in] len     byte count; 0 answers BSP_OK at once
 * @return as bspI2cEepromWrite()
 */
BSP_API int32_t bspLocalEepromWrite(uint32_t offset, const uint8_t *buf, uint32_t len);

/**
 * Reads the EEPROM of a fixed power supply, see ::BspEepromPlace, on any model.
 *
 * @param[in] supply  1 to BSP_FIXED_SUPPLIES
 * @param[in] offset  first byte, 0 to BSP_EEPROM_SIZE - 1
 * @param[out] buf    receives len bytes; on failure the chunks before the failed one have arrived
 * @param[in] len     byte count; 0 answers BSP_OK at once
 * @return as bspI2cEepromRead(); a null buffer is answered before the supply number is looked at;
 *         BSP_E_INVALID for any other supply
 */
BSP_API int32_t bspPowerEepromRead(uint32_t supply, uint32_t offset, uint8_t *buf, uint32_t len);

/**
 * Writes the EEPROM of a fixed power supply. On failure the chunks before the failed one stay
 * written.
 *
 * @param[in] supply  1 to BSP_FIXED_SUPPLIES
 * @param[in] offset  first byte, 0 to BSP_EEPROM_SIZE - 1
 * @param[in] buf     len bytes
 * @param[in] len     byte count; 0 answers BSP_OK at once
 * @return as bspPowerEepromRead()
 */
BSP_API int32_t bspPowerEepromWrite(uint32_t supply, uint32_t offset, const uint8_t *buf,
                                    uint32_t len);

/**
 * Reads and checks the board's product information record.
 *
 * @param[out] record  receives 128 bytes, on success only
 * @return BSP_OK; BSP_E_NULL; BSP_E_NO_MEMORY; the status of bspLocalEepromRead(); BSP_E_NO_RECORD
 *         when the magic is missing; BSP_E_INVALID when the CRC does not match
 */
BSP_API int32_t bspLocalPieGet(BspDevinfo *record);

/**
 * Writes the board's product information record.
 *
 * @param[in,out] record  128 bytes that begin with the magic; its CRC field is computed here, so
 *                        the caller's copy changes even when the write then fails
 * @return BSP_OK; BSP_E_NULL; BSP_E_NO_RECORD when the magic is missing (nothing is written); the
 *         status of bspLocalEepromWrite()
 */
BSP_API int32_t bspLocalPieSet(BspDevinfo *record);

/**
 * Reads the record of a power supply, on any model. Its content is not checked.
 *
 * @param[in] supply   1 to BSP_FIXED_SUPPLIES
 * @param[out] record  receives 80 bytes, on success only
 * @return BSP_OK; BSP_E_NULL; BSP_E_NO_MEMORY; the status of bspPowerEepromRead()
 */
BSP_API int32_t bspPowerPieGet(uint32_t supply, BspSupplyRecord *record);

/**
 * Writes the record of a power supply, on any model.
 *
 * @param[in] supply  1 to BSP_FIXED_SUPPLIES
 * @param[in] record  80 bytes
 * @return BSP_OK; BSP_E_NULL; the status of bspPowerEepromWrite()
 */
BSP_API int32_t bspPowerPieSet(uint32_t supply, const BspSupplyRecord *record);

/**
 * Continues a CRC-32 (IEEE 802.3, reflected, polynomial 0xEDB88320).
 *
 * @param[in] crc  result of the call for the bytes before these, 0 to start
 * @param[in] buf  len bytes
 * @param[in] len  byte count
 * @return the CRC of all bytes so far; 0 for a null buffer
 */
BSP_API uint32_t bsp_crc32_cal(uint32_t crc, const uint8_t *buf, uint32_t len);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup devinfo Device information, MAC address and serial number
 * @{
 */

#define BSP_DEVINFO_BOARD 0u       /**< device information index of the board's own record */
#define BSP_DEVINFO_SUPPLY_1 0x50u /**< index of power supply 1; supply n is 0x50 + n - 1 */
#define BSP_DEVINFO_SUPPLY_2 0x51u /**< index of power supply 2 */

/** Which MAC address of the board bspMacAddrGet() answers. Any other index counts as 1. */
enum BspMacIndex {
    BSP_MAC_ABOVE_BASE = 0, /**< the stored base address with 1 added to its last byte */
    BSP_MAC_BASE = 1        /**< the stored base address */
};

/**
 * Reads a device information record.
 *
 * Index 0 is the board's record, magic and CRC checked. An index whose bits 7-4 are 5 is power
 * supply index - 0x4F, on two-fan models only: its record is shown in the board's layout, that is
 * productData1, productData2, productData3 and the first 24 bytes of serial are stored and all
 * other bytes of the caller's buffer keep their values.
 *
 * @param[in] index    BSP_DEVINFO_BOARD, BSP_DEVINFO_SUPPLY_1 or BSP_DEVINFO_SUPPLY_2
 * @param[out] record  128 bytes
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
 * @param[in] index       BSP_DEVINFO_BOARD, BSP_DEVINFO_SUPPLY_1 or BSP_DEVINFO_SUPPLY_2
 * @param[in,out] record  128 bytes; of the board's the CRC changes
 * @return as bspDevinfoGet(), with the statuses of bspLocalPieSet() and bspPowerPieSet()
 */
BSP_API int32_t bspDevinfoSet(uint32_t index, BspDevinfo *record);

/**
 * Reads a MAC address from the board's record.
 *
 * @param[in] index  a value of ::BspMacIndex: 0 gives the stored base address with 1 added to its
 *                   last byte (0xFF becomes 0x00, nothing is carried); any other index gives the
 *                   stored base address
 * @param[out] mac   receives BSP_MAC_LENGTH bytes, first octet first
 * @return BSP_OK; BSP_E_NULL; the status of bspDevinfoGet() ("%s-%d: devinfo get failed\n" is
 *         printed)
 */
BSP_API int32_t bspMacAddrGet(uint32_t index, uint8_t *mac);

/**
 * Stores the base MAC address in the board's record, the same for every index: a set with index 0
 * followed by a get with index 0 answers the address plus one.
 *
 * @param[in] index  ignored
 * @param[in] mac    BSP_MAC_LENGTH bytes, first octet first
 * @return BSP_OK; BSP_E_NULL; the status of bspDevinfoGet() ("%s-%d: devinfo get failed\n" is
 *         printed) or of bspDevinfoSet() ("%s-%d: devinfo set failed\n" is printed)
 */
BSP_API int32_t bspMacAddrSet(uint32_t index, const uint8_t *mac);

/**
 * Reads the serial number from the board's record.
 *
 * @param[out] serial  receives the characters and no terminating zero, so zero-fill it beforehand;
 *                     BSP_SERIAL_NUMBER_MAX + 1 bytes suffice for every number that
 *                     bspSerialNumSet() writes, BSP_SERIAL_NUMBER_BUFFER for any record
 * @param[out] len     receives the number of characters, up to the first zero byte of the field (a
 *                     field without one runs on into the bytes behind it, at most to the
 *                     record's end)
 * @return BSP_OK; BSP_E_NULL; the status of bspDevinfoGet() ("%s-%d: devinfo get failed\n" is
 *         printed)
 */
BSP_API int32_t bspSerialNumGet(char *serial, uint32_t *len);

/**
 * Stores the serial number in the board's record, padded with zeros to 32 bytes.
 *
 * @param[in] serial  len bytes
 * @param[in] len     BSP_SERIAL_NUMBER_MIN to BSP_SERIAL_NUMBER_MAX
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID for a length out of range; the status of
 *         bspDevinfoGet() ("%s-%d: devinfo get failed\n" is printed) or of bspDevinfoSet()
 *         ("%s-%d: devinfo set failed\n" is printed)
 */
BSP_API int32_t bspSerialNumSet(const char *serial, int32_t len);

/**
 * The board keeps no manufacturing date.
 *
 * @param[out] date  not touched
 * @return BSP_OK
 */
BSP_API int32_t bspMfgDateGet(char *date);

/**
 * The board keeps no manufacturing date.
 *
 * @param[in] date  ignored
 * @return BSP_OK; nothing is stored
 */
BSP_API int32_t bspMfgDateSet(const char *date);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup bootsettings Boot settings
 *
 * Texts in the first 256 bytes of the flash partition /dev/mtd4. There is no lock: two setters at
 * the same time can lose each other's setting, and a power cut between the erase and the write of a
 * setter leaves an erased block, which reads as the defaults below.
 *
 * A partition that cannot be opened, read, erased or written is not reported. Getters then answer
 * as for an erased block, and setters answer BSP_OK: read a setting back to know that it is stored.
 *
 * What the boot loader makes of boot mode and boot flag is in its own documentation.
 * @{
 */

/** Which system the boot loader starts, as the boot loader's documentation numbers them. */
enum BspBootMode {
    BSP_BOOT_MODE_0 = 0, /**< also when nothing is stored */
    BSP_BOOT_MODE_1 = 1  /**< the other one */
};

/** Rates of the console, in baud. */
enum BspBaudrate {
    BSP_BAUDRATE_9600 = 9600,                  /**< 9600 baud */
    BSP_BAUDRATE_19200 = 19200,                /**< 19200 baud */
    BSP_BAUDRATE_38400 = 38400,                /**< 38400 baud */
    BSP_BAUDRATE_57600 = 57600,                /**< 57600 baud */
    BSP_BAUDRATE_115200 = 115200,              /**< 115200 baud */
    BSP_BAUDRATE_DEFAULT = BSP_BAUDRATE_115200 /**< what counts when nothing is stored */
};

/** Whether a password has to be given. */
enum BspPasswordUse {
    BSP_PASSWORD_UNUSED = 0,  /**< it is not asked for */
    BSP_PASSWORD_IN_FORCE = 1 /**< it is asked for */
};

#define BSP_BOOT_PASSWORD_MAX 40 /**< longest boot password in characters */
/** Bytes for whatever is stored as a password, with the terminating zero. */
#define BSP_BOOT_PASSWORD_BUFFER 56

/**
 * Reads which system the boot loader starts ("main_system=").
 *
 * @param[out] mode  receives a value of ::BspBootMode: 1 for a stored value other than 0, else 0; 0
 *                   when nothing is stored
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspBootModeGet(uint32_t *mode);

/**
 * Stores which system the boot loader starts.
 *
 * @param[in] mode  a value of ::BspBootMode: any above 0 is stored as 1, all others as 0
 * @return BSP_OK
 */
BSP_API int32_t bspBootModeSet(int32_t mode);

/**
 * Reads the boot flag ("boot_type=").
 *
 * @param[out] flag  receives the stored number, any 32-bit one
 * @return BSP_OK; BSP_E_NULL; BSP_E_FAILED when no flag is stored
 */
BSP_API int32_t bspBootFlagGet(int32_t *flag);

/**
 * Stores the boot flag.
 *
 * @param[in] flag  stored as it is, negative ones too
 * @return BSP_OK
 */
BSP_API int32_t bspBootFlagSet(int32_t flag);

/**
 * Reads the console's rate at start-up ("baudrate=").
 *
 * @param[out] baud  receives the stored number, a value of ::BspBaudrate unless another program
 *                   stored it; BSP_BAUDRATE_DEFAULT when nothing is stored
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspBaudrateGet(uint32_t *baud);

/**
 * Switches the running console (/dev/ttyS0, by the command stty) to a rate and stores it for the
 * next start.
 *
 * @param[in] baud  a value of ::BspBaudrate
 * @return BSP_OK; BSP_E_INVALID for another rate ("%s-%d: Baudrate %d is not supported. i=%d\n" is
 *         printed); BSP_E_FAILED when stty fails ("%s-%d: set console baudrate to %d error, ret =
 *         %d\n" is printed), and then nothing is stored
 */
BSP_API int32_t bspBaudrateSet(uint32_t baud);

/**
 * Tells whether the console asks for a password ("password=").
 *
 * @param[out] valid  receives a value of ::BspPasswordUse: 1 for a stored value other than 0, else
 *                    0; 0 when nothing is stored
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspConsolePwdValidGet(uint32_t *valid);

/**
 * Stores whether the console asks for a password.
 *
 * @param[in] valid  a value of ::BspPasswordUse: any above 0 is stored as 1, all others as 0
 * @return BSP_OK
 */
BSP_API int32_t bspConsolePwdValidSet(int32_t valid);

/**
 * Tells whether the user password is in force ("user_pwd=").
 *
 * @param[out] valid  receives a value of ::BspPasswordUse: 0 when 0 is stored, else 1; 1 when
 *                    nothing is stored
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspUserPwdValidGet(uint32_t *valid);

/**
 * Stores whether the user password is in force.
 *
 * @param[in] valid  a value of ::BspPasswordUse: 0 is stored as such, any other value as an erased
 *                   slot
 * @return BSP_OK
 */
BSP_API int32_t bspUserPwdValidSet(int32_t valid);

/**
 * Reads the boot password ("boot_pwd=").
 *
 * @param[out] pwd  receives the zero-terminated password, empty when none is stored.
 *                  BSP_BOOT_PASSWORD_MAX + 1 bytes for what bspBootPwdSet() stores,
 *                  BSP_BOOT_PASSWORD_BUFFER for whatever the slot may hold
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t bspBootPwdGet(char *pwd);

/**
 * Stores the boot password.
 *
 * @param[in] pwd  zero-terminated, at most BSP_BOOT_PASSWORD_MAX characters; an empty one clears
 *                 the slot
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID for a longer one, before anything is read
 */
BSP_API int32_t bspBootPwdSet(const char *pwd);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup supplies Power supplies
 * @{
 */

/** What bspPowerPresentGet() answers, which differs by model. */
enum BspSupplyPresence {
    /** Four-fan and two-fan models: the supply's line is low; type and readings can be had. */
    BSP_SUPPLY_LINE_LOW = 0,
    /** Four-fan and two-fan models: the supply's line is high; type and readings cannot be had. */
    BSP_SUPPLY_LINE_HIGH = 1,
    BSP_SUPPLY_MISSING = 0, /**< other models: the supply is not there */
    BSP_SUPPLY_PRESENT = 1  /**< other models: the supply is there */
};

/** Types of fixed supplies. What each is, is in the hardware's documentation. */
enum BspSupplyType {
    BSP_SUPPLY_TYPE_1 = 1, /**< the supply's type line is high */
    BSP_SUPPLY_TYPE_2 = 2  /**< the supply's type line is low */
};

/**
 * Status of a supply, from the bits of CPLD register 30, where n is the supply: the first of these
 * that holds. What each means is in the hardware's documentation.
 *
 * Four-fan models: 3 for bit n + 3 set; 1 for the bits n + 5 and n + 1 both set; 2 for bit n + 7
 * clear; else 0. Two-fan models: 1 for bit n + 7 clear; 4 for bit n + 5 clear; else 0. All others:
 * 0.
 */
enum BspSupplyStatus {
    BSP_SUPPLY_STATUS_0 = 0, /**< none of the others */
    BSP_SUPPLY_STATUS_1 = 1, /**< four-fan and two-fan models, by different lines */
    BSP_SUPPLY_STATUS_2 = 2, /**< four-fan models */
    BSP_SUPPLY_STATUS_3 = 3, /**< four-fan models */
    BSP_SUPPLY_STATUS_4 = 4  /**< two-fan models */
};

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
 * Tells how many power supplies the board has: BSP_FIXED_SUPPLIES on four-fan and two-fan models,
 * the count of the board's record on all others.
 *
 * @param[out] out  receives the count, also when it is refused; must not be null (not checked)
 * @return BSP_OK; the status of bspDevIdGet() ("%s-%d: get devId failed\n" is printed) or of
 *         bspDevinfoGet() ("%s-%d: devinfo get failed\n" is printed); BSP_E_INVALID for a count
 *         above BSP_SUPPLIES_MAX ("%s-%d: power num %d > max %d\n" is printed)
 */
BSP_API int32_t bspPowerNumGet(int32_t *out);

/**
 * Reads the line that tells of a supply's presence.
 *
 * On four-fan and two-fan models the answer is bit index - 1 of CPLD register 30 as it stands:
 * while it is 1 bspPowerTypeGet() and bspPowerInfoGet() answer BSP_E_FAILED, and only while it is 0
 * there is something to be read. (On four-fan models bspFanPresentGet() reads the same bits.)
 *
 * On all other models the answer is 1 for a supply that is there and 0 for one that is not: bit
 * index + 8 of register 6, which is active low.
 *
 * @param[in] index  1 to BSP_FIXED_SUPPLIES on every model: supplies 3 to 6 have no such line
 * @param[out] out   receives a value of ::BspSupplyPresence; must not be null (not checked)
 * @return BSP_OK; BSP_E_INVALID; the status of bspDevIdGet() ("%s-%d: get devId failed\n" is
 *         printed) or of bspCpldGet()
 */
BSP_API int32_t bspPowerPresentGet(int32_t index, int32_t *out);

/**
 * Reads the type of a supply: on four-fan and two-fan models from bit index + 1 of CPLD register
 * 30, on all others the type byte of the board's record.
 *
 * On the models with fixed supplies the type can be read only while bit index - 1 of register 30 is
 * clear, the very bit that bspPowerPresentGet() answers.
 *
 * @param[in] index  supply, counted from 1 (not checked on models with fixed supplies)
 * @param[out] out   receives the type: a value of ::BspSupplyType for a fixed supply, 0 to 255 for
 *                   others; what each is, is in the hardware's documentation
 * @return BSP_OK; BSP_E_NULL; BSP_E_FAILED while the bit above is set; BSP_E_INVALID for a supply
 *         that the board's record does not have ("%s-%d: power index %d > powerNum %d\n" is
 *         printed); the status of bspDevIdGet() ("%s-%d: get devId failed\n" is printed), of
 *         bspDevinfoGet() ("%s-%d: devinfo get failed\n" is printed) or of bspCpldGet()
 */
BSP_API int32_t bspPowerTypeGet(int32_t index, int32_t *out);

/**
 * Reads the status of a supply.
 *
 * @param[in] index  supply, counted from 1
 * @param[out] out   receives a value of ::BspSupplyStatus; must not be null (not checked)
 * @return BSP_OK; BSP_E_INVALID for an index below 1 or above the count; the status of
 *         bspDevIdGet() ("%s-%d: get devId failed\n" is printed), of bspPowerNumGet() or of
 *         bspCpldGet()
 */
BSP_API int32_t bspPowerStatusGet(int32_t index, int32_t *out);

/**
 * Takes all live readings of a supply over PMBus (bus 0, channel index + 1, device 0x58): at least
 * 900 ms on a two-fan model. On all others the type alone is filled.
 *
 * @param[in] index  1 to BSP_FIXED_SUPPLIES on a two-fan model; on others what bspPowerTypeGet()
 *                   takes
 * @param[out] info  cleared first; readings before a failure keep their values; must not be null
 *                   (not checked)
 * @return BSP_OK; the status of bspPowerTypeGet() ("%s-%d: get power type failed, ret=%d\n" is
 *         printed) or of bspDevIdGet() ("%s-%d: get devId failed\n" is printed); BSP_E_FAILED
 *         when a reading fails, or for an index other than 1 and 2 on a two-fan model
 */
BSP_API int32_t bspPowerInfoGet(int32_t index, BspPowerInfo *info);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup control LEDs, watchdog, reboot and PTP trigger
 * @{
 */

/** Kinds of LEDs, by where they are in the CPLD. What each lamp tells is in the panel's legend. */
enum BspLedKind {
    BSP_LED_SYSTEM = 1,  /**< system lamp: register 7, bits 0-1 */
    BSP_LED_4 = 4,       /**< lamp in register 7, bit 4 */
    BSP_LED_5 = 5,       /**< lamp in register 7, bit 5 */
    BSP_LED_INDEXED = 7, /**< lamps in register 7, from bit 6 on: bit index + 5 */
    BSP_LED_POE_PORT = 9 /**< PoE ports in registers 13 to 15, 16 ports each, from bit 0 on */
};

/**
 * States of LEDs: 0 or 1 for all kinds, which is the bit that is written; 2 and 3 for the system
 * lamp alone, whose states 0, 1, 2 and 3 are written as 0, 3, 2 and 1. How these look is in the
 * hardware's documentation; the LED of a PoE port is active low, and bspPoePortLedStateSet() knows
 * it.
 */
enum BspLedState {
    BSP_LED_STATE_0 = 0, /**< of one bit: clear, which lights the LED of a PoE port */
    BSP_LED_STATE_1 = 1, /**< of one bit: set, which puts the LED of a PoE port out */
    BSP_LED_STATE_2 = 2, /**< of the system lamp */
    BSP_LED_STATE_3 = 3  /**< of the system lamp */
};

#define BSP_LED_INDEXED_MAX 10 /**< highest index of BSP_LED_INDEXED: the register ends there */

/**
 * Sets a front-panel LED, read-modify-write of its CPLD register.
 *
 * @param[in] unit    ignored
 * @param[in] index   counted from 1: of BSP_LED_INDEXED the lamp (not checked; nothing changes for
 *                    one above BSP_LED_INDEXED_MAX), of BSP_LED_POE_PORT the port; else
 *                    ignored
 * @param[in] kind    a value of ::BspLedKind
 * @param[in] colour  ignored
 * @param[in] state   a value of ::BspLedState
 * @return BSP_OK; BSP_E_NOT_SUPPORTED for another kind, for a PoE port on a model without PoE, and
 *         for the states 2 and 3 of a lamp that has two; BSP_E_INVALID for a state above 3 or a
 *         port that the model does not have; the status of bspDevIdGet(), bspCpldGet() or
 *         bspCpldSet()
 */
BSP_API int32_t bspLedStateSet(uint32_t unit, uint32_t index, uint32_t kind, uint32_t colour,
                               uint32_t state);

#define BSP_WATCHDOG_OFF 0         /**< period of a watchdog that is not armed */
#define BSP_WATCHDOG_PERIOD_MAX 63 /**< longest period */

/**
 * Feeds the watchdog: one edge on GPIO line BSP_GPIO_WATCHDOG.
 *
 * @return BSP_OK, also when the line fails
 */
BSP_API int32_t bspWatchdogFeed(void);

/**
 * Does nothing: bspWatchdogPeriodSet() arms the watchdog.
 *
 * @return BSP_OK
 */
BSP_API int32_t bspWatchdogStart(void);

/**
 * Disarms the watchdog: period BSP_WATCHDOG_OFF.
 *
 * @return the status of bspWatchdogPeriodSet()
 */
BSP_API int32_t bspWatchdogStop(void);

/**
 * Reads the watchdog's period from CPLD register 4, bits 7-2.
 *
 * @param[out] period  receives BSP_WATCHDOG_OFF, or 1 to BSP_WATCHDOG_PERIOD_MAX, whose unit is
 *                     the CPLD's
 * @return BSP_OK; BSP_E_NULL; the status of bspCpldGet()
 */
BSP_API int32_t bspWatchdogPeriodGet(uint32_t *period);

/**
 * Sets the watchdog's period and arms it, or disarms it. The whole of CPLD register 4 is written.
 *
 * @param[in] period  BSP_WATCHDOG_OFF, or 1 to BSP_WATCHDOG_PERIOD_MAX in the CPLD's units, whose
 *                    length is in the hardware's documentation
 * @return BSP_OK; BSP_E_INVALID; the status of bspCpldSet()
 */
BSP_API int32_t bspWatchdogPeriodSet(uint32_t period);

/**
 * Resets the board: writes 0 to CPLD register 5.
 *
 * @return the status of bspCpldSet()
 */
BSP_API int32_t bspHwReboot(void);

/**
 * Gives a low pulse of at least 100 microseconds on the PTP trigger line (CPLD register 6, bit 15).
 *
 * @param[in] value  ignored
 * @return BSP_OK; the status of bspCpldGet() ("%s-%d: bspCpldGet error. ret=%d \n" is printed) or
 *         of bspCpldSet() ("%s-%d: bspCpldSet error. ret=%d \n" is printed)
 */
BSP_API int32_t bspPtpTriggerSet(uint32_t value);

/**
 * The box has no slots.
 *
 * @param[in] slot  ignored
 * @param[out] out  not touched
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspSlotPresentGet(uint32_t slot, uint32_t *out);

/**
 * The box has no slots.
 *
 * @param[in] slot   ignored
 * @param[in] state  ignored
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspSlotPowerStateSet(uint32_t slot, uint32_t state);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup climate Fans and temperature
 * @{
 */

#define BSP_TEMPERATURE_MIN_CELSIUS (-128) /**< lowest temperature that can be read */
#define BSP_TEMPERATURE_MAX_CELSIUS 127    /**< highest temperature that can be read */

#define BSP_FAN_LEVEL_MIN 1   /**< slowest level */
#define BSP_FAN_LEVEL_MAX 10  /**< fastest level */
#define BSP_FAN_STEP_RPM 120  /**< revolutions per minute for each count of a tachometer */
#define BSP_FAN_MAX_RPM 30600 /**< highest speed that can be read */

/** Whether a fan is there. */
enum BspFanPresence {
    BSP_FAN_MISSING = 0, /**< its line is low, or the model has none */
    BSP_FAN_PRESENT = 1  /**< its line is high */
};

/**
 * Reads the board's temperature from its sensor (I2C bus 0, channel 1, device 0x4F).
 *
 * @param[in] sensor    ignored: there is one
 * @param[out] celsius  receives whole degrees, BSP_TEMPERATURE_MIN_CELSIUS to
 *                      BSP_TEMPERATURE_MAX_CELSIUS
 * @return BSP_OK; BSP_E_NULL; the status of bspI2cRead()
 */
BSP_API int32_t bspTemperGet(uint32_t sensor, int32_t *celsius);

/**
 * Reads the speed of a fan from CPLD register 28 (fans 1 and 2) or 29 (fans 3 and 4). Both fans of
 * a two-fan model have one tachometer.
 *
 * @param[in] fan   1 to 4 on a four-fan model, 1 or 2 on all others
 * @param[out] rpm  receives revolutions per minute, 0 to BSP_FAN_MAX_RPM in steps of
 *                  BSP_FAN_STEP_RPM
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID for another fan; the status of bspDevIdGet()
 *         ("%s-%d: get devId failed\n" is printed) or of bspCpldGet()
 */
BSP_API int32_t bspFanSpeedGet(uint32_t fan, uint32_t *rpm);

/**
 * Sets the speed level of all fans: bits 5-8 of CPLD register 6 become level - 1, its other bits
 * are kept. Nothing else may write that register meanwhile: it also has the PTP trigger line.
 *
 * @param[in] fan    ignored: the fans share one level
 * @param[in] level  BSP_FAN_LEVEL_MIN to BSP_FAN_LEVEL_MAX
 * @return BSP_OK; BSP_E_INVALID for another level; the status of bspCpldGet() or bspCpldSet()
 */
BSP_API int32_t bspFanSpeedSet(uint32_t fan, int32_t level);

/**
 * Tells whether a fan is present. A line tells it of a pair of fans: on a four-fan model bit 0
 * (fans 1 and 2) and bit 1 (fans 3 and 4) of CPLD register 30, which are the bits of
 * bspPowerPresentGet(), too; on a two-fan model bit 8 of register 31. All other models have no such
 * line, and the answer is BSP_FAN_MISSING.
 *
 * @param[in] fan   1 to 4 on a four-fan model, 1 or 2 on all others
 * @param[out] out  receives a value of ::BspFanPresence
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID for another fan; the status of bspDevIdGet()
 *         ("%s-%d: get devId failed\n" is printed) or of bspCpldGet()
 */
BSP_API int32_t bspFanPresentGet(int32_t fan, uint32_t *out);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup clock Clock chip and system clock
 *
 * The battery-backed clock chip is on I2C bus 0, channel 1, device 0x51. Some models do not have
 * it.
 * @{
 */

#define BSP_CALENDAR_FIRST_YEAR 1900 /**< the year 0 of a ::BspCalendar */

/* What the chip holds at most: higher numbers do not read back as they were written. */
#define BSP_CLOCK_SECOND_MAX 79 /**< highest second that is kept */
#define BSP_CLOCK_MINUTE_MAX 79 /**< highest minute that is kept */
#define BSP_CLOCK_HOUR_MAX 39   /**< highest hour that is kept */
#define BSP_CLOCK_DAY_MAX 39    /**< highest day that is kept */
#define BSP_CLOCK_MONTH_MAX 19  /**< highest month that is kept */
#define BSP_CLOCK_YEAR_MAX 159  /**< highest year that is kept: 2059 */

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
    uint32_t year;   /**< since BSP_CALENDAR_FIRST_YEAR, 0 to BSP_CLOCK_YEAR_MAX */
} BspCalendar;

/**
 * Reads the clock chip on any model, one register after another: second, minute, hour, day, month,
 * year (registers 2, 3, 4, 5, 7, 8). The decimal digits are decoded and not checked: a digit above
 * 9 counts as what it is.
 *
 * @param[out] year    receives the stored year, 0 to 165
 * @param[out] month   receives the stored month, 0 to 25
 * @param[out] day     receives the stored day, 0 to 45
 * @param[out] hour    receives the stored hour, 0 to 45
 * @param[out] minute  receives the stored minute, 0 to 85
 * @param[out] second  receives the stored second, 0 to 85
 * @return BSP_OK; BSP_E_NULL when an output is null, before anything is read; the status of the
 *         first failed bspI2cRead(): what was read before it has been stored, the other outputs
 *         are untouched
 */
BSP_API int32_t bsp_rtc_chip_get(uint16_t *year, uint8_t *month, uint8_t *day, uint8_t *hour,
                                 uint8_t *minute, uint8_t *second);

/**
 * Writes the clock chip on any model, in the order and to the registers of bsp_rtc_chip_get(). The
 * numbers are not checked.
 *
 * @param[in] year    kept from 0 to BSP_CLOCK_YEAR_MAX; its low byte counts
 * @param[in] month   kept from 0 to BSP_CLOCK_MONTH_MAX
 * @param[in] day     kept from 0 to BSP_CLOCK_DAY_MAX
 * @param[in] hour    kept from 0 to BSP_CLOCK_HOUR_MAX
 * @param[in] minute  kept from 0 to BSP_CLOCK_MINUTE_MAX
 * @param[in] second  kept from 0 to BSP_CLOCK_SECOND_MAX
 * @return BSP_OK; the status of the first failed bspI2cWrite(): what comes before it is written
 */
BSP_API int32_t bsp_rtc_chip_set(uint32_t year, uint32_t month, uint32_t day, uint32_t hour,
                                 uint32_t minute, uint32_t second);

/**
 * Reads the clock chip. A model without one answers BSP_OK at once.
 *
 * @param[out] record  receives the chip's content, as bsp_rtc_chip_get() does, also up to a
 *                     failure; untouched on a model without the chip
 * @return BSP_OK; the status of bspDevIdGet(); BSP_E_NULL on a model with the chip; the status of
 *         bsp_rtc_chip_get()
 */
BSP_API int32_t bspRealtimeGet(BspCalendar *record);

/**
 * Writes the clock chip. A model without one answers BSP_OK at once.
 *
 * @param[in] record  of each number the low 8 bits count; must not be null on a model with the
 *                    chip (not checked)
 * @return BSP_OK; the status of bspDevIdGet() or of bsp_rtc_chip_set()
 */
BSP_API int32_t bspRealtimeSet(const BspCalendar *record);

/**
 * Sets the system clock from the clock chip, whose content is local time. A model without the chip
 * sets it from a record of zeros. Whether the system clock could be set (it takes the privilege) is
 * not told. A 32-bit library built with BSP_TIME_64=OFF leaves it alone from January 2038 on.
 *
 * @return BSP_OK; the status of bspRealtimeGet(), and then the system clock is left alone
 */
BSP_API int32_t bspSysClockSync(void);

/**
 * Starts the library: bspSysClockSync(), whatever comes of it.
 *
 * @return BSP_OK
 */
BSP_API int32_t bspInit(void);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup transceivers Pluggable transceivers
 *
 * Ports are numbered as on the front panel. Which of them are SFP cages, and on which I2C branch,
 * depends on the model.
 * @{
 */

/** Devices of a transceiver: their 7-bit I2C addresses behind the cage's branch. */
enum BspSfpDevice {
    BSP_SFP_IDENTIFICATION = 0x50, /**< identification page (SFF-8472 A0h) */
    BSP_SFP_DIAGNOSTICS = 0x51,    /**< diagnostics page (SFF-8472 A2h) */
    BSP_SFP_PHY = 0x56             /**< PHY of a copper module */
};

#define BSP_SFP_MEMORY_SIZE 256      /**< bytes of each device */
#define BSP_SFP_PHY_REGISTER_MAX 254 /**< highest register of a PHY that can be reached */
#define BSP_SFP_CONNECTOR_OFFSET 2   /**< byte of the identification page with the connector */
#define BSP_SFP_CONNECTOR_RJ45 0x22  /**< connector of copper modules */
#define BSP_SFP_PHY_MODE_REGISTER 27 /**< register of a copper module's PHY with its mode */
#define BSP_SFP_PHY_MODE_MASK 0x0F   /**< bits of the mode in that register */

/**
 * Reads a device of the transceiver in a cage, in chunks as bspI2cEepromRead() does.
 *
 * @param[in] port     an SFP cage of the board
 * @param[in] devAddr  7-bit device address, its low byte: a value of ::BspSfpDevice
 * @param[in] offset   first byte, 0 to BSP_SFP_MEMORY_SIZE - 1
 * @param[out] buf     receives len bytes; on failure the chunks before the failed one have arrived
 * @param[in] len      byte count, at least 1
 * @return BSP_OK; BSP_E_NULL; BSP_E_INVALID when len is 0, when offset + len is above
 *         BSP_SFP_MEMORY_SIZE, or for a port that is no SFP cage; the status of bspDevIdGet() or of
 *         bspI2cEepromRead()
 */
BSP_API int32_t bspLaserSfpRead(uint32_t port, uint32_t devAddr, uint32_t offset, uint8_t *buf,
                                uint32_t len);

/**
 * Writes a device of the transceiver in a cage, in chunks as bspI2cEepromWrite() does. On failure
 * the chunks before the failed one stay written.
 *
 * @param[in] port     an SFP cage of the board
 * @param[in] devAddr  7-bit device address, its low byte: a value of ::BspSfpDevice
 * @param[in] offset   first byte, 0 to BSP_SFP_MEMORY_SIZE - 1
 * @param[in] buf      len bytes
 * @param[in] len      byte count, at least 1
 * @return as bspLaserSfpRead(), with the status of bspI2cEepromWrite()
 */
BSP_API int32_t bspLaserSfpWrite(uint32_t port, uint32_t devAddr, uint32_t offset,
                                 const uint8_t *buf, uint32_t len);

/**
 * Reads a byte of the identification page (BSP_SFP_IDENTIFICATION).
 *
 * @param[in] port    an SFP cage of the board
 * @param[in] offset  of the byte, 0 to BSP_SFP_MEMORY_SIZE - 1
 * @param[out] byte   receives the byte
 * @return as bspLaserSfpRead()
 */
BSP_API int32_t bspLaserBasicGet(uint32_t port, uint32_t offset, uint8_t *byte);

/**
 * Reads a byte of the diagnostics page (BSP_SFP_DIAGNOSTICS).
 *
 * @param[in] port    an SFP cage of the board
 * @param[in] offset  of the byte, 0 to BSP_SFP_MEMORY_SIZE - 1
 * @param[out] byte   receives the byte
 * @return as bspLaserSfpRead()
 */
BSP_API int32_t bspLaserAdvanceGet(uint32_t port, uint32_t offset, uint8_t *byte);

/**
 * Reads a register of a copper module's PHY (2 bytes of device BSP_SFP_PHY, most significant byte
 * first).
 *
 * @param[in] port    an SFP cage of the board
 * @param[in] reg     register number, 0 to BSP_SFP_PHY_REGISTER_MAX
 * @param[out] value  receives the register's content; on failure what has arrived of it, else 0
 * @return BSP_E_NULL, and value is not stored; otherwise as bspLaserSfpRead()
 */
BSP_API int32_t bspLaserPhyGet(uint32_t port, uint32_t reg, uint16_t *value);

/**
 * Writes a register of a copper module's PHY.
 *
 * @param[in] port   an SFP cage of the board
 * @param[in] reg    register number, 0 to BSP_SFP_PHY_REGISTER_MAX
 * @param[in] value  its low 16 bits are written
 * @return as bspLaserSfpWrite()
 */
BSP_API int32_t bspLaserPhySet(uint32_t port, uint32_t reg, uint32_t value);

/**
 * Whether a module has a copper port, and the mode of its PHY. What the modes mean is in the PHY's
 * documentation.
 */
enum BspCopperKind {
    BSP_COPPER_NONE = 0,      /**< not a copper module */
    BSP_COPPER_MODE_4 = 1,    /**< PHY mode 4 */
    BSP_COPPER_MODE_12 = 2,   /**< PHY mode 12 */
    BSP_COPPER_OTHER_MODE = 3 /**< any other PHY mode */
};

/**
 * Recognises a copper module by its connector (BSP_SFP_CONNECTOR_RJ45) and tells the mode of its
 * PHY (BSP_SFP_PHY_MODE_REGISTER).
 *
 * @param[in] port   an SFP cage of the board
 * @param[out] kind  receives a code of ::BspCopperKind, also when the PHY cannot be read; untouched
 *                   when the connector type cannot be read, for whatever reason
 * @return BSP_OK, also when the connector type cannot be read; BSP_E_NULL; the status of
 *         bspLaserPhyGet()
 */
BSP_API int32_t bspElectricModerTypeGet(uint32_t port, uint16_t *kind);

/**
 * No board has QSFP cages.
 *
 * @param[in] port    ignored
 * @param[in] offset  ignored
 * @param[out] buf    not touched
 * @param[in] len     ignored
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspLaserQsfpRead(uint32_t port, uint32_t offset, uint8_t *buf, uint32_t len);

/**
 * No board has QSFP cages.
 *
 * @param[in] port    ignored
 * @param[in] offset  ignored
 * @param[in] value   ignored
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t bspLaserQsfpWrite(uint32_t port, uint32_t offset, uint32_t value);

/** A transmitter's state. */
enum BspLaserState {
    BSP_LASER_ON = 1, /**< the transmitter-disable line is low */
    BSP_LASER_OFF = 2 /**< the transmitter-disable line is high */
};

/** Whether a transceiver is in a cage. */
enum BspLaserPresence {
    BSP_LASER_MISSING = 0, /**< the line is low: the cage is empty */
    BSP_LASER_PRESENT = 1  /**< the line is high: a transceiver is there */
};

/** Whether a receiver has its signal. */
enum BspLaserSignal {
    BSP_LASER_SIGNAL_GOOD = 0, /**< the line is low: it has a signal */
    BSP_LASER_SIGNAL_LOST = 1  /**< the line is high: it has lost its signal */
};

/** Whether a transmitter works. */
enum BspLaserFault {
    BSP_LASER_FAULT_NONE = 0, /**< the line is low: no fault */
    BSP_LASER_FAULT = 1       /**< the line is high: the transmitter has a fault */
};

/**
 * Tells whether a transceiver is in a cage. CPLD registers 19 to 21 for the front cages, register 8
 * for the uplinks.
 *
 * @param[in] port  an SFP cage of the board (not checked: what another port answers means nothing)
 * @param[out] out  receives a value of ::BspLaserPresence; must not be null (not checked)
 * @return BSP_OK; the status of bspDevIdGet(), or of bspCpldGet()
 *         ("%s-%d: bspCpldGet error. ret=%d \n" is printed)
 */
BSP_API int32_t bspLaserPresentGet(uint32_t port, uint32_t *out);

/**
 * Switches a transmitter, read-modify-write of its transmitter-disable line's register (CPLD
 * registers 25 to 27 for the front cages, register 12 for the uplinks). Nothing else may write that
 * register meanwhile.
 *
 * @param[in] port   an SFP cage of the board (not checked)
 * @param[in] state  BSP_LASER_ON (1) switches on, any other value off
 * @return BSP_OK; the status of bspDevIdGet(), of bspCpldGet()
 *         ("%s-%d: bspCpldGet error. ret=%d \n" is printed) or of bspCpldSet()
 *         ("%s-%d: bspCpldSet error. ret=%d \n" is printed)
 */
BSP_API int32_t bspLaserControlSet(uint32_t port, uint32_t state);

/**
 * Reads a transmitter's state from the register that bspLaserControlSet() writes.
 *
 * @param[in] port  an SFP cage of the board (not checked: what another port answers means nothing)
 * @param[out] out  receives a value of ::BspLaserState; must not be null (not checked)
 * @return as bspLaserPresentGet()
 */
BSP_API int32_t bspLaserControlGet(uint32_t port, uint32_t *out);

/**
 * Tells whether a receiver has lost its signal. CPLD registers 16 to 18 for the front cages,
 * register 8 for the uplinks; on the models with 24 front cages the uplinks' line is that of
 * bspLaserPresentGet(), and so the answer tells of the module, not of its signal.
 *
 * @param[in] port  an SFP cage of the board (not checked: what another port answers means nothing)
 * @param[out] out  receives a value of ::BspLaserSignal; must not be null (not checked)
 * @return as bspLaserPresentGet()
 */
BSP_API int32_t bspLaserRxLosGet(uint32_t port, uint32_t *out);

/**
 * Tells whether a transmitter has a fault. CPLD registers 22 to 24 for the front cages, register 12
 * for the uplinks; on the models with 24 front cages the uplinks' line is that of
 * bspLaserControlGet(), and so the answer tells whether the transmitter is switched off.
 *
 * @param[in] port  an SFP cage of the board (not checked: what another port answers means nothing)
 * @param[out] out  receives a value of ::BspLaserFault; must not be null (not checked)
 * @return as bspLaserPresentGet()
 */
BSP_API int32_t bspLaserTxfaultGet(uint32_t port, uint32_t *out);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup mdio MDIO registers of the PHYs
 *
 * The switch controller's MDIO interface is a register in the memory of the processor (address
 * 0x1B0007F4), which is mapped through /dev/mem for each call. It takes one command at a time and
 * nothing is locked: callers see to it that only one of them, in all processes, uses it.
 *
 * The two address fields are the PHY's address and its register's number. Which is which is in the
 * switch controller's documentation; the library puts them into the command as they are given.
 * @{
 */

#define BSP_MDIO_ADDRESS_MAX 31   /**< an address field has 5 bits */
#define BSP_MDIO_VALUE_MAX 0xFFFF /**< a register has 16 bits */

/**
 * Reads a PHY's register: writes the command, then polls until it is done, at most 19001 times with
 * pauses of a microsecond.
 *
 * @param[in] unit      ignored
 * @param[in] addrA     address field in bits 2-6 of the command, 0 to BSP_MDIO_ADDRESS_MAX; higher
 *                      bits are cut off
 * @param[in] reserved  ignored
 * @param[in] addrB     address field in bits 7-11 of the command, likewise
 * @param[out] value    receives the register's content, 0 to BSP_MDIO_VALUE_MAX
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
 * @param[in] unit      ignored
 * @param[in] addrA     address field in bits 2-6 of the command, 0 to BSP_MDIO_ADDRESS_MAX; higher
 *                      bits are cut off
 * @param[in] reserved  ignored
 * @param[in] addrB     address field in bits 7-11 of the command, likewise
 * @param[in] data      0 to BSP_MDIO_VALUE_MAX; higher bits are cut off
 * @return as bsp_smi_read() but for BSP_E_NULL; an error of the hardware is not printed, and the
 *         other message is "%s: write timeout \n"
 */
BSP_API int32_t bsp_smi_write(uint32_t unit, uint32_t addrA, uint32_t reserved, uint32_t addrB,
                              uint32_t data);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup flash Flash partitions
 *
 * The partitions are MTD character devices. Writing and reading hold the flash lock
 * (/tmp/bspFlashLockFile, a record lock of the process) for the whole transfer; where the lock file
 * cannot be opened they go on without it.
 *
 * A thread that closes the lock file, as each of these calls does at its end, gives up the lock of
 * its whole process: other processes come in while another thread still works (see @ref threads).
 * So a process does its flash work, header reads and upgrades included, in one thread at a time,
 * and leaves the lock file alone.
 * @{
 */

#define BSP_MTD_BOOT_LOADER "/dev/mtd0"   /**< the boot loader */
#define BSP_MTD_BOOT_SETTINGS "/dev/mtd4" /**< the boot settings */
#define BSP_MTD_OS_BANK_0 "/dev/mtd12"    /**< first bank of the operating system */
#define BSP_MTD_OS_BANK_1 "/dev/mtd14"    /**< second bank of the operating system */

/** Whether a stored file has its length and a marker in front of it. */
enum BspMtdHeader {
    BSP_MTD_WITHOUT_HEADER = 0, /**< the file starts at offset 0 */
    BSP_MTD_WITH_HEADER = 1     /**< the file starts behind BSP_MTD_HEADER_SIZE bytes */
};

/* The header: the file's length and a marker, 4 bytes each, big-endian. */
#define BSP_MTD_HEADER_SIZE 8             /**< bytes of the header */
#define BSP_MTD_HEADER_MARKER 0xA102A304u /**< the marker */

/**
 * Copies a file into a partition: erases, then writes whole pages, the last one padded with zeros.
 * A page that cannot be written is skipped, its data go into the next one.
 *
 * @param[in] file       zero-terminated path of the file
 * @param[in] device     zero-terminated path of the partition's device
 * @param[in] hasHeader  a value of ::BspMtdHeader. Not 0: the header is written in front of the
 *                       file, and the erasing ends with the first block that begins behind the
 *                       file's size (the next one that can be erased); 0: the whole partition is
 *                       erased
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
 * @param[in] device     zero-terminated path of the partition's device
 * @param[in] file       zero-terminated path of the output file
 * @param[in] hasHeader  a value of ::BspMtdHeader. Not 0: copies the file that was written with a
 *                       header; 0: copies the whole partition
 * @return BSP_OK, also when a partition has no valid length header (then no file is made);
 *         BSP_E_NULL; BSP_E_LOCK; BSP_E_OPEN; BSP_E_ERASE when the geometry query fails;
 *         BSP_E_NO_MEMORY (messages are printed with these four); BSP_E_WRITE when a seek of
 *         the device fails; BSP_E_SHORT_READ
 */
BSP_API int32_t bsp_mtd_read_to_file(const char *device, const char *file, int32_t hasHeader);

/**
 * Erases the first erase block of a partition, and only that. Takes no lock.
 *
 * @param[in] device  zero-terminated path of the partition's device
 * @return BSP_OK; BSP_E_NULL; BSP_E_OPEN; BSP_E_ERASE when the geometry query or the erase fails
 *         (messages are printed)
 */
BSP_API int32_t bsp_mtd_erase(const char *device);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup images Images and upgrades
 * @{
 */

/** What bspImageUpgrade() replaces. */
enum BspImageKind {
    BSP_IMAGE_OS = 1,   /**< an operating-system image */
    BSP_IMAGE_BOOT = 2, /**< the boot loader */
    BSP_IMAGE_CPLD = 4  /**< the CPLD's logic */
};

/** Banks of operating-system images. Any value other than 0 counts as 1. */
enum BspOsBank {
    BSP_OS_BANK_0 = 0, /**< BSP_MTD_OS_BANK_0 */
    BSP_OS_BANK_1 = 1, /**< BSP_MTD_OS_BANK_1 */
    BSP_OS_BANKS       /**< how many there are */
};

#define BSP_OS_HEADER_SIZE 512    /**< bytes of an operating-system image's header block, its end */
#define BSP_OS_IMAGE_MIN 512      /**< bytes of the smallest image: a header block */
#define BSP_OS_IMAGE_MAX 40894464 /**< bytes of the largest image: 39 MiB */
#define BSP_OS_HEADER_PLACE 40894464 /**< where a bank has a copy of the header block */
#define BSP_COMMAND_LINE_MAX 127     /**< longest command that is run, in characters */

#define BSP_BOOT_FILE_MAX 1048576            /**< bytes of the largest boot-loader file: 1 MiB */
#define BSP_BOOT_MAGIC 0x424F4F54            /**< magic of a boot-loader file's trailer: "BOOT" */
#define BSP_BOOT_BOARD_NAME "ZENTRAV48_BOOT" /**< board name in the trailer */

/**
 * The trailer of a boot-loader file: its last 80 bytes, behind the image. Its numbers are
 * big-endian. What is not interpreted counts for the CRC all the same.
 */
typedef struct BspBootTrailer {
    uint8_t magic[4];      /**< BSP_BOOT_MAGIC */
    uint8_t reserved1[4];  /**< not interpreted */
    uint8_t length[4];     /**< of the trailer: 80 */
    uint8_t trailerCrc[4]; /**< CRC-32 of the trailer without these 4 bytes */
    uint8_t reserved2[4];  /**< not interpreted */
    uint8_t imageCrc[4];   /**< CRC-32 of the image, all bytes before the trailer */
    uint8_t reserved3[8];  /**< not interpreted */
    char boardName[48];    /**< BSP_BOOT_BOARD_NAME, zero-terminated */
} BspBootTrailer;

/**
 * Reads the header block of a stored operating-system image from its fixed place in the bank (by
 * the command nanddump, under the flash lock). The block is not interpreted: its format is the
 * image build's, and an empty bank gives 512 bytes of 0xFF.
 *
 * The block passes through the file /tmp/bsp/osHeader.bin, which is read and removed after the lock
 * was given back. Of two processes that read headers at once, one may get the header of the other's
 * bank with BSP_OK (one time in twenty when both do nothing else), or find the file incomplete or
 * gone; a header read in the last moments of an upgrade may take the upgrade's file away. Callers
 * see to it that one process at a time reads headers or upgrades: see @ref threads.
 *
 * @param[out] header  receives BSP_OS_HEADER_SIZE bytes
 * @param[in] bank     a value of ::BspOsBank
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
 * leaves the bank erased or incomplete; the other bank is never touched. The file has
 * BSP_OS_IMAGE_MIN to BSP_OS_IMAGE_MAX bytes. Messages are printed with all failures but
 * BSP_E_NULL, a path that is too long, and the removal of the work file.
 *  - BSP_E_NULL; BSP_E_SHORT_READ for a missing file or a header block that cannot be read;
 *    BSP_E_FAILED for a file that is too large, for a path that is too long for a command line
 *    (BSP_COMMAND_LINE_MAX; one that begins with "-" is two longer there), or when a command fails;
 *    BSP_E_LOCK; BSP_E_NO_MEMORY; BSP_E_OPEN; BSP_E_WRITE for a file of fewer than BSP_OS_IMAGE_MIN
 *    bytes (found after it was written); or the status of the command that removes the work file.
 *
 * Boot loader (BSP_IMAGE_BOOT): checks the file (at most BSP_BOOT_FILE_MAX bytes, with a
 * ::BspBootTrailer: magic, board name, length, two CRCs), then erases BSP_MTD_BOOT_LOADER and
 * writes it, under the flash lock.
 *  - BSP_E_NULL; BSP_E_SHORT_READ for a missing file or one that cannot be read whole; BSP_E_FAILED
 *    for a file that is too large or fails the check (messages are printed); BSP_E_NO_MEMORY;
 *    BSP_E_OPEN. A write to flash that fails, also for a lock that cannot be taken, is printed
 *    ("Update bios file error(%d), ...") and answers BSP_OK all the same.
 *
 * CPLD (BSP_IMAGE_CPLD): the kernel module opens the file and programs the CPLD.
 *  - the status of bspCpldUpgrade_handle().
 *
 * @param[in] kind  a value of ::BspImageKind
 * @param[in] file  zero-terminated path of the image file
 * @param[in] bank  of an operating-system image: a value of ::BspOsBank; otherwise not used
 * @return BSP_OK; a status of the image's kind, above; BSP_E_NOT_SUPPORTED for another kind
 */
BSP_API int32_t bspImageUpgrade(int32_t kind, const char *file, int32_t bank);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup poe Power over Ethernet
 *
 * Below, an "exchange status" is one of BSP_E_POE_UNAVAILABLE (no controller, or a command of
 * its loader, which only the debug functions can send and the library refuses), BSP_E_POE_WRITE,
 * BSP_E_POE_READ, BSP_E_POE_FRAME, BSP_E_POE_STATUS, BSP_E_POE_CONTENT and BSP_E_POE_LOCK. An
 * exchange takes 200 ms and more. It holds the lock /tmp/bspPoeLockFile and waits for others to
 * release it: for minutes while another caller upgrades the controller. Where the lock file cannot
 * be opened it goes on without it.
 *
 * What the controller's own codes mean (modes, kinds of limits, inrush, detection, classes) is in
 * the controller's documentation.
 * @{
 */

#define BSP_POE_PORTS_MAX 48 /**< most ports of any model, and ports of the controller */

/** Whether the PoE controller is there. */
enum BspPoePresence {
    BSP_POE_CONTROLLER_PRESENT = 0, /**< its line is low */
    BSP_POE_CONTROLLER_MISSING = 1  /**< its line is high */
};

/** Whether the controller has been initialised since it started. */
enum BspPoeInitStatus {
    BSP_POE_NOT_INITIALISED = 0, /**< it needs bspPoeDeviceInit() */
    BSP_POE_INITIALISED = 1      /**< it is ready */
};

/** What the last firmware upgrade left. */
enum BspPoeAppStatus {
    BSP_POE_APP_USABLE = 0,          /**< a usable application */
    BSP_POE_APP_UPGRADE_STARTED = 1, /**< an upgrade started and has not failed; init clears it */
    BSP_POE_APP_UPGRADE_FAILED = 2   /**< an upgrade failed: no initialisation before the next */
};

/** Modes of a port: the controller's function modes, and none at all. */
enum BspPoeMode {
    BSP_POE_MODE_0 = 0, /**< function mode 0, set by bspPoeDeviceInit(): no power on command */
    BSP_POE_MODE_1 = 1, /**< function mode 1: power on command enables and disables the port */
    BSP_POE_MODE_2 = 2, /**< function mode 2: power on command is forced on and off */
    BSP_POE_MODE_DISABLED = 5 /**< the port is disabled */
};

/** On and off, of power, legacy detection and forced inrush. */
enum BspPoeSwitch {
    BSP_POE_ON = 1, /**< on */
    BSP_POE_OFF = 2 /**< off */
};

/** Whether a port has a fault. */
enum BspPoeFault {
    BSP_POE_FAULT = 1,     /**< the controller's port status is 4 */
    BSP_POE_FAULT_NONE = 2 /**< any other port status */
};

/** Whether a port delivers. */
enum BspPoeDisconnect {
    BSP_POE_DISCONNECTED = 1, /**< any other port status than 2 */
    BSP_POE_DELIVERING = 2    /**< the controller's port status is 2: the port delivers power */
};

/** Detection of a port: the codes 1 to BSP_POE_DETECTION_MAX are the controller's. */
enum BspPoeDetection {
    BSP_POE_DETECTION_NONE = 0, /**< any other code of the controller's, or the port has a fault */
    BSP_POE_DETECTION_MAX = 7   /**< highest code */
};

/** Class of a port's device: the codes 1 to 8 are the controller's. */
enum BspPoeClass {
    BSP_POE_CLASS_NONE = 0,   /**< a code that is none of the others, or the port has a fault */
    BSP_POE_CLASS_MAX = 8,    /**< highest code of the controller's that is answered as it is */
    BSP_POE_CLASS_0_OR_12 = 9 /**< the controller's codes 0 and 12 */
};

/** States of a port's LED. */
enum BspPoeLedState {
    BSP_POE_LED_OFF = 0, /**< it is put out; so it is by any other value than 1 */
    BSP_POE_LED_ON = 1   /**< it is lit */
};

#define BSP_POE_PRIORITY_MIN 1 /**< the controller gets 2 */
#define BSP_POE_PRIORITY_MAX 3 /**< the controller gets 0; what bspPoeDeviceInit() sets */
/** Highest inrush mode; the controller gets and gives it as 9. */
#define BSP_POE_INRUSH_MODE_MAX 8
#define BSP_POE_LIMIT_TYPE_MIN 1 /**< first kind of power limit; what bspPoeDeviceInit() sets */
#define BSP_POE_LIMIT_TYPE_MAX 2 /**< second kind of power limit */

#define BSP_POE_PORT_LIMIT_MAX_MW 102000 /**< highest power limit of a port in milliwatts */
#define BSP_POE_PORT_LIMIT_STEP_MW 400   /**< milliwatts to which a port's limit is rounded up */
#define BSP_POE_BUDGET_MAX_MW 6553500    /**< highest power budget in milliwatts */
#define BSP_POE_BUDGET_STEP_MW 100       /**< milliwatts to which the budget is rounded up */
#define BSP_POE_RATED_POWER_MW 1440000   /**< rated PoE power of each supply in milliwatts */

#define BSP_POE_APP_VERSION_SIZE 13  /**< "V15.15.15.15" at most, with the terminating zero */
#define BSP_POE_FIRMWARE_MIN 51200   /**< bytes of the smallest firmware file */
#define BSP_POE_FIRMWARE_MAX 196608  /**< bytes of the largest firmware file */
#define BSP_POE_FIRMWARE_STEP 4      /**< a firmware file's size is a multiple of this */
#define BSP_POE_FRAME_SIZE 12        /**< bytes of a frame to or from the controller */
#define BSP_POE_DEBUG_HELP_LIST (-1) /**< index of the list of all debug commands */

/**
 * A PoE driver: the operations of one kind of controller, in the order of their slots. Ports count
 * from 0. A null operation is one that the driver does not have.
 */
typedef struct BspPoeDriver {
    int32_t (*deviceInit)(void);                           /**< bspPoeDeviceInit() */
    int32_t (*initStatusSet)(uint32_t status);             /**< bspPoeInitStatusSet() */
    int32_t (*initStatusGet)(uint32_t *out);               /**< bspPoeInitStatusGet() */
    int32_t (*appStatusGet)(uint32_t *out);                /**< bspPoeAppStatusGet() */
    int32_t (*appUpgrade)(const char *file);               /**< bspPoeAppUpgradeSet() */
    int32_t (*appVersionGet)(char *text);                  /**< bspPoeAppVersionGet() */
    int32_t (*globalMaxPowerSet)(uint32_t milliwatts);     /**< bspPoeGlobalMaxPowerSet() */
    int32_t (*portModeSet)(uint32_t port, uint32_t mode);  /**< bspPoePortModeSet() */
    int32_t (*portPowerOnSet)(uint32_t port, uint32_t on); /**< bspPoePortPowerOnSet() */
    int32_t (*portDetectionSet)(uint32_t port);            /**< bspPoePortDetectionSet() */
    int32_t (*portClassificationSet)(uint32_t port);       /**< bspPoePortClassificationSet() */
    int32_t (*portPrioritySet)(uint32_t port, uint32_t priority);   /**< bspPoePortPrioritySet() */
    int32_t (*portMaxPowerSet)(uint32_t port, uint32_t milliwatts); /**< bspPoePortMaxPowerSet() */
    int32_t (*portLegacyEnableSet)(uint32_t port,
                                   uint32_t enable);            /**< bspPoePortLegacyEnableSet() */
    int32_t (*portInrushModeSet)(uint32_t port, uint32_t mode); /**< bspPoePortInrushModeSet() */
    int32_t (*portForceInrushSet)(uint32_t port, uint32_t force); /**< bspPoePortForceInrushSet() */
    int32_t (*portMaxPowerTypeSet)(uint32_t port,
                                   uint32_t type);        /**< bspPoePortMaxPowerTypeSet() */
    int32_t (*globalMaxPowerGet)(uint32_t *milliwatts);   /**< bspPoeGlobalMaxPowerGet() */
    int32_t (*globalPowerGet)(uint32_t *milliwatts);      /**< bspPoeGlobalPowerGet() */
    int32_t (*portModeGet)(uint32_t port, uint32_t *out); /**< bspPoePortModeGet() */
    int32_t (*portCurrentGet)(uint32_t port, uint32_t *milliamperes); /**< bspPoePortCurrentGet() */
    int32_t (*portVoltageGet)(uint32_t port, uint32_t *millivolts);   /**< in millivolts */
    int32_t (*portPowerGet)(uint32_t port, uint32_t *milliwatts);     /**< bspPoePortPowerGet() */
    int32_t (*portMaxPowerGet)(uint32_t port, uint32_t *milliwatts); /**< bspPoePortMaxPowerGet() */
    int32_t (*portFaultGet)(uint32_t port, uint32_t *out);           /**< bspPoePortFaultGet() */
    int32_t (*portDetectionGet)(uint32_t port, uint32_t *out); /**< bspPoePortDetectionGet() */
    int32_t (*portClassificationGet)(uint32_t port,
                                     uint32_t *out); /**< bspPoePortClassificationGet() */
    int32_t (*portDisconnectGet)(uint32_t port, uint32_t *out); /**< bspPoePortDisconnectGet() */
    int32_t (*portInrushModeGet)(uint32_t port, uint32_t *out); /**< bspPoePortInrushModeGet() */
    int32_t (*debugAllInfoGet)(void);                           /**< bspPoeDebugAllInfoGet() */
    int32_t (*debugPortInfoGet)(uint32_t port);                 /**< bspPoeDebugPortInfoGet() */
    int32_t (*debugSwVersionGet)(void);                         /**< bspPoeDebugSwVersionGet() */
    /** bspPoeDebugChipDispatch() */
    int32_t (*debugDispatch)(uint32_t unit, int32_t argc, char **argv);
    int32_t (*debugDispatchHelp)(int32_t index); /**< bspPoeDebugChipDispatchHelp() */
} BspPoeDriver;

/** The driver of the RTL8239 controller. */
extern BSP_API const BspPoeDriver bspPoeRtl8239Driver;

/** Operation numbers of bspPoeOptDriver(): settings, readings, firmware, debugging. */
typedef enum BspPoeOperation {
    BSP_POE_DEVICE_INIT = 0,         /**< bspPoeDeviceInit() */
    BSP_POE_GLOBAL_MAX_POWER_SET,    /**< bspPoeGlobalMaxPowerSet() */
    BSP_POE_INIT_STATUS_SET,         /**< bspPoeInitStatusSet() */
    BSP_POE_INIT_STATUS_GET,         /**< bspPoeInitStatusGet() */
    BSP_POE_PORT_MODE_SET,           /**< bspPoePortModeSet() */
    BSP_POE_PORT_POWER_ON_SET,       /**< bspPoePortPowerOnSet() */
    BSP_POE_PORT_DETECTION_SET,      /**< bspPoePortDetectionSet() */
    BSP_POE_PORT_CLASSIFICATION_SET, /**< bspPoePortClassificationSet() */
    BSP_POE_PORT_PRIORITY_SET,       /**< bspPoePortPrioritySet() */
    BSP_POE_PORT_MAX_POWER_SET,      /**< bspPoePortMaxPowerSet() */
    BSP_POE_PORT_LEGACY_ENABLE_SET,  /**< bspPoePortLegacyEnableSet() */
    BSP_POE_PORT_INRUSH_MODE_SET,    /**< bspPoePortInrushModeSet() */
    BSP_POE_PORT_FORCE_INRUSH_SET,   /**< bspPoePortForceInrushSet() */
    BSP_POE_PORT_MAX_POWER_TYPE_SET, /**< bspPoePortMaxPowerTypeSet() */
    BSP_POE_GLOBAL_MAX_POWER_GET,    /**< bspPoeGlobalMaxPowerGet() */
    BSP_POE_GLOBAL_POWER_GET,        /**< bspPoeGlobalPowerGet() */
    BSP_POE_PORT_MODE_GET,           /**< bspPoePortModeGet() */
    BSP_POE_PORT_CURRENT_GET,        /**< bspPoePortCurrentGet() */
    BSP_POE_PORT_VOLTAGE_GET,        /**< the driver's reading, in millivolts */
    BSP_POE_PORT_POWER_GET,          /**< bspPoePortPowerGet() */
    BSP_POE_PORT_MAX_POWER_GET,      /**< bspPoePortMaxPowerGet() */
    BSP_POE_PORT_FAULT_GET,          /**< bspPoePortFaultGet() */
    BSP_POE_PORT_DETECTION_GET,      /**< bspPoePortDetectionGet() */
    BSP_POE_PORT_CLASSIFICATION_GET, /**< bspPoePortClassificationGet() */
    BSP_POE_PORT_DISCONNECT_GET,     /**< bspPoePortDisconnectGet() */
    BSP_POE_PORT_INRUSH_MODE_GET,    /**< bspPoePortInrushModeGet() */
    BSP_POE_APP_STATUS_GET,          /**< bspPoeAppStatusGet() */
    BSP_POE_APP_UPGRADE,             /**< bspPoeAppUpgradeSet(); arg is the file's path */
    BSP_POE_APP_VERSION_GET,         /**< bspPoeAppVersionGet() */
    BSP_POE_DEBUG_ALL_INFO,          /**< bspPoeDebugAllInfoGet() */
    BSP_POE_DEBUG_PORT_INFO,         /**< bspPoeDebugPortInfoGet() */
    BSP_POE_DEBUG_SW_VERSION,        /**< bspPoeDebugSwVersionGet() */
    BSP_POE_DEBUG_DISPATCH,          /**< bspPoeDebugChipDispatch(); portRef is argc, arg argv */
    BSP_POE_DEBUG_DISPATCH_HELP,     /**< bspPoeDebugChipDispatchHelp(); portRef is the index */
    BSP_POE_OPERATIONS               /**< how many there are */
} BspPoeOperation;

/**
 * Tells whether the PoE controller is missing: CPLD register 6, bit 14. On every model.
 *
 * @param[out] out  receives a value of ::BspPoePresence: 0 when the controller is present, 1 when
 *                  it is not
 * @return BSP_OK; BSP_E_POE_NULL; the status of bspCpldGet() ("%s-%d: bspCpldGet error. ret=%d \n"
 *         is printed)
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
 * @param[in] portRef  points to the port, counted from 1, which the driver gets minus 1; null for
 *                     operations without a port. The two debug operations get the word as it is.
 * @param[in] op       a number of ::BspPoeOperation
 * @param[in,out] arg  points to the value of a setting, or is the output or argument of the
 *                     operation
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

/**
 * Does nothing on this controller.
 *
 * @param[in] status  ignored
 * @return BSP_OK; BSP_E_POE_UNAVAILABLE
 */
BSP_API int32_t bspPoeInitStatusSet(uint32_t status);

/**
 * Tells whether the controller has been initialised: command 0x41, bytes 4-5 not 0.
 *
 * @param[out] out  receives a value of ::BspPoeInitStatus; keeps its own when the controller does
 *                  not answer
 * @return BSP_OK, also when the controller does not answer; BSP_E_POE_UNAVAILABLE; BSP_E_POE_NULL
 */
BSP_API int32_t bspPoeInitStatusGet(uint32_t *out);

/**
 * Sets the power budget of all ports, command 0x04.
 *
 * @param[in] milliwatts  0 to BSP_POE_BUDGET_MAX_MW, rounded up to BSP_POE_BUDGET_STEP_MW
 * @return BSP_OK; BSP_E_POE_INVALID; an exchange status
 */
BSP_API int32_t bspPoeGlobalMaxPowerSet(uint32_t milliwatts);

/**
 * Reads the power budget of all ports, command 0x4B.
 *
 * @param[out] milliwatts  receives the budget, 0 to BSP_POE_BUDGET_MAX_MW
 * @return as bspPoeGlobalPowerGet()
 */
BSP_API int32_t bspPoeGlobalMaxPowerGet(uint32_t *milliwatts);

/**
 * Reads the power that all ports draw, command 0x41.
 *
 * @param[out] milliwatts  receives the power, 0 to BSP_POE_BUDGET_MAX_MW
 * @return BSP_OK; BSP_E_POE_NULL; an exchange status
 */
BSP_API int32_t bspPoeGlobalPowerGet(uint32_t *milliwatts);

/**
 * Tells the rated PoE power of a supply, a fixed budget. The controller is not asked.
 *
 * @param[in] supplyIndex  supply, counted from 1
 * @param[out] milliwatts  receives BSP_POE_RATED_POWER_MW
 * @return BSP_OK; BSP_E_NULL; BSP_E_NOT_SUPPORTED on a model without PoE or for an index outside 1
 *         to the supply count; the status of bspDevIdGet() or bspPowerNumGet()
 */
BSP_API int32_t bspPoeGlobalRatedPowerGet(int32_t supplyIndex, uint32_t *milliwatts);

/**
 * Sets the mode of a port, commands 0x08 and 0x01.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[in] mode  a value of ::BspPoeMode; 0, 1 and 2 enable the port as well
 * @return BSP_OK; BSP_E_POE_INVALID for a port or mode out of range; an exchange status
 */
BSP_API int32_t bspPoePortModeSet(uint32_t port, uint32_t mode);

/**
 * Reads the mode of a port, command 0x48.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[out] out  receives a value of ::BspPoeMode
 * @return BSP_OK; BSP_E_POE_NULL; BSP_E_POE_INVALID for a port out of range; BSP_E_POE_CONTENT for
 *         another mode; an exchange status
 */
BSP_API int32_t bspPoePortModeGet(uint32_t port, uint32_t *out);

/**
 * Switches the power of a port in function mode 1 (command 0x01) or 2 (command 0x18).
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[in] on    BSP_POE_ON or BSP_POE_OFF
 * @return BSP_OK; BSP_E_POE_UNAVAILABLE in another function mode; BSP_E_POE_INVALID for a port or
 *         argument out of range; an exchange status
 */
BSP_API int32_t bspPoePortPowerOnSet(uint32_t port, uint32_t on);

/**
 * Starts a detection on a port, command 0x0A.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortDetectionSet(uint32_t port);

/**
 * Starts a classification on a port, command 0x0B.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortClassificationSet(uint32_t port);

/**
 * Sets the priority of a port, command 0x15. Nothing reads it back.
 *
 * @param[in] port      1 to BSP_POE_PORTS_MAX
 * @param[in] priority  BSP_POE_PRIORITY_MIN to BSP_POE_PRIORITY_MAX; the controller
 *                      gets 3 - priority
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortPrioritySet(uint32_t port, uint32_t priority);

/**
 * Sets the power limit of a port, command 0x14.
 *
 * @param[in] port        1 to BSP_POE_PORTS_MAX
 * @param[in] milliwatts  0 to BSP_POE_PORT_LIMIT_MAX_MW, rounded up to BSP_POE_PORT_LIMIT_STEP_MW
 * @return BSP_OK; BSP_E_POE_INVALID for a port or value out of range; an exchange status
 */
BSP_API int32_t bspPoePortMaxPowerSet(uint32_t port, uint32_t milliwatts);

/**
 * Switches the detection of legacy devices on a port, command 0x09.
 *
 * @param[in] port    1 to BSP_POE_PORTS_MAX
 * @param[in] enable  BSP_POE_ON or BSP_POE_OFF
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortLegacyEnableSet(uint32_t port, uint32_t enable);

/**
 * Sets the inrush mode of a port, command 0x0C.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[in] mode  0 to BSP_POE_INRUSH_MODE_MAX
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortInrushModeSet(uint32_t port, uint32_t mode);

/**
 * Switches the forced inrush of a port, command 0x0D.
 *
 * @param[in] port   1 to BSP_POE_PORTS_MAX
 * @param[in] force  BSP_POE_ON or BSP_POE_OFF
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortForceInrushSet(uint32_t port, uint32_t force);

/**
 * Sets the kind of power limit of a port, command 0x12.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[in] type  BSP_POE_LIMIT_TYPE_MIN to BSP_POE_LIMIT_TYPE_MAX
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoePortMaxPowerTypeSet(uint32_t port, uint32_t type);

/**
 * Reads the voltage of a port, command 0x44.
 *
 * @param[in] port    1 to BSP_POE_PORTS_MAX
 * @param[out] volts  receives whole volts, truncated toward zero
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortVoltageGet(uint32_t port, uint32_t *volts);

/**
 * Reads the current of a port, command 0x44.
 *
 * @param[in] port           1 to BSP_POE_PORTS_MAX
 * @param[out] milliamperes  receives the current, 0 to 65535
 * @return BSP_OK; BSP_E_POE_NULL; BSP_E_POE_INVALID for a port out of range; BSP_E_POE_CONTENT when
 *         the reply names another port; an exchange status
 */
BSP_API int32_t bspPoePortCurrentGet(uint32_t port, uint32_t *milliamperes);

/**
 * Reads the power that a port draws, command 0x44.
 *
 * @param[in] port         1 to BSP_POE_PORTS_MAX
 * @param[out] milliwatts  receives the power
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortPowerGet(uint32_t port, uint32_t *milliwatts);

/**
 * Reads the power limit of a port, command 0x49.
 *
 * @param[in] port         1 to BSP_POE_PORTS_MAX
 * @param[out] milliwatts  receives the limit, 0 to BSP_POE_PORT_LIMIT_MAX_MW
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortMaxPowerGet(uint32_t port, uint32_t *milliwatts);

/**
 * Tells whether a port has a fault, command 0x42.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[out] out  receives a value of ::BspPoeFault
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortFaultGet(uint32_t port, uint32_t *out);

/**
 * Reads the detection of a port, command 0x42.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[out] out  receives BSP_POE_DETECTION_NONE, or a code of the controller's from 1 to
 *                  BSP_POE_DETECTION_MAX
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortDetectionGet(uint32_t port, uint32_t *out);

/**
 * Reads the class of the device at a port, command 0x42.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[out] out  receives BSP_POE_CLASS_NONE, a code of the controller's from 1 to
 *                  BSP_POE_CLASS_MAX, or BSP_POE_CLASS_0_OR_12
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortClassificationGet(uint32_t port, uint32_t *out);

/**
 * Tells whether a port delivers power, command 0x42.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[out] out  receives a value of ::BspPoeDisconnect
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortDisconnectGet(uint32_t port, uint32_t *out);

/**
 * Reads the inrush mode of a port, command 0x49.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @param[out] out  receives the mode, 0 to BSP_POE_INRUSH_MODE_MAX after a set; else the
 *                  controller's code
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoePortInrushModeGet(uint32_t port, uint32_t *out);

/**
 * Drives the PoE LED of a port (BSP_LED_POE_PORT).
 *
 * @param[in] port   a PoE port of the model, counted from 1
 * @param[in] state  BSP_POE_LED_ON lights it, any other value puts it out
 * @return as bspLedStateSet()
 */
BSP_API int32_t bspPoePortLedStateSet(uint32_t port, uint32_t state);

/**
 * Tells what the last firmware upgrade left, from /tmp/bsp/poeApp.
 *
 * @param[out] out  receives a value of ::BspPoeAppStatus, or what another program put
 *                  into the file; BSP_POE_APP_USABLE when it is empty
 * @return BSP_OK; BSP_E_POE_UNAVAILABLE; BSP_E_POE_NULL; BSP_E_POE_OPEN ("%s-%d: open %s file
 *         filed, %d \n" is printed with errno)
 */
BSP_API int32_t bspPoeAppStatusGet(uint32_t *out);

/**
 * Upgrades the controller's firmware. Holds the PoE lock, up to some 13 minutes.
 *
 * @param[in] file  zero-terminated path of an image of BSP_POE_FIRMWARE_MIN to BSP_POE_FIRMWARE_MAX
 *                  bytes, a multiple of BSP_POE_FIRMWARE_STEP
 * @return BSP_OK; BSP_E_POE_NULL; BSP_E_POE_INVALID for a file that does not exist or has another
 *         size; BSP_E_POE_NO_MEMORY; BSP_E_POE_OPEN; BSP_E_POE_SHORT_READ; BSP_E_POE_LOCK; an
 *         exchange status of the block that failed
 */
BSP_API int32_t bspPoeAppUpgradeSet(const char *file);

/**
 * Reads the version of the controller's application, command 0x40: "V1.2.3.4".
 *
 * @param[out] text  receives the zero-terminated text; BSP_POE_APP_VERSION_SIZE bytes
 * @return BSP_OK; BSP_E_POE_NULL; an exchange status
 */
BSP_API int32_t bspPoeAppVersionGet(char *text);

/**
 * No driver has this.
 *
 * @return BSP_E_POE_UNAVAILABLE
 */
BSP_API int32_t bspPoeDebugAllInfoGet(void);

/**
 * No driver has this.
 *
 * @param[in] port  1 to BSP_POE_PORTS_MAX
 * @return BSP_E_POE_UNAVAILABLE
 */
BSP_API int32_t bspPoeDebugPortInfoGet(uint32_t port);

/**
 * No driver has this.
 *
 * @return BSP_E_POE_UNAVAILABLE
 */
BSP_API int32_t bspPoeDebugSwVersionGet(void);

/**
 * Runs a debug command of the controller's driver, as from a shell.
 *
 * @param[in] unit  ignored
 * @param[in] argc  number of words
 * @param[in] argv  the words: two of the shell, the command word, its arguments
 * @return the command's status; BSP_OK for an unknown command word (a message is printed);
 *         BSP_E_POE_UNAVAILABLE; BSP_E_POE_NULL
 */
BSP_API int32_t bspPoeDebugChipDispatch(uint32_t unit, int32_t argc, char **argv);

/**
 * Prints help on the debug commands.
 *
 * @param[in] index  below 0 (BSP_POE_DEBUG_HELP_LIST): all commands; 0: the usage of the first;
 *                   others print nothing
 * @return BSP_OK; BSP_E_POE_UNAVAILABLE
 */
BSP_API int32_t bspPoeDebugChipDispatchHelp(int32_t index);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup rtl8239 RTL8239 driver
 *
 * Its operations, as the driver's table has them. Ports count from 0; apart from that, and from
 * what is said here, each is the service operation of its name, without the choice of a driver.
 * @{
 */

/** @copydoc bspPoeDeviceInit */
BSP_API int32_t bspPoeRtl8239DeviceInit(void);

/**
 * Does nothing: the controller knows by itself whether it is initialised.
 *
 * @param[in] status  ignored
 * @return BSP_OK
 */
BSP_API int32_t bspPoeRtl8239InitStatusSet(uint32_t status);

/** @copydoc bspPoeInitStatusGet */
BSP_API int32_t bspPoeRtl8239InitStatusGet(uint32_t *out);

/** @copydoc bspPoeAppStatusGet */
BSP_API int32_t bspPoeRtl8239AppStatusGet(uint32_t *out);

/**
 * Stores the application status in /tmp/bsp/poeApp.
 *
 * @param[in] value  a value of ::BspPoeAppStatus; its low byte is stored
 * @return BSP_OK; BSP_E_POE_OPEN ("%s-%d: open %s file filed, %d \n" is printed with errno)
 */
BSP_API int32_t bspPoeRtl8239AppStatusSet(uint32_t value);

/** @copydoc bspPoeAppVersionGet */
BSP_API int32_t bspPoeRtl8239AppVersionGet(char *text);

/** @copydoc bspPoeAppUpgradeSet */
BSP_API int32_t bspPoeRtl8239McuUpgrade(const char *file);

/** @copydoc bspPoeGlobalMaxPowerSet */
BSP_API int32_t bspPoeRtl8239GlobalMaxPowerSet(uint32_t milliwatts);

/** @copydoc bspPoeGlobalMaxPowerGet */
BSP_API int32_t bspPoeRtl8239GlobalMaxPowerGet(uint32_t *milliwatts);

/** @copydoc bspPoeGlobalPowerGet */
BSP_API int32_t bspPoeRtl8239GlobalPowerGet(uint32_t *milliwatts);

/**
 * As bspPoePortModeSet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[in] mode  a value of ::BspPoeMode; 0, 1 and 2 enable the port as well
 * @return as bspPoePortModeSet()
 */
BSP_API int32_t bspPoeRtl8239PortModeSet(uint32_t port, uint32_t mode);

/**
 * As bspPoePortPowerOnSet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[in] on    BSP_POE_ON or BSP_POE_OFF
 * @return as bspPoePortPowerOnSet()
 */
BSP_API int32_t bspPoeRtl8239PortPowerOnSet(uint32_t port, uint32_t on);

/**
 * As bspPoePortDetectionSet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @return as bspPoePortDetectionSet()
 */
BSP_API int32_t bspPoeRtl8239PortDetectionSet(uint32_t port);

/**
 * As bspPoePortClassificationSet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @return as bspPoePortClassificationSet()
 */
BSP_API int32_t bspPoeRtl8239PortClassificationSet(uint32_t port);

/**
 * As bspPoePortPrioritySet().
 *
 * @param[in] port      0 to BSP_POE_PORTS_MAX - 1
 * @param[in] priority  BSP_POE_PRIORITY_MIN to BSP_POE_PRIORITY_MAX; the controller
 *                      gets 3 - priority
 * @return as bspPoePortPrioritySet()
 */
BSP_API int32_t bspPoeRtl8239PortPrioritySet(uint32_t port, uint32_t priority);

/**
 * As bspPoePortMaxPowerSet().
 *
 * @param[in] port        0 to BSP_POE_PORTS_MAX - 1
 * @param[in] milliwatts  0 to BSP_POE_PORT_LIMIT_MAX_MW, rounded up to BSP_POE_PORT_LIMIT_STEP_MW
 * @return as bspPoePortMaxPowerSet()
 */
BSP_API int32_t bspPoeRtl8239PortMaxPowerSet(uint32_t port, uint32_t milliwatts);

/**
 * As bspPoePortLegacyEnableSet().
 *
 * @param[in] port    0 to BSP_POE_PORTS_MAX - 1
 * @param[in] enable  BSP_POE_ON or BSP_POE_OFF
 * @return as bspPoePortLegacyEnableSet()
 */
BSP_API int32_t bspPoeRtl8239PortLegacyEnableSet(uint32_t port, uint32_t enable);

/**
 * As bspPoePortInrushModeSet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[in] mode  0 to BSP_POE_INRUSH_MODE_MAX
 * @return as bspPoePortInrushModeSet()
 */
BSP_API int32_t bspPoeRtl8239PortInrushModeSet(uint32_t port, uint32_t mode);

/**
 * As bspPoePortForceInrushSet().
 *
 * @param[in] port   0 to BSP_POE_PORTS_MAX - 1
 * @param[in] force  BSP_POE_ON or BSP_POE_OFF
 * @return as bspPoePortForceInrushSet()
 */
BSP_API int32_t bspPoeRtl8239PortForceInrushSet(uint32_t port, uint32_t force);

/**
 * As bspPoePortMaxPowerTypeSet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[in] type  BSP_POE_LIMIT_TYPE_MIN to BSP_POE_LIMIT_TYPE_MAX
 * @return as bspPoePortMaxPowerTypeSet()
 */
BSP_API int32_t bspPoeRtl8239PortMaxPowerTypeSet(uint32_t port, uint32_t type);

/**
 * As bspPoePortModeGet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[out] out  receives a value of ::BspPoeMode
 * @return as bspPoePortModeGet()
 */
BSP_API int32_t bspPoeRtl8239PortModeGet(uint32_t port, uint32_t *out);

/**
 * As bspPoePortCurrentGet().
 *
 * @param[in] port           0 to BSP_POE_PORTS_MAX - 1
 * @param[out] milliamperes  receives the current, 0 to 65535
 * @return as bspPoePortCurrentGet()
 */
BSP_API int32_t bspPoeRtl8239PortCurrentGet(uint32_t port, uint32_t *milliamperes);

/**
 * As bspPoePortPowerGet().
 *
 * @param[in] port         0 to BSP_POE_PORTS_MAX - 1
 * @param[out] milliwatts  receives the power
 * @return as bspPoePortPowerGet()
 */
BSP_API int32_t bspPoeRtl8239PortPowerGet(uint32_t port, uint32_t *milliwatts);

/**
 * As bspPoePortMaxPowerGet().
 *
 * @param[in] port         0 to BSP_POE_PORTS_MAX - 1
 * @param[out] milliwatts  receives the limit, 0 to BSP_POE_PORT_LIMIT_MAX_MW
 * @return as bspPoePortMaxPowerGet()
 */
BSP_API int32_t bspPoeRtl8239PortMaxPowerGet(uint32_t port, uint32_t *milliwatts);

/**
 * As bspPoePortFaultGet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[out] out  receives a value of ::BspPoeFault
 * @return as bspPoePortFaultGet()
 */
BSP_API int32_t bspPoeRtl8239PortFaultGet(uint32_t port, uint32_t *out);

/**
 * As bspPoePortDetectionGet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[out] out  receives BSP_POE_DETECTION_NONE, or a code of the controller's from 1 to
 *                  BSP_POE_DETECTION_MAX
 * @return as bspPoePortDetectionGet()
 */
BSP_API int32_t bspPoeRtl8239PortDetectionGet(uint32_t port, uint32_t *out);

/**
 * As bspPoePortClassificationGet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[out] out  receives BSP_POE_CLASS_NONE, a code of the controller's from 1 to
 *                  BSP_POE_CLASS_MAX, or BSP_POE_CLASS_0_OR_12
 * @return as bspPoePortClassificationGet()
 */
BSP_API int32_t bspPoeRtl8239PortClassificationGet(uint32_t port, uint32_t *out);

/**
 * As bspPoePortDisconnectGet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[out] out  receives a value of ::BspPoeDisconnect
 * @return as bspPoePortDisconnectGet()
 */
BSP_API int32_t bspPoeRtl8239PortDisconnectGet(uint32_t port, uint32_t *out);

/**
 * As bspPoePortInrushModeGet().
 *
 * @param[in] port  0 to BSP_POE_PORTS_MAX - 1
 * @param[out] out  receives the mode, 0 to BSP_POE_INRUSH_MODE_MAX after a set; else the
 *                  controller's code
 * @return as bspPoePortInrushModeGet()
 */
BSP_API int32_t bspPoeRtl8239PortInrushModeGet(uint32_t port, uint32_t *out);

/**
 * Reads the voltage of a port, command 0x44: as bspPoePortVoltageGet(), in millivolts.
 *
 * @param[in] port         0 to BSP_POE_PORTS_MAX - 1
 * @param[out] millivolts  receives the voltage
 * @return as bspPoePortVoltageGet()
 */
BSP_API int32_t bspPoeRtl8239PortVoltageGet(uint32_t port, uint32_t *millivolts);

/** @copydoc bspPoeDebugChipDispatch */
BSP_API int32_t bspPoeRtl8239DebugDispatch(uint32_t unit, int32_t argc, char **argv);

/** @copydoc bspPoeDebugChipDispatchHelp */
BSP_API int32_t bspPoeRtl8239DebugDispatchHelp(int32_t index);

/**
 * The debug command "poeCommand": sends the words from argv[3] on, hexadecimal bytes, as one frame.
 *
 * @param[in] row   row of the command in the help
 * @param[in] argc  number of words
 * @param[in] argv  the words: two of the shell, the command word, its arguments
 * @return BSP_E_POE_NULL for null words; BSP_E_FAILED without a byte (the usage is printed); the
 *         status of bspPoeRtl8239DbgUdfCmd()
 */
BSP_API int32_t bspPoeRtl8239DbgPoeCommand(int32_t row, int32_t argc, char **argv);

/**
 * Sends bytes as one frame, padded with 0xFF, and prints both frames. Checksum and, for most
 * commands, sequence number are filled in.
 *
 * @param[in] data   count bytes
 * @param[in] count  at least 1; bytes beyond BSP_POE_FRAME_SIZE are cut off
 * @return BSP_OK; BSP_E_POE_INVALID for a null buffer or a count below 1; an exchange status
 */
BSP_API int32_t bspPoeRtl8239DbgUdfCmd(const uint8_t *data, int32_t count);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup poerecords PoE ports in few exchanges (since version 1.1)
 *
 * One call for each of a port's state, measurement and settings, instead of one for each value: the
 * values of a record come from as few exchanges as the controller allows, and those of one exchange
 * from one moment. An exchange takes 200 ms at least. The values are those of the functions that
 * each member names; so are the statuses and what is printed. A driver that does not know these
 * questions is asked for value after value.
 * @{
 */

/** What goes on at a port, command 0x42: one exchange. */
typedef struct BspPoePortState {
    uint32_t detection;      /**< as bspPoePortDetectionGet(), see ::BspPoeDetection */
    uint32_t classification; /**< as bspPoePortClassificationGet(), see ::BspPoeClass */
    uint32_t fault;          /**< a value of ::BspPoeFault */
    uint32_t disconnect;     /**< a value of ::BspPoeDisconnect */
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
    uint32_t mode;         /**< a value of ::BspPoeMode */
    int32_t powerStatus;   /**< of limit and inrush mode, as bspPoePortMaxPowerGet() answers */
    uint32_t powerLimitMw; /**< milliwatts, as bspPoePortMaxPowerGet() */
    uint32_t inrushMode;   /**< as bspPoePortInrushModeGet() */
} BspPoePortSettings;

/**
 * Reads what goes on at a port: detection, class, fault, disconnection.
 *
 * @param[in] port   1 to BSP_POE_PORTS_MAX
 * @param[out] state  receives the record; untouched unless the call answers BSP_OK
 * @return BSP_OK; BSP_E_POE_NULL; BSP_E_POE_INVALID for a port out of range; BSP_E_POE_CONTENT when
 *         the reply names another port; an exchange status
 */
BSP_API int32_t bspPoePortStateGet(uint32_t port, BspPoePortState *state);

/**
 * Reads what a port draws: voltage, current, power, temperature. A port that does not deliver power
 * draws nothing: bspPoePortStateGet() tells.
 *
 * @param[in] port         1 to BSP_POE_PORTS_MAX
 * @param[out] measurement  receives the record; untouched unless the call answers BSP_OK
 * @return as bspPoePortStateGet()
 */
BSP_API int32_t bspPoePortMeasurementGet(uint32_t port, BspPoePortMeasurement *measurement);

/**
 * Reads how a port is set: mode, power limit, inrush mode. Both exchanges are made, whatever the
 * first one answers.
 *
 * @param[in] port      1 to BSP_POE_PORTS_MAX
 * @param[out] settings  receives the record with the status of each exchange; untouched unless the
 *                       call answers BSP_OK
 * @return BSP_OK when one of the exchanges gave its values; BSP_E_POE_NULL; else the status of the
 *         first one, which is as bspPoePortModeGet() answers
 */
BSP_API int32_t bspPoePortSettingsGet(uint32_t port, BspPoePortSettings *settings);

/** @copydoc bspPoePortStateGet */
BSP_API int32_t ioPoePortStateGet(uint32_t port, BspPoePortState *state);
/** @copydoc bspPoePortMeasurementGet */
BSP_API int32_t ioPoePortMeasurementGet(uint32_t port, BspPoePortMeasurement *measurement);
/** @copydoc bspPoePortSettingsGet */
BSP_API int32_t ioPoePortSettingsGet(uint32_t port, BspPoePortSettings *settings);

/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup facade Facade
 *
 * What management software calls. Unless said otherwise a function is the bsp* function of the same
 * stem: same arguments, same status.
 * @{
 */

/**
 * Product of this fixed unit: stores BSP_PRODUCT_ID.
 *
 * @param[in] unit        ignored
 * @param[out] productId  receives BSP_PRODUCT_ID
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t ioProductIdGet(uint32_t unit, uint32_t *productId);

/**
 * Slot of this fixed unit (bspBoardSlotIdGet() answers another number): stores BSP_SLOT_ID.
 *
 * @param[in] unit     ignored
 * @param[out] slotId  receives BSP_SLOT_ID
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t ioSlotIdGet(uint32_t unit, uint32_t *slotId);

/**
 * Card of this fixed unit: stores BSP_CARD_ID.
 *
 * @param[in] unit     ignored
 * @param[out] cardId  receives BSP_CARD_ID
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t ioCardIdGet(uint32_t unit, uint32_t *cardId);

/**
 * Frame type of this fixed unit: stores BSP_FRAME_TYPE.
 *
 * @param[in] unit   ignored
 * @param[out] type  receives BSP_FRAME_TYPE
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t ioFrameTypeGet(uint32_t unit, uint32_t *type);

/**
 * Slot type of this fixed unit: stores BSP_SLOT_TYPE.
 *
 * @param[in] unit   ignored
 * @param[out] type  receives BSP_SLOT_TYPE
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t ioSlotTypeGet(uint32_t unit, uint32_t *type);

/**
 * Card type of this fixed unit: stores BSP_CARD_TYPE.
 *
 * @param[in] unit   ignored
 * @param[out] type  receives BSP_CARD_TYPE
 * @return BSP_OK or BSP_E_NULL
 */
BSP_API int32_t ioCardTypeGet(uint32_t unit, uint32_t *type);

/** @copydoc bspDevIdGet */
BSP_API int32_t ioDevIdGet(uint32_t *devId);
/** @copydoc bspDevSerialVerGet */
BSP_API int32_t ioDevSerialVerGet(uint32_t *ver);
/** @copydoc bspHwVersionGet */
BSP_API int32_t ioHwVersionGet(char *text);
/** @copydoc bspCpldVersionGet */
BSP_API int32_t ioCpldVersionGet(char *text);
/** @copydoc bspFpgaVersionGet */
BSP_API int32_t ioFpgaVersionGet(char *text);
/** @copydoc bspUbootVersionGet */
BSP_API int32_t ioBiosVersionGet(char *version);
/** @copydoc bspBoardSlotIdGet */
BSP_API int32_t ioBoardSlotIdGet(uint32_t *slotId);
/** @copydoc bspBoardDescGet */
BSP_API int32_t ioBoardDescGet(char *desc);
/** @copydoc bspBoardDescSet */
BSP_API int32_t ioBoardDescSet(const char *desc);
/** @copydoc bspBoardPowerInfoGet */
BSP_API int32_t ioBoardPowerInfoGet(uint32_t index, void *info);
/** @copydoc bspDevinfoGet */
BSP_API int32_t ioDevinfoGet(uint32_t index, BspDevinfo *record);
/** @copydoc bspDevinfoSet */
BSP_API int32_t ioDevinfoSet(uint32_t index, BspDevinfo *record);
/** @copydoc bspMacAddrGet */
BSP_API int32_t ioMacAddrGet(uint32_t index, uint8_t *mac);
/** @copydoc bspMacAddrSet */
BSP_API int32_t ioMacAddrSet(uint32_t index, const uint8_t *mac);
/** @copydoc bspSerialNumGet */
BSP_API int32_t ioSerialNumGet(char *serial, uint32_t *len);
/** @copydoc bspSerialNumSet */
BSP_API int32_t ioSerialNumSet(const char *serial, int32_t len);
/** @copydoc bspMfgDateGet */
BSP_API int32_t ioMfgDateGet(char *date);
/** @copydoc bspMfgDateSet */
BSP_API int32_t ioMfgDateSet(const char *date);
/** @copydoc bspBootModeGet */
BSP_API int32_t ioBootModeGet(uint32_t *mode);
/** @copydoc bspBootModeSet */
BSP_API int32_t ioBootModeSet(int32_t mode);
/** @copydoc bspBootFlagGet */
BSP_API int32_t ioBootFlagGet(int32_t *flag);
/** @copydoc bspBootFlagSet */
BSP_API int32_t ioBootFlagSet(int32_t flag);
/** @copydoc bspBaudrateGet */
BSP_API int32_t ioBaudrateGet(uint32_t *baud);
/** @copydoc bspBaudrateSet */
BSP_API int32_t ioBaudrateSet(uint32_t baud);
/** @copydoc bspConsolePwdValidGet */
BSP_API int32_t ioConsolePwdValidGet(uint32_t *valid);
/** @copydoc bspConsolePwdValidSet */
BSP_API int32_t ioConsolePwdValidSet(int32_t valid);
/** @copydoc bspUserPwdValidGet */
BSP_API int32_t ioUserPwdValidGet(uint32_t *valid);
/** @copydoc bspUserPwdValidSet */
BSP_API int32_t ioUserPwdValidSet(int32_t valid);
/** @copydoc bspBootPwdGet */
BSP_API int32_t ioBootPwdGet(char *pwd);
/** @copydoc bspBootPwdSet */
BSP_API int32_t ioBootPwdSet(const char *pwd);
/** @copydoc bspOsImageInfoGet */
BSP_API int32_t ioOsImageInfoGet(uint8_t *header, int32_t bank);
/**
 * Writes an operating-system image: bspImageUpgrade() of kind BSP_IMAGE_OS.
 *
 * @param[in] file  zero-terminated path of the image file
 * @param[in] bank  a value of ::BspOsBank
 * @return as bspImageUpgrade()
 */
BSP_API int32_t ioImageUpgrade(const char *file, int32_t bank);

/**
 * Upgrades the boot loader: bspImageUpgrade() of kind BSP_IMAGE_BOOT.
 *
 * @param[in] file  zero-terminated path of the boot-loader file
 * @return as bspImageUpgrade()
 */
BSP_API int32_t ioBiosUpgrade(const char *file);

/**
 * Upgrades the CPLD: bspImageUpgrade() of kind BSP_IMAGE_CPLD.
 *
 * @param[in] file  zero-terminated path of the image file
 * @return as bspImageUpgrade()
 */
BSP_API int32_t ioCpldUpgrade(const char *file);

/**
 * Stores the boot flag, waits a second, and resets the board as bspHwReboot() does. Neither the
 * flag's nor the reset's failure is told.
 *
 * @param[in] flag  the boot flag, as of bspBootFlagSet()
 * @return BSP_OK, when the reset comes back at all
 */
BSP_API int32_t ioRebootEx(int32_t flag);

/** @copydoc bspPowerNumGet */
BSP_API int32_t ioPowerNumGet(int32_t *out);
/** @copydoc bspPowerPresentGet */
BSP_API int32_t ioPowerPresentGet(int32_t index, int32_t *out);
/** @copydoc bspPowerStatusGet */
BSP_API int32_t ioPowerStatusGet(int32_t index, int32_t *out);
/** @copydoc bspPowerInfoGet */
BSP_API int32_t ioPowerInfoGet(int32_t index, BspPowerInfo *info);
/** @copydoc bspLedStateSet */
BSP_API int32_t ioLedStateSet(uint32_t unit, uint32_t index, uint32_t kind, uint32_t colour,
                              uint32_t state);
/** @copydoc bspWatchdogFeed */
BSP_API int32_t ioWatchdogFeed(void);
/** @copydoc bspWatchdogStart */
BSP_API int32_t ioWatchdogStart(void);
/** @copydoc bspWatchdogStop */
BSP_API int32_t ioWatchdogStop(void);
/** @copydoc bspWatchdogPeriodGet */
BSP_API int32_t ioWatchdogPeriodGet(uint32_t *period);
/** @copydoc bspWatchdogPeriodSet */
BSP_API int32_t ioWatchdogPeriodSet(uint32_t period);
/** @copydoc bspPtpTriggerSet */
BSP_API int32_t ioPtpTriggerSet(uint32_t value);
/** @copydoc bspSlotPresentGet */
BSP_API int32_t ioSlotPresentGet(uint32_t slot, uint32_t *out);
/** @copydoc bspSlotPowerStateSet */
BSP_API int32_t ioSlotPowerStateSet(uint32_t slot, uint32_t state);
/** @copydoc bspFanSpeedGet */
BSP_API int32_t ioFanSpeedGet(uint32_t fan, uint32_t *rpm);
/** @copydoc bspFanSpeedSet */
BSP_API int32_t ioFanSpeedSet(uint32_t fan, int32_t level);
/** @copydoc bspFanPresentGet */
BSP_API int32_t ioFanPresentGet(int32_t fan, uint32_t *out);
/** @copydoc bspTemperGet */
BSP_API int32_t ioTemperGet(uint32_t sensor, int32_t *celsius);
/** @copydoc bspRealtimeGet */
BSP_API int32_t ioRealtimeGet(BspCalendar *record);
/** @copydoc bspRealtimeSet */
BSP_API int32_t ioRealtimeSet(const BspCalendar *record);
/** @copydoc bspLaserBasicGet */
BSP_API int32_t ioLaserBasicGet(uint32_t port, uint32_t offset, uint8_t *byte);
/** @copydoc bspLaserAdvanceGet */
BSP_API int32_t ioLaserAdvanceGet(uint32_t port, uint32_t offset, uint8_t *byte);
/** @copydoc bspLaserPresentGet */
BSP_API int32_t ioLaserPresentGet(uint32_t port, uint32_t *out);
/** @copydoc bspLaserControlSet */
BSP_API int32_t ioLaserControlSet(uint32_t port, uint32_t state);
/** @copydoc bspLaserControlGet */
BSP_API int32_t ioLaserControlGet(uint32_t port, uint32_t *out);
/** @copydoc bspLaserRxLosGet */
BSP_API int32_t ioLaserRxLosGet(uint32_t port, uint32_t *out);
/** @copydoc bspLaserTxfaultGet */
BSP_API int32_t ioLaserTxfaultGet(uint32_t port, uint32_t *out);
/** @copydoc bspLaserPhyGet */
BSP_API int32_t ioLaserPhyGet(uint32_t port, uint32_t reg, uint16_t *value);
/** @copydoc bspLaserPhySet */
BSP_API int32_t ioLaserPhySet(uint32_t port, uint32_t reg, uint32_t value);
/**
 * bspLaserQsfpRead() of one byte.
 *
 * @param[in] port    ignored
 * @param[in] offset  ignored
 * @param[out] buf    not touched
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t ioLaserQsfpGet(uint32_t port, uint32_t offset, uint8_t *buf);

/**
 * bspLaserQsfpWrite() of the low 8 bits of value.
 *
 * @param[in] port    ignored
 * @param[in] offset  ignored
 * @param[in] value   ignored
 * @return BSP_E_NOT_SUPPORTED
 */
BSP_API int32_t ioLaserQsfpSet(uint32_t port, uint32_t offset, uint32_t value);

/** @copydoc bspPoeDeviceInit */
BSP_API int32_t ioPoeDeviceInit(void);
/** @copydoc bspPoeInitStatusSet */
BSP_API int32_t ioPoeInitStatusSet(uint32_t status);
/** @copydoc bspPoeInitStatusGet */
BSP_API int32_t ioPoeInitStatusGet(uint32_t *out);
/** @copydoc bspPoeGlobalMaxPowerSet */
BSP_API int32_t ioPoeGlobalMaxPowerSet(uint32_t milliwatts);
/** @copydoc bspPoePortModeSet */
BSP_API int32_t ioPoePortModeSet(uint32_t port, uint32_t mode);
/** @copydoc bspPoePortPowerOnSet */
BSP_API int32_t ioPoePortPowerOnSet(uint32_t port, uint32_t on);
/** @copydoc bspPoePortDetectionSet */
BSP_API int32_t ioPoePortDetectionSet(uint32_t port);
/** @copydoc bspPoePortClassificationSet */
BSP_API int32_t ioPoePortClassificationSet(uint32_t port);
/** @copydoc bspPoePortPrioritySet */
BSP_API int32_t ioPoePortPrioritySet(uint32_t port, uint32_t priority);
/** @copydoc bspPoePortMaxPowerSet */
BSP_API int32_t ioPoePortMaxPowerSet(uint32_t port, uint32_t milliwatts);
/** @copydoc bspPoePortLegacyEnableSet */
BSP_API int32_t ioPoePortLegacyEnableSet(uint32_t port, uint32_t enable);
/** @copydoc bspPoePortInrushModeSet */
BSP_API int32_t ioPoePortInrushModeSet(uint32_t port, uint32_t mode);
/** @copydoc bspPoePortForceInrushSet */
BSP_API int32_t ioPoePortForceInrushSet(uint32_t port, uint32_t force);
/** @copydoc bspPoePortMaxPowerTypeSet */
BSP_API int32_t ioPoePortMaxPowerTypeSet(uint32_t port, uint32_t type);
/** @copydoc bspPoePortLedStateSet */
BSP_API int32_t ioPoePortLedStateSet(uint32_t port, uint32_t state);
/** @copydoc bspPoeGlobalMaxPowerGet */
BSP_API int32_t ioPoeGlobalMaxPowerGet(uint32_t *milliwatts);
/** @copydoc bspPoeGlobalRatedPowerGet */
BSP_API int32_t ioPoeGlobalRatedPowerGet(int32_t supplyIndex, uint32_t *milliwatts);
/** @copydoc bspPoeGlobalPowerGet */
BSP_API int32_t ioPoeGlobalPowerGet(uint32_t *milliwatts);
/** @copydoc bspPoePortModeGet */
BSP_API int32_t ioPoePortModeGet(uint32_t port, uint32_t *out);
/** @copydoc bspPoePortCurrentGet */
BSP_API int32_t ioPoePortCurrentGet(uint32_t port, uint32_t *milliamperes);
/** @copydoc bspPoePortVoltageGet */
BSP_API int32_t ioPoePortVoltageGet(uint32_t port, uint32_t *volts);
/** @copydoc bspPoePortPowerGet */
BSP_API int32_t ioPoePortPowerGet(uint32_t port, uint32_t *milliwatts);
/** @copydoc bspPoePortMaxPowerGet */
BSP_API int32_t ioPoePortMaxPowerGet(uint32_t port, uint32_t *milliwatts);
/** @copydoc bspPoePortFaultGet */
BSP_API int32_t ioPoePortFaultGet(uint32_t port, uint32_t *out);
/** @copydoc bspPoePortDetectionGet */
BSP_API int32_t ioPoePortDetectionGet(uint32_t port, uint32_t *out);
/** @copydoc bspPoePortClassificationGet */
BSP_API int32_t ioPoePortClassificationGet(uint32_t port, uint32_t *out);
/** @copydoc bspPoePortDisconnectGet */
BSP_API int32_t ioPoePortDisconnectGet(uint32_t port, uint32_t *out);
/** @copydoc bspPoePortInrushModeGet */
BSP_API int32_t ioPoePortInrushModeGet(uint32_t port, uint32_t *out);
/** @copydoc bspPoeAppStatusGet */
BSP_API int32_t ioPoeAppStatusGet(uint32_t *out);
/** @copydoc bspPoeAppUpgradeSet */
BSP_API int32_t ioPoeAppUpgradeSet(const char *file);
/** @copydoc bspPoeAppVersionGet */
BSP_API int32_t ioPoeAppVersionGet(char *text);

/** @} */

#ifdef __cplusplus
}
#endif

#endif /* BSP_H */
