#pragma once
// What is checked, by subject.

/** What the driver itself does, as far as the library meets it. */
void checkDriver();
void checkBootSettings();
void checkPartitions();
void checkImages();
