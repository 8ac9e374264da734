// Queries about files, folders, free disk space and the stack.
//
// Paths are the suite's (native_path.h), in narrow text. A null or empty path names nothing, unless a
// function says otherwise. What the system does not say, for example because this user has no access, counts
// as missing. No function waits for the other end of a pipe, changes a file or keeps a state. Any thread may
// call them.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>
#include <stdint.h>

// The longest path of FileExists and DirectoryExists, in characters without the NUL.
#define ORX_QUERY_PATH_LENGTH 260

ORX_C_BEGIN

// Return 1 or 0. FileExists: the path names anything but a folder. DirectoryExists: it names a folder. Only
// the first ORX_QUERY_PATH_LENGTH characters of the path are used, without one backslash at their end. So "\"
// alone names nothing.
ORX_API int FileExists(const char* path);
ORX_API int DirectoryExists(const char* path);

// Removes one backslash at the end of the path, in place. Null is allowed.
ORX_API void RemoveTrailingBackSlash(char* path);

// Returns 1 if the path names a file that this user can open for reading, otherwise 0. A folder never can be.
ORX_API int file_exists(const char* path);

// Returns the lower 32 bits of a file's size in bytes. The last name of the path may have the wildcards * and
// ?. Then the first match counts, in the order of names without regard to letter case; "." and ".." come
// before all other names. 0 for a folder, and when nothing matches.
ORX_API uint32_t get_file_length(const char* path);

// Returns the size in bytes of a file that this user can open for reading; -1 if it has more than 2147483647
// bytes. 0 for a pipe or a device, and when the file cannot be opened.
ORX_API int32_t GetFilesize(const char* path);

// Returns the bytes that this user may still write to a drive, at most 2147483647. Drive 0 is that of the
// current directory, 1 is A:, 2 is B:, up to 26. 0 for any other number, and when the drive does not exist.
ORX_API int diskspace(int drive);

// Returns the bytes that this user may still write to the volume of a folder; null is the current directory.
// 0 when the folder does not exist.
ORX_API uint64_t GetDiskSpaceByDriveName(const char* path);

// Reports through ShowError (host_callbacks.h) that the data disk is full, and ends the process with exit(1).
ORX_NORETURN ORX_API void no_disk_space(void);

// Returns the bytes of the calling thread's stack that are below the current position, guard pages included.
// 0 when the system does not say, and on the stack of a coroutine.
ORX_API size_t stackavail(void);

ORX_C_END
