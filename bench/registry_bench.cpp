// Settings against direct use of SQLite, with a known key number and prepared statements, and against
// QSettings, if Qt is installed. The files are on a disk, and both sides flush them.
#include <benchmark/benchmark.h>
#include <orx/frame/environment.h>
#include <orx/settings/registry.h>
#include <sqlite3.h>
#include <stdlib.h>
#if __has_include(<QSettings>)
#include <QSettings>
#endif

#include <cstring>
#include <filesystem>
#include <initializer_list>
#include <string>

namespace {

namespace fs = std::filesystem;

constexpr const char* kPath[] = {"Section view", "Window", "Position"};
constexpr char kName[] = "Left";

int read_left(int& value) { return hvk_RegReadInt(kPath[0], kPath[1], kPath[2], nullptr, kName, &value); }
int write_left(int value) { return hvk_RegWriteInt(kPath[0], kPath[1], kPath[2], nullptr, kName, value); }

// A direct connection with the same settings as that of the library.
class Connection {
 public:
  explicit Connection(const std::string& file) {
    sqlite3_open(file.c_str(), &database_);
    Run("PRAGMA journal_mode = DELETE; PRAGMA synchronous = EXTRA; PRAGMA foreign_keys = ON;"
        "PRAGMA temp_store = MEMORY; PRAGMA trusted_schema = OFF; PRAGMA cell_size_check = ON");
  }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    for (sqlite3_stmt* statement : {begin_, begin_writing_, commit_, read_, write_})
      sqlite3_finalize(statement);
    sqlite3_close(database_);
  }

  void Run(const char* sql) { sqlite3_exec(database_, sql, nullptr, nullptr, nullptr); }

  void Prepare() {
    sqlite3_stmt* find = PrepareStatement("SELECT key FROM value WHERE name = 'Left'");
    sqlite3_step(find);
    key_ = sqlite3_column_int64(find, 0);
    sqlite3_finalize(find);
    begin_ = PrepareStatement("BEGIN");
    begin_writing_ = PrepareStatement("BEGIN IMMEDIATE");
    commit_ = PrepareStatement("COMMIT");
    read_ = PrepareStatement("SELECT type, data FROM value WHERE key = ? AND folded = ?");
    write_ = PrepareStatement(
        "INSERT INTO value (key, name, folded, type, data) VALUES (?, ?, ?, ?, ?)"
        " ON CONFLICT DO UPDATE SET type = excluded.type, data = excluded.data");
  }

  void Begin() { Step(begin_); }
  void BeginWriting() { Step(begin_writing_); }
  void Commit() { Step(commit_); }

  int Read() {
    int value = -1;
    sqlite3_bind_int64(read_, 1, key_);
    sqlite3_bind_text(read_, 2, "LEFT", -1, SQLITE_STATIC);
    if (sqlite3_step(read_) == SQLITE_ROW && sqlite3_column_bytes(read_, 1) == sizeof value)
      std::memcpy(&value, sqlite3_column_blob(read_, 1), sizeof value);
    sqlite3_reset(read_);
    return value;
  }

  void Write(int value) {
    sqlite3_bind_int64(write_, 1, key_);
    sqlite3_bind_text(write_, 2, kName, -1, SQLITE_STATIC);
    sqlite3_bind_text(write_, 3, "LEFT", -1, SQLITE_STATIC);
    sqlite3_bind_int64(write_, 4, REG_DWORD);
    sqlite3_bind_blob(write_, 5, &value, sizeof value, SQLITE_STATIC);
    Step(write_);
  }

