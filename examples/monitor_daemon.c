/*
 * Watches a unit and writes a line for each thing that happens to it.
 *
 *   monitor_daemon [-i SECONDS] [-p PORTS] [-m FILE]
 *
 * It is as a management daemon is made: an event loop (epoll) that a timer wakes, and that ends on
 * SIGTERM or SIGINT; a thread of its own for what takes long, which hands its findings to the loop;
 * the library's messages kept apart from its own lines. Every SECONDS (usually 2) it looks at
 * temperature, fans, supplies, I2C bus and SFP modules, and the thread at the first PORTS PoE ports
 * (usually all). The library's messages go to FILE, or nowhere. The exit code is 0 when it was told
 * to end, 1 when it could not begin, 2 for a bad command line.
 *
 * A thing is as it is seen twice in a row: a single reading that is disturbed is no event. What is
 * not as it should be when the daemon begins is an event as well. See README.md for running it
 * without hardware.
 */

#define _GNU_SOURCE

#include <bsp.h>

#include <errno.h>
#include <fcntl.h>
#include <inttypes.h>
#include <pthread.h>
#include <signal.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <sys/timerfd.h>
#include <time.h>
#include <unistd.h>

enum { EXIT_COMMAND_LINE = 2 };
enum { USUAL_SECONDS = 2, MAX_SECONDS = 3600 };

/* Of any model; bsp.h lists what each has. */
enum { MAX_PORT = 54, MAX_FANS = 4 };

/* ---- Events ---- */

/* What was seen last, and what of it was told. */
typedef struct {
    int told;
    int seen;
} Watched;

/* Whether a thing has changed: it was seen so twice, and not told yet. */
static bool has_changed(Watched *thing, int state) {
    const bool is_new = state == thing->seen && state != thing->told;
    thing->seen = state;
    if (is_new)
        thing->told = state;
    return is_new;
}

static FILE *own_output;

/* "fan 2: stands still". A number of 0 stands for things of which there is one. */
static void tell(const char *what, uint32_t number, const char *text) {
    if (number != 0)
        fprintf(own_output, "%s %" PRIu32 ": %s\n", what, number, text);
    else
        fprintf(own_output, "%s: %s\n", what, text);
}

/* ---- The things that are quick to look at ---- */

typedef enum { NORMAL, WARM, HOT } Climate;
typedef enum { SUPPLY_GOOD, SUPPLY_FAILED, SUPPLY_MISSING } Supply;
typedef enum { CAGE_EMPTY, MODULE_GOOD, MODULE_FAULT, MODULE_SILENT } Cage;
typedef enum { ANSWERS, IS_SILENT } Contact;

/* All begin as what needs no event: turning, good, empty, answering. */
typedef struct {
    bool has_fans;
    Watched climate, bus, sensor;
    Watched fan[MAX_FANS + 1];
    Watched supply[BSP_FIXED_SUPPLIES + 1];
    Watched cage[MAX_PORT + 1];
} Unit;

/* A unit that is warm stays so until it is clearly cooler. */
static Climate climate_of(int32_t celsius, int told) {
    enum { WARM_CELSIUS = 60, HOT_CELSIUS = 75, MARGIN = 3 };
    if (celsius > HOT_CELSIUS || (told == HOT && celsius > HOT_CELSIUS - MARGIN))
        return HOT;
    if (celsius > WARM_CELSIUS || (told != NORMAL && celsius > WARM_CELSIUS - MARGIN))
        return WARM;
    return NORMAL;
}

static void look_at_temperature(Unit *unit, int32_t celsius) {
    static const char *const names[] = {"normal again", "warm", "hot"};
    char text[48];
    if (!has_changed(&unit->climate, (int)climate_of(celsius, unit->climate.told)))
        return;
    snprintf(text, sizeof(text), "%s, %" PRId32 " C", names[unit->climate.told], celsius);
    tell("temperature", 0, text);
}

static void look_at_fans(Unit *unit) {
    for (uint32_t fan = 1; unit->has_fans && fan <= MAX_FANS; ++fan) {
        uint32_t rpm = 0;
        if (ioFanSpeedGet(fan, &rpm) != BSP_OK) /* there is no such fan */
            return;
        if (has_changed(&unit->fan[fan], rpm == 0))
            tell("fan", fan, rpm == 0 ? "stands still" : "turns again");
    }
}

/* Models with fixed supplies answer the presence lines as they are: a low one is a plugged one's.
 */
