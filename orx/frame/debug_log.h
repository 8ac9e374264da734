// The debug log: two text files that are always on.
//
// The main log is DEBUG.LOG. The functions with "_thread" in their names write to the thread log,
// DEBUGThread.LOG, so that a second thread can log while the first one does. Each log is for one thread at a
// time. Both are in the application data folder (application_data.h) until halvark_log_debug_init chooses
// another folder for the main log. A folder that does not exist yet is looked for again with each line.
//
// No file stays open: each line opens its file, appends in one write, and closes it. So lines of several
// processes are never mixed. Lines end in CR LF on every system. Each line also goes to the debugger output
// and, if halvark_log_debug_print was called, to the standard output of the C runtime, even if writing to the
// file fails.
//
// Functions that write a line return 0, or -1 if the file does not have the whole line. The next line tries
// the same file again.
//
// A log that does not exist is created, and everybody who may write to its folder may write to it. In a
// folder where other users may write, a file with more than one name is refused. A link, a pipe or a device
// is used there only if it belongs to this user or the administrator. Otherwise another user could make this
// user overwrite a file of his own.
#pragma once

#include <orx/compat/export.h>

// The names of the files.
#define ORX_LOG_NAME "DEBUG.LOG"
#define ORX_THREAD_LOG_NAME "DEBUGThread.LOG"

// The longest path of a log, in characters without the NUL. A longer path is cut, and so is the first line of
// the header.
#define ORX_LOG_PATH_LENGTH 260

// The longest formatted line, in bytes without the NUL. A longer line is cut.
#define ORX_LOG_LINE_LENGTH 4096

ORX_C_BEGIN

// Empties DEBUG.LOG in `folder`, or creates it, and writes a header of two lines: its path with the time, and
// a separator. The main log stays in this folder. A null or empty folder is the application data folder; a
// backslash at the end of the folder is optional. Returns 0, or -1 if the file cannot be written; the next
// line then goes to the application data folder.
ORX_API int halvark_log_debug_init(const char* folder);

// Deletes DEBUG.LOG and DEBUGThread.LOG in the current directory, wherever the logs are. Returns 0, also if
// the files cannot be deleted.
ORX_API int halvark_log_debug_reset(void);

// Write one line of any length, unchanged: a % has no meaning, but a line feed in the text becomes CR LF. For
// a null or empty text they write nothing and return -1.
ORX_API int halvark_log_debug_write(const char* text);
ORX_API int halvark_log_debug_write_thread(const char* text);

// Write one line that is formatted as by printf of the C runtime and cut at ORX_LOG_LINE_LENGTH. Numbers and
// wide text look the same in every locale. For a null format or an empty result they write nothing and return
// -1.
ORX_API int halvark_log_debug_write_n(const char* format, ...) ORX_PRINTF(1, 2);
ORX_API int halvark_log_debug_write_n_thread(const char* format, ...) ORX_PRINTF(1, 2);

// Whether lines of both logs also go to the standard output; 0 means no, as at first. Returns 0.
ORX_API int halvark_log_debug_print(int echo);

// Writes the line "halvark_error: " to the main log. If a log was used before but the main log has no file
// yet, first starts it in the application data folder as halvark_log_debug_init does. Returns 0, even if that
// fails.
ORX_API int halvark_log_debug_error(void);

// For hosts that close their logs. They do nothing, since no file stays open, and return 0.
ORX_API int halvark_log_debug_close(void);
ORX_API int halvark_log_debug_close_thread(void);

ORX_C_END
