#include "support/SessionTest.h"

#include <luk/Structure.h>
#include <luk/Tree.h>

#include <functional>
#include <string>
#include <vector>

namespace test
{

namespace
{

using du::Symbol;
using Node = du::SmartPtr<luk::ComponentNode>;

class Listener : public luk::Tree::Listener
{
public:
    void OnBeginChange() override { log += "["; }
    void OnEndChange() override { log += "]"; }
    void OnInstanceAdded(luk::Instance& instance) override { Note('+', instance); }
    void OnInstanceMoved(luk::Instance& instance) override { Note('~', instance); }
    void OnInstanceRemoved(luk::Instance& instance) override
    {
        EXPECT_TRUE(instance.GetTree() && instance.GetParent() && instance.GetNode());
        EXPECT_EQ(instance.GetTree()->FindInstance(instance.GetIdPath()), nullptr);
        Note('-', instance);
    }

    std::string TakeLog() { return std::exchange(log, {}); }

    std::string log;
    std::function<void(luk::Instance&)> then;

private:
    void Note(char kind, luk::Instance& instance)
    {
        log += kind + instance.GetIdPath().GetText();
        if (then) {
            then(instance);
        }
    }
};

class TreeTest : public SessionTest
{
protected:
    TreeTest()
    {
        m_structure->SetRoot(m_root);
        Use(m_root, m_pump, "p");
        Use(m_root, m_pump, "q");
        Use(m_pump, m_bolt, "b1");
        Use(m_pump, m_bolt, "b2");
        m_tree = du::MakeCounted<luk::Tree>(m_structure);
        m_tree->AddListener(&m_listener);
    }

    Node Make(const char* name) const { return m_structure->CreateComponentNode(Symbol(name)); }

    static bool Use(const Node& parent, const Node& child, const std::string& id)
    {
        du::SmartPtr<luk::ComponentInstance> use;
        return parent->AddChild(child, Symbol(id), use);
    }

    du::SmartPtr<luk::Instance> Find(const char* path) const { return m_tree->FindInstance(Symbol(path)); }

