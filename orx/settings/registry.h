// The user's settings: typed values in a tree of keys below the product key,
// HKEY_CURRENT_USER\Software\Halvark Software\TESSEL\6.9.1, which is made on first use.
//
// Up to four level names lead from there to a key; the first null name ends the path, and the rest is
// ignored. A name may hold several levels, with backslashes between them. A null value name means the key's
// default value. Every function returns 0, or -1 for any failure. Types are kept and not checked when a value
// is read. Functions may be called from any thread, also in exit handlers; a cancellation of the thread waits
// until the call has ended. A value is written as a whole or not at all, whichever processes write at once.
#pragma once

#include <orx/compat/export.h>
#include <orx/compat/hkey.h>

#include <stddef.h>

// The product whose settings and application data these are. Its version changes with a release of the suite,
// not with the library's own.
#define ORX_PRODUCT_VERSION "6.9.1"
#define ORX_PRODUCT_KEY "Software\\Halvark Software\\TESSEL\\" ORX_PRODUCT_VERSION

ORX_C_BEGIN

// Reading makes no keys below the product key. It fails for a level with the empty name, for a value that
// does not exist, and for a value of more than `size` bytes. A shorter value fills only its own length, and
// that length is not reported. The content of the buffer after a failure is undefined. A text that was stored
// without its NUL gets one if there is space.
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

// Writing makes the keys that are missing, which stay if it fails later; a level with the empty name is the
// key before it. Texts are stored as REG_SZ with their NUL, ints as REG_DWORD, doubles, floats and bytes as
// REG_BINARY in memory order. `data` may be null if `size` is 0.
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

// Write a value that does not exist yet; one that does stays as it is, and that is a success.
ORX_API int hvk_RegWriteInitialize(const char* key1, const char* key2, const char* key3, const char* key4,
                                   const char* valueName, const void* data, int size, int type);
ORX_API int hvk_RegInitString(const char* key1, const char* key2, const char* key3, const char* key4,
                              const char* valueName, const char* text);
ORX_API int hvk_RegInitInt(const char* key1, const char* key2, const char* key3, const char* key4,
                           const char* valueName, int value);

// Opens a key with full access, for the functions of compat/hkey.h. The keys that are missing are made; a
// level with the empty name fails, and after a failure the keys made are gone again and `*key` is as it was.
// The caller closes it.
ORX_API int hvk_RegOpenKey(const char* key1, const char* key2, const char* key3, const char* key4, HKEY* key);

// `*key` is closed and keeps its value.
ORX_API int hvk_RegCloseKey(HKEY* key);

// Delete the key `name` below `key1`, or below the product key if `key1` is null or empty. A missing `key1`
// is made. The first function refuses a key that has sub-keys; the second deletes a key with all below it. An
// empty `name` is `key1` itself, and so is a null `name` for the second function, while the first refuses it;
// the second then deletes what is below `key1` and leaves `key1` with its values. Neither deletes the product
// key, or all that is below it.
ORX_API int hvk_RegDeleteKey(const char* key1, const char* name);
ORX_API int hvk_RegSHDeleteKey(const char* key1, const char* name);

// The folder in which the plotting product is installed on this machine; an empty one is a failure, and a
// buffer that it does not fit into stays as it is, as it does without such a folder.
ORX_API int hvk_GetChartwrightInstallFolder(char* buffer, int size);

// The file that holds the settings of HKEY_CURRENT_USER or HKEY_LOCAL_MACHINE, as a path of the system with
// its NUL. -1, with an empty path if there is room, when it does not fit or there is no such file.
ORX_API int orx_registry_file(HKEY root, char* path, size_t size);

// Calls `change` with `context`. All that the thread writes below a root meanwhile, with the functions above
// or through open keys, is one transaction where the system has transactions: it is kept as a whole if
// `change` returns ERROR_SUCCESS, and undone if it returns anything else, throws, or the store fails. Many
// writes take about as long as one. Calls of other threads and writes of other processes wait until `change`
// has ended; so does a cancellation of the thread. Returns what `change` returned, or why its writes could
// not be kept. A key that was made and undone is a deleted key. A process that is forked by `change` cannot
// use the store, and the thread gets no SIGPIPE or SIGXFSZ in it.
ORX_API LSTATUS orx_registry_change(HKEY root, LSTATUS (*change)(void* context), void* context);

ORX_C_END
