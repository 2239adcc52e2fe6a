#include <luk/Anchor.h>

#include <string>
#include <string_view>

namespace luk
{

namespace
{

/// The characters are those that any of our systems gives a meaning to, since documents travel between them.
bool IsSingleComponent(std::string_view file)
{
    using namespace std::string_view_literals;
    return !file.empty() && file != "." && file != ".." && file.find_first_of("/\\:\0"sv) == std::string_view::npos;
}

} // namespace

Anchor::Anchor(const du::Symbol& folder) : m_folder(folder) {}

Anchor::~Anchor() = default;

bool Anchor::GetURLForFileSource(const du::Symbol& file, du::Symbol& url, bool asUrl) const
{
    if (m_folder.IsEmpty() || !IsSingleComponent(file.GetText())) {
        return false;
    }
    url = du::Symbol((asUrl ? "file:///" : "") + m_folder.GetText() + "/Symbols/" + file.GetText());
    return true;
}

} // namespace luk
