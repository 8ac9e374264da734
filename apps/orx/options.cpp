// The only source that includes CLI11, which compiles slowly.
#include "options.h"

#include <orx/text/unique_key.h>
#include <orx/version.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>

#include "field/types.h"
#include "registry/values.h"

namespace orx::cli {
namespace {

// The options of every command. CLI11 writes what it reads into the records of arguments, and the callback of
// the command that was typed copies its record into `chosen`. CLI11 keeps references to the records, so they
// must not move while it parses.
class CommandLine {
 public:
  explicit CommandLine(Command& chosen) : chosen_(chosen) {
    app_.set_version_flag("--version", std::string("orx ") + orx_version());
    app_.require_subcommand(1);
    AddProjectCommands(AddGroup(&app_, "project", "One project file"));
    AddListCommands(AddGroup(&app_, "list", "The list of projects"));
    AddRegistryCommands(AddGroup(&app_, "registry", "Settings of the user and of the machine"));
    AddDateCommands(AddGroup(&app_, "date", "Dates and times"));
    AddAngleCommands(AddGroup(&app_, "angle", "Angles as text"));
    AddFieldCommand(AddCommand(&app_, "field", "Show the value that an import reads from the text of a field",
                               field_show, field_));
    AddLogCommands(AddGroup(&app_, "log", "The debug log"));
    AddKeyCommands(AddGroup(&app_, "key", "Unique keys"));
    AddSectionCommand(
        AddForFile(&app_, "section", "Cut a surface of triangles with a plane", section_show, section_));
    AddJson(AddCommand(&app_, "platforms", "Show the database platforms", platforms_show, platforms_),
            platforms_);
    for (CLI::App* command : app_.get_subcommands({})) AppendSubcommands(command);
  }

  CLI::App& App() { return app_; }

 private:
  static CLI::App* AddGroup(CLI::App* parent, const char* name, const char* help) {
    return parent->add_subcommand(name, help)->require_subcommand(1);
  }

  // Appends the names of the subcommands to the description of a group, so that `orx --help` lists them all.
  static void AppendSubcommands(CLI::App* command) {
    std::string help = command->get_description();
    const char* separator = ": ";
    for (const CLI::App* subcommand : command->get_subcommands({})) {
      help += separator + subcommand->get_name();
      separator = ", ";
    }
    command->description(help);
  }

  // An empty argument is refused, because in a script it is often a variable that is not set.
  static std::string RequireText(const std::string& text) { return text.empty() ? "it is empty" : ""; }

  template <class Arguments>
  using Action = void (*)(const Arguments& arguments, std::ostream& out);

  // CLI11 calls back after it has read all options, so the copy of the arguments is complete.
  template <class Arguments>
  CLI::App* AddCommand(CLI::App* parent, const char* name, const char* help, Action<Arguments> action,
                       const Arguments& arguments) {
    CLI::App* added = parent->add_subcommand(name, help);
    added->callback([this, action, &arguments] {
      chosen_ = [action, arguments](std::ostream& out) { action(arguments, out); };
    });
    return added;
  }

  template <class Arguments>
  CLI::App* AddForFile(CLI::App* parent, const char* name, const char* help, Action<Arguments> action,
                       Arguments& arguments) {
    CLI::App* added = AddCommand(parent, name, help, action, arguments);
    added->add_option("FILE", arguments.file, "A path of the system or of the suite (C:\\...)")->required();
    return added;
  }

  template <class Arguments>
  static CLI::Option* AddJson(CLI::App* command, Arguments& arguments) {
    return command->add_flag_callback(
        "--json", [&arguments] { arguments.format = Format::kJson; }, "Show it as JSON");
  }

  CLI::Option* AddSettings(CLI::App* command) {
    const auto has_equals = [](const std::string& setting) {
      return setting.find('=') != std::string::npos ? "" : "'" + setting + "' is not NAME=VALUE";
    };
    return command
        ->add_option("SETTING", project_.settings, "NAME=VALUE, with a name that `project show` prints")
        ->required()
        ->check(has_equals);
  }

  void AddProjectCommands(CLI::App* project) {
    AddJson(AddForFile(project, "show", "Show a project, valid or not", project_show, project_), project_);
    AddJson(AddForFile(project, "verify", "Check whether a project is valid", project_verify, project_),
            project_);
    CLI::App* create = AddForFile(project, "new", "Write a new project file", project_new, project_);
    AddSettings(create);
    create->add_flag("--force", project_.overwrite, "Replace an existing file");
    AddSettings(AddForFile(project, "set", "Change properties, all or none", project_set, project_));
    AddForFile(project, "upgrade", "Mark a converted project as current", project_upgrade, project_);
  }