static Supply look_at_supply(const Unit *unit, int32_t supply) {
    const int32_t missing = unit->has_fans ? BSP_SUPPLY_LINE_HIGH : BSP_SUPPLY_MISSING;
    int32_t line = 0, status = 0;
    if (ioPowerPresentGet(supply, &line) != BSP_OK || line == missing)
        return SUPPLY_MISSING;
    if (ioPowerStatusGet(supply, &status) != BSP_OK || status != BSP_SUPPLY_STATUS_0)
        return SUPPLY_FAILED;
    return SUPPLY_GOOD;
}

static void look_at_supplies(Unit *unit) {
    static const char *const names[] = {"good again", "failed", "not there"};
    int32_t count = 0;
    if (ioPowerNumGet(&count) != BSP_OK)
        return;
    for (int32_t supply = 1; supply <= count && supply <= BSP_FIXED_SUPPLIES; ++supply) {
        Watched *seen = &unit->supply[supply];
        if (has_changed(seen, (int)look_at_supply(unit, supply)))
            tell("supply", (uint32_t)supply, names[seen->told]);
    }
}

/* A module can be asked only while the bus works; its lines come another way. */
static Cage look_at_cage(uint32_t port, int32_t asked) {
    uint32_t presence = BSP_LASER_MISSING, fault = BSP_LASER_FAULT_NONE;
    if (ioLaserPresentGet(port, &presence) != BSP_OK || presence != BSP_LASER_PRESENT)
        return CAGE_EMPTY;
    if (asked != BSP_OK)
        return MODULE_SILENT;
    if (ioLaserTxfaultGet(port, &fault) == BSP_OK && fault == BSP_LASER_FAULT)
        return MODULE_FAULT;
    return MODULE_GOOD;
}

static void look_at_cages(Unit *unit) {
    static const char *const names[] = {"module pulled", "module plugged, works",
                                        "module has a transmit fault", "module does not answer"};
    for (uint32_t port = 1; port <= MAX_PORT; ++port) {
        uint8_t identifier = 0;
        const int32_t asked = ioLaserBasicGet(port, 0, &identifier);
        if (asked == BSP_E_INVALID) /* no cage */
            continue;
        Watched *cage = &unit->cage[port];
        if (has_changed(cage, (int)look_at_cage(port, asked)))
            tell("port", port, names[cage->told]);
    }
}

static void tell_of_contact(Watched *thing, const char *name, Contact contact) {
    if (has_changed(thing, (int)contact))
        tell(name, 0, contact == ANSWERS ? "answers again" : "does not answer");
}

/* One device that is silent is that device's matter. When two are, nothing on the bus can be asked,
 * and it would be wrong to say of each thing that it has failed. */
static void look_at_bus(Unit *unit) {
    int32_t celsius = 0;
    uint8_t byte = 0;
    const bool has_sensor = ioTemperGet(0, &celsius) == BSP_OK;
    const bool has_bus = has_sensor || bspLocalEepromRead(0, &byte, 1) == BSP_OK;
    tell_of_contact(&unit->bus, "I2C bus", has_bus ? ANSWERS : IS_SILENT);
    if (!has_bus)
        return;
    tell_of_contact(&unit->sensor, "temperature sensor", has_sensor ? ANSWERS : IS_SILENT);
    if (has_sensor)
        look_at_temperature(unit, celsius);
    look_at_cages(unit);
}

static void look_at_unit(Unit *unit) {
    look_at_fans(unit);
    look_at_supplies(unit);
    look_at_bus(unit);
}

/* ---- PoE: 200 ms and more for each port, in a thread of its own ---- */

typedef enum { PORT_IDLE, PORT_DELIVERS, PORT_FAULT } PoePort;

/* What the thread has found, for the loop, which alone writes lines. Port 0 is the controller. */
typedef struct {
    uint32_t port;
    int state;
} Finding;

typedef struct {
    pthread_t thread;
    int findings; /* where they are written to */
    uint32_t ports;
    time_t seconds;
    pthread_mutex_t mutex;
    pthread_cond_t has_ended;
    bool ends; /* under the mutex */
    Watched controller;
    Watched port[BSP_POE_PORTS_MAX + 1];
} PoeWatch;

/* A finding is written whole, being far shorter than what a pipe takes at once. */
static void report(const PoeWatch *watch, uint32_t port, int state) {
    const Finding finding = {port, state};
    while (write(watch->findings, &finding, sizeof(finding)) < 0 && errno == EINTR)
        continue;
}

static bool ends(PoeWatch *watch) {
    pthread_mutex_lock(&watch->mutex);
    const bool is_told = watch->ends;
    pthread_mutex_unlock(&watch->mutex);
    return is_told;
}

