// The SQLite database for one root of the registry: its file, its schema, its transactions.
#pragma once

#include <orx/compat/hkey.h>
#include <orx/platform/posix/registry/place.h>
#include <orx/platform/posix/registry/schema.h>
#include <orx/platform/posix/registry/sqlite_connection.h>
#include <orx/platform/posix/support/cancellation_block.h>
#include <orx/platform/posix/support/signal_block.h>
#include <orx/platform/registry_key.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace orx::platform {

// How long a transaction waits for other processes. Tests make it shorter.
extern int registry_busy_timeout_ms;

// The statements; database.cpp has their texts.
enum class Sql : std::size_t {
  kBegin,
  kBeginWriting,
  kCommit,
  kRollback,
  kDataVersion,
  kSchema,
  kKeyExists,
  kKeyDepth,
  kFindKey,
  kAddKey,
  kHasChildren,
  kDeleteKey,
  kDeleteChildren,
  kListKeys,
  kFindValue,
  kSetValue,
  kDeleteValue,
  kListValues,
  kCount
};

inline constexpr std::int64_t kRootKey = 1;

// The order of calls is Begin, statements, End. A transaction begins for reading and may become one for
// writing by BeginWriting.
//
// The first failure of a transaction is reported on the debugger output and kept in failure_. From then on
// every function fails with it, and End undoes the transaction.
//
// The connection is opened when it is first needed, and stays open from one transaction to the next. It is
// opened again when another file has taken the place of its file. No function may open the file with open(2)
// as well: closing any descriptor of a file releases all locks that the process has on it.
//
// The caller holds the lock of the registry.
class RegistryDatabase {
 public:
  explicit RegistryDatabase(const RegistryPlace& place) : place_(place) {}

  void Begin(RegistryTransaction::Intent intent);
  // Allows the transaction to write, and creates the file if it does not exist. Another process may have
  // written before this call returns, so what the transaction has read may have changed.
  LSTATUS BeginWriting();
  // Commits the transaction if the outcome is kKept and nothing has failed; otherwise undoes it. Returns the
  // failure.
  LSTATUS End(RegistryTransaction::Outcome outcome);
  bool is_active() const { return is_active_; }

  // Whether the transaction can read: ERROR_SUCCESS, the failure, or ERROR_FILE_NOT_FOUND when there is no
  // file.
  LSTATUS ReadStatus() const;
  // Changes whenever ids of keys that were found before may be invalid, except after a deletion by this
  // process.
  std::uint64_t epoch() const { return epoch_; }

  // Null after a failure.
  sqlite3_stmt* Prepare(Sql sql);
  // Runs a statement up to its next row. ERROR_FILE_NOT_FOUND when there is no other row.
  LSTATUS StepToRow(Run& run);
  // Runs a statement that has no rows.
  LSTATUS StepToEnd(Run& run);

  // Closes the file, unless the calling thread is in a transaction.
  void CloseIfIdle();
  // Forgets the connection without closing it, in a process that was forked: the connection and its locks
  // belong to the parent, and closing it here would release them.
  void Abandon();

 private:
  LSTATUS Do(Sql sql);
  int Execute(const char* sql);  // returns an SQLite result code
  LSTATUS Fail(int sqlite_error);
  LSTATUS Fail(LSTATUS status, std::string_view reason);
  LSTATUS Connect(bool creates_file);
  LSTATUS Open();
  void Disconnect();
  StoreKind ReadKind();
  LSTATUS Upgrade();
  int RunUpgradeScript();
  bool IsInTransaction() const;
  bool HasMoved() const;
  LSTATUS Start(Sql begin);

  const RegistryPlace& place_;
  std::string path_;
  Database database_;             // null: not connected
  sqlite3* inherited_ = nullptr;  // the connection of the parent process: neither used nor freed
  std::array<Statement, static_cast<std::size_t>(Sql::kCount)> statements_;  // null: not prepared yet
  std::uint64_t epoch_ = 0;
  std::int64_t data_version_ = 0;         // SQLite changes it when another connection has written
  StoreKind kind_ = StoreKind::kCurrent;  // kOutdated: the store is read through kOutdatedViews

  bool is_active_ = false;
  bool is_writing_ = false;
  LSTATUS failure_ = ERROR_SUCCESS;
  std::chrono::steady_clock::time_point deadline_;  // of the waits of one transaction; zero before the first
  std::optional<CancellationBlock> cancellation_;
  std::optional<SignalBlock> signals_;  // held while writing: a limit on file sizes must not end the host
};

}  // namespace orx::platform
