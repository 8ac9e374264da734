// What the wrapper reads, and what it refuses: documents come from anywhere.
#include <gtest/gtest.h>
#include <orx/xml/xml_document.h>
#include <sys/stat.h>

#include <string>

#include "tests/support/temp_folder.h"
#include "tests/support/xml.h"

namespace orx::testing {
namespace {

using namespace std::string_literals;

std::string utf16(const std::string& ascii, bool little) {
  std::string wide;
  for (const char c : ascii) wide += little ? std::string{c, '\0'} : std::string{'\0', c};
  return wide;
}

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

const std::string kUmlauts = "\u00FC\u20AC";

struct Accepted {
  const char* what;
  std::string bytes;
  std::string text;  // of the root
};

TEST(XmlInput, ReadsFilesInTheirEncodings) {
  const std::string declared = "<?xml version='1.0' encoding='";
  const Accepted cases[] = {
      {"UTF-8", "<a>" + kUmlauts + "</a>", kUmlauts},
      {"UTF-8 with a mark", "\xEF\xBB\xBF<a>" + kUmlauts + "</a>", kUmlauts},
      {"UTF-8 with a declaration", declared + "utf-8'?><a>" + kUmlauts + "</a>", kUmlauts},
      {"a mark outweighs the declaration", "\xEF\xBB\xBF" + declared + "ISO-8859-1'?><a>" + kUmlauts + "</a>",
       kUmlauts},
      {"UTF-16 LE", "\xFF\xFE" + utf16("<a>x", true) + "\xFC\0</a>"s.substr(0, 2) + utf16("</a>", true),
       "x\u00FC"},
      {"UTF-16 BE", "\xFE\xFF" + utf16("<a>x</a>", false), "x"},
      {"UTF-16 that says UTF-8", "\xFF\xFE" + utf16(declared + "UTF-8'?><a>x</a>", true), "x"},
      {"UTF-16 without a mark", utf16(declared + "UTF-16'?><a>x</a>", true), "x"},
      {"ISO-8859-1", declared + "ISO-8859-1'?><a>\xFC</a>", "\u00FC"},
      {"windows-1252", declared + "windows-1252'?><a>\xFC\x80\x81</a>", kUmlauts + "\u0081"},
      {"windows-1252, long", declared + "windows-1252'?><a>" + std::string(50000, '\x80') + "</a>",
       repeated("\u20AC", 50000)},
      {"comments, CDATA, instructions", "<!--c--><?p i?><a>1<!--c--><![CDATA[ <2> ]]><?p i?></a><!--c-->",
       "1 <2> "},
      {"a DOCTYPE without entities", "<!DOCTYPE a [<!ELEMENT a ANY><!ATTLIST a b CDATA 'c'>]><a>x</a>", "x"},
      {"a DTD that is not fetched", "<!DOCTYPE a SYSTEM 'file:///etc/passwd'><a>x</a>", "x"},
      {"200 levels", repeated("<a>", 200) + "x" + repeated("</a>", 200), "x"},
  };
  const TempFolder folder;
  for (const Accepted& c : cases) {
    write_file(folder.path("in put.xml"), c.bytes);
    COrxXMLDoc document;
    Element root;
    CStringA text;
    document.SetFileName(folder.suite_path("in put.xml").c_str());
    ASSERT_EQ(document.LoadXMLDocument(root.Out()), 1) << c.what << ": " << failure_of(document);
    EXPECT_EQ(document.GetXMLValue(root, text), 1);
    EXPECT_EQ(text.GetString(), c.text) << c.what;
  }
}

struct Refused {
  const char* what;
  std::string bytes;
  const char* reason;
};

TEST(XmlInput, RefusesWhatIsNotADocument) {
  const std::string declared = "<?xml version='1.0' encoding='";
  const std::string doctype = "<!DOCTYPE a [";
  const Refused cases[] = {
      {"empty", "", "empty"},
      {"blank", " \n", "not well-formed at line 2, column 1"},
      {"cut", "<a>\n<b/>", "not well-formed at line 2, column 5: Premature end"},
      {"two roots", "<a/><b/>", "Extra content"},
      {"an attribute twice", "<a b='' b=''/>", "redefined"},
      {"a control character", "<a>\x01</a>", "invalid Char"},
      {"a control character by number", "<a>&#1;</a>", "invalid xmlChar"},
      {"a NUL behind the root", "<a/>\0"s, "NUL"},
      {"a NUL in a comment", "<!--\0--><a/>"s, "NUL"},
      {"a NUL in UTF-16", "\xFF\xFE" + utf16("<a>\0</a>"s, true), "NUL"},
      {"an invalid byte", "<a>\n\xE9</a>", "line 2, column 1: Input is not proper UTF-8"},
      {"an overlong form", "<a>\xC1\x81</a>", "UTF-8"},
      {"a surrogate", "<a>\xED\xA0\x80</a>", "out of allowed range"},
      {"half a character of UTF-16", "\xFF\xFE" + utf16("<a/>", true) + " ", "middle of a character"},
      {"half a surrogate pair", "\xFF\xFE" + utf16("<a>", true) + "\x01\xD8" + utf16("</a>", true),
       "not valid in its"},
      {"an unknown encoding", declared + "klingon'?><a/>", "unknown encoding \"klingon\""},
      {"UTF-16 in name only", declared + "UTF-16'?><a/>", ""},
      {"ASCII in name only", declared + "US-ASCII'?><a>\xE9</a>", "not valid in its encoding"},
      {"an entity", doctype + "<!ENTITY x 'y'>]><a>&x;</a>", "it declares entities"},
      {"an entity in a file", doctype + "<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>",
       "it declares entities"},
      {"an unparsed entity", doctype + "<!NOTATION n SYSTEM 'n'><!ENTITY x SYSTEM 'y' NDATA n>]><a/>",
       "entities"},
      {"a parameter entity", doctype + "<!ENTITY % x '" + repeated("%y;", 1000) + "'> %x; ]><a/>", ""},
      {"a parameter entity bomb",
       doctype + "<!ENTITY % x '&#37;y;&#37;y;'><!ENTITY % y '&#37;x;&#37;x;'> %x;]><a/>",
       "it declares entities"},
      {"too deep", repeated("<a>", 1000000), "Excessive depth"},
      {"too many attributes", "<a" + repeated(" b=''", 1000000) + "/>", ""},
      {"too many namespaces", repeated("<a xmlns:b='c' xmlns:d='e'>", 250), "too many namespaces"},
      {"a namespace by default", doctype + "<!ATTLIST a xmlns:b CDATA 'c'>]><a/>", "attribute default"},
      {"a default that would not be written", doctype + "<!ATTLIST a b CDATA '&lt;'>]><a/>", "default"},
      {"a namespace that would not be written", "<a xmlns='b&amp;c'/>", "namespace"},
      {"a notation twice", doctype + repeated("<!NOTATION n SYSTEM 'n'>", 2) + "]><a>", "not well-formed"},
      {"a large DOCTYPE", doctype + repeated("<!ELEMENT e ANY>", 20000) + "]><a/>", ""},
      {"defaults for a million elements",
       doctype + "<!ATTLIST b c CDATA '" + std::string(1000, 'x') + "'>]><a>" + repeated("<b/>", 100000) +
           "</a>",
       "attribute defaults"},
  };
  const TempFolder folder;
  COrxXMLDoc document;
  document.SetFileName(folder.suite_path("a.xml").c_str());
  ::testing::internal::CaptureStderr();
  for (const Refused& c : cases) {
    write_file(folder.path("a.xml"), c.bytes);
    Element root;
    EXPECT_EQ(document.LoadXMLDocument(root.Out()), 0) << c.what;
    EXPECT_EQ(root, nullptr) << c.what;
    EXPECT_NE(failure_of(document).find(c.reason), std::string::npos)
        << c.what << ": " << failure_of(document);
    EXPECT_EQ(text_of(document), "") << c.what << ": the empty document is held";
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST(XmlInput, RefusesAFileThatIsCutAnywhere) {
  const std::string whole = "<?xml version='1.0'?>\n<!--c--><a b='c'>d<![CDATA[e]]><f/>&lt;</a>";
  COrxXMLDoc document;
  for (std::size_t size = 0; size < whole.size(); ++size) {
    Element root;
    EXPECT_EQ(document.SetXMLText(root.Out(), whole.substr(0, size).c_str()), 0) << size;
    EXPECT_NE(failure_of(document), "") << size;
  }
}

TEST(XmlInput, RefusesWhatIsNotAFile) {
  const TempFolder folder;
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
  const std::pair<std::string, const char*> cases[] = {
      {folder.suite_path("missing"), "No such file or directory"},
      {folder.suite_path(), "it is a folder"},
      {folder.suite_path("fifo"), "it is not a regular file"},
      {std::string(10000, 'x'), "File name too long"},
      {"", "no file name is set"}};
  for (const auto& [name, reason] : cases) {
    COrxXMLDoc document;
    Element root;
    document.SetFileName(name.c_str());
    EXPECT_EQ(document.LoadXMLDocument(root.Out()), 0);
    EXPECT_EQ(failure_of(document), reason);
  }
}

TEST(XmlInput, TakesTextInTheEncodingOfTheProcessWhateverItSays) {
  COrxXMLDoc document;
  Element root;
  CStringA text;
  for (const char* name : {"UTF-8", "UTF-16", "windows-1252", "ISO-8859-1"}) {
    const std::string xml = "<?xml version='1.0' encoding='"s + name + "'?><a>" + kUmlauts + "</a>";
    ASSERT_EQ(document.SetXMLText(root.Out(), xml.c_str()), 1) << name << failure_of(document);
    EXPECT_EQ(document.GetXMLValue(root, text), 1);
    EXPECT_EQ(text.GetString(), kUmlauts);
    EXPECT_EQ(text_of(document), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a>" + kUmlauts + "</a>\n");
  }
  EXPECT_EQ(document.SetXMLText(root.Out(), "<?xml version='1.0' encoding='klingon'?><a/>"), 0);
  EXPECT_EQ(document.SetXMLText(root.Out(), nullptr), 0);
}

}  // namespace
}  // namespace orx::testing
