// CQPRFile: the project file.
//
// A project file is a small XML file. It has the names of the site, the project and the data group, and the
// database of the site with its platform. Load reads the file into a record, which callers may read and
// change in place. Verify checks the record, and Save writes it to the file.
//
// Results are 1, or 0 with the reason in GetLastFailure, unless a comment says otherwise. Out of memory
// raises CAtlException (E_OUTOFMEMORY); in Load and Save it is a failure. One object belongs to one thread at
// a time.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>

// The longest texts of a project, in characters without the NUL. A character is a code point where narrow
// text is UTF-8, otherwise a character of the ANSI code page.
#define ORX_SITE_NAME_LENGTH 50
#define ORX_SITE_DATABASE_LENGTH 255
#define ORX_SERVER_NAME_LENGTH 80
#define ORX_PROJECT_NAME_LENGTH 50
#define ORX_DATA_GROUP_NAME_LENGTH 50
#define ORX_BASE_PATH_LENGTH 260
#define ORX_COORDINATES_LENGTH 19
#define ORX_DESCRIPTION_LENGTH 128

// The bytes of a field for a text of `length` characters: four bytes for each character, and a NUL.
#define ORX_FIELD_SIZE(length) (4 * (length) + 1)

// The record of a project. Texts end with a NUL. A copy of the bytes is a copy of the project.
typedef struct QPRInfo {
  char SiteName[ORX_FIELD_SIZE(ORX_SITE_NAME_LENGTH)];
  // On a JET platform the path of the database file, on an SQL platform the name of the database on its
  // server.
  char SiteDatabase[ORX_FIELD_SIZE(ORX_SITE_DATABASE_LENGTH)];
  // An identifier of the platform catalogue; -1 when unknown, 0 in a cleared record.
  int SiteDatabasePlatform;
  char SiteDatabaseServerName[ORX_FIELD_SIZE(ORX_SERVER_NAME_LENGTH)];
  char ProjectName[ORX_FIELD_SIZE(ORX_PROJECT_NAME_LENGTH)];
  char DataGroupName[ORX_FIELD_SIZE(ORX_DATA_GROUP_NAME_LENGTH)];
  // Not in the file: Load sets it to the folder that contains the folder of the project file.
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

// The version of a project compared with the version of the format.
typedef enum enProjectVersionT {
  enProjectVersionCurrent = 0,
  enProjectVersionOlder = 2,  // the host must convert the project
  enProjectVersionNewer = 4   // the project was made by a newer suite
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

// The reason why the current project could not be loaded, for the user.
class ORX_API QprLoadFailedException : public std::exception {
 public:
  QprLoadFailedException();
  explicit QprLoadFailedException(const char* const& message);  // null is the empty text
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

  // Reads the file into the record, and derives the base path. Does not verify the record. Coordinates and
  // Description keep their values when the file does not set them. The path of a JET database becomes a path
  // in the folder of the project file, whatever folder the file names, unless it would be too long.
  //
  // When there is no base path, because the file is not in a folder within a folder or the base path is too
  // long, the result is 0. The record then has the content of the file, and the base path keeps its value.
  // After any other failure, for example a text that is longer than its limit, the record is unchanged.
  int Load() override;

  // Replaces the file by the record, without verifying the record. Fails for a text that is too long, which
  // Load would refuse. After any failure, for example on a full disk, the file is unchanged.
  int Save() override;

  // Checks the rules of a complete record. 1 with the message unchanged, or 0 with a message for the user
  // about the first broken rule.
  int Verify(CStringA& message);

  // Compares the major and the minor version of the record with ORX_PROJECT_FORMAT_MAJOR and
  // ORX_PROJECT_FORMAT_MINOR. The release is ignored.
  enProjectVersionT VerifyProjectVersion();

  // These set the version of the record to the version of the format. They do not save the file.
  void InitProjectVersion();
  void ProjectConversionUpgradeCompleted();

  // The record of this object, which may be changed in place. Never null, and valid as long as the object.
  QPRInfo* GetQPRInfo();

  // Copies the record and the file name of another object. Never raises an exception. Null is ignored.
  void CopyFrom(CQPRFile* source);

  // Zeroes the record and empties the file name.
  void Clear();

  // The long name of the record's platform, or the short name when `bShortName` is not 0. 0 with an empty
  // name when the catalogue does not know the platform; no reason is set.
  int GetPlatformString(CStringA& name, int bShortName);

  // Whether the record's platform is of this type. 0 when the catalogue does not know the platform.
  int IsSQLPlatform();
  int IsJETPlatform();

 private:
  int ReadProperties(QPRInfo& info);
  int WriteProperties();
  int DerivePaths(QPRInfo& info);

  QPRInfo info_;
};

#endif
