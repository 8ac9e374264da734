#include <orx/projects/platform_catalogue.h>

#include <gtest/gtest.h>

using Catalogue = CDbPlatformUtil;
constexpr int kJet = enDbPlatformTypeJET, kSql = enDbPlatformTypeSQL;

TEST(PlatformCatalogue, FindsEveryPlatformByNameAndIdentifier) {
  CAtlArray<CStringA> names;
  Catalogue::GetPlatformNameList(&names, 1);
  Catalogue::GetPlatformNameList(&names, 0);
  Catalogue::GetPlatformNameList(nullptr, 0);
  ASSERT_EQ(names.GetCount(), 24U);
  CStringA all;
  for (std::size_t i = 0; i < 24; ++i) {
    int id = -1, type = -1, type_of_id = -1;
    CStringA lower(names[i]), name;
    EXPECT_EQ(Catalogue::GetIDFromName(lower.MakeLower(), &id), 1) << lower.GetString();
    EXPECT_EQ(Catalogue::GetPlatformType(lower, &type) + Catalogue::GetPlatformType(id, &type_of_id), 2);
    EXPECT_EQ(type, type_of_id);
    EXPECT_EQ(i < 12 ? Catalogue::GetLongNameFromID(id, name) : Catalogue::GetShortNameFromID(id, name), 1);
    EXPECT_STREQ(name, names[i % 12 == 10 ? i - 10 : i]);  // Access 2007 reads back as 2016
    all.AppendFormat("%s %d %d %d; ", names[i].GetString(), id, type, Catalogue::CanBeCreated(lower));
  }
  EXPECT_STREQ(all,
               "Access 2016 8 0 1; SQL Server 2019 13 1 1; SQL Server 2017 12 1 1; SQL Server 2016 11 1 1; "
               "SQL Server 2014 10 1 1; SQL Server 2012 9 1 1; SQL Server 2008 7 1 1; SQL Server 2005 6 1 0; "
               "SQL Server 2000 5 1 0; SQL Server 7 2 1 0; Access 2007 8 0 1; Jet 4 3 0 0; "
               "ACCESS 2016 8 0 1; SQL2019 13 1 1; SQL2017 12 1 1; SQL2016 11 1 1; SQL2014 10 1 1; "
               "SQL2012 9 1 1; SQL2008 7 1 1; SQL2005 6 1 0; SQL2000 5 1 0; SQL7 2 1 0; "
               "ACCESS 2007 8 0 1; JET4 3 0 0; ");
}

TEST(PlatformCatalogue, FindsFirstAndLatestPlatformOfType) {
  int jet = 0, sql = 0;
  CStringA first, latest, short_name;
  EXPECT_EQ(Catalogue::GetLatestPlatform(kJet, &jet) + Catalogue::GetLatestPlatform(kSql, &sql), 2);
  EXPECT_TRUE(jet == 8 && sql == 13) << jet << sql;
  EXPECT_EQ(Catalogue::GetLatestPlatform(kJet, 1, latest) + Catalogue::GetLatestPlatform(kSql, 0, short_name),
            2);
  EXPECT_EQ(Catalogue::GetLongNamePlatformType(kSql, first), 1);
  EXPECT_EQ(Catalogue::GetLatestPlatform(2, &jet) + Catalogue::GetLatestPlatform(2, 1, latest), 0);
  EXPECT_STREQ(first + "|" + latest + "|" + short_name, "SQL Server 2019|Access 2016|SQL2019");
  EXPECT_EQ(Catalogue::GetLongNamePlatformType(2, first), 0);
  EXPECT_STREQ(first, "") << "this function empties the name";
}

TEST(PlatformCatalogue, UnknownNameOrIdentifierLeavesOutputsUnchanged) {
  int out = 99;
  for (const char* name : {"", "SQL2019 ", "SQL", "Access"}) {
    EXPECT_EQ(Catalogue::IsNameValid(name) + Catalogue::CanBeCreated(name), 0) << name;
    EXPECT_EQ(Catalogue::GetIDFromName(name, &out) + Catalogue::GetPlatformType(CStringA(name), &out), 0);
  }
  CStringA long_name("before"), short_name("before");
  EXPECT_EQ(Catalogue::GetPlatformType(4, &out), 0);
  EXPECT_EQ(Catalogue::GetLongNameFromID(1, long_name) + Catalogue::GetShortNameFromID(4, short_name), 0);
  EXPECT_TRUE(out == 99 && long_name + short_name == "");
}
