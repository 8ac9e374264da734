// Environment variables that a test sets for a scope.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace orx::testing {

class ScopedVariable {
 public:
  // Null: the variable is not set.
  ScopedVariable(const char* name, const char* value) : name_(name) {
    if (const char* old = std::getenv(name)) old_ = old;
    put(value);
  }
  ScopedVariable(const ScopedVariable&) = delete;
  ScopedVariable& operator=(const ScopedVariable&) = delete;
  ~ScopedVariable() { put(old_ ? old_->c_str() : nullptr); }

 private:
  void put(const char* value) const {
    value != nullptr ? setenv(name_.c_str(), value, 1) : unsetenv(name_.c_str());
  }

  std::string name_;
  std::optional<std::string> old_;
};

}  // namespace orx::testing
