#include "platform/own_plugins.h"

OwnPlugins::OwnPlugins() = default;
OwnPlugins::~OwnPlugins() = default;
