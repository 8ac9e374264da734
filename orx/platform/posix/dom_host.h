// libxml2 keeps settings, callbacks and error handlers for the whole thread, and the host may use libxml2
// too. What the host has set is put aside while the library calls libxml2, so that neither disturbs the
// other.
#pragma once

#include <libxml/globals.h>
#include <libxml/parser.h>
#include <libxml/xmlerror.h>

#include <new>
#include <utility>

namespace orx::platform::dom {

// Where libxml2 keeps some of them for this thread. The places are looked up for each use: libxml2 frees them
// when the thread ends, and a host's own destructors for the thread may still close documents after that.
struct ThreadSlots {
  xmlRegisterNodeFunc& on_new = xmlRegisterNodeDefaultValue;
  xmlDeregisterNodeFunc& on_free = xmlDeregisterNodeDefaultValue;
  xmlStructuredErrorFunc& on_error = xmlStructuredError;
  void*& context = xmlStructuredErrorContext;
};

// Around whatever makes or frees nodes. A host that is called for each node may take `_private` for its own.
// libxml2 goes on without a name or text that it had no memory for, and reports that to the error handler
// only.
class HostAside {
 public:
  HostAside() = default;
  ~HostAside() {
    slots_.on_new = old_on_new_;
    slots_.on_free = old_on_free_;
    slots_.on_error = old_on_error_;
    slots_.context = old_context_;
  }
  HostAside(const HostAside&) = delete;
  HostAside& operator=(const HostAside&) = delete;

  bool ran_out_of_memory() const { return ran_out_; }

  // Raises std::bad_alloc, after `discard` has freed what was made by half.
  template <class Made, class Discard>
  Made* Whole(Made* made, Discard discard) const {
    if (made != nullptr && !ran_out_) return made;
    if (made != nullptr) discard(made);
    throw std::bad_alloc();
  }

 private:
  static void OnError(void* self, xmlError* error) {
    if (error->code == XML_ERR_NO_MEMORY) static_cast<HostAside*>(self)->ran_out_ = true;
  }

  const ThreadSlots slots_;
  const xmlRegisterNodeFunc old_on_new_ = std::exchange(slots_.on_new, nullptr);
  const xmlDeregisterNodeFunc old_on_free_ = std::exchange(slots_.on_free, nullptr);
  const xmlStructuredErrorFunc old_on_error_ = std::exchange(slots_.on_error, &HostAside::OnError);
  void* const old_context_ = std::exchange(slots_.context, this);
  bool ran_out_ = false;
};

// Around parsing, queries and writing as well.
class SettingsAside {
 public:
  SettingsAside() = default;
  ~SettingsAside() {
    xmlKeepBlanksDefaultValue = keep_blanks_;
    xmlTreeIndentString = indent_;
    xmlIndentTreeOutput = indents_;
    xmlSaveNoEmptyTags = no_empty_tags_;
    xmlGenericError = on_message_;
    xmlResetLastError();
    xmlLastError = last_error_;
  }
  SettingsAside(const SettingsAside&) = delete;
  SettingsAside& operator=(const SettingsAside&) = delete;

 private:
  static void ignore_message(void*, const char*, ...) {}

  const int keep_blanks_ = std::exchange(xmlKeepBlanksDefaultValue, 1);
  const char* const indent_ = std::exchange(xmlTreeIndentString, "\t");
  const int indents_ = std::exchange(xmlIndentTreeOutput, 1);
  const int no_empty_tags_ = std::exchange(xmlSaveNoEmptyTags, 0);
  const xmlGenericErrorFunc on_message_ = std::exchange(xmlGenericError, ignore_message);
  const xmlError last_error_ = std::exchange(xmlLastError, xmlError{});
};

// Before the first use of the parser. libxml2's own check for a first use is a data race, and it reports a
// lack of memory on the standard error stream unless the handlers are set.
inline void initialise_parser() {
  static const bool is_done = [] {
    const SettingsAside settings;
    const HostAside host;
    xmlInitParser();
    return true;
  }();
  static_cast<void>(is_done);
}

}  // namespace orx::platform::dom
