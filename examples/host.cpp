// Opens a project, prints where its data is, and marks a project of an older version as current.
#include <orx/orx.h>

#include <cstdio>

int main(int argc, char** argv) {
  char path[ORX_PATH_SIZE];
  if (argc != 2 || orx_path_from_native(argv[1], path, sizeof path) != 0) return 2;
  try {
    ProjectSetting_LoadCurrentQPRInfo(path);
  } catch (const QprLoadFailedException& failure) {
    std::fprintf(stderr, "%s\n", failure.what());
    return 1;
  }
  char database[sizeof(QPRInfo::SiteDatabase)];
  char place[sizeof(QPRInfo)];
  ProjectSetting_GetSiteDatabaseN(database, sizeof database, nullptr);
  ProjectSetting_GetSiteProjectDatagroupN(place, sizeof place, nullptr);
  std::printf("%s in %s\n", place, database);

  CQPRFile& project = *GetCurrentQPRInfo();
  if (project.VerifyProjectVersion() != enProjectVersionOlder) return 0;
  // ... a host would convert the data of the project here ...
  project.ProjectConversionUpgradeCompleted();
  if (project.Save() == 1) return 0;
  CStringA reason;
  project.GetLastFailure(reason);
  std::fprintf(stderr, "%s: %s\n", argv[1], reason.GetString());
  return 1;
}