 private:
  sqlite3_stmt* PrepareStatement(const char* sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(database_, sql, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    return statement;
  }
  static void Step(sqlite3_stmt* statement) {
    sqlite3_step(statement);
    sqlite3_reset(statement);
  }

  sqlite3* database_ = nullptr;
  sqlite3_stmt* begin_ = nullptr;
  sqlite3_stmt* begin_writing_ = nullptr;
  sqlite3_stmt* commit_ = nullptr;
  sqlite3_stmt* read_ = nullptr;
  sqlite3_stmt* write_ = nullptr;
  sqlite3_int64 key_ = 0;
};

// A store of the library with this many additional values, and a copy of it for direct use.
class Stores {
 public:
  Stores(const fs::path& folder, int values) : direct_(folder / ("direct" + std::to_string(values))) {
    library_ = folder / ("library" + std::to_string(values));
    Use();
    write_left(1);
    Connection connection(library_);
    connection.Run(
        ("BEGIN; WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT " +
         std::to_string(values / 100) +
         ") INSERT INTO key (parent, name, folded) SELECT 1, 'k' || i, 'K' || i FROM n;"
         "WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n LIMIT 100)"
         " INSERT INTO value (key, name, folded, type, data)"
         " SELECT id, 'v' || i, 'V' || i, 4, x'01020304' FROM key, n WHERE folded GLOB 'K[0-9]*'; COMMIT")
            .c_str());
    connection.Run(("VACUUM INTO '" + direct_ + "'").c_str());
  }

  void Use() const {
    setenv("ORX_USER_REGISTRY", library_.c_str(), 1);
    orx_environment_changed();
  }
  const std::string& direct() const { return direct_; }

 private:
  std::string library_;
  std::string direct_;
};

class Folder {
 public:
  Folder() {
    // /tmp may be in memory.
    std::string name = "/var/tmp/orx_bench_XXXXXX";
    path_ = mkdtemp(name.data());
  }
  ~Folder() { fs::remove_all(path_); }
  const fs::path& path() const { return path_; }

 private:
  fs::path path_;
};

const fs::path& folder() {
  static const Folder folder;
  return folder.path();
}

const Stores& stores(benchmark::State& state) {
  static const Stores few(folder(), 100);
  static const Stores many(folder(), 100'000);
  return state.range(0) == 100 ? few : many;
}

void require(benchmark::State& state, bool is_right) {
  if (!is_right) state.SkipWithError("wrong result");
}

void read_orx(benchmark::State& state) {
  stores(state).Use();
  int value = 0;
  int result = read_left(value);
  for (auto _ : state) result |= read_left(value);
  require(state, result == 0 && value > 0);
}

void read_sqlite(benchmark::State& state) {
  Connection connection(stores(state).direct());
  connection.Prepare();
  int value = connection.Read();
  for (auto _ : state) {
    connection.Begin();
    value = connection.Read();
    connection.Commit();
  }
  require(state, value > 0);
}

void read_sqlite_without_begin(benchmark::State& state) {
  Connection connection(stores(state).direct());
  connection.Prepare();
  int value = connection.Read();
  for (auto _ : state) value = connection.Read();
  require(state, value > 0);
}

void write_orx(benchmark::State& state) {
  stores(state).Use();
  int result = 0;
  int value = 0;
  for (auto _ : state) result |= write_left(++value);
  require(state, result == 0);
}

void write_sqlite(benchmark::State& state) {
  Connection connection(stores(state).direct());
  connection.Prepare();
  int value = 0;
  for (auto _ : state) {
    connection.BeginWriting();
    connection.Write(++value);
    connection.Commit();
  }
  require(state, connection.Read() == value);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("values")->Arg(100)->Arg(100'000)->UseRealTime();
}

BENCHMARK(read_orx)->Apply(sizes);
BENCHMARK(read_sqlite)->Apply(sizes);
BENCHMARK(read_sqlite_without_begin)->Apply(sizes);
BENCHMARK(write_orx)->Apply(sizes);
BENCHMARK(write_sqlite)->Apply(sizes);

#if __has_include(<QSettings>)
// Opens the settings for each read, as the library does.
void read_qsettings(benchmark::State& state) {
  const QString file = QString::fromStdString(folder() / "qsettings.ini");
  {
    QSettings settings(file, QSettings::IniFormat);
    settings.setValue("Section view/Window/Position/Left", 1);
    for (int i = 0; i < 100; ++i) settings.setValue(QString("k/v%1").arg(i), i);
  }
  int value = 0;
  for (auto _ : state) {
    const QSettings settings(file, QSettings::IniFormat);
    value = settings.value("Section view/Window/Position/Left").toInt();
  }
  require(state, value == 1);
}
BENCHMARK(read_qsettings)->UseRealTime();
#endif

}  // namespace
