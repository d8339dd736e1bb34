#pragma once

/// The reaches of the tray menu beyond the application. Both block the GUI thread.
namespace DesktopHelpers {

/// Opens the Windows sound control panel; a warning box tells of a failure.
void openSoundPanel();

/// Restarts Explorer, so that the notification area and the audio devices are listed anew. Waits
/// up to 5000 ms; failures are only logged.
void restartExplorer();

} // namespace DesktopHelpers
