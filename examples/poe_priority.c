/*
 * Shares a power budget among PoE ports in the order of their importance.
 *
 *   poe_priority BUDGET_WATTS PORT=PRIORITY...
 *
 * Priority 1 is the most important one; of equally important ports the lower number comes first.
 * The program looks at the ports once, does what the policy asks for, prints one line per decision
 * and ends; a management daemon would do the same from time to time. What ports draw that the
 * policy does not name counts against the budget, but they are left alone.
 *
 * It shows how a program talks to the library: include bsp.h, call io* functions, look at every
 * status. See README.md for running it without hardware.
 */

#define _POSIX_C_SOURCE 200809L /* sleep() */

#include <bsp.h>

#include <inttypes.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

enum { EXIT_COMMAND_LINE = 2 };

enum { MAX_PRIORITY = 99, MAX_WATTS = 6000 };

/* Codes of the controller's that ioPoePortDetectionGet answers. */
enum { DETECTED_LEGACY = 2, DETECTED_OK = 4 };

/* Detection, classification and power-up of a port are over in that time. */
enum { SETTLE_SECONDS = 1 };

typedef enum { NO_DEVICE, WAITING, DELIVERING, FAULTY } State;

typedef struct {
    uint32_t number;
    uint32_t priority;
    State state;
    uint32_t power_class;
    uint32_t need; /* milliwatts: what it draws, or may draw once it is on */
    bool gave_up;  /* power was switched on in vain */
    bool granted;
} Port;

typedef struct {
    uint32_t budget; /* milliwatts */
    size_t count;
    Port port[BSP_POE_PORTS_MAX]; /* the most important one first */
} Policy;

/* ---- Messages ---- */

static const char *meaning(int32_t status) {
    switch (status) {
    case BSP_E_POE_UNAVAILABLE:
        return "no PoE controller, or it has no usable firmware";
    case BSP_E_POE_INVALID:
        return "argument out of range";
    case BSP_E_POE_WRITE:
    case BSP_E_POE_READ:
        return "the PoE controller cannot be reached";
    case BSP_E_POE_FRAME:
        return "the PoE controller does not answer";
    default:
        return "see BspStatus in bsp.h";
    }
}

/* Whether a call succeeded; says so if not. Port 0 stands for calls that concern no port. */
static bool succeeded(const char *call, uint32_t port, int32_t status) {
    if (status == BSP_OK)
        return true;
    fprintf(stderr, "poe_priority: %s", call);
    if (port != 0)
        fprintf(stderr, " for port %" PRIu32, port);
    fprintf(stderr, ": status %" PRId32 " (%s)\n", status, meaning(status));
    return false;
}

static double watts(uint32_t milliwatts) {
    return milliwatts / 1000.0;
}

/* ---- The command line ---- */

/* A whole number from 1 to max, followed by the character `end`. */
static bool parse_number(const char *text, uint32_t max, char end, uint32_t *number,
                         const char **rest) {
    if (*text < '0' || *text > '9') /* strtoul would take blanks and signs */
        return false;
    char *behind = NULL;
    const unsigned long value = strtoul(text, &behind, 10);
    if (*behind != end || value < 1 || value > max)
        return false;
    *number = (uint32_t)value;
    *rest = behind + 1;
    return true;
}

static bool parse_port(const char *word, Policy *policy) {
    Port port = {0};
    const char *rest = word;
    if (!parse_number(rest, BSP_POE_PORTS_MAX, '=', &port.number, &rest) ||
        !parse_number(rest, MAX_PRIORITY, '\0', &port.priority, &rest)) {
        fprintf(stderr, "poe_priority: '%s' is not PORT=PRIORITY (1 to %d, 1 to %d)\n", word,
                BSP_POE_PORTS_MAX, MAX_PRIORITY);
        return false;
    }
    for (size_t i = 0; i < policy->count; ++i) {
        if (policy->port[i].number == port.number) {
            fprintf(stderr, "poe_priority: port %" PRIu32 " is named twice\n", port.number);
            return false;
        }
    }
    policy->port[policy->count++] = port; /* no port twice, so there is room */
    return true;
}

static int compare_ports(const void *left, const void *right) {
    const Port *a = left, *b = right;
    if (a->priority != b->priority)
        return a->priority < b->priority ? -1 : 1;
    return a->number < b->number ? -1 : 1;
}

