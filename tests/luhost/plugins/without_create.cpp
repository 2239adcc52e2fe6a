#include "support/PluginEntry.h"

TEST_PLUGIN_ENTRY void LUDllInit() {}

TEST_PLUGIN_ENTRY void LUDllTerminate() {}
