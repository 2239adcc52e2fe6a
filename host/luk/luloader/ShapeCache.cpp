#include <luloader/ShapeCache.h>

#include <algorithm>

namespace luloader
{

ShapeCache::Content::Content(const std::string& bytes) : size(bytes.size()), digest(du::TextHash()(bytes)) {}

du::SmartPtr<luk::Mesh> ShapeCache::FindFile(const std::string& path, const FileIdentity& identity)
{
    const auto known = m_byPath.find(path);
    if (known == m_byPath.end() || known->second.identity != identity) {
        return nullptr;
    }
    return FindContent(Content(known->second.content), path, identity);
}

du::SmartPtr<luk::Mesh> ShapeCache::FindContent(const Content& content, const std::string& path,
                                                const FileIdentity& identity)
{
    const auto found = m_byContent.find(content);
    if (found == m_byContent.end()) {
        return nullptr;
    }
    m_latest.splice(m_latest.begin(), m_latest, found->second);
    Know(content, path, identity);
    return found->second->mesh;
}

void ShapeCache::Add(const Content& content, const std::string& path, const FileIdentity& identity,
                     const du::SmartPtr<luk::Mesh>& mesh)
{
    std::list<Entry> one{{content, mesh}}; // first, so that nothing is left when there is no memory
    if (!m_byContent.try_emplace(content, one.begin()).second) {
        return;
    }
    m_latest.splice(m_latest.begin(), one);
    m_bytes += CostOf(*mesh);
    Know(content, path, identity);
    if (m_bytes > m_sweepAt) {
        Sweep();
    }
}

void ShapeCache::Clear()
{
    m_byPath.clear();
    m_byContent.clear();
    m_latest.clear();
    m_bytes = 0;
}

void ShapeCache::Know(const Content& content, const std::string& path, const FileIdentity& identity)
{
    if (identity.IsSettled()) {
        m_byPath.insert_or_assign(path, Known{identity, content});
    }
}

/// Lets meshes go that nobody else has, those asked for least lately first. Those in use stay, so that the next sweep waits
/// until twice as much is there as was left.
void ShapeCache::Sweep()
{
    for (auto entry = m_latest.end(); m_bytes > m_maximumBytes && entry != m_latest.begin();) {
        --entry;
        if (entry->mesh->GetReferenceCount() == 1) {
            m_bytes -= CostOf(*entry->mesh);
            m_byContent.erase(entry->content);
            entry = m_latest.erase(entry);
        }
    }
    std::erase_if(m_byPath, [this](const auto& known) { return !m_byContent.contains(known.second.content); });
    m_sweepAt = std::max(m_maximumBytes, 2 * m_bytes);
}

std::size_t ShapeCache::CostOf(const luk::Mesh& mesh)
{
    return sizeof(Entry) + sizeof(luk::Mesh) + mesh.GetPositions().size() * sizeof(dg::FVec3) +
           mesh.GetIndices().size() * sizeof(std::uint32_t) + mesh.GetParts().size() * sizeof(luk::Mesh::Part);
}

} // namespace luloader
