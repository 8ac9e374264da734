/* A host in C: links the shared library alone. */
#include <orx/compat/variant.h>
#include <orx/orx.h>

#include <stdio.h>
#include <string.h>
#include <wchar.h>

static int failures;

#define EXPECT(condition)                                                   \
  do {                                                                      \
    if (!(condition)) {                                                     \
      fprintf(stderr, "line %d: %s does not hold\n", __LINE__, #condition); \
      ++failures;                                                           \
    }                                                                       \
  } while (0)

static int confirm(void* a, void* b) { return a == b ? 7 : 8; }

static void text(void) {
  char buffer[9] = "  pit  ";
  EXPECT(trim(buffer) == buffer && strcmp(buffer, "pit") == 0);
  EXPECT(ORX_snprintf(buffer, sizeof buffer - 1, "%.2f", 1234567.5) == -1 && strcmp(buffer, "1234567.") == 0);
}

static void callbacks(void) {
  EXPECT(GetConfirmation(&failures, &failures, 3) == 3);
  SetConfirmationCallback(confirm);
  EXPECT(GetConfirmation(&failures, &failures, 3) == 7);
  SetConfirmationCallback(NULL);
}

static void variants(void) {
  VARIANT value;
  VARIANT copy;
  VariantInit(&value);
  VariantInit(&copy);
  value.vt = VT_BSTR;
  value.bstrVal = SysAllocStringLen(L"a\0b", 3);
  EXPECT(SysStringLen(value.bstrVal) == 3 && VariantCopy(&copy, &value) == 0);
  EXPECT(VariantClear(&value) == 0 && value.vt == VT_EMPTY);
  EXPECT(copy.vt == VT_BSTR && wmemcmp(copy.bstrVal, L"a\0b", 4) == 0);
  EXPECT(VariantClear(&copy) == 0 && VariantClear(NULL) < 0);
}

static void project(void) {
  char buffer[260];
  int platform = -1;
  EXPECT(ProjectSetting_GetSiteName(buffer) == -1);
  EXPECT(ProjectSetting_GetDatabasePlatform(&platform) == 0 && platform == 0);
  EXPECT(orx_path_from_native("/home/ann/pit1.qpr", buffer, sizeof buffer) == 0 &&
         strcmp(buffer, "\\home\\ann\\pit1.qpr") == 0);
}

int main(void) {
  text();
  callbacks();
  variants();
  project();
  return failures != 0;
}
