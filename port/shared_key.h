#pragma once

#include <sys/types.h>

/// The key by which programs find the shared memory or the semaphore that belongs to a file, made
/// from the numbers of the file and its device: another one for each file of a disk. The toolkit
/// gets it, since this program's ftok() is called in place of the C library's, which knows only the
/// lower 16 bits of a file's number: copies of the panel with temporary folders of their own would
/// now and then take each other's marks for theirs. Any thread.
key_t sharedKey(dev_t device, ino_t file);
