#include <orx/projects/qpl_file.h>

#include <string>

#include "commands.h"
#include "failure.h"
#include "suite_file.h"

namespace orx::cli {
namespace {

std::string default_of(const CQPLFile& list) {
  CStringA name;
  list.GetDefaultProject(name);
  return name.GetString();
}

void require_listed(const CQPLFile& list, const ListArguments& arguments) {
  CStringA path;
  if (list.GetProject(arguments.name.c_str(), path) == 0) {
    throw Failure(arguments.file, "there is no project '" + arguments.name + "' in the list");
  }
}

}  // namespace

void list_show(const ListArguments& arguments, std::ostream& out) {
  CQPLFile list;
  load(list, arguments.file);
  const std::string default_name = default_of(list);
  Table table{{"Name", "Default", "Path"}, {}};
  CStringA name;
  CStringA path;
  for (int more = list.GetFirstProject(name, path); more != 0; more = list.GetNextProject(name, path)) {
    table.rows.push_back({name.GetString(), default_name == name.GetString(), path.GetString()});
  }
  write_table(out, table, arguments.format);
}

void list_add(const ListArguments& arguments, std::ostream&) {
  CQPLFile list;
  if (file_exists(arguments.file)) {
    load(list, arguments.file);
  } else {
    set_file(list, arguments.file);
  }
  // Reading a list trims names and paths, so what is written must be trimmed.
  const CStringA name = CStringA(arguments.name.c_str()).Trim();
  const CStringA path = CStringA(suite_path(arguments.path).c_str()).Trim();
  if (name.IsEmpty()) throw Failure(arguments.file, "the name of a project cannot be blank");
  // XML cannot contain other characters, and saving a list drops them silently.
  if (!is_plain(name.GetString()) || !is_plain(path.GetString())) {
    throw Failure(arguments.file, "names and paths are UTF-8 text without control characters");
  }
  list.SetProject(name, path);
  if (arguments.make_default) list.SetDefaultProject(name);
  save(list, arguments.file);
}

void list_remove(const ListArguments& arguments, std::ostream&) {
  CQPLFile list;
  load(list, arguments.file);
  require_listed(list, arguments);
  if (list.RemoveProject(arguments.name.c_str()) == 0) {
    throw Failure(arguments.file, "the default project '" + arguments.name + "' cannot be removed");
  }
  save(list, arguments.file);
}

void list_default(const ListArguments& arguments, std::ostream& out) {
  CQPLFile list;
  load(list, arguments.file);
  if (arguments.name.empty() && !arguments.no_default) {
    const std::string name = default_of(list);
    if (arguments.format == Format::kJson) {
      write_record(out, Record{{"Default", name.empty() ? Value{} : name}}, Format::kJson);
    } else if (!name.empty()) {
      out << one_line(name) << '\n';
    }
    return;
  }
  if (!arguments.no_default) require_listed(list, arguments);
  list.SetDefaultProject(arguments.name.c_str());
  save(list, arguments.file);
}

}  // namespace orx::cli
