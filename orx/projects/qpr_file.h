// CQPRFile: the project file.
//
// A small XML file names the site, its database and the platform that the database lives on, the project and
// its data group. Load reads it into a plain record, which callers read and change in place; Verify checks
// the record; Save writes it back. Results are 1, or 0 with the reason in GetLastFailure.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

// The longest texts of a project in characters: code points where narrow text is UTF-8, otherwise characters
// of the ANSI code page.
#define ORX_SITE_NAME_LENGTH 50
#define ORX_SITE_DATABASE_LENGTH 255
#define ORX_SERVER_NAME_LENGTH 80
#define ORX_PROJECT_NAME_LENGTH 50
#define ORX_DATA_GROUP_NAME_LENGTH 50
#define ORX_BASE_PATH_LENGTH 260
#define ORX_COORDINATES_LENGTH 19
#define ORX_DESCRIPTION_LENGTH 128

// The bytes of a field for `length` characters: a character has at most four bytes, and a NUL follows the
// text.
#define ORX_FIELD_SIZE(length) (4 * (length) + 1)

// One project. Texts are NUL-terminated. Copying the bytes copies the project.
typedef struct QPRInfo {
  char SiteName[ORX_FIELD_SIZE(ORX_SITE_NAME_LENGTH)];
  // JET: the path of the database file. SQL: the name of the database on the server.
  char SiteDatabase[ORX_FIELD_SIZE(ORX_SITE_DATABASE_LENGTH)];
  int SiteDatabasePlatform;  // an identifier of the platform catalogue; -1: unknown; 0: cleared
  char SiteDatabaseServerName[ORX_FIELD_SIZE(ORX_SERVER_NAME_LENGTH)];
  char ProjectName[ORX_FIELD_SIZE(ORX_PROJECT_NAME_LENGTH)];
  char DataGroupName[ORX_FIELD_SIZE(ORX_DATA_GROUP_NAME_LENGTH)];
  // Derived on load: the folder that contains the folder of the project file.
  char ProjectBasePath[ORX_FIELD_SIZE(ORX_BASE_PATH_LENGTH)];
  char Coordinates[ORX_FIELD_SIZE(ORX_COORDINATES_LENGTH)];
  char Description[ORX_FIELD_SIZE(ORX_DESCRIPTION_LENGTH)];
  int MajorVersion;
  int MinorVersion;
  int ReleaseVersion;
} QPRInfo;

// The version of the project format that this library reads and writes. It is not the library's version.
#define ORX_PROJECT_FORMAT_MAJOR 6
#define ORX_PROJECT_FORMAT_MINOR 7
#define ORX_PROJECT_FORMAT_RELEASE 0

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

static_assert(offsetof(QPRInfo, SiteDatabasePlatform) == 1224 &&
              offsetof(QPRInfo, SiteDatabaseServerName) == 1228 &&
              offsetof(QPRInfo, ProjectBasePath) == 1951 && offsetof(QPRInfo, MajorVersion) == 3584 &&
              sizeof(QPRInfo) == 3596);

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

  // Reads the file into the record. Coordinates and Description keep their values when the file does not set
  // them. A JET database is looked for beside the project file, whatever folder the file names. When the
  // file's path has no base path, the result is 0 although the record holds the content of the file, and the
  // base path keeps its value. After any other failure, for example a value that is longer than its field,
  // the record is unchanged.
  int Load() override;

  // Replaces the file by the record, without verifying it. A text that Load would refuse as too long is
  // refused.
  int Save() override;

  // 1 and the message unchanged, or 0 and the first rule that is broken.
  int Verify(CStringA& message);

  // Compares the record's major and minor version with ORX_PROJECT_FORMAT_MAJOR and _MINOR, and ignores the
  // release.
  enProjectVersionT VerifyProjectVersion();

  // Both set the record's version to the one of the format, and save nothing.
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
  int ReadProperties(QPRInfo& info);
  int WriteProperties();
  int DerivePaths(QPRInfo& info);

  QPRInfo info_;
};

#endif
