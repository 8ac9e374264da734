/* Lets the library report errors through a function of the host, and tidies a name that a user typed. */
#include <orx/orx.h>

#include <stdio.h>

static void show(const char* message) { fprintf(stderr, "host: %s\n", message); }

int main(void) {
  char name[ORX_PROJECT_NAME_SIZE];
  SetShowErrorCallback(show);
  if (ORX_snprintf(name, sizeof name - 1, "%s", "  pit 1  ") < 0) {
    ShowError("The name is too long.");
    return 1;
  }
  upperstr(trim(name));
  printf("'%s'\n", name);
  return 0;
}
