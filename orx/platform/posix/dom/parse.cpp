#include <orx/platform/posix/dom/parse.h>

#include <orx/platform/dom_rules.h>
#include <orx/platform/posix/dom/host.h>
#include <orx/platform/posix/dom/source.h>

#include <libxml/SAX2.h>
#include <libxml/dict.h>
#include <libxml/parser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <utility>

namespace orx::platform::dom {
namespace {

// The bytes that attribute defaults may take in a whole document. A few bytes of defaults in a DOCTYPE can
// add a value to each of millions of elements.
constexpr std::size_t kMaxDefaultedBytes = std::size_t{64} << 20;

// Bounds the declarations of a DOCTYPE. For each declared attribute, libxml2 walks the list of the element's
// declared attributes. It frees the list of an attribute's values recursively, and the thread may have a
// small stack.
constexpr std::size_t kMaxDoctypeBytes = std::size_t{16} << 10;

// The pointers that libxml2 passes for an attribute and for a namespace declaration.
constexpr int kPointersPerAttribute = 5;
constexpr int kPointersPerNamespace = 2;

// Sizes of libxml2's arrays above which a start tag has too many attributes or namespaces. libxml2 compares
// all attributes of a start tag with one another before it reports the tag, which takes too long for a
// million attributes. But it reads more bytes before that, and read_more checks the arrays. The array of
// attributes may have twice the size that is needed, since libxml2 doubles it.
constexpr int kMaxAttributePointers = 2 * kPointersPerAttribute * (kMaxAttributes + 1);
constexpr int kMaxNamespacePointers = kPointersPerNamespace * kMaxNamespaces;

// The parsed bytes that may stay in libxml2's buffer. libxml2 refuses a tag when the buffer exceeds 10 MB. It
// removes parsed bytes only when a read happens to end exactly after a tag, so drop_parsed removes them.
constexpr std::ptrdiff_t kMaxParsedBytes = std::ptrdiff_t{32} << 10;

// xmlParserCtxt::standalone of a document without an XML declaration.
constexpr int kNoDeclaration = -1;

constexpr const char* kUnsupportedDefault = "it declares an attribute default that is not supported";

// libxml2 does not free the document of a context with the context.
struct ContextDeleter {
  void operator()(xmlParserCtxt* context) const noexcept {
    const DocPointer doc(context->myDoc);
    xmlFreeParserCtxt(context);
  }
};
using ContextPointer = std::unique_ptr<xmlParserCtxt, ContextDeleter>;

// The state of one parse that libxml2 does not keep. Nothing in it allocates during the parse, since no
// exception may pass through libxml2.
struct Parse {
  Source source;
  const xmlParserCtxt* context = nullptr;
  HostSettingsGuard* host = nullptr;

  std::array<bool, kMaxDepth + 1> keeps_space{};  // for each level of open elements; 0 is the document
  bool has_lines = false;                         // white space with a line feed was dropped
  std::size_t defaulted_bytes = 0;                // of attribute defaults
  int text_bytes = 0;                             // of the current text
  std::size_t nodes = 0;                          // elements and attributes

  const char* refusal = nullptr;  // the limit or rule that stopped the parse

