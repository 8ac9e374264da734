// A document that was saved can be loaded, and is the same then.
#include <gtest/gtest.h>
#include <orx/xml/xml_document.h>

#include <map>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/environment.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

const std::string kOld = "<old/>";

int set(COrxXMLDoc& document, IXMLDOMElement* element, const std::string& name, const std::wstring& text) {
  VARIANT value{};
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocString(text.c_str());
  const int result = document.SetXMLAttribute(element, name.c_str(), value);
  VariantClear(&value);
  return result;
}

std::string narrow(const std::wstring& text) {
  COrxXMLDoc document;
  Element root;
  std::string out;
  EXPECT_TRUE(document.CreateXMLDocument(root.Out(), "a") && set(document, root, "b", text) &&
              document.GetXMLAttribute(root, "b", out));
  return out;
}

// What a host has put into an element.
struct Model {
  std::string name;
  std::map<std::string, std::string> attributes;
  std::string text;
  std::vector<std::unique_ptr<Model>> children;
};

class Builder {
 public:
  explicit Builder(unsigned seed) : random_(seed) {}

  bool Build(COrxXMLDoc& document, Model& model) {
    Element root;
    model.name = Name();
    if (!document.CreateXMLDocument(root.Out(), model.name.c_str())) return false;
    Fill(document, root, model, 0);
    return true;
  }

 private:
  int Pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }

  std::string Name() {
    const char* const pieces[] = {"a",      "B-1",     "_",      "xml",      "\u00DC.",
                                  "\u0416", "\u4E00",  "\u2C00", "x\u00B7",  "\U00010000",
                                  "xmlns",  "xmlns:p", "p:c",    "q:\u00E9", "xml:space",
                                  "1",      "a b",     "\xC3",   "a\224b",   "\uFFFE"};
    return pieces[Pick(static_cast<int>(std::size(pieces)))];
  }

  std::wstring Text() {
    const wchar_t* const reserved = L"http://www.w3.org/2000/xmlns/";
    const wchar_t* const pieces[] = {L"<",      L"&",          L"\"",      L"'",      L">",      L"\t",
                                     L"\n",     L"\r",         L" ",       L"]]>",    L"--",     L"\u00FC",
                                     L"\u20AC", L"\U0001F600", L"\u0085",  L"\u2028", L"\uFFFD", L"abc",
                                     L"&amp;",  L"preserve",   L"default", reserved,  L"\uFFFE", L"\x01"};
    std::wstring text;
    for (int count = Pick(4); count > 0; --count) text += pieces[Pick(static_cast<int>(std::size(pieces)))];
    return text;
  }

  void Fill(COrxXMLDoc& document, IXMLDOMElement* element, Model& model, int depth) {
    for (int count = Pick(5); count > 0; --count) {
      const std::string name = Name();
      const std::wstring text = Text();
      if (set(document, element, name, text)) model.attributes[name] = narrow(text);
    }
    if (Pick(2) == 0) {
      std::wstring text = Text();
      if (document.SetXMLValue(element, text.data())) model.text = narrow(text);
      return;
    }
    for (int count = depth < 6 ? Pick(5) : 0; count > 0; --count) {
      auto child = std::make_unique<Model>();
      Element added;
      child->name = Name();
      if (!document.CreateXMLElement(element, child->name.c_str(), added.Out())) continue;
      Fill(document, added, *child, depth + 1);
      model.children.push_back(std::move(child));
    }
  }

  std::mt19937 random_;
};

std::string trimmed(std::string text) {
  text.erase(0, text.find_first_not_of(" \t\r\n"));
  text.erase(text.find_last_not_of(" \t\r\n") + 1);
  return text;
}

void expect_same(COrxXMLDoc& document, IXMLDOMNode* node, const Model& model, bool keeps_space) {
  std::string text;
  ASSERT_EQ(document.GetXMLName(node, text), 1);
  EXPECT_EQ(text, model.name);
  for (const auto& [name, value] : model.attributes) {
    EXPECT_EQ(document.GetXMLAttribute(node, name.c_str(), text), 1) << name;
    EXPECT_EQ(text, value) << name;
  }
  if (const auto space = model.attributes.find("xml:space"); space != model.attributes.end())
    keeps_space = space->second == "preserve" || (keeps_space && space->second != "default");
  if (model.children.empty()) {
    ASSERT_EQ(document.GetXMLValue(node, text), 1);
    EXPECT_EQ(text, keeps_space ? model.text : trimmed(model.text));
    return;
  }
  ListRef list;
  NodeRef child;
  ASSERT_EQ(document.GetXMLChildNodes(node, list.Out()), 1);
  for (const auto& expected : model.children) {
    ASSERT_EQ(document.NextXMLNode(list, child.Out()), 1) << model.name;
    expect_same(document, child, *expected, keeps_space);
  }
  EXPECT_EQ(document.NextXMLNode(list, child.Out()), 0) << model.name;
}

