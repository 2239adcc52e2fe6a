#pragma once

#include <locale>

namespace lusym::check
{

/// Numbers are written as in "1.234,5" while it lives, by the language's streams and, where the system has such a locale, by
/// the C library.
class CommaLocale
{
public:
    CommaLocale();
    ~CommaLocale();
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    std::locale m_before;
};

} // namespace lusym::check
