/*
 * Looks at a unit's health once and lets the system lamp show it.
 *
 *   health_monitor
 *
 * It asks for the temperature, the fans, the supplies and what SFP modules with diagnostics tell of
 * themselves, prints a line for each thing that is not as it should be, and sets the lamp. A
 * management daemon would do the same every few seconds. The exit code is 0 when all is well, 1
 * when the lamp could not be set, 2 for a bad command line, 3 when something needs attention.
 *
 * It shows how to find out what a model has: by asking, and by the status that says "there is no
 * such thing". See README.md for running it without hardware.
 */

#include <bsp.h>

#include <inttypes.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>

enum { EXIT_COMMAND_LINE = 2, EXIT_ATTENTION = 3 };

/* Limits of this program's own. */
enum { WARM = 60, HOT = 75 }; /* degrees Celsius */
enum { SLOW_PERCENT = 75 };   /* of the fastest fan's speed: all run at one level */

/* Of any model; bsp.h lists what each has. */
enum { MAX_PORT = 54 };
enum { MAX_FANS = 4 };

/* Places in the pages of SFP modules. */
enum { MONITORING = 92, HAS_DIAGNOSTICS = 0x40 }; /* identification page */
enum { ALARM_FLAGS = 112 };                       /* diagnostics page */

/* How a unit is; the lamp's states. */
typedef enum { GOOD = 1, WARNING = 2, FAULT = 3 } Health;

static const char *const health_names[] = {"", "good", "warning", "fault"};

/* ---- Findings ---- */

/* What is wrong with "fan 2": a line, and the unit is as bad as the worst of them. */
static void find(Health *unit, Health health, const char *what, uint32_t number, const char *text) {
    printf("%s", what);
    if (number != 0)
        printf(" %" PRIu32, number);
    printf(": %s\n", text);
    if (health > *unit)
        *unit = health;
}

/* A call that failed is a fault as well: nobody knows how the thing is. */
static bool succeeded(Health *unit, const char *what, uint32_t number, int32_t status) {
    char text[64];
    if (status == BSP_OK)
        return true;
    snprintf(text, sizeof(text), "cannot be read: status %" PRId32, status);
    find(unit, FAULT, what, number, text);
    return false;
}

/* ---- Temperature and fans ---- */

static void look_at_temperature(Health *unit) {
    int32_t celsius = 0;
    char text[32];
    if (!succeeded(unit, "temperature", 0, ioTemperGet(0, &celsius)) || celsius <= WARM)
        return;
    snprintf(text, sizeof(text), "%" PRId32 " C", celsius);
    find(unit, celsius > HOT ? FAULT : WARNING, "temperature", 0, text);
}

/* The speeds tell more than the presence lines, which some models share among fans and supplies. */
static void look_at_fans(Health *unit) {
    uint32_t speed[MAX_FANS + 1] = {0};
    uint32_t count = 0, fastest = 0;
    for (uint32_t fan = 1; fan <= MAX_FANS; ++fan) {
        const int32_t status = ioFanSpeedGet(fan, &speed[fan]);
        if (status == BSP_E_INVALID) /* there is no such fan */
            break;
        if (!succeeded(unit, "fan", fan, status))
            return;
        count = fan;
        if (speed[fan] > fastest)
            fastest = speed[fan];
    }
    for (uint32_t fan = 1; fan <= count; ++fan) {
        if (speed[fan] == 0)
            find(unit, FAULT, "fan", fan, "stands still or is not there");
        else if (speed[fan] * 100 < fastest * SLOW_PERCENT)
            find(unit, FAULT, "fan", fan, "is slower than the others");
    }
}

/* ---- Supplies ---- */

/* Models with fixed supplies answer the supplies' lines as they are: a low one is a plugged one's.
 */
static void look_at_supplies(Health *unit, bool is_line_answered) {
    int32_t count = 0;
    if (!succeeded(unit, "supplies", 0, ioPowerNumGet(&count)))
        return;
    for (int32_t supply = 1; supply <= count && supply <= BSP_FIXED_SUPPLIES; ++supply) {
        int32_t answer = 0, code = 0;
        char text[32];
        if (!succeeded(unit, "supply", (uint32_t)supply, ioPowerPresentGet(supply, &answer)))
            continue;
        if (answer == (is_line_answered ? BSP_SUPPLY_LINE_HIGH : BSP_SUPPLY_MISSING)) {
            find(unit, WARNING, "supply", (uint32_t)supply, "is not plugged");
            continue;
        }
        if (!succeeded(unit, "supply", (uint32_t)supply, ioPowerStatusGet(supply, &code)))
            continue;
        snprintf(text, sizeof(text), "tells status %" PRId32, code);
        if (code != BSP_SUPPLY_STATUS_0)
            find(unit, FAULT, "supply", (uint32_t)supply, text);
    }
}

