#pragma once

/// Has the tray icon of the calling thread added again, as if a new taskbar had come: one that the
/// shell was too busy to take is asked for once more, one that is there stays as it is.
void announceTaskbar();
