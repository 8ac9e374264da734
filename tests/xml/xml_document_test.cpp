#include <orx/xml/xml_document.h>

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/support/temp_folder.h"
#include "tests/support/xml.h"

namespace orx::testing {
namespace {

class XmlDocument : public ::testing::Test {
 protected:
  void Parse(const char* text) {
    ASSERT_EQ(document.SetXMLText(root.Out(), text), 1) << failure_of(document);
  }

  std::vector<std::string> Walk(IXMLDOMNodeList* list) {
    std::vector<std::string> names;
    NodeRef node;
    while (document.NextXMLNode(list, node.Out())) {
      names.emplace_back();
      EXPECT_EQ(document.GetXMLName(node, names.back()), 1);
    }
    EXPECT_EQ(node, nullptr);
    EXPECT_EQ(document.NextXMLNode(list, node.Out()), 0) << "the end stays the end";
    return names;
  }

  std::vector<std::string> Found(const char* query) {
    ListRef list;
    EXPECT_EQ(document.SelectXMLNodes(root, query, list.Out()), 1) << query << ": " << failure_of(document);
    return Walk(list);
  }

  int SetAttribute(IXMLDOMElement* element, const char* name, const wchar_t* text) {
    VARIANT value{};
    value.vt = VT_BSTR;
    value.bstrVal = SysAllocString(text);
    const int result = document.SetXMLAttribute(element, name, value);
    VariantClear(&value);
    return result;
  }

