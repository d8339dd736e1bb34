#pragma once

#include <QStringList>

/// The lines without those that come by the clock or from the pipe thread whatever a test does:
/// the settings dialog's failed status reads and the pipe's waiting for clients.
QStringList withoutBackground(QStringList lines);
