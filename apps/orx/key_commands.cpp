#include <orx/text/unique_key.h>

#include "commands.h"

namespace orx::cli {

void key_new(const KeyArguments& arguments, std::ostream& out) {
  Table table{{"Key"}, {}};
  char key[ORX_KEY_SIZE];
  char stamp[ORX_KEY_STAMP_SIZE] = "";
  int counter = 0;
  for (int i = 0; i < arguments.count; ++i) {
    GenerateKey(key, sizeof key, stamp, &counter);
    if (arguments.format == Format::kText) {
      out << key << '\n';
    } else {
      table.rows.push_back({std::string(key)});
    }
  }
  if (arguments.format == Format::kJson) write_table(out, table, Format::kJson);
}

}  // namespace orx::cli
