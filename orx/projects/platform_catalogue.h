// CDbPlatformUtil: the database platforms that a site database may live on.
//
// A fixed catalogue, in a fixed order: every look-up takes the first entry that matches. Two entries share
// the identifier 8, so the name "Access 2007" is understood but reads back as "Access 2016". A name matches
// the long or the short name of an entry as a whole, without regard to letter case. Operations return 1 when
// they found an entry and 0 when not; pointers must be valid. All may be called from any thread.
#pragma once

#include <orx/compat/atl_array.h>
#include <orx/compat/export.h>
#include <orx/compat/string_a.h>

enum {
  enDbPlatformTypeJET = 0,  // a Microsoft Access / Jet database file
  enDbPlatformTypeSQL = 1   // a Microsoft SQL Server database
};

class ORX_API CDbPlatformUtil {
 public:
  CDbPlatformUtil() = default;
  CDbPlatformUtil(const CDbPlatformUtil&) = default;
  CDbPlatformUtil& operator=(const CDbPlatformUtil&) { return *this; }
  virtual ~CDbPlatformUtil();

  // Appends the names of all entries, in catalogue order; a null list is ignored.
  static void GetPlatformNameList(CAtlArray<CStringA>* list, int bLongNames);

  static int IsNameValid(const CStringA& name);

  // These three empty the name when there is no such entry.
  static int GetLongNamePlatformType(int type, CStringA& name);
  static int GetLongNameFromID(int id, CStringA& name);
  static int GetShortNameFromID(int id, CStringA& name);

  // These leave the output as it was when there is no such entry.
  static int GetIDFromName(const CStringA& name, int* id);
  static int GetPlatformType(const CStringA& name, int* type);
  static int GetPlatformType(int id, int* type);

  // The latest release of a type; its output stays as it was for a type that has none.
  static int GetLatestPlatform(int type, int bLongName, CStringA& name);
  static int GetLatestPlatform(int type, int* id);

  // Whether a new site database may still be created on the platform.
  static int CanBeCreated(const CStringA& name);
};
