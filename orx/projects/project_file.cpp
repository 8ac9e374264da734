#include <orx/projects/project_file.h>

CProjectFile::CProjectFile() = default;
CProjectFile::CProjectFile(const CProjectFile&) = default;
CProjectFile& CProjectFile::operator=(const CProjectFile&) = default;
CProjectFile::~CProjectFile() = default;

int CProjectFile::Load() { return 1; }

int CProjectFile::Save() { return 1; }
