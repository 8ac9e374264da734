// The one source that includes CLI11, which compiles slowly.
#include "options.h"

#include <CLI/CLI.hpp>

namespace orx::cli {
namespace {

class CommandLine {
 public:
  CommandLine(Arguments& arguments, Command& chosen) : arguments_(arguments), chosen_(chosen) {
    app_.set_version_flag("--version", "orx " ORX_VERSION);
    app_.require_subcommand(1);
    add_project_commands(group(&app_, "project", "One project file"));
    add_list_commands(group(&app_, "list", "The list of projects"));
    json(add(&app_, "platforms", "Show the database platforms", platforms));
  }

  CLI::App& app() { return app_; }

 private:
  static CLI::App* group(CLI::App* parent, const char* name, const char* help) {
    return parent->add_subcommand(name, help)->require_subcommand(1);
  }

  CLI::App* add(CLI::App* parent, const char* name, const char* help, Command command) {
    CLI::App* added = parent->add_subcommand(name, help);
    added->callback([this, command] { chosen_ = command; });
    return added;
  }

  CLI::App* add_for_file(CLI::App* parent, const char* name, const char* help, Command command) {
    CLI::App* added = add(parent, name, help, command);
    added->add_option("FILE", arguments_.file, "A path of the system, or of the suite (C:\\...)")->required();
    return added;
  }

  void json(CLI::App* command) {
    command->add_flag_callback(
        "--json", [this] { arguments_.format = Format::kJson; }, "Show it as JSON");
  }

  CLI::Option* settings(CLI::App* command) {
    const auto has_equals = [](const std::string& setting) {
      return setting.find('=') != std::string::npos ? "" : "'" + setting + "' is not NAME=VALUE";
    };
    return command
        ->add_option("SETTING", arguments_.settings, "NAME=VALUE, the name as `project show` tells it")
        ->required()
        ->check(has_equals);
  }

  void add_project_commands(CLI::App* project) {
    json(add_for_file(project, "show", "Show a project, valid or not", project_show));
    json(add_for_file(project, "verify", "Tell whether a project is valid", project_verify));
    CLI::App* create = add_for_file(project, "new", "Write a new project file", project_new);
    settings(create);
    create->add_flag("--force", arguments_.overwrite, "Replace a file that exists");
    settings(add_for_file(project, "set", "Change properties, all or none", project_set));
    add_for_file(project, "upgrade", "Mark a converted project as current", project_upgrade);
  }

  void add_list_commands(CLI::App* list) {
    json(add_for_file(list, "show", "Show the projects of a list", list_show));
    CLI::App* entry = add_for_file(list, "add", "Add a project, or change its path", list_add);
    entry->add_option("NAME", arguments_.name, "The name of the project")->required();
    entry->add_option("PATH", arguments_.path, "The path of its project file")->required();
    entry->add_flag("--default", arguments_.make_default, "Make it the default project");
    add_for_file(list, "remove", "Remove a project that is not the default", list_remove)
        ->add_option("NAME", arguments_.name, "The name of the project")
        ->required();
    CLI::App* standard = add_for_file(list, "default", "Show or set the default project", list_default);
    const auto not_empty = [](const std::string& name) { return name.empty() ? "it is empty" : ""; };
    CLI::Option* name = standard->add_option("NAME", arguments_.name, "The project to make the default");
    name->check(not_empty);
    standard->add_flag("--none", arguments_.no_default, "Have no default project")->excludes(name);
    json(standard);
  }

  Arguments& arguments_;
  Command& chosen_;
  CLI::App app_{"Project files of the TESSEL suite", "orx"};
};

}  // namespace

Command parse(int argc, const char* const* argv, Arguments& arguments, std::ostream& out) {
  Command chosen = nullptr;
  CommandLine command_line(arguments, chosen);
  CLI::App& app = command_line.app();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (app.exit(error, out, out) == 0) return nullptr;
    // What nobody asked for says more than what is missing in its place.
    const std::vector<std::string> extras = app.remaining(/*recurse=*/true);
    throw UsageError(extras.empty() ? error.what() : "'" + extras.front() + "' is not expected");
  }
  return chosen;
}

}  // namespace orx::cli
