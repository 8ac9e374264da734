#include <orx/projects/current_project.h>
#include <orx/projects/platform_catalogue.h>
#include <orx/projects/qpr_file.h>

#include <array>
#include <string>

#include "commands.h"
#include "failure.h"
#include "project/properties.h"
#include "suite_file.h"

namespace orx::cli {
namespace {

Value platform_type(int platform) {
  int type = 0;
  if (CDbPlatformUtil::GetPlatformType(platform, &type) == 0) return {};
  return type == enDbPlatformTypeSQL ? "SQL" : "JET";
}

Value platform_long_name(CQPRFile& project) {
  CStringA name;
  if (project.GetPlatformString(name, 0) == 0) return {};
  return name.GetString();
}

const char* version_state(CQPRFile& project) {
  switch (project.VerifyProjectVersion()) {
    case enProjectVersionOlder:
      return "older";
    case enProjectVersionNewer:
      return "newer";
    default:
      return "current";
  }
}

// The first rule that the project breaks. Empty for a valid project.
std::string problem_of(const std::string& file) {
  CQPRFile project;
  try {
    load(project, file);
  } catch (const Failure& failure) {
    return failure.Reason();
  }
  CStringA message;
  project.Verify(message);
  return message.GetString();
}

// A project file needs two folders above it, or it cannot be loaded: the upper folder is the base path.
void require_base_path(const CQPRFile& project, const std::string& file) {
  const std::string path = project.GetFileName();
  const std::size_t file_name = path.rfind('\\');
  const std::size_t folder = file_name == 0 ? 0 : path.rfind('\\', file_name - 1);
  if (folder == std::string::npos || folder < 2) {
    throw Failure(file, "a project file needs two folders above it");
  }
}

void apply_settings(CQPRFile& project, const ProjectArguments& arguments) {
  QPRInfo& info = *project.GetQPRInfo();
  std::string reason;
  for (const std::string& setting : arguments.settings) {
    if (!set_property(info, setting, reason)) throw Failure(arguments.file, reason);
  }
  // A JET database is a file, so it may be given by a path of the system.
  const std::string database = info.SiteDatabase;
  if (project.IsJETPlatform() != 0 && database.find('/') != std::string::npos &&
      !set_property(info, "SiteDatabase=" + suite_path(database), reason)) {
    throw Failure(arguments.file, reason);
  }
}

// Never writes an invalid project: no host could load it, and a platform that the catalogue does not contain
// would be lost.
void save_valid(CQPRFile& project, const std::string& file) {
  CStringA message;
  if (project.Verify(message) == 0) throw Failure(file, message.GetString());
  save(project, file);
}

}  // namespace

void project_show(const ProjectArguments& arguments, std::ostream& out) {
  // ProjectSetting_GetSiteProjectDatagroupN reads the current project. Load does not verify it, so an invalid
  // project is shown as well.
  CQPRFile& project = *GetCurrentQPRInfo();
  load(project, arguments.file);
  std::array<char, sizeof(QPRInfo)> site_project_datagroup{};
  ProjectSetting_GetSiteProjectDatagroupN(site_project_datagroup.data(), site_project_datagroup.size(),
                                          nullptr);
  const QPRInfo& info = *project.GetQPRInfo();

  Record record = properties_of(project);
  record.insert(record.begin(), {"File", project.GetFileName()});
  record.insert(record.end(), {{"PlatformName", platform_long_name(project)},
                               {"PlatformType", platform_type(info.SiteDatabasePlatform)},
                               {"PlatformId", info.SiteDatabasePlatform},
                               {"VersionState", version_state(project)},
                               {"ProjectBasePath", info.ProjectBasePath},
                               {"SiteProjectDatagroup", site_project_datagroup.data()}});
  write_record(out, record, arguments.format);
}

void project_verify(const ProjectArguments& arguments, std::ostream& out) {
  const std::string problem = problem_of(arguments.file);
  const bool valid = problem.empty();
  if (arguments.format == Format::kJson) {
    write_record(out,
                 Record{{"File", arguments.file}, {"Valid", valid}, {"Reason", valid ? Value{} : problem}},
                 Format::kJson);
  } else if (valid) {
    out << one_line(arguments.file) << ": valid\n";
  }
  if (!valid) throw Failure(arguments.file, problem);
}

void project_new(const ProjectArguments& arguments, std::ostream&) {
  CQPRFile project;
  set_file(project, arguments.file);
  require_base_path(project, arguments.file);
  if (!arguments.overwrite && file_exists(arguments.file)) {
    throw Failure(arguments.file, "the file exists; --force replaces it");
  }
  project.InitProjectVersion();
  project.GetQPRInfo()->SiteDatabasePlatform = -1;  // without a platform the project is invalid
  apply_settings(project, arguments);
  save_valid(project, arguments.file);
}

void project_set(const ProjectArguments& arguments, std::ostream&) {
  CQPRFile project;
  load(project, arguments.file);
  apply_settings(project, arguments);
  save_valid(project, arguments.file);
}

void project_upgrade(const ProjectArguments& arguments, std::ostream&) {
  CQPRFile project;
  load(project, arguments.file);
  if (project.VerifyProjectVersion() == enProjectVersionNewer) {
    throw Failure(arguments.file, "the project is of a newer version");
  }
  project.ProjectConversionUpgradeCompleted();
  save_valid(project, arguments.file);
}

}  // namespace orx::cli
