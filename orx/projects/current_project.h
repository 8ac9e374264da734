// The project that the process works on.
//
// Loading a project makes it current and keeps the one before it, one step deep. The getters copy one item of
// the current project, with its NUL, into a buffer that has room for the field (see QPRInfo), 260 bytes for
// the two path getters and 155 for the composed path. They return 0, or -1 with the buffer untouched; where
// it differs it is said. A null buffer is a failure. Until a project is loaded all its items are empty. The
// current project has no lock: use it from one thread at a time.
#pragma once

#include <orx/compat/export.h>
#include <orx/projects/qpr_file.h>

#include <stddef.h>

ORX_C_BEGIN

// Loads and verifies a project file and makes it current. Throws QprLoadFailedException, whose message is cut
// after 199 characters, when that fails; the current and the previous project are then unchanged. A C program
// that calls it with a file that may be missing or broken ends there.
ORX_API void ProjectSetting_LoadCurrentQPRInfo(const char* path);

// Writes the current project to the file that it came from, whatever `path` says; 1, or 0 for failure.
ORX_API int ProjectSetting_SaveCurrentQPRInfo(const char* path);

// Makes the previous project current again and leaves it the previous one too. Always 1.
ORX_API int ProjectSetting_RestorePreviousQPRInfo(void);

// These fail when the item is empty.
ORX_API int ProjectSetting_GetSiteName(char* buffer);
ORX_API int ProjectSetting_GetSiteDatabase(char* buffer);
ORX_API int ProjectSetting_GetProjectName(char* buffer);
ORX_API int ProjectSetting_GetDataGroupName(char* buffer);
ORX_API int ProjectSetting_GetProjectBasePath(char* buffer);

// An empty server name is a failure unless the platform is a JET one.
ORX_API int ProjectSetting_GetDatabaseServerName(char* buffer);

// With a null buffer, stores the length of the name in *length. Else *length is the longest name that the
// buffer has room for, beside the NUL: when the name is longer the result is -1 and the buffer empty. A null
// `length` stands for a buffer that has room.
ORX_API int ProjectSetting_GetProjectNameEx(char* buffer, size_t* length);

// A platform identifier, also when it is none of the catalogue.
ORX_API int ProjectSetting_GetDatabasePlatform(int* platform);

// These also give an empty text.
ORX_API int ProjectSetting_GetProjectDescription(char* buffer);
ORX_API int ProjectSetting_GetProjectCoordinates(char* buffer);

// The path of the current project's file: 1, or 0 when there is none or it has 260 or more characters.
ORX_API int ProjectSetting_GetCurrentQPRPath(char* buffer);

// Its folder; empty when the path has no backslash. Fails when there is no file or the folder has 260 or more
// characters.
ORX_API int ProjectSetting_GetCurrentProjectPath(char* buffer);

// "\site\project\data group\". When an item is empty the result is -1 and a placeholder stands in its place.
ORX_API int ProjectSetting_GetSiteProjectDatagroup(char* out);

#if defined(__cplusplus)
// The current project itself, to be changed in place; valid for the life of the library.
ORX_API CQPRFile* GetCurrentQPRInfo();
#endif

ORX_C_END
