// CLocalProjectSettings: three folders that the host sets for all its modules. The library never fills them
// itself.
#pragma once

#include <orx/compat/export.h>
#include <orx/compat/string_a.h>

class ORX_API CLocalProjectSettings {
 public:
  CLocalProjectSettings();
  CLocalProjectSettings(const CLocalProjectSettings&);
  CLocalProjectSettings& operator=(const CLocalProjectSettings&);
  virtual ~CLocalProjectSettings();

  void GetLocalProjectsFolder(CStringA& folder) const;
  void SetLocalProjectsFolder(const CStringA& folder);
  void GetHalvarkProjectsFolder(CStringA& folder) const;
  void SetHalvarkProjectsFolder(const CStringA& folder);
  void GetHalvarkProgFolder(CStringA& folder) const;
  void SetHalvarkProgFolder(const CStringA& folder);

 private:
  CStringA local_projects_folder_;
  CStringA suite_projects_folder_;
  CStringA suite_program_folder_;
};

// The process-wide settings, valid for the life of the library.
extern "C" ORX_API CLocalProjectSettings* GetLocalProjectSettings();
