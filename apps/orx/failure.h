// The reason why a command could not do its work. The tool prints it as one line, "orx: FILE: REASON".
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

namespace orx::cli {

class Failure : public std::runtime_error {
 public:
  Failure(const std::string& file, std::string reason)
      : std::runtime_error(file + ": " + reason), reason_(std::move(reason)) {}

  const std::string& Reason() const noexcept { return reason_; }

 private:
  std::string reason_;
};

}  // namespace orx::cli
