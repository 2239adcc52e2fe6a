#pragma once

#include <du/Export.h>

namespace luk::illustration
{

/// Whether the host authors documents, and so has their files in its temporary folder, or only shows them and finds their
/// files through the document's anchor. Safe on any thread.
LUHOST_API bool IsRunningIllustrate() noexcept;
/// [host thread] For the session, and for tests that stand in for one.
LUHOST_API void SetRunningIllustrate(bool authoring) noexcept;

} // namespace luk::illustration
