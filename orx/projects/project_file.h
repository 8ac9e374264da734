// CProjectFile: what the project file and the project list have in common.
#pragma once

#include <orx/compat/atl_exception.h>
#include <orx/compat/export.h>
#include <orx/xml/xml_document.h>

#include <new>

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

 protected:
  // Does the work of a load or save and closes the document. Exhausted memory is a failure like any other.
  template <class Work>
  int Complete(Work work) {
    int result = 0;
    try {
      result = work();
    } catch (const CAtlException&) {
      Fail("out of memory");
    } catch (const std::bad_alloc&) {
      Fail("out of memory");
    }
    CloseXMLDocument();
    return result;
  }

  // Saves the document that `write` builds, laid out in lines.
  template <class Write>
  int SaveWritten(Write write) {
    return Complete([&] {
      if (!write()) return 0;
      IndentXMLDocument();
      return SaveXMLFile();
    });
  }
};
