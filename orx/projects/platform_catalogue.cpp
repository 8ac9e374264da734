#include <orx/projects/platform_catalogue.h>

#include <orx/platform/code_page.h>

#include <algorithm>
#include <iterator>

namespace {

struct Platform {
  const char* long_name;
  const char* short_name;
  int type;
  int id;
  int release;  // orders the releases of one type
  int creatable;
};

// Every search takes the first match, so the order matters.
constexpr Platform kPlatforms[] = {
    {"Access 2016", "ACCESS 2016", enDbPlatformTypeJET, 8, 12, 1},
    {"SQL Server 2019", "SQL2019", enDbPlatformTypeSQL, 13, 2019, 1},
    {"SQL Server 2017", "SQL2017", enDbPlatformTypeSQL, 12, 2017, 1},
    {"SQL Server 2016", "SQL2016", enDbPlatformTypeSQL, 11, 2016, 1},
    {"SQL Server 2014", "SQL2014", enDbPlatformTypeSQL, 10, 2014, 1},
    {"SQL Server 2012", "SQL2012", enDbPlatformTypeSQL, 9, 2012, 1},
    {"SQL Server 2008", "SQL2008", enDbPlatformTypeSQL, 7, 2008, 1},
    {"SQL Server 2005", "SQL2005", enDbPlatformTypeSQL, 6, 2005, 0},
    {"SQL Server 2000", "SQL2000", enDbPlatformTypeSQL, 5, 2000, 0},
    {"SQL Server 7", "SQL7", enDbPlatformTypeSQL, 2, 7, 0},
    {"Access 2007", "ACCESS 2007", enDbPlatformTypeJET, 8, 12, 1},
    {"Jet 4", "JET4", enDbPlatformTypeJET, 3, 4, 0},
};

// The first entry that matches, or null.
template <class Predicate>
const Platform* find(Predicate matches) {
  const Platform* found = std::ranges::find_if(kPlatforms, matches);
  return found != std::end(kPlatforms) ? found : nullptr;
}

const Platform* find_name(const char* name) {
  return find([name](const Platform& platform) {
    return orx::platform::compare_no_case(name, platform.long_name) == 0 ||
           orx::platform::compare_no_case(name, platform.short_name) == 0;
  });
}

const Platform* find_id(int id) {
  return find([id](const Platform& platform) { return platform.id == id; });
}

// The first entry with the highest release of the type.
const Platform* find_latest(int type) {
  const Platform* latest = nullptr;
  for (const Platform& platform : kPlatforms) {
    if (platform.type != type) continue;
    if (latest == nullptr || platform.release > latest->release) latest = &platform;
  }
  return latest;
}

// The member with the long or the short name.
auto name_member(int use_long_name) {
  return use_long_name != 0 ? &Platform::long_name : &Platform::short_name;
}

// Copies one member of an entry. 0, with the output unchanged, when there is no entry.
template <class Value, class Output>
int copy_member(const Platform* platform, Value Platform::*member, Output* out) {
  if (platform == nullptr) return 0;
  *out = platform->*member;
  return 1;
}

}  // namespace

CDbPlatformUtil::~CDbPlatformUtil() = default;

void CDbPlatformUtil::GetPlatformNameList(CAtlArray<CStringA>* list, int bLongNames) {
  if (list == nullptr) return;
  for (const Platform& platform : kPlatforms) list->Add(platform.*name_member(bLongNames));
}

int CDbPlatformUtil::IsNameValid(const CStringA& name) { return find_name(name) != nullptr ? 1 : 0; }

int CDbPlatformUtil::GetLongNamePlatformType(int type, CStringA& name) {
  name.Empty();
  const auto has_type = [type](const Platform& platform) { return platform.type == type; };
  return copy_member(find(has_type), &Platform::long_name, &name);
}

int CDbPlatformUtil::GetLongNameFromID(int id, CStringA& name) {
  name.Empty();
  return copy_member(find_id(id), &Platform::long_name, &name);
}

int CDbPlatformUtil::GetShortNameFromID(int id, CStringA& name) {
  name.Empty();
  return copy_member(find_id(id), &Platform::short_name, &name);
}

int CDbPlatformUtil::GetIDFromName(const CStringA& name, int* id) {
  return copy_member(find_name(name), &Platform::id, id);
}

int CDbPlatformUtil::GetPlatformType(const CStringA& name, int* type) {
  return copy_member(find_name(name), &Platform::type, type);
}

int CDbPlatformUtil::GetPlatformType(int id, int* type) {
  return copy_member(find_id(id), &Platform::type, type);
}

int CDbPlatformUtil::GetLatestPlatform(int type, int bLongName, CStringA& name) {
  return copy_member(find_latest(type), name_member(bLongName), &name);
}

int CDbPlatformUtil::GetLatestPlatform(int type, int* id) {
  return copy_member(find_latest(type), &Platform::id, id);
}

int CDbPlatformUtil::CanBeCreated(const CStringA& name) {
  const Platform* platform = find_name(name);
  return platform != nullptr ? platform->creatable : 0;
}
