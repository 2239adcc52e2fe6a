#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace lusym
{

/// Tells on stderr how far the work is: one line that is rewritten where stderr is a terminal, JSON lines when asked for,
/// otherwise nothing.
///
/// Messages go through Tell, which takes the line away first.
class Progress
{
public:
    enum class Mode { Automatic, Json, Off };

    explicit Progress(Mode mode = Mode::Off) { SetMode(mode); }
    ~Progress() { Clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void SetMode(Mode mode);

    /// @param done steps that are behind us, of `total`; a total of 0 is one that nobody knows
    void Step(std::string_view what, std::size_t done = 0, std::size_t total = 0);

    /// A message on stderr, with its line feed.
    void Tell(std::string_view message);

    /// Takes the line away, before something is written to the same terminal.
    void Clear();

private:
    enum class Form { None, Line, Json };

    Form m_form = Form::None;
    bool m_isLineShown = false;
};

} // namespace lusym
