#include "support/SessionTest.h"

#include <luannotations/Annotation.h>
#include <luannotations/MoveOperationStep.h>
#include <luannotations/SizeOperationStep.h>
#include <luk/Operation.h>
#include <luk/UndoStack.h>

#include <functional>
#include <string>

namespace
{

class UndoTest : public test::SessionTest
{
protected:
    class Step : public luk::OperationStep
    {
    public:
        Step(std::string& log, char name, std::function<void()> reaction)
            : m_log(log), m_name(name), m_reaction(std::move(reaction))
        {
        }
        bool Recordable() const override { return false; }
        int Type() const override { return 0; }
        void Undo() override { Run('-'); }
        void Redo() override { Run('+'); }

    private:
        void Run(char sign)
        {
            m_log += sign;
            m_log += m_name;
            if (m_reaction) {
                m_reaction();
            }
        }

        std::string& m_log;
        char m_name;
        std::function<void()> m_reaction;
    };

    du::SmartPtr<luk::Operation> MakeOperation(const std::string& steps, const std::function<void()>& reaction = {})
    {
        auto operation = du::MakeCounted<luk::Operation>();
        operation->AddStep(nullptr);
        for (const char name : steps) {
            operation->AddStep(du::MakeCounted<Step>(m_log, name, reaction));
        }
        return operation;
    }

    luk::UndoStack m_stack;
    std::string m_log;
};

TEST_F(UndoTest, GoesBackAndForthUntilSomethingElseIsDone)
{
    for (const char* const steps : {"ab", "", "c"}) {
        m_stack.Push(MakeOperation(steps));
    }
    m_stack.Push(nullptr);
    EXPECT_FALSE(m_stack.Redo());
    while (m_stack.Undo()) {
    }
    while (m_stack.Redo()) {
    }
    EXPECT_EQ(m_log, "-c-b-a+a+b+c");
    m_stack.Undo();
    m_stack.Push(MakeOperation("d"));
    EXPECT_FALSE(m_stack.Redo());
    EXPECT_EQ(m_stack.GetUndoCount(), 2u);
}

TEST_F(UndoTest, WhatIsUnderWayIsNotUndoneInItsOwnMiddle)
{
    m_stack.Push(MakeOperation("a"));
    m_stack.Push(MakeOperation("b", [this] {
        m_stack.Push(MakeOperation("x"));
        EXPECT_FALSE(m_stack.Undo());
        EXPECT_FALSE(m_stack.Redo());
    }));
    m_stack.Push(MakeOperation("c"));
    m_stack.Undo();
    EXPECT_TRUE(m_stack.Undo());
    EXPECT_EQ(m_stack.GetRedoCount(), 2u);
    EXPECT_TRUE(m_stack.Redo());
    EXPECT_EQ(m_log, "-c-b+b");
    EXPECT_EQ(m_stack.GetUndoCount(), 2u);
}

TEST_F(UndoTest, ClearingForgetsWhatIsUnderWayToo)
{
    m_stack.Push(MakeOperation("a"));
    m_stack.Push(MakeOperation("bc", [this] { m_stack.Clear(); }));
    EXPECT_TRUE(m_stack.Undo());
    EXPECT_EQ(m_log, "-c-b");
    EXPECT_EQ(m_stack.GetUndoCount() + m_stack.GetRedoCount(), 0u);
    m_stack.Push(MakeOperation("d"));
    EXPECT_TRUE(m_stack.Undo());
}

class Sized : public luannotations::Annotation
{
public:
    Sized() : luannotations::Annotation(0x100000, 0) {}
    void SetMarkupLocation(unsigned int index, const dg::Location& location) override
    {
        got.emplace_back(index, location.GetPosition().x);
    }
    void SetMarkupSize(unsigned int index, const dg::FVec3& size) override { got.emplace_back(index, size.x); }

    std::vector<std::pair<unsigned int, double>> got;
};

TEST_F(UndoTest, MovesAndSizesReachTheMarkupAndHoldTheAnnotation)
{
    const auto at = [](double x) { return dg::Location(dg::FMat33::IDENTITY, {x, 0.0, 0.0}); };
    auto sized = du::MakeCounted<Sized>();
    Sized& annotation = *sized;
    for (const auto& held : {sized, du::SmartPtr<Sized>()}) {
        const auto operation = du::MakeCounted<luk::Operation>();
        operation->AddStep(du::MakeCounted<luannotations::MoveOperationStep>(held, 3u, at(1.0), at(2.0), true));
        operation->AddStep(
            du::MakeCounted<luannotations::SizeOperationStep>(held, 4u, dg::FVec3(5, 0, 0), dg::FVec3(6, 0, 0), true));
        m_stack.Push(operation);
    }
    sized = nullptr;
    while (m_stack.Undo()) {
    }
    while (m_stack.Redo()) {
    }
    EXPECT_EQ(annotation.got,
              (std::vector<std::pair<unsigned int, double>>{{4u, 5.0}, {3u, 1.0}, {3u, 2.0}, {4u, 6.0}}));
    m_stack.Clear();
}

} // namespace
