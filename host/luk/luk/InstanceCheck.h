#pragma once

namespace luk
{

/// Says which parts a flattened drawing shows. Annotations hand it on; this host shows all that are visible, and has nothing
/// to say in it.
class InstanceCheck
{
};

} // namespace luk
