#include <orx/xml/xml_document.h>

#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/support/environment.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

const std::string kDeclaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

class XmlDocument : public ::testing::Test {
 protected:
  void Parse(const char* text) {
    ASSERT_EQ(document.SetXMLText(root.Out(), text), 1) << failure_of(document);
  }

  // The names of the remaining nodes of a list.
  std::string Walk(IXMLDOMNodeList* list) {
    std::string names, name;
    NodeRef node;
    for (; document.NextXMLNode(list, node.Out()); names += name + ' ')
      EXPECT_EQ(document.GetXMLName(node, name), 1);
    EXPECT_TRUE(node == nullptr && !document.NextXMLNode(list, node.Out())) << "the list stays at its end";
    return names;
  }

  COrxXMLDoc document;
  Element root;
};

TEST_F(XmlDocument, BuiltDocumentIsIndentedSavedAndLoaded) {
  const TempFolder folder;
  Element child;
  const wchar_t* value = L"\x20AC <&\"'> \r\n\t";
  ASSERT_EQ(document.CreateXMLDocument(root.Out(), "R"), 1);
  EXPECT_EQ(text_of(document), "<R/>\n");
  ASSERT_TRUE(document.CreateXMLElement(root, "P", child.Out()) &&
              set_attribute(document, child, "A", value));
  ASSERT_TRUE(document.CreateXMLElement(root, "Q", child.Out()) && document.IndentXMLDocument());
  EXPECT_EQ(document.CreateXMLElement(root, "late", child.Out()), 1)
      << "an old node belongs to the old content";
  const std::string text =
      kDeclaration + "<R>\n\t<P A=\"\u20AC &lt;&amp;&quot;'&gt; &#13;&#10;&#9;\"/>\n\t<Q/>\n</R>\n";
  EXPECT_EQ(text_of(document), text);

  document.SetFileName((" \t\v" + folder.suite_path("a.xml") + "\f\r\n").c_str());
  ASSERT_EQ(document.SaveXMLFile(), 1) << failure_of(document);
  EXPECT_EQ(read_file(folder.path("a.xml")), text);
  ASSERT_EQ(document.LoadXMLDocument(root.Out()), 1);
  EXPECT_EQ(text_of(document), text) << "a document that was loaded with lines is written with lines";
  NodeRef node;
  VARIANT read;
  ASSERT_EQ(document.SelectSingleXMLNode("//P", node.Out()), 1);
  ASSERT_TRUE(document.GetXMLAttribute(node, "A", &read) && read.vt == VT_BSTR);
  EXPECT_STREQ(read.bstrVal, value);
  VariantClear(&read);

  EXPECT_FALSE(document.SetXMLText(root.Out(), "<a>") || document.SaveXMLFile());
  EXPECT_EQ(failure_of(document), "the document is empty");
  EXPECT_EQ(read_file(folder.path("a.xml")), text);
}

TEST_F(XmlDocument, IndentKeepsMixedContentAndIsSeenByCopies) {
  Parse(
      "<?xml version='1.1'?><a><b>x <c/></b><d xml:space='preserve'> </d><!--e-->"
      "<f><![CDATA[]]]]><![CDATA[>]]></f></a>");
  COrxXMLDoc copy, &same = document;
  document = same;
  copy = document;
  for (int i = 0; i < 2; ++i) {  // the second time changes nothing
    ASSERT_EQ(document.IndentXMLDocument(), 1);
    EXPECT_EQ(text_of(copy), kDeclaration +
                                 "<a>\n\t<b>x <c/></b>\n\t<d xml:space=\"preserve\"> </d>\n"
                                 "\t<!--e-->\n\t<f><![CDATA[]]]]><![CDATA[>]]></f>\n</a>\n")
        << "copies share the document";
  }
}

TEST_F(XmlDocument, NodesStayReadableAfterRemovalAndClose) {
  Parse("<a><b i='1'><c>x</c></b><b i='2'/></a>");
  wchar_t replacement[] = L" y ";
  std::vector<NodeRef> removed(100);
  ListRef list, children;
  NodeRef b, text;
  ASSERT_EQ(document.SelectSingleXMLNode("//b", b.Out()), 1);
  for (NodeRef& each : removed) {
    ASSERT_EQ(document.SelectSingleXMLNode("//text()", each.Out()), 1);
    ASSERT_EQ(document.SetXMLValue(b, replacement), 1);
  }
  ASSERT_TRUE(document.SelectXMLNodes(root, "//b", list.Out()) && document.NextXMLNode(list, b.Out()));
  ASSERT_TRUE(document.GetXMLChildNodes(b, children.Out()) && document.NextXMLNode(children, text.Out()));
  ASSERT_EQ(document.SetXMLValue(b, replacement), 1);
  EXPECT_EQ(text_of(document), "<a><b i=\"1\"> y </b><b i=\"2\"/></a>\n");
  ASSERT_EQ(document.SetXMLValue(root, nullptr), 1);
  EXPECT_EQ(text_of(document), "<a/>\n");
  document.CloseXMLDocument();

  CStringA name, value;
  for (const NodeRef& each : removed) EXPECT_TRUE(document.GetXMLName(each, name) && name == "#text");
  EXPECT_TRUE(document.GetXMLValue(b, value) && value == "y") << "without blanks at both ends";
  EXPECT_EQ(Walk(children), "") << "the child that was returned last has been removed";
  EXPECT_EQ(document.NextXMLNode(list, b.Out()), 1) << "a selection keeps its nodes";
  EXPECT_TRUE(document.GetXMLAttribute(b, "i", value) && value == "2");
}

