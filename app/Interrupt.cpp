#include "Interrupt.h"

#include <array>
#include <atomic>
#include <cstdint>
#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace lusym
{

namespace
{

/// Those that end a program whose user, shell, reader or limit of time has had enough of it.
constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGPIPE, SIGXCPU};

/// What a signal deletes. A program that has more at once leaves the last ones to its destructors.
using Slots = std::array<std::atomic<const char*>, 16>;
constinit Slots s_paths{};

/// What getdents64 gives, of which the C library has no declaration.
struct FolderEntry {
    std::uint64_t inode;
    std::int64_t offset;
    unsigned short length;
    unsigned char kind;
    char name[1];
};

/// Deletes a file, or a folder with what is in it, as far down as the program's own folders go. Async-signal-safe: the
/// system is asked directly, since opendir allocates. Links are deleted themselves.
void DeleteBelow(int parent, const char* path, int depth)
{
    if (unlinkat(parent, path, 0) == 0 || unlinkat(parent, path, AT_REMOVEDIR) == 0 || depth == 0) {
        return;
    }
    const int folder = openat(parent, path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder < 0) {
        return;
    }
    alignas(FolderEntry) char buffer[4096];
    for (long size = 0; (size = syscall(SYS_getdents64, folder, buffer, sizeof buffer)) > 0;) {
        for (long at = 0; at < size;) {
            const auto* const entry = reinterpret_cast<const FolderEntry*>(buffer + at);
            const char* const name = entry->name;
            const bool isDots = name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0));
            if (!isDots) {
                DeleteBelow(folder, name, depth - 1);
            }
            at += entry->length;
        }
    }
    close(folder);
    unlinkat(parent, path, AT_REMOVEDIR);
}

/// Async-signal-safe: nothing but atomics, calls to the system and the signal itself.
void OnSignal(int signalNumber)
{
    constexpr int kDepth = 5;
    for (std::size_t slot = s_paths.size(); slot-- > 0;) {
        if (const char* const path = s_paths[slot].load()) {
            DeleteBelow(AT_FDCWD, path, kDepth);
        }
    }
    std::signal(signalNumber, SIG_DFL);
    std::raise(signalNumber);
}

bool IsIgnored(int signalNumber)
{
    struct sigaction before {
    };
    return sigaction(signalNumber, nullptr, &before) == 0 && before.sa_handler == SIG_IGN;
}

} // namespace

void Interrupt::Install()
{
    struct sigaction action {
    };
    action.sa_handler = OnSignal;
    sigemptyset(&action.sa_mask);
    for (const int signalNumber : kSignals) {
        sigaddset(&action.sa_mask, signalNumber);
    }
    for (const int signalNumber : kSignals) {
        // Under nohup and in the background of a script a signal stays ignored.
        if (!IsIgnored(signalNumber)) {
            sigaction(signalNumber, &action, nullptr);
        }
    }
    std::signal(SIGXFSZ, SIG_IGN);
}

InterruptHold::InterruptHold()
{
    sigset_t held;
    sigemptyset(&held);
    for (const int signalNumber : kSignals) {
        sigaddset(&held, signalNumber);
    }
    pthread_sigmask(SIG_BLOCK, &held, &m_before);
}

InterruptHold::~InterruptHold() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

InterruptCleanup::InterruptCleanup(std::string path) : m_path(std::move(path)), m_slot(s_paths.size())
{
    for (std::size_t slot = 0; slot < s_paths.size(); ++slot) {
        const char* expected = nullptr;
        if (s_paths[slot].compare_exchange_strong(expected, m_path.c_str())) {
            m_slot = slot;
            return;
        }
    }
}

InterruptCleanup::~InterruptCleanup()
{
    if (m_slot < s_paths.size()) {
        s_paths[m_slot].store(nullptr);
    }
}

} // namespace lusym
