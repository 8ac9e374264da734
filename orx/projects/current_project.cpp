#include <orx/projects/current_project.h>

#include <orx/platform/code_page.h>
#include <orx/platform/file_system.h>
#include <orx/projects/never_destroyed.h>

#include <cstring>
#include <exception>
#include <string>
#include <string_view>

namespace {

orx::NeverDestroyed<CQPRFile> current;
orx::NeverDestroyed<CQPRFile> previous;
CQPRFile& current_project = current.object;
CQPRFile& previous_project = previous.object;

constexpr std::size_t kPathCapacity = 260;  // of the hosts' buffers for paths, with the NUL
constexpr int kLongestMessage = 199;

// A host may have filled a field without its NUL: what it copies into has room for the longest text only.
template <std::size_t size>
std::string_view view(const char (&field)[size]) {
  return {field, strnlen(field, size - 1)};
}

int copy_text(char* buffer, std::string_view text) {
  if (buffer == nullptr) return -1;
  text.copy(buffer, text.size());
  buffer[text.size()] = '\0';
  return 0;
}

int copy_filled(char* buffer, std::string_view text) { return text.empty() ? -1 : copy_text(buffer, text); }

[[noreturn]] void fail_load(const CStringA& message) {
  throw QprLoadFailedException(message.Left(kLongestMessage).GetString());
}

const QPRInfo& info() { return *current_project.GetQPRInfo(); }

}  // namespace

CQPRFile* GetCurrentQPRInfo() { return &current_project; }

void ProjectSetting_LoadCurrentQPRInfo(const char* path) {
  const CStringA file(path);
  CQPRFile fresh;
  CStringA broken;
  if (orx::platform::entry_kind(file) == orx::platform::EntryKind::kNone) {
    fail_load("Cannot find the TESSEL project file '" + file + "'.");
  }
  fresh.SetFileName(file);
  if (!fresh.Load()) fail_load("Failed when loading the TESSEL project file '" + file + "'.");
  if (!fresh.Verify(broken)) fail_load("The TESSEL project file '" + file + "' is invalid. " + broken);
  previous_project.CopyFrom(&current_project);
  current_project.CopyFrom(&fresh);
}

int ProjectSetting_SaveCurrentQPRInfo(const char*) {
  try {
    return current_project.Save();
  } catch (const CAtlException&) {
    return 0;
  } catch (const std::exception&) {  // by name: a thread that is cancelled unwinds through here
    return 0;
  }
}

int ProjectSetting_RestorePreviousQPRInfo() {
  current_project.CopyFrom(&previous_project);
  return 1;
}

int ProjectSetting_GetSiteName(char* buffer) { return copy_filled(buffer, view(info().SiteName)); }
int ProjectSetting_GetSiteDatabase(char* buffer) { return copy_filled(buffer, view(info().SiteDatabase)); }
int ProjectSetting_GetProjectName(char* buffer) { return ProjectSetting_GetProjectNameEx(buffer, nullptr); }
int ProjectSetting_GetDataGroupName(char* buffer) { return copy_filled(buffer, view(info().DataGroupName)); }
int ProjectSetting_GetProjectBasePath(char* buffer) {
  return copy_filled(buffer, view(info().ProjectBasePath));
}

int ProjectSetting_GetDatabaseServerName(char* buffer) {
  const std::string_view server = view(info().SiteDatabaseServerName);
  return current_project.IsJETPlatform() ? copy_text(buffer, server) : copy_filled(buffer, server);
}

int ProjectSetting_GetProjectNameEx(char* buffer, size_t* length) {
  const std::string_view name = view(info().ProjectName);
  if (buffer == nullptr) {
    if (length == nullptr) return -1;
    *length = name.size();
    return 0;
  }
  if (!name.empty() && length != nullptr && name.size() > *length) {
    *buffer = '\0';
    return -1;
  }
  return copy_filled(buffer, name);
}

int ProjectSetting_GetDatabasePlatform(int* platform) {
  if (platform == nullptr) return -1;
  *platform = info().SiteDatabasePlatform;
  return 0;
}

int ProjectSetting_GetProjectDescription(char* buffer) { return copy_text(buffer, view(info().Description)); }
int ProjectSetting_GetProjectCoordinates(char* buffer) { return copy_text(buffer, view(info().Coordinates)); }

int ProjectSetting_GetCurrentQPRPath(char* buffer) {
  const std::string_view path = current_project.GetFileName();
  return path.size() < kPathCapacity && copy_filled(buffer, path) == 0;
}

int ProjectSetting_GetCurrentProjectPath(char* buffer) {
  const char* path = current_project.GetFileName();
  if (*path == '\0') return -1;
  const char* end = orx::platform::last_backslash(path);
  const std::string_view folder(path, end != nullptr ? static_cast<std::size_t>(end - path) : 0);
  return folder.size() < kPathCapacity ? copy_text(buffer, folder) : -1;
}

int ProjectSetting_GetSiteProjectDatagroup(char* out) {
  if (out == nullptr) return -1;
  int result = 0;
  const auto part = [&result](std::string_view name, const char* placeholder) {
    if (!name.empty()) return name;
    result = -1;
    return std::string_view(placeholder);
  };
  char* end = out;
  *end++ = '\\';
  for (const std::string_view name :
       {part(view(info().SiteName), "Unknown Site"), part(view(info().ProjectName), "Unknown Project"),
        part(view(info().DataGroupName), "Unknown Datagroup")}) {
    end += name.copy(end, name.size());
    *end++ = '\\';
  }
  *end = '\0';
  return result;
}
