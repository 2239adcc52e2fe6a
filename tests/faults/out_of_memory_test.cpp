#include "annotations2d/Symbol2D.h"
#include "annotations3d/SymbolAnnotation.h"
#include "faults/AllocationFaults.h"
#include "plugin/EntryPoints.h"
#include "support/SessionTest.h"
#include "xml/SymbolTemplateWriter.h"

#include <du/FileSystem.h>
#include <du/ReferenceLedger.h>
#include <luhost/Document.h>
#include <luhost/io/PictureDecoders.h>
#include <luhost/io/ZipPackageFormat.h>
#include <luhost/ProductMeshReader.h>
#include <luk/Annotation.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/SymbolTemplate.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/ShapeInstance.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>
#include <luloader/Loader.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

namespace
{

using luhost::Document;
using luk::illustration::SymbolTemplateCollection;
using test::allocation_faults::GetLiveBytes;
using test::allocation_faults::Mode;
using test::allocation_faults::Window;

using Entries = std::map<std::string, std::string>;

/// Packages in memory.
class MemoryPackages : public luhost::PackageFormat
{
public:
    bool Read(const std::string& path, std::vector<luhost::PackageEntry>& entries, std::string&) const override
    {
        for (const auto& [name, bytes] : files[path]) {
            entries.push_back({name, bytes});
        }
        return true;
    }

    bool Write(const std::string& path, std::vector<luhost::PackageEntry> entries, std::string&) const override
    {
        Entries written;
        for (luhost::PackageEntry& entry : entries) {
            written.emplace(entry.name, std::move(entry.bytes));
        }
        files[path].swap(written);
        return true;
    }

    mutable std::map<std::string, Entries> files;
};

/// The entries of a package that stands as text: each behind a line "=== NAME".
Entries ToEntries(const std::string& text)
{
    Entries entries;
    for (std::size_t start = 0; start < text.size();) {
        const std::size_t nameEnd = text.find('\n', start);
        const std::size_t end = std::min(text.find("\n=== ", nameEnd), text.size() - 1);
        entries[text.substr(start + 4, nameEnd - start - 4)] = text.substr(nameEnd + 1, end - nameEnd - 1);
        start = end + 1;
    }
    return entries;
}

std::string Replaced(std::string text, const std::string& old, const std::string& with)
{
    for (std::size_t at = 0; (at = text.find(old, at)) != std::string::npos; at += with.size()) {
        text.replace(at, old.size(), with);
    }
    return text;
}

/// Does something again and again, each time with another allocation that fails, until it gets by without that one.
class OutOfMemory : public test::SessionTest, public testing::WithParamInterface<Mode>
{
protected:
    OutOfMemory()
    {
        m_config.baseFolder = EXAMPLES "/library";
        m_config.loader.workers = 1;
        m_config.loader.maximumCachedBytes = 0;
        m_config.loader.decoders = luhost::io::MakePictureDecoders();
        m_config.loader.shapeReaders = {std::make_shared<luhost::ProductMeshReader>()};
        RestartSession();
    }

    /// @param work what allocates; false when it tells a reason why it could not
    /// @param check what has to hold afterwards, told whether the work was done. Leaves everything as it was before
    /// @param stride more than 1 for works with many allocations of the same kinds
    void FailEach(const std::function<bool()>& work, const std::function<void(bool)>& check, std::size_t stride = 1)
    {
        for (int i = 0; i < 3; ++i) { // what is allocated once and kept
            ASSERT_TRUE(work());
            check(true);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50)); // a worker may have something to put away
        const std::size_t bytes = GetLiveBytes();
        const std::vector<std::string> held = HeldClasses();
        const std::size_t bytesOfHeld = GetLiveBytes() - bytes;
        std::size_t count = 0;
        std::size_t number = GetParam() == Mode::Once ? 1 : 1 + stride / 2;
        for (bool hasFailed = true; hasFailed && !HasFailure(); number += stride, ++count) {
            const bool isDone = Fail(number, work, hasFailed);
            EXPECT_TRUE(isDone || hasFailed) << "allocation " << number;
            check(isDone);
            EXPECT_TRUE(work()) << "allocation " << number;
            check(true);
            EXPECT_EQ(WaitForLiveBytes(bytes + bytesOfHeld), bytes + bytesOfHeld) << "allocation " << number;
            EXPECT_EQ(HeldClasses(), held) << "allocation " << number;
        }
        RecordProperty("failed", std::to_string(count - 1));
    }

