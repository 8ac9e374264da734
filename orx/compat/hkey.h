// HKEY: a key of the registry, a tree of keys that hold typed values.
//
// HKEY_CURRENT_USER is the root of the user's settings, HKEY_LOCAL_MACHINE that of the machine's. A path
// consists of the names of keys, one for each level, separated by backslashes. Names keep the letter case in
// which they were first written, and are compared without regard to it.
//
// Every function returns ERROR_SUCCESS or the code of the failure, and leaves errno unchanged. The caller
// owns each key that it opens, and closes it once with RegCloseKey. The functions may be called from any
// thread. Each call is one transaction: other processes see all of its changes or none.
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

// The greatest lengths of names, in characters.
#define ORX_REGISTRY_KEY_NAME_LENGTH 255
#define ORX_REGISTRY_VALUE_NAME_LENGTH 16383

// The greatest number of levels, counting the root as the first.
#define ORX_REGISTRY_DEPTH 512

// Access rights of an open key. They are checked when the key's own values are used or its sub-keys are
// listed. Any open key can open, create and delete sub-keys.
#define KEY_QUERY_VALUE 0x0001U
#define KEY_SET_VALUE 0x0002U
#define KEY_ENUMERATE_SUB_KEYS 0x0008U
#define KEY_READ 0x20019U
#define KEY_WRITE 0x20006U
#define KEY_ALL_ACCESS 0xF003FU

// Types of values. They are stored and reported, and do not change how a value is treated, with one
// exception: a text that was stored without a terminating NUL is read with one if the buffer has space for
// it.
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
  ERROR_BADDB = 1009,  // the file is not a settings store, is damaged, or has a later version
  ERROR_REGISTRY_IO_FAILED = 1016,
  ERROR_KEY_DELETED = 1018
};

ORX_C_BEGIN

// Opens the key at `path` below `key` and stores it in `*opened`, or null after a failure. A null or empty
// path opens `key` itself once more. `options` is ignored.
ORX_API LSTATUS RegOpenKeyExA(HKEY key, const char* path, DWORD options, REGSAM access, HKEY* opened);

// Opens the key at `path` as RegOpenKeyExA does, and creates the missing levels. Levels that were created
// before a failure remain. `*disposition` is set to REG_CREATED_NEW_KEY or REG_OPENED_EXISTING_KEY;
// `disposition` may be null. `reserved`, `class_name`, `options` and `security` are ignored.
#define REG_CREATED_NEW_KEY 1U
#define REG_OPENED_EXISTING_KEY 2U
ORX_API LSTATUS RegCreateKeyExA(HKEY key, const char* path, DWORD reserved, char* class_name, DWORD options,
                                REGSAM access, const void* security, HKEY* opened, DWORD* disposition);

// Closes the key. A key that is not open gives ERROR_INVALID_HANDLE. Closing a root has no effect.
ORX_API LSTATUS RegCloseKey(HKEY key);

// Reads the value `name`; null is the key's default value. On entry `*size` is the capacity of `data` in
// bytes, on return the size of the value. A value that does not fit gives ERROR_MORE_DATA and its size, and
// leaves `data` unchanged. With a null `data` the function only reports type and size. `type` may be null,
// and so may `size` if `data` is null. `reserved` is ignored.
ORX_API LSTATUS RegQueryValueExA(HKEY key, const char* name, DWORD* reserved, DWORD* type, BYTE* data,
                                 DWORD* size);

// Creates or replaces the value `name`; null is the key's default value. `size` is in bytes. `data` may be
// null when `size` is 0. `reserved` is ignored.
ORX_API LSTATUS RegSetValueExA(HKEY key, const char* name, DWORD reserved, DWORD type, const BYTE* data,
                               DWORD size);

// Deletes a value. A missing value gives ERROR_FILE_NOT_FOUND.
ORX_API LSTATUS RegDeleteValueA(HKEY key, const char* name);

// Deletes the key at `path` with its values. The empty path is `key` itself; a null path gives
// ERROR_INVALID_PARAMETER. A key with sub-keys gives ERROR_ACCESS_DENIED, and so does the key "Software" of a
// root. The handles that are open on a deleted key give ERROR_KEY_DELETED; they must still be closed.
ORX_API LSTATUS RegDeleteKeyA(HKEY key, const char* path);

// Deletes the key at `path` with its values and all keys below it. A null or empty path deletes all keys
// below `key`, and keeps `key` with its values.
ORX_API LSTATUS SHDeleteKeyA(HKEY key, const char* path);

// Lists the sub-keys in the order of their names: writes the name of the sub-key at `index`, which counts
// from 0. An index after the last sub-key gives ERROR_NO_MORE_ITEMS. On entry `*name_size` is the capacity of
// `name` including the NUL, on return the length of the name without it. A name that does not fit gives
// ERROR_MORE_DATA. The last four arguments are ignored and may be null.
ORX_API LSTATUS RegEnumKeyExA(HKEY key, DWORD index, char* name, DWORD* name_size, DWORD* reserved,
                              char* class_name, DWORD* class_size, void* last_write_time);

// Lists the values in the order of their names, as RegEnumKeyExA lists keys. `type`, `data` and `size` are
// those of RegQueryValueExA. `reserved` is ignored.
ORX_API LSTATUS RegEnumValueA(HKEY key, DWORD index, char* name, DWORD* name_size, DWORD* reserved,
                              DWORD* type, BYTE* data, DWORD* size);

ORX_C_END

#endif
