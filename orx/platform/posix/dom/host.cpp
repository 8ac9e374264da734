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

// libxml2 makes a state for every thread but its first. Without the memory for it libxml2 prints a message
// and calls itself without end, so the library makes the state for it, under the key that libxml2 uses.
constexpr int kUnknown = -1;
std::atomic<int> state_key = kUnknown;

// Before the key is known, libxml2 is only asked when the memory is there: a block that was just freed is the
// one that the same thread gets next.
xmlGlobalState* let_libxml2_make_state() {
  void* volatile block =
      std::malloc(sizeof(xmlGlobalState));  // volatile, or the compiler would leave out the pair
  const bool has_memory = block != nullptr;
  std::free(block);
  return has_memory ? xmlGetGlobalState() : nullptr;
}

bool make_thread_state() {
  if (xmlIsMainThread() != 0) return true;
  const int known = state_key.load(std::memory_order_relaxed);
  if (known == kUnknown) return let_libxml2_make_state() != nullptr;
  const auto key = static_cast<pthread_key_t>(known);
  if (pthread_getspecific(key) != nullptr) return true;
  void* state = std::calloc(1, sizeof(xmlGlobalState));
  if (state == nullptr) return false;
  xmlInitializeGlobalState(static_cast<xmlGlobalState*>(state));
  if (pthread_setspecific(key, state) == 0) return true;
  std::free(state);
  return false;
}

// The key is the one that holds the state of this thread.
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
    const HostAside host;
    xmlInitParser();
    host.CheckMemory();
    find_state_key();
    return true;
  }();
  static_cast<void>(prepared);
}

CallbackAside::CallbackAside() noexcept
    : on_free_(make_thread_state() ? &xmlDeregisterNodeDefaultValue : nullptr) {
  if (on_free_ != nullptr) old_on_free_ = std::exchange(*on_free_, nullptr);
}

CallbackAside::~CallbackAside() {
  if (on_free_ != nullptr) *on_free_ = old_on_free_;
}

HostAside::HostAside() {
  if (!callback_.has_thread_state()) throw std::bad_alloc();
  on_new_ = std::exchange(xmlRegisterNodeDefaultValue, nullptr);
  on_error_ = std::exchange(xmlStructuredError, &HostAside::OnError);
  error_context_ = std::exchange(xmlStructuredErrorContext, this);
  on_message_ = std::exchange(xmlGenericError, ignore_message);
  keep_blanks_ = std::exchange(xmlKeepBlanksDefaultValue, 1);
  last_error_ = std::exchange(xmlLastError, xmlError{});
}

HostAside::~HostAside() {
  xmlResetLastError();
  xmlLastError = last_error_;
  xmlKeepBlanksDefaultValue = keep_blanks_;
  xmlGenericError = on_message_;
  xmlStructuredErrorContext = error_context_;
  xmlStructuredError = on_error_;
  xmlRegisterNodeDefaultValue = on_new_;
}

void HostAside::CheckMemory() const {
  if (ran_out_of_memory_) throw std::bad_alloc();
}

void HostAside::OnError(void* self, xmlError* error) {
  if (error->code == XML_ERR_NO_MEMORY) static_cast<HostAside*>(self)->ran_out_of_memory_ = true;
}

}  // namespace orx::platform::dom
