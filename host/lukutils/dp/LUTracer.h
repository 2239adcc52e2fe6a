#pragma once

#include <du/Export.h>

#include <functional>
#include <string_view>

namespace dp
{

/// Where a trace line comes from: two words with static life.
struct TraceChannel {
    const char* channel;
    const char* parent;
};

struct TraceMessage;

/// Receives every trace line, on the thread that traces.
using TraceSink = std::function<void(const TraceMessage&)>;

/// Writes trace lines of one channel.
///
/// Use: a short-lived local: `dp::LUTracer({"lusymbols", "root"}).Trace(dp::LUTracer::INFORMATION, "...\n")`. Every
/// message ends with a line feed. Texts from documents are "%s" arguments, never formats.
///
/// Threads and locks: every call is safe on any thread; the sink runs on the tracing thread, without a lock, and may run
/// on several threads at once.
///
/// Errors: a message is cut to 4095 bytes, between characters, and then ends in "...\n"; an embedded NUL in an argument
/// ends that argument.
///
/// Cost: with no sink set, information is dropped before it is formatted.
class LUHOST_API LUTracer
{
public:
    enum TraceType : int { INFORMATION = 0, DETAIL = 1, WARNING = 2 };

    explicit LUTracer(const TraceChannel& channel) noexcept : m_channel(channel) {}

    void Trace(TraceType type, const char* format, ...) const LUHOST_PRINTF_LIKE(3, 4);

    /// Replaces the sink; an empty one restores the default, which writes warnings to standard error, with control
    /// characters made visible, and drops everything else. A call of the old sink may still be running on another thread.
    /// @return the sink before; empty for the default
    static TraceSink SetSink(TraceSink sink);

private:
    TraceChannel m_channel;
};

struct TraceMessage {
    TraceChannel channel;
    LUTracer::TraceType type;
    std::string_view text; ///< valid during the call
};

} // namespace dp
