#include "support/Threads.h"

#include <du/RefCounted.h>
#include <du/ReferenceLedger.h>
#include <du/SmartPtr.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

namespace
{

struct Node : du::RefCounted {
    Node() = default;
    explicit Node(std::function<void()> atEnd) : onEnd(std::move(atEnd)) {}
    ~Node() override
    {
        if (onEnd) {
            onEnd();
        }
    }
    du::SmartPtr<Node> next;
    std::function<void()> onEnd;
};

struct Left : virtual du::RefCounted {
};
struct Right : virtual du::RefCounted {
    int right = 2;
};
struct Both : Left, Right {
};

/// Fails on every object that a test leaves behind and, where the ledger is built in, on every reference.
class SmartPtrTest : public testing::Test
{
protected:
    void SetUp() override { du::ReferenceLedger::SwitchOn(); }
    void TearDown() override
    {
        EXPECT_EQ(du::ReferenceLedger::Describe(), "");
        du::ReferenceLedger::SwitchOff();
        EXPECT_EQ(du::RefCounted::GetLiveObjectCount(), m_liveBefore);
    }

private:
    std::size_t m_liveBefore = du::RefCounted::GetLiveObjectCount();
};

TEST_F(SmartPtrTest, AssignmentTakesTheNewReferenceBeforeTheOldOneGoes)
{
    auto head = du::MakeCounted<Node>();
    head->next = du::MakeCounted<Node>();
    const Node* const second = head->next.get();
    const Node* seen = nullptr;
    head->onEnd = [&] { seen = head.get(); };
    head = head->next;
    EXPECT_EQ(head.get(), second);
    EXPECT_EQ(seen, second) << "the end of the old object already sees the new one";

    auto moved = du::MakeCounted<Node>();
    moved->next = std::move(head);
    moved = std::move(moved->next);
    EXPECT_EQ(moved.get(), second);
    EXPECT_EQ(moved->GetReferenceCount(), 1U);
}

TEST_F(SmartPtrTest, AssigningWhatIsHeldChangesNothing)
{
    auto handle = du::MakeCounted<Node>();
    Node* const object = handle.get();
    du::SmartPtr<Node>& alias = handle;
    handle = object;
    handle = alias;
    handle = std::move(alias);
    EXPECT_EQ(handle.get(), object);
    EXPECT_EQ(object->GetReferenceCount(), 1U);
}

TEST_F(SmartPtrTest, ConvertsAndCastsThroughVirtualBases)
{
    const auto both = du::MakeCounted<Both>();
    const du::SmartPtr<Right> right = both;
    const du::SmartPtr<du::RefCounted> base = right;
    EXPECT_EQ(right->right, 2);
    EXPECT_EQ(both->GetReferenceCount(), 3U);
    EXPECT_EQ(du::DynamicCast<Left>(base).get(), both.get());
    EXPECT_EQ(du::DynamicCast<Node>(base), nullptr);
    EXPECT_EQ(du::DynamicCast<Node>(du::SmartPtr<du::RefCounted>()), nullptr);
    EXPECT_EQ(both->GetReferenceCount(), 3U);
}

TEST_F(SmartPtrTest, CountsBelongToObjectsNotToTheirValues)
{
    const auto a = du::MakeCounted<Node>();
    const auto copy = du::MakeCounted<Node>(*du::SmartPtr<Node>(a));
    EXPECT_EQ(copy->GetReferenceCount(), 1U);
    const du::SmartPtr<Node> again = a;
    *copy = *a;
    EXPECT_EQ(copy->GetReferenceCount(), 1U);
}

TEST_F(SmartPtrTest, AGuardedObjectSurvivesHandlesInItsOwnConstructor)
{
    struct Registering : Node {
        explicit Registering(std::function<void()> atEnd) : Node(std::move(atEnd))
        {
            const ConstructionGuard guard(*this);
            const du::SmartPtr<Registering> temporary(this);
        }
    };
    int ends = 0;
    auto object = du::MakeCounted<Registering>([&] { ++ends; });
    EXPECT_EQ(ends, 0);
    EXPECT_EQ(object->GetReferenceCount(), 1U);
    object = nullptr;
    EXPECT_EQ(ends, 1);
}

TEST_F(SmartPtrTest, HandlesOfOneObjectComeAndGoOnManyThreads)
{
    std::atomic<int> ends{0};
    std::vector<du::SmartPtr<Node>> handles(4, du::MakeCounted<Node>([&] { ++ends; }));
    test::OnThreads(4, [&](unsigned t) {
        for (int i = 0; i < 2000; ++i) {
            du::SmartPtr<Node> copy = handles[t];
            const du::SmartPtr<Node> moved = std::move(copy);
        }
        handles[t] = nullptr;
    });
    EXPECT_EQ(ends, 1);
}

#if LUHOST_REFERENCE_LEDGER

TEST(ReferenceLedger, MovedHandlesHoldUnderTheirNewAddress)
{
    du::ReferenceLedger::SwitchOn();
    du::SmartPtr<Node> first = du::MakeCounted<Node>();
    const du::SmartPtr<Node> second = std::move(first);
    const auto entries = du::ReferenceLedger::GetOpenEntries();
    ASSERT_EQ(entries.size(), 1U);
    EXPECT_EQ(entries[0].owner, &second);
    EXPECT_EQ(entries[0].object, second.get());
    EXPECT_NE(entries[0].objectClass.find("Node"), std::string::npos);
    du::ReferenceLedger::SwitchOff();
}

TEST(ReferenceLedger, AWrongTagStandsBesideTheReferenceLeftOver)
{
    for (const bool isDestroyed : {false, true}) {
        du::ReferenceLedger::SwitchOn();
        const int taker = 0;
        const int stranger = 0;
        auto object = std::make_unique<Node>();
        object->AddReference(&stranger);
        object->AddReference(&taker);
        object->RemoveReference(&stranger);
        auto* const raw = object.get();
        if (isDestroyed) {
            (void)object.release();
        }
        const int other = 0;
        raw->AddReference(&other);
        raw->RemoveReference(&stranger);
        if (isDestroyed) {
            raw->RemoveReference(&stranger);
        }
        const auto entries = du::ReferenceLedger::GetOpenEntries();
        ASSERT_EQ(entries.size(), 3U);
        for (const auto& entry : entries) {
            const long expected = entry.owner == &stranger ? (isDestroyed ? -2 : -1) : 1;
            EXPECT_EQ(entry.count, expected);
            EXPECT_EQ(entry.objectClass.empty(), isDestroyed);
        }
        du::ReferenceLedger::SwitchOff();
    }
}

TEST(ReferenceLedger, ReferencesFromBeforeItWasSwitchedOnAreNotCounted)
{
    auto before = du::MakeCounted<Node>();
    du::ReferenceLedger::SwitchOn();
    {
        const du::SmartPtr<Node> during = before;
        EXPECT_EQ(du::ReferenceLedger::GetOpenEntries().size(), 1U);
        const auto moved = std::move(before);
        EXPECT_EQ(du::ReferenceLedger::GetOpenEntries().size(), 2U);
    }
    EXPECT_EQ(du::ReferenceLedger::Describe(), "");
    du::ReferenceLedger::SwitchOff();
}

#endif

} // namespace
