#include "support/Threads.h"

#include <luk/BaseAsyncEvent.h>
#include <luk/Kernel.h>

#include <gtest/gtest.h>

#include <thread>

namespace
{

class KernelTest : public testing::Test
{
protected:
    du::SmartPtr<luk::Kernel> m_kernel = du::MakeCounted<luk::Kernel>();
    std::string m_order;
};

TEST_F(KernelTest, DeliversInOrderAndLeavesNewEventsForTheNextCall)
{
    m_kernel->PostEvent([this] {
        m_order += 'a';
        m_kernel->PostEvent([this] { m_order += 'c'; });
        EXPECT_EQ(m_kernel->ProcessEvents(), 0u);
        EXPECT_FALSE(m_kernel->ProcessOneEvent());
    });
    m_kernel->PostEvent([this] { m_order += 'b'; });
    EXPECT_EQ(m_kernel->ProcessEvents(), 2u);
    EXPECT_EQ(m_order, "ab");
    EXPECT_EQ(m_kernel->GetPendingEventCount(), 1u);
    EXPECT_TRUE(m_kernel->ProcessOneEvent());
    EXPECT_FALSE(m_kernel->ProcessOneEvent());
    EXPECT_EQ(m_order, "abc");
}

TEST_F(KernelTest, DeliversWhatComesAfterTheEventsOnceAllAreDelivered)
{
    m_kernel->PostEvent([this] {
        m_order += 'a';
        m_kernel->PostAfterEvents([this] { m_order += 'z'; });
        m_kernel->PostEvent([this] { m_order += 'c'; });
    });
    m_kernel->PostEvent([this] { m_order += 'b'; });
    EXPECT_EQ(m_kernel->ProcessEvents(), 3u);
    EXPECT_EQ(m_order, "abz");
    EXPECT_EQ(m_kernel->ProcessEvents(), 1u);
    EXPECT_EQ(m_order, "abzc");
}

TEST_F(KernelTest, HandlesEventsInTurnWithCallsAndDropsThemUnhandled)
{
    class Noted : public luk::BaseAsyncEvent
    {
    public:
        explicit Noted(std::string& order) : m_order(order) {}
        void OnCompleted(int) override { m_order += 'e'; }

    private:
        std::string& m_order;
    };
    const du::SmartPtr<luk::BaseAsyncEvent> handled(new Noted(m_order));
    const du::SmartPtr<luk::BaseAsyncEvent> dropped(new Noted(m_order));
    m_kernel->PostEvent([this] { m_order += 'a'; });
    m_kernel->PostEvent(handled);
    m_kernel->PostEvent([this] { m_order += 'b'; });
    EXPECT_EQ(m_kernel->ProcessEvents(), 3u);
    EXPECT_EQ(m_order, "aeb");
    m_kernel->PostEvent(dropped);
    m_kernel->PostEvent(du::SmartPtr<luk::BaseAsyncEvent>());
    EXPECT_EQ(m_kernel->Close(), 1u);
    EXPECT_FALSE(dropped->IsComplete());
    EXPECT_EQ(handled->GetReferenceCount() + dropped->GetReferenceCount(), 2u);
}

TEST_F(KernelTest, DeliversOnTheHostThreadOnly)
{
    int delivered = 0;
    std::thread workers([&] {
        test::OnThreads(4, [&](unsigned) {
            for (int n = 0; n < 500; ++n) {
                m_kernel->PostEvent([&delivered] { ++delivered; });
            }
            EXPECT_EQ(m_kernel->ProcessEvents(), 0u);
        });
    });
    while (delivered < 2000) {
        m_kernel->ProcessEvents();
        std::this_thread::yield();
    }
    workers.join();
    EXPECT_EQ(m_kernel->GetPendingEventCount(), 0u);
}

TEST_F(KernelTest, DropsWhatIsLeftAndCallsNobody)
{
    const auto held = std::make_shared<int>(0);
    m_kernel->PostEvent([this, held] {
        m_order += 'a';
        EXPECT_EQ(m_kernel->Close(), 1u);
    });
    m_kernel->PostEvent([this, held] { m_order += 'b'; });
    EXPECT_EQ(m_kernel->ProcessEvents(), 1u);
    m_kernel->PostEvent([this, held] { m_order += 'c'; });
    EXPECT_EQ(m_kernel->ProcessEvents(), 0u);
    EXPECT_EQ(m_order, "a");
    EXPECT_EQ(held.use_count(), 1);
}

} // namespace
