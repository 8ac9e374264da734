// A host that exports functions with names of the library. The library must call its own functions, and the
// host its own.
#include <dlfcn.h>
#include <orx/compat/variant.h>
#include <orx/orx.h>

#include <cstdio>
#include <cstring>

namespace {

int own_calls = 0;
int callback_calls = 0;

int fail(const char* reason) {
  std::fprintf(stderr, "%s\n", reason);
  return 1;
}

char* count_call(char* text) {
  ++own_calls;
  return text;
}

}  // namespace

char* trim(char* s) { return count_call(s); }
char* trimt(char* s) { return count_call(s); }
void ShowError(const char*) { ++own_calls; }
void SysFreeString(BSTR) { ++own_calls; }

int main() {
  void* library = dlopen("liborx.so.6", RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) return fail("the library is not loaded");
  auto* const library_trim = reinterpret_cast<decltype(&trim)>(dlsym(library, "trim"));
  auto* const library_show_error = reinterpret_cast<decltype(&ShowError)>(dlsym(library, "ShowError"));
  if (library_trim == nullptr || library_show_error == nullptr || library_trim == trim) {
    return fail("the library's functions are not found");
  }
  char text[] = " pit ";
  library_trim(text);
  VARIANT value{};
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(L"pit");
  VariantClear(&value);
  if (std::strcmp(text, "pit") != 0 || own_calls != 0) return fail("the library calls the host");

  SetShowErrorCallback([](const char*) { ++callback_calls; });
  ShowError("");
  trim(text);
  if (own_calls != 2 || callback_calls != 0) return fail("the host does not reach its own functions");
  library_show_error("");
  return callback_calls == 1 && own_calls == 2 ? 0
                                               : fail("the library's ShowError does not reach the callback");
}
