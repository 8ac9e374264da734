// Documents that a load accepts and refuses. They may come from any source.
#include <gtest/gtest.h>
#include <orx/xml/xml_document.h>
#include <sys/stat.h>

#include <string>

#include "tests/support/environment.h"
#include "tests/support/process.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

using namespace std::string_literals;

std::string repeated(const std::string& text, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += text;
  return all;
}

std::string utf16(const std::string& ascii) {
  std::string wide;
  for (const char c : ascii) wide += {c, '\0'};
  return wide;
}

std::string declared(const std::string& encoding) {
  return "<?xml version='1.0' encoding='" + encoding + "'?>";
}

std::string doctype(const std::string& declarations) { return "<!DOCTYPE a [" + declarations + "]>"; }

std::string root_of(const std::string& text) { return "<a>" + text + "</a>"; }

const std::string kMark = "\xEF\xBB\xBF", kMark16 = "\xFF\xFE", kUmlauts = "\u00FC\u20AC";

class XmlInput : public ::testing::Test {
 protected:
  // The text of the document element, or the reason of the failure.
  std::string ReadFile(const std::string& path) {
    COrxXMLDoc document;
    Element root;
    std::string text;
    document.SetFileName(path.c_str());
    if (document.LoadXMLDocument(root.Out())) {
      EXPECT_EQ(document.GetXMLValue(root, text), 1);
      return text;
    }
    EXPECT_EQ(root, nullptr) << path;
    return "refused: " + failure_of(document);
  }
  std::string Read(const std::string& bytes) {
    write_file(folder.path("in put.xml"), bytes);
    return ReadFile(folder.suite_path("in put.xml"));
  }

  const TempFolder folder;
};

TEST_F(XmlInput, LoadReadsDocumentInItsEncoding) {
  const std::pair<std::string, std::string> cases[] = {
      {root_of(kUmlauts), kUmlauts},
      {kMark + declared("ISO-8859-1") + root_of(kUmlauts), kUmlauts},  // the byte order mark counts
      {kMark16 + utf16("<a>") + "\xFC\0"s + utf16("</a>"), "\u00FC"},
      {utf16(declared("UTF-16") + root_of("x")), "x"},
      {"\xFE\xFF\0<\0a\0>\0x\0<\0/\0a\0>"s, "x"},
      {declared("ISO-8859-1") + root_of("\xFC"), "\u00FC"},
      {declared("windows-1252") + root_of("\xFC\x80\x81"), kUmlauts + "\u0081"},
      {declared("windows-1252") + root_of(std::string(50000, '\x80')), repeated("\u20AC", 50000)},
      {"<!--c--><?p i?><a>1<!--c--><![CDATA[ <2> ]]><?p i?></a><!--c-->", "1 <2> "},
      {doctype("<!ELEMENT a ANY><!ATTLIST a b CDATA 'c'>") + root_of("x"), "x"},
      {"<!DOCTYPE a SYSTEM 'file:///etc/passwd'>" + root_of("x"), "x"},  // which is not loaded
      {repeated("<a>", 200) + "x" + repeated("</a>", 200), "x"},
      {root_of(repeated("<b c='d'/>\n", 200000) + "x"), "x"},
  };
  for (const auto& [bytes, text] : cases) EXPECT_EQ(Read(bytes), text) << bytes.substr(0, 60);
}

