// A document that was saved can be loaded, and then has the same content.
#include <gtest/gtest.h>
#include <orx/xml/xml_document.h>

#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "tests/support/environment.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

const std::string kOld = "<old/>";

const char* const kNames[] = {"a",         "B-1",     "_",          "xml",   "\u00DC.", "\u0416", "\u4E00",
                              "\u2C00",    "x\u00B7", "\U00010000", "xmlns", "xmlns:p", "p:c",    "q:\u00E9",
                              "xml:space", "1",       "a b",        "\xC3",  "a\224b",  "\uFFFE"};

const wchar_t* const kTexts[] = {L"<",       L"&",
                                 L"\"",      L"'",
                                 L">",       L"\t",
                                 L"\n",      L"\r",
                                 L" ",       L"]]>",
                                 L"--",      L"\u00FC",
                                 L"\u20AC",  L"\U0001F600",
                                 L"\u0085",  L"\u2028",
                                 L"\uFFFD",  L"abc",
                                 L"&amp;",   L"preserve",
                                 L"default", L"http://www.w3.org/2000/xmlns/",
                                 L"\uFFFE",  L"\x01"};

// Fills a document at random, also with names and texts that are refused.
class Builder {
 public:
  Builder(COrxXMLDoc& document, unsigned seed) : document_(document), random_(seed) {}

  bool Build(Element& root) {
    if (!document_.CreateXMLDocument(root.Out(), Pick(kNames))) return false;
    Fill(root, 0);
    return true;
  }

 private:
  int Pick(int count) { return static_cast<int>(random_() % static_cast<unsigned>(count)); }
  template <class Type, std::size_t size>
  Type Pick(Type const (&pieces)[size]) {
    return pieces[Pick(static_cast<int>(size))];
  }

  std::wstring Text() {
    std::wstring text;
    for (int count = Pick(4); count > 0; --count) text += Pick(kTexts);
    return text;
  }

  void Fill(IXMLDOMElement* element, int depth) {
    for (int count = Pick(5); count > 0; --count) {
      const char* name = Pick(kNames);
      set_attribute(document_, element, name, Text().c_str());
    }
    if (Pick(2) == 0) {
      document_.SetXMLValue(element, Text().data());
      return;
    }
    for (int count = depth < 6 ? Pick(5) : 0; count > 0; --count) {
      Element child;
      if (document_.CreateXMLElement(element, Pick(kNames), child.Out())) Fill(child, depth + 1);
    }
  }

  COrxXMLDoc& document_;
  std::mt19937 random_;
};

void expect_same(COrxXMLDoc& document, IXMLDOMNode* expected, IXMLDOMNode* node) {
  std::string text, expected_text;
  ASSERT_TRUE(document.GetXMLName(expected, expected_text) && document.GetXMLName(node, text));
  EXPECT_EQ(text, expected_text);
  for (const char* name : kNames) {
    const int exists = document.GetXMLAttribute(expected, name, expected_text);
    EXPECT_EQ(document.GetXMLAttribute(node, name, text), exists) << name;
    EXPECT_EQ(text, expected_text) << name;
  }
  ListRef list, expected_list;
  NodeRef child, expected_child;
  ASSERT_TRUE(document.SelectXMLNodes(expected, "*", expected_list.Out()));
  ASSERT_TRUE(document.SelectXMLNodes(node, "*", list.Out()));
  bool is_leaf = true;
  for (; document.NextXMLNode(expected_list, expected_child.Out()); is_leaf = false) {
    ASSERT_EQ(document.NextXMLNode(list, child.Out()), 1) << expected_text;
    expect_same(document, expected_child, child);
  }
  EXPECT_EQ(document.NextXMLNode(list, child.Out()), 0) << expected_text;
  ASSERT_TRUE(document.GetXMLValue(expected, expected_text) && document.GetXMLValue(node, text));
  // A load drops white space between elements, so only the text of an element without children must be equal.
  if (is_leaf) {
    EXPECT_EQ(text, expected_text);
  }
}

TEST(XmlRoundTrip, LoadedDocumentHasContentThatWasSaved) {
  const TempFolder folder;
  int saved = 0;
  for (unsigned seed = 1; seed <= 300 && !HasFailure(); ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    COrxXMLDoc document;
    Element built, loaded;
    if (!Builder(document, seed).Build(built)) continue;
    EXPECT_TRUE(seed % 2 == 0 || document.IndentXMLDocument()) << failure_of(document);
    document.SetFileName(folder.suite_path("a.xml").c_str());
    ASSERT_EQ(document.SaveXMLFile(), 1) << failure_of(document);
    ++saved;
    ASSERT_EQ(document.LoadXMLDocument(loaded.Out()), 1) << failure_of(document);
    expect_same(document, built, loaded);
  }
  EXPECT_GT(saved, 100);
}