  void AddListCommands(CLI::App* list) {
    AddJson(AddForFile(list, "show", "Show the projects of a list", list_show, list_), list_);
    CLI::App* entry = AddForFile(list, "add", "Add a project, or change its path", list_add, list_);
    entry->add_option("NAME", list_.name, "The name of the project")->required();
    entry->add_option("PATH", list_.path, "The path of its project file")->required();
    entry->add_flag("--default", list_.make_default, "Make it the default project");
    AddForFile(list, "remove", "Remove a project that is not the default", list_remove, list_)
        ->add_option("NAME", list_.name, "The name of the project")
        ->required();
    CLI::App* show_or_set =
        AddForFile(list, "default", "Show or set the default project", list_default, list_);
    CLI::Option* name = show_or_set->add_option("NAME", list_.name, "The new default project");
    name->check(RequireText);
    show_or_set->add_flag("--none", list_.no_default, "Set no default project")->excludes(name);
    AddJson(show_or_set, list_);
  }

  CLI::App* AddForKey(CLI::App* parent, const char* name, const char* help,
                      Action<RegistryArguments> action) {
    CLI::App* added = AddCommand(parent, name, help, action, registry_);
    AddKey(added)->required();
    return added;
  }

  CLI::Option* AddKey(CLI::App* command) {
    return command->add_option("KEY", registry_.key, "HKCU\\... for the user, HKLM\\... for the machine");
  }

  CLI::Option* AddValue(CLI::App* command) {
    return command->add_option_function<std::string>(
        "VALUE", [this](const std::string& name) { registry_.value = name; },
        "The name of a value; '' is the key's default value");
  }

  void AddType(CLI::App* command, const char* help) {
    command->add_option("--type", registry_.type, help)->check(CLI::IsMember(value_types()));
  }

  void AddRegistryCommands(CLI::App* registry) {
    CLI::App* get = AddForKey(registry, "get", "Show a value, or the default value of a key", registry_get);
    AddValue(get);
    AddType(get, "The type to read the stored bytes as");
    AddJson(get, registry_);
    CLI::App* set =
        AddForKey(registry, "set", "Write a value, and create its key if necessary", registry_set);
    AddValue(set)->required();
    set->add_option("DATA", registry_.data, "A text, a number, or hexadecimal digits")->required();
    AddType(set, "The type of DATA (default: string)");
    AddJson(AddForKey(registry, "list", "Show a key and everything below it", registry_list), registry_);
    CLI::App* remove = AddForKey(registry, "delete", "Delete a value, or a key", registry_delete);
    remove->add_flag("--tree", registry_.tree, "Delete a key and everything below it")
        ->excludes(AddValue(remove));
    AddForKey(registry, "export", "Write a key and everything below it as JSON", registry_export)
        ->add_option("FILE", registry_.file, "The file to write (default: standard output)")
        ->check(RequireText);
    AddKey(AddForFile(registry, "import", "Add the contents of an export", registry_import, registry_))
        ->description("The key to add to (default: the exported key)")
        ->check(RequireText);
  }

  void AddDateOptions(CLI::App* command) {
    command->add_option("--order", date_.order, "The order of year, month and day (default: ymd)")
        ->check(CLI::IsMember(date_orders()));
    command->add_option("--kind", date_.kind, "What the value is (default: datetime)")
        ->check(CLI::IsMember(date_kinds()));
    AddJson(command, date_);
  }

  void AddDateCommands(CLI::App* date) {
    CLI::App* parse = AddCommand(date, "parse", "Read a date or a time", date_parse, date_);
    parse->add_option("TEXT", date_.text, "For example '2024/03/05 10:20:30'")->required();
    AddDateOptions(parse);
    CLI::App* format = AddCommand(date, "format", "Write a date or a time", date_format, date_);
    format->add_option("VALUE", date_.text, "Days since 1899-12-30")->required();
    format->add_flag("--full", date_.full, "Year, month, day, with four digits for the year");
    AddDateOptions(format);
    AddDateOptions(AddCommand(date, "now", "Show the current date and time", date_now, date_));
  }

  static CLI::Option* AddFieldType(CLI::App* command, const char* name, std::string& type, FieldTypes among,
                                   const char* help) {
    const std::string names = field_type_names(among);
    return command->add_option(name, type, help + (": " + names) + ", or its number")
        ->required()
        ->check([among, names](const std::string& text) {
          return find_field_type(among, text) != nullptr ? "" : "'" + text + "' is not one of " + names;
        });
  }

