// The one source that includes CLI11, which compiles slowly.
#include "options.h"

#include <orx/version.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>

#include "field/types.h"

namespace orx::cli {
namespace {

class CommandLine {
 public:
  explicit CommandLine(Command& chosen) : chosen_(chosen) {
    app_.set_version_flag("--version", std::string("orx ") + orx_version());
    app_.require_subcommand(1);
    add_project_commands(group(&app_, "project", "One project file"));
    add_list_commands(group(&app_, "list", "The list of projects"));
    add_registry_commands(group(&app_, "registry", "Settings of the user and of the machine"));
    add_date_commands(group(&app_, "date", "Dates and times"));
    add_angle_commands(group(&app_, "angle", "Angles as text"));
    add_field_command(add(&app_, "field", "Show what an import makes of the text of a field", field, field_));
    add_log_commands(group(&app_, "log", "The debug log"));
    add_key_commands(group(&app_, "key", "Unique keys"));
    add_section_command(
        add_for_file(&app_, "section", "Cut a surface of triangles with a plane", section, section_));
    json(add(&app_, "platforms", "Show the database platforms", platforms, platforms_), platforms_);
    for (CLI::App* command : app_.get_subcommands({})) name_subcommands(command);
  }

  CLI::App& app() { return app_; }

 private:
  static CLI::App* group(CLI::App* parent, const char* name, const char* help) {
    return parent->add_subcommand(name, help)->require_subcommand(1);
  }

  // So that one page tells of every command.
  static void name_subcommands(CLI::App* command) {
    std::string help = command->get_description();
    const char* separator = ": ";
    for (const CLI::App* subcommand : command->get_subcommands({})) {
      help += separator + subcommand->get_name();
      separator = ", ";
    }
    command->description(help);
  }

  // An argument that may be left out is not left out by mistake, as with a variable that is not set.
  static std::string not_empty(const std::string& text) { return text.empty() ? "it is empty" : ""; }

  template <class Arguments>
  using Action = void (*)(const Arguments& arguments, std::ostream& out);

  // The callback runs after all options are read, so it copies complete arguments.
  template <class Arguments>
  CLI::App* add(CLI::App* parent, const char* name, const char* help, Action<Arguments> action,
                const Arguments& arguments) {
    CLI::App* added = parent->add_subcommand(name, help);
    added->callback([this, action, &arguments] {
      chosen_ = [action, arguments](std::ostream& out) { action(arguments, out); };
    });
    return added;
  }

  template <class Arguments>
  CLI::App* add_for_file(CLI::App* parent, const char* name, const char* help, Action<Arguments> action,
                         Arguments& arguments) {
    CLI::App* added = add(parent, name, help, action, arguments);
    added->add_option("FILE", arguments.file, "A path of the system, or of the suite (C:\\...)")->required();
    return added;
  }

  template <class Arguments>
  static CLI::Option* json(CLI::App* command, Arguments& arguments) {
    return command->add_flag_callback(
        "--json", [&arguments] { arguments.format = Format::kJson; }, "Show it as JSON");
  }

  CLI::Option* settings(CLI::App* command) {
    const auto has_equals = [](const std::string& setting) {
      return setting.find('=') != std::string::npos ? "" : "'" + setting + "' is not NAME=VALUE";
    };
    return command
        ->add_option("SETTING", project_.settings, "NAME=VALUE, the name as `project show` tells it")
        ->required()
        ->check(has_equals);
  }

  void add_project_commands(CLI::App* project) {
    json(add_for_file(project, "show", "Show a project, valid or not", project_show, project_), project_);
    json(add_for_file(project, "verify", "Tell whether a project is valid", project_verify, project_),
         project_);
    CLI::App* create = add_for_file(project, "new", "Write a new project file", project_new, project_);
    settings(create);
    create->add_flag("--force", project_.overwrite, "Replace a file that exists");
    settings(add_for_file(project, "set", "Change properties, all or none", project_set, project_));
    add_for_file(project, "upgrade", "Mark a converted project as current", project_upgrade, project_);
  }

