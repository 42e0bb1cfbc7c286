#pragma once
// What `iodbg metrics` tells monitoring systems: these names stay.

#include <cstdint>

namespace iodbg {

constexpr char kMetricPrefix[] = "switch_";

/** A metric, and where it is among the readings. Rows of one name stand together. */
struct Metric {
    const char *name; // behind the prefix
    const char *unit; // a base unit, which is the end of the name; empty: a count, a state, a flag
    const char *part; // of the readings; '#' stands for a number, which is the first label's value
    const char *key;  // of its value there; empty: the labels are what it tells, its value is 1
    // Keys beside it, by which samples are told apart; one with '=' has a value of its own.
    const char *labels;
    int decimals; // of the reading's unit: 3 where it is in thousandths
    const char *help;
};

constexpr Metric kMetrics[] = {
    {"info", "", "board", "",
     "device_id,device_serial_version,hardware_version,cpld_version,fpga_version,"
     "boot_loader_version,serial_number,base_mac,board_mac",
     0, "Identity and versions of the unit"},
    {"software_info", "", "software", "", "iodbg,library", 0,
     "Versions of the program and of the library that have read the unit"},

    {"readings_duration_seconds", "seconds", "readings", "duration_ms", "", 3,
     "How long reading the unit took"},
    {"readings_failed", "", "readings", "failed", "", 0, "How many readings failed"},
    {"reading_failed", "", "failures", "", "item,status,name", 0,
     "A reading that failed, with the library's status"},

    {"findings", "", "counts", "count", "severity", 0,
     "How many things were found by 'iodbg check', by severity"},
    {"finding", "", "found", "count", "code,severity,unit,index", 0,
     "What 'iodbg check' has found that is not good, and how often"},
    {"verdict", "", "verdicts", "verdict", "unit,index", 0,
     "The judgement of each part: 0 good, 1 not judged, 2 warning, 3 fault"},

    {"record_magic_valid", "", "record", "magic_ok", "", 0,
     "Whether the product record has its magic number"},
    {"record_crc_valid", "", "record", "crc_ok", "", 0,
     "Whether the product record's CRC is right"},

    {"temperature_celsius", "celsius", "climate", "temperature_c", "", 0,
     "Temperature of the board"},
    {"temperature_limit_celsius", "celsius", "limits", "celsius", "code", 0,
     "Beyond which temperature there is a finding of this code"},
    {"fan_level", "", "climate", "fan_level", "", 0, "The fans' common level, 1 to 10"},
    {"fan_present", "", "fans", "present", "fan", 0, "Whether a fan is there"},
    {"fan_speed_rpm", "rpm", "fans", "speed_rpm", "fan", 0, "Speed of a fan"},

    {"clock_valid", "", "clock", "valid", "", 0, "Whether the clock chip holds a time"},
    {"clock_difference_seconds", "seconds", "clock", "drift_s", "", 0,
     "How far the clock chip is ahead of the system clock"},
    {"watchdog_period", "", "watchdog", "period", "", 0,
     "The watchdog's period in the CPLD's units; 0: it is not armed"},

    {"supply_plugged", "", "supply#", "plugged", "supply", 0, "Whether a supply is plugged"},
    {"supply_status", "", "supply#", "status", "supply", 0,
     "What a supply's lines tell; 0: it works"},
    {"supply_type", "", "supply#", "type", "supply", 0, "The library's number of a supply's type"},
    {"supply_input_volts", "volts", "supply#", "input_voltage_mv", "supply", 3,
     "Input voltage of a supply"},
    {"supply_input_amperes", "amperes", "supply#", "input_current_ma", "supply", 3,
     "Input current of a supply"},
    {"supply_input_watts", "watts", "supply#", "input_power_mw", "supply", 3,
     "Input power of a supply"},
    {"supply_output_volts", "volts", "supply#", "output_voltage_mv", "supply", 3,
     "Output voltage of a supply"},
    {"supply_output_amperes", "amperes", "supply#", "output_current_ma", "supply", 3,
     "Output current of a supply"},
    {"supply_output_watts", "watts", "supply#", "output_power_mw", "supply", 3,
     "Output power of a supply"},
    {"supply_temperature_celsius", "celsius", "supply#", "temperature1_c", "supply,sensor=1", 0,
     "Temperatures of a supply"},
    {"supply_temperature_celsius", "celsius", "supply#", "temperature2_c", "supply,sensor=2", 0,
     ""},
    {"supply_temperature_celsius", "celsius", "supply#", "temperature3_c", "supply,sensor=3", 0,
     ""},

    {"poe_controller_present", "", "poe", "controller_present", "", 0,
     "Whether the PoE controller is there"},
    {"poe_firmware_status", "", "poe", "application_status", "", 0,
     "What the last upgrade of the PoE firmware left: 0 usable, 1 not initialised since, 2 failed"},
    {"poe_firmware_info", "", "poe", "", "application_version", 0,
     "Version of the PoE controller's firmware"},
    {"poe_initialised", "", "poe", "initialised", "", 0,
     "Whether the PoE controller is initialised"},
    {"poe_budget_watts", "watts", "poe", "budget_mw", "", 3, "Power budget of all PoE ports"},
    {"poe_drawn_watts", "watts", "poe", "drawn_mw", "", 3, "Power that all PoE ports draw"},
    {"poe_rated_watts", "watts", "poe", "rated_per_supply_mw", "", 3,
     "Power for PoE that each supply is rated for"},
    {"poe_port_mode", "", "ports", "", "port,mode", 0, "The mode of a PoE port"},
    {"poe_port_delivering", "", "ports", "delivering", "port", 0,
     "Whether a PoE port delivers power"},
    {"poe_port_fault", "", "ports", "fault", "port", 0, "Whether a PoE port has a fault"},
    {"poe_port_detection", "", "ports", "detection", "port", 0,
     "The controller's code of what is plugged into a PoE port"},
    {"poe_port_class", "", "ports", "class", "port", 0,
     "The library's code of the class of what is plugged into a PoE port"},
    {"poe_port_priority", "", "ports", "priority", "port", 0,
     "The priority of a PoE port; 1 is the most important, 0 above that"},
    {"poe_port_limit_watts", "watts", "ports", "limit_mw", "port", 3,
     "How much power a PoE port may deliver"},
    {"poe_port_volts", "volts", "ports", "voltage_v", "port", 0,
     "Voltage of a PoE port that delivers power"},
    {"poe_port_amperes", "amperes", "ports", "current_ma", "port", 3,
     "Current of a PoE port that delivers power"},
    {"poe_port_watts", "watts", "ports", "power_mw", "port", 3,
     "Power of a PoE port that delivers power"},

    {"sfp_present", "", "cages", "present", "port", 0, "Whether an SFP cage has a module"},
    {"sfp_transmitter_on", "", "cages", "transmitter_on", "port", 0,
     "Whether the transmitter of an SFP cage is switched on"},
    {"sfp_signal_lost", "", "cages", "rx_loss", "port", 0,
     "Whether the loss-of-signal line of an SFP cage is set"},
    {"sfp_transmitter_fault", "", "cages", "tx_fault", "port", 0,
     "Whether the transmitter-fault line of an SFP cage is set"},
    {"sfp_module_info", "", "cages", "", "port,compliance,vendor,part_number", 0,
     "The module in an SFP cage"},
    {"sfp_temperature_celsius", "celsius", "modules", "temperature_mc", "port", 3,
     "Temperature of an SFP module"},
    {"sfp_supply_volts", "volts", "modules", "supply_voltage_uv", "port", 6,
     "Supply voltage of an SFP module"},
    {"sfp_bias_amperes", "amperes", "modules", "bias_current_ua", "port", 6,
     "Bias current of an SFP module's laser"},
    {"sfp_transmitted_watts", "watts", "modules", "tx_power_nw", "port", 9,
     "Light that an SFP module sends"},
    {"sfp_received_watts", "watts", "modules", "rx_power_nw", "port", 9,
     "Light that an SFP module receives"},
    {"sfp_beyond_limit", "", "alarms", "", "port,quantity,judgement", 0,
     "A measurement of an SFP module that is beyond a limit, by the module's own judgement"},

    {"flash_partition_bytes", "bytes", "partitions", "size_bytes", "device", 0,
     "Size of a flash partition"},
    {"flash_block_bytes", "bytes", "partitions", "block_bytes", "device", 0,
     "Size of a flash partition's erase blocks"},
    {"flash_bad_blocks", "", "partitions", "bad_blocks", "device", 0,
     "How many blocks of a flash partition are marked bad"},
};

} // namespace iodbg
