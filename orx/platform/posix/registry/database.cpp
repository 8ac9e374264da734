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

// EXTRA is full synchronisation, and of the folder too: a journal that comes back after a power cut would
// undo what was reported as written.
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

// As many rows as enumerators and no enumerator without a text: so none has two, either.
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
  const auto* found =
      std::ranges::find(kErrors, sqlite_error & 0xFF, [](const auto& row) { return row.sqlite_error; });
  return found != std::end(kErrors) ? found->status : ERROR_REGISTRY_IO_FAILED;
}

LSTATUS status_of_system_error(int error) {
  return error == EACCES || error == EPERM || error == EROFS ? ERROR_ACCESS_DENIED : ERROR_REGISTRY_IO_FAILED;
}

// Many short waits of unequal length, so that each of several writers gets its turn.
int wait_for_lock(void* pointer, int /*count*/) {
  using std::chrono::steady_clock;
  auto& deadline = *static_cast<steady_clock::time_point*>(pointer);
  const auto now = steady_clock::now();
  if (deadline == steady_clock::time_point())
    deadline = now + std::chrono::milliseconds(registry_busy_timeout_ms);
  if (now >= deadline) return 0;
  std::this_thread::sleep_for(std::chrono::microseconds(200 + now.time_since_epoch().count() / 64 % 2048));
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
  if (kind_ == StoreKind::kOutdated) Disconnect();  // to be brought up to date first
  const bool is_reading = database_ != nullptr && sqlite3_get_autocommit(database_.get()) == 0;
  const LSTATUS status = is_reading ? Do(Sql::kCommit) : Connect(/*creates_file=*/true);
  return status == ERROR_SUCCESS ? Start(Sql::kBeginWriting) : status;
}

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
  // The process that wrote has made another kind of store of the file.
  Disconnect();
  return Open() == ERROR_SUCCESS ? Start(begin) : failure_;
}

LSTATUS RegistryDatabase::End(RegistryTransaction::Outcome outcome) {
  is_active_ = false;
  const auto is_open = [this] {
    return database_ != nullptr && sqlite3_get_autocommit(database_.get()) == 0;
  };
  if (is_open() && failure_ == ERROR_SUCCESS && outcome == RegistryTransaction::kKept) Do(Sql::kCommit);
  if (is_open()) {
    Run rollback(Prepare(Sql::kRollback));
    rollback.Step();
    ++epoch_;
  }
  // One that may have been mended meanwhile deserves another look; and SQLite may have undone by itself what
  // was found here.
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
    } catch (const std::bad_alloc&) {  // then without a word
    }
  }
  return failure_;
}

// Without a file there is no connection, and no failure either.
LSTATUS RegistryDatabase::Connect(bool creates_file) {
  std::string path = registry_path(place_);
  if (database_ != nullptr && path == path_ && !HasMoved()) return ERROR_SUCCESS;
  Disconnect();
  path_ = std::move(path);
  if (path_.empty()) return Fail(ERROR_BAD_PATHNAME, "the user has no home");

  struct stat status;
  int error = stat(path_.c_str(), &status) == 0 ? 0 : errno;
  if (error == ENOENT && !creates_file) return ERROR_SUCCESS;
  if (error == ENOENT) error = make_registry_file(place_, path_);
  if (error != 0) return Fail(status_of_system_error(error), error_text(error));
  return Open();
}

LSTATUS RegistryDatabase::Open() {
  constexpr int kFlags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_EXRESCODE;
  signals_.emplace();  // a new file is written to, and so is one that a killed process has left half written
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

// Nothing of a file that is not ours is changed. An outdated store that cannot be written can still be read.
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
  // Another process may have been first.
  if (const char* steps = upgrade_script(ReadKind()); steps != nullptr) error = Execute(steps);
  if (error == SQLITE_OK) error = Execute("COMMIT");
  if (error == SQLITE_OK) kind_ = StoreKind::kCurrent;
  if (sqlite3_get_autocommit(database_.get()) == 0) Execute("ROLLBACK");
  return error;
}

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
  failure_ = ERROR_BUSY;  // with what its parent has begun
}

}  // namespace orx::platform
