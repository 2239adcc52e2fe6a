#pragma once

/// Marks what the host library hands to plug-ins and applications. Everything else stays hidden.
#if defined(_WIN32)
#  if defined(LUHOST_BUILDING)
#    define LUHOST_API __declspec(dllexport)
#  else
#    define LUHOST_API __declspec(dllimport)
#  endif
#else
#  define LUHOST_API __attribute__((visibility("default")))
#endif

/// Lets the compiler check printf-like calls. A member function counts its object as argument 1.
#if defined(__GNUC__)
#  define LUHOST_PRINTF_LIKE(formatArgument, firstValue) __attribute__((format(printf, formatArgument, firstValue)))
#else
#  define LUHOST_PRINTF_LIKE(formatArgument, firstValue)
#endif
