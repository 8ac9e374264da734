// orx, the command-line host: exit status 0 done, 1 failed, 2 wrong usage.
#include <orx/compat/atl_exception.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <system_error>

#include "commands.h"
#include "failure.h"
#include "options.h"
#include "report.h"

namespace {

using orx::cli::Failure;

enum Status { kDone = 0, kFailed = 1, kWrongUsage = 2 };

Status complain(const std::string& reason, Status status) {
  std::fprintf(stderr, "orx: %s\n", orx::cli::one_line(reason).c_str());
  return status;
}

void print(const std::string& text) {
  if (text.empty()) return;
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw Failure("standard output", std::generic_category().message(errno));
  }
}

// What a command shows goes out at its end, also when it fails, or as soon as it flushes.
class Screen : public std::stringbuf {
  int sync() override {
    const std::string text = str();
    str({});
    print(text);
    return 0;
  }
};

void run(int argc, const char* const* argv) {
  Screen screen;
  std::ostream out(&screen);
  out.exceptions(std::ios::badbit);
  const orx::cli::Command command = orx::cli::parse(argc, argv, out);
  std::optional<Failure> failure;
  try {
    if (command) command(out);
  } catch (const Failure& caught) {
    failure = caught;
  }
  screen.pubsync();
  if (failure) throw Failure(*failure);
}

}  // namespace

int main(int argc, char** argv) {
#if defined(SIGPIPE) && defined(SIGXFSZ)
  // A reader that has left and a limit on file sizes are failed writes, and said to be such.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
#endif
  try {
    run(argc, argv);
    return kDone;
  } catch (const orx::cli::UsageError& error) {
    return complain(std::string(error.what()) + " (see orx --help)", kWrongUsage);
  } catch (const CAtlException& error) {
    return complain(error.m_hr == E_OUTOFMEMORY ? "out of memory" : "an argument is invalid", kFailed);
  } catch (const std::bad_alloc&) {
    return complain("out of memory", kFailed);
  } catch (const std::exception& error) {
    return complain(error.what(), kFailed);
  }
}
