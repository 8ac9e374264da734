// CLocalProjectSettings: three folders that a host sets once for all its modules.
//
// The library does not set, check or use the folders. They are empty at first. A getter replaces its output.
// Out of memory raises CAtlException (E_OUTOFMEMORY). One object belongs to one thread at a time.
#pragma once

#include <orx/compat/export.h>
#include <orx/compat/string_a.h>

class ORX_API CLocalProjectSettings {
 public:
  CLocalProjectSettings();
  CLocalProjectSettings(const CLocalProjectSettings&);
  CLocalProjectSettings& operator=(const CLocalProjectSettings&);
  virtual ~CLocalProjectSettings();

  // The folder of local projects.
  void GetLocalProjectsFolder(CStringA& folder) const;
  void SetLocalProjectsFolder(const CStringA& folder);
  // The suite's folder of projects.
  void GetHalvarkProjectsFolder(CStringA& folder) const;
  void SetHalvarkProjectsFolder(const CStringA& folder);
  // The folder of the suite's programs.
  void GetHalvarkProgFolder(CStringA& folder) const;
  void SetHalvarkProgFolder(const CStringA& folder);

 private:
  CStringA local_projects_folder_;
  CStringA suite_projects_folder_;
  CStringA suite_program_folder_;
};

// The settings of the process. Never null, and valid as long as the library is loaded.
extern "C" ORX_API CLocalProjectSettings* GetLocalProjectSettings();
