#pragma once

/// Asks the ASIO driver to reset its stream, so that changed settings take effect: one byte on its
/// pipe. A driver that is absent or busy misses it; every failure is only logged. Blocks until
/// the driver's pipe has accepted the byte, for two seconds at the most.
void sendAsioReset();
