// The properties of a project file by name, as `orx project` shows and sets them.
#pragma once

#include <orx/projects/qpr_file.h>

#include <string>

#include "report.h"

namespace orx::cli {

// In the order of the file.
Record properties_of(CQPRFile& project);

// Carries out NAME=VALUE; false, with the reason and the record unchanged, for a name or value that is
// refused.
bool set_property(QPRInfo& info, const std::string& setting, std::string& reason);

}  // namespace orx::cli
