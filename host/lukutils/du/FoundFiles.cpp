#include <du/FoundFiles.h>

namespace du
{

namespace
{

constinit thread_local FoundFiles* t_foundFiles = nullptr;

} // namespace

FoundFiles::FoundFiles() noexcept : m_isOutermost(t_foundFiles == nullptr)
{
    if (m_isOutermost) {
        t_foundFiles = this;
    }
}

FoundFiles::~FoundFiles()
{
    if (m_isOutermost) {
        t_foundFiles = nullptr;
    }
}

bool FoundFiles::Has(const std::string& path) { return t_foundFiles && t_foundFiles->m_paths.contains(path); }

void FoundFiles::Add(const std::string& path)
{
    if (t_foundFiles) {
        t_foundFiles->m_paths.insert(path);
    }
}

void FoundFiles::Forget() noexcept
{
    if (t_foundFiles) {
        t_foundFiles->m_paths.clear();
    }
}

} // namespace du
