// libxml2 keeps settings, callbacks and error handlers for the whole thread, and the host may use libxml2
// too. What the host has set is put aside while the library calls libxml2, so that neither disturbs the
// other.
#pragma once

#include <libxml/globals.h>
#include <libxml/xmlerror.h>

#include <new>
#include <utility>

namespace orx::platform::dom {

// Around whatever makes or frees nodes. A host that is called for each node may take `_private` for its own.
// And libxml2 goes on without a name or text that it had no memory for, and tells only the error handler.
class HostAside {
 public:
  HostAside() = default;
  ~HostAside() {
    on_new_ = old_on_new_;
    on_free_ = old_on_free_;
    on_error_ = old_on_error_;
    context_ = old_context_;
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

  // Where libxml2 keeps them for this thread, which costs a call to ask.
  xmlRegisterNodeFunc& on_new_ = xmlRegisterNodeDefaultValue;
  xmlDeregisterNodeFunc& on_free_ = xmlDeregisterNodeDefaultValue;
  xmlStructuredErrorFunc& on_error_ = xmlStructuredError;
  void*& context_ = xmlStructuredErrorContext;
  const xmlRegisterNodeFunc old_on_new_ = std::exchange(on_new_, nullptr);
  const xmlDeregisterNodeFunc old_on_free_ = std::exchange(on_free_, nullptr);
  const xmlStructuredErrorFunc old_on_error_ = std::exchange(on_error_, &HostAside::OnError);
  void* const old_context_ = std::exchange(context_, this);
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

}  // namespace orx::platform::dom
