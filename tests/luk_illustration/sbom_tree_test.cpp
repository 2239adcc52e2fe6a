#include "support/SessionTest.h"

#include <luk/illustration/Illustration3dScene.h>
#include <luk/Structure.h>

#include <string>

namespace
{

using du::Symbol;
using luk::illustration::SbomInstance;
using luk::illustration::SbomTree;

class SbomTreeTest : public test::SessionTest
{
protected:
    SbomTreeTest()
    {
        m_root->AddChild(m_structure->CreateComponentNode(Symbol("pump")), Symbol("p"), m_use);
        m_structure->SetRoot(m_root);
        m_tree = du::MakeCounted<luk::Tree>(m_structure);
        m_part = m_tree->FindInstance(Symbol("/p"));
        m_group = m_services->AddInstance(nullptr, Symbol("g"), "group", nullptr);
        m_service = m_services->AddInstance(m_group, Symbol("p"), "pump", m_part);
    }

    du::SmartPtr<luk::Structure> m_structure = du::MakeCounted<luk::Structure>();
    du::SmartPtr<luk::ComponentNode> m_root = m_structure->CreateComponentNode(Symbol("root"));
    du::SmartPtr<luk::ComponentInstance> m_use;
    du::SmartPtr<luk::Tree> m_tree;
    du::SmartPtr<luk::Instance> m_part;
    du::SmartPtr<SbomTree> m_services = du::MakeCounted<SbomTree>();
    du::SmartPtr<SbomInstance> m_group;
    du::SmartPtr<SbomInstance> m_service;
};

TEST_F(SbomTreeTest, TakesEachIdAndEachPartOnce)
{
    EXPECT_EQ(m_services->FindInstance(Symbol("/g/p")), m_service);
    EXPECT_EQ(m_service->GetEbomInstance(), m_part);
    EXPECT_EQ(m_part->GetSbomInstance(), m_service);
    for (const char* id : {"", "a/b", "g"}) {
        EXPECT_FALSE(m_services->AddInstance(nullptr, Symbol(id), "", nullptr)) << id;
    }
    EXPECT_FALSE(m_services->AddInstance(nullptr, Symbol("again"), "", m_part));
    const auto other = du::MakeCounted<SbomTree>();
    EXPECT_FALSE(other->AddInstance(m_group, Symbol("x"), "", nullptr) || other->RemoveInstance(m_group));
    for (const char* nowhere : {"", "/", "g", "/g/", "/p"}) {
        EXPECT_FALSE(m_services->FindInstance(Symbol(nowhere))) << nowhere;
    }
    EXPECT_FALSE(m_services->FindInstance(Symbol()) || m_services->RemoveInstance(m_services->GetRoot()));
    EXPECT_EQ(m_services->GetInstanceCount(), 2u);
}

TEST_F(SbomTreeTest, LinksEndWithEitherEnd)
{
    EXPECT_TRUE(m_services->RemoveInstance(m_group));
    EXPECT_FALSE(m_services->RemoveInstance(m_group) || m_services->AddInstance(m_group, Symbol("x"), "", nullptr));
    EXPECT_FALSE(m_part->GetSbomInstance() || m_service->GetEbomInstance() || m_service->GetParent());
    EXPECT_EQ(m_services->GetInstanceCount(), 0u);

    m_service = m_services->AddInstance(nullptr, Symbol("s"), "", m_part);
    m_services = nullptr;
    EXPECT_FALSE(m_part->GetSbomInstance() || m_service->GetParent());

    m_services = du::MakeCounted<SbomTree>();
    m_service = m_services->AddInstance(nullptr, Symbol("s"), "", m_part);
    m_root->RemoveChild(Symbol("p"));
    EXPECT_FALSE(m_service->GetEbomInstance() || m_part->GetSbomInstance());
    EXPECT_FALSE(m_services->AddInstance(nullptr, Symbol("t"), "", m_part)) << "it is in no tree";

    m_service = m_services->AddInstance(nullptr, Symbol("root"), "", m_tree->GetRoot());
    const luk::illustration::Illustration3dScene* const scene =
        new luk::illustration::Illustration3dScene(m_tree, m_services);
    const du::SmartPtr<const luk::illustration::Illustration3dScene> held(scene);
    m_tree = nullptr;
    EXPECT_TRUE(m_service->GetEbomInstance()) << "the scene holds the tree";
    EXPECT_EQ(held->GetSbomTree(), m_services);
}

} // namespace
