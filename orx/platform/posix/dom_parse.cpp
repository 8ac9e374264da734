#include <orx/platform/posix/dom_parse.h>

#include <fcntl.h>
#include <libxml/SAX2.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>
#include <orx/platform/posix/error_text.h>
#include <orx/platform/posix/utf8.h>
#include <strings.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

namespace orx::platform::dom {
namespace {

// A list of 200,000 projects with the longest paths has 80 MB; what is larger is no file of the suite.
constexpr std::size_t kMaxDocumentBytes = std::size_t{128} << 20;

// A few bytes of attribute defaults in a DOCTYPE can stand for a value in each of millions of elements.
constexpr std::size_t kMaxDefaultedBytes = std::size_t{64} << 20;

constexpr int kParseOptions = XML_PARSE_NONET | XML_PARSE_COMPACT;

using ContextPointer = std::unique_ptr<xmlParserCtxt, decltype(&xmlFreeParserCtxt)>;

// How the bytes of a document are to be read.
struct Encoding {
  bool is_utf8 = true;
  bool is_wide = false;            // two bytes a character: NULs are no sign of trouble
  bool is_windows_1252 = false;    // by our own decoder
  bool obeys_declaration = false;  // else what the declaration says has been heeded, or does not count
  std::string declared;
};

std::string declared_encoding(std::string_view head) {
  if (!head.starts_with("<?xml")) return {};
  head = head.substr(0, head.find("?>"));
  std::size_t at = head.find("encoding");
  if (at == std::string_view::npos) return {};
  at = head.find_first_of("\"'", at);
  if (at == std::string_view::npos) return {};
  const std::size_t end = head.find(head[at], at + 1);
  return std::string(head.substr(at + 1, end == std::string_view::npos ? 0 : end - at - 1));
}

Encoding sniff(std::string_view head) {
  Encoding encoding;
  const auto begins = [head](std::initializer_list<unsigned char> mark) {
    return head.size() >= mark.size() && std::memcmp(head.data(), mark.begin(), mark.size()) == 0;
  };
  if (begins({0xFF, 0xFE}) || begins({0xFE, 0xFF}) || begins({'<', 0}) || begins({0, '<'})) {
    encoding.is_utf8 = false;
    encoding.is_wide = true;
    encoding.obeys_declaration = begins({'<', 0}) || begins({0, '<'});
    return encoding;
  }
  const bool has_mark = begins({0xEF, 0xBB, 0xBF});
  encoding.declared = declared_encoding(has_mark ? head.substr(3) : head);
  const char* name = encoding.declared.c_str();
  if (has_mark || *name == '\0' || strcasecmp(name, "UTF-8") == 0) return encoding;
  encoding.is_utf8 = false;
  encoding.is_windows_1252 = strcasecmp(name, "windows-1252") == 0 || strcasecmp(name, "cp1252") == 0;
  encoding.obeys_declaration = !encoding.is_windows_1252;
  return encoding;
}

bool is_known_encoding(const std::string& name) {
  if (name.empty() || strcasecmp(name.c_str(), "windows-1252") == 0) return true;
  xmlCharEncodingHandler* handler = xmlFindCharEncodingHandler(name.c_str());
  if (handler == nullptr) return false;
  xmlCharEncCloseFunc(handler);
  return true;
}

// The characters of windows-1252 from 0x80 to 0x9F; the five that it leaves open are the controls of the same
// number.
constexpr std::array<unsigned short, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

int decode_windows_1252(unsigned char* out, int* out_size, const unsigned char* in, int* in_size) {
  unsigned char* to = out;
  const unsigned char* from = in;
  while (from < in + *in_size && out + *out_size - to >= 3) {
    const unsigned byte = *from++;
    const unsigned c = byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80] : byte;
    if (c < 0x80) {
      *to++ = static_cast<unsigned char>(c);
    } else if (c < 0x800) {
      *to++ = static_cast<unsigned char>(0xC0 | c >> 6);
      *to++ = static_cast<unsigned char>(0x80 | (c & 0x3F));
    } else {
      *to++ = static_cast<unsigned char>(0xE0 | c >> 12);
      *to++ = static_cast<unsigned char>(0x80 | (c >> 6 & 0x3F));
      *to++ = static_cast<unsigned char>(0x80 | (c & 0x3F));
    }
  }
  *in_size = static_cast<int>(from - in);
  *out_size = static_cast<int>(to - out);
  return *out_size;
}

// Handed to a parse as it is: registering it would change what the host's own use of libxml2 sees.
xmlCharEncodingHandler* windows_1252_handler() {
  static xmlCharEncodingHandler handler = [] {
    xmlCharEncodingHandler decoder{};
    decoder.input = decode_windows_1252;
    return decoder;
  }();
  return &handler;
}

// What the parse of one document knows beside libxml2: what it read, and what it found wrong first. Nothing
// in here allocates during the parse, since no exception may pass through libxml2.
struct Parse {
  Encoding encoding;