static bool parse_policy(int argc, char **argv, Policy *policy) {
    if (argc < 3) {
        fputs("usage: poe_priority BUDGET_WATTS PORT=PRIORITY...\n", stderr);
        return false;
    }
    uint32_t budget_watts = 0;
    const char *rest = NULL;
    if (!parse_number(argv[1], MAX_WATTS, '\0', &budget_watts, &rest)) {
        fprintf(stderr, "poe_priority: a budget is 1 to %d watts, not '%s'\n", MAX_WATTS, argv[1]);
        return false;
    }
    policy->budget = budget_watts * 1000;
    for (int i = 2; i < argc; ++i) {
        if (!parse_port(argv[i], policy))
            return false;
    }
    qsort(policy->port, policy->count, sizeof(policy->port[0]), compare_ports);
    return true;
}

/* ---- Getting ready ---- */

static bool initialise(bool *is_fresh) {
    uint32_t is_initialised = 0;
    if (!succeeded("ioPoeInitStatusGet", 0, ioPoeInitStatusGet(&is_initialised)))
        return false;
    *is_fresh = is_initialised == 0;
    if (!*is_fresh)
        return true;
    puts("controller: not initialised yet, which takes a minute");
    fflush(stdout);
    return succeeded("ioPoeDeviceInit", 0, ioPoeDeviceInit());
}

/*
 * Lets a port wait for this program's command. After an initialisation ports power up by
 * themselves; nobody has come to rely on that yet, so it is taken back and the policy decides from
 * the start.
 */
static bool take_over(const Port *port, bool is_fresh) {
    uint32_t mode = 0;
    if (!succeeded("ioPoePortModeGet", port->number, ioPoePortModeGet(port->number, &mode)))
        return false;
    if (mode != BSP_POE_MODE_1 && !succeeded("ioPoePortModeSet", port->number,
                                             ioPoePortModeSet(port->number, BSP_POE_MODE_1)))
        return false;
    return !is_fresh || succeeded("ioPoePortPowerOnSet", port->number,
                                  ioPoePortPowerOnSet(port->number, BSP_POE_OFF));
}

static bool get_ready(const Policy *policy) {
    bool is_fresh = false;
    if (!initialise(&is_fresh))
        return false;
    for (size_t i = 0; i < policy->count; ++i) {
        if (!take_over(&policy->port[i], is_fresh))
            return false;
    }
    sleep(SETTLE_SECONDS);
    return true;
}

/* ---- Looking ---- */

/* What a device may draw at most, by its class; unknown ones count as class 3. */
static uint32_t class_power(uint32_t power_class) {
    static const uint32_t milliwatts[] = {15400, 4000,  7000,  15400, 30000,
                                          45000, 60000, 75000, 90000};
    return milliwatts[power_class <= 8 ? power_class : 0];
}

static bool look_at_device(Port *port) {
    uint32_t detection = 0;
    if (!succeeded("ioPoePortDetectionGet", port->number,
                   ioPoePortDetectionGet(port->number, &detection)))
        return false;
    if (detection != DETECTED_OK && detection != DETECTED_LEGACY)
        return true;
    port->state = WAITING;
    if (!succeeded("ioPoePortClassificationGet", port->number,
                   ioPoePortClassificationGet(port->number, &port->power_class)))
        return false;
    port->need = class_power(port->power_class);
    return true;
}

static bool look_at(Port *port) {
    uint32_t fault = 0, delivery = 0;
    port->state = NO_DEVICE;
    port->need = 0;
    if (!succeeded("ioPoePortFaultGet", port->number, ioPoePortFaultGet(port->number, &fault)) ||
        !succeeded("ioPoePortDisconnectGet", port->number,
                   ioPoePortDisconnectGet(port->number, &delivery)))
        return false;
    if (fault == BSP_POE_FAULT) {
        port->state = FAULTY;
        return true;
    }
    if (delivery != BSP_POE_DELIVERING)
        return look_at_device(port);
    port->state = DELIVERING;
    return succeeded("ioPoePortPowerGet", port->number,
                     ioPoePortPowerGet(port->number, &port->need));
}

