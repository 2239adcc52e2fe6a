#include "luk_illustration/Entry.h"

#include <dg/Location.h>
#include <luannotations/Annotation.h>

#include <gtest/gtest.h>

namespace test
{

namespace
{

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
    const auto first = du::MakeCounted<Figure>();
    const auto second = du::MakeCounted<Figure>();
    const auto third = du::MakeCounted<Figure>();
    for (const auto& figure : {first, second, third}) {
        EXPECT_TRUE(entry->RegisterConsumer(figure.get()));
    }
    EXPECT_FALSE(entry->RegisterConsumer(second.get()));
    EXPECT_FALSE(entry->RegisterConsumer(nullptr));
    EXPECT_EQ(first->GetReferenceCount(), 1u);
    EXPECT_TRUE(entry->UnregisterConsumer(first.get()));
    EXPECT_FALSE(entry->UnregisterConsumer(first.get()));
    EXPECT_EQ(FiguresOf(*entry), (std::vector<du::SmartPtr<luk::Annotation>>{second, third}));
}

TEST(SymbolTemplate, AConsumerMayRegisterInItsConstructor)
{
    const auto entry = MakeEntry("a");
    auto* const unheld = new Figure(*entry);
    EXPECT_TRUE(FiguresOf(*entry).empty());
    const du::SmartPtr<Figure> figure(unheld);
    EXPECT_EQ(FiguresOf(*entry).size(), 1u);
}

TEST(SymbolTemplate, ConsumersBelongToTheObject)
{
    const auto entry = MakeEntry("a", "n");
    const auto figure = du::MakeCounted<Figure>();
    entry->RegisterConsumer(figure.get());
    const auto copy = du::MakeCounted<SymbolTemplate>(*entry);
    EXPECT_EQ(copy->GetConsumerCount(), 0u);
    EXPECT_TRUE(copy->Compare(entry));
    *entry = *copy;
    EXPECT_EQ(entry->GetConsumerCount(), 1u);
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
            const auto newer = du::MakeCounted<Figure>();
            collection->AddAssociativeObject(entry);
            successor->RegisterConsumer(newer.get());
            if (before) {
                entry->RegisterConsumer(figure.get());
            }
            collection->ReplaceAssociativeObject(successor);
            if (!before) {
                entry->RegisterConsumer(figure.get());
            }
            EXPECT_EQ(successor->GetConsumerCount(), 2u);
            EXPECT_TRUE((atSuccessor ? successor : entry)->UnregisterConsumer(figure.get()));
            EXPECT_EQ(FiguresOf(*successor), (std::vector<du::SmartPtr<luk::Annotation>>{newer}));
        }
    }
}

TEST(AssociativeObject, ComparesWhatItSays)
{
    const auto entry = MakeEntry("a", "n");
    EXPECT_FALSE(entry->Compare(nullptr));
    const auto shared = du::MakeCounted<SymbolTemplate>(CollectionItem::ORIGIN_SHARED);
    shared->SetId("a");
    shared->SetName("n");
    EXPECT_TRUE(entry->Compare(shared)) << "the origin is no part of it";
    shared->SetCategoryId("c");
    EXPECT_FALSE(entry->Compare(shared));
}

} // namespace

} // namespace test