/* Waits for a point of time, or until the daemon ends. */
static void wait_until(PoeWatch *watch, const struct timespec *time) {
    int error = 0;
    pthread_mutex_lock(&watch->mutex);
    while (!watch->ends && error == 0)
        error = pthread_cond_timedwait(&watch->has_ended, &watch->mutex, time);
    pthread_mutex_unlock(&watch->mutex);
}

static PoePort state_of(const BspPoePortState *port) {
    if (port->fault == BSP_POE_FAULT)
        return PORT_FAULT;
    return port->disconnect == BSP_POE_DELIVERING ? PORT_DELIVERS : PORT_IDLE;
}

/* Whether the controller answers. */
static bool look_at_port(PoeWatch *watch, uint32_t port) {
    BspPoePortState state;
    Watched *seen = &watch->port[port];
    const bool answers = ioPoePortStateGet(port, &state) == BSP_OK;
    if (has_changed(&watch->controller, answers ? ANSWERS : IS_SILENT))
        report(watch, 0, watch->controller.told);
    if (answers && has_changed(seen, (int)state_of(&state)))
        report(watch, port, seen->told);
    return answers;
}

/* A port that looks different is looked at once more at once: the next round may be ten seconds
 * away. What is not answered ends the round: each further port would cost seconds. */
static void look_at_ports(PoeWatch *watch) {
    for (uint32_t port = 1; port <= watch->ports; ++port) {
        const Watched *seen = &watch->port[port];
        if (ends(watch) || !look_at_port(watch, port))
            return;
        if (seen->seen != seen->told && !look_at_port(watch, port))
            return;
    }
}

static void *watch_poe(void *argument) {
    PoeWatch *watch = argument;
    while (!ends(watch)) {
        struct timespec next;
        clock_gettime(CLOCK_MONOTONIC, &next);
        next.tv_sec += watch->seconds;
        look_at_ports(watch);
        wait_until(watch, &next);
    }
    return NULL;
}

static void tell_of_poe(const Finding *finding) {
    static const char *const names[] = {"delivers no power", "delivers power",
                                        "has a fault, gets no power"};
    if (finding->port == 0)
        tell("PoE controller", 0, finding->state == ANSWERS ? "answers again" : "does not answer");
    else
        tell("PoE port", finding->port, names[finding->state]);
}

static bool start_poe_watch(PoeWatch *watch) {
    pthread_condattr_t attributes;
    pthread_condattr_init(&attributes);
    pthread_condattr_setclock(&attributes, CLOCK_MONOTONIC); /* the calendar may be set */
    pthread_cond_init(&watch->has_ended, &attributes);
    pthread_condattr_destroy(&attributes);
    pthread_mutex_init(&watch->mutex, NULL);
    return pthread_create(&watch->thread, NULL, watch_poe, watch) == 0;
}

static void end_poe_watch(PoeWatch *watch) {
    pthread_mutex_lock(&watch->mutex);
    watch->ends = true;
    pthread_cond_signal(&watch->has_ended);
    pthread_mutex_unlock(&watch->mutex);
    pthread_join(watch->thread, NULL);
}

/* ---- The loop ---- */

typedef struct {
    int epoll;
    int timer;
    int signals;
    int findings;
} Loop;

static bool add_to_loop(const Loop *loop, int descriptor) {
    struct epoll_event event = {.events = EPOLLIN, .data.fd = descriptor};
    return descriptor >= 0 && epoll_ctl(loop->epoll, EPOLL_CTL_ADD, descriptor, &event) == 0;
}

/* A timer that goes off at once, and then regularly. */
static int make_timer(time_t seconds) {
    const struct itimerspec times = {.it_interval.tv_sec = seconds, .it_value.tv_nsec = 1};
    const int timer = timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC);
    if (timer >= 0 && timerfd_settime(timer, 0, &times, NULL) != 0)
        return -1;
    return timer;
}

/* The signals that end the daemon come through a descriptor. Blocked in all threads, they cut none
 * of the library's pauses short. */
static int make_signals(void) {
    sigset_t ending;
    sigemptyset(&ending);
    sigaddset(&ending, SIGTERM);
    sigaddset(&ending, SIGINT);
    if (pthread_sigmask(SIG_BLOCK, &ending, NULL) != 0)
        return -1;
    return signalfd(-1, &ending, SFD_NONBLOCK | SFD_CLOEXEC);
}

static bool make_loop(Loop *loop, PoeWatch *watch, time_t seconds) {
    int ends_of_pipe[2];
    if (pipe2(ends_of_pipe, O_CLOEXEC) != 0)
        return false;
    loop->findings = ends_of_pipe[0];
    watch->findings = ends_of_pipe[1];
    loop->epoll = epoll_create1(EPOLL_CLOEXEC);
    loop->timer = make_timer(seconds);
    loop->signals = make_signals();
    return add_to_loop(loop, loop->timer) && add_to_loop(loop, loop->signals) &&
           add_to_loop(loop, loop->findings);
}

