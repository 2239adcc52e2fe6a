#pragma once

#include <du/SmartPtr.h>
#include <du/Symbol.h>
#include <luk/illustration/SbomTree.h>
#include <lukapp/LukApp.h>

namespace lukapp::illustration
{

/// The running illustration application.
///
/// Ownership: an application that is given no temporary folder makes a fresh one that nobody else can enter, and deletes
/// it with all its content at its own end. A given folder is used and left alone.
///
/// Errors: when the fresh folder cannot be made there is none, and GetTemporaryDirectory says so.
class LUHOST_API DrellinApp : public LukApp
{
public:
    /// @param temporaryDirectory null for a fresh private folder
    explicit DrellinApp(const du::Symbol& temporaryDirectory = du::Symbol());
    ~DrellinApp() override;

    /// The running application as this class; null outside a session and for an application of another kind.
    static du::SmartPtr<DrellinApp> GetDrellinApp();

    /// @param[out] directory an absolute path without a separator at its end; untouched when there is none
    /// @return false when there is none
    bool GetTemporaryDirectory(du::Symbol& directory) const;

    /// The service tree of the open document; null when it has none.
    const du::SmartPtr<luk::illustration::SbomTree>& GetSbomTree() const noexcept { return m_sbomTree; }
    void SetSbomTree(const du::SmartPtr<luk::illustration::SbomTree>& tree) { m_sbomTree = tree; }

private:
    du::SmartPtr<luk::illustration::SbomTree> m_sbomTree;
    du::Symbol m_temporaryDirectory;
    bool m_ownsDirectory = false;
};

} // namespace lukapp::illustration
