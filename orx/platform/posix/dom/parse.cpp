#include <orx/platform/posix/dom/parse.h>

#include <orx/platform/posix/dom/host.h>
#include <orx/platform/posix/dom/rules.h>
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

// A few bytes of attribute defaults in a DOCTYPE can stand for a value in each of millions of elements.
constexpr std::size_t kMaxDefaultedBytes = std::size_t{64} << 20;

// libxml2 walks the list of an element's declared attributes for each of them, and frees the list of an
// attribute's values recursively, which may happen in a thread with a small stack.
constexpr std::size_t kMaxDoctypeBytes = std::size_t{16} << 10;

// libxml2 compares the attributes and namespaces of a start tag before it reports them, but asks for more
// bytes before that. What it has by then shows that there are too many: of an attribute it keeps five
// pointers, in an array that grows to twice what it needs at a time, of a namespace two.
constexpr int kAttributePointers = 2 * 5 * (kMaxAttributes + 1);
constexpr int kNamespacePointers = 2 * kMaxNamespaces;

// libxml2 refuses a tag when that and what it has kept of the tags before take 10 MB, and lets go of those
// only where its reads happen to end right behind a tag.
constexpr std::ptrdiff_t kMostKeptBytes = std::ptrdiff_t{32} << 10;

constexpr const char* kUnsupportedDefault = "it declares an attribute default that is not supported";

// The document of a context that is freed belongs to nobody.
struct ContextDeleter {
  void operator()(xmlParserCtxt* context) const noexcept {
    const DocPointer doc(context->myDoc);
    xmlFreeParserCtxt(context);
  }
};
using ContextPointer = std::unique_ptr<xmlParserCtxt, ContextDeleter>;

// What the parse of one document knows beside libxml2: what it read, and what it found wrong first. Nothing
// in here allocates during the parse, since no exception may pass through libxml2.
struct Parse {
  Source source;
  const xmlParserCtxt* context = nullptr;
  HostAside* host = nullptr;

  std::array<bool, kMaxDepth + 1> keeps_space{};  // below the elements that are open, by their number
  bool has_lines = false;                         // white space that was dropped ended a line
  const char* refusal = nullptr;
  std::size_t defaulted_bytes = 0;
  int text_bytes = 0;  // of the text so far that the parser has come to
  std::size_t nodes = 0;
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
  HostAside::OnError(parse.host, error);
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

// Defaults that declare namespaces would do so in each of millions of elements, and some values are not
// written as they were read.
void on_attribute_declaration(void* context, const xmlChar* element, const xmlChar* name, int type, int kind,
                              const xmlChar* value, xmlEnumeration* values) {
  const bool is_namespace = std::strncmp(as_text(name), "xmlns", 5) == 0;
  if (value != nullptr && (is_namespace || std::strpbrk(as_text(value), "<\t\r\n") != nullptr)) {
    xmlFreeEnumeration(values);
    return refuse(context, kUnsupportedDefault);
  }
  xmlSAX2AttributeDecl(context, element, name, type, kind, value, values);
  // libxml2 has dropped the default, and would write a declaration without one.
  if (static_cast<xmlParserCtxt*>(context)->vctxt.valid == 0) refuse(context, kUnsupportedDefault);
}

std::size_t level_of(const void* context) {
  return static_cast<std::size_t>(static_cast<const xmlParserCtxt*>(context)->nodeNr);
}

// libxml2 would report a text that it finds too long as a lack of memory.
void on_text(void* context, const xmlChar* text, int size) {
  int& bytes = parse_of(context).text_bytes;
  if (size > XML_MAX_TEXT_LENGTH - bytes) return refuse(context, "a text is larger than 10 MB");
  bytes += size;
  xmlSAX2Characters(context, text, size);
}

// Drops white space that only separates nodes, as soon as the node behind it shows that it is complete: its
// memory then serves that node, and a second walk of the whole tree is spared.
void drop_blank(void* context) {
  parse_of(context).text_bytes = 0;
  xmlNode* parent = static_cast<xmlParserCtxt*>(context)->node;
  xmlNode* node = parent != nullptr ? parent->last : nullptr;
  if (node == nullptr || node->type != XML_TEXT_NODE || !is_blank(as_text(node->content)) ||
      parse_of(context).keeps_space[level_of(context)])
    return;
  parse_of(context).has_lines |= std::strchr(as_text(node->content), '\n') != nullptr;
  xmlUnlinkNode(node);
  xmlFreeNode(node);
}

void drop_parsed(void* context) {
  xmlParserInput* input = static_cast<xmlParserCtxt*>(context)->input;
  if (input->cur - input->base > kMostKeptBytes) xmlParserInputShrink(input);
}

// An attribute as libxml2 hands it on: five pointers, of which the last two enclose the value.
struct Attribute {
  const xmlChar* name;
  const xmlChar* prefix;
  const xmlChar* uri;
  const xmlChar* begin;
  const xmlChar* end;

