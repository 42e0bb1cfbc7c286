#pragma once
// What is checked, by subject.

/** What the driver itself does, as far as the library meets it. */
void checkDriver();
void checkBootSettings();
void checkPartitions();
void checkImages();
/** What iodbg makes of it all: it reads back what the library does not. */
void checkIodbg();
