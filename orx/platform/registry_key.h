// Keys of the registry, and the texts of the system's errors.
//
// Results are the system's codes, ERROR_SUCCESS or why not. Narrow text. A call may wait for another process
// that writes, for some seconds at most.
//
// Duties of a backend: the functions of compat/hkey.h, and what stands here without a body in
// registry_key.cpp.
#pragma once

#include <orx/compat/hkey.h>

#include <string>

namespace orx::platform {

// An open key, which closes itself.
class RegistryKey {
 public:
  RegistryKey() = default;
  RegistryKey(const RegistryKey&) = delete;
  RegistryKey& operator=(const RegistryKey&) = delete;
  ~RegistryKey() { Close(); }

  // Opens a key below another, in the place of the one held before; the parent may be the one held before.
  LSTATUS Open(HKEY parent, const char* path, REGSAM access);
  // With full access; `is_new` may be null.
  LSTATUS Create(HKEY parent, const char* path, bool* is_new = nullptr);

  // The value's bytes, at most `capacity` of them.
  LSTATUS Query(const char* name, void* data, DWORD capacity) const;
  bool HasValue(const char* name) const;
  LSTATUS Set(const char* name, DWORD type, const void* data, DWORD size) const;

  operator HKEY() const { return key_; }
  // The caller closes it.
  HKEY Release();

 private:
  void Close();

  HKEY key_ = nullptr;
};

// While it lives, what the thread does below a root is one transaction where the system has such, and keys
// cost less to open. One within another is a part of it, and ends with it.
class RegistryTransaction {
 public:
  enum Intent { kRead, kWrite };  // one begun for reading may write all the same, if it must

  RegistryTransaction(HKEY root, Intent intent);
  RegistryTransaction(const RegistryTransaction&) = delete;
  RegistryTransaction& operator=(const RegistryTransaction&) = delete;
  ~RegistryTransaction();  // undoes it, if it has not ended

  enum Outcome { kKept, kUndone };

  // What was written stays written only if it is kept and this succeeds, whatever became of the rest.
  LSTATUS End(Outcome outcome = kKept);

 private:
  HKEY root_;  // null: nothing to end
};

// The file that holds what is below a root; empty where the system keeps that elsewhere, and when there is no
// place for it.
std::string registry_file(HKEY root);

// The message of the calling thread's last failure in a system call, with the line end that the system puts
// behind it; empty when there was none.
std::string last_error_text();

}  // namespace orx::platform
