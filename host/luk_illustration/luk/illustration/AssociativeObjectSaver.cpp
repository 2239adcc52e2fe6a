#include <luk/illustration/AssociativeObjectSaver.h>

namespace luk::illustration
{

AssociativeObjectSaver::AssociativeObjectSaver() = default;
AssociativeObjectSaver::AssociativeObjectSaver(const AssociativeObjectSaver&) = default;
AssociativeObjectSaver& AssociativeObjectSaver::operator=(const AssociativeObjectSaver&) = default;
AssociativeObjectSaver::~AssociativeObjectSaver() = default;

} // namespace luk::illustration
