#pragma once

#include <luk/MultiRootContainer.h>
#include <lukapp/illustration/DrellinFileInfo.h>

namespace lukapp::illustration
{

/// The structures of a document of the illustration application.
class LUHOST_API IllMultiRootContainer : public luk::MultiRootContainer
{
public:
    IllMultiRootContainer();
    ~IllMultiRootContainer() override;

    /// Never null.
    const du::SmartPtr<DrellinFileInfo>& GetFileInfo() const noexcept { return m_fileInfo; }

private:
    du::SmartPtr<DrellinFileInfo> m_fileInfo;
};

} // namespace lukapp::illustration
