#include "support/Threads.h"

#include <dom/Observable.h>
#include <dom/Observer.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <thread>

namespace
{

class Listener : public dom::Observer
{
public:
    void OnDetached() override { ++detached; }

    std::function<void()> reaction;
    std::atomic<int> calls{0};
    std::atomic<int> detached{0};
};

class Subject : public dom::Observable
{
public:
    void Notify()
    {
        NotifyObservers([](dom::Observer& observer) {
            auto& listener = static_cast<Listener&>(observer);
            ++listener.calls;
            if (listener.reaction) {
                listener.reaction();
            }
        });
    }
};

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

TEST_F(ObservableTest, CallsInOrderOfRegistrationThoseWhoWereThereAtItsBegin)
{
    std::string order;
    const auto note = [&order](char name) { return [&order, name] { order += name; }; };
    const auto a = Add();
    const auto b = Add();
    const auto late = du::MakeCounted<Listener>();
    a->reaction = [&] {
        order += 'a';
        m_subject->RegisterObserver(late);
    };
    b->reaction = note('b');
    late->reaction = note('l');
    EXPECT_FALSE(m_subject->RegisterObserver(b));
    m_subject->Notify();
    EXPECT_TRUE(m_subject->UnregisterObserver(a.get()));
    EXPECT_TRUE(m_subject->RegisterObserver(a));
    m_subject->Notify();
    Subject(*m_subject).Notify();
    EXPECT_EQ(order, "abbla") << "a copy has no observers";
}

TEST_F(ObservableTest, SkipsANeighbourThatWasJustUnregisteredAndRefusesStrangers)
{
    const auto first = Add();
    const auto second = Add();
    const auto third = Add();
    second->reaction = [&] {
        m_subject->UnregisterObserver(first.get());
        m_subject->UnregisterObserver(third.get());
    };
    m_subject->Notify();
    m_subject->Notify();
    EXPECT_EQ(first->calls, 1);
    EXPECT_EQ(second->calls, 2);
    EXPECT_EQ(third->calls, 0);
    EXPECT_FALSE(m_subject->RegisterObserver(nullptr));
    EXPECT_FALSE(m_subject->UnregisterObserver(nullptr));
    EXPECT_FALSE(m_subject->UnregisterObserver(third.get()));
    m_subject.reset();
    EXPECT_EQ(third->detached, 1);
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

TEST_F(ObservableTest, ObserversComeAndGoWhileOthersAreTold)
{
    std::atomic<bool> stop{false};
    const auto steady = Add();
    std::thread notifier([&] {
        while (!stop) {
            m_subject->Notify();
        }
    });
    test::OnThreads(2, [this](unsigned) {
        for (int round = 0; round < 1000; ++round) {
            const auto listener = du::MakeCounted<Listener>();
            m_subject->RegisterObserver(listener);
            m_subject->UnregisterObserver(listener.get());
        }
    });
    while (steady->calls == 0) {
        std::this_thread::yield();
    }
    stop = true;
    notifier.join();
    EXPECT_EQ(m_subject->GetObserverCount(), 1u);
    EXPECT_EQ(steady->detached, 0);
}

} // namespace
