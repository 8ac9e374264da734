// CProjectFile: the common base of the project file and the project list.
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

  // Reads or writes the file that SetFileName has set. 1, or 0 with the reason in GetLastFailure. In this
  // class they do nothing and return 1.
  virtual int Load();
  virtual int Save();

 protected:
  // Runs the work of a load or save, and closes the document. Out of memory is a failure with a reason, not
  // an exception.
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

  // Builds a document with `write`, lays it out with one element per line, and saves it.
  template <class Write>
  int SaveWritten(Write write) {
    return Complete([&] {
      if (!write()) return 0;
      IndentXMLDocument();
      return SaveXMLFile();
    });
  }
};
