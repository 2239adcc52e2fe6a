#pragma once

#include <string>
#include <utility>

namespace lusym
{

/// The files that the demonstration makes, all in one folder, and what each is.
class DemoFiles
{
public:
    explicit DemoFiles(std::string folder) : m_folder(std::move(folder)) {}

    std::string PathOf(const std::string& name) const;

    /// To be told at the end, once the file is there.
    void Add(const std::string& name, const std::string& what);

    /// One line for each: "PATH: what it is".
    const std::string& GetText() const { return m_text; }

private:
    const std::string m_folder;
    std::string m_text;
};

} // namespace lusym