  std::string_view value() const { return {as_text(begin), static_cast<std::size_t>(end - begin)}; }
  bool says_space(std::string_view what) const {
    return prefix != nullptr && xmlStrEqual(prefix, as_xml("xml")) && xmlStrEqual(name, as_xml("space")) &&
           value() == what;
  }
};

void on_start_element(void* context, const xmlChar* name, const xmlChar* prefix, const xmlChar* uri,
                      int namespaces, const xmlChar** namespace_table, int attributes, int defaulted,
                      const xmlChar** attribute_table) {
  drop_blank(context);
  Parse& parse = parse_of(context);
  const std::size_t level = level_of(context) + 1;
  if (level > kMaxDepth) return refuse(context, kTooDeep);
  if (attributes > kMaxAttributes) return refuse(context, kTooManyAttributes);
  if (parse.context->nsNr > kNamespacePointers) return refuse(context, kTooManyNamespaces);
  parse.nodes += 1 + static_cast<std::size_t>(attributes);
  if (parse.nodes > kMaxNodes) return refuse(context, kTooManyNodes);
  parse.keeps_space[level] = parse.keeps_space[level - 1];
  for (int i = 0; i < namespaces; ++i) {  // a prefix and a name each
    if (!is_supported_namespace(as_text(namespace_table[2 * i + 1])))
      return refuse(context, kUnsupportedNamespace);
  }
  for (int i = 0; i < attributes; ++i) {
    const xmlChar** at = attribute_table + 5 * i;
    const Attribute attribute{at[0], at[1], at[2], at[3], at[4]};
    if (attribute.says_space("preserve")) parse.keeps_space[level] = true;
    if (attribute.says_space("default")) parse.keeps_space[level] = false;
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

// Not by libxml2, which would join it to a section right before it: "]]>" is written as the end of one and
// the beginning of the next.
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

int read_more(void* context, char* buffer, int size) {
  Parse& parse = *static_cast<Parse*>(context);
  if (parse.context->maxatts > kAttributePointers) {
    parse.refusal = kTooManyAttributes;
  } else if (parse.context->nsNr > kNamespacePointers) {
    parse.refusal = kTooManyNamespaces;
  } else if (parse.context->inSubset != 0 && parse.source.bytes_read() > kMaxDoctypeBytes) {
    parse.refusal = "its DOCTYPE is too large";
  }
  return parse.refusal == nullptr ? parse.source.Read(buffer, size) : -1;
}

std::string parser_complaint(const Parse& parse) {
  std::string message(parse.message.data());
  while (!utf8::is_valid(message)) message.pop_back();  // it may be cut, or show what is not valid
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
    reason = parser_complaint(parse);
  } else if (!parse.source.is_valid()) {
    reason = "not valid UTF-8";
  } else {
    return true;
  }
  return false;
}

// What the source hands on is UTF-8, whatever the declaration says.
void attach_source(xmlParserCtxt& context, Parse& parse) {
  xmlParserInputBuffer* buffer =
      allocated(xmlParserInputBufferCreateIO(read_more, nullptr, &parse, XML_CHAR_ENCODING_NONE));
  xmlParserInput* input = xmlNewIOInputStream(&context, buffer, XML_CHAR_ENCODING_NONE);
  if (input == nullptr) xmlFreeParserInputBuffer(buffer);
  if (inputPush(&context, allocated(input)) >= 0) return;
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
  handler.characters = handler.ignorableWhitespace = on_text;
  handler.comment = on_comment;
  handler.processingInstruction = on_instruction;
  handler.cdataBlock = on_cdata;
  handler.reference = on_reference;
}

Tree* run(Parse& parse, std::string& reason) {
  HostAside host;
  const ContextPointer context(allocated(xmlNewParserCtxt()));
  xmlCtxtUseOptions(context.get(), XML_PARSE_NONET | XML_PARSE_COMPACT | XML_PARSE_IGNORE_ENC);
  xmlDictSetLimit(context->dict, 0);  // the limit of the document bounds its names
  context->_private = &parse;
  parse.context = context.get();
  parse.host = &host;
  set_handlers(*context->sax);
  attach_source(*context, parse);
  xmlParseDocument(context.get());

  host.CheckMemory();
  if (!is_accepted(*context, parse, reason)) return nullptr;
  Tree* tree = new Tree(DocPointer(std::exchange(context->myDoc, nullptr)));
  tree->declared = context->standalone != -1;
  tree->laid_out = parse.has_lines;
  return tree;
}

}  // namespace

Tree* parse_file(const char* path, std::string& reason) {
  Parse parse;
  return parse.source.OpenFile(path, reason) ? run(parse, reason) : nullptr;
}

Tree* parse_text(std::string_view text, std::string& reason) {
  Parse parse;
  return parse.source.OpenText(text, reason) ? run(parse, reason) : nullptr;
}

}  // namespace orx::platform::dom