TEST_F(XmlDocument, RemovedNodesKeepTheirNamesAndLoseTheirIds) {
  Parse("<r><a xmlns:p='u'><p:b/></a><c xml:id='i'/></r>");
  NodeRef a, b, id, found;
  ASSERT_EQ(document.SelectSingleXMLNode("//a", a.Out()), 1);
  ASSERT_EQ(document.SelectSingleXMLNode(a, "*", b.Out()), 1);
  ASSERT_EQ(document.SelectSingleXMLNode("//c/@xml:id", id.Out()), 1);
  wchar_t text[] = L"y";
  ASSERT_EQ(document.SetXMLValue(a, text) + document.SetXMLValue(id, text), 2);
  a.Out();
  id.Out();
  ASSERT_EQ(document.SetXMLValue(root, text), 1);
  CStringA name;
  EXPECT_TRUE(document.GetXMLName(b, name) && name == "p:b");
  EXPECT_TRUE(document.SelectSingleXMLNode("id('i')", found.Out()) && found == nullptr);
}

TEST_F(XmlDocument, QueriesFindNodesByNameAndByPath) {
  Parse("<r xmlns:p='u'><x n='1'><y/></x><p:x/><d xmlns='v'><x/></d><y/>t<!--c--></r>");
  const char* const cases[][2] = {
      {"//x", "x x "},  // without a prefix, also in a default namespace
      {"y", "y "},
      {"r", ""},  // children only
      {"x/y", "y "},
      {"//p:x", "p:x "},
      {"//y | //x/@n", "n y y "},
      {"node()", "x p:x d y #text #comment "},
      {"namespace::*", ""},
  };
  for (const auto& [query, names] : cases) {
    ListRef list;
    EXPECT_EQ(document.SelectXMLNodes(root, query, list.Out()), 1) << query << ": " << failure_of(document);
    EXPECT_EQ(Walk(list), names) << query;
  }
  NodeRef node;
  for (const char* bad :
       {"", "//", "x[", "count(x)", "q:x", "\xFF", "//a\xC3", "a\224b", "x[. = '\uFFFE']"}) {
    EXPECT_EQ(document.SelectSingleXMLNode(bad, node.Out()), 0) << bad;
    EXPECT_NE(failure_of(document), "") << bad;
  }
  EXPECT_TRUE(document.SelectSingleXMLNode("//z", node.Out()) && node == nullptr);
}

TEST_F(XmlDocument, ChildListsFollowChangesAndSelectionsDoNot) {
  Parse("<r><x/></r>");
  ListRef live, found;
  Element added;
  ASSERT_TRUE(document.GetXMLChildNodes(root, live.Out()) && document.SelectXMLNodes(root, "x", found.Out()));
  ASSERT_EQ(document.CreateXMLElement(root, "x", added.Out()), 1);
  EXPECT_EQ(Walk(live), "x x ");
  EXPECT_EQ(Walk(found), "x ");
  EXPECT_TRUE(document.HasChildNodes(root) && !document.HasChildNodes(added));
}

TEST_F(XmlDocument, AttributesAreReadWrittenAndRefused) {
  Parse("<r a='1' xmlns:p='u' p:a='2' e=''/>");
  const std::tuple<const char*, int, const char*> reads[] = {
      {"a", 1, "1"},       {"p:a", 1, "2"}, {"e", 1, ""},
      {"xmlns:p", 1, "u"}, {"A", 0, ""},    {"a b", 0, "kept"}};  // a missing attribute, an invalid name
  for (const auto& [name, result, expected] : reads) {
    CStringA text = "kept";
    EXPECT_EQ(document.GetXMLAttribute(root, name, text), result) << name;
    EXPECT_EQ(text, expected) << name;
  }
  VARIANT value{};
  EXPECT_TRUE(document.GetXMLAttribute(root, "A", &value) && value.vt == VT_NULL);

  value.vt = VT_R8;
  value.dblVal = 0.1;
  ASSERT_EQ(document.SetXMLAttribute(root, "a", value), 1);
  ASSERT_EQ(set_attribute(document, root, "p:a", L"\u00FC") + set_attribute(document, root, "n", L""), 2);
  const std::string written = "<r xmlns:p=\"u\" a=\"0.1\" p:a=\"\u00FC\" e=\"\" n=\"\"/>\n";
  EXPECT_EQ(text_of(document), written);
  value.vt = VT_DISPATCH;
  EXPECT_EQ(document.SetXMLAttribute(root, "a", value), 0);
  for (const auto& [name, text] : {std::pair("a", L"\x01"),
                                   {"a", L"\xD800"},
                                   {"a", L"\xFFFE"},
                                   {"a", L"\xFFFF"},
                                   {"1a", L""},
                                   {"a\xC3", L""},
                                   {"a\224b", L""},
                                   {"xmlns:p", L"other"},
                                   {"xmlns:q", L""},
                                   {"xmlns:q", L"a&b"},
                                   {"xmlns:xml", L"q"}})
    EXPECT_EQ(set_attribute(document, root, name, text), 0) << name;
  EXPECT_EQ(text_of(document), written) << "a refused value changes nothing";
}

