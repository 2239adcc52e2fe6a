#include "support/Threads.h"

#include <dp/ReadLockGuard.h>
#include <dp/ReadWriteLock.h>
#include <dp/WriteLockGuard.h>

#include <gtest/gtest.h>

#include <atomic>
#include <deque>
#include <mutex>
#include <thread>

namespace
{

using dp::ReadLockGuard;
using dp::ReadWriteLock;
using dp::WriteLockGuard;

std::atomic<int> s_misuses{0};

void CountMisuse(const char*) { ++s_misuses; }

/// Fails on every misuse that a test has not asked for, and on locks left held.
class ReadWriteLockTest : public testing::Test
{
protected:
    void SetUp() override
    {
        s_misuses = 0;
        m_handlerBefore = ReadWriteLock::SetMisuseHandler(&CountMisuse);
    }
    void TearDown() override
    {
        EXPECT_EQ(s_misuses, expectedMisuses);
        EXPECT_EQ(ReadWriteLock::CountHeldByThisThread(), 0U);
        ReadWriteLock::SetMisuseHandler(m_handlerBefore);
    }

    template <class Condition>
    static void WaitUntil(const Condition& isTrue)
    {
        while (!isTrue()) {
            std::this_thread::yield();
        }
    }
    void WaitForWaiting(std::size_t count) const
    {
        WaitUntil([&] { return lock.CountWaiting() == count; });
    }

    void Lock(char kind)
    {
        if (kind == 'r') {
            lock.LockRead();
        } else {
            EXPECT_TRUE(lock.LockWrite());
        }
    }
    void Unlock(char kind) { kind == 'r' ? lock.UnlockRead() : lock.UnlockWrite(); }

