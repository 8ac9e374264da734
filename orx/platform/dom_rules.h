// The limits and rules for the content of a document. Loads, changes and saves use the same rules, so that a
// document that was saved can be loaded.
//
// The limits bound the time and memory that an untrusted file can cost.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orx::platform::dom {

// The size of a document. A list of 200,000 projects with the longest paths has 80 MB; the suite does not
// write larger documents.
inline constexpr std::size_t kMaxDocumentBytes = std::size_t{128} << 20;

// The size of one value, text or start tag when it is written. libxml2 refuses 10,000,000 bytes.
inline constexpr std::size_t kMaxTextBytes = 9'900'000;

// The size of a name. libxml2 refuses longer names.
inline constexpr std::size_t kMaxNameBytes = 50'000;

// The number of nested elements. libxml2 refuses deeper documents.
inline constexpr int kMaxDepth = 256;

// The number of attributes of one element. libxml2 compares all of them with one another.
inline constexpr int kMaxAttributes = 1000;

// The number of namespace declarations in scope at one element. libxml2 searches them for each declaration
// and for each name with a prefix.
inline constexpr int kMaxNamespaces = 250;

// The number of elements and attributes of a document. Ten million take more than a gigabyte.
inline constexpr std::size_t kMaxNodes = 10'000'000;

// The size of a query. Every name fits.
inline constexpr std::size_t kMaxQueryBytes = std::size_t{64} << 10;

inline constexpr const char* kTooLarge = "it is larger than 128 MiB";
inline constexpr const char* kTooDeep = "its elements are nested too deep";
inline constexpr const char* kTooManyAttributes = "an element has too many attributes";
inline constexpr const char* kTooManyNamespaces = "it declares too many namespaces";
inline constexpr const char* kUnsupportedNamespace = "the name of a namespace holds an ampersand";
inline constexpr const char* kTooManyNodes = "it has too many elements";

// Sets the reason of a failure. Always false.
bool refuse(std::string& reason, const char* why);

// These return false with the reason when the argument is refused.
bool accept_name(std::string_view name, std::string& reason);
bool accept_text(std::string_view text, std::string& reason);
bool accept_query(std::string_view query, std::string& reason);
// Checks the value of an attribute, which may declare a namespace. Declarations that XML reserves for itself
// are refused, because a load drops some of them.
bool accept_value(std::string_view attribute, std::string_view value, std::string& reason);

// False for a namespace name with an ampersand. libxml2 does not resolve the escape when it reads one.
bool is_supported_namespace(std::string_view uri);

// A valid name without a colon.
bool is_plain_name(std::string_view text);

// Whether an attribute of this name declares a namespace: "xmlns" or "xmlns:PREFIX".
bool declares_namespace(std::string_view name);

}  // namespace orx::platform::dom