  void add_list_commands(CLI::App* list) {
    json(add_for_file(list, "show", "Show the projects of a list", list_show, list_), list_);
    CLI::App* entry = add_for_file(list, "add", "Add a project, or change its path", list_add, list_);
    entry->add_option("NAME", list_.name, "The name of the project")->required();
    entry->add_option("PATH", list_.path, "The path of its project file")->required();
    entry->add_flag("--default", list_.make_default, "Make it the default project");
    add_for_file(list, "remove", "Remove a project that is not the default", list_remove, list_)
        ->add_option("NAME", list_.name, "The name of the project")
        ->required();
    CLI::App* standard =
        add_for_file(list, "default", "Show or set the default project", list_default, list_);
    CLI::Option* name = standard->add_option("NAME", list_.name, "The project to make the default");
    name->check(not_empty);
    standard->add_flag("--none", list_.no_default, "Have no default project")->excludes(name);
    json(standard, list_);
  }

  CLI::App* add_for_key(CLI::App* parent, const char* name, const char* help,
                        Action<RegistryArguments> action) {
    CLI::App* added = add(parent, name, help, action, registry_);
    key(added)->required();
    return added;
  }

  CLI::Option* key(CLI::App* command) {
    return command->add_option("KEY", registry_.key, "HKCU\\... of the user, or HKLM\\... of the machine");
  }

  CLI::Option* value(CLI::App* command) {
    return command->add_option_function<std::string>(
        "VALUE", [this](const std::string& name) { registry_.value = name; },
        "The name of a value; '' is the key's default value");
  }

  void type(CLI::App* command, const char* help) {
    command->add_option("--type", registry_.type, help)
        ->check(CLI::IsMember({"string", "dword", "double", "float", "binary"}));
  }

  void add_registry_commands(CLI::App* registry) {
    CLI::App* get = add_for_key(registry, "get", "Show a value, or the default value", registry_get);
    value(get);
    type(get, "Read it as this, whatever the bytes were stored for");
    json(get, registry_);
    CLI::App* set = add_for_key(registry, "set", "Write a value, making its key", registry_set);
    value(set)->required();
    set->add_option("DATA", registry_.data, "A text, a number, or hexadecimal digits")->required();
    type(set, "What DATA is; else a string");
    json(add_for_key(registry, "list", "Show a key with all below it", registry_list), registry_);
    CLI::App* remove = add_for_key(registry, "delete", "Delete a value, or a key", registry_delete);
    remove->add_flag("--tree", registry_.tree, "Delete a key with all below it")->excludes(value(remove));
    add_for_key(registry, "export", "Write a key with all below it as JSON", registry_export)
        ->add_option("FILE", registry_.file, "Else it is shown")
        ->check(not_empty);
    key(add_for_file(registry, "import", "Add what an export holds", registry_import, registry_))
        ->description("Where to, else where it came from")
        ->check(not_empty);
  }

  void date_style(CLI::App* command) {
    command->add_option("--order", date_.order, "Of the date's fields; else ymd")
        ->check(CLI::IsMember({"ymd", "mdy", "dmy"}));
    command->add_option("--kind", date_.kind, "What it stands for; else datetime")
        ->check(CLI::IsMember({"datetime", "date", "time", "number"}));
    json(command, date_);
  }

  void add_date_commands(CLI::App* date) {
    CLI::App* parse = add(date, "parse", "Read a date or a time", date_parse, date_);
    parse->add_option("TEXT", date_.text, "Such as '2024/03/05 10:20:30'")->required();
    date_style(parse);
    CLI::App* format = add(date, "format", "Write a date or a time", date_format, date_);
    format->add_option("VALUE", date_.text, "Days since 1899-12-30")->required();
    format->add_flag("--full", date_.full, "The year in full and first");
    date_style(format);
    date_style(add(date, "now", "Show the current date and time", date_now, date_));
  }

  static CLI::Option* field_type(CLI::App* command, const char* name, std::string& type, Among among,
                                 const char* help) {
    const std::string names = type_names(among);
    return command->add_option(name, type, help + (": " + names) + ", or its number")
        ->required()
        ->check([among, names](const std::string& text) {
          return find_type(among, text) != nullptr ? "" : "'" + text + "' is not one of " + names;
        });
  }

  void angle_style(CLI::App* command) {
    field_type(command, "--mode", angle_.mode, Among::kAngles, "The notation");
    command->add_flag("--packed", angle_.packed, "In columns of fixed width, without colons");
    json(command, angle_);
  }

