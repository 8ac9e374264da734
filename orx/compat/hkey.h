// HKEY: a key of the registry, a tree of keys that hold typed values.
//
// The settings of a user are below HKEY_CURRENT_USER, those of the machine below HKEY_LOCAL_MACHINE. Names
// are compared without regard to letter case and kept as they were first written; a key's name is one level
// of at most 255 characters, and a path puts backslashes between levels. Every function returns ERROR_SUCCESS
// or the code of the failure, and leaves errno alone. An open key belongs to whoever opened it, and is closed
// once. Functions may be called from any thread; each is one transaction, which other processes see as a
// whole or not at all.
#pragma once

#if defined(_WIN32)
// The second needs the first.
#include <windows.h>

#include <shlwapi.h>
#else

#include <orx/compat/export.h>

#include <stdint.h>

typedef unsigned char BYTE;
typedef uint32_t DWORD;
typedef int32_t LSTATUS;
typedef uint32_t REGSAM;
typedef struct orxOpenKey* HKEY;

#if defined(__cplusplus)
#define HKEY_CURRENT_USER (reinterpret_cast<HKEY>(uintptr_t{0x80000001U}))
#define HKEY_LOCAL_MACHINE (reinterpret_cast<HKEY>(uintptr_t{0x80000002U}))
#else
#define HKEY_CURRENT_USER ((HKEY)(uintptr_t)0x80000001U)
#define HKEY_LOCAL_MACHINE ((HKEY)(uintptr_t)0x80000002U)
#endif

// The longest names in characters.
#define ORX_REGISTRY_KEY_NAME_LENGTH 255
#define ORX_REGISTRY_VALUE_NAME_LENGTH 16383

// The levels of a tree of keys; the root is the first one.
#define ORX_REGISTRY_DEPTH 512

// What a key was opened for. Rights are asked of a key when its own values are used or its sub-keys listed;
// sub-keys can be opened, made and deleted through any key.
#define KEY_QUERY_VALUE 0x0001U
#define KEY_SET_VALUE 0x0002U
#define KEY_ENUMERATE_SUB_KEYS 0x0008U
#define KEY_READ 0x20019U
#define KEY_WRITE 0x20006U
#define KEY_ALL_ACCESS 0xF003FU

// Types of values. They are kept and not looked at, but that a text read into a buffer with room to spare is
// given a terminating NUL if it was stored without.
#define REG_NONE 0U
#define REG_SZ 1U
#define REG_EXPAND_SZ 2U
#define REG_BINARY 3U
#define REG_DWORD 4U
#define REG_MULTI_SZ 7U

enum {
  ERROR_SUCCESS = 0,
  ERROR_FILE_NOT_FOUND = 2,
  ERROR_ACCESS_DENIED = 5,
  ERROR_INVALID_HANDLE = 6,
  ERROR_NOT_ENOUGH_MEMORY = 8,
  ERROR_INVALID_PARAMETER = 87,
  ERROR_DISK_FULL = 112,
  ERROR_BAD_PATHNAME = 161,
  ERROR_BUSY = 170,
  ERROR_MORE_DATA = 234,
  ERROR_NO_MORE_ITEMS = 259,
  ERROR_NOACCESS = 998,
  ERROR_BADDB = 1009,  // the store is not one, is damaged, or is of a later version
  ERROR_REGISTRY_IO_FAILED = 1016,
  ERROR_KEY_DELETED = 1018
};

ORX_C_BEGIN

// Opens the key at `path` below `key`; a null or empty path opens the same key once more. `options` is
// ignored, `*opened` null after a failure.
ORX_API LSTATUS RegOpenKeyExA(HKEY key, const char* path, DWORD options, REGSAM access, HKEY* opened);

// The same, making the levels that are missing; those made before a failure stay. `reserved`, `class_name`,
// `options` and `security` are ignored; `disposition` may be null and tells REG_CREATED_NEW_KEY or
// REG_OPENED_EXISTING_KEY.
#define REG_CREATED_NEW_KEY 1U
#define REG_OPENED_EXISTING_KEY 2U
ORX_API LSTATUS RegCreateKeyExA(HKEY key, const char* path, DWORD reserved, char* class_name, DWORD options,
                                REGSAM access, const void* security, HKEY* opened, DWORD* disposition);

// ERROR_INVALID_HANDLE for a key that is not open; a root stays open.
ORX_API LSTATUS RegCloseKey(HKEY key);

// Reads a value; a null name means the key's default value. `*size` is the room in `data` before, the bytes
// stored after, also with ERROR_MORE_DATA, when they don't fit and `data` is untouched. A null `data` asks
// for type and size alone. `reserved` is ignored; `type` may be null, and so may `size` without data.
ORX_API LSTATUS RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                                 DWORD* size);

// Makes or replaces a value, with its type. `data` may be null when `size` is 0.
ORX_API LSTATUS RegSetValueExA(HKEY key, const char* name, DWORD reserved, DWORD type, const BYTE* data,
                               DWORD size);

ORX_API LSTATUS RegDeleteValueA(HKEY key, const char* name);

// Deletes the key at `path` with its values; ERROR_ACCESS_DENIED if it has sub-keys. The empty path is the
// key itself. Keys that are still open on it answer ERROR_KEY_DELETED from then on. The key "Software" of a
// root cannot be deleted.
ORX_API LSTATUS RegDeleteKeyA(HKEY key, const char* path);

// Deletes the key at `path` with all below it. A null or empty path deletes what is below the key, and leaves
// the key with its values.
ORX_API LSTATUS SHDeleteKeyA(HKEY key, const char* path);

// The sub-keys in the order of their names, from index 0 to ERROR_NO_MORE_ITEMS. `*name_size` is the room in
// `name` before, with the NUL, and the length after, without it; ERROR_MORE_DATA when it doesn't fit. The
// last four are ignored and may be null.
ORX_API LSTATUS RegEnumKeyExA(HKEY key, DWORD index, char* name, DWORD* name_size, DWORD* reserved,
                              char* class_name, DWORD* class_size, void* last_write_time);

// The values in the order of their names; type, data and size as in RegQueryValueExA.
ORX_API LSTATUS RegEnumValueA(HKEY key, DWORD index, char* name, DWORD* name_size, DWORD* reserved,
                              DWORD* type, BYTE* data, DWORD* size);

ORX_C_END

#endif
