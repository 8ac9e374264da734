// Keys of the registry, transactions, and the messages for results.
//
// Functions that return an LSTATUS return ERROR_SUCCESS or the system's code for the failure. Names and paths
// are narrow text. A call may wait for another process that writes, for at most some seconds. Any thread may
// call these functions; an object is for one thread.
//
// Duties of a backend: the functions of compat/hkey.h, and what is declared here and has no body in
// registry_key.cpp.
#pragma once

#include <orx/compat/hkey.h>

#include <string>

namespace orx::platform {

// An open key; the destructor closes it.
class RegistryKey {
 public:
  RegistryKey() = default;
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey() { Close(); }

  // Open and Create close the key held before, which may be `parent`, even when they fail; then no key is
  // held.
  LSTATUS Open(HKEY parent, const char* path, REGSAM access);
  // Opens a key with full access, and first creates the missing levels of the path. `is_new` may be null.
  LSTATUS Create(HKEY parent, const char* path, bool* is_new = nullptr);

  // Copies the bytes of a value to `data`. ERROR_MORE_DATA when there are more than `capacity`.
  LSTATUS Query(const char* name, void* data, DWORD capacity) const;
  bool HasValue(const char* name) const;
  // Writes `size` bytes of `data`, and creates the value if it does not exist.
  LSTATUS Set(const char* name, DWORD type, const void* data, DWORD size) const;

  // Null when no key is held.
  operator HKEY() const { return key_; }
  // Gives the key away: the caller closes it.
  HKEY Release();

 private:
  void Close();

  HKEY key_ = nullptr;
};

// While an object lives, all calls of its thread below the root are one transaction, on systems that have
// transactions. That also makes opening many keys faster. Other threads wait for the end of the transaction.
// An object within another's lifetime belongs to the outer transaction: its End and its destructor do
// nothing.
class RegistryTransaction {
 public:
  enum Intent { kRead, kWrite };  // a transaction that begins with kRead may write as well
  enum Outcome { kKept, kUndone };

  RegistryTransaction(HKEY root, Intent intent);
  RegistryTransaction(const RegistryTransaction&) = delete;
  RegistryTransaction& operator=(const RegistryTransaction&) = delete;
  ~RegistryTransaction();  // ends it with kUndone, unless End was called

  // Ends the transaction. Its changes are on disk only if the outcome is kKept and the result ERROR_SUCCESS,
  // whatever the calls within it have returned. A second call does nothing.
  LSTATUS End(Outcome outcome = kKept);

 private:
  HKEY root_;  // null: there is nothing to end
};

// The file that stores everything below a root. Empty where the system has no such file, and when the user
// has no home folder.
std::string registry_file(HKEY root);

// The system's message for the result of a registry function, followed by CR LF. Empty for a code without a
// message.
std::string registry_error_text(LSTATUS status);

}  // namespace orx::platform
