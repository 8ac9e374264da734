// The properties of a project file by name, as `orx project` shows and sets them.
#pragma once

#include <orx/projects/qpr_file.h>

#include <string>

#include "report.h"

namespace orx::cli {

// All properties in the order of the project file.
Record properties_of(CQPRFile& project);

// Applies NAME=VALUE to the record. For an unknown name or an invalid value it returns false, sets `reason`
// and leaves the record unchanged.
bool set_property(QPRInfo& info, const std::string& setting, std::string& reason);

}  // namespace orx::cli
