// CProjectFile: what the project file and the project list have in common.
#pragma once

#include <orx/compat/export.h>
#include <orx/xml/xml_document.h>

class ORX_API CProjectFile : public COrxXMLDoc {
 public:
  CProjectFile();
  CProjectFile(const CProjectFile&);
  CProjectFile& operator=(const CProjectFile&);
  ~CProjectFile() override;

  // Read from and write to the file named by the file name; 1, or 0 with the reason in GetLastFailure. These
  // do nothing and answer 1.
  virtual int Load();
  virtual int Save();
};