  COrxXMLDoc document;
  Element root;
};

using Names = std::vector<std::string>;

TEST_F(XmlDocument, FileNameLosesWhiteSpaceAround) {
  document.SetFileName(" \t\v a b.xml\f\r\n");
  EXPECT_STREQ(document.GetFileName(), "a b.xml");
  document.SetFileName(document.GetFileName() + 2);
  EXPECT_STREQ(document.GetFileName(), "b.xml");
  document.SetFileName(nullptr);
  EXPECT_STREQ(document.GetFileName(), "");
}

TEST_F(XmlDocument, IsBuiltIndentedSavedAndRead) {
  const TempFolder folder;
  Element child;
  const wchar_t* value = L"\x20AC <&\"'> \r\n\t";
  ASSERT_EQ(document.CreateXMLDocument(root.Out(), "R"), 1);
  EXPECT_EQ(text_of(document), "<R/>\n");
  ASSERT_EQ(document.CreateXMLElement(root, "P", child.Out()), 1);
  ASSERT_EQ(SetAttribute(child, "A", value), 1);
  ASSERT_EQ(document.CreateXMLElement(root, "Q", child.Out()), 1);
  ASSERT_EQ(document.IndentXMLDocument(), 1);
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<R>\n"
      "\t<P A=\"\u20AC &lt;&amp;&quot;'&gt; &#13;&#10;&#9;\"/>\n\t<Q/>\n</R>\n";
  EXPECT_EQ(text_of(document), text);

  // The old nodes belong to the old content.
  ASSERT_EQ(document.CreateXMLElement(root, "late", child.Out()), 1);
  EXPECT_EQ(text_of(document), text);

  document.SetFileName(folder.suite_path("a.xml").c_str());
  ASSERT_EQ(document.SaveXMLFile(), 1) << failure_of(document);
  EXPECT_EQ(read_file(folder.path("a.xml")), text);
  ASSERT_EQ(document.LoadXMLDocument(root.Out()), 1);
  NodeRef node;
  ASSERT_EQ(document.SelectSingleXMLNode("//P", node.Out()), 1);
  VARIANT read;
  VariantInit(&read);
  ASSERT_EQ(document.GetXMLAttribute(node, "A", &read), 1);
  ASSERT_EQ(read.vt, VT_BSTR);
  EXPECT_STREQ(read.bstrVal, value);
  VariantClear(&read);
  EXPECT_EQ(text_of(document), text) << "a document that came in lines goes out in lines";
}

TEST_F(XmlDocument, IndentingKeepsMixedContentAndTheTextOfOtherDocuments) {
  Parse("<a><b>x <c/></b><d xml:space='preserve'> </d><!--e--></a>");
  COrxXMLDoc copy, &same = copy;
  copy = document;
  copy = same;
  ASSERT_EQ(document.IndentXMLDocument(), 1);
  ASSERT_EQ(document.IndentXMLDocument(), 1) << "twice is once";
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<a>\n\t<b>x <c/></b>\n\t<d xml:space=\"preserve\"> </d>\n\t<!--e-->\n</a>\n";
  EXPECT_EQ(text_of(document), text);
  copy = *&copy;
  EXPECT_EQ(text_of(copy), text) << "copies share the document";
}

TEST_F(XmlDocument, NodesOutliveTheirDocumentAndTheirPlaceInIt) {
  Parse("<a><b i='1'>x<c/></b><b i='2'/></a>");
  ListRef list, children;
  NodeRef b, text, c;
  ASSERT_EQ(document.SelectXMLNodes(root, "//b", list.Out()), 1);
  ASSERT_EQ(document.NextXMLNode(list, b.Out()), 1);
  ASSERT_EQ(document.GetXMLChildNodes(b, children.Out()), 1);
  ASSERT_EQ(document.NextXMLNode(children, text.Out()), 1);
  ASSERT_EQ(document.SelectSingleXMLNode(b, "c", c.Out()), 1);
  wchar_t replacement[] = L" y ";
  ASSERT_EQ(document.SetXMLValue(b, replacement), 1);
  EXPECT_EQ(text_of(document), "<a><b i=\"1\"> y </b><b i=\"2\"/></a>\n");
  ASSERT_EQ(document.SetXMLValue(root, nullptr), 1);
  EXPECT_EQ(text_of(document), "<a/>\n");
  document.CloseXMLDocument();

  CStringA name, value;
  EXPECT_EQ(document.GetXMLName(c, name), 1);
  EXPECT_EQ(name, "c");
  EXPECT_EQ(document.GetXMLName(text, name), 1);
  EXPECT_EQ(name, "#text");
  EXPECT_EQ(document.GetXMLValue(b, value), 1);
  EXPECT_EQ(value, "y") << "without the blanks at the ends";
  EXPECT_EQ(Walk(children), Names()) << "the child it stood on is gone";
  EXPECT_EQ(document.NextXMLNode(list, b.Out()), 1) << "what was found stays found";
  EXPECT_EQ(document.GetXMLAttribute(b, "i", value), 1);
  EXPECT_EQ(value, "2");
}

TEST_F(XmlDocument, NodesThatAreCutOutKeepTheirNamesAndNoId) {
  Parse("<r><a xmlns:p='u'><p:b/></a><c xml:id='i'/></r>");
  NodeRef a, b, id, found;
  ASSERT_EQ(document.SelectSingleXMLNode("//a", a.Out()), 1);
  ASSERT_EQ(document.SelectSingleXMLNode(a, "*", b.Out()), 1);
  ASSERT_EQ(document.SelectSingleXMLNode("//c/@xml:id", id.Out()), 1);
  wchar_t text[] = L"y";
  for (IXMLDOMNode* node : {static_cast<IXMLDOMNode*>(a), static_cast<IXMLDOMNode*>(id)})
    ASSERT_EQ(document.SetXMLValue(node, text), 1);
  a.Reset();
  id.Reset();
  ASSERT_EQ(document.SetXMLValue(root, text), 1);
  CStringA name;
  EXPECT_EQ(document.GetXMLName(b, name), 1);
  EXPECT_STREQ(name, "p:b");
  EXPECT_EQ(document.SelectSingleXMLNode("id('i')", found.Out()), 1);
  EXPECT_EQ(found, nullptr);
}

TEST_F(XmlDocument, ALongLifeOfChangesLeavesNothingBehind) {
  Parse("<a b=''><c/></a>");
  NodeRef c;
  ASSERT_EQ(document.SelectSingleXMLNode("//c", c.Out()), 1);
  for (int i = 0; i < 1000; ++i) {
    ListRef children;
    NodeRef text;
    wchar_t value[] = {static_cast<wchar_t>(L'a' + i % 26), 0};
    ASSERT_EQ(document.SetXMLValue(c, value), 1);
    ASSERT_EQ(SetAttribute(root, "b", value), 1);
    ASSERT_EQ(document.GetXMLChildNodes(c, children.Out()), 1);
    ASSERT_EQ(document.NextXMLNode(children, text.Out()), 1);
  }
  EXPECT_EQ(text_of(document), "<a b=\"l\"><c>l</c></a>\n");
}

TEST_F(XmlDocument, QueriesFindElementsByNameAndByPath) {
  Parse("<r xmlns:p='u'><x n='1'><y/></x><p:x/><d xmlns='v'><x/></d><y/>t<!--c--></r>");
  const std::pair<const char*, Names> cases[] = {
      {"//x", {"x", "x"}},  // not the prefixed one, but the one in a default namespace
      {"//r", {"r"}},
      {"y", {"y"}},
      {"r", {}},  // children only
      {"//z", {}},
      {"x/y", {"y"}},
      {"//p:x", {"p:x"}},
      {"//@n", {"n"}},
      {"//y | //x/@n", {"n", "y", "y"}},
      {"node()", {"x", "p:x", "d", "y", "#text", "#comment"}},
      {"namespace::*", {}},
  };
  for (const auto& [query, names] : cases) EXPECT_EQ(Found(query), names) << query;
  for (const char* bad : {"", "//", "x[", "count(x)", "q:x", "\xFF"}) {
    NodeRef node;
    EXPECT_EQ(document.SelectSingleXMLNode(bad, node.Out()), 0) << bad;
    EXPECT_NE(failure_of(document), "") << bad;
  }
  NodeRef none;
  EXPECT_EQ(document.SelectSingleXMLNode("//z", none.Out()), 1);
  EXPECT_EQ(none, nullptr);
}

TEST_F(XmlDocument, ChildListsAreLiveAndSelectionsAreNot) {
  Parse("<r><x/></r>");
  ListRef live, found;
  Element added;
  ASSERT_EQ(document.GetXMLChildNodes(root, live.Out()), 1);
  ASSERT_EQ(document.SelectXMLNodes(root, "x", found.Out()), 1);
  ASSERT_EQ(document.CreateXMLElement(root, "x", added.Out()), 1);
  EXPECT_EQ(Walk(live), Names({"x", "x"}));
  EXPECT_EQ(Walk(found), Names({"x"}));
  EXPECT_EQ(document.HasChildNodes(root), 1);
  EXPECT_EQ(document.HasChildNodes(added), 0);
}

TEST_F(XmlDocument, AttributesAreReadAndWritten) {
  Parse("<r a='1' xmlns:p='u' p:a='2' e=''/>");
  CStringA text = "kept";
  for (const auto& [name, value] : {std::pair("a", "1"), {"p:a", "2"}, {"e", ""}, {"xmlns:p", "u"}}) {
    EXPECT_EQ(document.GetXMLAttribute(root, name, text), 1) << name;
    EXPECT_EQ(text, value) << name;
  }
  VARIANT value{};
  text = "kept";
  EXPECT_EQ(document.GetXMLAttribute(root, "a b", text), 0);
  EXPECT_EQ(text, "kept") << "no name of XML";
  EXPECT_EQ(document.GetXMLAttribute(root, "A", text), 0);
  EXPECT_EQ(text, "") << "missing";
  EXPECT_EQ(document.GetXMLAttribute(root, "A", &value), 1);
  EXPECT_EQ(value.vt, VT_NULL);

  ASSERT_EQ(SetAttribute(root, "p:a", L"\u00FC"), 1);
  ASSERT_EQ(SetAttribute(root, "n", L""), 1);
  value.vt = VT_R8;
  value.dblVal = 0.1;
  ASSERT_EQ(document.SetXMLAttribute(root, "a", value), 1);
  const std::string written = "<r xmlns:p=\"u\" a=\"0.1\" p:a=\"\u00FC\" e=\"\" n=\"\"/>\n";
  EXPECT_EQ(text_of(document), written);
  for (const VARTYPE type : {VT_NULL, VT_DISPATCH, VT_UNKNOWN, VT_RECORD, VT_ARRAY, VT_BYREF}) {
    value.vt = type == VT_BYREF ? VT_BYREF | VT_I4 : type;
    EXPECT_EQ(document.SetXMLAttribute(root, "a", value), 0) << type;
  }
  EXPECT_EQ(SetAttribute(root, "a", L"\x01"), 0);
  EXPECT_EQ(SetAttribute(root, "a", L"\xD800"), 0);
  EXPECT_EQ(SetAttribute(root, "1a", L""), 0);
  EXPECT_EQ(SetAttribute(root, "xmlns:p", L"other"), 0) << "would give the declaration twice";
  EXPECT_EQ(text_of(document), written) << "what is refused changes nothing";
}

TEST_F(XmlDocument, ValuesAreTextOfElements) {
  Parse("<a> \n1 <b> 2 <!--c--> </b><![CDATA[ 3 ]]></a>");
  std::string text;
  VARIANT value{};
  EXPECT_EQ(document.GetXMLValue(root, text), 1);
  EXPECT_EQ(text, "1  2  3 ");
  EXPECT_EQ(document.GetXMLValue(root, &value), 1);
  EXPECT_EQ(value.vt, VT_NULL);
  NodeRef comment;
  ASSERT_EQ(document.SelectSingleXMLNode("//comment()", comment.Out()), 1);
  EXPECT_EQ(document.GetXMLValue(comment, text), 0);
  EXPECT_EQ(text, "1  2  3 ") << "left as it was";
  wchar_t dashes[] = L"a--b";
  wchar_t control[] = L"\x1F";
  EXPECT_EQ(document.SetXMLValue(comment, dashes), 0) << "would end the comment";
  EXPECT_EQ(document.SetXMLValue(root, control), 0);
}

TEST_F(XmlDocument, WhatIsMissingIsAFailureWithAReason) {
  std::string text;
  IXMLDOMNode* node = nullptr;
  IXMLDOMNodeList* list = nullptr;
  IXMLDOMElement* element = nullptr;
  errno = 42;
  for (const int result :
       {document.GetXMLText(text), document.SaveXMLFile(), document.IndentXMLDocument(),
        document.SelectSingleXMLNode("//a", &node), document.CreateXMLElement(nullptr, "a", &element),
        document.LoadXMLDocument(nullptr), document.GetXMLName(element, text),
        document.GetXMLValue(node, text), document.SetXMLValue(nullptr, nullptr),
        document.GetXMLAttribute(element, nullptr, text), document.GetXMLAttribute(node, "a", text),
        document.SetXMLAttribute(element, "a", VARIANT{}), document.SelectXMLNodes(node, "a", &list),
        document.GetXMLChildNodes(node, nullptr), document.NextXMLNode(nullptr, &node),
        document.HasChildNodes(nullptr), document.CreateXMLDocument(&element, nullptr),
        document.CreateXMLDocument(&element, "1")}) {
    EXPECT_EQ(result, 0);
  }
  EXPECT_EQ(errno, 42);
  EXPECT_EQ(failure_of(document), "\"1\" is not a name of XML");
  EXPECT_EQ(document.CloseXMLDocument(), 1);
}

TEST_F(XmlDocument, AnEmptyDocumentIsNotSaved) {
  const TempFolder folder;
  write_file(folder.path("old.xml"), "old");
  document.SetFileName(folder.suite_path("old.xml").c_str());
  ASSERT_EQ(document.SetXMLText(root.Out(), "<a>"), 0);
  EXPECT_EQ(document.SaveXMLFile(), 0);
  EXPECT_EQ(failure_of(document), "the document is empty");
  EXPECT_EQ(read_file(folder.path("old.xml")), "old");
}

}  // namespace
}  // namespace orx::testing
