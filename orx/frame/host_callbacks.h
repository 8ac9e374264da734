// What the library asks of the user, it asks through the host.
//
// Five questions, each with a slot for one function of the host. A forwarder calls the function in its slot
// and returns exactly what that answers; with an empty slot ShowError does nothing and the others return the
// default that their caller passed, which the host's function never sees. Pointers are handed on untouched:
// what they point to is agreed between the host's modules and its function. Setting null empties a slot. The
// slots are plain process-wide pointers: set them before other threads ask.
#pragma once

#include <orx/compat/export.h>

ORX_C_BEGIN

typedef void (*ShowErrorCallback)(const char* message);
typedef int (*ConfirmationCallback)(void* a, void* b);
typedef int (*InputStringCallback)(void* a, void* b, unsigned char c, int d);
typedef int (*SelectFromPickListCallback)(void* a);
typedef int (*HandleDuplicatesCallback)(void);

// `message` may have several lines, separated by line feeds.
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
