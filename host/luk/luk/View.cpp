#include <luk/View.h>

namespace luk
{

View::~View() = default;

} // namespace luk
