#pragma once

#include <filesystem>
#include <string>
#if !defined(_WIN32)
#  include <sys/stat.h>
#endif

namespace test
{

/// Links and pipes among files, for the systems where every user can make them: on Windows a link takes a right that few
/// have, and pipes lie in no folder.
#if defined(_WIN32)

inline constexpr bool kHasLinks = false;
inline constexpr const char* kDevice = "NUL";

inline void MakeLink(const std::filesystem::path&, const std::filesystem::path&) {}
inline void MakePipe(const std::string&) {}

#else

inline constexpr bool kHasLinks = true;
inline constexpr const char* kDevice = "/dev/zero";

inline void MakeLink(const std::filesystem::path& target, const std::filesystem::path& link)
{
    std::filesystem::create_symlink(target, link);
}
inline void MakePipe(const std::string& path) { ::mkfifo(path.c_str(), 0600); }

#endif

inline constexpr const char* kWhyNoLinks = "links take a right that few have on this system";

} // namespace test
