// The drawing of a section: in the plane, both axes to the same scale.
#pragma once

#include <string>

#include "section/section.h"

namespace orx::cli {

// A whole SVG document. The section has a polyline.
std::string draw(const Section& section, const std::string& title);

}  // namespace orx::cli
