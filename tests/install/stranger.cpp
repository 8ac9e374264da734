#include <orx/orx.h>

#include <cstring>

int main() {
  char text[] = " orx ";
  return std::strcmp(trim(text), "orx") == 0 && GetQPLInfo()->IsEmpty() == 1 ? 0 : 1;
}