std::string numbered(const std::string& name, int number) { return name + std::to_string(number); }

// Builds documents of a size. Each function returns whether the size was accepted.
struct Host {
  COrxXMLDoc document;
  Element root;

  bool AddAttributes(const std::string& prefix, const wchar_t* text, int count) {
    int added = 0;
    while (added < count && set_attribute(document, root, numbered(prefix, added).c_str(), text)) ++added;
    return added == count;
  }
  // `count` elements, including the root.
  bool Nest(int count, bool with_namespaces) {
    std::vector<Element> below(static_cast<std::size_t>(count));
    IXMLDOMElement* element = root;
    for (Element& child : below) {
      if (with_namespaces && !set_attribute(document, element, "xmlns:p", L"u")) return false;
      if (&child == &below.back()) break;
      if (!document.CreateXMLElement(element, "b", child.Out())) return false;
      element = child;
    }
    return true;
  }
  bool AddChild(int name_size) {
    Element child;
    const std::string name(static_cast<std::size_t>(name_size), 'n');
    return document.CreateXMLElement(root, name.c_str(), child.Out()) == 1;
  }
  // Comments of 133 MB, and characters that are written as four bytes each.
  bool ParseText(int size) {
    const std::string comment = "<!--" + std::string(9'500'000, 'c') + "-->";
    std::string text = "<r>";
    for (int i = 0; i < 14; ++i) text += comment;
    text += std::string(static_cast<std::size_t>(size) * 100'000, '>') + "</r>";
    Element loaded;
    return document.SetXMLText(loaded.Out(), text.c_str()) == 1;
  }
};

std::wstring repeated(int size, wchar_t c) { return std::wstring(static_cast<std::size_t>(size), c); }

const struct Limit {
  const char* name;
  int accepted;  // the next larger size is refused
  bool (*build)(Host& host, int size);
} kLimits[] = {
    {"attributes", 1000, [](Host& h, int size) { return h.AddAttributes("a", L"", size); }},
    {"namespaces", 250, [](Host& h, int size) { return h.AddAttributes("xmlns:p", L"<\t\"", size); }},
    {"nested namespaces", 250, [](Host& h, int size) { return h.Nest(size, true); }},
    {"depth", 256, [](Host& h, int size) { return h.Nest(size, false); }},
    {"name", 50'000, [](Host& h, int size) { return h.AddChild(size); }},
    // A value shares the limit with the rest of its start tag.
    {"value", 9'899'993,
     [](Host& h, int size) {
       return set_attribute(h.document, h.root, "a", repeated(size, L'v').c_str()) == 1;
     }},
    // Each character of a text may take six bytes.
    {"text", 1'650'000,
     [](Host& h, int size) { return h.document.SetXMLValue(h.root, repeated(size, L'\r').data()) == 1; }},
    {"document", 3, [](Host& h, int size) { return h.ParseText(size); }},
};

bool can_save(const Limit& limit, int size, const TempFolder& folder) {
  Host host;
  EXPECT_EQ(host.document.CreateXMLDocument(host.root.Out(), "r"), 1);
  host.document.SetFileName(folder.suite_path("a.xml").c_str());
  write_file(folder.path("a.xml"), kOld);
  if (!limit.build(host, size) || !host.document.SaveXMLFile()) {
    EXPECT_NE(failure_of(host.document), "") << limit.name;
    EXPECT_EQ(read_file(folder.path("a.xml")), kOld) << limit.name;
    return false;
  }
  EXPECT_EQ(host.document.LoadXMLDocument(host.root.Out()), 1) << limit.name << failure_of(host.document);
  return true;
}

TEST(XmlRoundTrip, DocumentThatIsTooLargeToLoadIsNotSaved) {
  const TempFolder folder;
  for (const Limit& limit : kLimits) {
    EXPECT_TRUE(can_save(limit, limit.accepted, folder)) << limit.name;
    EXPECT_FALSE(can_save(limit, limit.accepted + 1, folder)) << limit.name;
  }
}

TEST(XmlRoundTrip, DocumentWithManyLongNamesIsLoaded) {
  const TempFolder folder;
  COrxXMLDoc document;
  Element root, child;
  ASSERT_EQ(document.CreateXMLDocument(root.Out(), "r"), 1);
  // Tags of 40,000 bytes, a multiple of what libxml2 reads at a time.
  for (int i = 100; i < 400; ++i)
    ASSERT_EQ(document.CreateXMLElement(root, numbered(std::string(39'994, 'n'), i).c_str(), child.Out()), 1);
  document.SetFileName(folder.suite_path("a.xml").c_str());
  ASSERT_EQ(document.SaveXMLFile(), 1) << failure_of(document);
  EXPECT_EQ(document.LoadXMLDocument(root.Out()), 1) << failure_of(document);
}

}  // namespace
