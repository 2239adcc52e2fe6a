#include "luk_illustration/Entry.h"

#include <dg/Location.h>
#include <luannotations/Annotation.h>

#include <gtest/gtest.h>

namespace
{

using namespace test;

class Figure : public luannotations::Annotation
{
public:
    Figure() : luannotations::Annotation(0x100000, 0) {}
    explicit Figure(SymbolTemplate& entry) : Figure()
    {
        const du::RefCounted::ConstructionGuard guard(*this);
        entry.RegisterConsumer(this);
    }
};

std::vector<du::SmartPtr<luk::Annotation>> FiguresOf(const AssociativeObject& object)
{
    std::vector<du::SmartPtr<luk::Annotation>> figures;
    object.GetFigures(figures);
    return figures;
}

TEST(SymbolTemplate, KnowsItsConsumersInOrderAndHoldsNone)
{
    const auto entry = MakeEntry("a");
    std::vector<du::SmartPtr<luk::Annotation>> figures;
    for (int i = 0; i < 3; ++i) {
        auto* const unheld = new Figure(*entry); // registers in its constructor and is held by nobody yet
        EXPECT_EQ(FiguresOf(*entry), figures);
        figures.emplace_back(unheld);
        EXPECT_EQ(unheld->GetReferenceCount(), 1u);
    }
    EXPECT_FALSE(entry->RegisterConsumer(figures[1].get()));
    EXPECT_FALSE(entry->RegisterConsumer(nullptr));
    EXPECT_TRUE(entry->UnregisterConsumer(figures[0].get()));
    EXPECT_FALSE(entry->UnregisterConsumer(figures[0].get()));
    figures.erase(figures.begin());
    EXPECT_EQ(FiguresOf(*entry), figures);
}

TEST(SymbolTemplate, ConsumersAndOriginBelongToTheObjectAndNotToWhatItSays)
{
    const auto entry = MakeEntry("a", "n");
    const auto figure = du::MakeCounted<Figure>(*entry);
    const auto copy = du::MakeCounted<SymbolTemplate>(*entry);
    EXPECT_EQ(copy->GetConsumerCount(), 0u);
    EXPECT_TRUE(copy->Compare(entry));
    copy->SetCategoryId("c");
    EXPECT_FALSE(entry->Compare(copy));
    EXPECT_FALSE(entry->Compare(nullptr));
    *entry = *copy;
    EXPECT_EQ(entry->GetConsumerCount(), 1u);
    const auto shared = du::MakeCounted<SymbolTemplate>(CollectionItem::ORIGIN_SHARED);
    shared->SetId("b");
    EXPECT_TRUE(shared->Compare(MakeEntry("b")));
}

/// The symbol that was made from the old entry unregisters where it registered, or where it is now.
TEST(SymbolTemplate, ASuccessorSharesTheConsumers)
{
    for (const bool atSuccessor : {false, true}) {
        for (const bool before : {false, true}) {
            const auto collection = du::MakeCounted<Collection>();
            const auto entry = MakeEntry("a");
            const auto successor = MakeEntry("a", "new");
            const auto figure = du::MakeCounted<Figure>();
            const du::SmartPtr<luk::Annotation> newer = du::MakeCounted<Figure>(*successor);
            collection->AddAssociativeObject(entry);
            if (before) {
                entry->RegisterConsumer(figure.get());
            }
            collection->ReplaceAssociativeObject(successor);
            if (!before) {
                entry->RegisterConsumer(figure.get());
            }
            EXPECT_EQ(successor->GetConsumerCount(), 2u);
            EXPECT_TRUE((atSuccessor ? successor : entry)->UnregisterConsumer(figure.get()));
            EXPECT_EQ(FiguresOf(*successor), std::vector{newer});
        }
    }
}

} // namespace
