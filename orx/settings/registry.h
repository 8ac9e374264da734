// The user's settings: typed values in a tree of keys below the product key,
// HKEY_CURRENT_USER\Software\Halvark Software\TESSEL\6.9.1, which is created on first use.
//
// A path of up to four names leads from the product key to a key. The first null name ends the path, and the
// names after it are ignored; a null `key1` is the product key itself. A name may contain several levels with
// backslashes between them. A null `valueName` is the key's default value.
//
// Every function with the result int returns 0, or -1 for any failure. The type of a value is stored, but not
// checked when the value is read. A value is written completely or not at all, also when several processes
// write at once. Functions may be called from any thread, also in exit handlers. A cancellation of the thread
// takes effect after the call.
#pragma once

#include <orx/compat/export.h>
#include <orx/compat/hkey.h>

#include <stddef.h>

// The product that owns the settings and the application data. Its version changes with a release of the
// suite, independently of the version of the library.
#define ORX_PRODUCT_VERSION "6.9.1"
#define ORX_PRODUCT_KEY "Software\\Halvark Software\\TESSEL\\" ORX_PRODUCT_VERSION

ORX_C_BEGIN

// Read a value into `buffer`, which has `size` bytes, or into a number. Fail if the value does not exist, if
// it is larger than the buffer, or if a name of the path is empty; the content of the buffer is then
// undefined. A smaller value fills only its own length, and that length is not reported. A text that was
// stored without a terminating NUL is read with one if there is space. A null buffer or number only checks
// whether the value exists. Reading creates no keys below the product key.
ORX_API int hvk_RegReadString(const char* key1, const char* key2, const char* key3, const char* key4,
                              const char* valueName, char* buffer, int size);
ORX_API int hvk_RegReadInt(const char* key1, const char* key2, const char* key3, const char* key4,
                           const char* valueName, int* value);
ORX_API int hvk_RegReadDouble(const char* key1, const char* key2, const char* key3, const char* key4,
                              const char* valueName, double* value);
ORX_API int hvk_RegReadFloat(const char* key1, const char* key2, const char* key3, const char* key4,
                             const char* valueName, float* value);
ORX_API int hvk_RegReadBinary(const char* key1, const char* key2, const char* key3, const char* key4,
                              const char* valueName, void* buffer, int size);

// Write a value and create the missing keys, which remain if writing fails later. An empty name means
// the key before it. Texts are stored as REG_SZ with their NUL, ints as REG_DWORD, and doubles, floats and
// bytes as REG_BINARY in memory order. `type` is any of the types of compat/hkey.h. `size` is in bytes;
// `data` may be null if it is 0.
ORX_API int hvk_RegWrite(const char* key1, const char* key2, const char* key3, const char* key4,
                         const char* valueName, const void* data, int size, int type);
ORX_API int hvk_RegWriteString(const char* key1, const char* key2, const char* key3, const char* key4,
                               const char* valueName, const char* text);
ORX_API int hvk_RegWriteInt(const char* key1, const char* key2, const char* key3, const char* key4,
                            const char* valueName, int value);
ORX_API int hvk_RegWriteDouble(const char* key1, const char* key2, const char* key3, const char* key4,
                               const char* valueName, double value);
ORX_API int hvk_RegWriteFloat(const char* key1, const char* key2, const char* key3, const char* key4,
                              const char* valueName, float value);
ORX_API int hvk_RegWriteBinary(const char* key1, const char* key2, const char* key3, const char* key4,
                               const char* valueName, const void* data, int size);

// Write a value that does not exist yet. An existing value is left unchanged, which counts as success.
ORX_API int hvk_RegWriteInitialize(const char* key1, const char* key2, const char* key3, const char* key4,
                                   const char* valueName, const void* data, int size, int type);
ORX_API int hvk_RegInitString(const char* key1, const char* key2, const char* key3, const char* key4,
                              const char* valueName, const char* text);
ORX_API int hvk_RegInitInt(const char* key1, const char* key2, const char* key3, const char* key4,
                           const char* valueName, int value);

// Opens a key with full access, for the functions of compat/hkey.h, and creates the missing keys. The caller
// closes it with hvk_RegCloseKey. An empty name in the path fails. After a failure the created keys are
// deleted again, and `*key` is unchanged.
ORX_API int hvk_RegOpenKey(const char* key1, const char* key2, const char* key3, const char* key4, HKEY* key);

// Closes `*key`, which keeps its value. Fails if the key is not open or `key` is null.
ORX_API int hvk_RegCloseKey(HKEY* key);

// Delete the key `name` below `key1`, or below the product key if `key1` is null or empty. A missing `key1`
// is created. hvk_RegDeleteKey fails for a key with sub-keys; hvk_RegSHDeleteKey deletes the key and all keys
// below it.
//
// With an empty `name`, hvk_RegDeleteKey deletes `key1` itself, and hvk_RegSHDeleteKey deletes all keys below
// `key1` and keeps `key1` with its values. A null `name` fails in hvk_RegDeleteKey and is the same as an
// empty one in hvk_RegSHDeleteKey. Neither function deletes the product key or all keys below it.
ORX_API int hvk_RegDeleteKey(const char* key1, const char* name);
ORX_API int hvk_RegSHDeleteKey(const char* key1, const char* name);

// Gets the folder where the plotting product is installed on this machine, as text in `buffer`, which has
// `size` bytes. Fails if there is no such folder or its text does not fit, with the buffer unchanged, and if
// the text is empty.
ORX_API int hvk_GetChartwrightInstallFolder(char* buffer, int size);

// Gets the file that stores the settings of HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE, as a path of the system
// in `path`, which has `size` bytes. Fails, with the empty path if `size` is not 0, if the path does not fit
// or there is no such file.
ORX_API int orx_registry_file(HKEY root, char* path, size_t size);

// Calls `change` with `context` and makes its writes one transaction, where the system has transactions. The
// transaction contains everything that the thread writes below `root` during the call, with the functions
// above or through open keys. It is kept if `change` returns ERROR_SUCCESS. It is undone if `change` returns
// any other code or throws, or if the store fails. Many writes take about as long as one.
//
// Returns the result of `change`, or the reason why its writes could not be kept; ERROR_INVALID_HANDLE for
// any other root, and ERROR_INVALID_PARAMETER for a null `change`. A key that was created by an undone
// transaction is a deleted key.
//
// During the call other threads and the writes of other processes wait, and a cancellation of the thread is
// delayed. The thread receives no SIGPIPE or SIGXFSZ. A process that `change` forks cannot use the store.
ORX_API LSTATUS orx_registry_change(HKEY root, LSTATUS (*change)(void* context), void* context);

ORX_C_END
