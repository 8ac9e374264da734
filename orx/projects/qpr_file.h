// CQPRFile: the project file.
//
// A small XML file names the site, its database and the platform that the database lives on, the project and
// its data group. Load reads it into a plain record, which callers read and change in place; Verify checks
// the record; Save writes it back. Results are 1, or 0 with the reason in GetLastFailure.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

// Texts are NUL-terminated, their arrays one byte larger than the longest text; copying the bytes copies a
// project.
typedef struct QPRInfo {
  char SiteName[51];
  char SiteDatabase[256];    // JET: the path of the database file; SQL: the database on the server
  int SiteDatabasePlatform;  // an identifier of the platform catalogue; -1: unknown; 0: cleared
  char SiteDatabaseServerName[81];
  char ProjectName[51];
  char DataGroupName[51];
  char ProjectBasePath[261];  // derived on load: the folder that contains the folder of the project file
  char Coordinates[20];
  char Description[129];
  int MajorVersion;
  int MinorVersion;
  int ReleaseVersion;
} QPRInfo;

typedef enum enProjectVersionT {
  enProjectVersionCurrent = 0,
  enProjectVersionOlder = 2,  // it needs converting
  enProjectVersionNewer = 4
} enProjectVersionT;

#if defined(__cplusplus)

#include <orx/compat/string_a.h>
#include <orx/projects/project_file.h>

#include <exception>
#include <string>

static_assert(offsetof(QPRInfo, SiteDatabasePlatform) == 308 &&
              offsetof(QPRInfo, SiteDatabaseServerName) == 312 && offsetof(QPRInfo, ProjectBasePath) == 495 &&
              offsetof(QPRInfo, MajorVersion) == 908 && sizeof(QPRInfo) == 920);

// Why the current project could not be loaded.
class ORX_API QprLoadFailedException : public std::exception {
 public:
  QprLoadFailedException();
  explicit QprLoadFailedException(const char* const& message);  // null: the empty text
  QprLoadFailedException(const QprLoadFailedException&) noexcept;
  QprLoadFailedException& operator=(const QprLoadFailedException&) noexcept;
  ~QprLoadFailedException() override;

  const char* what() const noexcept override;

 private:
  CStringA message_;
};

class ORX_API CQPRFile : public CProjectFile {
 public:
  CQPRFile();
  CQPRFile(const CQPRFile& other);
  CQPRFile& operator=(const CQPRFile& other);
  ~CQPRFile() override;

  // Reads the file. Coordinates and Description keep what they held when the file does not set them, the base
  // path when it cannot be derived. A JET database is looked for beside the project file, whatever folder the
  // file says. When the folder is too shallow to have a base path the result is 0 although the record holds
  // what the file said; after any other failure, a value longer than its field among them, the record is
  // unchanged.
  int Load() override;

  // Replaces the file by the record, unverified.
  int Save() override;

  // 1 and the message unchanged, or 0 and the first rule that is broken.
  int Verify(CStringA& message);

  // Compares major and minor version with the library's; the release takes no part.
  enProjectVersionT VerifyProjectVersion();

  // Both set the library's version, and save nothing.
  void InitProjectVersion();
  void ProjectConversionUpgradeCompleted();

  // The object's own record, valid as long as the object.
  QPRInfo* GetQPRInfo();

  // Copies record and file name; null is ignored.
  void CopyFrom(CQPRFile* source);

  // Zeroes the record and empties the file name.
  void Clear();

  // 0 with the name empty when the catalogue does not know the platform.
  int GetPlatformString(CStringA& name, int bShortName);
  int IsSQLPlatform();
  int IsJETPlatform();

 private:
  int ReadProperties();
  int WriteProperties();
  int DerivePaths();

  QPRInfo info_;
};

#endif