  // The first error of the highest level that libxml2 reported.
  xmlErrorLevel level = XML_ERR_NONE;
  int line = 0;
  int column = 0;
  std::array<char, 300> message{};
};

Parse& parse_of(void* context) {
  return *static_cast<Parse*>(static_cast<xmlParserCtxt*>(context)->_private);
}

// Stops the parse, with the reason.
void refuse(void* context, const char* why) {
  parse_of(context).refusal = why;
  xmlStopParser(static_cast<xmlParserCtxt*>(context));
}

void on_error(void* context, xmlError* error) {
  Parse& parse = parse_of(context);
  HostSettingsGuard::OnError(parse.host, error);
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

// Refuses two kinds of defaults: a namespace declaration, which would be in scope in each of millions of
// elements, and a value that libxml2 would not write as it was read.
void on_attribute_declaration(void* context, const xmlChar* element, const xmlChar* name, int type, int kind,
                              const xmlChar* value, xmlEnumeration* values) {
  const bool is_namespace = std::strncmp(as_text(name), "xmlns", 5) == 0;
  if (value != nullptr && (is_namespace || std::strpbrk(as_text(value), "<\t\r\n") != nullptr)) {
    xmlFreeEnumeration(values);
    return refuse(context, kUnsupportedDefault);
  }
  xmlSAX2AttributeDecl(context, element, name, type, kind, value, values);
  // The value is not valid for its type. libxml2 has dropped it, and would write a declaration without it.
  if (static_cast<xmlParserCtxt*>(context)->vctxt.valid == 0) refuse(context, kUnsupportedDefault);
}

// The number of open elements.
std::size_t level_of(const void* context) {
  return static_cast<std::size_t>(static_cast<const xmlParserCtxt*>(context)->nodeNr);
}

// libxml2 calls this for each piece of a text. It would report a text that is too long as out of memory.
void on_text(void* context, const xmlChar* text, int size) {
  int& bytes = parse_of(context).text_bytes;
  if (size > XML_MAX_TEXT_LENGTH - bytes) return refuse(context, "a text is larger than 10 MB");
  bytes += size;
  xmlSAX2Characters(context, text, size);
}

// Drops the last node if it is only white space between nodes. Each handler calls this before it adds the
// next node, which shows that the text is complete. That way the next node reuses the memory, and no second
// pass over the tree is needed.
void drop_blank(void* context) {
  parse_of(context).text_bytes = 0;
  xmlNode* parent = static_cast<xmlParserCtxt*>(context)->node;
  xmlNode* node = parent != nullptr ? parent->last : nullptr;
  if (node == nullptr || node->type != XML_TEXT_NODE) return;
  if (!is_blank(as_text(node->content)) || parse_of(context).keeps_space[level_of(context)]) return;
  parse_of(context).has_lines |= std::strchr(as_text(node->content), '\n') != nullptr;
  xmlUnlinkNode(node);
  xmlFreeNode(node);
}

void drop_parsed(void* context) {
  xmlParserInput* input = static_cast<xmlParserCtxt*>(context)->input;
  if (input->cur - input->base > kMaxParsedBytes) xmlParserInputShrink(input);
}

// An attribute of a start tag. libxml2 passes it as five pointers; the value is between the last two.
struct Attribute {
  explicit Attribute(const xmlChar* const* pointers)
      : name(pointers[0]), prefix(pointers[1]), begin(pointers[3]), end(pointers[4]) {}

  const xmlChar* name;
  const xmlChar* prefix;
  const xmlChar* begin;
  const xmlChar* end;

  std::string_view value() const { return {as_text(begin), static_cast<std::size_t>(end - begin)}; }
  bool IsXmlSpace(std::string_view setting) const {
    if (prefix == nullptr || !xmlStrEqual(prefix, as_xml("xml"))) return false;
    return xmlStrEqual(name, as_xml("space")) && value() == setting;
  }
};

// Checks the limits before libxml2 makes the nodes. The last `defaulted` attributes come from the DOCTYPE.
void on_start_element(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespaces, const xmlChar** namespace_table, int attributes, int defaulted,
                      const xmlChar** attribute_table) {
  drop_blank(context);
  Parse& parse = parse_of(context);
  const std::size_t level = level_of(context) + 1;
  if (level > kMaxDepth) return refuse(context, kTooDeep);
  if (attributes > kMaxAttributes) return refuse(context, kTooManyAttributes);
  if (parse.context->nsNr > kMaxNamespacePointers) return refuse(context, kTooManyNamespaces);
  parse.nodes += 1 + static_cast<std::size_t>(attributes);
  if (parse.nodes > kMaxNodes) return refuse(context, kTooManyNodes);
  parse.keeps_space[level] = parse.keeps_space[level - 1];
  for (int i = 0; i < namespaces; ++i) {
    const xmlChar* namespace_name = namespace_table[kPointersPerNamespace * i + 1];  // after its prefix
    if (!is_supported_namespace(as_text(namespace_name))) return refuse(context, kUnsupportedNamespace);
  }
  for (int i = 0; i < attributes; ++i) {
    const Attribute attribute(attribute_table + kPointersPerAttribute * i);
    if (attribute.IsXmlSpace("preserve")) parse.keeps_space[level] = true;
    if (attribute.IsXmlSpace("default")) parse.keeps_space[level] = false;
    if (i >= attributes - defaulted) parse.defaulted_bytes += attribute.value().size() + sizeof(xmlAttr);
  }
  if (parse.defaulted_bytes > kMaxDefaultedBytes)
    return refuse(context, "its attribute defaults are too large");
  xmlSAX2StartElementNs(context, name, prefix, uri, namespaces, namespace_table, attributes, defaulted,
                        attribute_table);
  drop_parsed(context);
}

void on_end_element(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri) {
  drop_blank(context);
  xmlSAX2EndElementNs(context, name, prefix, uri);
  drop_parsed(context);
}

void on_comment(void* context, const xmlChar* text) {
  drop_blank(context);
  xmlSAX2Comment(context, text);
}

void on_instruction(void* context, const xmlChar* target, const xmlChar* data) {
  drop_blank(context);
  xmlSAX2ProcessingInstruction(context, target, data);
  drop_parsed(context);
}

// Makes the section itself. libxml2 would join it with a section directly before it. But two sections in a
// row are how "]]>" is written, and a section that contains "]]>" could not be written again.
void on_cdata(void* context, const xmlChar* text, int size) {
  drop_blank(context);
  auto* parser = static_cast<xmlParserCtxt*>(context);
  xmlNode* section = xmlNewCDataBlock(parser->myDoc, text, size);
  if (xmlAddChild(parser->node, section) == nullptr) xmlFreeNode(section);
}

void on_reference(void* context, const xmlChar* name) {
  drop_blank(context);
  xmlSAX2Reference(context, name);
}

// libxml2 calls this when it needs more bytes, also within a start tag or a DOCTYPE.
int read_more(void* context, char* buffer, int size) {
  Parse& parse = *static_cast<Parse*>(context);
  if (parse.context->maxatts > kMaxAttributePointers) {
    parse.refusal = kTooManyAttributes;
  } else if (parse.context->nsNr > kMaxNamespacePointers) {
    parse.refusal = kTooManyNamespaces;
  } else if (parse.context->inSubset != 0 && parse.source.bytes_read() > kMaxDoctypeBytes) {
    parse.refusal = "its DOCTYPE is too large";
  }
  return parse.refusal == nullptr ? parse.source.Read(buffer, size) : -1;
}

std::string parser_reason(const Parse& parse) {
  std::string message(parse.message.data());
  while (!utf8::is_valid(message)) message.pop_back();  // it may be cut, or quote invalid bytes
  message.erase(message.find_last_not_of(" \n") + 1);
  std::replace(message.begin(), message.end(), '\n', ' ');
  return "not well-formed at line " + std::to_string(parse.line) + ", column " +
         std::to_string(parse.column) + ": " + message;
}

bool is_accepted(const xmlParserCtxt& context, const Parse& parse, std::string& reason) {
  if (parse.refusal != nullptr) {
    reason = parse.refusal;
  } else if (parse.source.problem() != nullptr) {
    reason = parse.source.problem();
  } else if (!context.wellFormed || context.disableSAX != 0 || context.myDoc == nullptr) {
    reason = parser_reason(parse);
  } else if (!parse.source.is_valid()) {
    reason = "not valid UTF-8";
  } else {
    return true;
  }
  return false;
}

// Connects the source with the parser. The bytes are always UTF-8, whatever the declaration says.
void attach_source(xmlParserCtxt& context, Parse& parse) {
  xmlParserInputBuffer* buffer =
      throw_if_null(xmlParserInputBufferCreateIO(read_more, nullptr, &parse, XML_CHAR_ENCODING_NONE));
  xmlParserInput* input = xmlNewIOInputStream(&context, buffer, XML_CHAR_ENCODING_NONE);
  if (input == nullptr) xmlFreeParserInputBuffer(buffer);
  if (inputPush(&context, throw_if_null(input)) >= 0) return;
  xmlFreeInputStream(input);
  throw std::bad_alloc();
}

void set_handlers(xmlSAXHandler& handler) {
  handler.serror = on_error;
  handler.entityDecl = on_entity;
  handler.unparsedEntityDecl = on_unparsed_entity;
  handler.attributeDecl = on_attribute_declaration;
  handler.startElementNs = on_start_element;
  handler.endElementNs = on_end_element;
  handler.characters = on_text;
  handler.ignorableWhitespace = on_text;
  handler.comment = on_comment;
  handler.processingInstruction = on_instruction;
  handler.cdataBlock = on_cdata;
  handler.reference = on_reference;
}

Tree* parse_source(Parse& parse, std::string& reason) {
  HostSettingsGuard host;
  const ContextPointer context(throw_if_null(xmlNewParserCtxt()));
  xmlCtxtUseOptions(context.get(), XML_PARSE_NONET | XML_PARSE_COMPACT | XML_PARSE_IGNORE_ENC);
  xmlDictSetLimit(context->dict, 0);  // no limit: the size of the document bounds its names
  context->_private = &parse;
  parse.context = context.get();
  parse.host = &host;
  set_handlers(*context->sax);
  attach_source(*context, parse);
  xmlParseDocument(context.get());

  host.CheckMemory();
  if (!is_accepted(*context, parse, reason)) return nullptr;
  Tree* tree = new Tree(DocPointer(std::exchange(context->myDoc, nullptr)));
  tree->has_declaration = context->standalone != kNoDeclaration;
  tree->is_indented = parse.has_lines;
  return tree;
}

}  // namespace

Tree* parse_file(const char* path, std::string& reason) {
  Parse parse;
  return parse.source.OpenFile(path, reason) ? parse_source(parse, reason) : nullptr;
}

Tree* parse_text(std::string_view text, std::string& reason) {
  Parse parse;
  return parse.source.OpenText(text, reason) ? parse_source(parse, reason) : nullptr;
}

}  // namespace orx::platform::dom
