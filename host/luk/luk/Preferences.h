#pragma once

#include <du/RefCounted.h>
#include <du/Symbol.h>
#include <luk/Object.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

namespace dg
{
struct Color;
}

namespace luk
{

/// What the user has set. Folders are plain absolute paths without a separator at the end.
///
/// Threads and locks: set up by the session on the host thread before anyone else sees it; read on any thread.
class LUHOST_API Preferences : public Object, public virtual du::RefCounted
{
public:
    Preferences();
    ~Preferences() override;

    /// Folder below which the user's symbol library lies.
    du::Symbol GetBaseURL() const;
    void SetBaseURL(const du::Symbol& folder);

    bool IsSharedSymbolLibraryEnabled() const;
    du::Symbol GetSharedSymbolLibraryFolder() const;
    void SetSharedSymbolLibrary(bool enabled, const du::Symbol& folder);

    /// Leaves the colour as it is when the key is not set.
    void GetIntUIAsColor(std::string_view key, dg::Color& color, bool* found = nullptr) const;
    void SetIntUIColor(std::string_view key, const dg::Color& color);

    /// How often any preference has been read; lets a test see who reads more than needed.
    std::uint64_t GetReadCount() const noexcept { return m_reads.load(std::memory_order_relaxed); }

private:
    struct Colors;

    void CountRead() const noexcept { m_reads.fetch_add(1, std::memory_order_relaxed); }

    du::Symbol m_baseUrl;
    du::Symbol m_sharedSymbolLibraryFolder;
    std::unique_ptr<Colors> m_colors;
    bool m_sharedSymbolLibraryEnabled = false;
    mutable std::atomic<std::uint64_t> m_reads{0};
};

} // namespace luk
