#include <luk/MarkupController.h>

namespace luk
{

MarkupController::~MarkupController() = default;

} // namespace luk