    du::SmartPtr<luk::Structure> m_structure = du::MakeCounted<luk::Structure>();
    Node m_root = Make("root");
    Node m_pump = Make("pump");
    Node m_bolt = Make("bolt");
    du::SmartPtr<luk::Tree> m_tree;
    Listener m_listener;
};

TEST_F(TreeTest, FindsTheFirstPlaceOfAUse)
{
    EXPECT_EQ(m_tree->FindOccurrence(*m_pump->FindChild(Symbol("b2"))), Find("/p/b2"));
    EXPECT_EQ(m_tree->FindOccurrence(*m_root->FindChild(Symbol("q"))), Find("/q"));
    const auto removed = m_root->FindChild(Symbol("p"));
    m_root->RemoveChild(Symbol("p"));
    EXPECT_EQ(m_tree->FindOccurrence(*removed), nullptr);
    EXPECT_EQ(m_tree->FindOccurrence(*m_pump->FindChild(Symbol("b2"))), Find("/q/b2"));
    EXPECT_EQ(du::MakeCounted<luk::Tree>(nullptr)->FindOccurrence(*m_root->FindChild(Symbol("q"))), nullptr);
}

TEST_F(TreeTest, FollowsItsStructureInEveryOccurrence)
{
    EXPECT_EQ(m_tree->GetInstanceCount(), 6u);
    const auto other = du::MakeCounted<luk::Tree>(m_structure);
    const Node nut = Make("nut");
    EXPECT_TRUE(Use(nut, Make("ring"), "r"));
    EXPECT_TRUE(Use(m_pump, nut, "n"));
    EXPECT_EQ(m_listener.TakeLog(), "[+/p/n+/p/n/r+/q/n+/q/n/r]");
    EXPECT_EQ(other->GetInstanceCount(), 10u);

    m_pump->FindChild(Symbol("n"))->SetLocation(dg::Location::ZERO);
    m_pump->FindChild(Symbol("n"))->SetLocation(dg::Location::ZERO);
    EXPECT_EQ(m_listener.TakeLog(), "[~/p/n~/q/n]");

    const auto kept = Find("/p/n");
    EXPECT_EQ(Find("/p")->GetChildren().back(), kept);
    EXPECT_TRUE(m_pump->RemoveChild(kept->GetComponentInstance()->GetId()));
    EXPECT_FALSE(m_pump->RemoveChild(Symbol("n")));
    EXPECT_EQ(m_listener.TakeLog(), "[-/p/n/r-/p/n-/q/n/r-/q/n]");
    EXPECT_EQ(kept->GetIdPath(), Symbol("/p/n"));
    EXPECT_FALSE(kept->GetParent() || kept->GetTree() || kept->GetNode() || kept->FindChild(Symbol("r")));
    EXPECT_EQ(kept->GetComponentInstance()->GetParentNode(), nullptr);
    EXPECT_TRUE(kept->GetChildren().empty());

    m_tree->RemoveListener(&m_listener);
    EXPECT_TRUE(m_pump->RemoveChild(Symbol("b1")));
    EXPECT_EQ(m_listener.TakeLog(), "");
    EXPECT_EQ(m_tree->GetInstanceCount(), 4u);
    EXPECT_EQ(other->GetInstanceCount(), 4u);
}

TEST_F(TreeTest, FindsPathsAndNothingElse)
{
    EXPECT_EQ(Find("/q/b2")->GetNode(), m_bolt);
    EXPECT_EQ(Find("/q")->FindChild(Symbol("b2")), Find("/q/b2"));
    EXPECT_EQ(Find("/q/b2")->GetParent(), Find("/q").get());
    EXPECT_EQ(m_tree->GetRoot()->GetNode(), m_root);
    for (const char* nowhere : {"", "/", "q", "/q/", "//q", "/q/b3", "/b2"}) {
        EXPECT_EQ(Find(nowhere), nullptr) << nowhere;
    }
    EXPECT_EQ(m_tree->FindInstance(Symbol()), nullptr);
    EXPECT_EQ(du::MakeCounted<luk::Tree>(du::MakeCounted<luk::Structure>())->GetRoot(), nullptr);
}

TEST_F(TreeTest, RefusesRingsAndBadIds)
{
    for (const char* id : {"", "/", "a/b", "p"}) {
        EXPECT_FALSE(Use(m_root, m_bolt, id)) << id;
    }
    EXPECT_FALSE(Use(m_root, nullptr, "x"));
    EXPECT_FALSE(Use(m_root, m_root, "x"));
    EXPECT_FALSE(Use(m_bolt, m_root, "x"));
    EXPECT_FALSE(Use(m_bolt, m_pump, "x"));
    EXPECT_EQ(m_listener.log, "");
    EXPECT_TRUE(m_pump->RemoveChild(Symbol("b1")) && m_pump->RemoveChild(Symbol("b2")));
    EXPECT_TRUE(Use(m_bolt, m_pump, "x")) << "no ring any more";
    EXPECT_FALSE(Use(m_pump, m_bolt, "b1"));
}

TEST_F(TreeTest, ListenersMayChangeTheStructure)
{
    Listener late;
    m_listener.then = [&](luk::Instance& instance) {
        const std::string path = instance.GetIdPath().GetText();
        if (path == "/p/b1" || path == "/p/x") {
            m_listener.log += m_root->RemoveChild(Symbol("q")) ? "!" : "?";
            m_tree->AddListener(&late);
            m_tree->RemoveListener(&m_listener);
        }
    };
    m_root->RemoveChild(Symbol("p"));
    EXPECT_EQ(m_listener.log, "[-/p/b1[-/q/b1-/q/b2-/q]!");
    EXPECT_EQ(late.TakeLog(), "-/p/b2-/p]");

    m_tree->RemoveListener(&late);
    Use(m_root, m_pump, "p");
    Use(m_root, m_pump, "q");
    m_tree->AddListener(&m_listener);
    m_listener.log.clear();
    m_listener.then = [&](luk::Instance&) { m_root->RemoveChild(Symbol("q")); };
    Use(m_pump, Make("nut"), "x");
    EXPECT_EQ(m_listener.log, "[+/p/x[-/q/b1-/q/b2-/q/x-/q]]") << "what is gone again is not told as added";
}

TEST_F(TreeTest, GoesDeepAndWide)
{
    constexpr int kDepth = 10000;
    constexpr int kWidth = 20000;
    const Node top = Make("top");
    Node bottom = top;
    for (int n = 1; n < kDepth; ++n) {
        const Node next = Make("n");
        ASSERT_TRUE(Use(bottom, next, "n"));
        bottom = next;
    }
    Node upside = Make("up");
    for (int n = 1; n < kDepth; ++n) {
        const Node next = Make("n");
        ASSERT_TRUE(Use(next, upside, "n")) << "from the bottom up";
        upside = next;
    }
    m_tree->RemoveListener(&m_listener);
    EXPECT_TRUE(Use(m_root, top, "t"));
    EXPECT_FALSE(Use(bottom, m_root, "ring"));
    const Node wide = Make("wide");
    for (int n = 0; n < kWidth; ++n) {
        ASSERT_TRUE(Use(wide, m_bolt, std::to_string(n)));
    }
    EXPECT_TRUE(Use(m_root, wide, "w"));
    EXPECT_EQ(m_tree->GetInstanceCount(), 6u + kDepth + 1 + kWidth);
    EXPECT_EQ(du::MakeCounted<luk::Tree>(m_structure)->GetInstanceCount(), m_tree->GetInstanceCount());
    EXPECT_EQ(Find("/w/19999")->GetNode(), m_bolt);
    for (int n = 0; n < kWidth; ++n) {
        ASSERT_TRUE(wide->RemoveChild(Symbol(std::to_string(n))));
    }
    const auto kept = Find("/t/n/n/n");
    EXPECT_TRUE(m_root->RemoveChild(Symbol("t")));
    EXPECT_EQ(m_tree->GetInstanceCount(), 7u);
    EXPECT_EQ(kept->GetParent(), nullptr);
}

} // namespace

} // namespace test
