#pragma once

/**
 * Takes from this process, and from what it starts, the right to set the host's clock, so that a
 * seam that lets a setting through makes tests fail and nothing else.
 */
void protectHostClock();
