// The tables of a store of settings, and how a file comes to have them.
#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace orx::platform {

enum class StoreKind {
  kCurrent,
  kEmpty,
  kOutdated,  // its names are folded by the locale of the machine that wrote them
  kLater,
  kForeign
};

StoreKind kind_of_store(std::int64_t application_id, std::int64_t version, std::int64_t tables);

// SQL for a transaction that writes, after which the store is current; null for a file that it cannot be made
// of. Add the function first.
const char* upgrade_script(StoreKind kind);

// SQL that lets a connection read an outdated store as if its names were folded anew. It writes nothing.
extern const char kOutdatedViews[];

// Adds the function fold(name) to a connection; the result is SQLite's.
int add_fold_function(sqlite3* database);

}  // namespace orx::platform
