#include "project/properties.h"

#include <orx/projects/platform_catalogue.h>

#include <algorithm>
#include <span>

#include "numbers.h"

namespace orx::cli {
namespace {

using TextField = std::span<char> (*)(QPRInfo& info);
using NumberField = int& (*)(QPRInfo& info);

// A property is a text or a number. The platform is neither: it is stored as a number and written as a name.
struct Property {
  const char* name;
  TextField text;
  std::size_t length;  // of the longest text, in characters
  NumberField number;
};

template <auto kMember>
std::span<char> text(QPRInfo& info) {
  return info.*kMember;
}

template <auto kMember>
int& number(QPRInfo& info) {
  return info.*kMember;
}

constexpr Property kProperties[] = {
    {"SiteName", text<&QPRInfo::SiteName>, ORX_SITE_NAME_LENGTH, nullptr},
    {"SiteDatabase", text<&QPRInfo::SiteDatabase>, ORX_SITE_DATABASE_LENGTH, nullptr},
    {"SiteDatabasePlatform", nullptr, 0, nullptr},
    {"SiteDatabaseServerName", text<&QPRInfo::SiteDatabaseServerName>, ORX_SERVER_NAME_LENGTH, nullptr},
    {"ProjectName", text<&QPRInfo::ProjectName>, ORX_PROJECT_NAME_LENGTH, nullptr},
    {"DataGroupName", text<&QPRInfo::DataGroupName>, ORX_DATA_GROUP_NAME_LENGTH, nullptr},
    {"Coordinates", text<&QPRInfo::Coordinates>, ORX_COORDINATES_LENGTH, nullptr},
    {"Description", text<&QPRInfo::Description>, ORX_DESCRIPTION_LENGTH, nullptr},
    {"MajorVersion", nullptr, 0, number<&QPRInfo::MajorVersion>},
    {"MinorVersion", nullptr, 0, number<&QPRInfo::MinorVersion>},
    {"ReleaseVersion", nullptr, 0, number<&QPRInfo::ReleaseVersion>},
};

Value platform_name(CQPRFile& project) {
  CStringA name;
  if (project.GetPlatformString(name, 1) == 0) return {};
  return name.GetString();
}

bool set_text(std::span<char> field, std::size_t length, const std::string& value, std::string& reason) {
  if (width_of(value) > length || value.size() >= field.size()) {
    reason =
        "takes at most " + std::to_string(length) + " characters, not " + std::to_string(width_of(value));
    return false;
  }
  std::ranges::fill(std::ranges::copy(value, field.begin()).out, field.end(), '\0');
  return true;
}

bool set_number(int& field, const std::string& value, std::string& reason) {
  if (read_number(value, field)) return true;
  reason = "takes a whole number, not '" + value + "'";
  return false;
}

bool set_platform(int& field, const std::string& value, std::string& reason) {
  if (CDbPlatformUtil::GetIDFromName(value.c_str(), &field) != 0) return true;
  reason = "takes a name that `orx platforms` lists, not '" + value + "'";
  return false;
}

}  // namespace

Record properties_of(CQPRFile& project) {
  QPRInfo& info = *project.GetQPRInfo();
  Record record;
  for (const Property& property : kProperties) {
    Value value;
    if (property.text != nullptr) {
      value = std::string(property.text(info).data());
    } else if (property.number != nullptr) {
      value = property.number(info);
    } else {
      value = platform_name(project);
    }
    record.emplace_back(property.name, value);
  }
  return record;
}

bool set_property(QPRInfo& info, const std::string& setting, std::string& reason) {
  const std::size_t equals = setting.find('=');
  const CStringA name(setting.substr(0, equals).c_str());
  const std::string value = setting.substr(equals + 1);
  const auto* property = std::ranges::find_if(
      kProperties, [&](const Property& candidate) { return name.CompareNoCase(candidate.name) == 0; });
  if (property == std::end(kProperties)) {
    reason = "a project has no property '" + std::string(name) + "'";
    return false;
  }
  std::string why;
  bool done = false;
  if (property->text != nullptr) {
    done = set_text(property->text(info), property->length, value, why);
  } else if (property->number != nullptr) {
    done = set_number(property->number(info), value, why);
  } else {
    done = set_platform(info.SiteDatabasePlatform, value, why);
  }
  if (!done) reason = std::string(property->name) + ' ' + why;
  return done;
}

}  // namespace orx::cli
