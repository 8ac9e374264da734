// Writes documents.
#pragma once

#include <orx/platform/dom.h>
#include <orx/platform/posix/dom/tree.h>

namespace orx::platform::dom {

// Writes the tree as UTF-8, with one element per line if the tree is indented. False with the reason when the
// sink stops the writing, and when a load would refuse the document; some bytes may have gone to the sink by
// then.
bool write_tree(const Tree& tree, const Sink& sink, Reason& reason);

}  // namespace orx::platform::dom
