#pragma once

#include <du/SmartPtr.h>
#include <du/TextHash.h>
#include <luk/Mesh.h>
#include <luloader/RegularFile.h>

#include <cstddef>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

namespace luloader
{

/// Meshes that were read, found by the file or by what stood in it.
///
/// Ownership: keeps meshes that nobody else has up to a number of bytes, those asked for lately. A mesh in use is kept too,
/// since it costs nothing then.
///
/// Threads: the owner locks.
///
/// Cost: constant for each call, spread over all of them; the contents of files are not kept.
class ShapeCache
{
public:
    /// *Rationale:* a digest under a key that is made anew in each process stands for the bytes, because the files are too
    /// large to keep beside their meshes.
    struct Content {
        std::size_t size = 0;
        std::size_t digest = 0;

        explicit Content(const std::string& bytes);
        bool operator==(const Content&) const = default;
        bool operator<(const Content& other) const
        {
            return std::pair(size, digest) < std::pair(other.size, other.digest);
        }
    };

    explicit ShapeCache(std::size_t maximumBytes) : m_maximumBytes(maximumBytes), m_sweepAt(maximumBytes) {}

    /// @param identity of the file now; one that was changed lately says nothing about its bytes
    du::SmartPtr<luk::Mesh> FindFile(const std::string& path, const FileIdentity& identity);
    /// From now on the mesh is found by the file too.
    du::SmartPtr<luk::Mesh> FindContent(const Content& content, const std::string& path, const FileIdentity& identity);
    void Add(const Content& content, const std::string& path, const FileIdentity& identity,
             const du::SmartPtr<luk::Mesh>& mesh);
    void Clear();

private:
    struct Entry {
        Content content;
        du::SmartPtr<luk::Mesh> mesh;
    };
    using Place = std::list<Entry>::iterator;
    struct Known {
        FileIdentity identity;
        Content content;
    };

    void Know(const Content& content, const std::string& path, const FileIdentity& identity);
    void Sweep();
    static std::size_t CostOf(const luk::Mesh& mesh);

    std::size_t m_maximumBytes;
    std::size_t m_sweepAt;
    std::size_t m_bytes = 0;
    std::list<Entry> m_latest; ///< the latest used first
    std::map<Content, Place> m_byContent;
    std::unordered_map<std::string, Known, du::TextHash, std::equal_to<>> m_byPath;
};

} // namespace luloader
