// The debug log: two files of text lines, always on.
//
// Lines go to DEBUG.LOG, and those of the "_thread" functions to DEBUGThread.LOG, so that a second thread can
// log while the first one does. A log is in the application data folder (application_data.h) unless
// halvark_log_debug_init names another. No file stays open: every line opens its file, appends in one write,
// so that lines of several processes never mix, and closes it. Lines end in CR LF, on every system.
//
// A line also goes to the debugger output and, on request, to the standard output of the C runtime, whatever
// becomes of the file. Functions that write return 0, or -1 for a line that is not, or not wholly, in the
// file; the next line tries the same file again. Each log is for one thread at a time.
//
// A log that does not exist is made, and whoever may write to its folder may write to it. In a folder where
// other users may write, a link is followed only if this user or the administrator made it, a pipe or a
// device is used only if it belongs to one of them, and a file with more than one name is refused: any of
// these can be a trap that makes this user overwrite a file of his own.
#pragma once

#include <orx/compat/export.h>

// The files in the folder of the logs.
#define ORX_LOG_NAME "DEBUG.LOG"
#define ORX_THREAD_LOG_NAME "DEBUGThread.LOG"

// The longest full name of a log and the longest formatted line, in bytes without their NUL. Both are cut
// there.
#define ORX_LOG_PATH_LENGTH 260
#define ORX_LOG_LINE_LENGTH 4096

ORX_C_BEGIN

// Empties DEBUG.LOG in a folder (null or empty: the application data folder) and writes a header of two
// lines. The log is there from now on. -1 if the file cannot be written: the log is then where it was at
// first, in the application data folder. Full names are cut at ORX_LOG_PATH_LENGTH.
ORX_API int halvark_log_debug_init(const char* folder);

// Deletes DEBUG.LOG and DEBUGThread.LOG in the current directory, wherever the logs are. Always 0.
ORX_API int halvark_log_debug_reset(void);

// One line, as it is: a % means nothing, a line feed inside becomes CR LF. A null or empty text is not
// written, and gives -1.
ORX_API int halvark_log_debug_write(const char* text);
ORX_API int halvark_log_debug_write_thread(const char* text);

// One line by the printf conventions of the C runtime, cut at ORX_LOG_LINE_LENGTH; numbers and wide text are
// written alike in every locale. A null format, and one that comes to nothing, gives -1.
ORX_API int halvark_log_debug_write_n(const char* format, ...) ORX_PRINTF(1, 2);
ORX_API int halvark_log_debug_write_n_thread(const char* format, ...) ORX_PRINTF(1, 2);

// Whether lines of both logs also go to the standard output; at first they don't. Always 0.
ORX_API int halvark_log_debug_print(int echo);

// Writes the line "halvark_error: ", and first, if the log could not be started, tries to start it in the
// application data folder. Always 0.
ORX_API int halvark_log_debug_error(void);

// For hosts that bracket their use of a log; between lines there is nothing to close. Always 0.
ORX_API int halvark_log_debug_close(void);
ORX_API int halvark_log_debug_close_thread(void);

ORX_C_END
