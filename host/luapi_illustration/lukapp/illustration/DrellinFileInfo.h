#pragma once

#include <du/RefCounted.h>
#include <luk/Object.h>

#include <cstdint>
#include <string>

namespace lukapp::illustration
{

/// What a document knows of itself.
///
/// Threads: belongs to the host thread.
class LUHOST_API DrellinFileInfo : public luk::Object, public virtual du::RefCounted
{
public:
    DrellinFileInfo() = default;
    ~DrellinFileInfo() override;

    /// A number that no structure of the document has had.
    std::uint64_t GetNextStructureId() noexcept { return m_nextStructureId++; }
    std::uint64_t PeekNextStructureId() const noexcept { return m_nextStructureId; }
    void SetNextStructureId(std::uint64_t id) noexcept { m_nextStructureId = id; }

private:
    std::uint64_t m_nextStructureId = 1;
};

} // namespace lukapp::illustration
