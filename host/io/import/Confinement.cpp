#include "Confinement.h"

#include "../luhost/io/ImportProcess.h"

#include <csignal>
#include <fcntl.h>
#include <linux/landlock.h>
#include <new>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace luhost::io
{

namespace
{

void Limit(__rlimit_resource resource, rlim_t soft, rlim_t hard)
{
    const rlimit limit{soft, hard};
    setrlimit(resource, &limit);
}

void ReadOnlyBelow(const std::filesystem::path& folder)
{
    constexpr std::uint64_t kReading = LANDLOCK_ACCESS_FS_READ_FILE | LANDLOCK_ACCESS_FS_READ_DIR;
    // All that the first version of the interface knows.
    constexpr std::uint64_t kAll = (LANDLOCK_ACCESS_FS_MAKE_SYM << 1U) - 1;
    landlock_ruleset_attr attributes{};
    attributes.handled_access_fs = kAll;
    const auto rules = static_cast<int>(syscall(SYS_landlock_create_ruleset, &attributes, sizeof attributes, 0));
    if (rules < 0) {
        return;
    }
    landlock_path_beneath_attr beneath{};
    beneath.allowed_access = kReading;
    beneath.parent_fd = open(folder.c_str(), O_PATH | O_CLOEXEC);
    if (beneath.parent_fd >= 0) {
        syscall(SYS_landlock_add_rule, rules, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0);
        close(beneath.parent_fd);
    }
    syscall(SYS_landlock_restrict_self, rules, 0);
    close(rules);
}

} // namespace

void Confinement::Enter() const
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_DUMPABLE, 0);
    ReadOnlyBelow(folder);
    Limit(RLIMIT_CPU, seconds, seconds + 1);
    Limit(RLIMIT_CORE, 0, 0);
    Limit(RLIMIT_FSIZE, 0, 0);
    Limit(RLIMIT_NOFILE, 64, 64);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
    Limit(RLIMIT_AS, memoryBytes, memoryBytes);
#endif
    std::set_new_handler([] { _exit(ImportProcess::kOutOfMemory); });
}

} // namespace luhost::io
