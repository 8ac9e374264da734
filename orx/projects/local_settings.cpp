#include <orx/projects/local_settings.h>

#include <orx/projects/never_destroyed.h>

namespace {

orx::NeverDestroyed<CLocalProjectSettings> local_project_settings;

}  // namespace

CLocalProjectSettings::CLocalProjectSettings() = default;
CLocalProjectSettings::CLocalProjectSettings(const CLocalProjectSettings&) = default;
CLocalProjectSettings& CLocalProjectSettings::operator=(const CLocalProjectSettings&) = default;
CLocalProjectSettings::~CLocalProjectSettings() = default;

void CLocalProjectSettings::GetLocalProjectsFolder(CStringA& folder) const {
  folder = local_projects_folder_;
}

void CLocalProjectSettings::SetLocalProjectsFolder(const CStringA& folder) {
  local_projects_folder_ = folder;
}

void CLocalProjectSettings::GetHalvarkProjectsFolder(CStringA& folder) const {
  folder = suite_projects_folder_;
}

void CLocalProjectSettings::SetHalvarkProjectsFolder(const CStringA& folder) {
  suite_projects_folder_ = folder;
}

void CLocalProjectSettings::GetHalvarkProgFolder(CStringA& folder) const { folder = suite_program_folder_; }

void CLocalProjectSettings::SetHalvarkProgFolder(const CStringA& folder) { suite_program_folder_ = folder; }

CLocalProjectSettings* GetLocalProjectSettings() { return &local_project_settings.object; }
