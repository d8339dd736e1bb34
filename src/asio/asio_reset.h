#pragma once

/// Asks the ASIO driver to reset its stream, so that changed settings take effect: one byte on its
/// pipe. A driver that is absent or busy misses it; every failure is only logged. May block as
/// long as the driver's pipe takes to accept the byte, or until the program is told to end.
void sendAsioReset();
