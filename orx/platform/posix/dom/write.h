// From a tree to bytes.
#pragma once

#include <orx/platform/dom.h>
#include <orx/platform/posix/dom/tree.h>

namespace orx::platform::dom {

// UTF-8, one element a line when the tree is laid out. False with the reason when the sink has stopped, or
// when a load would not accept what is written; some of it has gone to the sink then.
bool write_tree(const Tree& tree, const Sink& sink, Reason& reason);

}  // namespace orx::platform::dom
