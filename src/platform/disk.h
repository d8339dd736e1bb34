#pragma once

/// Waits until the disk has all that was written to the open file of this number, so that it
/// outlives a power cut. False when it has not.
bool flushToDisk(int file);
