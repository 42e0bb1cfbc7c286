#pragma once
// The settings of the boot loader as they lie in flash: texts in fixed slots of a block, which is
// erased and written anew for each change.

#include "iodbg/core/format.h"
#include "language/formats/boot_settings.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace iodbg {

/** A slot, and how the library reads and writes what is in it. */
struct BootSetting {
    const char *name;  // on the command line
    const char *key;   // in answers for programs
    const char *label; // for people
    formats::BootSlot slot;
    int32_t (*read)(std::string &value);
    int32_t (*write)(const std::string &value);
};

extern const std::span<const BootSetting> kBootSettings;
extern const BootSetting &kBootPassword;

/** The setting of a name; throws language::Refused for others. */
const BootSetting &bootSetting(const std::string &name);

/** The values that a setting can have, where they are few. */
std::vector<std::string> bootValueWords(const BootSetting &setting);

/** The value in the setting's own form; throws Failure for one that it cannot have. */
std::string checkBootValue(const BootSetting &setting, const std::string &value);

/** What is in the slot, behind its key; nothing when nothing is stored there. */
std::optional<std::string> storedValue(const BootSetting &setting, ByteView block);

/** The block with one setting changed, as the library should leave it. */
Bytes withValue(const BootSetting &setting, const std::string &value, Bytes block);

/** The block as it is stored; throws when it cannot be read. */
Bytes readBootBlock();

} // namespace iodbg
