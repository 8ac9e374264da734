// CQPLFile: the list of the projects that a user works with, and their default project.
//
// An entry is a name and the path of a project file. Names are unique, and upper and lower case differ. The
// entries are in ascending order of the bytes of their names. The list takes every text as it is given; an
// empty text is accepted.
//
// Results are 1 or 0. Outputs are unchanged when the result is 0. A failed Load or Save gives its reason in
// GetLastFailure. Out of memory raises CAtlException (E_OUTOFMEMORY) and leaves the list as it was; in Load
// and Save it is a failure. One object belongs to one thread at a time.
#pragma once

#include <orx/compat/export.h>
#include <orx/compat/string_a.h>
#include <orx/projects/project_file.h>

#include <memory>

class ORX_API CQPLFile : public CProjectFile {
 public:
  CQPLFile();
  // A copy has its own list, and no iteration.
  CQPLFile(const CQPLFile& other);
  CQPLFile& operator=(const CQPLFile& other);
  ~CQPLFile() override;

  // Replaces the list by the content of the file. After a failure the list is empty. Entries without a name
  // or a path are skipped. Of several entries with one name the first counts, of several default marks the
  // last.
  int Load() override;

  // Replaces the file by the list. Entries with an empty name or path are left out, and so is a name or path
  // that XML does not allow; GetLastFailure then gives the reason although the result is 1. A default project
  // that is not in the list is not written.
  int Save() override;

  // 1 when the list has no entries, whatever the default project is.
  int IsEmpty() const;

  // Removes all entries and the default project.
  void Clear();

  // Adds an entry, or replaces the path of the entry with this name.
  void SetProject(const CStringA& name, const CStringA& path);

  // The path of the entry with this name. 0 when there is no such entry.
  int GetProject(const CStringA& name, CStringA& path) const;

  // Removes an entry. 0 when there is no entry with this name, and for the default project, which stays.
  int RemoveProject(const CStringA& name);

  // The name of the default project. It does not have to be in the list. Empty when there is no default
  // project.
  void GetDefaultProject(CStringA& name) const;
  void SetDefaultProject(const CStringA& name);

  // Iterates over the entries: the first entry, and the entry after the last one that was returned. 0 at the
  // end of the list. An object has one iteration at a time. Load, Clear and the removal of the entry that was
  // returned last end it.
  int GetFirstProject(CStringA& name, CStringA& path);
  int GetNextProject(CStringA& name, CStringA& path);

 private:
  struct List;
  int ReadList();
  void AddNode(IXMLDOMNode* node);
  int WriteList();

  std::unique_ptr<List> list_;
};

// The list of the process, empty at first. The host sets its file name and loads it. Never null, and valid as
// long as the library is loaded.
extern "C" ORX_API CQPLFile* GetQPLInfo();
