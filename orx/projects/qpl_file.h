// CQPLFile: the list of the projects that a user knows, and which of them is the default.
//
// Names are unique and compared with regard to letter case; entries come in ascending order of their bytes.
// Results are 1, or 0 with the reason in GetLastFailure where something failed. Texts are taken as given;
// outputs keep what they held when the result is 0. Out of memory raises CAtlException (E_OUTOFMEMORY) and
// leaves the list as it was, except that Load and Save answer 0.
#pragma once

#include <orx/compat/export.h>
#include <orx/compat/string_a.h>
#include <orx/projects/project_file.h>

#include <memory>

class ORX_API CQPLFile : public CProjectFile {
 public:
  CQPLFile();
  // A copy has a list of its own, and no walk under way.
  CQPLFile(const CQPLFile& other);
  CQPLFile& operator=(const CQPLFile& other);
  ~CQPLFile() override;

  // Replaces the list by the file; a load that fails leaves it empty. Entries without a name or a path are
  // skipped; the first entry of a name and the last default mark win.
  int Load() override;

  // Replaces the file by the list, without entries that have an empty name or path; of an entry that holds
  // what XML does not allow only the rest is written, and GetLastFailure tells it. A default that is not in
  // the list is not written.
  int Save() override;

  int IsEmpty() const;
  void Clear();

  void SetProject(const CStringA& name, const CStringA& path);
  int GetProject(const CStringA& name, CStringA& path) const;

  // The default project cannot be removed.
  int RemoveProject(const CStringA& name);

  // The default need not be in the list; empty: none.
  void GetDefaultProject(CStringA& name) const;
  void SetDefaultProject(const CStringA& name);

  // One walk at a time. Load, Clear and the removal of the entry that the walk stands on end it.
  int GetFirstProject(CStringA& name, CStringA& path);
  int GetNextProject(CStringA& name, CStringA& path);

 private:
  struct List;
  int ReadList();
  void AddNode(IXMLDOMNode* node);
  int WriteList();

  std::unique_ptr<List> list_;
};

// The process-wide list, empty at load. The host sets its file name.
extern "C" ORX_API CQPLFile* GetQPLInfo();