  void add_angle_commands(CLI::App* angle) {
    CLI::App* read = add(angle, "read", "Read the text of an angle", angle_read, angle_);
    read->add_option("TEXT", angle_.text, "Such as 45:30:15")->required();
    angle_style(read);
    CLI::App* write = add(angle, "write", "Write an angle as text", angle_write, angle_);
    write->add_option("RADIANS", angle_.text, "A number")->required();
    write->add_flag("--degrees", angle_.degrees, "The number is in degrees");
    angle_style(write);
  }

  void add_field_command(CLI::App* field) {
    field_type(field, "TYPE", field_.type, Among::kTypes, "The type of the field");
    field->add_option("TEXT", field_.text, "What it holds; values of angles are in radians")->required();
    field->add_option(
        "--subtype", field_.subtype,
        "Of a double: 5 degrees, 1 or 6 dms, 7 dms-decimal, 8 dm, 9 radians, 10 grads; of dates "
        "and times: 0 mdy, 1 dmy (the default), 2 ymd");
    field->add_option("--low", field_.low, "The value of '<' alone, in an integer, float or double");
    field->add_option("--high", field_.high, "The value of '>' alone there");
    field->add_option("--size", field_.size, "The bytes of the field; else as many as it needs")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()));
    json(field, field_);
  }

  CLI::Option* thread_log(CLI::App* command) {
    return command->add_flag("--thread", log_.thread_log, "The log of second threads");
  }

  static void count(CLI::App* command, int& count, int normal, int least, int most, const char* help) {
    command->add_option("-n", count, help + std::string("; else ") + std::to_string(normal))
        ->check(CLI::Range(least, most));
    command->preparse_callback([&count, normal](std::size_t) { count = normal; });
  }

  void add_log_commands(CLI::App* log) {
    CLI::App* path = add(log, "path", "Show where the log is", log_path, log_);
    thread_log(path);
    json(path, log_);
    CLI::App* tail = add(log, "tail", "Show the last lines of the log", log_tail, log_);
    count(tail, log_.count, 10, 0, std::numeric_limits<int>::max(), "How many lines");
    thread_log(tail);
    CLI::Option* follow = tail->add_flag("-f", log_.follow, "Go on with the lines that come");
    json(tail, log_)->excludes(follow);
  }

  void add_key_commands(CLI::App* key) {
    CLI::App* create = add(key, "new", "Make keys that are unique among themselves", key_new, key_);
    count(create, key_.count, 1, 1, 999999, "How many");
    json(create, key_);
  }

  void add_section_command(CLI::App* section) {
    section->get_option("FILE")->description("A Wavefront OBJ file");
    section->add_option("--plane", section_.plane, "Three points of it: x1,y1,z1,x2,y2,z2,x3,y3,z3")
        ->required();
    section->add_option("--svg", section_.svg, "A file to draw the section in")->check(not_empty);
    section->add_option("--tolerance", section_.tolerance,
                        "How far apart ends are that are joined; else a millionth of the diagonal of the "
                        "surface's box");
    json(section, section_)->description("Show the polylines as JSON");
  }

  Command& chosen_;
  ProjectArguments project_;
  ListArguments list_;
  RegistryArguments registry_;
  DateArguments date_;
  AngleArguments angle_;
  FieldArguments field_;
  LogArguments log_;
  KeyArguments key_;
  SectionArguments section_;
  PlatformArguments platforms_;
  CLI::App app_{"Project files and settings of the TESSEL suite", "orx"};
};

}  // namespace

Command parse(int argc, const char* const* argv, std::ostream& out) {
  Command chosen;
  CommandLine command_line(chosen);
  CLI::App& app = command_line.app();
  // CLI11 would pass over it without a word: to delete a value of that name would be to delete its key.
  const auto* const end = std::find(argv, argv + argc, std::string_view("--"));
  if (std::find(argv, end, std::string_view("++")) != end)
    throw UsageError("'++' is not expected before '--'");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream told;
    if (app.exit(error, told, told) == 0) {
      out << told.str();
      return nullptr;
    }
    // What nobody asked for says more than what is missing in its place.
    const std::vector<std::string> extras = app.remaining(/*recurse=*/true);
    throw UsageError(extras.empty() ? error.what() : "'" + extras.front() + "' is not expected");
  }
  return chosen;
}

}  // namespace orx::cli
