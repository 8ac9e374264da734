// A host that happens to have functions of the library's names, and exports them: neither side reaches the
// other's.
#include <dlfcn.h>
#include <orx/compat/variant.h>
#include <orx/orx.h>

#include <cstdio>
#include <cstring>

namespace {

int own_calls = 0;
int shown = 0;

template <class Function>
Function* library_function(const char* name) {
  void* library = dlopen("liborx.so.6", RTLD_NOW | RTLD_NOLOAD);
  void* symbol = library != nullptr ? dlsym(library, name) : nullptr;
  return reinterpret_cast<Function*>(symbol);
}

int expect(bool condition, const char* what) {
  if (!condition) std::fprintf(stderr, "%s\n", what);
  return condition ? 0 : 1;
}

}  // namespace

char* trim(char* s) { return ++own_calls, s; }
char* trimt(char* s) { return ++own_calls, s; }
void ShowError(const char*) { ++own_calls; }
void SysFreeString(BSTR) { ++own_calls; }

int main() {
  auto* const library_trim = library_function<decltype(trim)>("trim");
  auto* const library_show_error = library_function<decltype(ShowError)>("ShowError");
  if (library_trim == nullptr || library_show_error == nullptr || library_trim == trim) {
    return expect(false, "the library's functions are not found");
  }
  char text[] = " pit ";
  library_trim(text);
  VARIANT value{};
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(L"pit");
  VariantClear(&value);
  int failures = expect(std::strcmp(text, "pit") == 0 && own_calls == 0, "the library calls the host");

  SetShowErrorCallback([](const char*) { ++shown; });
  ShowError("");
  trim(text);
  failures += expect(own_calls == 2 && shown == 0, "the host does not reach its own functions");
  library_show_error("");
  failures += expect(own_calls == 2 && shown == 1, "the library's ShowError does not reach the callback");
  return failures;
}
