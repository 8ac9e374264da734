// Questions and messages of the library to the user, which the host shows.
//
// There are five of them, and each has a slot for one function of the host. The forwarding functions, from
// ShowError to HandleDuplicates, call the function in their slot and return its result unchanged. With an
// empty slot ShowError does nothing, and the other four return the default that their caller passed. The
// host's function does not get that default. Pointers are passed on unchanged; what they point to is a matter
// between the caller and the host's function.
//
// A setter replaces the function in a slot; null empties the slot. The slots belong to the process and are
// not guarded: fill them before other threads call the forwarding functions.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

typedef void (*ShowErrorCallback)(const char* message);
typedef int (*ConfirmationCallback)(void* a, void* b);
typedef int (*InputStringCallback)(void* a, void* b, unsigned char c, int d);
typedef int (*SelectFromPickListCallback)(void* a);
typedef int (*HandleDuplicatesCallback)(void);

// Shows an error message, which may have several lines, separated by line feeds.
ORX_API void ShowError(const char* message);

ORX_API int GetConfirmation(void* a, void* b, int defaultAnswer);
ORX_API int GetInputString(void* a, void* b, unsigned char c, int d, int defaultResult);
ORX_API int SelectFromPickList(void* a, int defaultResult);
ORX_API int HandleDuplicates(int defaultResult);

ORX_API void SetShowErrorCallback(ShowErrorCallback callback);
ORX_API void SetConfirmationCallback(ConfirmationCallback callback);
ORX_API void SetInputStringCallback(InputStringCallback callback);
ORX_API void SetSelectFromPickListCallback(SelectFromPickListCallback callback);
ORX_API void SetHandleDuplicatesCallback(HandleDuplicatesCallback callback);

ORX_C_END
