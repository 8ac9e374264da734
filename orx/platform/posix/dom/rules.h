// What a document may hold. The loads and the operations that build or write a document keep to the same
// limits and names, so that a document that was saved can be loaded.
//
// The limits of a parse bound the time and memory that an untrusted file can cost.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orx::platform::dom {

// A list of 200,000 projects with the longest paths has 80 MB; a larger document does not come from the
// suite.
inline constexpr std::size_t kMaxDocumentBytes = std::size_t{128} << 20;

// One value, text or start tag, as it is written. libxml2 reads none of 10,000,000 bytes.
inline constexpr std::size_t kMaxTextBytes = 9'900'000;

// libxml2 reads no longer name.
inline constexpr std::size_t kMaxNameBytes = 50'000;

// Elements within one another. libxml2 reads no deeper document.
inline constexpr int kMaxDepth = 256;

// Of one element. libxml2 compares each with all the others.
inline constexpr int kMaxAttributes = 1000;

// Declarations in scope at one element. libxml2 searches them for each declaration and each name with a
// prefix.
inline constexpr int kMaxNamespaces = 250;

// Elements and attributes. Ten million take more than a gigabyte.
inline constexpr std::size_t kMaxNodes = 10'000'000;

// Long enough for every name.
inline constexpr std::size_t kMaxQueryBytes = std::size_t{64} << 10;

inline constexpr const char* kTooLarge = "it is larger than 128 MiB";
inline constexpr const char* kTooDeep = "its elements are nested too deep";
inline constexpr const char* kTooManyAttributes = "an element has too many attributes";
inline constexpr const char* kTooManyNamespaces = "it declares too many namespaces";
inline constexpr const char* kUnsupportedNamespace = "the name of a namespace holds an ampersand";
inline constexpr const char* kTooManyNodes = "it has too many elements";

// Sets the reason of a failure, and returns false.
bool refuse(std::string& reason, const char* why);

// Each is false with the reason when the argument is refused.
bool accept_name(std::string_view name, std::string& reason);
bool accept_text(std::string_view text, std::string& reason);
bool accept_query(std::string_view query, std::string& reason);
// The value of an attribute that may be the declaration of a namespace. A load drops some declarations of the
// namespaces of XML itself.
bool accept_value(std::string_view attribute, std::string_view value, std::string& reason);

// False for a name with an ampersand, which libxml2 leaves escaped when it reads a namespace.
bool is_supported_namespace(std::string_view uri);

// A valid name without a colon.
bool is_plain_name(std::string_view text);

// Whether an attribute of this name declares a namespace: "xmlns" or "xmlns:PREFIX".
bool declares_namespace(std::string_view name);

}  // namespace orx::platform::dom
