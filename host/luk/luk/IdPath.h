#pragma once

#include <du/Symbol.h>

#include <string>

namespace luk
{

/// How id paths are made; for the sources of the host alone. The root of a tree is "/", what is below it "/a" and "/a/b".
class IdPath
{
public:
    static const du::Symbol& GetRoot()
    {
        static const du::Symbol s_root("/");
        return s_root;
    }

    static bool IsComponent(const du::Symbol& id) noexcept
    {
        return !id.IsEmpty() && id.GetText().find('/') == std::string::npos;
    }

    static std::string Join(const du::Symbol& parentPath, const du::Symbol& id)
    {
        std::string path;
        path.reserve(parentPath.GetText().size() + 1 + id.GetText().size());
        if (!(parentPath == GetRoot())) {
            path = parentPath.GetText();
        }
        return path.append(1, '/').append(id.GetText());
    }

    IdPath() = delete;
};

} // namespace luk
