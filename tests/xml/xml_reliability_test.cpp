// What is saved loads, threads that end, small stacks, and every allocation that may fail.
#include <orx/xml/xml_document.h>

#include <gtest/gtest.h>
#include <libxml/xmlmemory.h>
#include <pthread.h>

#include <cstdlib>
#include <memory>
#include <new>
#include <random>
#include <string>

#include "tests/support/environment.h"
#include "tests/support/process.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

long allocations_left = -1;  // negative: all succeed
bool fails_once = true;      // or from then on

bool may_allocate() {
  if (allocations_left < 0) return true;
  if (allocations_left == 0 && !fails_once) return false;
  return allocations_left-- > 0;
}

void* failing_malloc(std::size_t size) { return may_allocate() ? std::malloc(size) : nullptr; }
void* failing_realloc(void* block, std::size_t size) {
  return may_allocate() ? std::realloc(block, size) : nullptr;
}
char* failing_strdup(const char* text) { return may_allocate() ? strdup(text) : nullptr; }

}  // namespace

void* operator new(std::size_t size) {
  void* block = failing_malloc(size > 0 ? size : 1);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { std::free(block); }

namespace {

int set_attribute(COrxXMLDoc& document, IXMLDOMElement* element, const char* name, const wchar_t* text) {
  const std::unique_ptr<wchar_t, decltype(&SysFreeString)> copy(SysAllocString(text), SysFreeString);
  VARIANT value{};
  value.vt = VT_BSTR;
  value.bstrVal = copy.get();
  return document.SetXMLAttribute(element, name, value);
}

void hold(Element& handle, IXMLDOMElement* element) {
  element->AddRef();
  *handle.Out() = element;
}

class SavedXml : public ::testing::Test {
 protected:
  SavedXml() {
    document.SetFileName(folder.suite_path("a.xml").c_str());
    EXPECT_EQ(document.CreateXMLDocument(root.Out(), "r"), 1);
  }

  // The tree as text, read again from the file.
  std::string Reloaded() {
    COrxXMLDoc other;
    Element other_root;
    other.SetFileName(document.GetFileName());
    EXPECT_EQ(other.LoadXMLDocument(other_root.Out()), 1) << failure_of(other);
    return text_of(other);
  }

  const TempFolder folder;
  COrxXMLDoc document;
  Element root;
};

TEST_F(SavedXml, RandomDocumentsLoadAsTheyWereSaved) {
  const wchar_t* const texts[] = {L"",    L" x ",        L"<&>\"'", L"\t\r\n", L"\x20AC\xFFFD",
                                  L"]]>", L"http://a/b", L"a b"};
  const char* const names[] = {"a",     "A",       "b-1",    "_",      "x:y",
                               "xmlns", "xmlns:x", "xml:id", "\u00FC", "\xF0\x90\x80\x80"};
  int saved = 0;
  for (unsigned seed = 1; seed <= 60; ++seed) {
    std::mt19937 random(seed);
    const auto any = [&random](const auto& table) { return table[random() % std::size(table)]; };
    ASSERT_EQ(document.CreateXMLDocument(root.Out(), "r"), 1);
    Element at;
    hold(at, root);
    for (int step = 0; step < 30; ++step) {
      Element child;
      switch (random() % 4) {
        case 0:
          document.SetXMLValue(at, const_cast<wchar_t*>(any(texts)));
          break;
        case 1:
          if (document.CreateXMLElement(at, any(names), child.Out()) == 0) break;
          hold(at, child);
          break;
        default:
          set_attribute(document, at, any(names), any(texts));
      }
    }
    if (document.SaveXMLFile() == 0) continue;
    ++saved;
    // Declarations of namespaces come first when they are read, so a second round must change nothing.
    const std::string first = Reloaded();
    write_file(folder.path("a.xml"), first);
    EXPECT_EQ(Reloaded(), first) << "seed " << seed;
  }
  EXPECT_GT(saved, 20);
}

TEST_F(SavedXml, WhatCouldNotBeLoadedIsRefused) {
  set_attribute(document, root, "good", L"1");
  ASSERT_EQ(document.SaveXMLFile(), 1);
  const std::string good = read_file(folder.path("a.xml"));
  for (const wchar_t* name : {L"a<b", L"a&b", L"a\tb"})
    EXPECT_EQ(set_attribute(document, root, "xmlns:p", name), 0);
  for (const char* name : {"a\xC3",
                           "a\x94"
                           "b",
                           "\xEF\xBF\xBE", "\xEF\xBF\xBF", "\xED\xA0\x80"}) {
    Element child;
    NodeRef node;
    EXPECT_EQ(document.CreateXMLElement(root, name, child.Out()), 0);
    EXPECT_EQ(set_attribute(document, root, name, L""), 0);
    EXPECT_EQ(document.SelectSingleXMLNode(name, node.Out()), 0);
  }
  int attributes = 1;
  while (attributes < 3000 &&
         set_attribute(document, root, ("a" + std::to_string(attributes)).c_str(), L"") != 0)
    ++attributes;
  EXPECT_LT(attributes, 3000);
  ASSERT_EQ(document.SaveXMLFile(), 1) << failure_of(document);
  EXPECT_NE(Reloaded().find("a" + std::to_string(attributes - 1)), std::string::npos);
  write_file(folder.path("a.xml"), good);

  Element at;
  hold(at, root);
  for (int i = 0; i < 200; ++i) {
    Element child;
    ASSERT_EQ(document.CreateXMLElement(at, "e", child.Out()), 1);
    set_attribute(document, child, "xmlns:p", L"x");
    set_attribute(document, child, "xmlns:q", L"x");
    hold(at, child);
  }
  EXPECT_EQ(document.SaveXMLFile(), 0);
  EXPECT_EQ(failure_of(document), "it declares too many namespaces");
  EXPECT_EQ(read_file(folder.path("a.xml")), good) << "the old file is untouched";
}

TEST(XmlThreads, ADestructorOfTheHostMayCloseADocument) {
  static pthread_key_t key;
  pthread_key_create(&key, [](void* document) { delete static_cast<COrxXMLDoc*>(document); });
  for (int i = 0; i < 20; ++i) {
    pthread_t threads[4];
    for (pthread_t& thread : threads) {
      const auto body = [](void*) -> void* {
        auto* document = new COrxXMLDoc;
        Element root;
        document->SetXMLText(root.Out(), "<a><b c='d'/></a>");
        pthread_setspecific(key, document);
        return nullptr;
      };
      ASSERT_EQ(pthread_create(&thread, nullptr, body, nullptr), 0);
    }
    for (const pthread_t thread : threads) pthread_join(thread, nullptr);
  }
  pthread_key_delete(key);
}

TEST(XmlThreads, AQueryThatIsTooLongForTheStackIsRefused) {
  pthread_attr_t small;
  pthread_attr_init(&small);
  pthread_attr_setstacksize(&small, 256 * 1024);
  pthread_t thread;
  const auto body = [](void*) -> void* {
    COrxXMLDoc document;
    Element root;
    NodeRef node;
    document.SetXMLText(root.Out(), "<a><b/></a>");
    for (const int count : {10, 100, 1000, 100000}) {
      std::string chain = "a[1", brackets, closing;
      for (int i = 0; i < count; ++i) chain += "+1", brackets += "a[(", closing += ")]";
      EXPECT_EQ(document.SelectSingleXMLNode((chain + "]").c_str(), node.Out()), count <= 100);
      document.SelectSingleXMLNode((brackets + "1" + closing).c_str(), node.Out());
    }
    EXPECT_EQ(failure_of(document), "the query is too long for the stack of this thread");
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &small, body, nullptr), 0);
  pthread_join(thread, nullptr);
  pthread_attr_destroy(&small);
}

// Without general queries: libxml2 frees a block twice when one particular allocation of a query fails.
TEST(XmlMemory, EveryFailedAllocationIsAnswered) {
  in_new_process([] {
    const TempFolder folder;
    const std::string path = folder.suite_path("a.xml");
    xmlMemSetup(std::free, failing_malloc, failing_realloc, failing_strdup);
    const auto work = [&] {
      COrxXMLDoc document;
      Element root, child;
      NodeRef node;
      ListRef list;
      std::string text;
      document.SetFileName(path.c_str());
      bool done = document.CreateXMLDocument(root.Out(), "r") != 0;
      for (const char* name : {"a", "b"})
        done = done && document.CreateXMLElement(root, name, child.Out()) != 0;
      done = done && set_attribute(document, child, "c", L"d") != 0 && document.IndentXMLDocument() != 0;
      done = done && document.SaveXMLFile() != 0 && document.LoadXMLDocument(root.Out()) != 0;
      done = done && document.SelectXMLNodes(root, "b", list.Out()) != 0;
      return done && document.NextXMLNode(list, node.Out()) != 0 && document.GetXMLText(text) != 0;
    };
    allocations_left = 100'000;
    ASSERT_TRUE(work());
    const long needed = 100'000 - allocations_left;
    allocations_left = -1;
    const std::string saved = read_file(folder.path("a.xml"));
    ::testing::internal::CaptureStderr();
    EXPECT_GT(needed, 100);
    for (long point = 0; point < 2 * needed; ++point) {
      fails_once = point % 2 == 0;
      allocations_left = point / 2;
      try {
        work();
      } catch (const CAtlException& failure) {
        EXPECT_EQ(failure.m_hr, E_OUTOFMEMORY);
      }
      allocations_left = -1;
      EXPECT_EQ(read_file(folder.path("a.xml")), saved) << point;
    }
    EXPECT_TRUE(work()) << "works again";
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  });
}

}  // namespace