TEST_F(XmlDocument, ValueIsTextOfElementAndDescendants) {
  Parse("<a> \n1 <b> 2 <!--c--> </b><![CDATA[ 3 ]]></a>");
  std::string text;
  VARIANT value{};
  NodeRef comment;
  EXPECT_EQ(document.GetXMLValue(root, text), 1);
  EXPECT_TRUE(document.GetXMLValue(root, &value) && value.vt == VT_NULL);
  ASSERT_EQ(document.SelectSingleXMLNode("//comment()", comment.Out()), 1);
  EXPECT_EQ(document.GetXMLValue(comment, text), 0);
  EXPECT_EQ(text, "1  2  3 ") << "a comment has no value, and leaves the text unchanged";
  Parse("<a xml:space='preserve'> 1 </a>");
  EXPECT_TRUE(document.GetXMLValue(root, text) && text == " 1 ");
  wchar_t dashes[] = L"a--b";
  EXPECT_EQ(document.SetXMLValue(comment, dashes), 0) << "the text would end the comment";
  wchar_t line_end[] = L"a\r\n";
  EXPECT_EQ(document.SetXMLValue(comment, line_end), 0) << "a parser would change the carriage return";
}

TEST_F(XmlDocument, MissingDocumentOrArgumentIsFailureWithReason) {
  std::string text;
  IXMLDOMNode* node = nullptr;
  IXMLDOMElement* element = nullptr;
  errno = 42;
  for (const int result :
       {document.GetXMLText(text), document.SaveXMLFile(), document.IndentXMLDocument(),
        document.SelectSingleXMLNode("//a", &node), document.CreateXMLElement(nullptr, "a", &element),
        document.LoadXMLDocument(nullptr), document.GetXMLName(element, text),
        document.GetXMLValue(node, text), document.SetXMLValue(nullptr, nullptr),
        document.GetXMLAttribute(element, nullptr, text), document.SetXMLAttribute(element, "a", VARIANT{}),
        document.SelectXMLNodes(node, "a", nullptr), document.GetXMLChildNodes(node, nullptr),
        document.NextXMLNode(nullptr, &node), document.HasChildNodes(nullptr),
        document.CreateXMLDocument(&element, nullptr), document.CreateXMLDocument(&element, "1")})
    EXPECT_EQ(result, 0);
  EXPECT_EQ(errno, 42);
  EXPECT_EQ(failure_of(document), "\"1\" is not a valid XML name");
}

void close_document(void* document) { delete static_cast<COrxXMLDoc*>(document); }

pthread_key_t closed_with_thread;

void* use_documents(void* failures) {
  auto* document = new COrxXMLDoc;
  Element root;
  NodeRef node;
  EXPECT_EQ(document->SetXMLText(root.Out(), "<a><b/></a>"), 1);
  EXPECT_EQ(document->SelectSingleXMLNode("//b[not(../c)]", node.Out()), 1) << failure_of(*document);
  const std::pair<const char*, const char*> shapes[] = {
      {"(", ")"}, {"not(", ")"}, {"b[", "]"}, {"b or ", ""}};
  for (const auto& [begin, end] : shapes) {
    std::string query = "b";
    for (int i = 0; i < 5000; ++i) query = begin + query + end;
    EXPECT_EQ(document->SelectSingleXMLNode(query.c_str(), node.Out()), 0) << begin;
    *static_cast<std::string*>(failures) += failure_of(*document).substr(query.size());
  }
  pthread_setspecific(closed_with_thread, document);
  return nullptr;
}

TEST(XmlThreads, QueriesFitSmallStacksAndDocumentsCloseAtThreadEnd) {
  constexpr std::size_t kStackBytes = std::size_t{256} << 10;
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, kStackBytes);
  pthread_key_create(&closed_with_thread, close_document);
  pthread_t threads[4];
  std::string failures[4];
  for (int i = 0; i < 4; ++i) pthread_create(&threads[i], &attributes, use_documents, &failures[i]);
  for (int i = 0; i < 4; ++i) {
    pthread_join(threads[i], nullptr);
    EXPECT_NE(failures[i].find("too long or nested too deep"), std::string::npos) << failures[i];
  }
  pthread_key_delete(closed_with_thread);
  pthread_attr_destroy(&attributes);
}

}  // namespace
