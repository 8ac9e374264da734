// CDbPlatformUtil: the catalogue of database platforms for a site database.
//
// The entries and their order are fixed, and every search returns the first entry that matches. Two entries
// have the identifier 8, so that a project with "Access 2007" reads back as "Access 2016". A name matches
// when it is equal to the long or the short name of an entry, without regard to letter case.
//
// Results are 1 when an entry was found, otherwise 0. Output pointers must not be null. Out of memory raises
// CAtlException (E_OUTOFMEMORY). All functions may be called from any thread.
#pragma once

#include <orx/compat/atl_array.h>
#include <orx/compat/export.h>
#include <orx/compat/string_a.h>

// The types of platforms.
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

  // Appends the names of all entries to the list, in the order of the catalogue: the long names, or the short
  // names when `bLongNames` is 0. A null list is ignored.
  static void GetPlatformNameList(CAtlArray<CStringA>* list, int bLongNames);

  // Whether the catalogue has an entry with the name.
  static int IsNameValid(const CStringA& name);

  // The name of the first entry with the type or identifier. The name is empty when nothing was found.
  static int GetLongNamePlatformType(int type, CStringA& name);
  static int GetLongNameFromID(int id, CStringA& name);
  static int GetShortNameFromID(int id, CStringA& name);

  // The identifier or the type of an entry. The output is unchanged when nothing was found.
  static int GetIDFromName(const CStringA& name, int* id);
  static int GetPlatformType(const CStringA& name, int* type);
  static int GetPlatformType(int id, int* type);

  // The latest release of a type: its long or short name, or its identifier. The output is unchanged when
  // nothing was found.
  static int GetLatestPlatform(int type, int bLongName, CStringA& name);
  static int GetLatestPlatform(int type, int* id);

  // Whether a new site database may be created on the platform. 0 for an unknown name.
  static int CanBeCreated(const CStringA& name);
};
