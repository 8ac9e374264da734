#include <orx/projects/qpl_file.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/support/temp_folder.h"
#include "tests/support/xml.h"

namespace orx::testing {
namespace {

using Entries = std::vector<std::string>;

Entries entries_of(CQPLFile& list) {
  Entries entries;
  CStringA name, path;
  for (int more = list.GetFirstProject(name, path); more; more = list.GetNextProject(name, path)) {
    entries.push_back(std::string(name) + '=' + std::string(path));
  }
  return entries;
}

std::string default_of(const CQPLFile& list) {
  CStringA name = "?";
  list.GetDefaultProject(name);
  return name.GetString();
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

TEST_F(QplFile, ReadsEveryProjectThatHasNameAndPath) {
  ASSERT_EQ(Load("<X><PROJECT NAME=' beta ' QPRPATH='\tb '/><PROJECTS><PROJECT NAME='Beta' QPRPATH='B' "
                 "DEFAULT='yes'/>"
                 "<PROJECT NAME='alpha' QPRPATH='a' DEFAULT=' true'/><PROJECT NAME=' ' QPRPATH='x'/>"
                 "<PROJECT NAME='no path'/><PROJECT NAME='blank' QPRPATH=''/><PROJECT QPRPATH='no name'/>"
                 "<PROJECT NAME='Beta' QPRPATH='second' DEFAULT='TRUE'/></PROJECTS></X>"),
            1)
      << failure_of(list);
  EXPECT_EQ(entries_of(list), Entries({"Beta=B", "alpha=a", "beta=b"}));
  EXPECT_EQ(default_of(list), "Beta") << "the last mark wins, also that of a second entry";
  EXPECT_EQ(Load("<QPL><PROJECTS/></QPL>"), 1);
  EXPECT_EQ(list.IsEmpty(), 1);
  EXPECT_EQ(default_of(list), "");
}

TEST_F(QplFile, AFailedLoadLeavesTheListEmpty) {
  for (const char* text : {"<QPL>", "<QPL><PROJECT NAME='a' QPRPATH='b'/></QPL>"}) {
    list.SetProject("a", "b");
    list.SetDefaultProject("a");
    EXPECT_EQ(Load(text), 0) << text;
    EXPECT_NE(failure_of(list), "");
    EXPECT_EQ(list.IsEmpty(), 1);
    EXPECT_EQ(default_of(list), "");
  }
}

TEST_F(QplFile, IsSavedInOrderWithItsDefault) {
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
  ASSERT_EQ(list.Save(), 1);
  ASSERT_EQ(list.Load(), 1);
  EXPECT_EQ(default_of(list), "");
  EXPECT_EQ(entries_of(list).size(), 2u);
}

TEST_F(QplFile, IsEditedByExactName) {
  CStringA path = "kept";
  list.SetProject("Pit1", "old");
  list.SetProject("Pit1", "new");
  list.SetDefaultProject("Pit1");
  EXPECT_EQ(list.GetProject("pit1", path), 0);
  EXPECT_EQ(path, "kept");
  EXPECT_EQ(list.GetProject("Pit1", path), 1);
  EXPECT_EQ(path, "new");
  EXPECT_EQ(list.RemoveProject("Pit1"), 0) << "the default";
  EXPECT_EQ(list.RemoveProject(""), 0);
  EXPECT_EQ(list.RemoveProject("other"), 0);
  list.SetDefaultProject("other");
  EXPECT_EQ(list.RemoveProject("Pit1"), 1);
  EXPECT_EQ(list.IsEmpty(), 1);
}

TEST_F(QplFile, AWalkEndsWithWhatItStandsOn) {
  CStringA name = "kept", path;
  EXPECT_EQ(list.GetNextProject(name, path), 0);
  EXPECT_EQ(list.GetFirstProject(name, path), 0);
  EXPECT_EQ(name, "kept");
  for (const char* each : {"a", "b", "c", "d"}) list.SetProject(each, each);
  ASSERT_EQ(list.GetFirstProject(name, path), 1);
  ASSERT_EQ(list.RemoveProject("b"), 1);
  CQPLFile copy(list);
  EXPECT_EQ(copy.GetNextProject(name, path), 0) << "a copy has no walk under way";
  ASSERT_EQ(list.GetNextProject(name, path), 1);
  EXPECT_EQ(name, "c") << "the removal of another entry does not matter";
  ASSERT_EQ(list.RemoveProject("c"), 1);
  EXPECT_EQ(list.GetNextProject(name, path), 0);
  EXPECT_EQ(list.GetNextProject(name, path), 0);
  EXPECT_EQ(entries_of(copy), Entries({"a=a", "c=c", "d=d"}));
  copy = list;
  EXPECT_EQ(entries_of(copy), Entries({"a=a", "d=d"}));
}

TEST_F(QplFile, HoldsManyProjects) {
  const int count = 200000;
  for (int i = 0; i < count; ++i) {
    const std::string name = "Project " + std::to_string(i);
    list.SetProject(name.c_str(), ("C:\\Projects\\" + name + "\\project.qpr").c_str());
  }
  ASSERT_EQ(list.Save(), 1) << failure_of(list);
  list.Clear();
  ASSERT_EQ(list.Load(), 1) << failure_of(list);
  EXPECT_EQ(entries_of(list).size(), static_cast<std::size_t>(count));
}

}  // namespace
}  // namespace orx::testing
