#pragma once

#include <luhost/Document.h>
#include <luhost/Session.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace fuzz
{

/// Packages in memory.
class MemoryPackages : public luhost::PackageFormat
{
public:
    using Entries = std::map<std::string, std::string>;

    bool Read(const std::string& path, std::vector<luhost::PackageEntry>& entries, std::string& error) const override;
    bool Write(const std::string& path, std::vector<luhost::PackageEntry> entries, std::string& error) const override;

    mutable std::map<std::string, Entries> files;
};

/// A session of the host whose documents are packages in memory, and whose annotations are those of the plug-in.
///
/// Use: one for each input. Close requires that nothing was left.
class FuzzWorkplace
{
public:
    FuzzWorkplace();
    ~FuzzWorkplace();
    FuzzWorkplace(const FuzzWorkplace&) = delete;
    FuzzWorkplace& operator=(const FuzzWorkplace&) = delete;

    luhost::Document::Setup MakeSetup() const;
    MemoryPackages& GetPackages() { return *m_packages; }

    /// Opens a package, loads the library entries that it brought along, and attaches its annotations, with their files.
    /// @return null for a package that is no document
    std::unique_ptr<luhost::Document> Open(const std::string& name) const;

    /// Saves and opens what was saved, which has as many annotations, and saves that.
    /// @param isSame whether both have to be the same
    /// @return the opened one
    std::unique_ptr<luhost::Document> SaveAndOpen(std::unique_ptr<luhost::Document> document, bool isSame = true) const;

    static du::SmartPtr<du::RefCounted> CreateComponent(const char* action, const char* category,
                                                        const std::string& type);

private:
    std::shared_ptr<MemoryPackages> m_packages = std::make_shared<MemoryPackages>();
    std::unique_ptr<luhost::Session> m_session;
};

} // namespace fuzz
