#include <dp/LUTracer.h>

#include <array>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace dp
{

namespace
{

struct SinkHolder {
    std::mutex mutex;
    std::shared_ptr<const TraceSink> sink;
    std::atomic<bool> isSet{false};
};

/// Tracing goes on while the process ends.
SinkHolder& GetSinkHolder()
{
    static SinkHolder* const s_holder = new SinkHolder;
    return *s_holder;
}

using Buffer = std::array<char, 4096>;

/// Makes room for the mark of a cut message at the end of the last whole character before it.
std::string_view MarkCut(Buffer& buffer) noexcept
{
    constexpr std::string_view kMark = "...\n";
    constexpr int kLongestCharacterTail = 3;
    std::size_t end = buffer.size() - 1 - kMark.size();
    for (int i = 0; i < kLongestCharacterTail && (static_cast<unsigned char>(buffer[end]) & 0xC0) == 0x80; ++i) {
        --end;
    }
    std::memcpy(buffer.data() + end, kMark.data(), kMark.size());
    return {buffer.data(), end + kMark.size()};
}

std::string_view LUHOST_PRINTF_LIKE(2, 0) FormatInto(Buffer& buffer, const char* format, std::va_list values) noexcept
{
    const int length = std::vsnprintf(buffer.data(), buffer.size(), format, values);
    if (length < 0) {
        return "(a message that could not be formatted)\n";
    }
    const auto size = static_cast<std::size_t>(length);
    return size < buffer.size() ? std::string_view(buffer.data(), size) : MarkCut(buffer);
}

/// Texts from documents must neither steer a terminal nor begin a line of their own.
void AppendVisible(std::string& out, std::string_view text)
{
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte >= 0x20 && byte != 0x7F) {
            out += c;
        } else {
            std::array<char, 5> escape;
            std::snprintf(escape.data(), escape.size(), "\\x%02X", unsigned{byte});
            out += escape.data();
        }
    }
}

void WriteToStandardError(const TraceMessage& message)
{
    std::string_view text = message.text;
    if (!text.empty() && text.back() == '\n') {
        text.remove_suffix(1);
    }
    std::string line(message.channel.channel);
    line += ": ";
    AppendVisible(line, text);
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
}

} // namespace

void LUTracer::Trace(TraceType type, const char* format, ...) const
{
    SinkHolder& holder = GetSinkHolder();
    const bool hasSink = holder.isSet.load(std::memory_order_relaxed);
    if (!hasSink && type < WARNING) {
        return;
    }

    Buffer buffer;
    std::va_list values;
    va_start(values, format);
    const TraceMessage message{m_channel, type, FormatInto(buffer, format, values)};
    va_end(values);

    std::shared_ptr<const TraceSink> sink;
    {
        const std::lock_guard lock(holder.mutex);
        sink = holder.sink;
    }
    if (sink) {
        (*sink)(message);
    } else if (type >= WARNING) {
        WriteToStandardError(message);
    }
}

TraceSink LUTracer::SetSink(TraceSink sink)
{
    auto replacement = sink ? std::make_shared<const TraceSink>(std::move(sink)) : nullptr;
    SinkHolder& holder = GetSinkHolder();
    std::shared_ptr<const TraceSink> before;
    {
        const std::lock_guard lock(holder.mutex);
        before = std::exchange(holder.sink, std::move(replacement));
        holder.isSet.store(holder.sink != nullptr, std::memory_order_relaxed);
    }
    return before ? *before : TraceSink();
}

} // namespace dp