  int file = -1;
  int read_error = 0;
  std::size_t bytes_read = 0;
  bool has_nul = false;
  utf8::Validator validator;
  bool is_valid_utf8 = true;

  const char* refusal = nullptr;
  std::size_t defaulted_bytes = 0;
  xmlErrorLevel level = XML_ERR_NONE;
  int line = 0;
  int column = 0;
  std::array<char, 300> message{};
};

Parse& parse_of(void* context) {
  return *static_cast<Parse*>(static_cast<xmlParserCtxt*>(context)->_private);
}

void refuse(void* context, const char* why) {
  parse_of(context).refusal = why;
  xmlStopParser(static_cast<xmlParserCtxt*>(context));
}

void on_error(void* context, xmlError* error) {
  Parse& parse = parse_of(context);
  if (error->level <= parse.level || error->level < XML_ERR_ERROR) return;
  parse.level = error->level;
  parse.line = error->line;
  parse.column = error->int2;
  std::snprintf(parse.message.data(), parse.message.size(), "%s",
                error->message != nullptr ? error->message : "");
}

void on_entity(void* context, const xmlChar*, int, const xmlChar*, const xmlChar*, xmlChar*) {
  refuse(context, "it declares entities");
}

void on_unparsed_entity(void* context, const xmlChar*, const xmlChar*, const xmlChar*, const xmlChar*) {
  refuse(context, "it declares entities");
}

void on_start_element(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespaces, const xmlChar** namespace_table, int attributes, int defaulted,
                      const xmlChar** attribute_table) {
  Parse& parse = parse_of(context);
  for (int i = attributes - defaulted; i < attributes;
       ++i) {  // five pointers each, the last two enclose the value
    parse.defaulted_bytes +=
        static_cast<std::size_t>(attribute_table[5 * i + 4] - attribute_table[5 * i + 3]) + 64;
  }
  if (parse.defaulted_bytes > kMaxDefaultedBytes)
    return refuse(context, "its attribute defaults are too large");
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaces, namespace_table, attributes, defaulted,
                        attribute_table);
}

int read_file(void* context, char* buffer, int size) {
  Parse& parse = *static_cast<Parse*>(context);
  ssize_t count;
  do {
    count = read(parse.file, buffer, static_cast<std::size_t>(size));
  } while (count < 0 && errno == EINTR);
  if (count < 0) parse.read_error = errno;
  if (count <= 0) return static_cast<int>(count);
  parse.bytes_read += static_cast<std::size_t>(count);
  if (parse.bytes_read > kMaxDocumentBytes) {
    parse.read_error = EFBIG;
    return -1;
  }
  // libxml2 takes a NUL behind the root for the end, and lets some overlong forms pass.
  const auto* bytes = reinterpret_cast<const unsigned char*>(buffer);
  if (!parse.encoding.is_wide)
    parse.has_nul |= std::memchr(buffer, 0, static_cast<std::size_t>(count)) != nullptr;
  if (parse.encoding.is_utf8)
    parse.is_valid_utf8 &= parse.validator.Feed(bytes, static_cast<std::size_t>(count));
  return static_cast<int>(count);
}

// Drops the white space that only separates elements. Whether any of it ended a line is the result.
bool drop_blanks(xmlDoc& doc) {
  bool has_lines = false;
  xmlNode* top = reinterpret_cast<xmlNode*>(&doc);
  for (xmlNode *node = following(top, top), *next; node != nullptr; node = next) {
    next = following(node, top);
    if (node->type != XML_TEXT_NODE || !is_blank(as_text(node->content)) || keeps_space(*node->parent))
      continue;
    has_lines |= std::strchr(as_text(node->content), '\n') != nullptr;
    xmlUnlinkNode(node);
    xmlFreeNode(node);
  }
  return has_lines;
}