/* Looks at all ports of the policy, and at what all others draw together. */
static bool look(Policy *policy, uint32_t *drawn_by_others) {
    uint32_t total = 0, drawn = 0;
    for (size_t i = 0; i < policy->count; ++i) {
        if (!look_at(&policy->port[i]))
            return false;
        if (policy->port[i].state == DELIVERING)
            drawn += policy->port[i].need;
    }
    if (!succeeded("ioPoeGlobalPowerGet", 0, ioPoeGlobalPowerGet(&total)))
        return false;
    *drawn_by_others = total > drawn ? total - drawn : 0; /* readings are never of one moment */
    return true;
}

/* ---- Deciding ---- */

/* Gives each port what it needs while the budget lasts, the most important one first. */
static void decide(Policy *policy, uint32_t drawn_by_others) {
    uint32_t sum = drawn_by_others;
    for (size_t i = 0; i < policy->count; ++i) {
        Port *port = &policy->port[i];
        const bool is_candidate =
            port->state == DELIVERING || (port->state == WAITING && !port->gave_up);
        port->granted = is_candidate && sum + port->need <= policy->budget;
        if (port->granted)
            sum += port->need;
    }
}

/* ---- Acting ---- */

static bool switch_port(const Port *port, uint32_t power) {
    printf("port %" PRIu32 ": priority %" PRIu32 ", %s %.1f W: switched %s\n", port->number,
           port->priority, port->state == DELIVERING ? "draws" : "may draw", watts(port->need),
           power == BSP_POE_ON ? "on" : "off");
    return succeeded("ioPoePortPowerOnSet", port->number, ioPoePortPowerOnSet(port->number, power));
}

/* Frees power first, from the least important port up, and then uses it. */
static bool act(Policy *policy, bool *has_acted) {
    *has_acted = false;
    for (size_t i = policy->count; i-- > 0;) {
        const Port *port = &policy->port[i];
        if (port->state != DELIVERING || port->granted)
            continue;
        *has_acted = true;
        if (!switch_port(port, BSP_POE_OFF))
            return false;
    }
    for (size_t i = 0; i < policy->count; ++i) {
        Port *port = &policy->port[i];
        if (port->state != WAITING || !port->granted)
            continue;
        *has_acted = true;
        port->gave_up = true; /* until it is seen to deliver, and then it does not matter */
        if (!switch_port(port, BSP_POE_ON))
            return false;
    }
    if (*has_acted)
        sleep(SETTLE_SECONDS);
    return true;
}

static const char *verdict(const Port *port) {
    switch (port->state) {
    case DELIVERING:
        return "stays on";
    case WAITING:
        return port->gave_up ? "stays off, did not power up" : "stays off, over budget";
    case FAULTY:
        return "left alone, has a fault";
    case NO_DEVICE:
        break;
    }
    return "no device";
}

static void report(const Policy *policy, uint32_t drawn_by_others) {
    uint32_t total = drawn_by_others;
    for (size_t i = 0; i < policy->count; ++i) {
        const Port *port = &policy->port[i];
        printf("port %" PRIu32 ": priority %" PRIu32, port->number, port->priority);
        if (port->state == DELIVERING || port->state == WAITING)
            printf(", %s %.1f W", port->state == DELIVERING ? "draws" : "may draw",
                   watts(port->need));
        printf(": %s\n", verdict(port));
        if (port->state == DELIVERING)
            total += port->need;
    }
    printf("total: %.1f of %.1f W\n", watts(total), watts(policy->budget));
}

/*
 * Devices draw less than their class entitles them to, which is only seen once they are on. So the
 * ports are looked at again after every change, and what is left over goes to the next in line.
 */
static bool apply(Policy *policy) {
    uint32_t drawn_by_others = 0;
    bool has_acted = true;
    for (size_t round = 0; has_acted && round <= policy->count; ++round) {
        if (!look(policy, &drawn_by_others))
            return false;
        decide(policy, drawn_by_others);
        if (!act(policy, &has_acted))
            return false;
    }
    if (has_acted && !look(policy, &drawn_by_others))
        return false;
    report(policy, drawn_by_others);
    return true;
}

int main(int argc, char **argv) {
    Policy policy = {0};
    if (!parse_policy(argc, argv, &policy))
        return EXIT_COMMAND_LINE;
    return get_ready(&policy) && apply(&policy) ? EXIT_SUCCESS : EXIT_FAILURE;
}
