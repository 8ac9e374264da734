#include <orx/platform/posix/dom/host.h>

#include <libxml/parser.h>
#include <libxml/threads.h>
#include <limits.h>
#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace orx::platform::dom {
namespace {

// libxml2 makes a state for every thread except its first. When it has no memory for the state, it prints a
// message and recurses without end. So this file makes the state itself, and stores it under the key of
// pthread_setspecific that libxml2 uses.
constexpr int kUnknownKey = -1;
std::atomic<int> state_key = kUnknownKey;

// Used while the key is unknown. Calls libxml2 only when there is enough memory: the allocator gives a block
// that was just freed to the next request of that size in the same thread.
xmlGlobalState* let_libxml2_make_state() {
  // Without volatile the compiler would remove both malloc and free.
  void* volatile block = std::malloc(sizeof(xmlGlobalState));
  const bool has_memory = block != nullptr;
  std::free(block);
  return has_memory ? xmlGetGlobalState() : nullptr;
}

// False when memory runs out.
bool ensure_thread_state() {
  if (xmlIsMainThread() != 0) return true;
  const int known_key = state_key.load(std::memory_order_relaxed);
  if (known_key == kUnknownKey) return let_libxml2_make_state() != nullptr;
  const auto key = static_cast<pthread_key_t>(known_key);
  if (pthread_getspecific(key) != nullptr) return true;
  void* state = std::calloc(1, sizeof(xmlGlobalState));
  if (state == nullptr) return false;
  xmlInitializeGlobalState(static_cast<xmlGlobalState*>(state));
  if (pthread_setspecific(key, state) == 0) return true;
  std::free(state);
  return false;
}

// libxml2 does not publish the key. It is the key under which this thread's state is stored.
void find_state_key() {
  const xmlGlobalState* state = let_libxml2_make_state();
  if (state == nullptr) throw std::bad_alloc();
  for (int key = 0; key < PTHREAD_KEYS_MAX; ++key) {
    if (pthread_getspecific(static_cast<pthread_key_t>(key)) == state) state_key = key;
  }
}

void ignore_message(void*, const char*, ...) {}

}  // namespace

void prepare_libxml2() {
  static const bool prepared = [] {
    const HostSettingsGuard host;
    xmlInitParser();
    host.CheckMemory();
    find_state_key();
    return true;
  }();
  static_cast<void>(prepared);
}

FreeCallbackGuard::FreeCallbackGuard() noexcept
    : on_free_(ensure_thread_state() ? &xmlDeregisterNodeDefaultValue : nullptr) {
  if (on_free_ != nullptr) old_on_free_ = std::exchange(*on_free_, nullptr);
}

FreeCallbackGuard::~FreeCallbackGuard() {
  if (on_free_ != nullptr) *on_free_ = old_on_free_;
}

HostSettingsGuard::HostSettingsGuard() {
  if (!free_callback_.has_thread_state()) throw std::bad_alloc();
  on_new_ = std::exchange(xmlRegisterNodeDefaultValue, nullptr);
  on_error_ = std::exchange(xmlStructuredError, &HostSettingsGuard::OnError);
  error_context_ = std::exchange(xmlStructuredErrorContext, this);
  on_message_ = std::exchange(xmlGenericError, ignore_message);
  keep_blanks_ = std::exchange(xmlKeepBlanksDefaultValue, 1);  // the parse drops white space by its own rule
  last_error_ =
      std::exchange(xmlLastError, xmlError{});  // or libxml2 would free the texts of the host's error
}

HostSettingsGuard::~HostSettingsGuard() {
  xmlResetLastError();
  xmlLastError = last_error_;
  xmlKeepBlanksDefaultValue = keep_blanks_;
  xmlGenericError = on_message_;
  xmlStructuredErrorContext = error_context_;
  xmlStructuredError = on_error_;
  xmlRegisterNodeDefaultValue = on_new_;
}

void HostSettingsGuard::CheckMemory() const {
  if (ran_out_of_memory_) throw std::bad_alloc();
}

void HostSettingsGuard::OnError(void* self, xmlError* error) {
  if (error->code == XML_ERR_NO_MEMORY) static_cast<HostSettingsGuard*>(self)->ran_out_of_memory_ = true;
}

}  // namespace orx::platform::dom
