#include <dp/LUTracer.h>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace
{

using dp::LUTracer;

constexpr dp::TraceChannel kChannel{"symbol3d", "symbol2d"};

/// Collects what one scope traces.
class Collector
{
public:
    Collector()
        : m_before(LUTracer::SetSink([this](const dp::TraceMessage& message) {
              lines.push_back(std::string(message.channel.parent) + '/' + message.channel.channel + ' ' +
                              std::to_string(message.type) + ' ' + std::string(message.text));
          }))
    {
    }
    ~Collector() { LUTracer::SetSink(m_before); }

    std::vector<std::string> lines;

private:
    dp::TraceSink m_before;
};

TEST(LUTracer, TheSinkReceivesChannelTypeAndText)
{
    Collector outer;
    {
        const Collector inner;
        LUTracer(kChannel).Trace(LUTracer::WARNING, "key %s, %d\n", "%n%s%1000000d", 3);
        LUTracer({"lusymbols", "root"}).Trace(LUTracer::INFORMATION, "made\n");
        EXPECT_EQ(inner.lines,
                  (std::vector<std::string>{"symbol2d/symbol3d 2 key %n%s%1000000d, 3\n", "root/lusymbols 0 made\n"}));
    }
    LUTracer(kChannel).Trace(LUTracer::INFORMATION, "restored\n");
    EXPECT_EQ(outer.lines, (std::vector<std::string>{"symbol2d/symbol3d 0 restored\n"}));
}

TEST(LUTracer, LongMessagesAreCutBetweenCharacters)
{
    const Collector collector;
    const std::string prefix = "symbol2d/symbol3d 2 ";
    for (const std::string unit : {"x", "\xC3\xA4", "\xE2\x82\xAC", "\xF0\x9F\x98\x80", "\x80"}) {
        for (std::size_t shift = 0; shift < 4; ++shift) {
            std::string text(shift, '-');
            while (text.size() < 200000) {
                text += unit;
            }
            LUTracer(kChannel).Trace(LUTracer::WARNING, "%s\n", text.c_str());
            const std::string line = collector.lines.back().substr(prefix.size());
            ASSERT_LE(line.size(), 4095U);
            EXPECT_GE(line.size(), 4092U);
            const std::size_t kept = line.size() - 4;
            EXPECT_EQ(line, text.substr(0, kept) + "...\n");
            EXPECT_EQ((kept - shift) % unit.size(), 0U) << unit;
        }
    }
    const std::string fits(4094, 'x');
    LUTracer(kChannel).Trace(LUTracer::WARNING, "%s\n", fits.c_str());
    EXPECT_EQ(collector.lines.back(), prefix + fits + "\n");
}

TEST(LUTracer, WithoutASinkWarningsGoToStandardErrorMadeVisible)
{
    const dp::TraceSink before = LUTracer::SetSink({});
    testing::internal::CaptureStderr();
    LUTracer(kChannel).Trace(LUTracer::INFORMATION, "dropped\n");
    LUTracer(kChannel).Trace(LUTracer::DETAIL, "dropped\n");
    LUTracer(kChannel).Trace(LUTracer::WARNING, "%s\n", "\x1B[2Jforged\nline \xC3\xA4\x7F");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "symbol3d: \\x1B[2Jforged\\x0Aline \xC3\xA4\\x7F\n");
    LUTracer::SetSink(before);
}

TEST(LUTracer, SinksAreReplacedWhileOthersTrace)
{
    std::atomic<int> received{0};
    std::atomic<bool> isDone{false};
    const dp::TraceSink before = LUTracer::SetSink([&](const dp::TraceMessage&) { ++received; });
    int sent = 0;
    std::thread tracing([&] {
        while (!isDone) {
            LUTracer(kChannel).Trace(LUTracer::WARNING, "n %d\n", sent++);
        }
    });
    for (int i = 0; i < 500; ++i) {
        LUTracer::SetSink([&received](const dp::TraceMessage&) { ++received; });
    }
    isDone = true;
    tracing.join();
    EXPECT_EQ(received, sent);
    LUTracer::SetSink(before);
}

} // namespace
