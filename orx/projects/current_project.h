// The current project of the process.
//
// Loading a project makes it current and keeps the project before it, one step deep. Until a project is
// loaded, all items are empty. The current project has no lock: use it from one thread at a time.
//
// A getter copies one item of the current project, with its NUL, into the caller's buffer. Each item has two
// getters:
// - The getter without a size never writes more bytes than the constant of the item (ORX_SITE_NAME_SIZE and
//   so on), which the buffer must have. The constant is the limit in characters and a NUL, so that a text in
//   another alphabet may need more bytes. Then the result is -1 and the buffer holds the empty text.
// - The getter with the suffix N takes the size of the buffer in bytes, and can read every text. `needed`,
//   which may be null, receives the bytes that the text and its NUL need, or 0 when there is no such item. A
//   null buffer with a `needed` that is not null asks for the size: the result is 0 when there is an item.
//   When the text does not fit, the result is -1 and the buffer holds the empty text; a buffer of size 0 is
//   not written.
//
// Results are 0 for success and -1 for failure, with the buffer unchanged, unless a comment says otherwise. A
// null buffer is a failure, except where a size can be asked for. No function throws, except
// ProjectSetting_LoadCurrentQPRInfo.
#pragma once

#include <orx/compat/export.h>
#include <orx/projects/qpr_file.h>

#include <stddef.h>

ORX_C_BEGIN

// The size of the buffer for each getter without a size, in bytes.
#define ORX_SITE_NAME_SIZE (ORX_SITE_NAME_LENGTH + 1)
#define ORX_SITE_DATABASE_SIZE (ORX_SITE_DATABASE_LENGTH + 1)
#define ORX_SERVER_NAME_SIZE (ORX_SERVER_NAME_LENGTH + 1)
#define ORX_PROJECT_NAME_SIZE (ORX_PROJECT_NAME_LENGTH + 1)
#define ORX_DATA_GROUP_NAME_SIZE (ORX_DATA_GROUP_NAME_LENGTH + 1)
#define ORX_BASE_PATH_SIZE (ORX_BASE_PATH_LENGTH + 1)
#define ORX_DESCRIPTION_SIZE (ORX_DESCRIPTION_LENGTH + 1)
#define ORX_COORDINATES_SIZE (ORX_COORDINATES_LENGTH + 1)
#define ORX_PROJECT_PATH_SIZE 260
// Three names, four backslashes and a NUL.
#define ORX_SITE_PROJECT_DATAGROUP_SIZE \
  (ORX_SITE_NAME_LENGTH + ORX_PROJECT_NAME_LENGTH + ORX_DATA_GROUP_NAME_LENGTH + 5)

// The length of the longest message of a failed load, in bytes without the NUL.
#define ORX_LOAD_MESSAGE_LENGTH 199

// Loads a project file, verifies it and makes it the current project. The version of the project is not
// checked. A failure throws QprLoadFailedException, and nothing else; the current and the previous project
// are then unchanged. The message is cut at ORX_LOAD_MESSAGE_LENGTH bytes, never within a character. It is
// empty when there is no memory for it. In a C program the exception ends the program.
ORX_API void ProjectSetting_LoadCurrentQPRInfo(const char* path);

// Saves the current project in its own file, from which it was loaded. `path` is ignored and may be null. 1,
// or 0 for failure.
ORX_API int ProjectSetting_SaveCurrentQPRInfo(const char* path);

// Makes the previous project current again. It stays the previous project too, so that a second call changes
// nothing. Always 1.
ORX_API int ProjectSetting_RestorePreviousQPRInfo(void);

// For these items an empty text is no item, and the getter fails.
ORX_API int ProjectSetting_GetSiteName(char* buffer);
ORX_API int ProjectSetting_GetSiteNameN(char* buffer, size_t size, size_t* needed);
ORX_API int ProjectSetting_GetSiteDatabase(char* buffer);
ORX_API int ProjectSetting_GetSiteDatabaseN(char* buffer, size_t size, size_t* needed);
ORX_API int ProjectSetting_GetProjectName(char* buffer);
ORX_API int ProjectSetting_GetProjectNameN(char* buffer, size_t size, size_t* needed);
ORX_API int ProjectSetting_GetDataGroupName(char* buffer);
ORX_API int ProjectSetting_GetDataGroupNameN(char* buffer, size_t size, size_t* needed);
ORX_API int ProjectSetting_GetProjectBasePath(char* buffer);
ORX_API int ProjectSetting_GetProjectBasePathN(char* buffer, size_t size, size_t* needed);

// The name of the database server. Fails when it is empty, unless the platform is a JET platform.
ORX_API int ProjectSetting_GetDatabaseServerName(char* buffer);
ORX_API int ProjectSetting_GetDatabaseServerNameN(char* buffer, size_t size, size_t* needed);

// The name of the project. With a null buffer, stores the length of the name in bytes in *length, without the
// NUL. Otherwise *length says that the buffer has *length + 1 bytes: when the name is longer, the result is
// -1 and the buffer holds the empty text. A null `length` means a buffer of ORX_PROJECT_NAME_SIZE bytes.
ORX_API int ProjectSetting_GetProjectNameEx(char* buffer, size_t* length);

// The identifier of the database platform, as it is in the record. The catalogue may not know it, for example
// -1 (unknown) and 0 (no project loaded). Fails for a null pointer.
ORX_API int ProjectSetting_GetDatabasePlatform(int* platform);

// For these items an empty text is an item, and the getter succeeds.
ORX_API int ProjectSetting_GetProjectDescription(char* buffer);
ORX_API int ProjectSetting_GetProjectDescriptionN(char* buffer, size_t size, size_t* needed);
ORX_API int ProjectSetting_GetProjectCoordinates(char* buffer);
ORX_API int ProjectSetting_GetProjectCoordinatesN(char* buffer, size_t size, size_t* needed);

// The path of the current project's file. The results of the two getters differ:
// - The getter without a size returns 1, or 0 with the buffer unchanged when there is no path or when the
//   path with its NUL needs more than ORX_PROJECT_PATH_SIZE bytes.
// - The getter with a size returns 0 or -1, as all getters with a size.
ORX_API int ProjectSetting_GetCurrentQPRPath(char* buffer);
ORX_API int ProjectSetting_GetCurrentQPRPathN(char* buffer, size_t size, size_t* needed);

// The folder of the current project's file, without a backslash at the end. Empty when the path has no
// backslash. Fails when there is no path. The getter without a size leaves the buffer unchanged when the
// folder with its NUL needs more than ORX_PROJECT_PATH_SIZE bytes.
ORX_API int ProjectSetting_GetCurrentProjectPath(char* buffer);
ORX_API int ProjectSetting_GetCurrentProjectPathN(char* buffer, size_t size, size_t* needed);

// The text "\site\project\data group\". When a name is empty, the text has a placeholder in its place
// ("Unknown Site", "Unknown Project", "Unknown Datagroup"), and the result is -1.
ORX_API int ProjectSetting_GetSiteProjectDatagroup(char* out);
ORX_API int ProjectSetting_GetSiteProjectDatagroupN(char* out, size_t size, size_t* needed);

#if defined(__cplusplus)
// The current project itself, which may be changed in place. Never null, and valid as long as the library is
// loaded.
ORX_API CQPRFile* GetCurrentQPRInfo();
#endif

ORX_C_END
