// The SQLite database behind one root of the registry: its file, its schema, its transactions.
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

// How long a transaction waits for other processes, in milliseconds; tests shorten it.
extern int registry_busy_timeout_ms;

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

// A failure is told on the debugger output; from then to the End everything fails with it, and nothing is
// written. The file is opened when it is first needed, again when another has taken its place, and by no
// other means: closing any descriptor of it would give up the locks of the process.
class RegistryDatabase {
 public:
  explicit RegistryDatabase(const RegistryPlace& place) : place_(place) {}

  void Begin(RegistryTransaction::Intent intent);
  // Goes on with a transaction that may write; what was read before may have changed.
  LSTATUS BeginWriting();
  LSTATUS End(RegistryTransaction::Outcome outcome);
  bool is_active() const { return is_active_; }

  // ERROR_FILE_NOT_FOUND when there is no file yet.
  LSTATUS ReadStatus() const;
  // Another number when a key that was found may be gone without a deletion through this connection.
  std::uint64_t epoch() const { return epoch_; }

  sqlite3_stmt* Prepare(Sql sql);
  // A row was found, or ERROR_FILE_NOT_FOUND.
  LSTATUS StepToRow(Run& run);
  LSTATUS StepToEnd(Run& run);

  // Closes the file, unless the calling thread is in a transaction.
  void CloseIfIdle();
  // Forgets the file without closing it: it belongs to the process that this one was forked from.
  void Abandon();

 private:
  LSTATUS Do(Sql sql);
  int Execute(const char* sql);  // the result is SQLite's
  LSTATUS Fail(int sqlite_error);
  LSTATUS Fail(LSTATUS status, std::string_view reason);
  LSTATUS Connect(bool creates_file);
  LSTATUS Open();
  void Disconnect();
  StoreKind ReadKind();
  LSTATUS Upgrade();
  int RunUpgradeScript();
  bool HasMoved() const;
  LSTATUS Start(Sql begin);

  const RegistryPlace& place_;
  std::string path_;
  Database database_;             // null: there is no file yet
  sqlite3* inherited_ = nullptr;  // a parent's: neither used nor freed
  std::array<Statement, static_cast<std::size_t>(Sql::kCount)> statements_;
  std::uint64_t epoch_ = 0;
  std::int64_t data_version_ = 0;
  StoreKind kind_ = StoreKind::kCurrent;  // outdated: it is read through kOutdatedViews

  bool is_active_ = false;
  bool is_writing_ = false;
  LSTATUS failure_ = ERROR_SUCCESS;
  std::chrono::steady_clock::time_point deadline_;  // from the first wait of a transaction on
  std::optional<CancellationBlock> cancellation_;
  std::optional<SignalBlock> signals_;  // while it writes: the host is not to end by a limit on file sizes
};

}  // namespace orx::platform
