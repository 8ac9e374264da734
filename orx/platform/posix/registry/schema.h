// The tables of a store of settings, and how a file gets them.
#pragma once

#include <sqlite3.h>

#include <cstdint>

namespace orx::platform {

enum class StoreKind {
  kCurrent,
  kEmpty,     // a new file, or one without tables
  kOutdated,  // version 1: names were folded by the locale of the machine that wrote them
  kLater,     // made by a later version of the library
  kForeign    // a database of another program
};

// `tables` is the number of tables, indexes and views.
StoreKind kind_of_store(std::int64_t application_id, std::int64_t version, std::int64_t tables);

// SQL that turns an empty or an outdated store into a current one, to be run in one transaction; null for
// other kinds. The script for an outdated store calls fold, see add_fold_function.
const char* upgrade_script(StoreKind kind);

// SQL that makes views in a connection, through which an outdated store reads like a current one. It writes
// nothing to the file. The views call fold.
extern const char kOutdatedViews[];

// Adds the SQL function fold(name), the capitals of a name, to a connection. Returns an SQLite result code.
int add_fold_function(sqlite3* database);

}  // namespace orx::platform
