#include <luk/OperationStep.h>

namespace luk
{

OperationStep::~OperationStep() = default;

} // namespace luk
