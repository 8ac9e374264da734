// Open files, and calls that use them.
#pragma once

#include <orx/platform/posix/support/quiet_write.h>

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>

namespace orx::platform {

// Owns the descriptor of an open file; -1 is no file. Assigning another Descriptor swaps the two, so the
// temporary on the right side closes the file that was held before.
class Descriptor {
 public:
  Descriptor() = default;
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() { Close(); }

  bool is_open() const { return number_ >= 0; }
  operator int() const { return number_; }

  // False when the close fails: some file systems report only then that the disk is full.
  bool Close() { return number_ < 0 || close(std::exchange(number_, -1)) == 0; }

 private:
  int number_ = -1;
};

// Makes a system call, and makes it again as long as a signal interrupts it. Returns the call's result.
template <class Call>
auto retry_if_interrupted(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// Writes all of the bytes, in more than one call if the system takes only a part. False, with errno set, if a
// call fails.
inline bool write_all(int file, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written =
        retry_if_interrupted([&] { return quiet_write(file, bytes.data(), bytes.size()); });
    if (written < 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace orx::platform
