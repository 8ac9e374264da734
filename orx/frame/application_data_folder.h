// The application data folder, for the library itself.
#pragma once

#include <orx/frame/application_data.h>

namespace orx {

using ApplicationDataFolder = char[ORX_APPLICATION_DATA_PATH_SIZE];

// Finds the folder as application_data.h describes it. The text is empty without a folder or out of memory.
// Returns true when all later calls will find the same folder. Raises no exception.
bool find_application_data_folder(ApplicationDataFolder& folder);

}  // namespace orx
