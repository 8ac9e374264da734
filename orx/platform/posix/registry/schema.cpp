#include <orx/platform/posix/registry/schema.h>

#include <orx/platform/posix/support/letter_case.h>

#include <cstddef>
#include <new>
#include <string>
#include <string_view>

namespace orx::platform {
namespace {

constexpr std::int64_t kApplicationId = 0x4F525852;  // "ORXR"
constexpr std::int64_t kVersion = 2;

// `name` is a name as it was first written, `folded` the name in capitals, by which it is found. Deleting a
// key also deletes its sub-keys and values. The id of a key is random, so that no other key ever gets it: not
// after the key was deleted, not after the transaction that created it was undone, and not in another store.
// An open key holds nothing but this id, and so never becomes a handle of another key.
constexpr char kCreateStore[] = R"(
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

// Brings a store of version 1 up to date. Keys whose paths fold to the same path are merged. The key that was
// found by the folded path is kept, and gets the sub-keys and values of the other keys. If it already has a
// value with that name, the other value goes to the table `replaced`, unless both are equal.
//
//   place   for each key: its parent, and the key with the same path that is kept
//   lost    the keys that are merged into another key
//   moved   the values that get another name or another key; those of kept keys come first
//
// Keys are changed in two steps, with the parent NULL in between: (parent, folded) is unique, and SQLite
// checks that after each row and not only at the end.
constexpr char kUpgradeStore[] = R"(
CREATE TEMP TABLE place (id INTEGER PRIMARY KEY, parent INTEGER, kept INTEGER NOT NULL);
INSERT INTO place
  WITH RECURSIVE old (id, parent, path, is_found) AS (
    SELECT id, parent, '', 1 FROM key WHERE id = 1
    UNION ALL
    SELECT key.id, key.parent, path || '\' || fold(name), is_found AND folded = fold(name)
    FROM old JOIN key ON key.parent = old.id)
  SELECT id, parent, first_value(id) OVER (PARTITION BY path ORDER BY is_found DESC, id) FROM old;
CREATE TEMP TABLE lost AS SELECT id FROM place WHERE id != kept;

CREATE TEMP TABLE moved AS
  SELECT kept AS key, fold(name) AS folded, name, type, data
  FROM value JOIN place ON value.key = place.id
  WHERE kept != value.key OR folded != fold(name)
  ORDER BY kept != value.key;
DELETE FROM value WHERE folded != fold(name) OR key IN lost;
INSERT OR IGNORE INTO value SELECT key, folded, name, type, data FROM moved ORDER BY moved.rowid;
CREATE TABLE replaced AS
  SELECT moved.* FROM moved JOIN value USING (key, folded)
  WHERE moved.type != value.type OR moved.data != value.data;

UPDATE key SET parent = NULL, folded = fold(name)
  WHERE folded != fold(name) OR parent IN lost OR id IN lost;
UPDATE key SET parent = (
    SELECT above.kept FROM place JOIN place AS above ON above.id = place.parent WHERE place.id = key.id)
  WHERE parent IS NULL AND id != 1 AND id NOT IN lost;
DELETE FROM key WHERE id IN lost;

DROP TABLE temp.place;
DROP TABLE temp.lost;
DROP TABLE temp.moved;
PRAGMA user_version = 2;
)";

void fold(sqlite3_context* context, int /*count*/, sqlite3_value** arguments) {
  const unsigned char* text = sqlite3_value_text(arguments[0]);
  if (text == nullptr) return sqlite3_result_error_nomem(context);
  const auto size = static_cast<std::size_t>(sqlite3_value_bytes(arguments[0]));
  try {
    std::string folded(reinterpret_cast<const char*>(text), size);
    to_capitals(folded, folded);  // a text that is not valid stays as it is
    sqlite3_result_text64(context, folded.data(), folded.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

}  // namespace

const char kOutdatedViews[] = R"(
CREATE TEMP VIEW key AS SELECT id, parent, name, fold(name) AS folded FROM main.key;
CREATE TEMP VIEW value AS SELECT key, fold(name) AS folded, name, type, data FROM main.value;
)";

StoreKind kind_of_store(std::int64_t application_id, std::int64_t version, std::int64_t tables) {
  if (application_id == 0 && version == 0 && tables == 0) return StoreKind::kEmpty;
  if (application_id != kApplicationId || version < 1) return StoreKind::kForeign;
  if (version > kVersion) return StoreKind::kLater;
  return version == kVersion ? StoreKind::kCurrent : StoreKind::kOutdated;
}

const char* upgrade_script(StoreKind kind) {
  if (kind == StoreKind::kEmpty) return kCreateStore;
  return kind == StoreKind::kOutdated ? kUpgradeStore : nullptr;
}

int add_fold_function(sqlite3* database) {
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS;
  return sqlite3_create_function_v2(database, "fold", 1, kFlags, nullptr, fold, nullptr, nullptr, nullptr);
}

}  // namespace orx::platform
