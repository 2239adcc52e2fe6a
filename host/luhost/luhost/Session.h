#pragma once

#include <du/SmartPtr.h>
#include <luhost/SessionConfig.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace luk::illustration
{
class CategoryInfo;
class SymbolTemplate;
} // namespace luk::illustration

namespace lukapp::illustration
{
class SymbolTemplateLoader;
}

namespace luhost
{

/// One run of the host: makes and owns all that `World::GetWorld`, `Kernel::GetKernel`, `Loader::GetLoader`,
/// `Kernel2D::GetSingleton`, `SymbolTemplateCollection::GetCollection`, `DrellinApp::GetDrellinApp` and `LukApp::Get` hand
/// out.
///
/// Use: `luhost::Session session(config);` for as long as the host works. There is one at a time; another may follow.
///
/// Ownership: torn down in a fixed order: loader stopped and its loads dropped, queued events dropped, undo stack cleared,
/// scenes closed, which detaches their annotations, collection cleared and its observers detached, 2D kernel, application
/// with its temporary folder, preferences and world, messages, kernel. From then on every getter answers null, and whoever
/// kept a handle keeps an object without a session.
///
/// *Rationale:* whoever ends at one step may still ask for what goes at a later one, and unregister there.
///
/// Errors: a session that cannot have what its configuration asks for still works without it; GetProblems tells. One that
/// memory does not suffice for throws std::bad_alloc and leaves nothing.
///
/// Threads: made, used and ended on the host thread.
class LUHOST_API Session
{
public:
    explicit Session(const SessionConfig& config);
    ~Session();
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    static bool IsRunning() noexcept;

    /// False for a session made while another one runs: it owns nothing and does nothing.
    bool IsActive() const noexcept;

    /// What the configuration asked for and could not be had, in words.
    const std::vector<std::string>& GetProblems() const noexcept;

    struct LoadCounts {
        std::size_t added = 0;
        std::size_t changed = 0;
        std::size_t unchanged = 0;
        std::size_t categoriesAdded = 0;
        std::size_t categoriesReplaced = 0;
        bool loaded = false; ///< whether the loader understood the request
    };

    /// Asks the loader, which is made afresh for each call, for the entries and categories of a library and puts them
    /// into the collection: one whose id is there already replaces the one that is there, the n-th of an id the n-th.
    /// Observers are told once. Entries that are no longer in the library stay. When memory does not suffice, std::bad_alloc
    /// is thrown and the collection is as it was.
    LoadCounts LoadLibrary(const std::string& path,
                           const du::SmartPtr<lukapp::illustration::SymbolTemplateLoader>& loader);

    /// What a session left behind.
    struct LeftOver {
        std::size_t objects = 0; ///< counted objects alive now that were not when the session began
        std::string holders;     ///< who holds what, one line each; only builds with the reference ledger know

        bool IsClean() const noexcept { return objects == 0 && holders.empty(); }
    };

    /// Ends the session now; the destructor does so at the latest. Builds with the reference ledger print what is left.
    LeftOver Close();

private:
    struct Parts;

    void Begin(const SessionConfig& config);
    void StartLedger();
    void InstallMessages(const SessionConfig& config);
    void MakeKernelAndWorld(const SessionConfig& config);
    void MakeApplication(const SessionConfig& config);
    void PutIntoCollection(const std::vector<du::SmartPtr<luk::illustration::SymbolTemplate>>& templates,
                           const std::vector<du::SmartPtr<luk::illustration::CategoryInfo>>& categories,
                           LoadCounts& counts);
    void EndLoadsAndScenes();
    LeftOver TellLeftOver() const;

    std::unique_ptr<Parts> m_parts;
    std::vector<std::string> m_problems;
};

} // namespace luhost