    /// The classes of all objects that are held, once for each holder.
    static std::vector<std::string> HeldClasses()
    {
        std::vector<std::string> classes;
        for (const du::ReferenceLedger::Entry& entry : du::ReferenceLedger::GetOpenEntries()) {
            classes.push_back(entry.objectClass);
        }
        std::sort(classes.begin(), classes.end());
        return classes;
    }

    /// Gives workers time to come to rest.
    static std::size_t WaitForLiveBytes(std::size_t expected)
    {
        for (int i = 0; i < 1000 && GetLiveBytes() != expected; ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return GetLiveBytes();
    }

    static bool Fail(std::size_t number, const std::function<bool()>& work, bool& hasFailed)
    {
        const Window window(GetParam(), number);
        bool isDone = false;
        try {
            isDone = work();
        } catch (const std::bad_alloc&) {
            isDone = false;
        }
        hasFailed = Window::HasFailed();
        return isDone;
    }

    static du::SmartPtr<du::RefCounted> MakeComponent(const char* action, const char* category, const std::string& type)
    {
        du::SmartPtr<du::RefCounted> slot;
        LUDllCreateComponent(action, category, type, slot);
        return slot;
    }

    static du::SmartPtr<lukapp::illustration::SymbolTemplateLoader> MakeLoader()
    {
        return du::DynamicCast<lukapp::illustration::SymbolTemplateLoader>(MakeComponent("load", "template", "symbol"));
    }

    static Document::Setup MakeSetup(const std::shared_ptr<MemoryPackages>& packages)
    {
        return {[](const std::string& word) { return MakeComponent("create", "annotation", word); }, packages};
    }

    /// With a product, a service tree, and symbols of both kinds whose files can be read.
    static Entries ExampleDocument()
    {
        Entries entries = ToEntries(test::TemporaryFolder::ReadFile(DOCUMENT));
        entries["Symbols/screwdriver.ply"] = entries["product/mesh-1.ply"];
        entries.erase("Symbols/screwdriver.obj");
        for (std::string* const text : {&entries["document.xml"], &entries["library.xml"]}) {
            *text = Replaced(*text, "screwdriver.obj", "screwdriver.ply");
        }
        return entries;
    }

    /// What is wrong with the files of symbols.
    static std::string ProblemsOf(const Document& document)
    {
        std::string problems;
        for (const auto& annotation : document.GetAnnotations()) {
            const auto flat = du::DynamicCast<luannotations::Symbol2D>(annotation);
            if (flat && !(flat->GetImage() && flat->GetImage()->GetImageData())) {
                problems += flat->GetImage() ? flat->GetImage()->GetProblem() : "no image";
            }
            const auto solid = du::DynamicCast<luannotations::SymbolAnnotation>(annotation);
            const auto instance = solid ? solid->GetShapeInstance() : nullptr;
            if (solid && !(instance && instance->GetShape() && instance->GetShape()->IsLoaded())) {
                problems += instance && instance->GetShape() ? instance->GetShape()->GetProblem() : "no shape";
            }
        }
        return problems;
    }

    bool LoadLibrary(const std::string& path)
    {
        const auto loader =
            du::DynamicCast<lukapp::illustration::SymbolTemplateLoader>(MakeComponent("load", "template", "symbol"));
        return loader && GetSession().LoadLibrary(path, loader).loaded;
    }
};

TEST_P(OutOfMemory, AComponentIsMadeOrTheSlotIsAsItWas)
{
    for (const auto& words : {std::array{"load", "template", "symbol"},
                              {"create", "annotation", "symbol2d"},
                              {"create", "annotation", "symbol3d"},
                              {"create", "annotation", "symbol3dflattened"}}) {
        const auto before = MakeComponent("load", "template", "symbol");
        du::SmartPtr<du::RefCounted> slot;
        FailEach([&] { return LUDllCreateComponent(words[0], words[1], words[2], slot = before); },
                 [&](bool isDone) {
                     EXPECT_EQ(slot == before, !isDone);
                     slot = nullptr;
                 });
    }
}

TEST_P(OutOfMemory, ALibraryIsLoadedWholeOrNotAtAll)
{
    SymbolTemplateCollection& collection = *SymbolTemplateCollection::GetCollection();
    for (const char* const name : {"SymbolsLibrary", "SymbolsLibrary/standard"}) {
        const std::string path = std::string(EXAMPLES "/library/").append(name).append("/PartSymbolLibrary.xml");
        std::pair<std::size_t, std::size_t> whole;
        FailEach([&] { return LoadLibrary(path); },
                 [&](bool isDone) {
                     const std::pair counts(collection.GetAssociativeObjectCount(), collection.GetCategoryCount());
                     whole = std::max(whole, counts);
                     EXPECT_EQ(counts, isDone ? whole : std::pair(std::size_t{0}, std::size_t{0}));
                     collection.Clear();
                     collection.SetInformation(nullptr);
                 },
                 std::string_view(name).ends_with("standard") ? 7 : 1);
        EXPECT_GE(whole.first, 7U);
    }
}

TEST_P(OutOfMemory, ALoaderThatFailedReadsEachEntryOnce)
{
    const du::Symbol path(EXAMPLES "/library/SymbolsLibrary/PartSymbolLibrary.xml");
    du::SmartPtr<lukapp::illustration::SymbolTemplateLoader> loader;
    std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> templates;
    FailEach(
        [&] {
            loader = MakeLoader();
            return loader->GetTemplateList(path, templates);
        },
        [&](bool isDone) {
            EXPECT_EQ(templates.size(), isDone ? 7U : 0U);
            if (loader && !isDone) {
                EXPECT_TRUE(loader->GetTemplateList(path, templates));
                EXPECT_EQ(templates.size(), 7U);
            }
            std::vector<du::SmartPtr<luk::illustration::CategoryInfo>> categories;
            if (loader) {
                loader->GetCategoryList(categories);
                EXPECT_EQ(categories.size(), 2U);
            }
            decltype(templates)().swap(templates);
            loader = nullptr;
        });
}

TEST_P(OutOfMemory, ALibraryReplacesItsEntriesAllOrNone)
{
    const std::string path = EXAMPLES "/library/SymbolsLibrary/PartSymbolLibrary.xml";
    const std::string before = test::TemporaryFolder::ReadFile(path);
    const std::string after = Replaced(Replaced(before, "<name>3D", "<name>New"), "<name>My", "<name>Your");
    SymbolTemplateCollection& collection = *SymbolTemplateCollection::GetCollection();
    const auto names = [&collection] {
        std::string text;
        for (const auto& entry : collection.GetAssociativeObjects()) {
            text.append(entry->GetName()).append(", ");
        }
        std::vector<du::SmartPtr<luk::illustration::CategoryInfo>> categories;
        collection.GetCategories(categories);
        for (const auto& category : categories) {
            EXPECT_EQ(collection.FindCategoryByName(category->GetName()), category);
            text.append(category->GetName()).append(", ");
        }
        return text;
    };
    const auto restore = [&] {
        collection.Clear();
        EXPECT_TRUE(LoadLibrary(before));
    };
    restore();
    const std::string oldNames = names();
    FailEach([&] { return LoadLibrary(after); },
             [&](bool isDone) {
                 EXPECT_EQ(names(), isDone ? Replaced(Replaced(oldNames, "3D", "New"), "My", "Your") : oldNames);
                 restore();
             });
}

TEST_P(OutOfMemory, ADocumentIsOpenedWholeOrNotAtAll)
{
    const auto packages = std::make_shared<MemoryPackages>();
    packages->files["in"] = ExampleDocument();
    const auto loader = luloader::Loader::GetLoader();
    std::unique_ptr<Document> kept;
    std::string whole;
    FailEach(
        [&] {
            // Ends where memory has run out, when it has.
            std::string error;
            std::unique_ptr<Document> document = Document::Open("in", MakeSetup(packages), error);
            EXPECT_EQ(document == nullptr, !error.empty()) << error;
            if (document) {
                LoadLibrary(document->GetLibraryText());
                document->AttachAnnotations();
                loader->WaitForLoads();
                kept = std::move(document);
            }
            return kept && kept->GetProblems().empty() && ProblemsOf(*kept).empty();
        },
        [&](bool isDone) {
            EXPECT_TRUE(loader->WaitForLoads());
            if (isDone) {
                std::string error;
                EXPECT_TRUE(kept->Save("out", error)) << error;
                const std::string saved = packages->files["out"]["document.xml"];
                whole = whole.empty() ? saved : whole;
                EXPECT_EQ(saved, whole);
                packages->files.erase("out");
            }
            kept = nullptr;
            EXPECT_TRUE(loader->WaitForLoads());
            SymbolTemplateCollection::GetCollection()->Clear();
            SymbolTemplateCollection::GetCollection()->SetInformation(nullptr);
        },
        3);
}

TEST_P(OutOfMemory, ADocumentIsSavedWholeOrNotAtAll)
{
    const auto packages = std::make_shared<MemoryPackages>();
    packages->files["in"] = ExampleDocument();
    std::string error;
    const auto document = Document::Open("in", MakeSetup(packages), error);
    ASSERT_TRUE(document) << error;
    LoadLibrary(document->GetLibraryText());
    document->AttachAnnotations();
    ASSERT_TRUE(luloader::Loader::GetLoader()->WaitForLoads());
    Entries whole;
    FailEach([&] { return document->Save("out", error); },
             [&](bool isDone) {
                 Entries saved;
                 packages->files["out"].swap(saved);
                 whole = whole.empty() ? saved : whole;
                 EXPECT_EQ(saved, isDone ? whole : Entries());
                 std::string().swap(error);
             });
}

TEST_P(OutOfMemory, APackageIsWrittenAndReadWholeOrNotAtAll)
{
    std::vector<luhost::PackageEntry> entries;
    for (const auto& [name, bytes] : ExampleDocument()) {
        entries.push_back({name, bytes});
    }
    const luhost::io::ZipPackageFormat zip;
    const std::string file = m_folder.Write("package.luz", "before");
    const std::string written = m_folder.Path("written.luz");
    std::string error;
    ASSERT_TRUE(zip.Write(written, entries, error)) << error;
    const std::string whole = m_folder.Read("written.luz");
    FailEach([&] { return zip.Write(file, entries, error); },
             [&](bool isDone) {
                 EXPECT_EQ(m_folder.Read("package.luz"), isDone ? whole : "before");
                 m_folder.Write("package.luz", "before");
                 std::string().swap(error);
             });
    std::vector<luhost::PackageEntry> read;
    FailEach([&] { return zip.Read(written, read, error); },
             [&](bool isDone) {
                 EXPECT_TRUE(!isDone || read.size() == entries.size());
                 std::vector<luhost::PackageEntry>().swap(read);
                 std::string().swap(error);
             });
}

TEST_P(OutOfMemory, ALibraryIsWrittenWholeOrNotAtAll)
{
    ASSERT_TRUE(LoadLibrary(EXAMPLES "/library/SymbolsLibrary/PartSymbolLibrary.xml"));
    std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>> templates;
    for (const auto& entry : SymbolTemplateCollection::GetCollection()->GetAssociativeObjects()) {
        templates.push_back(du::DynamicCast<luk::illustration::SymbolTemplate>(entry));
    }
    const du::Symbol file(m_folder.Write("library.xml", "before"));
    std::string whole;
    FailEach(
        [&] {
            lusymbols::SymbolTemplateWriter(false).ToXml(file, std::vector(templates), {});
            return true;
        },
        [&](bool isDone) {
            std::string written = m_folder.Read("library.xml");
            EXPECT_GT(written.size(), isDone ? 1000U : 5U);
            whole = whole.empty() ? written : whole;
            EXPECT_EQ(written, isDone ? whole : "before");
            m_folder.Write("library.xml", "before");
        });
}

TEST_P(OutOfMemory, AFolderIsDeletedOrItIsToldThatItIsNot)
{
    const std::string folder = m_folder.Path("folder");
    m_folder.Write("folder/inside/file", "x");
    FailEach([&] { return du::FileSystem::DeletePath(folder); },
             [&](bool isDone) {
                 EXPECT_EQ(du::FileSystem::DirExists(folder), !isDone);
                 m_folder.Write("folder/inside/file", "x");
             });
}

TEST_P(OutOfMemory, ASessionBeginsOrLeavesNothing)
{
    EndSession();
    m_config.temporaryDirectory = m_folder.Path(); // one of its own has another name each time
    FailEach(
        [&] {
            luhost::Session session(m_config);
            return session.IsActive() && session.GetProblems().empty();
        },
        [](bool) { EXPECT_FALSE(luhost::Session::IsRunning()); });
}

INSTANTIATE_TEST_SUITE_P(Modes, OutOfMemory, testing::Values(Mode::Once, Mode::FromThere),
                         [](const auto& tested) { return tested.param == Mode::Once ? "Once" : "FromThereOn"; });

} // namespace