/* ---- SFP modules ---- */

typedef struct {
    unsigned byte; /* counted from the alarm flags */
    unsigned bit;
    bool is_transmitters; /* of no interest while the transmitter is off */
    const char *text;
} Flag;

static const Flag flags[] = {
    {0, 7, false, "is too hot"},
    {0, 6, false, "is too cold"},
    {0, 5, false, "has too high a supply voltage"},
    {0, 4, false, "has too low a supply voltage"},
    {0, 3, true, "has too high a laser current"},
    {0, 2, true, "has too low a laser current"},
    {0, 1, true, "sends too much light"},
    {0, 0, true, "sends too little light"},
    {1, 7, false, "receives too much light"},
    {1, 6, false, "receives too little light"},
};

static void look_at_diagnostics(Health *unit, uint32_t port) {
    uint8_t alarms[2] = {0, 0};
    uint32_t transmitter = BSP_LASER_ON;
    for (uint32_t i = 0; i < sizeof(alarms); ++i) {
        if (!succeeded(unit, "port", port, ioLaserAdvanceGet(port, ALARM_FLAGS + i, &alarms[i])))
            return;
    }
    if (!succeeded(unit, "port", port, ioLaserControlGet(port, &transmitter)))
        return;
    for (size_t i = 0; i < sizeof(flags) / sizeof(flags[0]); ++i) {
        const Flag *flag = &flags[i];
        const bool is_set = (alarms[flag->byte] >> flag->bit & 1) != 0;
        if (is_set && (transmitter == BSP_LASER_ON || !flag->is_transmitters))
            find(unit, WARNING, "port", port, flag->text);
    }
}

/* The library refuses ports that are no cage, so that all can be tried; only what a cage has is
 * asked. */
static void look_at_module(Health *unit, uint32_t port) {
    uint8_t monitoring = 0;
    uint32_t presence = BSP_LASER_MISSING;
    const int32_t status = ioLaserBasicGet(port, MONITORING, &monitoring);
    if (status == BSP_E_INVALID)
        return;
    if (!succeeded(unit, "port", port, ioLaserPresentGet(port, &presence)) ||
        presence != BSP_LASER_PRESENT)
        return;
    if (status != BSP_OK)
        find(unit, FAULT, "port", port, "has a module that does not answer");
    else if ((monitoring & HAS_DIAGNOSTICS) != 0)
        look_at_diagnostics(unit, port);
}

/* ---- The unit ---- */

/* The two models without fans, which also tell of their supplies in another way. */
static bool is_fanless(uint32_t device_id) {
    return device_id == 0x0109 || device_id == 0x8209;
}

static Health look(void) {
    Health unit = GOOD;
    uint32_t device_id = 0;
    if (!succeeded(&unit, "model", 0, ioDevIdGet(&device_id)))
        return unit;
    const bool has_fans = !is_fanless(device_id);
    look_at_temperature(&unit);
    if (has_fans)
        look_at_fans(&unit);
    look_at_supplies(&unit, has_fans);
    for (uint32_t port = 1; port <= MAX_PORT; ++port)
        look_at_module(&unit, port);
    return unit;
}

int main(int argc, char **argv) {
    (void)argv;
    if (argc != 1) {
        fputs("usage: health_monitor\n", stderr);
        return EXIT_COMMAND_LINE;
    }
    const Health health = look();
    const int32_t status = ioLedStateSet(0, 0, BSP_LED_SYSTEM, 0, (uint32_t)health);
    if (status != BSP_OK) {
        fprintf(stderr, "health_monitor: ioLedStateSet: status %" PRId32 "\n", status);
        return EXIT_FAILURE;
    }
    printf("system lamp: %d, %s\n", health, health_names[health]);
    return health == GOOD ? EXIT_SUCCESS : EXIT_ATTENTION;
}
