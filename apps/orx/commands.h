// The subcommands, with one record of arguments for each group. A command writes its output to `out`. It
// raises Failure when it cannot do its work, and UsageError for an argument that only it can check. In both
// cases it has saved nothing.
#pragma once

#include <functional>
#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "report.h"

namespace orx::cli {

struct ProjectArguments {
  std::string file;
  std::vector<std::string> settings;  // each NAME=VALUE
  bool overwrite = false;
  Format format = Format::kText;
};

struct ListArguments {
  std::string file;
  std::string name;
  std::string path;  // of the project file
  bool make_default = false;
  bool no_default = false;
  Format format = Format::kText;
};

struct RegistryArguments {
  std::string key;
  std::optional<std::string> value;  // the name of a value, "" for the default value
  std::string data;
  std::string type;  // empty: as stored, or a string
  std::string file;  // empty: standard output
  bool tree = false;
  Format format = Format::kText;
};

struct DateArguments {
  std::string text;   // a date or a time, or the number of one
  std::string order;  // one of date_orders(); empty: ymd
  std::string kind;   // one of date_kinds(); empty: datetime
  bool full = false;
  Format format = Format::kText;
};

struct AngleArguments {
  std::string text;  // an angle, or a number
  std::string mode;
  bool packed = false;
  bool degrees = false;
  Format format = Format::kText;
};

struct FieldArguments {
  std::string type;  // a name or a number that find_field_type knows
  std::string text;
  std::optional<int> subtype;
  std::optional<std::string> low;
  std::optional<std::string> high;
  int size = std::numeric_limits<int>::max();  // of the field in bytes
  Format format = Format::kText;
};

struct LogArguments {
  int count = 0;
  bool follow = false;
  bool thread_log = false;  // the log of the secondary threads
  Format format = Format::kText;
};

struct KeyArguments {
  int count = 0;
  Format format = Format::kText;
};

struct SectionArguments {
  std::string file;
  std::string plane;  // the coordinates of three points, separated by commas
  std::optional<std::string> tolerance;
  std::optional<std::string> svg;  // the file for the drawing
  Format format = Format::kText;
};

struct PlatformArguments {
  Format format = Format::kText;
};

using Command = std::function<void(std::ostream& out)>;

void project_show(const ProjectArguments& arguments, std::ostream& out);
void project_verify(const ProjectArguments& arguments, std::ostream& out);
void project_new(const ProjectArguments& arguments, std::ostream& out);
void project_set(const ProjectArguments& arguments, std::ostream& out);
void project_upgrade(const ProjectArguments& arguments, std::ostream& out);

void list_show(const ListArguments& arguments, std::ostream& out);
void list_add(const ListArguments& arguments, std::ostream& out);
void list_remove(const ListArguments& arguments, std::ostream& out);
void list_default(const ListArguments& arguments, std::ostream& out);

void registry_get(const RegistryArguments& arguments, std::ostream& out);
void registry_set(const RegistryArguments& arguments, std::ostream& out);
void registry_list(const RegistryArguments& arguments, std::ostream& out);
void registry_delete(const RegistryArguments& arguments, std::ostream& out);
void registry_export(const RegistryArguments& arguments, std::ostream& out);
void registry_import(const RegistryArguments& arguments, std::ostream& out);

// The words of --order and --kind; the first of each is the default.
std::vector<std::string> date_orders();
std::vector<std::string> date_kinds();
void date_parse(const DateArguments& arguments, std::ostream& out);
void date_format(const DateArguments& arguments, std::ostream& out);
void date_now(const DateArguments& arguments, std::ostream& out);

void angle_read(const AngleArguments& arguments, std::ostream& out);
void angle_write(const AngleArguments& arguments, std::ostream& out);

void field_show(const FieldArguments& arguments, std::ostream& out);

void log_path(const LogArguments& arguments, std::ostream& out);
// With `follow`, flushes `out` as lines arrive, until the process receives SIGINT or SIGTERM.
void log_tail(const LogArguments& arguments, std::ostream& out);

void key_new(const KeyArguments& arguments, std::ostream& out);

void section_show(const SectionArguments& arguments, std::ostream& out);

void platforms_show(const PlatformArguments& arguments, std::ostream& out);

}  // namespace orx::cli
