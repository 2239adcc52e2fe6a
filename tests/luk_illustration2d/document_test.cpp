#include "support/SessionTest.h"

#include <luk/illustration2d/Kernel2D.h>
#include <luk/illustration2d/Scene2D.h>

#include <string>

namespace
{

using namespace luk::illustration2d;

class DocumentTest : public test::SessionTest
{
protected:
    void TearDown() override { Kernel2D::SetSingleton(nullptr); }

    du::SmartPtr<Stamp2D> Append(char name, const du::SmartPtr<Layer2D>& layer, int minorZOrder)
    {
        auto stamp = m_factory->CreateStamp2D();
        stamp->SetTitle(std::string(1, name));
        stamp->SetLayer(layer);
        stamp->SetMinorZOrder(minorZOrder);
        EXPECT_TRUE(m_document->AppendNode(stamp));
        return stamp;
    }

    std::string GetDrawingOrder() const
    {
        std::string order;
        for (const auto& node : m_document->GetNodesInDrawingOrder()) {
            order += du::DynamicCast<Stamp2D>(node)->GetTitle();
        }
        return order;
    }

    du::SmartPtr<Document2D> m_document = du::MakeCounted<Document2D>(297.0, 210.0);
    du::SmartPtr<BaseKernelFactory> m_factory = du::MakeCounted<BaseKernelFactory>();
};

TEST_F(DocumentTest, DrawsByLayerThenOrderThenPlaceAndLeavesOutWhatIsHidden)
{
    const auto above = du::MakeCounted<Layer2D>("above");
    const auto elsewhere = du::MakeCounted<Layer2D>("elsewhere");
    m_document->AddLayer(nullptr);
    m_document->AddLayer(above);
    m_document->AddLayer(above);
    ASSERT_EQ(m_document->GetLayers().size(), 2u);
    const auto below = m_document->GetCurrentLayer();

    Append('f', above, -5);
    const auto removed = Append('x', below, 0);
    Append('c', below, 700);
    Append('d', below, 700);
    Append('b', below, -1);
    Append('a', nullptr, 900);
    Append('e', below, 701);
    Append('A', elsewhere, 901);
    EXPECT_FALSE(m_document->AppendNode(removed));
    EXPECT_FALSE(m_document->AppendNode(nullptr));
    EXPECT_EQ(GetDrawingOrder(), "aAbxcdef");
    EXPECT_TRUE(m_document->RemoveNode(removed.get()));
    EXPECT_FALSE(m_document->RemoveNode(removed.get()));
    EXPECT_EQ(GetDrawingOrder(), "aAbcdef");
    below->SetVisible(false);
    EXPECT_EQ(GetDrawingOrder(), "aAf");
    EXPECT_EQ(m_document->GetNodes().size(), 7u);
    m_document->SetCurrentLayer(elsewhere);
    EXPECT_EQ(m_document->GetCurrentLayer(), below);
}

TEST_F(DocumentTest, AClosedSceneKeepsItsDocument)
{
    const auto scene = du::MakeCounted<Scene2D>(m_document);
    Append('a', nullptr, 0);
    scene->Close();
    EXPECT_EQ(scene->GetDocument(), m_document);
    EXPECT_EQ(GetDrawingOrder(), "a");
    EXPECT_NE(du::MakeCounted<Scene2D>(nullptr)->GetDocument(), nullptr);
}

TEST_F(DocumentTest, TheKernelHasAFactoryOfStampsAlone)
{
    Kernel2D::SetSingleton(du::MakeCounted<Kernel2D>());
    const auto kernel = Kernel2D::GetSingleton();
    EXPECT_NE(kernel->GetFactory(Kernel2D::BASE_KERNEL_FACTORY), nullptr);
    for (const int kind : {-1, 0, 3, 5}) {
        kernel->SetFactory(kind, m_factory);
        EXPECT_EQ(kernel->GetFactory(kind), nullptr) << kind;
    }
    kernel->SetFactory(4, nullptr);
    EXPECT_EQ(kernel->GetFactory(4), nullptr);
}

} // namespace
