#include <orx/projects/current_project.h>

#include <orx/platform/code_page.h>
#include <orx/platform/file_system.h>
#include <orx/projects/never_destroyed.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <string_view>

namespace {

orx::NeverDestroyed<CQPRFile> current;
orx::NeverDestroyed<CQPRFile> previous;
CQPRFile& current_project = current.object;
CQPRFile& previous_project = previous.object;

// An item of the current project. An item that does not exist has the empty text.
struct Item {
  std::string_view text;
  bool exists = true;
};

// A host may have filled a field without a NUL, so the text ends at the last byte at the latest.
template <std::size_t size>
Item optional_item(const char (&field)[size]) {
  return {{field, strnlen(field, size - 1)}};
}

// An item for which the empty text means that there is no item.
template <std::size_t size>
Item required_item(const char (&field)[size]) {
  const std::string_view text = optional_item(field).text;
  return {text, !text.empty()};
}

// Copies the text and a NUL: 0, or -1 and the empty text when they do not fit.
int copy_text(std::string_view text, char* buffer, std::size_t size) {
  if (size <= text.size()) {
    if (size > 0) *buffer = '\0';
    return -1;
  }
  text.copy(buffer, text.size());
  buffer[text.size()] = '\0';
  return 0;
}

int copy_item(const Item& item, char* buffer, std::size_t size) {
  if (!item.exists || buffer == nullptr) return -1;
  return copy_text(item.text, buffer, size);
}

int copy_item(const Item& item, char* buffer, std::size_t size, std::size_t* needed) {
  if (needed != nullptr) *needed = item.exists ? item.text.size() + 1 : 0;
  if (buffer == nullptr && needed != nullptr && item.exists) return 0;  // only the size was asked for
  return copy_item(item, buffer, size);
}

// May also raise an exception of memory, which the caller turns into a failure without a message.
[[noreturn]] void fail_load(const std::string& message) {
  const std::string cut = message.substr(0, orx::platform::truncated_size(message, ORX_LOAD_MESSAGE_LENGTH));
  throw QprLoadFailedException(cut.c_str());
}

// Loads into a new object, and copies it only when nothing can fail any more.
void load_current_project(const char* path) {
  const std::string file = path != nullptr ? path : "";
  CQPRFile fresh;
  CStringA broken_rule;
  if (orx::platform::entry_kind(file.c_str()) == orx::platform::EntryKind::kNone) {
    fail_load("Cannot find the TESSEL project file '" + file + "'.");
  }
  fresh.SetFileName(file.c_str());
  if (!fresh.Load()) fail_load("Failed when loading the TESSEL project file '" + file + "'.");
  if (!fresh.Verify(broken_rule)) {
    fail_load("The TESSEL project file '" + file + "' is invalid. " + broken_rule.GetString());
  }
  previous_project.CopyFrom(&current_project);
  current_project.CopyFrom(&fresh);
}

const QPRInfo& current_info() { return *current_project.GetQPRInfo(); }

Item site_name() { return required_item(current_info().SiteName); }
Item site_database() { return required_item(current_info().SiteDatabase); }
Item project_name() { return required_item(current_info().ProjectName); }
Item data_group_name() { return required_item(current_info().DataGroupName); }
Item base_path() { return required_item(current_info().ProjectBasePath); }
Item description() { return optional_item(current_info().Description); }
Item coordinates() { return optional_item(current_info().Coordinates); }

// A JET database has no server.
Item server_name() {
  const auto& name = current_info().SiteDatabaseServerName;
  return current_project.IsJETPlatform() ? optional_item(name) : required_item(name);
}

Item project_file() {
  const std::string_view path = current_project.GetFileName();
  return {path, !path.empty()};
}

Item project_folder() {
  const Item file = project_file();
  const char* end = orx::platform::last_backslash(file.text.data());
  const std::size_t length = end != nullptr ? static_cast<std::size_t>(end - file.text.data()) : 0;
  return {file.text.substr(0, length), file.exists};
}

// The text "\site\project\data group\", with a placeholder for an empty name. The fields bound its length,
// and their sizes count a NUL each, which leaves space for the backslashes. So it needs no memory that may
// run out.
class ComposedPath {
 public:
  ComposedPath() {
    Append("\\");
    AppendName(site_name(), "Unknown Site");
    AppendName(project_name(), "Unknown Project");
    AppendName(data_group_name(), "Unknown Datagroup");
  }

  std::string_view text() const { return {text_, length_}; }
  bool is_complete() const { return is_complete_; }

 private:
  void Append(std::string_view part) { length_ += part.copy(text_ + length_, part.size()); }

  void AppendName(const Item& name, std::string_view placeholder) {
    Append(name.exists ? name.text : placeholder);
    Append("\\");
    is_complete_ = is_complete_ && name.exists;
  }

  char text_[sizeof(QPRInfo::SiteName) + sizeof(QPRInfo::ProjectName) + sizeof(QPRInfo::DataGroupName) + 1];
  std::size_t length_ = 0;
  bool is_complete_ = true;
};

}  // namespace

CQPRFile* GetCurrentQPRInfo() { return &current_project; }

void ProjectSetting_LoadCurrentQPRInfo(const char* path) {
  try {
    load_current_project(path);
  } catch (const CAtlException&) {
    throw QprLoadFailedException();
  } catch (const std::bad_alloc&) {
    throw QprLoadFailedException();
  }
}

