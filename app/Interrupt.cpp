#include "Interrupt.h"

#include <array>
#include <atomic>
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

/// Async-signal-safe: nothing but atomics, unlink, rmdir and the signal itself.
void OnSignal(int signalNumber)
{
    for (std::size_t slot = s_paths.size(); slot-- > 0;) {
        const char* const path = s_paths[slot].load();
        if (path && unlink(path) != 0) {
            rmdir(path);
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
    sigprocmask(SIG_BLOCK, &held, &m_before);
}

InterruptHold::~InterruptHold() { sigprocmask(SIG_SETMASK, &m_before, nullptr); }

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
