#include <dp/LuInfo.h>
#include <du/FileSpec.h>
#include <du/MessageCatalog.h>
#include <du/MessageTable.h>
#include <du/ReferenceLedger.h>
#include <luhost/MessageFile.h>
#include <luhost/Session.h>
#include <luk/illustration/CategoryInfo.h>
#include <luk/illustration/RunningMode.h>
#include <luk/illustration/SymbolTemplate.h>
#include <luk/illustration/SymbolTemplateCollection.h>
#include <luk/illustration2d/Kernel2D.h>
#include <luk/Kernel.h>
#include <luk/World.h>
#include <lukapp/illustration/DrellinApp.h>
#include <lukapp/illustration/SymbolTemplateLoader.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <new>
#include <utility>

namespace luhost
{

namespace
{

using luk::illustration::AssociativeObjectCollection;
using luk::illustration::CategoryInfo;
using luk::illustration::SymbolTemplate;
using luk::illustration::SymbolTemplateCollection;
using luk::illustration2d::BaseKernelFactory;
using luk::illustration2d::Kernel2D;
using luloader::Loader;
using Placement = AssociativeObjectCollection::Placement;

std::atomic<bool> s_isRunning{false};

du::Symbol FolderSymbol(const std::string& folder)
{
    if (folder.empty()) {
        return {};
    }
    du::FileSpec spec;
    spec.SetLocation(folder);
    return du::Symbol(spec.GetFileSpec());
}

} // namespace

struct Session::Parts {
    std::size_t objectsBefore = du::RefCounted::GetLiveObjectCount();
    bool ledgerIsOurs = false;
    std::shared_ptr<const du::MessageTable> messages;
    std::string languageBefore = du::MessageCatalog::GetLanguage();
    bool wasAuthoring = luk::illustration::IsRunningIllustrate();
    du::SmartPtr<luk::Kernel> kernel;
    du::SmartPtr<Loader> loader;
    du::SmartPtr<luk::World> world;
    du::SmartPtr<Kernel2D> kernel2D;
    du::SmartPtr<lukapp::illustration::DrellinApp> app;
    du::SmartPtr<SymbolTemplateCollection> collection;
};

Session::Session(const SessionConfig& config)
{
    if (s_isRunning.exchange(true)) {
        m_problems.emplace_back("another session is running");
        return;
    }
    try {
        m_parts = std::make_unique<Parts>();
        Begin(config);
    } catch (const std::bad_alloc&) {
        Close();
        s_isRunning = false;
        throw;
    }
}

void Session::Begin(const SessionConfig& config)
{
    StartLedger();
    InstallMessages(config);
    MakeKernelAndWorld(config);
    MakeApplication(config);
    m_parts->collection = du::MakeCounted<SymbolTemplateCollection>();
    SymbolTemplateCollection::SetCollection(m_parts->collection);
}

Session::~Session() { Close(); }

bool Session::IsRunning() noexcept { return s_isRunning; }

bool Session::IsActive() const noexcept { return m_parts != nullptr; }

const std::vector<std::string>& Session::GetProblems() const noexcept { return m_problems; }

void Session::StartLedger()
{
    if (LUHOST_REFERENCE_LEDGER && !du::ReferenceLedger::IsOn()) {
        du::ReferenceLedger::SwitchOn();
        m_parts->ledgerIsOurs = true;
    }
}

void Session::InstallMessages(const SessionConfig& config)
{
    du::MessageCatalog::SetLanguage(config.language);
    if (config.messageFile.empty()) {
        return;
    }
    const MessageFile::Result messages = MessageFile::Read(config.messageFile);
    if (!messages) {
        std::string problem = config.messageFile;
        if (messages.line > 0) {
            problem.append(":").append(std::to_string(messages.line));
        }
        m_problems.push_back(problem + ": " + messages.reason);
        return;
    }
    m_parts->messages = messages.table;
    du::MessageCatalog::Install(messages.table);
}

void Session::MakeKernelAndWorld(const SessionConfig& config)
{
    const std::string& sharedLibrary =
        config.sharedSymbolLibraryFolder.empty() ? config.sharedCacheFolder : config.sharedSymbolLibraryFolder;
    const std::string& sharedCache = config.sharedCacheFolder.empty() ? sharedLibrary : config.sharedCacheFolder;
    dp::LuInfo::SetLuviewSharedCachePrefsDir(FolderSymbol(sharedCache));

    const auto preferences = du::MakeCounted<luk::Preferences>();
    preferences->SetBaseURL(FolderSymbol(config.baseFolder));
    preferences->SetSharedSymbolLibrary(config.sharedSymbolLibraryEnabled, FolderSymbol(sharedLibrary));
    for (const auto& [key, color] : config.colors) {
        preferences->SetIntUIColor(key, color);
    }
    m_parts->kernel = du::MakeCounted<luk::Kernel>();
    luk::Kernel::SetKernel(m_parts->kernel);
    m_parts->world = du::MakeCounted<luk::World>();
    m_parts->world->SetPreferences(preferences);
    m_parts->world->SetIllustrationPreferences(preferences);
    luk::World::SetWorld(m_parts->world);
    m_parts->loader = du::MakeCounted<Loader>(config.loader);
    Loader::SetLoader(m_parts->loader);
    m_parts->kernel2D = du::MakeCounted<Kernel2D>();
    m_parts->kernel2D->SetFactory(Kernel2D::BASE_KERNEL_FACTORY, du::MakeCounted<BaseKernelFactory>());
    Kernel2D::SetSingleton(m_parts->kernel2D);
    luk::illustration::SetRunningIllustrate(config.authoring);
}

void Session::MakeApplication(const SessionConfig& config)
{
    const du::Symbol folder = config.temporaryDirectory.empty() ? du::Symbol() : du::Symbol(config.temporaryDirectory);
    m_parts->app = du::MakeCounted<lukapp::illustration::DrellinApp>(folder);
    lukapp::LukApp::Set(m_parts->app);
    du::Symbol directory;
    if (!m_parts->app->GetTemporaryDirectory(directory)) {
        m_problems.emplace_back("no temporary folder could be made");
    }
}

Session::LoadCounts Session::LoadLibrary(const std::string& path,
                                         const du::SmartPtr<lukapp::illustration::SymbolTemplateLoader>& loader)
{
    LoadCounts counts;
    if (!m_parts || !loader) {
        return counts;
    }
    loader->SetPreferences(m_parts->world->GetPreferences());
    std::vector<du::SmartPtr<SymbolTemplate>> templates;
    std::vector<du::SmartPtr<CategoryInfo>> categories;
    counts.loaded = loader->GetTemplateList(du::Symbol(path), templates);
    loader->GetCategoryList(categories);
    const auto information = loader->GetCollectionInformation();
    PutIntoCollection(templates, categories, counts);
    m_parts->collection->SetInformation(information);
    return counts;
}

void Session::PutIntoCollection(const std::vector<du::SmartPtr<SymbolTemplate>>& templates,
                                const std::vector<du::SmartPtr<CategoryInfo>>& categories, LoadCounts& counts)
{
    AssociativeObjectCollection& collection = *m_parts->collection;
    AssociativeObjectCollection::Merge merge(collection);
    if (collection.GetAssociativeObjectCount() == 0) {
        merge.Reserve(templates.size(), categories.size());
    }
    for (const du::SmartPtr<CategoryInfo>& category : categories) {
        const Placement placement = merge.PutCategory(category);
        counts.categoriesAdded += placement == Placement::Added;
        counts.categoriesReplaced += placement == Placement::Changed || placement == Placement::Unchanged;
    }
    bool fromStandard = false;
    for (const du::SmartPtr<SymbolTemplate>& entry : templates) {
        const Placement placement = merge.PutObject(entry);
        counts.added += placement == Placement::Added;
        counts.changed += placement == Placement::Changed;
        counts.unchanged += placement == Placement::Unchanged;
        fromStandard = fromStandard || (entry && entry->IsOOTB());
    }
    if (fromStandard) {
        merge.SetLoadedFromStandard();
    }
    merge.Commit();
}

Session::LeftOver Session::Close()
{
    if (!m_parts) {
        return {};
    }
    EndLoadsAndScenes();
    SymbolTemplateCollection::SetCollection(nullptr);
    if (m_parts->collection) {
        m_parts->collection->Clear();
    }
    m_parts->collection = nullptr;
    Kernel2D::SetSingleton(nullptr);
    m_parts->kernel2D = nullptr;
    luk::illustration::SetRunningIllustrate(m_parts->wasAuthoring);
    lukapp::LukApp::Set(nullptr);
    m_parts->app = nullptr;
    luk::World::SetWorld(nullptr);
    m_parts->world = nullptr;
    dp::LuInfo::SetLuviewSharedCachePrefsDir(du::Symbol());
    if (m_parts->messages) {
        du::MessageCatalog::Remove(m_parts->messages);
    }
    du::MessageCatalog::SetLanguage(std::move(m_parts->languageBefore));
    luk::Kernel::SetKernel(nullptr);
    m_parts->kernel = nullptr;

    LeftOver leftOver = TellLeftOver();
    m_parts.reset();
    s_isRunning = false;
    return leftOver;
}

/// A session that memory did not suffice for has only some of its parts. Scenes go while the collection can still be found, where symbols that end with them unregister their observers; the
/// loader stays to be found as well, and drops what is asked of it.
void Session::EndLoadsAndScenes()
{
    if (m_parts->loader) {
        m_parts->loader->Stop();
    }
    if (m_parts->kernel) {
        m_parts->kernel->Close();
    }
    if (m_parts->world) {
        m_parts->world->CloseScenes();
    }
    Loader::SetLoader(nullptr);
    m_parts->loader = nullptr;
}

Session::LeftOver Session::TellLeftOver() const
{
    LeftOver leftOver;
    const std::size_t objects = du::RefCounted::GetLiveObjectCount();
    leftOver.objects = objects - std::min(objects, m_parts->objectsBefore);
    if (m_parts->ledgerIsOurs) {
        try {
            leftOver.holders = du::ReferenceLedger::Describe();
        } catch (const std::bad_alloc&) {
            leftOver.holders = "out of memory"; // short enough to need none
        }
        du::ReferenceLedger::SwitchOff();
    }
    if (LUHOST_REFERENCE_LEDGER && !leftOver.IsClean()) {
        std::fprintf(stderr, "The session left %zu objects alive:\n%s", leftOver.objects, leftOver.holders.c_str());
    }
    return leftOver;
}

} // namespace luhost
