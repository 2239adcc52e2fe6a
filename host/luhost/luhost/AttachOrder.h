#pragma once

#include <cstddef>
#include <vector>

namespace luk
{
class SerializedContentElement;
}

namespace luhost
{

/// The order in which the annotations of an opened scene are attached to it: one that hangs on the node of another comes
/// after that one, since an annotation lets go of parts that are not there. Otherwise, and where a ring leaves no choice,
/// the order of the file.
///
/// Cost: linear.
std::vector<std::size_t> AttachOrderOf(const std::vector<const luk::SerializedContentElement*>& contents);

} // namespace luhost
