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

// The name of a log, or the first line of its header, which is cut like it.
using Text = char[ORX_LOG_PATH_LENGTH * orx::platform::kMaxCharacterBytes + 1];

struct Log {
  const char* file;
  Text name;      // in full; empty until the first line or halvark_log_debug_init sets it
  bool is_fixed;  // the next line does not look for the application data folder again
};

constinit Log main_log{ORX_LOG_NAME, "", false};
constinit Log thread_log{ORX_THREAD_LOG_NAME, "", false};

// Shared by the logs, and so by their threads.
constinit std::atomic<bool> was_used = false;  // a start or a line was tried, in either log
constinit std::atomic<bool> echo_enabled = false;

ORX_PRINTF(2, 3)
void format_path(Text& text, const char* format, ...) {
  std::va_list arguments;
  va_start(arguments, format);
  orx::format_text(text, sizeof text, format, arguments);
  va_end(arguments);
  text[orx::platform::prefix_size(text, ORX_LOG_PATH_LENGTH)] = '\0';
}

// A null or empty folder: the application data folder. Where that is empty too there is no name, and no log
// until it is found.
void set_name(Log& log, const char* folder) {
  orx::ApplicationDataFolder found;
  log.is_fixed = folder != nullptr && *folder != '\0';
  if (!log.is_fixed) {
    log.is_fixed = orx::find_application_data_folder(found);
    folder = found;
  }
  const bool separated = std::string_view(folder).ends_with('\\');
  *log.name = '\0';
  if (*folder != '\0') format_path(log.name, separated ? "%s%s" : "%s\\%s", folder, log.file);
}

// The text mode of the C runtime: a line feed becomes CR LF, also behind a CR.
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

// False also when memory is exhausted.
template <class Call>
bool succeeds(Call call) {
  try {
    return call();
  } catch (const std::exception&) {  // by name: a thread that is cancelled unwinds through here
    return false;
  }
}

int write_line(Log& log, const char* text) {
  if (text == nullptr || *text == '\0') return -1;
  const orx::ErrnoGuard errno_guard;
  if (echo_enabled) std::puts(text);
  orx::platform::debug_output(text);
  was_used = true;
  if (!log.is_fixed) set_name(log, nullptr);
  return succeeds([&] { return orx::platform::append_to_log(log.name, to_crlf(text)); }) ? 0 : -1;
}

ORX_PRINTF(2, 0)
int write_formatted_line(Log& log, const char* format, std::va_list arguments) {
  if (format == nullptr) return -1;
  // Filled, for a format that cannot be carried out: the line is what was written before that came out.
  char text[ORX_LOG_LINE_LENGTH + 1] = "";
  orx::format_text(text, sizeof text, format, arguments);
  return write_line(log, text);
}

void write_header(Log& log) {
  orxDateTime now{0, orxYearMonthDay, orxDateTimeFull, 0};
  orxDateTime_SetToCurrent(&now);
  char date[64];
  orxDateTime_FormatString(&now, date, sizeof date);
  int hour, minute, second;
  orxDateTime_GetHourMinuteSecond(&now, &hour, &minute, &second);

  const int hour_on_the_dial = hour % 12 == 0 ? 12 : hour % 12;
  Text header;
  format_path(header, "Log file '%s' opened at %d:%02d %s on %s.", log.name, hour_on_the_dial, minute,
              hour < 12 ? "AM" : "PM", date);
  write_line(log, header);
  write_line(log, "---------------------------");
}

}  // namespace

int halvark_log_debug_init(const char* folder) {
  was_used = true;
  set_name(main_log, folder);
  main_log.is_fixed = succeeds([] { return orx::platform::clear_log(main_log.name); });
  if (!main_log.is_fixed) {
    *main_log.name = '\0';
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
  if (was_used && *main_log.name == '\0') halvark_log_debug_init(nullptr);
  write_line(main_log, "halvark_error: ");
  return 0;
}

int halvark_log_debug_close() { return 0; }
int halvark_log_debug_close_thread() { return 0; }
