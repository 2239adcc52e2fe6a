#include <dom/Observable.h>
#include <dom/Observer.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

namespace
{

class Subject : public dom::Observable
{
public:
    void Notify();
};

class Listener : public dom::Observer
{
public:
    void OnDetached() override { ++detached; }

    std::function<void()> reaction;
    std::atomic<int> calls{0};
    std::atomic<int> detached{0};
};

void Subject::Notify()
{
    NotifyObservers([](dom::Observer& observer) {
        auto& listener = static_cast<Listener&>(observer);
        ++listener.calls;
        if (listener.reaction) {
            listener.reaction();
        }
    });
}

class ObservableTest : public testing::Test
{
protected:
    du::SmartPtr<Listener> Add()
    {
        auto listener = du::MakeCounted<Listener>();
        EXPECT_TRUE(m_subject->RegisterObserver(listener));
        return listener;
    }

    std::unique_ptr<Subject> m_subject = std::make_unique<Subject>();
};

TEST_F(ObservableTest, CallsInOrderOfRegistration)
{
    std::string order;
    const auto a = Add();
    const auto b = Add();
    const auto c = Add();
    a->reaction = [&] { order += 'a'; };
    b->reaction = [&] { order += 'b'; };
    c->reaction = [&] { order += 'c'; };
    EXPECT_FALSE(m_subject->RegisterObserver(b));
    m_subject->Notify();
    EXPECT_TRUE(m_subject->UnregisterObserver(a.get()));
    EXPECT_TRUE(m_subject->RegisterObserver(a));
    m_subject->Notify();
    EXPECT_EQ(order, "abcbca");
}

TEST_F(ObservableTest, SkipsANeighbourThatWasJustUnregistered)
{
    const auto first = Add();
    const auto second = Add();
    const auto third = Add();
    second->reaction = [&] {
        m_subject->UnregisterObserver(first.get());
        m_subject->UnregisterObserver(third.get());
    };
    m_subject->Notify();
    EXPECT_EQ(first->calls, 1);
    EXPECT_EQ(third->calls, 0);
    EXPECT_EQ(third->detached, 1);
    m_subject->Notify();
    EXPECT_EQ(first->calls, 1);
    EXPECT_EQ(second->calls, 2);
}

TEST_F(ObservableTest, DoesNotCallOneRegisteredMeanwhile)
{
    const auto first = Add();
    const auto late = du::MakeCounted<Listener>();
    first->reaction = [&] { m_subject->RegisterObserver(late); };
    m_subject->Notify();
    EXPECT_EQ(late->calls, 0);
    m_subject->Notify();
    EXPECT_EQ(late->calls, 1);
}

TEST_F(ObservableTest, KeepsAnObserverAliveThatUnregistersItself)
{
    auto listener = Add();
    Listener* const raw = listener.get();
    raw->reaction = [this, raw] { m_subject->UnregisterObserver(raw); };
    listener = nullptr;
    const std::size_t before = du::RefCounted::GetLiveObjectCount();
    m_subject->Notify();
    EXPECT_EQ(du::RefCounted::GetLiveObjectCount(), before - 1);
}

TEST_F(ObservableTest, MayEndWithinItsOwnNotification)
{
    const auto first = Add();
    const auto second = Add();
    first->reaction = [&] { m_subject.reset(); };
    m_subject->Notify();
    EXPECT_EQ(first->detached, 1);
    EXPECT_EQ(second->detached, 1);
    EXPECT_EQ(second->calls, 0);
    EXPECT_EQ(second->GetReferenceCount(), 1u);
}

TEST_F(ObservableTest, DetachesOnceAndRefusesStrangers)
{
    const auto listener = Add();
    EXPECT_FALSE(m_subject->RegisterObserver(nullptr));
    EXPECT_FALSE(m_subject->UnregisterObserver(nullptr));
    EXPECT_TRUE(m_subject->UnregisterObserver(listener.get()));
    EXPECT_FALSE(m_subject->UnregisterObserver(listener.get()));
    m_subject.reset();
    EXPECT_EQ(listener->detached, 1);
}

TEST_F(ObservableTest, ACopyHasNoObservers)
{
    const auto listener = Add();
    Subject copy(*m_subject);
    copy.Notify();
    EXPECT_EQ(listener->calls, 0);
}

TEST_F(ObservableTest, ObserversComeAndGoWhileOthersAreTold)
{
    std::atomic<bool> stop{false};
    const auto steady = Add();
    std::thread notifier([&] {
        while (!stop) {
            m_subject->Notify();
        }
    });
    std::vector<std::thread> visitors;
    for (int i = 0; i < 2; ++i) {
        visitors.emplace_back([this] {
            for (int round = 0; round < 1000; ++round) {
                const auto listener = du::MakeCounted<Listener>();
                m_subject->RegisterObserver(listener);
                m_subject->UnregisterObserver(listener.get());
            }
        });
    }
    for (std::thread& visitor : visitors) {
        visitor.join();
    }
    while (steady->calls == 0) {
        std::this_thread::yield();
    }
    stop = true;
    notifier.join();
    EXPECT_EQ(m_subject->GetObserverCount(), 1u);
    EXPECT_EQ(steady->detached, 0);
}

} // namespace
