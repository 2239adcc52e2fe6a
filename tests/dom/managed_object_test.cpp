#include "support/Threads.h"

#include <dom/ManagedObject.h>
#include <dom/Observer.h>
#include <du/SmartPtr.h>

#include <gtest/gtest.h>

namespace
{

TEST(ManagedObject, IsInOneBookAtATime)
{
    dom::ManagedObject first;
    dom::ManagedObject second;
    dom::ManagedObject object;
    first.ManageObject(object);
    first.ManageObject(object);
    EXPECT_EQ(first.GetManagedObjectCount(), 1u);
    second.ManageObject(object);
    EXPECT_EQ(first.GetManagedObjectCount(), 0u);
    EXPECT_EQ(second.GetManagedObjectCount(), 1u);
    first.UnmanageObject(object);
    EXPECT_TRUE(object.IsManaged());
    object.ManageObject(object);
    EXPECT_EQ(second.GetManagedObjectCount(), 1u);
    const dom::ManagedObject copy(object);
    EXPECT_FALSE(copy.IsManaged());
    {
        dom::ManagedObject last;
        last.ManageObject(object);
    }
    EXPECT_FALSE(object.IsManaged()) << "its manager is gone";
}

TEST(ManagedObject, AddsNoReferenceAndLeavesTheBooksInAnyOrder)
{
    dom::ManagedObject books;
    std::vector<du::SmartPtr<dom::Observer>> objects;
    for (int i = 0; i < 5; ++i) {
        objects.push_back(du::MakeCounted<dom::Observer>());
        books.ManageObject(*objects.back());
    }
    std::size_t left = 5;
    for (const std::size_t index : {2u, 0u, 4u, 1u, 3u}) {
        EXPECT_EQ(objects[index]->GetReferenceCount(), 1u);
        objects[index] = nullptr;
        EXPECT_EQ(books.GetManagedObjectCount(), --left);
    }
}

TEST(ManagedObject, ComesAndGoesOnManyThreads)
{
    dom::ManagedObject books;
    test::OnThreads(4, [&books](unsigned) {
        for (int round = 0; round < 2000; ++round) {
            dom::ManagedObject object;
            books.ManageObject(object);
        }
    });
    EXPECT_EQ(books.GetManagedObjectCount(), 0u);
}

} // namespace
