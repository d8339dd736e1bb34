#pragma once

#include <string>

/// The private folder in which devices and pipes are sockets: the environment variable
/// QUORVEL_RUNTIME_DIR, else $XDG_RUNTIME_DIR/quorvel, else /tmp/quorvel-<user number>.
std::string runtimeFolder();

/// True when the folder exists, is a real folder and belongs to this user alone.
bool runtimeFolderIsPrivate();

/// Creates the folder (mode 0700) and `part` in it if they are missing. False when that fails or
/// the folder is not private.
bool createRuntimeFolder(const std::string& part);
