// A host that exports functions with names of the library. The library must call its own functions, and the
// host its own. The host also sees when the library reads the environment, and makes its memory run out.
#include <dlfcn.h>
#include <orx/orx.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

int own_calls = 0;
int environment_reads = 0;
bool has_memory = true;

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
ORX_API char* getenv(const char*) noexcept {
  ++environment_reads;
  return nullptr;
}
ORX_API void* operator new(std::size_t size) {
  if (void* memory = has_memory ? std::malloc(size) : nullptr) return memory;
  errno = ENOMEM;
  throw std::bad_alloc();
}
ORX_API void operator delete(void* memory) noexcept { std::free(memory); }
ORX_API void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

int main() {
  char file_name[32];
  std::snprintf(file_name, sizeof file_name, "liborx.so.%d", ORX_VERSION_MAJOR);
  void* library = dlopen(file_name, RTLD_NOW | RTLD_NOLOAD);
  if (library == nullptr) return fail("the library is not loaded");
  auto* const library_trim = reinterpret_cast<decltype(&trim)>(dlsym(library, "trim"));
  if (library_trim == nullptr || library_trim == trim) return fail("the library's function is not found");
  char text[] = " pit ";
  library_trim(text);
  if (std::strcmp(text, "pit") != 0 || own_calls != 0) return fail("the library calls the host");

  trim(text);
  if (own_calls != 1) return fail("the host does not reach its own function");

  // Another thread may change the environment from here on.
  setenv("ORX_USER_REGISTRY", "/dev/null", 1);
  orx_environment_changed();
  environment_reads = 0;
  int value_read = 0;
  hvk_RegReadInt(nullptr, nullptr, nullptr, nullptr, "x", &value_read);
  IXMLDOMElement* root = nullptr;
  COrxXMLDoc().SetXMLText(&root, "<a/>");
  if (root != nullptr) root->Release();
  if (environment_reads != 0) return fail("the environment is read once more");

  errno = 77;
  has_memory = false;
  const int result = hvk_RegReadInt(nullptr, nullptr, nullptr, nullptr, "x", &value_read);
  has_memory = true;
  return result == -1 && errno == 77 ? 0 : fail("a setting that has no memory changes errno");
}
