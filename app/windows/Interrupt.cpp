#include "Interrupt.h"

#include <du/FileSystem.h>

#include <array>
#include <mutex>
#include <utility>
#include <windows.h>

namespace lusym
{

namespace
{

/// Held by whoever makes or deletes something, and for good by the end of the program. It is told so on a thread of its own,
/// which may wait.
std::recursive_mutex& HoldMutex()
{
    static std::recursive_mutex* const s_mutex = new std::recursive_mutex;
    return *s_mutex;
}

using Slots = std::array<const std::string*, 16>;
constinit Slots s_paths{};

BOOL WINAPI OnEnd(DWORD)
{
    HoldMutex().lock();
    for (std::size_t slot = s_paths.size(); slot-- > 0;) {
        if (s_paths.at(slot)) {
            du::FileSystem::DeletePath(*s_paths.at(slot));
        }
    }
    // The system ends the program then.
    return FALSE;
}

} // namespace

void Interrupt::Install() { ::SetConsoleCtrlHandler(OnEnd, TRUE); }

InterruptHold::InterruptHold() { HoldMutex().lock(); }

InterruptHold::~InterruptHold() { HoldMutex().unlock(); }

InterruptCleanup::InterruptCleanup(std::string path) : m_path(std::move(path)), m_slot(s_paths.size())
{
    const std::lock_guard lock(HoldMutex());
    for (std::size_t slot = 0; slot < s_paths.size(); ++slot) {
        if (!s_paths.at(slot)) {
            s_paths.at(slot) = &m_path;
            m_slot = slot;
            return;
        }
    }
}

InterruptCleanup::~InterruptCleanup()
{
    const std::lock_guard lock(HoldMutex());
    if (m_slot < s_paths.size()) {
        s_paths.at(m_slot) = nullptr;
    }
}

} // namespace lusym
