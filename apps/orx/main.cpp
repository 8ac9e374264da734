// orx, the command-line host. The exit status is 0 for success, 1 for a failure and 2 for wrong usage.
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

Status report_failure(const std::string& reason, Status status) {
  std::fprintf(stderr, "orx: %s\n", orx::cli::one_line(reason).c_str());
  return status;
}

void print_text(const std::string& text) {
  if (text.empty()) return;
  errno = 0;
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0) {
    throw Failure("standard output", std::generic_category().message(errno));
  }
}

// Collects the output of a command. It is printed when the command flushes it, and at the end of the command,
// also of a command that fails.
class BufferedOutput : public std::stringbuf {
  int sync() override {
    const std::string text = str();
    str({});
    print_text(text);
    return 0;
  }
};

void run(int argc, const char* const* argv) {
  BufferedOutput output;
  std::ostream out(&output);
  out.exceptions(std::ios::badbit);
  const orx::cli::Command command = orx::cli::parse_command_line(argc, argv, out);
  std::optional<Failure> failure;
  try {
    if (command) command(out);
  } catch (const Failure& caught) {
    failure = caught;
  }
  output.pubsync();
  if (failure) throw Failure(*failure);
}

}  // namespace

int main(int argc, char** argv) {
#if defined(SIGPIPE) && defined(SIGXFSZ)
  // Without these signals, a closed pipe or a limit on file sizes is a failed write, which is reported.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
#endif
  try {
    run(argc, argv);
    return kDone;
  } catch (const orx::cli::UsageError& error) {
    return report_failure(std::string(error.what()) + " (see orx --help)", kWrongUsage);
  } catch (const CAtlException& error) {
    return report_failure(error.m_hr == E_OUTOFMEMORY ? "out of memory" : "an argument is invalid", kFailed);
  } catch (const std::bad_alloc&) {
    return report_failure("out of memory", kFailed);
  } catch (const std::exception& error) {
    return report_failure(error.what(), kFailed);
  }
}
