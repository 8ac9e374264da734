// A key and everything below it as a JSON document:
//
//   {
//     "key": "HKCU\\Software\\A",
//     "values": {
//       "": {"type": "string", "data": "the default value"},
//       "Count": {"type": "dword", "data": 5},
//       "Raw": {"type": 7, "data": "610000"}
//     },
//     "keys": {
//       "B": {}
//     }
//   }
//
// Values are in the order of their names and on one line each, so that two exports compare well. Nothing is
// lost: a value that "string", "dword" and "binary" cannot represent exactly is written as the number of its
// type with hexadecimal digits.
#pragma once

#include <ostream>
#include <string>

#include "registry/tree.h"

namespace orx::cli {

// Raises Failure when a name is not UTF-8.
void write_json(std::ostream& out, const KeyName& key, const Tree& tree);

struct TreeDocument {
  std::string key;  // empty if the document has no key
  Tree tree;
  std::size_t depth = 0;  // levels below the key
};

// Raises Failure, which names the file and the place in the document, for a document of another form and for
// names that the registry would refuse.
TreeDocument read_json(const std::string& text, const std::string& file);

}  // namespace orx::cli
