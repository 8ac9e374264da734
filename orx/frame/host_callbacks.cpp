#include <orx/frame/host_callbacks.h>

namespace {

ShowErrorCallback show_error = nullptr;
ConfirmationCallback confirmation = nullptr;
InputStringCallback input_string = nullptr;
SelectFromPickListCallback select_from_pick_list = nullptr;
HandleDuplicatesCallback handle_duplicates = nullptr;

template <class... Arguments>
int call_or_default(int (*callback)(Arguments...), int default_result, Arguments... arguments) {
  return callback != nullptr ? callback(arguments...) : default_result;
}

}  // namespace

void ShowError(const char* message) {
  if (show_error != nullptr) show_error(message);
}

int GetConfirmation(void* a, void* b, int defaultAnswer) {
  return call_or_default(confirmation, defaultAnswer, a, b);
}

int GetInputString(void* a, void* b, unsigned char c, int d, int defaultResult) {
  return call_or_default(input_string, defaultResult, a, b, c, d);
}

int SelectFromPickList(void* a, int defaultResult) {
  return call_or_default(select_from_pick_list, defaultResult, a);
}

int HandleDuplicates(int defaultResult) { return call_or_default(handle_duplicates, defaultResult); }

void SetShowErrorCallback(ShowErrorCallback callback) { show_error = callback; }

void SetConfirmationCallback(ConfirmationCallback callback) { confirmation = callback; }

void SetInputStringCallback(InputStringCallback callback) { input_string = callback; }

void SetSelectFromPickListCallback(SelectFromPickListCallback callback) { select_from_pick_list = callback; }

void SetHandleDuplicatesCallback(HandleDuplicatesCallback callback) { handle_duplicates = callback; }
