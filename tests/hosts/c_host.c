/* A host in C that links only the shared library. */
#include <orx/compat/variant.h>
#include <orx/orx.h>

#include <stdio.h>
#include <string.h>

static int failures;

static void expect(int line, int condition) {
  if (condition) return;
  fprintf(stderr, "line %d does not hold\n", line);
  ++failures;
}

static int confirm(void* a, void* b) { return a == b ? 7 : 8; }

int main(void) {
  char buffer[ORX_PATH_SIZE] = "  pit  ";
  VARIANT value;
  expect(__LINE__, trim(buffer) == buffer && strcmp(buffer, "pit") == 0);
  expect(__LINE__, ORX_snprintf(buffer, 8, "%.2f", 1234567.5) == -1 && strcmp(buffer, "1234567.") == 0);
  expect(__LINE__, orx_path_from_native("/home/ann", buffer, sizeof buffer) == 0 && buffer[5] == '\\');
  expect(__LINE__, ProjectSetting_GetSiteName(buffer) == -1);

  SetConfirmationCallback(confirm);
  expect(__LINE__, GetConfirmation(&failures, &failures, 3) == 7);

  VariantInit(&value);
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocStringLen(L"a\0b", 3);
  expect(__LINE__, SysStringLen(value.bstrVal) == 3 && VariantClear(&value) == 0 && value.vt == VT_EMPTY);
  return failures != 0;
}
