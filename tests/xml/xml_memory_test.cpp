// Out of memory at every allocation: the documented result or CAtlException, no leak, and a document that is
// as it was.
#include <gtest/gtest.h>
#include <orx/xml/xml_document.h>
#include <tests/support/failing_heap.h>

#include <string>

#include "tests/support/environment.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

constexpr const char* kText =
    "<?xml version=\"1.0\"?><!DOCTYPE r><r xmlns:p='u'><a n='1' xml:id='i'>t</a><p:b p:n='2'/><a "
    "xml:space='default'>"
    "<!--c--><![CDATA[d]]></a></r>";

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
  int Set(const char* name, const wchar_t* value) {
    VARIANT variant{};
    variant.vt = VT_BSTR;
    variant.bstrVal = SysAllocString(value);
    if (variant.bstrVal == nullptr) return 0;
    try {
      const int result = document.SetXMLAttribute(a, name, variant);
      VariantClear(&variant);
      return result;
    } catch (const CAtlException&) {
      VariantClear(&variant);
      throw;
    }
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

using Operation = int (*)(Host&);

const std::pair<const char*, Operation> kOperations[] = {
    {"create", [](Host& h) { return h.document.CreateXMLDocument(h.element.Out(), "new"); }},
    {"load", [](Host& h) { return h.document.LoadXMLDocument(h.element.Out()); }},
    {"parse", [](Host& h) { return h.document.SetXMLText(h.element.Out(), kText); }},
    {"save", [](Host& h) { return h.document.SaveXMLFile(); }},
    {"indent", [](Host& h) { return h.document.IndentXMLDocument(); }},
    {"text", [](Host& h) { return h.document.GetXMLText(h.narrow) * h.document.GetXMLText(h.text); }},
    {"element", [](Host& h) { return h.document.CreateXMLElement(h.root, "new", h.element.Out()); }},
    {"new attribute", [](Host& h) { return h.Set("new", new_text); }},
    {"old attribute", [](Host& h) { return h.Set("n", new_text); }},
    {"id attribute", [](Host& h) { return h.Set("xml:id", new_text); }},
    {"get attribute", [](Host& h) { return h.Get(); }},
    {"value", [](Host& h) { return h.document.SetXMLValue(h.root, new_text); }},
    {"get value", [](Host& h) { return h.document.GetXMLValue(h.a, h.text); }},
    {"find", [](Host& h) { return h.Find("//a", "a"); }},
    {"children", [](Host& h) { return h.Walk(); }},
};

const std::pair<const char*, Operation> kPaths[] = {
    {"test", [](Host& h) { return h.Find("//*[@p:n = '2' or count(a) > 7]/self::p:b", "p:b"); }},
    {"id", [](Host& h) { return h.Find("id('i')", "a"); }},
    {"union", [](Host& h) { return h.document.SelectXMLNodes(h.root, "a | *", h.list.Out()); }},
};

// Whether the operation met the failure that it waited for.
bool fails(const std::string& file, Operation operation, int count, HeapFailure how,
           const std::string& label) {
  Host host;
  host.document.SetFileName(file.c_str());
  EXPECT_EQ(host.document.SetXMLText(host.root.Out(), kText), 1);
  EXPECT_EQ(host.document.SelectSingleXMLNode("//a", host.a.Out()), 1);
  const std::string before = text_of(host.document);
  int done = 0;
  fail_heap_after(count, how);
  try {
    done = operation(host);
  } catch (const CAtlException& problem) {
    EXPECT_EQ(problem.m_hr, E_OUTOFMEMORY) << label;
  }
  const bool failed = restore_heap();
  EXPECT_TRUE(failed || done == 1) << label << ": " << failure_of(host.document);
  std::string after;
  host.document.GetXMLText(after);
  if (done == 0) EXPECT_TRUE(after == before || after.empty()) << label << ": " << after;
  return failed;
}

void fail_at_each_allocation(const std::string& file, const std::string& name, Operation operation) {
  for (const HeapFailure how : {HeapFailure::kOnce, HeapFailure::kFromThen}) {
    bool has_failed = true;
    for (int count = 0; has_failed; ++count)
      has_failed = fails(file, operation, count, how, name + " at " + std::to_string(count));
  }
}

class XmlMemory : public ::testing::Test {
 protected:
  XmlMemory() { write_file(folder.path("a.xml"), kText); }

  const TempFolder folder;
  const std::string file = folder.suite_path("a.xml");
};

TEST_F(XmlMemory, OperationsSucceedOrLeaveEverythingAsItWas) {
  ::testing::internal::CaptureStderr();
  for (const auto& [name, operation] : kOperations) {
    fails(file, operation, 1 << 20, HeapFailure::kOnce, name);  // what is kept for good is made now
    const int before = blocks_in_use();
    fail_at_each_allocation(file, name, operation);
    EXPECT_EQ(blocks_in_use(), before) << name;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(XmlMemory, PathsSucceedOrLeaveEverythingAsItWas) {
  ::testing::internal::CaptureStderr();
  use_arena(true);
  for (const auto& [name, operation] : kPaths) fail_at_each_allocation(file, name, operation);
  use_arena(false);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

}  // namespace
