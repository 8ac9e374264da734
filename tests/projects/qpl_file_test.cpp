#include <orx/projects/qpl_file.h>

#include <gtest/gtest.h>

#include <string>

#include "tests/support/environment.h"
#include "tests/support/xml.h"

using namespace orx::testing;

namespace {

// Every project, then the default.
std::string content_of(CQPLFile& list) {
  CStringA all, name, path;
  for (int more = list.GetFirstProject(name, path); more; more = list.GetNextProject(name, path)) {
    all += name + '=' + path + ' ';
  }
  list.GetDefaultProject(name);
  return (all + '/' + name).GetString();
}

class QplFile : public ::testing::Test {
 protected:
  QplFile() { list.SetFileName(folder.suite_path("list.qpl").c_str()); }

  int Load(const std::string& text) {
    write_file(folder.path("list.qpl"), text);
    return list.Load();
  }

  TempFolder folder;
  CQPLFile list;
};

TEST_F(QplFile, LoadReadsEveryProjectWithNameAndPath) {
  ASSERT_EQ(Load("<X><PROJECT NAME=' beta ' QPRPATH='\tb '/><PROJECTS><PROJECT NAME='Beta' QPRPATH='B' "
                 "DEFAULT='yes'/>"
                 "<PROJECT NAME='alpha' QPRPATH='a' DEFAULT=' true'/><PROJECT NAME=' ' QPRPATH='x'/>"
                 "<PROJECT NAME='no path'/><PROJECT NAME='blank' QPRPATH=''/><PROJECT QPRPATH='no name'/>"
                 "<PROJECT NAME='Beta' QPRPATH='second' DEFAULT='TRUE'/></PROJECTS></X>"),
            1)
      << failure_of(list);
  EXPECT_EQ(content_of(list), "Beta=B alpha=a beta=b /Beta")
      << "the last mark counts, also on a second entry of the name";
  ASSERT_EQ(Load("<QPL><PROJECTS/><PROJECT NAME='a' QPRPATH='b' DEFAULT=' true'/></QPL>"), 1);
  EXPECT_EQ(content_of(list), "a=b /a");
  for (const char* text : {"<QPL>", "<QPL><PROJECT NAME='a' QPRPATH='b'/></QPL>"}) {
    list.SetDefaultProject("a");
    EXPECT_EQ(Load(text), 0) << text;
    EXPECT_NE(failure_of(list), "");
    EXPECT_EQ(content_of(list), "/") << "a failed load leaves the list empty";
  }
}

TEST_F(QplFile, SaveWritesEntriesInOrderWithDefault) {
  list.SetProject("b", "C:\\b.qpr");
  list.SetProject("B & \u00FC", "C:\\B.qpr");
  list.SetProject("empty", "");
  list.SetProject("", "nameless");
  list.SetDefaultProject("b");
  ASSERT_EQ(list.Save(), 1) << failure_of(list);
  EXPECT_EQ(read_file(folder.path("list.qpl")),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<QPL>\n\t<PROJECTS>\n"
            "\t\t<PROJECT NAME=\"B &amp; \u00FC\" QPRPATH=\"C:\\B.qpr\"/>\n"
            "\t\t<PROJECT NAME=\"b\" QPRPATH=\"C:\\b.qpr\" DEFAULT=\"TRUE\"/>\n\t</PROJECTS>\n</QPL>\n");
  list.SetDefaultProject("not in the list");
  ASSERT_TRUE(list.Save() && list.Load());
  EXPECT_EQ(content_of(list), "B & \u00FC=C:\\B.qpr b=C:\\b.qpr /");
}

TEST_F(QplFile, NamesAreComparedWithLetterCase) {
  CStringA path = "kept";
  list.SetProject("Pit1", "old");
  list.SetProject("Pit1", "new");
  list.SetDefaultProject("Pit1");
  EXPECT_TRUE(!list.GetProject("pit1", path) && path == "kept");
  EXPECT_TRUE(list.GetProject("Pit1", path) && path == "new");
  for (const char* name : {"Pit1", "", "other"}) EXPECT_EQ(list.RemoveProject(name), 0) << name;
  list.SetDefaultProject("other");
  EXPECT_EQ(list.RemoveProject("Pit1"), 1) << "no longer the default";
  EXPECT_EQ(list.IsEmpty(), 1);
}

TEST_F(QplFile, IterationEndsWhenItsEntryIsRemoved) {
  CStringA name = "kept", path;
  EXPECT_FALSE(list.GetNextProject(name, path) || list.GetFirstProject(name, path));
  EXPECT_EQ(name, "kept");
  for (const char* each : {"a", "b", "c", "d"}) list.SetProject(each, each);
  ASSERT_TRUE(list.GetFirstProject(name, path) && list.RemoveProject("b"));
  CQPLFile copy(list);
  EXPECT_EQ(copy.GetNextProject(name, path), 0) << "a copy has no iteration";
  EXPECT_TRUE(list.GetNextProject(name, path) && name == "c")
      << "the removal of another entry does not matter";
  ASSERT_EQ(list.RemoveProject("c"), 1);
  for (int i = 0; i < 2; ++i) EXPECT_EQ(list.GetNextProject(name, path), 0);
  EXPECT_EQ(content_of(copy), "a=a c=c d=d /");
  copy = list;
  EXPECT_EQ(content_of(copy), "a=a d=d /");
}

}  // namespace
