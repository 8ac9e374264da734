#include <orx/frame/debug_log.h>

#include <orx/base/errno_guard.h>
#include <orx/base/text_format.h>
#include <orx/datetime/date_time.h>
#include <orx/datetime/date_time_format.h>
#include <orx/frame/application_data_folder.h>
#include <orx/platform/code_page.h>
#include <orx/platform/debug_output.h>
#include <orx/platform/file_system.h>
#include <orx/platform/shared_files.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

namespace {

// The path of a log, or the first line of its header, which is cut at the same length.
using Text = char[ORX_LOG_PATH_LENGTH * orx::platform::kMaxCharacterBytes + 1];

// One of the two logs. Its fields are not guarded: a log is for one thread at a time.
struct Log {
  const char* file;
  Text path;      // empty until the first line or halvark_log_debug_init sets it
  bool is_fixed;  // false: the next line looks for the application data folder again
};

constexpr const char* kSeparator = "---------------------------";

constinit Log main_log{ORX_LOG_NAME, "", false};
constinit Log thread_log{ORX_THREAD_LOG_NAME, "", false};

// Both logs share these two, so several threads may use them at once.
constinit std::atomic<bool> was_used = false;  // a call has tried to start one of the logs or to write a line
constinit std::atomic<bool> echo_enabled = false;

// Formats a text and cuts it at ORX_LOG_PATH_LENGTH characters.
ORX_PRINTF(2, 3)
void format_and_cut(Text& text, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  orx::format_text(text, sizeof text, format, arguments);
  va_end(arguments);
  text[orx::platform::prefix_size(text, ORX_LOG_PATH_LENGTH)] = '\0';
}

// Sets the path of a log in a folder; null and the empty text are the application data folder. If that cannot
// be found, the path is empty, lines are not stored, and the next line looks for it again.
void set_path(Log& log, const char* folder) {
  orx::ApplicationDataFolder found;
  log.is_fixed = folder != nullptr && *folder != '\0';
  if (!log.is_fixed) {
    log.is_fixed = orx::find_application_data_folder(found);
    folder = found;
  }
  *log.path = '\0';
  if (*folder == '\0') return;
  const char* const separator = std::string_view(folder).ends_with('\\') ? "" : "\\";
  format_and_cut(log.path, "%s%s%s", folder, separator, log.file);
}

// Returns the text as the C runtime's text mode writes it, with a line end: each line feed becomes CR LF,
// even after a CR.
std::string to_crlf(std::string_view text) {
  std::string line;
  line.reserve(text.size() + 2);
  for (;;) {
    const std::size_t end = text.find('\n');
    line.append(text.substr(0, end)).append("\r\n");
    if (end == std::string_view::npos) return line;
    text.remove_prefix(end + 1);
  }
}

// Returns the result of a call; false if it raises an exception because memory runs out.
template <class Call>
bool succeeds(Call call) {
  try {
    return call();
  } catch (const std::exception&) {
    // Not catch (...): that would stop the unwinding of a thread that is cancelled, which ends the process.
    return false;
  }
}

// The line goes to the standard output and to the debugger even if it cannot be stored.
int write_line(Log& log, const char* text) {
  if (text == nullptr || *text == '\0') return -1;
  const orx::ErrnoGuard errno_guard;
  if (echo_enabled) std::puts(text);
  orx::platform::debug_output(text);
  was_used = true;
  if (!log.is_fixed) set_path(log, nullptr);
  const bool is_stored = succeeds([&] { return orx::platform::append_to_log(log.path, to_crlf(text)); });
  return is_stored ? 0 : -1;
}

ORX_PRINTF(2, 0)
int write_formatted_line(Log& log, const char* format, std::va_list arguments) {
  if (format == nullptr) return -1;
  // All zero: if formatting fails halfway, what it has written so far is a terminated text and becomes the
  // line.
  char text[ORX_LOG_LINE_LENGTH + 1] = "";
  orx::format_text(text, sizeof text, format, arguments);
  return write_line(log, text);
}

void write_header(Log& log) {
  orxDateTime now{0, orxYearMonthDay, orxDateTimeFull, 0};
  orxDateTime_SetToCurrent(&now);
  char date[ORX_DATE_TEXT_SIZE];
  orxDateTime_FormatString(&now, date, sizeof date);
  int hour, minute, second;
  orxDateTime_GetHourMinuteSecond(&now, &hour, &minute, &second);

  const int twelve_hour = hour % 12 == 0 ? 12 : hour % 12;
  const char* const half_day = hour < 12 ? "AM" : "PM";
  Text header;
  format_and_cut(header, "Log file '%s' opened at %d:%02d %s on %s.", log.path, twelve_hour, minute, half_day,
                 date);
  write_line(log, header);
  write_line(log, kSeparator);
}

}  // namespace

int halvark_log_debug_init(const char* folder) {
  was_used = true;
  set_path(main_log, folder);
  main_log.is_fixed = succeeds([] { return orx::platform::clear_log(main_log.path); });
  if (!main_log.is_fixed) {
    *main_log.path = '\0';
    return -1;
  }
  write_header(main_log);
  return 0;
}

int halvark_log_debug_reset() {
  for (const Log* log : {&main_log, &thread_log}) {
    succeeds([log] { return orx::platform::remove_file(log->file); });
  }
  return 0;
}

int halvark_log_debug_write(const char* text) { return write_line(main_log, text); }
int halvark_log_debug_write_thread(const char* text) { return write_line(thread_log, text); }

int halvark_log_debug_write_n(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = write_formatted_line(main_log, format, arguments);
  va_end(arguments);
  return result;
}

int halvark_log_debug_write_n_thread(const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  const int result = write_formatted_line(thread_log, format, arguments);
  va_end(arguments);
  return result;
}

int halvark_log_debug_print(int echo) {
  echo_enabled = echo != 0;
  return 0;
}

int halvark_log_debug_error() {
  if (was_used && *main_log.path == '\0') halvark_log_debug_init(nullptr);
  write_line(main_log, "halvark_error: ");
  return 0;
}

int halvark_log_debug_close() { return 0; }
int halvark_log_debug_close_thread() { return 0; }
