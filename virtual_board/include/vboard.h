/**
 * @file vboard.h
 * Virtual boards in the hands of programs.
 *
 * A virtual board is a folder that `vboard create` or vboardCreate() makes. Programs that are
 * started on it work with it as with a switch, see docs/virtual-board.md; whoever holds it through
 * this header stands beside it: plugs and pulls, makes things fail, moves the clock, and sees what
 * happens.
 *
 * @section vboardConventions Conventions that hold for every function
 *
 *  - The result is one of ::VBoardStatus. What is wrong, and what to do, is in the text of the
 *    VBoardError whose address is the last argument; it may be null. On success it is left alone.
 *  - Where a function fails its outputs are untouched, and so is the board.
 *  - Texts are UTF-8 and end with a zero. Names, values, conditions and fault rules are those of
 *    the command `vboard`: "fan.1.speed", "class=4 draws=18000", "i2c:0.1.0x4F".
 *  - Texts and lists that a function gives away belong to the caller, and go back with
 * vboardFree(). A list is one block, the texts in it included.
 *  - Times are nanoseconds. A board's time counts from when the board was made.
 *  - Structures that a program fills begin with their size, so that later versions can add members
 *    at their end. Members that are not set are zero.
 *  - Any functions may run at once in any threads and processes, on one board as well; each is
 *    whole. Only vboardClose() must be the last use of a handle. The library keeps nothing that
 *    threads share, starts none and installs no handlers. Calls work from programs that are on a
 *    board, too.
 *  - Handles do not outlive fork: a child opens the board anew.
 */
#ifndef VBOARD_H
#define VBOARD_H

#include <stdint.h>

