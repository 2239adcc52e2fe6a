#include "Locales.h"

#include <clocale>
#include <string>

namespace lusym::check
{

namespace
{

class CommaNumbers : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

} // namespace

CommaLocale::CommaLocale() : m_before(std::locale::global(std::locale(std::locale(), new CommaNumbers)))
{
    for (const char* const name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "German"}) {
        if (std::setlocale(LC_ALL, name)) {
            return;
        }
    }
}

CommaLocale::~CommaLocale()
{
    std::locale::global(m_before);
    std::setlocale(LC_ALL, "C");
}

} // namespace lusym::check