bool is_accepted(const xmlParserCtxt& context, const Parse& parse, std::string& reason) {
  if (parse.refusal != nullptr) {
    reason = parse.refusal;
  } else if (parse.read_error != 0) {
    reason = error_text(parse.read_error);
  } else if (!context.wellFormed || context.myDoc == nullptr) {
    const std::string_view message(parse.message.data());
    reason = "not well-formed at line " + std::to_string(parse.line) + ", column " +
             std::to_string(parse.column) + ": ";
    reason += message.substr(0, message.find_last_not_of(" \n") + 1);
  } else if (parse.has_nul || context.input->cur < context.input->end) {
    reason = "not well-formed: it holds a NUL";
  } else if (!parse.is_valid_utf8 || !parse.validator.Complete()) {
    reason = "not valid UTF-8";
  } else {
    return true;
  }
  return false;
}

Tree* run(Parse& parse, xmlParserInputBuffer* input, std::string& reason) {
  if (!parse.encoding.obeys_declaration && !is_known_encoding(parse.encoding.declared)) {
    xmlFreeParserInputBuffer(input);
    reason = "unknown encoding " + parse.encoding.declared;
    return nullptr;
  }
  const ContextPointer context(allocated(xmlNewParserCtxt()), &xmlFreeParserCtxt);
  const int options = parse.encoding.obeys_declaration ? kParseOptions : kParseOptions | XML_PARSE_IGNORE_ENC;
  xmlCtxtUseOptions(context.get(), options);
  context->_private = &parse;
  context->sax->serror = on_error;
  context->sax->entityDecl = on_entity;
  context->sax->unparsedEntityDecl = on_unparsed_entity;
  context->sax->startElementNs = on_start_element;
  inputPush(context.get(), allocated(xmlNewIOInputStream(context.get(), input, XML_CHAR_ENCODING_NONE)));
  if (parse.encoding.is_windows_1252) xmlSwitchToEncoding(context.get(), windows_1252_handler());
  xmlParseDocument(context.get());

  xmlDoc* doc = context->myDoc;
  if (!is_accepted(*context, parse, reason)) {
    xmlFreeDoc(doc);
    return nullptr;
  }
  xmlFree(const_cast<xmlChar*>(doc->encoding));
  doc->encoding = xmlStrdup(as_xml("UTF-8"));  // what the tree holds, and what is written
  Tree* tree = new Tree(doc);
  tree->declared = context->standalone != -1;
  tree->laid_out = drop_blanks(*doc);
  return tree;
}

class File {
 public:
  explicit File(const std::string& path)
      : number_(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC)) {}
  ~File() {
    if (number_ >= 0) close(number_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  int number() const { return number_; }

 private:
  int number_;
};

bool is_readable(int file, std::string& reason) {
  struct stat status;
  if (file < 0 || fstat(file, &status) != 0) {
    reason = error_text(errno);
  } else if (S_ISDIR(status.st_mode)) {
    reason = "it is a folder";
  } else if (!S_ISREG(status.st_mode)) {
    reason = "it is not a regular file";
  } else if (status.st_size == 0) {
    reason = "the file is empty";
  } else if (static_cast<std::size_t>(status.st_size) > kMaxDocumentBytes) {
    reason = "the file is larger than 128 MiB";
  } else {
    return true;
  }
  return false;
}

}  // namespace

Tree* parse_file(const std::string& system_path, std::string& reason) {
  const File file(system_path);
  if (!is_readable(file.number(), reason)) return nullptr;
  std::array<char, 512> head;
  const ssize_t size = pread(file.number(), head.data(), head.size(), 0);
  if (size < 0) {
    reason = error_text(errno);
    return nullptr;
  }
  Parse parse;
  parse.encoding = sniff({head.data(), static_cast<std::size_t>(size)});
  parse.file = file.number();
  xmlInitParser();
  return run(parse,
             allocated(xmlParserInputBufferCreateIO(read_file, nullptr, &parse, XML_CHAR_ENCODING_NONE)),
             reason);
}

Tree* parse_text(const char* text, std::string& reason) {
  std::string_view view(text);
  if (view.starts_with("\xEF\xBB\xBF")) view.remove_prefix(3);
  if (view.size() > kMaxDocumentBytes) {
    reason = "the text is larger than 128 MiB";
    return nullptr;
  }
  if (!utf8::is_valid(view)) {
    reason = "not valid UTF-8";
    return nullptr;
  }
  Parse parse;
  parse.encoding.declared = declared_encoding(view.substr(0, 512));
  xmlInitParser();
  return run(parse,
             allocated(xmlParserInputBufferCreateStatic(view.data(), static_cast<int>(view.size()),
                                                        XML_CHAR_ENCODING_NONE)),
             reason);
}

}  // namespace orx::platform::dom
