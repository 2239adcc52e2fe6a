#include "FuzzWorkplace.h"

#include "Fuzzing.h"
#include "plugin/EntryPoints.h"

#include <luhost/ProductMeshReader.h>
#include <luk/Annotation.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>
#include <luloader/Loader.h>

#include <utility>

namespace fuzz
{

namespace
{

luhost::SessionConfig MakeConfig()
{
    luhost::SessionConfig config;
    config.baseFolder = GetFolder();
    config.temporaryDirectory = GetFolder() + "/temporary";
    config.loader.workers = 1;
    config.loader.shapeReaders = {std::make_shared<luhost::ProductMeshReader>()};
    return config;
}

/// What a package holds, as one text.
std::string Told(const MemoryPackages::Entries& entries)
{
    std::string text;
    for (const auto& [name, bytes] : entries) {
        text.append("=== ").append(name).append("\n").append(bytes).append("\n");
    }
    return text;
}

} // namespace

bool MemoryPackages::Read(const std::string& path, std::vector<luhost::PackageEntry>& entries, std::string&) const
{
    for (const auto& [name, bytes] : files[path]) {
        entries.push_back({name, bytes});
    }
    return true;
}

bool MemoryPackages::Write(const std::string& path, std::vector<luhost::PackageEntry> entries, std::string&) const
{
    files[path].clear();
    for (luhost::PackageEntry& entry : entries) {
        Require(files[path].emplace(entry.name, std::move(entry.bytes)).second, "no entry is written twice");
    }
    return true;
}

FuzzWorkplace::FuzzWorkplace() : m_session(std::make_unique<luhost::Session>(MakeConfig())) {}

FuzzWorkplace::~FuzzWorkplace()
{
    const luhost::Session::LeftOver left = m_session->Close();
    Require(left.IsClean(), "nothing outlives the session: " + std::to_string(left.objects) + "\n" + left.holders);
}

luhost::Document::Setup FuzzWorkplace::MakeSetup() const
{
    return {[](const std::string& word) { return CreateComponent("create", "annotation", word); }, m_packages};
}

std::unique_ptr<luhost::Document> FuzzWorkplace::Open(const std::string& name) const
{
    using luk::illustration::SymbolTemplateCollection;
    SymbolTemplateCollection::GetCollection()->Clear();
    std::string error;
    std::unique_ptr<luhost::Document> document = luhost::Document::Open(name, MakeSetup(), error);
    Require((document == nullptr) == !error.empty(), "a document or a reason");
    if (!document) {
        return document;
    }
    if (!document->GetLibraryText().empty()) {
        m_session->LoadLibrary(
            FillFile("library.xml", document->GetLibraryText()),
            du::DynamicCast<lukapp::illustration::SymbolTemplateLoader>(CreateComponent("load", "template", "symbol")));
    }
    document->AttachAnnotations();
    luloader::Loader::GetLoader()->WaitForLoads();
    return document;
}

std::unique_ptr<luhost::Document> FuzzWorkplace::SaveAndOpen(std::unique_ptr<luhost::Document> document,
                                                             bool isSame) const
{
    std::string error;
    if (!document->Save("first", error)) {
        Require(!error.empty(), "a reason for what cannot be saved");
        return document;
    }
    const std::size_t before = document->GetAnnotations().size() + document->GetUnknownAnnotationCount();
    document = nullptr;
    document = Open("first");
    Require(document != nullptr, "what was saved opens");
    Require(document->GetAnnotations().size() + document->GetUnknownAnnotationCount() == before, "no symbol is lost");
    Require(document->Save("second", error), "what was saved and opened can be saved");
    if (isSame) {
        RequireSame(Told(m_packages->files["first"]), Told(m_packages->files["second"]), "saved again it is the same");
    }
    return document;
}

du::SmartPtr<du::RefCounted> FuzzWorkplace::CreateComponent(const char* action, const char* category,
                                                            const std::string& type)
{
    du::SmartPtr<du::RefCounted> slot;
    LUDllCreateComponent(action, category, type, slot);
    return slot;
}

} // namespace fuzz
