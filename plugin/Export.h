#pragma once

/// Marks what the plug-in hands to its host: the entry points and the public classes. Everything else stays hidden,
/// and what stands inside a class that is shown is marked as hidden.
#if defined(_WIN32)
#  if defined(LUSYMBOLS_BUILDING)
#    define LUSYMBOLS_API __declspec(dllexport)
#  else
#    define LUSYMBOLS_API __declspec(dllimport)
#  endif
#  define LUSYMBOLS_LOCAL
#else
#  define LUSYMBOLS_API __attribute__((visibility("default")))
#  define LUSYMBOLS_LOCAL __attribute__((visibility("hidden")))
#endif
