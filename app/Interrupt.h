#pragma once

#include <csignal>
#include <string>

namespace lusym
{

/// What happens on Ctrl-C, when the program is asked to end, and when nobody reads its output any more.
///
/// Use: Install once at the start. Whoever makes a temporary file or folder keeps an InterruptCleanup for it; a signal
/// then deletes what is there and ends the program as the signal would have, so that the shell sees why.
///
/// *Rationale:* deleting in the handler makes Ctrl-C work at once, in the middle of a parse too; a flag would have to be
/// looked at everywhere.
///
/// Threads: signals belong to the main one. Other threads have to begin under an InterruptHold, and so never get any.
class Interrupt
{
public:
    /// Also makes a write beyond a limit of file size an error of that write, not the end of the program.
    static void Install();

    Interrupt() = delete;
};

/// Keeps signals waiting while it lives, so that making or deleting something and telling so are one step.
class InterruptHold
{
public:
    InterruptHold();
    ~InterruptHold();
    InterruptHold(const InterruptHold&) = delete;
    InterruptHold& operator=(const InterruptHold&) = delete;

private:
#if !defined(_WIN32)
    sigset_t m_before;
#endif
};

/// Names a file, or a folder with what is in it, that a signal deletes.
class InterruptCleanup
{
public:
    explicit InterruptCleanup(std::string path);
    ~InterruptCleanup();
    InterruptCleanup(const InterruptCleanup&) = delete;
    InterruptCleanup& operator=(const InterruptCleanup&) = delete;

private:
    const std::string m_path;
    std::size_t m_slot;
};

} // namespace lusym