TEST(XmlRoundTrip, RandomDocumentsLoadAsTheyWereSaved) {
  const TempFolder folder;
  int saved = 0;
  for (unsigned seed = 1; seed <= 300; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    COrxXMLDoc document;
    Model model;
    if (!Builder(seed).Build(document, model)) continue;
    if (seed % 2 == 0) {
      ASSERT_EQ(document.IndentXMLDocument(), 1) << failure_of(document);
    }
    document.SetFileName(folder.suite_path("a.xml").c_str());
    ASSERT_EQ(document.SaveXMLFile(), 1) << failure_of(document);
    ++saved;
    Element root;
    ASSERT_EQ(document.LoadXMLDocument(root.Out()), 1) << failure_of(document);
    expect_same(document, root, model, false);
    if (HasFailure()) break;
  }
  EXPECT_GT(saved, 100);
}

std::string numbered(const std::string& name, int number) { return name + std::to_string(number); }

// Each builds something of a size, and says whether that was accepted.
struct Limit {
  const char* name;
  int accepted;  // the next larger size is refused
  bool (*build)(COrxXMLDoc& document, IXMLDOMElement* root, int size);
};

bool add_nested(COrxXMLDoc& document, IXMLDOMElement* root, int count, bool declares) {
  std::vector<Element> below(static_cast<std::size_t>(count));
  IXMLDOMElement* element = root;
  for (Element& child : below) {
    if (declares && !set(document, element, "xmlns:p", L"u")) return false;
    if (&child == &below.back()) break;
    if (!document.CreateXMLElement(element, "b", child.Out())) return false;
    element = child;
  }
  return true;
}

const Limit kLimits[] = {
    {"attributes", 1000,
     [](COrxXMLDoc& document, IXMLDOMElement* root, int size) {
       for (int i = 0; i < size; ++i) {
         if (!set(document, root, numbered("a", i), L"")) return false;
       }
       return true;
     }},
    {"namespaces", 250,
     [](COrxXMLDoc& document, IXMLDOMElement* root, int size) {
       for (int i = 0; i < size; ++i) {
         if (!set(document, root, numbered("xmlns:p", i), L"<\t\"")) return false;
       }
       return true;
     }},
    {"nested namespaces", 250,
     [](COrxXMLDoc& document, IXMLDOMElement* root, int size) {
       return add_nested(document, root, size, true);
     }},
    {"depth", 256,
     [](COrxXMLDoc& document, IXMLDOMElement* root, int size) {
       return add_nested(document, root, size, false);
     }},
    {"name", 50'000,
     [](COrxXMLDoc& document, IXMLDOMElement* root, int size) {
       Element child;
       return document.CreateXMLElement(root, std::string(static_cast<std::size_t>(size), 'n').c_str(),
                                        child.Out()) == 1;
     }},
    {"value", 9'899'993,  // and the rest of the start tag
     [](COrxXMLDoc& document, IXMLDOMElement* root, int size) {
       return set(document, root, "a", std::wstring(static_cast<std::size_t>(size), L'v')) == 1;
     }},
    {"text", 1'650'000,  // of which each character may take six bytes
     [](COrxXMLDoc& document, IXMLDOMElement* root, int size) {
       return document.SetXMLValue(root, std::wstring(static_cast<std::size_t>(size), L'\r').data()) == 1;
     }},
    {"document", 3,  // comments of 133 MB, and characters of which each is written as four
     [](COrxXMLDoc& document, IXMLDOMElement*, int size) {
       const std::string comment = "<!--" + std::string(9'500'000, 'c') + "-->";
       std::string text = "<r>";
       for (int i = 0; i < 14; ++i) text += comment;
       text += std::string(static_cast<std::size_t>(size) * 100'000, '>') + "</r>";
       Element loaded;
       return document.SetXMLText(loaded.Out(), text.c_str()) == 1;
     }},
};

bool can_save(const Limit& limit, int size, const TempFolder& folder) {
  COrxXMLDoc document;
  Element root;
  EXPECT_EQ(document.CreateXMLDocument(root.Out(), "r"), 1);
  document.SetFileName(folder.suite_path("a.xml").c_str());
  write_file(folder.path("a.xml"), kOld);
  if (!limit.build(document, root, size) || !document.SaveXMLFile()) {
    EXPECT_NE(failure_of(document), "") << limit.name;
    EXPECT_EQ(read_file(folder.path("a.xml")), kOld) << limit.name;
    return false;
  }
  EXPECT_EQ(document.LoadXMLDocument(root.Out()), 1) << limit.name << ": " << failure_of(document);
  return true;
}

TEST(XmlRoundTrip, WhatIsTooLargeToLoadIsNotSaved) {
  const TempFolder folder;
  for (const Limit& limit : kLimits) {
    EXPECT_TRUE(can_save(limit, limit.accepted, folder)) << limit.name;
    EXPECT_FALSE(can_save(limit, limit.accepted + 1, folder)) << limit.name;
  }
}

TEST(XmlRoundTrip, ManyLongNamesAreLoaded) {
  const TempFolder folder;
  COrxXMLDoc document;
  Element root, child;
  ASSERT_EQ(document.CreateXMLDocument(root.Out(), "r"), 1);
  for (int i = 100; i < 400; ++i)  // tags of 40,000 bytes, a multiple of what libxml2 reads at a time
    ASSERT_EQ(document.CreateXMLElement(root, numbered(std::string(39'994, 'n'), i).c_str(), child.Out()), 1);
  document.SetFileName(folder.suite_path("a.xml").c_str());
  ASSERT_EQ(document.SaveXMLFile(), 1) << failure_of(document);
  EXPECT_EQ(document.LoadXMLDocument(root.Out()), 1) << failure_of(document);
}

}  // namespace
