// The project that the process works on.
//
// Loading a project makes it current and keeps the project before it, one step deep. Until a project is
// loaded all its items are empty. The current project has no lock: use it from one thread at a time.
//
// A getter copies one item of the current project with its NUL into the caller's buffer. Each item has two
// getters:
//   - without a size: the buffer has at least the constant's bytes (ORX_SITE_NAME_SIZE and so on), and no
//   more are written. A
//     text in other languages may need more; then the result is -1 and the buffer is empty.
//   - ...N, with the size of the buffer: any text can be read. `needed`, which may be null, receives the
//   bytes that the item
//     needs with its NUL, or 0 when there is no such item. A null buffer only asks for the size: the result
//     is 0 when there is an item. A text that does not fit gives -1 and an empty buffer.
// Results are 0, or -1 with the buffer untouched, unless a comment says otherwise. A null buffer without
// `needed` is a failure.
#pragma once

#include <orx/compat/export.h>
#include <orx/projects/qpr_file.h>

#include <stddef.h>

ORX_C_BEGIN

// Bytes of the buffers for the getters without a size.
#define ORX_SITE_NAME_SIZE 51
#define ORX_SITE_DATABASE_SIZE 256
#define ORX_SERVER_NAME_SIZE 81
#define ORX_PROJECT_NAME_SIZE 51
#define ORX_DATA_GROUP_NAME_SIZE 51
#define ORX_BASE_PATH_SIZE 261
#define ORX_DESCRIPTION_SIZE 129
#define ORX_COORDINATES_SIZE 20
#define ORX_PROJECT_PATH_SIZE 260
#define ORX_SITE_PROJECT_DATAGROUP_SIZE 155

// The bytes of the longest message of a failed load, without its NUL.
#define ORX_LOAD_MESSAGE_LENGTH 199

// Loads and verifies a project file and makes it current. Throws QprLoadFailedException and nothing else when
// that fails; the current and the previous project are then unchanged. The message is cut at
// ORX_LOAD_MESSAGE_LENGTH bytes, never within a character; it is empty when there is no memory for it. A C
// program ends when this function throws.
ORX_API void ProjectSetting_LoadCurrentQPRInfo(const char* path);

// Writes the current project to the file that it came from, whatever `path` says; 1, or 0 for failure.
ORX_API int ProjectSetting_SaveCurrentQPRInfo(const char* path);

// Makes the previous project current again and leaves it the previous one too. Always 1.
ORX_API int ProjectSetting_RestorePreviousQPRInfo(void);

// These fail when the item is empty.
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

// An empty server name is a failure unless the platform is a JET platform.
ORX_API int ProjectSetting_GetDatabaseServerName(char* buffer);
ORX_API int ProjectSetting_GetDatabaseServerNameN(char* buffer, size_t size, size_t* needed);

// With a null buffer, stores the length of the name in bytes in *length. Otherwise the buffer has *length + 1
// bytes: when the name is longer the result is -1 and the buffer is empty. A null `length` stands for a
// buffer of ORX_PROJECT_NAME_SIZE.
ORX_API int ProjectSetting_GetProjectNameEx(char* buffer, size_t* length);

// A platform identifier, also one that the catalogue does not have.
ORX_API int ProjectSetting_GetDatabasePlatform(int* platform);

// These succeed for an empty text.
ORX_API int ProjectSetting_GetProjectDescription(char* buffer);
ORX_API int ProjectSetting_GetProjectDescriptionN(char* buffer, size_t size, size_t* needed);
ORX_API int ProjectSetting_GetProjectCoordinates(char* buffer);
ORX_API int ProjectSetting_GetProjectCoordinatesN(char* buffer, size_t size, size_t* needed);

// The path of the current project's file. The getter without a size returns 1, or 0 with the buffer untouched
// when there is no path or it does not fit ORX_PROJECT_PATH_SIZE; the other one returns 0 or -1 like all of
// its kind.
ORX_API int ProjectSetting_GetCurrentQPRPath(char* buffer);
ORX_API int ProjectSetting_GetCurrentQPRPathN(char* buffer, size_t size, size_t* needed);

// The folder of that file; empty when the path has no backslash. Fails when there is no file. The getter
// without a size leaves the buffer untouched when the folder does not fit ORX_PROJECT_PATH_SIZE.
ORX_API int ProjectSetting_GetCurrentProjectPath(char* buffer);
ORX_API int ProjectSetting_GetCurrentProjectPathN(char* buffer, size_t size, size_t* needed);

// "\site\project\data group\". When a name is empty the result is -1, and the text has a placeholder for it.
ORX_API int ProjectSetting_GetSiteProjectDatagroup(char* out);
ORX_API int ProjectSetting_GetSiteProjectDatagroupN(char* out, size_t size, size_t* needed);

#if defined(__cplusplus)
// The current project itself, to be changed in place; valid for the life of the library.
ORX_API CQPRFile* GetCurrentQPRInfo();
#endif

ORX_C_END
