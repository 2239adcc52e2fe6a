#include "support/SessionTest.h"

#include <luk/AsyncEvent.h>

#include <functional>
#include <vector>

namespace
{

class AsyncEventTest : public test::SessionTest
{
protected:
    class Event : public luk::AsyncEvent
    {
    public:
        explicit Event(AsyncEventTest& test, std::function<void(Event&)> reaction = {})
            : luk::AsyncEvent(1, 0), m_test(test), m_reaction(std::move(reaction))
        {
        }
        ~Event() override { m_test.m_isGone = true; }

        void OnCompleted(int status) override
        {
            EXPECT_TRUE(IsComplete());
            m_test.m_statuses.push_back(status);
            if (m_reaction) {
                m_reaction(*this);
            }
            EXPECT_EQ(GetStatus(), status);
        }

    private:
        AsyncEventTest& m_test;
        std::function<void(Event&)> m_reaction;
    };

    std::vector<int> m_statuses;
    bool m_isGone = false;
};

TEST_F(AsyncEventTest, TellsOnceWithTheFirstStatus)
{
    const auto event = du::MakeCounted<Event>(*this, [](Event& self) {
        EXPECT_FALSE(self.Complete(1));
        self.HandleEvent();
    });
    EXPECT_TRUE(event->Complete(7));
    event->HandleEvent();
    EXPECT_FALSE(event->Complete());
    EXPECT_EQ(m_statuses, std::vector<int>{7});

    du::MakeCounted<Event>(*this)->HandleEvent();
    EXPECT_EQ(m_statuses, (std::vector<int>{7, 0}));
}

TEST_F(AsyncEventTest, LivesUntilItsHookIsDone)
{
    du::SmartPtr<Event> last = du::MakeCounted<Event>(*this, [&](Event&) {
        last = nullptr;
        EXPECT_FALSE(m_isGone);
    });
    last->Complete();
    EXPECT_TRUE(m_isGone);
}

TEST_F(AsyncEventTest, CallsNobodyWhenItIsDropped)
{
    du::MakeCounted<Event>(*this).get();
    EXPECT_TRUE(m_isGone);
    EXPECT_TRUE(m_statuses.empty());
}

} // namespace