/** What the library exports. */
#if defined(__GNUC__)
#define VBOARD_API __attribute__((visibility("default")))
#else
#define VBOARD_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup vboardErrors Errors
 * @{
 */

/** What a function answers. The numbers are part of the interface. */
enum VBoardStatus {
    VBOARD_OK = 0,           /**< success */
    VBOARD_E_ARGUMENT = 1,   /**< a required pointer is null, or a structure's size is unknown */
    VBOARD_E_REFUSED = 2,    /**< a name, value, condition or rule that this board cannot have */
    VBOARD_E_NO_BOARD = 3,   /**< there is no such folder, or no board in it */
    VBOARD_E_DAMAGED = 4,    /**< the folder holds a board that is not whole */
    VBOARD_E_VERSION = 5,    /**< the board was made by another version or kind of machine */
    VBOARD_E_PERMISSION = 6, /**< the operating system does not let this user */
    VBOARD_E_EXISTS = 7,     /**< something is in the place where a board shall be made */
    VBOARD_E_GONE = 8,       /**< the board was removed since it was opened */
    VBOARD_E_TIMEOUT = 9,    /**< the time is over */
    VBOARD_E_IN_USE = 10,    /**< programs are on the board */
    VBOARD_E_FULL = 11,      /**< the board has no room for another rule */
    VBOARD_E_SYSTEM = 12,    /**< another call of the operating system failed: see osError */
    VBOARD_E_NO_MEMORY = 13, /**< no memory for what shall be given away */
    VBOARD_E_BUSY = 14       /**< a program does not wait, so that a stepped clock stands */
};

#define VBOARD_ERROR_TEXT_SIZE 1016 /**< with the zero; longer texts are cut */

/** Why a function failed. */
typedef struct VBoardError {
    int32_t status;                    /**< as it was answered */
    int32_t osError;                   /**< errno of what failed, or 0 */
    char text[VBOARD_ERROR_TEXT_SIZE]; /**< one line: what is wrong, and what to do */
} VBoardError;

/**
 * Tells the name of a status.
 *
 * @param[in] status  what a function answered
 * @return its name, "VBOARD_E_REFUSED"; empty for a number that is none
 */
VBOARD_API const char *vboardStatusName(int32_t status);

/**
 * Takes back what a function gave away.
 *
 * @param[in] given  a text or a list, or null
 */
VBOARD_API void vboardFree(void *given);
/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup vboardBoards Boards and their folders
 * @{
 */

/** A board that is held open. */
typedef struct VBoard VBoard;

/** What a new board is made with. Texts that are null are as in vboardUsualOptions(). */
typedef struct VBoardOptions {
    uint32_t size;           /**< sizeof(VBoardOptions) */
    uint32_t mtdCount;       /**< how many geometries there are */
    const char *model;       /**< device id: "0x0709"; required */
    const char *time;        /**< as the property "time": "real", "stepped", "x60" */
    const char *serial;      /**< serial number, 1 to 31 printable ASCII characters */
    const char *mac;         /**< MAC address: "02:00:5e:10:00:01" */
    const char *commandLine; /**< the kernel's, up to 1024 printable ASCII characters */
    const char *const *mtd;  /**< geometries of flash partitions: "4:size=262144,type=nand" */
    const char *flashTiming; /**< "usual" or "off"; null: usual where the time is real */
} VBoardOptions;

/**
 * Tells what `vboard create` makes a board with that is told nothing. The texts are constants of
 * the library.
 *
 * @return the options, without a model
 */
VBOARD_API const VBoardOptions *vboardUsualOptions(void);

/**
 * Makes a board. The folder appears with the whole board in it, or not at all.
 *
 * @param[in] folder   a path where nothing is, or an empty folder
 * @param[in] options  what it is made with
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED for an option; VBOARD_E_EXISTS;
 *         VBOARD_E_PERMISSION; VBOARD_E_SYSTEM; VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardCreate(const char *folder, const VBoardOptions *options,
                                VBoardError *error);

/**
 * Makes a board of a captured unit, which `iodbg capture` has saved: one that answers as the unit
 * did.
 *
 * @param[in] folder  a path where nothing is, or an empty folder
 * @param[in] file    the document
 * @param[in] time    as the property "time"; null: "real"
 * @param[out] gaps   what the board cannot have of the unit, a line for each, empty when it has
 *                    all; to be given back with vboardFree(); may be null
 * @param[out] error  why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED for what is no document, and for a unit of
 *         which no board can be made; VBOARD_E_EXISTS; VBOARD_E_PERMISSION; VBOARD_E_SYSTEM;
 *         VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardCreateFrom(const char *folder, const char *file, const char *time,
                                    char **gaps, VBoardError *error);

/**
 * Makes a copy of a board as it is at one moment, with its flash, its files and its trace. Programs
 * may be on the board; the copy has none.
 *
 * @param[in] folder  the board
 * @param[in] copy    a path where nothing is, or an empty folder
 * @param[out] error  why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; what vboardOpen() answers; VBOARD_E_EXISTS;
 *         VBOARD_E_PERMISSION; VBOARD_E_SYSTEM; VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardCopy(const char *folder, const char *copy, VBoardError *error);

/**
 * Makes a board of an earlier released version one of this version, with all that it has: devices,
 * flash, files, time, fault rules and trace. It is that, or stays as it was. A board of this
 * version is left alone.
 *
 * @param[in] folder  the board
 * @param[out] error  why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_NO_BOARD; VBOARD_E_DAMAGED; VBOARD_E_VERSION when
 *         it is of a later version, of none that was released, or of another kind of machine;
 *         VBOARD_E_IN_USE; VBOARD_E_PERMISSION; VBOARD_E_SYSTEM; VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardUpgrade(const char *folder, VBoardError *error);

/**
 * Removes a board with its folder. A folder that holds something else besides is left as it is.
 *
 * @param[in] folder  the board; it may be damaged or of another version
 * @param[out] error  why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_NO_BOARD; VBOARD_E_REFUSED when something else is
 *         in the folder; VBOARD_E_IN_USE; VBOARD_E_SYSTEM
 */
VBOARD_API int32_t vboardDelete(const char *folder, VBoardError *error);

/**
 * Opens a board.
 *
 * @param[in] folder  the board
 * @param[out] board  a handle for vboardClose()
 * @param[out] error  why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_NO_BOARD; VBOARD_E_DAMAGED; VBOARD_E_VERSION;
 *         VBOARD_E_PERMISSION; VBOARD_E_SYSTEM; VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardOpen(const char *folder, VBoard **board, VBoardError *error);

/**
 * Gives a handle back. The board stays as it is.
 *
 * @param[in] board  a handle that is in no use any more, or null
 */
VBOARD_API void vboardClose(VBoard *board);

/**
 * Tells where a board is.
 *
 * @param[in] board  a handle
 * @return the folder's absolute path, free of links; it is valid as long as the handle
 */
VBOARD_API const char *vboardFolder(const VBoard *board);

/** A board that was found. */
typedef struct VBoardListed {
    const char *folder; /**< absolute path */
    const char *model;  /**< "0x0709" */
    const char *time;   /**< as the property "time" */
    const char
        *users; /**< who has it in use: "iodbg 4711, python3 4712"; empty: nobody that is seen */
    const char *problem; /**< why it cannot be opened; model and time are empty then */
    int32_t status;      /**< what vboardOpen() answers */
} VBoardListed;

/**
 * Lists the boards in a folder and all folders below it, as far as they can be looked into. Links
 * are not followed.
 *
 * @param[in] below    the folder
 * @param[out] boards  a list of them in the order of their paths, for vboardFree()
 * @param[out] count   how many are in it
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED when it is no folder; VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardList(const char *below, VBoardListed **boards, uint32_t *count,
                              VBoardError *error);

/** A process that has a board in use. */
typedef struct VBoardUser {
    const char *program; /**< its name, as `ps` shows it */
    int32_t pid;         /**< its process id */
} VBoardUser;

/**
 * Tells who has a board in use, but for the calling process: programs on it, and those that hold it
 * as the caller does. Processes of other users may not be seen.
 *
 * @param[in] board   the board
 * @param[out] users  a list of them, for vboardFree()
 * @param[out] count  how many are in it
 * @param[out] error  why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardUsers(VBoard *board, VBoardUser **users, uint32_t *count,
                               VBoardError *error);
/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup vboardProperties Properties
 *
 * What a board holds has names; docs/virtual-board.md lists them, and `vboard properties` tells
 * which a model has. In the functions below every use of a board may fail with VBOARD_E_GONE when
 * it was removed, with VBOARD_E_PERMISSION or VBOARD_E_SYSTEM when its files are out of reach, and
 * with VBOARD_E_NO_MEMORY.
 * @{
 */

/** A property and what it holds. */
typedef struct VBoardProperty {
    const char *name;  /**< "fan.1.speed" */
    const char *value; /**< as people read it, and as it can be set: "0x0709", "good" */
    const char *json;  /**< the same for programs: numbers are numbers */
    const char *note;  /**< what else is to be known of it on this board; mostly empty */
    int32_t isIdle;    /**< holds what it holds when nobody has touched it */
} VBoardProperty;

/**
 * Reads properties, all at one moment.
 *
 * @param[in] board        the board
 * @param[in] names        names, and patterns of shells: "fan.*". Part of an EEPROM or of the flash
 *                         is "eeprom.board@0x100+16"
 * @param[in] nameCount    how many; with 0 all properties that are not too long for that
 * @param[out] properties  a list, in the order of the names, each property once for all patterns;
 * for vboardFree()
 * @param[out] count       how many are in it
 * @param[out] error       why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED for a name, or a pattern that fits none
 */
VBOARD_API int32_t vboardGet(VBoard *board, const char *const *names, uint32_t nameCount,
                             VBoardProperty **properties, uint32_t *count, VBoardError *error);

/** A property and what it shall hold. */
typedef struct VBoardChange {
    const char *name;  /**< "fan.1.state" */
    const char *value; /**< "stuck" */
} VBoardChange;

/**
 * Changes properties, all at one moment, in their order: all of them, or none where one is refused.
 *
 * @param[in] board    the board
 * @param[in] changes  what is to be changed; bytes of an EEPROM from an offset on:
 * "eeprom.board@0x100"
 * @param[in] count    how many
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED
 */
VBOARD_API int32_t vboardSet(VBoard *board, const VBoardChange *changes, uint32_t count,
                             VBoardError *error);

/**
 * Tells how often a board has changed: whatever programs and hands have done, and nothing else, is
 * a change. Time alone is none, unless a hand moves it.
 *
 * @param[in] board  the board
 * @return a number that grows, for vboardAwaitChange()
 */
VBOARD_API uint32_t vboardChanges(const VBoard *board);

/**
 * Waits until a board has changed. Nobody polls: who changes the board wakes those who wait.
 *
 * @param[in] board    the board
 * @param[in] since    what vboardChanges() told
 * @param[in] timeout  how long at most, in the host's nanoseconds; UINT64_MAX for ever
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK, also when a signal has come; VBOARD_E_ARGUMENT; VBOARD_E_TIMEOUT;
 * VBOARD_E_GONE
 */
VBOARD_API int32_t vboardAwaitChange(VBoard *board, uint32_t since, uint64_t timeout,
                                     VBoardError *error);

/**
 * Waits until a condition holds: "fan.1.speed == 0", "poe.3.state == on and poe.3.power > 5000".
 * Comparisons are == != < <= > >=, joined by "and" and "or", of which "and" binds closer; texts
 * with blanks in them stand between quotes. Words and texts can be equal alone.
 *
 * Where the clock moves by itself the call waits for it. A virtual or stepped clock is moved by it,
 * as by vboardAdvance() with the usual patience: from one moment to the next at which something
 * happens on the board, until the condition holds or the time is over.
 *
 * @param[in] board      the board
 * @param[in] condition  what shall hold
 * @param[in] timeout    how long at most, in nanoseconds of the board's clock; UINT64_MAX for ever
 * @param[out] error     why it failed; at a time-out it tells what the properties are
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED for a condition; VBOARD_E_TIMEOUT;
 *         VBOARD_E_BUSY
 */
VBOARD_API int32_t vboardWait(VBoard *board, const char *condition, uint64_t timeout,
                              VBoardError *error);
/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup vboardTime Time
 * @{
 */

/**
 * Tells the board's time.
 *
 * @param[in] board  the board
 * @param[out] time  nanoseconds since it was made
 * @param[out] error why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT
 */
VBOARD_API int32_t vboardTime(VBoard *board, uint64_t *time, VBoardError *error);

#define VBOARD_USUAL_PATIENCE 2000000000u /**< with a thread that does not wait: 2 s */

/**
 * Moves a clock that does not move by itself. A virtual one ("time" is "virtual") is set. A stepped
 * one goes from deadline to deadline: at each the thread goes on that waits for it, and the next
 * one when every thread of the board's programs waits again, be it for the board's time, for data
 * or for another thread.
 *
 * @param[in] board     the board
 * @param[in] time      by how many nanoseconds
 * @param[in] patience  how long a thread may run until it waits, in the host's nanoseconds
 * @param[out] error    why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED where the clock moves by itself;
 *         VBOARD_E_BUSY: the clock stands where a thread has run for longer, which is named
 */
VBOARD_API int32_t vboardAdvance(VBoard *board, uint64_t time, uint64_t patience,
                                 VBoardError *error);

/**
 * Tells of a process that was just started with vboardEnvironment() and becomes a program of a
 * board, which takes it some milliseconds: from now on, and not only from then, a stepped clock
 * stands until it waits. One that does not become a program is forgotten.
 *
 * @param[in] board    the board
 * @param[in] process  its process id
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT
 */
VBOARD_API int32_t vboardExpectProgram(VBoard *board, int32_t process, VBoardError *error);
/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup vboardFaults Faults
 * @{
 */

/**
 * A rule of which requests go wrong, in the words of `vboard fault`. Of a new one the number, the
 * counts, the text and the JSON are not looked at.
 */
typedef struct VBoardFault {
    uint32_t size;      /**< sizeof(VBoardFault) */
    uint32_t id;        /**< its number */
    const char *device; /**< "cpld", "i2c:0.1.0x4F", or the path of a file of the board; required */
    const char *op;     /**< "read"; null: "any" */
    const char *offset; /**< register, line, offset, command; null: every one */
    const char *nth;    /**< which matching request, from 1; null: "1" */
    const char *when;   /**< "once", "every", "from"; null: "once" */
    const char *effect; /**< "no-answer", "refuse=-5"; required */
    uint32_t matched;   /**< how many requests it has matched */
    uint32_t fired;     /**< how many of these went wrong */
    const char *text;   /**< the rule as arguments of `vboard fault add` */
    const char *json;   /**< an object, as `vboard fault list --json` has them */
} VBoardFault;

/**
 * Adds a rule.
 *
 * @param[in] board   the board
 * @param[in] fault   the rule
 * @param[out] id     its number, for vboardClearFaults()
 * @param[out] error  why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED for a rule that could never fire;
 *         VBOARD_E_FULL
 */
VBOARD_API int32_t vboardAddFault(VBoard *board, const VBoardFault *fault, uint32_t *id,
                                  VBoardError *error);

/**
 * Lists the rules.
 *
 * @param[in] board    the board
 * @param[out] faults  a list of them, for vboardFree()
 * @param[out] count   how many are in it
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT
 */
VBOARD_API int32_t vboardFaults(VBoard *board, VBoardFault **faults, uint32_t *count,
                                VBoardError *error);

/**
 * Removes rules: all of the numbers, or none where there is no rule of one.
 *
 * @param[in] board   the board
 * @param[in] ids     numbers of rules
 * @param[in] count   how many; with 0 every rule is removed
 * @param[out] error  why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED
 */
VBOARD_API int32_t vboardClearFaults(VBoard *board, const uint32_t *ids, uint32_t count,
                                     VBoardError *error);
/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup vboardTrace Trace
 * @{
 */

/** A request that reached a board, and its answer. */
typedef struct VBoardRequest {
    uint64_t number;  /**< counted from 0, since the board was made */
    uint64_t time;    /**< on the board's clock */
    int32_t pid;      /**< the process that sent it */
    int32_t error;    /**< errno with which it failed, or 0 */
    int32_t result;   /**< what the kernel module answered */
    const char *kind; /**< "i2c-read", as the member "kind" of its JSON */
    const char *text; /**< in words, as `vboard trace` prints it */
    const char *json; /**< all that is known of it: a line of `vboard trace --json` */
} VBoardRequest;

/**
 * Reads the trace from a position on.
 *
 * @param[in] board         the board
 * @param[in,out] position  number of the first request wanted, where 0 is the oldest that is known
 *                          and UINT64_MAX the next one; then that behind the last of the list
 * @param[in] most          how many at most; 0 for all
 * @param[out] requests     a list of them, for vboardFree()
 * @param[out] count        how many are in it
 * @param[out] lost         how many from the position on were overwritten; may be null
 * @param[out] error        why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT
 */
VBOARD_API int32_t vboardTrace(VBoard *board, uint64_t *position, uint32_t most,
                               VBoardRequest **requests, uint32_t *count, uint64_t *lost,
                               VBoardError *error);

/**
 * Forgets what the trace holds up to a position. The numbers of requests go on.
 *
 * @param[in] board     the board
 * @param[in] position  number of the first request that stays; UINT64_MAX: none does
 * @param[out] error    why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT
 */
VBOARD_API int32_t vboardClearTrace(VBoard *board, uint64_t position, VBoardError *error);

/**
 * Sends a request without a program, as a trace tells of it. It comes at the time that the board
 * has, whatever its "time_ns" is, and its answer stands in the trace, too.
 *
 * @param[in] board    the board
 * @param[in] request  a line of `vboard trace --json`; what it was answered then is not looked at
 * @param[out] answer  the same with the answer of this board, for vboardFree()
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK, whatever the answer is; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED for a text that is
 *         no such line, and for a request of which a trace does not keep all that is sent
 */
VBOARD_API int32_t vboardSend(VBoard *board, const char *request, char **answer,
                              VBoardError *error);
/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup vboardViews The board as a whole
 * @{
 */

/**
 * Draws the front panel, as `vboard panel` does.
 *
 * @param[in] board       the board
 * @param[in] hasColours  whether in colours of terminals
 * @param[out] text       the drawing, for vboardFree()
 * @param[out] error      why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT
 */
VBOARD_API int32_t vboardPanel(VBoard *board, int32_t hasColours, char **text, VBoardError *error);

/** What the flash holds, and how worn it is. */
typedef struct VBoardPartition {
    const char *type; /**< "nand" or "nor" */
    const char
        *geometry; /**< in words: "nand, 42467328 bytes, blocks of 131072, pages of 2048+64" */
    const char *badBlocks;    /**< their numbers: "3, 17"; empty without one */
    const char *holds;        /**< what is recognised in it, with commas between; empty: nothing */
    const char *json;         /**< all of this as an object, as `vboard flash --json` has it */
    uint64_t totalErases;     /**< of all blocks */
    uint32_t leastErases;     /**< of one block */
    uint32_t mostErases;      /**< of one block */
    uint32_t number;          /**< the N of /dev/mtdN */
    uint32_t size;            /**< bytes */
    uint32_t eraseSize;       /**< bytes of a block */
    uint32_t pageSize;        /**< bytes */
    uint32_t spareSize;       /**< bytes beside a page */
    uint32_t programmedPages; /**< pages that hold anything but 0xFF */
    int32_t isWriteProtected; /**< 1: it can only be read */
} VBoardPartition;

/**
 * Tells of the flash partitions.
 *
 * @param[in] board        the board
 * @param[out] partitions  a list of them, for vboardFree()
 * @param[out] count       how many are in it
 * @param[out] error       why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED when the content cannot be read
 */
VBOARD_API int32_t vboardFlash(VBoard *board, VBoardPartition **partitions, uint32_t *count,
                               VBoardError *error);

/**
 * Makes a block of NAND a bad one.
 *
 * @param[in] board      the board
 * @param[in] partition  the N of /dev/mtdN
 * @param[in] block      number of the block, from 0
 * @param[out] error     why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED
 */
VBOARD_API int32_t vboardMarkBadBlock(VBoard *board, uint32_t partition, uint32_t block,
                                      VBoardError *error);

/**
 * A variable of the calling process's environment: set, programs that could not be on a board are
 * not refused. They run on the host.
 */
#define VBOARD_ALLOW_HOST "VBOARD_ALLOW_HOST"

/** What a program is started with to be on a board. */
typedef struct VBoardVariable {
    const char *name;  /**< of an environment variable */
    const char *value; /**< what it is set to */
} VBoardVariable;

/**
 * Tells what puts a program on a board: variables of its environment, which the calling process's
 * own values have gone into. A program that they could not put there is refused, with the reason.
 *
 * @param[in] board       the board
 * @param[in] program     the program's path, or its name in the folders of PATH; null: any
 * @param[out] variables  a list of them, for vboardFree()
 * @param[out] count      how many are in it
 * @param[out] error      why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED
 */
VBOARD_API int32_t vboardEnvironment(VBoard *board, const char *program, VBoardVariable **variables,
                                     uint32_t *count, VBoardError *error);
/** @} */

/* ---------------------------------------------------------------------------------------------- */

/**
 * @defgroup vboardKinds What boards there can be
 * @{
 */

/** A model that boards can be made of. */
typedef struct VBoardModel {
    const char *id;           /**< "0x0709" */
    const char *description;  /**< in words */
    uint32_t poePorts;        /**< how many; 0: no Power over Ethernet */
    int32_t hasSupplyEeproms; /**< 1: its supplies have EEPROMs and tell of themselves */
} VBoardModel;

/**
 * Lists the models.
 *
 * @param[out] models  a list of them, for vboardFree()
 * @param[out] count   how many are in it
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardModels(VBoardModel **models, uint32_t *count, VBoardError *error);

/**
 * Describes properties: names, types, units, ranges, words, models and meaning, as `vboard
 * properties
 * --json` does.
 *
 * @param[in] pattern  those that fit, or that of a name; null: all
 * @param[out] json    an array of objects, for vboardFree()
 * @param[out] error   why it failed; may be null
 * @return VBOARD_OK; VBOARD_E_ARGUMENT; VBOARD_E_REFUSED when none fits; VBOARD_E_NO_MEMORY
 */
VBOARD_API int32_t vboardDescribe(const char *pattern, char **json, VBoardError *error);
/** @} */

#ifdef __cplusplus
}
#endif

#endif
