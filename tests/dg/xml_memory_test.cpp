#include <dg/XmlElem.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

namespace
{

/// Allocations that still succeed; negative: all of them.
thread_local long s_allocationsLeft = -1;

void* Allocate(std::size_t size)
{
    if (s_allocationsLeft == 0) {
        throw std::bad_alloc();
    }
    if (s_allocationsLeft > 0) {
        --s_allocationsLeft;
    }
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (!memory) {
        throw std::bad_alloc();
    }
    return memory;
}

/// Runs something with every allocation after the first n failing, for n = 0, 1, ... until it succeeds.
template <class Work>
int CountFailuresUntilSuccess(Work work)
{
    for (int n = 0; n < 100; ++n) {
        s_allocationsLeft = n;
        bool done = false;
        try {
            done = work();
        } catch (const std::bad_alloc&) {
            done = false;
        }
        s_allocationsLeft = -1;
        if (done) {
            return n;
        }
    }
    return 100;
}

const char kDocument[] = "<?xml version=\"1.0\"?>\n<root><child name=\"a long enough value\">and a text</child></root>";

TEST(XmlMemory, ALackOfMemoryIsThrownAndTakenForNoFaultOfTheText)
{
    const std::string text = kDocument;
    const std::function<dg::XmlElem*()> makers[] = {[&] { return dg::ParseXml(text, false, nullptr); },
                                                    [&] { return dg::ParseXml(text, true, nullptr); },
                                                    [] { return dg::NewXmlElem("camera"); }};
    for (const auto& make : makers) {
        const int failures = CountFailuresUntilSuccess([&] {
            const std::unique_ptr<dg::XmlElem, dg::XmlFreer> element(make());
            EXPECT_NE(element, nullptr);
            return true;
        });
        EXPECT_GE(failures, 1);
        EXPECT_LT(failures, 100);
    }
}

TEST(XmlMemory, WordsForAnErrorMayFindNoMemoryEither)
{
    const std::string broken = std::string(kDocument) + "<second/>";
    dg::XmlParseError error;
    const int failures = CountFailuresUntilSuccess([&] {
        error = {};
        EXPECT_EQ(dg::ParseXml(broken, false, &error), nullptr);
        return true;
    });
    EXPECT_GE(failures, 2);
    EXPECT_EQ(error.reason, "more than one top-level element");
}

} // namespace

void* operator new(std::size_t size) { return Allocate(size); }
void* operator new[](std::size_t size) { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }
