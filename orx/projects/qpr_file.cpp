#include <orx/projects/qpr_file.h>

#include <orx/base/ascii.h>
#include <orx/platform/code_page.h>
#include <orx/projects/platform_catalogue.h>
#include <orx/projects/xml_handle.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

namespace {

using orx::XmlHandle;
using orx::platform::compare_no_case;
using orx::platform::last_backslash;

constexpr int kUnknownPlatform = -1;

// How the value of a property is written: as it is, as a name of the platform catalogue, as a number.
enum class Kind { kText, kPlatform, kNumber };

// A property of the file and its field in the record.
struct Property {
  const char* name;
  Kind kind;
  int length;  // the limit of a text in characters; 0 for other kinds
  std::size_t offset;
  std::size_t size;  // the size of the field in bytes

  char* Text(QPRInfo& info) const { return reinterpret_cast<char*>(&info) + offset; }
  int& Number(QPRInfo& info) const {
    return *reinterpret_cast<int*>(reinterpret_cast<char*>(&info) + offset);
  }
};

// All properties, in the order in which they are written.
constexpr Property kProperties[] = {
    {"SiteName", Kind::kText, ORX_SITE_NAME_LENGTH, offsetof(QPRInfo, SiteName), sizeof(QPRInfo::SiteName)},
    {"SiteDatabase", Kind::kText, ORX_SITE_DATABASE_LENGTH, offsetof(QPRInfo, SiteDatabase),
     sizeof(QPRInfo::SiteDatabase)},
    {"SiteDatabasePlatform", Kind::kPlatform, 0, offsetof(QPRInfo, SiteDatabasePlatform), sizeof(int)},
    {"SiteDatabaseServerName", Kind::kText, ORX_SERVER_NAME_LENGTH, offsetof(QPRInfo, SiteDatabaseServerName),
     sizeof(QPRInfo::SiteDatabaseServerName)},
    {"ProjectName", Kind::kText, ORX_PROJECT_NAME_LENGTH, offsetof(QPRInfo, ProjectName),
     sizeof(QPRInfo::ProjectName)},
    {"DataGroupName", Kind::kText, ORX_DATA_GROUP_NAME_LENGTH, offsetof(QPRInfo, DataGroupName),
     sizeof(QPRInfo::DataGroupName)},
    {"Coordinates", Kind::kText, ORX_COORDINATES_LENGTH, offsetof(QPRInfo, Coordinates),
     sizeof(QPRInfo::Coordinates)},
    {"Description", Kind::kText, ORX_DESCRIPTION_LENGTH, offsetof(QPRInfo, Description),
     sizeof(QPRInfo::Description)},
    {"MajorVersion", Kind::kNumber, 0, offsetof(QPRInfo, MajorVersion), sizeof(int)},
    {"MinorVersion", Kind::kNumber, 0, offsetof(QPRInfo, MinorVersion), sizeof(int)},
    {"ReleaseVersion", Kind::kNumber, 0, offsetof(QPRInfo, ReleaseVersion), sizeof(int)},
};

const Property* find_property(const char* name) {
  const auto* found = std::find_if(std::begin(kProperties), std::end(kProperties),
                                   [name](const Property& p) { return compare_no_case(p.name, name) == 0; });
  return found != std::end(kProperties) ? found : nullptr;
}

// Reads a number like atoi, but independent of the locale. A number out of range becomes the nearest int.
int to_int(std::string_view text) {
  constexpr long long kBeyondInt = 1LL << 40;  // bounds the number while its digits are read
  while (!text.empty() && orx::is_space(text.front())) text.remove_prefix(1);
  const bool is_negative = text.starts_with('-');
  if (is_negative || text.starts_with('+')) text.remove_prefix(1);
  long long number = 0;
  for (const char c : text) {
    if (c < '0' || c > '9') break;
    number = std::min(number * 10 + (c - '0'), kBeyondInt);
  }
  if (is_negative) number = -number;
  return static_cast<int>(std::clamp<long long>(number, INT_MIN, INT_MAX));
}

// Fills a field with a text of at most `length` characters. False, with the field unchanged, for a longer
// text. The bytes are checked too: invalid bytes may count as no character.
template <std::size_t size>
bool store_text(char (&field)[size], int length, std::string_view text) {
  if (text.size() >= size || orx::platform::count_characters(text) > length) return false;
  std::memset(field, 0, size);
  text.copy(field, text.size());
  return true;
}

// Whether the platform of the record is in the catalogue and of the type.
bool has_platform_type(const QPRInfo& info, int type) {
  int type_of_id = 0;
  return CDbPlatformUtil::GetPlatformType(info.SiteDatabasePlatform, &type_of_id) && type_of_id == type;
}

// Whether a text is within the limit of its property. The message is for the user.
bool check_length(const Property& property, std::string_view text, CStringA& reason) {
  const int length = orx::platform::count_characters(text);
  if (length <= property.length) return true;
  reason.Format("%s has %d characters; the limit is %d", property.name, length, property.length);
  return false;
}

// Sets the field of a property. Refuses a text that is too long: a project whose names were cut could be
// taken for another project.
bool read_value(QPRInfo& info, const Property& property, const CStringA& value, CStringA& reason) {
  switch (property.kind) {
    case Kind::kPlatform:
      property.Number(info) = kUnknownPlatform;
      CDbPlatformUtil::GetIDFromName(value, &property.Number(info));
      return true;
    case Kind::kNumber:
      property.Number(info) = to_int(value.GetString());
      return true;
    case Kind::kText:
      break;
  }
  if (!check_length(property, value.GetString(), reason)) return false;
  std::memset(property.Text(info), 0, property.size);
  std::memcpy(property.Text(info), value.GetString(), static_cast<std::size_t>(value.GetLength()));
  return true;
}

// Checks a text before it is written. Hosts change the record directly, so it may be too long or without a
// NUL.
bool check_text(QPRInfo& info, const Property& property, CStringA& reason) {
  const char* text = property.Text(info);
  const std::size_t size = strnlen(text, property.size);
  if (size < property.size) return check_length(property, {text, size}, reason);
  reason = CStringA(property.name) + ": the text has no NUL";
  return false;
}

// The value of a property as it is written. Empty for a platform that the catalogue does not know.
CStringA value_text(QPRInfo& info, const Property& property) {
  CStringA value;
  switch (property.kind) {
    case Kind::kPlatform:
      CDbPlatformUtil::GetShortNameFromID(property.Number(info), value);
      break;
    case Kind::kNumber:
      value.Format("%d", property.Number(info));
      break;
    case Kind::kText:
      value = property.Text(info);
      break;
  }
  return value;
}

CStringA invalid_platform_message() {
  CAtlArray<CStringA> names;
  CDbPlatformUtil::GetPlatformNameList(&names, 0);
  CStringA message = "The database platform is invalid, it must be ";
  for (const CStringA& name : names) message += "'" + name + "', ";
  const int last_separator = message.GetLength() - 2;
  return message.Left(last_separator) + ".";
}

}  // namespace

QprLoadFailedException::QprLoadFailedException() = default;
QprLoadFailedException::QprLoadFailedException(const char* const& message) : message_(message) {}
QprLoadFailedException::QprLoadFailedException(const QprLoadFailedException&) noexcept = default;
QprLoadFailedException& QprLoadFailedException::operator=(const QprLoadFailedException&) noexcept = default;
QprLoadFailedException::~QprLoadFailedException() = default;

const char* QprLoadFailedException::what() const noexcept { return message_; }

CQPRFile::CQPRFile() { Clear(); }
CQPRFile::CQPRFile(const CQPRFile&) = default;
CQPRFile& CQPRFile::operator=(const CQPRFile&) = default;
CQPRFile::~CQPRFile() = default;

int CQPRFile::Load() {
  return Complete([this] {
    QPRInfo info{};  // replaces the record at the end, when nothing can run out of memory any more
    if (!ReadProperties(info)) return 0;
    const int result = DerivePaths(info);
    info_ = info;
    return result;
  });
}

int CQPRFile::ReadProperties(QPRInfo& info) {
  XmlHandle<IXMLDOMElement> root;
  XmlHandle<IXMLDOMNode> project;
  XmlHandle<IXMLDOMNodeList> properties;
  if (!LoadXMLDocument(root.Out())) return 0;
  if (!SelectSingleXMLNode("//PROJECT", project.Out())) return 0;
  if (project == nullptr) return Fail("there is no PROJECT element");
  if (!SelectXMLNodes(project, "//PROPERTY", properties.Out())) return 0;

  // These keep the values of the record when the file does not set them. All other fields start empty.
  info.SiteDatabasePlatform = kUnknownPlatform;
  std::memcpy(info.ProjectBasePath, info_.ProjectBasePath, sizeof info.ProjectBasePath);
  std::memcpy(info.Coordinates, info_.Coordinates, sizeof info.Coordinates);
  std::memcpy(info.Description, info_.Description, sizeof info.Description);

  XmlHandle<IXMLDOMNode> node;
  while (NextXMLNode(properties, node.Out())) {
    CStringA name, value, reason;
    if (!FindXMLAttribute(node, "NAME", name)) continue;
    const Property* property = find_property(name);
    if (property == nullptr || !FindXMLAttribute(node, "VALUE", value)) continue;
    if (!read_value(info, *property, value, reason)) return Fail(reason);
  }
  return 1;
}

// Each project has its own folder below the base path, and the file of a JET database is in that folder. Sets
// both paths. A failure concerns only the base path: the database path is set in any case, and stays as it
// was when the new path does not fit.
int CQPRFile::DerivePaths(QPRInfo& info) {
  const char* file = GetFileName();
  const char* file_end = last_backslash(file);
  const bool has_folder = file_end != nullptr && file_end > file + 1;
  const CStringA folder(file, has_folder ? static_cast<int>(file_end - file) : 0);
  const char* base_end = last_backslash(folder);
  const auto base_length = static_cast<std::size_t>(base_end != nullptr ? base_end - folder.GetString() : 0);
  const std::string_view base(folder.GetString(), base_length);
  int result = 1;
  if (base.size() <= 1) {
    result = Fail("the path is too shallow to hold a project folder");
  } else if (!store_text(info.ProjectBasePath, ORX_BASE_PATH_LENGTH, base)) {
    result = Fail("the path is too long to hold a project folder");
  }

  if (has_platform_type(info, enDbPlatformTypeJET)) {
    const char* separator = last_backslash(info.SiteDatabase);
    const bool names_folder = separator != nullptr && separator > info.SiteDatabase;
    const char* name = names_folder ? separator + 1 : info.SiteDatabase;
    const CStringA database = folder + '\\' + name;
    store_text(info.SiteDatabase, ORX_SITE_DATABASE_LENGTH, database.GetString());
  }
  return result;
}

int CQPRFile::Save() {
  return SaveWritten([this] { return WriteProperties(); });
}

int CQPRFile::WriteProperties() {
  XmlHandle<IXMLDOMElement> root, project, element;
  if (!CreateXMLDocument(root.Out(), "QPR")) return 0;
  if (!CreateXMLElement(root, "PROJECT", project.Out())) return 0;
  for (const Property& property : kProperties) {
    CStringA reason;
    if (property.kind == Kind::kText && !check_text(info_, property, reason)) return Fail(reason);
    if (!CreateXMLElement(project, "PROPERTY", element.Out())) return 0;
    if (!SetXMLAttributeText(element, "NAME", property.name)) return 0;
    if (!SetXMLAttributeText(element, "VALUE", value_text(info_, property))) {
      GetLastFailure(reason);
      return Fail(CStringA(property.name) + ": " + reason);
    }
  }
  return 1;
}

int CQPRFile::Verify(CStringA& message) {
  CStringA broken;
  if (info_.SiteName[0] == '\0') {
    broken = "The site name cannot be empty.";
  } else if (info_.SiteDatabasePlatform == kUnknownPlatform) {
    broken = invalid_platform_message();
  } else if (info_.SiteDatabase[0] == '\0') {
    broken = "The site database cannot be empty";
  } else if (info_.SiteDatabaseServerName[0] == '\0' && IsSQLPlatform()) {
    broken = "The site database server cannot be empty if database platform is 'SQL'";
  } else if (info_.ProjectName[0] == '\0') {
    broken = "The project name cannot be empty";
  } else if (info_.DataGroupName[0] == '\0') {
    broken = "The data group name cannot be empty";
  } else {
    return 1;
  }
  message = broken;
  return Fail(broken);
}

enProjectVersionT CQPRFile::VerifyProjectVersion() {
  const auto version = std::pair(info_.MajorVersion, info_.MinorVersion);
  const auto current = std::pair(ORX_PROJECT_FORMAT_MAJOR, ORX_PROJECT_FORMAT_MINOR);
  if (version == current) return enProjectVersionCurrent;
  return version < current ? enProjectVersionOlder : enProjectVersionNewer;
}

void CQPRFile::InitProjectVersion() {
  info_.MajorVersion = ORX_PROJECT_FORMAT_MAJOR;
  info_.MinorVersion = ORX_PROJECT_FORMAT_MINOR;
  info_.ReleaseVersion = ORX_PROJECT_FORMAT_RELEASE;
}

void CQPRFile::ProjectConversionUpgradeCompleted() { InitProjectVersion(); }

QPRInfo* CQPRFile::GetQPRInfo() { return &info_; }

void CQPRFile::CopyFrom(CQPRFile* source) {
  if (source == nullptr) return;
  info_ = source->info_;
  ShareFileName(*source);
}

void CQPRFile::Clear() {
  std::memset(&info_, 0, sizeof info_);
  SetFileName("");
}

int CQPRFile::GetPlatformString(CStringA& name, int bShortName) {
  return bShortName ? CDbPlatformUtil::GetShortNameFromID(info_.SiteDatabasePlatform, name)
                    : CDbPlatformUtil::GetLongNameFromID(info_.SiteDatabasePlatform, name);
}

int CQPRFile::IsSQLPlatform() { return has_platform_type(info_, enDbPlatformTypeSQL); }
int CQPRFile::IsJETPlatform() { return has_platform_type(info_, enDbPlatformTypeJET); }
