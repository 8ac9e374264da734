// What the subcommands do. Each writes what it shows to `out` and raises Failure when it cannot be done;
// nothing is then saved.
#pragma once

#include <limits>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "report.h"

namespace orx::cli {

struct Arguments {
  std::string file;
  std::string name;
  std::string path;
  std::vector<std::string> settings;  // each NAME=VALUE
  Format format = Format::kText;
  bool overwrite = false;
  bool make_default = false;
  bool no_default = false;

  std::string key;
  std::optional<std::string> value;  // the name of a value
  std::string data;
  std::string type;
  bool tree = false;

  std::string text;
  std::string order;
  std::string kind;
  bool full = false;

  bool packed = false;
  bool degrees = false;
  std::optional<int> subtype;
  std::optional<std::string> low;
  std::optional<std::string> high;
  int size = std::numeric_limits<int>::max();

  std::string plane;  // the coordinates of three points, with commas
  std::optional<std::string> tolerance;
  std::optional<std::string> svg;  // the file to draw in

  int count = 0;
  bool follow = false;
  bool thread_log = false;
};

using Command = void (*)(const Arguments& arguments, std::ostream& out);

void project_show(const Arguments& arguments, std::ostream& out);
void project_verify(const Arguments& arguments, std::ostream& out);
void project_new(const Arguments& arguments, std::ostream& out);
void project_set(const Arguments& arguments, std::ostream& out);
void project_upgrade(const Arguments& arguments, std::ostream& out);

void list_show(const Arguments& arguments, std::ostream& out);
void list_add(const Arguments& arguments, std::ostream& out);
void list_remove(const Arguments& arguments, std::ostream& out);
void list_default(const Arguments& arguments, std::ostream& out);

void registry_get(const Arguments& arguments, std::ostream& out);
void registry_set(const Arguments& arguments, std::ostream& out);
void registry_list(const Arguments& arguments, std::ostream& out);
void registry_delete(const Arguments& arguments, std::ostream& out);
void registry_export(const Arguments& arguments, std::ostream& out);
void registry_import(const Arguments& arguments, std::ostream& out);

void date_parse(const Arguments& arguments, std::ostream& out);
void date_format(const Arguments& arguments, std::ostream& out);
void date_now(const Arguments& arguments, std::ostream& out);

void angle_read(const Arguments& arguments, std::ostream& out);
void angle_write(const Arguments& arguments, std::ostream& out);

void field(const Arguments& arguments, std::ostream& out);

void log_path(const Arguments& arguments, std::ostream& out);
// Following flushes `out` as lines come, and goes on until the process is asked to end.
void log_tail(const Arguments& arguments, std::ostream& out);

void key_new(const Arguments& arguments, std::ostream& out);

void section(const Arguments& arguments, std::ostream& out);

void platforms(const Arguments& arguments, std::ostream& out);

}  // namespace orx::cli
