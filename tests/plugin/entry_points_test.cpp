#include "plugin/ComponentSlot.h"
#include "plugin/EntryPoints.h"
#include "support/SessionTest.h"
#include "xml/SymbolTemplateLoader.h"

#include <dp/LUTracer.h>
#include <luk/Annotation.h>
#include <luk/MemoryPoolAllocated.h>

#include <gtest/gtest.h>

#include <array>
#if defined(_WIN32)
#  include <windows.h>
#else
#  include <dlfcn.h>
#endif

namespace
{

class EntryPoints : public test::SessionTest
{
};

/// An object that tells when it goes.
class Witness : public du::RefCounted
{
public:
    explicit Witness(int& deletions) : m_deletions(deletions) {}
    ~Witness() override { ++m_deletions; }

private:
    int& m_deletions;
};

TEST_F(EntryPoints, UnknownRequestsLeaveTheSlotAlone)
{
    using namespace std::string_literals;
    const std::array<std::string, 3> requests[] = {
        {"", "", ""},
        {"create", "annotation", "Symbol2D"},
        {"create", "annotation", "symbol3d "},
        {"create", "annotation", "symbol"},
        {"create", "annotation", "symbol3dFlattened"},
        {"create", "annotation", "symbol2d3d"},
        {"create", "template", "symbol"},
        {"load", "annotation", "symbol2d"},
        {"load", "annotation", "symbol"},
        {"load", "template", "Symbol"},
        {"load", "template", "symbol "},
        {"load", "template", "symbol\0"s},
        {"load", "template", "sym"},
        {"LOAD", "template", "symbol"},
        {"template", "load", "symbol"},
        {"load", "template", ""},
        {"load", "template", std::string(65536, 's')},
        {"load", "template", "\xff\xfe"},
    };
    int deletions = 0;
    du::SmartPtr<du::RefCounted> slot(new Witness(deletions));
    du::RefCounted* const before = slot.get();
    for (const auto& [action, category, type] : requests) {
        EXPECT_FALSE(LUDllCreateComponent(action, category, type, slot)) << action << '/' << category << '/' << type;
        EXPECT_EQ(slot.get(), before);
    }
    EXPECT_EQ(deletions, 0);
}

TEST_F(EntryPoints, AnAnnotationIsMadeByItsClassWordFromThePool)
{
    for (const char* const word : {"symbol2d", "symbol3d", "symbol3dflattened"}) {
        int deletions = 0;
        du::SmartPtr<du::RefCounted> slot(new Witness(deletions));
        const std::size_t blocks = luk::MemoryPoolAllocated::GetCounters().liveBlocks;
        EXPECT_TRUE(LUDllCreateComponent("create", "annotation", word, slot));
        EXPECT_GT(luk::MemoryPoolAllocated::GetCounters().liveBlocks, blocks);
        EXPECT_EQ(deletions, 1);
        ASSERT_EQ(slot->GetReferenceCount(), 1u);
        EXPECT_EQ(du::DynamicCast<luk::Annotation>(slot)->GetClass().GetText(), word);
    }
}

TEST_F(EntryPoints, ALoaderReplacesWhatTheSlotHeldAndIsTracedOnce)
{
    std::vector<std::string> lines;
    const dp::TraceSink old = dp::LUTracer::SetSink([&](const dp::TraceMessage& message) {
        lines.push_back(std::string(message.channel.channel) + "|" + message.channel.parent + "|" +
                        std::to_string(message.type) + "|" + std::string(message.text));
    });
    int deletions = 0;
    du::SmartPtr<du::RefCounted> slot(new Witness(deletions));
    EXPECT_TRUE(LUDllCreateComponent("load", "template", "symbol", slot));
    dp::LUTracer::SetSink(old);

    EXPECT_EQ(deletions, 1);
    ASSERT_TRUE(slot);
    EXPECT_EQ(slot->GetReferenceCount(), 1u);
    EXPECT_TRUE(du::DynamicCast<lusymbols::SymbolTemplateLoader>(slot));
    EXPECT_EQ(lines, std::vector<std::string>{"lusymbols|root|0|Create new template loader\n"});
    du::SmartPtr<du::RefCounted> second;
    EXPECT_TRUE(LUDllCreateComponent("load", "template", "symbol", second));
    EXPECT_FALSE(slot == second) << "each request makes a fresh component";
}

TEST_F(EntryPoints, ASlotIsEmptiedByNullAndLeftAloneByWhatItHolds)
{
    int deletions = 0;
    du::SmartPtr<du::RefCounted> slot(new Witness(deletions));
    EXPECT_TRUE(lusymbols::StoreComponent(slot, slot.get()));
    EXPECT_EQ(deletions, 0);
    EXPECT_EQ(slot->GetReferenceCount(), 1u);
    EXPECT_TRUE(lusymbols::StoreComponent(slot, nullptr));
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(deletions, 1);
}

TEST_F(EntryPoints, InitAndTerminateAreOneFunctionUnderTwoNames)
{
#if defined(_WIN32)
    const HMODULE library = LoadLibraryA(PLUGIN_PATH);
    const auto find = [&](const char* name) { return reinterpret_cast<void*>(GetProcAddress(library, name)); };
#else
    void* const library = dlopen(PLUGIN_PATH, RTLD_NOW | RTLD_LOCAL);
    const auto find = [&](const char* name) { return dlsym(library, name); };
#endif
    ASSERT_NE(library, nullptr);
    EXPECT_NE(find("LUDllInit"), nullptr);
    EXPECT_EQ(find("LUDllInit"), find("LUDllTerminate"));
}

} // namespace
