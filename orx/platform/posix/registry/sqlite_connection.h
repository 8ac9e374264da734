// SQLite's connection and statements, as far as the registry needs them.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <string_view>

namespace orx::platform {

struct CloseDatabase {
  void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
struct FinalizeStatement {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Database = std::unique_ptr<sqlite3, CloseDatabase>;
using Statement = std::unique_ptr<sqlite3_stmt, FinalizeStatement>;

// One run of a prepared statement. The destructor resets the statement for its next run. Parameters are bound
// in their order. Texts and blobs are not copied, so they must live as long as the run. A null statement,
// which Prepare returns after a failure, makes Step fail.
class Run {
 public:
  explicit Run(sqlite3_stmt* statement) : statement_(statement) {}
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;
  ~Run() { sqlite3_reset(statement_); }

  Run& Bind(std::int64_t value) {
    sqlite3_bind_int64(statement_, ++bound_, value);
    return *this;
  }
  Run& Bind(std::string_view text) {
    sqlite3_bind_text64(statement_, ++bound_, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
    return *this;
  }
  Run& Bind(const void* bytes, std::size_t size) {
    // SQLite would bind a null pointer as NULL, not as an empty blob.
    sqlite3_bind_blob64(statement_, ++bound_, bytes != nullptr ? bytes : "", size, SQLITE_STATIC);
    return *this;
  }

  // SQLITE_ROW, SQLITE_DONE or an error.
  int Step() { return sqlite3_step(statement_); }

  std::int64_t Integer(int column) const { return sqlite3_column_int64(statement_, column); }
  // Valid until the next Step or the end of the run.
  std::string_view Bytes(int column) const {
    const void* bytes = sqlite3_column_blob(statement_, column);  // null for an empty blob
    const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement_, column));
    return bytes != nullptr ? std::string_view(static_cast<const char*>(bytes), size) : "";
  }

 private:
  sqlite3_stmt* statement_;
  int bound_ = 0;
};

}  // namespace orx::platform