  void AddAngleOptions(CLI::App* command) {
    AddFieldType(command, "--mode", angle_.mode, FieldTypes::kAngles, "The notation");
    command->add_flag("--packed", angle_.packed, "Fixed-width columns instead of colons");
    AddJson(command, angle_);
  }

  void AddAngleCommands(CLI::App* angle) {
    CLI::App* read = AddCommand(angle, "read", "Read the text of an angle", angle_read, angle_);
    read->add_option("TEXT", angle_.text, "For example 45:30:15")->required();
    AddAngleOptions(read);
    CLI::App* write = AddCommand(angle, "write", "Write an angle as text", angle_write, angle_);
    write->add_option("RADIANS", angle_.text, "A number")->required();
    write->add_flag("--degrees", angle_.degrees, "The number is in degrees");
    AddAngleOptions(write);
  }

  void AddFieldCommand(CLI::App* field) {
    AddFieldType(field, "TYPE", field_.type, FieldTypes::kAll, "The type of the field");
    field->add_option("TEXT", field_.text, "The text of the field; the values of angles are in radians")
        ->required();
    field->add_option(
        "--subtype", field_.subtype,
        "For a double: 5 degrees, 1 or 6 dms, 7 dms-decimal, 8 dm, 9 radians, 10 grads; for dates "
        "and times: 0 mdy, 1 dmy (default), 2 ymd");
    field->add_option("--low", field_.low, "The value of the text '<', in an integer, float or double");
    field->add_option("--high", field_.high, "The value of the text '>', in an integer, float or double");
    field
        ->add_option("--size", field_.size, "The size of the field in bytes (default: as large as necessary)")
        ->check(CLI::Range(0, std::numeric_limits<int>::max()));
    AddJson(field, field_);
  }

  CLI::Option* AddThreadLog(CLI::App* command) {
    return command->add_flag("--thread", log_.thread_log, "The log of the secondary threads");
  }

  static void AddCount(CLI::App* command, int& count, int normal, int smallest, int largest,
                       const char* help) {
    command->add_option("-n", count, help + std::string(" (default: ") + std::to_string(normal) + ')')
        ->check(CLI::Range(smallest, largest));
    // The default applies when the command is typed, before its options are read.
    command->preparse_callback([&count, normal](std::size_t) { count = normal; });
  }

  void AddLogCommands(CLI::App* log) {
    CLI::App* path = AddCommand(log, "path", "Show where the log is", log_path, log_);
    AddThreadLog(path);
    AddJson(path, log_);
    CLI::App* tail = AddCommand(log, "tail", "Show the last lines of the log", log_tail, log_);
    AddCount(tail, log_.count, 10, 0, std::numeric_limits<int>::max(), "The number of lines");
    AddThreadLog(tail);
    CLI::Option* follow = tail->add_flag("-f", log_.follow, "Continue with new lines as they arrive");
    AddJson(tail, log_)->excludes(follow);
  }

  void AddKeyCommands(CLI::App* key) {
    CLI::App* create = AddCommand(key, "new", "Generate unique keys", key_new, key_);
    AddCount(create, key_.count, 1, 1, ORX_KEY_COUNTER_MAX, "The number of keys");
    AddJson(create, key_);
  }

  void AddSectionCommand(CLI::App* section) {
    section->get_option("FILE")->description("A Wavefront OBJ file");
    section->add_option("--plane", section_.plane, "Three points of the plane: x1,y1,z1,x2,y2,z2,x3,y3,z3")
        ->required();
    section->add_option("--svg", section_.svg, "A file for a drawing of the section")->check(RequireText);
    section->add_option(
        "--tolerance", section_.tolerance,
        "Ends of segments that are closer are joined (default: a millionth of the diagonal of the "
        "surface's box)");
    AddJson(section, section_)->description("Show the polylines as JSON");
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

Command parse_command_line(int argc, const char* const* argv, std::ostream& out) {
  Command chosen;
  CommandLine command_line(chosen);
  CLI::App& app = command_line.App();
  // CLI11 silently skips "++". `orx registry delete KEY ++` would then delete the key instead of a value.
  const auto* const end = std::find(argv, argv + argc, std::string_view("--"));
  if (std::find(argv, end, std::string_view("++")) != end)
    throw UsageError("'++' is not expected before '--'");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream text;
    if (app.exit(error, text, text) == 0) {
      out << text.str();
      return nullptr;
    }
    // An unexpected argument explains more than the missing argument that CLI11 reports first.
    const std::vector<std::string> extras = app.remaining(/*recurse=*/true);
    throw UsageError(extras.empty() ? error.what() : "'" + extras.front() + "' is not expected");
  }
  return chosen;
}

}  // namespace orx::cli