int ProjectSetting_SaveCurrentQPRInfo(const char*) {
  try {
    return current_project.Save();
  } catch (const CAtlException&) {
    return 0;
  } catch (const std::exception&) {  // not (...): with that a cancelled thread would end the process
    return 0;
  }
}

int ProjectSetting_RestorePreviousQPRInfo() {
  current_project.CopyFrom(&previous_project);
  return 1;
}

int ProjectSetting_GetSiteName(char* buffer) { return copy_item(site_name(), buffer, ORX_SITE_NAME_SIZE); }
int ProjectSetting_GetSiteNameN(char* buffer, size_t size, size_t* needed) {
  return copy_item(site_name(), buffer, size, needed);
}

int ProjectSetting_GetSiteDatabase(char* buffer) {
  return copy_item(site_database(), buffer, ORX_SITE_DATABASE_SIZE);
}
int ProjectSetting_GetSiteDatabaseN(char* buffer, size_t size, size_t* needed) {
  return copy_item(site_database(), buffer, size, needed);
}

int ProjectSetting_GetDatabaseServerName(char* buffer) {
  return copy_item(server_name(), buffer, ORX_SERVER_NAME_SIZE);
}
int ProjectSetting_GetDatabaseServerNameN(char* buffer, size_t size, size_t* needed) {
  return copy_item(server_name(), buffer, size, needed);
}

int ProjectSetting_GetProjectName(char* buffer) {
  return copy_item(project_name(), buffer, ORX_PROJECT_NAME_SIZE);
}
int ProjectSetting_GetProjectNameN(char* buffer, size_t size, size_t* needed) {
  return copy_item(project_name(), buffer, size, needed);
}

int ProjectSetting_GetDataGroupName(char* buffer) {
  return copy_item(data_group_name(), buffer, ORX_DATA_GROUP_NAME_SIZE);
}
int ProjectSetting_GetDataGroupNameN(char* buffer, size_t size, size_t* needed) {
  return copy_item(data_group_name(), buffer, size, needed);
}

int ProjectSetting_GetProjectBasePath(char* buffer) {
  return copy_item(base_path(), buffer, ORX_BASE_PATH_SIZE);
}
int ProjectSetting_GetProjectBasePathN(char* buffer, size_t size, size_t* needed) {
  return copy_item(base_path(), buffer, size, needed);
}

int ProjectSetting_GetProjectDescription(char* buffer) {
  return copy_item(description(), buffer, ORX_DESCRIPTION_SIZE);
}
int ProjectSetting_GetProjectDescriptionN(char* buffer, size_t size, size_t* needed) {
  return copy_item(description(), buffer, size, needed);
}

int ProjectSetting_GetProjectCoordinates(char* buffer) {
  return copy_item(coordinates(), buffer, ORX_COORDINATES_SIZE);
}
int ProjectSetting_GetProjectCoordinatesN(char* buffer, size_t size, size_t* needed) {
  return copy_item(coordinates(), buffer, size, needed);
}

int ProjectSetting_GetProjectNameEx(char* buffer, size_t* length) {
  const std::string_view name = optional_item(current_info().ProjectName).text;
  if (buffer != nullptr) {
    const std::size_t size = length != nullptr ? std::min(*length, name.size()) + 1 : ORX_PROJECT_NAME_SIZE;
    return copy_item(project_name(), buffer, size);
  }
  if (length == nullptr) return -1;
  *length = name.size();
  return 0;
}

int ProjectSetting_GetDatabasePlatform(int* platform) {
  if (platform == nullptr) return -1;
  *platform = current_info().SiteDatabasePlatform;
  return 0;
}

// Unlike copy_item, these two leave the buffer unchanged when the path does not fit.
int ProjectSetting_GetCurrentQPRPath(char* buffer) {
  const Item path = project_file();
  const bool fits = path.text.size() < ORX_PROJECT_PATH_SIZE;
  if (!fits) return 0;
  return copy_item(path, buffer, ORX_PROJECT_PATH_SIZE) == 0 ? 1 : 0;
}

int ProjectSetting_GetCurrentQPRPathN(char* buffer, size_t size, size_t* needed) {
  return copy_item(project_file(), buffer, size, needed);
}

int ProjectSetting_GetCurrentProjectPath(char* buffer) {
  const Item folder = project_folder();
  const bool fits = folder.text.size() < ORX_PROJECT_PATH_SIZE;
  return fits ? copy_item(folder, buffer, ORX_PROJECT_PATH_SIZE) : -1;
}

int ProjectSetting_GetCurrentProjectPathN(char* buffer, size_t size, size_t* needed) {
  return copy_item(project_folder(), buffer, size, needed);
}

// The text is copied even when a name is missing; then only the result is a failure.
int ProjectSetting_GetSiteProjectDatagroup(char* out) {
  const ComposedPath path;
  const int result = copy_item({path.text()}, out, ORX_SITE_PROJECT_DATAGROUP_SIZE);
  return path.is_complete() ? result : -1;
}

int ProjectSetting_GetSiteProjectDatagroupN(char* out, size_t size, size_t* needed) {
  const ComposedPath path;
  const int result = copy_item({path.text()}, out, size, needed);
  return path.is_complete() ? result : -1;
}
