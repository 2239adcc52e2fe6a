#include "DemoFiles.h"

#include "Printable.h"

#include <filesystem>

namespace lusym
{

std::string DemoFiles::PathOf(const std::string& name) const { return std::filesystem::path(m_folder) / name; }

void DemoFiles::Add(const std::string& name, const std::string& what)
{
    m_text += Printable(PathOf(name)) + ": " + what + "\n";
}

} // namespace lusym
