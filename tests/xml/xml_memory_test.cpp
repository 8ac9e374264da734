// Out of memory at each allocation in turn: the operation succeeds, or it fails or raises CAtlException,
// loses no memory, and leaves the document as it was or empty.
#include <gtest/gtest.h>
#include <orx/xml/xml_document.h>
#include <tests/support/failing_heap.h>

#include <string>

#include "tests/support/environment.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

constexpr const char* kText =
    "<?xml version=\"1.0\"?><!DOCTYPE r><r xmlns:p='u'><a n='1' xml:id='i'>t</a><p:b p:n='2'/>"
    "<a xml:space='default'><!--c--><![CDATA[d]]></a></r>";

struct Host {
  COrxXMLDoc document;
  Element root, element;
  NodeRef a, node;
  ListRef list;
  CStringA narrow;
  std::string text;

  int Find(const char* query, const char* name) {
    if (!document.SelectSingleXMLNode(root, query, node.Out())) return 0;
    return node != nullptr && document.GetXMLName(node, text) && text == name;
  }
  int Get() {
    VARIANT variant{};
    const int result = document.GetXMLAttribute(a, "n", &variant);
    VariantClear(&variant);
    return result && document.GetXMLAttribute(a, "n", narrow) && document.GetXMLAttribute(a, "n", text);
  }
  int Walk() {
    int found = 0;
    for (document.GetXMLChildNodes(root, list.Out()); document.NextXMLNode(list, node.Out());) ++found;
    return found == 3;
  }
};

wchar_t new_text[] = L"new text that is too long for any short form";

struct Case {
  const char* name;
  int (*run)(Host&);
  bool is_evaluated_by_libxml2 = false;  // which then loses memory
};

const Case kCases[] = {
    {"create", [](Host& h) { return h.document.CreateXMLDocument(h.element.Out(), "new"); }},
    {"load", [](Host& h) { return h.document.LoadXMLDocument(h.element.Out()); }},
    {"parse", [](Host& h) { return h.document.SetXMLText(h.element.Out(), kText); }},
    {"save", [](Host& h) { return h.document.SaveXMLFile(); }},
    {"indent", [](Host& h) { return h.document.IndentXMLDocument(); }},
    {"text", [](Host& h) { return h.document.GetXMLText(h.narrow) * h.document.GetXMLText(h.text); }},
    {"element", [](Host& h) { return h.document.CreateXMLElement(h.root, "new", h.element.Out()); }},
    {"new attribute", [](Host& h) { return set_attribute(h.document, h.a, "new", new_text); }},
    {"old attribute", [](Host& h) { return set_attribute(h.document, h.a, "n", new_text); }},
    {"id attribute", [](Host& h) { return set_attribute(h.document, h.a, "xml:id", new_text); }},
    {"get attribute", [](Host& h) { return h.Get(); }},
    {"value", [](Host& h) { return h.document.SetXMLValue(h.root, new_text); }},
    {"get value", [](Host& h) { return h.document.GetXMLValue(h.a, h.text); }},
    {"find", [](Host& h) { return h.Find("//a", "a"); }},
    {"children", [](Host& h) { return h.Walk(); }},
    {"test", [](Host& h) { return h.Find("//*[@p:n = '2' or count(a) > 7]/self::p:b", "p:b"); }, true},
    {"id", [](Host& h) { return h.Find("id('i')", "a"); }, true},
    {"union", [](Host& h) { return h.document.SelectXMLNodes(h.root, "a | *", h.list.Out()); }, true},
};

// Whether the operation met the failure.
bool fails(const std::string& file, const Case& test, int count, HeapFailure how) {
  SCOPED_TRACE(test.name + std::string(" at ") + std::to_string(count));
  Host host;
  host.document.SetFileName(file.c_str());
  EXPECT_EQ(host.document.SetXMLText(host.root.Out(), kText), 1);
  EXPECT_EQ(host.document.SelectSingleXMLNode("//a", host.a.Out()), 1);
  const std::string before = text_of(host.document);
  int done = 0;
  fail_heap_after(count, how, test.is_evaluated_by_libxml2);
  try {
    done = test.run(host);
  } catch (const CAtlException& problem) {
    EXPECT_EQ(problem.m_hr, E_OUTOFMEMORY);
  }
  const bool has_failed = restore_heap();
  EXPECT_TRUE(has_failed || done == 1) << failure_of(host.document);
  std::string after;
  host.document.GetXMLText(after);
  if (done == 0) EXPECT_TRUE(after == before || after.empty()) << after;
  return has_failed;
}

TEST(XmlMemory, OperationSucceedsOrLeavesEverythingAsItWasWhenMemoryRunsOut) {
  const TempFolder folder;
  const std::string file = folder.suite_path("a.xml");
  write_file(folder.path("a.xml"), kText);
  ::testing::internal::CaptureStderr();
  for (const Case& test : kCases) {
    fails(file, test, 1 << 20, HeapFailure::kOnce);  // makes the blocks that are kept for good
    const int before = blocks_in_use();
    for (const HeapFailure how : {HeapFailure::kOnce, HeapFailure::kFromThen}) {
      bool has_failed = true;
      for (int count = 0; has_failed; ++count) has_failed = fails(file, test, count, how);
    }
    if (!test.is_evaluated_by_libxml2) EXPECT_EQ(blocks_in_use(), before) << test.name;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "") << "libxml2 prints nothing";
}

}  // namespace
