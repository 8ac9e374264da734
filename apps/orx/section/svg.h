// The drawing of a section in its plane, with both axes at the same scale.
#pragma once

#include <string>

#include "section/section.h"

namespace orx::cli {

// Returns a complete SVG document. The section must have at least one polyline.
std::string draw_section(const Section& section, const std::string& title);

}  // namespace orx::cli
