#pragma once
// Files and contents that the checks work with.

#include "tests/kernel_driver/check.h"

/** The whole content; empty for a missing file. */
Bytes readFile(const std::string &path);
void writeFile(const std::string &path, const Bytes &content);
bool exists(const std::string &path);

/** Bytes that differ from page to page, and with the seed. */
Bytes patterned(size_t size, uint32_t seed = 1);
/** Bytes as an erase leaves them. */
Bytes erased(size_t size);
Bytes part(const Bytes &bytes, size_t offset, size_t length);
/** A content with zeros behind it up to the end of a page. */
Bytes paddedToPage(Bytes content, uint8_t padding = 0);
/** What becomes of a content that is programmed over another: bits are only cleared. */
Bytes bothProgrammed(const Bytes &first, const Bytes &second);
Bytes joined(std::initializer_list<Bytes> pieces);
/** A page with boot settings, as a boot loader writes it. */
Bytes settingsPage();