/* Turns that were missed, since the last one took long, are not made up for. */
static void on_timer(const Loop *loop, Unit *unit) {
    uint64_t turns = 0;
    if (read(loop->timer, &turns, sizeof(turns)) == sizeof(turns))
        look_at_unit(unit);
}

static void on_finding(const Loop *loop) {
    Finding finding;
    if (read(loop->findings, &finding, sizeof(finding)) == sizeof(finding))
        tell_of_poe(&finding);
}

/* Until a signal comes. */
static void run_loop(const Loop *loop, Unit *unit) {
    for (;;) {
        struct epoll_event event;
        if (epoll_wait(loop->epoll, &event, 1, -1) != 1)
            continue;
        if (event.data.fd == loop->signals)
            return;
        if (event.data.fd == loop->timer)
            on_timer(loop, unit);
        else
            on_finding(loop);
    }
}

/* ---- The beginning ---- */

typedef struct {
    long seconds;
    long poe_ports; /* below 0: those of the model */
    const char *messages;
} Options;

static bool parse_number(const char *text, long lowest, long highest, long *number) {
    char *end = NULL;
    errno = 0;
    *number = strtol(text, &end, 10);
    return errno == 0 && end != text && *end == '\0' && *number >= lowest && *number <= highest;
}

static bool parse_options(int argc, char **argv, Options *options) {
    bool is_good = true;
    for (int option; is_good && (option = getopt(argc, argv, "i:m:p:")) != -1;) {
        if (option == 'i')
            is_good = parse_number(optarg, 1, MAX_SECONDS, &options->seconds);
        else if (option == 'p')
            is_good = parse_number(optarg, 0, BSP_POE_PORTS_MAX, &options->poe_ports);
        else if (option == 'm')
            options->messages = optarg;
        else
            is_good = false;
    }
    if (!is_good || optind != argc)
        fputs("usage: monitor_daemon [-i SECONDS] [-p PORTS] [-m FILE]\n", stderr);
    return is_good && optind == argc;
}

/* Gives the library this process's standard output, and keeps what that used to be for this
 * program. Before the first call of the library, and before there is a second thread. */
static bool keep_output_apart(const char *messages) {
    const int own = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int log = open(messages, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (own < 0 || log < 0 || dup2(log, STDOUT_FILENO) < 0)
        return false;
    close(log);
    setvbuf(stdout, NULL, _IOLBF, 0);
    own_output = fdopen(own, "w");
    return own_output != NULL && setvbuf(own_output, NULL, _IOLBF, 0) == 0;
}

/* The two models without fans, which also tell of their supplies in another way. */
static bool is_fanless(uint32_t device_id) {
    return device_id == 0x0109 || device_id == 0x8209;
}

static uint32_t poe_ports_of(uint32_t device_id) {
    if (device_id == 0x0709 || device_id == 0x8809)
        return 48;
    return device_id == 0x0809 || device_id == 0x8709 ? 24 : 0;
}

static int cannot(const char *what) {
    fprintf(stderr, "monitor_daemon: %s: %s\n", what, strerror(errno));
    return EXIT_FAILURE;
}

int main(int argc, char **argv) {
    static Unit unit;
    static PoeWatch watch;
    Options options = {USUAL_SECONDS, -1, "/dev/null"};
    Loop loop;
    uint32_t device_id = 0;

    if (!parse_options(argc, argv, &options))
        return EXIT_COMMAND_LINE;
    if (!keep_output_apart(options.messages))
        return cannot(options.messages);
    const int32_t status = ioDevIdGet(&device_id);
    if (status != BSP_OK) {
        fprintf(stderr, "monitor_daemon: ioDevIdGet: status %" PRId32 "\n", status);
        return EXIT_FAILURE;
    }
    unit.has_fans = !is_fanless(device_id);
    watch.seconds = options.seconds;
    watch.ports = options.poe_ports < 0 ? poe_ports_of(device_id) : (uint32_t)options.poe_ports;
    if (!make_loop(&loop, &watch, options.seconds))
        return cannot("the event loop cannot be made");
    if (watch.ports != 0 && !start_poe_watch(&watch))
        return cannot("no thread can be started");

    tell("monitor", 0, "begins");
    run_loop(&loop, &unit);
    if (watch.ports != 0)
        end_poe_watch(&watch);
    tell("monitor", 0, "ends");
    return EXIT_SUCCESS;
}
