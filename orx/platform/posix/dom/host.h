// libxml2 keeps settings, callbacks and error handlers for each thread, and the host may use libxml2 too.
// What the host has set is put aside while the library calls libxml2, so that neither disturbs the other.
//
// Nothing is kept between two calls: libxml2 frees the state of a thread when the thread ends, and handlers
// of the host that run after that may still close documents.
#pragma once

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

namespace orx::platform::dom {

// Initializes libxml2 at first use, silently. To be called before anything of libxml2, since its own
// initialization of some parts is not safe when several threads come first. Raises std::bad_alloc.
void prepare_libxml2();

// Around whatever frees nodes. A host that is called for each node may take `_private` for its own. Never
// throws, so that documents can be closed when memory runs out.
class CallbackAside {
 public:
  CallbackAside() noexcept;
  ~CallbackAside();
  CallbackAside(const CallbackAside&) = delete;
  CallbackAside& operator=(const CallbackAside&) = delete;

  // False when libxml2 has no memory for the state of this thread. It must not be asked for any part of it
  // then.
  bool has_thread_state() const { return on_free_ != nullptr; }

 private:
  xmlDeregisterNodeFunc* on_free_;  // null without a state
  xmlDeregisterNodeFunc old_on_free_ = nullptr;
};

// Around every other call that may allocate or report something. Raises std::bad_alloc.
class HostAside {
 public:
  HostAside();
  ~HostAside();
  HostAside(const HostAside&) = delete;
  HostAside& operator=(const HostAside&) = delete;

  // libxml2 goes on without a name or text for which it had no memory, and reports it only to the error
  // handler. Raises std::bad_alloc if that has happened.
  void CheckMemory() const;

  // For the handlers of a parser or a query: notes a lack of memory. `self` is a HostAside.
  static void OnError(void* self, xmlError* error);

 private:
  const CallbackAside callback_;
  xmlRegisterNodeFunc on_new_;
  xmlStructuredErrorFunc on_error_;
  void* error_context_;
  xmlGenericErrorFunc on_message_;
  int keep_blanks_;
  xmlError last_error_;
  bool ran_out_of_memory_ = false;
};

}  // namespace orx::platform::dom
