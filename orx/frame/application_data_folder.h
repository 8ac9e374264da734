// The application data folder, for the library's own use.
#pragma once

#include <orx/frame/application_data.h>

namespace orx {

using ApplicationDataFolder = char[ORX_APPLICATION_DATA_PATH_SIZE];

// False when a later call may find another folder. Never throws; empty when there is none, or no memory.
bool find_application_data_folder(ApplicationDataFolder& folder);

}  // namespace orx
