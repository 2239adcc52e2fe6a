#pragma once

/// Marks the entry points of plug-ins made for tests.
#if defined(_WIN32)
#  define TEST_PLUGIN_ENTRY extern "C" __declspec(dllexport)
#else
#  define TEST_PLUGIN_ENTRY extern "C" __attribute__((visibility("default")))
#endif
