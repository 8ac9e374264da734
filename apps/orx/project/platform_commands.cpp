#include <orx/projects/platform_catalogue.h>

#include "commands.h"

namespace orx::cli {
namespace {

std::vector<Value> row_of(const CStringA& long_name, const CStringA& short_name) {
  int id = 0;
  int type = 0;
  CDbPlatformUtil::GetIDFromName(long_name, &id);
  CDbPlatformUtil::GetPlatformType(long_name, &type);
  CStringA latest;
  CDbPlatformUtil::GetLatestPlatform(type, 1, latest);
  return {long_name.GetString(),
          short_name.GetString(),
          id,
          type == enDbPlatformTypeSQL ? "SQL" : "JET",
          CDbPlatformUtil::CanBeCreated(long_name) != 0,
          latest == long_name};
}

}  // namespace

void platforms_show(const PlatformArguments& arguments, std::ostream& out) {
  CAtlArray<CStringA> long_names;
  CAtlArray<CStringA> short_names;
  CDbPlatformUtil::GetPlatformNameList(&long_names, 1);
  CDbPlatformUtil::GetPlatformNameList(&short_names, 0);
  Table table{{"LongName", "ShortName", "Id", "Type", "Creatable", "Latest"}, {}};
  for (std::size_t i = 0; i < long_names.GetCount(); ++i) {
    table.rows.push_back(row_of(long_names[i], short_names[i]));
  }
  write_table(out, table, arguments.format);
}

}  // namespace orx::cli
