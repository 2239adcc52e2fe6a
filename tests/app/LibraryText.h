#pragma once

#include <string>

namespace test
{

/// Library documents for tests: one category "c", and one entry to a line where nothing else is said.

inline std::string Symbol(const std::string& id, const std::string& name, const std::string& more = "")
{
    return "<symbol id=\"" + id + "\" categoryId=\"c\" billboard=\"false\"><name>" + name + "</name><title>T</title>" +
           "<gallery_thumbnail url=\"SymbolsLibrary/2D/p_64x64.png\"/><image url=\"SymbolsLibrary/2D/p.png\"/>" + more +
           "</symbol>";
}

inline std::string Shape(const std::string& id, const std::string& name, const std::string& more = "")
{
    return "<shape id=\"" + id + "\" categoryId=\"c\"><name>" + name + "</name><title>T</title>" +
           "<gallery_thumbnail url=\"SymbolsLibrary/Shape/s_64x64.png\"/><graphic "
           "url=\"SymbolsLibrary/Shape/s.obj\"/>" +
           more + "</shape>";
}

inline std::string Category(const std::string& id, const std::string& name = "C")
{
    return "<category id=\"" + id + "\"><name>" + name + "</name><tooltip></tooltip></category>";
}

/// Categories begin at line 6, shapes at line 9, symbols at line 12, when each is one line.
inline std::string Library(const std::string& symbols, const std::string& shapes = "",
                           const std::string& categories = Category("c"))
{
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<drellin-library>\n<units>mm</units>\n"
           "<information>I</information>\n<categories>\n" +
           categories + "\n</categories>\n<shapes>\n" + shapes + "\n</shapes>\n<symbols>\n" + symbols +
           "\n</symbols>\n</drellin-library>\n";
}

} // namespace test
