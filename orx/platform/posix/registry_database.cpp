#include <orx/platform/posix/registry_database.h>

#include <orx/platform/debug_output.h>
#include <orx/platform/posix/error_text.h>
#include <orx/platform/posix/utf8.h>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <new>
#include <thread>

namespace orx::platform {

int registry_patience = 10'000;

namespace {

constexpr int kApplicationId = 0x4F525852;  // "ORXR"
constexpr int kSchemaVersion = 2;
constexpr int kLocaleFolding = 1;  // a store whose names were folded by the locale data of the machine

// Names are kept as they were written, and found by a form without letter case. A value goes with its key, a
// key with its parent. The number of a key is random, so that no other key ever gets it: not after it was
// deleted, not after the transaction that made it was undone, and not in another store.
constexpr char kMakeSchema[] = R"(
CREATE TABLE key (
  id INTEGER PRIMARY KEY,
  parent INTEGER REFERENCES key ON DELETE CASCADE,
  name TEXT NOT NULL,
  folded TEXT NOT NULL,
  UNIQUE (parent, folded));
CREATE TABLE value (
  key INTEGER NOT NULL REFERENCES key ON DELETE CASCADE,
  folded TEXT NOT NULL,
  name TEXT NOT NULL,
  type INTEGER NOT NULL,
  data BLOB NOT NULL,
  PRIMARY KEY (key, folded)) WITHOUT ROWID;
INSERT INTO key VALUES (1, NULL, '', ''), (random() & 0x7FFFFFFFFFFFFFFF, 1, 'Software', 'SOFTWARE');
PRAGMA application_id = 0x4F525852;
PRAGMA user_version = 2;
)";

// Folds the names of an older store anew. Names that are now equal were written as one name on machines with
// different locale data: their keys become one, with the sub-keys and values of all. Of equal values the one
// that was folded as now stays; the others get a number after their name, so that nothing is lost.
constexpr char kBeginFolding[] =
    "CREATE TEMP TABLE merged (id INTEGER PRIMARY KEY, keeper INTEGER);"
    "INSERT INTO merged VALUES (1, 1);";
// One level of keys; repeated until it adds nothing.
constexpr char kMergeLevel[] =
    "INSERT INTO merged SELECT key.id, first_value(key.id) OVER"
    " (PARTITION BY keeper, fold(name) ORDER BY folded = fold(name) DESC, key.id)"
    " FROM key JOIN merged ON key.parent = merged.id WHERE key.id NOT IN (SELECT id FROM merged)";
constexpr char kEndFolding[] =
    "CREATE TEMP TABLE old AS SELECT keeper, name, fold(name) AS folded, type, data, row_number() OVER"
    " (PARTITION BY keeper, fold(name) ORDER BY folded = fold(name) DESC, key) AS number"
    " FROM value JOIN merged ON key = id;"
    "DELETE FROM value;"
    "INSERT INTO value SELECT keeper, folded, name, type, data FROM old WHERE number = 1;"
    "INSERT OR IGNORE INTO value SELECT keeper, fold(name || ' (' || number || ')'),"
    " name || ' (' || number || ')', type, data FROM old WHERE number > 1;"
    "UPDATE key SET parent = (SELECT keeper FROM merged WHERE merged.id = parent), folded = id WHERE id > 1;"
    "DELETE FROM key WHERE id IN (SELECT id FROM merged WHERE id <> keeper);"
    "UPDATE key SET folded = fold(name) WHERE id > 1;"
    "DROP TABLE old; DROP TABLE merged;"
    "PRAGMA user_version = 2;";

// EXTRA is full synchronisation, and of the folder too: a journal that comes back after a power cut would
// undo what was reported as written.
constexpr char kSettings[] =
    "PRAGMA journal_mode = DELETE; PRAGMA synchronous = EXTRA; PRAGMA foreign_keys = ON;"
    "PRAGMA temp_store = MEMORY; PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON;";

// In the order of Sql.
constexpr const char* kSql[] = {
    "BEGIN",
    "BEGIN IMMEDIATE",
    "COMMIT",
    "ROLLBACK",
    "PRAGMA data_version",
    "SELECT application_id, user_version, (SELECT count(*) FROM sqlite_schema)"
    " FROM pragma_application_id, pragma_user_version",
    "SELECT 1 FROM key WHERE id = ?",
    "WITH RECURSIVE up (id) AS (SELECT ?1 UNION ALL SELECT parent FROM key JOIN up USING (id) WHERE parent "
    "IS NOT NULL)"
    " SELECT count(*) FROM (SELECT 1 FROM up LIMIT ?2)",
    "SELECT id FROM key WHERE parent = ? AND folded = ?",
    "INSERT INTO key VALUES (random() & 0x7FFFFFFFFFFFFFFF, ?, ?, ?) RETURNING id",
    "SELECT 1 FROM key WHERE parent = ? LIMIT 1",
    "DELETE FROM key WHERE id = ?",
    "DELETE FROM key WHERE parent = ?",
    "SELECT name, folded FROM key WHERE parent = ? AND folded >= ? ORDER BY folded LIMIT 1 OFFSET ?",
    "SELECT type, data FROM value WHERE key = ? AND folded = ?",
    "INSERT INTO value (key, name, folded, type, data) VALUES (?, ?, ?, ?, ?)"
    " ON CONFLICT DO UPDATE SET type = excluded.type, data = excluded.data",
    "DELETE FROM value WHERE key = ? AND folded = ? RETURNING 1",
    "SELECT name, folded, type, data FROM value WHERE key = ? AND folded >= ? ORDER BY folded LIMIT 1 OFFSET "
    "?",
};
static_assert(std::size(kSql) == static_cast<std::size_t>(Sql::kCount));

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

// The SQL function fold(name).
void fold_in_sql(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
  const auto* name = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
  try {
    std::string folded;
    if (name != nullptr && utf8::to_upper(name, folded)) {
      sqlite3_result_text64(context, folded.data(), folded.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } else {
      sqlite3_result_value(context, arguments[0]);
    }
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

// Many short waits of unequal length, so that each of several writers gets its turn.
int wait_for_others(void* pointer, int /*count*/) {
  using std::chrono::steady_clock;
  auto& deadline = *static_cast<steady_clock::time_point*>(pointer);
  const auto now = steady_clock::now();
  if (deadline == steady_clock::time_point()) deadline = now + std::chrono::milliseconds(registry_patience);
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
      StartWriting();
    } else if (Connect(place_.is_made_to_read) == ERROR_SUCCESS && database_ != nullptr) {
      Start(Sql::kBegin);
    }
  } catch (const std::bad_alloc&) {
    Fail(SQLITE_NOMEM);
  }
}

LSTATUS RegistryDatabase::StartWriting() {
  if (is_writing_ || failure_ != ERROR_SUCCESS) return failure_;
  is_writing_ = true;
  signals_.emplace();
  const bool is_reading = database_ != nullptr && sqlite3_get_autocommit(database_.get()) == 0;
  const LSTATUS status = is_reading ? Do(Sql::kCommit) : Connect(/*is_made=*/true);
  return status == ERROR_SUCCESS ? Start(Sql::kBeginWriting) : status;
}

LSTATUS RegistryDatabase::Start(Sql begin) {
  if (Do(begin) != ERROR_SUCCESS) return failure_;
  Run run(Prepared(Sql::kDataVersion));
  if (Found(run) != ERROR_SUCCESS) return failure_;
  if (run.Integer(0) == data_version_) return failure_;
  data_version_ = run.Integer(0);
  ++epoch_;
  return CheckSchema();  // who wrote may be of a later version, and have made the file its own
}

LSTATUS RegistryDatabase::End(RegistryTransaction::Outcome outcome) {
  is_active_ = false;
  const auto is_open = [this] {
    return database_ != nullptr && sqlite3_get_autocommit(database_.get()) == 0;
  };
  if (is_open() && failure_ == ERROR_SUCCESS && outcome == RegistryTransaction::kKept) Do(Sql::kCommit);
  if (is_open()) {
    Run rollback(Prepared(Sql::kRollback));
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

LSTATUS RegistryDatabase::readable() const {
  if (failure_ != ERROR_SUCCESS) return failure_;
  return database_ != nullptr ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
}

sqlite3_stmt* RegistryDatabase::Prepared(Sql sql) {
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

LSTATUS RegistryDatabase::Found(Run& run) {
  const int result = run.Step();
  if (result == SQLITE_ROW) return ERROR_SUCCESS;
  return result == SQLITE_DONE ? LSTATUS{ERROR_FILE_NOT_FOUND} : Fail(result);
}

LSTATUS RegistryDatabase::Done(Run& run) {
  const int result = run.Step();
  return result == SQLITE_DONE ? LSTATUS{ERROR_SUCCESS} : Fail(result);
}

LSTATUS RegistryDatabase::Do(Sql sql) {
  Run run(Prepared(sql));
  return Done(run);
}

LSTATUS RegistryDatabase::Execute(const char* sql) {
  const int error = sqlite3_exec(database_.get(), sql, nullptr, nullptr, nullptr);
  return error == SQLITE_OK ? LSTATUS{ERROR_SUCCESS} : Fail(error);
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
LSTATUS RegistryDatabase::Connect(bool is_made) {
  std::string path = registry_path(place_);
  if (database_ != nullptr && path == path_ && !HasMoved()) return ERROR_SUCCESS;
  Disconnect();
  path_ = std::move(path);
  if (path_.empty()) return Fail(ERROR_BAD_PATHNAME, "the user has no home");

  struct stat status;
  int error = stat(path_.c_str(), &status) == 0 ? 0 : errno;
  if (error == ENOENT && !is_made) return ERROR_SUCCESS;
  if (error == ENOENT) error = make_registry_file(place_, path_);
  if (error != 0) return Fail(status_of_system_error(error), error_text(error));
  return Open();
}

LSTATUS RegistryDatabase::Open() {
  constexpr int kFlags =
      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_PRIVATECACHE | SQLITE_OPEN_EXRESCODE;
  signals_.emplace();  // a new file is written to, and so is one that a killed process has left half written
  sqlite3* opened = nullptr;
  const int error = sqlite3_open_v2(path_.c_str(), &opened, kFlags, nullptr);
  database_.reset(opened);
  ++epoch_;
  if (error == SQLITE_OK) sqlite3_busy_handler(opened, wait_for_others, &deadline_);
  if (error != SQLITE_OK) Fail(error);
  if (failure_ == ERROR_SUCCESS && CheckSchema() == ERROR_SUCCESS) Execute(kSettings);
  if (failure_ != ERROR_SUCCESS) Disconnect();
  return failure_;
}

// A file that is not a store is left alone; an empty file becomes one.
LSTATUS RegistryDatabase::CheckSchema() {
  Schema schema = FindSchema();
  if (schema == Schema::kCurrent || schema == Schema::kUnknown) return failure_;
  if (sqlite3_get_autocommit(database_.get()) == 0)
    return failure_;  // an older store that was opened for reading
  const int error = sqlite3_exec(database_.get(), "BEGIN IMMEDIATE", nullptr, nullptr, nullptr);
  // Most names fold as before, so whoever may not write to the machine's store reads it as it is.
  if ((error & 0xFF) == SQLITE_READONLY && schema == Schema::kOlder) return failure_;
  if (error != SQLITE_OK) return Fail(error);
  schema = FindSchema();  // another process may have been first
  if (schema == Schema::kNone) Execute(kMakeSchema);
  if (schema == Schema::kOlder) FoldAnew();
  return Execute(failure_ == ERROR_SUCCESS ? "COMMIT" : "ROLLBACK");
}

RegistryDatabase::Schema RegistryDatabase::FindSchema() {
  Run run(Prepared(Sql::kSchema));
  if (Found(run) != ERROR_SUCCESS) return Schema::kUnknown;
  const std::int64_t application = run.Integer(0);
  const std::int64_t version = run.Integer(1);
  if (application == 0 && version == 0 && run.Integer(2) == 0) return Schema::kNone;
  if (application == kApplicationId && version == kSchemaVersion) return Schema::kCurrent;
  if (application == kApplicationId && version == kLocaleFolding) return Schema::kOlder;
  const bool is_later = application == kApplicationId && version > kSchemaVersion;
  Fail(ERROR_BADDB, is_later ? "made by a later version" : "not a store of settings");
  return Schema::kUnknown;
}

LSTATUS RegistryDatabase::FoldAnew() {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC;
  const int error = sqlite3_create_function_v2(database_.get(), "fold", 1, kFlags, nullptr, fold_in_sql,
                                               nullptr, nullptr, nullptr);
  if (error != SQLITE_OK) return Fail(error);
  if (Execute(kBeginFolding) != ERROR_SUCCESS) return failure_;
  do {
    if (Execute(kMergeLevel) != ERROR_SUCCESS) return failure_;
  } while (sqlite3_changes(database_.get()) > 0);
  return Execute(kEndFolding);
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

void RegistryDatabase::Abandon() {
  for (Statement& statement : statements_) (void)statement.release();
  inherited_ = database_.release();
  failure_ = ERROR_BUSY;  // with what its parent has begun
}

}  // namespace orx::platform
