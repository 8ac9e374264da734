#include <orx/platform/posix/registry/database.h>

#include <orx/platform/debug_output.h>
#include <orx/platform/posix/support/error_text.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <thread>

namespace orx::platform {

int registry_busy_timeout_ms = 10'000;

namespace {

// The journal is deleted at each commit. EXTRA flushes the folder after that: if the journal reappeared after
// a power cut, the next process would undo a transaction that was reported as written.
constexpr char kSettings[] =
    "PRAGMA journal_mode = DELETE; PRAGMA synchronous = EXTRA; PRAGMA foreign_keys = ON;"
    "PRAGMA temp_store = MEMORY; PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON;";

struct SqlText {
  Sql sql;
  const char* text;
};

// The rows may be in any order: kSql has each text at the index of its enumerator.
constexpr SqlText kSqlRows[] = {
    {Sql::kBegin, "BEGIN"},
    {Sql::kBeginWriting, "BEGIN IMMEDIATE"},
    {Sql::kCommit, "COMMIT"},
    {Sql::kRollback, "ROLLBACK"},
    {Sql::kDataVersion, "PRAGMA data_version"},
    {Sql::kSchema,
     "SELECT application_id, user_version, (SELECT count(*) FROM sqlite_schema)"
     " FROM pragma_application_id, pragma_user_version"},
    {Sql::kKeyExists, "SELECT 1 FROM key WHERE id = ?"},
    {Sql::kKeyDepth,
     "WITH RECURSIVE up (id) AS"
     " (SELECT ?1 UNION ALL SELECT parent FROM key JOIN up USING (id) WHERE parent IS NOT NULL)"
     " SELECT count(*) FROM (SELECT 1 FROM up LIMIT ?2)"},
    {Sql::kFindKey, "SELECT id FROM key WHERE parent = ? AND folded = ?"},
    {Sql::kAddKey, "INSERT INTO key VALUES (random() & 0x7FFFFFFFFFFFFFFF, ?, ?, ?) RETURNING id"},
    {Sql::kHasChildren, "SELECT 1 FROM key WHERE parent = ? LIMIT 1"},
    {Sql::kDeleteKey, "DELETE FROM key WHERE id = ?"},
    {Sql::kDeleteChildren, "DELETE FROM key WHERE parent = ?"},
    {Sql::kListKeys,
     "SELECT name, folded FROM key WHERE parent = ? AND folded >= ? ORDER BY folded LIMIT 1 OFFSET ?"},
    {Sql::kFindValue, "SELECT type, data FROM value WHERE key = ? AND folded = ?"},
    {Sql::kSetValue,
     "INSERT INTO value (key, name, folded, type, data) VALUES (?, ?, ?, ?, ?)"
     " ON CONFLICT DO UPDATE SET type = excluded.type, data = excluded.data"},
    {Sql::kDeleteValue, "DELETE FROM value WHERE key = ? AND folded = ? RETURNING 1"},
    {Sql::kListValues,
     "SELECT name, folded, type, data FROM value WHERE key = ? AND folded >= ?"
     " ORDER BY folded LIMIT 1 OFFSET ?"},
};

constexpr std::size_t kSqlCount = static_cast<std::size_t>(Sql::kCount);

constexpr std::array<const char*, kSqlCount> kSql = [] {
  std::array<const char*, kSqlCount> texts{};
  for (const SqlText& row : kSqlRows) texts[static_cast<std::size_t>(row.sql)] = row.text;
  return texts;
}();

// There are as many rows as enumerators, and every enumerator has a text. So none has two.
static_assert(std::size(kSqlRows) == kSqlCount && std::ranges::count(kSql, nullptr) == 0);

constexpr struct {
  int sqlite_error;
  LSTATUS status;
} kErrors[] = {
    {SQLITE_BUSY, ERROR_BUSY},
    {SQLITE_NOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {SQLITE_TOOBIG, ERROR_NOT_ENOUGH_MEMORY},
    {SQLITE_READONLY, ERROR_ACCESS_DENIED},
    {SQLITE_PERM, ERROR_ACCESS_DENIED},
    {SQLITE_CANTOPEN, ERROR_ACCESS_DENIED},
    {SQLITE_FULL, ERROR_DISK_FULL},
    {SQLITE_CORRUPT, ERROR_BADDB},
    {SQLITE_NOTADB, ERROR_BADDB},
};

LSTATUS status_of(int sqlite_error) {
  constexpr int kPrimaryCode = 0xFF;  // the bits above it are details
  for (const auto& row : kErrors) {
    if (row.sqlite_error == (sqlite_error & kPrimaryCode)) return row.status;
  }
  return ERROR_REGISTRY_IO_FAILED;
}

LSTATUS status_of_system_error(int error) {
  const bool is_denied = error == EACCES || error == EPERM || error == EROFS;
  return is_denied ? ERROR_ACCESS_DENIED : ERROR_REGISTRY_IO_FAILED;
}

// SQLite calls this while another process holds a lock; 0 gives up. Many short waits of different length give
// each of several writers a turn. With waits of equal length, the same processes would collide again and
// again.
int wait_for_lock(void* pointer, int /*count*/) {
  using std::chrono::steady_clock;
  auto& deadline = *static_cast<steady_clock::time_point*>(pointer);
  const auto now = steady_clock::now();
  const bool is_first_wait = deadline == steady_clock::time_point();
  if (is_first_wait) deadline = now + std::chrono::milliseconds(registry_busy_timeout_ms);
  if (now >= deadline) return 0;
  // The clock's low bits serve as a random number: 0.2 to 2.2 milliseconds.
  const auto random = now.time_since_epoch().count() / 64 % 2048;
  std::this_thread::sleep_for(std::chrono::microseconds(200 + random));
  return 1;
}

}  // namespace

void RegistryDatabase::Begin(RegistryTransaction::Intent intent) {
  cancellation_.emplace();
  is_active_ = true;
  is_writing_ = false;
  failure_ = ERROR_SUCCESS;
  deadline_ = {};
  try {
    if (intent == RegistryTransaction::kWrite) {
      BeginWriting();
    } else if (Connect(place_.is_created_to_read) == ERROR_SUCCESS && database_ != nullptr) {
      Start(Sql::kBegin);
    }
  } catch (const std::bad_alloc&) {
    Fail(SQLITE_NOMEM);
  }
}

LSTATUS RegistryDatabase::BeginWriting() {
  if (is_writing_ || failure_ != ERROR_SUCCESS) return failure_;
  is_writing_ = true;
  signals_.emplace();
  // Only a connection that is opened again upgrades the store, and this transaction needs a current one.
  if (kind_ == StoreKind::kOutdated) Disconnect();
  // The read is ended and not turned into a write: if two processes did that at once, each would wait for the
  // end of the other's read, and SQLite would make one of them fail.
  const LSTATUS status = IsInTransaction() ? Do(Sql::kCommit) : Connect(/*creates_file=*/true);
  return status == ERROR_SUCCESS ? Start(Sql::kBeginWriting) : status;
}

// Begins a transaction and finds out what other processes have written since the last one.
LSTATUS RegistryDatabase::Start(Sql begin) {
  if (Do(begin) != ERROR_SUCCESS) return failure_;
  {
    Run run(Prepare(Sql::kDataVersion));
    if (StepToRow(run) != ERROR_SUCCESS) return failure_;
    if (run.Integer(0) == data_version_) return failure_;
    data_version_ = run.Integer(0);
  }
  ++epoch_;
  const StoreKind kind = ReadKind();
  if (kind == kind_ || failure_ != ERROR_SUCCESS) return failure_;
  // Another process has upgraded the store, or has replaced its content by a store of another kind.
  Disconnect();
  return Open() == ERROR_SUCCESS ? Start(begin) : failure_;
}

LSTATUS RegistryDatabase::End(RegistryTransaction::Outcome outcome) {
  is_active_ = false;
  const bool is_kept = failure_ == ERROR_SUCCESS && outcome == RegistryTransaction::kKept;
  if (is_kept && IsInTransaction()) Do(Sql::kCommit);
  if (IsInTransaction()) {
    Run rollback(Prepare(Sql::kRollback));
    rollback.Step();
    ++epoch_;
  }
  // The next transaction opens the file again, because somebody may have repaired it until then. That also
  // changes the epoch: after some failures SQLite undoes the transaction by itself.
  if (failure_ != ERROR_SUCCESS && failure_ != ERROR_BUSY) Disconnect();
  signals_.reset();
  cancellation_.reset();
  return failure_;
}

LSTATUS RegistryDatabase::ReadStatus() const {
  if (failure_ != ERROR_SUCCESS) return failure_;
  return database_ != nullptr ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

sqlite3_stmt* RegistryDatabase::Prepare(Sql sql) {
  Statement& statement = statements_[static_cast<std::size_t>(sql)];
  if (statement == nullptr) {
    sqlite3_stmt* made = nullptr;
    const int error = sqlite3_prepare_v3(database_.get(), kSql[static_cast<std::size_t>(sql)], -1,
                                         SQLITE_PREPARE_PERSISTENT, &made, nullptr);
    statement.reset(made);
    if (error != SQLITE_OK) Fail(error);
  }
  return statement.get();
}

LSTATUS RegistryDatabase::StepToRow(Run& run) {
  const int result = run.Step();
  if (result == SQLITE_ROW) return ERROR_SUCCESS;
  return result == SQLITE_DONE ? LSTATUS{ERROR_FILE_NOT_FOUND} : Fail(result);
}

LSTATUS RegistryDatabase::StepToEnd(Run& run) {
  const int result = run.Step();
  return result == SQLITE_DONE ? LSTATUS{ERROR_SUCCESS} : Fail(result);
}

LSTATUS RegistryDatabase::Do(Sql sql) {
  Run run(Prepare(sql));
  return StepToEnd(run);
}

int RegistryDatabase::Execute(const char* sql) {
  return sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
}

LSTATUS RegistryDatabase::Fail(int sqlite_error) {
  return Fail(status_of(sqlite_error), sqlite3_errstr(sqlite_error));
}

LSTATUS RegistryDatabase::Fail(LSTATUS status, std::string_view reason) {
  if (failure_ == ERROR_SUCCESS) {
    failure_ = status;
    try {
      debug_output(("Settings in " + path_ + ": " + std::string(reason)).c_str());
    } catch (const std::bad_alloc&) {
      // No memory for the message: the caller still gets the status.
    }
  }
  return failure_;
}

// Opens the file, unless it is open. If it does not exist and must not be created, that is not a failure, and
// there is no connection.
LSTATUS RegistryDatabase::Connect(bool creates_file) {
  std::string path = registry_path(place_);
  if (database_ != nullptr && path == path_ && !HasMoved()) return ERROR_SUCCESS;
  Disconnect();
  path_ = std::move(path);
  if (path_.empty()) return Fail(ERROR_BAD_PATHNAME, "the user has no home");

  struct stat status;
  int error = stat(path_.c_str(), &status) == 0 ? 0 : errno;  // stat and not open: see the class
  if (error == ENOENT && !creates_file) return ERROR_SUCCESS;
  if (error == ENOENT) error = make_registry_file(place_, path_);
  if (error != 0) return Fail(status_of_system_error(error), error_text(error));
  return Open();
}

LSTATUS RegistryDatabase::Open() {
  constexpr int kFlags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_EXRESCODE;
  // Opening may write: a new file gets its tables, and what a killed process has left half written is undone.
  signals_.emplace();
  sqlite3* opened = nullptr;
  int error = sqlite3_open_v2(path_.c_str(), &opened, kFlags, nullptr);
  database_.reset(opened);
  ++epoch_;
  data_version_ = 0;
  if (error == SQLITE_OK) error = add_fold_function(opened);
  if (error == SQLITE_OK) error = sqlite3_busy_handler(opened, wait_for_lock, &deadline_);
  if (error == SQLITE_OK && Upgrade() == ERROR_SUCCESS) error = Execute(kSettings);
  if (error != SQLITE_OK) Fail(error);
  if (failure_ != ERROR_SUCCESS) Disconnect();
  return failure_;
}

StoreKind RegistryDatabase::ReadKind() {
  Run run(Prepare(Sql::kSchema));
  return StepToRow(run) == ERROR_SUCCESS ? kind_of_store(run.Integer(0), run.Integer(1), run.Integer(2))
                                         : StoreKind::kForeign;
}

// Makes a new or outdated store a current one. The file of another program is left alone. If an outdated
// store cannot be written, a transaction that reads gets it through views.
LSTATUS RegistryDatabase::Upgrade() {
  kind_ = ReadKind();
  if (failure_ != ERROR_SUCCESS || kind_ == StoreKind::kCurrent) return failure_;
  if (kind_ == StoreKind::kLater) return Fail(ERROR_BADDB, "made by a later version");
  if (kind_ == StoreKind::kForeign) return Fail(ERROR_BADDB, "not a store of settings");
  int error = Execute("PRAGMA temp_store = MEMORY; BEGIN IMMEDIATE");
  if (error == SQLITE_OK) error = RunUpgradeScript();
  if (error != SQLITE_OK && kind_ == StoreKind::kOutdated && !is_writing_) error = Execute(kOutdatedViews);
  return error == SQLITE_OK ? failure_ : Fail(error);
}

int RegistryDatabase::RunUpgradeScript() {
  int error = SQLITE_OK;
  // The kind is read again, because another process may have upgraded the store before this one got the lock.
  const char* const script = upgrade_script(ReadKind());
  if (script != nullptr) error = Execute(script);
  if (error == SQLITE_OK) error = Execute("COMMIT");
  if (error == SQLITE_OK) kind_ = StoreKind::kCurrent;
  if (IsInTransaction()) Execute("ROLLBACK");
  return error;
}

// In SQLite's words, autocommit is off between a BEGIN and its COMMIT or ROLLBACK.
bool RegistryDatabase::IsInTransaction() const {
  return database_ != nullptr && sqlite3_get_autocommit(database_.get()) == 0;
}

// Whether the name of the file now leads to another file or to none.
bool RegistryDatabase::HasMoved() const {
  int has_moved = 0;
  sqlite3_file_control(database_.get(), "main", SQLITE_FCNTL_HAS_MOVED, &has_moved);
  return has_moved != 0;
}

void RegistryDatabase::Disconnect() {
  for (Statement& statement : statements_) statement.reset();
  database_.reset();
}

void RegistryDatabase::CloseIfIdle() {
  if (!is_active_) Disconnect();
}

void RegistryDatabase::Abandon() {
  for (Statement& statement : statements_) (void)statement.release();
  inherited_ = database_.release();
  failure_ = ERROR_BUSY;  // for a transaction that the parent has begun before the fork
}

}  // namespace orx::platform
