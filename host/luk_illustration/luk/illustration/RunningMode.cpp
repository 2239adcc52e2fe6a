#include <luk/illustration/RunningMode.h>

#include <atomic>

namespace luk::illustration
{

namespace
{

std::atomic<bool> s_isAuthoring{false};

} // namespace

bool IsRunningIllustrate() noexcept { return s_isAuthoring; }

void SetRunningIllustrate(bool authoring) noexcept { s_isAuthoring = authoring; }

} // namespace luk::illustration