    ReadWriteLock lock;
    int expectedMisuses = 0;

private:
    ReadWriteLock::MisuseHandler m_handlerBefore = nullptr;
};

TEST_F(ReadWriteLockTest, EveryNestingSucceedsAlsoPastAWaitingWriter)
{
    for (const std::string nesting : {"rr", "rw", "wr", "ww", "rwr", "wrw", "rwrwwr"}) {
        for (const bool withWaitingWriter : {false, true}) {
            for (const bool isLifo : {true, false}) {
                SCOPED_TRACE(nesting + (withWaitingWriter ? ", a writer waits" : "") +
                             (isLifo ? "" : ", first in first out"));
                std::atomic<bool> isReleased{false};
                std::thread writer;
                Lock(nesting[0]);
                if (withWaitingWriter) {
                    writer = std::thread([&] {
                        const WriteLockGuard guard(&lock);
                        EXPECT_TRUE(isReleased);
                    });
                    WaitForWaiting(1);
                }
                ReadWriteLock::Depth depth{nesting[0] == 'r' ? 1U : 0U, nesting[0] == 'w' ? 1U : 0U};
                for (std::size_t i = 1; i < nesting.size(); ++i) {
                    Lock(nesting[i]);
                    ++(nesting[i] == 'r' ? depth.reads : depth.writes);
                }
                EXPECT_EQ(lock.GetDepthOnThisThread().reads, depth.reads);
                EXPECT_EQ(lock.GetDepthOnThisThread().writes, depth.writes);
                for (std::size_t i = 0; i < nesting.size(); ++i) {
                    isReleased = i + 1 == nesting.size();
                    Unlock(isLifo ? nesting[nesting.size() - 1 - i] : nesting[i]);
                }
                if (writer.joinable()) {
                    writer.join();
                }
                EXPECT_EQ(ReadWriteLock::CountHeldByThisThread(), 0U);
            }
        }
    }
}

TEST_F(ReadWriteLockTest, AWriterThatKeepsItsReadLetsOtherReadersIn)
{
    ASSERT_TRUE(lock.LockWrite());
    lock.LockRead();
    std::thread reader([&] { const ReadLockGuard guard(&lock); });
    WaitForWaiting(1);
    lock.UnlockWrite();
    reader.join();
    lock.UnlockRead();
}

TEST_F(ReadWriteLockTest, WritingWhileOthersReadIsToldAndNeverWaitsForEver)
{
    for (const bool otherLeaves : {false, true}) {
        std::atomic<bool> isReading{false};
        std::atomic<bool> mayLeave{false};
        std::thread other([&] {
            const ReadLockGuard guard(&lock);
            isReading = true;
            WaitUntil([&] { return otherLeaves ? s_misuses > expectedMisuses : mayLeave.load(); });
        });
        WaitUntil([&] { return isReading.load(); });
        lock.LockRead();
        EXPECT_EQ(lock.LockWrite(), otherLeaves);
        EXPECT_EQ(s_misuses, ++expectedMisuses);
        EXPECT_EQ(lock.GetDepthOnThisThread().reads, 1U);
        if (otherLeaves) {
            lock.UnlockWrite();
        }
        mayLeave = true;
        other.join();
        EXPECT_TRUE(lock.LockWrite()) << "alone again";
        lock.UnlockWrite();
        lock.UnlockRead();
    }
}

TEST_F(ReadWriteLockTest, AFailedUpgradeLetsThoseInWhoWaitedBehindIt)
{
    std::atomic<int> reading{0};
    std::atomic<bool> mayLeave{false};
    const auto read = [&] {
        const ReadLockGuard guard(&lock);
        ++reading;
        WaitUntil([&] { return mayLeave.load(); });
    };
    std::thread first(read);
    WaitUntil([&] { return reading == 1; });
    lock.LockRead();
    std::thread second([&] {
        WaitForWaiting(1);
        read();
    });
    EXPECT_FALSE(lock.LockWrite());
    WaitUntil([&] { return reading == 2; });
    mayLeave = true;
    first.join();
    second.join();
    lock.UnlockRead();
    expectedMisuses = 1;
}

TEST_F(ReadWriteLockTest, WrongUnlocksAreToldAndChangeNothing)
{
    lock.UnlockRead();
    lock.UnlockWrite();
    lock.LockRead();
    lock.UnlockWrite();
    std::thread([&] { lock.UnlockRead(); }).join();
    EXPECT_EQ(lock.GetDepthOnThisThread().reads, 1U);
    lock.UnlockRead();
    ASSERT_TRUE(lock.LockWrite());
    lock.UnlockRead();
    lock.UnlockWrite();
    expectedMisuses = 5;
}

TEST_F(ReadWriteLockTest, AThreadHoldsManyLocksThroughGuardsThatGiveBackOnce)
{
    const ReadLockGuard noRead(nullptr);
    const WriteLockGuard noWrite(nullptr);
    std::vector<ReadWriteLock> locks(100);
    std::deque<ReadLockGuard> guards;
    for (ReadWriteLock& each : locks) {
        guards.emplace_back(&each);
    }
    EXPECT_EQ(ReadWriteLock::CountHeldByThisThread(), 100U);
    for (std::size_t i = 0; i < 100; ++i) {
        EXPECT_EQ(locks[i].GetDepthOnThisThread().reads, 1U);
        guards[i].Release();
        EXPECT_EQ(ReadWriteLock::CountHeldByThisThread(), 99 - i);
    }
}

TEST_F(ReadWriteLockTest, WritersExcludeEverybodyUnderEveryMixture)
{
    int first = 0;
    int second = 0;
    std::atomic<int> torn{0};
    test::OnThreads(4, [&](unsigned t) {
        for (unsigned i = 0; i < 3000; ++i) {
            if ((i + t) % 3 != 0) {
                const ReadLockGuard guard(&lock);
                const ReadLockGuard again(&lock);
                torn += first != second ? 1 : 0;
            } else {
                const WriteLockGuard guard(&lock);
                ++first;
                const ReadLockGuard read(&lock);
                const WriteLockGuard again(&lock);
                ++second;
            }
        }
    });
    EXPECT_EQ(torn, 0);
    EXPECT_EQ(first, 4000);
    EXPECT_EQ(second, 4000);
}

TEST_F(ReadWriteLockTest, AWaitingWriterKeepsNewReadersOutAndWaitingReadersGoBeforeTheNextWriter)
{
    // Held; waiting in the order of their coming, each of whom notes itself once it is in; and how they come in.
    const std::tuple<char, std::string, std::string> cases[] = {
        {'r', "wr", "wr"}, {'r', "wrr", "wrr"}, {'w', "wr", "rw"}, {'w', "rw", "rw"}, {'r', "wwr", "wrw"}};
    for (const auto& [held, waiting, admitted] : cases) {
        SCOPED_TRACE(std::string(1, held) + " held, waiting " + waiting);
        std::mutex orderMutex;
        std::string order;
        std::vector<std::thread> threads;
        Lock(held);
        for (const char kind : waiting) {
            threads.emplace_back([&, kind] {
                Lock(kind);
                {
                    const std::lock_guard guard(orderMutex);
                    order += kind;
                }
                Unlock(kind);
            });
            WaitForWaiting(threads.size());
        }
        Unlock(held);
        for (std::thread& thread : threads) {
            thread.join();
        }
        EXPECT_EQ(order, admitted);
    }
}

#if !defined(NDEBUG) && GTEST_HAS_DEATH_TEST
TEST(ReadWriteLockDeathTest, DebugBuildsAssertOnMisuse)
{
    testing::GTEST_FLAG(death_test_style) = "threadsafe";
    EXPECT_DEATH(
        {
            ReadWriteLock lock;
            lock.UnlockRead();
        },
        "locks: a read lock is given back.*misuse of a read-write lock");
}
#endif

} // namespace
