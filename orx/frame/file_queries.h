// Questions about files, folders, free disk space and the stack.
//
// Paths are the suite's, see native_path.h; null or an empty one names nothing, where nothing else is said.
// What can't be found out counts as not there. Nothing here blocks on a pipe, changes anything or keeps a
// state, and any thread may ask.
#pragma once

#include <orx/compat/export.h>

#include <stddef.h>
#include <stdint.h>

ORX_C_BEGIN

// Whether there is a folder, or something else, of that name: 1 or 0. Of a longer path the first 260
// characters count. One backslash at the end is left out, so "\" alone names nothing.
ORX_API int FileExists(const char* path);
ORX_API int DirectoryExists(const char* path);

// Removes one backslash at the end, in place. Null is allowed.
ORX_API void RemoveTrailingBackSlash(char* path);

// 1 when the file can be opened for reading, else 0; a folder never can.
ORX_API int file_exists(const char* path);

// The lower 32 bits of the size in bytes. The last name may have wildcards: the first entry that matches
// counts, in the order of names without regard to letter case, and "." and ".." come before all others. 0 for
// a folder, and when nothing matches.
ORX_API uint32_t get_file_length(const char* path);

// The size in bytes of a file that can be opened for reading, else 0; of a pipe or a device 0, and -1 of a
// file of more than 2147483647 bytes.
ORX_API int32_t GetFilesize(const char* path);

// Bytes that the user may still write on a drive, at most 2147483647: 0 is the drive of the current
// directory, 1 is A:, 2 is B: and so on. 0 for a drive that can't be asked.
ORX_API int diskspace(int drive);

// The same for the volume that holds a folder, in full; null is the current directory. 0 when there is no
// such folder.
ORX_API uint64_t GetDiskSpaceByDriveName(const char* path);

// Tells the user through ShowError (host_callbacks.h) that the data disk is full, and ends the process by
// exit(1).
ORX_NORETURN ORX_API void no_disk_space(void);

// Bytes of the calling thread's stack below the current position, guard pages included. 0 when that can't be
// told, as on the stack of a coroutine.
ORX_API size_t stackavail(void);

ORX_C_END
