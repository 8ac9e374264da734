// Open folders, to list their entries.
#pragma once

#include <dirent.h>

#include <memory>

namespace orx::platform {

struct CloseDirectory {
  void operator()(DIR* folder) const { closedir(folder); }
};
using Directory = std::unique_ptr<DIR, CloseDirectory>;

}  // namespace orx::platform