TEST_F(XmlInput, LoadRefusesInvalidOrTooLargeDocument) {
  const std::pair<std::string, const char*> cases[] = {
      {"", "the file is empty"},
      {"<a>\n<b/>", "not well-formed at line 2, column 5: Premature end"},
      {"<a b='' b=''>", "redefined"},  // the first error counts
      {"<a/>\0"s, "NUL"},
      {"<a>\n\xE9</a>", "line 2, column 1: Input is not proper UTF-8"},
      {kMark16 + utf16("<a/>") + " ", "middle of a character"},
      {kMark16 + utf16("<a>") + "\x01\xD8" + utf16("</a>"), "not valid in its encoding"},
      {declared("klingon") + "<a/>", "unknown encoding \"klingon\""},
      {declared("\xFF") + "<a/>", "unknown encoding"},
      {"<a></" + repeated("\u20AC", 400) + ">", "tag mismatch"},
      {declared("UTF-16") + "<a/>", ""},  // the document is in UTF-8
      {doctype("<!ENTITY x 'y'>") + root_of("&x;"), "it declares entities"},
      {doctype("<!NOTATION n SYSTEM 'n'><!ENTITY x SYSTEM 'y' NDATA n>") + "<a/>", "it declares entities"},
      {repeated("<a>", 1000000), "nested too deep"},
      {"<a" + repeated(" b=''", 1000000) + "/>", "too many attributes"},
      {doctype(repeated("<!ELEMENT e ANY>", 2000)) + "<a/>", "DOCTYPE is too large"},
      {doctype("<!ATTLIST b c CDATA '" + std::string(1000, 'x') + "'>") + root_of(repeated("<b/>", 100000)),
       "attribute defaults"},
      {repeated("<a xmlns:b='c' xmlns:d='e'>", 250), "too many namespaces"},
      {doctype("<!ATTLIST a xmlns:b CDATA 'c'>") + "<a/>", "attribute default"},
      {doctype("<!ATTLIST a b CDATA '&lt;'>") + "<a/>", "default"},  // libxml2 would write it differently
      {"<a xmlns='b&amp;c'/>", "ampersand"},
      {root_of("\xEF\xBF\xBE"), "not well-formed"},
      {root_of(std::string(10'000'001, 'x')), "a text is larger"},
      {doctype(repeated("<!NOTATION n SYSTEM 'n'>", 2)) + "<a>", "not well-formed"},
  };
  ::testing::internal::CaptureStderr();
  for (const auto& [bytes, reason] : cases) {
    const std::string outcome = Read(bytes);
    EXPECT_TRUE(outcome.starts_with("refused: ") && outcome.find(reason) != outcome.npos)
        << bytes.substr(0, 60) << ": " << outcome << ", not " << reason;
    COrxXMLDoc document;  // refuses a reason that is not valid UTF-8
    Element root;
    EXPECT_EQ(document.SetXMLText(root.Out(), ("<a><![CDATA[" + outcome + "]]></a>").c_str()), 1) << outcome;
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(XmlInput, LoadRefusesWhatIsNotARegularFile) {
  ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
  EXPECT_EQ(ReadFile(folder.suite_path("missing")), "refused: No such file or directory");
  EXPECT_EQ(ReadFile(folder.suite_path()), "refused: it is a folder");
  EXPECT_EQ(ReadFile(folder.suite_path("fifo")), "refused: it is not a regular file");
  EXPECT_EQ(ReadFile(""), "refused: no file name is set");
}

TEST_F(XmlInput, LoadEndsBeforeThreadIsCancelled) {
  write_file(folder.path("file"), root_of("pit"));
  std::string text;
  on_cancelled_thread([&] { text = ReadFile(folder.suite_path("file")); });
  EXPECT_EQ(text, "pit");
}

TEST_F(XmlInput, SetXMLTextReadsEncodingOfProcess) {
  COrxXMLDoc document;
  Element root;
  const std::string content = root_of(kUmlauts);
  for (const char* name : {"UTF-8", "UTF-16", "windows-1252"}) {
    EXPECT_EQ(document.SetXMLText(root.Out(), (declared(name) + content).c_str()), 1) << failure_of(document);
    EXPECT_EQ(text_of(document), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n" + content + "\n");
  }
  EXPECT_EQ(document.SetXMLText(root.Out(), (declared("klingon") + content).c_str()), 0);
  EXPECT_EQ(document.SetXMLText(root.Out(), nullptr), 0);
  EXPECT_EQ(text_of(document), "") << "the object has an empty document";
}

}  // namespace
