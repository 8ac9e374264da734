// Guards for the state that libxml2 keeps for each thread: settings, callbacks and error handlers.
//
// The host may use libxml2 too. A guard saves the host's state, gives libxml2 the state that this library
// needs, and restores the host's state at the end of its scope.
//
// The guards keep nothing between two calls. libxml2 frees the state of a thread when the thread ends, and
// destructors of the host that run after that may still close documents.
#pragma once

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

namespace orx::platform::dom {

// Initialises libxml2 at the first call, without messages. Call it before any other function of libxml2: some
// parts that libxml2 initialises itself are not safe when several threads start at once. Raises
// std::bad_alloc.
void prepare_libxml2();

// Use around code that frees nodes: switches off the host's callback for freed nodes. The callback might take
// `_private` of our nodes for its own. Never throws, so that documents can be closed when memory runs out.
class FreeCallbackGuard {
 public:
  FreeCallbackGuard() noexcept;
  ~FreeCallbackGuard();
  FreeCallbackGuard(const FreeCallbackGuard&) = delete;
  FreeCallbackGuard& operator=(const FreeCallbackGuard&) = delete;

  // False when there is no memory for libxml2's state of this thread. No part of the state may be used then.
  bool has_thread_state() const { return on_free_ != nullptr; }

 private:
  xmlDeregisterNodeFunc* on_free_;  // null without a thread state
  xmlDeregisterNodeFunc old_on_free_ = nullptr;
};

// Use around every other call that may allocate or report an error. Raises std::bad_alloc.
class HostSettingsGuard {
 public:
  HostSettingsGuard();
  ~HostSettingsGuard();
  HostSettingsGuard(const HostSettingsGuard&) = delete;
  HostSettingsGuard& operator=(const HostSettingsGuard&) = delete;

  // Raises std::bad_alloc if libxml2 has run out of memory since the guard was made. libxml2 leaves out a
  // name or text for which it has no memory, and reports that only to the error handler.
  void CheckMemory() const;

  // An error handler for parsers and queries. Records that memory ran out. `self` is a HostSettingsGuard.
  static void OnError(void* self, xmlError* error);

 private:
  const FreeCallbackGuard free_callback_;
  xmlRegisterNodeFunc on_new_;
  xmlStructuredErrorFunc on_error_;
  void* error_context_;
  xmlGenericErrorFunc on_message_;
  int keep_blanks_;
  xmlError last_error_;
  bool ran_out_of_memory_ = false;
};

}  // namespace orx::platform::dom
